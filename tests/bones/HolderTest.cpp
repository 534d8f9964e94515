#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/bones/AtomicCounter.h>
#include <vort/bones/Holder.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using VORT::AtomicCounter;
using VORT::Holder;
using VORT::ReferencedTemplate;

namespace {

// A counted object that counts its ends and may own a handle on another.
template <typename Count>
class Node : public ReferencedTemplate<Count> {
public:
    explicit Node(std::atomic<int> *ends = nullptr) : m_ends(ends) {}
    Node(Node const &) = default;
    Node &operator=(Node const &) = default;
    // The count as it stands, read without disturbing it.
    int count() {
        this->incrementReference();
        return this->decrementReference();
    }
    Holder<Node> child;

protected:
    ~Node() override {
        if (m_ends != nullptr) {
            ++*m_ends;
        }
    }

private:
    std::atomic<int> *m_ends;
};
using Plain = Node<unsigned int>;
using Shared = Node<AtomicCounter>;

}  // namespace

TEST(Holder, CountsHandlesAndDestroysAtZeroEvenWhenTheOldObjectHoldsTheNew) {
    std::atomic<int> ends{0};
    Plain *node = new Plain(&ends);
    {
        Holder<Plain> first(node), second(first), third;
        third = second;
        EXPECT_TRUE(first == second && third == node && third.get() == node && &*third == node);
        third = third;  // self-assignment, by handle and by pointer
        third = node;
        second = nullptr;
        EXPECT_TRUE(!second && second == nullptr && bool(first) && node->count() == 2);
        EXPECT_EQ(ends.load(), 0);
    }
    EXPECT_EQ(ends.load(), 1);

    // The assignment counts the new object before it lets go of the old, which holds the last
    // reference to the new one, by handle or by pointer.
    std::atomic<int> children{0};
    for (bool byPointer : {false, true}) {
        Holder<Plain> handle(new Plain(&ends));
        handle->child = new Plain(&children);
        byPointer ? void(handle = handle->child.get()) : void(handle = handle->child);
        EXPECT_EQ(handle->count(), 1);
    }
    EXPECT_EQ(ends * 10 + children, 32);
}

TEST(ReferencedTemplate, CopiesOfAPlainCountStartAtZeroAndSharedOnesTakeTheCount) {
    Holder<Plain> a(new Plain), a2(a), copy(new Plain(*a));
    Holder<Shared> s(new Shared), s2(s);
    Holder<Shared> sharedCopy(new Shared(*s));  // took the count of 2, then the handle's
    EXPECT_EQ(copy->count() * 10 + sharedCopy->count(), 13);
    sharedCopy->decrementReference();
    sharedCopy->decrementReference();

    // The single-thread check is debug code: it always asserts, and changes nothing.
    vort_test::PlatformCapture platform;
    EXPECT_TRUE(ReferencedTemplate<unsigned int>::ensureSingleThread(a.get(), true));
    ASSERT_EQ(platform.assertions().size(), 1u);
    const auto report = platform.assertions()[0];
    EXPECT_EQ(report.expression + report.file + std::to_string(report.line) + report.message,
              ": Forced Assertion.\\bones\\Holder47Debug code, this shouldn't be run in release.");
    EXPECT_EQ(a->count(), 2);
}

TEST(Holder, AFactoryStartsUncounted) {
    std::atomic<int> ends{0};
    class Factory : public VORT::SingletonFactoryBase {
    public:
        explicit Factory(std::atomic<int> *ends) : m_ends(ends) {}
        ~Factory() override { ++*m_ends; }
        std::atomic<int> *m_ends;
    };
    Holder<VORT::SingletonFactoryBase> handle(new Factory(&ends));
    EXPECT_EQ(handle->incrementReference(), 2);  // a factory starts uncounted
    handle->decrementReference();
    handle = nullptr;
    EXPECT_EQ(ends.load(), 1);
}

TEST(HolderConcurrency, SharedObjectEndsOnceWhateverThreadDropsLast) {
    for (int trial = 0; trial < 20; ++trial) {
        std::atomic<int> ends{0};
        Holder<Shared> root(new Shared(&ends));
        std::vector<Holder<Shared>> mine(4, root);
        // The last thread to start drops the root while the others are still copying theirs.
        vort_test::runTogether(5, [&](int t) {
            if (t == 4) {
                root = nullptr;
                return;
            }
            std::vector<Holder<Shared>> copies;
            for (int i = 0; i < 20000; ++i) {
                i % 9 ? copies.push_back(mine[t]) : copies.clear();
            }
            mine[t] = nullptr;
        });
        EXPECT_EQ(ends.load(), 1);
    }
}

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
    for (int value : {0, 1, 2}) {
        d.init(value);
        EXPECT_EQ(VORT::isOnlyReference(d), value == 1);
    }
}

TEST(AtomicCounterConcurrency, IncrementsAndSwapsAreNeverLost) {
    AtomicCounter counter, swapped, zeroes;
    counter = swapped = zeroes = 0;
    const int threads = 4, rounds = 100000;
    vort_test::runTogether(threads, [&](int) {
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
    EXPECT_EQ(int(counter), threads * rounds * 2);
    EXPECT_EQ(int(swapped), threads * rounds);
    EXPECT_EQ(int(zeroes), 0);
}
