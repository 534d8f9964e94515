#include "support/FuzzCorpus.h"
#include "support/PlatformHooks.h"
#include <vort/bones/ModuleObject.h>
#include <vort/err/Exception.h>
#include <vort/xml/DataNode.h>
#include <vort/xml/Database.h>
#include <vort/xml/Uri.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlReader.h>
#include <vort/xml/XmlWriter.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <utility>
#include <vector>

using namespace VORT;
using namespace VORT::XMLDB;
using NodePtr = DataNode::NodePtr;

namespace {

inline std::string shown(VORT::XmlStringRef const &ref) {
    return ref.isNull() ? "(null)" : ref.toString();
}
inline std::string shown(std::string const &text) {
    return text;
}

// The texts joined by "|", a null reference as "(null)": one comparison shows every answer.
template <typename... Texts>
std::string joined(Texts const &...texts) {
    std::string out;
    ((out += shown(texts) + "|"), ...);
    return out;
}

class TempFolder {
public:
    TempFolder() { EXPECT_TRUE(m_dir.isValid()); }

    // The folder's path, or a path inside it, as the library takes file names.
    std::string path(std::string const &name = std::string()) const {
        const std::string root =
            QFile::encodeName(QDir(m_dir.path()).canonicalPath()).toStdString();
        return name.empty() ? root : root + '/' + name;
    }

    // Writes `bytes` to `name` (subfolders are made), and gives the file the modification
    // time `seconds` since 1970 when that is not 0.
    std::string write(std::string const &name, std::string const &bytes,
                      std::int64_t seconds = 0) const {
        const std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
        EXPECT_TRUE(seconds == 0 || ::utimensat(AT_FDCWD, file.c_str(), times, 0) == 0) << file;
        return file;
    }

    std::string read(std::string const &name) const {
        std::ifstream in(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

private:
    QTemporaryDir m_dir;
};

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

struct Loaded {
    DataNode::NodeMap nodes;
    bool rootLoaded = false;
    std::string error;
    NodePtr at(std::string const &key) const {
        const auto found = nodes.find(key);
        return found == nodes.end() ? NodePtr() : found->second;
    }
};

// Loads a document the way the database does: every root, and every long name at all depths.
Loaded load(std::string const &xml) {
    TempFolder folder;
    XmlReader reader(folder.write("doc.xml", xml).c_str());
    Loaded result;
    while (reader.hasNext()) {
        NodePtr node = boost::make_shared<DataNode>();
        if (node->loadXML("", reader, result.nodes, reader.next())) {
            result.rootLoaded = true;
            result.nodes.emplace(node->getName(), node);
        }
    }
    result.error = reader.error();
    return result;
}

std::string texts(DataNode::NodeVector const *nodes) {
    std::string result;
    for (NodePtr const &node : *nodes) {
        result += node->getValue<std::string>() + "|";
    }
    return result;
}

// A database of the test's own, so that every test starts empty. Declare it after the items it
// holds: it is then destroyed first, and lets go of them.
class TestDatabase : public Database {
public:
    unsigned loadCount(std::string const &file) const { return mFiles.at(file)->mLoadCount; }
};

std::vector<std::pair<std::string, bool>> g_loads;

void recordLoad(std::string const &file, bool firstLoad) {
    g_loads.emplace_back(file, firstLoad);
}

std::string text(Database const &db, std::string const &key) {
    const DataNode::NodePtr node = db.getData(key);
    return node ? node->getValue<std::string>() : "(none)";
}

class DatabaseTest : public vort_test::PlatformHooksTest {
protected:
    DatabaseTest() {
        g_loads.clear();
        platform.setClock(100.0);
    }
};

// A typed read of the attribute `name`, or of the node's value for "", and whether it was found:
// 0 or 1, or -1 when that answer depends on what the flag held before.
template <typename T>
std::pair<T, int> read(DataNode const &node, const char *name, T const &fallback) {
    bool found[2] = {false, true};
    T value{};
    for (bool &flag : found) {
        value = *name != '\0' ? node.getAttribute<T>(name, fallback, &flag)
                              : node.getValue<T>(fallback, &flag);
    }
    return {value, found[0] == found[1] ? int(found[0]) : -1};
}

}  // namespace

TEST(Uri, RelativizeGivesWhatALinkInTheBaseFileWouldSay) {
    // A base, a target and the result; a null result: the target comes back unchanged.
    const std::tuple<const char *, const char *, const char *> rows[] = {
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
    for (auto const &[base, to, expected] : rows) {
        SCOPED_TRACE(std::string(base) + " -> " + to);
        const Uri target(to), result = Uri(base).relativize(target);
        EXPECT_EQ(result.toString(), expected ? expected : to);
        EXPECT_TRUE(expected || result == target);
    }
}

TEST(Uri, ComponentFormsBuildTheUrlOrThrowWithQtsExplanation) {
    const Uri all("http", "me:pw", "example.org", 8080, "/p", "a=1&b=%20", "top");
    const Uri parts("http", "example.org", 81, "/p", "", ""),
        authority("ftp", "u@h:21", "/d", "q=%3D", "");
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
    // Calls separated by spaces; the text of the call that is refused, "" if none is; what the
    // file holds afterwards.
    const std::tuple<const char *, std::string, std::string> rows[] = {
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
    for (auto const &[script, refused, written] : rows) {
        const std::string name = "out" + std::to_string(index++) + ".xml";
        std::istringstream steps(script);
        SCOPED_TRACE(script);
        std::string refusal = thrown(
            [&] {
                XmlWriter writer(folder.path(name).c_str(), XmlWriterSettings(false));
                for (std::string step; steps >> step;) {
                    call(writer, step);
                }
            },
            ".\\xml\\XmlWriterImpl");
        EXPECT_EQ(refusal == "(nothing)" ? "" : refusal, refused);
        EXPECT_EQ(folder.read(name), written);
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
    EXPECT_EQ(joined(reader.getNamespaceURI(), reader.getPrefix()) +
                  std::to_string(reader.getAttributeCount()),
              "urn:d|(null)|0");
}

TEST(XmlReader, PrefixesWithoutNamespacesReferencesAndNextTag) {
    TempFolder folder;
    const std::string plain = folder.write("plain.xml", "<x:y a:b=\"1\" c=\"2\"><w/></x:y>");
    XmlReader flat(plain.c_str(), XmlReaderSettings(false));
    flat.next();
    ASSERT_EQ(flat.next(), XmlEventTypes::StartElement);
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
    // A file, its bytes, the line of the error and its text.
    const std::tuple<const char *, std::string, unsigned, const char *> rows[] = {
        {"unclosed.xml", "<a>\n<b>\n", 3, "Premature end of document."},
        {"mismatch.xml", "<a>\n  <b></c></a>", 2, "Opening and ending tag mismatch."},
        {"binary.xml", std::string("<a>\0</a>", 8), 1, ""},
    };
    for (auto const &[name, bytes, line, text] : rows) {
        SCOPED_TRACE(name);
        const std::string file = folder.write(name, bytes);
        XmlReader reader(file.c_str());
        int steps = 0;
        while (reader.hasNext() && steps++ < 100) {
            reader.next();
        }
        EXPECT_TRUE(reader.hasError() && reader.getEventType() == XmlEventTypes::Invalid);
        EXPECT_TRUE(*text == '\0' || reader.error() == text) << reader.error();
        EXPECT_EQ(reader.getLocation().getSystemId() +
                      std::to_string(reader.getLocation().getLineNumber()),
                  file + std::to_string(line));
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
    EXPECT_TRUE(large.hasError() && !large.hasNext() && large.next() == XmlEventTypes::Invalid);
    // A device that tells no size and never ends is read as far as the bound, and no further.
    XmlReader endless("/dev/zero");
    EXPECT_FALSE(endless.hasNext());
    EXPECT_EQ(large.error() + endless.error(),
              "Document larger than 16777216 bytesDocument larger than 16777216 bytes");
}

extern "C" int uriFuzzerInput(const std::uint8_t *data, std::size_t size);
extern "C" int xmlDataNodeFuzzerInput(const std::uint8_t *data, std::size_t size);

// Both fuzz targets are compiled into this executable under names of their own.
TEST(XmlFuzzCorpus, ReplaysTheKeptInputsOfBothTargets) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "uri_fuzzer", &uriFuzzerInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "xml_datanode_fuzzer", &xmlDataNodeFuzzerInput);
}

TEST(DataNode, RepeatedLongNamesBecomeOneListHeadWhoseFirstEntryHasTheContent) {
    const Loaded doc = load(
        "<A><B k=\"1\">one<C/></B><B>two</B><B>three</B>"
        "<G><Item>x</Item></G><G><Item>y</Item><Item>z</Item></G></A>");
    ASSERT_TRUE(doc.rootLoaded);
    const NodePtr a = doc.at("A"), head = doc.at("A/B");
    DataNode::NodeVector found(1, head);
    EXPECT_EQ(a->getElementsOfName("B", found, false) * 10 + found.size(), 12u);
    EXPECT_EQ(a->getElementsOfName("B", found, true) * 10 + found.size(), 11u);
    EXPECT_TRUE(found[0] == head && a->getElement("B") == head && a->getElements()->size() == 2u);

    EXPECT_TRUE(head->isNodeList() && !head->getElements() && !head->getAttributes());
    EXPECT_EQ(head->getName() + "|" + head->getShortName() + "|" + head->getValue<std::string>(),
              "A/B|B|");
    EXPECT_EQ(texts(head->getNodeList()), "one|two|three|");
    const NodePtr first = head->getNodeList()->front();
    // The first entry's children keep pointing to the head's name.
    ASSERT_TRUE(first->getElement("C") && first->getElement("C") == doc.at("A/B/C"));
    EXPECT_EQ(first->getName() + first->getAttribute<std::string>("k") +
                  first->getElement("C")->getName(),
              "A/B1A/B/C");
    // One map per file: items under different parents of one long name share a list.
    EXPECT_EQ(texts(doc.at("A/G/Item")->getNodeList()) + texts(doc.at("A/G")->getNodeList()),
              "x|y|z|||");
}

TEST(DataNode, CsvListsSplitTheTextAndConvertOnce) {
    const Loaded doc = load(
        "<R><L csv_list=\"TRUE\">1, 2,,3,</L><N csv_list=\"yes\">1,2</N>"
        "<F Csv_List=\"true\"> true , 0,TRUE ,2.5e1x,</F><E csv_list=\"true\"/></R>");
    const NodePtr list = doc.at("R/L");
    ASSERT_TRUE(list->hasDataList());
    EXPECT_EQ(*list->getDataCSVAsInteger(), (std::vector<long>{1, 2, 3}));
    EXPECT_EQ(list->getValue<std::string>(), "1, 2,,3,");
    EXPECT_EQ(list->getDataCSVAsInteger(), list->getDataCSVAsInteger());
    const NodePtr flags = doc.at("R/F");
    EXPECT_EQ(*flags->getDataCSVAsBool(), (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(*flags->getDataCSVAsDouble(), (std::vector<double>{0.0, 0.0, 0.0, 25.0}));
    EXPECT_EQ(*flags->getDataCSVAsColor(), std::vector<Color>(4, Color()));
    // "yes" is no list: the attribute stays ordinary. An empty list has its vector but no data.
    const NodePtr plain = doc.at("R/N"), empty = doc.at("R/E");
    EXPECT_FALSE(plain->hasDataList() || plain->getDataCSVAsStrings() || plain->getDataCSVAsBool());
    EXPECT_TRUE(!empty->hasDataList() && empty->getDataCSVAsStrings());

    // A cache made before an absorb does not see the absorbed values.
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(list);
    const size_t cached = merged->getDataCSVAsInteger()->size();
    merged->absorb(list);
    EXPECT_EQ(merged->getDataCSVAsStrings()->size() * 100 + cached * 10 +
                  merged->getDataCSVAsInteger()->size(),
              633u);
}

TEST(DataNode, TextComesFromTheLastRunOrFromTheValueAttribute) {
    const Loaded doc = load(
        "<R><T value=\"x\">t</T><V value=\"x\"/><P p:value=\"q\" xmlns:p=\"urn:p\"/>"
        "<D csv_list=\"true\" value=\"v\"/><M>first<c/>  <c/>last</M></R>");
    std::string values;
    for (const char *key : {"R/T", "R/V", "R/P", "R/D", "R/M"}) {
        values += doc.at(key)->getValue<std::string>() + "|";
    }
    EXPECT_EQ(values, "t|x|||last|");
    EXPECT_EQ(doc.at("R/P")->getAttribute<std::string>("p:value") +
                  doc.at("R/P")->getAttribute<std::string>("R/P/p:value"),
              "qq");
    const NodePtr attribute = doc.at("R/V")->getAttributePtr("value");
    ASSERT_TRUE(attribute && attribute->getIsAttribute() && attribute->getName() == "R/V/value");
    EXPECT_EQ(doc.at("R/V")->getAttributePtr("R/V/value"), nullptr);
}

TEST(DataNode, TypedReadersUseTheDefaultOnlyForAMissingAttribute) {
    const Loaded doc = load(
        "<R n=\"42\" bad=\"abc\" d=\"2.5px\" e=\"\" b=\"TRUE\" one=\"1\" no=\"yes\" "
        "c=\"255,0,0\">abc</R>");
    const NodePtr r = doc.at("R");
    // The attribute, its readings as a long, a double and a bool, and whether they were found.
    const std::tuple<const char *, long, double, bool, int> rows[] = {
        {"n", 42, 42.0, false, 1}, {"bad", 0, 0.0, false, 1},    {"d", 2, 2.5, false, 1},
        {"e", 0, 0.0, false, 0},   {"b", 0, 0.0, true, 1},       {"one", 1, 1.0, true, 1},
        {"no", 0, 0.0, false, 1},  {"missing", 7, 7.5, true, 0},
    };
    for (auto const &[name, asLong, asDouble, asBool, found] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(read(*r, name, 7L), std::make_pair(asLong, found));
        EXPECT_EQ(read(*r, name, 7.5), std::make_pair(asDouble, found));
        EXPECT_EQ(read(*r, name, true), std::make_pair(asBool, found));
    }
    EXPECT_EQ(read(*r, "missing", std::string("d")), std::make_pair(std::string("d"), 0));
    EXPECT_EQ(read(*r, "c", Color()), std::make_pair(Color(1, 0, 0, 1), 1));
    EXPECT_EQ(read(*r, "n", Color(0, 1, 0, 1)), std::make_pair(Color(), 0));
    // The node's own value never uses the default.
    EXPECT_EQ(read(*r, "", 9L), std::make_pair(0L, 1));
    EXPECT_EQ(read(*r, "", std::string("d")), std::make_pair(std::string("abc"), 1));
    const DataNode empty;
    EXPECT_EQ(read(empty, "", 3.0), std::make_pair(0.0, 0));
    EXPECT_EQ(read(empty, "", std::string("d")), std::make_pair(std::string(), 1));
}

TEST(DataNode, StringToColorReadsThreeOrFourNumbersOnEitherScale) {
    // What was read, and whether it was a colour ("!" when not).
    // clang-format off
    const std::pair<const char *, const char *> rows[] = {
        {"1,0,0", "ff0000ff"},          {"255,0,0", "ff0000ff"},      {"0.5,0.5,0.5,128", "01010180"},
        {"0, 0.5, 1, 0.5", "0080ff80"}, {"255,128;0;64", "ff800040"}, {"1,0", "ff00ffff"},
        {"x,y", "00ffffff"},            {"red", "00000001!"},         {"", "00000001!"},
        {"1 0 0", "00000001!"}};
    // clang-format on
    for (auto const &row : rows) {
        bool ok = std::string(row.second).back() == '!';  // the opposite of the answer
        const unsigned int color = stringToColor(row.first, &ok).getAsRgba();
        char rgba[16];
        std::snprintf(rgba, sizeof rgba, "%08x%s", color, ok ? "" : "!");
        EXPECT_EQ(std::string(rgba), row.second) << row.first;
    }
}

TEST(DataNode, AbsorbConcatenatesInOrderAndLaterAttributesWin) {
    const Loaded first = load("<A k=\"1\" j=\"x\">a<B>1</B></A>");
    const Loaded second = load("<A k=\"2\">b<B>2</B><C/></A>");
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(first.at("A"));
    merged->absorb(second.at("A"));
    EXPECT_TRUE(merged->isCombinedNode() && !first.at("A")->isCombinedNode());
    EXPECT_EQ(merged->getName() + merged->getShortName() + merged->getValue<std::string>() +
                  merged->getAttribute<std::string>("k") + merged->getAttribute<std::string>("j"),
              "AAab2x");
    EXPECT_TRUE(merged->getAttributes()->size() == 3u &&
                merged->getElement("B") == first.at("A/B"));
    EXPECT_EQ(texts(merged->getElements()), "1|2||");
    // The sources are unchanged.
    EXPECT_EQ(first.at("A")->getValue<std::string>() +
                  std::to_string(first.at("A")->getAttributes()->size()),
              "a2");
    merged->absorb(merged);
    EXPECT_EQ(texts(merged->getElements()), "1|2||1|2||");

    // A copy shares the vectors, and either may go first.
    auto copy = std::make_unique<DataNode>(*merged);
    EXPECT_EQ(copy->getElements(), merged->getElements());
    DataNode assigned;
    assigned = *copy;
    copy.reset();
    EXPECT_EQ(assigned.getAttributes(), merged->getAttributes());
    EXPECT_EQ(assigned.getValue<std::string>(), "abab");
}

TEST(DataNode, MalformedFilesKeepWhatWasFinishedAndBoundsHold) {
    const Loaded broken = load("<A><B>1</B><C x=\"2\">2</C><D><E>3</E>");
    EXPECT_TRUE(!broken.rootLoaded && broken.error == "Premature end of document.");
    EXPECT_EQ(broken.at("A/B")->getValue<std::string>() +
                  broken.at("A/C")->getAttribute<std::string>("x") +
                  broken.at("A/D/E")->getValue<std::string>(),
              "123");
    EXPECT_TRUE(broken.at("A/D") == nullptr && broken.at("A") == nullptr);

    std::string deep;
    for (int i = 0; i < 5000; ++i) {
        deep += "<d>";
    }
    const Loaded tooDeep = load(deep);
    EXPECT_TRUE(!tooDeep.rootLoaded && tooDeep.error == "Elements nested deeper than 256 levels");
    // Each child repeats its parent's long name: a long root name makes a small file large.
    const std::string name(4000, 'n');
    std::string wide = "<" + name + ">";
    for (int i = 0; i < 20000; ++i) {
        wide += "<c/>";
    }
    const Loaded tooWide = load(wide + "</" + name + ">");
    EXPECT_EQ(tooWide.error + std::to_string(tooWide.rootLoaded),
              "Configuration data larger than 134217728 bytes in memory0");
    // Each entity expands tenfold; the last would be ten billion characters.
    std::string bomb = "<!DOCTYPE b [<!ENTITY e0 \"lol\">";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            bomb += "&e" + std::to_string(i - 1) + ";";
        }
        bomb += "\">";
    }
    const Loaded bombed = load(bomb + "]><b>&e9;</b>");
    EXPECT_TRUE(!bombed.rootLoaded && !bombed.error.empty());
}

TEST_F(DatabaseTest, MergesTheFilesOfEveryFolderInFileNameOrder) {
    TempFolder one, two;
    one.write("a.xml", "<A><B>x</B><Only k=\"1\">a</Only><W k=\"1\" j=\"a\"/></A>");
    // Non-ASCII names are read; a malformed file keeps its finished nodes.
    const std::string file =
        one.write("sub/Réglages/ファイル.xml", "<A><B>z</B><L>1</L><L>2</L></A>");
    one.write("notes.txt", "<A><B>ignored</B></A>");
    one.write("sub/z.xml", "<A><Done>1</Done><Open>");
    two.write("b.xml", "<A><B>y</B><W k=\"2\"/><L>3</L></A>");
    PathItem first(one.path(), nullptr, &recordLoad), second(two.path(), nullptr, nullptr);
    TestDatabase db;
    db.addPath(&first);
    db.addPath(&second);
    // The folders' names are random: the expectations follow their order.
    const bool oneFirst = one.path() < two.path();
    EXPECT_TRUE(first.isInDatabase() && db.getPaths()[oneFirst ? 0 : 1] == one.path());

    // The file names order the merge: one's a.xml before one's sub/Réglages/ファイル.xml.
    EXPECT_EQ(text(db, "A/B"), oneFirst ? "xzy" : "yxz");
    ASSERT_EQ(g_loads.size(), 3u);
    EXPECT_EQ(g_loads[1].first, file);
    // Defined once: the file's own node.
    EXPECT_TRUE(db.getData("A/B")->isCombinedNode() && !db.getData("A/Only")->isCombinedNode());
    EXPECT_EQ(text(db, "A/Only") + text(db, "A/Done") + text(db, "A/Open"), "a1(none)");
    // A later file's attribute wins; the others stay visible.
    EXPECT_EQ(db.getData("A/W")->getAttribute<std::string>("k") +
                  db.getData("A/W")->getAttribute<std::string>("j"),
              oneFirst ? "2a" : "1a");
    // Within a file repeated names make a list; across files the keys merge, and the merge
    // takes the list head's (empty) content, not its list.
    const DataNode::NodePtr l = db.getData("A/L");
    EXPECT_TRUE(l->isCombinedNode() && !l->isNodeList() && l->getValue<std::string>() == "3");
    // The merged root's children are the files' own nodes: the first file's B comes first.
    EXPECT_EQ(db.getData("A")->getElement("B")->getValue<std::string>(), oneFirst ? "x" : "y");
}

TEST_F(DatabaseTest, ScansAtMostOncePerIntervalAndRereadsAFileWhoseTimeChanged) {
    TempFolder folder;
    const std::string file = folder.write("a.xml", "<A>1</A>", 1000);
    PathItem item(folder.path(), nullptr, &recordLoad);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "A"), "1");
    // Written before the read, if any: content and time; then the clock, a forced check, the
    // text read and the number of loads.
    const std::tuple<const char *, qint64, double, bool, const char *, unsigned> steps[] = {
        {"<A>2</A>", 2000, 100.0, false, "1", 1},
        {nullptr, 0, 105.0, false, "1", 1},
        {nullptr, 0, 105.5, false, "2", 2},
        // The next interval counts from the time taken before the scan.
        {"<A>3</A>", 3000, 110.5, false, "2", 2},
        {nullptr, 0, 110.5, true, "3", 3},
        {"<A>4</A>", 3000, 120.0, false, "3", 3},  // new content, same time: not seen
        {"<A>5</A>", 2500, 130.0, false, "5", 4},  // an older time is a change too
    };
    for (auto const &[content, time, clock, forced, seen, loads] : steps) {
        SCOPED_TRACE(std::to_string(clock) + (content ? content : ""));
        if (content != nullptr) {
            folder.write("a.xml", content, time);
        }
        platform.setClock(clock);
        if (forced) {
            db.forceFileCheck();
        }
        EXPECT_EQ(text(db, "A"), seen);
        EXPECT_EQ(db.loadCount(file), loads);
    }
    // The callback hears of every read, and of the first only once.
    EXPECT_EQ(g_loads, (std::vector<std::pair<std::string, bool>>{
                           {file, true}, {file, false}, {file, false}, {file, false}}));

    // Registering a folder forces the next read to scan.
    TempFolder later;
    later.write("b.xml", "<B>b</B>");
    PathItem laterItem(later.path(), nullptr, nullptr);
    db.addPath(&laterItem);
    EXPECT_EQ(text(db, "B"), "b");
    // A file that has gone keeps its data; so does a folder taken out.
    ASSERT_TRUE(QFile::remove(QString::fromStdString(file)));
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "5");
    EXPECT_TRUE(db.removePath(folder.path()));
    EXPECT_FALSE(item.isInDatabase() || db.removePath(folder.path()));
    folder.write("a.xml", "<A>6</A>", 7000);
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "5");
}

TEST_F(DatabaseTest, ItemsRegisterOnceAndTakeThemselvesOutWhenDestroyed) {
    TempFolder folder;
    PathItem item(folder.path(), nullptr, nullptr), twin(folder.path(), nullptr, nullptr);
    {
        TestDatabase db;
        db.addPath(&item);
        db.addPath(&twin);
        db.addPath(nullptr);
        EXPECT_TRUE(item.isInDatabase() && !twin.isInDatabase() && db.getPaths().size() == 1u);
    }
    EXPECT_FALSE(item.isInDatabase()) << "the database let go of its items when it went";

    // The one database: an item takes its folder out when it goes, also by its module's
    // deleter.
    Database &instance = VORT::XMLDB::DefaultGetDatabase();
    const std::string path = folder.path("instance");
    auto *owned = new PathItem(path + "-deleter", nullptr, nullptr);
    {
        PathItem local(path, nullptr, nullptr);
        VORT::ModuleObjectDeleter deleter;
        PathItem *entered = new PathItem(path + "-module", &deleter, nullptr);
        instance.addPath(&local);
        instance.addPath(entered);
        instance.addPath(owned);
        EXPECT_EQ(instance.getPaths().size(), 3u);
    }
    EXPECT_EQ(instance.getPaths(), std::vector<std::string>{path + "-deleter"});
    delete owned;
    EXPECT_TRUE(instance.getPaths().empty());
}
