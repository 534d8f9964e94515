#include <vort/types/Gradient.h>

#include <QtGui/QConicalGradient>
#include <QtGui/QLinearGradient>
#include <QtGui/QRadialGradient>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <tuple>
#include <utility>

namespace {

using VORT::Color;
using VORT::Gradient;
using VORT::GradientCoordinateMode;
using VORT::GradientSpreadType;
using VORT::GradientTypes;
using Point = VORT::VTPoint<double>;

const unsigned char kOwn = Gradient::StateOwnData;
const unsigned char kFrom = Gradient::StateCopiedFrom;
const unsigned char kTo = Gradient::StateCopiedTo;
const unsigned char kDestroyed = Gradient::StateDestroyed;

Color red() {
    return Color(1.0, 0.0, 0.0, 1.0);
}

Color blue() {
    return Color(0.0, 0.0, 1.0, 1.0);
}

unsigned char stateOf(Gradient const &g) {
    unsigned char bits = 0;
    for (unsigned char bit : {1, 2, 4, 8, 16, 32, 64, 128}) {
        if (g.hasState(bit)) {
            bits = static_cast<unsigned char>(bits | bit);
        }
    }
    return bits;
}

// Ends `g` and makes a new one in its place, so that a case can observe a constructor.
template <class... Arguments>
void rebuild(Gradient &g, Arguments &&...arguments) {
    g.~Gradient();
    new (&g) Gradient(std::forward<Arguments>(arguments)...);
}

// A linear gradient that this object made, with one stop.
Gradient linearWithStop() {
    Gradient g;
    g.addColorStop(0.25, red());
    return g;
}

TEST(GradientState, FollowsEveryTransitionOfTheTable) {
    struct Case {
        const char *what;
        // Acts on `a` (the object observed) and `b` (a source or bystander).
        std::function<void(Gradient &a, Gradient &b)> act;
        unsigned char a;
        unsigned char b;
        bool shared;  // a and b hold the same Qt gradient
    };
    const Case cases[] = {
        {"default construction", [](Gradient &, Gradient &) {}, 0, 0, false},
        {"on-demand creation", [](Gradient &a, Gradient &) { a.addColorStop(0.5, red()); }, kOwn, 0,
         false},
        {"from a Qt gradient",
         [](Gradient &a, Gradient &) { rebuild(a, QLinearGradient(0, 0, 1, 1)); }, 0, 0, false},
        {"copy of a holding source",
         [](Gradient &a, Gradient &b) {
             b.addColorStop(0.5, red());
             rebuild(a, b);
         },
         kFrom, kOwn | kTo, true},
        {"copy of an empty source", [](Gradient &a, Gradient &b) { rebuild(a, b); }, 0, kTo, false},
        {"assignment keeps the destroyed mark",
         [](Gradient &a, Gradient &b) {
             b.addColorStop(0.5, red());
             a.setState(kDestroyed, true);
             a = b;
         },
         kFrom | kDestroyed, kOwn | kTo, true},
        {"copyFrom",
         [](Gradient &a, Gradient &b) {
             b.addColorStop(0.5, red());
             a.copyFrom(&b);
         },
         kFrom, kOwn | kTo, true},
        {"copyFrom null or itself",
         [](Gradient &a, Gradient &) {
             a.addColorStop(0.5, red());
             a.copyFrom(nullptr);
             a.copyFrom(&a);
         },
         kOwn, 0, false},
        {"a write after the copy detaches the copy",
         [](Gradient &a, Gradient &b) {
             b.addColorStop(0.5, red());
             a = b;
             a.setSpread(GradientSpreadType::Reflect);
         },
         kOwn, kOwn | kTo, false},
        {"and the source too, when it writes",
         [](Gradient &a, Gradient &b) {
             a.addColorStop(0.5, red());
             b = a;
             a.setSpread(GradientSpreadType::Reflect);
         },
         kOwn, kFrom, false},
        {"a change of kind",
         [](Gradient &a, Gradient &) {
             a.addColorStop(0.5, red());
             a.setState(kTo | kDestroyed, true);
             a.setGradientType(GradientTypes::Radial, false);
         },
         kOwn | kDestroyed, 0, false},
        {"the same kind without reset changes nothing",
         [](Gradient &a, Gradient &b) {
             a.addColorStop(0.5, red());
             b = a;
             a.setGradientType(GradientTypes::Linear, false);
         },
         kOwn | kTo, kFrom, true},
        {"no kind",
         [](Gradient &a, Gradient &) {
             a.addColorStop(0.5, red());
             a.setState(kDestroyed, true);
             a.setGradientType(GradientTypes::None);
         },
         kDestroyed, 0, false},
        {"clearAll",
         [](Gradient &a, Gradient &b) {
             b.addColorStop(0.5, red());
             a = b;
             a.setState(kDestroyed, true);
             a.clearAll();
         },
         kDestroyed, kOwn | kTo, false},
        {"an empty byte stream",
         [](Gradient &a, Gradient &) {
             a.addColorStop(0.5, red());
             a.setState(kDestroyed | kTo, true);
             const unsigned char empty = 0;
             a.fromByteStream(&empty);
         },
         kDestroyed, 0, false},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        Gradient a;
        Gradient b;
        c.act(a, b);
        EXPECT_EQ(stateOf(a), c.a);
        EXPECT_EQ(stateOf(b), c.b);
        EXPECT_EQ(a.getGradient() != nullptr && a.getGradient() == b.getGradient(), c.shared);
    }
}

TEST(GradientState, CopyOnWriteKeepsEachSideItsOwnValue) {
    Gradient a = linearWithStop();
    QGradient const *const original = a.getGradient();
    {
        Gradient b(a);
        EXPECT_TRUE(a == b);
        b.setSpread(GradientSpreadType::Repeat);
        EXPECT_EQ(static_cast<int>(a.getSpread()), GradientSpreadType::Pad);
        EXPECT_EQ(static_cast<int>(b.getSpread()), GradientSpreadType::Repeat);
        EXPECT_TRUE(a != b);
        EXPECT_EQ(a.getGradient(), original);
    }
    // The copy is gone, but the mark stays: the next write copies anyway.
    a.addColorStop(0.75, blue());
    EXPECT_NE(a.getGradient(), original);
    EXPECT_EQ(a.getStopCount(), 2u);
    const QGradient *const own = a.getGradient();
    a.addColorStop(0.8, blue());
    EXPECT_EQ(a.getGradient(), own);
}

TEST(GradientState, TheDestroyedMarkStopsOnDemandCreation) {
    Gradient empty;
    EXPECT_FALSE(empty.hasState(kDestroyed));
    empty.setState(kDestroyed, true);
    empty.addColorStop(0.5, red());
    empty.setRadius(2.0);
    empty.setCenterPoint(Point(1, 1));
    empty.setStopColor(0, red());
    EXPECT_EQ(empty.getGradient(), nullptr);

    Gradient held = linearWithStop();
    held.setState(kDestroyed, true);
    held.setRadius(2.0);  // no change of kind
    EXPECT_EQ(static_cast<int>(held.getGradientType()), GradientTypes::Linear);
    held.setEndPoint(Point(5, 6));  // its own kind still takes writes
    EXPECT_EQ(held.getEndPoint(), Point(5, 6));
    held.addColorStop(0.9, blue());
    EXPECT_EQ(held.getStopCount(), 2u);
    held.setState(kDestroyed, false);
    EXPECT_FALSE(held.hasState(kDestroyed));
}

TEST(Gradient, ReadsGiveZerosForNoGradientOrAnotherKindAndCreateNothing) {
    const Gradient g;
    EXPECT_FALSE(g.isValid());
    EXPECT_EQ(g.getThis(), &g);
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::None);
    EXPECT_EQ(static_cast<int>(g.getSpread()) + static_cast<int>(g.getCoordinateMode()), 0);
    EXPECT_EQ(g.getStartPoint(), Point());
    EXPECT_EQ(g.getCenterPoint(), Point());
    EXPECT_EQ(g.getRadius() + g.getAngle() + g.getStopItemPercent(0), 0.0);
    EXPECT_EQ(g.getStopCount(), 0u);
    EXPECT_EQ(g.getStopItem(3), std::make_pair(0.0, Color()));
    EXPECT_EQ(g.getStopItemColor(0), Color());
    EXPECT_FALSE(g == g);
    EXPECT_TRUE(g != g);
    Gradient cleared;
    cleared.clearColorStops();
    cleared.setSpread(7);
    cleared.setCoordinateMode(-1);
    EXPECT_EQ(g.getGradient(), nullptr);
    EXPECT_EQ(cleared.getGradient(), nullptr);

    Gradient radial;
    radial.setCenterPoint(Point(1, 2));
    radial.setFocalPoint(Point(3, 4));
    radial.setRadius(5);
    EXPECT_EQ(radial.getStartPoint(), Point());
    EXPECT_EQ(radial.getEndPoint(), Point());
    EXPECT_EQ(radial.getAngle(), 0.0);
    EXPECT_EQ(std::make_tuple(radial.getCenterPoint(), radial.getFocalPoint(), radial.getRadius()),
              std::make_tuple(Point(1, 2), Point(3, 4), 5.0));
    Gradient conical;
    conical.setAngle(30);
    EXPECT_EQ(conical.getFocalPoint(), Point());
    EXPECT_EQ(conical.getRadius(), 0.0);
}

TEST(Gradient, ChangesOfKindKeepOnlyWhatTheKindsShare) {
    Gradient g;
    g.addColorStop(0.5, red());
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Linear);
    EXPECT_EQ(g.getStopCount(), 1u);
    g.setSpread(GradientSpreadType::Reflect);
    g.setCoordinateMode(GradientCoordinateMode::ObjectBounding);
    g.setStartPoint(Point(1, 2));
    g.setEndPoint(Point(3, 4));

    g.setRadius(2.0);
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Radial);
    EXPECT_EQ(g.getStopItem(0), std::make_pair(0.5, red()));
    EXPECT_EQ(static_cast<int>(g.getSpread()), GradientSpreadType::Reflect);
    EXPECT_EQ(static_cast<int>(g.getCoordinateMode()), GradientCoordinateMode::ObjectBounding);
    EXPECT_EQ(g.getStartPoint(), Point());

    g.setCenterPoint(Point(1, 2));
    g.setFocalPoint(Point(7, 8));
    g.setAngle(45.0);
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Conical);
    EXPECT_EQ(g.getCenterPoint(), Point(1, 2));
    g.setCenterPoint(Point(3, 3));
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Conical);

    g.setFocalPoint(Point(0.5, 0.5));
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Radial);
    EXPECT_EQ(g.getCenterPoint(), Point(3, 3));
    EXPECT_EQ(g.getRadius(), 1.0);  // a new radial gradient's radius, not the old 2.0

    g.setStartPoint(Point(9, 9));
    EXPECT_EQ(g.getEndPoint(), Point(1, 1));  // Qt's default final stop
    g.setRadius(3.0);
    EXPECT_EQ(g.getCenterPoint(), Point());  // lost on the way through linear
    g.setCenterPoint(Point(2, 2));
    EXPECT_EQ(static_cast<int>(g.getGradientType()), GradientTypes::Radial);
    EXPECT_EQ(g.getStopCount(), 1u);

    Gradient fresh;
    fresh.setCenterPoint(Point(4, 4));
    EXPECT_EQ(static_cast<int>(fresh.getGradientType()), GradientTypes::Radial);
}

TEST(Gradient, SettingAKindResetsOrKeepsAsAsked) {
    Gradient g = linearWithStop();
    g.setEndPoint(Point(5, 5));
    g.setGradientType(GradientTypes::Linear, false);
    EXPECT_EQ(g.getStopCount(), 1u);
    EXPECT_EQ(g.getEndPoint(), Point(5, 5));
    g.setGradientType(GradientTypes::Linear);
    EXPECT_EQ(g.getStopCount(), 0u);
    EXPECT_EQ(g.getEndPoint(), Point(1, 1));
    EXPECT_TRUE(g.isValid());
    for (int none : {3, 5, -1}) {
        g.setGradientType(GradientTypes::Conical);
        g.setGradientType(none, false);
        EXPECT_FALSE(g.isValid());
        EXPECT_EQ(g.getGradient(), nullptr);
    }
}

TEST(Gradient, StopsAreTheOnesThatWereSet) {
    Gradient g;
    g.setGradientType(GradientTypes::Radial);
    EXPECT_EQ(g.getStopCount(), 0u);
    EXPECT_EQ(g.getByteStreamSize(), 57);
    // The very pair that Qt answers for a gradient without stops counts when it was set.
    g.addColorStop(0.0, Color(0, 0, 0, 1));
    g.addColorStop(1.0, Color(1, 1, 1, 1));
    EXPECT_EQ(g.getStopCount(), 2u);
    g.clearColorStops();
    EXPECT_EQ(g.getStopCount(), 0u);
    g.setStopColor(0, red());
    EXPECT_EQ(g.getStopCount(), 0u);

    g.addColorStop(std::make_pair(0.25, red()));
    g.setStopPercent(0, 0.75);
    ASSERT_EQ(g.getStopCount(), 2u);
    EXPECT_EQ(g.getStopItem(0), std::make_pair(0.25, red()));
    EXPECT_EQ(g.getStopItem(1), std::make_pair(0.75, red()));
    g.setStopPercent(5, 0.5);
    g.setStopColor(1, blue());
    g.setStopColor(2, red());
    EXPECT_EQ(g.getStopCount(), 2u);
    EXPECT_EQ(g.getStopItemColor(1), blue());
    EXPECT_EQ(g.getStopItemPercent(1), 0.75);
    EXPECT_EQ(g.getStopItem(2), std::make_pair(0.0, Color()));

    // Colours keep their four bytes.
    Color translucent;
    translucent.setRGBAFromPackedValue(0x12345678u);
    g.addColorStop(0.5, translucent);
    EXPECT_EQ(g.getStopItemColor(1).getAsRgba(), 0x12345678u);
}

TEST(Gradient, CopiesAQtGradientPrivately) {
    QRadialGradient source(QPointF(1, 2), 3.0, QPointF(2, 2));
    source.setColorAt(0.5, QColor(255, 0, 0));
    source.setSpread(QGradient::RepeatSpread);
    source.setCoordinateMode(QGradient::StretchToDeviceMode);
    Gradient g(source);
    EXPECT_TRUE(g.isValid());
    EXPECT_NE(g.getGradient(), &source);
    EXPECT_TRUE(*g.getGradient() == source);
    EXPECT_EQ(g.getCenterPoint(), Point(1, 2));
    EXPECT_EQ(g.getFocalPoint(), Point(2, 2));
    EXPECT_EQ(g.getRadius(), 3.0);
    source.setColorAt(0.9, QColor(0, 0, 255));
    EXPECT_EQ(g.getStopCount(), 1u);

    EXPECT_TRUE(Gradient(QConicalGradient(QPointF(1, 1), 90)).getAngle() == 90.0);
    EXPECT_FALSE(Gradient(QGradient()).isValid());
    EXPECT_EQ(Gradient(QGradient()).getGradient(), nullptr);
}

TEST(GradientNames, MatchInAnyCaseAndMarkUnknownNames) {
    // Each name's value in the three tables (5 and 4 for unknown names).
    const std::tuple<const char *, int, int, int> cases[] = {
        {"Linear", 0, 4, 4},         {"radial", 1, 4, 4},  {"CONICAL", 2, 4, 4},
        {"none", 3, 4, 4},           {"Reflect", 5, 1, 4}, {"pAD", 5, 0, 4},
        {"repeat", 5, 2, 4},         {"Logical", 5, 4, 0}, {"stretchtodevice", 5, 4, 1},
        {"ObjectBounding", 5, 4, 2}, {"", 5, 4, 4},        {"Linear ", 5, 4, 4}};
    for (auto const &c : cases) {
        const std::string name = std::get<0>(c);
        EXPECT_EQ(std::make_tuple(static_cast<int>(GradientTypes::fromName(name)),
                                  static_cast<int>(GradientSpreadType::fromName(name)),
                                  static_cast<int>(GradientCoordinateMode::fromName(name))),
                  std::make_tuple(std::get<1>(c), std::get<2>(c), std::get<3>(c)))
            << name;
    }
    EXPECT_EQ(GradientTypes::names().size() + GradientSpreadType::names().size() +
                  GradientCoordinateMode::names().size(),
              10);
}

}  // namespace
