// `VORT::GradientType`: the member of the type family that carries a `Gradient` (see
// Gradient.h). It has no parameters: every two are equal and none is less than another.
//
// Text form: the gradient's own text form, every value followed by a comma ("0," is the null
// gradient). Reading fails with "Can't convert string '<text>' to Gradient" when the stream
// reading it ends failed; text after the last value is ignored. The default value is the null
// gradient.
//
// Kept from `Type` on purpose: there is no byte form through the type (reading gives an empty
// `any` without an error, writing an empty `ByteArray`; the gradient's byte stream is reached
// through `Gradient` itself), and `isValid` is false for every value.
//
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_GRADIENTTYPE_H
#define VORT_TYPES_GRADIENTTYPE_H

#include <vort/types/Gradient.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT GradientType : public TypeFamily<GradientType> {
public:
    static TypeInfo Create();

protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any defaultConstruct() const override;
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    GradientType *clone() const override { return new GradientType(*this); }
};

extern template class TypeFamily<GradientType>;

}  // namespace VORT

#endif  // VORT_TYPES_GRADIENTTYPE_H
