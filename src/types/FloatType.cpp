#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/FloatType.h>

namespace VORT {

any FloatType::convertFromString(std::string const &text, ErrorHolder &error) const {
    TextForm::Reader in(text);
    float value = 0.0f;
    in >> value;
    if (in.fail()) {
        return cantConvert(text, "' to float", CodeLocation(".\\types\\FloatType", 39), error);
    }
    return any(value);
}

std::string FloatType::convertToString(any const &value) const {
    TextForm::Writer text;
    text << any_cast<float>(value);
    return std::move(text.text());
}

any FloatType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    float value;
    ByteForm::load(bytes.data(), value);
    return any(value);
}

ByteArray FloatType::convertToByteArray(any const &value) const {
    unsigned char bytes[4];
    ByteForm::store(bytes, any_cast<float>(value));
    return ByteArray(bytes, 4u);
}

any FloatType::defaultConstruct() const {
    // A double, not a float: kept as the family has always made it, though this type's own
    // `isValid` refuses it.
    return any(0.0);
}

template class TypeFamily<FloatType>;
template class TypeBase<FloatType, float>;

}  // namespace VORT
