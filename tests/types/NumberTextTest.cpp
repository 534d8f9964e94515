// Numbers in text are made without a stream while the global locale is the classic one, and by
// a stream otherwise. Both ways must give the same text and read the same values, and any other
// locale must be followed. (The fuzz corpus checks many more readings against a stream.)
#include "TypeTesting.h"
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/PointType.h>

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

private:
    std::locale m_previous;
};

class CommaPunct : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

// Every value written, then every text read back and written again ("!" for a failure).
std::vector<std::string> throughTypes(std::vector<double> const &doubles) {
    const TypeInfo types[] = {DoubleType::Create(), FloatType::Create(), IntType::Create(),
                              DRectType::Create()};
    std::vector<std::string> texts;
    for (double value : doubles) {
        texts.push_back(types[0].convertToString(any(value)));
        if (!(std::fabs(value) > std::numeric_limits<float>::max()) || std::isinf(value)) {
            texts.push_back(types[1].convertToString(any(static_cast<float>(value))));
        }
        if (std::fabs(value) < 2147483648.0) {
            texts.push_back(types[2].convertToString(any(static_cast<int>(value))));
        }
        texts.push_back(types[3].convertToString(any(VTRect<double>(value, 1, -value, 0))));
    }
    const size_t written = texts.size();
    for (size_t index = 0; index < written; ++index) {
        for (TypeInfo const &type : types) {
            ErrorHolder error;
            const any value = type.convertFromString(texts[index], error);
            texts.push_back(error.hasError() ? "!" : type.convertToString(value));
        }
    }
    return texts;
}

}  // namespace

TEST(NumberText, DirectAndStreamPathsAgreeOnAwkwardValues) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> doubles = {
        0.0,  -0.0,    1e-5,     1e-4,  1e6,      999999.5,   123456.5, 1234565.0, 1e21,
        0.1,  1.0 / 3, -2.5e-10, 1e308, 4.9e-324, 2.225e-308, inf,      -inf,      nan,
        -nan, 3.4e38,  1e39,     1e-46, INT_MIN,  INT_MAX,    42.75,    -1000000.0};
    const std::vector<std::string> direct = throughTypes(doubles);
    std::vector<std::string> stream;
    {
        // The classic locale with a facet of its own: it behaves as the classic one does, but it
        // isn't the classic one, so the stream does the work.
        GlobalLocale lookalike(std::locale(std::locale::classic(), new std::numpunct<char>));
        stream = throughTypes(doubles);
    }
    EXPECT_EQ(direct, stream);
    const std::vector<std::string> spelt(direct.begin(), direct.begin() + 8);
    EXPECT_EQ(spelt,
              (std::vector<std::string>{"0", "0", "0", "0,1,-0,0", "-0", "-0", "0", "-0,1,0,0"}));
}

TEST(NumberText, FollowsTheGlobalLocale) {
    GlobalLocale comma(std::locale(std::locale::classic(), new CommaPunct));
    EXPECT_EQ(DoubleType::Create().convertToString(any(1.5)), "1,5");
    EXPECT_EQ(DPointType::Create().convertToString(any(VTPoint<double>(1.5, 2))), "1,5,2");
    EXPECT_EQ(any_cast<double>(vort_test::readText(DoubleType::Create(), "2,25").value), 2.25);
    // Under the classic locale the comma ends the number.
    std::locale::global(std::locale::classic());
    EXPECT_EQ(any_cast<double>(vort_test::readText(DoubleType::Create(), "2,25").value), 2.0);
}
