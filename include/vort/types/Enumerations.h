// The library's eleven plain enumerations, which have no `Type` of their own, and their stream
// operators: `TextHAlign::Type`, `TextVAlign::Type`, `StrokeStyle::Type`, `TextFormat::Type`,
// `TextFlowStyle::Type`, `FontWeight::Type`, `FontAngle::Type` and `FontMapMode::Type` in
// namespace `VORT`; `GradientSpread`, `StrokeCap` and `StrokeJoin` in namespace `RD`.
//
// Only their use as ints is fixed: the streams move them as decimal ints. `<<` writes the int;
// `>>` extracts an int and assigns it with no range test, so any int comes through. When the
// extraction fails the target keeps its value and the stream's flags tell.
//
// Each has `int` as its underlying type, so every int is one of its values.
//
// Thread safety: plain values. Nothing here reports failure but the stream.
#ifndef VORT_TYPES_ENUMERATIONS_H
#define VORT_TYPES_ENUMERATIONS_H

#include <vort/vort_export.h>

#include <iosfwd>

namespace VORT {

namespace TextHAlign {
enum Type : int { Left = 0, Center = 1, Right = 2, Justify = 3 };
}

namespace TextVAlign {
enum Type : int { Top = 0, Middle = 1, Bottom = 2, Baseline = 3 };
}

namespace StrokeStyle {
enum Type : int { NoLine = 0, Solid = 1, Dash = 2, Dot = 3, DashDot = 4, DashDotDot = 5 };
}

namespace TextFormat {
enum Type : int { Plain = 0, Rich = 1 };
}

namespace TextFlowStyle {
enum Type : int { SingleLine = 0, WordWrap = 1, CharacterWrap = 2 };
}

namespace FontWeight {
enum Type : int { Light = 0, Normal = 1, DemiBold = 2, Bold = 3, Black = 4 };
}

namespace FontAngle {
enum Type : int { Upright = 0, Italic = 1, Oblique = 2 };
}

namespace FontMapMode {
enum Type : int { Points = 0, Pixels = 1 };
}

}  // namespace VORT

namespace RD {

enum GradientSpread : int { PadSpread = 0, ReflectSpread = 1, RepeatSpread = 2 };
enum StrokeCap : int { FlatCap = 0, SquareCap = 1, RoundCap = 2 };
enum StrokeJoin : int { MiterJoin = 0, BevelJoin = 1, RoundJoin = 2 };

}  // namespace RD

VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::TextHAlign::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::TextVAlign::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::StrokeStyle::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::TextFormat::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::TextFlowStyle::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::FontWeight::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::FontAngle::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::FontMapMode::Type const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, RD::GradientSpread const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, RD::StrokeCap const &value);
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, RD::StrokeJoin const &value);

VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::TextHAlign::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::TextVAlign::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::StrokeStyle::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::TextFormat::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::TextFlowStyle::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::FontWeight::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::FontAngle::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::FontMapMode::Type &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, RD::GradientSpread &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, RD::StrokeCap &value);
VORT_EXPORT std::istream &operator>>(std::istream &stream, RD::StrokeJoin &value);

#endif  // VORT_TYPES_ENUMERATIONS_H
