#include "VortProcess.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::VortRun;

namespace {

std::string example(const char *name) {
    return std::string(VORT_EXAMPLES_DIR) + "/images/" + name;
}

QImage load(std::string const &path) {
    return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_ARGB32);
}

}  // namespace

// The README's key, a tinted star over a backdrop, run as a user would, with no display at all.
TEST(VortCompose, WritesTheComposedPictureAsPngOffscreen) {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QByteArray display = qgetenv("DISPLAY");
    for (const char *name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        qunsetenv(name);
    }
    vort_test::ScratchFolder folder;
    const VortRun run = runVort({"compose",
                                 "(" + example("backdrop.png") + ";(" + example("star.png") +
                                     ";;color_modifier:;1,0.75,0.2,1;0;);comp_mode:SourceOver;)",
                                 "-o", folder.path("composed.png")});
    qputenv("QT_QPA_PLATFORM", platform);
    if (!display.isEmpty()) {
        qputenv("DISPLAY", display);
    }
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "");
    const QImage composed = load(folder.path("composed.png"));
    ASSERT_EQ(composed.size(), QSize(64, 64));
    // The star's middle is white tinted orange; outside the star the backdrop shows.
    EXPECT_EQ(composed.pixel(32, 34), qRgb(255, 191, 51));
    EXPECT_EQ(composed.pixel(4, 60), load(example("backdrop.png")).pixel(4, 60));

    // To standard output, and from a bare file name, which is the key of that file.
    const VortRun piped = runVort({"compose", example("badge.png"), "-o", "-"});
    QImage badge;
    ASSERT_TRUE(badge.loadFromData(QByteArray::fromStdString(piped.out), "PNG")) << piped.err;
    EXPECT_EQ(badge.convertToFormat(QImage::Format_ARGB32), load(example("badge.png")));
}

TEST(VortCompose, ExplainsEachLevelAndTheModifierItResolvesTo) {
    const std::string star = example("star.png");
    const std::string badge = example("badge.png");
    const std::string tint = "(" + star + ";;color_modifier:;0,0,1,1;1;)";
    const VortRun run = runVort({"compose", "--explain", "(" + tint + ";" + badge + ";Plus)"});
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::string lines[] = {
        "(" + tint + ";" + badge + ";Plus)\n  a         " + tint + "\n  b         " + badge,
        "  modifier  comp_mode:SourceOver (no modifier named: two operands compose) -> "
        "QtModifier, draws b over a in mode SourceOver\n"
        "  ignored   'Plus' is no field: a field ends with ';'\n  a " +
            tint + "\n",
        "    modifier  color_modifier: -> ColorModifier, composes its operands, then tints them "
        "by red 0, green 0, blue 255, turning them gray first\n    arguments 0,0,1,1;1\n",
        "      modifier  loadImg: (no modifier named: one operand is a file) -> DefaultModifier, "
        "loads the file '" +
            star + "'\n  b (" + badge + ";;)\n",
    };
    for (std::string const &line : lines) {
        EXPECT_NE(run.out.find(line), std::string::npos) << line << "\nin:\n" << run.out;
    }
}

TEST(VortCompose, SaysWhichPartOfAKeyFailed) {
    const std::string star = example("star.png");
    const std::string missing = example("missing.png");
    const auto refused = [](std::vector<std::string> arguments, int code,
                            std::string const &err) -> vort_test::VortCase {
        arguments.insert(arguments.begin(), "compose");
        return {arguments, code, "", "vort compose: " + err};
    };
    const std::string cannotLoad = "cannot load the image file '" + missing + "': File not found";
    const std::string either = "either -o OUT.png or --explain";
    vort_test::expectRuns({
        refused({"(;" + star + ";)", "-o", "x.png"}, 1,
                "malformed key '(;" + star + ";)': its first operand is empty"),
        refused({"(a);b;c;)", "-o", "x.png"}, 1,
                "malformed key '(a);b;c;)': its parentheses do not pair up"),
        refused(
            {"(" + star + ";;Comp_Mode:Sideways;)", "-o", "x.png"}, 1,
            "unknown modifier 'Comp_Mode:Sideways' in key '(" + star + ";;Comp_Mode:Sideways;)'"),
        refused({"(" + star + ";(" + missing + ";;);comp_mode:Screen;)", "-o", "x.png"}, 1,
                cannotLoad),
        {{"compose", "--explain", missing},
         1,
         "(" + missing + ";;)\n  a         " + missing +
             "\n  modifier  loadImg: (no modifier named: one operand is a file) -> "
             "DefaultModifier, loads the file '" +
             missing + "'\n",
         "vort compose: " + cannotLoad},
        refused({star}, 2, either),
        refused({"--explain", star, "-o", "x.png"}, 2, either),
        refused({"-o"}, 2, "-o needs a file name"),
        refused({"a", "b", "-o", "x.png"}, 2, "one key, please"),
    });
}
