// Replays every input kept under fuzz/corpus/preferences_fuzzer through the fuzz target's own
// checks, so that a crash found once stays fixed.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(PreferencesFuzzer, ReplaysTheKeptCorpus) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(VORT_FUZZ_CORPUS_DIR) / "preferences_fuzzer";
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
        EXPECT_EQ(
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()),
            0);
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}
