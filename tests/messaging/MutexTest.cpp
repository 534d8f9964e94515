#include <vort/messaging/Mutex.h>

#include <gtest/gtest.h>

TEST(Mutex, Placeholder) {
    VORT::Mutex m;
    m.lock();
    m.unlock();
}
