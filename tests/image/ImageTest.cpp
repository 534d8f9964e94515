#include "ImageTestSupport.h"
#include "support/Latch.h"
#include <vort/image/ImageKey.h>
#include <vort/image/Node.h>
#include <vort/image/Pixmap.h>

#include <QtGui/QPixmap>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

using namespace VORT::ImageCompositor;
using VORT::Holder;
using VORT::Pixmap;
using vort_test::solid;
namespace Data = VORT::ImageDataType;

namespace {

Pixmap fromPlanes(void const *data, int type, int width, int height, int x = 0, int y = 0) {
    return Pixmap(static_cast<unsigned char const *>(data), static_cast<Data::Type>(type), width,
                  height, static_cast<VORT::ImageDataDirection::Type>(x),
                  static_cast<VORT::ImageDataDirection::Type>(y));
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
        {buildKey("a", Mode(Mode::Multiply)), "(a;;Multiply)"},
        {buildKey("a", "b", Mode(24)), "(a;b;Invalid)"},
    };
    for (auto const &row : built) {
        EXPECT_EQ(row[0], row[1]);
    }
}

TEST(ImageCompositorMode, NamesQtsCompositionModes) {
    std::istringstream names(
        "SourceOver DestinationOver Clear Source Destination SourceIn DestinationIn SourceOut "
        "DestinationOut SourceAtop DestinationAtop Xor Plus Multiply Screen Overlay Darken "
        "Lighten ColorDodge ColorBurn HardLight SoftLight Difference Exclusion Invalid");
    for (int code = 0; code < 25; ++code) {
        std::string name;
        names >> name;
        EXPECT_EQ(Mode(code).getName().getString(), name) << code;
    }
    EXPECT_EQ(Mode(-1).getName().getString(), "Invalid");
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
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(node.getModifiableImage(true), image);
    node.getModifiablePixmap(false)->fill(Qt::red);
    node.updateImageFromPixmap();
    EXPECT_EQ(node.getImage(false)->pixel(0, 0), 0xFFFF0000u);
    node.getImage(false)->fill(0xFF00FF00u);
    node.updatePixmapFromImage();
    EXPECT_EQ(node.getPixmap(false)->toImage().pixel(1, 1), 0xFF00FF00u);

    auto *replacement = new QPixmap(4, 4);
    node.setDataToOwn(replacement);
    EXPECT_TRUE(node.getPixmap(false) == replacement && node.getImage(false) == nullptr);
    node.setDataToOwn(new QImage(solid(5, 5, 0xFFFFFFFFu)));
    EXPECT_EQ(node.getPixmap(false), nullptr);
    node.setDataToOwn(static_cast<QImage *>(nullptr));
    EXPECT_FALSE(node.isValid() || Node().getImage(true) || Node().getPixmap(true));
}

TEST(ImageNode, KeepsTheKeyOnlyForAnImageAndSharesPicturesWithCopies) {
    const Holder<Node> fromImage(new Node("(i;;)", new QImage(solid(1, 1, 0xFF000000u))));
    EXPECT_EQ(fromImage->toImageResource().toStringRef(), "(i;;)");
    EXPECT_EQ(Node("(p;;)", new QPixmap(1, 1)).toImageResource().toStringRef(), "");
    // A copy would delete its source's pictures, so it lives in storage released without its
    // destructor; its key is short enough to own no memory.
    const Holder<Node> second = fromImage;
    alignas(Node) unsigned char storage[sizeof(Node)];
    Node *copy = new (storage) Node(*fromImage);
    EXPECT_EQ(copy->getImage(false), fromImage->getImage(false));
    EXPECT_EQ(copy->getKey(), "(i;;)");
    EXPECT_EQ(copy->incrementReference(), 3);
}

TEST(ImageNodeConcurrency, HoldersComeAndGoOnAnyThread) {
    const int before = vort_test::CountedNode::destroyed.load();
    Holder<Node> shared(new vort_test::CountedNode("(t;;)", new QImage(solid(2, 2, 0))));
    std::vector<Holder<Node>> mine(4, shared);
    shared = Holder<Node>();  // the workers' holders are now the only ones
    vort_test::runTogether(4, [&](int t) {
        for (int i = 0; i < 2000; ++i) {
            Holder<Node> copy = mine[t];
            Holder<Node> another(copy.get());
        }
        mine[t] = Holder<Node>();
    });
    EXPECT_EQ(vort_test::CountedNode::destroyed.load(), before + 1);
}

TEST(Pixmap, BuildsFromColumnMajorPlanesInEveryDirection) {
    // Sample (x, y) of plane p of a 3-by-2 image is at p * 6 + x * 2 + y.
    std::vector<unsigned char> bytes(18);
    std::vector<double> doubles(18);
    for (int i = 0; i < 18; ++i) {
        bytes[i] = static_cast<unsigned char>(10 * i + 5);
        doubles[i] = bytes[i] / 255.0;
    }
    for (auto const &dir : {std::make_pair(0, 0), {1, 0}, {0, 1}, {-7, 2}}) {
        for (Pixmap const &pixmap :
             {fromPlanes(bytes.data(), Data::UInt8, 3, 2, dir.first, dir.second),
              fromPlanes(doubles.data(), Data::Double, 3, 2, dir.first, dir.second)}) {
            ASSERT_EQ(pixmap.getQImage()->size(), QSize(3, 2));
            for (int i = 0; i < 6; ++i) {
                const int x = dir.first != 0 ? 2 - i / 2 : i / 2;
                const int y = dir.second != 0 ? 1 - i % 2 : i % 2;
                EXPECT_EQ(pixmap.getQImage()->pixel(x, y),
                          qRgba(bytes[i], bytes[6 + i], bytes[12 + i], 255))
                    << i << " " << dir.first << "," << dir.second;
            }
        }
    }
    const double samples[][2] = {{0.5, 128},
                                 {1.5, 127},
                                 {-0.2, 206},
                                 {1e300, 0},
                                 {std::numeric_limits<double>::quiet_NaN(), 0}};
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
    EXPECT_EQ(copy.getCacheKey(), a.getCacheKey());
    EXPECT_TRUE(Pixmap() == Pixmap(&nullImage) && !(Pixmap() == a));
    EXPECT_TRUE(a == Pixmap(std::make_unique<QImage>(solid(3, 2, 0x80FF0000u)).get()));
    copy.getQImage()->setPixel(0, 0, 0xFF00FF00u);
    EXPECT_FALSE(a == copy);
    EXPECT_EQ(a.getQImage()->pixel(0, 0), 0x80FF0000u);
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>(0.0, 0.0, 3.0, 2.0));
    copy = Pixmap();
    EXPECT_EQ(copy.getBounds(), VORT::VTRect<double>());

    vort_test::ImageFolder folder;
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
    EXPECT_EQ(loaded.getWidth(), 1);
    EXPECT_EQ(before->convertToFormat(QImage::Format_ARGB32), red);
}
