// `VORT::VAssociative<Derived, Key, T>`: the read side that the library's two associative
// containers, `VHash` and `VMap`, share. It is written on the container's `constFind`,
// `constEnd` and iteration, so it holds whatever the order of the container is.
//
// Thread safety and failure as for the container that derives from it.
#ifndef VORT_BONES_VASSOCIATIVE_H
#define VORT_BONES_VASSOCIATIVE_H

#include <vort/bones/VList.h>

namespace VORT {

template <typename Derived, typename Key, typename T>
class VAssociative {
public:
    bool contains(const Key &key) const { return self().constFind(key) != self().constEnd(); }
    // Keys are unique: 1 or 0.
    int count(const Key &key) const { return contains(key) ? 1 : 0; }
    T value(const Key &key) const {
        const auto it = self().constFind(key);
        return it != self().constEnd() ? it.value() : T();
    }
    T value(const Key &key, const T &fallback) const {
        const auto it = self().constFind(key);
        return it != self().constEnd() ? it.value() : fallback;
    }
    // The first key, in the container's order, that maps to `value`, or `fallback`.
    Key key(const T &value, const Key &fallback = Key()) const {
        for (auto it = self().begin(); it != self().end(); ++it) {
            if (it.value() == value) {
                return it.key();
            }
        }
        return fallback;
    }
    T operator[](const Key &key) const { return value(key); }

    VList<Key> keys() const {
        VList<Key> result;
        result.reserve(self().size());
        for (auto it = self().begin(); it != self().end(); ++it) {
            result.append(it.key());
        }
        return result;
    }
    VList<T> values() const {
        VList<T> result;
        result.reserve(self().size());
        for (auto it = self().begin(); it != self().end(); ++it) {
            result.append(it.value());
        }
        return result;
    }

private:
    const Derived &self() const { return static_cast<const Derived &>(*this); }
};

}  // namespace VORT

#endif  // VORT_BONES_VASSOCIATIVE_H
