// Feeds arbitrary bytes to `PixmapType` as PNG. Beyond not crashing, hanging or allocating
// without bound, reading must never report through the holder, must give a null image or one
// within the size bound, and a decoded image must survive being written as PNG and read again.
#include "FuzzCheck.h"
#include <vort/image/Pixmap.h>
#include <vort/types/PixmapType.h>

#include <QtGui/QImage>

#include <cstddef>
#include <cstdint>

#ifndef VORT_FUZZ_ENTRY
#define VORT_FUZZ_ENTRY LLVMFuzzerTestOneInput
#endif

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

const std::int64_t kMaxPixels = std::int64_t(64) * 1024 * 1024;
// Images up to this size are also written out and read back.
const std::int64_t kRoundTripPixels = 1 << 16;

}  // namespace

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size) {
    static const VORT::TypeInfo type = VORT::PixmapType::Create();
    const VORT::ByteArray bytes(data, static_cast<unsigned int>(size));

    VORT::ErrorHolder error;
    const VORT::any value = type.convertFromByteArray(bytes, error);
    check(!error.hasError(), "reading bytes reports nothing");
    check(type.isValid(value), "reading bytes always gives a pixmap");
    const VORT::Pixmap pixmap = VORT::any_cast<VORT::Pixmap>(value);
    QImage const *image = pixmap.getQImage();
    if (size == 0) {
        check(image == nullptr, "no bytes give an unset pixmap");
        return 0;
    }
    check(image != nullptr, "bytes give a set pixmap");
    if (image->isNull()) {
        check(type.convertToByteArray(value).size() == 0, "a null image writes no bytes");
        return 0;
    }
    const std::int64_t pixels = std::int64_t(image->width()) * image->height();
    check(pixels <= kMaxPixels, "no image beyond the bound");
    if (pixels > kRoundTripPixels) {
        return 0;
    }
    const VORT::ByteArray written = type.convertToByteArray(value);
    check(written.size() > 0, "a decoded image writes bytes");
    const VORT::any reread = type.convertFromByteArray(written, error);
    const VORT::Pixmap rereadPixmap = VORT::any_cast<VORT::Pixmap>(reread);
    QImage const *again = rereadPixmap.getQImage();
    check(again != nullptr && !again->isNull(), "written bytes decode");
    check(again->size() == image->size(), "written bytes keep the size");
    check(again->convertToFormat(QImage::Format_ARGB32) ==
              image->convertToFormat(QImage::Format_ARGB32),
          "written bytes keep every pixel");
    return 0;
}
