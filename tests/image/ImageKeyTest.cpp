#include <vort/image/ImageKey.h>

#include <QtGui/QPainter>

#include <gtest/gtest.h>

#include <string>

using VORT::ImageCompositor::buildKey;
using VORT::ImageCompositor::Mode;
using VORT::ImageCompositor::parseKey;

TEST(ImageKey, ParsesTheGrammarWithItsKeptConsequences) {
    struct Row {
        const char *key;
        bool ok;
        const char *a;
        const char *b;
        const char *name;
        const char *args;
    };
    const Row rows[] = {
        {"(a;;)", true, "a", "", "", ""},
        {"(x.png;;)", true, "x.png", "", "", ""},
        {"(;b;)", false, "", "b", "", ""},
        {"()", false, "", "", "", ""},
        {"x", false, "", "", "", ""},
        {"(a)", false, "", "", "", ""},
        {"(a;;", false, "", "", "", ""},
        {"a;;)", false, "", "", "", ""},
        {"((p;;);(q;;);comp_mode:Plus;)", true, "(p;;)", "(q;;)", "comp_mode:Plus", ""},
        {"(a;b;comp_mode:Multiply;)", true, "a", "b", "comp_mode:Multiply", ""},
        // A third field that no ";" closes is dropped.
        {"(a;b;Multiply)", true, "a", "b", "", ""},
        // Open-ended arguments need two characters.
        {"(a;b;m;x)", true, "a", "b", "m", ""},
        {"(a;b;m;xy)", true, "a", "b", "m", "xy"},
        // Closed arguments run to the last ";" before the first ")" after them...
        {"(a;;color_modifier:;1,0,0,1;1;)", true, "a", "", "color_modifier:", "1,0,0,1;1"},
        // ...or to that ")" when no later ";" comes first.
        {"(a;b;m;xy;zw)", true, "a", "b", "m", "xy;zw"},
        {"(a;b;m;;)", true, "a", "b", "m", ";"},
        {"(a;b;m;(x);y)", true, "a", "b", "m", "(x"},
        // Operands nest; only ";" outside parentheses splits.
        {"((a;b);c;d;e)", true, "(a;b)", "c", "d", ""},
        {"(((a;;);;color_modifier:;0,1,0,1;0;);(b;;);comp_mode:Screen;)", true,
         "((a;;);;color_modifier:;0,1,0,1;0;)", "(b;;)", "comp_mode:Screen", ""},
        {"((a;;)", false, "", "", "", ""},
        // Once the depth goes below zero no ";" splits any more.
        {"(a);b;c;)", false, "", "", "", ""},
        {"(a;b);c;d;)", true, "a", "", "", ""},
    };
    for (Row const &row : rows) {
        std::string a, b, name, args;
        EXPECT_EQ(parseKey(row.key, a, b, name, args), row.ok) << row.key;
        EXPECT_EQ(a, row.a) << row.key;
        EXPECT_EQ(b, row.b) << row.key;
        EXPECT_EQ(name, row.name) << row.key;
        EXPECT_EQ(args, row.args) << row.key;
    }

    // Outputs whose fields are not found are left as the caller passed them.
    std::string a = "old", b = "old", name = "old", args = "old";
    EXPECT_TRUE(parseKey("(p;q;)", a, b, name, args));
    EXPECT_EQ(a + b + name + args, "pqoldold");
    EXPECT_FALSE(parseKey("p", a, b, name, args));
    EXPECT_EQ(a, "p");
}

TEST(ImageKey, BuildsKeysThatParseBackAsWritten) {
    struct Row {
        std::string built;
        const char *key;
    };
    const Row rows[] = {
        {buildKey(""), ""},
        {buildKey("x.png"), "(x.png;;)"},
        {buildKey("(a;;)"), "(a;;)"},
        {buildKey("((p;;);(q;;);comp_mode:Plus;)"), "((p;;);(q;;);comp_mode:Plus;)"},
        // Parenthesised text without a ";" is no key proper.
        {buildKey("(x)"), "((x);;)"},
        {buildKey("(a;b"), "((a;b;;)"},
        {buildKey("a", "b", "c"), "(a;b;c)"},
        {buildKey("", "", ""), "(;;)"},
        {buildKey("a", Mode(Mode::Multiply)), "(a;;Multiply)"},
        {buildKey("a", "b", Mode(Mode::Exclusion)), "(a;b;Exclusion)"},
        {buildKey("a", "b", Mode(24)), "(a;b;Invalid)"},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(row.built, row.key);
    }

    // A mode written by the builders is no modifier name to the parser.
    std::string a, b, name, args;
    EXPECT_TRUE(parseKey(buildKey("a", "b", Mode(Mode::Screen)), a, b, name, args));
    EXPECT_EQ(name, "");
}

TEST(ImageCompositorMode, NamesQtsCompositionModes) {
    struct Row {
        QPainter::CompositionMode qt;
        const char *name;
    };
    const Row rows[] = {
        {QPainter::CompositionMode_SourceOver, "SourceOver"},
        {QPainter::CompositionMode_DestinationOver, "DestinationOver"},
        {QPainter::CompositionMode_Clear, "Clear"},
        {QPainter::CompositionMode_Source, "Source"},
        {QPainter::CompositionMode_Destination, "Destination"},
        {QPainter::CompositionMode_SourceIn, "SourceIn"},
        {QPainter::CompositionMode_DestinationIn, "DestinationIn"},
        {QPainter::CompositionMode_SourceOut, "SourceOut"},
        {QPainter::CompositionMode_DestinationOut, "DestinationOut"},
        {QPainter::CompositionMode_SourceAtop, "SourceAtop"},
        {QPainter::CompositionMode_DestinationAtop, "DestinationAtop"},
        {QPainter::CompositionMode_Xor, "Xor"},
        {QPainter::CompositionMode_Plus, "Plus"},
        {QPainter::CompositionMode_Multiply, "Multiply"},
        {QPainter::CompositionMode_Screen, "Screen"},
        {QPainter::CompositionMode_Overlay, "Overlay"},
        {QPainter::CompositionMode_Darken, "Darken"},
        {QPainter::CompositionMode_Lighten, "Lighten"},
        {QPainter::CompositionMode_ColorDodge, "ColorDodge"},
        {QPainter::CompositionMode_ColorBurn, "ColorBurn"},
        {QPainter::CompositionMode_HardLight, "HardLight"},
        {QPainter::CompositionMode_SoftLight, "SoftLight"},
        {QPainter::CompositionMode_Difference, "Difference"},
        {QPainter::CompositionMode_Exclusion, "Exclusion"},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(Mode(row.qt).getName().getString(), row.name) << row.qt;
    }
    for (int code : {24, -1, int(QPainter::RasterOp_SourceOrDestination)}) {
        EXPECT_EQ(Mode(code).getName().getString(), "Invalid") << code;
        EXPECT_EQ(Mode(code).getCode(), code);
    }
}
