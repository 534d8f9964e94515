#include <vort/types/PixmapType.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <string>

using namespace VORT;

namespace {

ByteArray encoded(QImage const &image, const char *format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return ByteArray(bytes.constData(), static_cast<unsigned int>(bytes.size()));
}

QImage imageIn(any const &value) {
    const Pixmap pixmap = any_cast<Pixmap>(value);
    return pixmap.getQImage() != nullptr ? *pixmap.getQImage() : QImage();
}

}  // namespace

TEST(PixmapType, KeepsAlphaInBytesAndDropsItInText) {
    const TypeInfo type = PixmapType::Create();
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(10, 20, 30, 40));
    image.setPixel(1, 0, qRgba(200, 100, 0, 255));
    const any value{Pixmap(&image)};

    ErrorHolder error;
    const ByteArray bytes = type.convertToByteArray(value);
    EXPECT_EQ(bytes.slice(0u, 8u), ByteArray("\x89PNG\r\n\x1a\n", 8u));
    EXPECT_EQ(imageIn(type.convertFromByteArray(bytes, error)).convertToFormat(image.format()),
              image);
    EXPECT_EQ(type.convertToString(value), "2,1;10,20,30;200,100,0;");
    QImage opaque = image;
    opaque.setPixel(0, 0, qRgb(10, 20, 30));
    EXPECT_EQ(imageIn(type.convertFromString("2,1;10,20,30;200,100,0;", error)), opaque);
    EXPECT_FALSE(error.hasError());

    // Unset and null pixmaps have no bytes, and no bytes read back as unset.
    const QImage nullImage;
    EXPECT_TRUE(type.convertToByteArray(any(Pixmap(&nullImage))).isEmpty() &&
                type.convertToByteArray(type.defaultConstruct()).isEmpty());
    EXPECT_EQ(any_cast<Pixmap>(type.convertFromByteArray(ByteArray(), error)).getQImage(), nullptr);
    EXPECT_TRUE(type.isValid(any(Pixmap())) && !type.isValid(any(7)) && PixmapType::Is(type) &&
                type == PixmapType::Create());
    EXPECT_THROW(type.convertToString(any(7)), VORT::bad_any_cast);
}

TEST(PixmapType, RefusesTextThatLeavesTheStreamFailed) {
    const TypeInfo type = PixmapType::Create();
    for (const char *text : {"", "1,1;255,0", "x", "2,2;1,2,3;"}) {
        ErrorHolder error;
        EXPECT_TRUE(type.convertFromString(text, error).empty()) << text;
        EXPECT_EQ(error.what() + error.description()->where().file(),
                  "Can't convert string '" + std::string(text) + "' to pixmap.\\types\\PixmapType");
    }
}

// The bound on what a PNG header may claim is pinned by the PNG fuzz target's corpus.
TEST(PixmapType, DecodesSoundPngsOnlyAndNeverReports) {
    const TypeInfo type = PixmapType::Create();
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(qRgba(1, 2, 3, 4));
    const ByteArray png = encoded(image, "PNG");
    struct Row {
        const char *name;
        ByteArray bytes;
        bool decodes;
    };
    const Row rows[] = {
        {"sound", png, true},
        {"truncated", png.slice(0u, png.size() / 2), false},
        {"not an image", ByteArray("hello, world", 12u), false},
        {"another format", encoded(image, "BMP"), false},
    };
    for (Row const &row : rows) {
        ErrorHolder error;
        error.setError(VORT::SimpleErrorDescription(VORT::CodeLocation(".\\test", 1), "earlier"));
        const any value = type.convertFromByteArray(row.bytes, error);
        EXPECT_EQ(error.what(), "earlier") << row.name;
        ASSERT_NE(any_cast<Pixmap>(value).getQImage(), nullptr) << row.name;
        EXPECT_EQ(!imageIn(value).isNull(), row.decodes) << row.name;
    }
}
