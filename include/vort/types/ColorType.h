// `VORT::ColorType`: the member of the type family that carries a `Color` (see Color.h). It has
// one parameter, whether alpha is used, given to `Create(bool)`; types compare by it, and one
// without alpha sorts before one with it.
//
// Text form, writing only: "[ " then the red, green and blue components as doubles (the byte
// divided by 255.0, six significant digits) joined by ", ", then ", " and alpha when alpha is
// used, then " ]": opaque red is "[ 1, 0, 0, 1 ]", or "[ 1, 0, 0 ]" without alpha. Reading text
// never succeeds: every text, the written form included, fails with "Can't convert string
// '<text>' to color". Colours in text are read elsewhere.
//
// Byte form: four bytes, red, green, blue, alpha: the word most significant byte first, unlike
// the rest of the family. Alpha is written and read whatever the parameter says. Reading takes
// bytes 0 to 3 with no length check (fewer than four is a caller fault) and never fails. The
// default value is `Color()`, the word 0x00000001.
//
// `Is` and `GetType` come from `TypeFamily` (see TypeBase.h). Thread safety and failure: as for
// every `Type` (see Type.h).
#ifndef VORT_TYPES_COLORTYPE_H
#define VORT_TYPES_COLORTYPE_H

#include <vort/types/Color.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT ColorType : public TypeFamily<ColorType> {
public:
    static TypeInfo Create(bool usesAlpha);
    // The parameter of the `ColorType` that `info` holds; the handle must hold one.
    static bool UsesAlpha(TypeInfo const &info);

    ColorType(ColorType const &other) = default;
    ColorType &operator=(ColorType const &other) = default;
    ~ColorType() override;

protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    any defaultConstruct() const override;
    bool isValid(any const &value) const override;
    // Equal parameters; less when this one is without alpha and the other with it.
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    ColorType *clone() const override { return new ColorType(*this); }

private:
    explicit ColorType(bool usesAlpha) : usesAlpha(usesAlpha) {}

    bool usesAlpha;
};

extern template class TypeFamily<ColorType>;

}  // namespace VORT

#endif  // VORT_TYPES_COLORTYPE_H
