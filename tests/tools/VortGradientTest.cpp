#include "VortProcess.h"

#include <QtGui/QColor>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string kLinearText = "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,";
const std::string kLinearHex =
    "010000000001000000000000000000e03f0000ffff0000000000000000000000000000000000000000000000"
    "00000000000000f03f000000000000f03f";

}  // namespace

TEST(VortGradient, ConvertsPaintsAndRefusesWithTheRightCode) {
    vort_test::ScratchFolder folder;
    const std::string swatch = folder.path("swatch.png");
    const std::string usage = "vort gradient: ";
    vort_test::expectRuns({
        {{"gradient", "--text", kLinearText}, 0, kLinearHex + "\n", ""},
        {{"gradient", "--hex", kLinearHex}, 0, kLinearText + "\n", ""},
        // Either way round, in the form asked for; the null gradient is one byte.
        {{"gradient", "--hex=00", "--to", "hex"}, 0, "00\n", ""},
        {{"gradient", "--text", "0,", "--to=text"}, 0, "0,\n", ""},
        {{"gradient", "--text", "1,2,0,0,0,4,5,33.25,"},
         0,
         "01020000000000000000000000000000000000000000001040000000000000144000000000"
         "00a04040\n",
         ""},
        // Object-bounding, from red on the left to blue on the right.
        {{"gradient", "--text", "1,0,2,0,255,0,0,255,1,0,0,255,255,0,2,0,0,1,0,", "-o", swatch,
          "--size", "100x10"},
         0,
         "",
         ""},
        // The default size, and the text still printed when asked for.
        {{"gradient", "--text", kLinearText, "--output=" + folder.path("d.png"), "--to", "text"},
         0,
         kLinearText + "\n",
         ""},
        {{"gradient", "--text", "1,0,1,x"},
         1,
         "",
         "vort gradient: Can't convert string '1,0,1,x' to Gradient\n"},
        {{"gradient", "--hex", kLinearHex.substr(0, kLinearHex.size() - 2)},
         1,
         "",
         "vort gradient: not a gradient's byte stream: its header announces 61 byte(s), got 60\n"},
        {{"gradient", "--hex", "01ffffffffffffffff"}, 1, "", usage},
        {{"gradient", "--hex", "01"}, 1, "", usage},
        {{"gradient", "--hex", ""}, 1, "", usage},
        {{"gradient", "--text", "0,", "-o", folder.path("none.png")},
         1,
         "",
         "vort gradient: a null gradient has no swatch\n"},
        {{"gradient", "--text", kLinearText, "-o", folder.path("missing/dir/x.png")}, 1, "", usage},
        {{"gradient", "--hex", "0g"}, 2, "", usage},
        {{"gradient"}, 2, "", usage},
        {{"gradient", "--text", "0,", "--hex", "00"}, 2, "", usage},
        {{"gradient", "--text", "0,", "--to", "png"}, 2, "", usage},
        {{"gradient", "--text", "0,", "--size", "0x5"}, 2, "", usage},
        {{"gradient", "--text", "0,", "--size", "10x"}, 2, "", usage},
        {{"gradient", "--text"}, 2, "", usage},
        {{"gradient", "stray"}, 2, "", usage},
    });
    const QImage image(QString::fromStdString(swatch));
    ASSERT_EQ(image.size(), QSize(100, 10));
    const QColor left = image.pixelColor(0, 5);
    const QColor right = image.pixelColor(99, 5);
    const QColor middle = image.pixelColor(50, 5);
    EXPECT_TRUE(left.red() > 245 && left.blue() < 10 && right.blue() > 245 && right.red() < 10);
    EXPECT_NEAR(middle.red(), 128, 8);
    EXPECT_NEAR(middle.blue(), 128, 8);
    EXPECT_EQ(QImage(QString::fromStdString(folder.path("d.png"))).size(), QSize(256, 64));
}
