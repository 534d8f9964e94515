#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using VORT::ByteArray;
using VORT::ErrorHolder;

namespace {

ByteArray bytesOf(std::string const &text) {
    return ByteArray(text.data(), static_cast<unsigned int>(text.size()));
}

std::string textOf(ByteArray const &bytes) {
    return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

std::string badBase64Message(std::string const &text) {
    return "Can't convert string '" + text + "' from Base64.";
}

// The decoder written the slow, obvious way, one character at a time: the library's version
// takes shortcuts and must agree with this on every input.
bool referenceDecode(std::string const &text, std::string &out) {
    out.clear();
    unsigned int accumulator = 0;
    int bitCount = 0;
    for (char ch : text) {
        int value;
        if (ch >= 'A' && ch <= 'Z') {
            value = ch - 'A';
        } else if (ch >= 'a' && ch <= 'z') {
            value = ch - 'a' + 26;
        } else if (ch >= '0' && ch <= '9') {
            value = ch - '0' + 52;
        } else if (ch == '+') {
            value = 62;
        } else if (ch == '/') {
            value = 63;
        } else if (ch == '=') {
            continue;
        } else {
            out.clear();
            return false;
        }
        accumulator = accumulator * 64 | static_cast<unsigned int>(value);
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            out.push_back(static_cast<char>(accumulator >> bitCount));
            accumulator &= (1u << bitCount) - 1;
        }
    }
    return true;
}

// A small deterministic generator, so that a failure names a reproducible input.
struct Lcg {
    std::uint64_t state;
    unsigned int next() {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned int>(state >> 33);
    }
};

}  // namespace

TEST(ByteArray, Base64RoundTrips) {
    struct Case {
        std::string bytes;
        std::string base64;
    };
    const Case cases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"Man", "TWFu"},
        {std::string("\0\0\0", 3), "AAAA"},
        {"\xFF\xFF\xFF", "////"},
        {"\xFB\xEF\xBE", "++++"},
        {std::string("\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97"
                     "\x61\x96\x9B\x71\xD7\x9F\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF"
                     "\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3\xDF\xBF",
                     48),
         "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.base64);
        const std::string encoded = bytesOf(c.bytes).toBase64();
        // The terminating NUL is part of the string.
        ASSERT_EQ(encoded.size(), c.base64.size() + 1);
        EXPECT_EQ(encoded.back(), '\0');
        EXPECT_EQ(std::string(encoded.c_str()), c.base64);

        ErrorHolder error;
        const ByteArray decoded = ByteArray::fromBase64(c.base64, error);
        EXPECT_FALSE(error.hasError());
        EXPECT_EQ(textOf(decoded), c.bytes);
    }
}

TEST(ByteArray, Base64RoundTripsEveryLengthAndByte) {
    Lcg random{42};
    for (unsigned int length = 0; length < 300; ++length) {
        std::string bytes;
        for (unsigned int i = 0; i < length; ++i) {
            bytes.push_back(static_cast<char>(random.next()));
        }
        const std::string encoded = bytesOf(bytes).toBase64();
        ASSERT_EQ(encoded.size(), (length + 2) / 3 * 4 + 1) << length;
        ASSERT_EQ(encoded.find('\0'), encoded.size() - 1) << length;

        ErrorHolder error;
        const ByteArray decoded = ByteArray::fromBase64(encoded.c_str(), error);
        ASSERT_FALSE(error.hasError()) << length;
        ASSERT_EQ(textOf(decoded), bytes) << length;
    }
}

TEST(ByteArray, FromBase64SkipsPaddingAnywhereAndDropsLooseBits) {
    struct Case {
        std::string text;
        std::string bytes;
    };
    const Case cases[] = {
        {"TW=Fu", "Man"},
        {"=T=W=F=u=", "Man"},
        {"TWFu====", "Man"},
        {"====", ""},
        {"Zg", "f"},
        {"Zm8", "fo"},
        {"T", ""},
        {"TWF", "Ma"},
        {"TWFuTWFu", "ManMan"},
        {"TWFu=TWFuTWFu", "ManManMan"},
        {"TW==FuTW", "ManM"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.text);
        ErrorHolder error;
        EXPECT_EQ(textOf(ByteArray::fromBase64(c.text, error)), c.bytes);
        EXPECT_FALSE(error.hasError());
    }
}

TEST(ByteArray, FromBase64RejectsAnythingElseWithTheMessage) {
    const std::string texts[] = {
        "TWFu\n",  "TW Fu",     std::string("TWFu\0", 5), std::string(1, '\0'), "TWFu-",
        "TWFu_",   "\tTWFu",    "TWFu\r\nTWFu",           "\x80TWFu",           "TWFuTWFu.",
        "TWF\xFF", "TWFu TWFu",
    };
    for (std::string const &text : texts) {
        SCOPED_TRACE(text);
        ErrorHolder error;
        const ByteArray decoded = ByteArray::fromBase64(text, error);
        EXPECT_TRUE(decoded.isEmpty());
        ASSERT_TRUE(error.hasError());
        EXPECT_EQ(error.what(), badBase64Message(text));
        EXPECT_EQ(error.id(), "Nexlark::GenericError");
        EXPECT_EQ(error.description()->where().file(), ".\\types\\ByteArrayType");
        EXPECT_EQ(error.description()->where().line(), 290u);
    }
}

TEST(ByteArray, FromBase64RejectsItsOwnStringAsItStands) {
    const std::string encoded = bytesOf("Man").toBase64();
    ErrorHolder error;
    EXPECT_TRUE(ByteArray::fromBase64(encoded, error).isEmpty());
    EXPECT_EQ(error.what(), badBase64Message(encoded));

    // The empty array's string is a lone NUL, while an empty text is fine.
    ErrorHolder emptyError;
    EXPECT_TRUE(ByteArray::fromBase64(ByteArray().toBase64(), emptyError).isEmpty());
    EXPECT_TRUE(emptyError.hasError());
    ErrorHolder none;
    EXPECT_TRUE(ByteArray::fromBase64("", none).isEmpty());
    EXPECT_FALSE(none.hasError());
}

TEST(ByteArray, FromBase64AgreesWithTheOneCharacterDecoderOnArbitraryText) {
    // Mostly alphabet, with padding and the odd foreign byte sprinkled in, so that the
    // quadruple shortcut is entered, left and re-entered at every alignment.
    Lcg random{7};
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int round = 0; round < 4000; ++round) {
        const unsigned int length = random.next() % 70;
        const unsigned int foreignOdds = round % 3 == 0 ? 0 : 200;
        std::string text;
        for (unsigned int i = 0; i < length; ++i) {
            const unsigned int pick = random.next() % 1000;
            if (pick < 40) {
                text.push_back('=');
            } else if (foreignOdds != 0 && pick >= 1000 - foreignOdds / 40) {
                text.push_back(static_cast<char>(random.next()));
            } else {
                text.push_back(alphabet[random.next() % 64]);
            }
        }
        std::string expected;
        const bool valid = referenceDecode(text, expected);

        ErrorHolder error;
        const ByteArray decoded = ByteArray::fromBase64(text, error);
        ASSERT_EQ(error.hasError(), !valid) << text;
        ASSERT_EQ(textOf(decoded), expected) << text;
        if (!valid) {
            ASSERT_EQ(error.what(), badBase64Message(text));
        }
    }
}

TEST(ByteArray, ReplaysFuzzerFindings) {
    const std::filesystem::path folder =
        std::filesystem::path(VORT_FUZZ_CORPUS_DIR) / "base64_fuzzer";
    int replayed = 0;
    for (auto const &entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file() || entry.path().filename().string()[0] == '.') {
            continue;
        }
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(file)),
                               std::istreambuf_iterator<char>());
        SCOPED_TRACE(entry.path().string());
        std::string expected;
        const bool valid = referenceDecode(text, expected);
        ErrorHolder error;
        EXPECT_EQ(textOf(ByteArray::fromBase64(text, error)), expected);
        EXPECT_EQ(error.hasError(), !valid);
        ++replayed;
    }
    EXPECT_GT(replayed, 0);
}

TEST(ByteArray, ConstructionAndStorage) {
    const ByteArray none;
    EXPECT_EQ(none.size(), 0u);
    EXPECT_TRUE(none.isEmpty());
    EXPECT_EQ(none.data(), nullptr);

    const unsigned char raw[] = {1, 2, 250};
    const ByteArray fromUnsigned(raw, 3);
    EXPECT_EQ(fromUnsigned.size(), 3u);
    EXPECT_EQ(fromUnsigned[2u], 250);
    EXPECT_EQ(fromUnsigned[1], 2);

    EXPECT_EQ(textOf(ByteArray(4u, 'x')), "xxxx");
    EXPECT_EQ(ByteArray(2u, static_cast<unsigned char>(0xAB))[1], 0xAB);

    ByteArray cleared = bytesOf("abc");
    cleared.clear();
    EXPECT_TRUE(cleared.isEmpty());
    EXPECT_EQ(cleared, none);

    ByteArray writable = bytesOf("abc");
    writable[1] = 'X';
    writable[2u] = 'Y';
    EXPECT_EQ(textOf(writable), "aXY");

    // A copy owns its bytes.
    ByteArray copy = writable;
    copy[0] = 'z';
    EXPECT_EQ(textOf(writable), "aXY");
    EXPECT_EQ(textOf(copy), "zXY");
}

TEST(ByteArray, AppendPrependInsertAndResize) {
    ByteArray bytes = bytesOf("cd");
    bytes.append(bytesOf("ef")).append("gh", 2).prepend(bytesOf("b")).prepend("a", 1);
    EXPECT_EQ(textOf(bytes), "abcdefgh");
    bytes.insert(4, bytesOf("--")).insert(0, "<", 1).insert(bytes.size(), ">", 1);
    EXPECT_EQ(textOf(bytes), "<abcd--efgh>");
    bytes.append(nullptr, 0);
    EXPECT_EQ(textOf(bytes), "<abcd--efgh>");

    // Parts of itself.
    ByteArray self = bytesOf("xy");
    self.append(self);
    EXPECT_EQ(textOf(self), "xyxy");
    self.prepend(self);
    EXPECT_EQ(textOf(self), "xyxyxyxy");
    self.insert(1, reinterpret_cast<const char *>(self.data()) + 6, 2);
    EXPECT_EQ(textOf(self), "xxyyxyxyxy");

    ByteArray sized = bytesOf("abc");
    sized.resize(5, '!');
    EXPECT_EQ(textOf(sized), "abc!!");
    sized.resize(2, '?');
    EXPECT_EQ(textOf(sized), "ab");
    sized.resize(2, '?');
    EXPECT_EQ(textOf(sized), "ab");
}

TEST(ByteArray, SliceTakesAnEndIndex) {
    const ByteArray bytes = bytesOf("abcdef");
    EXPECT_TRUE(bytes.slice(2, 2).isEmpty());
    EXPECT_EQ(bytes.slice(0, bytes.size()), bytes);
    EXPECT_EQ(textOf(bytes.slice(1, 4)), "bcd");
    EXPECT_EQ(textOf(bytes.slice(5, 6)), "f");
}

TEST(ByteArray, ComparesBytesUnsignedAndShorterFirst) {
    const ByteArray ab = bytesOf("ab");
    const ByteArray abc = bytesOf("abc");
    const ByteArray high = bytesOf("\x80");
    const ByteArray low = bytesOf("\x7F");

    EXPECT_FALSE(ab == abc);
    EXPECT_TRUE(ab != abc);
    EXPECT_TRUE(ab < abc);
    EXPECT_TRUE(ab <= abc);
    EXPECT_TRUE(abc > ab);
    EXPECT_TRUE(abc >= ab);
    EXPECT_FALSE(abc < ab);

    EXPECT_TRUE(low < high);
    EXPECT_TRUE(high > low);
    EXPECT_TRUE(bytesOf("b") > abc);

    EXPECT_TRUE(ab == bytesOf("ab"));
    EXPECT_FALSE(ab < bytesOf("ab"));
    EXPECT_TRUE(ByteArray() < ab);
}

TEST(ByteArray, StreamsAsBase64) {
    std::ostringstream out;
    out << bytesOf("Man");
    EXPECT_EQ(out.str(), std::string("TWFu\0", 5));

    std::istringstream in("  TWFu Zm9v\nbad!word TWE=");
    ByteArray first;
    ByteArray second;
    ByteArray third = bytesOf("old");
    ByteArray fourth;
    in >> first >> second;
    EXPECT_TRUE(in);
    EXPECT_EQ(textOf(first), "Man");
    EXPECT_EQ(textOf(second), "foo");
    in >> third;
    EXPECT_TRUE(in.fail());
    EXPECT_TRUE(third.isEmpty());
    in.clear();
    in >> fourth;
    EXPECT_TRUE(in);
    EXPECT_EQ(textOf(fourth), "Ma");
}

TEST(ByteArray, StreamFormDoesNotReadBack) {
    // The written form carries its NUL, which the reader takes as part of the word.
    std::stringstream stream;
    stream << bytesOf("Man") << ' ';
    ByteArray back = bytesOf("old");
    stream >> back;
    EXPECT_TRUE(stream.fail());
    EXPECT_TRUE(back.isEmpty());
}
