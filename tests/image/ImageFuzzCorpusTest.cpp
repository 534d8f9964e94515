// Replays every input kept under fuzz/corpus/ for the image fuzz targets through the targets'
// own checks, so that a crash found once stays fixed. The three targets are compiled into this
// executable under names of their own.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int ImageKeyFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapPngFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapTextFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void replay(const char *name, int (*target)(const std::uint8_t *, std::size_t)) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(VORT_FUZZ_CORPUS_DIR) / name;
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
        EXPECT_EQ(target(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()), 0);
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}

}  // namespace

TEST(ImageFuzzCorpus, ReplaysTheKeptInputsOfEveryTarget) {
    replay("image_key_fuzzer", &ImageKeyFuzzerTestOneInput);
    replay("pixmap_png_fuzzer", &PixmapPngFuzzerTestOneInput);
    replay("pixmap_text_fuzzer", &PixmapTextFuzzerTestOneInput);
}
