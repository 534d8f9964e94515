#include "QtHostTestSupport.h"
#include <vort/messaging/Thread.h>
#include <vort/messaging/ThrottledCallback.h>
#include <vort/qthost/ApplicationContext.h>
#include <vort/qthost/MessageThread.h>
#include <vort/qthost/Services.h>
#include <vort/qthost/TimerService.h>
#include <vort/qthost/Translation.h>

#include <gtest/gtest.h>

using VORT::QtHost::Services;
using vort_test::QtHostWarnings;
using VTServices::ApplicationContext;
using VTServices::TessarTimerService;
using VTServices::Translation;
using VTServices::VTService;

namespace {

bool nothingInstalled() {
    return VTService<TessarTimerService>::get() == nullptr &&
           VTService<ApplicationContext>::get() == nullptr &&
           VTService<Translation>::get() == nullptr;
}

class Counter : public VORT::ThrottledCallback {
public:
    Counter() : ThrottledCallback(20) {}
    ~Counter() override { disconnect(); }
    int calls = 0;

protected:
    void doCall() override { ++calls; }
};

}  // namespace

TEST(Services, InstallWhatIsMissingAndTakeOutOnlyThat) {
    ASSERT_TRUE(nothingInstalled());
    {
        Services services("qthost-services");
        EXPECT_TRUE(services.installed(Services::Timers) && services.installed(Services::Context) &&
                    services.installed(Services::Translations));
        EXPECT_FALSE(services.installed(Services::Service(Services::Timers | Services::Context)))
            << "a set of services is not one service";
        EXPECT_EQ(VTService<TessarTimerService>::get(), services.timerService());
        EXPECT_NE(
            dynamic_cast<VORT::QtHost::ApplicationContext *>(VTService<ApplicationContext>::get()),
            nullptr);
        EXPECT_NE(dynamic_cast<VORT::QtHost::Translation *>(VTService<Translation>::get()),
                  nullptr);
        ASSERT_NE(services.messageThread(), nullptr);
        EXPECT_TRUE(services.messageThread()->isValid());
        EXPECT_EQ(VTMS::Thread::getNamedThread("qthost-services"),
                  VTMS::Thread::getCurrentThread());
        // A throttled callback works with nothing else set up.
        Counter counter;
        counter.trigger();
        counter.trigger();
        ASSERT_TRUE(vort_test::runEventsUntil([&] { return counter.calls == 2; }));
        {
            QtHostWarnings warnings;
            Services second("qthost-second-services");
            for (const char *name : {"TessarTimerService", "ApplicationContext", "Translation"}) {
                EXPECT_TRUE(warnings.has({"Services", name, "installed already"})) << name;
            }
            EXPECT_FALSE(second.installed(Services::Timers) ||
                         second.installed(Services::Context) ||
                         second.installed(Services::Translations));
            EXPECT_EQ(second.timerService(), nullptr);
        }
        EXPECT_EQ(VTService<TessarTimerService>::get(), services.timerService())
            << "the second object took out what the first installed";
    }
    EXPECT_TRUE(nothingInstalled());

    auto *own = new Translation;
    VTService<Translation>::install(own);
    {
        QtHostWarnings warnings;
        Services services("qthost-partial-services");
        EXPECT_TRUE(warnings.has({"a Translation service is installed already"}));
        EXPECT_TRUE(services.installed(Services::Timers));
        EXPECT_FALSE(services.installed(Services::Translations));
    }
    EXPECT_EQ(VTService<Translation>::get(), own);
    VTService<Translation>::install(nullptr);
    EXPECT_TRUE(nothingInstalled());
}
