#include "support/Latch.h"
#include <vort/bones/StringTokenizer.h>
#include <vort/bones/UUID.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

// The tokenizer's numbers share one C locale, made on first use, and UUIDs come from one
// generator: threads that start together race both from the first call on.
TEST(TextConcurrency, NumbersAndUuidsFromManyThreadsAtOnce) {
    constexpr int kThreads = 4;
    vort_test::Latch start(kThreads);
    std::vector<std::vector<std::string>> uuids(kThreads);
    std::vector<double> sums(kThreads, 0.0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.countDown();
            start.wait();
            for (int i = 0; i < 200; ++i) {
                VORT::StringTokenizer tokens("1.5;2", ";", false, false);
                sums[t] += tokens.nextFloatToken() + tokens.nextIntToken();
                uuids[t].push_back(VORT::UUID::createUuidAsString());
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::set<std::string> distinct;
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(sums[t], 700.0);
        distinct.insert(uuids[t].begin(), uuids[t].end());
    }
    EXPECT_EQ(distinct.size(), std::size_t(kThreads * 200));
}
