#include "VortProcess.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using vort_test::ScratchFolder;
using vort_test::VortCase;

namespace {

// `vort convert NAME ...` succeeding with `out`.
VortCase converts(std::vector<std::string> arguments, std::string const &out) {
    arguments.insert(arguments.begin(), "convert");
    return {arguments, 0, out, ""};
}

// `vort convert NAME ...` refused with `code` and a message beginning "vort convert: ".
VortCase refuses(std::vector<std::string> arguments, int code, std::string const &message = "") {
    arguments.insert(arguments.begin(), "convert");
    return {arguments, code, "", code == 1 ? "vort convert: " + message + "\n" : "vort convert: "};
}

}  // namespace

TEST(VortConvert, ConvertsBetweenTheFormsAndRefusesWithTheLibrarysMessages) {
    ScratchFolder folder;
    folder.write("hash.bin", std::string("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16));
    const std::string payload("\0\x01\xFE\n", 4);
    const std::string hash = "00000001000000020000000300000004";
    const char *bool_ = "cv-vort-booltype";
    std::vector<VortCase> cases = {
        converts({bool_, "--text", "true", "--to", "hex"}, "01\n"),
        converts({bool_, "--text=false"}, "00\n"),
        converts({bool_, "--hex", "01"}, "true\n"),
        converts({bool_, "--hex", "7f", "--to", "hex"}, "01\n"),
        converts({bool_, "--base64", "AA==", "--to", "text"}, "false\n"),
        converts({"cv-vort-md5hashtype", "--text", hash}, "01000000020000000300000004000000\n"),
        converts({"cv-vort-md5hashtype", "--hex", "EF CD AB 01 00:00:00:00 0000000000000000",
                  "--to", "text"},
                 "01ABCDEF000000000000000000000000\n"),
        converts({"cv-vort-md5hashtype", "--text", hash, "--to", "base64"},
                 "AQAAAAIAAAADAAAABAAAAA==\n"),
        converts({"cv-vort-bytearraytype", "--text", "TWFu", "--to", "hex"}, "4d616e\n"),
        converts({"cv-vort-bytearraytype", "--hex", "0x4d616e", "--to", "text"}, "TWFu\n"),
        // A name the registry doesn't know is plain bytes.
        converts({"application/x-anything", "--hex", "00ff", "--to", "base64"}, "AP8=\n"),
        converts({"cv-vort-inttype", "--text", " -2 apples"}, "feffffff\n"),
        converts({"cv-vort-floattype", "--hex", "0000803f"}, "1\n"),
        converts({"cv-vort-doubletype", "--text", "1234567", "--to", "text"}, "1.23457e+06\n"),
        converts({"cv-vort-stringtype", "--hex", "6869", "--to", "text"}, "hi\n"),
        converts({"text/plain", "--text", "hello"}, "68656c6c6f\n"),
        converts({"text/html", "--hex", "3c703e"}, "<p>\n"),
        converts({"cv-vort-colortype", "--hex", "ff0000ff"}, "[ 1, 0, 0, 1 ]\n"),
        converts({"application/x-color", "--hex", "80 80 ff 00"}, "[ 0.501961, 0.501961, 1, 0 ]\n"),
        converts({"cv-vort-ipointtype", "--text", "3;4"}, "0300000004000000\n"),
        converts({"cv-vort-dpointtype", "--text", "1.5,-0.25"},
                 "000000000000f83f000000000000d0bf\n"),
        converts({"cv-vort-irecttype", "--hex", "01000000020000000300000004000000"}, "1,2,3,4\n"),
        converts({"cv-vort-drecttype", "--text", "0;0 ;10 ,20", "--to", "text"}, "0,0,10,20\n"),
        converts({"cv-vort-transformtype", "--text", "1,0,5,0,1,6,0,0,1", "--to", "hex"},
                 "000000000000f03f0000000000000000000000000000144000000000000000000000000000"
                 "00f03f000000000000184000000000000000000000000000000000000000000000f03f\n"),
        converts({"cv-vort-pathtype", "--text", "1,2;3,4;", "--to", "base64"},
                 "AAAAAAAA8D8AAAAAAAAAQAAAAAAAAAhAAAAAAAAAEEA=\n"),
        converts({"text/uri-list", "--text", "a\\;b;c", "--to", "text"}, "a\\;b;c\n"),
        // A list has no byte form: it writes no bytes, and any bytes read as no items.
        converts({"text/uri-list", "--text", "a;b"}, "\n"),
        converts({"text/uri-list", "--hex", "0102"}, "\n"),
        converts({"cv-vort-md5hashtype", "--file", folder.path("hash.bin")}, hash + "\n"),
        converts({bool_, "--text", "true", "--to", "file:" + folder.path("bool.bin")}, ""),
        {{"convert", "application/octet-stream", "--file", "-", "--to", "raw"},
         0,
         payload,
         "",
         payload},
        refuses({bool_, "--text", "True"}, 1, "Can't convert string 'True' to bool"),
        refuses({"cv-vort-md5hashtype", "--text", "0123456789abcdef"}, 1,
                "Can't convert string '0123456789abcdef' to MD5Hash"),
        refuses({"cv-vort-bytearraytype", "--text", "TW*u"}, 1,
                "Can't convert string 'TW*u' to ByteArray"),
        refuses({"cv-vort-bytearraytype", "--base64", "TW u"}, 1,
                "Can't convert string 'TW u' from Base64."),
        // The colour's text form is written, never read.
        refuses({"application/x-color", "--text", "[ 1, 0, 0, 1 ]"}, 1,
                "Can't convert string '[ 1, 0, 0, 1 ]' to color"),
        refuses({"cv-vort-pathtype", "--text", "1,2"}, 1, "Can't convert string '1,2' to path"),
        refuses({"text/uri-list", "--text", "a\\b"}, 1, "Can't convert string 'a\\b' to Vector"),
        // A fixed-width form can't be read from fewer bytes than it has; a float's default value
        // is a double, yet its width is a float's.
        refuses({"cv-vort-md5hashtype", "--hex", "0102"}, 1,
                "cv-vort-md5hashtype needs at least 16 byte(s), got 2"),
        refuses({bool_, "--file", "-"}, 1, "cv-vort-booltype needs at least 1 byte(s), got 0"),
        refuses({"cv-vort-floattype", "--hex", "000080"}, 1,
                "cv-vort-floattype needs at least 4 byte(s), got 3"),
        refuses({"cv-vort-transformtype", "--hex", "00"}, 1,
                "cv-vort-transformtype needs at least 72 byte(s), got 1"),
        {{"convert", bool_, "--file", folder.path("missing.bin")},
         1,
         "",
         "vort convert: cannot open '" + folder.path("missing.bin") + "'"},
    };
    for (std::vector<std::string> const &misuse :
         std::vector<std::vector<std::string>>{{},
                                               {bool_},
                                               {bool_, "--text", "true", "--hex", "01"},
                                               {bool_, "--text"},
                                               {bool_, "--hex", "123"},
                                               {bool_, "--hex", "zz"},
                                               {bool_, "--text", "true", "--to", "octal"},
                                               {bool_, "--text", "true", "--to", "file:"},
                                               {bool_, "--text", "true", "--frobnicate"},
                                               {bool_, "extra", "--text", "true"}}) {
        cases.push_back(refuses(misuse, 2));
    }

    // The built-in names, in the registry's order, each with its type.
    std::istringstream listed(
        "text/plain=StringType|text/html=StringType|"
        "text/uri-list=SpecificVectorType<std::string> of StringType|"
        "application/x-color=ColorType with alpha|image/gif=PixmapType|image/ief=PixmapType|"
        "image/jp2=PixmapType|image/jpeg=PixmapType|image/jpm=PixmapType|image/jpx=PixmapType|"
        "image/png=PixmapType|image/tiff=PixmapType|cv-vort-booltype=BoolType|"
        "cv-vort-bytearraytype=ByteArrayType|cv-vort-colortype=ColorType with alpha|"
        "cv-vort-doubletype=DoubleType|cv-vort-floattype=FloatType|cv-vort-inttype=IntType|"
        "cv-vort-md5hashtype=MD5HashType|cv-vort-pathtype=PathType|"
        "cv-vort-pixmaptype=PixmapType|cv-vort-ipointtype=IPointType|"
        "cv-vort-dpointtype=DPointType|cv-vort-irecttype=IRectType|cv-vort-drecttype=DRectType|"
        "cv-vort-stringtype=StringType|cv-vort-transformtype=TransformType|");
    std::string list;
    for (std::string name, type;
         std::getline(listed, name, '=') && std::getline(listed, type, '|');) {
        list += name + std::string(25 - name.size(), ' ') + type + "\n";
    }
    cases.push_back({{"convert", "--list"}, 0, list, ""});
    vort_test::expectRuns(cases);
    EXPECT_EQ(folder.read("bool.bin"), std::string("\x01", 1));
}
