// Pictures in the display's form (`QPixmap`) need a `QGuiApplication`: one for every test of this
// executable, on the offscreen platform unless the caller chose another.
#include <vort/bones/Library.h>

#include <QtGui/QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication application(argc, argv);
    initialize_vort_util();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
