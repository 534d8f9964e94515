#include "support/Latch.h"
#include <vort/bones/AtomicCounter.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using VORT::AtomicCounter;

namespace {

// Zero before any constructor runs: the class has none.
AtomicCounter staticCounter;

// The class has no copy constructor of its own, so counters are made in place.
#define COUNTER(name, value) \
    AtomicCounter name;      \
    name.init(value)

}  // namespace

TEST(AtomicCounter, StaticCountersStartAtZero) {
    EXPECT_TRUE(!staticCounter);
    EXPECT_EQ(int(staticCounter), 0);
}

TEST(AtomicCounter, RefAndDerefReportWhetherTheNewValueIsZero) {
    COUNTER(c, -1);
    EXPECT_FALSE(c.ref());
    EXPECT_EQ(int(c), 0);
    EXPECT_TRUE(c.ref());
    EXPECT_EQ(int(c), 1);
    EXPECT_FALSE(c.deref());
    EXPECT_EQ(int(c), 0);
    EXPECT_TRUE(c.deref());
    EXPECT_EQ(int(c), -1);
}

TEST(AtomicCounter, PrefixGivesTheNewValueAndPostfixTheOld) {
    COUNTER(c, 0);
    EXPECT_EQ(++c, 1);
    EXPECT_EQ(c++, 1);
    EXPECT_EQ(int(c), 2);
    EXPECT_EQ(--c, 1);
    EXPECT_EQ(c--, 1);
    EXPECT_EQ(int(c), 0);

    COUNTER(zero, 0);
    EXPECT_EQ(zero++, 0);
    EXPECT_EQ(int(zero), 1);
    COUNTER(seven, 7);
    const AtomicCounter &constant = seven;
    EXPECT_EQ(constant--, 7);  // the postfix forms write even through a const counter
    EXPECT_EQ(int(constant), 6);
}

TEST(AtomicCounter, TestAndSetSwapsOnlyOnTheExpectedValue) {
    COUNTER(c, 4);
    EXPECT_FALSE(c.testAndSet(5, 6));
    EXPECT_EQ(int(c), 4);
    EXPECT_TRUE(c.testAndSet(4, 6));
    EXPECT_EQ(int(c), 6);
    EXPECT_FALSE(c.testAndSetAcquire(4, 1));
    EXPECT_TRUE(c.testAndSetAcquire(6, 1));
    EXPECT_FALSE(c.testAndSetRelease(6, 2));
    EXPECT_TRUE(c.testAndSetRelease(1, 2));
    EXPECT_EQ(int(c), 2);
    EXPECT_EQ(c.exchange(9), 2);
    EXPECT_EQ(int(c), 9);
}

TEST(AtomicCounter, PlainStoresReadsAndComparisons) {
    COUNTER(c, 3);
    EXPECT_TRUE(c == 3);
    EXPECT_FALSE(c != 3);
    EXPECT_FALSE(!c);
    c = 0;
    EXPECT_TRUE(!c);
    COUNTER(d, 12);
    c = d;
    EXPECT_EQ(int(c), 12);
    EXPECT_EQ(c.m_value, 12);
}

TEST(AtomicCounter, IsOnlyReferenceMeansACountOfOne) {
    COUNTER(c, 1);
    EXPECT_TRUE(VORT::isOnlyReference(c));
    c.ref();
    EXPECT_FALSE(VORT::isOnlyReference(c));
    c.init(0);
    EXPECT_FALSE(VORT::isOnlyReference(c));
    c.init(-1);
    EXPECT_FALSE(VORT::isOnlyReference(c));
}

TEST(AtomicCounterConcurrency, IncrementsAndSwapsAreNeverLost) {
    COUNTER(counter, 0);
    COUNTER(casCounter, 0);
    COUNTER(zeroes, 0);
    const int threads = 4;
    const int rounds = 100000;
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
                for (;;) {
                    const int seen = casCounter;
                    if (casCounter.testAndSet(seen, seen + 1)) {
                        break;
                    }
                }
            }
        });
    }
    for (std::thread &w : workers) {
        w.join();
    }
    EXPECT_EQ(int(counter), threads * rounds * 2);
    EXPECT_EQ(int(casCounter), threads * rounds);
    EXPECT_EQ(int(zeroes), 0);
}
