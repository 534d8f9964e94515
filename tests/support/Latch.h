// Test support: a one-shot latch whose waits are bounded, so that a test whose other thread
// never arrives fails instead of hanging.
#ifndef VORT_TESTS_SUPPORT_LATCH_H
#define VORT_TESTS_SUPPORT_LATCH_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

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

// Runs `body(t)` for t in [0, count) on as many threads, released together by a latch, and
// joins them. A thread whose partners never arrive skips its body, so the caller's checks on
// what the bodies leave fail instead of the test hanging.
template <typename Body>
void runTogether(int count, Body const &body) {
    Latch start(count);
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t) {
        threads.emplace_back([&start, &body, t] {
            start.countDown();
            if (start.wait()) {
                body(t);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_LATCH_H
