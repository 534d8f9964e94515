#include "TypeTesting.h"
#include <vort/types/IntType.h>
#include <vort/types/StringType.h>
#include <vort/types/VectorType.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VORT;
using Strings = std::vector<std::string>;

namespace {

TypeInfo stringVector() {
    return SpecificVectorType<std::string>::Create(StringType::Create());
}

}  // namespace

TEST(VectorType, EscapesBackslashesAndSeparatorsOnly) {
    struct Row {
        Strings items;
        std::string text;
        Strings readBack;
    };
    const Row rows[] = {
        {{"a;b", "c\\d"}, "a\\;b;c\\\\d", {"a;b", "c\\d"}},
        {{"plain", "two words", "x,y"}, "plain;two words;x,y", {"plain", "two words", "x,y"}},
        {{";", "\\", "\\;"}, "\\;;\\\\;\\\\\\;", {";", "\\", "\\;"}},
        {{"", ""}, ";", {"", ""}},
        {{"a", ""}, "a;", {"a", ""}},
        {{}, "", {}},
        // One empty string writes as the empty text, which reads as no items at all.
        {{""}, "", {}},
    };
    const TypeInfo type = stringVector();
    for (Row const &row : rows) {
        SCOPED_TRACE(row.text);
        ASSERT_TRUE(type.isValid(any(row.items)));
        EXPECT_EQ(type.convertToString(any(row.items)), row.text);
        const vort_test::ReadResult read = vort_test::readText(type, row.text);
        ASSERT_EQ(read.message, "");
        EXPECT_EQ(any_cast<Strings>(read.value), row.readBack);
    }
}

TEST(VectorType, RefusesBadEscapesWithTheVectorMessage) {
    const TypeInfo type = stringVector();
    for (std::string const text : {"a\\b", "\\", "ok;ends\\", "\\n", "a;\\x;c", "\\\\\\"}) {
        SCOPED_TRACE(text);
        const vort_test::ReadResult read = vort_test::readText(type, text);
        EXPECT_TRUE(read.value.empty());
        EXPECT_EQ(read.message, "Can't convert string '" + text + "' to Vector");
    }
}

TEST(VectorType, ElementsReadThroughTheElementType) {
    const TypeInfo ints = SpecificVectorType<int>::Create(IntType::Create());
    const vort_test::ReadResult good = vort_test::readText(ints, "1; 2;-3x");
    ASSERT_EQ(good.message, "");
    EXPECT_EQ(any_cast<std::vector<int>>(good.value), (std::vector<int>{1, 2, -3}));
    EXPECT_EQ(ints.convertToString(any(std::vector<int>{4, -5})), "4;-5");

    // An element that doesn't read fails with its own type's message.
    const vort_test::ReadResult bad = vort_test::readText(ints, "1;two;3");
    EXPECT_TRUE(bad.value.empty());
    EXPECT_EQ(bad.message, "Can't convert string 'two' to int");

    // An error already in the holder stops the reading, and stays.
    ErrorHolder error;
    error.setError(SimpleErrorDescription(CodeLocation(".\\test", 1), "earlier"));
    EXPECT_TRUE(stringVector().convertFromString("a;b", error).empty());
    EXPECT_TRUE(stringVector().convertFromByteArray(ByteArray(3u, 'x'), error).empty());
    EXPECT_EQ(error.what(), "earlier");
}

TEST(VectorType, HasNoByteForm) {
    const TypeInfo type = stringVector();
    EXPECT_TRUE(type.convertToByteArray(any(Strings{"a", "b"})).isEmpty());
    EXPECT_TRUE(type.convertToByteArray(any(Strings{})).isEmpty());
    for (ByteArray const &bytes : {ByteArray(), ByteArray("a;b", 3u), ByteArray(40u, '\xFF')}) {
        ErrorHolder error;
        const any value = type.convertFromByteArray(bytes, error);
        EXPECT_FALSE(error.hasError());
        ASSERT_TRUE(type.isValid(value));
        EXPECT_TRUE(any_cast<Strings>(value).empty());
    }
    EXPECT_THROW(type.convertToByteArray(any(std::vector<int>{1})), bad_any_cast);
    EXPECT_THROW(type.convertToString(any(std::string("a"))), bad_any_cast);
}

TEST(VectorType, ComparesByElementTypeAndAcceptsOnlyItsVectors) {
    const TypeInfo strings = stringVector();
    const TypeInfo otherStrings = stringVector();
    const TypeInfo overInts = SpecificVectorType<std::string>::Create(IntType::Create());
    EXPECT_TRUE(strings == otherStrings);
    EXPECT_FALSE(strings < otherStrings);
    EXPECT_FALSE(strings == overInts);
    EXPECT_NE(strings < overInts, overInts < strings);
    EXPECT_EQ(strings < overInts, StringType::Create() < IntType::Create());

    EXPECT_TRUE(VectorType::Is(strings));
    EXPECT_TRUE(VectorType::Is(SpecificVectorType<int>::Create(IntType::Create())));
    EXPECT_FALSE(VectorType::Is(StringType::Create()));

    const any value = strings.defaultConstruct();
    ASSERT_TRUE(strings.isValid(value));
    EXPECT_TRUE(any_cast<Strings>(value).empty());
    EXPECT_FALSE(strings.isValid(any(std::vector<int>())));
    EXPECT_FALSE(strings.isValid(any()));
}
