// The three image targets are compiled into this executable under names of their own.
#include "support/FuzzCorpus.h"

extern "C" int ImageKeyFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapPngFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapTextFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

TEST(ImageFuzzCorpus, ReplaysTheKeptInputsOfEveryTarget) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "image_key_fuzzer", &ImageKeyFuzzerTestOneInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "pixmap_png_fuzzer",
                            &PixmapPngFuzzerTestOneInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "pixmap_text_fuzzer",
                            &PixmapTextFuzzerTestOneInput);
}
