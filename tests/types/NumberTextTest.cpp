// Numbers in text are made without a stream while the global locale is the classic one, and by
// a stream otherwise. Both ways must give the same text and read the same values, and any other
// locale must be followed.
#include "TypeTesting.h"
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/PointType.h>
#include <vort/types/TransformType.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <locale>
#include <string>
#include <vector>

using namespace VORT;

namespace {

// Sets the global locale for the life of the object.
class GlobalLocale {
public:
    explicit GlobalLocale(std::locale const &locale) : m_previous(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(m_previous); }
    GlobalLocale(GlobalLocale const &) = delete;
    GlobalLocale &operator=(GlobalLocale const &) = delete;

private:
    std::locale m_previous;
};

// The classic locale with a facet of its own: it behaves as the classic one does, but it isn't
// the classic one, so the stream does the work.
std::locale classicLookalike() {
    return std::locale(std::locale::classic(), new std::numpunct<char>);
}

// A decimal comma, as some users' locales have.
class CommaPunct : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

struct Texts {
    std::vector<std::string> written;
    std::vector<std::string> reread;  // the written texts read back and written again, or "!"
};

Texts throughTypes(std::vector<double> const &doubles, std::vector<int> const &ints,
                   std::vector<std::string> const &readings) {
    const TypeInfo doubleType = DoubleType::Create();
    const TypeInfo floatType = FloatType::Create();
    const TypeInfo intType = IntType::Create();
    const TypeInfo rectType = DRectType::Create();
    Texts texts;
    for (double value : doubles) {
        texts.written.push_back(doubleType.convertToString(any(value)));
        if (!(std::fabs(value) > std::numeric_limits<float>::max()) || std::isinf(value)) {
            texts.written.push_back(floatType.convertToString(any(static_cast<float>(value))));
        }
        texts.written.push_back(rectType.convertToString(any(VTRect<double>(value, 1, -value, 0))));
    }
    for (int value : ints) {
        texts.written.push_back(intType.convertToString(any(value)));
    }
    std::vector<std::string> all = texts.written;
    all.insert(all.end(), readings.begin(), readings.end());
    for (std::string const &text : all) {
        for (TypeInfo const *type : {&doubleType, &floatType, &intType, &rectType}) {
            ErrorHolder error;
            const any value = type->convertFromString(text, error);
            texts.reread.push_back(error.hasError() ? "!" : type->convertToString(value));
        }
    }
    return texts;
}

}  // namespace

TEST(NumberText, DirectAndStreamPathsAgreeOnAwkwardValues) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double denormal = std::numeric_limits<double>::denorm_min();
    const std::vector<double> doubles = {0.0,
                                         -0.0,
                                         1e-5,
                                         1e-4,
                                         1e6,
                                         999999.5,
                                         123456.5,
                                         1234565.0,
                                         1e21,
                                         -1e21,
                                         0.1,
                                         1.0 / 3,
                                         2.5,
                                         -2.5e-10,
                                         1e308,
                                         denormal,
                                         2.2250738585072014e-308,
                                         inf,
                                         -inf,
                                         nan,
                                         -nan,
                                         3.4e38,
                                         1e39,
                                         1e-46};
    const std::vector<int> ints = {0, 1, -1, 42, INT_MIN, INT_MAX, 1000000};
    const std::vector<std::string> readings = {"",
                                               " ",
                                               "+",
                                               "-",
                                               ".",
                                               "-.",
                                               "+.5",
                                               "5.",
                                               "1e",
                                               "1e+",
                                               "1e-",
                                               "1e5e",
                                               "1.2.3",
                                               "0x10",
                                               "00012",
                                               "-0",
                                               "1e400",
                                               "1e-400",
                                               "1e-45",
                                               "3.5e38",
                                               "2147483648",
                                               "-2147483648",
                                               "inf",
                                               "nan",
                                               "1,2,3,4",
                                               " 7 ; 8;9 ;x",
                                               "9e9999999999",
                                               "1" + std::string(400, '0'),
                                               "\t\n\v\f\r5"};

    const Texts direct = throughTypes(doubles, ints, readings);
    Texts stream;
    {
        GlobalLocale lookalike(classicLookalike());
        stream = throughTypes(doubles, ints, readings);
    }
    ASSERT_EQ(direct.written.size(), stream.written.size());
    for (size_t index = 0; index < direct.written.size(); ++index) {
        EXPECT_EQ(direct.written[index], stream.written[index]) << index;
    }
    ASSERT_EQ(direct.reread.size(), stream.reread.size());
    for (size_t index = 0; index < direct.reread.size(); ++index) {
        EXPECT_EQ(direct.reread[index], stream.reread[index]) << index;
    }
    // A few of them, spelt out.
    EXPECT_EQ(direct.written[0], "0");
    EXPECT_EQ(direct.written[3], "-0");
    EXPECT_EQ(DoubleType::Create().convertToString(any(nan)), "nan");
    EXPECT_EQ(DoubleType::Create().convertToString(any(-inf)), "-inf");
    EXPECT_EQ(DoubleType::Create().convertToString(any(denormal)), "4.94066e-324");
}

TEST(NumberText, FollowsTheGlobalLocale) {
    GlobalLocale comma(std::locale(std::locale::classic(), new CommaPunct));
    EXPECT_EQ(DoubleType::Create().convertToString(any(1.5)), "1,5");
    EXPECT_EQ(DPointType::Create().convertToString(any(VTPoint<double>(1.5, 2))), "1,5,2");

    const vort_test::ReadResult read = vort_test::readText(DoubleType::Create(), "2,25");
    ASSERT_EQ(read.message, "");
    EXPECT_EQ(any_cast<double>(read.value), 2.25);
    // Under the classic locale the comma ends the number.
    std::locale::global(std::locale::classic());
    EXPECT_EQ(any_cast<double>(vort_test::readText(DoubleType::Create(), "2,25").value), 2.0);
}
