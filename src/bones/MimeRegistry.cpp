#include <vort/bones/MimeRegistry.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>
#include <vort/types/VectorType.h>

#include <string>
#include <utility>
#include <vector>

namespace VORT {

MimeRegistry *MimeRegistry::ms_instance = nullptr;
Mutex MimeRegistry::ms_lock(Mutex::NonRecursive);

namespace {

struct MimeRow {
    const char *name;
    TypeInfo type;
};

// The built-in table, one row a line, in the order in which the rows are registered.
std::vector<MimeRow> defaultTable() {
    return {
        {"text/plain", StringType::Create()},
        {"text/html", StringType::Create()},
        {"text/uri-list", SpecificVectorType<std::string>::Create(StringType::Create())},
        {"application/x-color", ColorType::Create(true)},
        {"image/gif", PixmapType::Create()},
        {"image/ief", PixmapType::Create()},
        {"image/jp2", PixmapType::Create()},
        {"image/jpeg", PixmapType::Create()},
        {"image/jpm", PixmapType::Create()},
        {"image/jpx", PixmapType::Create()},
        {"image/png", PixmapType::Create()},
        {"image/tiff", PixmapType::Create()},
        {"cv-vort-booltype", BoolType::Create()},
        {"cv-vort-bytearraytype", ByteArrayType::Create()},
        {"cv-vort-colortype", ColorType::Create(true)},
        {"cv-vort-doubletype", DoubleType::Create()},
        {"cv-vort-floattype", FloatType::Create()},
        {"cv-vort-inttype", IntType::Create()},
        {"cv-vort-md5hashtype", MD5HashType::Create()},
        {"cv-vort-pathtype", PathType::Create()},
        {"cv-vort-pixmaptype", PixmapType::Create()},
        {"cv-vort-ipointtype", IPointType::Create()},
        {"cv-vort-dpointtype", DPointType::Create()},
        {"cv-vort-irecttype", IRectType::Create()},
        {"cv-vort-drecttype", DRectType::Create()},
        {"cv-vort-stringtype", StringType::Create()},
        {"cv-vort-transformtype", TransformType::Create()},
    };
}

}  // namespace

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

std::vector<StringID> MimeRegistry::defaultMimeTypes() {
    std::vector<StringID> names;
    for (MimeRow const &row : defaultTable()) {
        names.emplace_back(row.name);
    }
    return names;
}

void MimeRegistry::initialize() {
    // The first registration of a name wins, so the rows also decide what a later
    // `registerMimeType` can't change.
    for (MimeRow const &row : defaultTable()) {
        registerMimeType_impl(StringID(row.name), row.type);
    }
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
