#include "VortProcess.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

namespace {

std::string example(const char *name) {
    return std::string(VORT_EXAMPLES_DIR) + "/images/" + name;
}

// The README's key: a tinted star over a backdrop.
std::string starOverBackdrop() {
    return "(" + example("backdrop.png") + ";(" + example("star.png") +
           ";;color_modifier:;1,0.75,0.2,1;0;);comp_mode:SourceOver;)";
}

QImage load(std::string const &path) {
    return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_ARGB32);
}

// Takes a variable out of the environment for as long as it lives.
class WithoutVariable {
public:
    explicit WithoutVariable(const char *name)
        : m_name(name), m_was(qEnvironmentVariableIsSet(name)), m_value(qgetenv(name)) {
        qunsetenv(name);
    }
    ~WithoutVariable() {
        if (m_was) {
            qputenv(m_name, m_value);
        }
    }
    WithoutVariable(WithoutVariable const &) = delete;
    WithoutVariable &operator=(WithoutVariable const &) = delete;

private:
    const char *m_name;
    bool m_was;
    QByteArray m_value;
};

}  // namespace

TEST(VortCompose, WritesTheComposedPictureAsPng) {
    ScratchFolder folder;
    const std::string out = folder.path("composed.png");
    const VortRun run = runVort({"compose", starOverBackdrop(), "-o", out});
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");

    const QImage composed = load(out);
    const QImage backdrop = load(example("backdrop.png"));
    ASSERT_EQ(composed.size(), QSize(64, 64));
    // The star's middle is white tinted orange; outside the star the backdrop shows.
    EXPECT_EQ(composed.pixel(32, 34), qRgb(255, 191, 51));
    EXPECT_EQ(composed.pixel(4, 60), backdrop.pixel(4, 60));
    EXPECT_EQ(composed.pixel(0, 0), backdrop.pixel(0, 0));

    // To standard output, and from a bare file name, which is the key of that file.
    const VortRun piped = runVort({"compose", example("badge.png"), "-o", "-"});
    ASSERT_TRUE(piped.finished) << piped.err;
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    QImage badge;
    ASSERT_TRUE(badge.loadFromData(QByteArray::fromStdString(piped.out), "PNG"));
    EXPECT_EQ(badge.convertToFormat(QImage::Format_ARGB32), load(example("badge.png")));
}

TEST(VortCompose, ExplainsEachLevelAndTheModifierItResolvesTo) {
    const std::string star = example("star.png");
    const std::string badge = example("badge.png");
    const VortRun run =
        runVort({"compose", "--explain",
                 "((" + star + ";;color_modifier:;0,0,1,1;1;);" + badge + ";Plus)"});
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::string expected =
        "((" + star + ";;color_modifier:;0,0,1,1;1;);" + badge + ";Plus)\n" + "  a         (" +
        star + ";;color_modifier:;0,0,1,1;1;)\n" + "  b         " + badge + "\n" +
        "  modifier  comp_mode:SourceOver (no modifier named: two operands compose) -> "
        "QtModifier, draws b over a in mode SourceOver\n" +
        "  ignored   'Plus' is no field: a field ends with ';'\n" + "  a (" + star +
        ";;color_modifier:;0,0,1,1;1;)\n" + "    a         " + star + "\n" +
        "    modifier  color_modifier: -> ColorModifier, composes its operands, then tints them "
        "by red 0, green 0, blue 255, turning them gray first\n" +
        "    arguments 0,0,1,1;1\n" + "    a (" + star + ";;)\n" + "      a         " + star +
        "\n" +
        "      modifier  loadImg: (no modifier named: one operand is a file) -> DefaultModifier, "
        "loads the file '" +
        star + "'\n" + "  b (" + badge + ";;)\n" + "    a         " + badge + "\n" +
        "    modifier  loadImg: (no modifier named: one operand is a file) -> DefaultModifier, "
        "loads the file '" +
        badge + "'\n";
    EXPECT_EQ(run.out, expected);
}

TEST(VortCompose, SaysWhichPartOfAKeyFailed) {
    const std::string star = example("star.png");
    const std::string missing = example("missing.png");
    struct Row {
        std::vector<std::string> arguments;
        int exitCode;
        std::string err;
    };
    const Row rows[] = {
        {{"compose", "(;" + star + ";)", "-o", "x.png"},
         1,
         "vort compose: malformed key '(;" + star +
             ";)': its first operand is empty (fields are split by ';' outside parentheses)\n"},
        {{"compose", "(a);b;c;)", "-o", "x.png"},
         1,
         "vort compose: malformed key '(a);b;c;)': its parentheses do not pair up, so no ';' "
         "splits it\n"},
        {{"compose", "(" + star + ";;Comp_Mode:Sideways;)", "-o", "x.png"},
         1,
         "vort compose: unknown modifier 'Comp_Mode:Sideways' in key '(" + star +
             ";;Comp_Mode:Sideways;)'\n"},
        {{"compose", "(" + star + ";(" + missing + ";;);comp_mode:Screen;)", "-o", "x.png"},
         1,
         "vort compose: cannot load the image file '" + missing + "': File not found\n"},
        {{"compose", "--explain", missing},
         1,
         "vort compose: cannot load the image file '" + missing + "': File not found\n"},
        {{"compose", star}, 2, "vort compose: either -o OUT.png or --explain\n"},
        {{"compose", "--explain", star, "-o", "x.png"},
         2,
         "vort compose: either -o OUT.png or --explain\n"},
        {{"compose", "-o"}, 2, "vort compose: -o needs a file name\n"},
        {{"compose", "a", "b", "-o", "x.png"}, 2, "vort compose: one key, please\n"},
    };
    for (Row const &row : rows) {
        const VortRun run = runVort(row.arguments);
        ASSERT_TRUE(run.finished) << row.err;
        EXPECT_EQ(run.exitCode, row.exitCode) << row.err;
        EXPECT_EQ(run.err.substr(0, row.err.size()), row.err);
    }
}

TEST(VortCompose, DrawsOffscreenWhenThereIsNoDisplay) {
    const WithoutVariable platform("QT_QPA_PLATFORM");
    const WithoutVariable x11("DISPLAY");
    const WithoutVariable wayland("WAYLAND_DISPLAY");
    ScratchFolder folder;
    const VortRun run = runVort({"compose", starOverBackdrop(), "-o", folder.path("out.png")});
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(load(folder.path("out.png")).size(), QSize(64, 64));
}
