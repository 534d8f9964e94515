// The shared containers beside their peers: VList against QList, std::vector and std::deque;
// VHash against QHash and std::unordered_map; AtomicCounter against std::atomic<int>.
//
// Every benchmark is named "<Operation>/<Implementation>/<arguments>", so that scripts/bench can
// line up the implementations of one operation and size.
#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VHash.h>
#include <vort/bones/VList.h>

#include <cstddef>
#include <string>

// Qt 6.4 has no qHash for std::string; declared before <QHash> so that QHash's lookup sees it.
std::size_t qHash(const std::string &key, std::size_t seed = 0) noexcept;

#include <QHash>
#include <QList>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <unordered_map>
#include <vector>

std::size_t qHash(const std::string &key, std::size_t seed) noexcept {
    return qHashBits(key.data(), key.size(), seed);
}

namespace {

// Lists ------------------------------------------------------------------------------------------

template <typename L>
struct ListOps;

template <>
struct ListOps<VORT::VList<int>> {
    static void append(VORT::VList<int> &l, int v) { l.append(v); }
    static void prepend(VORT::VList<int> &l, int v) { l.prepend(v); }
    static void insert(VORT::VList<int> &l, int i, int v) { l.insert(i, v); }
    static int size(const VORT::VList<int> &l) { return l.size(); }
};

template <>
struct ListOps<QList<int>> {
    static void append(QList<int> &l, int v) { l.append(v); }
    static void prepend(QList<int> &l, int v) { l.prepend(v); }
    static void insert(QList<int> &l, int i, int v) { l.insert(i, v); }
    static int size(const QList<int> &l) { return int(l.size()); }
};

template <>
struct ListOps<std::vector<int>> {
    static void append(std::vector<int> &l, int v) { l.push_back(v); }
    static void prepend(std::vector<int> &l, int v) { l.insert(l.begin(), v); }
    static void insert(std::vector<int> &l, int i, int v) { l.insert(l.begin() + i, v); }
    static int size(const std::vector<int> &l) { return int(l.size()); }
};

template <>
struct ListOps<std::deque<int>> {
    static void append(std::deque<int> &l, int v) { l.push_back(v); }
    static void prepend(std::deque<int> &l, int v) { l.push_front(v); }
    static void insert(std::deque<int> &l, int i, int v) { l.insert(l.begin() + i, v); }
    static int size(const std::deque<int> &l) { return int(l.size()); }
};

template <typename L>
void listAppend(benchmark::State &state) {
    const int n = int(state.range(0));
    for (auto _ : state) {
        L list;
        for (int i = 0; i < n; ++i) {
            ListOps<L>::append(list, i);
        }
        benchmark::DoNotOptimize(ListOps<L>::size(list));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename L>
void listPrepend(benchmark::State &state) {
    const int n = int(state.range(0));
    for (auto _ : state) {
        L list;
        for (int i = 0; i < n; ++i) {
            ListOps<L>::prepend(list, i);
        }
        benchmark::DoNotOptimize(ListOps<L>::size(list));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename L>
void listInsertMiddle(benchmark::State &state) {
    const int n = int(state.range(0));
    for (auto _ : state) {
        L list;
        for (int i = 0; i < n; ++i) {
            ListOps<L>::insert(list, ListOps<L>::size(list) / 2, i);
        }
        benchmark::DoNotOptimize(ListOps<L>::size(list));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename L>
void listIterate(benchmark::State &state) {
    const int n = int(state.range(0));
    L list;
    for (int i = 0; i < n; ++i) {
        ListOps<L>::append(list, i);
    }
    const L &reader = list;
    for (auto _ : state) {
        long long sum = 0;
        for (int v : reader) {
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// Hashes -----------------------------------------------------------------------------------------

// Distinct, scattered keys: multiplying by an odd number is a bijection on 32 bits.
std::uint32_t scatter(std::uint32_t i) {
    return i * 2654435761u;
}

template <typename K>
K makeKey(std::uint32_t i);
template <>
int makeKey<int>(std::uint32_t i) {
    return int(scatter(i));
}
template <>
std::string makeKey<std::string>(std::uint32_t i) {
    return "key_" + std::to_string(scatter(i));
}

// Keys 0..n-1 are in the table; keys n..2n-1 are not.
template <typename K>
const std::vector<K> &keys(int n) {
    static std::vector<K> all;
    if (int(all.size()) < 2 * n) {
        all.clear();
        for (int i = 0; i < 2 * n; ++i) {
            all.push_back(makeKey<K>(std::uint32_t(i)));
        }
    }
    return all;
}

template <typename H>
struct HashOps;

template <typename K>
struct HashOps<VORT::VHash<K, int>> {
    using Hash = VORT::VHash<K, int>;
    static void insert(Hash &h, const K &k, int v) { h.insert(k, v); }
    static bool find(const Hash &h, const K &k) { return h.constFind(k) != h.cend(); }
    static void erase(Hash &h, const K &k) { h.remove(k); }
    static int size(const Hash &h) { return h.size(); }
};

template <typename K>
struct HashOps<QHash<K, int>> {
    using Hash = QHash<K, int>;
    static void insert(Hash &h, const K &k, int v) { h.insert(k, v); }
    static bool find(const Hash &h, const K &k) { return h.constFind(k) != h.cend(); }
    static void erase(Hash &h, const K &k) { h.remove(k); }
    static int size(const Hash &h) { return int(h.size()); }
};

template <typename K>
struct HashOps<std::unordered_map<K, int>> {
    using Hash = std::unordered_map<K, int>;
    static void insert(Hash &h, const K &k, int v) { h.insert_or_assign(k, v); }
    static bool find(const Hash &h, const K &k) { return h.find(k) != h.end(); }
    static void erase(Hash &h, const K &k) { h.erase(k); }
    static int size(const Hash &h) { return int(h.size()); }
};

template <typename H, typename K>
H filled(int n) {
    H hash;
    const std::vector<K> &all = keys<K>(n);
    for (int i = 0; i < n; ++i) {
        HashOps<H>::insert(hash, all[size_t(i)], i);
    }
    return hash;
}

template <typename H, typename K>
void hashInsert(benchmark::State &state) {
    const int n = int(state.range(0));
    const std::vector<K> &all = keys<K>(n);
    for (auto _ : state) {
        H hash;
        for (int i = 0; i < n; ++i) {
            HashOps<H>::insert(hash, all[size_t(i)], i);
        }
        benchmark::DoNotOptimize(HashOps<H>::size(hash));
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename H, typename K>
void hashFind(benchmark::State &state, bool hit) {
    const int n = int(state.range(0));
    const std::vector<K> &all = keys<K>(n);
    const H hash = filled<H, K>(n);
    const int offset = hit ? 0 : n;
    for (auto _ : state) {
        int found = 0;
        for (int i = 0; i < n; ++i) {
            found += HashOps<H>::find(hash, all[size_t(offset + i)]);
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename H, typename K>
void hashFindHit(benchmark::State &state) {
    hashFind<H, K>(state, true);
}

template <typename H, typename K>
void hashFindMiss(benchmark::State &state) {
    hashFind<H, K>(state, false);
}

template <typename H, typename K>
void hashErase(benchmark::State &state) {
    const int n = int(state.range(0));
    const std::vector<K> &all = keys<K>(n);
    for (auto _ : state) {
        state.PauseTiming();
        H hash = filled<H, K>(n);
        state.ResumeTiming();
        for (int i = 0; i < n; ++i) {
            HashOps<H>::erase(hash, all[size_t(i)]);
        }
        benchmark::DoNotOptimize(HashOps<H>::size(hash));
        state.PauseTiming();
        hash = H();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// Counters ---------------------------------------------------------------------------------------

VORT::AtomicCounter counter;
std::atomic<int> standardCounter{0};

void counterRefDerefVort(benchmark::State &state) {
    if (state.thread_index() == 0) {
        counter.init(1);
    }
    for (auto _ : state) {
        counter.ref();
        benchmark::DoNotOptimize(counter.deref());
    }
    state.SetItemsProcessed(state.iterations());
}

void counterRefDerefStd(benchmark::State &state) {
    if (state.thread_index() == 0) {
        standardCounter.store(1);
    }
    for (auto _ : state) {
        standardCounter.fetch_add(1);
        benchmark::DoNotOptimize(standardCounter.fetch_sub(1) - 1 != 0);
    }
    state.SetItemsProcessed(state.iterations());
}

// Registration -----------------------------------------------------------------------------------

void registerLists(const std::string &operation, const std::vector<int64_t> &sizes,
                   void (*vlist)(benchmark::State &), void (*qlist)(benchmark::State &),
                   void (*vector)(benchmark::State &), void (*deque)(benchmark::State &)) {
    const std::pair<const char *, void (*)(benchmark::State &)> peers[] = {
        {"VList", vlist}, {"QList", qlist}, {"std::vector", vector}, {"std::deque", deque}};
    for (const auto &peer : peers) {
        auto *b = benchmark::RegisterBenchmark((operation + "/" + peer.first).c_str(), peer.second);
        for (int64_t n : sizes) {
            b->Arg(n);
        }
    }
}

template <typename K>
void registerHashes(const std::string &keyName, const std::vector<int64_t> &sizes) {
    using VH = VORT::VHash<K, int>;
    using QH = QHash<K, int>;
    using SH = std::unordered_map<K, int>;
    struct Row {
        const char *operation;
        void (*vort)(benchmark::State &);
        void (*qt)(benchmark::State &);
        void (*standard)(benchmark::State &);
    };
    const Row rows[] = {
        {"HashInsert", hashInsert<VH, K>, hashInsert<QH, K>, hashInsert<SH, K>},
        {"HashFindHit", hashFindHit<VH, K>, hashFindHit<QH, K>, hashFindHit<SH, K>},
        {"HashFindMiss", hashFindMiss<VH, K>, hashFindMiss<QH, K>, hashFindMiss<SH, K>},
        {"HashErase", hashErase<VH, K>, hashErase<QH, K>, hashErase<SH, K>},
    };
    for (const Row &row : rows) {
        const std::pair<const char *, void (*)(benchmark::State &)> peers[] = {
            {"VHash", row.vort}, {"QHash", row.qt}, {"std::unordered_map", row.standard}};
        for (const auto &peer : peers) {
            const std::string name = std::string(row.operation) + "<" + keyName + ">/" + peer.first;
            auto *b = benchmark::RegisterBenchmark(name.c_str(), peer.second);
            for (int64_t n : sizes) {
                b->Arg(n);
            }
        }
    }
}

bool registerAll() {
    registerLists("ListAppend", {1000, 100000}, listAppend<VORT::VList<int>>,
                  listAppend<QList<int>>, listAppend<std::vector<int>>,
                  listAppend<std::deque<int>>);
    registerLists("ListPrepend", {1000, 10000}, listPrepend<VORT::VList<int>>,
                  listPrepend<QList<int>>, listPrepend<std::vector<int>>,
                  listPrepend<std::deque<int>>);
    registerLists("ListInsertMiddle", {1000, 10000}, listInsertMiddle<VORT::VList<int>>,
                  listInsertMiddle<QList<int>>, listInsertMiddle<std::vector<int>>,
                  listInsertMiddle<std::deque<int>>);
    registerLists("ListIterate", {1000, 100000}, listIterate<VORT::VList<int>>,
                  listIterate<QList<int>>, listIterate<std::vector<int>>,
                  listIterate<std::deque<int>>);
    registerHashes<int>("int", {1000, 100000});
    registerHashes<std::string>("std::string", {1000, 100000});
    for (int threads : {1, 2}) {
        benchmark::RegisterBenchmark("CounterRefDeref/AtomicCounter", counterRefDerefVort)
            ->Threads(threads);
        benchmark::RegisterBenchmark("CounterRefDeref/std::atomic", counterRefDerefStd)
            ->Threads(threads);
    }
    return true;
}

[[maybe_unused]] const bool registered = registerAll();

}  // namespace
