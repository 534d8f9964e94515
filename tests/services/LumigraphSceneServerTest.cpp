#include "messaging/MessagingTestSupport.h"
#include <vort/services/LumigraphClient.h>

#include <gtest/gtest.h>

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
        vort_test::ServiceThread worker;
        emitters[i]->connect(&listener, &vort_test::Recorder::onNothing, worker.record());
        ASSERT_TRUE(worker.registerAs("LumigraphSceneServer", i < 3));
        emitters[i]->send();
        EXPECT_EQ(listener.count(), i < 3 ? 1 : 0);
        ASSERT_TRUE(worker.process());
        EXPECT_EQ(listener.count(), 1);
        listener.disconnect();
    }
}
