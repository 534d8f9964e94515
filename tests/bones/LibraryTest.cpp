#include <vort/bones/Library.h>

#include <gtest/gtest.h>

TEST(Library, Placeholder) {
    EXPECT_FALSE(VORT::isDevelopmentCode());
}
