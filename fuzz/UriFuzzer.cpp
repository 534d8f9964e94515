// Feeds arbitrary text to the URI forms that never throw: the text constructor, `relativize`
// and `fromLocalFileOrUri`. The input is a base and a target, split at the first line end.
// Beyond not crashing, leaking or hanging: a target of another scheme comes back unchanged, a
// URI relativized against itself loses its path when the path has a named segment, and a local
// file text always ends as a "file:" URI.
#include "FuzzCheck.h"
#include <vort/xml/Uri.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

bool hasNamedSegment(std::string const &path) {
    return path.find_first_not_of('/') != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    const std::string::size_type split = input.find('\n');
    const std::string baseText = input.substr(0, split);
    const std::string targetText = split == std::string::npos ? input : input.substr(split + 1);

    const VORT::Uri base(baseText);
    const VORT::Uri target(targetText);
    const VORT::Uri relative = base.relativize(target);
    if (base.getScheme() != target.getScheme() || base.isOpaque() || target.isOpaque()) {
        check(relative == target);
    }
    relative.toString();
    relative.toEncodedString();
    base.resolve(relative);
    base.isPrefix(target);
    base.isParent(target);

    const VORT::Uri self = base.relativize(base);
    if (!base.isOpaque() && hasNamedSegment(base.getPath())) {
        check(self.getPath().empty());
    }

    const VORT::Uri local = VORT::Uri::fromLocalFileOrUri(targetText);
    check(local.getScheme() == "file");
    local.toLocalFile();
    return 0;
}
