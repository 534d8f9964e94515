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

// Hears of wrapped objects' ends. Where it runs on the destroying thread it also reads the
// name while the object still stands; elsewhere the object is gone and only the pointer counts.
class Obituary : public VTMS::Listener {
public:
    ~Obituary() override { disconnect(); }
    void onDestroyed(TWrappedObject *object) {
        ended.push_back(object);
        if (readsName) {
            names.push_back(object->getTWrapperClassName().getString());
        }
    }
    bool readsName = true;
    std::vector<TWrappedObject *> ended;
    std::vector<std::string> names;
};

}  // namespace

TEST(TWrappedObject, AnnouncesItsEndWhileStillWholeOnTheEmitterItShares) {
    Obituary obituary;
    auto object = std::make_unique<TWrappedObject>();
    EXPECT_TRUE(object->getTWrapperClassName().empty());
    object->setTWrapperClassName(StringID("tools.paint:Brush"));
    object->destroyed.connect(&obituary, &Obituary::onDestroyed);
    {
        TWrappedObject copy(*object);  // the name, but not the listeners
        EXPECT_TRUE(copy.getTWrapperClassName() == StringID("tools.paint:Brush") &&
                    !copy.destroyed.hasConnections());
    }
    EXPECT_TRUE(obituary.ended.empty());
    TWrappedObject *const address = object.get();
    object.reset();
    EXPECT_EQ(obituary.ended, std::vector<TWrappedObject *>{address});
    EXPECT_EQ(obituary.names, std::vector<std::string>{"tools.paint:Brush"});

    TWrappedObject source;
    source.destroyed.connect(&obituary, &Obituary::onDestroyed);
    {
        TWrappedObject target;
        target = source;  // shares the emitter: its end goes to the source's listener
        EXPECT_TRUE(target.destroyed.hasConnections());
    }
    EXPECT_EQ(obituary.ended.size(), 2u);
}

TEST(TWrappedObjectConcurrency, ListenerOnAnotherThreadGetsThePointerQueued) {
    Obituary obituary;
    obituary.readsName = false;
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
    object->destroyed.connect(&obituary, &Obituary::onDestroyed, record);
    TWrappedObject *const address = object.get();
    object.reset();
    EXPECT_TRUE(obituary.ended.empty()) << "delivered on the destroying thread";
    destroyed.countDown();
    ASSERT_TRUE(processed.wait());
    other.join();
    EXPECT_EQ(obituary.ended, std::vector<TWrappedObject *>{address});
}
