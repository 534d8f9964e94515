#include "ImageTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/image/Icon.h>
#include <vort/image/ImageResource.h>
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

using namespace VORT;
using namespace VORT::ImageCompositor;
using vort_test::CountedNode;
using vort_test::solid;

namespace {

std::vector<QRgb> pixels(QImage const &image, std::vector<QPoint> const &points) {
    std::vector<QRgb> result;
    for (QPoint const &point : points) {
        result.push_back(image.pixel(point));
    }
    return result;
}

Color bytes(unsigned int rgba) {
    Color color;
    color.setRGBAFromPackedValue(rgba);
    return color;
}

// Takes no argument text at all.
class RefusingModifier : public DefaultModifier {
public:
    RefusingModifier *clone(std::string const &args) const override {
        return static_cast<RefusingModifier *>(finishClone(new RefusingModifier, this, args));
    }

protected:
    bool doInitFromString(std::string &args) override { return args.empty(); }
};

// A loader that tells its prototype apart, and refuses the arguments "refuse".
class TaggedModifier : public DefaultModifier {
public:
    explicit TaggedModifier(int tag) : mTag(tag) {}
    TaggedModifier *clone(std::string const &args) const override {
        return args == "refuse" ? nullptr : new TaggedModifier(mTag);
    }
    int mTag;
};

// A manager of its own, for what the shared one can't show: its end.
class PrivateManager : public Manager {};

QImage imageOf(Holder<Node> const &node) {
    return node ? *node->getImage(true) : QImage();
}

Holder<Node> counted(std::string const &key) {
    return new CountedNode(key, new QImage(solid(1, 1, 0)));
}

}  // namespace

TEST(ImageModifier, PlacesImageBByTheAnchorsAndNotTheOffset) {
    const QImage square = solid(4, 4, 0);
    const QImage wide = solid(7, 2, 0);
    // Per code from 0 (TopCenter) to 8 (Center), then two codes out of range.
    const int points[][4] = {{1, 0, 3, 0}, {1, 3, 3, 1}, {0, 1, 0, 0}, {3, 1, 6, 0},
                             {0, 0, 0, 0}, {3, 0, 6, 0}, {0, 3, 0, 1}, {3, 3, 6, 1},
                             {1, 1, 3, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}};
    for (int code = 0; code < 11; ++code) {
        const Location location(code < 10 ? code : -1);
        int const *p = points[code];
        EXPECT_EQ(computeImgLocation(&square, location), VTPoint<int>(p[0], p[1])) << code;
        EXPECT_EQ(computeImgLocation(&wide, location), VTPoint<int>(p[2], p[3])) << code;
        EXPECT_EQ(computeImgLocation(nullptr, location), VTPoint<int>(0, 0));
    }

    const QImage big = solid(10, 10, 0);
    QtModifier modifier(Mode(Mode::Screen));
    EXPECT_EQ(modifier.getRenderLocation(&big, &square), VTPoint<int>(0, 0));
    modifier.setALoc(Location(Location::Center));
    modifier.setBLoc(Location(Location::Center));
    modifier.setOffsetXY(VTPoint<int>(50, -7));
    EXPECT_EQ(modifier.getRenderLocation(&big, &square), VTPoint<int>(3, 3));
    EXPECT_EQ(modifier.getRenderLocation(nullptr, &square), VTPoint<int>(0, 0));

    // Clones take every setting, the mode included; a class may refuse the arguments.
    std::unique_ptr<QtModifier> clone(modifier.clone("ignored"));
    EXPECT_EQ(
        std::make_tuple(clone->getBLoc(), clone->getOffsetXY(), clone->getMode()),
        std::make_tuple(Location(Location::Center), VTPoint<int>(50, -7), Mode(Mode::Screen)));
    EXPECT_NE(std::unique_ptr<Modifier>(RefusingModifier().clone("")), nullptr);
    EXPECT_EQ(RefusingModifier().clone("anything"), nullptr);
}

TEST(ImageModifier, ReadsTheColourModifiersArguments) {
    const std::tuple<const char *, unsigned int, bool> rows[] = {
        {"1,0,0,1;1", 0xFF0000FFu, true},
        {"0,0.5,1,1;0;rest", 0x0080FFFFu, false},
        // No flag text: the stream reads nothing and the prototype's flag stays.
        {"1,1,0,1", 0xFFFF00FFu, true},
        // What the stream makes of the rest: 0 for a failed component, false for "x", and no
        // colour text at all is four failed components, not the prototype's white.
        {"junk;x", 0x00000000u, false},
        {"", 0x00000000u, true},
    };
    const ColorModifier prototype(Color(1.0, 1.0, 1.0, 1.0), true);
    for (auto const &[args, rgba, toGrayscale] : rows) {
        std::unique_ptr<ColorModifier> modifier(prototype.clone(args));
        EXPECT_EQ(std::make_pair(modifier->getColor().getAsRgba(), modifier->getToGrayscale()),
                  std::make_pair(rgba, toGrayscale))
            << args;
    }
    // A clone of a clone starts from its source's flag.
    std::unique_ptr<ColorModifier> first(prototype.clone("0,0,1,1;0"));
    EXPECT_FALSE(std::unique_ptr<ColorModifier>(first->clone("1,0,0,1"))->getToGrayscale());
}

TEST(ImageModifier, TellsGrayscaleByRedAgainstGreenAndBlue) {
    const int rows[][4] = {
        {100, 104, 96, 1}, {100, 105, 100, 0}, {100, 100, 95, 0}, {100, 100, 105, 0}};
    for (auto const &row : rows) {
        QImage image = solid(3, 3, 0xFF808080u);
        image.setPixel(1, 2, qRgba(row[0], row[1], row[2], 255));
        EXPECT_EQ(isGrayscale(image), row[3] != 0) << row[0] << "," << row[1] << "," << row[2];
    }
    EXPECT_TRUE(isGrayscale(QImage()));
    EXPECT_TRUE(isGrayscale(solid(2, 2, 0x00646464u)));  // alpha plays no part
    EXPECT_FALSE(isGrayscale(solid(2, 2, 0xFF646400u, QImage::Format_RGB888)));
}

TEST(ImageModifier, TintsWithTheExactArithmetic) {
    const Color white = bytes(0xFFFFFFFFu);
    // Pixel, tint, to grayscale, gray image (else a red neighbour keeps the lift away), result.
    const std::tuple<QRgb, Color, bool, bool, QRgb> rows[] = {
        {0xFF323232u, white, true, true, 0xFFB4B4B4u},  // lifted by 130
        {0xFF828282u, white, true, true, 0xFF828282u},  // but not to 260
        {0xFF7C7C7Cu, white, true, true, 0xFFFEFEFEu},  // to 254
        // (200 * 11 + 100 * 16 + 50 * 5) / 32 = 126, then times 255 and 128 of 255.
        {0xFFC86432u, bytes(0xFF8000FFu), true, false, 0xFF7E3F00u},
        // 127 and 128 times 1/255 round to 0 and 1.
        {0xFF7F7F7Fu, bytes(0x01010100u), true, false, 0xFF000000u},
        {0xFF808080u, bytes(0x01010100u), true, false, 0xFF010101u},
        {0xFFFF80FFu, bytes(0x80FF00FFu), false, false, 0xFF808000u},
        {0xFFC86432u, white, false, false, 0xFFC86432u},
        // Alpha stays; premultiplied channels are taken as they stand.
        {0x80646464u, white, true, true, 0x80E6E6E6u},
    };
    for (auto const &[pixel, color, toGrayscale, grayImage, result] : rows) {
        QImage image = solid(2, 1, pixel);
        image.setPixel(1, 0, grayImage ? pixel : 0xFFFF0000u);
        convertImageToGrayscaleAndTint(image, color, toGrayscale);
        EXPECT_EQ(image.pixel(0, 0), result) << std::hex << pixel;
    }

    // A tint that changes nothing leaves a shared image shared.
    const QImage original = solid(8, 8, 0xFFC86432u);
    QImage shared = original;
    convertImageToGrayscaleAndTint(shared, white, false);
    EXPECT_EQ(shared.cacheKey(), original.cacheKey());
    // RGB32 keeps its alpha byte at 0xFF; 8-bit formats become ARGB32 first.
    QImage rgb = solid(1, 1, 0xFFC86432u, QImage::Format_RGB32);
    convertImageToGrayscaleAndTint(rgb, Color(1.0, 0.0, 0.0, 1.0), true);
    EXPECT_EQ(reinterpret_cast<QRgb const *>(rgb.constBits())[0], 0xFF7E0000u);
    QImage gray8(1, 1, QImage::Format_Grayscale8);
    gray8.fill(50);
    convertImageToGrayscaleAndTint(gray8, white, true);
    EXPECT_EQ(gray8.pixel(0, 0), 0xFFB4B4B4u);
}

TEST(ImageModifier, ComposesStoredOperandsOnALargeEnoughCanvas) {
    Manager &manager = Manager::instance();
    const std::string red = "(modifier-test-red;;)";
    const std::string blue = "(modifier-test-blue;;)";
    ASSERT_TRUE(manager.storeImage(red, new Node(red, new QImage(solid(4, 3, 0xFFFF0000u)))) &&
                manager.storeImage(blue, new Node(blue, new QImage(solid(2, 5, 0x800000FFu)))));

    // A at the origin, then B over it; `pixel` gives premultiplied channels as they stand.
    QtModifier over(Mode(Mode::SourceOver));
    QImage out;
    ASSERT_TRUE(over.render(out, &red, &blue));
    ASSERT_TRUE(out.format() == QImage::Format_ARGB32_Premultiplied && out.size() == QSize(4, 5));
    EXPECT_EQ(pixels(out, {{0, 0}, {3, 0}, {0, 4}, {3, 4}}),
              (std::vector<QRgb>{0xFF7F0080u, 0xFFFF0000u, 0x80000080u, 0u}));
    // B anchored by its bottom-right on A's: what falls outside is clipped.
    over.setALoc(Location(Location::BottomRight));
    over.setBLoc(Location(Location::BottomRight));
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(pixels(out, {{0, 0}, {3, 0}}), (std::vector<QRgb>{0xFFFF0000u, 0xFF7F0080u}));

    // A mode out of range draws as SourceOver and is SourceOver from then on.
    QtModifier invalid(Mode(24));
    ASSERT_TRUE(invalid.render(out, &red, nullptr));
    EXPECT_TRUE(out.size() == QSize(4, 3) && invalid.getMode() == Mode(Mode::SourceOver));
    QtModifier clear(Mode(Mode::Clear));
    ASSERT_TRUE(clear.render(out, &red, &blue));
    EXPECT_EQ(out.pixel(0, 0), 0u);

    // A missing operand fails; an empty or absent B does not.
    const std::string missing = "(modifier-test-missing;;)", empty;
    EXPECT_FALSE(over.render(out, &red, &missing) || over.render(out, &missing, &blue) ||
                 over.render(out, nullptr, nullptr));
    EXPECT_TRUE(over.render(out, &red, &empty) && over.render(out, nullptr, &blue));
    EXPECT_EQ(out.size(), QSize(2, 5));
}

TEST(ImageManager, FindsModifiersInAnyCaseAndKeepsTheFirst) {
    Manager &manager = Manager::instance();
    manager.registerModifier("Tagged-Test:", boost::make_shared<TaggedModifier>(1));
    manager.registerModifier("TAGGED-TEST:", boost::make_shared<TaggedModifier>(2));
    const auto tagged = [&](const char *name, const char *args) {
        auto modifier =
            boost::dynamic_pointer_cast<TaggedModifier>(manager.buildModifier(name, args));
        return modifier ? modifier->mTag : 0;
    };
    EXPECT_TRUE(tagged("tAgGeD-tEsT:", "") == 1 && tagged("tagged-test:", "refuse") == 0);
    EXPECT_FALSE(manager.buildModifier("", "") || manager.buildModifier("comp_mode:Nonsense", ""));

    // The built-in table: the loader, every mode's name up to "Invalid", and the tint.
    EXPECT_TRUE(
        boost::dynamic_pointer_cast<DefaultModifier>(manager.buildModifier("LOADIMG:", "")));
    const std::pair<const char *, int> modes[] = {{"comp_mode:SourceOver", Mode::SourceOver},
                                                  {"COMP_MODE:SCREEN", Mode::Screen},
                                                  {"comp_mode:exclusion", Mode::Exclusion},
                                                  {"comp_mode:Invalid", 24},
                                                  {"color_modifier:", Mode::SourceOver}};
    for (auto const &[name, mode] : modes) {
        auto composer = boost::dynamic_pointer_cast<QtModifier>(manager.buildModifier(name, ""));
        ASSERT_TRUE(composer) << name;
        EXPECT_EQ(composer->getMode(), Mode(mode)) << name;
    }
    // The tint's prototype has grayscale on: arguments without a flag keep it.
    auto tint = boost::dynamic_pointer_cast<ColorModifier>(
        manager.buildModifier("Color_Modifier:", "0,1,0,1"));
    EXPECT_TRUE(tint->getColor() == Color(0.0, 1.0, 0.0, 1.0) && tint->getToGrayscale());
}

TEST(ImageManager, StoresOnlyNewKeysAndNeverReplaces) {
    Manager &manager = Manager::instance();
    const Holder<Node> first = counted("(store-test;;)");
    EXPECT_FALSE(manager.storeImage("", first) || manager.storeImage("(s;;)", Holder<Node>()));
    EXPECT_TRUE(manager.storeImage("(store-test;;)", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", counted("other")));
    EXPECT_TRUE(manager.getImage("(store-test;;)", true) == first && !manager.getImage("", true));
}

TEST(ImageManager, BuildsKeysRecursivelyAndCachesEveryOperand) {
    vort_test::ImageFolder folder;
    const std::string a = folder.write("a.png", solid(4, 4, 0xFF336699u));
    const std::string b = folder.write("b.png", solid(2, 2, 0xFFFF0000u));
    Manager &manager = Manager::instance();

    const std::string key = "(" + a + ";" + b + ";comp_mode:Screen;)";
    const Holder<Node> node = manager.getImage(key, true);
    ASSERT_TRUE(node && node->getKey() == key && manager.getImage(key, false) == node);
    // Each file under its normalised key, and nothing under the bare path.
    EXPECT_TRUE(manager.getImage(buildKey(a), false) && manager.getImage(buildKey(b), false));
    EXPECT_FALSE(manager.getImage(a, true));
    // Screen with full red saturates red and keeps the rest; B covers only the top-left.
    EXPECT_EQ(pixels(imageOf(node), {{1, 1}, {2, 2}}),
              (std::vector<QRgb>{0xFFFF6699u, 0xFF336699u}));

    // A name that no ";" closes is dropped: the default composition draws B over A.
    EXPECT_EQ(imageOf(manager.getImage("(" + a + ";" + b + ";Screen)", true)).pixel(1, 1),
              0xFFFF0000u);

    // A tint of a tint, by the builders' own key: red keeps 0x33, whose luminance
    // (0x33 * 11 / 32 = 0x11) is then tinted blue.
    const std::string red = Builders::buildKeyColor(a, Color(1.0, 0.0, 0.0, 1.0), false);
    EXPECT_EQ(red, "(" + a + ";;color_modifier:;1,0,0,1;0;)");
    EXPECT_EQ(Builders::buildKeyColor(red, Color(), true), red);
    EXPECT_EQ(imageOf(manager.getImage(red, true)).pixel(3, 3), 0xFF330000u);
    const Holder<Node> twice = manager.getImage("(" + red + ";;color_modifier:;0,0,1,1;1;)", true);
    EXPECT_EQ(imageOf(twice).pixel(0, 0), 0xFF000011u);
}

TEST(ImageManager, CachesNothingForAKeyThatFailsAndTriesAgain) {
    vort_test::ImageFolder folder;
    const std::string later = folder.path("later.png");
    Manager &manager = Manager::instance();
    const std::string key = "(" + later + ";;color_modifier:;1,1,1,1;0;)";
    for (std::string const &failing :
         {key, buildKey(later), "(" + later + ";;no_such_modifier:;)", "(;" + later + ";)"}) {
        EXPECT_FALSE(manager.getImage(failing, true)) << failing;
        EXPECT_FALSE(manager.getImage(failing, false)) << failing;
    }
    folder.write("later.png", solid(1, 1, 0xFF00FF00u));
    EXPECT_TRUE(manager.getImage(key, true));

    // Every level of a key is a level of building; 64 are allowed, one more is not. The two
    // chains differ in their flags, so that neither finds the other's levels cached.
    ASSERT_TRUE(manager.storeImage("(depth-base;;)", counted("(depth-base;;)")));
    std::string deepest = "(depth-base;;)", tooDeep = deepest;
    for (int level = 1; level <= 64; ++level) {
        deepest = "(" + deepest + ";;color_modifier:;1,1,1,1;0;)";
        tooDeep = "(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)";
    }
    EXPECT_TRUE(manager.getImage(deepest, true));
    EXPECT_FALSE(manager.getImage("(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)", true));
}

class ImageManagerCollection : public vort_test::PlatformHooksTest {};

TEST_F(ImageManagerCollection, DropsWhatOnlyTheCacheHoldsOnceTheIntervalHasPassed) {
    Manager &manager = Manager::instance();
    platform.setClock(1000.0);
    manager.forceGarbageCollection();  // due again after 1005
    const int before = CountedNode::destroyed.load();
    Holder<Node> held = counted("(gc-held;;)");
    ASSERT_TRUE(manager.storeImage("(gc-x;;)", counted("(gc-x;;)")) &&
                manager.storeImage("(gc-held;;)", held));

    platform.setClock(1005.0);
    manager.update();
    manager.dereferenceNode("(gc-x;;)");
    EXPECT_TRUE(manager.getImage("(gc-x;;)", false));
    platform.setClock(1005.5);
    manager.update();  // due again after 1010.5
    EXPECT_TRUE(!manager.getImage("(gc-x;;)", false) && manager.getImage("(gc-held;;)", false));
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);

    held = Holder<Node>();
    platform.setClock(1010.0);
    manager.update();
    EXPECT_TRUE(manager.getImage("(gc-held;;)", false));
    platform.setClock(1011.0);
    manager.dereferenceNode("unrelated");
    EXPECT_TRUE(!manager.getImage("(gc-held;;)", false) &&
                CountedNode::destroyed.load() == before + 2);
}

TEST_F(ImageManagerCollection, RebuildsACollectedKeyAsANewPicture) {
    Manager &manager = Manager::instance();
    const Holder<Node> base = counted("(rebuild-base;;)");
    ASSERT_TRUE(manager.storeImage("(rebuild-base;;)", base));
    const std::string key = "((rebuild-base;;);;color_modifier:;1,1,1,1;1;)";
    Holder<Node> built = manager.getImage(key, true);
    const qint64 firstPicture = built->getImage(false)->cacheKey();
    manager.forceGarbageCollection();
    manager.forceGarbageCollection();
    EXPECT_EQ(manager.getImage(key, false), built);
    built = Holder<Node>();
    manager.forceGarbageCollection();
    EXPECT_TRUE(!manager.getImage(key, false) && manager.getImage("(rebuild-base;;)", false));
    EXPECT_NE(manager.getImage(key, true)->getImage(false)->cacheKey(), firstPicture);
}

TEST(ImageManager, LeavesItsCachedNodesAliveWhenItEnds) {
    const int before = CountedNode::destroyed.load();
    auto *manager = new PrivateManager;
    Holder<Node> shared = counted("(shared;;)");
    ASSERT_TRUE(manager->storeImage("(kept;;)", counted("(kept;;)")) &&
                manager->storeImage("(shared;;)", shared));
    delete manager;
    // The ended cache still counts as a holder of what it held.
    shared = Holder<Node>();
    EXPECT_EQ(CountedNode::destroyed.load(), before);
}

TEST(Icon, KeepsOneNameForEachModeAndStateAndComparesByNames) {
    Icon icon;
    icon.addFile("first.png", Icon::Normal, Icon::Off);
    icon.addFile("second.png", Icon::Normal, Icon::Off);
    icon.addImageCompositorKey("(k;;)", Icon::Disabled, Icon::On);
    ASSERT_TRUE(icon.isValid() && !Icon().isValid() && icon.getImageMap().size() == 2u);
    EXPECT_EQ(icon.getImageMap().at({Icon::Normal, Icon::Off}).getName(), "second.png");

    Icon same("second.png", Icon::Normal, Icon::Off);
    EXPECT_TRUE(same != icon);
    same.addImageCompositorKey("(k;;)", Icon::Disabled, Icon::On);
    EXPECT_TRUE(same == icon);
    same.addFile("(other;;)", Icon::Disabled, Icon::On);
    EXPECT_FALSE(same == icon);
}

TEST(Icon, BuildsEachPictureOnceAndHoldsItAgainstCollection) {
    vort_test::ImageFolder folder;
    const std::string file = folder.path("icon.png");
    Manager &manager = Manager::instance();
    {
        IconImageEntry entry(file);
        // A file that does not load yet: nothing is held, and every request tries again.
        EXPECT_FALSE(entry.getImageNode(false) || entry.getImageNode(true));
        folder.write("icon.png", solid(3, 3, 0xFF00AA00u));
        Node const *node = entry.getImageNode(true).get();
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(manager.getImage(buildKey(file), false).get(), node);
        entry.setName(file);
        EXPECT_EQ(entry.getImageNode(false).get(), node);
        const IconImageEntry copy = entry;
        entry.setName(folder.path("other.png"));
        EXPECT_FALSE(entry.getImageNode(false));
        manager.forceGarbageCollection();
        EXPECT_TRUE(manager.getImage(buildKey(file), false));  // the copy holds it
    }
    manager.forceGarbageCollection();
    EXPECT_FALSE(manager.getImage(buildKey(file), false));
    EXPECT_FALSE(IconImageEntry().getImageNode(true));
}

class ImageResourceCalls : public vort_test::PlatformHooksTest {
protected:
    // Arms a collection, due at once, and a node that it would drop: whether the node is still
    // there afterwards tells whether the manager was asked to dereference.
    void arm() {
        Manager &manager = Manager::instance();
        platform.setClock(2000.0);
        manager.forceGarbageCollection();
        platform.setClock(2010.0);
        manager.storeImage("(probe;;)", new Node("(probe;;)", new QImage(solid(1, 1, 0))));
    }
    bool dereferenced() { return !Manager::instance().getImage("(probe;;)", false); }
};

TEST_F(ImageResourceCalls, CallTheManagerOnlyWhenTheKeyChanges) {
    arm();
    ImageResource resource("(a;;)");  // dereferences the empty key it had
    EXPECT_TRUE(dereferenced());
    arm();
    resource.fromString("(a;;)");
    EXPECT_FALSE(dereferenced());
    const ImageResource same(resource);  // starts empty and takes the key as a new one
    EXPECT_EQ(same.toStringCopy(), "(a;;)");
    EXPECT_TRUE(dereferenced());
    arm();
    resource = same;
    EXPECT_FALSE(dereferenced());
    resource.fromString("(b;;)");
    EXPECT_TRUE(dereferenced());
    EXPECT_EQ(resource.toStringRef(), "(b;;)");

    arm();
    { const ImageResource none(""); }
    EXPECT_FALSE(dereferenced());
    {
        const ImageResource some = same;
        arm();
    }
    EXPECT_TRUE(dereferenced());
}
