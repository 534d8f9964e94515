#include <vort/bones/FileUtils.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
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

TEST_F(FileTree, GathersSubdirectoriesParentsFirstAndMatchingFilesWithoutLooping) {
    std::vector<std::string> found;
    VORT::gatherSubDirectories(root, found, true);
    EXPECT_EQ(relative(found),
              (std::set<std::string>{"alias", "alias/back", "alias/deepest", "empty", "sub",
                                     "sub/deeper", "sub/deeper/deepest", EMIGRE}));
    for (auto it = found.begin(); it != found.end(); ++it) {
        const std::string parent = fs::path(*it).parent_path().string();  // parents first
        EXPECT_TRUE(parent == root || std::find(found.begin(), it, parent) != it) << *it;
    }
    std::vector<std::string> flat{root + "/kept"};
    VORT::gatherSubDirectories(root + "/", flat, false);
    EXPECT_EQ(relative(flat), (std::set<std::string>{"alias", "empty", "kept", "sub", EMIGRE}));

    std::vector<std::string> deep, shallow, several, none{"kept"};
    // Patterns match without case, hidden entries stay out, the looping link isn't followed.
    VORT::gatherFiles(root, "*.xml", deep, true);
    EXPECT_EQ(relative(deep), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                     "sub/deeper/b.xml", "sub/deeper/deepest/c.xml",
                                                     "alias/b.xml", "alias/deepest/c.xml",
                                                     "alias/back/a.xml", EMIGRE "/\xC3\xBC.xml"}));
    // Without recursion the immediate subdirectories are searched all the same.
    VORT::gatherFiles(root, "*.xml", shallow, false);
    EXPECT_EQ(relative(shallow), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                        "alias/b.xml", EMIGRE "/\xC3\xBC.xml"}));
    VORT::gatherFiles(root + "/", std::vector<std::string>{"*.txt", "?op.*"}, several, false);
    EXPECT_EQ(relative(several), (std::set<std::string>{"notes.txt", "top.xml"}));

    VORT::gatherFiles(root + "/missing", "*", none, true);
    VORT::gatherSubDirectories(root + "/empty", none, true);
    VORT::gatherFiles(root, "", none, true);
    EXPECT_EQ(none, std::vector<std::string>{"kept"});
}

TEST_F(FileTree, ListsTimesInReverseOrderCutTo32BitsAndReadsTextFiles) {
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
    std::map<std::string, unsigned long> times(list.begin(), list.end());
    ASSERT_TRUE(list.size() == gathered.size() + 1 && list[0].first == "kept");
    for (std::size_t i = 1; i < list.size(); ++i) {
        EXPECT_EQ(list[i].first, gathered[gathered.size() - i]);
    }
    for (auto const &stamp : stamps) {
        EXPECT_EQ(times[root + "/" + stamp.first], std::uint32_t(stamp.second)) << stamp.first;
    }

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
    EXPECT_EQ(VORT::readTextFileIntoNewBuffer(root + "/missing.txt", size), nullptr);
    EXPECT_EQ(VORT::readTextFileIntoNewBuffer(root + "/sub", size), nullptr);
    EXPECT_EQ(size, -7);
}
