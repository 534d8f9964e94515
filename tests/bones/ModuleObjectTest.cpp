#include <vort/bones/ModuleObject.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using VORT::ModuleObject;
using VORT::ModuleObjectDeleter;
using VORT::ModuleObjectImpl;

namespace {

std::vector<std::string> g_released;

struct Item {
    explicit Item(std::string n) : name(std::move(n)) {}
    std::string name;
};

struct RecordingDeleter {
    void operator()(Item *item) const {
        g_released.push_back(item->name);
        delete item;
    }
};

using ItemEntry = ModuleObjectImpl<Item *, RecordingDeleter>;

// A pointer-like value whose token tells the test when the entry that holds it has been freed.
struct Probe {
    Item *item;
    std::shared_ptr<int> token;
    explicit operator bool() const { return item != nullptr; }
};

struct ProbeDeleter {
    void operator()(Probe const &probe) const { RecordingDeleter()(probe.item); }
};

using ProbeEntry = ModuleObjectImpl<Probe, ProbeDeleter>;

class ModuleObjectTest : public ::testing::Test {
protected:
    void SetUp() override { g_released.clear(); }
};

}  // namespace

TEST_F(ModuleObjectTest, DeleterReleasesInOrderOfEntry) {
    {
        ModuleObjectDeleter deleter;
        for (const char *name : {"first", "second", "third", "fourth"}) {
            deleter.append(new ItemEntry(new Item(name)));
        }
        EXPECT_TRUE(g_released.empty());
    }
    EXPECT_EQ(g_released, (std::vector<std::string>{"first", "second", "third", "fourth"}));
}

TEST_F(ModuleObjectTest, EmptyDeleterDoesNothing) {
    { ModuleObjectDeleter deleter; }
    EXPECT_TRUE(g_released.empty());
}

TEST_F(ModuleObjectTest, EntryEndsItselfWithOrWithoutAPointer) {
    auto held = std::make_shared<int>(0);
    auto empty = std::make_shared<int>(0);
    std::weak_ptr<int> heldAlive = held, emptyAlive = empty;
    {
        ModuleObjectDeleter deleter;
        deleter.append(new ProbeEntry(Probe{new Item("held"), std::move(held)}));
        deleter.append(new ProbeEntry(Probe{nullptr, std::move(empty)}));
    }
    EXPECT_EQ(g_released, std::vector<std::string>{"held"}) << "no deleter for a null pointer";
    EXPECT_TRUE(heldAlive.expired());
    EXPECT_TRUE(emptyAlive.expired()) << "the entry with a null pointer freed itself too";
}

namespace {

// An object whose destructor enters a new object into the deleter that is releasing it, as a
// module's own code may do while it ends.
struct Reentrant {
    ModuleObjectDeleter *deleter;
    ModuleObject **late;
};

struct ReentrantDeleter {
    void operator()(Reentrant *reentrant) const {
        g_released.push_back("reentrant");
        *reentrant->late = new ItemEntry(new Item("late"));
        reentrant->deleter->append(*reentrant->late);
        delete reentrant;
    }
};

}  // namespace

TEST_F(ModuleObjectTest, ReleaseThatTouchesTheListDoesNotDisturbTheWalk) {
    ModuleObject *late = nullptr;
    {
        ModuleObjectDeleter deleter;
        deleter.append(new ItemEntry(new Item("before")));
        deleter.append(
            new ModuleObjectImpl<Reentrant *, ReentrantDeleter>(new Reentrant{&deleter, &late}));
        deleter.append(new ItemEntry(new Item("after")));
    }
    EXPECT_EQ(g_released, (std::vector<std::string>{"before", "reentrant", "after"}));
    ASSERT_NE(late, nullptr);
    // The walk ran over the list as it was; what came in during it is left to its owner.
    late->release();
    EXPECT_EQ(g_released.back(), "late");
}

TEST_F(ModuleObjectTest, AssignmentTakesTheOtherListWithoutReleasing) {
    auto *kept = new ModuleObjectDeleter;
    auto *replaced = new ModuleObjectDeleter;
    ModuleObject *dropped = new ItemEntry(new Item("dropped"));
    kept->append(new ItemEntry(new Item("shared")));
    replaced->append(dropped);

    *replaced = *kept;
    EXPECT_TRUE(g_released.empty()) << "assignment released an entry";
    *replaced = *replaced;
    delete replaced;
    EXPECT_EQ(g_released, std::vector<std::string>{"shared"});

    // Both lists held "shared"; empty the other before it ends, or it is released twice.
    *kept = ModuleObjectDeleter();
    delete kept;
    EXPECT_EQ(g_released.size(), 1u);
    dropped->release();
    EXPECT_EQ(g_released.back(), "dropped");
}

TEST_F(ModuleObjectTest, CopyHoldsTheSamePointers) {
    ModuleObjectDeleter original;
    original.append(new ItemEntry(new Item("one")));
    original.append(new ItemEntry(new Item("two")));
    {
        ModuleObjectDeleter copy(original);
        // The copy releases what the original holds.
    }
    EXPECT_EQ(g_released, (std::vector<std::string>{"one", "two"}));
    original = ModuleObjectDeleter();
}
