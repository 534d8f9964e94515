// The host support layer: message tables, assertions, string hashes, a clock, console and
// debugger output, the host's signal thread and thread-specific storage.
//
// A host that has its own support library links that one instead; this one has the same
// functions and adds hooks through which a host or a test replaces the clock, the output sinks,
// the assertion handler and the selected language.
//
// Thread safety: every function may be called from any thread. The message store takes a lock
// per call; the hooks are swapped atomically, and a caller that replaces a hook while another
// thread uses it sees either the old or the new one.
//
// Ownership: message tables are borrowed. A table registered with the store must stay valid
// until it is removed or the process ends.
#ifndef HSL_HSL_H
#define HSL_HSL_H

#include <hsl/hsl_export.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// A facility's primary (English) message table. Codes run in parallel with the ids and texts;
// the code array ends with 0xFFFFFFFF behind the last of `count` codes.
typedef struct hsl_message_table {
    uint32_t count;
    uint32_t facility;
    const uint32_t *codes;
    const char *const *ids;
    const char *const *texts;
    const char *trailing;
} hsl_message_table;

// Translated texts for one language: four parallel arrays, one entry per facility, the first
// ended by 0xFFFFFFFF. Texts are bytes in the language's own encoding and pass through as they
// are.
typedef struct hsl_language_table {
    const uint32_t *facilities;
    const uint32_t *const *codeTables;
    const char *const *const *textTables;
    const uint32_t *counts;
} hsl_language_table;

// Message store. The contexts are opaque and process-wide. The add and remove functions return
// 0 on success and -1 when the arguments are null or the table is not registered.
HSL_EXPORT void *hslGetMemoryContext(void);
HSL_EXPORT int hsl_mem_add_primary_message_table(void *context, const hsl_message_table *table);
HSL_EXPORT int hsl_mem_add_language(void *context, const char *language,
                                    const hsl_language_table *table);
HSL_EXPORT int hsl_mem_remove_primary_message_table(void *context, const hsl_message_table *table);
HSL_EXPORT void *hslGetMessageContext(void);

// Writes the text of `code` in the selected language into `buffer`, always terminated and never
// longer than `size` bytes including the terminator. The trailing arguments are `const char *`,
// ended by a null pointer. English texts take them in order through "%s"; translated texts name
// them "%1" to "%9". A missing argument reads as the empty string, "%%" is a percent sign. A
// language without a text for the code falls back to the English text; an unknown code writes a
// text that names the code in hexadecimal. Returns the number of bytes written before the
// terminator.
HSL_EXPORT int hsl_sprintm(void *context, char *buffer, size_t size, uint32_t code, ...);

// Selected language of the message store: "en" at start; "ja" selects Japanese.
HSL_EXPORT void hslSetLanguage(const char *tag);
HSL_EXPORT const char *hslGetLanguage(void);

// Assertions. The default handler writes the report to standard error and aborts.
typedef void (*HslAssertHandler)(const char *expression, const char *file, int line,
                                 const char *message);
// Installs `handler` and returns the previous one; null restores the default. `message` is null
// when the report comes through hsl_assert.
HSL_EXPORT HslAssertHandler hslSetAssertHandler(HslAssertHandler handler);
HSL_EXPORT void hsl_assert(const char *expression, const char *file, int line);
HSL_EXPORT void hsl_assertstr(const char *expression, const char *file, int line,
                              const char *message);

// A fast, well-mixed 32-bit hash (xxHash32). Nothing stores its values.
HSL_EXPORT uint32_t hsl_hash_string(uint32_t seed, const char *text);
HSL_EXPORT uint32_t hsl_hash_n_bytes(uint32_t seed, const void *bytes, size_t length);

// Seconds on a monotonic clock, or on the clock that hslSetRealtimeSource installed.
typedef double (*HslClock)(void);
HSL_EXPORT HslClock hslSetRealtimeSource(HslClock clock);
HSL_EXPORT double hslRealtime(void);

// Console and debugger output. Both sinks receive whole, terminated texts.
typedef void (*HslTextSink)(const char *text);
HSL_EXPORT HslTextSink hslSetConsoleSink(HslTextSink sink);
HSL_EXPORT HslTextSink hslSetDebugOutputSink(HslTextSink sink);
HSL_EXPORT int hslPrintf(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
HSL_EXPORT void hslDebugOutput(const char *text);

HSL_EXPORT size_t hslStrlen(const char *text);

// The host's signal thread: none is marked at start.
HSL_EXPORT void hslSetSignalThread(void);
HSL_EXPORT int hslIsSignalThread(void);

#ifdef __cplusplus
}

namespace Corvane {
namespace System {

// Thread-specific storage on the platform's own keys. A slot reads null on every thread until
// that thread sets it; the clean-up function, when not null, runs at the end of a thread whose
// slot is not null.
typedef unsigned long tss_key;
HSL_EXPORT tss_key tss_create(void (*cleanup)(void *));
HSL_EXPORT void *tss_get(tss_key key);
HSL_EXPORT void tss_set(tss_key key, void *value);
HSL_EXPORT void tss_delete(tss_key key);

}  // namespace System
}  // namespace Corvane
#endif

#endif  // HSL_HSL_H
