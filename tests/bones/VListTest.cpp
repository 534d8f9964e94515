#include <vort/bones/VList.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <random>
#include <string>
#include <vector>

using VORT::VList;
using VORT::VListData;

namespace {

struct Layout {
    int first, last, capacity;
    bool operator==(const Layout &o) const {
        return first == o.first && last == o.last && capacity == o.capacity;
    }
};

std::ostream &operator<<(std::ostream &out, const Layout &l) {
    return out << "{" << l.first << ", " << l.last << ", " << l.capacity << "}";
}

template <typename T>
Layout layoutOf(const VList<T> &list) {
    const VListData::Data *d = list.data().d;
    return {d->first, d->last, d->capacity};
}

template <typename T>
std::vector<T> toVector(const VList<T> &list) {
    return std::vector<T>(list.begin(), list.end());
}

// A list of `capacity` slots holding first, ..., last - 1 in the slots of those numbers.
VList<int> listIn(Layout layout) {
    VList<int> list;
    list.reserve(layout.capacity);
    for (int i = 0; i < layout.last; ++i) {
        list.append(i);
    }
    for (int i = 0; i < layout.first; ++i) {
        list.removeFirst();
    }
    return list;
}

enum Op { Append, AppendList, Prepend, Insert, RemoveAt, Erase, Move };

// One edit, made to the list and to the deque that models it.
void apply(Op op, int a, int b, int value, VList<int> &list, std::deque<int> &model) {
    switch (op) {
        case Append:
            list.append(value);
            model.push_back(value);
            break;
        case AppendList:
            list.append(listIn({0, a, a}));
            for (int i = 0; i < a; ++i) {
                model.push_back(i);
            }
            break;
        case Prepend:
            list.prepend(value);
            model.push_front(value);
            break;
        case Insert:
            list.insert(a, value);
            model.insert(model.begin() + std::clamp(a, 0, int(model.size())), value);
            break;
        case RemoveAt:
            list.removeAt(a);
            model.erase(model.begin() + a);
            break;
        case Erase:
            list.erase(list.begin() + a, list.begin() + a + b);
            model.erase(model.begin() + a, model.begin() + a + b);
            break;
        case Move:
            list.move(a, b);
            const int moved = model[size_t(a)];
            model.erase(model.begin() + a);
            model.insert(model.begin() + b, moved);
            break;
    }
}

}  // namespace

TEST(VortAllocMore, SizesBlocksInStepsOfEightThenPowersOfTwo) {
    // (size, header, result)
    // Triples: size, header, block.
    // clang-format off
    const int rows[] = {0, 24, 8,         39, 24, 40,       40, 24, 40,   41, 24, 104,
                        1, 0, 8,          7, 0, 8,          8, 0, 16,     63, 0, 64,
                        64, 0, 64,        65, 0, 128,       4072, 24, 4072,
                        4073, 24, 8168,   4000, 16, 4080,   0x40000000, 0, 0x40000000,
                        0x40000001, 0, 0x7FFFFFFF,          0x7FFFFFF0, 64, 0x7FFFFFFF};
    // clang-format on
    for (size_t r = 0; r < std::size(rows); r += 3) {
        EXPECT_EQ(VORT::vortAllocMore(rows[r], rows[r + 1]), rows[r + 2]) << r / 3;
    }
    EXPECT_EQ(offsetof(VListData::Data, items), 24u);  // the header ends where the slots begin
    const int grown[][2] = {{0, 1}, {1, 2}, {5, 5}, {6, 13}, {509, 509}, {510, 1021}};
    for (const auto &row : grown) {
        EXPECT_EQ(VListData::grow(row[0]), row[1]) << row[0];
    }
    const VListData::Data &null = VListData::shared_null;
    EXPECT_EQ(Layout({null.first, null.last, null.capacity}), Layout({0, 0, 0}));
    EXPECT_EQ(null.sharable, 1u);
}

TEST(VListData, DetachCopiesTheSlotsAndDropsTheOldCount) {
    VList<int> a = listIn({0, 5, 8});
    VListData raw = a.data();  // a second owner, by hand
    raw.d->ref.ref();
    VListData::Data *original = raw.d;
    EXPECT_EQ(raw.detach(), nullptr);  // `a` still holds the original
    EXPECT_TRUE(raw.d != original && raw.d->ref == 1 && original->ref == 1 && raw.d->sharable);
    EXPECT_EQ(Layout({raw.d->first, raw.d->last, raw.d->capacity}), Layout({0, 5, 8}));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(&raw.d->items[raw.d->first + i], raw.at(i));
        EXPECT_EQ(*reinterpret_cast<int *>(raw.at(i)), i);
    }
    // Dropping the last count hands the old block back to be freed.
    VListData again = raw;
    again.d->ref.ref();
    VListData::Data *copy = again.d;
    EXPECT_EQ(again.detach(), nullptr);
    EXPECT_EQ(raw.detach(), copy);
    std::free(copy);
    std::free(raw.d);
    std::free(again.d);
}

// Each operation on a list laid out as `before`: the layout it leaves, and (against a deque)
// the contents.
TEST(VList, GrowsSlidesAndMovesTheShorterSideAsLaidDown) {
    struct Row {
        Op op;
        Layout before;
        int a, b;
        Layout after;
    };
    const Row rows[] = {
        {Append, {0, 5, 12}, 0, 0, {0, 6, 12}},
        {Append, {9, 12, 12}, 0, 0, {3, 7, 12}},   // mostly free at the front: slides back
        {Append, {8, 12, 12}, 0, 0, {8, 13, 13}},  // two thirds free is not enough: grows
        {AppendList, {0, 4, 8}, 4, 0, {0, 8, 8}},  // fits exactly
        {AppendList, {0, 4, 8}, 5, 0, {0, 9, 13}},
        {Prepend, {2, 5, 8}, 0, 0, {1, 5, 8}},
        {Prepend, {0, 0, 0}, 0, 0, {1, 2, 2}},
        {Prepend, {0, 3, 12}, 0, 0, {5, 9, 12}},   // a third free behind, and room for it
        {Prepend, {0, 4, 12}, 0, 0, {8, 13, 13}},  // a third in use: grows first
        {Insert, {2, 6, 8}, 0, 0, {1, 6, 8}},
        {Insert, {2, 6, 8}, -3, 0, {1, 6, 8}},
        {Insert, {2, 6, 8}, 1, 0, {1, 6, 8}},
        {Insert, {2, 6, 8}, 4, 0, {2, 7, 8}},
        {Insert, {2, 6, 8}, 9, 0, {2, 7, 8}},
        {Insert, {2, 8, 16}, 3, 0, {2, 9, 16}},  // as many on each side: rightward
        {Insert, {2, 8, 16}, 2, 0, {1, 8, 16}},
        {Insert, {2, 8, 8}, 5, 0, {1, 8, 8}},  // full at the back: leftward
        {Insert, {0, 4, 8}, 1, 0, {0, 5, 8}},  // packed at the front: rightward
        {Insert, {0, 4, 4}, 1, 0, {0, 5, 5}},
        {RemoveAt, {0, 10, 16}, 2, 0, {1, 10, 16}},
        {RemoveAt, {0, 10, 16}, 7, 0, {0, 9, 16}},
        {RemoveAt, {0, 6, 8}, 3, 0, {0, 5, 8}},  // a tie counting the removed one: the back
        {RemoveAt, {2, 7, 8}, 2, 0, {3, 7, 8}},
        {Erase, {0, 12, 16}, 1, 3, {3, 12, 16}},
        {Erase, {0, 12, 16}, 6, 4, {0, 8, 16}},
        {Erase, {0, 12, 16}, 4, 4, {0, 8, 16}},  // the middle of the run decides a tie
        {Erase, {2, 12, 16}, 1, 2, {4, 12, 16}},
        {Move, {2, 8, 16}, 1, 2, {2, 8, 16}},  // a short hop: the items between shift
        {Move, {2, 8, 16}, 1, 4, {2, 8, 16}},
        {Move, {2, 8, 16}, 0, 4, {3, 9, 16}},  // two thirds of the way: the outer parts move
        {Move, {2, 11, 16}, 1, 7, {3, 12, 16}},
        {Move, {2, 8, 16}, 4, 3, {2, 8, 16}},
        {Move, {2, 8, 16}, 4, 0, {1, 7, 16}},
        {Move, {2, 11, 16}, 7, 1, {1, 10, 16}},
        {Move, {2, 8, 16}, 2, 2, {2, 8, 16}},
        {Move, {2, 8, 8}, 0, 5, {2, 8, 8}},    // full at the back: the items between shift
        {Move, {0, 6, 16}, 5, 0, {0, 6, 16}},  // packed at the front: the same
    };
    for (const Row &row : rows) {
        VList<int> list = listIn(row.before);
        std::deque<int> model(list.begin(), list.end());
        // Mark the free slots: an operation may write only where the list was or is now.
        std::vector<char> marks(64);  // a mark of its own for each free slot
        VListData::Data *const block = list.data().d;
        for (int k = 0; k < block->capacity; ++k) {
            block->items[k] =
                k < block->first || k >= block->last ? &marks[size_t(k)] : block->items[k];
        }
        apply(row.op, row.a, row.b, -1, list, model);
        const auto where = "op " + std::to_string(int(row.op)) + " on " +
                           ::testing::PrintToString(row.before) + " with " + std::to_string(row.a) +
                           ", " + std::to_string(row.b);
        EXPECT_EQ(layoutOf(list), row.after) << where;
        const bool sameBlock = list.data().d == block && row.after.capacity == row.before.capacity;
        for (int k = 0; sameBlock && k < row.after.capacity; ++k) {
            const bool used = (k >= row.before.first && k < row.before.last) ||
                              (k >= row.after.first && k < row.after.last);
            EXPECT_TRUE(used || block->items[k] == &marks[size_t(k)]) << where << ": slot " << k;
        }
        EXPECT_TRUE(std::equal(list.begin(), list.end(), model.begin(), model.end())) << where;
    }
}

TEST(VList, MatchesADequeUnderRandomEdits) {
    std::mt19937 random(1234);
    VList<int> list;
    std::deque<int> model;
    for (int step = 0; step < 20000; ++step) {
        const unsigned int size = unsigned(model.size());
        const int pick = size ? int(random() % size) : 0;
        // Half the draws add one item at an end; removals need an item.
        const Op ops[] = {Append,   Prepend, Append, Prepend,   Insert,
                          RemoveAt, Move,    Erase,  AppendList};
        const Op op = ops[random() % 9];
        if (size || op < RemoveAt) {
            const int other = op == Erase  ? int(random() % (size - unsigned(pick) + 1))
                              : op == Move ? int(random() % size)
                                           : int(random() % 4);
            apply(op, op == AppendList ? other : pick, other, step, list, model);
        }
        const Layout l = layoutOf(list);
        ASSERT_TRUE(0 <= l.first && l.first <= l.last && l.last <= l.capacity) << step;
        ASSERT_TRUE(std::equal(list.begin(), list.end(), model.begin(), model.end())) << step;
    }
}
