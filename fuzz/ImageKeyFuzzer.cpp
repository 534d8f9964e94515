// Feeds arbitrary bytes to the image key reader. Beyond not crashing or hanging, `parseKey` must
// agree with a second reading of the grammar, written the other way round (find every splitting
// ";" first, then assign the fields), refuse exactly what the grammar refuses, and read back the
// fields of a key that `buildKey` made from them.
#include "FuzzCheck.h"
#include <vort/image/ImageKey.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#ifndef VORT_FUZZ_ENTRY
#define VORT_FUZZ_ENTRY LLVMFuzzerTestOneInput
#endif

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

struct Fields {
    bool ok = false;
    std::string a, b, name, args;
};

Fields reference(std::string const &key) {
    Fields fields;
    if (key.size() < 3 || key.front() != '(' || key.back() != ')') {
        return fields;
    }
    const std::size_t last = key.size() - 1;
    std::vector<std::size_t> splits;
    int depth = 0;
    for (std::size_t i = 1; i < last && splits.size() < 4; ++i) {
        if (key[i] == '(') {
            ++depth;
        } else if (key[i] == ')') {
            --depth;
        } else if (key[i] == ';' && depth == 0) {
            splits.push_back(i);
        }
    }
    std::size_t begin = 1;
    std::string *const targets[] = {&fields.a, &fields.b, &fields.name};
    for (std::size_t field = 0; field < 3 && field < splits.size(); ++field) {
        *targets[field] = key.substr(begin, splits[field] - begin);
        begin = splits[field] + 1;
    }
    if (splits.size() == 4) {
        const std::size_t close = key.find(')', begin);
        const std::size_t semi = key.rfind(';', close);
        fields.args = key.substr(begin, (semi > splits[3] ? semi : close) - begin);
    } else if (splits.size() == 3 && last - begin >= 2) {
        fields.args = key.substr(begin, last - begin);
    }
    fields.ok = !fields.a.empty();
    return fields;
}

Fields parse(std::string const &key) {
    Fields fields;
    fields.ok = VORT::ImageCompositor::parseKey(key, fields.a, fields.b, fields.name, fields.args);
    return fields;
}

bool hasSplittingSemicolon(std::string const &text) {
    int depth = 0;
    for (char c : text) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (depth < 0 || (c == ';' && depth == 0)) {
            return true;
        }
    }
    return depth != 0;
}

}  // namespace

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size) {
    const std::string key(reinterpret_cast<const char *>(data), size);
    const Fields got = parse(key);
    const Fields expected = reference(key);
    check(got.ok == expected.ok, "the verdict follows the grammar");
    check(got.a == expected.a && got.b == expected.b, "the operands follow the grammar");
    check(got.name == expected.name && got.args == expected.args,
          "the modifier fields follow the grammar");

    const std::string normalised = VORT::ImageCompositor::buildKey(key);
    check(normalised.empty() == key.empty(), "only the empty text normalises to nothing");
    if (!key.empty()) {
        check(normalised.front() == '(' && normalised.back() == ')' &&
                  normalised.find(';') != std::string::npos,
              "a normalised text is a key proper");
        check(VORT::ImageCompositor::buildKey(normalised) == normalised,
              "normalising is idempotent");
    }

    // Operands that split nowhere come back from a key made of them, with a closed name.
    if (got.ok && !hasSplittingSemicolon(got.a) && !hasSplittingSemicolon(got.b) &&
        !hasSplittingSemicolon(got.name)) {
        const Fields again = parse(VORT::ImageCompositor::buildKey(got.a, got.b, got.name + ";"));
        check(again.ok && again.a == got.a && again.b == got.b && again.name == got.name &&
                  again.args.empty(),
              "a built key reads back as its fields");
    }
    return 0;
}
