// What a fuzz target does with a promise that the code under test broke: it names the promise
// on the standard error and aborts, which libFuzzer and the tests that replay the corpora both
// report as a failure, with the stack that led there.
#ifndef VORT_FUZZ_FUZZCHECK_H
#define VORT_FUZZ_FUZZCHECK_H

#include <cstdio>
#include <cstdlib>

namespace vort_fuzz {

inline void check(bool condition, const char *what = "see the stack") {
    if (!condition) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}

}  // namespace vort_fuzz

#endif  // VORT_FUZZ_FUZZCHECK_H
