// Test support for the preference store: a host context with a scratch directory and a chosen
// release, white-box access to the store's static table, and its reset between tests.
#ifndef VORT_TESTS_PREFERENCES_PREFERENCESTESTSUPPORT_H
#define VORT_TESTS_PREFERENCES_PREFERENCESTESTSUPPORT_H

#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>

namespace vort_test {

// What the host answers; a null directory or release is kept as such.
class TestContext : public VTServices::ApplicationContext {
public:
    TestContext(const char *directory, const char *release) {
        if (directory != nullptr) {
            m_directory = directory;
        }
        if (release != nullptr) {
            m_release = release;
        }
    }
    const char *getPreferencesDirectory(bool) override {
        return m_directory ? m_directory->c_str() : nullptr;
    }
    const char *getRelease() override { return m_release ? m_release->c_str() : nullptr; }

private:
    std::optional<std::string> m_directory, m_release;
};

struct Store : VTPreferences {
    using VTPreferences::delPref;
    using VTPreferences::getPrefFileName;
    using VTPreferences::m_dirty;
    using VTPreferences::m_loaded;
    using VTPreferences::m_prefMaps;
    using VTPreferences::versionHasChanged;

    static void reset() {
        m_prefMaps.clear();
        m_loaded = m_dirty = false;
    }
};

inline std::string readFile(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

inline void writeFile(const std::filesystem::path &path, const std::string &bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A fresh directory per test, named by the host context with release "R", and an empty store.
class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        const ::testing::TestInfo *info = ::testing::UnitTest::GetInstance()->current_test_info();
        m_directory = std::filesystem::temp_directory_path() /
                      (std::string("vort-prefs-") + info->test_suite_name() + "-" + info->name() +
                       "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(m_directory);
        std::filesystem::create_directories(m_directory);
        useContext(m_directory.string().c_str(), "R");
        Store::reset();
    }

    void TearDown() override {
        VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
        Store::reset();
        std::filesystem::remove_all(m_directory);
    }

    static void useContext(const char *directory, const char *release) {
        VTServices::VTService<VTServices::ApplicationContext>::install(
            new TestContext(directory, release));
    }

    std::filesystem::path file() const { return m_directory / "nexlark.prf"; }

    std::filesystem::path m_directory;
};

}  // namespace vort_test

#endif  // VORT_TESTS_PREFERENCES_PREFERENCESTESTSUPPORT_H
