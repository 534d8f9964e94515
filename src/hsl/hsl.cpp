#include <hsl/hsl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <pthread.h>
#include <set>
#include <string>
#include <thread>
#include <time.h>
#include <vector>

namespace {

constexpr uint32_t kEndOfTable = 0xFFFFFFFFu;
constexpr int kMaxArguments = 9;

// Tables are borrowed from their owners, so the store keeps pointers only.
struct MessageStore {
    std::mutex lock;
    std::vector<const hsl_message_table *> primary;
    std::map<std::string, std::vector<const hsl_language_table *>> languages;
    // Every language tag ever selected, so that hslGetLanguage can hand out a pointer that
    // stays valid.
    std::set<std::string> tags{"en"};
    std::atomic<const char *> selected{nullptr};

    MessageStore() { selected.store(tags.begin()->c_str()); }
};

// Never destroyed: a message may be formatted from another library's static destructor.
MessageStore &store() {
    static MessageStore *instance = new MessageStore;
    return *instance;
}

const char *findPrimaryText(const MessageStore &s, uint32_t code) {
    for (auto it = s.primary.rbegin(); it != s.primary.rend(); ++it) {
        const hsl_message_table *table = *it;
        for (uint32_t i = 0; i < table->count && table->codes[i] != kEndOfTable; ++i) {
            if (table->codes[i] == code) {
                return table->texts[i];
            }
        }
    }
    return nullptr;
}

const char *findTranslatedText(const MessageStore &s, const std::string &language, uint32_t code) {
    const auto found = s.languages.find(language);
    if (found == s.languages.end()) {
        return nullptr;
    }
    for (auto it = found->second.rbegin(); it != found->second.rend(); ++it) {
        const hsl_language_table *table = *it;
        for (size_t f = 0; table->facilities[f] != kEndOfTable; ++f) {
            const uint32_t *codes = table->codeTables[f];
            for (uint32_t i = 0; i < table->counts[f] && codes[i] != kEndOfTable; ++i) {
                if (codes[i] == code) {
                    return table->textTables[f][i];
                }
            }
        }
    }
    return nullptr;
}

// Bounded writer: keeps room for the terminator and drops whatever does not fit.
class BoundedText {
public:
    BoundedText(char *buffer, size_t size) : m_buffer(buffer), m_capacity(size - 1) {}

    void put(char c) {
        if (m_length < m_capacity) {
            m_buffer[m_length++] = c;
        }
    }
    void put(const char *text) {
        const size_t n = std::min(std::strlen(text), m_capacity - m_length);
        std::memcpy(m_buffer + m_length, text, n);
        m_length += n;
    }
    int finish() {
        m_buffer[m_length] = '\0';
        return static_cast<int>(m_length);
    }

private:
    char *m_buffer;
    size_t m_capacity;
    size_t m_length = 0;
};

// "%s" takes the next argument in order, "%1".."%9" a numbered one, "%%" is a percent sign;
// anything else after '%' stays as it is.
int formatMessage(BoundedText &out, const char *text, const char *const *arguments, int count) {
    int next = 0;
    for (const char *p = text; *p != '\0'; ++p) {
        if (*p != '%') {
            out.put(*p);
            continue;
        }
        const char c = p[1];
        if (c == 's') {
            out.put(next < count ? arguments[next] : "");
            ++next;
            ++p;
        } else if (c >= '1' && c <= '9') {
            const int index = c - '1';
            out.put(index < count ? arguments[index] : "");
            ++p;
        } else if (c == '%') {
            out.put('%');
            ++p;
        } else {
            out.put('%');
        }
    }
    return out.finish();
}

void defaultAssertHandler(const char *expression, const char *file, int line, const char *message) {
    std::fprintf(stderr, "%s(%d): assertion failed: %s%s%s\n", file ? file : "?", line,
                 expression ? expression : "", message ? ": " : "", message ? message : "");
    std::fflush(stderr);
    std::abort();
}

// The monotonic clock at the resolution of the scheduler's tick. Its callers throttle work to
// once per several seconds and read it on every call, so it has to be cheap: the coarse clock
// is a plain read of the kernel's shared page, where the fine one orders a time-stamp read that
// keeps the processor from overlapping the caller's own memory accesses with it.
double defaultClock() {
#ifdef CLOCK_MONOTONIC_COARSE
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
#else
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
#endif
}

void defaultConsoleSink(const char *text) {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

void defaultDebugSink(const char *text) {
    std::fputs(text, stderr);
    std::fflush(stderr);
}

std::atomic<HslAssertHandler> g_assertHandler{&defaultAssertHandler};
std::atomic<HslClock> g_clock{&defaultClock};
std::atomic<HslTextSink> g_consoleSink{&defaultConsoleSink};
std::atomic<HslTextSink> g_debugSink{&defaultDebugSink};
std::atomic<std::thread::id> g_signalThread{};

template <typename F>
F swapHook(std::atomic<F> &hook, F replacement, F fallback) {
    return hook.exchange(replacement ? replacement : fallback);
}

// xxHash32 (Yann Collet), seed first as the support library has it.
constexpr uint32_t kPrime1 = 2654435761u;
constexpr uint32_t kPrime2 = 2246822519u;
constexpr uint32_t kPrime3 = 3266489917u;
constexpr uint32_t kPrime4 = 668265263u;
constexpr uint32_t kPrime5 = 374761393u;

inline uint32_t rotl(uint32_t x, int r) {
    return (x << r) | (x >> (32 - r));
}

inline uint32_t read32(const unsigned char *p) {
    uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline uint32_t round32(uint32_t acc, uint32_t input) {
    return rotl(acc + input * kPrime2, 13) * kPrime1;
}

uint32_t xxhash32(uint32_t seed, const unsigned char *p, size_t length) {
    const unsigned char *const end = p + length;
    uint32_t h;
    if (length >= 16) {
        uint32_t v1 = seed + kPrime1 + kPrime2;
        uint32_t v2 = seed + kPrime2;
        uint32_t v3 = seed;
        uint32_t v4 = seed - kPrime1;
        const unsigned char *const limit = end - 16;
        do {
            v1 = round32(v1, read32(p));
            v2 = round32(v2, read32(p + 4));
            v3 = round32(v3, read32(p + 8));
            v4 = round32(v4, read32(p + 12));
            p += 16;
        } while (p <= limit);
        h = rotl(v1, 1) + rotl(v2, 7) + rotl(v3, 12) + rotl(v4, 18);
    } else {
        h = seed + kPrime5;
    }
    h += static_cast<uint32_t>(length);
    for (; p + 4 <= end; p += 4) {
        h = rotl(h + read32(p) * kPrime3, 17) * kPrime4;
    }
    for (; p < end; ++p) {
        h = rotl(h + *p * kPrime5, 11) * kPrime1;
    }
    h ^= h >> 15;
    h *= kPrime2;
    h ^= h >> 13;
    h *= kPrime3;
    h ^= h >> 16;
    return h;
}

}  // namespace

extern "C" {

void *hslGetMemoryContext(void) {
    return &store();
}

void *hslGetMessageContext(void) {
    return &store();
}

int hsl_mem_add_primary_message_table(void *context, const hsl_message_table *table) {
    if (context == nullptr || table == nullptr) {
        return -1;
    }
    MessageStore &s = *static_cast<MessageStore *>(context);
    std::lock_guard<std::mutex> guard(s.lock);
    s.primary.push_back(table);
    return 0;
}

int hsl_mem_add_language(void *context, const char *language, const hsl_language_table *table) {
    if (context == nullptr || language == nullptr || table == nullptr) {
        return -1;
    }
    MessageStore &s = *static_cast<MessageStore *>(context);
    std::lock_guard<std::mutex> guard(s.lock);
    s.languages[language].push_back(table);
    return 0;
}

int hsl_mem_remove_primary_message_table(void *context, const hsl_message_table *table) {
    if (context == nullptr || table == nullptr) {
        return -1;
    }
    MessageStore &s = *static_cast<MessageStore *>(context);
    std::lock_guard<std::mutex> guard(s.lock);
    const auto found = std::find(s.primary.begin(), s.primary.end(), table);
    if (found == s.primary.end()) {
        return -1;
    }
    s.primary.erase(found);
    return 0;
}

int hsl_sprintm(void *context, char *buffer, size_t size, uint32_t code, ...) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const char *arguments[kMaxArguments];
    int count = 0;
    va_list list;
    va_start(list, code);
    for (const char *argument = va_arg(list, const char *); argument != nullptr;
         argument = va_arg(list, const char *)) {
        if (count < kMaxArguments) {
            arguments[count++] = argument;
        }
    }
    va_end(list);

    BoundedText out(buffer, size);
    MessageStore &s = context != nullptr ? *static_cast<MessageStore *>(context) : store();
    std::lock_guard<std::mutex> guard(s.lock);
    const char *text = findTranslatedText(s, s.selected.load(), code);
    if (text == nullptr) {
        text = findPrimaryText(s, code);
    }
    if (text == nullptr) {
        char unknown[48];
        std::snprintf(unknown, sizeof unknown, "Unknown message code 0x%X", code);
        out.put(unknown);
        return out.finish();
    }
    return formatMessage(out, text, arguments, count);
}

void hslSetLanguage(const char *tag) {
    MessageStore &s = store();
    std::lock_guard<std::mutex> guard(s.lock);
    const auto inserted = s.tags.insert(tag != nullptr && *tag != '\0' ? tag : "en");
    s.selected.store(inserted.first->c_str());
}

const char *hslGetLanguage(void) {
    return store().selected.load();
}

HslAssertHandler hslSetAssertHandler(HslAssertHandler handler) {
    return swapHook(g_assertHandler, handler, &defaultAssertHandler);
}

void hsl_assert(const char *expression, const char *file, int line) {
    g_assertHandler.load()(expression, file, line, nullptr);
}

void hsl_assertstr(const char *expression, const char *file, int line, const char *message) {
    g_assertHandler.load()(expression, file, line, message);
}

uint32_t hsl_hash_string(uint32_t seed, const char *text) {
    return text == nullptr
               ? xxhash32(seed, nullptr, 0)
               : xxhash32(seed, reinterpret_cast<const unsigned char *>(text), std::strlen(text));
}

uint32_t hsl_hash_n_bytes(uint32_t seed, const void *bytes, size_t length) {
    return xxhash32(seed, static_cast<const unsigned char *>(bytes), bytes ? length : 0);
}

HslClock hslSetRealtimeSource(HslClock clock) {
    return swapHook(g_clock, clock, &defaultClock);
}

double hslRealtime(void) {
    return g_clock.load()();
}

HslTextSink hslSetConsoleSink(HslTextSink sink) {
    return swapHook(g_consoleSink, sink, &defaultConsoleSink);
}

HslTextSink hslSetDebugOutputSink(HslTextSink sink) {
    return swapHook(g_debugSink, sink, &defaultDebugSink);
}

int hslPrintf(const char *format, ...) {
    if (format == nullptr) {
        return 0;
    }
    va_list list;
    va_start(list, format);
    va_list again;
    va_copy(again, list);
    char small[512];
    const int length = std::vsnprintf(small, sizeof small, format, list);
    va_end(list);
    if (length < 0) {
        va_end(again);
        return length;
    }
    if (static_cast<size_t>(length) < sizeof small) {
        g_consoleSink.load()(small);
    } else {
        std::string large(static_cast<size_t>(length) + 1, '\0');
        std::vsnprintf(large.data(), large.size(), format, again);
        g_consoleSink.load()(large.c_str());
    }
    va_end(again);
    return length;
}

void hslDebugOutput(const char *text) {
    if (text != nullptr) {
        g_debugSink.load()(text);
    }
}

size_t hslStrlen(const char *text) {
    return text == nullptr ? 0 : std::strlen(text);
}

void hslSetSignalThread(void) {
    g_signalThread.store(std::this_thread::get_id());
}

int hslIsSignalThread(void) {
    return g_signalThread.load() == std::this_thread::get_id() ? 1 : 0;
}

}  // extern "C"

namespace Corvane {
namespace System {

tss_key tss_create(void (*cleanup)(void *)) {
    pthread_key_t key;
    if (pthread_key_create(&key, cleanup) != 0) {
        std::fputs("tss_create: out of thread-specific keys\n", stderr);
        std::abort();
    }
    return static_cast<tss_key>(key);
}

void *tss_get(tss_key key) {
    return pthread_getspecific(static_cast<pthread_key_t>(key));
}

void tss_set(tss_key key, void *value) {
    pthread_setspecific(static_cast<pthread_key_t>(key), value);
}

void tss_delete(tss_key key) {
    pthread_key_delete(static_cast<pthread_key_t>(key));
}

}  // namespace System
}  // namespace Corvane
