#include "XmlTestSupport.h"
#include <vort/err/Exception.h>
#include <vort/xml/XmlWriter.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::XmlWriter;
using VORT::XmlWriterSettings;
using vort_test::TempFolder;

namespace {

// Runs one call written as "name" or "name:arg,arg,...".
void call(XmlWriter &writer, std::string const &step) {
    const std::string::size_type colon = step.find(':');
    const std::string name = step.substr(0, colon);
    std::vector<std::string> a;
    if (colon != std::string::npos) {
        std::string rest = step.substr(colon + 1);
        std::string::size_type comma;
        while ((comma = rest.find(',')) != std::string::npos) {
            a.push_back(rest.substr(0, comma));
            rest.erase(0, comma + 1);
        }
        a.push_back(rest);
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
