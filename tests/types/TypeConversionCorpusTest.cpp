// Replays every input kept under fuzz/corpus/<fuzzer> through that fuzz target's own checks, so
// that a crash found once stays fixed.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int GradientTextFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void replay(const char *fuzzer, int (*testOneInput)(const uint8_t *, size_t)) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(VORT_FUZZ_CORPUS_DIR) / fuzzer;
    ASSERT_TRUE(fs::is_directory(folder)) << folder;
    int replayed = 0;
    for (fs::directory_entry const &entry : fs::directory_iterator(folder)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)),
                                std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().filename().string());
        EXPECT_EQ(testOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()), 0);
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}

}  // namespace

TEST(TypeConversionFuzzer, ReplaysTheKeptCorpus) {
    replay("type_conversion_fuzzer", &LLVMFuzzerTestOneInput);
}

TEST(GradientTextFuzzer, ReplaysTheKeptCorpus) {
    replay("gradient_text_fuzzer", &GradientTextFuzzerTestOneInput);
}
