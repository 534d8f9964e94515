#include "support/Latch.h"
#include <vort/bones/TWrappedObject.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

using VORT::StringID;
using VORT::TWrappedObject;

namespace {

// Hears of wrapped objects' ends, and reads the name while the object still stands.
class Obituary : public VTMS::Listener {
public:
    ~Obituary() override { disconnect(); }
    void onDestroyed(TWrappedObject *object) {
        ended.push_back(object);
        names.push_back(object->getTWrapperClassName().getString());
    }
    std::vector<TWrappedObject *> ended;
    std::vector<std::string> names;
};

// Only compares the pointer it gets: it runs on another thread, after the object is gone.
class RemoteObituary : public VTMS::Listener {
public:
    ~RemoteObituary() override { disconnect(); }
    void onDestroyed(TWrappedObject *object) { ended.push_back(object); }
    std::vector<TWrappedObject *> ended;
};

}  // namespace

TEST(TWrappedObject, CarriesItsWrapperClassName) {
    TWrappedObject object;
    EXPECT_TRUE(object.getTWrapperClassName().empty());
    object.setTWrapperClassName(StringID("tools.paint:Brush"));
    EXPECT_EQ(object.getTWrapperClassName(), StringID("tools.paint:Brush"));
}

TEST(TWrappedObject, AnnouncesItsEndWhileStillWhole) {
    Obituary obituary;
    auto object = std::make_unique<TWrappedObject>();
    object->setTWrapperClassName(StringID("tools.paint:Brush"));
    object->destroyed.connect(&obituary, &Obituary::onDestroyed);
    TWrappedObject *const address = object.get();
    object.reset();
    ASSERT_EQ(obituary.ended.size(), 1u);
    EXPECT_EQ(obituary.ended[0], address);
    EXPECT_EQ(obituary.names[0], "tools.paint:Brush") << "the listener ran after the object went";
}

TEST(TWrappedObject, CopyHasTheNameButNotTheListeners) {
    Obituary obituary;
    TWrappedObject original;
    original.setTWrapperClassName(StringID("Layer"));
    original.destroyed.connect(&obituary, &Obituary::onDestroyed);
    {
        TWrappedObject copy(original);
        EXPECT_EQ(copy.getTWrapperClassName(), StringID("Layer"));
        EXPECT_FALSE(copy.destroyed.hasConnections());
    }
    EXPECT_TRUE(obituary.ended.empty()) << "the copy's end reached the original's listener";
}

TEST(TWrappedObject, AssignmentSharesTheEmitter) {
    Obituary obituary;
    TWrappedObject source;
    source.setTWrapperClassName(StringID("Source"));
    source.destroyed.connect(&obituary, &Obituary::onDestroyed);
    {
        TWrappedObject target;
        target = source;
        EXPECT_EQ(target.getTWrapperClassName(), StringID("Source"));
        EXPECT_TRUE(target.destroyed.hasConnections());
    }
    // The target's end went out on the shared emitter, to the source's listener.
    ASSERT_EQ(obituary.ended.size(), 1u);
}

TEST(TWrappedObjectConcurrency, ListenerOnAnotherThreadGetsThePointerQueued) {
    RemoteObituary obituary;
    vort_test::Latch known(1), destroyed(1), processed(1);
    VTMS::Thread *record = nullptr;
    std::thread other([&] {
        record = VTMS::Thread::getCurrentThread();
        known.countDown();
        if (destroyed.wait()) {
            record->process();
        }
        processed.countDown();
    });
    ASSERT_TRUE(known.wait());
    auto object = std::make_unique<TWrappedObject>();
    object->destroyed.connect(&obituary, &RemoteObituary::onDestroyed, record);
    const TWrappedObject *const address = object.get();
    object.reset();
    EXPECT_TRUE(obituary.ended.empty()) << "delivered on the destroying thread";
    destroyed.countDown();
    ASSERT_TRUE(processed.wait());
    other.join();
    ASSERT_EQ(obituary.ended.size(), 1u);
    EXPECT_EQ(obituary.ended[0], address);
}
