#include <vort/types/Gradient.h>

#include <QtGui/QConicalGradient>
#include <QtGui/QLinearGradient>
#include <QtGui/QRadialGradient>

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <tuple>
#include <utility>

namespace {

using namespace VORT;
using Point = VORT::VTPoint<double>;

const unsigned char kOwn = Gradient::StateOwnData;
const unsigned char kFrom = Gradient::StateCopiedFrom;
const unsigned char kTo = Gradient::StateCopiedTo;
const unsigned char kDestroyed = Gradient::StateDestroyed;
const Color kRed(1.0, 0.0, 0.0, 1.0);
const Color kBlue(0.0, 0.0, 1.0, 1.0);

unsigned char stateOf(Gradient const &g) {
    unsigned char bits = 0;
    for (unsigned char bit : {1, 2, 4, 8, 16, 32, 64, 128}) {
        bits = static_cast<unsigned char>(bits | (g.hasState(bit) ? bit : 0));
    }
    return bits;
}

// Kind, spread and coordinate mode.
std::tuple<int, int, int> modesOf(Gradient const &g) {
    return std::make_tuple(static_cast<int>(g.getGradientType()), static_cast<int>(g.getSpread()),
                           static_cast<int>(g.getCoordinateMode()));
}

int kindOf(Gradient const &g) {
    return std::get<0>(modesOf(g));
}

// Ends `g` and makes a new one in its place, so that a case can observe a constructor.
template <class... Arguments>
void rebuild(Gradient &g, Arguments &&...arguments) {
    g.~Gradient();
    new (&g) Gradient(std::forward<Arguments>(arguments)...);
}

Gradient linearWithStop() {
    Gradient g;
    g.addColorStop(0.25, kRed);
    return g;
}

TEST(GradientState, FollowsEveryTransitionOfTheTable) {
    enum Copy { NoCopy, AFromB, BFromA };
    struct Case {
        const char *what;
        bool aHolds, bHolds;  // each given a stop first
        Copy copy;            // then copied
        unsigned char marks;  // then marked on `a`
        void (*act)(Gradient &a, Gradient &b);
        unsigned char a, b;  // the states afterwards
        bool shared;         // a and b hold the same Qt gradient
    };
    const auto nothing = [](Gradient &, Gradient &) {};
    const Case cases[] = {
        {"default construction", false, false, NoCopy, 0, nothing, 0, 0, false},
        {"on-demand creation", true, false, NoCopy, 0, nothing, kOwn, 0, false},
        {"from a Qt gradient", false, false, NoCopy, 0,
         [](Gradient &a, Gradient &) { rebuild(a, QLinearGradient(0, 0, 1, 1)); }, 0, 0, false},
        {"copy of a holding source", false, true, NoCopy, 0,
         [](Gradient &a, Gradient &b) { rebuild(a, b); }, kFrom, kOwn | kTo, true},
        {"copy of an empty source", false, false, NoCopy, 0,
         [](Gradient &a, Gradient &b) { rebuild(a, b); }, 0, kTo, false},
        {"assignment keeps the destroyed mark", false, true, NoCopy, kDestroyed,
         [](Gradient &a, Gradient &b) { a = b; }, kFrom | kDestroyed, kOwn | kTo, true},
        {"copyFrom", false, true, NoCopy, 0, [](Gradient &a, Gradient &b) { a.copyFrom(&b); },
         kFrom, kOwn | kTo, true},
        {"copyFrom null", true, false, NoCopy, 0,
         [](Gradient &a, Gradient &) { a.copyFrom(nullptr); }, kOwn, 0, false},
        {"copyFrom itself", true, false, NoCopy, 0, [](Gradient &a, Gradient &) { a.copyFrom(&a); },
         kOwn, 0, false},
        {"a write after the copy detaches the copy", false, true, AFromB, 0,
         [](Gradient &a, Gradient &) { a.setSpread(GradientSpreadType::Reflect); }, kOwn,
         kOwn | kTo, false},
        {"and the source too, when it writes", true, false, BFromA, 0,
         [](Gradient &a, Gradient &) { a.setSpread(GradientSpreadType::Reflect); }, kOwn, kFrom,
         false},
        {"a change of kind", true, false, NoCopy, kTo | kDestroyed,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::Radial, false); },
         kOwn | kDestroyed, 0, false},
        {"the same kind without reset changes nothing", true, false, BFromA, 0,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::Linear, false); },
         kOwn | kTo, kFrom, true},
        {"no kind", true, false, NoCopy, kDestroyed,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::None); }, kDestroyed, 0,
         false},
        {"clearAll", false, true, AFromB, kDestroyed, [](Gradient &a, Gradient &) { a.clearAll(); },
         kDestroyed, kOwn | kTo, false},
        {"an empty byte stream", true, false, NoCopy, kDestroyed | kTo,
         [](Gradient &a, Gradient &) {
             a.fromByteStream(reinterpret_cast<const unsigned char *>(""));
         },
         kDestroyed, 0, false},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        Gradient a;
        Gradient b;
        if (c.aHolds) {
            a.addColorStop(0.5, kRed);
        }
        if (c.bHolds) {
            b.addColorStop(0.5, kRed);
        }
        if (c.copy != NoCopy) {
            (c.copy == AFromB ? a : b) = (c.copy == AFromB ? b : a);
        }
        if (c.marks != 0) {
            a.setState(c.marks, true);
        }
        c.act(a, b);
        EXPECT_EQ(std::make_tuple(stateOf(a), stateOf(b)), std::make_tuple(c.a, c.b));
        EXPECT_EQ(a.getGradient() != nullptr && a.getGradient() == b.getGradient(), c.shared);
    }
}

TEST(GradientState, CopyOnWriteKeepsEachSideItsOwnValueAndTheDestroyedMarkStopsCreation) {
    Gradient a = linearWithStop();
    QGradient const *const original = a.getGradient();
    {
        Gradient b(a);
        EXPECT_TRUE(a == b);
        b.setSpread(GradientSpreadType::Repeat);
        EXPECT_EQ(
            std::make_tuple(modesOf(a), modesOf(b), a != b, a.getGradient()),
            std::make_tuple(std::make_tuple(0, 0, 0), std::make_tuple(0, 2, 0), true, original));
    }
    // The copy is gone, but the mark stays: the next write copies anyway.
    a.addColorStop(0.75, kBlue);
    EXPECT_NE(a.getGradient(), original);
    EXPECT_EQ(a.getStopCount(), 2u);
    const QGradient *const own = a.getGradient();
    a.addColorStop(0.8, kBlue);
    EXPECT_EQ(a.getGradient(), own);

    Gradient empty;
    EXPECT_FALSE(empty.hasState(kDestroyed));
    empty.setState(kDestroyed, true);
    empty.addColorStop(0.5, kRed);
    empty.setRadius(2.0);
    empty.setCenterPoint(Point(1, 1));
    empty.setStopColor(0, kRed);
    EXPECT_EQ(empty.getGradient(), nullptr);
    Gradient held = linearWithStop();
    held.setState(kDestroyed, true);
    held.setRadius(2.0);            // no change of kind
    held.setEndPoint(Point(5, 6));  // but its own kind still takes writes
    held.addColorStop(0.9, kBlue);
    EXPECT_EQ(std::make_tuple(kindOf(held), held.getEndPoint(), held.getStopCount()),
              std::make_tuple(0, Point(5, 6), 2ul));
    held.setState(kDestroyed, false);
    EXPECT_FALSE(held.hasState(kDestroyed));
}

TEST(Gradient, ReadsGiveZerosForNoGradientOrAnotherKindAndCreateNothing) {
    const Gradient g;
    EXPECT_FALSE(g.isValid());
    EXPECT_EQ(g.getThis(), &g);
    EXPECT_EQ(modesOf(g), std::make_tuple(3, 0, 0));
    EXPECT_EQ(std::make_tuple(g.getStartPoint(), g.getCenterPoint(), g.getStopItemColor(0)),
              std::make_tuple(Point(), Point(), Color()));
    EXPECT_EQ(g.getRadius() + g.getAngle() + g.getStopItemPercent(0), 0.0);
    EXPECT_EQ(g.getStopCount(), 0u);
    EXPECT_EQ(g.getStopItem(3), std::make_pair(0.0, Color()));
    EXPECT_TRUE(!(g == g) && g != g);
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
    EXPECT_EQ(std::make_tuple(radial.getStartPoint(), radial.getEndPoint(), radial.getAngle(),
                              radial.getCenterPoint(), radial.getFocalPoint(), radial.getRadius()),
              std::make_tuple(Point(), Point(), 0.0, Point(1, 2), Point(3, 4), 5.0));
    Gradient conical;
    conical.setAngle(30);
    EXPECT_EQ(std::make_tuple(conical.getFocalPoint(), conical.getRadius()),
              std::make_tuple(Point(), 0.0));
}

TEST(Gradient, ChangesOfKindKeepOnlyWhatTheKindsShare) {
    Gradient g;
    g.addColorStop(0.5, kRed);
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getStopCount()), std::make_tuple(0, 1ul));
    g.setSpread(GradientSpreadType::Reflect);
    g.setCoordinateMode(GradientCoordinateMode::ObjectBounding);
    g.setStartPoint(Point(1, 2));
    g.setEndPoint(Point(3, 4));

    g.setRadius(2.0);
    EXPECT_EQ(std::make_tuple(modesOf(g), g.getStopItem(0), g.getStartPoint()),
              std::make_tuple(std::make_tuple(1, 1, 2), std::make_pair(0.5, kRed), Point()));

    g.setCenterPoint(Point(1, 2));
    g.setFocalPoint(Point(7, 8));
    g.setAngle(45.0);
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getCenterPoint()), std::make_tuple(2, Point(1, 2)));
    g.setCenterPoint(Point(3, 3));
    EXPECT_EQ(kindOf(g), GradientTypes::Conical);

    // A new radial gradient's radius, not the old 2.0.
    g.setFocalPoint(Point(0.5, 0.5));
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getCenterPoint(), g.getRadius()),
              std::make_tuple(1, Point(3, 3), 1.0));

    g.setStartPoint(Point(9, 9));
    EXPECT_EQ(g.getEndPoint(), Point(1, 1));  // Qt's default final stop
    g.setRadius(3.0);
    EXPECT_EQ(g.getCenterPoint(), Point());  // lost on the way through linear
    g.setCenterPoint(Point(2, 2));
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getStopCount()), std::make_tuple(1, 1ul));

    Gradient fresh;
    fresh.setCenterPoint(Point(4, 4));
    EXPECT_EQ(kindOf(fresh), GradientTypes::Radial);

    // Setting a kind resets it, or keeps what the gradient holds, as asked.
    g = linearWithStop();
    g.setEndPoint(Point(5, 5));
    g.setGradientType(GradientTypes::Linear, false);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getEndPoint()),
              std::make_tuple(1ul, Point(5, 5)));
    g.setGradientType(GradientTypes::Linear);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getEndPoint(), g.isValid()),
              std::make_tuple(0ul, Point(1, 1), true));
    for (int none : {3, 5, -1}) {
        g.setGradientType(GradientTypes::Conical);
        g.setGradientType(none, false);
        EXPECT_TRUE(!g.isValid() && g.getGradient() == nullptr) << none;
    }
}

TEST(Gradient, StopsAreTheOnesThatWereSet) {
    Gradient g;
    g.setGradientType(GradientTypes::Radial);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getByteStreamSize()), std::make_tuple(0ul, 57));
    // The very pair that Qt answers for a gradient without stops counts when it was set.
    g.addColorStop(0.0, Color(0, 0, 0, 1));
    g.addColorStop(1.0, Color(1, 1, 1, 1));
    EXPECT_EQ(g.getStopCount(), 2u);
    g.clearColorStops();
    EXPECT_EQ(g.getStopCount(), 0u);
    g.setStopColor(0, kRed);
    EXPECT_EQ(g.getStopCount(), 0u);

    g.addColorStop(std::make_pair(0.25, kRed));
    g.setStopPercent(0, 0.75);
    ASSERT_EQ(g.getStopCount(), 2u);
    EXPECT_EQ(std::make_tuple(g.getStopItem(0), g.getStopItem(1)),
              std::make_tuple(std::make_pair(0.25, kRed), std::make_pair(0.75, kRed)));
    g.setStopPercent(2, 0.5);
    g.setStopColor(1, kBlue);
    g.setStopColor(2, kRed);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getStopItemColor(1), g.getStopItemPercent(1),
                              g.getStopItem(2)),
              std::make_tuple(2ul, kBlue, 0.75, std::make_pair(0.0, Color())));

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
    EXPECT_TRUE(g.isValid() && g.getGradient() != &source && *g.getGradient() == source);
    EXPECT_EQ(std::make_tuple(g.getCenterPoint(), g.getFocalPoint(), g.getRadius()),
              std::make_tuple(Point(1, 2), Point(2, 2), 3.0));
    source.setColorAt(0.9, QColor(0, 0, 255));
    EXPECT_EQ(g.getStopCount(), 1u);

    EXPECT_EQ(Gradient(QConicalGradient(QPointF(1, 1), 90)).getAngle(), 90.0);
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
