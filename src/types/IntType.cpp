#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/IntType.h>

namespace VORT {

any IntType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // One extraction; only the stream's state after it counts, so trailing text passes.
    TextForm::Reader in(text);
    int value = 0;
    in >> value;
    if (in.fail()) {
        return cantConvert(text, "' to int", CodeLocation(".\\types\\IntType", 39), error);
    }
    return any(value);
}

std::string IntType::convertToString(any const &value) const {
    TextForm::Writer text;
    text << any_cast<int>(value);
    return std::move(text.text());
}

any IntType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    int value;
    ByteForm::load(bytes.data(), value);
    return any(value);
}

ByteArray IntType::convertToByteArray(any const &value) const {
    unsigned char bytes[4];
    ByteForm::store(bytes, any_cast<int>(value));
    return ByteArray(bytes, 4u);
}

template class TypeFamily<IntType>;
template class TypeBase<IntType, int>;

}  // namespace VORT
