#include "VortProcess.h"

#include <QtGui/QColor>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

namespace {

const char kLinearText[] = "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,";
const char kLinearHex[] =
    "010000000001000000000000000000e03f0000ffff0000000000000000000000000000000000000000000000"
    "00000000000000f03f000000000000f03f";

}  // namespace

TEST(VortGradient, ConvertsBetweenTextAndByteStream) {
    VortRun run = runVort({"gradient", "--text", kLinearText});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, std::string(kLinearHex) + "\n");

    run = runVort({"gradient", "--hex", kLinearHex});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, std::string(kLinearText) + "\n");

    // Either way round, in the form asked for; the null gradient is one byte.
    run = runVort({"gradient", "--hex=00", "--to", "hex"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "00\n");
    run = runVort({"gradient", "--text", "0,", "--to=text"});
    EXPECT_EQ(run.out, "0,\n");
    run = runVort({"gradient", "--text", "1,2,0,0,0,4,5,33.25,"});
    EXPECT_EQ(run.out,
              "01"
              "02000000"
              "00000000"
              "00000000"
              "00000000"
              "0000000000001040"
              "0000000000001440"
              "0000000000a04040\n");
}

TEST(VortGradient, PaintsASwatchOfTheGradient) {
    ScratchFolder folder;
    // Object-bounding, from red on the left to blue on the right.
    const std::string text = "1,0,2,0,255,0,0,255,1,0,0,255,255,0,2,0,0,1,0,";
    VortRun run =
        runVort({"gradient", "--text", text, "-o", folder.path("swatch.png"), "--size", "100x10"});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    const QImage image(QString::fromStdString(folder.path("swatch.png")));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(100, 10));
    const QColor left = image.pixelColor(0, 5);
    const QColor right = image.pixelColor(99, 5);
    const QColor middle = image.pixelColor(50, 5);
    EXPECT_GT(left.red(), 245);
    EXPECT_LT(left.blue(), 10);
    EXPECT_GT(right.blue(), 245);
    EXPECT_LT(right.red(), 10);
    EXPECT_NEAR(middle.red(), 128, 8);
    EXPECT_NEAR(middle.blue(), 128, 8);

    // The default size, and the text still printed when asked for.
    run = runVort(
        {"gradient", "--text", kLinearText, "--output=" + folder.path("d.png"), "--to", "text"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, std::string(kLinearText) + "\n");
    EXPECT_EQ(QImage(QString::fromStdString(folder.path("d.png"))).size(), QSize(256, 64));
}

TEST(VortGradient, RefusesWhatDoesntReadWithTheRightCode) {
    ScratchFolder folder;
    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        std::string err;  // empty: not checked
    };
    const std::string hex = kLinearHex;
    const Case cases[] = {
        {{"gradient", "--text", "1,0,1,x"},
         1,
         "vort gradient: Can't convert string '1,0,1,x' to Gradient\n"},
        {{"gradient", "--hex", hex.substr(0, hex.size() - 2)},
         1,
         "vort gradient: not a gradient's byte stream: its header announces 61 byte(s), got 60\n"},
        {{"gradient", "--hex", "01ffffffffffffffff"}, 1, ""},
        {{"gradient", "--hex", "01"}, 1, ""},
        {{"gradient", "--hex", ""}, 1, ""},
        {{"gradient", "--text", "0,", "-o", folder.path("none.png")},
         1,
         "vort gradient: a null gradient has no swatch\n"},
        {{"gradient", "--text", kLinearText, "-o", folder.path("missing/dir/x.png")}, 1, ""},
        {{"gradient", "--hex", "0g"}, 2, ""},
        {{"gradient"}, 2, ""},
        {{"gradient", "--text", "0,", "--hex", "00"}, 2, ""},
        {{"gradient", "--text", "0,", "--to", "png"}, 2, ""},
        {{"gradient", "--text", "0,", "--size", "0x5"}, 2, ""},
        {{"gradient", "--text", "0,", "--size", "10x"}, 2, ""},
        {{"gradient", "--text"}, 2, ""},
        {{"gradient", "stray"}, 2, ""},
    };
    for (Case const &c : cases) {
        const VortRun run = runVort(c.arguments);
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err;
        if (!c.err.empty()) {
            EXPECT_EQ(run.err, c.err);
        }
        EXPECT_EQ(run.out, "");
    }
}
