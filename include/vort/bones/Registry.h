// The universe of packages: `VORT::Registry`, a tree of `VORT::Package`s under one root with a
// table from `PackagePath` to package; `VORT::ClassFactoryBase`, the base of the factories that
// packages own; and `VORT::ClassRegistration`, through which a registration layer tells a
// reflected class where it was registered.
//
// A client makes one registry with a root name and fills it with `createPackage`, which makes
// the missing ancestors of a path from the top down. A path has to lead up to the root by name:
// in a universe with the root "root", "root.a.b" makes "root.a" and then "root.a.b", while "a.b"
// fails. The library itself makes no registry, and how classes enter a package's tables is the
// client's business: this header only gives the tables their owner and lifetime.
//
// Ownership: packages are counted objects. The registry's table and each parent's list of
// children hold handles on a package, and the registry one more on its root; links to the
// parent and the universe are raw pointers, so there are no cycles, and a package that outlives
// its registry points at a registry that is gone. A package owns the factories in its table of
// base classes and deletes them when the last package sharing that table goes.
//
// Thread safety: none. Counts and tables are plain: a registry and its packages belong to one
// thread at a time, or to the client's lock.
//
// Failure: through the `ErrorHolder` only; nothing throws. `findPackage` of a missing path sets
// "Package '<path>' not found." (code 0x5A0007); `createPackage` of a path that doesn't lead to
// the root sets "Package '<path>' cannot be registered in Universe with root <root>." (code
// 0x5A0008), where <path> is the empty path that the walk up ended at. Names aren't validated.
#ifndef VORT_BONES_REGISTRY_H
#define VORT_BONES_REGISTRY_H

#include <vort/bones/Holder.h>
#include <vort/bones/PackagePath.h>
#include <vort/bones/VHash.h>
#include <vort/bones/VList.h>
#include <vort/bones/VVector.h>
#include <vort/err/ErrorHolder.h>
#include <vort/vort_export.h>

namespace VORT {

class Package;
class Registry;

// The base of the factories that a client's registration layer enters in a package's table of
// base classes. The package deletes them through this virtual destructor.
class VORT_EXPORT ClassFactoryBase {
public:
    virtual ~ClassFactoryBase();
};

// The registration layer's door to a reflected class `C`: `registerIn` remembers the package in
// which `C` was registered, which `C::staticGetClassPath` and `getPackage` then report. Called
// once per class, before anything asks for its class path.
template <typename C>
struct ClassRegistration {
    static void registerIn(Package *package) { C::classRegisteredInPackage(package); }
};

class VORT_EXPORT Package : public ReferencedTemplate<unsigned int> {
public:
    using BaseClassTable = VHash<ClassName, ClassFactoryBase *>;
    using SingletonTable = VHash<ClassName, Holder<SingletonFactoryBase>>;

    // Copies the count, the links, path and name, and shares all four tables; the factories
    // then belong to both packages together.
    Package &operator=(Package const &other);

    // Appends `package` to the packages to look in, after the parent; no check for doubles or
    // null.
    void addResolveRoute(Package *package) { m_resolveRoutes.append(package); }

    Registry *getUniverse() const { return m_universe; }
    // Null for the root.
    Package *getParent() const { return m_parent; }
    PackageName getName() const { return m_name; }
    PackagePath getPath() const { return m_path; }
    // Shared copies, in order of creation; the routes start with the parent (but the root's).
    VVector<Holder<Package>> getChildren() const { return m_children; }
    VVector<Package *> getResolveRoutes() const { return m_resolveRoutes; }
    // A new list of the table's class names, in the table's order.
    VList<ClassName> getBaseClassNames() const { return m_baseClasses.keys(); }
    // Whether the path is empty: a root made with a name is not a root by this test.
    bool isRoot() const { return m_path.isRoot(); }

    // The tables that a registration layer fills.
    BaseClassTable &baseClasses() { return m_baseClasses; }
    SingletonTable &singletons() { return m_singletons; }

    // "Package".
    static ClassName staticGetClassName();
    // The path of the package in which `Package` was registered, joined with "Package". That
    // package must have been set through `ClassRegistration<Package>` first.
    static ClassPath staticGetClassPath();

    virtual ClassName getClassName() const;
    virtual ClassPath getClassPath() const;
    // The package in which `Package` was registered; null before that.
    virtual Package *getPackage() const;

private:
    friend class Registry;
    template <typename C>
    friend struct ClassRegistration;

    // A root: no parent and no universe; path and name are `name`.
    explicit Package(PackageName const &name);
    // A child, entered in `parent`'s children, whose handle is then its only one.
    Package(Package *parent, PackageName const &name);
    // An empty package: nothing is copied.
    Package(Package const &other);
    ~Package() override;

    // Remembers `package` unless it is null; returns what is remembered.
    static Package *classRegisteredInPackage(Package *package);
    // Deletes the factories if this is the last package holding the table.
    void releaseBaseClasses();

    Registry *m_universe;
    Package *m_parent;
    PackagePath m_path;
    PackageName m_name;
    VVector<Holder<Package>> m_children;
    VVector<Package *> m_resolveRoutes;
    BaseClassTable m_baseClasses;
    SingletonTable m_singletons;
};

class VORT_EXPORT Registry : public ReferencedTemplate<unsigned int> {
public:
    // Makes the root and enters it in the table under its name.
    explicit Registry(PackageName const &rootName);
    // A copy shares the table and the root; packages keep pointing at the first registry.
    Registry(Registry const &other) = default;
    Registry &operator=(Registry const &other) = default;
    // Drops the root first, then the table.
    ~Registry() override;

    Package *getRootPackage() const { return m_root.get(); }
    PackageName getRootPackageName() const { return m_root->getName(); }

    // The package made under `path`, or null with code 0x5A0007 set on `error`. On success the
    // holder is left alone.
    Package *findPackage(PackagePath const &path, ErrorHolder &error) const;
    // The package under `path`, made with its missing ancestors if need be; a path equal to the
    // root's name gives the root. Null with code 0x5A0008 set on `error` if the path doesn't lead
    // up to the root's name. The holder must be empty on entry: an old error makes an existing
    // package look missing, and it is then made anew and replaces the old one in the table.
    Package *createPackage(PackagePath const &path, ErrorHolder &error);

private:
    VHash<PackagePath, Holder<Package>> m_packages;
    Holder<Package> m_root;
};

}  // namespace VORT

#endif  // VORT_BONES_REGISTRY_H
