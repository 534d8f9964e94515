#include "XmlTestSupport.h"
#include "support/FuzzCorpus.h"
#include <vort/err/Exception.h>
#include <vort/xml/Uri.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlReader.h>
#include <vort/xml/XmlWriter.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace VORT;
using vort_test::joined;
using vort_test::TempFolder;

namespace {

using Args = std::vector<std::string>;
using Call = void (*)(XmlWriter &, Args const &);

// The writer's calls by name and number of arguments.
const std::map<std::string, Call> kCalls = {
    {"doc0", [](XmlWriter &w, Args const &) { w.writeStartDocument("1.0"); }},
    {"enddoc0", [](XmlWriter &w, Args const &) { w.writeEndDocument(); }},
    {"start1", [](XmlWriter &w, Args const &a) { w.writeStartElement(a[0]); }},
    {"start3", [](XmlWriter &w, Args const &a) { w.writeStartElement(a[0], a[1], a[2]); }},
    {"empty1", [](XmlWriter &w, Args const &a) { w.writeEmptyElement(a[0]); }},
    {"empty2", [](XmlWriter &w, Args const &a) { w.writeEmptyElement(a[0], a[1]); }},
    {"end0", [](XmlWriter &w, Args const &) { w.writeEndElement(); }},
    {"element2", [](XmlWriter &w, Args const &a) { w.writeElement(a[0], a[1]); }},
    {"element3", [](XmlWriter &w, Args const &a) { w.writeElement(a[0], a[1], a[2]); }},
    {"startattr1", [](XmlWriter &w, Args const &a) { w.writeStartAttribute(a[0]); }},
    {"endattr0", [](XmlWriter &w, Args const &) { w.writeEndAttribute(); }},
    {"attr2", [](XmlWriter &w, Args const &a) { w.writeAttribute(a[0], a[1]); }},
    {"attr3", [](XmlWriter &w, Args const &a) { w.writeAttribute(a[0], a[1], a[2]); }},
    {"attr4", [](XmlWriter &w, Args const &a) { w.writeAttribute(a[0], a[1], a[2], a[3]); }},
    {"value0", [](XmlWriter &w, Args const &) { w.writeValue(std::string()); }},
    {"value1", [](XmlWriter &w, Args const &a) { w.writeValue(a[0]); }},
    {"ns2", [](XmlWriter &w, Args const &a) { w.writeNamespace(a[0], a[1]); }},
    {"defaultns1", [](XmlWriter &w, Args const &a) { w.writeDefaultNamespace(a[0]); }}};

// Runs one call written as "name" or "name:arg,arg,...".
void call(XmlWriter &writer, std::string const &step) {
    const std::string::size_type colon = step.find(':');
    Args a;
    std::istringstream args(colon != std::string::npos ? step.substr(colon + 1) : "");
    for (std::string arg; std::getline(args, arg, ',');) {
        a.push_back(arg);
    }
    kCalls.at(step.substr(0, colon) + std::to_string(a.size()))(writer, a);
}

// The message of the exception that `body` throws, after checking the file it names.
std::string thrown(std::function<void()> const &body, const char *file) {
    try {
        body();
    } catch (VORT::Exception const &e) {
        EXPECT_EQ(e.where().file(), file);
        return e.what();
    }
    return "(nothing)";
}

const std::string D = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
const std::string R = "Invalid state when processing ";

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
        const Uri target(row.target), result = Uri(row.base).relativize(target);
        EXPECT_EQ(result.toString(), row.result ? row.result : row.target);
        EXPECT_TRUE(row.result || result == target);
    }
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
    EXPECT_FALSE(parts.hasQuery() || parts.hasFragment() || parts.getPort() != 81);

    // A bad scheme, a bad query, a bad scheme before valid parts.
    for (auto const &build :
         {std::function<void()>([] { Uri("1http", "host", "/p", ""); }),
          std::function<void()>([] { Uri("http", "host", 80, "/p", "a b", ""); }),
          std::function<void()>([] { Uri("ht tp", "", "h", 1, "/p", "", ""); })}) {
        EXPECT_EQ(thrown(build, ".\\xml\\UriImpl").rfind("Unable to create URI: ", 0), 0u);
    }
}

TEST(Uri, PrefixOpaqueParentAndTextForms) {
    EXPECT_TRUE(Uri("file:///a/b").isPrefix(Uri("file:///a/bc")) &&
                Uri("http://x/a").isPrefix(Uri("ftp://y/a/b")));
    EXPECT_FALSE(Uri("file:///a/b").isPrefix(Uri("file:///a")));
    EXPECT_TRUE(Uri("mailto:someone").isOpaque() && Uri("urn:isbn:123").isOpaque());
    EXPECT_FALSE(Uri("file:///a").isOpaque() || Uri("a/b").isOpaque() || Uri("file:").isOpaque() ||
                 Uri("x:/abs").isOpaque());
    EXPECT_TRUE(Uri("http://h/a").isParent(Uri("http://h/a/b")) &&
                !Uri("http://h/a").isParent(Uri("http://h/ab")));
    Uri bad("http://[::1"), good("http://h/a/b.xml?x=1");
    EXPECT_TRUE(!bad.isValid() && !bad.error().empty() && good.isValid() && good.error().empty());
    EXPECT_EQ(good.resolve("../c.xml").toString() + std::to_string(Uri().getPort()),
              "http://h/c.xml-1");

    // A local name is made absolute (two slashes lead to the root, not to a share) and kept as
    // written where no folder resolves it; a relative name or another scheme is taken from the
    // working folder.
    EXPECT_EQ(Uri::fromLocalFile("//none/../x.xml").toLocalFile(), "/none/../x.xml");
    const std::string cwd = QFile::encodeName(QDir::currentPath()).toStdString();
    EXPECT_EQ(Uri::fromLocalFile("rel.xml").toLocalFile(), cwd + "/rel.xml");
    EXPECT_EQ(Uri::fromLocalFileOrUri("http://host/x.xml").toLocalFile(),
              cwd + "/http:/host/x.xml");
}

TEST(XmlWriter, FollowsItsStateTableAndRefusesCallsOutOfOrder) {
    struct Row {
        const char *steps;    // calls separated by spaces
        std::string refusal;  // the text of the call that is refused, "" if none is
        std::string file;     // what the file holds afterwards
    };
    const Row rows[] = {
        // Values are deferred until their element or attribute ends; the document ends a line.
        {"doc start:a attr:k,v startattr:j value:1 value:2 endattr start:b value:x value:y end "
         "element:c,t end enddoc",
         "", D + "<a k=\"v\" j=\"12\"><b>xy</b><c>t</c></a>\n"},
        // An empty value writes no characters, so the element closes in the short form.
        {"doc start:a value: end enddoc", "", D + "<a/>\n"},
        {"doc start:a start:b start:c value:v enddoc", "", D + "<a><b><c>v</c></b></a>\n"},
        // The end of an empty element also closes its parent in the stream.
        {"doc start:a empty:e attr:k,v end start:b enddoc", "", D + "<a><e k=\"v\"/></a><b/>\n"},
        {"doc start:a empty:e,urn:d end start:b enddoc", "",
         D + "<a><n1:e xmlns:n1=\"urn:d\"/></a><b/>\n"},
        {"doc element:a,1 enddoc doc empty:b enddoc", "", D + "<a>1</a>\n" + D + "<b/>\n"},
        // Prefixed names are written as they are; namespaces are declared where asked.
        {"ns:urn:early,e doc start:p,x,urn:ignored defaultns:urn:d ns:urn:q,q attr:q,k,urn:q,1 "
         "attr:plain,urn:q,2 element:y,urn:d,3 end enddoc",
         "",
         D + "<p:x xmlns:e=\"urn:early\" xmlns=\"urn:d\" xmlns:q=\"urn:q\" q:k=\"1\" "
             "q:plain=\"2\"><y>3</y></p:x>\n"},
        {"start:a", R + "writeStartElement", ""},
        {"empty:a", R + "writeEmptyElement", ""},
        {"doc doc", R + "writeStartDocument", D},
        {"enddoc", R + "writeEndDocument", ""},
        {"doc value:x", R + "writeValue", D},
        {"doc start:a value:t attr:k,v", R + "writeStartAttribute", D + "<a"},
        {"doc start:a value:t start:b", R + "writeStartElement", D + "<a"},
        {"doc start:a endattr", R + "writeEndAttribute", D + "<a"},
        {"doc start:a startattr:k start:b", R + "writeStartElement", D + "<a"},
        {"doc start:a startattr:k enddoc", R + "writeEndDocument", D + "<a"},
        {"doc end", "Invalid state \"START_DOCUMENT\" when processing writeEndElement ", D},
        {"doc start:box startattr:k end",
         "Invalid state \"START_ATTRIBUTE\" when processing writeEndElement box", D + "<box"},
        {"end", "Invalid state \"INIT\" when processing writeEndElement ", ""},
    };
    TempFolder folder;
    int index = 0;
    for (Row const &row : rows) {
        const std::string name = "out" + std::to_string(index++) + ".xml";
        SCOPED_TRACE(row.steps);
        std::string refusal = thrown(
            [&] {
                XmlWriter writer(folder.path(name).c_str(), XmlWriterSettings(false));
                std::istringstream steps(row.steps);
                for (std::string step; steps >> step;) {
                    call(writer, step);
                }
            },
            ".\\xml\\XmlWriterImpl");
        EXPECT_EQ(refusal == "(nothing)" ? "" : refusal, row.refusal);
        EXPECT_EQ(folder.read(name), row.file);
    }
}

TEST(XmlWriter, FormatsFlushesAndKeepsTheCodecNameButWritesUtf8) {
    TempFolder folder;
    {
        // Unbuffered: on disk before the writer goes.
        XmlWriter writer(folder.path("f.xml").c_str(), XmlWriterSettings(true, "ISO-8859-1", true));
        writer.writeStartDocument("1.0");
        writer.writeStartElement("a");
        writer.writeElement("b", "é");
        EXPECT_EQ(folder.read("f.xml"), D + "\n<a>\n    <b>é</b>");
        writer.writeEndDocument();
        writer.close();
    }
    EXPECT_EQ(folder.read("f.xml"), D + "\n<a>\n    <b>é</b>\n</a>\n");
    const std::string nowhere = folder.path("no/such/folder.xml");
    EXPECT_EQ(
        thrown([&] { XmlWriter writer(nowhere.c_str()); }, ".\\xml\\XmlWriterImpl"),
        "Error in initializing XmlWriter with target " + nowhere + " : No such file or directory");
    EXPECT_EQ(
        thrown([&] { XmlReader reader(nowhere.c_str()); }, ".\\xml\\XmlReaderImpl"),
        "Error in initializing XmlReader with target " + nowhere + " : No such file or directory");
}

TEST(XmlReader, WalksEveryEventWithItsNamesAndTexts) {
    TempFolder folder;
    XmlReader reader(folder
                         .write("doc.xml",
                                "<?xml version=\"1.0\" standalone=\"yes\"?>\n"
                                "<!-- note -->\n"
                                "<?render fast?>\n"
                                "<p:root xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:id=\"7\" plain=\"v\">"
                                "text&amp;more<child/> <![CDATA[<raw>]]></p:root>\n")
                         .c_str());
    EXPECT_EQ(reader.getEventType(), XmlEventTypes::NoToken);
    // Each event by its number, "t" when it has text and "w" for white space, with what it
    // carries: a name, a text, a target and its data. White space outside the root is no event.
    std::string seen;
    while (reader.hasNext()) {
        const XmlEventTypes::Type event = reader.next();
        EXPECT_EQ(reader.getEventType(), event);
        EXPECT_EQ(reader.hasName(), reader.isStartElement() || reader.isEndElement());
        seen +=
            std::to_string(event) + (reader.hasText() ? "t" : "") +
            (reader.isWhiteSpace() ? "w" : "") + ":" +
            (reader.hasName()                   ? reader.getLocalName().toString()
             : reader.isProcessingInstruction() ? joined(reader.getPITarget(), reader.getPIData())
                                                : reader.getText().toString()) +
            " ";
    }
    EXPECT_EQ(seen,
              "2: 7t: note  10:render|fast| 4:root 6t:text&more 4:child 5:child 6tw:  6t:<raw> "
              "5:root 3: ");
    EXPECT_FALSE(reader.hasNext());
    EXPECT_FALSE(reader.hasError());
    EXPECT_TRUE(reader.isStandalone());
}

TEST(XmlReader, AnswersAttributesAndNamespacesOfTheCurrentElement) {
    TempFolder folder;
    XmlReader reader(folder
                         .write("ns.xml",
                                "<p:root xmlns:p=\"urn:p\" xmlns=\"urn:d\" p:id=\"7\" "
                                "plain=\"v\"><inner/></p:root>")
                         .c_str());
    reader.next();
    ASSERT_EQ(reader.next(), XmlEventTypes::StartElement);

    const QName name = reader.getName();
    EXPECT_EQ(
        joined(name.getLocalName(), name.getNamespaceURI(), name.getPrefix(), name.toString()),
        "root|urn:p|p|p:root|");
    ASSERT_TRUE(reader.getAttributeCount() == 2 && reader.isAttributeSpecified(1));
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
    EXPECT_EQ(reader.getNamespaceCount(), 2);
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

TEST(XmlReader, PrefixesWithoutNamespacesReferencesAndNextTag) {
    TempFolder folder;
    const std::string plain = folder.write("plain.xml", "<x:y a:b=\"1\" c=\"2\"><w/></x:y>");
    XmlReader flat(plain.c_str(), XmlReaderSettings(false));
    flat.next();
    ASSERT_EQ(flat.next(), XmlEventTypes::StartElement);
    EXPECT_FALSE(flat.hasError());
    EXPECT_EQ(joined(flat.getPrefix(), flat.getLocalName(), flat.getNamespaceURI(),
                     flat.getAttributePrefix(0), flat.getAttributePrefix(1)),
              "x|y|(null)|a|(null)|");
    ASSERT_EQ(flat.next(), XmlEventTypes::StartElement);
    EXPECT_TRUE(flat.getPrefix().isNull());

    // References are equal by identity. A child element inside the text is an error of the
    // text reader, seen by every copy.
    EXPECT_TRUE(flat.getLocalName() != flat.getLocalName() && flat.getLocalName() == "w");
    XmlReader tag(folder.write("tag.xml", "<a k=\"1\">text<b/>more</a>").c_str());
    tag.next();
    tag.next();
    XmlReader shared = tag;
    EXPECT_EQ(shared.nextTag(), XmlEventTypes::Invalid);
    EXPECT_TRUE(tag.hasError());
    XmlReader second(folder.write("simple.xml", "<a k=\"1\">text</a><!-- -->").c_str());
    second.next();
    second.next();
    EXPECT_TRUE(second.nextTag() == XmlEventTypes::EndElement && second.getAttributeCount() == 1);
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
        {"binary.xml", std::string("<a>\0</a>", 8), 1, ""},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.name);
        const std::string file = folder.write(row.name, row.bytes);
        XmlReader reader(file.c_str());
        int steps = 0;
        while (reader.hasNext() && steps++ < 100) {
            reader.next();
        }
        EXPECT_TRUE(reader.hasError() && reader.getEventType() == XmlEventTypes::Invalid);
        EXPECT_TRUE(*row.text == '\0' || reader.error() == row.text) << reader.error();
        EXPECT_EQ(reader.getLocation().getSystemId() +
                      std::to_string(reader.getLocation().getLineNumber()),
                  file + std::to_string(row.line));
    }
    XmlReader reader(folder.write("good.xml", "<a/>").c_str());
    reader.raiseError("mine");
    EXPECT_TRUE(reader.error() == "mine" && !reader.hasNext());
}

TEST(XmlReader, BoundsTheDocumentSize) {
    // One long text node, just over the bound: nothing but the error comes out.
    TempFolder folder;
    std::string big = "<a>";
    big.append(XmlReader::MAX_DOCUMENT_BYTES, 'x');
    big += "</a>";
    const std::string bigFile = folder.write("big.xml", big);
    big = std::string();
    XmlReader large(bigFile.c_str());
    EXPECT_TRUE(large.hasError() && !large.hasNext());
    EXPECT_EQ(large.next(), XmlEventTypes::Invalid);
    EXPECT_EQ(large.error(), "Document larger than 16777216 bytes");
    // A device that tells no size and never ends is read as far as the bound, and no further.
    XmlReader endless("/dev/zero");
    EXPECT_FALSE(endless.hasNext());
    EXPECT_EQ(endless.error(), "Document larger than 16777216 bytes");
}

extern "C" int uriFuzzerInput(const std::uint8_t *data, std::size_t size);
extern "C" int xmlDataNodeFuzzerInput(const std::uint8_t *data, std::size_t size);

// Both fuzz targets are compiled into this executable under names of their own.
TEST(XmlFuzzCorpus, ReplaysTheKeptInputsOfBothTargets) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "uri_fuzzer", &uriFuzzerInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "xml_datanode_fuzzer", &xmlDataNodeFuzzerInput);
}
