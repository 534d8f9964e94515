#include <vort/bones/VTStringList.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The elements through the cursor, as one text.
std::string walk(VTStringList &list) {
    std::string all;
    for (const char *e = list.firstElement(); e != nullptr; e = list.nextElement()) {
        all += std::string(all.empty() ? "" : ",") + e;
    }
    return all;
}

}  // namespace

TEST(VTStringList, InsertsAtClampedIndicesOwnsItsCopiesAndWalksARing) {
    char text[] = "b";
    VTStringList list;
    EXPECT_TRUE(list.firstElement() == nullptr && list.nextElement() == nullptr);
    list.addElement(text);
    text[0] = 'x';  // the list holds its own copy
    list.addElement(nullptr);
    list.insertElement(0, "a");
    list.insertElement(-5, "first");
    list.insertElement(99, "last");
    list.insertElement(2, "mid");
    list.insertElement(1, nullptr);
    EXPECT_EQ(walk(list) + std::to_string(list.size()), "first,a,mid,b,last5");
    // Inserting leaves the cursor on its element; at the end the cursor stays there.
    EXPECT_STREQ(list.firstElement(), "first");
    list.insertElement(0, "new");
    EXPECT_STREQ(list.nextElement(), "a");
    EXPECT_EQ(walk(list), "new,first,a,mid,b,last");
    EXPECT_EQ(list.nextElement(), nullptr);

    VTStringList ring(std::vector<std::string>{"a", "b", "c"});
    std::string seen;
    for (int index : {0, 2, 3, 4, 6, 7, 8, -1}) {
        const char *element = ring.elementAt(index);
        seen += element == nullptr ? "-" : element;
    }
    EXPECT_EQ(seen, "ac-ac-aa");
    EXPECT_EQ(VTStringList().elementAt(5), nullptr);
}

TEST(VTStringList, RemovesEveryMatchRewindsTheCursorAndComparesElementByElement) {
    VTStringList list(std::vector<std::string>{"Alpha", "beta", "ALPHA", "alpha_", "Alpha"});
    EXPECT_TRUE(list.isInList("alpha", false) && !list.isInList("alpha", true));
    EXPECT_FALSE(list.isInList(nullptr, false) || list.removeElement(nullptr, false));
    list.firstElement();
    list.nextElement();
    EXPECT_FALSE(list.removeElement("gamma", false));
    EXPECT_STREQ(list.nextElement(), "ALPHA");  // a failed removal leaves the cursor
    EXPECT_TRUE(list.removeElement("Alpha", true));
    EXPECT_STREQ(list.nextElement(), "ALPHA");  // the cursor went back to the first element
    EXPECT_TRUE(list.removeElement("alpha", false));
    EXPECT_EQ(walk(list), "beta,alpha_");

    VTStringList one(std::vector<std::string>{"one", std::string("t\0wo", 4), "three"});
    EXPECT_EQ(walk(one), "one,t,three");
    VTStringList copy(one), other(std::vector<std::string>{"one", "t", "Three"});
    EXPECT_TRUE(copy == one && copy.elementAt(0) != one.elementAt(0));
    EXPECT_EQ(copy.nextElement(), nullptr);  // a copy's cursor starts at the end
    EXPECT_TRUE(other != one);
    other = one;
    other = other;
    EXPECT_TRUE(other == one);
    one.removeElement("one", true);
    EXPECT_TRUE(other != one && !(VTStringList() != VTStringList()));
}
