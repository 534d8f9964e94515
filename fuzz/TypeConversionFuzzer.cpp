// Fuzzes the text and byte readers of BoolType, ByteArrayType and MD5HashType, and checks what
// they promise: no crash or leak, a failure worded exactly, and a value that survives its way
// out and back in through both forms.
//
// Input: the first byte chooses the type (modulo 3), the form read (text or bytes) and whether
// the holder starts out with an error; the rest is the text or the bytes.
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using VORT::any;
using VORT::any_cast;
using VORT::ByteArray;
using VORT::ErrorHolder;
using VORT::MD5Hash;
using VORT::TypeInfo;

void check(bool condition, const char *what) {
    if (!condition) {
        std::fprintf(stderr, "type conversion fuzzer: broken promise: %s\n", what);
        std::abort();
    }
}

struct Kind {
    TypeInfo type;
    const char *suffix;
    const char *source;
    unsigned int width;  // bytes that reading needs; reading fewer is a caller fault
};

Kind const &kind(unsigned int index) {
    static const Kind kinds[3] = {
        {VORT::BoolType::Create(), "' to bool", ".\\types\\BoolType", 1},
        {VORT::ByteArrayType::Create(), "' to ByteArray", ".\\types\\ByteArrayType", 0},
        {VORT::MD5HashType::Create(), "' to MD5Hash", ".\\types\\MD5Hash", 16},
    };
    return kinds[index];
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// What the text reader of each kind is to accept, told independently of the library.
bool shouldRead(unsigned int index, std::string const &text) {
    if (index == 0) {
        return text == "true" || text == "false";
    }
    if (index == 1) {
        std::string::size_type begin = 0;
        while (begin < text.size() && isBlank(text[begin])) {
            ++begin;
        }
        std::string::size_type end = begin;
        while (end < text.size() && !isBlank(text[end])) {
            ++end;
        }
        if (end == begin) {
            return false;
        }
        for (std::string::size_type i = begin; i < end; ++i) {
            const char c = text[i];
            const bool alphabet = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                                  (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '=';
            if (!alphabet) {
                return false;
            }
        }
        return true;
    }
    // 32 digits, whitespace skipped, the last one repeating once the text runs out.
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

bool sameValue(unsigned int index, any const &a, any const &b) {
    switch (index) {
        case 0:
            return any_cast<bool>(a) == any_cast<bool>(b);
        case 1:
            return any_cast<ByteArray>(a) == any_cast<ByteArray>(b);
        default:
            return any_cast<MD5Hash>(a) == any_cast<MD5Hash>(b);
    }
}

// A value that was read goes out and back in through both forms unchanged.
void checkRoundTrips(unsigned int index, any const &value) {
    Kind const &k = kind(index);
    check(k.type.isValid(value), "a value read is valid for its type");

    const std::string text = k.type.convertToString(value);
    ErrorHolder error;
    const any fromText = k.type.convertFromString(text, error);
    const bool emptyBytes = index == 1 && any_cast<ByteArray>(value).isEmpty();
    if (emptyBytes) {
        // The empty array's text is the empty string, which has no word to read.
        check(error.hasError() && fromText.empty(), "the empty array's text does not read back");
    } else {
        check(!error.hasError(), "the text form reads back");
        check(sameValue(index, value, fromText), "the text form round-trips");
    }

    const ByteArray bytes = k.type.convertToByteArray(value);
    check(bytes.size() >= k.width, "the byte form has the type's width");
    ErrorHolder bytesError;
    const any fromBytes = k.type.convertFromByteArray(bytes, bytesError);
    check(!bytesError.hasError(), "the byte form reads back");
    check(sameValue(index, value, fromBytes), "the byte form round-trips");
    check(k.type.convertToByteArray(fromBytes) == bytes, "the byte form is stable");
}

void fuzzText(unsigned int index, bool earlierError, std::string const &text) {
    Kind const &k = kind(index);
    ErrorHolder error;
    if (earlierError) {
        error.setError(VORT::SimpleErrorDescription(VORT::CodeLocation(".\\fuzz", 1), "earlier"));
    }
    const any value = k.type.convertFromString(text, error);
    const bool good = shouldRead(index, text);
    if (!good) {
        check(value.empty(), "a failed read gives an empty value");
        check(error.hasError(), "a failed read sets the holder");
        check(error.what() == "Can't convert string '" + text + k.suffix,
              "the failure is worded exactly");
        check(error.id() == "Nexlark::GenericError", "the failure has the generic id");
        check(error.description()->where().file() == k.source, "the failure names its source");
        if (index == 2) {
            ErrorHolder direct;
            check(MD5Hash::convertFromString(text, direct) == MD5Hash(),
                  "a failed hash read gives the zero hash");
        }
        return;
    }
    if (earlierError) {
        // Success leaves an earlier error in place; the hash reader then gives nothing.
        check(error.what() == "earlier", "a successful read leaves the holder alone");
        if (index == 2) {
            check(value.empty(), "a hash read with an error in the holder gives nothing");
            return;
        }
    } else {
        check(!error.hasError(), "a good text reads without an error");
    }
    check(!value.empty(), "a good text gives a value");
    checkRoundTrips(index, value);
}

void fuzzBytes(unsigned int index, bool earlierError, ByteArray const &bytes) {
    Kind const &k = kind(index);
    if (bytes.size() < k.width) {
        return;
    }
    ErrorHolder error;
    if (earlierError) {
        error.setError(VORT::SimpleErrorDescription(VORT::CodeLocation(".\\fuzz", 1), "earlier"));
    }
    const any value = k.type.convertFromByteArray(bytes, error);
    check(error.hasError() == earlierError, "reading bytes never fails");
    if (earlierError && index == 2) {
        check(value.empty(), "a hash read with an error in the holder gives nothing");
        return;
    }
    const ByteArray written = k.type.convertToByteArray(value);
    switch (index) {
        case 0:
            check(written == ByteArray(1u, static_cast<unsigned char>(bytes[0u] != 0 ? 1 : 0)),
                  "a bool is its first byte, as 0 or 1");
            break;
        case 1:
            check(written == bytes, "a byte array is its bytes");
            break;
        default:
            check(written == bytes.slice(0u, 16u), "a hash is its first 16 bytes");
            break;
    }
    checkRoundTrips(index, value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned int selector = data[0];
    const unsigned int index = selector % 3;
    const bool fromText = (selector / 3) % 2 == 0;
    const bool earlierError = (selector / 6) % 2 == 1;
    const char *payload = reinterpret_cast<const char *>(data + 1);
    const size_t length = size - 1;
    if (fromText) {
        const std::string text(payload, length);
        fuzzText(index, earlierError, text);
        if (index == 2) {
            // The stream reader takes the same text and never reports through the stream.
            std::istringstream in(text);
            MD5Hash hash(1, 1, 1, 1);
            in >> hash;
        }
    } else {
        fuzzBytes(index, earlierError, ByteArray(payload, static_cast<unsigned int>(length)));
    }
    return 0;
}
