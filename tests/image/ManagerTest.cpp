#include "ImageTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/image/Manager.h>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <string>

using VORT::Color;
using VORT::Holder;
using namespace VORT::ImageCompositor;
using vort_test::CountedNode;
using vort_test::solid;

namespace {

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

TEST(ImageManager, FindsModifiersInAnyCaseAndKeepsTheFirst) {
    Manager &manager = Manager::instance();
    manager.registerModifier("Tagged-Test:", boost::make_shared<TaggedModifier>(1));
    manager.registerModifier("TAGGED-TEST:", boost::make_shared<TaggedModifier>(2));
    const auto tagged = [&](const char *name, const char *args) {
        auto modifier =
            boost::dynamic_pointer_cast<TaggedModifier>(manager.buildModifier(name, args));
        return modifier ? modifier->mTag : 0;
    };
    EXPECT_EQ(tagged("tAgGeD-tEsT:", ""), 1);
    EXPECT_EQ(tagged("tagged-test:", "refuse"), 0);
    EXPECT_FALSE(manager.buildModifier("", ""));
    EXPECT_FALSE(manager.buildModifier("comp_mode:Nonsense", ""));

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
    EXPECT_EQ(tint->getColor(), Color(0.0, 1.0, 0.0, 1.0));
    EXPECT_TRUE(tint->getToGrayscale());
}

TEST(ImageManager, StoresOnlyNewKeysAndNeverReplaces) {
    Manager &manager = Manager::instance();
    const Holder<Node> first(new Node("(store-test;;)", new QImage(solid(1, 1, 0))));
    const Holder<Node> second(new Node("other", new QImage(solid(1, 1, 0))));
    EXPECT_FALSE(manager.storeImage("", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", Holder<Node>()));
    EXPECT_TRUE(manager.storeImage("(store-test;;)", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", second));
    EXPECT_EQ(manager.getImage("(store-test;;)", true), first);
    EXPECT_EQ(second->getKey(), "other");
    EXPECT_FALSE(manager.getImage("", true));
}

TEST(ImageManager, BuildsKeysRecursivelyAndCachesEveryOperand) {
    vort_test::ImageFolder folder;
    const std::string a = folder.write("a.png", solid(4, 4, 0xFF336699u));
    const std::string b = folder.write("b.png", solid(2, 2, 0xFFFF0000u));
    Manager &manager = Manager::instance();

    const std::string key = "(" + a + ";" + b + ";comp_mode:Screen;)";
    const Holder<Node> node = manager.getImage(key, true);
    ASSERT_TRUE(node);
    EXPECT_EQ(node->getKey(), key);
    EXPECT_EQ(manager.getImage(key, false), node);
    // Each file under its normalised key, and nothing under the bare path.
    EXPECT_TRUE(manager.getImage(buildKey(a), false));
    EXPECT_TRUE(manager.getImage(buildKey(b), false));
    EXPECT_FALSE(manager.getImage(a, true));
    // Screen with full red saturates red and keeps the rest; B covers only the top-left.
    EXPECT_EQ(imageOf(node).pixel(1, 1), 0xFFFF6699u);
    EXPECT_EQ(imageOf(node).pixel(2, 2), 0xFF336699u);

    // A name that no ";" closes is dropped: the default composition draws B over A.
    const Holder<Node> dropped = manager.getImage("(" + a + ";" + b + ";Screen)", true);
    ASSERT_TRUE(dropped);
    EXPECT_EQ(imageOf(dropped).pixel(1, 1), 0xFFFF0000u);

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
    const Holder<Node> base(new Node("(depth-base;;)", new QImage(solid(1, 1, 0))));
    ASSERT_TRUE(manager.storeImage("(depth-base;;)", base));
    std::string deepest = "(depth-base;;)";
    std::string tooDeep = "(depth-base;;)";
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
    ASSERT_TRUE(manager.storeImage("(gc-x;;)", counted("(gc-x;;)")));
    Holder<Node> held = counted("(gc-held;;)");
    ASSERT_TRUE(manager.storeImage("(gc-held;;)", held));

    platform.setClock(1005.0);
    manager.update();
    manager.dereferenceNode("(gc-x;;)");
    EXPECT_TRUE(manager.getImage("(gc-x;;)", false));
    platform.setClock(1005.5);
    manager.update();  // due again after 1010.5
    EXPECT_FALSE(manager.getImage("(gc-x;;)", false));
    EXPECT_EQ(manager.getImage("(gc-held;;)", false), held);
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);

    held = Holder<Node>();
    platform.setClock(1010.0);
    manager.update();
    EXPECT_TRUE(manager.getImage("(gc-held;;)", false));
    platform.setClock(1011.0);
    manager.dereferenceNode("unrelated");
    EXPECT_FALSE(manager.getImage("(gc-held;;)", false));
    EXPECT_EQ(CountedNode::destroyed.load(), before + 2);
}

TEST_F(ImageManagerCollection, RebuildsACollectedKeyAsANewPicture) {
    Manager &manager = Manager::instance();
    const Holder<Node> base(new Node("(rebuild-base;;)", new QImage(solid(2, 2, 0xFF204060u))));
    ASSERT_TRUE(manager.storeImage("(rebuild-base;;)", base));
    const std::string key = "((rebuild-base;;);;color_modifier:;1,1,1,1;1;)";
    Holder<Node> built = manager.getImage(key, true);
    const qint64 firstPicture = built->getImage(false)->cacheKey();
    manager.forceGarbageCollection();
    manager.forceGarbageCollection();
    EXPECT_EQ(manager.getImage(key, false), built);
    built = Holder<Node>();
    manager.forceGarbageCollection();
    EXPECT_FALSE(manager.getImage(key, false));
    EXPECT_EQ(manager.getImage("(rebuild-base;;)", false), base);
    EXPECT_NE(manager.getImage(key, true)->getImage(false)->cacheKey(), firstPicture);
}

TEST(ImageManager, LeavesItsCachedNodesAliveWhenItEnds) {
    const int before = CountedNode::destroyed.load();
    auto *manager = new PrivateManager;
    ASSERT_TRUE(manager->storeImage("(kept;;)", counted("(kept;;)")));
    Holder<Node> shared = counted("(shared;;)");
    ASSERT_TRUE(manager->storeImage("(shared;;)", shared));
    delete manager;
    // The ended cache still counts as a holder of what it held.
    shared = Holder<Node>();
    EXPECT_EQ(CountedNode::destroyed.load(), before);
}
