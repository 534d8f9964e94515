// `VORT::MimeRegistry`: the process-wide map from a MIME type name to the `TypeInfo` that turns
// that name's values into bytes and back. It starts with the library's built-in table; a name it
// doesn't know resolves to `ByteArrayType`, so any MIME name can carry plain bytes.
//
// Thread safety: every lookup and insertion runs under `ms_lock`, a non-recursive mutex taken
// per call, so `resolveMimeType` and `registerMimeType` may be called from any thread, provided
// that the registry's first use comes before threads compete for it: making the registry takes
// no lock. Any `DataObject` operation that takes a name is a use.
//
// Ownership: the registry is made at first use and never deleted. It hands out copies (clones)
// of its `TypeInfo`s and keeps its own.
//
// Failure: none is reported. A registration under a name that is already there is dropped
// silently.
#ifndef VORT_BONES_MIMEREGISTRY_H
#define VORT_BONES_MIMEREGISTRY_H

#include <vort/bones/StringID.h>
#include <vort/messaging/Mutex.h>
#include <vort/types/Type.h>
#include <vort/vort_export.h>

#include <map>
#include <vector>

namespace VORT {

class VORT_EXPORT MimeRegistry {
public:
    // The type registered under `name`, as a copy; `ByteArrayType` for a name that isn't
    // registered. Makes the registry on first use.
    static TypeInfo resolveMimeType(StringID name);
    // Registers `type` under `name` unless the name is already registered: the first
    // registration wins, and the built-in table can't be overridden. Makes the registry on
    // first use.
    static void registerMimeType(StringID name, TypeInfo type);
    // The names of the built-in table, in the order in which `initialize` registers them. Doesn't
    // make the registry.
    static std::vector<StringID> defaultMimeTypes();

    MimeRegistry(MimeRegistry const &) = delete;
    MimeRegistry &operator=(MimeRegistry const &) = delete;

private:
    MimeRegistry();

    static MimeRegistry *self();
    // Registers the built-in table, row by row.
    void initialize();
    TypeInfo resolveMimeType_impl(StringID name);
    void registerMimeType_impl(StringID name, TypeInfo type);

    std::map<StringID, TypeInfo> m_types;

    // Null until first use; set before `initialize` runs, since registering asks for `self()`
    // again. Never deleted.
    static MimeRegistry *ms_instance;
    // Non-recursive; built at load, taken per call around every lookup and insertion.
    static Mutex ms_lock;
};

}  // namespace VORT

#endif  // VORT_BONES_MIMEREGISTRY_H
