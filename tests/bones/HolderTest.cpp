#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/bones/AtomicCounter.h>
#include <vort/bones/Holder.h>
#include <vort/bones/ModuleObject.h>
#include <vort/bones/TWrappedObject.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace VORT;

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

std::vector<std::string> g_released;

struct Item {
    std::string name;
    ModuleObjectDeleter *enterLate = nullptr;  // a deleter to enter a new object into as it ends
    ModuleObject **late = nullptr;
};

struct RecordingDeleter {
    void operator()(Item *item) const;
};
using ItemEntry = ModuleObjectImpl<Item *, RecordingDeleter>;

void RecordingDeleter::operator()(Item *item) const {
    g_released.push_back(item->name);
    if (item->enterLate != nullptr) {
        *item->late = new ItemEntry(new Item{"late"});
        item->enterLate->append(*item->late);
    }
    delete item;
}

// A pointer-like value whose token tells when the entry that holds it has been freed.
struct Probe {
    Item *item;
    std::shared_ptr<int> token;
    explicit operator bool() const { return item != nullptr; }
};
struct ProbeDeleter {
    void operator()(Probe const &probe) const { RecordingDeleter()(probe.item); }
};

// Hears of wrapped objects' ends; on another thread the object is gone and only the pointer
// counts.
class Obituary : public VTMS::Listener {
public:
    ~Obituary() override { disconnect(); }
    void onDestroyed(TWrappedObject *object) { ended.push_back(object); }
    std::vector<TWrappedObject *> ended;
};

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
        EXPECT_TRUE(!second && second == nullptr && bool(first) && node->count() == 2 && !ends);
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

TEST(ModuleObjectDeleter, ReleasesInOrderOfEntryOverTheListAsItWasAndCopiesNeverRelease) {
    g_released.clear();
    auto held = std::make_shared<int>(0), empty = std::make_shared<int>(0);
    std::weak_ptr<int> heldAlive = held, emptyAlive = empty;
    ModuleObject *late = nullptr;
    {
        ModuleObjectDeleter deleter;
        deleter.append(new ItemEntry(new Item{"first"}));
        // An object whose end enters a new object into the deleter that is releasing it.
        deleter.append(new ItemEntry(new Item{"reentrant", &deleter, &late}));
        deleter.append(new ModuleObjectImpl<Probe, ProbeDeleter>(Probe{new Item{"held"}, held}));
        deleter.append(new ModuleObjectImpl<Probe, ProbeDeleter>(Probe{nullptr, empty}));
        held.reset();
        empty.reset();
    }
    EXPECT_EQ(g_released, (std::vector<std::string>{"first", "reentrant", "held"}));
    // The entry with a null pointer freed itself too.
    EXPECT_TRUE(heldAlive.expired() && emptyAlive.expired());
    ASSERT_NE(late, nullptr);  // what came in during the walk is left to its owner
    late->release();
    EXPECT_EQ(g_released.back(), "late");

    g_released.clear();
    auto *kept = new ModuleObjectDeleter, *replaced = new ModuleObjectDeleter;
    ModuleObject *dropped = new ItemEntry(new Item{"dropped"});
    kept->append(new ItemEntry(new Item{"shared"}));
    replaced->append(dropped);
    *replaced = *kept;
    *replaced = *replaced;
    { ModuleObjectDeleter copy(*replaced); }  // the copy releases what the original holds
    EXPECT_EQ(g_released, std::vector<std::string>{"shared"}) << "assignment released an entry";
    *kept = *replaced = ModuleObjectDeleter();  // both held "shared": else it is released again
    delete kept;
    delete replaced;
    dropped->release();
    EXPECT_EQ(g_released, (std::vector<std::string>{"shared", "dropped"}));
}

TEST(TWrappedObjectConcurrency, ListenerOnAnotherThreadGetsThePointerQueued) {
    Obituary obituary;
    vort_test::Latch known(1), destroyed(1), processed(1);
    VTMS::Thread *record = nullptr;
    std::thread other([&] {
        record = VTMS::Thread::getCurrentThread();
        known.countDown();
        if (destroyed.wait()) {
            record->process();
        }
        processed.countDown();
    });
    ASSERT_TRUE(known.wait());
    auto object = std::make_unique<TWrappedObject>();
    object->destroyed.connect(&obituary, &Obituary::onDestroyed, record);
    TWrappedObject *const address = object.get();
    object.reset();
    EXPECT_TRUE(obituary.ended.empty()) << "delivered on the destroying thread";
    destroyed.countDown();
    ASSERT_TRUE(processed.wait());
    other.join();
    EXPECT_EQ(obituary.ended, std::vector<TWrappedObject *>{address});
}
