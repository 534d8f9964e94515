// The smallest host: start the library once, then raise and read one of its catalogue errors.
#include <vort/vort.h>

#include <cstdio>

int main() {
    initialize_vort_util();

    VORT::ErrorHolder error;
    error.setError(VORT::ZQFErrorType<VORT::VT_PackageNotFound>(
        VORT::CodeLocation(".\\examples\\host", 12), "tools.paint"));
    std::printf("%s: %s\n", error.id().c_str(), error.what().c_str());
    return error.hasError() ? 0 : 1;
}
