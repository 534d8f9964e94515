// The library's start and its shared free functions: `initialize_vort_util`, the message
// catalogue that it hands to the platform layer, assertion reporting and the two separators of
// class and package names.
//
// Thread safety: `initialize_vort_util` is called once, from the host's start-up thread, before
// anything else of the library runs; it takes no lock. `logAssert` may be called from any
// thread, but its re-entrancy guard is one plain flag: two threads asserting at once may both
// report, or one report may be dropped.
//
// Failure: nothing here reports failure. Results of the platform calls are ignored.
#ifndef VORT_BONES_LIBRARY_H
#define VORT_BONES_LIBRARY_H

#include <hsl/hsl.h>
#include <vort/vort_export.h>

#include <string>

// Registers the message catalogue (English and Japanese) with the platform layer. A second call
// does nothing.
extern "C" VORT_EXPORT void initialize_vort_util();

// The loader's pair: `load` registers the catalogue without looking at the initialized flag,
// `unload` withdraws it. Both return 0. The library never calls them itself.
typedef int (*VortCatalogueHook)();
struct VortCatalogueHooks {
    VortCatalogueHook load;
    VortCatalogueHook unload;
};
extern "C" VORT_EXPORT const VortCatalogueHooks vort_catalogue_hooks;

namespace VORT {

// The catalogue's message codes: facility 0x5A in the high 16 bits, the number in the low 16.
constexpr unsigned long VT_BadCommandState = 0x5A0001UL;
constexpr unsigned long VT_DoNotHaveUndoInformationForChangeLevel = 0x5A0002UL;
constexpr unsigned long VT_ClassNotFound = 0x5A0003UL;
constexpr unsigned long VT_ClassRegisteredAsNULL = 0x5A0004UL;
constexpr unsigned long VT_ClassCannotBeCloned = 0x5A0005UL;
constexpr unsigned long VT_BaseClassNotFound = 0x5A0006UL;
constexpr unsigned long VT_PackageNotFound = 0x5A0007UL;
constexpr unsigned long VT_PackageCannotBeRegisteredInUniverse = 0x5A0008UL;
constexpr unsigned long VT_ClassDoesNotExposeInterface = 0x5A0009UL;

// The tables that `initialize_vort_util` registers; they live as long as the process.
VORT_EXPORT const hsl_message_table &primaryMessageTable();
VORT_EXPORT const hsl_language_table &japaneseMessageTable();

VORT_EXPORT extern const char CLASS_SEPARATOR;    // ':'
VORT_EXPORT extern const char PACKAGE_SEPARATOR;  // '.'

// Writes "<file> (<line>) : Assertion failure (<expression>)" to the debugger output, then calls
// `hsl_assert`. An assertion raised while one is being reported (from inside the host's
// handler, say) is dropped. The report is cut at 2,047 bytes.
VORT_EXPORT void logAssert(const char *file, unsigned long line, const char *expression);

// False: a release of the library is never a development build.
VORT_EXPORT bool isDevelopmentCode();

// Does nothing; kept so that code written against it keeps its shape.
VORT_EXPORT void outputToDebugger(const std::string &text, bool, bool);

// Does nothing in this library; kept so that code written against it keeps its shape.
struct VORT_EXPORT DebugHeapCheckHelper {
    DebugHeapCheckHelper() = default;
    explicit DebugHeapCheckHelper(bool) {}
};

}  // namespace VORT

#endif  // VORT_BONES_LIBRARY_H
