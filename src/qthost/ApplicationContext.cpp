#include "Report_p.h"
#include <vort/qthost/ApplicationContext.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStandardPaths>

#include <map>
#include <mutex>
#include <string>

namespace VORT {
namespace QtHost {
namespace {

const char *const kWhere = "VORT::QtHost::ApplicationContext";

std::string localPath(const QString &path) {
    return QFile::encodeName(path).toStdString();
}

}  // namespace

struct ApplicationContext::Private {
    explicit Private(const QString &preferences) {
        if (QCoreApplication::instance() == nullptr) {
            reportMisuse(kWhere, QStringLiteral("made before the QCoreApplication; the "
                                                "application's name, version and directory are "
                                                "unknown"));
        }
        preferencesPath = QDir::cleanPath(preferences);
        preferencesDirectory = localPath(preferencesPath);
        release = QCoreApplication::applicationVersion().toStdString();
        const QString binaries = QCoreApplication::applicationDirPath();
        binArchDir = localPath(binaries);
        root = localPath(QDir::cleanPath(binaries + QStringLiteral("/..")));
    }

    QString preferencesPath;
    std::string preferencesDirectory;
    std::string release;
    std::string root;
    std::string binArchDir;

    struct Feature {
        int value;
        void (*changed)(int);
    };
    std::mutex featuresMutex;
    std::map<std::string, Feature> features;
};

ApplicationContext::ApplicationContext()
    : d(new Private(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation))) {}

ApplicationContext::ApplicationContext(const QString &preferencesDirectory)
    : d(new Private(preferencesDirectory)) {}

ApplicationContext::~ApplicationContext() = default;

void ApplicationContext::registerFeature(const char *name, int value, void (*changed)(int)) {
    if (name == nullptr) {
        reportMisuse(kWhere, QStringLiteral("registerFeature without a name; ignored"));
        return;
    }
    std::lock_guard<std::mutex> lock(d->featuresMutex);
    d->features[name] = Private::Feature{value, changed};
}

bool ApplicationContext::isFeatureEnabled(const char *name) {
    if (name == nullptr) {
        return true;
    }
    std::lock_guard<std::mutex> lock(d->featuresMutex);
    const auto found = d->features.find(name);
    return found == d->features.end() || found->second.value != 0;
}

bool ApplicationContext::setFeatureValue(const char *name, int value) {
    void (*changed)(int) = nullptr;
    {
        std::lock_guard<std::mutex> lock(d->featuresMutex);
        const auto found = name == nullptr ? d->features.end() : d->features.find(name);
        if (found == d->features.end()) {
            return false;
        }
        found->second.value = value;
        changed = found->second.changed;
    }
    // Outside the lock: the function may well ask about features itself.
    if (changed != nullptr) {
        changed(value);
    }
    return true;
}

const char *ApplicationContext::getPreferencesDirectory(bool create) {
    if (d->preferencesPath.isEmpty()) {
        return nullptr;
    }
    if (create && !QDir().mkpath(d->preferencesPath)) {
        reportMisuse(kWhere, QStringLiteral("can't make the preferences directory '%1'")
                                 .arg(QDir::toNativeSeparators(d->preferencesPath)));
        return nullptr;
    }
    return d->preferencesDirectory.c_str();
}

const char *ApplicationContext::getRelease() {
    return d->release.c_str();
}

const char *ApplicationContext::getRoot() {
    return d->root.c_str();
}

const char *ApplicationContext::getBinArchDir() {
    return d->binArchDir.c_str();
}

const char *ApplicationContext::getCharacterEncoding() {
    return "UTF-8";
}

}  // namespace QtHost
}  // namespace VORT
