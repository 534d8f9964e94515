#include "XmlTestSupport.h"
#include <vort/err/Exception.h>
#include <vort/xml/Uri.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlReader.h>
#include <vort/xml/XmlWriter.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

using namespace VORT;
using vort_test::joined;
using vort_test::TempFolder;

namespace {

std::string local(QString const &path) {
    return QFile::encodeName(path).toStdString();
}

// Runs one call written as "name" or "name:arg,arg,...".
void call(XmlWriter &writer, std::string const &step) {
    const std::string::size_type colon = step.find(':');
    const std::string name = step.substr(0, colon);
    std::vector<std::string> a;
    std::istringstream args(colon != std::string::npos ? step.substr(colon + 1) : "");
    for (std::string arg; std::getline(args, arg, ',');) {
        a.push_back(arg);
    }
    if (name == "doc") {
        writer.writeStartDocument("1.0");
    } else if (name == "enddoc") {
        writer.writeEndDocument();
    } else if (name == "start") {
        a.size() == 1   ? writer.writeStartElement(a[0])
        : a.size() == 2 ? writer.writeStartElement(a[0], a[1])
                        : writer.writeStartElement(a[0], a[1], a[2]);
    } else if (name == "empty") {
        a.size() == 1   ? writer.writeEmptyElement(a[0])
        : a.size() == 2 ? writer.writeEmptyElement(a[0], a[1])
                        : writer.writeEmptyElement(a[0], a[1], a[2]);
    } else if (name == "end") {
        writer.writeEndElement();
    } else if (name == "element") {
        a.size() == 2   ? writer.writeElement(a[0], a[1])
        : a.size() == 3 ? writer.writeElement(a[0], a[1], a[2])
                        : writer.writeElement(a[0], a[1], a[2], a[3]);
    } else if (name == "startattr") {
        a.size() == 1   ? writer.writeStartAttribute(a[0])
        : a.size() == 2 ? writer.writeStartAttribute(a[0], a[1])
                        : writer.writeStartAttribute(a[0], a[1], a[2]);
    } else if (name == "endattr") {
        writer.writeEndAttribute();
    } else if (name == "attr") {
        a.size() == 2   ? writer.writeAttribute(a[0], a[1])
        : a.size() == 3 ? writer.writeAttribute(a[0], a[1], a[2])
                        : writer.writeAttribute(a[0], a[1], a[2], a[3]);
    } else if (name == "value") {
        writer.writeValue(a.empty() ? std::string() : a[0]);
    } else if (name == "ns") {
        writer.writeNamespace(a[0], a[1]);
    } else if (name == "defaultns") {
        writer.writeDefaultNamespace(a[0]);
    } else {
        ADD_FAILURE() << "unknown step " << step;
    }
}

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

}  // namespace

TEST(Uri, RelativizeGivesWhatALinkInTheBaseFileWouldSay) {
    struct Row {
        const char *base;
        const char *target;
        const char *result;  // null: the target comes back unchanged
    };
    const Row rows[] = {
        {"file:///a/b/c.xml", "file:///a/b/d.xml", "d.xml"},
        {"file:///a/b/c.xml", "file:///a/b/sub/d.xml", "sub/d.xml"},
        {"file:///a/b/c/e.xml", "file:///a/b/d.xml", "../d.xml"},
        {"file:///a/b/c/e/f.xml", "file:///a/b/d/g.xml", "../../d/g.xml"},
        {"file:///a/b/", "file:///a/b/c.xml", "c.xml"},
        {"file:///x/c.xml", "file:///y/d.xml", nullptr},
        {"file:///a/b/c.xml", "file:///a/b/c.xml", ""},
        // Once the base runs out, the rest of the target's path is dropped.
        {"file:///a/b", "file:///a/b/c", ""},
        // Runs of "/" count as one.
        {"file:///a//b/c.xml", "file:///a/b///d.xml", "d.xml"},
        // The target's query and fragment are kept, the base's are not.
        {"file:///a/b.xml?x=2#g", "file:///a/c.xml?q=1#f", "c.xml?q=1#f"},
        {"file:///a/b.xml", "file:///a/b.xml#top", "#top"},
        // Another scheme, another authority, an opaque URI: the target.
        {"file:///a/b.xml", "http:///a/c.xml", nullptr},
        {"http://one/a/b.xml", "http://two/a/c.xml", nullptr},
        {"mailto:a/b", "mailto:a/c", nullptr},
        {"file:///a/b.xml", "mailto:a/c", nullptr},
        // Relative paths share named segments too.
        {"a/b/c.xml", "a/d.xml", "../d.xml"},
        {"a/b.xml", "c/d.xml", nullptr},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(std::string(row.base) + " -> " + row.target);
        const Uri base(row.base);
        const Uri target(row.target);
        const Uri result = base.relativize(target);
        if (row.result == nullptr) {
            EXPECT_EQ(result, target);
            EXPECT_EQ(result.toString(), target.toString());
        } else {
            EXPECT_EQ(result.toString(), row.result);
        }
    }
}

TEST(Uri, PrefixIsPlainTextAndOpaqueNeedsAnAbsoluteUriWithoutAuthority) {
    EXPECT_TRUE(Uri("file:///a/b").isPrefix(Uri("file:///a/bc")));
    EXPECT_TRUE(Uri("http://x").isPrefix(Uri("file:///anything")));
    EXPECT_TRUE(Uri("http://x/a").isPrefix(Uri("ftp://y/a/b")));
    EXPECT_FALSE(Uri("file:///a/b").isPrefix(Uri("file:///a")));

    struct Row {
        const char *text;
        bool opaque;
    };
    const Row rows[] = {
        {"mailto:someone", true}, {"file:///a", false}, {"a/b", false},
        {"urn:isbn:123", true},   {"file:", false},     {"x:/abs", false},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(Uri(row.text).isOpaque(), row.opaque) << row.text;
    }
    EXPECT_TRUE(Uri("http://h/a").isParent(Uri("http://h/a/b")));
    EXPECT_FALSE(Uri("http://h/a").isParent(Uri("http://h/ab")));
}

TEST(Uri, ComponentFormsBuildTheUrlOrThrowWithQtsExplanation) {
    const Uri all("http", "me:pw", "example.org", 8080, "/p", "a=1&b=%20", "top");
    const Uri parts("http", "example.org", 81, "/p", "", "");
    const Uri authority("ftp", "u@h:21", "/d", "q=%3D", "");
    EXPECT_EQ(joined(all.toEncodedString(), all.getQuery(), all.getPassword(), all.getUserInfo(),
                     parts.toString(), Uri("file", "", "/tmp/a b.xml", "f").toEncodedString(),
                     authority.getUserName(), authority.getHost(), authority.getAuthority(),
                     authority.getQuery()),
              "http://me:pw@example.org:8080/p?a=1&b=%20#top|a=1&b=%20|pw|me:pw|"
              "http://example.org:81/p|file:///tmp/a%20b.xml#f|u|h|u@h:21|q=%3D|");
    EXPECT_FALSE(parts.hasQuery() || parts.hasFragment());
    EXPECT_EQ(parts.getPort(), 81);

    struct Bad {
        const char *what;
        std::function<void()> build;
    };
    const Bad bad[] = {
        {"scheme", [] { Uri("1http", "host", "/p", ""); }},
        {"query", [] { Uri("http", "host", 80, "/p", "a b", ""); }},
        {"scheme before valid parts", [] { Uri("ht tp", "", "h", 1, "/p", "", ""); }},
    };
    for (Bad const &row : bad) {
        try {
            row.build();
            ADD_FAILURE() << row.what << " did not throw";
        } catch (VORT::Exception const &e) {
            const std::string text = e.what();
            EXPECT_EQ(text.rfind("Unable to create URI: ", 0), 0u) << text;
            EXPECT_EQ(e.where().file(), ".\\xml\\UriImpl");
        }
    }
}

TEST(Uri, TextFormsNeverThrowAndCopiesAreIndependent) {
    Uri bad("http://[::1");
    EXPECT_FALSE(bad.isValid() || bad.error().empty());
    Uri good("http://h/a/b.xml?x=1");
    EXPECT_TRUE(good.isValid() && good.error().empty());
    EXPECT_EQ(good.resolve("../c.xml").toString(), "http://h/c.xml");
    EXPECT_EQ(good.resolve(Uri("d/e")).toString(), "http://h/a/d/e");

    Uri copy = good;
    copy = std::string("http://other/");
    EXPECT_EQ(good.toString(), "http://h/a/b.xml?x=1");
    Uri &self = good;
    good = self;
    EXPECT_EQ(good, Uri("http://h/a/b.xml?x=1"));
    EXPECT_NE(good, copy);
    EXPECT_EQ(Uri().toString() + std::to_string(Uri().getPort()), "-1");
}

TEST(Uri, LocalFilesAreMadeAbsoluteAndCanonicalWhenTheFolderExists) {
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString root = QDir(temp.path()).canonicalPath();
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("real/sub")));
    ASSERT_TRUE(QFile::link(root + QStringLiteral("/real"), root + QStringLiteral("/link")));
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("Ünïcødé")));

    struct Row {
        QString given;
        QString file;
    };
    const Row rows[] = {
        {root + QStringLiteral("/real/sub/../a.xml"), root + QStringLiteral("/real/a.xml")},
        {root + QStringLiteral("/link/sub/b.xml"), root + QStringLiteral("/real/sub/b.xml")},
        {root + QStringLiteral("/Ünïcødé/ç.xml"), root + QStringLiteral("/Ünïcødé/ç.xml")},
        // No such folder: absolute, but left as it was written.
        {root + QStringLiteral("/none/../x.xml"), root + QStringLiteral("/none/../x.xml")},
        // Two slashes lead to the root here, not to a network share.
        {QStringLiteral("//none-") + root + QStringLiteral("/x.xml"),
         QStringLiteral("/none-") + root + QStringLiteral("/x.xml")},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.given.toStdString());
        const Uri uri = Uri::fromLocalFile(local(row.given));
        EXPECT_EQ(uri.getScheme(), "file");
        EXPECT_EQ(uri.toLocalFile(), local(row.file));
        const Uri again = Uri::fromLocalFileOrUri(
            QUrl::fromLocalFile(row.given).toString(QUrl::FullyEncoded).toStdString());
        EXPECT_EQ(again.toLocalFile(), local(row.file));
        EXPECT_EQ(Uri::fromLocalFileOrUri(local(row.given)).toLocalFile(), local(row.file));
    }

    // A relative name is taken from the working folder; so is a text of another scheme.
    const std::string cwd = local(QDir::currentPath());
    EXPECT_EQ(Uri::fromLocalFile("rel.xml").toLocalFile(), cwd + "/rel.xml");
    EXPECT_EQ(Uri::fromLocalFileOrUri("http://host/x.xml").toLocalFile(),
              cwd + "/http:/host/x.xml");
}

TEST(XmlWriter, FollowsItsStateTableAndRefusesCallsOutOfOrder) {
    struct Row {
        std::vector<std::string> steps;
        std::string refusal;  // the text of the call that is refused, "" if none is
        std::string file;     // what the file holds afterwards
    };
    const Row rows[] = {
        // A well-ordered document, with values deferred until their element or attribute ends.
        // The end of a document writes a line end.
        {{"doc", "start:a", "attr:k,v", "startattr:j", "value:1", "value:2", "endattr", "start:b",
          "value:x", "value:y", "end", "element:c,t", "end", "enddoc"},
         "",
         kDeclaration + "<a k=\"v\" j=\"12\"><b>xy</b><c>t</c></a>\n"},
        // An empty value writes no characters, so the element closes in the short form.
        {{"doc", "start:a", "value:", "end", "enddoc"}, "", kDeclaration + "<a/>\n"},
        // The end of the document closes every open element.
        {{"doc", "start:a", "start:b", "start:c", "value:v", "enddoc"},
         "",
         kDeclaration + "<a><b><c>v</c></b></a>\n"},
        // The end of an empty element also closes its parent in the stream.
        {{"doc", "start:a", "empty:e", "attr:k,v", "end", "start:b", "enddoc"},
         "",
         kDeclaration + "<a><e k=\"v\"/></a><b/>\n"},
        {{"doc", "start:a", "empty:e,urn:d", "end", "start:b", "enddoc"},
         "",
         kDeclaration + "<a><n1:e xmlns:n1=\"urn:d\"/></a><b/>\n"},
        // After the end of the document, a new one may start on the same stream.
        {{"doc", "element:a,1", "enddoc", "doc", "empty:b", "enddoc"},
         "",
         kDeclaration + "<a>1</a>\n" + kDeclaration + "<b/>\n"},
        // Prefixed names are written as they are; namespaces are declared where asked.
        {{"ns:urn:early,e", "doc", "start:p,x,urn:ignored", "defaultns:urn:d", "ns:urn:q,q",
          "attr:q,k,urn:q,1", "attr:plain,urn:q,2", "element:y,urn:d,3", "end", "enddoc"},
         "",
         kDeclaration + "<p:x xmlns:e=\"urn:early\" xmlns=\"urn:d\" xmlns:q=\"urn:q\" q:k=\"1\" "
                        "q:plain=\"2\"><y>3</y></p:x>\n"},
        {{"start:a"}, "Invalid state when processing writeStartElement", ""},
        {{"empty:a"}, "Invalid state when processing writeEmptyElement", ""},
        {{"doc", "doc"}, "Invalid state when processing writeStartDocument", kDeclaration},
        {{"enddoc"}, "Invalid state when processing writeEndDocument", ""},
        {{"doc", "value:x"}, "Invalid state when processing writeValue", kDeclaration},
        {{"doc", "start:a", "value:t", "attr:k,v"},
         "Invalid state when processing writeStartAttribute",
         kDeclaration + "<a"},
        {{"doc", "start:a", "value:t", "start:b"},
         "Invalid state when processing writeStartElement",
         kDeclaration + "<a"},
        {{"doc", "start:a", "endattr"},
         "Invalid state when processing writeEndAttribute",
         kDeclaration + "<a"},
        {{"doc", "start:a", "startattr:k", "start:b"},
         "Invalid state when processing writeStartElement",
         kDeclaration + "<a"},
        {{"doc", "start:a", "startattr:k", "enddoc"},
         "Invalid state when processing writeEndDocument",
         kDeclaration + "<a"},
        {{"doc", "end"},
         "Invalid state \"START_DOCUMENT\" when processing writeEndElement ",
         kDeclaration},
        {{"doc", "start:box", "startattr:k", "end"},
         "Invalid state \"START_ATTRIBUTE\" when processing writeEndElement box",
         kDeclaration + "<box"},
        {{"end"}, "Invalid state \"INIT\" when processing writeEndElement ", ""},
    };
    TempFolder folder;
    int index = 0;
    for (Row const &row : rows) {
        const std::string name = "out" + std::to_string(index++) + ".xml";
        SCOPED_TRACE(name + ": " + row.steps.back());
        std::string refusal;
        {
            XmlWriter writer(folder.path(name).c_str(), XmlWriterSettings(false));
            for (std::string const &step : row.steps) {
                try {
                    call(writer, step);
                } catch (VORT::Exception const &e) {
                    refusal = e.what();
                    EXPECT_EQ(e.where().file(), ".\\xml\\XmlWriterImpl");
                    break;
                }
            }
        }
        EXPECT_EQ(refusal, row.refusal);
        EXPECT_EQ(folder.read(name), row.file);
    }
}

TEST(XmlWriter, FormatsFlushesAndKeepsTheCodecNameButWritesUtf8) {
    TempFolder folder;
    const std::string path = folder.path("f.xml");
    {
        XmlWriter writer(path.c_str(), XmlWriterSettings(true, "ISO-8859-1", true));
        writer.writeStartDocument("1.0");
        writer.writeStartElement("a");
        writer.writeElement("b", "é");
        // Unbuffered: on disk before the writer goes.
        EXPECT_EQ(folder.read("f.xml"), kDeclaration + "\n<a>\n    <b>é</b>");
        writer.writeEndDocument();
        writer.close();
    }
    EXPECT_EQ(folder.read("f.xml"), kDeclaration + "\n<a>\n    <b>é</b>\n</a>\n");

    try {
        XmlWriter writer(folder.path("no/such/folder.xml").c_str());
        ADD_FAILURE() << "no exception";
    } catch (VORT::Exception const &e) {
        EXPECT_EQ(std::string(e.what()), "Error in initializing XmlWriter with target " +
                                             folder.path("no/such/folder.xml") +
                                             " : No such file or directory");
    }
}

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
        EXPECT_EQ(reader.hasText(),
                  step.event == XmlEventTypes::Characters || step.event == XmlEventTypes::Comment);
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
    EXPECT_EQ(
        joined(name.getLocalName(), name.getNamespaceURI(), name.getPrefix(), name.toString()),
        "root|urn:p|p|p:root|");
    ASSERT_EQ(reader.getAttributeCount(), 2);
    EXPECT_TRUE(reader.isAttributeSpecified(1));
    // An unqualified attribute is found with the empty namespace. The reference forms compare by
    // identity, so they never find anything; the lookup of a namespace by prefix answers the
    // prefix, not the URI.
    EXPECT_EQ(
        joined(reader.getAttributeName(0).toString(), reader.getAttributeNamespace(0),
               reader.getAttributeValue(0), reader.getAttributePrefix(1),
               reader.getAttributeLocalName(1),
               reader.getAttributeValue(XmlConstants::NULL_NS_URI, "plain"),
               reader.getAttributeValue("urn:p", "id"), reader.getAttributeValue("urn:x", "id"),
               reader.getAttributeValue(reader.getAttributeNamespace(1),
                                        reader.getAttributeLocalName(1))),
        "p:id|urn:p|7|(null)|plain|v|7|(null)|(null)|");
    ASSERT_EQ(reader.getNamespaceCount(), 2);
    EXPECT_EQ(
        joined(reader.getNamespacePrefix(0), reader.getNamespaceURI(0), reader.getNamespaceURI(1),
               reader.getNamespaceURI(std::string("p")), reader.getNamespaceURI(std::string("q")),
               reader.getNamespaceURI(reader.getNamespacePrefix(0))),
        "p|urn:p|urn:d|p|(null)|(null)|");
    // The next element has its own snapshot: no attributes, and its default namespace.
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);
    EXPECT_EQ(reader.getAttributeCount() + reader.getNamespaceCount(), 0);
    EXPECT_EQ(joined(reader.getNamespaceURI(), reader.getPrefix(), reader.getPrefix().toString()),
              "urn:d|(null)||");
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
    EXPECT_TRUE(empty.isNull() && empty == "");
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
    EXPECT_EQ(joined(reader.getPrefix(), reader.getLocalName(), reader.getNamespaceURI(),
                     reader.getAttributePrefix(0), reader.getAttributePrefix(1)),
              "x|y|(null)|a|(null)|");
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
