// The four names of the class universe, each a typed wrapper of one `StringID`:
// `VORT::ClassName` ("Widget"), `VORT::PackageName` ("tools"), `VORT::PackagePath`
// ("root.tools.draw": names joined by `PACKAGE_SEPARATOR`, '.') and `VORT::ClassPath`
// ("root.tools:Widget": a package path, `CLASS_SEPARATOR` ':' and a class name); the hash
// `vHash` and `toString` of each.
//
// Separate types keep a class name from being passed where a package path is wanted; each is as
// cheap to copy, compare and hash as a `StringID`, and like it compares by interned address, so
// `<` has nothing to do with the order of the texts. Two paths that name the same package by the
// lenient grammar but differ in text ("a.b", "a..b") are different values.
//
// Grammar: a name is valid if it is not empty and holds no blank (' '), no '.' and no ':'; any
// other byte is allowed. The empty package path is valid: it is the root form. A package path is
// valid if every name between its dots is, where one leading or trailing '.' and runs of dots
// are forgiven. A class path is valid if it has a ':', a valid class name after the first one
// and a valid package path (possibly empty) before it. Nothing here refuses an invalid name:
// `isValid` tells, and the other operations work on any text.
//
// `concat` joins two names with the separator its table gives, without looking at them: an
// empty left operand leaves the separator at the front (the empty path joined with "a" is ".a").
//
// Thread safety: values, as `StringID`; any thread may make and read them. Failure: none.
#ifndef VORT_BONES_PACKAGEPATH_H
#define VORT_BONES_PACKAGEPATH_H

#include <vort/bones/StringID.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {

class ClassName;
class ClassPath;
class PackageName;
class PackagePath;

// What the four names share. `Derived` is the name class, so that names of different kinds
// never compare with each other.
template <typename Derived>
class NameBase {
public:
    NameBase() = default;
    // Implicit, so that an id can be handed over or assigned where a name is expected.
    NameBase(StringID const &id) : m_id(id) {}

    bool operator==(Derived const &other) const { return m_id == other.m_id; }
    bool operator!=(Derived const &other) const { return m_id != other.m_id; }
    bool operator<(Derived const &other) const { return m_id < other.m_id; }

    StringID const &toStringID() const { return m_id; }
    std::string const &toString() const { return m_id.getString(); }

protected:
    ~NameBase() = default;

    StringID m_id;
};

class VORT_EXPORT ClassName : public NameBase<ClassName> {
public:
    using NameBase::NameBase;

    bool isValid() const;
};

class VORT_EXPORT PackageName : public NameBase<PackageName> {
public:
    using NameBase::NameBase;

    bool isValid() const;

    PackagePath concat(PackageName const &right) const;  // "left.right"
    PackagePath concat(PackagePath const &right) const;  // "left.right"
    ClassPath concat(ClassName const &right) const;      // "left:right"
    ClassPath concat(ClassPath const &right) const;      // "left.right"
};

class VORT_EXPORT PackagePath : public NameBase<PackagePath> {
public:
    using NameBase::NameBase;
    // The path of one name: the same id.
    PackagePath(PackageName name) : NameBase(name.toStringID()) {}

    bool isValid() const;
    // The empty path, and only it.
    bool isRoot() const { return m_id.empty(); }

    // The text before the last '.'; empty if there is none.
    PackagePath getSuperPackagePath() const;
    // The text after the last '.'; the whole path if there is none.
    PackageName getPackageName() const;
    // The text before the first '.'; the whole path if there is none.
    PackageName getFirstPackageName() const;

    PackagePath concat(PackagePath const &right) const;  // "left.right"
    PackagePath concat(PackageName const &right) const;  // "left.right"
    ClassPath concat(ClassName const &right) const;      // "left:right"
    ClassPath concat(ClassPath const &right) const;      // "left.right"
};

class VORT_EXPORT ClassPath : public NameBase<ClassPath> {
public:
    using NameBase::NameBase;

    bool isValid() const;
    // The text starts with ':': the class stands in the empty package. False for the empty path.
    bool isRoot() const;
    // The text after the first ':'; empty if there is none.
    ClassName getClassName() const;
    // The text before the first ':'; empty if there is none.
    PackagePath getPackagePath() const;
};

// The id's hash (see StringID.h).
template <typename Derived>
unsigned int vHash(NameBase<Derived> const &name) {
    return vHash(name.toStringID());
}

template <typename Derived>
std::string const &toString(NameBase<Derived> const &name) {
    return name.toString();
}

}  // namespace VORT

#endif  // VORT_BONES_PACKAGEPATH_H
