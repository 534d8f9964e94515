#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/bones/Holder.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using VORT::AtomicCounter;
using VORT::Holder;
using VORT::ReferencedTemplate;

namespace {

// A counted object that records its end and may own a handle on another.
class Node : public ReferencedTemplate<unsigned int> {
public:
    explicit Node(int *destroyed = nullptr) : m_destroyed(destroyed) {}
    Node(Node const &) = default;
    Node &operator=(Node const &) = default;

    // The count as it stands, read without disturbing it.
    int count() {
        incrementReference();
        return decrementReference();
    }

    Holder<Node> child;

protected:
    ~Node() override {
        if (m_destroyed != nullptr) {
            ++*m_destroyed;
        }
    }

private:
    int *m_destroyed;
};

class SharedNode : public ReferencedTemplate<AtomicCounter> {
public:
    explicit SharedNode(std::atomic<int> *destroyed = nullptr) : m_destroyed(destroyed) {}
    SharedNode(SharedNode const &) = default;
    SharedNode &operator=(SharedNode const &) = default;

    int count() {
        incrementReference();
        return decrementReference();
    }

protected:
    ~SharedNode() override {
        if (m_destroyed != nullptr) {
            ++*m_destroyed;
        }
    }

private:
    std::atomic<int> *m_destroyed;
};

// Ends its life by recording the call instead of deleting itself.
class Pooled : public ReferencedTemplate<unsigned int> {
public:
    int destroyCalls = 0;
    ~Pooled() override = default;

protected:
    void destroy() override { ++destroyCalls; }
    template <typename T>
    friend class VORT::Holder;
};

class Factory : public VORT::SingletonFactoryBase {
public:
    explicit Factory(int *destroyed) : m_destroyed(destroyed) {}
    ~Factory() override { ++*m_destroyed; }

private:
    int *m_destroyed;
};

}  // namespace

TEST(Holder, CountsHandlesAndDestroysAtZero) {
    int destroyed = 0;
    Node *node = new Node(&destroyed);
    EXPECT_EQ(node->count(), 0);
    {
        Holder<Node> first(node);
        EXPECT_EQ(node->count(), 1);
        {
            Holder<Node> second(first);
            Holder<Node> third;
            third = second;
            EXPECT_EQ(node->count(), 3);
            EXPECT_TRUE(first == second);
            EXPECT_TRUE(third == node);
            EXPECT_EQ(third.get(), node);
            EXPECT_EQ(&*third, node);
        }
        EXPECT_EQ(node->count(), 1);
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(Holder, EmptyHandles) {
    Holder<Node> none;
    EXPECT_FALSE(none);
    EXPECT_TRUE(!none);
    EXPECT_TRUE(none == nullptr);
    Holder<Node> fromNull(nullptr);
    EXPECT_TRUE(fromNull == none);

    int destroyed = 0;
    Holder<Node> emptied(new Node(&destroyed));
    EXPECT_TRUE(emptied);
    emptied = nullptr;
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(emptied == nullptr);
    emptied = Holder<Node>();
    EXPECT_EQ(destroyed, 1);
}

TEST(Holder, SelfAssignmentKeepsTheLastReference) {
    int destroyed = 0;
    Holder<Node> only(new Node(&destroyed));
    Holder<Node> &alias = only;
    only = alias;
    only = only.get();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(only->count(), 1);

    // Another handle on the same object: the count does not move either way.
    Holder<Node> other(only);
    only = other;
    EXPECT_EQ(only->count(), 2);
}

TEST(Holder, CountsTheNewObjectBeforeReleasingTheOld) {
    // The old object holds the last reference to the new one, through the very handle that
    // is the source of the assignment.
    int parents = 0;
    int children = 0;
    Holder<Node> handle(new Node(&parents));
    handle->child = new Node(&children);
    handle = handle->child;
    EXPECT_EQ(parents, 1);
    EXPECT_EQ(children, 0);
    EXPECT_EQ(handle->count(), 1);

    // The same through a raw pointer.
    Holder<Node> grandparent(new Node(&parents));
    grandparent->child = new Node(&children);
    grandparent = grandparent->child.get();
    EXPECT_EQ(parents, 2);
    EXPECT_EQ(children, 0);
    EXPECT_EQ(grandparent->count(), 1);

    handle = nullptr;
    grandparent = nullptr;
    EXPECT_EQ(children, 2);
}

TEST(Holder, SourceHoldingTheLastReferenceToTheAssigneesOwner) {
    int destroyed = 0;
    Holder<Node> source(new Node(&destroyed));
    Node *owner = source.get();
    // The assignee lives in the object that only the source keeps alive.
    owner->child = source;
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(owner->count(), 2);
    source = nullptr;
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(owner->count(), 1);
    // Break the cycle from outside before the last handle goes.
    source = owner;
    owner->child = nullptr;
    EXPECT_EQ(owner->count(), 1);
    source = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(Holder, CallsTheVirtualDestroy) {
    Pooled pooled;
    {
        Holder<Pooled> a(&pooled);
        Holder<Pooled> b(a);
        a = nullptr;
        EXPECT_EQ(pooled.destroyCalls, 0);
    }
    EXPECT_EQ(pooled.destroyCalls, 1);
    Holder<Pooled> again(&pooled);
    again = Holder<Pooled>();
    EXPECT_EQ(pooled.destroyCalls, 2);
}

TEST(ReferencedTemplate, SingleThreadCopiesStartAtZeroAndAssignmentTakesTheCount) {
    int destroyed = 0;
    Holder<Node> a(new Node(&destroyed));
    Holder<Node> a2(a);
    Holder<Node> a3(a);
    EXPECT_EQ(a->count(), 3);

    Holder<Node> copy(new Node(*a));
    EXPECT_EQ(copy->count(), 1);

    Holder<Node> target(new Node(&destroyed));
    *target = *a;
    EXPECT_EQ(target->count(), 3);
    // Put the count back, or the handle would never end the object.
    target->decrementReference();
    target->decrementReference();
    EXPECT_EQ(target->count(), 1);
}

TEST(ReferencedTemplate, SharedCopiesTakeTheCount) {
    std::atomic<int> destroyed{0};
    Holder<SharedNode> a(new SharedNode(&destroyed));
    Holder<SharedNode> a2(a);
    EXPECT_EQ(a->count(), 2);

    SharedNode *copy = new SharedNode(*a);
    EXPECT_EQ(copy->count(), 2);
    copy->decrementReference();
    copy->decrementReference();
    Holder<SharedNode> copyHolder(copy);
    EXPECT_EQ(copy->count(), 1);

    Holder<SharedNode> target(new SharedNode(&destroyed));
    *target = *a;
    EXPECT_EQ(target->count(), 2);
    target->decrementReference();
    EXPECT_EQ(target->incrementReference(), 2);
    EXPECT_EQ(target->decrementReference(), 1);
}

TEST(ReferencedTemplate, EnsureSingleThreadAlwaysAsserts) {
    vort_test::PlatformCapture platform;
    Holder<Node> node(new Node);
    EXPECT_TRUE(ReferencedTemplate<unsigned int>::ensureSingleThread(node.get(), true));
    EXPECT_TRUE(ReferencedTemplate<unsigned int>::ensureSingleThread(nullptr, false));
    const auto reports = platform.assertions();
    ASSERT_EQ(reports.size(), 2u);
    for (auto const &report : reports) {
        EXPECT_EQ(report.expression, ": Forced Assertion");
        EXPECT_EQ(report.file, ".\\bones\\Holder");
        EXPECT_EQ(report.line, 47);
        EXPECT_TRUE(report.hasMessage);
        EXPECT_EQ(report.message, "Debug code, this shouldn't be run in release.");
    }
    EXPECT_EQ(node->count(), 1);
}

TEST(SingletonFactoryBase, StartsUncountedAndEndsThroughItsHandle) {
    int destroyed = 0;
    Factory *factory = new Factory(&destroyed);
    EXPECT_EQ(factory->incrementReference(), 1);
    EXPECT_EQ(factory->decrementReference(), 0);
    {
        Holder<VORT::SingletonFactoryBase> handle(factory);
        Holder<VORT::SingletonFactoryBase> again(handle);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(HolderConcurrency, SharedObjectEndsOnceWhateverThreadDropsLast) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    for (int trial = 0; trial < 20; ++trial) {
        std::atomic<int> destroyed{0};
        Holder<SharedNode> root(new SharedNode(&destroyed));
        vort_test::Latch start(kThreads);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&root, &start] {
                Holder<SharedNode> mine(root);
                start.countDown();
                start.wait();
                std::vector<Holder<SharedNode>> copies;
                for (int i = 0; i < kRounds; ++i) {
                    copies.push_back(mine);
                    if (copies.size() > 8) {
                        copies.clear();
                    }
                }
            });
        }
        ASSERT_TRUE(start.wait());
        // Drop the first handle while the threads are still copying theirs.
        root = nullptr;
        for (auto &thread : threads) {
            thread.join();
        }
        EXPECT_EQ(destroyed.load(), 1);
    }
}
