#include "ImageTestSupport.h"
#include "support/Latch.h"
#include <vort/image/ImageKey.h>
#include <vort/image/Node.h>
#include <vort/image/Pixmap.h>

#include <QtGui/QPainter>
#include <QtGui/QPixmap>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace VORT::ImageCompositor;
using VORT::Holder;
using VORT::Pixmap;
using vort_test::CountedNode;
using vort_test::solid;
namespace Data = VORT::ImageDataType;
namespace Direction = VORT::ImageDataDirection;

namespace {

Pixmap fromPlanes(void const *data, int type, int width, int height, int x = 0, int y = 0) {
    return Pixmap(static_cast<unsigned char const *>(data), static_cast<Data::Type>(type), width,
                  height, static_cast<Direction::Type>(x), static_cast<Direction::Type>(y));
}

}  // namespace

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
    std::istringstream names(
        "SourceOver DestinationOver Clear Source Destination SourceIn DestinationIn SourceOut "
        "DestinationOut SourceAtop DestinationAtop Xor Plus Multiply Screen Overlay Darken "
        "Lighten ColorDodge ColorBurn HardLight SoftLight Difference Exclusion Invalid Invalid");
    for (int code : {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                     13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, -1}) {
        std::string name;
        names >> name;
        EXPECT_EQ(Mode(code).getName().getString(), name) << code;
    }
    // The codes are Qt's own.
    EXPECT_EQ(Mode(QPainter::CompositionMode_Multiply), Mode(Mode::Multiply));
    EXPECT_EQ(Mode(QPainter::CompositionMode_Exclusion), Mode(Mode::Exclusion));
}

TEST(ImageNode, MakesTheMissingFormOnceAndOnlyWhenAsked) {
    Node fromImage("(i;;)", new QImage(solid(3, 2, 0xFF102030u)));
    EXPECT_EQ(fromImage.getPixmap(false), nullptr);
    QPixmap const *pixmap = fromImage.getPixmap(true);
    ASSERT_NE(pixmap, nullptr);
    EXPECT_EQ(pixmap->size(), QSize(3, 2));
    EXPECT_EQ(fromImage.getModifiablePixmap(true), pixmap);

    Node fromPixmap("(p;;)", new QPixmap(QPixmap::fromImage(solid(2, 2, 0xFF0000FFu))));
    EXPECT_EQ(fromPixmap.getImage(false), nullptr);
    fromPixmap.updateImageFromPixmap();  // only one form: nothing to remake
    EXPECT_EQ(fromPixmap.getImage(false), nullptr);
    QImage *image = fromPixmap.getImage(true);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(fromPixmap.getModifiableImage(true), image);

    // With both forms, each can be remade from the other.
    fromPixmap.getModifiablePixmap(false)->fill(Qt::red);
    EXPECT_EQ(fromPixmap.getImage(false)->pixel(0, 0), 0xFF0000FFu);
    fromPixmap.updateImageFromPixmap();
    EXPECT_EQ(fromPixmap.getImage(false)->pixel(0, 0), 0xFFFF0000u);
    fromPixmap.getImage(false)->fill(0xFF00FF00u);
    fromPixmap.updatePixmapFromImage();
    EXPECT_EQ(fromPixmap.getPixmap(false)->toImage().pixel(1, 1), 0xFF00FF00u);

    Node empty;
    EXPECT_EQ(empty.getImage(true), nullptr);
    EXPECT_EQ(empty.getPixmap(true), nullptr);
    EXPECT_FALSE(empty.isValid());
}

TEST(ImageNode, OwnsWhatItIsHandedAndDropsTheOtherForm) {
    Node node("(n;;)", new QImage(solid(1, 1, 0xFF000000u)));
    QImage *image = node.getImage(false);
    QPixmap const *pixmap = node.getPixmap(true);
    node.setDataToOwn(image);  // the pointer it holds: both forms stay
    EXPECT_EQ(node.getPixmap(false), pixmap);

    auto *replacement = new QPixmap(4, 4);
    node.setDataToOwn(replacement);
    EXPECT_EQ(node.getPixmap(false), replacement);
    EXPECT_EQ(node.getImage(false), nullptr);
    node.setDataToOwn(new QImage(solid(5, 5, 0xFFFFFFFFu)));
    EXPECT_EQ(node.getPixmap(false), nullptr);
    node.setDataToOwn(static_cast<QImage *>(nullptr));
    EXPECT_FALSE(node.isValid());
}

TEST(ImageNode, KeepsTheKeyOnlyForAnImageAndSharesPicturesWithCopies) {
    const Holder<Node> fromImage(new Node("(i;;)", new QImage(solid(1, 1, 0xFF000000u))));
    const Node fromPixmap("(p;;)", new QPixmap(1, 1));
    EXPECT_EQ(fromImage->toImageResource().toStringRef(), "(i;;)");
    EXPECT_EQ(fromPixmap.toImageResource().toStringRef(), "");

    // A copy would delete the same pictures as its source, so it is made in storage that is
    // released without its destructor; its key is short enough to own no memory.
    const Holder<Node> second = fromImage;
    alignas(Node) unsigned char storage[sizeof(Node)];
    Node *copy = new (storage) Node(*fromImage);
    EXPECT_EQ(copy->getImage(false), fromImage->getImage(false));
    EXPECT_EQ(copy->getKey(), "(i;;)");
    EXPECT_EQ(copy->incrementReference(), 3);
}

TEST(ImageNodeConcurrency, HoldersComeAndGoOnAnyThread) {
    const int before = CountedNode::destroyed.load();
    Holder<Node> shared(new CountedNode("(t;;)", new QImage(solid(2, 2, 0xFF000000u))));
    vort_test::Latch ready(4);
    vort_test::Latch go(1);
    std::vector<std::thread> workers;
    for (int t = 0; t < 4; ++t) {
        workers.emplace_back([&] {
            Holder<Node> mine = shared;
            ready.countDown();
            go.wait();
            for (int i = 0; i < 20000; ++i) {
                Holder<Node> copy = mine;
                Holder<Node> another(copy.get());
            }
        });
    }
    ASSERT_TRUE(ready.wait());
    shared = Holder<Node>();  // the workers' holders are now the only ones
    go.countDown();
    for (std::thread &worker : workers) {
        worker.join();
    }
    // The last holder, on whichever thread, destroyed the node exactly once.
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
}

TEST(Pixmap, BuildsFromColumnMajorPlanesInEveryDirection) {
    // Sample (x, y) of plane p of a 3-by-2 image is at p * 6 + x * 2 + y, and its value tells
    // the pixel apart from all others.
    std::vector<unsigned char> bytes(18);
    std::vector<double> doubles(18);
    for (int i = 0; i < 18; ++i) {
        bytes[i] = static_cast<unsigned char>(10 * i + 5);
        doubles[i] = bytes[i] / 255.0;
    }
    // Only the test against zero matters for a direction.
    const int directions[][2] = {{0, 0}, {1, 0}, {0, 1}, {-7, 2}};
    for (auto const &direction : directions) {
        for (Pixmap const &pixmap :
             {fromPlanes(bytes.data(), Data::UInt8, 3, 2, direction[0], direction[1]),
              fromPlanes(doubles.data(), Data::Double, 3, 2, direction[0], direction[1])}) {
            ASSERT_EQ(pixmap.getQImage()->size(), QSize(3, 2));
            EXPECT_EQ(pixmap.getQImage()->format(), QImage::Format_ARGB32);
            for (int i = 0; i < 6; ++i) {
                const int x = direction[0] != 0 ? 2 - i / 2 : i / 2;
                const int y = direction[1] != 0 ? 1 - i % 2 : i % 2;
                EXPECT_EQ(pixmap.getQImage()->pixel(x, y),
                          qRgba(bytes[i], bytes[6 + i], bytes[12 + i], 255))
                    << i << " in directions " << direction[0] << "," << direction[1];
            }
        }
    }
}

TEST(Pixmap, RoundsDoublesKeepingTheLowByteAndIgnoresSixteenBitSamples) {
    const double samples[][2] = {{1.0, 255}, {0.5, 128},
                                 {1.5, 127}, {-0.2, 206},
                                 {1e300, 0}, {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (auto const &row : samples) {
        const double data[3] = {row[0], 0.0, 1.0};
        EXPECT_EQ(fromPlanes(data, Data::Double, 1, 1).getQImage()->pixel(0, 0),
                  qRgba(static_cast<int>(row[1]), 0, 255, 255))
            << row[0];
    }
    const std::vector<unsigned short> white(3 * 4 * 2, 0xFFFF);
    EXPECT_EQ(*fromPlanes(white.data(), Data::UInt16, 4, 2, 1).getQImage(),
              solid(4, 2, 0xFF000000u));
    EXPECT_EQ(fromPlanes(white.data(), 3, 4, 2).getQImage(), nullptr);
    // A size below 1 reads nothing and leaves a null image, which is set all the same.
    EXPECT_TRUE(fromPlanes(nullptr, Data::Double, 0, 5).getQImage()->isNull());
    // So does a width that Qt refuses to allocate, before any sample is read.
    EXPECT_TRUE(fromPlanes(nullptr, Data::UInt8, 1 << 26, 1).getQImage()->isNull());
}

TEST(Pixmap, WritesAndLenientlyReadsTheTextForm) {
    QImage twoPixels = solid(2, 1, 0xFFFF0000u);
    twoPixels.setPixel(1, 0, qRgba(0, 0, 255, 40));
    const QImage nullImage;
    std::ostringstream written;
    written << Pixmap(&twoPixels) << '|' << Pixmap() << '|' << Pixmap(&nullImage);
    EXPECT_EQ(written.str(), "2,1;255,0,0;0,0,255;||0,0;");

    QImage lastRead(2, 1, QImage::Format_ARGB32);
    lastRead.setPixel(0, 0, 0xFF0A141Eu);
    lastRead.setPixel(1, 0, 0xFF00141Eu);
    struct Row {
        const char *text;
        bool failed;
        QImage image;  // null also for a target left unset
    };
    const Row rows[] = {
        {"1,1;255,0,0;", false, solid(1, 1, 0xFFFF0000u)},
        // Delimiters are not checked, sizes round, components keep their low byte.
        {" 1.4 ; 1.4 / 511 x 256.4 ; -0.4 ;", false, solid(1, 1, 0xFFFF0000u)},
        // A text that runs dry repeats the last value read.
        {"3,1;255,0,0;", true, solid(3, 1, 0xFFFF0000u)},
        // A component that is no number reads as 0 and the others keep their last values.
        {"2,1;10,20,30;x,1,1;", true, lastRead},
        {"", true, QImage()},
        {"-3,2;", false, QImage()},
        // More pixels than the bound: refused before anything is allocated.
        {"100000,100000;", true, QImage()},
    };
    for (Row const &row : rows) {
        std::istringstream in(row.text);
        Pixmap pixmap(&twoPixels);
        in >> pixmap;
        EXPECT_EQ(in.fail(), row.failed) << row.text;
        const bool unset = std::string(row.text) == "100000,100000;";
        ASSERT_EQ(pixmap.getQImage() == nullptr, unset) << row.text;
        if (!unset) {
            EXPECT_EQ(*pixmap.getQImage(), row.image) << row.text;
        }
    }
    // A stream already at its end assigns an unset pixmap.
    std::istringstream atEnd("");
    atEnd.get();
    Pixmap target(&twoPixels);
    atEnd >> target;
    EXPECT_EQ(target.getQImage(), nullptr);
}

TEST(Pixmap, ComparesByCacheKeyThenByPixelsAndCopiesDeeply) {
    const QImage red = solid(2, 2, 0xFFFF0000u);
    const QImage nullImage;
    const Pixmap a(&red);
    Pixmap copy(a);
    EXPECT_EQ(copy.getCacheKey(), a.getCacheKey());
    EXPECT_TRUE(Pixmap() == Pixmap(&nullImage));
    EXPECT_FALSE(Pixmap() == a);
    EXPECT_TRUE(a == Pixmap(std::make_unique<QImage>(solid(2, 2, 0xFFFF0000u)).get()));
    copy.getQImage()->setPixel(0, 0, 0xFF00FF00u);
    EXPECT_FALSE(a == copy);
    EXPECT_EQ(a.getQImage()->pixel(0, 0), 0xFFFF0000u);
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>(0.0, 0.0, 2.0, 2.0));
    copy = Pixmap();
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>());
}

TEST(Pixmap, SavesLoadsAndKeepsAReplacedImageAlive) {
    vort_test::ImageFolder folder;
    const QImage red = solid(3, 2, 0x80FF0000u);
    const Pixmap pixmap(&red);
    EXPECT_FALSE(Pixmap().save(folder.path("unset.png"), VORT::ImageFileFormat::PNG, -1));
    ASSERT_TRUE(pixmap.save(folder.path("red.png"), VORT::ImageFileFormat::PNG, -1));
    Pixmap loaded(folder.path("red.png"));
    EXPECT_EQ(loaded.getQImage()->convertToFormat(QImage::Format_ARGB32), red);
    // Any other format leaves the choice to the suffix.
    ASSERT_TRUE(
        pixmap.save(folder.path("red.bmp"), static_cast<VORT::ImageFileFormat::Type>(9), -1));
    EXPECT_EQ(QImage(QString::fromStdString(folder.path("red.bmp")), "BMP").size(), QSize(3, 2));
    EXPECT_TRUE(Pixmap(folder.path("missing.png")).getQImage()->isNull());

    // The image held before a load stays valid, and is its holder's to delete.
    std::unique_ptr<QImage> before(loaded.getQImage());
    loaded.loadImagePath(folder.write("blue.png", solid(1, 1, 0xFF0000FFu)));
    EXPECT_EQ(loaded.getWidth(), 1);
    EXPECT_EQ(before->convertToFormat(QImage::Format_ARGB32), red);
}
