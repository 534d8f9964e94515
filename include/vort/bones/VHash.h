// `VORT::VHash<Key, T>`: an implicitly shared hash table with chained nodes and prime bucket
// counts, over the exported, non-template `VHashData`; and `VORT::vHash`, the overload set that
// hashes keys.
//
// Hashing: `VHash` calls `vHash(key)`, found in namespace VORT or by argument-dependent lookup,
// and compares keys with `==`. Each node keeps its key's full 32-bit hash; lookups compare that
// first and the key only on a match. Keys are unique: inserting an existing key replaces its
// value. Within a chain, nodes of equal hash stay next to each other, and a new key goes behind
// the last node of its hash or, when there is none, at the end of its chain.
//
// Sharing: a copy shares the block; the first write through a container whose block is shared
// gives it a deep copy first. Every empty hash shares `VHashData::shared_null`. An unsharable
// hash (`setSharable(false)`) is deep-copied whenever it is copied.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock.
//
// Failure: allocation failures are not tested (the process falls on a null block). Looking up
// a missing key through `value` gives a default-constructed value. An exception from a key or
// value copy leaves the hash unchanged, but during a detach the copies made so far are lost
// without their destructors running. Iterators are invalidated by
// any insertion (which may rehash) and by removal through `remove` (which may shrink the table);
// `erase` never rehashes, so a loop can erase as it goes.
#ifndef VORT_BONES_VHASH_H
#define VORT_BONES_VHASH_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VAssociative.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace VORT {

// Integers hash to themselves; 64-bit ones fold their high half in.
inline unsigned int vHash(char key) {
    return static_cast<unsigned char>(key);
}
inline unsigned int vHash(signed char key) {
    return static_cast<unsigned char>(key);
}
inline unsigned int vHash(unsigned char key) {
    return key;
}
inline unsigned int vHash(short key) {
    return static_cast<unsigned short>(key);
}
inline unsigned int vHash(unsigned short key) {
    return key;
}
inline unsigned int vHash(int key) {
    return static_cast<unsigned int>(key);
}
inline unsigned int vHash(unsigned int key) {
    return key;
}
inline unsigned int vHash(unsigned long long key) {
    return static_cast<unsigned int>((key >> 31) ^ key);
}
inline unsigned int vHash(long long key) {
    return vHash(static_cast<unsigned long long>(key));
}
inline unsigned int vHash(unsigned long key) {
    return vHash(static_cast<unsigned long long>(key));
}
inline unsigned int vHash(long key) {
    return vHash(static_cast<unsigned long long>(key));
}
// Pointers hash by address: `(p >> 31 ^ p)` cut to 32 bits. Weak, hence the prime bucket counts.
template <typename T>
inline unsigned int vHash(const T *key) {
    const std::uintptr_t p = reinterpret_cast<std::uintptr_t>(key);
    return static_cast<unsigned int>((static_cast<std::uint64_t>(p) >> 31) ^ p);
}
// `hsl_hash_string(0, text)`: the text ends at its first NUL.
VORT_EXPORT unsigned int vHash(const std::string &text);

// The type-independent half of `VHash`. The block itself is the end node of every chain: its
// first field plays the end node's `next`, which is null, so a node is real when its `next` is
// not null. Nodes begin with `next` and `h`; the template puts key and value behind them.
struct VORT_EXPORT VHashData {
    struct Node {
        Node *next;
        unsigned int h;
    };

    Node *sentinelNext;  // always null
    Node **buckets;      // chain heads; an empty bucket points at the block
    AtomicCounter ref;
    int size;
    int nodeSize;       // bytes per node, set by the template
    short minimumBits;  // the size class that hasShrunk() won't go under
    short bits;         // the current size class
    int bucketCount;
    unsigned int sharable : 1;

    // Shared by every empty hash: count 1 plus one per container on it, never freed.
    static VHashData shared_null;

    // The number of buckets of size class `bits` (0 to 30): `(1 << bits)` plus a small delta
    // that makes it prime for the classes that ordinary tables use.
    static int bucketCountOf(int bits);

    void *allocateNode();
    void freeNode(void *node);

    // A deep copy with count 1: every chain copied node by node in order, `duplicate` filling in
    // key and value of each new node. The caller then drops its reference to this block.
    VHashData *detach_helper(void (*duplicate)(Node *source, void *target), int nodeSize);

    // Grows one size class when there is a node per bucket.
    void mightGrow();
    // The same, and says whether it rehashed: a caller holding a place in a chain looks again.
    bool willGrow();
    // Shrinks two size classes, not under `minimumBits`, when an eighth of the buckets is used.
    void hasShrunk();
    // A non-negative hint is a size class; a negative one asks for at least -hint buckets and
    // makes that class the floor for shrinking.
    void rehash(int hint);
    // Frees the bucket array and the block; the nodes must be gone.
    void destroyAndFree();

    // The first node in bucket order, or the block when there is none.
    Node *firstNode();
    // Neighbours in bucket order; the block stands for the end.
    static Node *nextNode(Node *node);
    static Node *previousNode(Node *node);
};

// The node layout that `VHash<Key, T>` gives `VHashData`.
template <typename Key, typename T>
struct VHashNode {
    VHashNode *next;
    unsigned int h;
    Key key;
    T value;
};

template <typename Key, typename T>
class VHash : public VSharedBlock<VHash<Key, T>, VHashData *>,
              public VAssociative<VHash<Key, T>, Key, T> {
    using Base = VSharedBlock<VHash<Key, T>, VHashData *>;
    using Assoc = VAssociative<VHash<Key, T>, Key, T>;
    friend Base;
    using Node = VHashNode<Key, T>;

    static Node *concrete(VHashData::Node *node) { return reinterpret_cast<Node *>(node); }
    static VHashData::Node *abstract(Node *node) {
        return reinterpret_cast<VHashData::Node *>(node);
    }

    struct Walk {
        using Node = VHashNode<Key, T>;
        static Node *next(Node *node) { return step(node); }
        static Node *previous(Node *node) {
            return concrete(VHashData::previousNode(abstract(node)));
        }
    };

public:
    using key_type = Key;
    using mapped_type = T;
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;

    // Bidirectional, in bucket order. `*it` is the value, as with Qt's hashes.
    class iterator : public VNodeIterator<iterator, Walk, T> {
        using Shell = VNodeIterator<iterator, Walk, T>;

    public:
        using Shell::Shell;

        const Key &key() const { return this->i->key; }
        T &value() const { return this->i->value; }
        T &operator*() const { return this->i->value; }
        T *operator->() const { return &this->i->value; }
    };

    class const_iterator : public VNodeIterator<const_iterator, Walk, const T> {
        using Shell = VNodeIterator<const_iterator, Walk, const T>;

    public:
        using Shell::Shell;
        const_iterator(iterator it) : Shell(it.i) {}  // NOLINT: implicit like the standard's

        const Key &key() const { return this->i->key; }
        const T &value() const { return this->i->value; }
        const T &operator*() const { return this->i->value; }
        const T *operator->() const { return &this->i->value; }
    };

    using Iterator = iterator;
    using ConstIterator = const_iterator;

    using Assoc::count;
    using Assoc::operator[];
    using Base::count;
    using Base::detach;
    using Base::isEmpty;
    using Base::size;

    VHash() noexcept = default;
    VHash(std::initializer_list<std::pair<Key, T>> items) {
        if (items.size() != 0) {
            reserve(int(items.size()));
        }
        for (const auto &item : items) {
            insert(item.first, item.second);
        }
    }

    // Size.
    int capacity() const { return d->bucketCount; }
    // Makes room for `n` keys without rehashing, and keeps at least that many buckets when
    // keys are removed later.
    void reserve(int n) {
        detach();
        d->rehash(-(n > 1 ? n : 1));
    }
    void squeeze() { reserve(1); }

    // Lookup: contains, count, value, key, keys and values come from VAssociative.
    // The value of `key`, inserted default-constructed when missing.
    T &operator[](const Key &key) {
        detach();
        const unsigned int h = vHash(key);
        Node **place = findPlace(key, h);
        if (isMatch(place, key, h)) {
            return (*place)->value;
        }
        return createNode(h, key, T(), placeAfterGrowth(place, key, h))->value;
    }
    iterator find(const Key &key) {
        detach();
        return iterator(findNode(key));
    }
    const_iterator find(const Key &key) const { return const_iterator(findNode(key)); }
    const_iterator constFind(const Key &key) const { return const_iterator(findNode(key)); }

    // Changes.
    iterator insert(const Key &key, const T &value) {
        detach();
        const unsigned int h = vHash(key);
        Node **place = findPlace(key, h);
        if (isMatch(place, key, h)) {
            (*place)->value = value;
            return iterator(*place);
        }
        return iterator(createNode(h, key, value, placeAfterGrowth(place, key, h)));
    }
    void insert(const VHash &other) {
        if (d == other.d) {
            return;
        }
        for (const_iterator it = other.begin(); it != other.end(); ++it) {
            insert(it.key(), it.value());
        }
    }
    // Removes `key`; returns how many were removed (0 or 1). May shrink the table.
    int remove(const Key &key) {
        if (isEmpty()) {  // nothing to find: don't detach for it
            return 0;
        }
        detach();
        const unsigned int h = vHash(key);
        Node **place = findPlace(key, h);
        if (!isMatch(place, key, h)) {
            return 0;
        }
        unlink(place);
        shrinkIfSparse();
        return 1;
    }
    // Removes `key` and returns its value, or a default-constructed one.
    T take(const Key &key) {
        if (isEmpty()) {
            return T();
        }
        detach();
        const unsigned int h = vHash(key);
        Node **place = findPlace(key, h);
        if (!isMatch(place, key, h)) {
            return T();
        }
        T value(std::move((*place)->value));
        unlink(place);
        shrinkIfSparse();
        return value;
    }
    // Removes the node at `it` and returns the next one. Never rehashes.
    iterator erase(const_iterator it) {
        if (it.i == end_()) {
            return iterator(it.i);
        }
        if (!isOnlyReference(d->ref)) {
            it = relocate(it);
        }
        iterator next(step(it.i));
        Node **place = reinterpret_cast<Node **>(&d->buckets[it.i->h % unsigned(d->bucketCount)]);
        while (*place != it.i) {
            place = &(*place)->next;
        }
        unlink(place);
        return next;
    }

    bool operator==(const VHash &other) const {
        if (d == other.d) {
            return true;
        }
        if (size() != other.size()) {
            return false;
        }
        for (const_iterator it = begin(); it != end(); ++it) {
            Node *n = other.findNode(it.key());
            if (n == other.end_() || !(n->value == it.value())) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const VHash &other) const { return !(*this == other); }

    // Iteration in bucket order. The non-const forms detach first.
    iterator begin() {
        detach();
        return iterator(concrete(d->firstNode()));
    }
    iterator end() {
        detach();
        return iterator(end_());
    }
    const_iterator begin() const { return const_iterator(concrete(d->firstNode())); }
    const_iterator end() const { return const_iterator(end_()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    const_iterator constBegin() const { return begin(); }
    const_iterator constEnd() const { return end(); }

    // The type-independent half, for code that inspects the table.
    const VHashData &data() const { return *d; }

private:
    Node *end_() const { return reinterpret_cast<Node *>(d); }

    // Inline while the chain goes on; the walk to the next bucket is the library's.
    static Node *step(Node *node) {
        Node *next = node->next;
        return next->next ? next : concrete(VHashData::nextNode(abstract(node)));
    }

    Node *findNode(const Key &key) const {
        Node *const e = end_();
        if (d->size == 0) {
            return e;
        }
        const unsigned int h = vHash(key);
        Node *n = reinterpret_cast<Node *>(d->buckets[h % unsigned(d->bucketCount)]);
        while (n != e && !(n->h == h && n->key == key)) {
            n = n->next;
        }
        return n;
    }

    // The link that points at the node of `key`; when the key is absent, the link where a new
    // node goes: behind the last node of the same hash, or else at the end of the chain. Null
    // when there are no buckets yet.
    Node **findPlace(const Key &key, unsigned int h) const {
        if (d->bucketCount == 0) {
            return nullptr;
        }
        Node *const e = end_();
        Node **link = reinterpret_cast<Node **>(&d->buckets[h % unsigned(d->bucketCount)]);
        Node **behindRun = nullptr;
        for (Node *n = *link; n != e; n = *link) {
            if (n->h == h) {
                if (n->key == key) {
                    return link;
                }
                behindRun = &n->next;
            }
            link = &n->next;
        }
        return behindRun ? behindRun : link;
    }

    bool isMatch(Node **place, const Key &key, unsigned int h) const {
        if (place == nullptr) {
            return false;
        }
        Node *n = *place;
        return n != end_() && n->h == h && n->key == key;
    }

    // A table with a node per bucket grows a size class before the insertion; the place is
    // looked up again in the new chains.
    Node **placeAfterGrowth(Node **place, const Key &key, unsigned int h) {
        if (d->size >= d->bucketCount && d->willGrow()) {
            return findPlace(key, h);
        }
        return place;
    }

    template <typename V>
    Node *createNode(unsigned int h, const Key &key, V &&value, Node **place) {
        void *memory = std::malloc(sizeof(Node));
        Node *n;
        try {
            n = new (memory) Node{*place, h, key, std::forward<V>(value)};
        } catch (...) {
            std::free(memory);
            throw;
        }
        *place = n;
        ++d->size;
        return n;
    }

    void unlink(Node **place) {
        Node *n = *place;
        *place = n->next;
        n->~Node();
        std::free(n);
        --d->size;
    }

    void shrinkIfSparse() {
        if (d->size <= (d->bucketCount >> 3) && d->bits > d->minimumBits) {
            d->hasShrunk();
        }
    }

    // The same node in this container's own copy of a shared block.
    const_iterator relocate(const_iterator it) {
        const unsigned int bucket = it.i->h % unsigned(d->bucketCount);
        int steps = 0;
        for (Node *n = reinterpret_cast<Node *>(d->buckets[bucket]); n != it.i; n = n->next) {
            ++steps;
        }
        detach();
        Node *n = reinterpret_cast<Node *>(d->buckets[bucket]);
        while (steps--) {
            n = n->next;
        }
        return const_iterator(n);
    }

    static void duplicateNode(VHashData::Node *source, void *target) {
        const Node *s = concrete(source);
        new (target) Node{nullptr, s->h, s->key, s->value};
    }

    void detachHelper() {
        VHashData *copy = d->detach_helper(&duplicateNode, int(sizeof(Node)));
        if (!d->ref.deref()) {
            freeData(d);
        }
        d = copy;
    }

    static void freeData(VHashData *x) {
        Node *const e = reinterpret_cast<Node *>(x);
        for (int b = x->bucketCount - 1; b >= 0; --b) {
            Node *n = reinterpret_cast<Node *>(x->buckets[b]);
            while (n != e) {
                Node *next = n->next;
                n->~Node();
                std::free(n);
                n = next;
            }
        }
        x->destroyAndFree();
    }

    using Base::d;
};

template <typename Key, typename T>
void swap(VHash<Key, T> &a, VHash<Key, T> &b) noexcept {
    a.swap(b);
}

}  // namespace VORT

#endif  // VORT_BONES_VHASH_H
