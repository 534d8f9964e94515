// Replays every input kept under fuzz/corpus/ for the module's two fuzz targets through the
// targets' own checks, so that a crash found once stays fixed. The targets are compiled into
// this executable under names of their own.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int uriFuzzerInput(const std::uint8_t *data, std::size_t size);
extern "C" int xmlDataNodeFuzzerInput(const std::uint8_t *data, std::size_t size);

namespace {

int replay(const char *name, int (*target)(const std::uint8_t *, std::size_t)) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(VORT_FUZZ_CORPUS_DIR) / name;
    EXPECT_TRUE(fs::is_directory(folder)) << folder;
    int replayed = 0;
    for (fs::directory_entry const &entry : fs::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)),
                                std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().filename().string());
        EXPECT_EQ(target(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()), 0);
        ++replayed;
    }
    return replayed;
}

}  // namespace

TEST(XmlFuzzCorpus, ReplaysTheKeptInputsOfBothTargets) {
    EXPECT_GT(replay("uri_fuzzer", &uriFuzzerInput), 0);
    EXPECT_GT(replay("xml_datanode_fuzzer", &xmlDataNodeFuzzerInput), 0);
}
