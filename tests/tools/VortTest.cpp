// Runs the vort tool built beside the tests as a user would, feeding it standard input and
// checking what it writes and how it ends.
#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct VortRun {
    bool finished = false;  // false if the tool crashed or hung
    int exitCode = -1;
    std::string out;
    std::string err;
};

// One run of the tool and what it must give: the exit code and standard output exactly, and a
// standard error that is `err` exactly when `err` ends a line, and that contains it otherwise
// (Qt may warn there about the platform).
struct VortCase {
    std::vector<std::string> arguments;
    int exitCode;
    std::string out;
    std::string err;
    std::string input = {};
};

// A fresh empty folder for the test's files, removed with the object.
class ScratchFolder {
public:
    std::string path(std::string const &name) const {
        return m_folder.filePath(QString::fromStdString(name)).toStdString();
    }
    void write(std::string const &name, std::string const &bytes) const {
        QFile file(QString::fromStdString(path(name)));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(bytes.data(), static_cast<qint64>(bytes.size()));
        }
    }
    std::string read(std::string const &name) const {
        QFile file(QString::fromStdString(path(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "<missing>";
    }

private:
    QTemporaryDir m_folder;
};

VortRun runVort(std::vector<std::string> const &arguments, std::string const &input = {}) {
    QStringList list;
    for (std::string const &argument : arguments) {
        list << QString::fromStdString(argument);
    }
    QProcess process;
    process.start(QString::fromUtf8(VORT_TOOL_PATH), list);
    VortRun run;
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    // Generous: a sanitizer build of the tool starts slowly, and only a hang comes near this.
    const bool ended = process.waitForFinished(60000);
    run.out = process.readAllStandardOutput().toStdString();
    run.err = process.readAllStandardError().toStdString();
    run.finished = ended && process.exitStatus() == QProcess::NormalExit;
    run.exitCode = run.finished ? process.exitCode() : -1;
    return run;
}

// Runs each case in turn, naming the arguments of any that disagrees.
void expectRuns(std::vector<VortCase> const &cases) {
    for (VortCase const &expected : cases) {
        std::string call = "vort";
        for (std::string const &argument : expected.arguments) {
            call += " " + argument;
        }
        SCOPED_TRACE(call);
        const VortRun run = runVort(expected.arguments, expected.input);
        ASSERT_TRUE(run.finished) << run.err;
        EXPECT_EQ(run.exitCode, expected.exitCode) << run.err;
        EXPECT_EQ(run.out, expected.out);
        if (!expected.err.empty() && expected.err.back() == '\n') {
            EXPECT_EQ(run.err, expected.err);
        } else {
            EXPECT_NE(run.err.find(expected.err), std::string::npos) << run.err;
        }
    }
}

std::string example(const char *name) {
    return std::string(VORT_EXAMPLES_DIR) + "/images/" + name;
}

QImage load(std::string const &path) {
    return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_ARGB32);
}

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

const std::string kLinearText = "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,";
const std::string kLinearHex =
    "010000000001000000000000000000e03f0000ffff0000000000000000000000000000000000000000000000"
    "00000000000000f03f000000000000f03f";

}  // namespace

TEST(VortBase64, EncodesDecodesAndRefusesWithTheLibrarysMessage) {
    ScratchFolder folder;
    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    folder.write("in.bin", png);
    const std::string binary("\0\xFF\n\r", 4);
    const std::string longText(1000, 'z');
    const std::string message = "vort base64: Can't convert string '";
    expectRuns({
        {{"base64", "encode"}, 0, "TQ==\n", "", "M"},
        {{"base64", "encode"}, 0, "\n", ""},
        {{"base64", "encode"}, 0, "AP8KDQ==\n", "", binary},
        {{"base64", "decode"}, 0, "M", "", "TQ==\n"},
        {{"base64", "decode"}, 0, binary, "", "AP8KDQ==\n"},
        // Blanks around the text are trimmed; inside it they are as wrong as any other character.
        {{"base64", "decode"}, 0, "Man", "", "  TWFu \n\n"},
        {{"base64", "encode", folder.path("in.bin"), "-o", folder.path("t")}, 0, "", ""},
        {{"base64", "decode", folder.path("t"), "--output=" + folder.path("out.bin")}, 0, "", ""},
        {{"base64", "decode"}, 1, "", message + "TW Fu' from Base64.\n", "TW Fu\n"},
        {{"base64"}, 2, "", "missing encode or decode"},
        {{"base64", "scramble"}, 2, "", "unknown mode 'scramble'"},
    });
    EXPECT_EQ(folder.read("t"), "iVBORw0KGgoAAAANSUhEUg==\n");
    EXPECT_EQ(folder.read("out.bin"), png);

    // A long input stays on one line, and comes back whole.
    const VortRun encoded = runVort({"base64", "encode"}, longText);
    ASSERT_EQ(encoded.out.find('\n'), encoded.out.size() - 1);
    EXPECT_EQ(runVort({"base64", "decode"}, encoded.out).out, longText);
}

// The README's key, a tinted star over a backdrop, run as a user would, with no display at all.
TEST(VortCompose, WritesTheComposedPictureAsPngOffscreen) {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QByteArray display = qgetenv("DISPLAY");
    for (const char *name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        qunsetenv(name);
    }
    ScratchFolder folder;
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

TEST(VortCompose, SaysWhichPartOfAKeyFailed) {
    const std::string star = example("star.png");
    const std::string missing = example("missing.png");
    const auto refused = [](std::vector<std::string> arguments, int code,
                            std::string const &err) -> VortCase {
        arguments.insert(arguments.begin(), "compose");
        return {arguments, code, "", "vort compose: " + err};
    };
    const std::string cannotLoad = "cannot load the image file '" + missing + "': File not found";
    const std::string either = "either -o OUT.png or --explain";
    expectRuns({
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
        refused({"a", "b", "-o", "x.png"}, 2, "one key, please"),
    });
}

TEST(VortConvert, ConvertsBetweenTheFormsAndRefusesWithTheLibrarysMessages) {
    ScratchFolder folder;
    folder.write("hash.bin", std::string("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16));
    const std::string payload("\0\x01\xFE\n", 4);
    const std::string hash = "00000001000000020000000300000004";
    const char *bool_ = "cv-vort-booltype";
    std::vector<VortCase> cases = {
        converts({bool_, "--text", "true", "--to", "hex"}, "01\n"),
        converts({bool_, "--text=false"}, "00\n"),
        converts({bool_, "--hex", "7f", "--to", "hex"}, "01\n"),
        converts({bool_, "--base64", "AA==", "--to", "text"}, "false\n"),
        converts({"cv-vort-md5hashtype", "--hex", "EF CD AB 01 00:00:00:00 0000000000000000",
                  "--to", "text"},
                 "01ABCDEF000000000000000000000000\n"),
        // A name the registry doesn't know is plain bytes.
        converts({"application/x-anything", "--hex", "00ff", "--to", "base64"}, "AP8=\n"),
        converts({"cv-vort-floattype", "--hex", "0000803f", "--to", "base64"}, "AACAPw==\n"),
        converts({"cv-vort-doubletype", "--text", "1234567", "--to", "text"}, "1.23457e+06\n"),
        converts({"text/html", "--hex", "3c703e"}, "<p>\n"),
        converts({"application/x-color", "--hex", "80 80 ff 00"}, "[ 0.501961, 0.501961, 1, 0 ]\n"),
        converts({"text/uri-list", "--text", "a\\;b;c", "--to", "text"}, "a\\;b;c\n"),
        // A list has no byte form: any bytes read as no items.
        converts({"text/uri-list", "--hex", "0102"}, "\n"),
        converts({"cv-vort-md5hashtype", "--file", folder.path("hash.bin")}, hash + "\n"),
        converts({bool_, "--text", "true", "--to", "file:" + folder.path("bool.bin")}, ""),
        {{"convert", "application/octet-stream", "--file", "-", "--to", "raw"},
         0,
         payload,
         "",
         payload},
        refuses({bool_, "--text", "True"}, 1, "Can't convert string 'True' to bool"),
        // The colour's text form is written, never read.
        refuses({"application/x-color", "--text", "[ 1, 0, 0, 1 ]"}, 1,
                "Can't convert string '[ 1, 0, 0, 1 ]' to color"),
        // A fixed-width form can't be read from fewer bytes than it has; a float's default value
        // is a double, yet its width is a float's.
        refuses({"cv-vort-md5hashtype", "--hex", "0102"}, 1,
                "cv-vort-md5hashtype needs at least 16 byte(s), got 2"),
        refuses({bool_, "--file", "-"}, 1, "cv-vort-booltype needs at least 1 byte(s), got 0"),
        refuses({"cv-vort-floattype", "--hex", "000080"}, 1,
                "cv-vort-floattype needs at least 4 byte(s), got 3"),
        {{"convert", bool_, "--file", folder.path("missing.bin")},
         1,
         "",
         "vort convert: cannot open '" + folder.path("missing.bin") + "'"},
        refuses({bool_, "--text", "true", "--hex", "01"}, 2),
        refuses({bool_, "--hex", "123"}, 2),
    };
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
    expectRuns(cases);
    EXPECT_EQ(folder.read("bool.bin"), std::string("\x01", 1));
}

TEST(VortGradient, ConvertsPaintsAndRefusesWithTheRightCode) {
    ScratchFolder folder;
    const std::string swatch = folder.path("swatch.png");
    const std::string usage = "vort gradient: ";
    expectRuns({
        {{"gradient", "--text", kLinearText}, 0, kLinearHex + "\n", ""},
        {{"gradient", "--hex", kLinearHex}, 0, kLinearText + "\n", ""},
        // Either way round, in the form asked for; the null gradient is one byte.
        {{"gradient", "--hex=00", "--to", "hex"}, 0, "00\n", ""},
        // Object-bounding, from red on the left to blue on the right.
        {{"gradient", "--text", "1,0,2,0,255,0,0,255,1,0,0,255,255,0,2,0,0,1,0,", "-o", swatch,
          "--size", "100x10"},
         0,
         "",
         ""},
        {{"gradient", "--text", "1,0,1,x"},
         1,
         "",
         "vort gradient: Can't convert string '1,0,1,x' to Gradient\n"},
        {{"gradient", "--hex", kLinearHex.substr(0, kLinearHex.size() - 2)},
         1,
         "",
         "vort gradient: not a gradient's byte stream: its header announces 61 byte(s), got 60\n"},
        {{"gradient", "--hex", "01ffffffffffffffff"}, 1, "", usage},
        {{"gradient", "--text", "0,", "-o", folder.path("none.png")},
         1,
         "",
         "vort gradient: a null gradient has no swatch\n"},
        {{"gradient", "--text", kLinearText, "-o", folder.path("missing/dir/x.png")}, 1, "", usage},
        {{"gradient"}, 2, "", usage},
        {{"gradient", "--text", "0,", "--to", "png"}, 2, "", usage},
    });
    const QImage image(QString::fromStdString(swatch));
    ASSERT_EQ(image.size(), QSize(100, 10));
    const QColor left = image.pixelColor(0, 5);
    const QColor right = image.pixelColor(99, 5);
    EXPECT_TRUE(left.red() > 245 && left.blue() < 10 && right.blue() > 245 && right.red() < 10);
}

TEST(VortMessage, PrintsCatalogueTextsAndRejectsMalformedCalls) {
    const std::string unknown = "unknown message code";
    expectRuns({
        {{"message", "0x5A0007", "a.b"}, 0, "Package 'a.b' not found.\n", ""},
        {{"message", "VT_BadCommandState"},
         0,
         "Command not in an appropriate state for request.\n",
         ""},
        {{"message", "--lang", "ja", "VT_PackageCannotBeRegisteredInUniverse", "p.q", "Root"},
         0,
         "パッケージ 'p.q' は、ルート Root を持つ Universe で登録できません。\n",
         ""},
        {{"message", "0x5a0003", "Brush", "--lang=en"}, 0, "Class 'Brush' not found.\n", ""},
        {{"message"}, 2, "", "usage: vort message CODE"},
        {{"message", "0x5A0010"}, 2, "", "unknown message code '0x5A0010'"},
        {{"message", "5A0007"}, 2, "", unknown},
        {{"message", "VT_PackageNotFound"}, 2, "", "takes 1 argument(s), got 0"},
        {{"message", "VT_BadCommandState", "extra"}, 2, "", "takes 0 argument(s), got 1"},
        {{"message", "VT_BadCommandState", "--lang", "fr"}, 2, "", "unknown language 'fr'"},
    });
}

// The cases run in order on one folder, each seeing the file that the ones before it left.
TEST(VortPrefs, KeepsTheFileAsAHostWouldAndRefusesWhatItCantCarry) {
    ScratchFolder folder;
    const std::string dir = folder.path("p");
    const auto prefs = [&](std::vector<std::string> arguments, int code, std::string const &out,
                           std::string const &err = "") {
        arguments.insert(arguments.begin(), "prefs");
        arguments.insert(arguments.end(), {"--dir", dir, "--release=T1"});
        return VortCase{arguments, code, out, err};
    };
    const std::string header = "#\n#Nexlark Preference File\n#\n\n\n";
    const std::string both =
        "[Editor]\nfont=Courier New\nsize=12\n\n[General]\nTessarRelease=T1\n\n";
    std::vector<VortCase> cases = {
        prefs({"path"}, 0, dir + "/nexlark.prf\n"),
        prefs({"show"}, 1, "", "vort prefs: no preference file at '" + dir + "/nexlark.prf'\n"),
        prefs({"set", "Editor", "font", "Courier New"}, 0, ""),
        prefs({"set", "Editor", "size", "12"}, 0, ""),
        prefs({"get", "Editor", "font"}, 0, "Courier New\n"),
        prefs({"show"}, 0, both),
        prefs({"unset", "Editor", "font"}, 0, ""),
        prefs({"unset", "Editor", "font"}, 1, "", "vort prefs: no value for 'font' in [Editor]\n"),
        prefs({"get", "Editor", "font"}, 1, "", "vort prefs: "),
        prefs({"set", "A]", "k", "v"}, 2, "", "vort prefs: "),
        prefs({"set", "A", "#k", "v"}, 2, "", "vort prefs: "),
        prefs({"set", "A", "k", " v"}, 2, "", "vort prefs: "),
    };
    expectRuns(cases);
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              header + "[Editor]\nsize=12\n\n[General]\nTessarRelease=T1\n\n");

    // Neither a "file" that is a directory, left alone, nor a folder under a plain file is written.
    std::filesystem::remove(folder.path("p/nexlark.prf"));
    std::filesystem::create_directories(folder.path("p/nexlark.prf"));
    folder.write("p/nexlark.prf/inside", "x");
    folder.write("plain", "x");
    expectRuns({prefs({"set", "A", "k", "v"}, 1, "", "vort prefs: cannot write '"),
                {{"prefs", "set", "A", "k", "v", "--dir", folder.path("plain") + "/sub"},
                 1,
                 "",
                 "vort prefs: "}});
    EXPECT_EQ(folder.read("p/nexlark.prf/inside"), "x");
}

TEST(VortXml, CheckPrintsEachFilesEventsOrItsErrorWithLineAndColumn) {
    ScratchFolder folder;
    folder.write("good.xml",
                 "<?xml version=\"1.0\"?>\n<!-- c -->\n<p:a xmlns:p=\"urn:p\" k=\"v\">\n"
                 "  <b>t&amp;\"x\"</b>\n  <?pi data?>\n</p:a>\n");
    folder.write("bad.xml", "<a>\n<b x=\"1\">t</c>");
    const std::string good = folder.path("good.xml");
    const std::string bad = folder.path("bad.xml");
    const std::string missing = folder.path("none.xml");
    const std::string goodEvents =
        good +
        "\n  StartDocument\n  Comment \" c \"\n  StartElement p:a xmlns:p=\"urn:p\" k=\"v\"\n"
        "  StartElement b\n  Characters \"t&\\\"x\\\"\"\n  EndElement b\n"
        "  ProcessingInstruction pi \"data\"\n  EndElement p:a\n  EndDocument\n";
    expectRuns({
        {{"xml", "check", good, bad, missing},
         1,
         goodEvents + bad +
             "\n  StartDocument\n  StartElement a\n  StartElement b x=\"1\"\n  Characters \"t\"\n",
         "vort xml: " + bad +
             ":2:14: Opening and ending tag mismatch.\n"
             "vort xml: Error in initializing XmlReader with target " +
             missing + " : No such file or directory\n"},
        {{"xml", "check", good}, 0, goodEvents, ""},
        {{"xml", "verify", good}, 2, "", "unknown mode 'verify'"},
        {{"xml", "check"}, 2, "", "no file to check"},
    });
}

TEST(VortXmlDb, DumpsTheMergedKeysOfTheExampleFolders) {
    const std::string base = VORT_EXAMPLES_DIR "/config/base";
    const std::string app = "  from: " + base + "/app.xml";
    expectRuns({
        {{"xmldb", "dump", base, "--key", "App/Recent"},
         0,
         "App/Recent\n" + app + "\n    App/Recent/File\n      list: 2 entries\n    " + app +
             "\n        App/Recent/File = \"first.vrt\"\n"
             "        App/Recent/File = \"second.vrt\"\n",
         ""},
        {{"xmldb", "dump", base, "--key", "App/None"}, 1, "", "no key 'App/None' in the folders"},
        {{"xmldb", "dump", base + "/none"}, 1, "", "no such folder '" + base + "/none'"},
        {{"xmldb", "dump"}, 2, "", "no folder to read"},
        {{"xmldb", "list", base}, 2, "", "unknown mode 'list'"},
    });
}
