#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

namespace {

void expectOutput(VortRun const &run, std::string const &out) {
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, "");
}

void expectFailure(VortRun const &run, int exitCode, std::string const &err) {
    ASSERT_TRUE(run.finished) << run.err;
    EXPECT_EQ(run.exitCode, exitCode);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.substr(0, err.size()), err) << run.err;
}

std::vector<std::string> withCommand(std::vector<std::string> const &arguments) {
    std::vector<std::string> full = {"convert"};
    full.insert(full.end(), arguments.begin(), arguments.end());
    return full;
}

}  // namespace

TEST(VortConvert, ConvertsBetweenTheForms) {
    struct Row {
        std::vector<std::string> arguments;
        const char *out;
    };
    const Row rows[] = {
        {{"cv-vort-booltype", "--text", "true", "--to", "hex"}, "01\n"},
        {{"cv-vort-booltype", "--text=false"}, "00\n"},
        {{"cv-vort-booltype", "--hex", "01"}, "true\n"},
        {{"cv-vort-booltype", "--hex", "7f", "--to", "hex"}, "01\n"},
        {{"cv-vort-booltype", "--base64", "AA==", "--to", "text"}, "false\n"},
        {{"cv-vort-md5hashtype", "--text", "00000001000000020000000300000004"},
         "01000000020000000300000004000000\n"},
        {{"cv-vort-md5hashtype", "--hex", "EF CD AB 01 00:00:00:00 0000000000000000", "--to",
          "text"},
         "01ABCDEF000000000000000000000000\n"},
        {{"cv-vort-md5hashtype", "--text", "00000001000000020000000300000004", "--to", "base64"},
         "AQAAAAIAAAADAAAABAAAAA==\n"},
        {{"cv-vort-bytearraytype", "--text", "TWFu", "--to", "hex"}, "4d616e\n"},
        {{"cv-vort-bytearraytype", "--hex", "0x4d616e", "--to", "text"}, "TWFu\n"},
        // A name the registry doesn't know is plain bytes.
        {{"application/x-anything", "--hex", "00ff", "--to", "base64"}, "AP8=\n"},
        {{"cv-vort-inttype", "--text", " -2 apples"}, "feffffff\n"},
        {{"cv-vort-floattype", "--hex", "0000803f"}, "1\n"},
        {{"cv-vort-doubletype", "--text", "1234567", "--to", "text"}, "1.23457e+06\n"},
        {{"cv-vort-stringtype", "--hex", "6869", "--to", "text"}, "hi\n"},
        {{"text/plain", "--text", "hello"}, "68656c6c6f\n"},
        {{"text/html", "--hex", "3c703e"}, "<p>\n"},
        {{"cv-vort-colortype", "--hex", "ff0000ff"}, "[ 1, 0, 0, 1 ]\n"},
        {{"application/x-color", "--hex", "80 80 ff 00"}, "[ 0.501961, 0.501961, 1, 0 ]\n"},
        {{"cv-vort-ipointtype", "--text", "3;4"}, "0300000004000000\n"},
        {{"cv-vort-dpointtype", "--text", "1.5,-0.25"}, "000000000000f83f000000000000d0bf\n"},
        {{"cv-vort-irecttype", "--hex", "01000000020000000300000004000000"}, "1,2,3,4\n"},
        {{"cv-vort-drecttype", "--text", "0;0 ;10 ,20", "--to", "text"}, "0,0,10,20\n"},
        {{"cv-vort-transformtype", "--text", "1,0,5,0,1,6,0,0,1", "--to", "hex"},
         "000000000000f03f0000000000000000000000000000144000000000000000000000000000"
         "00f03f000000000000184000000000000000000000000000000000000000000000f03f\n"},
        {{"cv-vort-pathtype", "--text", "1,2;3,4;", "--to", "base64"},
         "AAAAAAAA8D8AAAAAAAAAQAAAAAAAAAhAAAAAAAAAEEA=\n"},
        {{"text/uri-list", "--text", "a\\;b;c", "--to", "text"}, "a\\;b;c\n"},
        // A list has no byte form: it writes no bytes, and any bytes read as no items.
        {{"text/uri-list", "--text", "a;b"}, "\n"},
        {{"text/uri-list", "--hex", "0102"}, "\n"},
    };
    for (Row const &row : rows) {
        expectOutput(runVort(withCommand(row.arguments)), row.out);
    }
}

TEST(VortConvert, ReadsAndWritesFiles) {
    ScratchFolder folder;
    folder.write("hash.bin", std::string("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16));
    expectOutput(runVort({"convert", "cv-vort-md5hashtype", "--file", folder.path("hash.bin")}),
                 "00000001000000020000000300000004\n");

    expectOutput(runVort({"convert", "cv-vort-booltype", "--text", "true", "--to",
                          "file:" + folder.path("bool.bin")}),
                 "");
    EXPECT_EQ(folder.read("bool.bin"), std::string("\x01", 1));

    // Standard input in, raw bytes out.
    const std::string payload("\0\x01\xFE\n", 4);
    expectOutput(
        runVort({"convert", "application/octet-stream", "--file", "-", "--to", "raw"}, payload),
        payload);
}

TEST(VortConvert, ReportsTheLibrarysOwnMessages) {
    expectFailure(runVort({"convert", "cv-vort-booltype", "--text", "True"}), 1,
                  "vort convert: Can't convert string 'True' to bool\n");
    expectFailure(runVort({"convert", "cv-vort-md5hashtype", "--text", "0123456789abcdef"}), 1,
                  "vort convert: Can't convert string '0123456789abcdef' to MD5Hash\n");
    expectFailure(runVort({"convert", "cv-vort-bytearraytype", "--text", "TW*u"}), 1,
                  "vort convert: Can't convert string 'TW*u' to ByteArray\n");
    expectFailure(runVort({"convert", "cv-vort-bytearraytype", "--base64", "TW u"}), 1,
                  "vort convert: Can't convert string 'TW u' from Base64.\n");
    // The colour's text form is written, never read.
    expectFailure(runVort({"convert", "application/x-color", "--text", "[ 1, 0, 0, 1 ]"}), 1,
                  "vort convert: Can't convert string '[ 1, 0, 0, 1 ]' to color\n");
    expectFailure(runVort({"convert", "cv-vort-pathtype", "--text", "1,2"}), 1,
                  "vort convert: Can't convert string '1,2' to path\n");
    expectFailure(runVort({"convert", "text/uri-list", "--text", "a\\b"}), 1,
                  "vort convert: Can't convert string 'a\\b' to Vector\n");
}

TEST(VortConvert, ListsTheBuiltInNamesInOrder) {
    const VortRun run = runVort({"convert", "--list"});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::vector<std::string> expected = {
        "text/plain               StringType",
        "text/html                StringType",
        "text/uri-list            SpecificVectorType<std::string> of StringType",
        "application/x-color      ColorType with alpha",
        "image/gif                PixmapType",
        "image/ief                PixmapType",
        "image/jp2                PixmapType",
        "image/jpeg               PixmapType",
        "image/jpm                PixmapType",
        "image/jpx                PixmapType",
        "image/png                PixmapType",
        "image/tiff               PixmapType",
        "cv-vort-booltype         BoolType",
        "cv-vort-bytearraytype    ByteArrayType",
        "cv-vort-colortype        ColorType with alpha",
        "cv-vort-doubletype       DoubleType",
        "cv-vort-floattype        FloatType",
        "cv-vort-inttype          IntType",
        "cv-vort-md5hashtype      MD5HashType",
        "cv-vort-pathtype         PathType",
        "cv-vort-pixmaptype       PixmapType",
        "cv-vort-ipointtype       IPointType",
        "cv-vort-dpointtype       DPointType",
        "cv-vort-irecttype        IRectType",
        "cv-vort-drecttype        DRectType",
        "cv-vort-stringtype       StringType",
        "cv-vort-transformtype    TransformType",
    };
    std::vector<std::string> lines;
    std::string::size_type start = 0;
    for (std::string::size_type end; (end = run.out.find('\n', start)) != std::string::npos;
         start = end + 1) {
        lines.push_back(run.out.substr(start, end - start));
    }
    EXPECT_EQ(lines, expected);
}

TEST(VortConvert, RefusesShortBytesAndBadUsage) {
    // A fixed-width form can't be read from fewer bytes than it has.
    expectFailure(runVort({"convert", "cv-vort-md5hashtype", "--hex", "0102"}), 1,
                  "vort convert: cv-vort-md5hashtype needs at least 16 byte(s), got 2\n");
    expectFailure(runVort({"convert", "cv-vort-booltype", "--file", "-"}, ""), 1,
                  "vort convert: cv-vort-booltype needs at least 1 byte(s), got 0\n");
    // A float's default value is a double, yet its width is a float's.
    expectFailure(runVort({"convert", "cv-vort-floattype", "--hex", "000080"}), 1,
                  "vort convert: cv-vort-floattype needs at least 4 byte(s), got 3\n");
    expectFailure(runVort({"convert", "cv-vort-transformtype", "--hex", "00"}), 1,
                  "vort convert: cv-vort-transformtype needs at least 72 byte(s), got 1\n");

    const std::vector<std::string> misuses[] = {
        {},
        {"cv-vort-booltype"},
        {"cv-vort-booltype", "--text", "true", "--hex", "01"},
        {"cv-vort-booltype", "--text"},
        {"cv-vort-booltype", "--hex", "123"},
        {"cv-vort-booltype", "--hex", "zz"},
        {"cv-vort-booltype", "--text", "true", "--to", "octal"},
        {"cv-vort-booltype", "--text", "true", "--to", "file:"},
        {"cv-vort-booltype", "--text", "true", "--frobnicate"},
        {"cv-vort-booltype", "extra", "--text", "true"},
    };
    for (auto const &arguments : misuses) {
        const VortRun run = runVort(withCommand(arguments));
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, 2) << run.err;
        EXPECT_EQ(run.err.rfind("vort convert: ", 0), 0u) << run.err;
    }

    ScratchFolder folder;
    expectFailure(runVort({"convert", "cv-vort-booltype", "--file", folder.path("missing.bin")}), 1,
                  "vort convert: cannot open '" + folder.path("missing.bin") + "'");
}
