#include "messaging/MessagingTestSupport.h"
#include "support/Latch.h"
#include <vort/bones/StringID.h>
#include <vort/services/ApplicationContext.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Translation.h>
#include <vort/services/VTService.h>

#include <gtest/gtest.h>

using VTServices::Translation;
using VTServices::VTService;

namespace {

struct Table : VTServices::VTServiceBase {
    static bool hasKey(std::string const &key) { return g_serviceMap.count(key) != 0; }
};

int g_destroyed = 0, g_asked = 0;

// Answers "<answer>:<text>", counts its deaths and sees who is installed while it dies. It makes
// ids of its own while it translates, which would deadlock under the repository's lock.
class Counted : public Translation {
public:
    explicit Counted(std::string answer, Translation **seen = nullptr)
        : m_answer(std::move(answer)), m_seen(seen) {}
    ~Counted() override {
        ++g_destroyed, m_seen ? void(*m_seen = VTService<Translation>::get()) : void();
    }
    const char *translate(const char *text) override {
        ++g_asked;
        return VORT::StringID(m_answer + ":" + text).c_str();
    }

private:
    std::string m_answer;
    Translation **m_seen;
};

// Another class that claims the key "Translation".
struct Impostor : VTService<Impostor> {
    static std::string serviceName() { return "Translation"; }
};

}  // namespace

TEST(VTService, InstallReplacesAndDeletesOnceAndNullKeepsTheKey) {
    VTService<Impostor>::install(nullptr);
    EXPECT_FALSE(Table::hasKey("Translation")) << "a null install on a new key added it";
    Translation *seen = nullptr;
    VTService<Translation>::install(new Counted("zeroth", &seen));
    auto *first = new Counted("first");
    VTService<Translation>::install(first);
    EXPECT_EQ(seen, first) << "the replaced object doesn't see its successor while it dies";
    auto *context = new VTServices::ApplicationContext;
    VTService<VTServices::ApplicationContext>::install(context);
    VTService<Translation>::install(nullptr);
    VTService<Translation>::install(nullptr);  // finds nothing to delete
    EXPECT_EQ(g_destroyed, 2);
    EXPECT_TRUE(Table::hasKey("Translation"));
    EXPECT_EQ(VTService<Translation>::get(), nullptr);
    EXPECT_EQ(VTService<VTServices::ApplicationContext>::get(), context);
    EXPECT_TRUE(context->isFeatureEnabled(""));
    EXPECT_FALSE(VTServices::LumigraphClient().isValidItem(0));
    VTService<Translation>::install(new Counted("derived"));
    auto *impostor = new Impostor;
    VTService<Impostor>::install(impostor);
    EXPECT_EQ(g_destroyed, 3);
    EXPECT_EQ(VTService<Translation>::get(), nullptr) << "an object of another class was found";
    VTService<Impostor>::install(nullptr);
    VTService<VTServices::ApplicationContext>::install(nullptr);
}

// Asked every time with the interned text, not for the empty id, and never under the
// repository's lock (the service makes ids itself, on another thread here).
TEST(TranslatedString, AsksTheServiceEveryTimeButNotForTheEmptyId) {
    const char text[] = "Untitled";
    EXPECT_EQ(Translation().translate(text), text);
    EXPECT_EQ(VORT::StringID().getXlateString(), "");  // needs no service
    VTService<Translation>::install(new Counted("fr"));
    EXPECT_EQ(VORT::StringID("").getXlateString(), "");
    std::string layer;
    vort_test::Latch done(1);
    std::thread worker([&] { layer = VORT::StringID("Layer").getXlateString(), done.countDown(); });
    if (!done.wait()) {
        worker.detach();
        FAIL() << "the service was called under the repository lock";
    }
    worker.join();
    EXPECT_EQ(layer + VORT::StringID("Layer").getXlateString(), "fr:Layerfr:Layer");
    EXPECT_EQ(g_asked, 2);
    VTService<Translation>::install(nullptr);
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
        vort_test::ServiceThread worker;
        emitters[i]->connect(&listener, &vort_test::Recorder::onNothing, worker.record());
        ASSERT_TRUE(worker.registerAs("LumigraphSceneServer", i < 3));
        emitters[i]->send();
        EXPECT_EQ(listener.count(), i < 3 ? 1 : 0);
        ASSERT_TRUE(worker.process());
        EXPECT_EQ(listener.count(), 1);
    }
}
