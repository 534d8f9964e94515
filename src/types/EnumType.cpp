#include "ByteForm_p.h"
#include <hsl/hsl.h>
#include <vort/types/EnumType.h>

#include <algorithm>

namespace VORT {

namespace {

const char *const kSource = ".\\types\\EnumType";

char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalIgnoringAsciiCase(std::string const &a, std::string const &b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return lowerAscii(x) == lowerAscii(y);
           });
}

}  // namespace

EnumType::EnumType() = default;

EnumType::EnumType(EnumType const &other) = default;

EnumType &EnumType::operator=(EnumType const &other) = default;

EnumType::~EnumType() = default;

any EnumType::ConvertFromInt(TypeInfo const &type, int value, ErrorHolder &error) {
    EnumType const *enumType = GetType(type);
    if (enumType->valueNames.count(value) == 0) {
        error.setError(
            SimpleErrorDescription(CodeLocation(kSource, 164), "Can't convert int to enum"));
        return any();
    }
    return enumType->convertFromInt(value);
}

any EnumType::ConvertFromInt(TypeInfo const &type, int value) {
    ErrorHolder error;
    any result = ConvertFromInt(type, value, error);
    if (error.hasError()) {
        hsl_assert(": !error.hasError(),", kSource, 181);
    }
    return result;
}

int EnumType::ConvertToInt(TypeInfo const &type, any const &value) {
    return GetType(type)->convertToInt(value);
}

std::vector<std::string> EnumType::GetValues(TypeInfo const &type) {
    std::vector<std::string> names;
    for (auto const &entry : GetType(type)->valueNames) {
        names.push_back(entry.second);
    }
    return names;
}

any EnumType::convertFromString(std::string const &text, ErrorHolder &error) const {
    for (auto const &entry : valueNames) {
        if (equalIgnoringAsciiCase(entry.second, text)) {
            return convertFromInt(entry.first);
        }
    }
    return cantConvert(text, "' to enum", CodeLocation(kSource, 76), error);
}

std::string EnumType::convertToString(any const &value) const {
    // A value without a name has no text of its own; the empty one keeps that fault harmless.
    const auto found = valueNames.find(convertToInt(value));
    return found != valueNames.end() ? found->second : std::string();
}

any EnumType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    int value;
    ByteForm::load(bytes.data(), value);
    return convertFromInt(value);
}

ByteArray EnumType::convertToByteArray(any const &value) const {
    unsigned char bytes[4];
    ByteForm::store(bytes, convertToInt(value));
    return ByteArray(bytes, 4u);
}

any EnumType::defaultConstruct() const {
    return convertFromInt(0);
}

bool EnumType::isEqualTo(Type *other) const {
    return valueNames == static_cast<EnumType *>(other)->valueNames;
}

bool EnumType::isLessThan(Type *other) const {
    return valueNames < static_cast<EnumType *>(other)->valueNames;
}

template class TypeFamily<EnumType>;

}  // namespace VORT
