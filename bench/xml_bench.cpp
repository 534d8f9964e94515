// The xml module beside its peers: loading a 1 MB configuration file into DataNodes against a
// bare QXmlStreamReader loop that reads every token; Database::getData on its throttled path
// against std::map::find of the same keys; a full rebuild of 100 files of 100 keys each (beside
// the bare reader over the same files); and XmlWriter writing 10,000 elements against
// QXmlStreamWriter given the same std::string data.
#include <vort/xml/DataNode.h>
#include <vort/xml/Database.h>
#include <vort/xml/XmlReader.h>
#include <vort/xml/XmlWriter.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamReader>
#include <QtCore/QXmlStreamWriter>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using VORT::XMLDB::Database;
using VORT::XMLDB::DataNode;

QTemporaryDir &scratch() {
    static QTemporaryDir dir;
    return dir;
}

std::string scratchPath(std::string const &name) {
    return QFile::encodeName(scratch().path() + u'/' + QString::fromStdString(name)).toStdString();
}

void writeFile(std::string const &path, std::string const &bytes) {
    QFile file(QFile::decodeName(QByteArray::fromStdString(path)));
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
}

// A configuration file of sections, each with settings, labels and a value list: about
// `sections` times 640 bytes.
std::string configText(int sections, int file) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n";
    for (int s = 0; s < sections; ++s) {
        const std::string section = "Section" + std::to_string(s);
        text += "  <" + section + " name=\"section " + std::to_string(s) + "\">\n";
        for (int i = 0; i < 8; ++i) {
            text += "    <Setting id=\"" + std::to_string(i) +
                    "\" kind=\"colour\" value=\"0.25,0.5," + std::to_string(i % 2) + "\"/>\n";
        }
        text += "    <Label>Section " + std::to_string(s) + " of file " + std::to_string(file) +
                ", shown in the panel</Label>\n";
        text += "    <Limits csv_list=\"true\">1, 2, 4, 8, 16, 32, 64, 128</Limits>\n";
        text += "    <Enabled>true</Enabled>\n";
        text += "  </" + section + ">\n";
    }
    text += "</Config>\n";
    return text;
}

std::string const &largeConfigFile() {
    static const std::string path = [] {
        const std::string file = scratchPath("large.xml");
        writeFile(file, configText(1600, 0));
        return file;
    }();
    return path;
}

// Loads a file the way the database does.
DataNode::NodeMap loadNodes(std::string const &path) {
    VORT::XmlReader reader(path.c_str());
    DataNode::NodeMap nodes;
    while (reader.hasNext()) {
        DataNode::NodePtr node = boost::make_shared<DataNode>();
        const VORT::XmlEventTypes::Type event = reader.next();
        if (node->loadXML(std::string(), reader, nodes, event)) {
            nodes.emplace(node->getName(), node);
        }
    }
    return nodes;
}

std::size_t readTokens(std::string const &path) {
    QFile file(QFile::decodeName(QByteArray::fromStdString(path)));
    file.open(QIODevice::ReadOnly);
    QXmlStreamReader reader(&file);
    std::size_t tokens = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        ++tokens;
    }
    return tokens;
}

void BM_LoadConfig1MB_Vort(benchmark::State &state) {
    std::string const &path = largeConfigFile();
    for (auto _ : state) {
        DataNode::NodeMap nodes = loadNodes(path);
        benchmark::DoNotOptimize(nodes);
        // Loading is measured; letting go of the tree is not, and neither is the allocator's
        // deferred merging of the chunks freed, which its next larger request would do.
        state.PauseTiming();
        nodes.clear();
        void *volatile block = std::malloc(64 * 1024);
        std::free(block);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(QString::fromStdString(path)).size());
}
BENCHMARK(BM_LoadConfig1MB_Vort)->Unit(benchmark::kMillisecond);

void BM_LoadConfig1MB_QXmlStreamReader(benchmark::State &state) {
    std::string const &path = largeConfigFile();
    for (auto _ : state) {
        benchmark::DoNotOptimize(readTokens(path));
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(QString::fromStdString(path)).size());
}
BENCHMARK(BM_LoadConfig1MB_QXmlStreamReader)->Unit(benchmark::kMillisecond);

// 100 files of 100 keys each (sections of Setting, Label, Limits, Enabled under distinct names).
constexpr int kFiles = 100;

class BenchDatabase : public Database {
public:
    BenchDatabase() : mItem(folder(), nullptr, nullptr) { addPath(&mItem); }
    ~BenchDatabase() override { removePath(mItem.getPath()); }

    static std::string const &folder() {
        static const std::string path = [] {
            const std::string dir = scratchPath("db");
            QDir().mkpath(QString::fromStdString(dir));
            for (int f = 0; f < kFiles; ++f) {
                std::string text =
                    "<?xml version=\"1.0\"?>\n<Root>\n  <File" + std::to_string(f) + ">\n";
                for (int k = 0; k < 98; ++k) {
                    text += "    <Key" + std::to_string(k) + " value=\"" + std::to_string(k) +
                            "\">text " + std::to_string(k) + "</Key" + std::to_string(k) + ">\n";
                }
                text += "  </File" + std::to_string(f) + ">\n</Root>\n";
                writeFile(dir + "/file" + std::to_string(f) + ".xml", text);
            }
            return dir;
        }();
        return path;
    }

    std::vector<std::string> keys() const {
        std::vector<std::string> result;
        for (auto const &entry : mData) {
            result.push_back(entry.first);
        }
        return result;
    }

    // Every file read again, as when all of them changed.
    void rebuildAll() {
        for (auto &entry : mFiles) {
            entry.second->mNeedsRebuild = true;
        }
        forceFileCheck();
    }

private:
    VORT::XMLDB::PathItem mItem;
};

// The keys in a fixed random order, so that neither side walks its map in order.
std::vector<std::string> shuffled(std::vector<std::string> keys) {
    std::mt19937 random(7);
    std::shuffle(keys.begin(), keys.end(), random);
    return keys;
}

void BM_GetData_Vort(benchmark::State &state) {
    BenchDatabase db;
    db.getData("Root");
    const std::vector<std::string> keys = shuffled(db.keys());
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(db.getData(keys[i]));
        i = i + 1 == keys.size() ? 0 : i + 1;
    }
    state.counters["keys"] = static_cast<double>(keys.size());
}
BENCHMARK(BM_GetData_Vort);

void BM_GetData_StdMap(benchmark::State &state) {
    BenchDatabase db;
    db.getData("Root");
    std::map<std::string, boost::shared_ptr<DataNode>> map;
    for (std::string const &key : db.keys()) {
        map.emplace(key, db.getData(key));
    }
    const std::vector<std::string> keys = shuffled(db.keys());
    std::size_t i = 0;
    for (auto _ : state) {
        // The node comes back by handle, as getData gives it.
        const auto found = map.find(keys[i]);
        boost::shared_ptr<DataNode> node =
            found == map.end() ? boost::shared_ptr<DataNode>() : found->second;
        benchmark::DoNotOptimize(node);
        i = i + 1 == keys.size() ? 0 : i + 1;
    }
    state.counters["keys"] = static_cast<double>(keys.size());
}
BENCHMARK(BM_GetData_StdMap);

void BM_Rebuild100Files_Vort(benchmark::State &state) {
    BenchDatabase db;
    db.getData("Root");
    for (auto _ : state) {
        db.rebuildAll();
    }
}
BENCHMARK(BM_Rebuild100Files_Vort)->Unit(benchmark::kMillisecond);

void BM_Rebuild100Files_QXmlStreamReader(benchmark::State &state) {
    std::vector<std::string> files;
    for (int f = 0; f < kFiles; ++f) {
        files.push_back(BenchDatabase::folder() + "/file" + std::to_string(f) + ".xml");
    }
    for (auto _ : state) {
        for (std::string const &file : files) {
            benchmark::DoNotOptimize(readTokens(file));
        }
    }
}
BENCHMARK(BM_Rebuild100Files_QXmlStreamReader)->Unit(benchmark::kMillisecond);

constexpr int kElements = 10000;

struct WriteData {
    std::vector<std::string> ids;
    std::vector<std::string> texts;
};

WriteData const &writeData() {
    static const WriteData data = [] {
        WriteData d;
        for (int i = 0; i < kElements; ++i) {
            d.ids.push_back(std::to_string(i));
            d.texts.push_back("value number " + std::to_string(i * 7));
        }
        return d;
    }();
    return data;
}

void BM_Write10000Elements_Vort(benchmark::State &state) {
    WriteData const &data = writeData();
    const std::string path = scratchPath("written-vort.xml");
    for (auto _ : state) {
        VORT::XmlWriter writer(path.c_str());
        writer.writeStartDocument("1.0");
        writer.writeStartElement("Items");
        for (int i = 0; i < kElements; ++i) {
            writer.writeStartElement("Item");
            writer.writeAttribute("id", data.ids[i]);
            writer.writeValue(data.texts[i]);
            writer.writeEndElement();
        }
        writer.writeEndDocument();
    }
}
BENCHMARK(BM_Write10000Elements_Vort)->Unit(benchmark::kMillisecond);

void BM_Write10000Elements_QXmlStreamWriter(benchmark::State &state) {
    WriteData const &data = writeData();
    const std::string path = scratchPath("written-qt.xml");
    for (auto _ : state) {
        QFile file(QFile::decodeName(QByteArray::fromStdString(path)));
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        QXmlStreamWriter writer(&file);
        writer.setAutoFormatting(true);
        writer.writeStartDocument(QString::fromStdString("1.0"));
        writer.writeStartElement(QString(), QString::fromStdString("Items"));
        for (int i = 0; i < kElements; ++i) {
            writer.writeStartElement(QString(), QString::fromStdString("Item"));
            writer.writeAttribute(QString(), QString::fromStdString("id"),
                                  QString::fromStdString(data.ids[i]));
            writer.writeCharacters(QString::fromStdString(data.texts[i]));
            writer.writeEndElement();
        }
        writer.writeEndElement();
        writer.writeEndDocument();
    }
}
BENCHMARK(BM_Write10000Elements_QXmlStreamWriter)->Unit(benchmark::kMillisecond);

}  // namespace
