#include "TypeTesting.h"
#include "support/PlatformHooks.h"
#include <vort/types/Gradient.h>
#include <vort/types/GradientType.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace {

using VORT::any_cast;
using VORT::Color;
using VORT::Gradient;
using VORT::GradientType;
using VORT::GradientTypes;
using Point = VORT::VTPoint<double>;
using vort_test::hexOf;
using vort_test::readText;

Color rgba(unsigned int word) {
    Color color;
    color.setRGBAFromPackedValue(word);
    return color;
}

Gradient linear() {
    Gradient g;
    g.setStartPoint(Point(0, 0));
    g.setEndPoint(Point(1, 1));
    g.addColorStop(0.5, rgba(0xFF0000FFu));
    return g;
}

Gradient radial() {
    Gradient g;
    g.setCenterPoint(Point(0.1, -2.5));
    g.setFocalPoint(Point(1e-3, 7));
    g.setRadius(123.456789);
    g.addColorStop(0.0, rgba(0x102030FFu));
    g.addColorStop(0.3333, rgba(0x00000000u));
    g.addColorStop(1.0, rgba(0xFFFFFF80u));
    g.setSpread(VORT::GradientSpreadType::Reflect);
    g.setCoordinateMode(VORT::GradientCoordinateMode::ObjectBounding);
    return g;
}

Gradient conical() {
    Gradient g;
    g.setAngle(33.25);
    g.setCenterPoint(Point(4, 5));
    g.setSpread(VORT::GradientSpreadType::Repeat);
    return g;
}

std::vector<unsigned char> bytesOf(Gradient const &g) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(g.getByteStreamSize()), 0xEE);
    g.toByteStream(bytes.data());
    return bytes;
}

std::string hex(std::vector<unsigned char> const &bytes) {
    return hexOf(VORT::ByteArray(bytes.data(), static_cast<unsigned int>(bytes.size())));
}

TEST(GradientByteStream, WritesTheLaidOutFieldsLeastSignificantByteFirst) {
    EXPECT_EQ(Gradient().getByteStreamSize(), 1);
    EXPECT_EQ(hex(bytesOf(Gradient())), "00");
    EXPECT_EQ(hex(bytesOf(linear())),
              "01 00 00 00 00 01 00 00 00 "
              "00 00 00 00 00 00 E0 3F 00 00 FF FF "
              "00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 F0 3F");
    struct Case {
        const char *what;
        Gradient gradient;
        int size;
    };
    Gradient twoStops = linear();
    twoStops.addColorStop(1.0, rgba(0x0000FFFFu));
    Gradient emptyRadial;
    emptyRadial.setGradientType(GradientTypes::Radial);
    const Case cases[] = {
        {"linear, one stop", linear(), 61},    {"linear, two stops", twoStops, 73},
        {"radial, no stops", emptyRadial, 57}, {"radial, three stops", radial(), 93},
        {"conical, no stops", conical(), 41},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.gradient.getByteStreamSize(), c.size);
        const std::vector<unsigned char> bytes = bytesOf(c.gradient);
        ASSERT_EQ(bytes.size(), static_cast<std::size_t>(c.size));
        Gradient back;
        back.fromByteStream(bytes.data());
        EXPECT_TRUE(back == c.gradient);
        EXPECT_EQ(bytesOf(back), bytes);
        EXPECT_EQ(back.getStopCount(), c.gradient.getStopCount());
    }
}

TEST(GradientByteStream, ReadsAWholeGradientOverWhateverWasThere) {
    Gradient g = radial();
    const unsigned char null = 0;
    g.fromByteStream(&null);
    EXPECT_EQ(g.getGradient(), nullptr);

    // Stops arrive in any order and Qt sorts them; an unknown spread is ignored.
    Gradient source = conical();
    source.addColorStop(0.2, rgba(0x11111111u));
    source.addColorStop(0.8, rgba(0x22222222u));
    std::vector<unsigned char> bytes = bytesOf(source);
    std::swap_ranges(bytes.begin() + 9, bytes.begin() + 21, bytes.begin() + 21);
    bytes[33] = 9;
    g.fromByteStream(bytes.data());
    EXPECT_EQ(g.getStopItem(0), std::make_pair(0.2, rgba(0x11111111u)));
    EXPECT_EQ(g.getStopItem(1), std::make_pair(0.8, rgba(0x22222222u)));
    EXPECT_EQ(static_cast<int>(g.getSpread()), 0);
    EXPECT_EQ(g.getAngle(), 33.25);
}

TEST(GradientText, WritesEveryValueWithATrailingComma) {
    EXPECT_EQ(linear().toString(), "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    EXPECT_EQ(Gradient().toString(), "0,");
    EXPECT_EQ(radial().toString(),
              "1,1,3,0,16,32,48,255,0.3333,0,0,0,0,1,255,255,255,128,1,2,0.1,-2.5,0.001,7,"
              "123.457,");
    EXPECT_EQ(conical().toString(), "1,2,0,2,0,4,5,33.25,");

    // Integers stay decimal whatever the stream's flags; doubles follow its settings.
    std::ostringstream stream;
    stream << std::hex << std::setprecision(9) << radial();
    EXPECT_EQ(stream.str(),
              "1,1,3,0,16,32,48,255,0.3333,0,0,0,0,1,255,255,255,128,1,2,0.1,-2.5,0.001,7,"
              "123.456789,");
}

TEST(GradientText, ReadsBackWithGeometryAtFloatPrecision) {
    const Gradient source = radial();
    std::istringstream in(source.toString() + "ignored");
    Gradient back;
    in >> back;
    EXPECT_FALSE(in.fail());
    ASSERT_EQ(back.getStopCount(), 3u);
    for (unsigned long index = 0; index < 3; ++index) {
        EXPECT_EQ(back.getStopItem(index), source.getStopItem(index));
    }
    EXPECT_EQ(static_cast<int>(back.getSpread()), 1);
    EXPECT_EQ(static_cast<int>(back.getCoordinateMode()), 2);
    EXPECT_EQ(back.getCenterPoint(), Point(static_cast<double>(0.1f), -2.5));
    EXPECT_NE(back.getCenterPoint().x, 0.1);
    EXPECT_EQ(back.getFocalPoint(), Point(static_cast<double>(0.001f), 7));
    EXPECT_EQ(back.getRadius(), static_cast<double>(123.457f));

    // A full-precision stream carries the stops exactly, and the geometry still as floats.
    Gradient precise;
    precise.addColorStop(0.123456789, rgba(0x01020304u));
    precise.setEndPoint(Point(0.123456789, 1));
    std::ostringstream out;
    out << std::setprecision(17) << precise;
    Gradient read;
    read.fromString(out.str());
    EXPECT_EQ(read.getStopItemPercent(0), 0.123456789);
    EXPECT_EQ(read.getEndPoint().x, static_cast<double>(0.123456789f));
}

TEST(GradientText, KeepsTheTargetForANullTextAndReportsOnlyThroughTheStream) {
    struct Case {
        const char *text;
        bool fails;
        int type;  // of the target afterwards, which was linear with one stop
        unsigned long stops;
    };
    const Case cases[] = {
        {"0,", false, GradientTypes::Linear, 1},
        {"", true, GradientTypes::Linear, 1},
        {"2,1,0,", false, GradientTypes::Linear, 1},
        {"1,2,0,0,0,7,8,9,", false, GradientTypes::Conical, 0},
        {"1;2;0;0;0;7;8;9;", false, GradientTypes::Conical, 0},
        {"1 , 1 , 0 , 0 , 0 , 1 , 2 , 3 , 4 , 5 ,", false, GradientTypes::Radial, 0},
        {"1,7,0,0,0,", false, GradientTypes::None, 0},
        {"1,0,2,0.5,255,0,0,255,", true, GradientTypes::Linear, 1},
        {"1,0,4000000000,", true, GradientTypes::Linear, 0},
        {"1,0,1,0.5,255,0,0,255,0,0,0,0,1", true, GradientTypes::Linear, 1},
        {"1,0,2,0.5,255,0,0,255,0.7,0,0,255,255", true, GradientTypes::Linear, 2},
        {"1,0,1,x", true, GradientTypes::Linear, 0},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.text);
        Gradient target;
        target.addColorStop(0.9, rgba(0x000000FFu));
        std::istringstream in(c.text);
        Gradient::streamFromFile(in, target);
        EXPECT_EQ(in.fail(), c.fails);
        EXPECT_EQ(static_cast<int>(target.getGradientType()), c.type);
        EXPECT_EQ(target.getStopCount(), c.stops);
    }
    Gradient conicalRead;
    conicalRead.fromString("1,2,0,0,0,7,8,9,");
    EXPECT_EQ(conicalRead.getCenterPoint(), Point(7, 8));
    EXPECT_EQ(conicalRead.getAngle(), 9.0);
}

using GradientFromString = vort_test::PlatformHooksTest;

TEST_F(GradientFromString, AnnouncesEveryTextOnTheConsole) {
    Gradient g;
    g.fromString("1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    g.fromString("nonsense");
    EXPECT_EQ(platform.consoleOutput(),
              "Someone sent: 1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,\nSomeone sent: nonsense\n");
    EXPECT_TRUE(g == linear());
}

TEST(GradientType, CarriesGradientsAsTextOnly) {
    const VORT::TypeInfo type = GradientType::Create();
    EXPECT_TRUE(GradientType::Is(type));
    EXPECT_TRUE(type == GradientType::Create());
    EXPECT_FALSE(type < GradientType::Create());

    EXPECT_EQ(type.convertToString(VORT::any(linear())), "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    EXPECT_THROW(type.convertToString(VORT::any(3)), VORT::bad_any_cast);

    const vort_test::ReadResult good = readText(type, "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1, extra");
    EXPECT_EQ(good.message, "");
    EXPECT_TRUE(any_cast<Gradient>(good.value) == linear());

    const vort_test::ReadResult null = readText(type, "0,");
    EXPECT_EQ(null.message, "");
    EXPECT_EQ(any_cast<Gradient>(null.value).getGradient(), nullptr);

    for (const char *text : {"", "1,0,1,x", "1,0,1,0.5,255,0,0,255,0,0,0,0,1"}) {
        const vort_test::ReadResult bad = readText(type, text);
        EXPECT_TRUE(bad.value.empty()) << text;
        EXPECT_EQ(bad.message, std::string("Can't convert string '") + text + "' to Gradient");
    }

    // No byte form and no validity through the type, by design.
    VORT::ErrorHolder error;
    EXPECT_TRUE(type.convertFromByteArray(vort_test::hexBytes("01 00"), error).empty());
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(type.convertToByteArray(VORT::any(linear())).size(), 0u);
    EXPECT_FALSE(type.isValid(VORT::any(linear())));
    EXPECT_EQ(any_cast<Gradient>(type.defaultConstruct()).getGradient(), nullptr);
}

}  // namespace
