#include <vort/bones/MimeRegistry.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/MD5HashType.h>

#include <utility>

namespace VORT {

MimeRegistry *MimeRegistry::ms_instance = nullptr;
Mutex MimeRegistry::ms_lock(Mutex::NonRecursive);

MimeRegistry::MimeRegistry() = default;

MimeRegistry *MimeRegistry::self() {
    // No lock: the first use comes before threads compete. The instance is published before
    // `initialize` runs because registering goes through `self()` again.
    if (ms_instance == nullptr) {
        ms_instance = new MimeRegistry;
        ms_instance->initialize();
    }
    return ms_instance;
}

TypeInfo MimeRegistry::resolveMimeType(StringID name) {
    return self()->resolveMimeType_impl(name);
}

void MimeRegistry::registerMimeType(StringID name, TypeInfo type) {
    self()->registerMimeType_impl(name, std::move(type));
}

void MimeRegistry::initialize() {
    // The built-in table, in its order. The first registration of a name wins, so the rows
    // also decide what a later `registerMimeType` can't change.
    registerMimeType_impl(StringID("cv-vort-booltype"), BoolType::Create());
    registerMimeType_impl(StringID("cv-vort-bytearraytype"), ByteArrayType::Create());
    registerMimeType_impl(StringID("cv-vort-md5hashtype"), MD5HashType::Create());
}

TypeInfo MimeRegistry::resolveMimeType_impl(StringID name) {
    {
        MutexLocker locker(ms_lock);
        const auto found = m_types.find(name);
        if (found != m_types.end()) {
            return found->second;
        }
    }
    // An unknown name is plain bytes.
    return ByteArrayType::Create();
}

void MimeRegistry::registerMimeType_impl(StringID name, TypeInfo type) {
    MutexLocker locker(ms_lock);
    m_types.emplace(name, std::move(type));
}

}  // namespace VORT
