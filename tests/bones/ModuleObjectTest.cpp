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

}  // namespace

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
