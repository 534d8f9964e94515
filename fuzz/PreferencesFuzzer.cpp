// Feeds arbitrary bytes to the preference file reader, through the store's own load, save and
// typed getters. Beyond not crashing, leaking or hanging: every entry read has a non-empty
// section, key and value, no value holds a line break or begins with white space, the release
// migration has run and saved, and the saved file reads back into the very same table.
//
// The file lives in a scratch directory, in /dev/shm when there is one, so that the save's
// flush to disk costs nothing.
#include "FuzzCheck.h"
#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

const char *const kRelease = "fuzz-release";

class Context : public VTServices::ApplicationContext {
public:
    explicit Context(std::string directory) : m_directory(std::move(directory)) {}
    const char *getPreferencesDirectory(bool) override { return m_directory.c_str(); }
    const char *getRelease() override { return kRelease; }

private:
    std::string m_directory;
};

struct Store : VTPreferences {
    using VTPreferences::m_dirty;
    using VTPreferences::m_prefMaps;
};

// Made at first use and removed at exit.
class Scratch {
public:
    Scratch() {
        const char *const base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        m_path = std::string(base) + "/vort-prefs-fuzz-XXXXXX";
        check(mkdtemp(&m_path[0]) != nullptr, "a scratch directory can be made");
    }
    ~Scratch() {
        std::remove((m_path + "/nexlark.prf").c_str());
        rmdir(m_path.c_str());
    }
    std::string const &path() const { return m_path; }

private:
    std::string m_path;
};

std::string const &directory() {
    static const Scratch scratch;
    return scratch.path();
}

std::string fileName() {
    return directory() + "/nexlark.prf";
}

std::string readAll() {
    std::ifstream in(fileName(), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Loads `bytes` as the file, from a forgotten table.
void loadFrom(std::string const &bytes) {
    check(VTPreferences::clearPrefs(), "the file can be cleared");
    {
        std::ofstream out(fileName(), std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    check(VTPreferences::loadPrefs(), "an existing file loads");
}

void checkEntries(VTPreferences::Table const &table) {
    for (auto const &section : table) {
        check(!section.first.empty(), "no section without a name");
        check(section.first.find(']') == std::string::npos, "no section name holds ]");
        for (auto const &entry : section.second) {
            check(!entry.first.empty(), "no key is empty");
            check(entry.first.find('=') == std::string::npos, "no key holds =");
            check(!entry.second.empty(), "no value is empty");
            check(entry.second.find('\n') == std::string::npos, "no value holds a line break");
            check(!std::isspace(static_cast<unsigned char>(entry.second[0])),
                  "no value begins with white space");
        }
    }
    auto const general = table.find("General");
    check(general != table.end() && general->second.count("TessarRelease") == 1 &&
              general->second.at("TessarRelease") == kRelease,
          "the migration stores the host's release");
}

// The typed readers take any stored text.
void readTyped(VTPreferences::Table const &table) {
    int budget = 64;
    for (auto const &section : table) {
        for (auto const &entry : section.second) {
            if (--budget < 0) {
                return;
            }
            std::string const &s = section.first;
            std::string const &k = entry.first;
            VTPreferences::getBoolPref(s, k, false);
            VTPreferences::getColorPref(s, k, VORT::Color());
            VTPreferences::getIntPref(s, k, 0);
            int x, y, w, h;
            VTPreferences::getRectPref(s, k, x, y, w, h, 0, 0, 0, 0);
            int count = -1;
            int *values = VTPreferences::getIntArrayPref(s, k, count);
            check((values == nullptr) == (count == 0), "an int array comes with its count");
            delete[] values;
            std::vector<std::string> strings;
            VTPreferences::getStringVectorPref(s, k, &strings);
            check(strings.size() <= entry.second.size() / 2 + 1, "no more elements than commas");
            std::string text;
            VTPreferences::getStringPref(s, k, &text, "default");
            check(text == entry.second, "a string reads as it stands");
        }
    }
}

// The table as the file can hold it: a section whose keys were all removed isn't written.
VTPreferences::Table withoutEmptySections(VTPreferences::Table table) {
    for (auto section = table.begin(); section != table.end();) {
        section = section->second.empty() ? table.erase(section) : std::next(section);
    }
    return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    VTServices::VTService<VTServices::ApplicationContext>::install(new Context(directory()));
    loadFrom(std::string(reinterpret_cast<const char *>(data), size));
    const VTPreferences::Table first = Store::m_prefMaps;
    checkEntries(first);
    check(!Store::m_dirty, "the migration saved its changes");
    readTyped(first);

    // What was saved reads back unchanged, and needs no migration or save of its own.
    const std::string saved = readAll();
    loadFrom(saved);
    check(Store::m_prefMaps == withoutEmptySections(first),
          "the saved file reads back into the same table");
    check(!Store::m_dirty, "reading back changes nothing");
    check(readAll() == saved, "reading back leaves the file alone");
    // The service table doesn't delete what is still installed at exit.
    VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
    return 0;
}
