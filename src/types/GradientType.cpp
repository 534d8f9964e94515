#include <vort/types/GradientType.h>

#include <sstream>

namespace VORT {

TypeInfo GradientType::Create() {
    return CreateTypeInfo(new GradientType);
}

any GradientType::convertFromString(std::string const &text, ErrorHolder &error) const {
    std::istringstream stream(text);
    Gradient gradient;
    Gradient::streamFromFile(stream, gradient);
    if (stream.fail()) {
        return cantConvert(text, "' to Gradient", CodeLocation(".\\types\\GradientType", 61),
                           error);
    }
    return any(gradient);
}

std::string GradientType::convertToString(any const &value) const {
    return any_cast<Gradient>(value).toString();
}

any GradientType::defaultConstruct() const {
    return any(Gradient());
}

bool GradientType::isEqualTo(Type *) const {
    return true;
}

bool GradientType::isLessThan(Type *) const {
    return false;
}

template class TypeFamily<GradientType>;

}  // namespace VORT
