#include <vort/bones/Library.h>
#include <vort/bones/Registry.h>
#include <vort/err/ZQFErrorDescription.h>

#include <utility>
#include <vector>

namespace VORT {

ClassFactoryBase::~ClassFactoryBase() = default;

Package::Package(PackageName const &name)
    : m_universe(nullptr), m_parent(nullptr), m_path(name), m_name(name) {}

Package::Package(Package *parent, PackageName const &name)
    : m_universe(parent->m_universe),
      m_parent(parent),
      m_path(parent->getPath().concat(name)),
      m_name(name) {
    m_resolveRoutes.append(parent);
    // The handle of our own keeps the count above zero while the parent's vector takes its
    // handle (growing the vector copies handles); dropping it leaves the parent's the only one.
    const Holder<Package> self(this);
    parent->m_children.append(self);
}

Package::Package(Package const &)
    : ReferencedTemplate<unsigned int>(), m_universe(nullptr), m_parent(nullptr) {}

Package &Package::operator=(Package const &other) {
    if (this == &other) {
        return *this;
    }
    ReferencedTemplate<unsigned int>::operator=(other);
    m_universe = other.m_universe;
    m_parent = other.m_parent;
    m_path = other.m_path;
    m_name = other.m_name;
    m_children = other.m_children;
    m_resolveRoutes = other.m_resolveRoutes;
    if (!m_baseClasses.isSharedWith(other.m_baseClasses)) {
        releaseBaseClasses();
        m_baseClasses = other.m_baseClasses;
    }
    m_singletons = other.m_singletons;
    return *this;
}

Package::~Package() {
    releaseBaseClasses();
}

void Package::releaseBaseClasses() {
    if (!m_baseClasses.isDetached()) {
        return;  // another package shares the table: the last one deletes
    }
    for (ClassFactoryBase *factory : std::as_const(m_baseClasses)) {
        delete factory;
    }
    m_baseClasses.clear();
}

ClassName Package::staticGetClassName() {
    static const ClassName name(StringID("Package"));
    return name;
}

ClassPath Package::staticGetClassPath() {
    return classRegisteredInPackage(nullptr)->getPath().concat(staticGetClassName());
}

Package *Package::classRegisteredInPackage(Package *package) {
    static Package *registered = nullptr;
    if (package != nullptr) {
        registered = package;
    }
    return registered;
}

ClassName Package::getClassName() const {
    return staticGetClassName();
}

ClassPath Package::getClassPath() const {
    return staticGetClassPath();
}

Package *Package::getPackage() const {
    return classRegisteredInPackage(nullptr);
}

Registry::Registry(PackageName const &rootName) : m_root(new Package(rootName)) {
    m_root->m_universe = this;
    m_packages.insert(PackagePath(rootName), m_root);
}

Registry::~Registry() = default;

Package *Registry::findPackage(PackagePath const &path, ErrorHolder &error) const {
    const auto found = m_packages.constFind(path);
    if (found != m_packages.constEnd()) {
        return found.value().get();
    }
    error.setError(
        ZQFErrorType<VT_PackageNotFound>(CodeLocation(".\\bones\\Registry", 61), path.toString()));
    return nullptr;
}

Package *Registry::createPackage(PackagePath const &path, ErrorHolder &error) {
    // The walk up to a known package, then the missing ones made from the top down: what the
    // recursion on the super path does, without a stack frame per level of a long path.
    std::vector<PackagePath> missing;
    PackagePath at = path;
    Package *parent = nullptr;
    for (;;) {
        if (at.toStringID() == m_root->getName().toStringID()) {
            parent = m_root.get();
            break;
        }
        parent = findPackage(at, error);
        if (!error.hasError()) {
            break;
        }
        if (at.isRoot()) {
            error.setError(ZQFErrorType<VT_PackageCannotBeRegisteredInUniverse>(
                CodeLocation(".\\bones\\Registry", 40), at.toString(),
                getRootPackageName().toString()));
            return nullptr;
        }
        error.clear();
        missing.push_back(at);
        at = at.getSuperPackagePath();
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        parent = new Package(parent, it->getPackageName());
        m_packages.insert(*it, parent);
    }
    return parent;
}

}  // namespace VORT
