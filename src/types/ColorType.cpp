#include "TextForm_p.h"
#include <vort/types/ColorType.h>

namespace VORT {

TypeInfo ColorType::Create(bool usesAlpha) {
    return CreateTypeInfo(new ColorType(usesAlpha));
}

bool ColorType::UsesAlpha(TypeInfo const &info) {
    return GetType(info)->usesAlpha;
}

ColorType::~ColorType() = default;

any ColorType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // The text form is written for people and never read back here, not even what
    // `convertToString` gave.
    return cantConvert(text, "' to color", CodeLocation(".\\types\\ColorType", 58), error);
}

std::string ColorType::convertToString(any const &value) const {
    const Color color = any_cast<Color>(value);
    TextForm::Writer text;
    text << "[ " << color.redF() << ", " << color.greenF() << ", " << color.blueF();
    if (usesAlpha) {
        text << ", " << color.alphaF();
    }
    text << " ]";
    return std::move(text.text());
}

any ColorType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    // Each byte through byte / 255.0 and `setRGBA`'s rounding is the byte itself.
    Color color;
    color.setRGBAFromPackedValue((static_cast<unsigned int>(bytes[0u]) << 24) |
                                 (static_cast<unsigned int>(bytes[1u]) << 16) |
                                 (static_cast<unsigned int>(bytes[2u]) << 8) |
                                 static_cast<unsigned int>(bytes[3u]));
    return any(color);
}

ByteArray ColorType::convertToByteArray(any const &value) const {
    const unsigned int rgba = any_cast<Color>(value).getAsRgba();
    const unsigned char bytes[4] = {
        static_cast<unsigned char>(rgba >> 24), static_cast<unsigned char>(rgba >> 16),
        static_cast<unsigned char>(rgba >> 8), static_cast<unsigned char>(rgba)};
    return ByteArray(bytes, 4u);
}

any ColorType::defaultConstruct() const {
    return any(Color());
}

bool ColorType::isValid(any const &value) const {
    return !value.empty() && value.type() == typeid(Color);
}

bool ColorType::isEqualTo(Type *other) const {
    return usesAlpha == static_cast<ColorType *>(other)->usesAlpha;
}

bool ColorType::isLessThan(Type *other) const {
    return !usesAlpha && static_cast<ColorType *>(other)->usesAlpha;
}

template class TypeFamily<ColorType>;

}  // namespace VORT
