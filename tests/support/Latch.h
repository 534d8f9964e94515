// Test support: a one-shot latch whose waits are bounded, so that a test whose other thread
// never arrives fails instead of hanging.
#ifndef VORT_TESTS_SUPPORT_LATCH_H
#define VORT_TESTS_SUPPORT_LATCH_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vort_test {

class Latch {
public:
    explicit Latch(int count) : m_count(count) {}

    void countDown() {
        std::lock_guard<std::mutex> guard(m_lock);
        if (m_count > 0 && --m_count == 0) {
            m_done.notify_all();
        }
    }

    // True once the count has reached zero; false if `limit` passed first.
    bool wait(std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        std::unique_lock<std::mutex> guard(m_lock);
        return m_done.wait_for(guard, limit, [this] { return m_count == 0; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_done;
    int m_count;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_LATCH_H
