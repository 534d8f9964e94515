#include "support/Latch.h"
#include <vort/messaging/Mutex.h>
#include <vort/messaging/ReadWriteLock.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using VORT::Mutex;
using VORT::MutexLocker;
using VORT::ReadWriteLock;

TEST(MutexConcurrency, RecursiveMutexNestsOnOneThreadAndStillExcludesOthers) {
    EXPECT_EQ(int(Mutex::Recursive) * 10 + int(Mutex::NonRecursive), 1);  // the values of Qt's
    Mutex mutex(Mutex::Recursive);
    vort_test::Latch nested(1);
    vort_test::Latch release(1);
    std::thread owner([&] {
        mutex.lock();
        mutex.lock();
        nested.countDown();
        release.wait();
        mutex.unlock();
        mutex.unlock();
    });
    ASSERT_TRUE(nested.wait());
    vort_test::Latch entered(1);
    std::thread other([&] {
        MutexLocker locker(mutex);
        entered.countDown();
    });
    EXPECT_FALSE(entered.wait(std::chrono::milliseconds(30)))
        << "a second thread entered while the owner held the mutex twice";
    release.countDown();
    EXPECT_TRUE(entered.wait());
    owner.join();
    other.join();
}

TEST(ReadWriteLockConcurrency, ReadersShareAndWritersExclude) {
    ReadWriteLock lock;
    // Two readers inside at once: each waits, holding its read lock, for the other to arrive.
    vort_test::Latch bothInside(2);
    auto reader = [&] {
        lock.readLock();
        bothInside.countDown();
        const bool met = bothInside.wait();
        lock.unlock();
        return met;
    };
    bool firstMet = false;
    bool secondMet = false;
    std::thread first([&] { firstMet = reader(); });
    std::thread second([&] { secondMet = reader(); });
    first.join();
    second.join();
    EXPECT_TRUE(firstMet);
    EXPECT_TRUE(secondMet);

    long long total = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 5000; ++i) {
                if ((i + t) % 4 == 0) {
                    lock.writeLock();
                    total += 2;
                    lock.unlock();
                } else {
                    lock.readLock();
                    EXPECT_EQ(total % 2, 0);
                    lock.unlock();
                }
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(total, 4 * 1250 * 2);
}
