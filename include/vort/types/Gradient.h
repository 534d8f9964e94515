// `VORT::Gradient`: a value that wraps one Qt gradient (linear, radial or conical) and shares it
// between copies, with what the Qt classes lack here: an empty state, creation on demand,
// changes of kind that keep what the kinds have in common, and a state byte that drives
// copy-on-write and guards a dying object. Also the enumeration classes `GradientTypes`,
// `GradientSpreadType` and `GradientCoordinateMode`, whose ints are Qt's own, and the
// gradient's three external forms (byte stream, text, configuration database).
//
// Sharing. Copying shares the Qt gradient and marks both sides (`StateCopiedFrom` on the copy,
// `StateCopiedTo` on the source, even though the source is const). The first write to either
// side then makes a private copy, whether or not the other side still exists: the decision rests
// on the state, not on a reference count. `StateDestroyed`, set by the destructor (or by
// `setState`), stops every on-demand creation and change of kind, and survives every other state
// change.
//
// Writing. An operation for any kind creates a linear gradient when none is held; one for a
// named kind (start point, radius, angle, ...) turns the gradient into that kind first, keeping
// stops, spread and coordinate mode (and the centre between radial and conical) and losing the
// rest. Reading never creates anything: without a gradient, or of another kind, it gives zeros.
// Stops are the ones that were set: a gradient without stops has none, although Qt would answer
// a black-to-white pair. A spread or coordinate mode that Qt doesn't know is ignored.
//
// Forms. The byte stream: a present byte (0 ends a null gradient's stream), the type, the stop
// count, each stop as a double and a 0xAARRGGBB word, the spread, the coordinate mode and the
// type's geometry (linear start and final stop; radial centre, focal point and radius; conical
// centre and angle), all least significant byte first. The text: the same values, stop colours
// as four bytes, every value followed by a comma: "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1," is a linear
// gradient from (0, 0) to (1, 1) with one opaque red stop at 0.5. Geometry read from text has
// the precision of a float.
//
// Thread safety: the Qt gradient's sharing count is atomic, the state byte is not, and copying
// writes the source's state: two threads must not copy, or write, the same `Gradient` at once.
//
// Failure: the byte stream has none (its reader trusts its buffer); the text reader reports only
// through the stream's flags; `fromXMLDB` answers false. The database form is read-only.
#ifndef VORT_TYPES_GRADIENT_H
#define VORT_TYPES_GRADIENT_H

#include <vort/bones/StringID.h>
#include <vort/bones/VHash.h>
#include <vort/types/Color.h>
#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

#include <QtCore/qglobal.h>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <iosfwd>
#include <string>
#include <utility>

QT_FORWARD_DECLARE_CLASS(QGradient)

namespace VORT {

// The kind of a gradient: Qt's `QGradient::Type`.
class VORT_EXPORT GradientTypes {
public:
    enum { Linear = 0, Radial = 1, Conical = 2, None = 3, Unknown = 5 };

    GradientTypes(int value) : m_value(value) {}  // NOLINT: stands for its int
    operator int() const { return m_value; }

    // The value of "Linear", "Radial", "Conical" or "None" in any case; `Unknown` for any other.
    static GradientTypes fromName(std::string const &name);
    // The names and their values, made at first use.
    static VHash<StringID, int> const &names();

private:
    int m_value;
};

// How a gradient fills beyond its ends: Qt's `QGradient::Spread`.
class VORT_EXPORT GradientSpreadType {
public:
    enum { Pad = 0, Reflect = 1, Repeat = 2, Unknown = 4 };

    GradientSpreadType(int value) : m_value(value) {}  // NOLINT: stands for its int
    operator int() const { return m_value; }

    // "Pad", "Reflect" or "Repeat" in any case; `Unknown` for any other.
    static GradientSpreadType fromName(std::string const &name);
    static VHash<StringID, int> const &names();

private:
    int m_value;
};

// What a gradient's coordinates refer to: Qt's `QGradient::CoordinateMode`.
class VORT_EXPORT GradientCoordinateMode {
public:
    enum { Logical = 0, StretchToDevice = 1, ObjectBounding = 2, Unknown = 4 };

    GradientCoordinateMode(int value) : m_value(value) {}  // NOLINT: stands for its int
    operator int() const { return m_value; }

    // "Logical", "StretchToDevice" or "ObjectBounding" in any case; `Unknown` for any other.
    static GradientCoordinateMode fromName(std::string const &name);
    static VHash<StringID, int> const &names();

private:
    int m_value;
};

namespace XMLDB {
class Database;
}

class VORT_EXPORT Gradient {
public:
    enum State : unsigned char {
        StateOwnData = 0x02,     // this object made the gradient it holds
        StateCopiedFrom = 0x04,  // it took its gradient from another
        StateCopiedTo = 0x08,    // another took its gradient
        StateDestroyed = 0x10,   // it is being or has been destroyed
    };

    // A null gradient, state 0.
    Gradient();
    // A private copy of `source`'s kind, stops, spread, coordinate mode and geometry; a source
    // of no kind gives a null gradient. Never shares with `source`.
    explicit Gradient(QGradient const &source);
    Gradient(Gradient const &other);
    Gradient &operator=(Gradient const &other);
    ~Gradient();

    // Shares `other`'s gradient, as assignment does; ignores null and this object itself.
    void copyFrom(Gradient const *other);
    // Releases the gradient; the state becomes 0 but for `StateDestroyed`.
    void clearAll();

    // Qt's comparison of the two gradients; a null gradient equals nothing, itself included.
    bool operator==(Gradient const &other) const;
    bool operator!=(Gradient const &other) const;

    // A gradient is held and has a kind.
    bool isValid() const;
    // The held gradient, owned by this object, or null.
    QGradient *getGradient() const;
    Gradient const *getThis() const { return this; }
    // Whether any bit of `mask` is set.
    bool hasState(unsigned char mask) const { return (state & mask) != 0; }
    void setState(unsigned char mask, bool on) const;

    // None when null.
    GradientTypes getGradientType() const;
    GradientSpreadType getSpread() const;
    GradientCoordinateMode getCoordinateMode() const;
    // Linear only.
    VTPoint<double> getStartPoint() const;
    VTPoint<double> getEndPoint() const;
    // Radial only.
    VTPoint<double> getFocalPoint() const;
    double getRadius() const;
    // Radial or conical.
    VTPoint<double> getCenterPoint() const;
    // Conical only.
    double getAngle() const;
    unsigned long getStopCount() const;
    // (0.0, `Color()`) past the end.
    std::pair<double, Color> getStopItem(unsigned long index) const;
    Color getStopItemColor(unsigned long index) const;
    double getStopItemPercent(unsigned long index) const;

    // Same as `setGradientType(type, true)`.
    void setGradientType(GradientTypes const &type);
    // Makes the gradient of `type` (none for `None` or an unknown value). With `reset` a held
    // gradient of that very kind is replaced by a default one; without it, it stays as it is,
    // and a gradient of another kind passes on its stops, spread and coordinate mode.
    void setGradientType(GradientTypes const &type, bool reset);
    void setSpread(GradientSpreadType const &spread);
    void setCoordinateMode(GradientCoordinateMode const &mode);
    // Qt's `setColorAt`: a position outside 0 to 1 is refused, one already present is recoloured.
    void addColorStop(double position, Color const &color);
    void addColorStop(std::pair<double, Color> const &stop);
    // Nothing without a gradient.
    void clearColorStops();
    // Nothing past the end.
    void setStopColor(unsigned long index, Color const &color);
    // Doesn't move the stop: adds one of its colour at `percent` and leaves the old one in
    // place, as the persistent forms expect.
    void setStopPercent(unsigned long index, double percent);
    void setStartPoint(VTPoint<double> const &point);
    void setEndPoint(VTPoint<double> const &point);
    void setFocalPoint(VTPoint<double> const &point);
    void setRadius(double radius);
    void setAngle(double angle);
    // The centre of a radial or conical gradient; any other becomes radial first.
    void setCenterPoint(VTPoint<double> const &point);

    // The byte stream's length: 1 for a null gradient.
    int getByteStreamSize() const;
    // `buffer` holds at least `getByteStreamSize()` bytes.
    void toByteStream(unsigned char *buffer) const;
    // Trusts its buffer: it must hold a whole stream as `toByteStream` writes it (a stop count
    // and a type that match the bytes that follow). Nothing is checked.
    void fromByteStream(unsigned char const *buffer);

    // The text form, with the stream's own settings for the doubles.
    static void streamToFile(std::ostream &stream, Gradient const &gradient);
    // Reads the text form. A first value other than 1 leaves `gradient` as it was; otherwise it
    // is rebuilt from what the stream gives, and the caller reads the stream's flags.
    static void streamFromFile(std::istream &stream, Gradient &gradient);
    std::string toString() const;
    // Writes "Someone sent: <text>" on the host's console, then reads the text form; failure
    // isn't reported.
    void fromString(std::string const &text);

    // Builds the gradient from the database tree at `path`: its attribute "gradient_type" (a
    // kind's name in any case), the children "CoordinateMode" and "Spread" (names), the
    // geometry of the kind ("PositionStart" and "PositionEnd", whose attributes "x" and "y" are
    // set only when both points read; "Focal", "Center" and the values of "Radius" and "Angle")
    // and the child elements "Stop" with the attributes "percent" (0.0 when missing, on the 0 to
    // 1 scale) and "color". `colorResolver`, when set, turns a colour text into a colour; when
    // it is empty or declines, the text is four numbers with full scale 1.0 and one character
    // between them, and anything else gives `Color()`. `numberResolver` does the same for a
    // point's coordinate texts (true for x), which are otherwise read as doubles. True when the
    // gradient ends up valid; false for a missing node, type, radius or angle, an unknown kind
    // or "None", and then the gradient may be partly filled.
    bool fromXMLDB(XMLDB::Database &database, std::string const &path,
                   boost::function<bool(std::string const &, Color &)> colorResolver,
                   boost::function<bool(std::string const &, bool, double &)> numberResolver);

private:
    void detach();
    void doDetach();
    bool ensureGradient();
    bool ensureGradientWithType(GradientTypes const &type);
    void doStateSetPreserveDestroyed(unsigned char value) const;

    boost::shared_ptr<QGradient> gradient;
    mutable unsigned char state;
};

}  // namespace VORT

// `Gradient::streamToFile` and `Gradient::streamFromFile`.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::Gradient const &gradient);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::Gradient &gradient);

#endif  // VORT_TYPES_GRADIENT_H
