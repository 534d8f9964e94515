#include "ByteForm_p.h"
#include "TextForm_p.h"
#include <vort/types/PointType.h>

namespace VORT {

namespace {

// Points and rectangles as arrays of their fields in declared order, for the shared code below.
template <class T>
struct Fields;

template <class T>
struct Fields<VTPoint<T>> {
    static constexpr int count = 2;
    static void get(VTPoint<T> const &point, T (&fields)[2]) {
        fields[0] = point.x;
        fields[1] = point.y;
    }
    static VTPoint<T> make(T const (&fields)[2]) { return VTPoint<T>(fields[0], fields[1]); }
};

template <class T>
struct Fields<VTRect<T>> {
    static constexpr int count = 4;
    static void get(VTRect<T> const &rect, T (&fields)[4]) {
        fields[0] = rect.x;
        fields[1] = rect.y;
        fields[2] = rect.width;
        fields[3] = rect.height;
    }
    static VTRect<T> make(T const (&fields)[4]) {
        return VTRect<T>(fields[0], fields[1], fields[2], fields[3]);
    }
};

template <class Value, class T, int N = Fields<Value>::count>
bool readText(std::string const &text, Value &value) {
    // Number, then character and number in turn; the separators are taken, never looked at.
    TextForm::Reader in(text);
    T fields[N] = {};
    char separator = '\0';
    in >> fields[0];
    for (int index = 1; index < N; ++index) {
        in >> separator >> fields[index];
    }
    if (in.fail()) {
        return false;
    }
    value = Fields<Value>::make(fields);
    return true;
}

template <class Value, class T, int N = Fields<Value>::count>
std::string writeText(any const &value) {
    T fields[N];
    Fields<Value>::get(any_cast<Value>(value), fields);
    TextForm::Writer text;
    text << fields[0];
    for (int index = 1; index < N; ++index) {
        text << ',' << fields[index];
    }
    return std::move(text.text());
}

template <class Value, class T, int N = Fields<Value>::count>
any readBytes(ByteArray const &bytes) {
    T fields[N];
    for (int index = 0; index < N; ++index) {
        ByteForm::load(bytes.data() + index * sizeof(T), fields[index]);
    }
    return any(Fields<Value>::make(fields));
}

template <class Value, class T, int N = Fields<Value>::count>
ByteArray writeBytes(any const &value) {
    T fields[N];
    Fields<Value>::get(any_cast<Value>(value), fields);
    unsigned char bytes[N * sizeof(T)];
    for (int index = 0; index < N; ++index) {
        ByteForm::store(bytes + index * sizeof(T), fields[index]);
    }
    return ByteArray(bytes, static_cast<unsigned int>(sizeof bytes));
}

const char *const kSource = ".\\types\\PointType";

}  // namespace

any IPointType::convertFromString(std::string const &text, ErrorHolder &error) const {
    VTPoint<int> point;
    if (readText<VTPoint<int>, int>(text, point)) {
        return any(point);
    }
    return cantConvert(text, "' to IPoint", CodeLocation(kSource, 48), error);
}

std::string IPointType::convertToString(any const &value) const {
    return writeText<VTPoint<int>, int>(value);
}

any IPointType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return readBytes<VTPoint<int>, int>(bytes);
}

ByteArray IPointType::convertToByteArray(any const &value) const {
    return writeBytes<VTPoint<int>, int>(value);
}

any DPointType::convertFromString(std::string const &text, ErrorHolder &error) const {
    VTPoint<double> point;
    if (readText<VTPoint<double>, double>(text, point)) {
        return any(point);
    }
    return cantConvert(text, "' to DPoint", CodeLocation(kSource, 96), error);
}

std::string DPointType::convertToString(any const &value) const {
    return writeText<VTPoint<double>, double>(value);
}

any DPointType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return readBytes<VTPoint<double>, double>(bytes);
}

ByteArray DPointType::convertToByteArray(any const &value) const {
    return writeBytes<VTPoint<double>, double>(value);
}

any IRectType::convertFromString(std::string const &text, ErrorHolder &error) const {
    VTRect<int> rect;
    if (readText<VTRect<int>, int>(text, rect)) {
        return any(rect);
    }
    return cantConvert(text, "' to IRect", CodeLocation(kSource, 144), error);
}

std::string IRectType::convertToString(any const &value) const {
    return writeText<VTRect<int>, int>(value);
}

any IRectType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return readBytes<VTRect<int>, int>(bytes);
}

ByteArray IRectType::convertToByteArray(any const &value) const {
    return writeBytes<VTRect<int>, int>(value);
}

any DRectType::convertFromString(std::string const &text, ErrorHolder &error) const {
    VTRect<double> rect;
    if (readText<VTRect<double>, double>(text, rect)) {
        return any(rect);
    }
    return cantConvert(text, "' to DRect", CodeLocation(kSource, 192), error);
}

std::string DRectType::convertToString(any const &value) const {
    return writeText<VTRect<double>, double>(value);
}

any DRectType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return readBytes<VTRect<double>, double>(bytes);
}

ByteArray DRectType::convertToByteArray(any const &value) const {
    return writeBytes<VTRect<double>, double>(value);
}

template class TypeFamily<IPointType>;
template class TypeBase<IPointType, VTPoint<int>>;
template class TypeFamily<DPointType>;
template class TypeBase<DPointType, VTPoint<double>>;
template class TypeFamily<IRectType>;
template class TypeBase<IRectType, VTRect<int>>;
template class TypeFamily<DRectType>;
template class TypeBase<DRectType, VTRect<double>>;

}  // namespace VORT
