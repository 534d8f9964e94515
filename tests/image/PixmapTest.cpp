#include "ImageTestSupport.h"
#include <vort/image/Pixmap.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using VORT::Pixmap;
using vort_test::solid;
namespace Data = VORT::ImageDataType;
namespace Direction = VORT::ImageDataDirection;

namespace {

Pixmap fromPlanes(void const *data, int type, int width, int height, int x = 0, int y = 0) {
    return Pixmap(static_cast<unsigned char const *>(data), static_cast<Data::Type>(type), width,
                  height, static_cast<Direction::Type>(x), static_cast<Direction::Type>(y));
}

}  // namespace

TEST(Pixmap, BuildsFromColumnMajorPlanesInEveryDirection) {
    // Sample (x, y) of plane p of a 3-by-2 image is at p * 6 + x * 2 + y, and its value tells
    // the pixel apart from all others.
    std::vector<unsigned char> bytes(18);
    std::vector<double> doubles(18);
    for (int i = 0; i < 18; ++i) {
        bytes[i] = static_cast<unsigned char>(10 * i + 5);
        doubles[i] = bytes[i] / 255.0;
    }
    // Only the test against zero matters for a direction.
    const int directions[][2] = {{0, 0}, {1, 0}, {0, 1}, {-7, 2}};
    for (auto const &direction : directions) {
        for (Pixmap const &pixmap :
             {fromPlanes(bytes.data(), Data::UInt8, 3, 2, direction[0], direction[1]),
              fromPlanes(doubles.data(), Data::Double, 3, 2, direction[0], direction[1])}) {
            ASSERT_EQ(pixmap.getQImage()->size(), QSize(3, 2));
            EXPECT_EQ(pixmap.getQImage()->format(), QImage::Format_ARGB32);
            for (int i = 0; i < 6; ++i) {
                const int x = direction[0] != 0 ? 2 - i / 2 : i / 2;
                const int y = direction[1] != 0 ? 1 - i % 2 : i % 2;
                EXPECT_EQ(pixmap.getQImage()->pixel(x, y),
                          qRgba(bytes[i], bytes[6 + i], bytes[12 + i], 255))
                    << i << " in directions " << direction[0] << "," << direction[1];
            }
        }
    }
}

TEST(Pixmap, RoundsDoublesKeepingTheLowByteAndIgnoresSixteenBitSamples) {
    const double samples[][2] = {{1.0, 255}, {0.5, 128},
                                 {1.5, 127}, {-0.2, 206},
                                 {1e300, 0}, {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (auto const &row : samples) {
        const double data[3] = {row[0], 0.0, 1.0};
        EXPECT_EQ(fromPlanes(data, Data::Double, 1, 1).getQImage()->pixel(0, 0),
                  qRgba(static_cast<int>(row[1]), 0, 255, 255))
            << row[0];
    }
    const std::vector<unsigned short> white(3 * 4 * 2, 0xFFFF);
    EXPECT_EQ(*fromPlanes(white.data(), Data::UInt16, 4, 2, 1).getQImage(),
              solid(4, 2, 0xFF000000u));
    EXPECT_EQ(fromPlanes(white.data(), 3, 4, 2).getQImage(), nullptr);
    // A size below 1 reads nothing and leaves a null image, which is set all the same.
    EXPECT_TRUE(fromPlanes(nullptr, Data::Double, 0, 5).getQImage()->isNull());
}

TEST(Pixmap, WritesAndLenientlyReadsTheTextForm) {
    QImage twoPixels = solid(2, 1, 0xFFFF0000u);
    twoPixels.setPixel(1, 0, qRgba(0, 0, 255, 40));
    const QImage nullImage;
    std::ostringstream written;
    written << Pixmap(&twoPixels) << '|' << Pixmap() << '|' << Pixmap(&nullImage);
    EXPECT_EQ(written.str(), "2,1;255,0,0;0,0,255;||0,0;");

    QImage lastRead(2, 1, QImage::Format_ARGB32);
    lastRead.setPixel(0, 0, 0xFF0A141Eu);
    lastRead.setPixel(1, 0, 0xFF00141Eu);
    struct Row {
        const char *text;
        bool failed;
        QImage image;  // null also for a target left unset
    };
    const Row rows[] = {
        {"1,1;255,0,0;", false, solid(1, 1, 0xFFFF0000u)},
        // Delimiters are not checked, sizes round, components keep their low byte.
        {" 1.4 ; 1.4 / 511 x 256.4 ; -0.4 ;", false, solid(1, 1, 0xFFFF0000u)},
        // A text that runs dry repeats the last value read.
        {"3,1;255,0,0;", true, solid(3, 1, 0xFFFF0000u)},
        // A component that is no number reads as 0 and the others keep their last values.
        {"2,1;10,20,30;x,1,1;", true, lastRead},
        {"", true, QImage()},
        {"-3,2;", false, QImage()},
        // More pixels than the bound: refused before anything is allocated.
        {"100000,100000;", true, QImage()},
    };
    for (Row const &row : rows) {
        std::istringstream in(row.text);
        Pixmap pixmap(&twoPixels);
        in >> pixmap;
        EXPECT_EQ(in.fail(), row.failed) << row.text;
        const bool unset = std::string(row.text) == "100000,100000;";
        ASSERT_EQ(pixmap.getQImage() == nullptr, unset) << row.text;
        if (!unset) {
            EXPECT_EQ(*pixmap.getQImage(), row.image) << row.text;
        }
    }
    // A stream already at its end assigns an unset pixmap.
    std::istringstream atEnd("");
    atEnd.get();
    Pixmap target(&twoPixels);
    atEnd >> target;
    EXPECT_EQ(target.getQImage(), nullptr);
}

TEST(Pixmap, ComparesByCacheKeyThenByPixelsAndCopiesDeeply) {
    const QImage red = solid(2, 2, 0xFFFF0000u);
    const QImage nullImage;
    const Pixmap a(&red);
    Pixmap copy(a);
    EXPECT_EQ(copy.getCacheKey(), a.getCacheKey());
    EXPECT_TRUE(Pixmap() == Pixmap(&nullImage));
    EXPECT_FALSE(Pixmap() == a);
    EXPECT_TRUE(a == Pixmap(std::make_unique<QImage>(solid(2, 2, 0xFFFF0000u)).get()));
    copy.getQImage()->setPixel(0, 0, 0xFF00FF00u);
    EXPECT_FALSE(a == copy);
    EXPECT_EQ(a.getQImage()->pixel(0, 0), 0xFFFF0000u);
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>(0.0, 0.0, 2.0, 2.0));
    copy = Pixmap();
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>());
}

TEST(Pixmap, SavesLoadsAndKeepsAReplacedImageAlive) {
    vort_test::ImageFolder folder;
    const QImage red = solid(3, 2, 0x80FF0000u);
    const Pixmap pixmap(&red);
    EXPECT_FALSE(Pixmap().save(folder.path("unset.png"), VORT::ImageFileFormat::PNG, -1));
    ASSERT_TRUE(pixmap.save(folder.path("red.png"), VORT::ImageFileFormat::PNG, -1));
    Pixmap loaded(folder.path("red.png"));
    EXPECT_EQ(loaded.getQImage()->convertToFormat(QImage::Format_ARGB32), red);
    // Any other format leaves the choice to the suffix.
    ASSERT_TRUE(
        pixmap.save(folder.path("red.bmp"), static_cast<VORT::ImageFileFormat::Type>(9), -1));
    EXPECT_EQ(QImage(QString::fromStdString(folder.path("red.bmp")), "BMP").size(), QSize(3, 2));
    EXPECT_TRUE(Pixmap(folder.path("missing.png")).getQImage()->isNull());

    // The image held before a load stays valid, and is its holder's to delete.
    std::unique_ptr<QImage> before(loaded.getQImage());
    loaded.loadImagePath(folder.write("blue.png", solid(1, 1, 0xFF0000FFu)));
    EXPECT_EQ(loaded.getWidth(), 1);
    EXPECT_EQ(before->convertToFormat(QImage::Format_ARGB32), red);
}
