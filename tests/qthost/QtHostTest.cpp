// The kit works inside a Qt application: one QCoreApplication for every test of this
// executable, on the main thread, which is also the thread that the kit's services belong to.
#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/bones/Library.h>
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>
#include <vort/qthost/ApplicationContext.h>
#include <vort/qthost/DatabaseWatcher.h>
#include <vort/qthost/MessageThread.h>
#include <vort/qthost/Services.h>
#include <vort/qthost/TimerService.h>
#include <vort/qthost/Translation.h>
#include <vort/xml/Database.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtCore/QTranslator>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using namespace VORT::QtHost;
using VORT::TessarTimer;
using VTServices::VTService;

std::mutex g_mutex;
std::string g_warnings;  // of the category "vort.qthost", from any thread
QtMessageHandler g_previous = nullptr;

void capture(QtMsgType type, const QMessageLogContext &context, const QString &text) {
    if (type != QtWarningMsg || qstrcmp(context.category, "vort.qthost") != 0) {
        return g_previous(type, context, text);
    }
    std::lock_guard<std::mutex> lock(g_mutex);
    g_warnings += text.toStdString() + "\n";
}

// True if the warnings since the last call hold `part`; forgets them.
bool warned(const char *part) {
    std::lock_guard<std::mutex> lock(g_mutex);
    return std::exchange(g_warnings, std::string()).find(part) != std::string::npos;
}

// Runs this thread's event loop until `done` or `milliseconds` have passed; true if done.
bool runEventsUntil(const std::function<bool()> &done, int milliseconds = 10000) {
    const QDeadlineTimer deadline(milliseconds);
    QTimer tick;
    tick.start(5);
    while (!done() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return done();
}

// Translates "Untitled" of the library's context into French.
struct French : QTranslator {
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *source, const char *, int) const override {
        const bool known = qstrcmp(context, "VortUtil") == 0 && qstrcmp(source, "Untitled") == 0;
        return known ? QStringLiteral("Sans titre") : QString();
    }
};

TEST(QtHostConcurrency, ContextMakesItsDirectoryOnlyWhenAskedAndServesFeaturesAndTranslations) {
    ApplicationContext context;
    QTemporaryDir scratch;
    const QString wanted = scratch.filePath(QStringLiteral("deep/er"));
    ApplicationContext chosen(wanted);
    EXPECT_TRUE(chosen.getPreferencesDirectory(false) == wanted.toStdString() &&
                !QFileInfo::exists(wanted));
    EXPECT_TRUE(chosen.getPreferencesDirectory(true) == wanted.toStdString() &&
                QFileInfo(wanted).isDir());
    QFile(scratch.filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly);
    EXPECT_EQ(ApplicationContext(scratch.filePath(QStringLiteral("file/p")))
                  .getPreferencesDirectory(true),
              nullptr);

    EXPECT_TRUE(context.isFeatureEnabled("never registered") && context.isFeatureEnabled(nullptr));
    EXPECT_FALSE(context.setFeatureValue("never registered", 1) ||
                 context.setFeatureValue(nullptr, 1));
    static int lastChange = -1;
    context.registerFeature("Antialiasing", 0, [](int value) { lastChange = value; });
    EXPECT_FALSE(context.isFeatureEnabled("Antialiasing"));
    EXPECT_TRUE(context.setFeatureValue("Antialiasing", 2) && lastChange == 2);
    context.registerFeature("Quiet", 1, nullptr);
    EXPECT_TRUE(context.setFeatureValue("Quiet", 0) && !context.isFeatureEnabled("Quiet"));
    Translation translation;
    const char untitled[] = "Untitled";
    French french;
    QCoreApplication::installTranslator(&french);
    const char *translated = translation.translate(untitled);
    EXPECT_STREQ(translated, "Sans titre");
    std::vector<const char *> texts(4, nullptr);
    vort_test::runTogether(4, [&](int t) {
        const std::string own = "Feature" + std::to_string(t);
        for (int i = 0; i < 200; ++i) {
            context.registerFeature(own.c_str(), i % 2, nullptr);
            EXPECT_EQ(context.isFeatureEnabled(own.c_str()), i % 2 != 0);
            texts[t] = translation.translate(i % 2 ? "Untitled" : "Other");
        }
    });
    EXPECT_EQ(std::count(texts.begin(), texts.end(), translated), 4)
        << "one translation, handed out again";
    QCoreApplication::removeTranslator(&french);
    EXPECT_STREQ(translated, "Sans titre") << "a text handed out before must stay valid";
}

// Records what it was given.
struct Recorder : VTMS::Listener {
    ~Recorder() override { disconnect(); }
    void onValue(int value) { values.push_back(value); }
    std::vector<int> values;
};

TEST(MessageThreadConcurrency, PostsFromOtherThreadsFoldIntoQueuedCallsOfThisLoop) {
    MessageThread registration("qthost-main");
    Recorder recorder;
    VTMS::Emitter1<void, int> values;
    values.connect(&recorder, &Recorder::onValue, registration.thread());
    runEventsUntil([] { return false; }, 10);  // nothing of earlier tests left to deliver
    struct QueuedCalls : QObject {             // counts the queued calls that reach this thread
        int count = 0;
        bool eventFilter(QObject *, QEvent *event) override {
            count += event->type() == QEvent::MetaCall;
            return false;
        }
    } calls;
    QCoreApplication::instance()->installEventFilter(&calls);
    std::thread([&] {
        for (int i = 0; i < 100; ++i) {
            values.send(i);
        }
    }).join();
    EXPECT_TRUE(runEventsUntil([&] { return recorder.values.size() == 100; }));
    QCoreApplication::instance()->removeEventFilter(&calls);
    EXPECT_LE(calls.count, 2) << "each post woke the loop on its own";

    constexpr int kThreads = 4, kEach = 250;  // many posters while the loop delivers
    recorder.values.clear();
    std::vector<std::thread> senders;
    for (int t = 0; t < kThreads; ++t) {
        senders.emplace_back([&values, t] {
            for (int i = 0; i < kEach; ++i) {
                values.send(t * kEach + i);
            }
        });
    }
    ASSERT_TRUE(runEventsUntil([&] { return recorder.values.size() == kThreads * kEach; }));
    for (auto &sender : senders) {
        sender.join();
    }
    std::vector<int> last(kThreads, -1);  // each poster's values arrive in its own order
    for (int value : recorder.values) {
        EXPECT_GT(value, last[value / kEach]);
        last[value / kEach] = value;
    }
}

TEST(MessageThread, NamesShareAThreadsWakeUpUntilTheLastLeavesAndMisuseIsReported) {
    auto first = std::make_unique<MessageThread>("qthost-first");
    auto second = std::make_unique<MessageThread>("qthost-second");
    EXPECT_EQ(VTMS::Thread::getNamedThread("qthost-second"), first->thread());
    MessageThread *strayed = nullptr;
    vort_test::Latch registered(1);
    std::unique_ptr<QThread> worker(QThread::create([&] {
        strayed = new MessageThread("qthost-strayed");
        registered.countDown();
        QEventLoop().exec();  // until quit, to take the registration's leftovers
    }));
    worker->setObjectName(QStringLiteral("registering-worker"));
    worker->start();
    ASSERT_TRUE(registered.wait() && strayed->isValid());
    EXPECT_NE(strayed->thread(), first->thread());
    delete strayed;
    EXPECT_TRUE(warned("it registered (thread 'registering-worker'"));
    worker->quit();
    EXPECT_TRUE(worker->wait(10000));

    Recorder recorder;
    VTMS::Emitter1<void, int> values;
    values.connect(&recorder, &Recorder::onValue, first->thread());
    second.reset();
    std::thread([&] { values.send(1); }).join();
    EXPECT_TRUE(runEventsUntil([&] { return recorder.values.size() == 1; }))
        << "the wake-up left with the second";
    first.reset();
    std::thread([&] { values.send(3); }).join();
    EXPECT_FALSE(runEventsUntil([&] { return recorder.values.size() == 2; }, 50))
        << "woken after unregistering";
    VTMS::Thread::getCurrentThread()->process();
    EXPECT_EQ(recorder.values.size(), 2u);
}

// Counts the time-outs it signals.
struct CountingService : TimerService {
    void timedOut(TessarTimer timer) override {
        ++timeOuts;
        TimerService::timedOut(timer);
    }
    int timeOuts = 0;
};

TEST(TimerService, TimersSignalUntilStoppedRunOutOrTerminatedAndOutliveTheirHandles) {
    auto *service = new CountingService;
    VTService<VTServices::TessarTimerService>::install(service);
    TessarTimer timer = TessarTimer::create();
    timer.startRepeating(10);
    EXPECT_TRUE(timer.isActive());
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == 3; }));
    timer.stop();
    EXPECT_TRUE(!timer.isActive() && service->activeTimerCount() == 0);
    TessarTimer::create().startSingle(10);
    EXPECT_EQ(service->activeTimerCount(), 1) << "the running timer lost its record";
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == 4; }));
    EXPECT_EQ(service->activeTimerCount(), 0);
    timer.startSingle(0);
    EXPECT_FALSE(warned("startSingleTimer")) << "no interval is fine";
    timer.startSingle(5000);
    timer.startSingle(-5);  // replaces the running interval
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == 5; }, 3000));
    EXPECT_FALSE(timer.isActive() || runEventsUntil([&] { return service->timeOuts > 5; }, 40));
    timer.startSingle(10);
    TessarTimer::create().startRepeating(10);
    service->terminateService();
    EXPECT_TRUE(service->activeTimerCount() == 0 && !timer.isActive());
    timer.startSingle(10);
    EXPECT_FALSE(runEventsUntil([&] { return service->timeOuts > 5; }, 40));

    service = new CountingService;  // destroyed with running timers: nothing reaches it after
    VTService<VTServices::TessarTimerService>::install(service);
    TessarTimer::create().startRepeating(5);
    VTService<VTServices::TessarTimerService>::install(nullptr);
    runEventsUntil([] { return false; }, 40);
    EXPECT_FALSE(warned("destroyed on"));
}

TEST(Services, InstallWhatIsMissingAndTakeOutOnlyThat) {
    const auto installed = [] {
        return int(VTService<VTServices::TessarTimerService>::get() != nullptr) +
               int(VTService<VTServices::ApplicationContext>::get() != nullptr) +
               int(VTService<VTServices::Translation>::get() != nullptr);
    };
    ASSERT_EQ(installed(), 0);
    {
        Services services("qthost-services");
        EXPECT_TRUE(services.installed(Services::Timers) && services.installed(Services::Context) &&
                    services.installed(Services::Translations) && installed() == 3);
        EXPECT_FALSE(services.installed(Services::Service(Services::Timers | Services::Context)));
    }
    EXPECT_EQ(installed(), 0);
}

// The database's clock stands still: only the watcher can make it read a file again. Each write
// stamps a time of its own, so every change is a change in whole seconds however fast the test.
TEST(DatabaseWatcher, BringsEditsAndNewFoldersToTheNextReadAndFoldsABurst) {
    vort_test::PlatformCapture platform;
    platform.setClock(100.0);
    QTemporaryDir temp;
    const QString first = QDir(temp.path()).canonicalPath() + QStringLiteral("/première");
    const QString second = QDir(temp.path()).canonicalPath() + QStringLiteral("/second");
    const auto write = [](QString const &path, std::string const &bytes, qint64 seconds) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
               file.write(bytes.data(), static_cast<qint64>(bytes.size())) > 0 && file.flush() &&
               file.setFileTime(QDateTime::fromSecsSinceEpoch(seconds),
                                QFileDevice::FileModificationTime);
    };
    struct Db : VORT::XMLDB::Database {
    } db;
    const auto text = [&db](const char *key) {
        const auto node = db.getData(key);
        return node ? node->getValue<std::string>() : "(none)";
    };
    ASSERT_TRUE(write(first + "/a.xml", "<A>1</A>", 1000) &&
                write(second + "/c.xml", "<C>1</C>", 1000));
    VORT::XMLDB::PathItem firstItem(first.toStdString(), nullptr, nullptr);
    VORT::XMLDB::PathItem secondItem(second.toStdString(), nullptr, nullptr);
    db.addPath(&firstItem);
    EXPECT_EQ(text("A"), "1");
    DatabaseWatcher watcher(db, 20, 50);
    const auto watches = [&watcher](QString const &path) {
        const std::vector<std::string> paths = watcher.watchedPaths();
        return std::find(paths.begin(), paths.end(), path.toStdString()) != paths.end();
    };
    EXPECT_TRUE(watches(first) && watches(first + "/a.xml") && !watches(second));

    // A burst of edits is one check; a file in a new subfolder and a replacing rename are seen.
    for (int i = 2; i <= 5; ++i) {
        ASSERT_TRUE(write(first + "/a.xml", "<A>" + std::to_string(i) + "</A>", 1000 + i));
    }
    EXPECT_TRUE(runEventsUntil([&] { return text("A") == "5"; }));
    runEventsUntil([] { return false; }, 150);
    EXPECT_EQ(watcher.checks(), 1);
    ASSERT_TRUE(write(first + "/sub/b.xml", "<B>1</B>", 1000));
    EXPECT_TRUE(runEventsUntil([&] { return text("B") == "1" && watches(first + "/sub/b.xml"); }));
    ASSERT_TRUE(write(first + "/a.tmp", "<A>6</A>", 3000) && QFile::remove(first + "/a.xml") &&
                QFile::rename(first + "/a.tmp", first + "/a.xml"));
    EXPECT_TRUE(runEventsUntil([&] { return text("A") == "6"; }));

    // Folders registered or taken out later are followed within one refresh.
    db.addPath(&secondItem);
    EXPECT_TRUE(runEventsUntil([&] { return watches(second); }));
    ASSERT_TRUE(write(second + "/c.xml", "<C>2</C>", 2000));
    EXPECT_TRUE(runEventsUntil([&] { return text("C") == "2"; }));
    db.removePath(first.toStdString());
    EXPECT_TRUE(runEventsUntil([&] { return !watches(first) && !watches(first + "/a.xml"); }));
}

}  // namespace

int main(int argc, char **argv) {
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("qthost_tests"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    QCoreApplication application(argc, argv);
    initialize_vort_util();
    g_previous = qInstallMessageHandler(&capture);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
