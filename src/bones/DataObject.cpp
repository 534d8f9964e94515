#include <vort/bones/DataObject.h>
#include <vort/bones/MimeRegistry.h>

namespace VORT {

DataObject::DataObject() = default;

DataObject::DataObject(DataObject const &other) = default;

DataObject &DataObject::operator=(DataObject const &other) = default;

DataObject::~DataObject() = default;

bool DataObject::hasData(StringID mimeType) const {
    return m_data.find(mimeType) != m_data.end();
}

any DataObject::getData(StringID mimeType, ErrorHolder &error) const {
    // Only to make sure that the registry exists: nothing here depends on the type.
    MimeRegistry::resolveMimeType(mimeType);
    const auto found = m_data.find(mimeType);
    if (found == m_data.end()) {
        error.setError(SimpleErrorDescription(CodeLocation(".\\bones\\DataObject", 84),
                                              "Unsupported Mime Type"));
        return any();
    }
    return found->second;
}

void DataObject::setData(StringID mimeType, any const &value) {
    // As above; the value isn't tested against the type.
    MimeRegistry::resolveMimeType(mimeType);
    const auto found = m_data.find(mimeType);
    if (found == m_data.end()) {
        m_data.emplace(mimeType, value);
    } else {
        // The assignment copies the new value in before it deletes the old one.
        found->second = value;
    }
}

ByteArray DataObject::getDataAsBytes(StringID mimeType, ErrorHolder &error) const {
    const TypeInfo type = MimeRegistry::resolveMimeType(mimeType);
    const any value = getData(mimeType, error);
    if (error.hasError()) {
        return ByteArray();
    }
    return type.convertToByteArray(value);
}

void DataObject::setDataFromBytes(StringID mimeType, ByteArray const &bytes, ErrorHolder &error) {
    const TypeInfo type = MimeRegistry::resolveMimeType(mimeType);
    setData(mimeType, type.convertFromByteArray(bytes, error));
}

std::vector<StringID> DataObject::getDataTypes() const {
    std::vector<StringID> names;
    names.reserve(m_data.size());
    for (auto const &entry : m_data) {
        names.push_back(entry.first);
    }
    return names;
}

void DataObject::clear() {
    m_data.clear();
}

}  // namespace VORT
