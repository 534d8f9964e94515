// Replays the inputs kept under fuzz/corpus/<target>/ through a fuzz target's own checks, so
// that a crash or a broken promise found once stays fixed. Each test target compiles the fuzz
// sources it replays and names the corpus folder in VORT_FUZZ_CORPUS_DIR.
#ifndef VORT_TEST_FUZZ_CORPUS_H
#define VORT_TEST_FUZZ_CORPUS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vort_test {

inline void replayCorpus(std::filesystem::path const &corpus, const char *target,
                         int (*entry)(const std::uint8_t *, std::size_t)) {
    int replayed = 0;
    for (auto const &file : std::filesystem::directory_iterator(corpus / target)) {
        std::ifstream in(file.path(), std::ios::binary);
        const std::string data{std::istreambuf_iterator<char>(in), {}};
        EXPECT_EQ(entry(reinterpret_cast<const std::uint8_t *>(data.data()), data.size()), 0)
            << file.path();
        ++replayed;
    }
    EXPECT_GT(replayed, 0) << target;
}

}  // namespace vort_test

#endif  // VORT_TEST_FUZZ_CORPUS_H
