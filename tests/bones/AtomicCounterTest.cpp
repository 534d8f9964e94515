#include "support/Latch.h"
#include <vort/bones/AtomicCounter.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using VORT::AtomicCounter;

namespace {

// Zero before any constructor runs: the class has none.
AtomicCounter staticCounter;

}  // namespace

TEST(AtomicCounter, EveryOperationReturnsWhatItsNameSays) {
    EXPECT_TRUE(!staticCounter);
    AtomicCounter c;
    c.init(-1);
    EXPECT_TRUE(!c.ref() && c.ref());  // false when the new value is 0
    EXPECT_TRUE(!c.deref() && c.deref() && int(c) == -1);
    c = 0;
    EXPECT_EQ(++c, 1);  // prefix forms give the new value, postfix the old
    EXPECT_EQ(c++, 1);
    EXPECT_EQ(--c, 1);
    const AtomicCounter &constant = c;
    EXPECT_EQ(constant--, 1);  // the postfix forms write even through a const counter
    EXPECT_TRUE(c == 0 && !(c != 0) && !c);
    c = 4;
    EXPECT_TRUE(!c.testAndSet(5, 6) && c == 4 && c.testAndSet(4, 6));
    EXPECT_TRUE(!c.testAndSetAcquire(4, 1) && c.testAndSetAcquire(6, 1));
    EXPECT_TRUE(!c.testAndSetRelease(6, 2) && c.testAndSetRelease(1, 2));
    EXPECT_EQ(c.exchange(9), 2);
    AtomicCounter d;
    d = c;
    EXPECT_EQ(d.m_value, 9);
    for (int value : {-1, 0, 1, 2}) {
        d.init(value);
        EXPECT_EQ(VORT::isOnlyReference(d), value == 1);
    }
}

TEST(AtomicCounterConcurrency, IncrementsAndSwapsAreNeverLost) {
    AtomicCounter counter, swapped, zeroes;
    counter = swapped = zeroes = 0;
    const int threads = 4, rounds = 100000;
    vort_test::Latch start(threads);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&] {
            start.countDown();
            start.wait();
            for (int i = 0; i < rounds; ++i) {
                counter.ref();
                ++counter;
                counter++;
                if (!counter.deref()) {
                    zeroes.ref();  // can't happen: the count only rises overall
                }
                for (int seen = swapped; !swapped.testAndSet(seen, seen + 1); seen = swapped) {
                }
            }
        });
    }
    for (std::thread &w : workers) {
        w.join();
    }
    EXPECT_EQ(int(counter), threads * rounds * 2);
    EXPECT_EQ(int(swapped), threads * rounds);
    EXPECT_EQ(int(zeroes), 0);
}
