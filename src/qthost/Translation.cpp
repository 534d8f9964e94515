#include "Report_p.h"
#include <vort/qthost/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QString>

#include <cstring>
#include <forward_list>
#include <mutex>
#include <unordered_map>

namespace VORT {
namespace QtHost {

struct Translation::Private {
    std::string context;
    std::mutex mutex;
    // Every translation handed out, per source text. Nodes never move and are never dropped, so
    // a returned pointer stays valid while the service lives.
    std::unordered_map<std::string, std::forward_list<std::string>> kept;
};

Translation::Translation(std::string context) : d(new Private) {
    d->context = std::move(context);
}

Translation::~Translation() = default;

const std::string &Translation::context() const {
    return d->context;
}

const char *Translation::translate(const char *text) {
    if (text == nullptr) {
        reportMisuse("VORT::QtHost::Translation", QStringLiteral("translate of a null text"));
        return nullptr;
    }
    const QByteArray translated = QCoreApplication::translate(d->context.c_str(), text).toUtf8();
    if (std::strcmp(translated.constData(), text) == 0) {
        return text;
    }
    std::lock_guard<std::mutex> lock(d->mutex);
    std::forward_list<std::string> &texts = d->kept[text];
    for (std::string const &known : texts) {
        if (known == translated.constData()) {
            return known.c_str();
        }
    }
    texts.emplace_front(translated.constData());
    return texts.front().c_str();
}

}  // namespace QtHost
}  // namespace VORT
