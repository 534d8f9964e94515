#include <vort/image/Pixmap.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using VORT::Pixmap;
namespace ImageDataType = VORT::ImageDataType;
namespace ImageDataDirection = VORT::ImageDataDirection;
namespace ImageFileFormat = VORT::ImageFileFormat;

namespace {

// Three planes of a 3-by-2 image, column after column: sample (x, y) of each plane is at
// x * 2 + y, and its value tells the pixel apart from all others.
template <class Sample>
std::vector<Sample> planes(Sample (*sample)(int plane, int x, int y)) {
    std::vector<Sample> data(3 * 6);
    for (int plane = 0; plane < 3; ++plane) {
        for (int x = 0; x < 3; ++x) {
            for (int y = 0; y < 2; ++y) {
                data[plane * 6 + x * 2 + y] = sample(plane, x, y);
            }
        }
    }
    return data;
}

int expectedByte(int plane, int x, int y) {
    return 10 * (x + 1) + (y + 1) + 100 * plane;
}

std::string textOf(Pixmap const &pixmap) {
    std::ostringstream out;
    out << pixmap;
    return out.str();
}

Pixmap read(std::string const &text, bool &failed) {
    std::istringstream in(text);
    const QImage seed(1, 1, QImage::Format_ARGB32);
    Pixmap pixmap(&seed);
    in >> pixmap;
    failed = in.fail();
    return pixmap;
}

QImage solid(int width, int height, QRgb value) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(value);
    return image;
}

}  // namespace

TEST(Pixmap, BuildsFromColumnMajorPlanesInEveryDirection) {
    const std::vector<unsigned char> bytes = planes<unsigned char>([](int plane, int x, int y) {
        return static_cast<unsigned char>(expectedByte(plane, x, y));
    });
    const std::vector<double> doubles =
        planes<double>([](int plane, int x, int y) { return expectedByte(plane, x, y) / 255.0; });
    struct Row {
        int xDirection;
        int yDirection;
        bool mirrorX;
        bool mirrorY;
    };
    // Only the test against zero matters for a direction.
    for (Row const &row : {Row{0, 0, false, false}, Row{1, 0, true, false}, Row{0, 1, false, true},
                           Row{-7, 2, true, true}}) {
        const auto xDirection = static_cast<ImageDataDirection::Type>(row.xDirection);
        const auto yDirection = static_cast<ImageDataDirection::Type>(row.yDirection);
        const Pixmap fromBytes(bytes.data(), ImageDataType::UInt8, 3, 2, xDirection, yDirection);
        const Pixmap fromDoubles(reinterpret_cast<unsigned char const *>(doubles.data()),
                                 ImageDataType::Double, 3, 2, xDirection, yDirection);
        for (Pixmap const *pixmap : {&fromBytes, &fromDoubles}) {
            QImage const *image = pixmap->getQImage();
            ASSERT_NE(image, nullptr);
            EXPECT_EQ(image->format(), QImage::Format_ARGB32);
            ASSERT_EQ(image->size(), QSize(3, 2));
            for (int x = 0; x < 3; ++x) {
                for (int y = 0; y < 2; ++y) {
                    const int column = row.mirrorX ? 2 - x : x;
                    const int line = row.mirrorY ? 1 - y : y;
                    EXPECT_EQ(image->pixel(column, line),
                              qRgba(expectedByte(0, x, y), expectedByte(1, x, y),
                                    expectedByte(2, x, y), 255))
                        << "sample " << x << "," << y << " directions " << row.xDirection << ","
                        << row.yDirection;
                }
            }
        }
    }
}

TEST(Pixmap, RoundsDoubleSamplesAndKeepsTheirLowByte) {
    struct Row {
        double sample;
        int byte;
    };
    const Row rows[] = {
        {1.0, 255},
        {0.5, 128},
        {0.0, 0},
        {1.5, 127},   // 383 keeps its low byte
        {-0.2, 206},  // -50.5 truncates to -50
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {1e300, 0},
    };
    for (Row const &row : rows) {
        const double data[3] = {row.sample, 0.0, 1.0};
        const Pixmap pixmap(reinterpret_cast<unsigned char const *>(data), ImageDataType::Double, 1,
                            1, ImageDataDirection::Forward, ImageDataDirection::Forward);
        EXPECT_EQ(pixmap.getQImage()->pixel(0, 0), qRgba(row.byte, 0, 255, 255)) << row.sample;
    }
}

TEST(Pixmap, SixteenBitSamplesGiveBlackAndUnknownTypesNothing) {
    const std::vector<unsigned short> samples(3 * 4 * 2, 0xFFFF);
    const Pixmap black(reinterpret_cast<unsigned char const *>(samples.data()),
                       ImageDataType::UInt16, 4, 2, ImageDataDirection::Reverse,
                       ImageDataDirection::Forward);
    EXPECT_EQ(*black.getQImage(), solid(4, 2, 0xFF000000));

    const Pixmap unknown(reinterpret_cast<unsigned char const *>(samples.data()),
                         static_cast<ImageDataType::Type>(3), 4, 2, ImageDataDirection::Forward,
                         ImageDataDirection::Forward);
    EXPECT_EQ(unknown.getQImage(), nullptr);
    EXPECT_EQ(unknown.getWidth(), 0);
    EXPECT_EQ(unknown.getCacheKey(), 0);

    // A size below 1 reads nothing and leaves a null image, which is set all the same.
    const Pixmap empty(nullptr, ImageDataType::Double, 0, 5, ImageDataDirection::Forward,
                       ImageDataDirection::Forward);
    ASSERT_NE(empty.getQImage(), nullptr);
    EXPECT_TRUE(empty.getQImage()->isNull());
}

TEST(Pixmap, WritesTheTextFormWithoutAlpha) {
    QImage image = solid(2, 1, qRgba(255, 0, 0, 255));
    image.setPixel(1, 0, qRgba(0, 0, 255, 40));
    const QImage nullImage;
    struct Row {
        Pixmap pixmap;
        const char *text;
    };
    const Row rows[] = {
        {Pixmap(&image), "2,1;255,0,0;0,0,255;"},
        {Pixmap(), ""},
        {Pixmap(&nullImage), "0,0;"},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(textOf(row.pixmap), row.text);
    }
}

TEST(Pixmap, ReadsTheTextFormLeniently) {
    const QImage red = solid(1, 1, 0xFFFF0000);
    struct Row {
        const char *text;
        bool failed;
        QImage image;  // null for an unset result
        bool unset;
    };
    QImage shortOfNumbers(2, 1, QImage::Format_ARGB32);
    shortOfNumbers.setPixel(0, 0, 0xFF0A141E);
    shortOfNumbers.setPixel(1, 0, 0xFF00141E);
    const Row rows[] = {
        {"1,1;255,0,0;", false, red, false},
        // Delimiters are not checked and sizes round.
        {"1.4;1.4;255;0;0;", false, red, false},
        {" 1 , 1 ; 255 , 0 , 0 ;", false, red, false},
        // Components keep their low byte: 511 is 255, 256.4 is 0.
        {"1,1;511,256.4,-0.4;", false, red, false},
        // A text that runs dry repeats the last value read.
        {"3,1;255,0,0;", true, solid(3, 1, 0xFFFF0000), false},
        // A component that is no number reads as 0, the others keep the last value read, and
        // nothing after it is read.
        {"2,1;10,20,30;x,1,1;", true, shortOfNumbers, false},
        {"", true, QImage(), false},
        {"0,0;", false, QImage(), false},
        {"-3,2;", false, QImage(), false},
        // More pixels than any sensible text can carry: refused before anything is allocated.
        {"100000,100000;", true, QImage(), true},
    };
    for (Row const &row : rows) {
        bool failed = false;
        const Pixmap pixmap = read(row.text, failed);
        EXPECT_EQ(failed, row.failed) << row.text;
        if (row.unset) {
            EXPECT_EQ(pixmap.getQImage(), nullptr) << row.text;
            continue;
        }
        ASSERT_NE(pixmap.getQImage(), nullptr) << row.text;
        EXPECT_EQ(*pixmap.getQImage(), row.image) << row.text;
    }

    // A stream already at its end assigns an unset pixmap and reads nothing.
    std::istringstream atEnd("");
    atEnd.get();
    Pixmap target(&red);
    atEnd >> target;
    EXPECT_EQ(target.getQImage(), nullptr);
}

TEST(Pixmap, ComparesByCacheKeyThenByPixels) {
    const QImage red = solid(2, 2, 0xFFFF0000);
    const QImage otherRed = solid(2, 2, 0xFFFF0000);
    const QImage blue = solid(2, 2, 0xFF0000FF);
    const QImage nullImage;
    const Pixmap unset;
    const Pixmap a(&red);
    Pixmap copy(a);
    EXPECT_EQ(copy.getCacheKey(), a.getCacheKey());
    EXPECT_NE(copy.getQImage(), a.getQImage());

    EXPECT_TRUE(unset == Pixmap());
    EXPECT_TRUE(unset == Pixmap(&nullImage));
    EXPECT_FALSE(unset == a);
    EXPECT_FALSE(a == unset);
    EXPECT_TRUE(a == copy);
    EXPECT_TRUE(a == Pixmap(&otherRed));
    EXPECT_FALSE(a == Pixmap(&blue));

    // A copy owns its own image: writing to it leaves the source alone.
    copy.getQImage()->setPixel(0, 0, 0xFF00FF00);
    EXPECT_FALSE(a == copy);
    EXPECT_EQ(a.getQImage()->pixel(0, 0), 0xFFFF0000u);

    copy = copy;
    EXPECT_EQ(copy.getQImage()->pixel(0, 0), 0xFF00FF00u);
    EXPECT_TRUE(copy.hasBounds());
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>(0.0, 0.0, 2.0, 2.0));
    copy = unset;
    EXPECT_EQ(copy.getQImage(), nullptr);
    EXPECT_EQ(copy.getHeight(), 0);
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>());
}

TEST(Pixmap, SavesAndLoadsFiles) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const std::string png = QDir(folder.path()).filePath(QStringLiteral("red.png")).toStdString();
    const std::string bmp = QDir(folder.path()).filePath(QStringLiteral("red.bmp")).toStdString();
    const QImage red = solid(3, 2, 0x80FF0000);
    const Pixmap pixmap(&red);

    EXPECT_FALSE(Pixmap().save(png, ImageFileFormat::PNG, -1));
    ASSERT_TRUE(pixmap.save(png, ImageFileFormat::PNG, -1));
    const Pixmap loaded(png);
    ASSERT_NE(loaded.getQImage(), nullptr);
    EXPECT_EQ(loaded.getQImage()->convertToFormat(QImage::Format_ARGB32), red);

    // Any other format leaves the choice to the suffix.
    ASSERT_TRUE(pixmap.save(bmp, static_cast<ImageFileFormat::Type>(9), -1));
    QFile file(QString::fromStdString(bmp));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.read(2), QByteArray("BM"));

    EXPECT_FALSE(
        pixmap.save(QDir(folder.path()).filePath(QStringLiteral("no/such/x.png")).toStdString(),
                    ImageFileFormat::PNG, -1));
    const Pixmap missing(std::string("/no/such/file.png"));
    ASSERT_NE(missing.getQImage(), nullptr);
    EXPECT_TRUE(missing.getQImage()->isNull());
    EXPECT_TRUE(missing == Pixmap());
}

TEST(Pixmap, LoadingAPathKeepsTheImageHeldBeforeAlive) {
    QTemporaryDir folder;
    const std::string png = QDir(folder.path()).filePath(QStringLiteral("blue.png")).toStdString();
    ASSERT_TRUE(solid(1, 1, 0xFF0000FF).save(QString::fromStdString(png)));
    const QImage red = solid(2, 2, 0xFFFF0000);
    Pixmap pixmap(&red);
    std::unique_ptr<QImage> before(pixmap.getQImage());

    pixmap.loadImagePath(png);
    EXPECT_NE(pixmap.getQImage(), before.get());
    EXPECT_EQ(pixmap.getWidth(), 1);
    // The earlier pointer is still a whole image, now its holder's to delete.
    EXPECT_EQ(*before, red);
}
