// Replays every input kept under fuzz/corpus/preferences_fuzzer through the fuzz target's own
// checks, so that a crash found once stays fixed.
#include "PreferencesTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(PreferencesFuzzer, ReplaysTheKeptCorpus) {
    int replayed = 0;
    for (auto const &entry : std::filesystem::directory_iterator(
             std::filesystem::path(VORT_FUZZ_CORPUS_DIR) / "preferences_fuzzer")) {
        const std::string bytes = vort_test::readFile(entry.path());
        SCOPED_TRACE(entry.path().filename().string());
        EXPECT_EQ(
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()),
            0);
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}
