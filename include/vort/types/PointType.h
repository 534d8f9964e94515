// `VORT::IPointType`, `DPointType`, `IRectType` and `DRectType`: the members of the type family
// that carry `VTPoint<int>`, `VTPoint<double>`, `VTRect<int>` and `VTRect<double>` (see
// VTPoint.h).
//
// Text form: the fields in declared order joined by single commas, no blanks; doubles with six
// significant digits, so the text loses precision: the point (1, 2) is "1,2". Reading extracts a
// number, then one character, alternately, ending with a number (three extractions for a point,
// seven for a rectangle). Whitespace before each is skipped and any character is taken as the
// separator: "3;4" reads as (3, 4), and in "3 45" the '4' is the separator and 5 the second
// number. Text after the last number is ignored. A missing number, or one out of range for the
// field, fails with "Can't convert string '<text>' to IPoint" (DPoint, IRect, DRect).
//
// Byte form: the fields in declared order, least significant byte first, int fields as 4 bytes
// and double fields as 8: 8, 16, 16 and 32 bytes. Reading takes that many bytes with no length
// check (a shorter array is a caller fault) and never fails. The default value has every field
// zero.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_POINTTYPE_H
#define VORT_TYPES_POINTTYPE_H

#include <vort/types/TypeBase.h>
#include <vort/types/VTPoint.h>

namespace VORT {

class VORT_EXPORT IPointType : public TypeBase<IPointType, VTPoint<int>> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    IPointType *clone() const override { return new IPointType(*this); }
};

class VORT_EXPORT DPointType : public TypeBase<DPointType, VTPoint<double>> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    DPointType *clone() const override { return new DPointType(*this); }
};

class VORT_EXPORT IRectType : public TypeBase<IRectType, VTRect<int>> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    IRectType *clone() const override { return new IRectType(*this); }
};

class VORT_EXPORT DRectType : public TypeBase<DRectType, VTRect<double>> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    DRectType *clone() const override { return new DRectType(*this); }
};

extern template class TypeFamily<IPointType>;
extern template class TypeBase<IPointType, VTPoint<int>>;
extern template class TypeFamily<DPointType>;
extern template class TypeBase<DPointType, VTPoint<double>>;
extern template class TypeFamily<IRectType>;
extern template class TypeBase<IRectType, VTRect<int>>;
extern template class TypeFamily<DRectType>;
extern template class TypeBase<DRectType, VTRect<double>>;

}  // namespace VORT

#endif  // VORT_TYPES_POINTTYPE_H
