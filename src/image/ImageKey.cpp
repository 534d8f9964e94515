#include "ImageKey_p.h"
#include <vort/image/ImageKey.h>

#include <sstream>

namespace VORT {
namespace ImageCompositor {

std::string buildKey(std::string const &key) {
    if (key.empty() || isKeyProper(key)) {
        return key;
    }
    return "(" + key + ";;)";
}

std::string buildKey(std::string const &a, std::string const &b, std::string const &c) {
    std::string key;
    key.reserve(a.size() + b.size() + c.size() + 4);
    key += '(';
    key += a;
    key += ';';
    key += b;
    key += ';';
    key += c;
    key += ')';
    return key;
}

std::string buildKey(std::string const &a, Mode const &mode) {
    return buildKey(a, std::string(), mode.getName().getString());
}

std::string buildKey(std::string const &a, std::string const &b, Mode const &mode) {
    return buildKey(a, b, mode.getName().getString());
}

namespace Builders {

std::string buildKeyColor(std::string const &a, Color const &color, bool toGrayscale) {
    if (a.empty() || isKeyProper(a)) {
        return a;
    }
    std::ostringstream key;
    key << '(' << a << ";;color_modifier:;" << color.redF() << ',' << color.greenF() << ','
        << color.blueF() << ',' << color.alphaF() << ';' << (toGrayscale ? 1 : 0) << ";)";
    return key.str();
}

}  // namespace Builders

bool parseKey(std::string const &key, std::string &a, std::string &b, std::string &modifierName,
              std::string &modifierArgs) {
    const std::size_t length = key.size();
    if (length < 3 || key.front() != '(' || key.back() != ')') {
        return false;
    }
    const std::size_t last = length - 1;
    std::string *const fields[] = {&a, &b, &modifierName};
    std::size_t start = 1;
    int field = 0;
    int depth = 0;
    std::size_t i = 1;
    for (; i < last; ++i) {
        const char c = key[i];
        if (c == '(') {
            ++depth;
        } else if (c == ')') {
            --depth;
        } else if (c == ';' && depth == 0) {
            if (field < 3) {
                fields[field]->assign(key, start, i - start);
                start = i + 1;
                ++field;
                continue;
            }
            // A ";" closes the arguments too: they run to the last ";" before the first ")"
            // after them, or to that ")" when there is no later ";".
            const std::size_t close = key.find(')', start);
            const std::size_t semi = key.rfind(';', close);
            if (semi != std::string::npos && semi > i) {
                modifierArgs.assign(key, start, semi - start);
            } else {
                modifierArgs.assign(key, start, close - start);
            }
            return !a.empty();
        }
    }
    // Arguments without a closing ";" stand only when they have two characters or more.
    if (field == 3 && start + 1 < i) {
        modifierArgs.assign(key, start, i - start);
    }
    return !a.empty();
}

}  // namespace ImageCompositor
}  // namespace VORT
