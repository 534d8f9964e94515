// Replays every input kept under fuzz/corpus/text_grammar_fuzzer through the fuzz target's own
// checks, so that a crash found once stays fixed.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(TextGrammarFuzzer, ReplaysTheKeptCorpus) {
    const std::filesystem::path folder =
        std::filesystem::path(VORT_FUZZ_CORPUS_DIR) / "text_grammar_fuzzer";
    int replayed = 0;
    for (auto const &entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)),
                                std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().filename().string());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
        ++replayed;
    }
    EXPECT_GT(replayed, 9);
}
