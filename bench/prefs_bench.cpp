// The preference file, the time accumulators and the gradient forms beside their peers: loading
// (and reading a key of each section) and saving 20 sections of 50 keys against QSettings in
// IniFormat on the same content; a tick and a tracked span of TimeAccumulatorMultiThreaded against
// a QElapsedTimer read under a std::mutex; the gradient's byte stream round trip against a
// QDataStream of the QGradient's stops and geometry.
//
// The files live in /dev/shm when there is one: both sides flush their saves to disk, and on a
// tmpfs that costs nothing, so the rows compare the work of the two implementations rather than
// the disk's latency.
#include <vort/instrumentation/TimeAccumulator.h>
#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>
#include <vort/types/Gradient.h>

#include <QByteArray>
#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRadialGradient>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kSections = 20;
constexpr int kKeys = 50;

// Values of the shapes the store holds: numbers, rectangles, colours, words, lists.
std::string valueOf(int section, int key) {
    switch (key % 5) {
        case 0:
            return std::to_string(section * 1000 + key);
        case 1:
            return std::to_string(key) + " " + std::to_string(section) + " 640 480";
        case 2:
            return "255 " + std::to_string(key * 3 % 256) + " 0";
        case 3:
            return "Courier New";
        default:
            return "alpha,beta,gamma" + std::to_string(key) + ",";
    }
}

std::string sectionName(int section) {
    return "Section" + std::to_string(section);
}

std::string keyName(int key) {
    return "key" + std::to_string(key);
}

class Scratch {
public:
    Scratch()
        : m_folder(access("/dev/shm", W_OK) == 0
                       ? QStringLiteral("/dev/shm/vort-bench-XXXXXX")
                       : QDir::tempPath() + QStringLiteral("/vort-bench-XXXXXX")) {}
    std::string path() const { return m_folder.path().toStdString(); }
    QString file(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }

private:
    QTemporaryDir m_folder;
};

Scratch &scratch() {
    static Scratch folder;
    return folder;
}

class Context : public VTServices::ApplicationContext {
public:
    const char *getPreferencesDirectory(bool) override { return m_directory.c_str(); }
    const char *getRelease() override { return "bench"; }

private:
    std::string m_directory = scratch().path();
};

struct Store : VTPreferences {
    using VTPreferences::m_dirty;
    using VTPreferences::m_loaded;
    using VTPreferences::m_prefMaps;
};

// Writes the content through each implementation, once.
void prepareFiles() {
    static const bool prepared = [] {
        VTServices::VTService<VTServices::ApplicationContext>::install(new Context);
        Store::m_prefMaps.clear();
        VTPreferences::setStringPref("General", "TessarRelease", "bench");
        QSettings settings(scratch().file("qsettings.ini"), QSettings::IniFormat);
        for (int s = 0; s < kSections; ++s) {
            for (int k = 0; k < kKeys; ++k) {
                const std::string value = valueOf(s, k);
                VTPreferences::setStringPref(sectionName(s), keyName(k), value);
                settings.setValue(QString::fromStdString(sectionName(s) + "/" + keyName(k)),
                                  QString::fromStdString(value));
            }
        }
        VTPreferences::savePrefs();
        settings.sync();
        return true;
    }();
    benchmark::DoNotOptimize(prepared);
}

// A load reads one key of every section: QSettings parses a section only when one of its keys
// is read, so without that it would skip most of the file.
std::vector<std::string> const &sections() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        for (int s = 0; s < kSections; ++s) {
            result.push_back(sectionName(s));
        }
        return result;
    }();
    return names;
}

std::vector<QString> const &qtKeys() {
    static const std::vector<QString> keys = [] {
        std::vector<QString> result;
        for (int s = 0; s < kSections; ++s) {
            result.push_back(QString::fromStdString(sectionName(s) + "/key5"));
        }
        return result;
    }();
    return keys;
}

// QSettings keeps parsed files in a process-wide cache and parses again only when the file's
// size or time changed; each load therefore first rewrites the file with one more or one less
// trailing line break, outside the timed region, for both implementations alike.
void touch(QString const &name, int round) {
    QFile file(name);
    file.open(QIODevice::ReadWrite);
    QByteArray bytes = file.readAll();
    if (round % 2 == 0) {
        bytes.append('\n');
    } else {
        bytes.chop(1);
    }
    file.resize(0);
    file.seek(0);
    file.write(bytes);
}

void BM_PrefsLoad_VTPreferences(benchmark::State &state) {
    prepareFiles();
    const QString name = scratch().file("nexlark.prf");
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        touch(name, round++);
        Store::m_loaded = false;
        state.ResumeTiming();
        VTPreferences::loadPrefs();
        for (int s = 0; s < kSections; ++s) {
            benchmark::DoNotOptimize(VTPreferences::getIntPref(sections()[s], "key5", 0));
        }
    }
}
BENCHMARK(BM_PrefsLoad_VTPreferences);

void BM_PrefsLoad_QSettings(benchmark::State &state) {
    prepareFiles();
    const QString name = scratch().file("qsettings.ini");
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        touch(name, round++);
        state.ResumeTiming();
        QSettings settings(name, QSettings::IniFormat);
        for (int s = 0; s < kSections; ++s) {
            benchmark::DoNotOptimize(settings.value(qtKeys()[s]).toInt());
        }
    }
}
BENCHMARK(BM_PrefsLoad_QSettings);

// One changed value, then the whole file written again.
void BM_PrefsSave_VTPreferences(benchmark::State &state) {
    prepareFiles();
    VTPreferences::loadPrefs();
    int round = 0;
    for (auto _ : state) {
        VTPreferences::setIntPref("Section7", "key7", round++);
        benchmark::DoNotOptimize(VTPreferences::savePrefs());
    }
}
BENCHMARK(BM_PrefsSave_VTPreferences);

void BM_PrefsSave_QSettings(benchmark::State &state) {
    prepareFiles();
    QSettings settings(scratch().file("qsettings.ini"), QSettings::IniFormat);
    int round = 0;
    for (auto _ : state) {
        settings.setValue(QStringLiteral("Section7/key7"), QString::number(round++));
        settings.sync();
        benchmark::DoNotOptimize(settings.status());
    }
}
BENCHMARK(BM_PrefsSave_QSettings);

// The peer of a locked accumulator: the same lock and clock work, without the bookkeeping.
struct TimerAndLock {
    TimerAndLock() { timer.start(); }
    std::mutex lock;
    QElapsedTimer timer;
    std::int64_t last = 0;
    std::int64_t total = 0;
    std::int64_t ticks = 0;
    std::int64_t spanStart = 0;
    std::int64_t tracked = 0;

    void tick() {
        std::lock_guard<std::mutex> guard(lock);
        const std::int64_t now = timer.elapsed();
        total += now - last;
        last = now;
        ++ticks;
    }
    void start() {
        std::lock_guard<std::mutex> guard(lock);
        const std::int64_t now = timer.elapsed();
        total += now - last;
        last = now;
        ++ticks;
        spanStart = now;
    }
    void stop() {
        std::lock_guard<std::mutex> guard(lock);
        tracked += timer.elapsed() - spanStart;
    }
};

void BM_AccumulatorTick_Vort(benchmark::State &state) {
    VORT::TimeAccumulatorMultiThreaded accumulator;
    for (auto _ : state) {
        benchmark::DoNotOptimize(accumulator.Tick(VORT::TimeAccumulator::kNow, false));
    }
}
BENCHMARK(BM_AccumulatorTick_Vort);

void BM_AccumulatorTick_QElapsedTimer(benchmark::State &state) {
    TimerAndLock peer;
    for (auto _ : state) {
        peer.tick();
        benchmark::DoNotOptimize(peer.total);
    }
}
BENCHMARK(BM_AccumulatorTick_QElapsedTimer);

void BM_AccumulatorSpan_Vort(benchmark::State &state) {
    VORT::TimeAccumulatorMultiThreaded accumulator;
    for (auto _ : state) {
        accumulator.StartTracking(VORT::TimeAccumulator::kNow);
        accumulator.StopTracking(VORT::TimeAccumulator::kNow);
    }
    benchmark::DoNotOptimize(accumulator.GetSessionData().m_sessionTrackedMs);
}
BENCHMARK(BM_AccumulatorSpan_Vort);

void BM_AccumulatorSpan_QElapsedTimer(benchmark::State &state) {
    TimerAndLock peer;
    for (auto _ : state) {
        peer.start();
        peer.stop();
    }
    benchmark::DoNotOptimize(peer.tracked);
}
BENCHMARK(BM_AccumulatorSpan_QElapsedTimer);

// A radial gradient with eight stops, in both shapes.
VORT::Gradient benchGradient() {
    VORT::Gradient gradient;
    gradient.setCenterPoint(VORT::VTPoint<double>(10.5, 20.25));
    gradient.setFocalPoint(VORT::VTPoint<double>(12, 18));
    gradient.setRadius(40);
    gradient.setSpread(VORT::GradientSpreadType::Reflect);
    for (int stop = 0; stop < 8; ++stop) {
        gradient.addColorStop(stop / 7.0, VORT::Color(stop / 7.0, 0.5, 1 - stop / 7.0, 1));
    }
    return gradient;
}

void BM_GradientBytes_Vort(benchmark::State &state) {
    const VORT::Gradient source = benchGradient();
    std::vector<unsigned char> buffer(static_cast<std::size_t>(source.getByteStreamSize()));
    for (auto _ : state) {
        buffer.resize(static_cast<std::size_t>(source.getByteStreamSize()));
        source.toByteStream(buffer.data());
        VORT::Gradient copy;
        copy.fromByteStream(buffer.data());
        benchmark::DoNotOptimize(copy.getGradient());
    }
}
BENCHMARK(BM_GradientBytes_Vort);

// The peer writes and reads what the byte stream carries: kind, stops, spread, coordinate mode
// and the radial geometry.
void BM_GradientBytes_QDataStream(benchmark::State &state) {
    const VORT::Gradient held = benchGradient();
    const QRadialGradient source = *static_cast<QRadialGradient *>(held.getGradient());
    QByteArray buffer;
    for (auto _ : state) {
        {
            QDataStream out(&buffer, QIODevice::WriteOnly);
            out << static_cast<qint32>(source.type()) << source.stops()
                << static_cast<qint32>(source.spread())
                << static_cast<qint32>(source.coordinateMode()) << source.center()
                << source.focalPoint() << source.radius();
        }
        QDataStream in(buffer);
        qint32 type = 0;
        QGradientStops stops;
        qint32 spread = 0;
        qint32 mode = 0;
        QPointF center;
        QPointF focal;
        qreal radius = 0;
        in >> type >> stops >> spread >> mode >> center >> focal >> radius;
        QRadialGradient copy(center, radius, focal);
        copy.setStops(stops);
        copy.setSpread(static_cast<QGradient::Spread>(spread));
        copy.setCoordinateMode(static_cast<QGradient::CoordinateMode>(mode));
        benchmark::DoNotOptimize(copy.stops().size());
    }
}
BENCHMARK(BM_GradientBytes_QDataStream);

}  // namespace
