#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/PathType.h>

#include <cstdio>

namespace VORT {

namespace {

// What the reading loop takes as the end of the text: the peek compared by its low byte, so that
// a character 0xFF ends the points as the end of the text does.
bool atEnd(TextForm::Reader &in) {
    return static_cast<char>(in.peek()) == static_cast<char>(EOF);
}

}  // namespace

any PathType::convertFromString(std::string const &text, ErrorHolder &error) const {
    TextForm::Reader in(text);
    Path path;
    while (!atEnd(in)) {
        double x = 0.0;
        double y = 0.0;
        char separator = '\0';
        in >> x >> separator >> y >> separator;
        path.addPoint(VTPoint<double>(x, y));
    }
    if (in.fail()) {
        return cantConvert(text, "' to path", CodeLocation(".\\types\\PathType", 61), error);
    }
    return any(path);
}

std::string PathType::convertToString(any const &value) const {
    Path const *path = any_cast<Path>(&value);
    if (path == nullptr) {
        throw bad_any_cast();
    }
    TextForm::Writer text;
    for (VTPoint<double> const &point : path->getPoints()) {
        text << point.x << ',' << point.y << ';';
    }
    return std::move(text.text());
}

any PathType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    // Whole points only: a tail shorter than a point is ignored.
    const unsigned int count = bytes.size() / 16;
    VVector<VTPoint<double>> points;
    points.reserve(static_cast<int>(count));
    for (unsigned int index = 0; index < count; ++index) {
        VTPoint<double> point;
        ByteForm::load(bytes.data() + 16 * index, point.x);
        ByteForm::load(bytes.data() + 16 * index + 8, point.y);
        points.append(point);
    }
    return any(Path(points));
}

ByteArray PathType::convertToByteArray(any const &value) const {
    Path const *path = any_cast<Path>(&value);
    if (path == nullptr) {
        throw bad_any_cast();
    }
    ByteArray bytes(static_cast<unsigned int>(path->size()) * 16u, static_cast<unsigned char>(0));
    unsigned int at = 0;
    for (VTPoint<double> const &point : path->getPoints()) {
        ByteForm::store(&bytes[at], point.x);
        ByteForm::store(&bytes[at + 8], point.y);
        at += 16;
    }
    return bytes;
}

template class TypeFamily<PathType>;
template class TypeBase<PathType, Path>;

}  // namespace VORT
