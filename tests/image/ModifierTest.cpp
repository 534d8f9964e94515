#include "ImageTestSupport.h"
#include <vort/image/Manager.h>
#include <vort/image/Modifier.h>

#include <QtGui/QImage>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using VORT::Color;
using VORT::Holder;
using VORT::VTPoint;
using VORT::ImageCompositor::ColorModifier;
using VORT::ImageCompositor::computeImgLocation;
using VORT::ImageCompositor::convertImageToGrayscaleAndTint;
using VORT::ImageCompositor::DefaultModifier;
using VORT::ImageCompositor::isGrayscale;
using VORT::ImageCompositor::Location;
using VORT::ImageCompositor::Manager;
using VORT::ImageCompositor::Mode;
using VORT::ImageCompositor::Modifier;
using VORT::ImageCompositor::Node;
using VORT::ImageCompositor::QtModifier;
using vort_test::solid;

namespace {

QRgb tinted(QRgb pixel, Color const &color, bool toGrayscale, bool wholeImageGray = false) {
    // A one-pixel image is gray exactly when its pixel is, so a colourful neighbour keeps the
    // lift away when the test wants it away.
    QImage image = solid(2, 1, pixel);
    if (!wholeImageGray) {
        image.setPixel(1, 0, 0xFFFF0000u);
    }
    convertImageToGrayscaleAndTint(image, color, toGrayscale);
    return image.pixel(0, 0);
}

Color byteColor(int red, int green, int blue, int alpha) {
    Color color;
    color.setRGBAFromPackedValue(
        static_cast<unsigned int>(red) << 24 | static_cast<unsigned int>(green) << 16 |
        static_cast<unsigned int>(blue) << 8 | static_cast<unsigned int>(alpha));
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

TEST(ImageModifier, FindsTheAnchorPointsOfAnImage) {
    const QImage square = solid(4, 4, 0);
    const QImage wide = solid(7, 2, 0);
    struct Row {
        int code;
        VTPoint<int> square;
        VTPoint<int> wide;
    };
    const Row rows[] = {
        {Location::TopCenter, {1, 0}, {3, 0}},
        {Location::BottomCenter, {1, 3}, {3, 1}},
        {Location::LeftCenter, {0, 1}, {0, 0}},
        {Location::RightCenter, {3, 1}, {6, 0}},
        {Location::TopLeft, {0, 0}, {0, 0}},
        {Location::TopRight, {3, 0}, {6, 0}},
        {Location::BottomLeft, {0, 3}, {0, 1}},
        {Location::BottomRight, {3, 3}, {6, 1}},
        {Location::Center, {1, 1}, {3, 0}},
        {9, {0, 0}, {0, 0}},
        {-1, {0, 0}, {0, 0}},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(computeImgLocation(&square, Location(row.code)), row.square) << row.code;
        EXPECT_EQ(computeImgLocation(&wide, Location(row.code)), row.wide) << row.code;
        EXPECT_EQ(computeImgLocation(nullptr, Location(row.code)), VTPoint<int>(0, 0));
    }
}

TEST(ImageModifier, PlacesImageBByTheAnchorsAndNotTheOffset) {
    const QImage big = solid(10, 10, 0);
    const QImage small = solid(4, 4, 0);
    QtModifier modifier(Mode(Mode::SourceOver));
    EXPECT_EQ(modifier.getALoc(), Location(Location::TopLeft));
    EXPECT_EQ(modifier.getRenderLocation(&big, &small), VTPoint<int>(0, 0));

    modifier.setALoc(Location(Location::Center));
    modifier.setBLoc(Location(Location::Center));
    modifier.setOffsetXY(VTPoint<int>(50, -7));
    EXPECT_EQ(modifier.getOffsetXY(), VTPoint<int>(50, -7));
    EXPECT_EQ(modifier.getRenderLocation(&big, &small), VTPoint<int>(3, 3));
    EXPECT_EQ(modifier.getRenderLocation(&big, nullptr), VTPoint<int>(0, 0));
    EXPECT_EQ(modifier.getRenderLocation(nullptr, &small), VTPoint<int>(0, 0));

    // Clones take every setting, the mode included.
    std::unique_ptr<QtModifier> clone(modifier.clone("ignored"));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->getALoc(), Location(Location::Center));
    EXPECT_EQ(clone->getBLoc(), Location(Location::Center));
    EXPECT_EQ(clone->getOffsetXY(), VTPoint<int>(50, -7));
    EXPECT_EQ(clone->getMode(), Mode(Mode::SourceOver));

    RefusingModifier refusing;
    std::unique_ptr<RefusingModifier> accepted(refusing.clone(""));
    EXPECT_NE(accepted, nullptr);
    EXPECT_EQ(refusing.clone("anything"), nullptr);
}

TEST(ImageModifier, ReadsTheColourModifiersArguments) {
    struct Row {
        const char *args;
        unsigned int rgba;
        bool toGrayscale;
    };
    const Row rows[] = {
        {"1,0,0,1;1", 0xFF0000FFu, true},
        {"0,0.5,1,1;0", 0x0080FFFFu, false},
        {"0.2 0.4/0.6|1;1;trailing", 0x336699FFu, true},
        // No flag: the stream reads nothing and the prototype's flag stays.
        {"1,1,0,1", 0xFFFF00FFu, true},
        {"1,1,0,1;", 0xFFFF00FFu, true},
        // What the stream makes of a bad colour or flag: 0 for what failed, false for "x".
        {"junk;x", 0x00000000u, false},
        {"0.2;1", 0x33000000u, true},
        {"1,1,1,1;7", 0xFFFFFFFFu, true},
        // No text at all is a colour of four failed readings, not the prototype's white.
        {"", 0x00000000u, true},
    };
    const ColorModifier prototype(Color(1.0, 1.0, 1.0, 1.0), true);
    for (Row const &row : rows) {
        std::unique_ptr<ColorModifier> modifier(prototype.clone(row.args));
        ASSERT_NE(modifier, nullptr) << row.args;
        EXPECT_EQ(modifier->getColor().getAsRgba(), row.rgba) << row.args;
        EXPECT_EQ(modifier->getToGrayscale(), row.toGrayscale) << row.args;
        EXPECT_EQ(modifier->getMode(), Mode(Mode::SourceOver));
    }

    // A clone of a clone starts from its source's flag.
    std::unique_ptr<ColorModifier> first(prototype.clone("0,0,1,1;0"));
    std::unique_ptr<ColorModifier> second(first->clone("1,0,0,1"));
    EXPECT_EQ(second->getColor().getAsRgba(), 0xFF0000FFu);
    EXPECT_FALSE(second->getToGrayscale());
}

TEST(ImageModifier, TellsGrayscaleByRedAgainstGreenAndBlue) {
    struct Row {
        int red, green, blue;
        bool gray;
    };
    const Row rows[] = {
        {100, 104, 96, true}, {100, 105, 100, false}, {100, 104, 104, true},
        {100, 96, 100, true}, {100, 100, 95, false},  {100, 100, 105, false},
        {0, 4, 0, true},      {255, 250, 255, false}, {255, 251, 251, true},
    };
    for (Row const &row : rows) {
        QImage image = solid(3, 3, 0xFF808080u);
        image.setPixel(1, 2, qRgba(row.red, row.green, row.blue, 255));
        EXPECT_EQ(isGrayscale(image), row.gray) << row.red << "," << row.green << "," << row.blue;
    }
    EXPECT_TRUE(isGrayscale(QImage()));
    // Alpha plays no part, and other formats are judged by their colours.
    EXPECT_TRUE(isGrayscale(solid(2, 2, 0x00646464u)));
    EXPECT_TRUE(isGrayscale(solid(2, 2, 0xFF646464u, QImage::Format_RGB888)));
    EXPECT_FALSE(isGrayscale(solid(2, 2, 0xFF646400u, QImage::Format_RGB888)));
}

TEST(ImageModifier, TintsWithTheExactArithmetic) {
    const Color white(1.0, 1.0, 1.0, 1.0);
    struct Row {
        const char *what;
        QRgb pixel;
        Color color;
        bool toGrayscale;
        bool wholeImageGray;
        QRgb result;
    };
    const Row rows[] = {
        // A gray image is lifted by 130, unless the sum would reach 255.
        {"lifted", 0xFF323232u, white, true, true, 0xFFB4B4B4u},
        {"not lifted at 260", 0xFF828282u, white, true, true, 0xFF828282u},
        {"lifted to 254", 0xFF7C7C7Cu, white, true, true, 0xFFFEFEFEu},
        // A colourful image keeps its luminance, (200 * 11 + 100 * 16 + 50 * 5) / 32 = 126.
        {"luminance", 0xFFC86432u, white, true, false, 0xFF7E7E7Eu},
        {"luminance tinted", 0xFFC86432u, byteColor(255, 128, 0, 255), true, false, 0xFF7E3F00u},
        // The tint rounds half up: 127 and 128 times 1/255 give 0 and 1.
        {"rounding below", 0xFF7F7F7Fu, byteColor(1, 1, 1, 0), true, false, 0xFF000000u},
        {"rounding above", 0xFF808080u, byteColor(1, 1, 1, 0), true, false, 0xFF010101u},
        // Without grayscale, each channel scales by its own: 255 by 128 is 128.
        {"scaled", 0xFFFF80FFu, byteColor(128, 255, 0, 255), false, false, 0xFF808000u},
        {"white keeps", 0xFFC86432u, white, false, false, 0xFFC86432u},
        // Alpha stays, and premultiplied channels are taken as they stand.
        {"alpha", 0x80646464u, white, true, true, 0x80E6E6E6u},
        {"transparent", 0x00000000u, byteColor(10, 20, 30, 40), false, false, 0x00000000u},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(tinted(row.pixel, row.color, row.toGrayscale, row.wholeImageGray), row.result)
            << row.what;
    }
}

TEST(ImageModifier, TintWritesOnlyChangedPixelsAndConvertsOtherFormats) {
    const QImage original = solid(8, 8, 0xFFC86432u);
    QImage shared = original;
    convertImageToGrayscaleAndTint(shared, Color(1.0, 1.0, 1.0, 1.0), false);
    EXPECT_EQ(shared.constBits(), original.constBits());
    EXPECT_EQ(shared.cacheKey(), original.cacheKey());

    convertImageToGrayscaleAndTint(shared, Color(1.0, 1.0, 1.0, 1.0), true);
    EXPECT_NE(shared.constBits(), original.constBits());
    EXPECT_EQ(original.pixel(0, 0), 0xFFC86432u);
    EXPECT_EQ(shared.pixel(7, 7), 0xFF7E7E7Eu);

    // RGB32 keeps its alpha byte at 0xFF; 8-bit formats become ARGB32 first.
    QImage rgb = solid(1, 1, 0xFFC86432u, QImage::Format_RGB32);
    convertImageToGrayscaleAndTint(rgb, Color(1.0, 0.0, 0.0, 1.0), true);
    EXPECT_EQ(rgb.format(), QImage::Format_RGB32);
    EXPECT_EQ(reinterpret_cast<QRgb const *>(rgb.constBits())[0], 0xFF7E0000u);
    QImage gray8 = solid(1, 1, 0, QImage::Format_Grayscale8);
    gray8.fill(50);
    convertImageToGrayscaleAndTint(gray8, Color(1.0, 1.0, 1.0, 1.0), true);
    EXPECT_EQ(gray8.format(), QImage::Format_ARGB32);
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

    // A draws at the origin, then B over it: the canvas covers both.
    QtModifier over(Mode(Mode::SourceOver));
    QImage out;
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(out.format(), QImage::Format_ARGB32_Premultiplied);
    ASSERT_EQ(out.size(), QSize(4, 5));
    EXPECT_EQ(out.pixel(3, 0), 0xFFFF0000u);
    EXPECT_EQ(qRed(out.pixel(0, 0)), 127);
    EXPECT_EQ(qBlue(out.pixel(0, 0)), 128);
    // `pixel` gives the premultiplied channels as they stand.
    EXPECT_EQ(out.pixel(0, 4), 0x80000080u);
    EXPECT_EQ(out.pixel(3, 4), 0u);

    // B anchored by its bottom-right on A's: what falls outside is clipped.
    over.setALoc(Location(Location::BottomRight));
    over.setBLoc(Location(Location::BottomRight));
    ASSERT_TRUE(over.render(out, &red, &blue));
    EXPECT_EQ(out.size(), QSize(4, 5));
    EXPECT_EQ(out.pixel(0, 0), 0xFFFF0000u);
    EXPECT_EQ(qBlue(out.pixel(3, 0)), 128);
    EXPECT_EQ(out.pixel(3, 4), 0u);

    // A mode out of range draws as SourceOver and is SourceOver from then on.
    QtModifier invalid(Mode(24));
    ASSERT_TRUE(invalid.render(out, &red, nullptr));
    EXPECT_EQ(out.size(), QSize(4, 3));
    EXPECT_EQ(out.pixel(0, 0), 0xFFFF0000u);
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
    EXPECT_TRUE(over.render(out, nullptr, &blue));
    EXPECT_EQ(out.size(), QSize(2, 5));
    EXPECT_TRUE(over.render(out, &red, &empty));
}
