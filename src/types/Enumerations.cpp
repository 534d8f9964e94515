#include <vort/types/Enumerations.h>

#include <istream>
#include <ostream>

namespace {

template <class E>
std::ostream &writeInt(std::ostream &stream, E value) {
    return stream << static_cast<int>(value);
}

// The temporary starts from the target, and only a good extraction is assigned back: a stream
// sets a failed int to 0 or to a limit, which must not reach the target.
template <class E>
std::istream &readInt(std::istream &stream, E &value) {
    int number = static_cast<int>(value);
    if (stream >> number) {
        value = static_cast<E>(number);
    }
    return stream;
}

}  // namespace

std::ostream &operator<<(std::ostream &stream, VORT::TextHAlign::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::TextVAlign::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::StrokeStyle::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::TextFormat::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::TextFlowStyle::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::FontWeight::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::FontAngle::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, VORT::FontMapMode::Type const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, RD::GradientSpread const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, RD::StrokeCap const &value) {
    return writeInt(stream, value);
}

std::ostream &operator<<(std::ostream &stream, RD::StrokeJoin const &value) {
    return writeInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::TextHAlign::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::TextVAlign::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::StrokeStyle::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::TextFormat::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::TextFlowStyle::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::FontWeight::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::FontAngle::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, VORT::FontMapMode::Type &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, RD::GradientSpread &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, RD::StrokeCap &value) {
    return readInt(stream, value);
}

std::istream &operator>>(std::istream &stream, RD::StrokeJoin &value) {
    return readInt(stream, value);
}
