#include "support/Latch.h"
#include <vort/messaging/Mutex.h>
#include <vort/messaging/ReadWriteLock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using VORT::Mutex;
using VORT::MutexLocker;

// A recursive mutex nests on one thread and still excludes others; both kinds build their
// record at the first lock, where all first lockers must end up on one record.
TEST(MutexConcurrency, NestsAndExcludesAndFirstLockersShareOneRecord) {
    Mutex mutex(Mutex::Recursive);
    vort_test::Latch nested(1), release(1), entered(1);
    std::thread owner([&] {
        MutexLocker outer(mutex), inner(mutex);
        nested.countDown();
        release.wait();
    });
    ASSERT_TRUE(nested.wait());
    std::thread other([&] {
        MutexLocker locker(mutex);
        entered.countDown();
    });
    EXPECT_FALSE(entered.wait(std::chrono::milliseconds(30)));
    release.countDown();
    EXPECT_TRUE(entered.wait());
    owner.join();
    other.join();
    for (int round = 0; round < 10; ++round) {
        Mutex fresh(round % 2 ? Mutex::Recursive : Mutex::NonRecursive);
        int guarded = 0;
        vort_test::runTogether(4, [&](int) {
            for (int i = 0; i < 100; ++i) {
                MutexLocker lock(fresh);
                ++guarded;
            }
        });
        ASSERT_EQ(guarded, 400);
    }
}

TEST(ReadWriteLockConcurrency, ReadersShareAndWritersExclude) {
    VORT::ReadWriteLock lock;
    vort_test::Latch bothInside(2);
    int met = 0, total = 0;
    std::atomic<int> bad{0};
    vort_test::runTogether(2, [&](int) {
        lock.readLock();
        bothInside.countDown();
        const bool both = bothInside.wait();
        lock.unlock();
        lock.writeLock();
        met += both;
        lock.unlock();
    });
    EXPECT_EQ(met, 2);
    vort_test::runTogether(4, [&](int t) {
        for (int i = 0; i < 2000; ++i) {
            const bool reading = (i + t) % 4 != 0;
            reading ? lock.readLock() : lock.writeLock();
            bad += reading && total % 2 != 0;
            total += reading ? 0 : 2;
            lock.unlock();
        }
    });
    EXPECT_EQ(total * 10 + bad, 4 * 500 * 2 * 10);
}
