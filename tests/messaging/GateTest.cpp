#include <vort/messaging/Gate.h>

#include <gtest/gtest.h>

TEST(Gate, Placeholder) {
    VORT::Gate g(1);
    EXPECT_FALSE(g.wait(1));
}
