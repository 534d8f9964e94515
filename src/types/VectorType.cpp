#include <vort/types/VectorType.h>

namespace VORT {

VectorType::VectorType(TypeInfo const &elementType) : elementType(elementType) {}

VectorType::VectorType(VectorType const &other) = default;

VectorType &VectorType::operator=(VectorType const &other) = default;

VectorType::~VectorType() = default;

bool VectorType::isEqualTo(Type *other) const {
    return elementType == static_cast<VectorType *>(other)->elementType;
}

bool VectorType::isLessThan(Type *other) const {
    return elementType < static_cast<VectorType *>(other)->elementType;
}

std::string VectorType::concatenateStrings(std::vector<std::string> const &items,
                                           char separator) const {
    std::string text;
    for (std::size_t index = 0; index < items.size(); ++index) {
        if (index > 0) {
            text += separator;
        }
        for (char c : items[index]) {
            if (c == '\\' || c == separator) {
                text += '\\';
            }
            text += c;
        }
    }
    return text;
}

std::vector<std::string> VectorType::tokenizeString(std::string const &text, char separator,
                                                    ErrorHolder &error) const {
    std::vector<std::string> tokens;
    if (text.empty()) {
        return tokens;
    }
    std::string token;
    bool escaped = false;
    bool bad = false;
    for (char c : text) {
        if (escaped) {
            if (c != '\\' && c != separator) {
                bad = true;
                break;
            }
            token += c;
            escaped = false;
        } else if (c == '\\') {
            escaped = true;
        } else if (c == separator) {
            tokens.push_back(token);
            token.clear();
        } else {
            token += c;
        }
    }
    if (bad || escaped) {
        error.setError(SimpleErrorDescription(CodeLocation(".\\types\\VectorType", 112),
                                              "Can't convert string '" + text + "' to Vector"));
    }
    // The last token always counts, even empty: a text ending in the separator has an empty
    // last item.
    tokens.push_back(token);
    return tokens;
}

ByteArray VectorType::concatenateByteArrays(std::vector<ByteArray> const &) const {
    return ByteArray();
}

std::vector<ByteArray> VectorType::tokenizeByteArray(ByteArray const &, ErrorHolder &) const {
    return std::vector<ByteArray>();
}

template class TypeFamily<VectorType>;
template class SpecificVectorType<std::string>;

}  // namespace VORT
