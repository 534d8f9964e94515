#include "QtHostTestSupport.h"
#include <vort/qthost/ApplicationContext.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using VORT::QtHost::ApplicationContext;

namespace {

int g_lastChange = -1;
void remember(int value) {
    g_lastChange = value;
}

std::string local(const QString &path) {
    return QFile::encodeName(path).toStdString();
}

}  // namespace

TEST(QtApplicationContext, AnswersFromTheApplicationAndMakesTheDirectoryOnlyWhenAsked) {
    ApplicationContext context;
    const QString expected = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    EXPECT_EQ(context.getPreferencesDirectory(false), local(QDir::cleanPath(expected)));
    EXPECT_STREQ(context.getRelease(), "1.2.3");
    EXPECT_EQ(context.getBinArchDir(), local(QCoreApplication::applicationDirPath()));
    EXPECT_EQ(context.getRoot(),
              local(QFileInfo(QCoreApplication::applicationDirPath()).dir().absolutePath()));
    EXPECT_STREQ(context.getCharacterEncoding(), "UTF-8");

    QTemporaryDir scratch;
    const QString wanted = scratch.filePath(QStringLiteral("deep/er/prefs"));
    ApplicationContext chosen(wanted);
    EXPECT_EQ(chosen.getPreferencesDirectory(false), local(wanted));
    EXPECT_FALSE(QFileInfo::exists(wanted));
    EXPECT_EQ(chosen.getPreferencesDirectory(true), local(wanted));
    EXPECT_TRUE(QFileInfo(wanted).isDir());

    // A directory that can't be made is reported and answered as null.
    QFile blocker(scratch.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    ApplicationContext blocked(scratch.filePath(QStringLiteral("file/prefs")));
    vort_test::QtHostWarnings warnings;
    EXPECT_EQ(blocked.getPreferencesDirectory(true), nullptr);
    EXPECT_TRUE(
        warnings.has({"ApplicationContext", "can't make the preferences directory", "file/prefs"}));
    EXPECT_EQ(ApplicationContext{QString()}.getPreferencesDirectory(true), nullptr);
}

TEST(QtApplicationContextConcurrency, FeaturesAreEnabledUnlessRegisteredOffOnAnyThread) {
    ApplicationContext context;
    EXPECT_TRUE(context.isFeatureEnabled("never registered"));
    EXPECT_FALSE(context.setFeatureValue("never registered", 1));
    context.registerFeature("Antialiasing", 0, &remember);
    EXPECT_FALSE(context.isFeatureEnabled("Antialiasing"));
    EXPECT_TRUE(context.setFeatureValue("Antialiasing", 2));
    EXPECT_EQ(g_lastChange, 2);
    EXPECT_TRUE(context.isFeatureEnabled("Antialiasing"));
    context.registerFeature("Quiet", 1, nullptr);
    EXPECT_TRUE(context.setFeatureValue("Quiet", 0));
    EXPECT_FALSE(context.isFeatureEnabled("Quiet"));
    {
        vort_test::QtHostWarnings warnings;
        context.registerFeature(nullptr, 1, nullptr);
        EXPECT_TRUE(warnings.has({"registerFeature without a name"}));
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&context, t] {
            const std::string own = "Feature" + std::to_string(t);
            for (int i = 0; i < 500; ++i) {
                context.registerFeature(own.c_str(), i % 2, nullptr);
                EXPECT_EQ(context.isFeatureEnabled(own.c_str()), i % 2 != 0);
                EXPECT_TRUE(context.isFeatureEnabled("Antialiasing"));
                EXPECT_STREQ(context.getRelease(), "1.2.3");
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
}
