// vort compose KEY -o OUT.png: renders an image key through the library's image manager and
// writes the picture as PNG. vort compose --explain KEY: shows how the key splits, level by
// level, and the modifier that each level resolves to. A key that does not build is walked the
// same way to say which part failed: the key's text, an unknown modifier, or a file.
#include "Subcommand.h"
#include "ToolIO.h"
#include <vort/image/ImageKey.h>
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>
#include <vort/image/Pixmap.h>
#include <vort/types/PixmapType.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QImageReader>

#include <cstdio>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

namespace IC = VORT::ImageCompositor;

const char *const kName = "compose";
const char *const kUsage = "usage: vort compose KEY -o OUT.png | vort compose --explain KEY";
// The manager builds no key nested deeper than this.
const int kMaxDepth = 64;

std::string inQuotes(std::string const &text) {
    return "'" + text + "'";
}

// Why `parseKey` refuses `key`, in the grammar's own terms.
std::string malformedReason(std::string const &key) {
    if (key.size() < 3) {
        return "a key has at least three characters, as in (a;;)";
    }
    if (key.front() != '(' || key.back() != ')') {
        return "a key begins with '(' and ends with ')'";
    }
    int depth = 0;
    for (std::string::size_type i = 1; i + 1 < key.size() && depth >= 0; ++i) {
        depth += key[i] == '(' ? 1 : key[i] == ')' ? -1 : 0;
    }
    if (depth != 0) {
        return "its parentheses do not pair up, so no ';' splits it";
    }
    return "its first operand is empty (fields are split by ';' outside parentheses)";
}

// The text at the end of a key that no field takes: a field stands only when a ';' closes it,
// and open-ended arguments need two characters.
std::string droppedText(std::string const &key, std::string const &args) {
    if (!args.empty() || key.size() < 2 || key[key.size() - 2] == ';') {
        return std::string();
    }
    std::string::size_type start = 1;
    int depth = 0;
    for (std::string::size_type i = 1; i + 1 < key.size(); ++i) {
        depth += key[i] == '(' ? 1 : key[i] == ')' ? -1 : 0;
        if (key[i] == ';' && depth == 0) {
            start = i + 1;
        }
    }
    return key.substr(start, key.size() - 1 - start);
}

std::string describe(IC::Modifier const &modifier, std::string const &a) {
    if (dynamic_cast<IC::DefaultModifier const *>(&modifier) != nullptr) {
        return "DefaultModifier, loads the file " + inQuotes(a);
    }
    if (auto const *tint = dynamic_cast<IC::ColorModifier const *>(&modifier)) {
        VORT::Color const &color = tint->getColor();
        return "ColorModifier, composes its operands, then tints them by red " +
               std::to_string(color.red()) + ", green " + std::to_string(color.green()) +
               ", blue " + std::to_string(color.blue()) +
               (tint->getToGrayscale() ? ", turning them gray first" : "");
    }
    if (auto const *composer = dynamic_cast<IC::QtModifier const *>(&modifier)) {
        return "QtModifier, draws b over a in mode " + composer->getMode().getName().getString();
    }
    return "a modifier that the library does not know";
}

// Walks a key as the manager builds it, printing each level when `out` is set, and stops at the
// first part that can't build.
class KeyWalker {
public:
    explicit KeyWalker(std::FILE *out) : mOut(out) {}

    bool walk(std::string const &key, int depth, std::string const &indent);
    std::string const &problem() const { return mProblem; }

private:
    void line(std::string const &indent, std::string const &label, std::string const &text) {
        if (mOut != nullptr) {
            std::fprintf(mOut, "%s%-9s %s\n", indent.c_str(), label.c_str(), text.c_str());
        }
    }
    bool fail(std::string const &problem) {
        mProblem = problem;
        return false;
    }
    bool checkFile(std::string const &path);

    std::FILE *mOut;
    std::string mProblem;
};

bool KeyWalker::walk(std::string const &key, int depth, std::string const &indent) {
    if (depth > kMaxDepth) {
        return fail("key " + inQuotes(key) + " is nested deeper than " + std::to_string(kMaxDepth) +
                    " levels");
    }
    std::string a, b, name, args;
    if (!IC::parseKey(key, a, b, name, args)) {
        return fail("malformed key " + inQuotes(key) + ": " + malformedReason(key));
    }
    line(indent, "a", a);
    if (!b.empty()) {
        line(indent, "b", b);
    }
    std::string why;
    if (!b.empty() && name.empty()) {
        name = "comp_mode:SourceOver";
        why = " (no modifier named: two operands compose)";
    } else if (name.empty()) {
        name = "loadImg:";
        why = " (no modifier named: one operand is a file)";
    }
    const boost::shared_ptr<IC::Modifier> modifier =
        IC::Manager::instance().buildModifier(name, args);
    if (!modifier) {
        if (IC::Manager::instance().buildModifier(name, std::string())) {
            return fail("modifier " + inQuotes(name) + " refuses the arguments " + inQuotes(args) +
                        " in key " + inQuotes(key));
        }
        return fail("unknown modifier " + inQuotes(name) + " in key " + inQuotes(key));
    }
    line(indent, "modifier", name + why + " -> " + describe(*modifier, a));
    if (!args.empty()) {
        line(indent, "arguments", args);
    }
    const std::string dropped = droppedText(key, args);
    if (!dropped.empty()) {
        line(indent, "ignored", inQuotes(dropped) + " is no field: a field ends with ';'");
    }

    if (dynamic_cast<IC::DefaultModifier const *>(modifier.get()) != nullptr) {
        return checkFile(a);
    }
    if (dynamic_cast<IC::QtModifier const *>(modifier.get()) == nullptr) {
        return true;
    }
    const std::string childIndent = indent + "  ";
    for (std::string const *operand : {&a, &b}) {
        if (operand->empty()) {
            continue;
        }
        const std::string operandKey = IC::buildKey(*operand);
        if (mOut != nullptr) {
            std::fprintf(mOut, "%s%s %s\n", indent.c_str(), operand == &a ? "a" : "b",
                         operandKey.c_str());
        }
        if (!walk(operandKey, depth + 1, childIndent)) {
            return false;
        }
    }
    return true;
}

bool KeyWalker::checkFile(std::string const &path) {
    QImageReader reader(QFile::decodeName(QByteArray::fromStdString(path)));
    QImage image;
    if (!reader.read(&image)) {
        return fail("cannot load the image file " + inQuotes(path) + ": " +
                    reader.errorString().toStdString());
    }
    return true;
}

// Qt's own warnings (a missing runtime folder on a display-less machine, say) are not this
// tool's to report: it says what failed in its own words.
void quietQt(QtMsgType type, QMessageLogContext const &, QString const &message) {
    if (type == QtCriticalMsg || type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
    }
}

int run(std::vector<std::string> const &arguments) {
    bool explain = false;
    std::string output;
    std::vector<std::string> positional;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        if (argument == "--explain") {
            explain = true;
        } else if (argument == "-o" || argument == "--output") {
            if (i + 1 == arguments.size()) {
                return usageError(kName, argument + " needs a file name\n" + kUsage);
            }
            output = arguments[++i];
        } else {
            positional.push_back(argument);
        }
    }
    if (positional.size() != 1 || positional[0].empty()) {
        return usageError(kName, std::string("one key, please\n") + kUsage);
    }
    if (explain == !output.empty()) {
        return usageError(kName, std::string("either -o OUT.png or --explain\n") + kUsage);
    }

    // Without a display, pictures still need a platform: the offscreen one draws in memory.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qInstallMessageHandler(&quietQt);
    int argc = 1;
    char program[] = "vort";
    char *argv[] = {program, nullptr};
    QGuiApplication application(argc, argv);

    // A bare file name is the key of that file.
    const std::string key = IC::buildKey(positional[0]);
    if (explain) {
        std::printf("%s\n", key.c_str());
        KeyWalker walker(stdout);
        return walker.walk(key, 1, "  ") ? Success : failure(kName, walker.problem());
    }

    const VORT::Holder<IC::Node> node = IC::Manager::instance().getImage(key, true);
    QImage const *image = node ? node->getImage(true) : nullptr;
    if (image == nullptr) {
        KeyWalker walker(nullptr);
        walker.walk(key, 1, "");
        const std::string problem = walker.problem();
        return failure(kName,
                       problem.empty() ? "the key " + inQuotes(key) + " did not build" : problem);
    }
    const VORT::ByteArray png =
        VORT::PixmapType::Create().convertToByteArray(VORT::any(VORT::Pixmap(image)));
    if (png.size() == 0) {
        return failure(kName, "the key " + inQuotes(key) + " gives an image without pixels");
    }
    std::string problem;
    if (!writeOutput(output, png, problem)) {
        return failure(kName, problem);
    }
    return Success;
}

const Registration registration(
    {kName, "KEY -o OUT.png | --explain KEY",
     "render an image key, such as (a.png;(b.png;;color_modifier:;1,0,0,1;0;);comp_mode:Screen;), "
     "to PNG, or show how it splits",
     &run});

}  // namespace
}  // namespace vort_tool
