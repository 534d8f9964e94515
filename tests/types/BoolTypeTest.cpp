#include <vort/types/BoolType.h>

#include <gtest/gtest.h>

#include <string>

using VORT::any;
using VORT::any_cast;
using VORT::BoolType;
using VORT::ByteArray;
using VORT::ErrorHolder;
using VORT::TypeInfo;

TEST(BoolType, RoundTripsBothForms) {
    const TypeInfo type = BoolType::Create();
    struct Row {
        const char *text;
        bool value;
        unsigned char byte;
    };
    for (Row const &row : {Row{"true", true, 1}, Row{"false", false, 0}}) {
        ErrorHolder error;
        const any fromText = type.convertFromString(row.text, error);
        ASSERT_FALSE(error.hasError()) << row.text;
        ASSERT_TRUE(type.isValid(fromText));
        EXPECT_EQ(any_cast<bool>(fromText), row.value);
        EXPECT_EQ(type.convertToString(fromText), row.text);

        const ByteArray bytes = type.convertToByteArray(fromText);
        EXPECT_EQ(bytes, ByteArray(1u, row.byte)) << row.text;
        const any fromBytes = type.convertFromByteArray(bytes, error);
        EXPECT_FALSE(error.hasError());
        EXPECT_EQ(any_cast<bool>(fromBytes), row.value);
    }
}

TEST(BoolType, ReadsOnlyTheFirstByteAndAnyNonZeroIsTrue) {
    const TypeInfo type = BoolType::Create();
    struct Row {
        ByteArray bytes;
        bool value;
    };
    const Row rows[] = {
        {ByteArray("\x02", 1u), true},
        {ByteArray("\xFF", 1u), true},
        {ByteArray("\x00\x01", 2u), false},
        {ByteArray("\x01\x00\x00", 3u), true},
    };
    for (Row const &row : rows) {
        ErrorHolder error;
        const any value = type.convertFromByteArray(row.bytes, error);
        EXPECT_FALSE(error.hasError());
        EXPECT_EQ(any_cast<bool>(value), row.value);
        // Written back, a bool is always one byte of 0 or 1.
        EXPECT_EQ(type.convertToByteArray(value), ByteArray(1u, row.value ? '\x01' : '\0'));
    }
}

TEST(BoolType, RefusesEveryOtherTextWithTheExactMessage) {
    const TypeInfo type = BoolType::Create();
    const std::string texts[] = {"True",
                                 "TRUE",
                                 "FALSE",
                                 " true",
                                 "true ",
                                 "false\n",
                                 "1",
                                 "0",
                                 "",
                                 "yes",
                                 "tru",
                                 "truee",
                                 std::string("true\0", 5)};
    for (std::string const &text : texts) {
        ErrorHolder error;
        const any value = type.convertFromString(text, error);
        EXPECT_TRUE(value.empty()) << text;
        ASSERT_TRUE(error.hasError()) << text;
        EXPECT_EQ(error.what(), "Can't convert string '" + text + "' to bool");
        EXPECT_EQ(error.id(), "Nexlark::GenericError");
        EXPECT_EQ(error.description()->where().file(), ".\\types\\BoolType");
    }
}

TEST(BoolType, LastErrorWinsAndSuccessLeavesItInPlace) {
    const TypeInfo type = BoolType::Create();
    ErrorHolder error;
    type.convertFromString("maybe", error);
    EXPECT_EQ(error.what(), "Can't convert string 'maybe' to bool");

    const any value = type.convertFromString("true", error);
    EXPECT_TRUE(any_cast<bool>(value));
    EXPECT_EQ(error.what(), "Can't convert string 'maybe' to bool");

    type.convertFromString("never", error);
    EXPECT_EQ(error.what(), "Can't convert string 'never' to bool");
}

TEST(BoolType, WritingAnotherClassThrowsBadAnyCast) {
    const TypeInfo type = BoolType::Create();
    for (any const &value : {any(1), any(), any(std::string("true")), any(ByteArray(1u, '\x01'))}) {
        EXPECT_THROW(type.convertToString(value), VORT::bad_any_cast);
        EXPECT_THROW(type.convertToByteArray(value), VORT::bad_any_cast);
        EXPECT_FALSE(type.isValid(value));
    }
}

TEST(BoolType, DefaultIsFalse) {
    const TypeInfo type = BoolType::Create();
    const any value = type.defaultConstruct();
    ASSERT_TRUE(type.isValid(value));
    EXPECT_FALSE(any_cast<bool>(value));
    EXPECT_EQ(type.convertToString(value), "false");
}
