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
using vort_test::solid;

TEST(Icon, KeepsOneNameForEachModeAndStateAndComparesByNames) {
    Icon icon;
    EXPECT_FALSE(icon.isValid());
    icon.addFile("first.png", Icon::Normal, Icon::Off);
    icon.addFile("second.png", Icon::Normal, Icon::Off);
    icon.addImageCompositorKey("(k;;)", Icon::Disabled, Icon::On);
    EXPECT_TRUE(icon.isValid());
    ASSERT_EQ(icon.getImageMap().size(), 2u);
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
        EXPECT_FALSE(entry.getImageNode(false));
        // A file that does not load yet: nothing is held, and every request tries again.
        EXPECT_FALSE(entry.getImageNode(true));
        folder.write("icon.png", solid(3, 3, 0xFF00AA00u));
        Node const *node = entry.getImageNode(true).get();
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(manager.getImage(buildKey(file), false).get(), node);
        EXPECT_TRUE(entry == IconImageEntry(file));  // built or not, names compare
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
