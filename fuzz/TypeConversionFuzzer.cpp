// Fuzzes the text and byte readers of every member of the type family, and checks what they
// promise: no crash, hang or leak; a text accepted or refused exactly as a default text stream
// (or the member's own rule) would, with the value that stream reads; a failure worded exactly;
// a byte form read by its fixed width; and values that survive their way out and back in.
//
// Input: the first byte chooses the member (modulo the number of members), the form read (text
// or bytes) and whether the holder starts out with an error; the rest is the text or the bytes.
// Byte arrays shorter than the member's fixed width are skipped: reading them is a caller fault.
#include "FuzzCheck.h"
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/EnumType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>
#include <vort/types/VectorType.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using vort_fuzz::check;

using namespace VORT;

// An enumeration as a client writes one: two names that differ only in case, and every int its
// own value.
class FuzzEnumType : public EnumType {
public:
    static TypeInfo Create() { return CreateTypeInfo(new FuzzEnumType); }

protected:
    FuzzEnumType() {
        valueNames[1] = "Red";
        valueNames[2] = "Blue";
        valueNames[7] = "RED";
    }
    FuzzEnumType *clone() const override { return new FuzzEnumType(*this); }
    int convertToInt(any const &value) const override { return any_cast<int>(value); }
    any convertFromInt(int value) const override { return any(value); }
};

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The oracles say whether a text must read, told independently of the library: by a real text
// stream for the number forms, by the member's own rule for the others. Where they can they
// also give the value that must come out.
using Oracle = bool (*)(std::string const &text, any &expected);

template <class T>
bool streamNumber(std::string const &text, any &expected) {
    std::istringstream in(text);
    T value = T();
    in >> value;
    expected = any(value);
    return !in.fail();
}

template <class T, int N>
bool streamFields(std::string const &text, T (&fields)[N]) {
    std::istringstream in(text);
    char separator = '\0';
    in >> fields[0];
    for (int index = 1; index < N; ++index) {
        in >> separator >> fields[index];
    }
    return !in.fail();
}

template <class T>
bool streamPoint(std::string const &text, any &expected) {
    T fields[2] = {};
    const bool good = streamFields(text, fields);
    expected = any(VTPoint<T>(fields[0], fields[1]));
    return good;
}

template <class T>
bool streamRect(std::string const &text, any &expected) {
    T fields[4] = {};
    const bool good = streamFields(text, fields);
    expected = any(VTRect<T>(fields[0], fields[1], fields[2], fields[3]));
    return good;
}

bool streamTransform(std::string const &text, any &expected) {
    double fields[9] = {};
    const bool good = streamFields(text, fields);
    expected = any(Transform(fields));
    return good;
}

bool streamPath(std::string const &text, any &expected) {
    std::istringstream in(text);
    Path path;
    while (static_cast<char>(in.peek()) != static_cast<char>(EOF)) {
        double x = 0.0;
        double y = 0.0;
        char separator = '\0';
        in >> x >> separator >> y >> separator;
        path.addPoint(VTPoint<double>(x, y));
    }
    expected = any(path);
    return !in.fail();
}

bool exactBool(std::string const &text, any &expected) {
    expected = any(text == "true");
    return text == "true" || text == "false";
}

bool anyString(std::string const &text, any &expected) {
    expected = any(text);
    return true;
}

bool neverColor(std::string const &, any &) {
    return false;
}

// One whitespace-delimited word of the Base64 alphabet and '='.
bool base64Word(std::string const &text, any &) {
    std::string::size_type begin = 0;
    while (begin < text.size() && isBlank(text[begin])) {
        ++begin;
    }
    std::string::size_type end = begin;
    while (end < text.size() && !isBlank(text[end])) {
        const char c = text[end];
        const bool alphabet = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                              (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '=';
        if (!alphabet) {
            return false;
        }
        ++end;
    }
    return end > begin;
}

// 32 digits, whitespace skipped, the last one repeating once the text runs out.
bool hashDigits(std::string const &text, any &) {
    int digits = 0;
    for (char c : text) {
        if (digits == 32) {
            break;
        }
        if (isBlank(c)) {
            continue;
        }
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'))) {
            return false;
        }
        ++digits;
    }
    return digits > 0;
}

// Backslashes escape only a backslash or the separator, and none may end the text.
bool escapedList(std::string const &text, any &) {
    for (std::string::size_type index = 0; index < text.size(); ++index) {
        if (text[index] == '\\') {
            if (index + 1 == text.size() || (text[index + 1] != '\\' && text[index + 1] != ';')) {
                return false;
            }
            ++index;
        }
    }
    return true;
}

bool enumName(std::string const &text, any &expected) {
    const char *const names[] = {"red", "blue"};
    const int values[] = {1, 2};
    std::string lower = text;
    for (char &c : lower) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    for (int index = 0; index < 2; ++index) {
        if (lower == names[index]) {
            expected = any(values[index]);
            return true;
        }
    }
    return false;
}

struct Kind {
    TypeInfo type;
    const char *suffix;
    const char *source;
    unsigned int width;  // bytes that reading needs; reading fewer is a caller fault
    Oracle oracle;
    bool holderEmptiesReads;  // an error already in the holder empties every read
};

std::vector<Kind> const &kinds() {
    static const std::vector<Kind> all = {
        {BoolType::Create(), "' to bool", ".\\types\\BoolType", 1, exactBool, false},
        {IntType::Create(), "' to int", ".\\types\\IntType", 4, streamNumber<int>, false},
        {FloatType::Create(), "' to float", ".\\types\\FloatType", 4, streamNumber<float>, false},
        {DoubleType::Create(), "' to double", ".\\types\\DoubleType", 8, streamNumber<double>,
         false},
        {StringType::Create(), "", "", 0, anyString, false},
        {ByteArrayType::Create(), "' to ByteArray", ".\\types\\ByteArrayType", 0, base64Word,
         false},
        {MD5HashType::Create(), "' to MD5Hash", ".\\types\\MD5Hash", 16, hashDigits, true},
        {ColorType::Create(true), "' to color", ".\\types\\ColorType", 4, neverColor, false},
        {IPointType::Create(), "' to IPoint", ".\\types\\PointType", 8, streamPoint<int>, false},
        {DPointType::Create(), "' to DPoint", ".\\types\\PointType", 16, streamPoint<double>,
         false},
        {IRectType::Create(), "' to IRect", ".\\types\\PointType", 16, streamRect<int>, false},
        {DRectType::Create(), "' to DRect", ".\\types\\PointType", 32, streamRect<double>, false},
        {TransformType::Create(), "' to transform", ".\\types\\TransformType", 72, streamTransform,
         false},
        {PathType::Create(), "' to path", ".\\types\\PathType", 0, streamPath, false},
        {SpecificVectorType<std::string>::Create(StringType::Create()), "' to Vector",
         ".\\types\\VectorType", 0, escapedList, true},
        {FuzzEnumType::Create(), "' to enum", ".\\types\\EnumType", 4, enumName, false},
    };
    return all;
}

enum Member {
    Bool,
    Int,
    Float,
    Double,
    String,
    Bytes,
    Hash,
    Colour,
    IPoint,
    DPoint,
    IRect,
    DRect,
    Matrix,
    PathMember,
    Vector,
    Enum
};

void setEarlier(ErrorHolder &error) {
    error.setError(SimpleErrorDescription(CodeLocation(".\\fuzz", 1), "earlier"));
}

any checkText(unsigned int index, bool earlierError, std::string const &text);

// A value that was read goes out and back in: its byte form reads back to the same bytes, and its
// text reads as the oracle says; where it reads, it writes the same text again.
void checkValue(unsigned int index, any const &value) {
    Kind const &k = kinds()[index];
    check(k.type.isValid(value) == (index != Enum), "only the enumerations refuse their values");

    const ByteArray bytes = k.type.convertToByteArray(value);
    check(bytes.size() >= k.width, "the byte form has the member's width");
    ErrorHolder bytesError;
    const any fromBytes = k.type.convertFromByteArray(bytes, bytesError);
    check(!bytesError.hasError(), "the byte form reads back");
    check(k.type.convertToByteArray(fromBytes) == bytes, "the byte form is stable");

    const std::string text = k.type.convertToString(value);
    if (index == Bytes) {
        // Base64 and the NUL of `toBase64`'s string, which the word reader refuses.
        check(text == any_cast<ByteArray>(value).toBase64(), "the bytes' text is their Base64");
        const any again = checkText(index, false, text.c_str());
        check(again.empty() == any_cast<ByteArray>(value).isEmpty(),
              "the bytes' text reads back without its NUL");
        return;
    }
    const any fromText = checkText(index, false, text);
    if (!fromText.empty() && index != Enum) {
        check(k.type.convertToString(fromText) == text, "a written text reads and writes again");
    }
}

any checkText(unsigned int index, bool earlierError, std::string const &text) {
    Kind const &k = kinds()[index];
    ErrorHolder error;
    if (earlierError) {
        setEarlier(error);
    }
    const any value = k.type.convertFromString(text, error);
    any expected;
    const bool good = k.oracle(text, expected);
    if (!good) {
        check(value.empty(), "a failed read gives an empty value");
        check(error.what() == "Can't convert string '" + text + k.suffix,
              "the failure is worded exactly");
        check(error.id() == "Nexlark::GenericError", "the failure has the generic id");
        check(error.description()->where().file() == k.source, "the failure names its source");
        if (index == Hash) {
            ErrorHolder direct;
            check(MD5Hash::convertFromString(text, direct) == MD5Hash(),
                  "a failed hash read gives the zero hash");
        }
        return any();
    }
    if (earlierError) {
        check(error.what() == "earlier", "a successful read leaves the holder alone");
        if (k.holderEmptiesReads) {
            check(value.empty(), "an error in the holder empties the read");
            return any();
        }
    } else {
        check(!error.hasError(), "a good text reads without an error");
    }
    check(!value.empty(), "a good text gives a value");
    if (!expected.empty()) {
        check(value == expected, "the value is the one a stream reads");
    }
    if (index == Vector) {
        check(k.type.convertToString(value) == text, "a list writes back as it was read");
    }
    return value;
}

void fuzzText(unsigned int index, bool earlierError, std::string const &text) {
    const any value = checkText(index, earlierError, text);
    if (!value.empty()) {
        checkValue(index, value);
    }
    if (index == Hash) {
        // The stream reader takes the same text and never reports through the stream.
        std::istringstream in(text);
        MD5Hash hash(1, 1, 1, 1);
        in >> hash;
    }
}

void fuzzBytes(unsigned int index, bool earlierError, ByteArray const &bytes) {
    Kind const &k = kinds()[index];
    if (bytes.size() < k.width) {
        return;
    }
    ErrorHolder error;
    if (earlierError) {
        setEarlier(error);
    }
    const any value = k.type.convertFromByteArray(bytes, error);
    check(error.hasError() == earlierError, "reading bytes never fails");
    if (earlierError && k.holderEmptiesReads) {
        check(value.empty(), "an error in the holder empties the read");
        return;
    }
    check(!value.empty(), "reading bytes gives a value");
    const ByteArray written = k.type.convertToByteArray(value);
    switch (index) {
        case Bool:
            check(written == ByteArray(1u, static_cast<unsigned char>(bytes[0u] != 0 ? 1 : 0)),
                  "a bool is its first byte, as 0 or 1");
            break;
        case String:
        case Bytes:
            check(written == bytes, "a string or a byte array is its bytes");
            break;
        case PathMember:
            check(written == bytes.slice(0u, bytes.size() / 16 * 16), "a path is its whole points");
            break;
        case Vector:
            check(written.isEmpty(), "a list has no byte form");
            break;
        default:
            check(written == bytes.slice(0u, k.width), "a fixed-width form is its first bytes");
            break;
    }
    checkValue(index, value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned int count = static_cast<unsigned int>(kinds().size());
    const unsigned int selector = data[0];
    const unsigned int index = selector % count;
    const bool fromText = (selector / count) % 2 == 0;
    const bool earlierError = (selector / count / 2) % 2 == 1;
    const char *payload = reinterpret_cast<const char *>(data + 1);
    const size_t length = size - 1;
    if (fromText) {
        fuzzText(index, earlierError, std::string(payload, length));
    } else {
        fuzzBytes(index, earlierError, ByteArray(payload, static_cast<unsigned int>(length)));
    }
    return 0;
}
