#include "ImagePath_p.h"
#include <vort/image/Pixmap.h>

#include <QtGui/QImage>

#include <algorithm>
#include <charconv>
#include <climits>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace VORT {

namespace {

// A text that claims a larger image than this is refused rather than allocated: 256 MiB of
// ARGB32, the bound that `PixmapType` keeps for PNG bytes as well.
const std::int64_t kMaxTextPixels = std::int64_t(64) * 1024 * 1024;

const QRgb kOpaque = 0xFF000000u;

// `(int)value`, with the result that x86 gives (INT_MIN) for NaN and for values out of range
// instead of undefined behaviour: hosts hand over whatever their matrices hold, and text may
// spell any number.
int truncateToInt(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) {
        return INT_MIN;
    }
    return static_cast<int>(value);
}

// Rounds the way every reader of this class does, keeping the low 8 bits.
QRgb roundedByte(double value) {
    return static_cast<QRgb>(truncateToInt(value + 0.5)) & 0xFFu;
}

QRgb opaque(QRgb red, QRgb green, QRgb blue) {
    return kOpaque | red << 16 | green << 8 | blue;
}

// Writes the three planes into `image` (ARGB32, `width` by `height`), the samples of each plane
// column after column.
template <class Sample, class ToByte>
void fillFromPlanes(QImage &image, Sample const *data, int width, int height,
                    ImageDataDirection::Type xDirection, ImageDataDirection::Type yDirection,
                    ToByte toByte) {
    const std::size_t plane = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    uchar *bits = image.bits();
    const qsizetype stride = image.bytesPerLine();
    std::size_t index = 0;
    for (int x = 0; x < width; ++x) {
        const int column = xDirection == 0 ? x : width - x - 1;
        for (int y = 0; y < height; ++y, ++index) {
            const int row = yDirection != 0 ? height - 1 - y : y;
            reinterpret_cast<QRgb *>(bits + row * stride)[column] = opaque(
                toByte(data[index]), toByte(data[plane + index]), toByte(data[2 * plane + index]));
        }
    }
}

void appendNumber(std::string &text, int value, char delimiter) {
    char digits[12];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    text.append(digits, end);
    text += delimiter;
}

}  // namespace

Pixmap::Pixmap() : mImage(nullptr) {}

Pixmap::Pixmap(QImage const *image) : mImage(new QImage(*image)) {}

Pixmap::Pixmap(std::string const &path) : mImage(new QImage(toQtPath(path))) {}

Pixmap::Pixmap(unsigned char const *data, ImageDataType::Type type, int width, int height,
               ImageDataDirection::Type xDirection, ImageDataDirection::Type yDirection)
    : mImage(nullptr) {
    switch (type) {
        case ImageDataType::Double:
            buildFromDoubleData(reinterpret_cast<double const *>(data), width, height, xDirection,
                                yDirection);
            break;
        case ImageDataType::UInt8:
            buildFromUInt8Data(data, width, height, xDirection, yDirection);
            break;
        case ImageDataType::UInt16:
            buildFromUInt16Data(reinterpret_cast<unsigned short const *>(data), width, height,
                                xDirection, yDirection);
            break;
        default:
            break;
    }
}

Pixmap::Pixmap(Pixmap const &other)
    : mImage(other.mImage != nullptr ? new QImage(*other.mImage) : nullptr) {}

Pixmap &Pixmap::operator=(Pixmap const &other) {
    if (this != &other) {
        delete mImage;
        mImage = other.mImage != nullptr ? new QImage(*other.mImage) : nullptr;
    }
    return *this;
}

Pixmap::~Pixmap() {
    delete mImage;
}

void Pixmap::loadImagePath(std::string const &path) {
    mImage = new QImage(toQtPath(path));
}

bool Pixmap::save(std::string const &path, ImageFileFormat::Type format, int quality) const {
    if (mImage == nullptr) {
        return false;
    }
    return mImage->save(toQtPath(path), formatNameString(format), quality);
}

char const *Pixmap::formatNameString(ImageFileFormat::Type format) const {
    // The empty name leaves the choice to Qt, by the file's suffix.
    return format == ImageFileFormat::PNG ? "PNG" : "";
}

int Pixmap::getWidth() const {
    return mImage != nullptr ? mImage->width() : 0;
}

int Pixmap::getHeight() const {
    return mImage != nullptr ? mImage->height() : 0;
}

std::int64_t Pixmap::getCacheKey() const {
    return mImage != nullptr ? mImage->cacheKey() : 0;
}

bool Pixmap::operator==(Pixmap const &other) const {
    if (getCacheKey() == other.getCacheKey()) {
        return true;
    }
    if (mImage != nullptr && other.mImage != nullptr) {
        return *mImage == *other.mImage;
    }
    return false;
}

void Pixmap::buildFromDoubleData(double const *data, int width, int height,
                                 ImageDataDirection::Type xDirection,
                                 ImageDataDirection::Type yDirection) {
    delete mImage;
    mImage = new QImage(width, height, QImage::Format_ARGB32);
    if (width < 1 || mImage->isNull()) {
        return;
    }
    fillFromPlanes(*mImage, data, width, height, xDirection, yDirection,
                   [](double sample) { return roundedByte(sample * 255.0); });
}

void Pixmap::buildFromUInt8Data(unsigned char const *data, int width, int height,
                                ImageDataDirection::Type xDirection,
                                ImageDataDirection::Type yDirection) {
    delete mImage;
    mImage = new QImage(width, height, QImage::Format_ARGB32);
    if (width < 1 || mImage->isNull()) {
        return;
    }
    fillFromPlanes(*mImage, data, width, height, xDirection, yDirection,
                   [](unsigned char sample) { return static_cast<QRgb>(sample); });
}

void Pixmap::buildFromUInt16Data(unsigned short const *, int width, int height,
                                 ImageDataDirection::Type, ImageDataDirection::Type) {
    // The samples are never read: a 16-bit image is opaque black at the requested size, which
    // is what hosts have always received from this form.
    delete mImage;
    mImage = new QImage(width, height, QImage::Format_ARGB32);
    if (width < 1 || mImage->isNull()) {
        return;
    }
    mImage->fill(kOpaque);
}

std::ostream &Pixmap::write(std::ostream &stream, Pixmap const &pixmap) {
    QImage const *image = pixmap.mImage;
    if (image == nullptr) {
        return stream;
    }
    const int width = image->width();
    const int height = image->height();
    std::string text;
    text.reserve(8 + static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 12);
    appendNumber(text, width, ',');
    appendNumber(text, height, ';');
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QRgb pixel = image->pixel(x, y);
            appendNumber(text, qRed(pixel), ',');
            appendNumber(text, qGreen(pixel), ',');
            appendNumber(text, qBlue(pixel), ';');
        }
    }
    return stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::istream &Pixmap::read(std::istream &stream, Pixmap &pixmap) {
    if (stream.eof()) {
        pixmap = Pixmap();
        return stream;
    }
    double widthValue = 0.0;
    double heightValue = 0.0;
    char delimiter = '\0';
    stream >> widthValue >> delimiter >> heightValue >> delimiter;
    const int width = truncateToInt(widthValue + 0.5);
    const int height = truncateToInt(heightValue + 0.5);
    if (width > 0 && height > 0 && std::int64_t(width) * height > kMaxTextPixels) {
        stream.setstate(std::ios_base::failbit);
        pixmap = Pixmap();
        return stream;
    }

    Pixmap result;
    result.mImage = new QImage(width, height, QImage::Format_ARGB32);
    QImage &image = *result.mImage;
    if (!image.isNull()) {
        // Rows follow each other without padding in a 32-bit format, so the pixels are one run,
        // top row first.
        QRgb *pixels = reinterpret_cast<QRgb *>(image.bits());
        const std::size_t total =
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        double red = 0.0;
        double green = 0.0;
        double blue = 0.0;
        std::size_t read = 0;
        while (read < total && !stream.fail()) {
            stream >> red >> delimiter >> green >> delimiter >> blue >> delimiter;
            pixels[read++] = opaque(roundedByte(red), roundedByte(green), roundedByte(blue));
        }
        if (read < total) {
            // Once the stream has failed, every later extraction leaves its variables as they
            // were, so the rest repeats the last value. Qt fills the whole image at the speed
            // of memory, and the few pixels read go back over it, so that a short text claiming
            // a large image costs no more than the text.
            const QRgb last = read > 0 ? pixels[read - 1] : opaque(0, 0, 0);
            const std::vector<QRgb> head(pixels, pixels + read);
            image.fill(last);
            std::copy(head.begin(), head.end(), reinterpret_cast<QRgb *>(image.bits()));
        }
    }
    pixmap = result;
    return stream;
}

}  // namespace VORT

std::ostream &operator<<(std::ostream &stream, VORT::Pixmap const &pixmap) {
    return VORT::Pixmap::write(stream, pixmap);
}

std::istream &operator>>(std::istream &stream, VORT::Pixmap &pixmap) {
    return VORT::Pixmap::read(stream, pixmap);
}
