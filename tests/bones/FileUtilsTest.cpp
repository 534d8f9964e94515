#include <vort/bones/FileUtils.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

#define EMIGRE "\xC3\xA9migr\xC3\xA9"

namespace {

// Hidden entries, non-ASCII names, a link that loops (sub/deeper/back -> ..) and one that
// doesn't (alias -> sub/deeper).
class FileTree : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        for (const char *name :
             {"top.xml", "UPPER.XML", "notes.txt", ".hidden.xml", "sub/a.xml", "sub/deeper/b.xml",
              "sub/deeper/deepest/c.xml", EMIGRE "/\xC3\xBC.xml", ".hiddendir/h.xml", "empty/"}) {
            write(name, "x");
        }
        fs::create_directory_symlink("..", root + "/sub/deeper/back");
        fs::create_directory_symlink("sub/deeper", root + "/alias");
    }

    void write(std::string const &name, std::string const &content) const {
        const fs::path path = root + "/" + name;
        fs::create_directories(path.parent_path());
        if (path.has_filename()) {
            std::ofstream(path, std::ios::binary) << content;
        }
    }

    // Relative to the root, as a set: the file system gives no order.
    std::set<std::string> relative(std::vector<std::string> const &paths) const {
        std::set<std::string> names;
        for (std::string const &path : paths) {
            EXPECT_EQ(path.compare(0, root.size() + 1, root + "/"), 0) << path;
            names.insert(path.substr(root.size() + 1));
        }
        return names;
    }

    QTemporaryDir m_folder;
    const std::string root = m_folder.path().toStdString();
};

}  // namespace

TEST_F(FileTree, GathersSubdirectoriesParentsFirstWithoutLooping) {
    std::vector<std::string> found;
    VORT::gatherSubDirectories(root, found, true);
    EXPECT_EQ(relative(found),
              (std::set<std::string>{"alias", "alias/back", "alias/deepest", "empty", "sub",
                                     "sub/deeper", "sub/deeper/deepest", EMIGRE}));
    for (auto it = found.begin(); it != found.end(); ++it) {
        const std::string parent = fs::path(*it).parent_path().string();
        EXPECT_TRUE(parent == root || std::find(found.begin(), it, parent) != it) << *it;
    }
    std::vector<std::string> flat{root + "/kept"};
    VORT::gatherSubDirectories(root + "/", flat, false);
    EXPECT_EQ(relative(flat), (std::set<std::string>{"alias", "empty", "kept", "sub", EMIGRE}));
}

TEST_F(FileTree, GathersMatchingFilesWithNonAsciiNames) {
    std::vector<std::string> deep, shallow, several, none{"kept"};
    // Patterns match without case, hidden entries stay out, the looping link isn't followed.
    VORT::gatherFiles(root, "*.xml", deep, true);
    EXPECT_EQ(relative(deep), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                     "sub/deeper/b.xml", "sub/deeper/deepest/c.xml",
                                                     "alias/b.xml", "alias/deepest/c.xml",
                                                     "alias/back/a.xml", EMIGRE "/\xC3\xBC.xml"}));
    EXPECT_TRUE(fs::is_regular_file(root + "/" EMIGRE "/\xC3\xBC.xml"));
    // Without recursion the immediate subdirectories are searched all the same.
    VORT::gatherFiles(root, "*.xml", shallow, false);
    EXPECT_EQ(relative(shallow), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                        "alias/b.xml", EMIGRE "/\xC3\xBC.xml"}));
    VORT::gatherFiles(root + "/", std::vector<std::string>{"*.txt", "?op.*"}, several, false);
    EXPECT_EQ(relative(several), (std::set<std::string>{"notes.txt", "top.xml"}));

    for (std::string const &folder : {root + "/missing", std::string(), root + "/empty"}) {
        VORT::gatherFiles(folder, "*", none, true);
        VORT::gatherSubDirectories(folder, none, true);
    }
    VORT::gatherFiles(root, "", none, true);
    EXPECT_EQ(none, std::vector<std::string>{"kept"});
}

TEST_F(FileTree, ListsTimesInReverseOrderCutTo32Bits) {
    const std::pair<const char *, std::int64_t> stamps[] = {
        {"top.xml", 1000000000}, {"sub/a.xml", 4294967296LL + 77}, {EMIGRE "/\xC3\xBC.xml", 0}};
    for (auto const &stamp : stamps) {
        const struct timespec times[2] = {{stamp.second, 0}, {stamp.second, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (root + "/" + stamp.first).c_str(), times, 0), 0);
    }
    std::vector<std::string> gathered;
    VORT::gatherFiles(root, "*.xml", gathered, false);
    std::vector<std::pair<std::string, unsigned long>> list{{"kept", 1ul}};
    VORT::buildFileAndTimeList(root, "*.xml", false, list);
    VORT::buildFileAndTimeList(root, "", false, list);
    ASSERT_TRUE(list.size() == gathered.size() + 1 && list[0].first == "kept");
    for (std::size_t i = 1; i < list.size(); ++i) {
        EXPECT_EQ(list[i].first, gathered[gathered.size() - i]);
    }
    for (auto const &stamp : stamps) {
        const auto entry = std::find_if(list.begin(), list.end(), [&](auto const &item) {
            return item.first == root + "/" + stamp.first;
        });
        ASSERT_NE(entry, list.end()) << stamp.first;
        EXPECT_EQ(entry->second, std::uint32_t(stamp.second)) << stamp.first;
    }
}

TEST_F(FileTree, ReadsATextFileIntoANewBuffer) {
    write(EMIGRE "/text.txt", "line one\r\nline two\n");
    write("blank.txt", "");
    std::int64_t size = -7;
    std::unique_ptr<char[]> text(
        VORT::readTextFileIntoNewBuffer(root + "/" EMIGRE "/text.txt", size));
    ASSERT_NE(text, nullptr);
    // The size is the file's; text mode turned "\r\n" into "\n", and a NUL ends what arrived.
    EXPECT_EQ(text.get() + std::to_string(size), "line one\nline two\n19");
    EXPECT_TRUE(VORT::readTextFileIntoNewBuffer(root + "/blank.txt", size) == nullptr && size == 0);
    size = -7;
    for (std::string const &path : {root + "/missing.txt", root + "/sub", std::string()}) {
        EXPECT_EQ(VORT::readTextFileIntoNewBuffer(path, size), nullptr) << path;
    }
    EXPECT_EQ(size, -7);
}

TEST(GetCurrentProcessMemory, FollowsTheResidentSize) {
    const double before = VORT::GetCurrentProcessMemory(false);
    EXPECT_EQ(std::fmod(before, 1024.0), 0.0);  // the status counts in kilobytes
    const std::size_t size = std::size_t(64) << 20;
    std::unique_ptr<volatile char[]> block(new volatile char[size]);
    for (std::size_t i = 0; i < size; i += 4096) {
        block[i] = 1;  // every page becomes resident
    }
    const double after = VORT::GetCurrentProcessMemory(false);
    EXPECT_GE(after - before, 48.0 * 1048576.0);
    EXPECT_NEAR(VORT::GetCurrentProcessMemory(true), after / 1048576.0, 8.0);
}
