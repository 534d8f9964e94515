#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>

using vort_test::VortCase;

TEST(VortBase64, EncodesDecodesAndRefusesWithTheLibrarysMessage) {
    vort_test::ScratchFolder folder;
    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    folder.write("in.bin", png);
    const std::string binary("\0\xFF\n\r", 4);
    const std::string longText(1000, 'z');
    const std::string message = "vort base64: Can't convert string '";
    vort_test::expectRuns({
        {{"base64", "encode"}, 0, "TWFu\n", "", "Man"},
        {{"base64", "encode"}, 0, "TQ==\n", "", "M"},
        {{"base64", "encode"}, 0, "\n", ""},
        {{"base64", "encode"}, 0, "AP8KDQ==\n", "", binary},
        {{"base64", "decode"}, 0, "M", "", "TQ==\n"},
        {{"base64", "decode"}, 0, "", "", "\n"},
        {{"base64", "decode"}, 0, binary, "", "AP8KDQ==\n"},
        // Blanks around the text are trimmed; inside it they are as wrong as any other character.
        {{"base64", "decode"}, 0, "Man", "", "  TWFu \n\n"},
        {{"base64", "encode", folder.path("in.bin"), "-o", folder.path("t")}, 0, "", ""},
        {{"base64", "decode", folder.path("t"), "--output=" + folder.path("out.bin")}, 0, "", ""},
        {{"base64", "decode"}, 1, "", message + "TW Fu' from Base64.\n", "TW Fu\n"},
        {{"base64", "decode"}, 1, "", message + "TWFu\nTWFu' from Base64.\n", "TWFu\nTWFu\n"},
        {{"base64", "decode"}, 1, "", message + "TW*u' from Base64.\n", "TW*u"},
        {{"base64"}, 2, "", "missing encode or decode"},
        {{"base64", "scramble"}, 2, "", "unknown mode 'scramble'"},
        {{"base64", "encode", "a", "b"}, 2, "", "unexpected argument 'b'"},
        {{"base64", "encode", "--wrap"}, 2, "", "unknown option '--wrap'"},
    });
    EXPECT_EQ(folder.read("t"), "iVBORw0KGgoAAAANSUhEUg==\n");
    EXPECT_EQ(folder.read("out.bin"), png);

    // A long input stays on one line, and comes back whole.
    const vort_test::VortRun encoded = vort_test::runVort({"base64", "encode"}, longText);
    ASSERT_EQ(encoded.out.find('\n'), encoded.out.size() - 1);
    EXPECT_EQ(vort_test::runVort({"base64", "decode"}, encoded.out).out, longText);
}
