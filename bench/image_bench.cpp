// The image compositor beside the Qt code that a tool would otherwise write: a cache hit against
// QPixmapCache, a composition through "comp_mode:" against the same QPainter calls by hand, and
// the grayscale test and the tint against loops over QImage::pixel/setPixel and over scan lines
// that do the same arithmetic.
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <QtGui/QPixmapCache>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace IC = VORT::ImageCompositor;

namespace {

void ensureGuiApplication() {
    static int argc = 1;
    static char name[] = "image_bench";
    static char *argv[] = {name, nullptr};
    if (QGuiApplication::instance() == nullptr) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        static QGuiApplication application(argc, argv);
    }
}

const int kCachedKeys = 100;

std::string cacheKey(int index) {
    return "(examples/images/icon-" + std::to_string(index) + ".png;;)";
}

// A square icon: a disc of `colour` on transparency.
QImage icon(int size, QColor const &colour) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QRectF(4, 4, size - 8, size - 8));
    return image;
}

// 256 by 256, every pixel a different mix; `gray` makes every pixel gray.
QImage pattern(bool gray) {
    QImage image(256, 256, QImage::Format_ARGB32);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            const int level = (x * 7 + y * 3) & 0xFF;
            image.setPixel(
                x, y,
                gray ? qRgba(level, level, level, 255 - y / 2) : qRgba(level, x, y, 255 - y / 2));
        }
    }
    return image;
}

void BM_CacheHit_Vort(benchmark::State &state) {
    ensureGuiApplication();
    IC::Manager &manager = IC::Manager::instance();
    // What an earlier run left goes first, so that the keys stored here are the ones found.
    manager.forceGarbageCollection();
    std::vector<VORT::Holder<IC::Node>> keep;
    for (int i = 0; i < kCachedKeys; ++i) {
        keep.emplace_back(new IC::Node(cacheKey(i), new QImage(16, 16, QImage::Format_ARGB32)));
        manager.storeImage(cacheKey(i), keep.back());
    }
    const std::string key = cacheKey(kCachedKeys / 2);
    for (auto _ : state) {
        VORT::Holder<IC::Node> node = manager.getImage(key, false);
        benchmark::DoNotOptimize(node.get());
    }
}
BENCHMARK(BM_CacheHit_Vort);

void BM_CacheHit_QPixmapCache(benchmark::State &state) {
    ensureGuiApplication();
    for (int i = 0; i < kCachedKeys; ++i) {
        QPixmapCache::insert(QString::fromStdString(cacheKey(i)), QPixmap(16, 16));
    }
    const QString key = QString::fromStdString(cacheKey(kCachedKeys / 2));
    for (auto _ : state) {
        QPixmap pixmap;
        benchmark::DoNotOptimize(QPixmapCache::find(key, &pixmap));
    }
}
BENCHMARK(BM_CacheHit_QPixmapCache);

// Both operands stay cached, held here; each round builds the composite and lets it go. The
// argument is the icons' size.
void BM_Compose_Vort(benchmark::State &state) {
    ensureGuiApplication();
    IC::Manager &manager = IC::Manager::instance();
    manager.forceGarbageCollection();
    const int size = static_cast<int>(state.range(0));
    const VORT::Holder<IC::Node> a(new IC::Node("(bench-a;;)", new QImage(icon(size, Qt::blue))));
    const VORT::Holder<IC::Node> b(new IC::Node("(bench-b;;)", new QImage(icon(size, Qt::yellow))));
    manager.storeImage("(bench-a;;)", a);
    manager.storeImage("(bench-b;;)", b);
    const std::string key = "((bench-a;;);(bench-b;;);comp_mode:SourceOver;)";
    if (!manager.getImage(key, true)) {
        state.SkipWithError("the composite does not build");
        return;
    }
    for (auto _ : state) {
        VORT::Holder<IC::Node> node = manager.getImage(key, true);
        benchmark::DoNotOptimize(node.get());
        node = VORT::Holder<IC::Node>();
        manager.forceGarbageCollection();
    }
}
BENCHMARK(BM_Compose_Vort)->Arg(64)->Arg(256);

void BM_Compose_QPainter(benchmark::State &state) {
    ensureGuiApplication();
    const int size = static_cast<int>(state.range(0));
    const QImage a = icon(size, Qt::blue);
    const QImage b = icon(size, Qt::yellow);
    for (auto _ : state) {
        QImage canvas(a.size().expandedTo(b.size()), QImage::Format_ARGB32_Premultiplied);
        canvas.fill(0);
        QPainter painter(&canvas);
        painter.setPen(Qt::NoPen);
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.drawImage(0, 0, a);
        painter.drawImage(0, 0, b);
        painter.end();
        benchmark::DoNotOptimize(canvas.constBits());
    }
}
BENCHMARK(BM_Compose_QPainter)->Arg(64)->Arg(256);

bool colourful(int red, int green, int blue) {
    return std::abs(red - green) >= 5 || std::abs(red - blue) >= 5;
}

bool isGrayscaleByPixel(QImage const &image) {
    for (int y = image.height() - 1; y >= 0; --y) {
        for (int x = image.width() - 1; x >= 0; --x) {
            const QRgb pixel = image.pixel(x, y);
            if (colourful(qRed(pixel), qGreen(pixel), qBlue(pixel))) {
                return false;
            }
        }
    }
    return true;
}

bool isGrayscaleByScanLine(QImage const &image) {
    for (int y = image.height() - 1; y >= 0; --y) {
        QRgb const *line = reinterpret_cast<QRgb const *>(image.constScanLine(y));
        for (int x = image.width() - 1; x >= 0; --x) {
            if (colourful(qRed(line[x]), qGreen(line[x]), qBlue(line[x]))) {
                return false;
            }
        }
    }
    return true;
}

// A gray image: every pixel has to be looked at.
void BM_IsGrayscale_Vort(benchmark::State &state) {
    const QImage image = pattern(true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(IC::isGrayscale(image));
    }
}
BENCHMARK(BM_IsGrayscale_Vort);

void BM_IsGrayscale_QImagePixel(benchmark::State &state) {
    const QImage image = pattern(true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(isGrayscaleByPixel(image));
    }
}
BENCHMARK(BM_IsGrayscale_QImagePixel);

void BM_IsGrayscale_QImageScanLine(benchmark::State &state) {
    const QImage image = pattern(true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(isGrayscaleByScanLine(image));
    }
}
BENCHMARK(BM_IsGrayscale_QImageScanLine);

// The tint's arithmetic for one pixel, written out as the design states it.
QRgb tintPixel(QRgb old, bool isGray, float const tint[3], bool toGrayscale) {
    const int red = qRed(old);
    const int green = qGreen(old);
    const int blue = qBlue(old);
    int channels[3];
    if (toGrayscale) {
        int lum = (red * 11 + green * 16 + blue * 5) / 32;
        if (isGray && lum + 130 < 255) {
            lum += 130;
        }
        const float v = static_cast<float>(lum) / 255.0f * 255.0f;
        for (int c = 0; c < 3; ++c) {
            channels[c] = static_cast<int>(v * tint[c] + 0.5f);
        }
    } else {
        const int old3[3] = {red, green, blue};
        for (int c = 0; c < 3; ++c) {
            channels[c] = static_cast<int>(
                static_cast<float>(
                    static_cast<double>(static_cast<float>(old3[c]) / 255.0f * tint[c]) * 255.0) +
                0.5f);
        }
    }
    return (old & 0xFF000000u) | (channels[0] & 0xFF) << 16 | (channels[1] & 0xFF) << 8 |
           (channels[2] & 0xFF);
}

const VORT::Color kTint(1.0, 0.6, 0.2, 1.0);

void tints(float tint[3]) {
    tint[0] = static_cast<float>(kTint.red() / 255.0);
    tint[1] = static_cast<float>(kTint.green() / 255.0);
    tint[2] = static_cast<float>(kTint.blue() / 255.0);
}

void tintByPixel(QImage &image) {
    float tint[3];
    tints(tint);
    const bool isGray = isGrayscaleByPixel(image);
    for (int y = image.height() - 1; y >= 0; --y) {
        for (int x = image.width() - 1; x >= 0; --x) {
            const QRgb old = image.pixel(x, y);
            const QRgb fresh = tintPixel(old, isGray, tint, true);
            if (fresh != old) {
                image.setPixel(x, y, fresh);
            }
        }
    }
}

void tintByScanLine(QImage &image) {
    float tint[3];
    tints(tint);
    const bool isGray = isGrayscaleByScanLine(image);
    for (int y = image.height() - 1; y >= 0; --y) {
        QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = image.width() - 1; x >= 0; --x) {
            line[x] = tintPixel(line[x], isGray, tint, true);
        }
    }
}

// Each round tints a fresh copy of a colourful image, the copy's detach included.
void BM_Tint_Vort(benchmark::State &state) {
    const QImage source = pattern(false);
    QImage check = source;
    QImage expected = source;
    IC::convertImageToGrayscaleAndTint(check, kTint, true);
    tintByScanLine(expected);
    if (check != expected) {
        state.SkipWithError("the tint differs from the written-out arithmetic");
        return;
    }
    for (auto _ : state) {
        QImage image = source;
        IC::convertImageToGrayscaleAndTint(image, kTint, true);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_Tint_Vort);

void BM_Tint_QImagePixel(benchmark::State &state) {
    const QImage source = pattern(false);
    for (auto _ : state) {
        QImage image = source;
        tintByPixel(image);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_Tint_QImagePixel);

void BM_Tint_QImageScanLine(benchmark::State &state) {
    const QImage source = pattern(false);
    for (auto _ : state) {
        QImage image = source;
        tintByScanLine(image);
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_Tint_QImageScanLine);

}  // namespace
