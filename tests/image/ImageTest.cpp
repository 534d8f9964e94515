#include "support/FuzzCorpus.h"
#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/image/Icon.h>
#include <vort/image/ImageKey.h>
#include <vort/image/ImageResource.h>
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>
#include <vort/image/Node.h>
#include <vort/image/Pixmap.h>

#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace Data = VORT::ImageDataType;

using namespace VORT::ImageCompositor;
using namespace VORT;

namespace {

QImage solid(int width, int height, QRgb value, QImage::Format format = QImage::Format_ARGB32) {
    QImage image(width, height, format);
    image.fill(value);
    return image;
}

// A fresh folder, removed with the object; its paths make keys that no other test uses.
class ImageFolder {
public:
    std::string path(std::string const &name) const {
        return m_folder.filePath(QString::fromStdString(name)).toStdString();
    }
    // Writes `image` as PNG and gives its path.
    std::string write(std::string const &name, QImage const &image) const {
        image.save(QString::fromStdString(path(name)), "PNG");
        return path(name);
    }

private:
    QTemporaryDir m_folder;
};

class CountedNode : public VORT::ImageCompositor::Node {
public:
    CountedNode(std::string const &key, QImage *image) : Node(key, image) {}
    ~CountedNode() override { destroyed.fetch_add(1); }

    static inline std::atomic<int> destroyed{0};
};

Pixmap fromPlanes(void const *data, int type, int width, int height, int x = 0, int y = 0) {
    return Pixmap(static_cast<unsigned char const *>(data), static_cast<Data::Type>(type), width,
                  height, static_cast<VORT::ImageDataDirection::Type>(x),
                  static_cast<VORT::ImageDataDirection::Type>(y));
}

std::vector<QRgb> pixels(QImage const &image, std::vector<QPoint> const &points) {
    std::vector<QRgb> result;
    for (QPoint const &point : points) {
        result.push_back(image.pixel(point));
    }
    return result;
}

Color bytes(unsigned int rgba) {
    Color color;
    color.setRGBAFromPackedValue(rgba);
    return color;
}

// A loader that tells its prototype apart, and refuses the arguments "refuse".
class TaggedModifier : public DefaultModifier {
public:
    explicit TaggedModifier(int tag) : mTag(tag) {}
    TaggedModifier *clone(std::string const &args) const override {
        return args == "refuse" ? nullptr : new TaggedModifier(mTag);
    }
    int mTag;
};

// A manager of its own, for what the shared one can't show: its end.
class PrivateManager : public Manager {};

QImage imageOf(Holder<Node> const &node) {
    return node ? *node->getImage(true) : QImage();
}

Holder<Node> counted(std::string const &key) {
    return new CountedNode(key, new QImage(solid(1, 1, 0)));
}

}  // namespace

// The corpus of the key's fuzz target checks the kept quirks against a second reading; these are
// the boundaries it has no seed for.
TEST(ImageKey, ParsesAndBuildsKeys) {
    const char *rows[][3] = {
        {"(;b;)", "0", "|b||"},        {"()", "0", "|||"},           {"(a)", "0", "|||"},
        {"(a;;", "0", "|||"},          {"((a;;)", "0", "|||"},       {"(a;b;m;x)", "1", "a|b|m|"},
        {"(a;b;m;;)", "1", "a|b|m|;"}, {"(a;b);c;d;)", "1", "a|||"},
    };
    for (auto const &row : rows) {
        std::string a, b, name, args;
        EXPECT_EQ(parseKey(row[0], a, b, name, args), row[1][0] == '1') << row[0];
        EXPECT_EQ(a + "|" + b + "|" + name + "|" + args, row[2]) << row[0];
    }
    std::string a = "old", b = "old", name = "old", args = "old";
    EXPECT_TRUE(parseKey("(p;q;)", a, b, name, args));
    EXPECT_EQ(a + b + name + args, "pqoldold");

    const std::string built[][2] = {
        {buildKey(""), ""},
        {buildKey("x.png"), "(x.png;;)"},
        {buildKey("((p;;);(q;;);comp_mode:Plus;)"), "((p;;);(q;;);comp_mode:Plus;)"},
        {buildKey("(x)"), "((x);;)"},
        {buildKey("(a;b"), "((a;b;;)"},
        {buildKey("a", "b", "c"), "(a;b;c)"},
        // The names of the first and last of Qt's modes, and of codes beyond them.
        {buildKey("a", Mode(Mode::SourceOver)), "(a;;SourceOver)"},
        {buildKey("a", "b", Mode(Mode::Exclusion)), "(a;b;Exclusion)"},
        {buildKey("a", Mode(24)) + buildKey("b", Mode(-1)), "(a;;Invalid)(b;;Invalid)"},
    };
    for (auto const &row : built) {
        EXPECT_EQ(row[0], row[1]);
    }
}

TEST(ImageNode, MakesTheMissingFormOnDemandAndOwnsWhatItIsHanded) {
    Node fromImage("(i;;)", new QImage(solid(3, 2, 0xFF102030u)));
    EXPECT_EQ(fromImage.getPixmap(false), nullptr);
    QPixmap const *pixmap = fromImage.getPixmap(true);
    ASSERT_TRUE(pixmap != nullptr && pixmap->size() == QSize(3, 2));
    EXPECT_EQ(fromImage.getModifiablePixmap(true), pixmap);
    fromImage.setDataToOwn(fromImage.getImage(false));  // the pointer it holds: both stay
    EXPECT_EQ(fromImage.getPixmap(false), pixmap);

    Node node("(p;;)", new QPixmap(QPixmap::fromImage(solid(2, 2, 0xFF0000FFu))));
    node.updateImageFromPixmap();  // only one form: nothing to remake
    EXPECT_EQ(node.getImage(false), nullptr);
    QImage *image = node.getImage(true);
    ASSERT_TRUE(image != nullptr && node.getModifiableImage(true) == image);
    node.getModifiablePixmap(false)->fill(Qt::red);
    node.updateImageFromPixmap();
    EXPECT_EQ(node.getImage(false)->pixel(0, 0), 0xFFFF0000u);
    node.getImage(false)->fill(0xFF00FF00u);
    node.updatePixmapFromImage();
    EXPECT_EQ(node.getPixmap(false)->toImage().pixel(1, 1), 0xFF00FF00u);

    auto *replacement = new QPixmap(4, 4);
    node.setDataToOwn(replacement);
    EXPECT_TRUE(node.getPixmap(false) == replacement && node.getImage(false) == nullptr);
    node.setDataToOwn(new QImage(solid(5, 5, 0)));
    EXPECT_EQ(node.getPixmap(false), nullptr);
    node.setDataToOwn(static_cast<QImage *>(nullptr));
    EXPECT_FALSE(node.isValid() || Node().getImage(true) || Node().getPixmap(true));
}

TEST(ImageNode, KeepsTheKeyOnlyForAnImageAndSharesPicturesWithCopies) {
    const Holder<Node> fromImage(new Node("(i;;)", new QImage(solid(1, 1, 0xFF000000u))));
    EXPECT_EQ(fromImage->toImageResource().toStringRef() +
                  Node("(p;;)", new QPixmap(1, 1)).toImageResource().toStringRef(),
              "(i;;)");
    // A copy would delete its source's pictures, so it lives in storage released without its
    // destructor; its key is short enough to own no memory.
    const Holder<Node> second = fromImage;
    alignas(Node) unsigned char storage[sizeof(Node)];
    Node *copy = new (storage) Node(*fromImage);
    EXPECT_TRUE(copy->getImage(false) == fromImage->getImage(false) && copy->getKey() == "(i;;)");
    EXPECT_EQ(copy->incrementReference(), 3);
}

TEST(ImageNodeConcurrency, HoldersComeAndGoOnAnyThread) {
    const int before = CountedNode::destroyed.load();
    Holder<Node> shared(new CountedNode("(t;;)", new QImage(solid(2, 2, 0))));
    std::vector<Holder<Node>> mine(4, shared);
    shared = Holder<Node>();  // the workers' holders are now the only ones
    vort_test::runTogether(4, [&](int t) {
        for (int i = 0; i < 2000; ++i) {
            Holder<Node> copy = mine[t];
            Holder<Node> another(copy.get());
        }
        mine[t] = Holder<Node>();
    });
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
}

TEST(Pixmap, BuildsFromColumnMajorPlanesInEveryDirection) {
    // Sample (x, y) of plane p of a 3-by-2 image is at p * 6 + x * 2 + y.
    std::vector<unsigned char> bytes(18);
    for (int i = 0; i < 18; ++i) {
        bytes[i] = static_cast<unsigned char>(10 * i + 5);
    }
    for (auto const &dir : {std::make_pair(0, 0), {1, 0}, {0, 1}, {-7, 2}}) {
        const Pixmap pixmap = fromPlanes(bytes.data(), Data::UInt8, 3, 2, dir.first, dir.second);
        ASSERT_EQ(pixmap.getQImage()->size(), QSize(3, 2));
        for (int i = 0; i < 6; ++i) {
            const int x = dir.first != 0 ? 2 - i / 2 : i / 2;
            const int y = dir.second != 0 ? 1 - i % 2 : i % 2;
            EXPECT_EQ(pixmap.getQImage()->pixel(x, y),
                      qRgba(bytes[i], bytes[6 + i], bytes[12 + i], 255))
                << i << " " << dir.first << "," << dir.second;
        }
    }
    // Doubles round and keep their low byte: 0.5, 1.5, -0.2, 1e300 and NaN, in a column.
    const double data[] = {0.5, 1.5, -0.2, 1e300, std::numeric_limits<double>::quiet_NaN(),
                           0,   0,   0,    0,     0,
                           1,   1,   1,    1,     1};
    const QImage column = *fromPlanes(data, Data::Double, 1, 5).getQImage();
    const int reds[] = {128, 127, 206, 0, 0};
    for (int y = 0; y < 5; ++y) {
        EXPECT_EQ(column.pixel(0, y), qRgba(reds[y], 0, 255, 255)) << y;
    }
    const std::vector<unsigned short> white(3 * 4 * 2, 0xFFFF);
    EXPECT_EQ(*fromPlanes(white.data(), Data::UInt16, 4, 2, 1).getQImage(),
              solid(4, 2, 0xFF000000u));
    EXPECT_EQ(fromPlanes(white.data(), 3, 4, 2).getQImage(), nullptr);
    EXPECT_TRUE(fromPlanes(nullptr, Data::Double, 0, 5).getQImage()->isNull());
    EXPECT_TRUE(fromPlanes(nullptr, Data::UInt8, 1 << 26, 1).getQImage()->isNull());
}

TEST(Pixmap, WritesAndLenientlyReadsTheTextForm) {
    QImage twoPixels = solid(2, 1, 0xFFFF0000u);
    twoPixels.setPixel(1, 0, qRgba(0, 0, 255, 40));
    const QImage nullImage;
    std::ostringstream written;
    written << Pixmap(&twoPixels) << '|' << Pixmap() << '|' << Pixmap(&nullImage);
    EXPECT_EQ(written.str(), "2,1;255,0,0;0,0,255;||0,0;");
    QImage lastRead = solid(2, 1, 0xFF0A141Eu);
    lastRead.setPixel(1, 0, 0xFF00141Eu);
    const std::tuple<const char *, bool, QImage> rows[] = {
        // Delimiters are not checked, sizes round, components keep their low byte.
        {" 1.4 ; 1.4 / 511 x 256.4 ; -0.4 ;", false, solid(1, 1, 0xFFFF0000u)},
        // A text that runs dry repeats the last value; a component that is no number reads as 0.
        {"3,1;255,0,0;", true, solid(3, 1, 0xFFFF0000u)},
        {"2,1;10,20,30;x,1,1;", true, lastRead},
        {"-3,2;", false, QImage()},
        {"100000,100000;", true, QImage()},  // over the bound: refused before allocating
    };
    for (auto const &[text, failed, image] : rows) {
        std::istringstream in(text);
        Pixmap pixmap(&twoPixels);
        in >> pixmap;
        EXPECT_EQ(in.fail(), failed) << text;
        ASSERT_EQ(pixmap.getQImage() == nullptr, text[0] == '1') << text;
        EXPECT_TRUE(text[0] == '1' || *pixmap.getQImage() == image) << text;
    }
    std::istringstream atEnd("");
    atEnd.get();
    Pixmap target(&twoPixels);
    atEnd >> target;
    EXPECT_EQ(target.getQImage(), nullptr);
}

TEST(Pixmap, ComparesCopiesDeeplySavesAndLoads) {
    const QImage red = solid(3, 2, 0x80FF0000u);
    const QImage nullImage;
    const Pixmap a(&red);
    Pixmap copy(a);
    EXPECT_TRUE(copy.getCacheKey() == a.getCacheKey() && Pixmap() == Pixmap(&nullImage) &&
                !(Pixmap() == a));
    EXPECT_TRUE(a == Pixmap(std::make_unique<QImage>(solid(3, 2, 0x80FF0000u)).get()));
    copy.getQImage()->setPixel(0, 0, 0xFF00FF00u);
    EXPECT_TRUE(!(a == copy) && a.getQImage()->pixel(0, 0) == 0x80FF0000u);
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>(0.0, 0.0, 3.0, 2.0));
    copy = Pixmap();
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>());

    ImageFolder folder;
    EXPECT_FALSE(Pixmap().save(folder.path("unset.png"), VORT::ImageFileFormat::PNG, -1));
    ASSERT_TRUE(a.save(folder.path("red.png"), VORT::ImageFileFormat::PNG, -1));
    Pixmap loaded(folder.path("red.png"));
    EXPECT_EQ(loaded.getQImage()->convertToFormat(QImage::Format_ARGB32), red);
    // Any other format leaves the choice to the suffix.
    ASSERT_TRUE(a.save(folder.path("red.bmp"), static_cast<VORT::ImageFileFormat::Type>(9), -1));
    EXPECT_EQ(QImage(QString::fromStdString(folder.path("red.bmp")), "BMP").size(), QSize(3, 2));
    EXPECT_TRUE(Pixmap(folder.path("missing.png")).getQImage()->isNull());
    // The image held before a load stays valid, and is its holder's to delete.
    std::unique_ptr<QImage> before(loaded.getQImage());
    loaded.loadImagePath(folder.write("blue.png", solid(1, 1, 0xFF0000FFu)));
    EXPECT_TRUE(loaded.getWidth() == 1 && before->convertToFormat(QImage::Format_ARGB32) == red);
}

TEST(ImageModifier, PlacesImageBByTheAnchorsAndNotTheOffset) {
    const QImage square = solid(4, 4, 0);
    const QImage wide = solid(7, 2, 0);
    // Per code from 0 (TopCenter) to 8 (Center), then two codes out of range.
    const int points[][4] = {{1, 0, 3, 0}, {1, 3, 3, 1}, {0, 1, 0, 0}, {3, 1, 6, 0},
                             {0, 0, 0, 0}, {3, 0, 6, 0}, {0, 3, 0, 1}, {3, 3, 6, 1},
                             {1, 1, 3, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}};
    for (int code = 0; code < 11; ++code) {
        const Location location(code < 10 ? code : -1);
        int const *p = points[code];
        EXPECT_EQ(
            std::make_tuple(computeImgLocation(&square, location),
                            computeImgLocation(&wide, location),
                            computeImgLocation(nullptr, location)),
            std::make_tuple(VTPoint<int>(p[0], p[1]), VTPoint<int>(p[2], p[3]), VTPoint<int>()))
            << code;
    }

    const QImage big = solid(10, 10, 0);
    QtModifier modifier(Mode(Mode::Screen));
    EXPECT_EQ(modifier.getRenderLocation(&big, &square), VTPoint<int>(0, 0));
    modifier.setALoc(Location(Location::Center));
    modifier.setBLoc(Location(Location::Center));
    modifier.setOffsetXY(VTPoint<int>(50, -7));
    EXPECT_EQ(std::make_pair(modifier.getRenderLocation(&big, &square),
                             modifier.getRenderLocation(nullptr, &square)),
              std::make_pair(VTPoint<int>(3, 3), VTPoint<int>(0, 0)));

    // Clones take every setting, the mode included.
    std::unique_ptr<QtModifier> clone(modifier.clone("ignored"));
    EXPECT_EQ(
        std::make_tuple(clone->getBLoc(), clone->getOffsetXY(), clone->getMode()),
        std::make_tuple(Location(Location::Center), VTPoint<int>(50, -7), Mode(Mode::Screen)));
}

TEST(ImageModifier, ReadsTheColourModifiersArguments) {
    const std::tuple<const char *, unsigned int, bool> rows[] = {
        {"1,0,0,1;1", 0xFF0000FFu, true},
        {"0,0.5,1,1;0;rest", 0x0080FFFFu, false},
        // No flag text: the stream reads nothing and the prototype's flag stays.
        {"1,1,0,1", 0xFFFF00FFu, true},
        // What the stream makes of the rest: 0 for a failed component, false for "x", and no
        // colour text at all is four failed components, not the prototype's white.
        {"junk;x", 0x00000000u, false},
        {"", 0x00000000u, true},
    };
    const ColorModifier prototype(Color(1.0, 1.0, 1.0, 1.0), true);
    for (auto const &[args, rgba, toGrayscale] : rows) {
        std::unique_ptr<ColorModifier> modifier(prototype.clone(args));
        EXPECT_EQ(std::make_pair(modifier->getColor().getAsRgba(), modifier->getToGrayscale()),
                  std::make_pair(rgba, toGrayscale))
            << args;
    }
    // A clone of a clone starts from its source's flag.
    std::unique_ptr<ColorModifier> first(prototype.clone("0,0,1,1;0"));
    EXPECT_FALSE(std::unique_ptr<ColorModifier>(first->clone("1,0,0,1"))->getToGrayscale());
}

TEST(ImageModifier, TellsGrayscaleByRedAgainstGreenAndBlue) {
    const int rows[][4] = {
        {100, 104, 96, 1}, {100, 105, 100, 0}, {100, 100, 95, 0}, {100, 100, 105, 0}};
    for (auto const &row : rows) {
        QImage image = solid(3, 3, 0xFF808080u);
        image.setPixel(1, 2, qRgba(row[0], row[1], row[2], 255));
        EXPECT_EQ(isGrayscale(image), row[3] != 0) << row[0] << "," << row[1] << "," << row[2];
    }
    EXPECT_TRUE(isGrayscale(QImage()));
    EXPECT_TRUE(isGrayscale(solid(2, 2, 0x00646464u)));  // alpha plays no part
    EXPECT_FALSE(isGrayscale(solid(2, 2, 0xFF646400u, QImage::Format_RGB888)));
}

TEST(ImageModifier, TintsWithTheExactArithmetic) {
    const Color white = bytes(0xFFFFFFFFu);
    // Pixel, tint, to grayscale, gray image (else a red neighbour keeps the lift away), result.
    const std::tuple<QRgb, Color, bool, bool, QRgb> rows[] = {
        {0xFF323232u, white, true, true, 0xFFB4B4B4u},  // lifted by 130
        {0xFF828282u, white, true, true, 0xFF828282u},  // but not to 260
        {0xFF7C7C7Cu, white, true, true, 0xFFFEFEFEu},  // to 254
        // (200 * 11 + 100 * 16 + 50 * 5) / 32 = 126, then times 255 and 128 of 255.
        {0xFFC86432u, bytes(0xFF8000FFu), true, false, 0xFF7E3F00u},
        // 127 and 128 times 1/255 round to 0 and 1.
        {0xFF7F7F7Fu, bytes(0x01010100u), true, false, 0xFF000000u},
        {0xFF808080u, bytes(0x01010100u), true, false, 0xFF010101u},
        {0xFFFF80FFu, bytes(0x80FF00FFu), false, false, 0xFF808000u},
        {0xFFC86432u, white, false, false, 0xFFC86432u},
        // Alpha stays; premultiplied channels are taken as they stand.
        {0x80646464u, white, true, true, 0x80E6E6E6u},
    };
    for (auto const &[pixel, color, toGrayscale, grayImage, result] : rows) {
        QImage image = solid(2, 1, pixel);
        image.setPixel(1, 0, grayImage ? pixel : 0xFFFF0000u);
        convertImageToGrayscaleAndTint(image, color, toGrayscale);
        EXPECT_EQ(image.pixel(0, 0), result) << std::hex << pixel;
    }

    // RGB32 keeps its alpha byte at 0xFF; 8-bit formats become ARGB32 first.
    QImage rgb = solid(1, 1, 0xFFC86432u, QImage::Format_RGB32);
    convertImageToGrayscaleAndTint(rgb, Color(1.0, 0.0, 0.0, 1.0), true);
    EXPECT_EQ(reinterpret_cast<QRgb const *>(rgb.constBits())[0], 0xFF7E0000u);
    QImage gray8(1, 1, QImage::Format_Grayscale8);
    gray8.fill(50);
    convertImageToGrayscaleAndTint(gray8, white, true);
    EXPECT_EQ(gray8.pixel(0, 0), 0xFFB4B4B4u);
}

TEST(ImageModifier, ComposesStoredOperandsOnALargeEnoughCanvas) {
    Manager &manager = Manager::instance();
    const std::string red = "(modifier-test-red;;)";
    const std::string blue = "(modifier-test-blue;;)";
    ASSERT_TRUE(manager.storeImage(red, new Node(red, new QImage(solid(4, 3, 0xFFFF0000u)))) &&
                manager.storeImage(blue, new Node(blue, new QImage(solid(2, 5, 0x800000FFu)))));

    // A at the origin, then B over it; `pixel` gives premultiplied channels as they stand.
    QtModifier over(Mode(Mode::SourceOver));
    QImage out;
    ASSERT_TRUE(over.render(out, &red, &blue));
    ASSERT_TRUE(out.format() == QImage::Format_ARGB32_Premultiplied && out.size() == QSize(4, 5));
    EXPECT_EQ(pixels(out, {{0, 0}, {3, 0}, {0, 4}, {3, 4}}),
              (std::vector<QRgb>{0xFF7F0080u, 0xFFFF0000u, 0x80000080u, 0u}));
    // B anchored by its bottom-right on A's: what falls outside is clipped.
    over.setALoc(Location(Location::BottomRight));
    over.setBLoc(Location(Location::BottomRight));
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(pixels(out, {{0, 0}, {3, 0}}), (std::vector<QRgb>{0xFFFF0000u, 0xFF7F0080u}));

    // A mode out of range draws as SourceOver and is SourceOver from then on.
    QtModifier invalid(Mode(24));
    ASSERT_TRUE(invalid.render(out, &red, nullptr));
    EXPECT_TRUE(out.size() == QSize(4, 3) && invalid.getMode() == Mode(Mode::SourceOver));

    // A missing operand fails; an empty or absent B does not.
    const std::string missing = "(modifier-test-missing;;)", empty;
    EXPECT_FALSE(over.render(out, &red, &missing) || over.render(out, &missing, &blue) ||
                 over.render(out, nullptr, nullptr));
    EXPECT_TRUE(over.render(out, &red, &empty) && over.render(out, nullptr, &blue));
    EXPECT_EQ(out.size(), QSize(2, 5));
}

// A premultiplied first operand of source-over is copied, not blended: the result must still be
// the painter's, bit for bit, whatever the sizes, the operand's row padding and the mode.
TEST(ImageModifier, ComposesPremultipliedOperandsExactlyAsThePainterDoes) {
    static uchar padded[3 * 28];
    QImage mixed(5, 4, QImage::Format_ARGB32_Premultiplied);
    for (int i = 0; i < 20; ++i) {
        mixed.setPixel(i % 5, i / 5, qPremultiply(qRgba(200, 90 + i, 40, (i * 67) % 256)));
    }
    QImage strided(padded, 3, 3, 28, QImage::Format_ARGB32_Premultiplied);
    strided.fill(qPremultiply(qRgba(10, 220, 30, 160)));
    const QImage tall = solid(3, 6, 0x800000FFu);
    const std::tuple<QImage, QImage, int> cases[] = {
        {mixed, tall, Mode::SourceOver},
        {mixed, solid(2, 2, 0x80FF0000u), Mode::SourceOver},
        {strided, tall, Mode::SourceOver},
        {mixed, tall, Mode::Multiply}};
    int n = 0;
    for (auto const &[a, b, mode] : cases) {
        const std::string keyA = "(copy-a" + std::to_string(n) + ";;)";
        const std::string keyB = "(copy-b" + std::to_string(n++) + ";;)";
        ASSERT_TRUE(Manager::instance().storeImage(keyA, new Node(keyA, new QImage(a))) &&
                    Manager::instance().storeImage(keyB, new Node(keyB, new QImage(b))));
        QImage painted(a.size().expandedTo(b.size()), QImage::Format_ARGB32_Premultiplied);
        painted.fill(0);
        QPainter painter(&painted);
        painter.setCompositionMode(static_cast<QPainter::CompositionMode>(mode));
        painter.drawImage(0, 0, a);
        painter.drawImage(0, 0, b);
        painter.end();
        QImage out;
        ASSERT_TRUE(QtModifier(Mode(mode)).render(out, &keyA, &keyB));
        EXPECT_EQ(out, painted) << "case " << n;
    }
}

TEST(ImageManager, FindsModifiersInAnyCaseAndKeepsTheFirst) {
    Manager &manager = Manager::instance();
    manager.registerModifier("Tagged-Test:", boost::make_shared<TaggedModifier>(1));
    manager.registerModifier("TAGGED-TEST:", boost::make_shared<TaggedModifier>(2));
    const auto tagged = [&](const char *name, const char *args) {
        auto modifier =
            boost::dynamic_pointer_cast<TaggedModifier>(manager.buildModifier(name, args));
        return modifier ? modifier->mTag : 0;
    };
    EXPECT_TRUE(tagged("tAgGeD-tEsT:", "") == 1 && tagged("tagged-test:", "refuse") == 0);
    EXPECT_FALSE(manager.buildModifier("", "") || manager.buildModifier("comp_mode:Nonsense", ""));

    // The built-in table: the loader, every mode's name up to "Invalid", and the tint.
    EXPECT_TRUE(
        boost::dynamic_pointer_cast<DefaultModifier>(manager.buildModifier("LOADIMG:", "")));
    const std::pair<const char *, int> modes[] = {{"comp_mode:SourceOver", Mode::SourceOver},
                                                  {"COMP_MODE:SCREEN", Mode::Screen},
                                                  {"comp_mode:exclusion", Mode::Exclusion},
                                                  {"comp_mode:Invalid", 24},
                                                  {"color_modifier:", Mode::SourceOver}};
    for (auto const &[name, mode] : modes) {
        auto composer = boost::dynamic_pointer_cast<QtModifier>(manager.buildModifier(name, ""));
        ASSERT_TRUE(composer) << name;
        EXPECT_EQ(composer->getMode(), Mode(mode)) << name;
    }
}

TEST(ImageManager, StoresOnlyNewKeysAndNeverReplaces) {
    Manager &manager = Manager::instance();
    const Holder<Node> first = counted("(store-test;;)");
    EXPECT_FALSE(manager.storeImage("", first) || manager.storeImage("(s;;)", Holder<Node>()));
    EXPECT_TRUE(manager.storeImage("(store-test;;)", first));
    EXPECT_FALSE(manager.storeImage("(store-test;;)", counted("other")));
    EXPECT_TRUE(manager.getImage("(store-test;;)", true) == first && !manager.getImage("", true));
}

TEST(ImageManager, BuildsKeysRecursivelyAndCachesEveryOperand) {
    ImageFolder folder;
    const std::string a = folder.write("a.png", solid(4, 4, 0xFF336699u));
    const std::string b = folder.write("b.png", solid(2, 2, 0xFFFF0000u));
    Manager &manager = Manager::instance();

    const std::string key = "(" + a + ";" + b + ";comp_mode:Screen;)";
    const Holder<Node> node = manager.getImage(key, true);
    ASSERT_TRUE(node && node->getKey() == key && manager.getImage(key, false) == node);
    // Each file under its normalised key, and nothing under the bare path.
    EXPECT_TRUE(manager.getImage(buildKey(a), false) && manager.getImage(buildKey(b), false) &&
                !manager.getImage(a, true));
    // Screen with full red saturates red and keeps the rest; B covers only the top-left.
    EXPECT_EQ(pixels(imageOf(node), {{1, 1}, {2, 2}}),
              (std::vector<QRgb>{0xFFFF6699u, 0xFF336699u}));

    // A name that no ";" closes is dropped: the default composition draws B over A.
    EXPECT_EQ(imageOf(manager.getImage("(" + a + ";" + b + ";Screen)", true)).pixel(1, 1),
              0xFFFF0000u);

    // A tint of a tint, by the builders' own key: red keeps 0x33, whose luminance
    // (0x33 * 11 / 32 = 0x11) is then tinted blue.
    const std::string red = Builders::buildKeyColor(a, Color(1.0, 0.0, 0.0, 1.0), false);
    EXPECT_TRUE(red == "(" + a + ";;color_modifier:;1,0,0,1;0;)" &&
                Builders::buildKeyColor(red, Color(), true) == red);
    EXPECT_EQ(imageOf(manager.getImage(red, true)).pixel(3, 3), 0xFF330000u);
    const Holder<Node> twice = manager.getImage("(" + red + ";;color_modifier:;0,0,1,1;1;)", true);
    EXPECT_EQ(imageOf(twice).pixel(0, 0), 0xFF000011u);
}

TEST(ImageManager, CachesNothingForAKeyThatFailsAndTriesAgain) {
    ImageFolder folder;
    const std::string later = folder.path("later.png");
    Manager &manager = Manager::instance();
    const std::string key = "(" + later + ";;color_modifier:;1,1,1,1;0;)";
    for (std::string const &failing : {key, "(" + later + ";;no_such_modifier:;)"}) {
        EXPECT_FALSE(manager.getImage(failing, true)) << failing;
        EXPECT_FALSE(manager.getImage(failing, false)) << failing;
    }
    folder.write("later.png", solid(1, 1, 0xFF00FF00u));
    EXPECT_TRUE(manager.getImage(key, true));

    // Every level of a key is a level of building; 64 are allowed, one more is not. The two
    // chains differ in their flags, so that neither finds the other's levels cached.
    ASSERT_TRUE(manager.storeImage("(depth-base;;)", counted("(depth-base;;)")));
    std::string deepest = "(depth-base;;)", tooDeep = deepest;
    for (int level = 1; level <= 64; ++level) {
        deepest = "(" + deepest + ";;color_modifier:;1,1,1,1;0;)";
        tooDeep = "(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)";
    }
    EXPECT_TRUE(manager.getImage(deepest, true));
    EXPECT_FALSE(manager.getImage("(" + tooDeep + ";;color_modifier:;1,1,1,1;1;)", true));
}

class ImageManagerCollection : public vort_test::PlatformHooksTest {};

TEST_F(ImageManagerCollection, DropsWhatOnlyTheCacheHoldsOnceTheIntervalHasPassed) {
    Manager &manager = Manager::instance();
    platform.setClock(1000.0);
    manager.forceGarbageCollection();  // due again after 1005
    const int before = CountedNode::destroyed.load();
    Holder<Node> held = counted("(gc-held;;)");
    ASSERT_TRUE(manager.storeImage("(gc-x;;)", counted("(gc-x;;)")) &&
                manager.storeImage("(gc-held;;)", held));

    platform.setClock(1005.0);
    manager.update();
    manager.dereferenceNode("(gc-x;;)");
    EXPECT_TRUE(manager.getImage("(gc-x;;)", false));
    platform.setClock(1005.5);
    manager.update();  // due again after 1010.5
    EXPECT_TRUE(!manager.getImage("(gc-x;;)", false) && manager.getImage("(gc-held;;)", false));
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);

    held = Holder<Node>();
    platform.setClock(1010.0);
    manager.update();
    EXPECT_TRUE(manager.getImage("(gc-held;;)", false));
    platform.setClock(1011.0);
    manager.dereferenceNode("unrelated");
    EXPECT_TRUE(!manager.getImage("(gc-held;;)", false) &&
                CountedNode::destroyed.load() == before + 2);
}

TEST(ImageManager, LeavesItsCachedNodesAliveWhenItEnds) {
    const int before = CountedNode::destroyed.load();
    auto *manager = new PrivateManager;
    Holder<Node> shared = counted("(shared;;)");
    ASSERT_TRUE(manager->storeImage("(kept;;)", counted("(kept;;)")) &&
                manager->storeImage("(shared;;)", shared));
    delete manager;
    // The ended cache still counts as a holder of what it held.
    shared = Holder<Node>();
    EXPECT_EQ(CountedNode::destroyed.load(), before);
}

TEST(Icon, BuildsEachPictureOnceAndHoldsItAgainstCollection) {
    ImageFolder folder;
    const std::string file = folder.path("icon.png");
    Manager &manager = Manager::instance();
    {
        IconImageEntry entry(file);
        // A file that does not load yet: nothing is held, and every request tries again.
        EXPECT_FALSE(entry.getImageNode(false) || entry.getImageNode(true));
        folder.write("icon.png", solid(3, 3, 0xFF00AA00u));
        Node const *node = entry.getImageNode(true).get();
        ASSERT_TRUE(node != nullptr && manager.getImage(buildKey(file), false).get() == node);
        entry.setName(file);
        EXPECT_EQ(entry.getImageNode(false).get(), node);
        const IconImageEntry copy = entry;
        entry.setName(folder.path("other.png"));
        EXPECT_FALSE(entry.getImageNode(false));
        manager.forceGarbageCollection();
        EXPECT_TRUE(manager.getImage(buildKey(file), false));  // the copy holds it
    }
    manager.forceGarbageCollection();
    EXPECT_FALSE(manager.getImage(buildKey(file), false) || IconImageEntry().getImageNode(true));
}

class ImageResourceCalls : public vort_test::PlatformHooksTest {
protected:
    // Runs `step` after arming a collection, due at once, and a node that it would drop: whether
    // the node is gone afterwards tells whether the manager was asked to dereference.
    template <class Step>
    bool dereferences(Step const &step) {
        Manager &manager = Manager::instance();
        platform.setClock(2000.0);
        manager.forceGarbageCollection();
        platform.setClock(2010.0);
        manager.storeImage("(probe;;)", new Node("(probe;;)", new QImage(solid(1, 1, 0))));
        step();
        return !manager.getImage("(probe;;)", false);
    }
};

TEST_F(ImageResourceCalls, CallTheManagerOnlyWhenTheKeyChanges) {
    std::unique_ptr<ImageResource> resource, same;
    // A new resource dereferences the empty key it had; a copy starts empty and takes the key.
    EXPECT_TRUE(dereferences([&] { resource = std::make_unique<ImageResource>("(a;;)"); }));
    EXPECT_FALSE(dereferences([&] { resource->fromString("(a;;)"); }));
    EXPECT_TRUE(dereferences([&] { same = std::make_unique<ImageResource>(*resource); }));
    EXPECT_FALSE(dereferences([&] { *resource = *same; }));
    EXPECT_TRUE(dereferences([&] { resource->fromString("(b;;)"); }));
    EXPECT_EQ(same->toStringCopy() + resource->toStringRef(), "(a;;)(b;;)");
    EXPECT_FALSE(dereferences([] { const ImageResource none(""); }));
    EXPECT_TRUE(dereferences([&] { same.reset(); }));
}

// The three image targets are compiled into this executable under names of their own.
extern "C" int ImageKeyFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapPngFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" int PixmapTextFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

TEST(ImageFuzzCorpus, ReplaysTheKeptInputsOfEveryTarget) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "image_key_fuzzer", &ImageKeyFuzzerTestOneInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "pixmap_png_fuzzer",
                            &PixmapPngFuzzerTestOneInput);
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "pixmap_text_fuzzer",
                            &PixmapTextFuzzerTestOneInput);
}
