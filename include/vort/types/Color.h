// `VORT::Color`: the library's colour value, red, green, blue and alpha at eight bits each,
// packed into one 32-bit word 0xRRGGBBAA (red in the most significant byte, alpha in the least).
// Comparison is that of the words, so red weighs most and alpha least.
//
// The default colour is the word 0x00000001: black with an alpha byte of 1, nearly transparent,
// and neither opaque black nor zero. Components given as doubles have full scale 1.0; each is
// multiplied by 255, has 0.5 added, is truncated toward zero and is clamped to 0..255, so values
// beyond the range clamp rather than wrap (a NaN component gives 0).
//
// The stream operators carry the four components as doubles (`redF()` ... `alphaF()`) with single
// commas and no blanks, a form unlike `ColorType`'s string (see ColorType.h). Reading takes a
// double, then any one non-blank character, and so on, and passes the four doubles to `setRGBA`
// whatever the stream's flags say afterwards; the caller reads the flags.
//
// Thread safety: a plain value. Nothing here fails.
#ifndef VORT_TYPES_COLOR_H
#define VORT_TYPES_COLOR_H

#include <vort/vort_export.h>

#include <iosfwd>

namespace VORT {

class VORT_EXPORT Color {
public:
    Color() : m_rgba(0x00000001u) {}
    Color(double red, double green, double blue, double alpha) : m_rgba(0) {
        setRGBA(red, green, blue, alpha);
    }

    void setRGBA(double red, double green, double blue, double alpha) {
        m_rgba = (byteOf(red) << 24) | (byteOf(green) << 16) | (byteOf(blue) << 8) | byteOf(alpha);
    }
    // Stores the word 0xRRGGBBAA as it stands.
    void setRGBAFromPackedValue(unsigned int rgba) { m_rgba = rgba; }
    unsigned int getAsRgba() const { return m_rgba; }

    // The bytes, 0 to 255.
    int red() const { return static_cast<int>(m_rgba >> 24); }
    int green() const { return static_cast<int>((m_rgba >> 16) & 0xFFu); }
    int blue() const { return static_cast<int>((m_rgba >> 8) & 0xFFu); }
    int alpha() const { return static_cast<int>(m_rgba & 0xFFu); }

    // The bytes divided by 255.0.
    double redF() const { return red() / 255.0; }
    double greenF() const { return green() / 255.0; }
    double blueF() const { return blue() / 255.0; }
    double alphaF() const { return alpha() / 255.0; }

    bool operator==(Color const &other) const { return m_rgba == other.m_rgba; }
    bool operator!=(Color const &other) const { return m_rgba != other.m_rgba; }
    bool operator<(Color const &other) const { return m_rgba < other.m_rgba; }
    bool operator>(Color const &other) const { return m_rgba > other.m_rgba; }

private:
    // Times 255, plus 0.5, truncated and clamped. The clamp is decided on the double, so that a
    // component far out of range (or NaN) never reaches an int conversion that can't hold it.
    static unsigned int byteOf(double component) {
        const double scaled = component * 255.0 + 0.5;
        if (scaled >= 255.0) {
            return 255u;
        }
        return scaled >= 1.0 ? static_cast<unsigned int>(scaled) : 0u;
    }

    unsigned int m_rgba;
};

}  // namespace VORT

// "r,g,b,a" as doubles, with the stream's own settings.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::Color const &color);
// Double, character, double, character, double, character, double; then `setRGBA` with the
// four, whatever the stream's flags say. A component whose extraction failed counts as 0.
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::Color &color);

#endif  // VORT_TYPES_COLOR_H
