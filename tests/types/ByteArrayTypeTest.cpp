#include <vort/types/ByteArrayType.h>

#include <gtest/gtest.h>

#include <string>

using VORT::any;
using VORT::any_cast;
using VORT::ByteArray;
using VORT::ByteArrayType;
using VORT::ErrorHolder;
using VORT::TypeInfo;

namespace {

ByteArray bytesOf(std::string const &text) {
    return ByteArray(text.data(), static_cast<unsigned int>(text.size()));
}

}  // namespace

TEST(ByteArrayType, RoundTripsBothForms) {
    const TypeInfo type = ByteArrayType::Create();
    struct Row {
        std::string bytes;
        const char *text;
    };
    const Row rows[] = {
        {"Man", "TWFu"},
        {"M", "TQ=="},
        {"Ma", "TWE="},
        {std::string("\0\xFF\x10\x80", 4), "AP8QgA=="},
        {"any carnal pleasure.", "YW55IGNhcm5hbCBwbGVhc3VyZS4="},
    };
    for (Row const &row : rows) {
        const ByteArray bytes = bytesOf(row.bytes);
        const std::string text = type.convertToString(any(bytes));
        // The text form has no trailing NUL, unlike `toBase64`'s string.
        EXPECT_EQ(text, row.text);

        ErrorHolder error;
        const any fromText = type.convertFromString(text, error);
        ASSERT_FALSE(error.hasError()) << error.what();
        ASSERT_TRUE(type.isValid(fromText));
        EXPECT_EQ(any_cast<ByteArray>(fromText), bytes);

        // The byte form is the bytes themselves, both ways.
        EXPECT_EQ(type.convertToByteArray(any(bytes)), bytes);
        const any fromBytes = type.convertFromByteArray(bytes, error);
        EXPECT_FALSE(error.hasError());
        EXPECT_EQ(any_cast<ByteArray>(fromBytes), bytes);
    }
}

TEST(ByteArrayType, ReadsTheFirstWordOnly) {
    const TypeInfo type = ByteArrayType::Create();
    const char *const texts[] = {"TWFu",     "TWFu second", " \t\n TWFu",
                                 "TWFu\r\n", "TW=Fu !!!",   "TWFu==\vrest"};
    for (const char *text : texts) {
        ErrorHolder error;
        const any value = type.convertFromString(text, error);
        ASSERT_FALSE(error.hasError()) << text;
        EXPECT_EQ(any_cast<ByteArray>(value), bytesOf("Man")) << text;
    }
}

TEST(ByteArrayType, RefusesTextThatIsNotOneBase64WordWithItsOwnMessage) {
    const TypeInfo type = ByteArrayType::Create();
    const std::string texts[] = {
        "", "   ", "\n", "TW*u", "TWFu\x01", std::string("TW\0Fu", 5), "-", "\xC3\xA9t\xC3\xA9"};
    for (std::string const &text : texts) {
        ErrorHolder error;
        const any value = type.convertFromString(text, error);
        EXPECT_TRUE(value.empty());
        ASSERT_TRUE(error.hasError());
        // Not the decoder's "from Base64." message: the whole text, and this type's suffix.
        EXPECT_EQ(error.what(), "Can't convert string '" + text + "' to ByteArray");
        EXPECT_EQ(error.description()->where().file(), ".\\types\\ByteArrayType");
    }
}

TEST(ByteArrayType, DefaultIsEmptyAndItsTextDoesNotReadBack) {
    const TypeInfo type = ByteArrayType::Create();
    const any value = type.defaultConstruct();
    ASSERT_TRUE(type.isValid(value));
    EXPECT_TRUE(any_cast<ByteArray>(value).isEmpty());
    EXPECT_TRUE(type.convertToByteArray(value).isEmpty());

    const std::string text = type.convertToString(value);
    EXPECT_EQ(text, "");
    ErrorHolder error;
    EXPECT_TRUE(type.convertFromString(text, error).empty());
    EXPECT_EQ(error.what(), "Can't convert string '' to ByteArray");
}

TEST(ByteArrayType, WritingAnotherClassThrowsBadAnyCast) {
    const TypeInfo type = ByteArrayType::Create();
    for (any const &value : {any(true), any(), any(std::string("TWFu"))}) {
        EXPECT_THROW(type.convertToString(value), VORT::bad_any_cast);
        EXPECT_THROW(type.convertToByteArray(value), VORT::bad_any_cast);
        EXPECT_FALSE(type.isValid(value));
    }
}
