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
        const char *fields;  // a|b|modifierName|modifierArgs
    };
    const Row rows[] = {
        {"(a;;)", true, "a|||"},
        {"(;b;)", false, "|b||"},
        {"()", false, "|||"},
        {"x", false, "|||"},
        {"(a)", false, "|||"},
        {"(a;;", false, "|||"},
        {"((p;;);(q;;);comp_mode:Plus;)", true, "(p;;)|(q;;)|comp_mode:Plus|"},
        // A third field that no ";" closes is dropped.
        {"(a;b;Multiply)", true, "a|b||"},
        // Open-ended arguments need two characters.
        {"(a;b;m;x)", true, "a|b|m|"},
        {"(a;b;m;xy)", true, "a|b|m|xy"},
        // Closed arguments run to the last ";" before the first ")" after them, or to that ")"
        // when no later ";" comes first.
        {"(a;;color_modifier:;1,0,0,1;1;)", true, "a||color_modifier:|1,0,0,1;1"},
        {"(a;b;m;xy;zw)", true, "a|b|m|xy;zw"},
        {"(a;b;m;;)", true, "a|b|m|;"},
        {"(a;b;m;(x);y)", true, "a|b|m|(x"},
        // Operands nest; only ";" outside parentheses splits.
        {"((a;b);c;d;e)", true, "(a;b)|c|d|"},
        {"(((a;;);;color_modifier:;0,1,0,1;0;);(b;;);comp_mode:Screen;)", true,
         "((a;;);;color_modifier:;0,1,0,1;0;)|(b;;)|comp_mode:Screen|"},
        {"((a;;)", false, "|||"},
        // Once the depth goes below zero no ";" splits any more.
        {"(a);b;c;)", false, "|||"},
        {"(a;b);c;d;)", true, "a|||"},
    };
    for (Row const &row : rows) {
        std::string a, b, name, args;
        EXPECT_EQ(parseKey(row.key, a, b, name, args), row.ok) << row.key;
        EXPECT_EQ(a + "|" + b + "|" + name + "|" + args, row.fields) << row.key;
    }

    // Outputs whose fields are not found are left as the caller passed them.
    std::string a = "old", b = "old", name = "old", args = "old";
    EXPECT_TRUE(parseKey("(p;q;)", a, b, name, args));
    EXPECT_EQ(a + b + name + args, "pqoldold");
    EXPECT_FALSE(parseKey("p", a, b, name, args));
    EXPECT_EQ(a, "p");
}

TEST(ImageKey, BuildsKeysThatParseBackAsWritten) {
    const std::string rows[][2] = {
        {buildKey(""), ""},
        {buildKey("x.png"), "(x.png;;)"},
        {buildKey("((p;;);(q;;);comp_mode:Plus;)"), "((p;;);(q;;);comp_mode:Plus;)"},
        // Parenthesised text without a ";" is no key proper, nor is a text without ")".
        {buildKey("(x)"), "((x);;)"},
        {buildKey("(a;b"), "((a;b;;)"},
        {buildKey("a", "b", "c"), "(a;b;c)"},
        {buildKey("a", Mode(Mode::Multiply)), "(a;;Multiply)"},
        {buildKey("a", "b", Mode(24)), "(a;b;Invalid)"},
    };
    for (auto const &row : rows) {
        EXPECT_EQ(row[0], row[1]);
    }
    // A mode written by the builders is no modifier name to the parser.
    std::string a, b, name, args;
    EXPECT_TRUE(parseKey(buildKey("a", "b", Mode(Mode::Screen)), a, b, name, args));
    EXPECT_EQ(name, "");
}

TEST(ImageCompositorMode, NamesQtsCompositionModes) {
    const char *const names[] = {
        "SourceOver",     "DestinationOver", "Clear",           "Source",
        "Destination",    "SourceIn",        "DestinationIn",   "SourceOut",
        "DestinationOut", "SourceAtop",      "DestinationAtop", "Xor",
        "Plus",           "Multiply",        "Screen",          "Overlay",
        "Darken",         "Lighten",         "ColorDodge",      "ColorBurn",
        "HardLight",      "SoftLight",       "Difference",      "Exclusion"};
    for (int code = 0; code < 24; ++code) {
        EXPECT_EQ(Mode(code).getName().getString(), names[code]) << code;
    }
    // The codes are Qt's own.
    EXPECT_EQ(Mode(QPainter::CompositionMode_Multiply), Mode(Mode::Multiply));
    EXPECT_EQ(Mode(QPainter::CompositionMode_Exclusion), Mode(Mode::Exclusion));
    for (int code : {24, -1}) {
        EXPECT_EQ(Mode(code).getName().getString(), "Invalid") << code;
    }
}
