#include <vort/types/PixmapType.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using VORT::any;
using VORT::any_cast;
using VORT::ByteArray;
using VORT::ErrorHolder;
using VORT::Pixmap;
using VORT::PixmapType;
using VORT::TypeInfo;

namespace {

QImage translucent() {
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(qRgba(10, 20, 30, 40));
    image.setPixel(2, 1, qRgba(200, 100, 0, 255));
    return image;
}

ByteArray pngOf(QImage const &image) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return ByteArray(png.constData(), static_cast<unsigned int>(png.size()));
}

std::uint32_t crc32(unsigned char const *data, std::size_t size) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        }
    }
    return ~crc;
}

void putBigEndian(ByteArray &bytes, unsigned int at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<unsigned char>(value >> (24 - 8 * i));
    }
}

// A real PNG whose header, with a correct checksum, claims another size than its data holds.
ByteArray pngClaiming(std::uint32_t width, std::uint32_t height) {
    ByteArray bytes = pngOf(translucent());
    // Signature (8), length (4), "IHDR" (4): width and height follow, then the rest of the
    // 13 header bytes and the checksum over type and data.
    putBigEndian(bytes, 16, width);
    putBigEndian(bytes, 20, height);
    putBigEndian(bytes, 29, crc32(bytes.data() + 12, 17));
    return bytes;
}

void appendChunk(QByteArray &png, const char *type, QByteArray const &data) {
    ByteArray header(8u, '\0');
    putBigEndian(header, 0, static_cast<std::uint32_t>(data.size()));
    const QByteArray typed = QByteArray(type) + data;
    putBigEndian(header, 4,
                 crc32(reinterpret_cast<unsigned char const *>(typed.constData()),
                       static_cast<std::size_t>(typed.size())));
    png += QByteArray(reinterpret_cast<char const *>(header.data()), 4);
    png += typed;
    png += QByteArray(reinterpret_cast<char const *>(header.data()) + 4, 4);
}

// A sound, all-black PNG of one bit a pixel: a few kilobytes for tens of megapixels, which Qt
// itself would decode into a small monochrome image.
ByteArray monochromePng(std::uint32_t width, std::uint32_t height) {
    ByteArray header(13u, '\0');
    putBigEndian(header, 0, width);
    putBigEndian(header, 4, height);
    header[8u] = 1;  // bit depth; colour type 0 (gray), default compression, filter, no interlace
    const QByteArray rows(static_cast<qsizetype>(height) * (1 + (width + 7) / 8), '\0');
    QByteArray png("\x89PNG\r\n\x1a\n", 8);
    appendChunk(png, "IHDR", QByteArray(reinterpret_cast<char const *>(header.data()), 13));
    appendChunk(png, "IDAT", qCompress(rows).mid(4));  // a zlib stream behind Qt's length
    appendChunk(png, "IEND", QByteArray());
    return ByteArray(png.constData(), static_cast<unsigned int>(png.size()));
}

QImage imageIn(any const &value) {
    const Pixmap pixmap = any_cast<Pixmap>(value);
    return pixmap.getQImage() != nullptr ? *pixmap.getQImage() : QImage();
}

}  // namespace

TEST(PixmapType, KeepsAlphaInBytesAndDropsItInText) {
    const TypeInfo type = PixmapType::Create();
    const QImage image = translucent();
    const any value{Pixmap(&image)};

    ErrorHolder error;
    const ByteArray bytes = type.convertToByteArray(value);
    ASSERT_GT(bytes.size(), 8u);
    EXPECT_EQ(ByteArray(bytes.data(), 8u), ByteArray("\x89PNG\r\n\x1a\n", 8u));
    const any fromBytes = type.convertFromByteArray(bytes, error);
    EXPECT_FALSE(error.hasError());
    ASSERT_TRUE(type.isValid(fromBytes));
    EXPECT_EQ(imageIn(fromBytes).convertToFormat(QImage::Format_ARGB32), image);

    const std::string text = type.convertToString(value);
    EXPECT_EQ(text, "3,2;10,20,30;10,20,30;10,20,30;10,20,30;10,20,30;200,100,0;");
    const any fromText = type.convertFromString(text, error);
    EXPECT_FALSE(error.hasError());
    QImage opaque = image;
    opaque.fill(qRgb(10, 20, 30));
    opaque.setPixel(2, 1, qRgb(200, 100, 0));
    EXPECT_EQ(imageIn(fromText), opaque);
}

TEST(PixmapType, UnsetAndNullPixmapsHaveNoBytes) {
    const TypeInfo type = PixmapType::Create();
    const QImage nullImage;
    EXPECT_EQ(type.convertToByteArray(any(Pixmap())), ByteArray());
    EXPECT_EQ(type.convertToByteArray(any(Pixmap(&nullImage))), ByteArray());
    EXPECT_EQ(type.convertToString(any(Pixmap())), "");

    ErrorHolder error;
    const any fromNothing = type.convertFromByteArray(ByteArray(), error);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(any_cast<Pixmap>(fromNothing).getQImage(), nullptr);
    EXPECT_EQ(any_cast<Pixmap>(type.defaultConstruct()).getQImage(), nullptr);

    EXPECT_TRUE(type.isValid(any(Pixmap())));
    EXPECT_FALSE(type.isValid(any()));
    EXPECT_FALSE(type.isValid(any(7)));
    EXPECT_THROW(type.convertToString(any(7)), VORT::bad_any_cast);
    EXPECT_TRUE(PixmapType::Is(type));
    EXPECT_TRUE(type == PixmapType::Create());
    EXPECT_FALSE(type < PixmapType::Create());
}

TEST(PixmapType, RefusesTextThatLeavesTheStreamFailed) {
    const TypeInfo type = PixmapType::Create();
    for (const char *text : {"", "1,1;255,0", "x", "2,2;1,2,3;"}) {
        ErrorHolder error;
        const any value = type.convertFromString(text, error);
        EXPECT_TRUE(value.empty()) << text;
        ASSERT_TRUE(error.hasError()) << text;
        EXPECT_EQ(error.what(), "Can't convert string '" + std::string(text) + "' to pixmap");
        EXPECT_EQ(error.description()->where().file(), ".\\types\\PixmapType");
    }
}

TEST(PixmapType, DecodesOnlySoundPngsOfBoundedSize) {
    const TypeInfo type = PixmapType::Create();
    const ByteArray good = pngOf(translucent());
    QImage bmpImage = translucent();
    QByteArray bmp;
    QBuffer bmpBuffer(&bmp);
    bmpBuffer.open(QIODevice::WriteOnly);
    bmpImage.save(&bmpBuffer, "BMP");

    struct Row {
        const char *name;
        ByteArray bytes;
        bool decodes;
    };
    const Row rows[] = {
        {"sound", good, true},
        {"small claim", pngClaiming(3, 2), true},
        {"truncated", good.slice(0u, good.size() / 2), false},
        {"not an image", ByteArray("hello, world", 12u), false},
        {"another format", ByteArray(bmp.constData(), static_cast<unsigned int>(bmp.size())),
         false},
        // Within what a PNG may say, far beyond the bound: refused before any allocation.
        {"huge claim", pngClaiming(100000, 100000), false},
        {"wide claim", pngClaiming(0x7FFFFFFF, 1), false},
        // The bound counts pixels, not the bytes of the decoded format: 64 Mi pixels pass, one
        // row more does not.
        {"64 Mi pixels", monochromePng(8192, 8192), true},
        {"beyond 64 Mi pixels", monochromePng(8192, 8193), false},
    };
    for (Row const &row : rows) {
        // A failed decoding is not reported, not even over an earlier error.
        ErrorHolder error;
        error.setError(VORT::SimpleErrorDescription(VORT::CodeLocation(".\\test", 1), "earlier"));
        const any value = type.convertFromByteArray(row.bytes, error);
        EXPECT_EQ(error.what(), "earlier") << row.name;
        ASSERT_TRUE(type.isValid(value)) << row.name;
        const Pixmap pixmap = any_cast<Pixmap>(value);
        ASSERT_NE(pixmap.getQImage(), nullptr) << row.name;
        EXPECT_EQ(!pixmap.getQImage()->isNull(), row.decodes) << row.name;
    }
}
