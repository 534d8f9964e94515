#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/DoubleType.h>

namespace VORT {

any DoubleType::convertFromString(std::string const &text, ErrorHolder &error) const {
    TextForm::Reader in(text);
    double value = 0.0;
    in >> value;
    if (in.fail()) {
        return cantConvert(text, "' to double", CodeLocation(".\\types\\DoubleType", 39), error);
    }
    return any(value);
}

std::string DoubleType::convertToString(any const &value) const {
    TextForm::Writer text;
    text << any_cast<double>(value);
    return std::move(text.text());
}

any DoubleType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    double value;
    ByteForm::load(bytes.data(), value);
    return any(value);
}

ByteArray DoubleType::convertToByteArray(any const &value) const {
    unsigned char bytes[8];
    ByteForm::store(bytes, any_cast<double>(value));
    return ByteArray(bytes, 8u);
}

template class TypeFamily<DoubleType>;
template class TypeBase<DoubleType, double>;

}  // namespace VORT
