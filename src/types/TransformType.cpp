#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/TransformType.h>

namespace VORT {

any TransformType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // A number, then eight times a separator that is taken but never looked at, and a number.
    TextForm::Reader in(text);
    double elements[9] = {};
    char separator = '\0';
    in >> elements[0];
    for (int index = 1; index < 9; ++index) {
        in >> separator >> elements[index];
    }
    if (in.fail()) {
        return cantConvert(text, "' to transform", CodeLocation(".\\types\\TransformType", 51),
                           error);
    }
    return any(Transform(elements));
}

std::string TransformType::convertToString(any const &value) const {
    const Transform transform = any_cast<Transform>(value);
    TextForm::Writer text;
    text << transform[0][0];
    for (int index = 1; index < 9; ++index) {
        text << ',' << transform[index / 3][index % 3];
    }
    return std::move(text.text());
}

any TransformType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    double elements[9];
    for (int index = 0; index < 9; ++index) {
        ByteForm::load(bytes.data() + 8 * index, elements[index]);
    }
    return any(Transform(elements));
}

ByteArray TransformType::convertToByteArray(any const &value) const {
    const Transform transform = any_cast<Transform>(value);
    unsigned char bytes[72];
    for (int index = 0; index < 9; ++index) {
        ByteForm::store(bytes + 8 * index, transform[index / 3][index % 3]);
    }
    return ByteArray(bytes, 72u);
}

template class TypeFamily<TransformType>;
template class TypeBase<TransformType, Transform>;

}  // namespace VORT
