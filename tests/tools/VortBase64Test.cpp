#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

TEST(VortBase64, EncodesAndDecodesStandardInput) {
    struct Row {
        std::string bytes;
        const char *text;  // null: long, checked by the round trip only
    };
    const Row rows[] = {
        {"Man", "TWFu"},
        {"M", "TQ=="},
        {"", ""},
        {std::string("\0\xFF\n\r", 4), "AP8KDQ=="},
        {std::string(1000, 'z'), nullptr},
    };
    for (Row const &row : rows) {
        const VortRun encoded = runVort({"base64", "encode"}, row.bytes);
        ASSERT_TRUE(encoded.finished);
        EXPECT_EQ(encoded.exitCode, 0) << encoded.err;
        ASSERT_EQ(encoded.out.back(), '\n');
        // One line, whatever the length.
        EXPECT_EQ(encoded.out.find('\n'), encoded.out.size() - 1);
        if (row.text != nullptr) {
            EXPECT_EQ(encoded.out, std::string(row.text) + "\n");
        }

        const VortRun decoded = runVort({"base64", "decode"}, encoded.out);
        ASSERT_TRUE(decoded.finished);
        EXPECT_EQ(decoded.exitCode, 0) << decoded.err;
        EXPECT_EQ(decoded.out, row.bytes);
    }
}

TEST(VortBase64, WorksOnFiles) {
    ScratchFolder folder;
    const std::string bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    folder.write("in.bin", bytes);

    VortRun run = runVort({"base64", "encode", folder.path("in.bin"), "-o", folder.path("t")});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(folder.read("t"), "iVBORw0KGgoAAAANSUhEUg==\n");

    run = runVort({"base64", "decode", folder.path("t"), "--output=" + folder.path("out.bin")});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(folder.read("out.bin"), bytes);
}

TEST(VortBase64, MalformedInputFailsWithTheLibrarysMessage) {
    // Blanks around the text are trimmed; inside it they are as wrong as any other character.
    const VortRun trimmed = runVort({"base64", "decode"}, "  TWFu \n\n");
    EXPECT_EQ(trimmed.exitCode, 0) << trimmed.err;
    EXPECT_EQ(trimmed.out, "Man");

    struct Row {
        std::string input;
        std::string message;
    };
    const Row rows[] = {
        {"TW Fu\n", "vort base64: Can't convert string 'TW Fu' from Base64.\n"},
        {"TWFu\nTWFu\n", "vort base64: Can't convert string 'TWFu\nTWFu' from Base64.\n"},
        {"TW*u", "vort base64: Can't convert string 'TW*u' from Base64.\n"},
    };
    for (Row const &row : rows) {
        const VortRun run = runVort({"base64", "decode"}, row.input);
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, row.message);
    }

    for (auto const &arguments :
         {std::vector<std::string>{"base64"}, std::vector<std::string>{"base64", "scramble"},
          std::vector<std::string>{"base64", "encode", "a", "b"},
          std::vector<std::string>{"base64", "encode", "--wrap"}}) {
        const VortRun run = runVort(arguments);
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, 2) << run.err;
    }
}
