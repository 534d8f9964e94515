#include "support/FuzzCorpus.h"
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

using VORT::ByteArray;
using VORT::ErrorHolder;

namespace {

ByteArray bytesOf(std::string const &text) {
    return ByteArray(text.data(), static_cast<unsigned int>(text.size()));
}

std::string textOf(ByteArray const &bytes) {
    return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

// The decoder written the slow, obvious way, one character at a time: the library's version
// takes shortcuts and must agree with this on every input.
bool referenceDecode(std::string const &text, std::string &out) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    out.clear();
    unsigned int accumulator = 0;
    int bits = 0;
    for (char ch : text) {
        const size_t value = alphabet.find(ch);
        if (ch == '=') {
            continue;
        }
        if (value == std::string::npos) {
            out.clear();
            return false;
        }
        accumulator = accumulator << 6 | static_cast<unsigned int>(value);
        if ((bits += 6) >= 8) {
            bits -= 8;
            out.push_back(static_cast<char>(accumulator >> bits));
            accumulator &= (1u << bits) - 1;
        }
    }
    return true;
}

// Decodes `text` and checks the outcome against the reference decoder.
void expectDecodedAsTheReference(std::string const &text) {
    std::string expected;
    const bool valid = referenceDecode(text, expected);
    ErrorHolder error;
    ASSERT_EQ(textOf(ByteArray::fromBase64(text, error)), expected) << text;
    ASSERT_EQ(error.hasError(), !valid) << text;
    if (!valid) {
        ASSERT_EQ(error.what() + error.description()->where().file() +
                      std::to_string(error.description()->where().line()),
                  "Can't convert string '" + text + "' from Base64..\\types\\ByteArrayType290");
    }
}

int decodeAsTheReference(const std::uint8_t *data, std::size_t size) {
    expectDecodedAsTheReference(std::string(reinterpret_cast<const char *>(data), size));
    return 0;
}

}  // namespace

TEST(ByteArray, Base64RoundTripsEveryLengthAndByte) {
    const char *const known[] = {
        "",     "",         "f",     "Zg==",     "fo",           "Zm8=", "foo",          "Zm9v",
        "foob", "Zm9vYg==", "fooba", "Zm9vYmE=", "\xFF\xFF\xFF", "////", "\xFB\xEF\xBE", "++++"};
    for (size_t i = 0; i < std::size(known); i += 2) {
        // The terminating NUL is in the string.
        EXPECT_EQ(bytesOf(known[i]).toBase64(), std::string(known[i + 1]) + '\0');
    }
    std::mt19937 random(42);
    std::string bytes;
    for (unsigned int length = 0; length < 300; ++length) {
        const std::string encoded = bytesOf(bytes).toBase64();
        ASSERT_EQ(encoded.size(), (length + 2) / 3 * 4 + 1) << length;
        ASSERT_EQ(encoded.find('\0'), encoded.size() - 1) << length;
        ErrorHolder error;
        ASSERT_EQ(textOf(ByteArray::fromBase64(encoded.c_str(), error)), bytes) << length;
        ASSERT_FALSE(error.hasError());
        bytes.push_back(static_cast<char>(random()));
    }
}

TEST(ByteArray, FromBase64SkipsPaddingAnywhereDropsLooseBitsAndRejectsTheRest) {
    const char *const texts[] = {"TW=Fu",    "=T=W=F=u=", "TWFu====", "====",          "Zg",
                                 "Zm8",      "T",         "TWF",      "TWFu=TWFuTWFu", "TW==FuTW",
                                 "TWFu\n",   "TW Fu",     "TWFu-",    "TWFu_",         "\tTWFu",
                                 "\x80TWFu", "TWFuTWFu.", "TWF\xFF"};
    std::for_each(std::begin(texts), std::end(texts), expectDecodedAsTheReference);
    expectDecodedAsTheReference(std::string(1, '\0'));
    expectDecodedAsTheReference(bytesOf("Man").toBase64());  // its own output, NUL and all
    // Mostly alphabet, with padding and the odd foreign byte sprinkled in, so that the
    // quadruple shortcut is entered, left and re-entered at every alignment.
    std::mt19937 random(7);
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (unsigned int i = random() % 70; i > 0; --i) {
            const unsigned int pick = random() % 1000;
            text.push_back(pick < 40                  ? '='
                           : pick >= 995 && round % 3 ? char(random())
                                                      : alphabet[random() % 64]);
        }
        expectDecodedAsTheReference(text);
    }
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "base64_fuzzer", &decodeAsTheReference);
}

TEST(ByteArray, EditsSlicesAndComparisons) {
    const unsigned char raw[] = {1, 2, 250};
    EXPECT_EQ(ByteArray(raw, 3)[2u] + ByteArray(raw, 3)[1], 252);
    ByteArray bytes = bytesOf("cd");
    bytes.append(bytesOf("ef")).append("gh", 2).prepend(bytesOf("b")).prepend("a", 1);
    bytes.insert(4, bytesOf("--")).insert(0, "<", 1).insert(bytes.size(), ">", 1);
    bytes.append(nullptr, 0);
    EXPECT_EQ(textOf(bytes), "<abcd--efgh>");
    ByteArray self = bytesOf("xy");  // parts of itself
    self.append(self).prepend(self);
    self.insert(1, reinterpret_cast<const char *>(self.data()) + 6, 2);
    self.resize(12, '!');
    self[0] = 'X';
    ByteArray copy = self;  // a copy owns its bytes
    copy.resize(2, '?');
    EXPECT_EQ(textOf(self) + textOf(copy), "Xxyyxyxyxy!!Xx");
    EXPECT_TRUE(bytesOf("abcdef").slice(2, 2).isEmpty() && ByteArray().data() == nullptr);
    EXPECT_EQ(textOf(bytesOf("abcdef").slice(1, 4)), "bcd");
    // Unsigned bytes, shorter first.
    const ByteArray ab = bytesOf("ab"), abc = bytesOf("abc");
    EXPECT_TRUE(ab < abc && ab <= abc && abc > ab && abc >= ab && ab != abc && !(abc < ab));
    EXPECT_TRUE(bytesOf("\x7F") < bytesOf("\x80") && bytesOf("b") > abc && ByteArray() < ab);
    EXPECT_TRUE(ab == bytesOf("ab") && !(ab < bytesOf("ab")) && !(ab == ByteArray()));
}

TEST(ByteArray, StreamsAsBase64ThatDoesNotReadBack) {
    std::stringstream out;
    out << bytesOf("Man") << ' ';
    EXPECT_EQ(out.str(), std::string("TWFu\0 ", 6));
    ByteArray back = bytesOf("old");
    out >> back;  // the written NUL is part of the word read
    EXPECT_TRUE(out.fail() && back.isEmpty());
    std::istringstream in("  TWFu Zm9v\nbad!word TWE=");
    ByteArray first, second, third, fourth;
    in >> first >> second;
    EXPECT_EQ(textOf(first) + textOf(second), "Manfoo");
    in >> third;
    EXPECT_TRUE(in.fail());
    in.clear();
    in >> fourth;
    EXPECT_TRUE(in && textOf(fourth) == "Ma");
}
