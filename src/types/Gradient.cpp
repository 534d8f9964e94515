#include "ByteForm_p.h"
#include <hsl/hsl.h>
#include <vort/types/Gradient.h>
#include <vort/xml/Database.h>

#include <QtGui/QColor>
#include <QtGui/QConicalGradient>
#include <QtGui/QLinearGradient>
#include <QtGui/QRadialGradient>

#include <cstdint>
#include <istream>
#include <ostream>
#include <sstream>

namespace VORT {

namespace {

// Looks a name up exactly first, then in any case.
int lookUp(VHash<StringID, int> const &table, std::string const &name, int unknown) {
    const StringID id(name);
    const auto exact = table.constFind(id);
    if (exact != table.constEnd()) {
        return *exact;
    }
    for (auto entry = table.constBegin(); entry != table.constEnd(); ++entry) {
        if (entry.key().equalsIgnoreCase(id)) {
            return *entry;
        }
    }
    return unknown;
}

bool isKnownSpread(int spread) {
    return spread >= QGradient::PadSpread && spread <= QGradient::RepeatSpread;
}

bool isKnownMode(int mode) {
    return mode >= QGradient::LogicalMode && mode <= QGradient::ObjectMode;
}

QColor toQColor(Color const &color) {
    return QColor(color.red(), color.green(), color.blue(), color.alpha());
}

Color toColor(QColor const &color) {
    return Color(color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0,
                 color.alpha() / 255.0);
}

VTPoint<double> toPoint(QPointF const &point) {
    return VTPoint<double>(point.x(), point.y());
}

QLinearGradient *linear(QGradient *gradient) {
    return static_cast<QLinearGradient *>(gradient);
}

QRadialGradient *radial(QGradient *gradient) {
    return static_cast<QRadialGradient *>(gradient);
}

QConicalGradient *conical(QGradient *gradient) {
    return static_cast<QConicalGradient *>(gradient);
}

QLinearGradient const *linear(QGradient const *gradient) {
    return static_cast<QLinearGradient const *>(gradient);
}

QRadialGradient const *radial(QGradient const *gradient) {
    return static_cast<QRadialGradient const *>(gradient);
}

QConicalGradient const *conical(QGradient const *gradient) {
    return static_cast<QConicalGradient const *>(gradient);
}

// The stops that were set. Qt answers a black-to-white pair for a gradient without any, so that
// pair is checked: a colour added at 0.5 joins the pair when it was set, and stands alone when
// it wasn't.
QGradientStops stopsSet(QGradient const &gradient) {
    QGradientStops stops = gradient.stops();
    if (stops.size() == 2 && stops[0] == QGradientStop(0.0, QColor(Qt::black)) &&
        stops[1] == QGradientStop(1.0, QColor(Qt::white))) {
        QGradient probe = gradient;
        probe.setColorAt(0.5, QColor(Qt::black));
        if (probe.stops().size() == 1) {
            stops.clear();
        }
    }
    return stops;
}

QGradient *makeGradient(int type) {
    switch (type) {
        case GradientTypes::Linear:
            return new QLinearGradient;
        case GradientTypes::Radial:
            return new QRadialGradient;
        case GradientTypes::Conical:
            return new QConicalGradient;
        default:
            return nullptr;
    }
}

// A new gradient of `source`'s kind with its stops, spread, coordinate mode and geometry.
QGradient *copyOf(QGradient const &source) {
    QGradient *const copy = makeGradient(source.type());
    if (copy == nullptr) {
        return nullptr;
    }
    QGradient const *const from = &source;
    copy->setStops(stopsSet(source));
    copy->setSpread(source.spread());
    copy->setCoordinateMode(source.coordinateMode());
    switch (source.type()) {
        case QGradient::LinearGradient:
            linear(copy)->setStart(linear(from)->start());
            linear(copy)->setFinalStop(linear(from)->finalStop());
            break;
        case QGradient::RadialGradient:
            radial(copy)->setCenter(radial(from)->center());
            radial(copy)->setFocalPoint(radial(from)->focalPoint());
            radial(copy)->setRadius(radial(from)->radius());
            break;
        default:
            conical(copy)->setCenter(conical(from)->center());
            conical(copy)->setAngle(conical(from)->angle());
            break;
    }
    return copy;
}

// The geometry of a kind, in the order of both persistent forms.
int geometryCount(int type) {
    switch (type) {
        case GradientTypes::Linear:
            return 4;
        case GradientTypes::Radial:
            return 5;
        case GradientTypes::Conical:
            return 3;
        default:
            return 0;
    }
}

void getGeometry(QGradient *gradient, double *values) {
    switch (gradient->type()) {
        case QGradient::LinearGradient:
            values[0] = linear(gradient)->start().x();
            values[1] = linear(gradient)->start().y();
            values[2] = linear(gradient)->finalStop().x();
            values[3] = linear(gradient)->finalStop().y();
            break;
        case QGradient::RadialGradient:
            values[0] = radial(gradient)->center().x();
            values[1] = radial(gradient)->center().y();
            values[2] = radial(gradient)->focalPoint().x();
            values[3] = radial(gradient)->focalPoint().y();
            values[4] = radial(gradient)->radius();
            break;
        default:
            values[0] = conical(gradient)->center().x();
            values[1] = conical(gradient)->center().y();
            values[2] = conical(gradient)->angle();
            break;
    }
}

void setGeometry(QGradient *gradient, double const *values) {
    switch (gradient->type()) {
        case QGradient::LinearGradient:
            linear(gradient)->setStart(values[0], values[1]);
            linear(gradient)->setFinalStop(values[2], values[3]);
            break;
        case QGradient::RadialGradient:
            radial(gradient)->setCenter(values[0], values[1]);
            radial(gradient)->setFocalPoint(values[2], values[3]);
            radial(gradient)->setRadius(values[4]);
            break;
        default:
            conical(gradient)->setCenter(values[0], values[1]);
            conical(gradient)->setAngle(values[2]);
            break;
    }
}

void applySpreadAndMode(QGradient *gradient, int spread, int mode) {
    if (isKnownSpread(spread)) {
        gradient->setSpread(static_cast<QGradient::Spread>(spread));
    }
    if (isKnownMode(mode)) {
        gradient->setCoordinateMode(static_cast<QGradient::CoordinateMode>(mode));
    }
}

using NumberResolver = boost::function<bool(std::string const &, bool, double &)>;

double readCoordinate(std::string const &text, bool isX, NumberResolver const &resolver) {
    double value = 0.0;
    if (resolver && resolver(text, isX, value)) {
        return value;
    }
    std::istringstream stream(text);
    value = 0.0;
    stream >> value;
    return value;
}

// A point is a node with both attributes "x" and "y".
bool readPoint(XMLDB::Database &database, std::string const &key, NumberResolver const &resolver,
               VTPoint<double> &point) {
    const XMLDB::DataNode::NodePtr node = database.getData(key);
    if (!node || !node->hasAttribute("x") || !node->hasAttribute("y")) {
        return false;
    }
    point.x = readCoordinate(node->getAttribute<std::string>("x"), true, resolver);
    point.y = readCoordinate(node->getAttribute<std::string>("y"), false, resolver);
    return true;
}

// Four numbers of full scale 1.0 with one character between them; anything less is `Color()`.
Color parseColor(std::string const &text) {
    std::istringstream stream(text);
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 0.0;
    char separator = 0;
    stream >> red >> separator >> green >> separator >> blue >> separator >> alpha;
    return stream.fail() ? Color() : Color(red, green, blue, alpha);
}

}  // namespace

GradientTypes GradientTypes::fromName(std::string const &name) {
    return lookUp(names(), name, Unknown);
}

VHash<StringID, int> const &GradientTypes::names() {
    static const VHash<StringID, int> table = {{StringID("Linear"), Linear},
                                               {StringID("Radial"), Radial},
                                               {StringID("Conical"), Conical},
                                               {StringID("None"), None}};
    return table;
}

GradientSpreadType GradientSpreadType::fromName(std::string const &name) {
    return lookUp(names(), name, Unknown);
}

VHash<StringID, int> const &GradientSpreadType::names() {
    static const VHash<StringID, int> table = {
        {StringID("Pad"), Pad}, {StringID("Reflect"), Reflect}, {StringID("Repeat"), Repeat}};
    return table;
}

GradientCoordinateMode GradientCoordinateMode::fromName(std::string const &name) {
    return lookUp(names(), name, Unknown);
}

VHash<StringID, int> const &GradientCoordinateMode::names() {
    static const VHash<StringID, int> table = {{StringID("Logical"), Logical},
                                               {StringID("StretchToDevice"), StretchToDevice},
                                               {StringID("ObjectBounding"), ObjectBounding}};
    return table;
}

Gradient::Gradient() : state(0) {}

Gradient::Gradient(QGradient const &source) : gradient(copyOf(source)), state(0) {}

Gradient::Gradient(Gradient const &other)
    : gradient(other.gradient), state(other.gradient ? StateCopiedFrom : 0) {
    other.state |= StateCopiedTo;
}

Gradient &Gradient::operator=(Gradient const &other) {
    gradient = other.gradient;
    doStateSetPreserveDestroyed(gradient ? StateCopiedFrom : 0);
    other.state |= StateCopiedTo;
    return *this;
}

Gradient::~Gradient() {
    gradient.reset();
    state = StateDestroyed;
}

void Gradient::copyFrom(Gradient const *other) {
    if (other != nullptr && other != this) {
        *this = *other;
    }
}

void Gradient::clearAll() {
    gradient.reset();
    doStateSetPreserveDestroyed(0);
}

bool Gradient::operator==(Gradient const &other) const {
    return gradient && other.gradient && *gradient == *other.gradient;
}

bool Gradient::operator!=(Gradient const &other) const {
    return !gradient || !other.gradient || !(*gradient == *other.gradient);
}

bool Gradient::isValid() const {
    return gradient && gradient->type() != QGradient::NoGradient;
}

QGradient *Gradient::getGradient() const {
    return gradient.get();
}

void Gradient::setState(unsigned char mask, bool on) const {
    state =
        on ? static_cast<unsigned char>(state | mask) : static_cast<unsigned char>(state & ~mask);
}

void Gradient::doStateSetPreserveDestroyed(unsigned char value) const {
    state = static_cast<unsigned char>(value | (state & StateDestroyed));
}

GradientTypes Gradient::getGradientType() const {
    return gradient ? static_cast<int>(gradient->type()) : static_cast<int>(GradientTypes::None);
}

GradientSpreadType Gradient::getSpread() const {
    return gradient ? static_cast<int>(gradient->spread()) : 0;
}

GradientCoordinateMode Gradient::getCoordinateMode() const {
    return gradient ? static_cast<int>(gradient->coordinateMode()) : 0;
}

VTPoint<double> Gradient::getStartPoint() const {
    return getGradientType() == GradientTypes::Linear ? toPoint(linear(gradient.get())->start())
                                                      : VTPoint<double>();
}

VTPoint<double> Gradient::getEndPoint() const {
    return getGradientType() == GradientTypes::Linear ? toPoint(linear(gradient.get())->finalStop())
                                                      : VTPoint<double>();
}

VTPoint<double> Gradient::getFocalPoint() const {
    return getGradientType() == GradientTypes::Radial
               ? toPoint(radial(gradient.get())->focalPoint())
               : VTPoint<double>();
}

VTPoint<double> Gradient::getCenterPoint() const {
    switch (getGradientType()) {
        case GradientTypes::Radial:
            return toPoint(radial(gradient.get())->center());
        case GradientTypes::Conical:
            return toPoint(conical(gradient.get())->center());
        default:
            return VTPoint<double>();
    }
}

double Gradient::getRadius() const {
    return getGradientType() == GradientTypes::Radial ? radial(gradient.get())->radius() : 0.0;
}

double Gradient::getAngle() const {
    return getGradientType() == GradientTypes::Conical ? conical(gradient.get())->angle() : 0.0;
}

unsigned long Gradient::getStopCount() const {
    return gradient ? static_cast<unsigned long>(stopsSet(*gradient).size()) : 0;
}

std::pair<double, Color> Gradient::getStopItem(unsigned long index) const {
    if (gradient) {
        const QGradientStops stops = stopsSet(*gradient);
        if (index < static_cast<unsigned long>(stops.size())) {
            QGradientStop const &stop = stops[static_cast<qsizetype>(index)];
            return std::make_pair(stop.first, toColor(stop.second));
        }
    }
    return std::make_pair(0.0, Color());
}

Color Gradient::getStopItemColor(unsigned long index) const {
    return getStopItem(index).second;
}

double Gradient::getStopItemPercent(unsigned long index) const {
    return getStopItem(index).first;
}

void Gradient::setGradientType(GradientTypes const &type) {
    setGradientType(type, true);
}

void Gradient::setGradientType(GradientTypes const &type, bool reset) {
    const bool same = gradient && static_cast<int>(gradient->type()) == type;
    if (same && !reset) {
        return;
    }
    QGradient *const made = makeGradient(type);
    if (!same && !reset && gradient && made != nullptr) {
        // Between kinds only what they all have crosses, and the centre between the two that
        // have one.
        made->setStops(stopsSet(*gradient));
        made->setSpread(gradient->spread());
        made->setCoordinateMode(gradient->coordinateMode());
        if (type == GradientTypes::Radial && gradient->type() == QGradient::ConicalGradient) {
            radial(made)->setCenter(conical(gradient.get())->center());
        } else if (type == GradientTypes::Conical &&
                   gradient->type() == QGradient::RadialGradient) {
            conical(made)->setCenter(radial(gradient.get())->center());
        }
    }
    gradient.reset(made);
    doStateSetPreserveDestroyed(gradient ? StateOwnData : 0);
}

void Gradient::detach() {
    if (gradient && hasState(StateCopiedFrom | StateCopiedTo)) {
        doDetach();
    }
}

void Gradient::doDetach() {
    if (gradient) {
        doStateSetPreserveDestroyed(StateOwnData);
        gradient.reset(copyOf(*gradient));
    } else {
        doStateSetPreserveDestroyed(0);
    }
}

bool Gradient::ensureGradient() {
    if (!gradient && !hasState(StateDestroyed)) {
        setGradientType(GradientTypes::Linear, true);
    }
    return static_cast<bool>(gradient);
}

bool Gradient::ensureGradientWithType(GradientTypes const &type) {
    if (hasState(StateDestroyed)) {
        return getGradientType() == type;
    }
    if (!gradient) {
        setGradientType(type, true);
    }
    if (getGradientType() != type) {
        setGradientType(type, false);
    }
    return gradient && getGradientType() == type;
}

void Gradient::setSpread(GradientSpreadType const &spread) {
    if (!isKnownSpread(spread) || !ensureGradient()) {
        return;
    }
    detach();
    gradient->setSpread(static_cast<QGradient::Spread>(static_cast<int>(spread)));
}

void Gradient::setCoordinateMode(GradientCoordinateMode const &mode) {
    if (!isKnownMode(mode) || !ensureGradient()) {
        return;
    }
    detach();
    gradient->setCoordinateMode(static_cast<QGradient::CoordinateMode>(static_cast<int>(mode)));
}

void Gradient::addColorStop(double position, Color const &color) {
    if (!ensureGradient()) {
        return;
    }
    detach();
    gradient->setColorAt(position, toQColor(color));
}

void Gradient::addColorStop(std::pair<double, Color> const &stop) {
    addColorStop(stop.first, stop.second);
}

void Gradient::clearColorStops() {
    if (!gradient) {
        return;
    }
    detach();
    gradient->setStops(QGradientStops());
}

void Gradient::setStopColor(unsigned long index, Color const &color) {
    if (!ensureGradient()) {
        return;
    }
    detach();
    QGradientStops stops = stopsSet(*gradient);
    if (index < static_cast<unsigned long>(stops.size())) {
        stops[static_cast<qsizetype>(index)].second = toQColor(color);
    }
    gradient->setStops(stops);
}

void Gradient::setStopPercent(unsigned long index, double percent) {
    if (!ensureGradient()) {
        return;
    }
    detach();
    const QGradientStops stops = stopsSet(*gradient);
    if (index >= static_cast<unsigned long>(stops.size())) {
        return;
    }
    gradient->setColorAt(percent, stops[static_cast<qsizetype>(index)].second);
}

void Gradient::setStartPoint(VTPoint<double> const &point) {
    if (!ensureGradientWithType(GradientTypes::Linear)) {
        return;
    }
    detach();
    linear(gradient.get())->setStart(point.x, point.y);
}

void Gradient::setEndPoint(VTPoint<double> const &point) {
    if (!ensureGradientWithType(GradientTypes::Linear)) {
        return;
    }
    detach();
    linear(gradient.get())->setFinalStop(point.x, point.y);
}

void Gradient::setFocalPoint(VTPoint<double> const &point) {
    if (!ensureGradientWithType(GradientTypes::Radial)) {
        return;
    }
    detach();
    radial(gradient.get())->setFocalPoint(point.x, point.y);
}

void Gradient::setRadius(double radius) {
    if (!ensureGradientWithType(GradientTypes::Radial)) {
        return;
    }
    detach();
    radial(gradient.get())->setRadius(radius);
}

void Gradient::setAngle(double angle) {
    if (!ensureGradientWithType(GradientTypes::Conical)) {
        return;
    }
    detach();
    conical(gradient.get())->setAngle(angle);
}

void Gradient::setCenterPoint(VTPoint<double> const &point) {
    const int type = getGradientType();
    if (type != GradientTypes::Radial && type != GradientTypes::Conical &&
        !ensureGradientWithType(GradientTypes::Radial)) {
        return;
    }
    detach();
    if (gradient->type() == QGradient::ConicalGradient) {
        conical(gradient.get())->setCenter(point.x, point.y);
    } else {
        radial(gradient.get())->setCenter(point.x, point.y);
    }
}

int Gradient::getByteStreamSize() const {
    if (!gradient) {
        return 1;
    }
    return 17 + 12 * static_cast<int>(getStopCount()) +
           8 * geometryCount(static_cast<int>(gradient->type()));
}

void Gradient::toByteStream(unsigned char *buffer) const {
    if (!gradient) {
        buffer[0] = 0;
        return;
    }
    unsigned char *at = buffer;
    *at++ = 1;
    ByteForm::store32(at, static_cast<std::uint32_t>(gradient->type()));
    at += 4;
    const QGradientStops stops = stopsSet(*gradient);
    ByteForm::store32(at, static_cast<std::uint32_t>(stops.size()));
    at += 4;
    for (QGradientStop const &stop : stops) {
        ByteForm::store(at, stop.first);
        ByteForm::store32(at + 8, stop.second.rgba());
        at += 12;
    }
    ByteForm::store32(at, static_cast<std::uint32_t>(gradient->spread()));
    ByteForm::store32(at + 4, static_cast<std::uint32_t>(gradient->coordinateMode()));
    at += 8;
    double geometry[5];
    getGeometry(gradient.get(), geometry);
    const int count = geometryCount(static_cast<int>(gradient->type()));
    for (int index = 0; index < count; ++index) {
        ByteForm::store(at + 8 * index, geometry[index]);
    }
}

void Gradient::fromByteStream(unsigned char const *buffer) {
    if (buffer[0] == 0) {
        gradient.reset();
        doStateSetPreserveDestroyed(0);
        return;
    }
    const int type = static_cast<int>(ByteForm::load32(buffer + 1));
    setGradientType(type, true);
    const std::uint32_t count = ByteForm::load32(buffer + 5);
    unsigned char const *at = buffer + 9;
    QGradientStops stops;
    stops.reserve(static_cast<qsizetype>(count));
    for (std::uint32_t index = 0; index < count; ++index) {
        double position;
        ByteForm::load(at, position);
        stops.append(QGradientStop(position, QColor::fromRgba(ByteForm::load32(at + 8))));
        at += 12;
    }
    const int spread = static_cast<int>(ByteForm::load32(at));
    const int mode = static_cast<int>(ByteForm::load32(at + 4));
    at += 8;
    if (!gradient) {
        return;
    }
    gradient->setStops(stops);
    applySpreadAndMode(gradient.get(), spread, mode);
    double geometry[5];
    for (int index = 0; index < geometryCount(type); ++index) {
        ByteForm::load(at + 8 * index, geometry[index]);
    }
    setGeometry(gradient.get(), geometry);
}

void Gradient::streamToFile(std::ostream &stream, Gradient const &gradient) {
    // Integers in plain decimal whatever the stream's flags; doubles with its settings.
    QGradient *const held = gradient.gradient.get();
    if (held == nullptr) {
        stream << "0,";
        return;
    }
    const int type = static_cast<int>(held->type());
    const QGradientStops stops = stopsSet(*held);
    stream << "1," << std::to_string(type) << ',' << std::to_string(stops.size()) << ',';
    for (QGradientStop const &stop : stops) {
        QColor const &color = stop.second;
        stream << stop.first << ',' << std::to_string(color.red()) << ','
               << std::to_string(color.green()) << ',' << std::to_string(color.blue()) << ','
               << std::to_string(color.alpha()) << ',';
    }
    stream << std::to_string(static_cast<int>(held->spread())) << ','
           << std::to_string(static_cast<int>(held->coordinateMode())) << ',';
    double geometry[5];
    getGeometry(held, geometry);
    for (int index = 0; index < geometryCount(type); ++index) {
        stream << geometry[index] << ',';
    }
}

void Gradient::streamFromFile(std::istream &stream, Gradient &gradient) {
    // Values that don't extract count as 0. The separators are taken whatever they are.
    char separator = 0;
    int present = 0;
    stream >> present >> separator;
    if (present != 1) {
        return;
    }
    unsigned int type = 0;
    stream >> type >> separator;
    gradient.setGradientType(static_cast<int>(type), true);

    unsigned int count = 0;
    stream >> count >> separator;
    QGradientStops stops;
    // Only whole stops count, and the count is only a bound: once the stream has failed no
    // further stop can be read.
    for (unsigned int index = 0; index < count; ++index) {
        double position = 0.0;
        int red = 0;
        int green = 0;
        int blue = 0;
        int alpha = 0;
        stream >> position >> separator >> red >> separator >> green >> separator >> blue >>
            separator >> alpha;
        const bool whole = !stream.fail();
        stream >> separator;
        if (!whole) {
            break;
        }
        QColor color;
        color.setRgb(red, green, blue, alpha);
        stops.append(QGradientStop(position, color));
    }
    unsigned int spread = 0;
    unsigned int mode = 0;
    stream >> spread >> separator >> mode >> separator;

    QGradient *const held = gradient.gradient.get();
    if (held == nullptr) {
        return;
    }
    held->setStops(stops);
    applySpreadAndMode(held, static_cast<int>(spread), static_cast<int>(mode));
    // Geometry goes through floats, as the text form has always been read.
    double geometry[5] = {0, 0, 0, 0, 0};
    for (int index = 0; index < geometryCount(static_cast<int>(held->type())); ++index) {
        float value = 0.0f;
        stream >> value >> separator;
        geometry[index] = value;
    }
    setGeometry(held, geometry);
}

std::string Gradient::toString() const {
    std::ostringstream stream;
    streamToFile(stream, *this);
    return stream.str();
}

void Gradient::fromString(std::string const &text) {
    std::istringstream stream(text);
    hslPrintf("Someone sent: %s\n", text.c_str());
    streamFromFile(stream, *this);
}

bool Gradient::fromXMLDB(
    XMLDB::Database &database, std::string const &path,
    boost::function<bool(std::string const &, Color &)> colorResolver,
    boost::function<bool(std::string const &, bool, double &)> numberResolver) {
    const XMLDB::DataNode::NodePtr node = database.getData(path);
    if (!node) {
        return false;
    }
    bool found = false;
    const std::string typeName = node->getAttribute<std::string>("gradient_type", "", &found);
    const int type = GradientTypes::fromName(typeName);
    if (!found || type == GradientTypes::Unknown) {
        return false;
    }
    setGradientType(type, true);

    if (const XMLDB::DataNode::NodePtr mode = database.getData(path + "/CoordinateMode")) {
        const int value = GradientCoordinateMode::fromName(mode->getValue<std::string>());
        if (value != GradientCoordinateMode::Unknown) {
            setCoordinateMode(value);
        }
    }
    if (const XMLDB::DataNode::NodePtr spread = database.getData(path + "/Spread")) {
        const int value = GradientSpreadType::fromName(spread->getValue<std::string>());
        if (value != GradientSpreadType::Unknown) {
            setSpread(value);
        }
    }

    VTPoint<double> point;
    switch (type) {
        case GradientTypes::Linear: {
            VTPoint<double> end;
            if (readPoint(database, path + "/PositionStart", numberResolver, point) &&
                readPoint(database, path + "/PositionEnd", numberResolver, end)) {
                setStartPoint(point);
                setEndPoint(end);
            }
            break;
        }
        case GradientTypes::Radial: {
            if (readPoint(database, path + "/Focal", numberResolver, point)) {
                setFocalPoint(point);
            }
            const XMLDB::DataNode::NodePtr radius = database.getData(path + "/Radius");
            if (!radius) {
                return false;
            }
            setRadius(radius->getValue<double>());
            break;
        }
        case GradientTypes::Conical: {
            const XMLDB::DataNode::NodePtr angle = database.getData(path + "/Angle");
            if (!angle) {
                return false;
            }
            setAngle(angle->getValue<double>());
            break;
        }
        default:
            return false;
    }
    if (type != GradientTypes::Linear &&
        readPoint(database, path + "/Center", numberResolver, point)) {
        setCenterPoint(point);
    }

    // Several stops of one file make a list under the first one's name.
    const XMLDB::DataNode::NodePtr first = node->getElement("Stop");
    XMLDB::DataNode::NodeVector single;
    XMLDB::DataNode::NodeVector const *stops = &single;
    if (first && first->isNodeList()) {
        stops = first->getNodeList();
    } else if (first) {
        single.push_back(first);
    }
    for (XMLDB::DataNode::NodePtr const &stop : *stops) {
        const double percent = stop->getAttribute<double>("percent", 0.0);
        const std::string colorText = stop->getAttribute<std::string>("color");
        Color color;
        if (!colorResolver || !colorResolver(colorText, color)) {
            color = parseColor(colorText);
        }
        addColorStop(percent, color);
    }
    return isValid();
}

}  // namespace VORT

std::ostream &operator<<(std::ostream &stream, VORT::Gradient const &gradient) {
    VORT::Gradient::streamToFile(stream, gradient);
    return stream;
}

std::istream &operator>>(std::istream &stream, VORT::Gradient &gradient) {
    VORT::Gradient::streamFromFile(stream, gradient);
    return stream;
}
