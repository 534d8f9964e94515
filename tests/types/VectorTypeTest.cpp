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
        {{"a;b", "c\\d", "x,y"}, "a\\;b;c\\\\d;x,y", {"a;b", "c\\d", "x,y"}},
        {{"a", ""}, "a;", {"a", ""}},
        // One empty string writes as the empty text, which reads as no items at all.
        {{""}, "", {}},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(stringVector().convertToString(any(row.items)), row.text);
        const vort_test::ReadResult read = vort_test::readText(stringVector(), row.text);
        EXPECT_EQ(read.message, "");
        EXPECT_EQ(any_cast<Strings>(read.value), row.readBack);
    }
}

TEST(VectorType, ElementsGoThroughTheElementTypeAndBytesNowhere) {
    const TypeInfo ints = SpecificVectorType<int>::Create(IntType::Create());
    EXPECT_EQ(any_cast<std::vector<int>>(vort_test::readText(ints, "1; 2;-3x").value),
              (std::vector<int>{1, 2, -3}));
    EXPECT_EQ(ints.convertToString(any(std::vector<int>{4, -5})), "4;-5");
    const vort_test::ReadResult bad = vort_test::readText(ints, "1;two;3");
    EXPECT_TRUE(bad.value.empty());
    EXPECT_EQ(bad.message, "Can't convert string 'two' to int");

    const TypeInfo type = stringVector();
    EXPECT_TRUE(type.convertToByteArray(any(Strings{"a", "b"})).isEmpty());
    ErrorHolder error;
    EXPECT_TRUE(any_cast<Strings>(type.convertFromByteArray(ByteArray("a;b", 3u), error)).empty());
    EXPECT_FALSE(error.hasError());
    // An error already in the holder stops both readers, and stays.
    error.setError(SimpleErrorDescription(CodeLocation(".\\test", 1), "earlier"));
    EXPECT_TRUE(type.convertFromString("a;b", error).empty());
    EXPECT_TRUE(type.convertFromByteArray(ByteArray(), error).empty());
    EXPECT_EQ(error.what(), "earlier");
    EXPECT_THROW(type.convertToString(any(std::vector<int>{1})), bad_any_cast);
}

TEST(VectorType, ComparesByElementTypeAndAcceptsOnlyItsVectors) {
    const TypeInfo overInts = SpecificVectorType<std::string>::Create(IntType::Create());
    EXPECT_TRUE(stringVector() == stringVector() && !(stringVector() < stringVector()) &&
                !(stringVector() == overInts));
    EXPECT_EQ(stringVector() < overInts, StringType::Create() < IntType::Create());
    EXPECT_NE(stringVector() < overInts, overInts < stringVector());
    EXPECT_TRUE(VectorType::Is(SpecificVectorType<int>::Create(IntType::Create())) &&
                !VectorType::Is(StringType::Create()));
    EXPECT_TRUE(any_cast<Strings>(stringVector().defaultConstruct()).empty() &&
                stringVector().isValid(any(Strings())) &&
                !stringVector().isValid(any(std::vector<int>())));
}
