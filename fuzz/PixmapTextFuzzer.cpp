// Feeds arbitrary text to the pixmap text reader, through `PixmapType` and through the stream
// operator. Beyond not crashing, hanging or allocating without bound, a refusal must be worded
// exactly, a text that reads must give an opaque ARGB32 image within the size bound, and that
// image must come back unchanged from its own text.
#include "FuzzCheck.h"
#include <vort/image/Pixmap.h>
#include <vort/types/PixmapType.h>

#include <QtGui/QImage>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#ifndef VORT_FUZZ_ENTRY
#define VORT_FUZZ_ENTRY LLVMFuzzerTestOneInput
#endif

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

const std::int64_t kMaxPixels = std::int64_t(64) * 1024 * 1024;
// Images up to this size are also written out and read back.
const std::int64_t kRoundTripPixels = 4096;

bool isOpaque(QImage const &image) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 255) {
                return false;
            }
        }
    }
    return true;
}

// Roughly the pixels that the text claims, read as the reader reads the size.
double claimedPixels(std::string const &text) {
    std::istringstream in(text);
    double width = 0.0;
    double height = 0.0;
    char delimiter = '\0';
    in >> width >> delimiter >> height;
    return std::fabs(width) * std::fabs(height);
}

}  // namespace

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size) {
    static const VORT::TypeInfo type = VORT::PixmapType::Create();
    const std::string text(reinterpret_cast<const char *>(data), size);
    // Claims beyond a few megapixels take the same path as smaller ones and only cost time to
    // fill; the refusal beyond the bound is the unit tests'. Large images are built once, through
    // the type only: the stream operator takes the same code path.
    const double claimed = claimedPixels(text);
    if (claimed > double(1 << 22)) {
        return 0;
    }
    const bool large = claimed > double(1 << 16);

    VORT::ErrorHolder error;
    const VORT::any value = type.convertFromString(text, error);

    // The stream operator builds the same image and reports only through the stream.
    VORT::Pixmap direct;
    if (!large) {
        std::istringstream stream(text);
        stream >> direct;
        check(error.hasError() == stream.fail(), "the type fails exactly when the stream does");
    }

    if (error.hasError()) {
        check(value.empty(), "a refused text gives no value");
        check(error.what() == "Can't convert string '" + text + "' to pixmap",
              "the refusal is worded exactly");
        return 0;
    }
    check(type.isValid(value), "a text that reads gives a pixmap");
    const VORT::Pixmap pixmap = VORT::any_cast<VORT::Pixmap>(value);
    check(large || pixmap == direct, "both readers build the same image");
    QImage const *image = pixmap.getQImage();
    check(image != nullptr, "a text that reads sets the pixmap");
    if (image->isNull()) {
        return 0;
    }
    const std::int64_t pixels = std::int64_t(image->width()) * image->height();
    check(pixels <= kMaxPixels, "no image beyond the bound");
    check(image->format() == QImage::Format_ARGB32, "the reader builds ARGB32");
    if (pixels > kRoundTripPixels) {
        return 0;
    }
    check(isOpaque(*image), "text gives opaque pixels");
    const std::string written = type.convertToString(value);
    VORT::ErrorHolder again;
    const VORT::any reread = type.convertFromString(written, again);
    check(!again.hasError(), "the written text reads back");
    check(VORT::any_cast<VORT::Pixmap>(reread) == pixmap, "the written text round-trips");
    check(type.convertToString(reread) == written, "the written text is canonical");
    return 0;
}
