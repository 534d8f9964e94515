// `VORT::DataObject`: a bag of values keyed by MIME type name, the form in which the tools
// exchange data.
//
// A `DataObject` keeps each value as it was given. It converts only where bytes go in
// (`setDataFromBytes`) or come out (`getDataAsBytes`), through the registry's type for the name;
// `setData` and `getData` convert nothing and don't check the value against the type, and no
// name is ever converted to another. A name that the registry doesn't know is plain bytes
// (`ByteArrayType`), so any MIME name can be carried.
//
// Thread safety: a `DataObject` has no lock and belongs to one thread at a time. Its first
// operation that takes a name makes the `MimeRegistry`, so the first of those in the process
// should come before threads compete (see MimeRegistry.h).
//
// Failure: `getData` of a name that isn't stored sets "Unsupported Mime Type" on the holder.
// Reading bytes reports the type's own errors through the holder; writing bytes lets
// `VORT::bad_any_cast` through when the stored value isn't of the name's type.
#ifndef VORT_BONES_DATAOBJECT_H
#define VORT_BONES_DATAOBJECT_H

#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/bones/StringID.h>
#include <vort/err/ErrorHolder.h>
#include <vort/vort_export.h>

#include <map>
#include <vector>

namespace VORT {

class VORT_EXPORT DataObject {
public:
    DataObject();
    DataObject(DataObject const &other);
    DataObject &operator=(DataObject const &other);
    virtual ~DataObject();

    bool hasData(StringID mimeType) const;
    // A copy of the stored value; a stored empty value comes back empty and without an error.
    // A name that isn't stored gives an empty `any` and "Unsupported Mime Type", even when the
    // registry knows the name.
    any getData(StringID mimeType, ErrorHolder &error) const;
    // Stores a copy of `value`, replacing what the name held; the old value is deleted after
    // the new one is in place.
    void setData(StringID mimeType, any const &value);
    // The stored value's byte form by the name's type; an empty array if the holder has an
    // error after the lookup, also one it held before the call. Throws `VORT::bad_any_cast`
    // when the stored value isn't of the name's type.
    ByteArray getDataAsBytes(StringID mimeType, ErrorHolder &error) const;
    // Reads `bytes` by the name's type and stores the result as `setData` does. The store isn't
    // guarded: when the read fails, the holder has the error and the name now holds an empty
    // `any`, replacing its old value, so `hasData` is true. A caller who doesn't want that tests
    // the holder and removes the data.
    void setDataFromBytes(StringID mimeType, ByteArray const &bytes, ErrorHolder &error);
    // All stored names, in the map's order, which is that of the interned ids and has nothing
    // to do with their text.
    std::vector<StringID> getDataTypes() const;
    void clear();

private:
    std::map<StringID, any> m_data;
};
}  // namespace VORT

#endif  // VORT_BONES_DATAOBJECT_H
