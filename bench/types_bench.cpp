// The type family's values beside their peers: the Transform product, inverse and point mapping
// against QTransform; the text forms of IntType and DoubleType, written, read and round-tripped,
// against a default std::ostringstream/std::istringstream and against QString::number with
// QString::toInt/toDouble; and Color packing against QColor.
#include <vort/types/Color.h>
#include <vort/types/DoubleType.h>
#include <vort/types/IntType.h>
#include <vort/types/Transform.h>

#include <QColor>
#include <QPointF>
#include <QString>
#include <QTransform>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kValues = 1024;  // a power of two: the index wraps with a mask

// Affine matrices with rotation, scale and translation, so that neither side takes a shortcut
// for a simpler kind of matrix.
QTransform qtMatrix(int index) {
    return QTransform().translate(index * 0.5, -index * 0.25).rotate(10.0 + index).scale(1.5, 0.75);
}

std::vector<QTransform> const &qtMatrices() {
    static const std::vector<QTransform> matrices = [] {
        std::vector<QTransform> result;
        for (int i = 0; i < 64; ++i) {
            result.push_back(qtMatrix(i));
        }
        return result;
    }();
    return matrices;
}

// The same matrices as the library holds them (points as columns, row 2 kept affine).
std::vector<VORT::Transform> const &vortMatrices() {
    static const std::vector<VORT::Transform> matrices = [] {
        std::vector<VORT::Transform> result;
        for (QTransform const &q : qtMatrices()) {
            result.emplace_back(q.m11(), q.m21(), q.dx(), q.m12(), q.m22(), q.dy(), 0.0, 0.0, 1.0);
        }
        return result;
    }();
    return matrices;
}

void BM_TransformProduct_Vort(benchmark::State &state) {
    std::vector<VORT::Transform> const &m = vortMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        VORT::Transform product = m[i & 63] * m[(i + 1) & 63];
        benchmark::DoNotOptimize(product);
        ++i;
    }
}
BENCHMARK(BM_TransformProduct_Vort);

void BM_TransformProduct_QTransform(benchmark::State &state) {
    std::vector<QTransform> const &m = qtMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        QTransform product = m[i & 63] * m[(i + 1) & 63];
        benchmark::DoNotOptimize(product);
        ++i;
    }
}
BENCHMARK(BM_TransformProduct_QTransform);

void BM_TransformInverse_Vort(benchmark::State &state) {
    std::vector<VORT::Transform> const &m = vortMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        VORT::Transform inverse = m[i & 63].inverse();
        benchmark::DoNotOptimize(inverse);
        ++i;
    }
}
BENCHMARK(BM_TransformInverse_Vort);

void BM_TransformInverse_QTransform(benchmark::State &state) {
    std::vector<QTransform> const &m = qtMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        QTransform inverse = m[i & 63].inverted();
        benchmark::DoNotOptimize(inverse);
        ++i;
    }
}
BENCHMARK(BM_TransformInverse_QTransform);

void BM_TransformMapPoint_Vort(benchmark::State &state) {
    std::vector<VORT::Transform> const &m = vortMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        VORT::VTPoint<double> point = m[i & 63].transform(static_cast<double>(i & 255), 3.5);
        benchmark::DoNotOptimize(point);
        ++i;
    }
}
BENCHMARK(BM_TransformMapPoint_Vort);

void BM_TransformMapPoint_QTransform(benchmark::State &state) {
    std::vector<QTransform> const &m = qtMatrices();
    std::size_t i = 0;
    for (auto _ : state) {
        QPointF point = m[i & 63].map(QPointF(static_cast<double>(i & 255), 3.5));
        benchmark::DoNotOptimize(point);
        ++i;
    }
}
BENCHMARK(BM_TransformMapPoint_QTransform);

// Ints of every length, signs mixed.
std::vector<int> const &ints() {
    static const std::vector<int> values = [] {
        std::vector<int> result;
        std::uint32_t state = 12345u;
        for (std::size_t i = 0; i < kValues; ++i) {
            state = state * 1664525u + 1013904223u;
            const int digits = static_cast<int>(state % 10u) + 1;
            int value =
                static_cast<int>((state >> 8) % static_cast<std::uint32_t>(std::pow(10, digits)));
            result.push_back((state & 1u) != 0 ? -value : value);
        }
        return result;
    }();
    return values;
}

// Doubles with exponents from 1e-8 to 1e12, as both plain and exponent forms are written.
std::vector<double> const &doubles() {
    static const std::vector<double> values = [] {
        std::vector<double> result;
        std::uint32_t state = 54321u;
        for (std::size_t i = 0; i < kValues; ++i) {
            state = state * 1664525u + 1013904223u;
            const double mantissa = static_cast<double>(state >> 8) / (1u << 24);
            const int exponent = static_cast<int>(state % 21u) - 8;
            result.push_back(((state & 1u) != 0 ? -mantissa : mantissa) * std::pow(10.0, exponent));
        }
        return result;
    }();
    return values;
}

template <class T>
std::vector<std::string> streamTexts(std::vector<T> const &values) {
    std::vector<std::string> texts;
    for (T value : values) {
        std::ostringstream out;
        out << value;
        texts.push_back(out.str());
    }
    return texts;
}

template <class T>
std::vector<QString> qtTexts(std::vector<T> const &values) {
    std::vector<QString> texts;
    for (std::string const &text : streamTexts(values)) {
        texts.push_back(QString::fromStdString(text));
    }
    return texts;
}

template <class T>
void writeVort(benchmark::State &state, VORT::TypeInfo const &type, std::vector<T> const &values) {
    std::size_t i = 0;
    for (auto _ : state) {
        std::string text = type.convertToString(VORT::any(values[i++ & (kValues - 1)]));
        benchmark::DoNotOptimize(text);
    }
}

template <class T>
void writeStream(benchmark::State &state, std::vector<T> const &values) {
    std::size_t i = 0;
    for (auto _ : state) {
        std::ostringstream out;
        out << values[i++ & (kValues - 1)];
        std::string text = out.str();
        benchmark::DoNotOptimize(text);
    }
}

template <class T>
void readVort(benchmark::State &state, VORT::TypeInfo const &type, std::vector<T> const &values) {
    const std::vector<std::string> texts = streamTexts(values);
    std::size_t i = 0;
    for (auto _ : state) {
        VORT::ErrorHolder error;
        T value = VORT::any_cast<T>(type.convertFromString(texts[i++ & (kValues - 1)], error));
        benchmark::DoNotOptimize(value);
    }
}

template <class T>
void readStream(benchmark::State &state, std::vector<T> const &values) {
    const std::vector<std::string> texts = streamTexts(values);
    std::size_t i = 0;
    for (auto _ : state) {
        std::istringstream in(texts[i++ & (kValues - 1)]);
        T value;
        in >> value;
        benchmark::DoNotOptimize(value);
    }
}

template <class T>
void roundTripVort(benchmark::State &state, VORT::TypeInfo const &type,
                   std::vector<T> const &values) {
    std::size_t i = 0;
    for (auto _ : state) {
        const std::string text = type.convertToString(VORT::any(values[i++ & (kValues - 1)]));
        VORT::ErrorHolder error;
        T value = VORT::any_cast<T>(type.convertFromString(text, error));
        benchmark::DoNotOptimize(value);
    }
}

template <class T>
void roundTripStream(benchmark::State &state, std::vector<T> const &values) {
    std::size_t i = 0;
    for (auto _ : state) {
        std::ostringstream out;
        out << values[i++ & (kValues - 1)];
        std::istringstream in(out.str());
        T value;
        in >> value;
        benchmark::DoNotOptimize(value);
    }
}

void BM_IntTextWrite_Vort(benchmark::State &state) {
    writeVort(state, VORT::IntType::Create(), ints());
}
BENCHMARK(BM_IntTextWrite_Vort);

void BM_IntTextWrite_StdStream(benchmark::State &state) {
    writeStream(state, ints());
}
BENCHMARK(BM_IntTextWrite_StdStream);

void BM_IntTextWrite_QString(benchmark::State &state) {
    std::vector<int> const &values = ints();
    std::size_t i = 0;
    for (auto _ : state) {
        QString text = QString::number(values[i++ & (kValues - 1)]);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_IntTextWrite_QString);

void BM_IntTextRead_Vort(benchmark::State &state) {
    readVort(state, VORT::IntType::Create(), ints());
}
BENCHMARK(BM_IntTextRead_Vort);

void BM_IntTextRead_StdStream(benchmark::State &state) {
    readStream(state, ints());
}
BENCHMARK(BM_IntTextRead_StdStream);

void BM_IntTextRead_QString(benchmark::State &state) {
    const std::vector<QString> texts = qtTexts(ints());
    std::size_t i = 0;
    for (auto _ : state) {
        int value = texts[i++ & (kValues - 1)].toInt();
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_IntTextRead_QString);

void BM_IntTextRoundTrip_Vort(benchmark::State &state) {
    roundTripVort(state, VORT::IntType::Create(), ints());
}
BENCHMARK(BM_IntTextRoundTrip_Vort);

void BM_IntTextRoundTrip_StdStream(benchmark::State &state) {
    roundTripStream(state, ints());
}
BENCHMARK(BM_IntTextRoundTrip_StdStream);

void BM_IntTextRoundTrip_QString(benchmark::State &state) {
    std::vector<int> const &values = ints();
    std::size_t i = 0;
    for (auto _ : state) {
        int value = QString::number(values[i++ & (kValues - 1)]).toInt();
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_IntTextRoundTrip_QString);

void BM_DoubleTextWrite_Vort(benchmark::State &state) {
    writeVort(state, VORT::DoubleType::Create(), doubles());
}
BENCHMARK(BM_DoubleTextWrite_Vort);

void BM_DoubleTextWrite_StdStream(benchmark::State &state) {
    writeStream(state, doubles());
}
BENCHMARK(BM_DoubleTextWrite_StdStream);

void BM_DoubleTextWrite_QString(benchmark::State &state) {
    std::vector<double> const &values = doubles();
    std::size_t i = 0;
    for (auto _ : state) {
        QString text = QString::number(values[i++ & (kValues - 1)], 'g', 6);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_DoubleTextWrite_QString);

void BM_DoubleTextRead_Vort(benchmark::State &state) {
    readVort(state, VORT::DoubleType::Create(), doubles());
}
BENCHMARK(BM_DoubleTextRead_Vort);

void BM_DoubleTextRead_StdStream(benchmark::State &state) {
    readStream(state, doubles());
}
BENCHMARK(BM_DoubleTextRead_StdStream);

void BM_DoubleTextRead_QString(benchmark::State &state) {
    const std::vector<QString> texts = qtTexts(doubles());
    std::size_t i = 0;
    for (auto _ : state) {
        double value = texts[i++ & (kValues - 1)].toDouble();
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_DoubleTextRead_QString);

void BM_DoubleTextRoundTrip_Vort(benchmark::State &state) {
    roundTripVort(state, VORT::DoubleType::Create(), doubles());
}
BENCHMARK(BM_DoubleTextRoundTrip_Vort);

void BM_DoubleTextRoundTrip_StdStream(benchmark::State &state) {
    roundTripStream(state, doubles());
}
BENCHMARK(BM_DoubleTextRoundTrip_StdStream);

void BM_DoubleTextRoundTrip_QString(benchmark::State &state) {
    std::vector<double> const &values = doubles();
    std::size_t i = 0;
    for (auto _ : state) {
        double value = QString::number(values[i++ & (kValues - 1)], 'g', 6).toDouble();
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_DoubleTextRoundTrip_QString);

struct Components {
    double red, green, blue, alpha;
};

std::vector<Components> const &components() {
    static const std::vector<Components> values = [] {
        std::vector<Components> result;
        for (std::size_t i = 0; i < kValues; ++i) {
            result.push_back({(i % 7) / 6.0, (i % 11) / 10.0, (i % 13) / 12.0, (i % 5) / 4.0});
        }
        return result;
    }();
    return values;
}

void BM_ColorPack_Vort(benchmark::State &state) {
    std::vector<Components> const &values = components();
    std::size_t i = 0;
    for (auto _ : state) {
        Components const &c = values[i++ & (kValues - 1)];
        unsigned int rgba = VORT::Color(c.red, c.green, c.blue, c.alpha).getAsRgba();
        benchmark::DoNotOptimize(rgba);
    }
}
BENCHMARK(BM_ColorPack_Vort);

void BM_ColorPack_QColor(benchmark::State &state) {
    std::vector<Components> const &values = components();
    std::size_t i = 0;
    for (auto _ : state) {
        Components const &c = values[i++ & (kValues - 1)];
        QRgb rgba = QColor::fromRgbF(static_cast<float>(c.red), static_cast<float>(c.green),
                                     static_cast<float>(c.blue), static_cast<float>(c.alpha))
                        .rgba();
        benchmark::DoNotOptimize(rgba);
    }
}
BENCHMARK(BM_ColorPack_QColor);

}  // namespace
