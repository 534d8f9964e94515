#include "TypeTesting.h"
#include <vort/types/Gradient.h>
#include <vort/types/GradientType.h>
#include <vort/xml/Database.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using std::make_tuple;
using namespace VORT;
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
    EXPECT_EQ(make_tuple(g.getStopItem(0), g.getStopItem(1), static_cast<int>(g.getSpread()),
                         g.getAngle()),
              make_tuple(std::make_pair(0.2, rgba(0x11111111u)),
                         std::make_pair(0.8, rgba(0x22222222u)), 0, 33.25));
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
    EXPECT_EQ(make_tuple(back.getStopCount(), back.getStopItem(0), back.getStopItem(1),
                         back.getStopItem(2)),
              make_tuple(3ul, source.getStopItem(0), source.getStopItem(1), source.getStopItem(2)));
    EXPECT_EQ(
        make_tuple(static_cast<int>(back.getSpread()), static_cast<int>(back.getCoordinateMode()),
                   back.getCenterPoint(), back.getFocalPoint(), back.getRadius()),
        make_tuple(1, 2, Point(static_cast<double>(0.1f), -2.5),
                   Point(static_cast<double>(0.001f), 7), static_cast<double>(123.457f)));
    EXPECT_NE(back.getCenterPoint().x, 0.1);

    // A full-precision stream carries the stops exactly, and the geometry still as floats.
    Gradient precise;
    precise.addColorStop(0.123456789, rgba(0x01020304u));
    precise.setEndPoint(Point(0.123456789, 1));
    std::ostringstream out;
    out << std::setprecision(17) << precise;
    Gradient read;
    read.fromString(out.str());
    EXPECT_EQ(make_tuple(read.getStopItemPercent(0), read.getEndPoint().x),
              make_tuple(0.123456789, static_cast<double>(0.123456789f)));
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
        EXPECT_EQ(make_tuple(in.fail(), static_cast<int>(target.getGradientType()),
                             target.getStopCount()),
                  make_tuple(c.fails, c.type, c.stops));
    }
    Gradient conicalRead;
    conicalRead.fromString("1,2,0,0,0,7,8,9,");
    EXPECT_EQ(make_tuple(conicalRead.getCenterPoint(), conicalRead.getAngle()),
              make_tuple(Point(7, 8), 9.0));
}

TEST(GradientType, CarriesGradientsAsTextOnly) {
    const VORT::TypeInfo type = GradientType::Create();
    EXPECT_TRUE(GradientType::Is(type) && type == GradientType::Create() &&
                !(type < GradientType::Create()));

    EXPECT_EQ(type.convertToString(VORT::any(linear())), "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    EXPECT_THROW(type.convertToString(VORT::any(3)), VORT::bad_any_cast);

    const vort_test::ReadResult good = readText(type, "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1, extra");
    EXPECT_EQ(good.message, "");
    EXPECT_TRUE(any_cast<Gradient>(good.value) == linear());

    const vort_test::ReadResult null = readText(type, "0,");
    EXPECT_EQ(make_tuple(null.message, any_cast<Gradient>(null.value).getGradient()),
              make_tuple("", nullptr));

    // No byte form and no validity through the type, by design.
    VORT::ErrorHolder error;
    EXPECT_TRUE(type.convertFromByteArray(vort_test::hexBytes("01 00"), error).empty());
    EXPECT_FALSE(error.hasError() || type.isValid(VORT::any(linear())));
    EXPECT_EQ(type.convertToByteArray(VORT::any(linear())).size(), 0u);
    EXPECT_EQ(any_cast<Gradient>(type.defaultConstruct()).getGradient(), nullptr);
}

const char kGradients[] = R"(<Gradients>
  <Sky gradient_type="radial"><CoordinateMode>ObjectBounding</CoordinateMode>
    <Spread>reflect</Spread><Focal x="0.25" y="w"/><Center x="0.5" y="0.5"/><Radius>0.75</Radius>
    <Stop percent="0.25" color="1,0,0,1"/><Stop percent="0.5" color="highlight"/>
    <Stop color="0;0;1;0.2"/></Sky>
  <NoRadius gradient_type="Radial"><Stop percent="1" color="0,0,0,1"/></NoRadius>
  <HalfLine gradient_type="LINEAR"><PositionStart x="1" y="2"/><PositionEnd x="3"/>
    <Stop percent="1" color="0,1,0,1"/></HalfLine>
  <Line gradient_type="Linear">
    <PositionStart x="1" y="2"/><PositionEnd x="3" y="4"/><Spread>sideways</Spread></Line>
  <Cone gradient_type="conical"><Angle value="45"/><Center x="w" y="w"/></Cone>
  <NoAngle gradient_type="Conical"/><Nothing gradient_type="None"/>
  <Odd gradient_type="Elliptic"/><Untyped/>
</Gradients>
)";

bool resolveColor(std::string const &text, Color &color) {
    if (text != "highlight") {
        return false;
    }
    color.setRGBAFromPackedValue(0x3366CCFFu);
    return true;
}

// "w" stands for 10 across and -10 down.
bool resolveNumber(std::string const &text, bool isX, double &value) {
    if (text != "w") {
        return false;
    }
    value = isX ? 10 : -10;
    return true;
}

class GradientFromXMLDB : public ::testing::Test {
protected:
    GradientFromXMLDB() : item(folder.path().toStdString(), nullptr, nullptr) {
        QFile file(folder.filePath(QStringLiteral("gradients.xml")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(kGradients);
        file.close();
        database.addPath(&item);
    }

    bool read(Gradient &gradient, std::string const &name, bool resolvers = true) {
        if (!resolvers) {
            return gradient.fromXMLDB(database, "Gradients/" + name, {}, {});
        }
        return gradient.fromXMLDB(database, "Gradients/" + name, &resolveColor, &resolveNumber);
    }

    QTemporaryDir folder;
    VORT::XMLDB::PathItem item;
    struct : VORT::XMLDB::Database {
    } database;
};

TEST_F(GradientFromXMLDB, ReadsEveryPartOfARadialTree) {
    Gradient sky;
    ASSERT_TRUE(read(sky, "Sky"));
    EXPECT_EQ(
        make_tuple(static_cast<int>(sky.getGradientType()),
                   static_cast<int>(sky.getCoordinateMode()), static_cast<int>(sky.getSpread()),
                   sky.getFocalPoint(), sky.getCenterPoint(), sky.getRadius()),
        make_tuple(1, 2, 1, Point(0.25, -10), Point(0.5, 0.5), 0.75));
    // In order; the stop without "percent" lands at 0.0, and the colour texts are fractions.
    EXPECT_EQ(
        make_tuple(sky.getStopCount(), sky.getStopItem(0), sky.getStopItem(1), sky.getStopItem(2)),
        make_tuple(3ul, std::make_pair(0.0, Color(0, 0, 1, 0.2)),
                   std::make_pair(0.25, Color(1, 0, 0, 1)),
                   std::make_pair(0.5, rgba(0x3366CCFFu))));

    // Without resolvers the name is no colour and "w" no number.
    Gradient plain;
    ASSERT_TRUE(read(plain, "Sky", false));
    EXPECT_EQ(make_tuple(plain.getStopItemColor(2), plain.getFocalPoint()),
              make_tuple(Color(), Point(0.25, 0)));
}

TEST_F(GradientFromXMLDB, AnswersWhetherTheGradientEndedUpValid) {
    struct Case {
        const char *name;
        bool result;
        int type;  // afterwards; the target starts as a conical gradient with one stop
        unsigned long stops;
    };
    const Case cases[] = {
        {"NoRadius", false, GradientTypes::Radial, 0},
        {"HalfLine", true, GradientTypes::Linear, 1},
        {"Line", true, GradientTypes::Linear, 0},
        {"Cone", true, GradientTypes::Conical, 0},
        {"NoAngle", false, GradientTypes::Conical, 0},
        {"Nothing", false, GradientTypes::None, 0},
        {"Odd", false, GradientTypes::Conical, 1},
        {"Untyped", false, GradientTypes::Conical, 1},
        {"Missing", false, GradientTypes::Conical, 1},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.name);
        Gradient g;
        g.setAngle(10);
        g.addColorStop(0.5, Color(1, 1, 1, 1));
        const bool result = read(g, c.name);
        EXPECT_EQ(make_tuple(result, static_cast<int>(g.getGradientType()), g.getStopCount()),
                  make_tuple(c.result, c.type, c.stops));
    }

    // A linear tree sets its points only when both read.
    Gradient half, line, cone;
    read(half, "HalfLine");
    read(line, "Line");
    read(cone, "Cone");
    EXPECT_EQ(
        make_tuple(half.getStartPoint(), half.getEndPoint(), line.getStartPoint(),
                   line.getEndPoint(), static_cast<int>(line.getSpread()), cone.getAngle(),
                   cone.getCenterPoint()),
        make_tuple(Point(0, 0), Point(1, 1), Point(1, 2), Point(3, 4), 0, 45.0, Point(10, -10)));
}

}  // namespace
