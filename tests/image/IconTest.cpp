#include "ImageTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/image/Icon.h>
#include <vort/image/ImageResource.h>
#include <vort/image/Manager.h>

#include <gtest/gtest.h>

#include <string>

using VORT::Holder;
using VORT::Icon;
using VORT::IconImageEntry;
using VORT::ImageResource;
using VORT::ImageCompositor::buildKey;
using VORT::ImageCompositor::Manager;
using VORT::ImageCompositor::Node;
using vort_test::ImageFolder;
using vort_test::solid;

TEST(Icon, KeepsOneNameForEachModeAndState) {
    Icon icon;
    EXPECT_FALSE(icon.isValid());
    icon.addFile("first.png", Icon::Normal, Icon::Off);
    EXPECT_TRUE(icon.isValid());
    icon.addFile("second.png", Icon::Normal, Icon::Off);
    icon.addImageCompositorKey("(k;;)", Icon::Disabled, Icon::On);
    ASSERT_EQ(icon.getImageMap().size(), 2u);
    EXPECT_EQ(icon.getImageMap().at({Icon::Normal, Icon::Off}).getName(), "second.png");
    EXPECT_EQ(icon.getImageMap().at({Icon::Disabled, Icon::On}).getName(), "(k;;)");

    const Icon single("second.png", Icon::Normal, Icon::Off);
    EXPECT_TRUE(single != icon);
    Icon same = single;
    same.addImageCompositorKey("(k;;)", Icon::Disabled, Icon::On);
    EXPECT_TRUE(same == icon);
    same.addFile("(other;;)", Icon::Disabled, Icon::On);
    EXPECT_FALSE(same == icon);
}

TEST(Icon, BuildsEachPictureOnceAndHoldsItAgainstCollection) {
    ImageFolder folder;
    const std::string file = folder.path("icon.png");
    Manager &manager = Manager::instance();

    IconImageEntry entry(file);
    EXPECT_FALSE(entry.getImageNode(false));
    // A file that does not load yet: nothing is held, and every request tries again.
    EXPECT_FALSE(entry.getImageNode(true));
    folder.write("icon.png", solid(3, 3, 0xFF00AA00));
    EXPECT_FALSE(entry.getImageNode(false));
    const Holder<Node> node = entry.getImageNode(true);
    ASSERT_TRUE(node);
    EXPECT_EQ(entry.getImageNode(true), node);
    EXPECT_EQ(manager.getImage(buildKey(file), false), node);

    // Built or not, entries and icons compare by name.
    EXPECT_TRUE(entry == IconImageEntry(file));
    Icon built(file, Icon::Active, Icon::On);
    const Icon unbuilt = built;
    Icon::ImageMap map = built.getImageMap();
    ASSERT_TRUE(map.begin()->second.getImageNode(true));
    EXPECT_TRUE(built == unbuilt);

    // The same name keeps the picture, another drops it.
    entry.setName(file);
    EXPECT_EQ(entry.getImageNode(false), node);
    entry.setName(folder.path("other.png"));
    EXPECT_FALSE(entry.getImageNode(false));
    EXPECT_FALSE(IconImageEntry().getImageNode(true));
}

TEST(Icon, EntriesKeepTheirPicturesCachedWhileTheyLive) {
    ImageFolder folder;
    const std::string key = buildKey(folder.write("kept.png", solid(2, 2, 0xFF0000AA)));
    Manager &manager = Manager::instance();
    {
        IconImageEntry entry(key);
        ASSERT_TRUE(entry.getImageNode(true));
        const IconImageEntry copy = entry;
        manager.forceGarbageCollection();
        EXPECT_TRUE(manager.getImage(key, false));
    }
    manager.forceGarbageCollection();
    EXPECT_FALSE(manager.getImage(key, false));
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
        manager.storeImage("(resource-probe;;)",
                           new Node("(resource-probe;;)", new QImage(solid(1, 1, 0))));
    }
    bool dereferenced() { return !Manager::instance().getImage("(resource-probe;;)", false); }
};

TEST_F(ImageResourceCalls, CallTheManagerOnlyWhenTheKeyChanges) {
    arm();
    ImageResource resource("(a;;)");
    EXPECT_EQ(resource.toStringRef(), "(a;;)");
    EXPECT_EQ(resource.toStringCopy(), "(a;;)");
    // Taking the first key dereferences the empty one before it.
    EXPECT_TRUE(dereferenced());

    arm();
    resource.fromString("(a;;)");
    EXPECT_FALSE(dereferenced());
    // A copy starts empty and takes the key as a new one.
    const ImageResource same(resource);
    EXPECT_EQ(same.toStringRef(), "(a;;)");
    EXPECT_TRUE(dereferenced());

    arm();
    resource = same;
    EXPECT_FALSE(dereferenced());

    resource.fromString("(b;;)");
    EXPECT_TRUE(dereferenced());
    EXPECT_EQ(resource.toStringRef(), "(b;;)");

    arm();
    resource = same;
    EXPECT_TRUE(dereferenced());
    EXPECT_EQ(resource.toStringRef(), "(a;;)");
}

TEST_F(ImageResourceCalls, EndOnlyAKeyThatIsNotEmpty) {
    arm();
    { const ImageResource none; }
    { const ImageResource empty(""); }
    EXPECT_FALSE(dereferenced());
    {
        ImageResource resource("(c;;)");
        arm();
    }
    EXPECT_TRUE(dereferenced());

    // A resource keeps no picture alive: what it names may be collected under it.
    arm();
    const ImageResource probe("(resource-probe;;)");
    EXPECT_TRUE(dereferenced());
}
