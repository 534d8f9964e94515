#include "XmlTestSupport.h"
#include <vort/err/Exception.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlReader.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::QName;
using VORT::XmlEventTypes;
using VORT::XmlReader;
using VORT::XmlReaderSettings;
using VORT::XmlStringRef;
using vort_test::TempFolder;

TEST(XmlReader, WalksEveryEventWithItsNamesAndTexts) {
    TempFolder folder;
    const std::string file =
        folder.write("doc.xml",
                     "<?xml version=\"1.0\" standalone=\"yes\"?>\n"
                     "<!-- note -->\n"
                     "<?render fast?>\n"
                     "<p:root xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:id=\"7\" plain=\"v\">"
                     "text&amp;more<child/> <![CDATA[<raw>]]></p:root>\n");
    XmlReader reader(file.c_str());
    EXPECT_EQ(reader.getEventType(), XmlEventTypes::NoToken);

    struct Step {
        XmlEventTypes::Type event;
        const char *text;  // what the event carries: a name, a text, a target
    };
    // White space outside the root element is not an event.
    const Step steps[] = {
        {XmlEventTypes::StartDocument, ""},
        {XmlEventTypes::Comment, " note "},
        {XmlEventTypes::ProcessingInstruction, "render"},
        {XmlEventTypes::StartElement, "root"},
        {XmlEventTypes::Characters, "text&more"},
        {XmlEventTypes::StartElement, "child"},
        {XmlEventTypes::EndElement, "child"},
        {XmlEventTypes::Characters, " "},
        {XmlEventTypes::Characters, "<raw>"},
        {XmlEventTypes::EndElement, "root"},
        {XmlEventTypes::EndDocument, ""},
    };
    for (Step const &step : steps) {
        ASSERT_TRUE(reader.hasNext());
        ASSERT_EQ(reader.next(), step.event) << step.text;
        EXPECT_EQ(reader.getEventType(), step.event);
        EXPECT_EQ(reader.hasName(), reader.isStartElement() || reader.isEndElement());
        if (reader.hasName()) {
            EXPECT_EQ(reader.getLocalName(), step.text);
        } else if (reader.isProcessingInstruction()) {
            EXPECT_EQ(reader.getPITarget(), step.text);
            EXPECT_EQ(reader.getPIData(), "fast");
        } else if (reader.hasText()) {
            EXPECT_EQ(reader.getText().toString(), step.text);
            EXPECT_EQ(reader.isWhiteSpace(), std::string(step.text) == " ");
        }
    }
    EXPECT_FALSE(reader.hasNext());
    EXPECT_FALSE(reader.hasError());
    EXPECT_TRUE(reader.isStandalone());
}

TEST(XmlReader, AnswersAttributesAndNamespacesOfTheCurrentElement) {
    TempFolder folder;
    const std::string file = folder.write(
        "ns.xml",
        "<p:root xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:id=\"7\" plain=\"v\"><inner/></p:root>");
    XmlReader reader(file.c_str());
    reader.next();
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);

    const QName name = reader.getName();
    EXPECT_EQ(name.getLocalName(), "root");
    EXPECT_EQ(name.getNamespaceURI(), "urn:p");
    EXPECT_EQ(name.getPrefix(), "p");
    EXPECT_EQ(name.toString(), "p:root");

    ASSERT_EQ(reader.getAttributeCount(), 2);
    EXPECT_EQ(reader.getAttributeName(0).toString(), "p:id");
    EXPECT_EQ(reader.getAttributeNamespace(0), "urn:p");
    EXPECT_EQ(reader.getAttributeValue(0), "7");
    EXPECT_EQ(reader.getAttributePrefix(1).isNull(), true);
    EXPECT_EQ(reader.getAttributeLocalName(1), "plain");
    EXPECT_TRUE(reader.isAttributeSpecified(1));
    // An unqualified attribute is found with the empty namespace.
    EXPECT_EQ(reader.getAttributeValue(VORT::XmlConstants::NULL_NS_URI, "plain"), "v");
    EXPECT_EQ(reader.getAttributeValue("urn:p", "id"), "7");
    EXPECT_TRUE(reader.getAttributeValue("urn:x", "id").isNull());
    // The reference forms compare by identity, so they never find anything.
    EXPECT_TRUE(
        reader.getAttributeValue(reader.getAttributeNamespace(1), reader.getAttributeLocalName(1))
            .isNull());

    ASSERT_EQ(reader.getNamespaceCount(), 2);
    EXPECT_EQ(reader.getNamespacePrefix(0), "p");
    EXPECT_EQ(reader.getNamespaceURI(0), "urn:p");
    EXPECT_EQ(reader.getNamespaceURI(1), "urn:d");
    // The lookup by prefix answers the prefix, not the URI.
    EXPECT_EQ(reader.getNamespaceURI(std::string("p")), "p");
    EXPECT_TRUE(reader.getNamespaceURI(std::string("q")).isNull());
    EXPECT_TRUE(reader.getNamespaceURI(reader.getNamespacePrefix(0)).isNull());

    // The next element has its own snapshot: no attributes, and its default namespace.
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);
    EXPECT_EQ(reader.getAttributeCount(), 0);
    EXPECT_EQ(reader.getNamespaceCount(), 0);
    EXPECT_EQ(reader.getNamespaceURI(), "urn:d");
    EXPECT_TRUE(reader.getPrefix().isNull());
    EXPECT_EQ(reader.getPrefix().toString(), "");
}

TEST(XmlReader, StringReferencesAreEqualByIdentityAndCompareTextsWithStrings) {
    TempFolder folder;
    const std::string file = folder.write("refs.xml", "<x:y xmlns:x=\"urn:x\">é</x:y>");
    XmlReader reader(file.c_str());
    reader.next();
    reader.next();
    const XmlStringRef one = reader.getLocalName();
    const XmlStringRef two = reader.getLocalName();
    EXPECT_NE(one, two);
    EXPECT_EQ(one, "y");
    EXPECT_EQ(two, std::string("y"));
    EXPECT_NE(one, "z");
    const XmlStringRef copy = one;
    EXPECT_EQ(copy, one);
    EXPECT_EQ(copy.hashCode(), one.hashCode());
    EXPECT_EQ(reader.getPrefix(), "x");

    XmlStringRef empty;
    EXPECT_TRUE(empty.isNull());
    EXPECT_EQ(empty, "");
    empty = one;
    EXPECT_EQ(empty, one);

    reader.next();
    EXPECT_EQ(reader.getText(), "é");
    EXPECT_TRUE(reader.getLocalName().isNull());
}

TEST(XmlReader, PrefixesWorkOnTheWrittenNameEvenWithoutNamespaceProcessing) {
    TempFolder folder;
    const std::string file = folder.write("plain.xml", "<x:y a:b=\"1\" c=\"2\"><w/></x:y>");
    XmlReader reader(file.c_str(), XmlReaderSettings(false));
    reader.next();
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);
    EXPECT_FALSE(reader.hasError());
    EXPECT_EQ(reader.getPrefix(), "x");
    EXPECT_EQ(reader.getLocalName(), "y");
    EXPECT_EQ(reader.getNamespaceURI(), "");
    EXPECT_EQ(reader.getAttributePrefix(0), "a");
    EXPECT_TRUE(reader.getAttributePrefix(1).isNull());
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);
    EXPECT_TRUE(reader.getPrefix().isNull());
}

TEST(XmlReader, NextTagSkipsToTheEndTagAndKeepsTheSnapshot) {
    TempFolder folder;
    const std::string file = folder.write("tag.xml", "<a k=\"1\">text<b/>more</a>");
    XmlReader reader(file.c_str());
    reader.next();
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);
    // A child element inside the text is an error of the text reader.
    XmlReader shared = reader;
    EXPECT_EQ(shared.nextTag(), XmlEventTypes::Invalid);
    EXPECT_TRUE(reader.hasError());

    const std::string simple = folder.write("simple.xml", "<a k=\"1\">text</a><!-- -->");
    XmlReader second(simple.c_str());
    second.next();
    second.next();
    EXPECT_EQ(second.nextTag(), XmlEventTypes::EndElement);
    EXPECT_EQ(second.getAttributeCount(), 1);
    EXPECT_EQ(second.getLocalName(), "a");

    XmlReader third(simple.c_str());
    third.next();
    third.next();
    EXPECT_EQ(third.getElementText(), "text");
    EXPECT_TRUE(third.isEndElement());
}

TEST(XmlReader, ReportsParseErrorsWithTheirPlaceAndNeverThrows) {
    TempFolder folder;
    struct Row {
        const char *name;
        std::string bytes;
        unsigned line;
        const char *text;
    };
    const Row rows[] = {
        {"unclosed.xml", "<a>\n<b>\n", 3, "Premature end of document."},
        {"mismatch.xml", "<a>\n  <b></c></a>", 2, "Opening and ending tag mismatch."},
        {"two roots.xml", "<a/><b/>", 1, "Extra content at end of document."},
        {"empty.xml", "", 1, "Premature end of document."},
        {"binary.xml", std::string("<a>\0</a>", 8), 1, ""},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.name);
        const std::string file = folder.write(row.name, row.bytes);
        XmlReader reader(file.c_str());
        int steps = 0;
        while (reader.hasNext() && steps < 100) {
            reader.next();
            ++steps;
        }
        EXPECT_LT(steps, 100);
        EXPECT_TRUE(reader.hasError());
        EXPECT_EQ(reader.getEventType(), XmlEventTypes::Invalid);
        if (*row.text != '\0') {
            EXPECT_EQ(reader.error(), row.text);
        }
        const VORT::Location where = reader.getLocation();
        EXPECT_EQ(where.getSystemId(), file);
        EXPECT_EQ(where.getLineNumber(), row.line);
    }

    const std::string good = folder.write("good.xml", "<a/>");
    XmlReader reader(good.c_str());
    reader.next();
    reader.raiseError("mine");
    EXPECT_TRUE(reader.hasError());
    EXPECT_EQ(reader.error(), "mine");
    EXPECT_FALSE(reader.hasNext());
}

TEST(XmlReader, ThrowsWhenTheFileCannotBeOpened) {
    TempFolder folder;
    const std::string missing = folder.path("none.xml");
    try {
        XmlReader reader(missing.c_str());
        ADD_FAILURE() << "no exception";
    } catch (VORT::Exception const &e) {
        EXPECT_EQ(std::string(e.what()), "Error in initializing XmlReader with target " + missing +
                                             " : No such file or directory");
        EXPECT_EQ(e.where().file(), ".\\xml\\XmlReaderImpl");
    }
}

TEST(XmlReader, BoundsEntityExpansionAndDocumentSize) {
    TempFolder folder;
    // Each entity expands tenfold; the last would be ten billion characters.
    std::string bomb = "<?xml version=\"1.0\"?><!DOCTYPE b [<!ENTITY e0 \"lol\">";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            bomb += "&e" + std::to_string(i - 1) + ";";
        }
        bomb += "\">";
    }
    bomb += "]><b>&e9;</b>";
    const std::string bombFile = folder.write("bomb.xml", bomb);
    XmlReader reader(bombFile.c_str());
    std::size_t characters = 0;
    while (reader.hasNext()) {
        if (reader.next() == XmlEventTypes::Characters) {
            characters += reader.getText().toString().size();
        }
    }
    EXPECT_TRUE(reader.hasError());
    EXPECT_LT(characters, 100000u);

    // One long text node, just over the bound: nothing but the error comes out.
    std::string big = "<a>";
    big.append(XmlReader::MAX_DOCUMENT_BYTES, 'x');
    big += "</a>";
    const std::string bigFile = folder.write("big.xml", big);
    big.clear();
    big.shrink_to_fit();
    XmlReader large(bigFile.c_str());
    EXPECT_TRUE(large.hasError());
    EXPECT_FALSE(large.hasNext());
    EXPECT_EQ(large.next(), XmlEventTypes::Invalid);
    EXPECT_EQ(large.error(), "Document larger than 16777216 bytes");

    // A device that tells no size and never ends is read as far as the bound, and no further.
    XmlReader endless("/dev/zero");
    EXPECT_FALSE(endless.hasNext());
    EXPECT_EQ(endless.error(), "Document larger than 16777216 bytes");
}
