#include "support/FuzzCorpus.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int GradientTextFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(TypeConversionFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "type_conversion_fuzzer",
                            &LLVMFuzzerTestOneInput);
}

TEST(GradientTextFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "gradient_text_fuzzer",
                            &GradientTextFuzzerTestOneInput);
}
