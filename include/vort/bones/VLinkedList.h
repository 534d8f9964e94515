// `VORT::VLinkedList<T>`: an implicitly shared doubly linked list over the exported,
// non-template `VLinkedListData`, whose block is the list's head and end node at once.
//
// Sharing: a copy shares the block; the first write through a container whose block is shared
// gives it a deep copy first. Every empty list shares `VLinkedListData::shared_null`. An
// unsharable list (`setSharable(false)`) is deep-copied whenever it is copied. Iterators into an
// unshared list stay valid until their own element is removed.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock.
//
// Failure: allocation failures are not tested. The list must not be empty where an element is
// asked for; a debug build asserts. An exception from a `T` leaves the list as it was.
#ifndef VORT_BONES_VLINKEDLIST_H
#define VORT_BONES_VLINKEDLIST_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/vort_export.h>

#include <cassert>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>

namespace VORT {

// The block of a `VLinkedList`: it is also the node before the first element and after the
// last, so its first two fields are a node's links.
struct VORT_EXPORT VLinkedListData {
    VLinkedListData *next;
    VLinkedListData *previous;
    AtomicCounter ref;
    int size;
    unsigned int sharable : 1;

    // Shared by every empty list: count 1 plus one per container on it, never freed.
    static VLinkedListData shared_null;
};

template <typename T>
class VLinkedList : public VSharedBlock<VLinkedList<T>, VLinkedListData *> {
    using Base = VSharedBlock<VLinkedList<T>, VLinkedListData *>;
    friend Base;

    struct Node {
        Node *next;
        Node *previous;
        T t;
    };
    struct Walk {
        using Node = typename VLinkedList::Node;
        static Node *next(Node *n) { return n->next; }
        static Node *previous(Node *n) { return n->previous; }
    };

public:
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;
    using pointer = T *;
    using const_pointer = const T *;

    class iterator : public VNodeIterator<iterator, Walk, T> {
        using Shell = VNodeIterator<iterator, Walk, T>;

    public:
        using Shell::Shell;

        T &operator*() const { return this->i->t; }
        T *operator->() const { return &this->i->t; }
    };

    class const_iterator : public VNodeIterator<const_iterator, Walk, const T> {
        using Shell = VNodeIterator<const_iterator, Walk, const T>;

    public:
        using Shell::Shell;
        const_iterator(iterator it) : Shell(it.i) {}  // NOLINT: implicit like the standard's

        const T &operator*() const { return this->i->t; }
        const T *operator->() const { return &this->i->t; }
    };

    using Iterator = iterator;
    using ConstIterator = const_iterator;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    using Base::count;
    using Base::detach;
    using Base::isEmpty;
    using Base::size;

    VLinkedList() noexcept = default;
    VLinkedList(std::initializer_list<T> items) {
        for (const T &t : items) {
            append(t);
        }
    }

    // Access.
    T &first() {
        assert(!isEmpty());
        return *begin();
    }
    const T &first() const {
        assert(!isEmpty());
        return e()->next->t;
    }
    T &last() {
        assert(!isEmpty());
        return *--end();
    }
    const T &last() const {
        assert(!isEmpty());
        return e()->previous->t;
    }
    T &front() { return first(); }
    const T &front() const { return first(); }
    T &back() { return last(); }
    const T &back() const { return last(); }

    // Adding.
    void append(const T &t) {
        detach();
        link(e(), t);
    }
    void prepend(const T &t) {
        detach();
        link(e()->next, t);
    }
    // Inserts before `before` and returns the new element.
    iterator insert(iterator before, const T &t) {
        Node *at = before.i;
        if (!isOnlyReference(d->ref)) {
            at = relocate(at);
        }
        return iterator(link(at, t));
    }
    void push_back(const T &t) { append(t); }
    void push_front(const T &t) { prepend(t); }
    VLinkedList &operator+=(const VLinkedList &other) {
        const VLinkedList keep(other);  // `other` may be this list
        detach();
        for (const T &t : keep) {
            link(e(), t);
        }
        return *this;
    }
    VLinkedList &operator+=(const T &t) { return append(t), *this; }
    VLinkedList &operator<<(const VLinkedList &other) { return *this += other; }
    VLinkedList &operator<<(const T &t) { return append(t), *this; }
    VLinkedList operator+(const VLinkedList &other) const {
        VLinkedList sum(*this);
        sum += other;
        return sum;
    }

    // Removing.
    void removeFirst() {
        assert(!isEmpty());
        detach();
        unlink(e()->next);
    }
    void removeLast() {
        assert(!isEmpty());
        detach();
        unlink(e()->previous);
    }
    void pop_front() { removeFirst(); }
    void pop_back() { removeLast(); }
    T takeFirst() {
        T t(std::move(first()));
        removeFirst();
        return t;
    }
    T takeLast() {
        T t(std::move(last()));
        removeLast();
        return t;
    }
    int removeAll(const T &t) {
        const T copy(t);
        detach();
        int removed = 0;
        for (Node *n = e()->next; n != e();) {
            Node *next = n->next;
            if (n->t == copy) {
                unlink(n);
                ++removed;
            }
            n = next;
        }
        return removed;
    }
    bool removeOne(const T &t) {
        detach();
        for (Node *n = e()->next; n != e(); n = n->next) {
            if (n->t == t) {
                unlink(n);
                return true;
            }
        }
        return false;
    }
    // Removes the element at `pos` and returns the next one.
    iterator erase(iterator pos) {
        Node *n = pos.i;
        if (!isOnlyReference(d->ref)) {
            n = relocate(n);
        }
        if (n == e()) {
            return iterator(n);
        }
        Node *next = n->next;
        unlink(n);
        return iterator(next);
    }
    iterator erase(iterator from, iterator to) {
        Node *n = from.i;
        Node *end = to.i;
        if (!isOnlyReference(d->ref)) {
            const int count = distance(n, end);
            n = relocate(n);
            end = n;
            for (int k = 0; k < count; ++k) {
                end = end->next;
            }
        }
        while (n != end) {
            Node *next = n->next;
            unlink(n);
            n = next;
        }
        return iterator(end);
    }

    // Searching.
    bool contains(const T &t) const {
        for (Node *n = e()->next; n != e(); n = n->next) {
            if (n->t == t) {
                return true;
            }
        }
        return false;
    }
    int count(const T &t) const {
        int n = 0;
        for (const T &item : *this) {
            n += item == t;
        }
        return n;
    }
    bool startsWith(const T &t) const { return !isEmpty() && first() == t; }
    bool endsWith(const T &t) const { return !isEmpty() && last() == t; }

    bool operator==(const VLinkedList &other) const {
        if (d == other.d) {
            return true;
        }
        if (size() != other.size()) {
            return false;
        }
        for (Node *a = e()->next, *b = other.e()->next; a != e(); a = a->next, b = b->next) {
            if (!(a->t == b->t)) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const VLinkedList &other) const { return !(*this == other); }

    // Iteration. The non-const forms detach first.
    iterator begin() {
        detach();
        return iterator(e()->next);
    }
    iterator end() {
        detach();
        return iterator(e());
    }
    const_iterator begin() const { return const_iterator(e()->next); }
    const_iterator end() const { return const_iterator(e()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    const_iterator constBegin() const { return begin(); }
    const_iterator constEnd() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

    // The block, for code that inspects the list.
    const VLinkedListData &data() const { return *d; }

private:
    Node *e() const { return reinterpret_cast<Node *>(d); }

    // A new node holding a copy of `t`, before `at`. The list must be unshared.
    Node *link(Node *at, const T &t) {
        Node *n = new Node{at, at->previous, t};
        at->previous->next = n;
        at->previous = n;
        ++d->size;
        return n;
    }
    void unlink(Node *n) {
        n->previous->next = n->next;
        n->next->previous = n->previous;
        delete n;
        --d->size;
    }

    int distance(Node *from, Node *to) const {
        int count = 0;
        for (; from != to; from = from->next) {
            ++count;
        }
        return count;
    }

    // Detaches and returns the node of the copy that stands where `at` stood.
    Node *relocate(Node *at) {
        const int index = distance(e()->next, at);
        detachHelper();
        Node *n = e()->next;
        for (int k = 0; k < index; ++k) {
            n = n->next;
        }
        return n;
    }

    void detachHelper() {
        VLinkedListData *x = new VLinkedListData;
        x->ref.init(1);
        x->size = d->size;
        x->sharable = 1;
        Node *const xe = reinterpret_cast<Node *>(x);
        Node *copy = xe;
        try {
            for (Node *original = e()->next; original != e(); original = original->next) {
                copy->next = new Node{nullptr, copy, original->t};
                copy = copy->next;
            }
        } catch (...) {
            copy->next = xe;
            xe->previous = copy;
            freeData(x);
            throw;
        }
        copy->next = xe;
        xe->previous = copy;
        if (!d->ref.deref()) {
            freeData(d);
        }
        d = x;
    }

    static void freeData(VLinkedListData *x) {
        Node *const xe = reinterpret_cast<Node *>(x);
        Node *n = xe->next;
        while (n != xe) {
            Node *next = n->next;
            delete n;
            n = next;
        }
        delete x;
    }

    using Base::d;
};

template <typename T>
void swap(VLinkedList<T> &a, VLinkedList<T> &b) noexcept {
    a.swap(b);
}

}  // namespace VORT

#endif  // VORT_BONES_VLINKEDLIST_H
