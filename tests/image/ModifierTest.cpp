#include "ImageTestSupport.h"
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using VORT::Color;
using VORT::Holder;
using VORT::VTPoint;
using namespace VORT::ImageCompositor;
using vort_test::solid;

namespace {

Color bytes(unsigned int rgba) {
    Color color;
    color.setRGBAFromPackedValue(rgba);
    return color;
}

// Takes no argument text at all.
class RefusingModifier : public DefaultModifier {
public:
    RefusingModifier *clone(std::string const &args) const override {
        return static_cast<RefusingModifier *>(finishClone(new RefusingModifier, this, args));
    }

protected:
    bool doInitFromString(std::string &args) override { return args.empty(); }
};

}  // namespace

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
        EXPECT_EQ(computeImgLocation(&square, location), VTPoint<int>(p[0], p[1])) << code;
        EXPECT_EQ(computeImgLocation(&wide, location), VTPoint<int>(p[2], p[3])) << code;
        EXPECT_EQ(computeImgLocation(nullptr, location), VTPoint<int>(0, 0));
    }

    const QImage big = solid(10, 10, 0);
    QtModifier modifier(Mode(Mode::Screen));
    EXPECT_EQ(modifier.getRenderLocation(&big, &square), VTPoint<int>(0, 0));
    modifier.setALoc(Location(Location::Center));
    modifier.setBLoc(Location(Location::Center));
    modifier.setOffsetXY(VTPoint<int>(50, -7));
    EXPECT_EQ(modifier.getRenderLocation(&big, &square), VTPoint<int>(3, 3));
    EXPECT_EQ(modifier.getRenderLocation(nullptr, &square), VTPoint<int>(0, 0));

    // Clones take every setting, the mode included; a class may refuse the arguments.
    std::unique_ptr<QtModifier> clone(modifier.clone("ignored"));
    EXPECT_EQ(clone->getBLoc(), Location(Location::Center));
    EXPECT_EQ(clone->getOffsetXY(), VTPoint<int>(50, -7));
    EXPECT_EQ(clone->getMode(), Mode(Mode::Screen));
    EXPECT_NE(std::unique_ptr<Modifier>(RefusingModifier().clone("")), nullptr);
    EXPECT_EQ(RefusingModifier().clone("anything"), nullptr);
}

TEST(ImageModifier, ReadsTheColourModifiersArguments) {
    struct Row {
        const char *args;
        unsigned int rgba;
        bool toGrayscale;
    };
    const Row rows[] = {
        {"1,0,0,1;1", 0xFF0000FFu, true},
        {"0,0.5,1,1;0;rest", 0x0080FFFFu, false},
        {"0.2 0.4/0.6|1;1", 0x336699FFu, true},
        // No flag text: the stream reads nothing and the prototype's flag stays.
        {"1,1,0,1", 0xFFFF00FFu, true},
        // What the stream makes of the rest: 0 for a failed component, false for "x", and no
        // colour text at all is four failed components, not the prototype's white.
        {"junk;x", 0x00000000u, false},
        {"0.2;7", 0x33000000u, true},
        {"", 0x00000000u, true},
    };
    const ColorModifier prototype(Color(1.0, 1.0, 1.0, 1.0), true);
    for (Row const &row : rows) {
        std::unique_ptr<ColorModifier> modifier(prototype.clone(row.args));
        EXPECT_EQ(modifier->getColor().getAsRgba(), row.rgba) << row.args;
        EXPECT_EQ(modifier->getToGrayscale(), row.toGrayscale) << row.args;
    }
    // A clone of a clone starts from its source's flag.
    std::unique_ptr<ColorModifier> first(prototype.clone("0,0,1,1;0"));
    EXPECT_FALSE(std::unique_ptr<ColorModifier>(first->clone("1,0,0,1"))->getToGrayscale());
}

TEST(ImageModifier, TellsGrayscaleByRedAgainstGreenAndBlue) {
    const int rows[][4] = {{100, 104, 96, 1}, {100, 105, 100, 0}, {100, 104, 104, 1},
                           {100, 100, 95, 0}, {100, 100, 105, 0}, {255, 251, 251, 1}};
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
    struct Row {
        const char *what;
        QRgb pixel;
        Color color;
        bool toGrayscale;
        bool grayImage;  // otherwise a red neighbour keeps the lift away
        QRgb result;
    };
    const Row rows[] = {
        {"lifted by 130", 0xFF323232u, white, true, true, 0xFFB4B4B4u},
        {"not lifted to 260", 0xFF828282u, white, true, true, 0xFF828282u},
        {"lifted to 254", 0xFF7C7C7Cu, white, true, true, 0xFFFEFEFEu},
        // (200 * 11 + 100 * 16 + 50 * 5) / 32 = 126, then times 255 and 128 of 255.
        {"luminance", 0xFFC86432u, bytes(0xFF8000FFu), true, false, 0xFF7E3F00u},
        // 127 and 128 times 1/255 round to 0 and 1.
        {"round down", 0xFF7F7F7Fu, bytes(0x01010100u), true, false, 0xFF000000u},
        {"round up", 0xFF808080u, bytes(0x01010100u), true, false, 0xFF010101u},
        {"each channel", 0xFFFF80FFu, bytes(0x80FF00FFu), false, false, 0xFF808000u},
        {"white keeps", 0xFFC86432u, white, false, false, 0xFFC86432u},
        // Alpha stays; premultiplied channels are taken as they stand.
        {"alpha", 0x80646464u, white, true, true, 0x80E6E6E6u},
    };
    for (Row const &row : rows) {
        QImage image = solid(2, 1, row.pixel);
        if (!row.grayImage) {
            image.setPixel(1, 0, 0xFFFF0000u);
        }
        convertImageToGrayscaleAndTint(image, row.color, row.toGrayscale);
        EXPECT_EQ(image.pixel(0, 0), row.result) << row.what;
    }

    // A tint that changes nothing leaves a shared image shared.
    const QImage original = solid(8, 8, 0xFFC86432u);
    QImage shared = original;
    convertImageToGrayscaleAndTint(shared, white, false);
    EXPECT_EQ(shared.cacheKey(), original.cacheKey());
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
    const Holder<Node> redNode(new Node(red, new QImage(solid(4, 3, 0xFFFF0000u))));
    const Holder<Node> blueNode(new Node(blue, new QImage(solid(2, 5, 0x800000FFu))));
    ASSERT_TRUE(manager.storeImage(red, redNode));
    ASSERT_TRUE(manager.storeImage(blue, blueNode));

    // A at the origin, then B over it; `pixel` gives premultiplied channels as they stand.
    QtModifier over(Mode(Mode::SourceOver));
    QImage out;
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(out.format(), QImage::Format_ARGB32_Premultiplied);
    ASSERT_EQ(out.size(), QSize(4, 5));
    EXPECT_EQ(out.pixel(0, 0), 0xFF7F0080u);
    EXPECT_EQ(out.pixel(3, 0), 0xFFFF0000u);
    EXPECT_EQ(out.pixel(0, 4), 0x80000080u);
    EXPECT_EQ(out.pixel(3, 4), 0u);
    // B anchored by its bottom-right on A's: what falls outside is clipped.
    over.setALoc(Location(Location::BottomRight));
    over.setBLoc(Location(Location::BottomRight));
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(out.pixel(0, 0), 0xFFFF0000u);
    EXPECT_EQ(out.pixel(3, 0), 0xFF7F0080u);

    // A mode out of range draws as SourceOver and is SourceOver from then on.
    QtModifier invalid(Mode(24));
    ASSERT_TRUE(invalid.render(out, &red, nullptr));
    EXPECT_EQ(out.size(), QSize(4, 3));
    EXPECT_EQ(invalid.getMode(), Mode(Mode::SourceOver));
    QtModifier clear(Mode(Mode::Clear));
    ASSERT_TRUE(clear.render(out, &red, &blue));
    EXPECT_EQ(out.pixel(0, 0), 0u);

    // A missing operand fails; an empty or absent B does not.
    const std::string missing = "(modifier-test-missing;;)";
    const std::string empty;
    EXPECT_FALSE(over.render(out, &red, &missing));
    EXPECT_FALSE(over.render(out, &missing, &blue));
    EXPECT_FALSE(over.render(out, nullptr, nullptr));
    EXPECT_TRUE(over.render(out, &red, &empty));
    EXPECT_TRUE(over.render(out, nullptr, &blue));
    EXPECT_EQ(out.size(), QSize(2, 5));
}
