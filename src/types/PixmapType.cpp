#include <vort/types/PixmapType.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <sstream>

namespace VORT {

namespace {

// The most pixels that a byte stream may make the reader decode: 256 MiB as ARGB32.
const qint64 kMaxDecodedPixels = qint64(64) * 1024 * 1024;
const int kAllocationLimitMiB = 256;

// The PNG decoder only, and only after its header has told a size within the bound: the size
// is the first thing a hostile stream lies about.
QImage decodePng(QByteArray const &data) {
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    reader.setAutoDetectImageFormat(false);
    reader.setAllocationLimit(kAllocationLimitMiB);
    const QSize size = reader.size();
    QImage image;
    if (size.isValid() && qint64(size.width()) * size.height() <= kMaxDecodedPixels) {
        reader.read(&image);
    }
    return image;
}

}  // namespace

any PixmapType::convertFromString(std::string const &text, ErrorHolder &error) const {
    std::istringstream stream(text);
    Pixmap pixmap;
    Pixmap::read(stream, pixmap);
    if (stream.fail() || stream.bad()) {
        return cantConvert(text, "' to pixmap", CodeLocation(".\\types\\PixmapType", 61), error);
    }
    return any(pixmap);
}

std::string PixmapType::convertToString(any const &value) const {
    std::ostringstream stream;
    Pixmap::write(stream, any_cast<Pixmap>(value));
    return stream.str();
}

any PixmapType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    if (bytes.size() == 0) {
        return any(Pixmap());
    }
    const QImage image = decodePng(QByteArray(reinterpret_cast<char const *>(bytes.data()),
                                              static_cast<qsizetype>(bytes.size())));
    return any(Pixmap(&image));
}

ByteArray PixmapType::convertToByteArray(any const &value) const {
    const Pixmap pixmap = any_cast<Pixmap>(value);
    QImage const *image = pixmap.getQImage();
    if (image == nullptr || image->isNull()) {
        return ByteArray();
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image->save(&buffer, "PNG", -1);
    return ByteArray(png.constData(), static_cast<unsigned int>(png.size()));
}

template class TypeFamily<PixmapType>;
template class TypeBase<PixmapType, Pixmap>;

}  // namespace VORT
