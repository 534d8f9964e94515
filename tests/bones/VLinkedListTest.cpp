#include <vort/bones/VLinkedList.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <string>
#include <vector>

using VORT::VLinkedList;
using VORT::VLinkedListData;

namespace {

template <typename T>
std::vector<T> toVector(const VLinkedList<T> &list) {
    return std::vector<T>(list.begin(), list.end());
}

// Links run both ways around the ring and the count matches.
template <typename T>
void checkRing(const VLinkedList<T> &list) {
    const VLinkedListData *e = &list.data();
    int forward = 0;
    for (const VLinkedListData *n = e->next; n != e; n = n->next, ++forward) {
        ASSERT_EQ(n->next->previous, n);
    }
    EXPECT_EQ(e->next->previous, e);
    EXPECT_EQ(forward, list.size());
}

}  // namespace

TEST(VLinkedList, MatchesAStdListUnderRandomEdits) {
    std::mt19937 random(3);
    VLinkedList<std::string> list;
    std::list<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const std::string text = std::to_string(step);
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size)) : 0;
        switch (size ? random() % 7 : random() % 3) {
            case 0:
                list.append(text);
                model.push_back(text);
                break;
            case 1:
                list.prepend(text);
                model.push_front(text);
                break;
            case 2:
                EXPECT_EQ(*list.insert(std::next(list.begin(), at), text), text);
                model.insert(std::next(model.begin(), at), text);
                break;
            case 3:
                EXPECT_EQ(list.erase(std::next(list.begin(), at)) == list.end(),
                          model.erase(std::next(model.begin(), at)) == model.end());
                break;
            case 4:
                EXPECT_EQ(list.takeFirst(), model.front());
                model.pop_front();
                break;
            case 5:
                EXPECT_EQ(list.takeLast(), model.back());
                model.pop_back();
                break;
            case 6: {
                const int n = std::min(int(random() % 3), size - at);
                list.erase(std::next(list.begin(), at), std::next(list.begin(), at + n));
                model.erase(std::next(model.begin(), at), std::next(model.begin(), at + n));
                break;
            }
        }
        ASSERT_EQ(list.size(), int(model.size()));
    }
    checkRing(list);
    EXPECT_TRUE(std::equal(list.cbegin(), list.cend(), model.begin(), model.end()));
    EXPECT_TRUE(std::equal(list.crbegin(), list.crend(), model.rbegin(), model.rend()));
}

TEST(VLinkedList, IteratorsSurviveOtherEditsAndFindTheirPlaceInASharedCopy) {
    VLinkedList<int> list{1, 2, 3, 2};
    auto three = std::find(list.begin(), list.end(), 3);
    list.prepend(0);
    list.append(4);
    list.insert(list.begin(), -1);
    *three = 30;  // other edits leave an iterator alone
    EXPECT_EQ(toVector(list), (std::vector<int>{-1, 0, 1, 2, 30, 2, 4}));
    EXPECT_EQ(list.removeAll(2), 2);
    EXPECT_TRUE(list.removeOne(30));
    EXPECT_FALSE(list.contains(30));
    list += list;
    EXPECT_EQ(list.count(1), 2);
    VLinkedList<int> sum = VLinkedList<int>{1} + VLinkedList<int>{2, 3};
    sum << 4;
    EXPECT_EQ(sum, (VLinkedList<int>{1, 2, 3, 4}));
    EXPECT_NE(sum, (VLinkedList<int>{1, 2, 3}));
    checkRing(list);

    // Iterators into a shared block work on this list's own copy, at the same place.
    const VLinkedList<std::string> a{"x", "y", "z"};
    VLinkedList<std::string> copy(a);
    VLinkedList<std::string>::iterator y(std::next(a.begin()).i);
    EXPECT_EQ(*std::next(copy.insert(y, "before y")), "y");
    EXPECT_EQ(toVector(copy), (std::vector<std::string>{"x", "before y", "y", "z"}));
    VLinkedList<std::string> other(a);
    const auto afterZ = other.erase(VLinkedList<std::string>::iterator(std::next(a.begin(), 2).i));
    EXPECT_TRUE(afterZ == other.end());
    EXPECT_EQ(toVector(other), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(toVector(a), (std::vector<std::string>{"x", "y", "z"}));
}
