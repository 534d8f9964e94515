#include "messaging/MessagingTestSupport.h"
#include <vort/services/ApplicationContext.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Translation.h>
#include <vort/services/VTService.h>

#include <gtest/gtest.h>

using VTServices::Translation;
using VTServices::VTService;

namespace {

class Counted : public Translation {
public:
    static inline int destroyed = 0;
    ~Counted() override { ++destroyed; }
};

// Another class that claims the key "Translation".
struct Impostor : VTService<Impostor> {
    static std::string serviceName() { return "Translation"; }
};

}  // namespace

TEST(VTService, InstallReplacesAndDeletesOnceAndAnswersItsDefaults) {
    VTService<Translation>::install(new Counted);
    VTService<Translation>::install(new Counted);
    VTService<Translation>::install(nullptr);
    VTService<Translation>::install(nullptr);  // finds nothing to delete
    EXPECT_EQ(Counted::destroyed, 2);
    VTService<Translation>::install(new Counted);
    VTService<Impostor>::install(new Impostor);
    EXPECT_EQ(VTService<Translation>::get(), nullptr) << "an object of another class was found";
    EXPECT_EQ(Counted::destroyed, 3);
    VTService<Impostor>::install(nullptr);
    const char text[] = "Untitled";
    EXPECT_EQ(Translation().translate(text), text);
    EXPECT_TRUE(VTServices::ApplicationContext().isFeatureEnabled(""));
    EXPECT_FALSE(VTServices::LumigraphClient().isValidItem(0));
}

// The first three emitters block until delivered: when the send to a listener on another thread
// returns, the listener has run. The other four only queue.
TEST(LumigraphSceneServerConcurrency, FirstThreeEmittersBlockTheOtherFourQueue) {
    struct Server : VTServices::LumigraphSceneServer {
    } server;
    VTMS::Emitter0<void> *const emitters[] = {
        &server.m_syncSignal1, &server.m_syncSignal2, &server.m_syncSignal3, &server.m_signal1,
        &server.m_signal2,     &server.m_signal3,     &server.m_signal4,
    };
    for (int i = 0; i < 7; ++i) {
        SCOPED_TRACE(i);
        vort_test::Recorder listener;
        vort_test::ServiceThread worker("LumigraphSceneServer", i < 3);
        emitters[i]->connect(&listener, &vort_test::Recorder::onNothing, worker.record());
        emitters[i]->send();
        EXPECT_EQ(listener.count(), i < 3 ? 1 : 0);
        ASSERT_TRUE(worker.process());
        EXPECT_EQ(listener.count(), 1);
    }
}
