#include "ImageTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/image/Manager.h>

#include <QtGui/QImage>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <string>

using VORT::Color;
using VORT::Holder;
using VORT::ImageCompositor::buildKey;
using VORT::ImageCompositor::ColorModifier;
using VORT::ImageCompositor::DefaultModifier;
using VORT::ImageCompositor::Manager;
using VORT::ImageCompositor::Mode;
using VORT::ImageCompositor::Modifier;
using VORT::ImageCompositor::Node;
using VORT::ImageCompositor::QtModifier;
using VORT::ImageCompositor::Builders::buildKeyColor;
using vort_test::CountedNode;
using vort_test::ImageFolder;
using vort_test::solid;

namespace {

// A loader that tells its prototype apart.
class TaggedModifier : public DefaultModifier {
public:
    explicit TaggedModifier(int tag) : mTag(tag) {}
    TaggedModifier *clone(std::string const &args) const override {
        if (args == "refuse") {
            return nullptr;
        }
        return new TaggedModifier(mTag);
    }
    int tag() const { return mTag; }

private:
    int mTag;
};

int tagOf(boost::shared_ptr<Modifier> const &modifier) {
    auto const *tagged = dynamic_cast<TaggedModifier const *>(modifier.get());
    return tagged != nullptr ? tagged->tag() : -1;
}

// A manager of its own, for what the shared one can't show: its end.
class PrivateManager : public Manager {};

QImage imageOf(Holder<Node> const &node) {
    return node && node->getImage(true) != nullptr ? *node->getImage(true) : QImage();
}

}  // namespace

TEST(ImageManager, FindsModifiersInAnyCaseAndKeepsTheFirst) {
    Manager &manager = Manager::instance();
    manager.registerModifier("Tagged-Test:", boost::make_shared<TaggedModifier>(1));
    manager.registerModifier("TAGGED-TEST:", boost::make_shared<TaggedModifier>(2));
    EXPECT_EQ(tagOf(manager.buildModifier("tagged-test:", "")), 1);
    EXPECT_EQ(tagOf(manager.buildModifier("tAgGeD-tEsT:", "")), 1);
    EXPECT_FALSE(manager.buildModifier("tagged-test:", "refuse"));
    EXPECT_FALSE(manager.buildModifier("", ""));
    EXPECT_FALSE(manager.buildModifier("no-such-modifier:", ""));

    // The built-in table: the loader, every mode's name up to "Invalid", and the tint.
    struct Row {
        const char *name;
        int mode;  // -1: not a composition
    };
    const Row rows[] = {
        {"loadImg:", -1},
        {"LOADIMG:", -1},
        {"comp_mode:SourceOver", Mode::SourceOver},
        {"COMP_MODE:SCREEN", Mode::Screen},
        {"comp_mode:exclusion", Mode::Exclusion},
        {"comp_mode:Invalid", 24},
        {"color_modifier:", Mode::SourceOver},
    };
    for (Row const &row : rows) {
        const boost::shared_ptr<Modifier> modifier = manager.buildModifier(row.name, "");
        ASSERT_TRUE(modifier) << row.name;
        auto const *composer = dynamic_cast<QtModifier const *>(modifier.get());
        if (row.mode < 0) {
            EXPECT_NE(dynamic_cast<DefaultModifier const *>(modifier.get()), nullptr);
        } else {
            ASSERT_NE(composer, nullptr) << row.name;
            EXPECT_EQ(composer->getMode(), Mode(row.mode)) << row.name;
        }
    }
    // The tint's prototype has grayscale on: arguments without a flag keep it.
    auto const tint = boost::dynamic_pointer_cast<ColorModifier>(
        manager.buildModifier("COLOR_MODIFIER:", "0,1,0,1"));
    ASSERT_TRUE(tint);
    EXPECT_EQ(tint->getColor(), Color(0.0, 1.0, 0.0, 1.0));
    EXPECT_TRUE(tint->getToGrayscale());
    EXPECT_FALSE(manager.buildModifier("comp_mode:Nonsense", ""));
}

TEST(ImageManager, StoresOnlyNewKeysAndNeverReplaces) {
    Manager &manager = Manager::instance();
    const Holder<Node> first(new Node("(store-test;;)", new QImage(solid(1, 1, 0xFF000000))));
    const Holder<Node> second(new Node("other", new QImage(solid(1, 1, 0xFFFFFFFF))));
    EXPECT_FALSE(manager.storeImage("", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", Holder<Node>()));
    EXPECT_TRUE(manager.storeImage("(store-test;;)", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", second));
    EXPECT_EQ(manager.getImage("(store-test;;)", false), first);
    EXPECT_EQ(manager.getImage("(store-test;;)", true), first);
    EXPECT_EQ(second->getKey(), "other");
    EXPECT_FALSE(manager.getImage("", true));
}

TEST(ImageManager, BuildsKeysRecursivelyAndCachesEveryOperand) {
    ImageFolder folder;
    ASSERT_TRUE(folder.isValid());
    const std::string a = folder.write("a.png", solid(4, 4, 0xFF336699));
    const std::string b = folder.write("b.png", solid(2, 2, 0xFFFF0000));
    Manager &manager = Manager::instance();

    const std::string key = "(" + a + ";" + b + ";comp_mode:Screen;)";
    EXPECT_FALSE(manager.getImage(key, false));
    const Holder<Node> node = manager.getImage(key, true);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->getKey(), key);
    EXPECT_EQ(manager.getImage(key, false), node);
    // Each file under its normalised key, and nothing under the bare path.
    EXPECT_TRUE(manager.getImage(buildKey(a), false));
    EXPECT_TRUE(manager.getImage(buildKey(b), false));
    EXPECT_FALSE(manager.getImage(a, false));
    EXPECT_FALSE(manager.getImage(a, true));
    const QImage screen = imageOf(node);
    ASSERT_EQ(screen.size(), QSize(4, 4));
    // Screen with full red saturates red and keeps the rest; B covers only the top-left.
    EXPECT_EQ(screen.pixel(1, 1), 0xFFFF6699u);
    EXPECT_EQ(screen.pixel(2, 2), 0xFF336699u);

    // A name that no ";" closes is dropped: the default composition draws B over A.
    const Holder<Node> dropped = manager.getImage("(" + a + ";" + b + ";Screen)", true);
    const Holder<Node> over = manager.getImage("(" + a + ";" + b + ";comp_mode:SourceOver;)", true);
    ASSERT_TRUE(dropped);
    ASSERT_TRUE(over);
    EXPECT_NE(dropped, over);
    EXPECT_EQ(imageOf(dropped), imageOf(over));
    EXPECT_EQ(imageOf(over).pixel(0, 0), 0xFFFF0000u);

    // A tint of a nested composition, by the builders' own key.
    const std::string tinted = buildKeyColor(a, Color(1.0, 0.0, 0.0, 1.0), false);
    EXPECT_EQ(tinted, "(" + a + ";;color_modifier:;1,0,0,1;0;)");
    const Holder<Node> red = manager.getImage(tinted, true);
    ASSERT_TRUE(red);
    EXPECT_EQ(imageOf(red).pixel(3, 3), 0xFF330000u);
    const std::string nested = "(" + tinted + ";;color_modifier:;0,0,1,1;1;)";
    const Holder<Node> twice = manager.getImage(nested, true);
    ASSERT_TRUE(twice);
    // The red tint left a colourful image, whose luminance (0x33 * 11 / 32) is tinted blue.
    EXPECT_EQ(imageOf(twice).pixel(0, 0), 0xFF000011u);
}

TEST(ImageManager, CachesNothingForAKeyThatFailsAndTriesAgain) {
    ImageFolder folder;
    const std::string later = folder.path("later.png");
    Manager &manager = Manager::instance();
    const std::string key = "(" + later + ";;color_modifier:;1,1,1,1;0;)";
    const std::string keys[] = {
        key,         buildKey(later), "(" + later + ";;no_such_modifier:;)", "(;" + later + ";)",
        "not a key",
    };
    for (std::string const &failing : keys) {
        EXPECT_FALSE(manager.getImage(failing, true)) << failing;
        EXPECT_FALSE(manager.getImage(failing, false)) << failing;
    }
    folder.write("later.png", solid(1, 1, 0xFF00FF00));
    EXPECT_TRUE(manager.getImage(key, true));
    EXPECT_FALSE(manager.getImage("(" + later + ";;no_such_modifier:;)", true));
}

TEST(ImageManager, RefusesKeysNestedBeyondItsDepth) {
    Manager &manager = Manager::instance();
    const Holder<Node> base(new Node("(depth-base;;)", new QImage(solid(1, 1, 0xFF808080))));
    ASSERT_TRUE(manager.storeImage("(depth-base;;)", base));
    // Every tint is one more level of building, down to the stored base. The two chains differ
    // in their flags, so that neither finds the other's levels cached.
    std::string deepest = "(depth-base;;)";
    std::string tooDeep = "(depth-base;;)";
    for (int level = 1; level <= 64; ++level) {
        deepest = "(" + deepest + ";;color_modifier:;1,1,1,1;0;)";
        tooDeep = "(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)";
    }
    tooDeep = "(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)";
    EXPECT_TRUE(manager.getImage(deepest, true));
    EXPECT_FALSE(manager.getImage(tooDeep, true));
}

class ImageManagerCollection : public vort_test::PlatformHooksTest {};

TEST_F(ImageManagerCollection, DropsWhatOnlyTheCacheHoldsOnceTheIntervalHasPassed) {
    Manager &manager = Manager::instance();
    platform.setClock(1000.0);
    manager.forceGarbageCollection();  // due again after 1005

    const int before = CountedNode::destroyed.load();
    ASSERT_TRUE(
        manager.storeImage("(gc-x;;)", new CountedNode("(gc-x;;)", new QImage(solid(1, 1, 0)))));
    Holder<Node> held(new CountedNode("(gc-held;;)", new QImage(solid(1, 1, 0))));
    ASSERT_TRUE(manager.storeImage("(gc-held;;)", held));

    platform.setClock(1005.0);
    manager.update();
    manager.dereferenceNode("(gc-x;;)");
    EXPECT_TRUE(manager.getImage("(gc-x;;)", false));

    platform.setClock(1005.5);
    manager.update();
    EXPECT_FALSE(manager.getImage("(gc-x;;)", false));
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
    EXPECT_EQ(manager.getImage("(gc-held;;)", false), held);

    // Due again after 1010.5: a second update within the interval collects nothing.
    ASSERT_TRUE(
        manager.storeImage("(gc-y;;)", new CountedNode("(gc-y;;)", new QImage(solid(1, 1, 0)))));
    platform.setClock(1010.0);
    manager.update();
    EXPECT_TRUE(manager.getImage("(gc-y;;)", false));
    held = Holder<Node>();
    platform.setClock(1011.0);
    manager.dereferenceNode("unrelated");
    EXPECT_FALSE(manager.getImage("(gc-y;;)", false));
    EXPECT_FALSE(manager.getImage("(gc-held;;)", false));
    EXPECT_EQ(CountedNode::destroyed.load(), before + 3);
}

TEST_F(ImageManagerCollection, RebuildsACollectedKeyAsANewPicture) {
    Manager &manager = Manager::instance();
    const Holder<Node> base(new Node("(rebuild-base;;)", new QImage(solid(2, 2, 0xFF204060))));
    ASSERT_TRUE(manager.storeImage("(rebuild-base;;)", base));
    const std::string key = "((rebuild-base;;);;color_modifier:;1,1,1,1;1;)";

    Holder<Node> built = manager.getImage(key, true);
    ASSERT_TRUE(built);
    const qint64 firstPicture = built->getImage(false)->cacheKey();
    for (int round = 0; round < 3; ++round) {
        manager.forceGarbageCollection();
        EXPECT_EQ(manager.getImage(key, false), built);
    }
    built = Holder<Node>();
    manager.forceGarbageCollection();
    EXPECT_FALSE(manager.getImage(key, false));
    // The base is held here, so it stays.
    EXPECT_EQ(manager.getImage("(rebuild-base;;)", false), base);

    const Holder<Node> rebuilt = manager.getImage(key, true);
    ASSERT_TRUE(rebuilt);
    EXPECT_NE(rebuilt->getImage(false)->cacheKey(), firstPicture);
}

TEST(ImageManager, LeavesItsCachedNodesAliveWhenItEnds) {
    const int before = CountedNode::destroyed.load();
    auto *manager = new PrivateManager;
    ASSERT_TRUE(
        manager->storeImage("(kept;;)", new CountedNode("(kept;;)", new QImage(solid(1, 1, 0)))));
    Holder<Node> shared(new CountedNode("(shared;;)", new QImage(solid(1, 1, 0))));
    ASSERT_TRUE(manager->storeImage("(shared;;)", shared));
    delete manager;
    EXPECT_EQ(CountedNode::destroyed.load(), before);
    // The ended cache still counts as a holder of what it held.
    shared = Holder<Node>();
    EXPECT_EQ(CountedNode::destroyed.load(), before);
}
