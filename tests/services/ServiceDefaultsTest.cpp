#include <vort/services/ApplicationContext.h>
#include <vort/services/ErrorHandling.h>
#include <vort/services/EventLoopTickling.h>
#include <vort/services/EventManagement.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Printing.h>
#include <vort/services/TWrapperClassRegistry.h>
#include <vort/services/TessarCaller.h>
#include <vort/services/TessarTimerService.h>
#include <vort/services/Translation.h>
#include <vort/services/VTRCCreator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

using namespace VTServices;

namespace {

int g_printed = 0;
int countingOutput(const char *) {
    return ++g_printed;
}
void ignoreFeature(int) {}

}  // namespace

TEST(ServiceDefaults, EachServiceIsKeyedByItsClassName) {
    EXPECT_EQ(VTRCCreator::serviceName() + Translation::serviceName() +
                  EventManagement::serviceName() + EventLoopTickling::serviceName() +
                  ErrorHandling::serviceName() + Printing::serviceName() +
                  ApplicationContext::serviceName() + TessarCaller::serviceName() +
                  TWrapperClassRegistry::serviceName() + LumigraphClient::serviceName() +
                  TessarTimerService::serviceName(),
              "VTRCCreatorTranslationEventManagementEventLoopTicklingErrorHandlingPrinting"
              "ApplicationContextTessarCallerTWrapperClassRegistryLumigraphClient"
              "TessarTimerService");
}

TEST(ServiceDefaults, PlainServicesAnswerNothingAndTouchNothing) {
    const char text[] = "Untitled";
    EXPECT_EQ(Translation().translate(text), text);  // the very pointer it was given

    ApplicationContext context;
    context.registerFeature("Antialiasing", 0, &ignoreFeature);
    EXPECT_TRUE(context.isFeatureEnabled("Antialiasing") && context.isFeatureEnabled(""));
    for (const char *answer :
         {context.getPreferencesDirectory(true), context.getPreferencesDirectory(false),
          context.getRelease(), context.getRoot(), context.getBinArchDir(),
          context.getCharacterEncoding()}) {
        EXPECT_EQ(answer, nullptr);
    }
    EventManagement events;
    EXPECT_EQ(events.getUserEventHandle(nullptr) + events.getUserEventHandle(), 0);
    ErrorHandling errors;
    EXPECT_EQ(errors.setErrorMode(ErrorHandling::VerboseErrorMode), ErrorHandling::ErrorMode(0));
    errors.printMachineConfiguration(&countingOutput);
    errors.printStackTrace(&countingOutput);
    EXPECT_EQ(g_printed, 0);

    Printing printing;
    // The plain class only passes the reference through, so it can be made from any storage.
    alignas(16) unsigned char storage[64] = {};
    QPicture &picture = reinterpret_cast<QPicture &>(storage);
    EXPECT_EQ(printing.QPicture2Figure(picture), 0.0);
    EXPECT_EQ(printing.LGtoQtPaperOrientation("landscape") + printing.LGtoQtPaperSize("A4"), 0);
    printing.PrintQPicture(picture, "printer", "file", "title", 2, "A4", "portrait", true, false,
                           true, false, true);
    EXPECT_EQ(std::count(std::begin(storage), std::end(storage), 0), 64);

    EXPECT_EQ(VTRCCreator().createVTRC("canvas", "view", true), nullptr);
    TWrapperClassRegistry registry;
    EXPECT_EQ(registry.getTWrapperClassFor(reinterpret_cast<VORT::TWrappedObject *>(&registry)),
              nullptr);
    LumigraphClient client;
    EXPECT_FALSE(client.isValidItem(0) || client.isValidItem(INT64_C(0x7fffffffffffffff)));
    EXPECT_EQ(client.createSceneServer(), nullptr);
    lg::Command *command = reinterpret_cast<lg::Command *>(&client);
    client.disposeCommand(command);
    EXPECT_EQ(command, reinterpret_cast<lg::Command *>(&client)) << "the plain client nulled it";
    EXPECT_EQ(client.getViewerInterfaceForServer(nullptr), nullptr);
}
