// Core values beside their peers: interning (StringID against a mutex-guarded
// std::unordered_set<std::string> and a QMutex-guarded QSet<QString>), id equality and hashing
// against std::string and QString, copying an `any` against std::any, and Base64 against
// QByteArray.
#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/bones/StringID.h>
#include <vort/err/ErrorHolder.h>

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QSet>
#include <QString>

#include <benchmark/benchmark.h>

#include <any>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

// Texts shaped like the library's class paths and MIME names.
std::vector<std::string> makeTexts(std::string const &prefix, int count) {
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        texts.push_back(prefix + "vort.image:Modifier" + std::to_string(i * 7919));
    }
    return texts;
}

constexpr int kKnownTexts = 1024;
// New texts per measured run: every interner keeps what it is given, so a run has a fixed
// length instead of letting the framework grow it.
constexpr int kNewTexts = 100000;

std::vector<std::string> const &knownTexts() {
    static const std::vector<std::string> texts = makeTexts("known/", kKnownTexts);
    return texts;
}

std::vector<QString> const &knownQTexts() {
    static const std::vector<QString> texts = [] {
        std::vector<QString> result;
        for (std::string const &text : knownTexts()) {
            result.push_back(QString::fromStdString(text));
        }
        return result;
    }();
    return texts;
}

// A unique prefix per run and thread, so that "new" texts are new to every interner.
std::string freshPrefix(int thread) {
    static std::atomic<int> runs{0};
    return "run" + std::to_string(runs++) + "t" + std::to_string(thread) + "/";
}

// The peers.
class GuardedStdInterner {
public:
    const std::string *intern(std::string const &text) {
        std::lock_guard<std::mutex> guard(m_mutex);
        return &*m_texts.insert(text).first;
    }

private:
    std::mutex m_mutex;
    std::unordered_set<std::string> m_texts;
};

class GuardedQtInterner {
public:
    QString intern(QString const &text) {
        QMutexLocker guard(&m_mutex);
        auto found = m_texts.constFind(text);
        if (found != m_texts.constEnd()) {
            return *found;
        }
        m_texts.insert(text);
        return text;
    }

private:
    QMutex m_mutex;
    QSet<QString> m_texts;
};

GuardedStdInterner &stdInterner() {
    static GuardedStdInterner interner;
    return interner;
}

GuardedQtInterner &qtInterner() {
    static GuardedQtInterner interner;
    return interner;
}

void warmUp() {
    for (std::string const &text : knownTexts()) {
        VORT::StringID id(text);
        stdInterner().intern(text);
    }
    for (QString const &text : knownQTexts()) {
        qtInterner().intern(text);
    }
}

// Interning a known text.

void BM_Intern_Known_StringID(benchmark::State &state) {
    if (state.thread_index() == 0) {
        warmUp();
    }
    std::vector<std::string> const &texts = knownTexts();
    std::size_t i = static_cast<std::size_t>(state.thread_index()) * 97;
    for (auto _ : state) {
        VORT::StringID id(texts[i++ % kKnownTexts]);
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_Intern_Known_StringID)->Threads(1)->Threads(2)->UseRealTime();

void BM_Intern_Known_GuardedUnorderedSet(benchmark::State &state) {
    if (state.thread_index() == 0) {
        warmUp();
    }
    std::vector<std::string> const &texts = knownTexts();
    std::size_t i = static_cast<std::size_t>(state.thread_index()) * 97;
    for (auto _ : state) {
        benchmark::DoNotOptimize(stdInterner().intern(texts[i++ % kKnownTexts]));
    }
}
BENCHMARK(BM_Intern_Known_GuardedUnorderedSet)->Threads(1)->Threads(2)->UseRealTime();

void BM_Intern_Known_QSet(benchmark::State &state) {
    if (state.thread_index() == 0) {
        warmUp();
    }
    std::vector<QString> const &texts = knownQTexts();
    std::size_t i = static_cast<std::size_t>(state.thread_index()) * 97;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qtInterner().intern(texts[i++ % kKnownTexts]));
    }
}
BENCHMARK(BM_Intern_Known_QSet)->Threads(1)->Threads(2)->UseRealTime();

// Interning a new text. The texts are made before the clock starts.

void BM_Intern_New_StringID(benchmark::State &state) {
    const std::vector<std::string> texts = makeTexts(freshPrefix(state.thread_index()), kNewTexts);
    std::size_t i = 0;
    for (auto _ : state) {
        VORT::StringID id(texts[i++]);
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_Intern_New_StringID)->Threads(1)->Threads(2)->Iterations(kNewTexts)->UseRealTime();

void BM_Intern_New_GuardedUnorderedSet(benchmark::State &state) {
    const std::vector<std::string> texts = makeTexts(freshPrefix(state.thread_index()), kNewTexts);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(stdInterner().intern(texts[i++]));
    }
}
BENCHMARK(BM_Intern_New_GuardedUnorderedSet)
    ->Threads(1)
    ->Threads(2)
    ->Iterations(kNewTexts)
    ->UseRealTime();

void BM_Intern_New_QSet(benchmark::State &state) {
    std::vector<QString> texts;
    for (std::string const &text : makeTexts(freshPrefix(state.thread_index()), kNewTexts)) {
        texts.push_back(QString::fromStdString(text));
    }
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(qtInterner().intern(texts[i++]));
    }
}
BENCHMARK(BM_Intern_New_QSet)->Threads(1)->Threads(2)->Iterations(kNewTexts)->UseRealTime();

// Equality of two equal texts held apart, and hashing.

void BM_Equal_StringID(benchmark::State &state) {
    const VORT::StringID a(knownTexts()[5]);
    const VORT::StringID b{std::string(knownTexts()[5])};
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a == b);
    }
}
BENCHMARK(BM_Equal_StringID);

void BM_Equal_StdString(benchmark::State &state) {
    const std::string a = knownTexts()[5];
    const std::string b = knownTexts()[5];
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a == b);
    }
}
BENCHMARK(BM_Equal_StdString);

void BM_Equal_QString(benchmark::State &state) {
    const QString a = QString::fromStdString(knownTexts()[5]);
    const QString b = QString::fromStdString(knownTexts()[5]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a == b);
    }
}
BENCHMARK(BM_Equal_QString);

void BM_Hash_StringID(benchmark::State &state) {
    const VORT::StringID id(knownTexts()[5]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(id);
        benchmark::DoNotOptimize(VORT::vHash(id));
    }
}
BENCHMARK(BM_Hash_StringID);

void BM_Hash_StdString(benchmark::State &state) {
    const std::string text = knownTexts()[5];
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(std::hash<std::string>()(text));
    }
}
BENCHMARK(BM_Hash_StdString);

void BM_Hash_QString(benchmark::State &state) {
    const QString text = QString::fromStdString(knownTexts()[5]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(qHash(text));
    }
}
BENCHMARK(BM_Hash_QString);

// Copying an any.

template <typename Any, typename T>
void copyAny(benchmark::State &state, T const &value) {
    const Any source(value);
    for (auto _ : state) {
        Any copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

void BM_AnyCopy_Int_Vort(benchmark::State &state) {
    copyAny<VORT::any>(state, 42);
}
BENCHMARK(BM_AnyCopy_Int_Vort);
void BM_AnyCopy_Int_Std(benchmark::State &state) {
    copyAny<std::any>(state, 42);
}
BENCHMARK(BM_AnyCopy_Int_Std);
void BM_AnyCopy_String_Vort(benchmark::State &state) {
    copyAny<VORT::any>(state, knownTexts()[5]);
}
BENCHMARK(BM_AnyCopy_String_Vort);
void BM_AnyCopy_String_Std(benchmark::State &state) {
    copyAny<std::any>(state, knownTexts()[5]);
}
BENCHMARK(BM_AnyCopy_String_Std);

// Base64.

std::string randomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    std::uint32_t state = 2463534242u;
    for (char &byte : bytes) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        byte = static_cast<char>(state);
    }
    return bytes;
}

void BM_ToBase64_Vort(benchmark::State &state) {
    const std::string raw = randomBytes(static_cast<std::size_t>(state.range(0)));
    const VORT::ByteArray bytes(raw.data(), static_cast<unsigned int>(raw.size()));
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes.toBase64());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ToBase64_Vort)->Arg(1024)->Arg(1 << 20);

void BM_ToBase64_Qt(benchmark::State &state) {
    const std::string raw = randomBytes(static_cast<std::size_t>(state.range(0)));
    const QByteArray bytes(raw.data(), static_cast<qsizetype>(raw.size()));
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes.toBase64());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ToBase64_Qt)->Arg(1024)->Arg(1 << 20);

void BM_FromBase64_Vort(benchmark::State &state) {
    const std::string raw = randomBytes(static_cast<std::size_t>(state.range(0)));
    const std::string text =
        VORT::ByteArray(raw.data(), static_cast<unsigned int>(raw.size())).toBase64().c_str();
    for (auto _ : state) {
        VORT::ErrorHolder error;
        benchmark::DoNotOptimize(VORT::ByteArray::fromBase64(text, error));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FromBase64_Vort)->Arg(1024)->Arg(1 << 20);

void BM_FromBase64_Qt(benchmark::State &state) {
    const std::string raw = randomBytes(static_cast<std::size_t>(state.range(0)));
    const QByteArray text = QByteArray(raw.data(), static_cast<qsizetype>(raw.size())).toBase64();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QByteArray::fromBase64(text));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FromBase64_Qt)->Arg(1024)->Arg(1 << 20);

}  // namespace
