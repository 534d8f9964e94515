// `VORT::VMap<Key, T>`: an implicitly shared ordered map, a skip list over the exported,
// non-template `VMapData`.
//
// Order: keys are ordered by `operator<` and are unique; inserting an existing key replaces its
// value. Iteration runs in key order, both ways.
//
// Sharing: a copy shares the block; the first write through a container whose block is shared
// gives it a deep copy first. Every empty map shares `VMapData::shared_null`. An unsharable map
// (`setSharable(false)`) is deep-copied whenever it is copied.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock. The level generator reseeds from `rand()`.
//
// Failure: allocation failures are not tested (the process falls on a null block). Looking up
// a missing key through `value` gives a default-constructed value. An exception from a key or
// value copy leaves the map unchanged.
#ifndef VORT_BONES_VMAP_H
#define VORT_BONES_VMAP_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VAssociative.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/vort_export.h>

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <new>
#include <utility>

namespace VORT {

// The type-independent half of `VMap`: a skip list of up to 12 levels whose block is both head
// and end node. The template stores key and value in front of each node: `offset` is the number
// of bytes in front, and a node's address minus `offset` is the start of its allocation.
struct VORT_EXPORT VMapData {
    struct Node {
        Node *previous;
        Node *next[1];  // one link per level of the node, level 0 first
    };

    enum { LastLevel = 11, Sparseness = 3 };

    Node *previous;             // the last node
    Node *next[LastLevel + 1];  // the first node of each level
    AtomicCounter ref;
    int topLevel;  // highest level in use; never lowered
    int size;
    int randomBits;                  // state of the level generator
    unsigned int insertInOrder : 1;  // set during a copy in key order
    unsigned int sharable : 1;

    // Shared by every empty map: count 1 plus one per container on it, never freed.
    static VMapData shared_null;

    // An empty block with count 1.
    static VMapData *createData();
    // Frees every node (whose keys and values are already destroyed) and the block.
    void continueFreeData(int offset);
    // Links a new node behind `update[i]` on each of its levels; `update` must hold the last
    // node before the new place on every level up to `topLevel`, and on return holds the new
    // node on the levels it joined. A node is never more than one level above the old top.
    Node *node_create(Node *update[], int offset);
    // Unlinks and frees `node`, with `update` as for `node_create`.
    void node_delete(Node *update[], int offset, Node *node);
};

template <typename Key, typename T>
class VMap : public VSharedBlock<VMap<Key, T>, VMapData *>,
             public VAssociative<VMap<Key, T>, Key, T> {
    using Base = VSharedBlock<VMap<Key, T>, VMapData *>;
    using Assoc = VAssociative<VMap<Key, T>, Key, T>;
    friend Base;
    using Node = VMapData::Node;

    struct Payload {
        Key key;
        T value;
    };
    static_assert(alignof(Payload) <= alignof(std::max_align_t), "over-aligned map entries");

    // Bytes in front of the node: the payload, padded to the node's alignment.
    static constexpr int kOffset =
        int((sizeof(Payload) + alignof(Node) - 1) / alignof(Node) * alignof(Node));

    static Payload *payload(Node *node) {
        return reinterpret_cast<Payload *>(reinterpret_cast<char *>(node) - kOffset);
    }

    struct Walk {
        using Node = VMapData::Node;
        static Node *next(Node *node) { return node->next[0]; }
        static Node *previous(Node *node) { return node->previous; }
    };

public:
    using key_type = Key;
    using mapped_type = T;
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;

    // Bidirectional, in key order. `*it` is the value, as with Qt's maps.
    class iterator : public VNodeIterator<iterator, Walk, T> {
        using Shell = VNodeIterator<iterator, Walk, T>;

    public:
        using Shell::Shell;

        const Key &key() const { return payload(this->i)->key; }
        T &value() const { return payload(this->i)->value; }
        T &operator*() const { return payload(this->i)->value; }
        T *operator->() const { return &payload(this->i)->value; }
    };

    class const_iterator : public VNodeIterator<const_iterator, Walk, const T> {
        using Shell = VNodeIterator<const_iterator, Walk, const T>;

    public:
        using Shell::Shell;
        const_iterator(iterator it) : Shell(it.i) {}  // NOLINT: implicit like the standard's

        const Key &key() const { return payload(this->i)->key; }
        const T &value() const { return payload(this->i)->value; }
        const T &operator*() const { return payload(this->i)->value; }
        const T *operator->() const { return &payload(this->i)->value; }
    };

    using Iterator = iterator;
    using ConstIterator = const_iterator;

    using Assoc::count;
    using Assoc::operator[];
    using Base::count;
    using Base::detach;
    using Base::isEmpty;
    using Base::size;

    VMap() noexcept = default;
    VMap(std::initializer_list<std::pair<Key, T>> items) {
        for (const auto &item : items) {
            insert(item.first, item.second);
        }
    }

    // Lookup: contains, count, value, key, keys and values come from VAssociative.
    // The value of `key`, inserted default-constructed when missing.
    T &operator[](const Key &key) {
        detach();
        Node *update[VMapData::LastLevel + 1];
        Node *n = findNode(key, update);
        if (n == end_()) {
            n = createNode(update, key, T());
        }
        return payload(n)->value;
    }
    iterator find(const Key &key) {
        detach();
        return iterator(findNode(key));
    }
    const_iterator find(const Key &key) const { return const_iterator(findNode(key)); }
    const_iterator constFind(const Key &key) const { return const_iterator(findNode(key)); }
    // The first entry whose key is not less than `key`, and the first greater than `key`.
    iterator lowerBound(const Key &key) {
        detach();
        return iterator(lowerNode(key));
    }
    const_iterator lowerBound(const Key &key) const { return const_iterator(lowerNode(key)); }
    iterator upperBound(const Key &key) {
        detach();
        return iterator(upperNode(key));
    }
    const_iterator upperBound(const Key &key) const { return const_iterator(upperNode(key)); }

    const Key &firstKey() const { return payload(end_()->next[0])->key; }
    const Key &lastKey() const { return payload(end_()->previous)->key; }
    T &first() { return *begin(); }
    const T &first() const { return *begin(); }
    T &last() { return *--end(); }
    const T &last() const { return *--end(); }

    // Changes.
    iterator insert(const Key &key, const T &value) {
        detach();
        Node *update[VMapData::LastLevel + 1];
        Node *n = findNode(key, update);
        if (n == end_()) {
            return iterator(createNode(update, key, value));
        }
        payload(n)->value = value;
        return iterator(n);
    }
    // Removes `key`; returns how many were removed (0 or 1).
    int remove(const Key &key) {
        if (isEmpty()) {
            return 0;
        }
        detach();
        Node *update[VMapData::LastLevel + 1];
        Node *n = findNode(key, update);
        if (n == end_()) {
            return 0;
        }
        deleteNode(update, n);
        return 1;
    }
    // Removes `key` and returns its value, or a default-constructed one.
    T take(const Key &key) {
        if (isEmpty()) {
            return T();
        }
        detach();
        Node *update[VMapData::LastLevel + 1];
        Node *n = findNode(key, update);
        if (n == end_()) {
            return T();
        }
        T value(std::move(payload(n)->value));
        deleteNode(update, n);
        return value;
    }
    // Removes the entry at `it` and returns the next one.
    iterator erase(const_iterator it) {
        if (it.i == end_()) {
            return iterator(it.i);
        }
        const Key key = it.key();  // keys are unique: the key finds the entry in any copy
        detach();
        Node *update[VMapData::LastLevel + 1];
        Node *n = findNode(key, update);
        Node *next = n->next[0];
        deleteNode(update, n);
        return iterator(next);
    }

    bool operator==(const VMap &other) const {
        if (d == other.d) {
            return true;
        }
        if (size() != other.size()) {
            return false;
        }
        for (const_iterator a = begin(), b = other.begin(); a != end(); ++a, ++b) {
            if (a.key() < b.key() || b.key() < a.key() || !(a.value() == b.value())) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const VMap &other) const { return !(*this == other); }

    // Iteration in key order. The non-const forms detach first.
    iterator begin() {
        detach();
        return iterator(end_()->next[0]);
    }
    iterator end() {
        detach();
        return iterator(end_());
    }
    const_iterator begin() const { return const_iterator(end_()->next[0]); }
    const_iterator end() const { return const_iterator(end_()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    const_iterator constBegin() const { return begin(); }
    const_iterator constEnd() const { return end(); }

    // The type-independent half, for code that inspects the list.
    const VMapData &data() const { return *d; }

private:
    Node *end_() const { return reinterpret_cast<Node *>(d); }

    // The node of `key` or the end; `update` gets the last node before it on every level.
    Node *findNode(const Key &key, Node **update) const {
        Node *const e = end_();
        Node *cur = e;
        Node *next = e;
        for (int level = d->topLevel; level >= 0; --level) {
            while ((next = cur->next[level]) != e && payload(next)->key < key) {
                cur = next;
            }
            update[level] = cur;
        }
        return next != e && !(key < payload(next)->key) ? next : e;
    }
    Node *findNode(const Key &key) const {
        Node *next = lowerNode(key);
        return next != end_() && !(key < payload(next)->key) ? next : end_();
    }
    Node *lowerNode(const Key &key) const {
        Node *const e = end_();
        Node *cur = e;
        Node *next = e;
        for (int level = d->topLevel; level >= 0; --level) {
            while ((next = cur->next[level]) != e && payload(next)->key < key) {
                cur = next;
            }
        }
        return next;
    }
    Node *upperNode(const Key &key) const {
        Node *next = lowerNode(key);
        while (next != end_() && !(key < payload(next)->key)) {
            next = next->next[0];
        }
        return next;
    }

    template <typename V>
    Node *createNode(Node **update, const Key &key, V &&value) {
        Node *n = d->node_create(update, kOffset);
        Payload *p = payload(n);
        try {
            new (&p->key) Key(key);
            try {
                new (&p->value) T(std::forward<V>(value));
            } catch (...) {
                p->key.~Key();
                throw;
            }
        } catch (...) {
            unlinkUnconstructed(n);
            throw;
        }
        return n;
    }

    // Takes out a node whose key was never made, so its predecessors are found by address.
    void unlinkUnconstructed(Node *n) {
        Node *const e = end_();
        Node *update[VMapData::LastLevel + 1];
        for (int level = d->topLevel; level >= 0; --level) {
            Node *cur = e;
            while (cur->next[level] != n && cur->next[level] != e) {
                cur = cur->next[level];
            }
            update[level] = cur;
        }
        d->node_delete(update, kOffset, n);
    }

    void deleteNode(Node **update, Node *n) {
        Payload *p = payload(n);
        p->key.~Key();
        p->value.~T();
        d->node_delete(update, kOffset, n);
    }

    void detachHelper() {
        VMapData *x = VMapData::createData();
        x->insertInOrder = 1;
        Node *const xe = reinterpret_cast<Node *>(x);
        Node *const e = end_();
        // Appending in key order: `update` always holds the last node of each level in use.
        Node *update[VMapData::LastLevel + 1];
        update[0] = xe;
        for (Node *cur = e->next[0]; cur != e; cur = cur->next[0]) {
            Payload *source = payload(cur);
            Node *n = x->node_create(update, kOffset);
            Payload *p = payload(n);
            try {
                new (&p->key) Key(source->key);
                try {
                    new (&p->value) T(source->value);
                } catch (...) {
                    p->key.~Key();
                    throw;
                }
            } catch (...) {
                // The failed node is the last one: free it with the rest, unmade.
                for (Node *made = xe->next[0]; made != n; made = made->next[0]) {
                    payload(made)->key.~Key();
                    payload(made)->value.~T();
                }
                x->continueFreeData(kOffset);
                throw;
            }
        }
        x->insertInOrder = 0;
        if (!d->ref.deref()) {
            freeData(d);
        }
        d = x;
    }

    static void freeData(VMapData *x) {
        Node *const e = reinterpret_cast<Node *>(x);
        for (Node *cur = e->next[0]; cur != e; cur = cur->next[0]) {
            Payload *p = payload(cur);
            p->key.~Key();
            p->value.~T();
        }
        x->continueFreeData(kOffset);
    }

    using Base::d;
};

template <typename Key, typename T>
void swap(VMap<Key, T> &a, VMap<Key, T> &b) noexcept {
    a.swap(b);
}

}  // namespace VORT

#endif  // VORT_BONES_VMAP_H
