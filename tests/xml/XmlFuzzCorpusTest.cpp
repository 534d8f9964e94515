// Both targets are compiled into this executable under names of their own.
#include "support/FuzzCorpus.h"

extern "C" int uriFuzzerInput(const std::uint8_t *data, std::size_t size);
extern "C" int xmlDataNodeFuzzerInput(const std::uint8_t *data, std::size_t size);

TEST(XmlFuzzCorpus, ReplaysTheKeptInputsOfBothTargets) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "uri_fuzzer", &uriFuzzerInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "xml_datanode_fuzzer", &xmlDataNodeFuzzerInput);
}
