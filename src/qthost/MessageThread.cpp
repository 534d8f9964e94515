#include "Report_p.h"
#include <vort/messaging/Thread.h>
#include <vort/qthost/MessageThread.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QThread>

#include <array>
#include <atomic>
#include <mutex>
#include <utility>

namespace VORT {
namespace QtHost {
namespace {

const char *const kWhere = "VORT::QtHost::MessageThread";

// One registered thread. A wake function takes no argument, so each slot has a wake function of
// its own (`wakeSlot<N>`) that knows which thread to wake.
struct Slot {
    // Guards `context` and `record` against the wake-ups of posting threads.
    std::mutex mutex;
    // Lives on the registered thread and receives its queued `process` calls; null while the
    // slot is free.
    QObject *context = nullptr;
    VTMS::Thread *record = nullptr;
    // A wake-up is on its way; later ones fold into it.
    std::atomic<bool> pending{false};
    // The rest belongs to `g_slotsMutex`, or to the registered thread.
    QThread *owner = nullptr;
    int users = 0;
    // The registered thread is inside one of the context's queued calls.
    std::atomic<bool> delivering{false};

    void wake() {
        std::lock_guard<std::mutex> lock(mutex);
        if (context == nullptr || pending.exchange(true)) {
            return;
        }
        Slot *const self = this;
        VTMS::Thread *const target = record;
        QMetaObject::invokeMethod(
            context,
            [self, target] {
                // Cleared before the queue is emptied, so a post that comes during `process`
                // wakes the thread again rather than being missed.
                self->pending = false;
                self->delivering = true;
                target->process();
                self->delivering = false;
            },
            Qt::QueuedConnection);
    }
};

std::mutex g_slotsMutex;
Slot g_slots[MessageThread::kMaxThreads];

template <std::size_t N>
void wakeSlot() {
    g_slots[N].wake();
}

template <std::size_t... N>
constexpr std::array<VTMS::Thread::WakeFunction, sizeof...(N)> makeWakeFunctions(
    std::index_sequence<N...>) {
    return {{&wakeSlot<N>...}};
}

constexpr auto kWakeFunctions =
    makeWakeFunctions(std::make_index_sequence<MessageThread::kMaxThreads>());

QString quoted(const std::string &name) {
    return QLatin1Char('\'') + QString::fromStdString(name) + QLatin1Char('\'');
}

}  // namespace

MessageThread::MessageThread(const std::string &name) : m_name(name) {
    if (QCoreApplication::instance() == nullptr) {
        reportMisuse(kWhere, QStringLiteral("thread %1 made before the QCoreApplication; it is "
                                            "not registered")
                                 .arg(quoted(name)));
        return;
    }
    if (name.empty()) {
        reportMisuse(kWhere, QStringLiteral("a message thread needs a name; the calling thread "
                                            "is not registered"));
        return;
    }
    QThread *const current = QThread::currentThread();
    std::lock_guard<std::mutex> lock(g_slotsMutex);
    int chosen = -1;
    for (int i = 0; i < kMaxThreads; ++i) {
        if (g_slots[i].users > 0 && g_slots[i].owner == current) {
            chosen = i;  // a second name for a thread registered already: one wake-up serves
            break;
        }
        if (chosen < 0 && g_slots[i].users == 0) {
            chosen = i;
        }
    }
    if (chosen < 0) {
        reportMisuse(kWhere, QStringLiteral("thread %1 not registered: %2 threads are registered "
                                            "already, the most the kit serves at once")
                                 .arg(quoted(name))
                                 .arg(kMaxThreads));
        return;
    }
    Slot &slot = g_slots[chosen];
    if (slot.users++ == 0) {
        slot.owner = current;
        slot.delivering = false;
        slot.pending = false;
        QObject *const context = new QObject;  // on the calling thread
        std::lock_guard<std::mutex> slotLock(slot.mutex);
        slot.record = VTMS::Thread::getCurrentThread();
        slot.context = context;
    }
    m_thread = slot.record;
    m_slot = chosen;
    VTMS::Thread::registerThread(name, kWakeFunctions[static_cast<std::size_t>(chosen)]);
}

MessageThread::~MessageThread() {
    if (m_slot < 0) {
        return;
    }
    Slot &slot = g_slots[m_slot];
    const bool ownThread = QThread::currentThread() == slot.owner;
    if (!ownThread) {
        reportMisuse(kWhere, QStringLiteral("thread %1 unregistered on %2, not on the thread it "
                                            "registered (%3); its wake-ups are cut")
                                 .arg(quoted(m_name), describeThread(QThread::currentThread()),
                                      describeThread(slot.owner)));
    }
    QObject *context = nullptr;
    bool delivering = false;
    {
        std::lock_guard<std::mutex> lock(g_slotsMutex);
        if (--slot.users > 0) {
            return;
        }
        delivering = slot.delivering;
        slot.owner = nullptr;
        std::lock_guard<std::mutex> slotLock(slot.mutex);
        context = slot.context;
        slot.context = nullptr;
        slot.record = nullptr;
    }
    if (!ownThread || delivering) {
        // Not now: this may be the middle of the context's own event.
        context->deleteLater();
        return;
    }
    // The record outlives the registration, so take the wake function back, unless another
    // thread holds the name by now. This must not run under a slot's lock: a post holds the
    // record's lock while it wakes, and registering takes that lock too.
    if (VTMS::Thread::getNamedThread(m_name) == m_thread) {
        VTMS::Thread::registerThread(m_name, nullptr);
    }
    delete context;
}

}  // namespace QtHost
}  // namespace VORT
