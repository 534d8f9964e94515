#include "ImageKey_p.h"
#include "ImagePath_p.h"
#include <vort/image/ImageKey.h>
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>

namespace VORT {
namespace ImageCompositor {

namespace {

// The formats whose 32-bit words read 0xAARRGGBB, the layout that the grayscale test and the
// tint work on.
bool hasArgbWords(QImage const &image) {
    switch (image.format()) {
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            return true;
        default:
            return false;
    }
}

// Red 5 or more away from green or from blue. The sums are biased by 4 so that one unsigned
// comparison tests both sides, and a row is tested as a whole, which the compiler vectorises.
bool rowHasColour(QRgb const *line, int width) {
    unsigned int colour = 0;
    for (int x = 0; x < width; ++x) {
        const unsigned int red = qRed(line[x]);
        colour |= static_cast<unsigned int>(red - qGreen(line[x]) + 4u > 8u);
        colour |= static_cast<unsigned int>(red - qBlue(line[x]) + 4u > 8u);
    }
    return colour != 0;
}

// A canvas of `size` whose pixels start on a 64-byte boundary, so that Qt's vectorised blends
// begin every row of a width of 16 pixels or more without a scalar lead-in (the heap gives Qt's
// own images only 16 bytes). Null when the size is empty or the memory isn't there.
QImage alignedCanvas(QSize const &size) {
    constexpr std::size_t kAlignment = 64;
    // The block holds the pixels and the slack for aligning them, with no overflow on the way.
    if (size.isEmpty() || static_cast<std::size_t>(size.height()) >
                              (std::numeric_limits<std::size_t>::max() - kAlignment) / 4 /
                                  static_cast<std::size_t>(size.width())) {
        return QImage();
    }
    const std::size_t bytes = static_cast<std::size_t>(size.width()) * 4 * size.height();
    // Aligned by hand inside one plain block: `aligned_alloc` would split a block of its own
    // and hand the allocator a fragment to file away on every call.
    void *block = std::malloc(bytes + kAlignment);
    if (block == nullptr) {
        return QImage();
    }
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    auto *pixels = reinterpret_cast<uchar *>((address + kAlignment) & ~(kAlignment - 1));
    return QImage(pixels, size.width(), size.height(), static_cast<qsizetype>(size.width()) * 4,
                  QImage::Format_ARGB32_Premultiplied, std::free, block);
}

// Source-over onto transparent pixels leaves the source's premultiplied pixels exactly (the
// blend adds nothing of a destination that is 0), so the first operand of that mode is copied
// rather than blended when it is premultiplied ARGB at one pixel per unit. Only pixels that
// break the format's own rule (no alpha but some colour) would differ: the blend drops them.
bool isPlainPremultiplied(QImage const &image) {
    return image.format() == QImage::Format_ARGB32_Premultiplied && image.devicePixelRatio() == 1.0;
}

// Copies `image` into the top left corner of `canvas`, of the same format and at least as large.
void copyToTopLeft(QImage const &image, QImage &canvas) {
    const qsizetype rowBytes = static_cast<qsizetype>(image.width()) * 4;
    const qsizetype fromStride = image.bytesPerLine();
    const qsizetype toStride = canvas.bytesPerLine();
    uchar const *from = image.constBits();
    uchar *to = canvas.bits();
    if (fromStride == rowBytes && toStride == rowBytes) {
        std::memcpy(to, from, static_cast<std::size_t>(rowBytes) * image.height());
        return;
    }
    for (int y = image.height(); y > 0; --y, from += fromStride, to += toStride) {
        std::memcpy(to, from, static_cast<std::size_t>(rowBytes));
    }
}

// The node of an operand, asked for by its normalised key; a key proper is its own normal form
// and is passed on without a copy.
Holder<Node> operandNode(Manager &manager, std::string const &key) {
    return isKeyProper(key) ? manager.getImage(key, true) : manager.getImage(buildKey(key), true);
}

}  // namespace

Modifier::Modifier(Location const &aLoc, Location const &bLoc, VTPoint<int> const &offset)
    : mOffsetXY(offset), mALoc(aLoc), mBLoc(bLoc) {}

Modifier::Modifier(Modifier const &other) = default;

Modifier &Modifier::operator=(Modifier const &other) = default;

Modifier::~Modifier() {}

bool Modifier::postRender(QImage &, Holder<Node> const &, Holder<Node> const &) {
    return true;
}

VTPoint<int> Modifier::getRenderLocation(QImage const *imageA, QImage const *imageB) {
    if (imageA == nullptr || imageB == nullptr) {
        return VTPoint<int>(0, 0);
    }
    return computeImgLocation(imageA, mALoc) - computeImgLocation(imageB, mBLoc);
}

void Modifier::doCopyFrom(Modifier const *other) {
    mOffsetXY = other->mOffsetXY;
    mALoc = other->mALoc;
    mBLoc = other->mBLoc;
}

bool Modifier::doInitFromString(std::string &) {
    return true;
}

Modifier *Modifier::finishClone(Modifier *fresh, Modifier const *source, std::string const &args) {
    fresh->doCopyFrom(source);
    std::string local = args;
    if (!fresh->doInitFromString(local)) {
        delete fresh;
        return nullptr;
    }
    return fresh;
}

DefaultModifier *DefaultModifier::clone(std::string const &args) const {
    return static_cast<DefaultModifier *>(finishClone(new DefaultModifier, this, args));
}

bool DefaultModifier::render(QImage &out, std::string const *keyA, std::string const *) {
    if (keyA == nullptr) {
        return false;
    }
    return out.load(toQtPath(*keyA));
}

QtModifier::QtModifier(Mode const &mode) : mMode(mode) {}

QtModifier *QtModifier::clone(std::string const &args) const {
    return static_cast<QtModifier *>(finishClone(new QtModifier(mMode), this, args));
}

bool QtModifier::render(QImage &out, std::string const *keyA, std::string const *keyB) {
    if (mMode.getCode() < Mode::SourceOver || mMode.getCode() > Mode::Exclusion) {
        mMode = Mode(Mode::SourceOver);
    }
    Manager &manager = Manager::instance();
    Holder<Node> nodeA;
    Holder<Node> nodeB;
    QImage const *imageA = nullptr;
    QImage const *imageB = nullptr;
    if (keyA != nullptr) {
        nodeA = operandNode(manager, *keyA);
        imageA = nodeA ? nodeA->getImage(true) : nullptr;
        if (imageA == nullptr) {
            return false;
        }
    }
    if (keyB != nullptr) {
        nodeB = operandNode(manager, *keyB);
        imageB = nodeB ? nodeB->getImage(true) : nullptr;
        if (imageB == nullptr && !keyB->empty()) {
            return false;
        }
    }
    if (imageA == nullptr && imageB == nullptr) {
        return false;
    }

    const VTPoint<int> location = getRenderLocation(imageA, imageB);
    QSize size;
    if (imageA != nullptr && imageB != nullptr) {
        size = imageA->size().expandedTo(imageB->size());
    } else {
        size = (imageA != nullptr ? imageA : imageB)->size();
    }
    QImage canvas = alignedCanvas(size);
    // A canvas without pixels has nothing to paint, and a painter would only complain of it.
    if (!canvas.isNull()) {
        const bool copyA = imageA != nullptr && mMode.getCode() == Mode::SourceOver &&
                           isPlainPremultiplied(*imageA);
        if (!copyA || imageA->size() != size) {
            canvas.fill(0);
        }
        if (copyA) {
            copyToTopLeft(*imageA, canvas);
        }
        QPainter painter(&canvas);
        painter.setPen(Qt::NoPen);
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setCompositionMode(static_cast<QPainter::CompositionMode>(mMode.getCode()));
        if (imageA != nullptr && !copyA) {
            painter.drawImage(0, 0, *imageA);
        }
        if (imageB != nullptr) {
            painter.drawImage(location.x, location.y, *imageB);
        }
    }
    out = canvas;
    return true;
}

void QtModifier::doCopyFrom(Modifier const *other) {
    Modifier::doCopyFrom(other);
    if (auto const *same = dynamic_cast<QtModifier const *>(other)) {
        mMode = same->mMode;
    }
}

ColorModifier::ColorModifier(Color const &color, bool toGrayscale)
    : QtModifier(Mode(Mode::SourceOver)), mColor(color), mToGrayscale(toGrayscale) {}

ColorModifier *ColorModifier::clone(std::string const &args) const {
    return static_cast<ColorModifier *>(
        finishClone(new ColorModifier(Color(1.0, 1.0, 1.0, 1.0), true), this, args));
}

bool ColorModifier::postRender(QImage &image, Holder<Node> const &, Holder<Node> const &) {
    convertImageToGrayscaleAndTint(image, mColor, mToGrayscale);
    return true;
}

void ColorModifier::doCopyFrom(Modifier const *other) {
    QtModifier::doCopyFrom(other);
    if (auto const *same = dynamic_cast<ColorModifier const *>(other)) {
        mColor = same->mColor;
        mToGrayscale = same->mToGrayscale;
    }
}

bool ColorModifier::doInitFromString(std::string &args) {
    if (!QtModifier::doInitFromString(args)) {
        return false;
    }
    const std::string::size_type colourEnd = args.find(';');
    std::istringstream colour(args.substr(0, colourEnd));
    // The stream operator is a global one, which lookup from this namespace does not reach.
    ::operator>>(colour, mColor);
    std::string flag;
    if (colourEnd == std::string::npos) {
        args.clear();
    } else {
        const std::string::size_type flagEnd = args.find(';', colourEnd + 1);
        flag = args.substr(colourEnd + 1, flagEnd == std::string::npos ? std::string::npos
                                                                       : flagEnd - colourEnd - 1);
        args = flagEnd == std::string::npos ? std::string() : args.substr(flagEnd + 1);
    }
    // A stream's own reading of a bool: "0" or "1"; another number reads as true and "x" as
    // false, and an empty text leaves the flag as it was.
    std::istringstream flagText(flag);
    flagText >> mToGrayscale;
    return true;
}

VTPoint<int> computeImgLocation(QImage const *image, Location const &location) {
    if (image == nullptr) {
        return VTPoint<int>(0, 0);
    }
    const QRect rect = image->rect();
    const int middleX = (rect.left() + rect.right()) / 2;
    const int middleY = (rect.top() + rect.bottom()) / 2;
    switch (location.getCode()) {
        case Location::TopCenter:
            return VTPoint<int>(middleX, rect.top());
        case Location::BottomCenter:
            return VTPoint<int>(middleX, rect.bottom());
        case Location::LeftCenter:
            return VTPoint<int>(rect.left(), middleY);
        case Location::RightCenter:
            return VTPoint<int>(rect.right(), middleY);
        case Location::TopLeft:
            return VTPoint<int>(rect.left(), rect.top());
        case Location::TopRight:
            return VTPoint<int>(rect.right(), rect.top());
        case Location::BottomLeft:
            return VTPoint<int>(rect.left(), rect.bottom());
        case Location::BottomRight:
            return VTPoint<int>(rect.right(), rect.bottom());
        case Location::Center:
            return VTPoint<int>(middleX, middleY);
        default:
            return VTPoint<int>(0, 0);
    }
}

bool isGrayscale(QImage const &image) {
    if (image.isNull()) {
        return true;
    }
    if (!hasArgbWords(image)) {
        return isGrayscale(image.convertToFormat(QImage::Format_ARGB32));
    }
    const int width = image.width();
    for (int y = image.height() - 1; y >= 0; --y) {
        if (rowHasColour(reinterpret_cast<QRgb const *>(image.constScanLine(y)), width)) {
            return false;
        }
    }
    return true;
}

void convertImageToGrayscaleAndTint(QImage &image, Color const &color, bool toGrayscale) {
    if (image.isNull()) {
        return;
    }
    if (!hasArgbWords(image)) {
        image.convertTo(QImage::Format_ARGB32);
    }
    const bool isGray = isGrayscale(image);

    // Every new channel depends on one byte only (the luminance, or the old channel), so the
    // arithmetic runs once per byte value into three tables, exactly as it would run per pixel.
    const float tint[3] = {static_cast<float>(color.red() / 255.0),
                           static_cast<float>(color.green() / 255.0),
                           static_cast<float>(color.blue() / 255.0)};
    QRgb table[3][256];
    for (int channel = 0; channel < 3; ++channel) {
        const int shift = 16 - 8 * channel;
        for (int byte = 0; byte < 256; ++byte) {
            int value;
            if (toGrayscale) {
                const float lum = static_cast<float>(byte) / 255.0f * 255.0f;
                value = static_cast<int>(lum * tint[channel] + 0.5f);
            } else {
                const float scaled = static_cast<float>(byte) / 255.0f * tint[channel];
                value = static_cast<int>(static_cast<float>(static_cast<double>(scaled) * 255.0) +
                                         0.5f);
            }
            table[channel][byte] = (static_cast<QRgb>(value) & 0xFFu) << shift;
        }
    }

    // RGB32 keeps its alpha byte at 0xFF on every write, as `QImage::setPixel` does.
    const QRgb forcedAlpha = image.format() == QImage::Format_RGB32 ? 0xFF000000u : 0u;
    const int width = image.width();
    const int height = image.height();
    const qsizetype stride = image.bytesPerLine();
    // Read through the shared pixels until the first change; only then detach.
    uchar const *source = image.constBits();
    uchar *target = nullptr;
    for (int y = 0; y < height; ++y) {
        QRgb const *in = reinterpret_cast<QRgb const *>(source + y * stride);
        for (int x = 0; x < width; ++x) {
            const QRgb old = in[x];
            const int red = qRed(old);
            const int green = qGreen(old);
            const int blue = qBlue(old);
            QRgb fresh = old & 0xFF000000u;
            if (toGrayscale) {
                int lum = (red * 11 + green * 16 + blue * 5) / 32;
                if (isGray && lum + 130 < 255) {
                    lum += 130;
                }
                fresh |= table[0][lum] | table[1][lum] | table[2][lum];
            } else {
                fresh |= table[0][red] | table[1][green] | table[2][blue];
            }
            if (fresh != old) {
                if (target == nullptr) {
                    target = image.bits();
                    source = target;
                    in = reinterpret_cast<QRgb const *>(source + y * stride);
                }
                reinterpret_cast<QRgb *>(target + y * stride)[x] = fresh | forcedAlpha;
            }
        }
    }
}

}  // namespace ImageCompositor
}  // namespace VORT
