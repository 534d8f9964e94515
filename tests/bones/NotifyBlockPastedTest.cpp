#include <vort/bones/NotifyBlockPasted.h>

#include <gtest/gtest.h>

using VORT::NotifyBlockPasted;

namespace {

class Paste : public VTMS::Listener {
public:
    ~Paste() override { disconnect(); }
    void onPasted() { ++count; }
    int count = 0;
};

}  // namespace

TEST(NotifyBlockPasted, OneInstanceCallsItsListenersDirectly) {
    NotifyBlockPasted *const instance = NotifyBlockPasted::getInstance();
    ASSERT_TRUE(instance != nullptr && NotifyBlockPasted::getInstance() == instance);
    Paste paste;
    instance->connect(&paste, &Paste::onPasted);
    // The default mode calls a listener without a thread inside the send.
    instance->send();
    EXPECT_EQ(paste.count, 1);
    paste.disconnect();
    EXPECT_FALSE(instance->hasConnections());
}
