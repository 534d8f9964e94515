#include <vort/types/Gradient.h>
#include <vort/xml/Database.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using VORT::Color;
using VORT::Gradient;
using VORT::GradientTypes;
using Point = VORT::VTPoint<double>;

const char kGradients[] = R"(<Gradients>
  <Sky gradient_type="radial">
    <CoordinateMode>ObjectBounding</CoordinateMode>
    <Spread>reflect</Spread>
    <Focal x="0.25" y="w"/>
    <Center x="0.5" y="0.5"/>
    <Radius>0.75</Radius>
    <Stop percent="0.25" color="1,0,0,1"/>
    <Stop percent="0.5" color="highlight"/>
    <Stop color="0;0;1;0.2"/>
  </Sky>
  <NoRadius gradient_type="Radial"><Stop percent="1" color="0,0,0,1"/></NoRadius>
  <HalfLine gradient_type="LINEAR">
    <PositionStart x="1" y="2"/><PositionEnd x="3"/>
    <Stop percent="1" color="0,1,0,1"/>
  </HalfLine>
  <Line gradient_type="Linear">
    <PositionStart x="1" y="2"/><PositionEnd x="3" y="4"/><Spread>sideways</Spread>
  </Line>
  <Cone gradient_type="conical"><Angle value="45"/><Center x="w" y="w"/></Cone>
  <NoAngle gradient_type="Conical"/>
  <Nothing gradient_type="None"/>
  <Odd gradient_type="Elliptic"/>
  <Untyped/>
</Gradients>
)";

class TestDatabase : public VORT::XMLDB::Database {
public:
    TestDatabase() = default;
};

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
    TestDatabase database;
};

TEST_F(GradientFromXMLDB, ReadsEveryPartOfARadialTree) {
    Gradient sky;
    ASSERT_TRUE(read(sky, "Sky"));
    EXPECT_EQ(static_cast<int>(sky.getGradientType()), GradientTypes::Radial);
    EXPECT_EQ(static_cast<int>(sky.getCoordinateMode()), 2);
    EXPECT_EQ(static_cast<int>(sky.getSpread()), 1);
    EXPECT_EQ(sky.getFocalPoint(), Point(0.25, -10));
    EXPECT_EQ(sky.getCenterPoint(), Point(0.5, 0.5));
    EXPECT_EQ(sky.getRadius(), 0.75);
    // In order; the stop without "percent" lands at 0.0, and the colour texts are fractions.
    ASSERT_EQ(sky.getStopCount(), 3u);
    EXPECT_EQ(sky.getStopItem(0), std::make_pair(0.0, Color(0, 0, 1, 0.2)));
    EXPECT_EQ(sky.getStopItem(1), std::make_pair(0.25, Color(1, 0, 0, 1)));
    Color highlight;
    highlight.setRGBAFromPackedValue(0x3366CCFFu);
    EXPECT_EQ(sky.getStopItem(2), std::make_pair(0.5, highlight));

    // Without resolvers the name is no colour and "w" no number.
    Gradient plain;
    ASSERT_TRUE(read(plain, "Sky", false));
    EXPECT_EQ(plain.getStopItemColor(2), Color());
    EXPECT_EQ(plain.getFocalPoint(), Point(0.25, 0));
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
        EXPECT_EQ(read(g, c.name), c.result);
        EXPECT_EQ(static_cast<int>(g.getGradientType()), c.type);
        EXPECT_EQ(g.getStopCount(), c.stops);
    }

    // A linear tree sets its points only when both read.
    Gradient half;
    read(half, "HalfLine");
    EXPECT_EQ(half.getStartPoint(), Point(0, 0));
    EXPECT_EQ(half.getEndPoint(), Point(1, 1));
    Gradient line;
    read(line, "Line");
    EXPECT_EQ(line.getStartPoint(), Point(1, 2));
    EXPECT_EQ(line.getEndPoint(), Point(3, 4));
    EXPECT_EQ(static_cast<int>(line.getSpread()), 0);
    Gradient cone;
    read(cone, "Cone");
    EXPECT_EQ(cone.getAngle(), 45.0);
    EXPECT_EQ(cone.getCenterPoint(), Point(10, -10));
}

}  // namespace
