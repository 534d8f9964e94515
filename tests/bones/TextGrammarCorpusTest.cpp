#include "support/FuzzCorpus.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(TextGrammarFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "text_grammar_fuzzer", &LLVMFuzzerTestOneInput);
}
