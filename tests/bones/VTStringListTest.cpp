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

TEST(VTStringList, InsertsAtClampedIndicesAndOwnsItsCopies) {
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
    EXPECT_EQ(walk(list), "first,a,mid,b,last");
    EXPECT_EQ(list.size(), 5);

    // Inserting leaves the cursor on its element.
    EXPECT_STREQ(list.firstElement(), "first");
    list.insertElement(0, "new");
    EXPECT_STREQ(list.nextElement(), "a");
    EXPECT_EQ(walk(list), "new,first,a,mid,b,last");
    EXPECT_EQ(list.nextElement(), nullptr);  // at the end the cursor stays there
}

TEST(VTStringList, ElementAtWalksARingThroughTheEnd) {
    VTStringList list(std::vector<std::string>{"a", "b", "c"});
    const std::pair<int, const char *> cases[] = {{0, "a"}, {2, "c"},     {3, nullptr}, {4, "a"},
                                                  {6, "c"}, {7, nullptr}, {8, "a"},     {-1, "a"}};
    for (auto const &c : cases) {
        const char *element = list.elementAt(c.first);
        EXPECT_EQ(element == nullptr ? "null" : std::string(element),
                  c.second == nullptr ? "null" : c.second)
            << c.first;
    }
    EXPECT_EQ(VTStringList().elementAt(5), nullptr);
}

TEST(VTStringList, RemovesEveryMatchAndRewindsTheCursor) {
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
}

TEST(VTStringList, CopiesAndComparesElementByElement) {
    VTStringList list(std::vector<std::string>{"one", std::string("t\0wo", 4), "three"});
    EXPECT_EQ(walk(list), "one,t,three");
    VTStringList copy(list);
    EXPECT_TRUE(copy == list && copy.elementAt(0) != list.elementAt(0));
    EXPECT_EQ(copy.nextElement(), nullptr);  // a copy's cursor starts at the end

    VTStringList other(std::vector<std::string>{"one", "t", "Three"});
    EXPECT_TRUE(other != list);
    other = list;
    other = other;
    EXPECT_TRUE(other == list);
    list.removeElement("one", true);
    EXPECT_TRUE(other != list);
    EXPECT_FALSE(VTStringList() != VTStringList());
}
