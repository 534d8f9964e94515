#include "Thread_p.h"
#include <hsl/hsl.h>
#include <vort/bones/AtomicCounter.h>
#include <vort/messaging/Mutex.h>
#include <vort/messaging/Packet.h>
#include <vort/messaging/ReadWriteLock.h>
#include <vort/messaging/Thread.h>

#include <deque>
#include <map>
#include <utility>

namespace VTMS {

namespace {

// The key of the slot on which each thread's record hangs. Its clean-up function is null: the
// record of an ended thread stays where connections and the registry can reach it.
struct ThreadSlot {
    ThreadSlot() : key(Corvane::System::tss_create(nullptr)) {}
    ~ThreadSlot() { Corvane::System::tss_delete(key); }
    ThreadSlot(const ThreadSlot &) = delete;
    ThreadSlot &operator=(const ThreadSlot &) = delete;

    const Corvane::System::tss_key key;
};

ThreadSlot &threadSlot() {
    static ThreadSlot slot;
    return slot;
}

struct Registry {
    VORT::ReadWriteLock lock;
    std::map<std::string, Thread *> names;
};

Registry &registry() {
    static Registry instance;
    return instance;
}

// Every record that `getCurrentThread` made, on a list that is never freed. The records live
// for the whole process by design; the list is what still reaches those of ended threads, which
// no slot holds any more, so that leak checkers see them as the live objects they are.
struct MadeRecord {
    Thread *thread;
    MadeRecord *next;
};

MadeRecord *g_madeRecords = nullptr;

void rememberRecord(Thread *thread) {
    MadeRecord *const made =
        new MadeRecord{thread, __atomic_load_n(&g_madeRecords, __ATOMIC_RELAXED)};
    while (!__atomic_compare_exchange_n(&g_madeRecords, &made->next, made, true, __ATOMIC_RELEASE,
                                        __ATOMIC_RELAXED)) {
    }
}

}  // namespace

void ensureThreadSlot() {
    threadSlot();
}

struct Thread::Private {
    Private() : m_mutex(VORT::Mutex::NonRecursive) { m_shares.init(1); }
    // Destroys the queued packets last to first, as a `Thread` going away does.
    ~Private() {
        while (!m_queue.empty()) {
            m_queue.pop_back();
        }
    }

    void setProcessing(bool processing) {
        __atomic_store_n(&m_processing, processing, __ATOMIC_RELAXED);
    }

    // Delivers the first packet; called and returns with `m_mutex` held. The delivery works on
    // a copy with its own references, because the queued packet stays in the queue meanwhile and
    // a nested `process` on this thread may deliver and destroy it.
    void deliverFirst() {
        setProcessing(true);
        ConnectedPacket first(m_queue.front());
        m_mutex.unlock();
        first.deliver();
        m_mutex.lock();
        if (!m_queue.empty()) {
            m_queue.pop_front();
        }
        setProcessing(false);
    }

    std::string m_name;
    VORT::Mutex m_mutex;
    std::deque<ConnectedPacket> m_queue;
    WakeFunction m_wakeFunction = nullptr;
    bool m_processing = false;
    // `Thread` objects on this record (more than one only after an assignment).
    VORT::AtomicCounter m_shares;
};

Thread::Thread() : m_impl(new Private) {}

Thread::~Thread() {
    if (!m_impl->m_shares.deref()) {
        delete m_impl;
    }
}

Thread &Thread::operator=(const Thread &other) {
    if (m_impl != other.m_impl) {
        other.m_impl->m_shares.ref();
        if (!m_impl->m_shares.deref()) {
            delete m_impl;
        }
        m_impl = other.m_impl;
    }
    return *this;
}

Thread *Thread::getCurrentThread() {
    const Corvane::System::tss_key key = threadSlot().key;
    if (void *const existing = Corvane::System::tss_get(key)) {
        return static_cast<Thread *>(existing);
    }
    Thread *const made = new Thread;
    rememberRecord(made);
    Corvane::System::tss_set(key, made);
    return made;
}

Thread *Thread::getNamedThread(const std::string &name) {
    Registry &names = registry();
    {
        VORT::ReadLocker lock(names.lock);
        const auto found = names.names.find(name);
        if (found != names.names.end()) {
            return found->second;
        }
    }
    // A miss enters the name. Under the write lock, so that two first lookups may race; a
    // registration in between is kept.
    VORT::WriteLocker lock(names.lock);
    return names.names.emplace(name, nullptr).first->second;
}

void Thread::registerThread(const std::string &name, WakeFunction wake) {
    Registry &names = registry();
    VORT::WriteLocker lock(names.lock);
    Thread *const thread = getCurrentThread();
    {
        VORT::MutexLocker named(thread->m_impl->m_mutex);
        thread->m_impl->m_name = name;
        thread->m_impl->m_wakeFunction = wake;
    }
    names.names[name] = thread;
}

std::string Thread::getName() {
    VORT::MutexLocker lock(m_impl->m_mutex);
    return m_impl->m_name;
}

void Thread::post(const ConnectedPacket &packet) {
    VORT::MutexLocker lock(m_impl->m_mutex);
    m_impl->m_queue.push_back(packet);
    if (m_impl->m_wakeFunction != nullptr) {
        m_impl->m_wakeFunction();
    }
}

void Thread::post(ConnectedPacket &&packet) {
    VORT::MutexLocker lock(m_impl->m_mutex);
    m_impl->m_queue.push_back(std::move(packet));
    if (m_impl->m_wakeFunction != nullptr) {
        m_impl->m_wakeFunction();
    }
}

void Thread::process() {
    Private *const d = m_impl;
    VORT::MutexLocker lock(d->m_mutex);
    while (!d->m_queue.empty()) {
        d->deliverFirst();
    }
}

void Thread::processOne() {
    Private *const d = m_impl;
    VORT::MutexLocker lock(d->m_mutex);
    if (!d->m_queue.empty()) {
        d->deliverFirst();
    }
}

bool Thread::processingMessages() const {
    return __atomic_load_n(&m_impl->m_processing, __ATOMIC_RELAXED);
}

}  // namespace VTMS
