#include <vort/bones/Library.h>

#include <cstdio>

namespace {

constexpr uint32_t kFacility = 0x5A;
constexpr uint32_t kMessageCount = 9;
constexpr uint32_t kEndOfTable = 0xFFFFFFFFu;

const uint32_t kCodes[kMessageCount + 1] = {
    0x5A0001, 0x5A0002, 0x5A0003, 0x5A0004, 0x5A0005,
    0x5A0006, 0x5A0007, 0x5A0008, 0x5A0009, kEndOfTable,
};

const char *const kIds[kMessageCount] = {
    "VT_BadCommandState",
    "VT_DoNotHaveUndoInformationForChangeLevel",
    "VT_ClassNotFound",
    "VT_ClassRegisteredAsNULL",
    "VT_ClassCannotBeCloned",
    "VT_BaseClassNotFound",
    "VT_PackageNotFound",
    "VT_PackageCannotBeRegisteredInUniverse",
    "VT_ClassDoesNotExposeInterface",
};

const char *const kEnglish[kMessageCount] = {
    "Command not in an appropriate state for request.",
    "We do not have undo information far enough back.",
    "Class '%s' not found.",
    "Class '%s' registered as NULL.",
    "Class '%s' cannot be cloned.",
    "Base class '%s' not found.",
    "Package '%s' not found.",
    "Package '%s' cannot be registered in Universe with root %s.",
    "Class '%s' does not expose requested interface.",
};

// Shift-JIS bytes: the platform layer passes translated texts through unconverted.
const char *const kJapanese[kMessageCount] = {
    // 要求に対する適切な状態のコマンドではありません。
    "\x97v\x8B\x81\x82\xC9\x91\xCE\x82\xB7\x82\xE9\x93K\x90\xD8\x82\xC8\x8F\xF3\x91\xD4\x82\xCC"
    "\x83R\x83}\x83\x93\x83h\x82\xC5\x82\xCD\x82\xA0\x82\xE8\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // だいぶ前の元に戻す (undo) 情報はありません。
    "\x82\xBE\x82\xA2\x82\xD4\x91O\x82\xCC\x8C\xB3\x82\xC9\x96\xDF\x82\xB7 (undo) \x8F\xEE\x95\xF1"
    "\x82\xCD\x82\xA0\x82\xE8\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // クラス '%1' が見つかりません。
    "\x83N\x83\x89\x83X '%1' \x82\xAA\x8C\xA9\x82\xC2\x82\xA9\x82\xE8\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // クラス '%1' は NULL として登録されました。
    "\x83N\x83\x89\x83X '%1' \x82\xCD NULL \x82\xC6\x82\xB5\x82\xC4\x93o\x98^\x82\xB3\x82\xEA\x82"
    "\xDC\x82\xB5\x82\xBD\x81"
    "B",
    // クラス '%1' はコピーできません。
    "\x83N\x83\x89\x83X '%1' \x82\xCD\x83R\x83s\x81[\x82\xC5\x82\xAB\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // 基本クラス '%1' が見つかりません。
    "\x8A\xEE\x96{\x83N\x83\x89\x83X '%1' \x82\xAA\x8C\xA9\x82\xC2\x82\xA9\x82\xE8\x82\xDC\x82\xB9"
    "\x82\xF1\x81"
    "B",
    // パッケージ '%1' が見つかりません。
    "\x83p\x83"
    "b\x83P\x81[\x83W '%1' \x82\xAA\x8C\xA9\x82\xC2\x82\xA9\x82\xE8\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // パッケージ '%1' は、ルート %2 を持つ Universe で登録できません。
    "\x83p\x83"
    "b\x83P\x81[\x83W '%1' \x82\xCD\x81"
    "A\x83\x8B\x81[\x83g %2 \x82\xF0\x8E\x9D\x82\xC2 Universe \x82\xC5\x93o\x98^\x82\xC5\x82\xAB"
    "\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
    // クラス '%1' は、要求されたインタフェースを公開しません。
    "\x83N\x83\x89\x83X '%1' \x82\xCD\x81"
    "A\x97v\x8B\x81\x82\xB3\x82\xEA\x82\xBD\x83"
    "C\x83\x93\x83^\x83t\x83"
    "F\x81[\x83X\x82\xF0\x8C\xF6\x8AJ\x82\xB5\x82\xDC\x82\xB9\x82\xF1\x81"
    "B",
};

const hsl_message_table kPrimaryTable = {kMessageCount, kFacility, kCodes, kIds, kEnglish, ""};

const uint32_t kLanguageFacilities[] = {kFacility, kEndOfTable};
const uint32_t *const kLanguageCodeTables[] = {kCodes};
const char *const *const kLanguageTextTables[] = {kJapanese};
const uint32_t kLanguageCounts[] = {kMessageCount};

const hsl_language_table kJapaneseTable = {kLanguageFacilities, kLanguageCodeTables,
                                           kLanguageTextTables, kLanguageCounts};

// Plain bytes, as the host calls in from its start-up thread before anything else runs.
bool g_initialized = false;
bool g_reporting = false;

int loadCatalogue() {
    void *context = hslGetMemoryContext();
    hsl_mem_add_primary_message_table(context, &kPrimaryTable);
    hsl_mem_add_language(context, "ja", &kJapaneseTable);
    return 0;
}

int unloadCatalogue() {
    hsl_mem_remove_primary_message_table(hslGetMemoryContext(), &kPrimaryTable);
    return 0;
}

}  // namespace

extern "C" const VortCatalogueHooks vort_catalogue_hooks = {&loadCatalogue, &unloadCatalogue};

void initialize_vort_util() {
    if (g_initialized) {
        return;
    }
    g_initialized = true;
    loadCatalogue();
}

namespace VORT {

const char CLASS_SEPARATOR = ':';
const char PACKAGE_SEPARATOR = '.';

const hsl_message_table &primaryMessageTable() {
    return kPrimaryTable;
}

const hsl_language_table &japaneseMessageTable() {
    return kJapaneseTable;
}

void logAssert(const char *file, unsigned long line, const char *expression) {
    if (g_reporting) {
        return;
    }
    g_reporting = true;
    char report[2048];
    std::snprintf(report, sizeof report, "%s (%lu) : Assertion failure (%s)", file, line,
                  expression);
    hslDebugOutput(report);
    hsl_assert(expression, file, static_cast<int>(line));
    g_reporting = false;
}

bool isDevelopmentCode() {
    return false;
}

void outputToDebugger(const std::string &, bool, bool) {}

}  // namespace VORT
