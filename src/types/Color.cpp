#include <vort/types/Color.h>

#include <istream>
#include <ostream>

std::ostream &operator<<(std::ostream &stream, VORT::Color const &color) {
    return stream << color.redF() << ',' << color.greenF() << ',' << color.blueF() << ','
                  << color.alphaF();
}

std::istream &operator>>(std::istream &stream, VORT::Color &color) {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 0.0;
    char separator = '\0';
    stream >> red >> separator >> green >> separator >> blue >> separator >> alpha;
    color.setRGBA(red, green, blue, alpha);
    return stream;
}
