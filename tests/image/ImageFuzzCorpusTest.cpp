// Replays every input kept under fuzz/corpus/ for the image fuzz targets through the targets'
// own checks, so that a crash found once stays fixed. The three targets are compiled into this
// executable under names of their own.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

extern "C" int ImageKeyFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapPngFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapTextFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

TEST(ImageFuzzCorpus, ReplaysTheKeptInputsOfEveryTarget) {
    const std::pair<const char *, int (*)(const std::uint8_t *, std::size_t)> targets[] = {
        {"image_key_fuzzer", &ImageKeyFuzzerTestOneInput},
        {"pixmap_png_fuzzer", &PixmapPngFuzzerTestOneInput},
        {"pixmap_text_fuzzer", &PixmapTextFuzzerTestOneInput}};
    for (auto const &[name, target] : targets) {
        int replayed = 0;
        for (auto const &entry : std::filesystem::directory_iterator(
                 std::filesystem::path(VORT_FUZZ_CORPUS_DIR) / name)) {
            std::ostringstream bytes;
            bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            const std::string data = bytes.str();
            SCOPED_TRACE(entry.path().string());
            EXPECT_EQ(target(reinterpret_cast<const std::uint8_t *>(data.data()), data.size()), 0);
            ++replayed;
        }
        EXPECT_GT(replayed, 0) << name;
    }
}
