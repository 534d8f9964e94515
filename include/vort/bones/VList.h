// `VORT::VList<T>`: an implicitly shared list of slots that grows at both ends, over the
// exported, non-template `VListData`; and `vortAllocMore`, the block sizing that every container
// of the library shares.
//
// Sharing: a copy shares the block and increments its count; the first write through a
// container whose block is shared gives it a deep copy first ("detach"). Every empty list shares
// `VListData::shared_null`. A container whose block is not sharable (`setSharable(false)`) is
// deep-copied whenever it is copied, so that iterators and references into it stay valid.
//
// Storage: each slot is one pointer. Scalars no larger than a pointer (integers, enumerations,
// floating-point numbers, raw pointers) are stored in the slot itself; every other `T` (classes,
// `std::string`, pointer-sized classes such as `ClassName`) is allocated on the heap with `new`
// and the slot holds its address, so that moving slots never moves a `T` and `T` needs no
// particular layout.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock.
//
// Failure: allocation failures are not tested (the process falls on a null block). Indices
// must be valid; a debug build asserts. Exceptions thrown by `T` leave the list unchanged.
#ifndef VORT_BONES_VLIST_H
#define VORT_BONES_VLIST_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/vort_export.h>

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace VORT {

// Bytes to allocate for a payload of `alloc` bytes so that payload plus `extra` (a header) fits a
// well-sized block: steps of 8 under 64 bytes (always at least one byte to spare), powers of two
// from there on, saturating at 0x7FFFFFFF.
VORT_EXPORT int vortAllocMore(int alloc, int extra);

// The type-independent half of `VList<T>`: a block of pointer-sized slots of which
// [first, last) are in use. All operations return or take slot addresses; what a slot holds is the
// template's business. Operations that may move slots invalidate earlier slot addresses.
struct VORT_EXPORT VListData {
    // Block header and slots. `items` is declared with one slot but runs on to `capacity`: a
    // block is allocated as the header (the bytes up to `items`, 24 on a 64-bit system) plus
    // `capacity` slots, so `sizeof(Data)` is never the size of a block.
    struct Data {
        AtomicCounter ref;
        int capacity;
        int first;
        int last;
        unsigned int sharable : 1;
        void *items[1];
    };

    // Shared by every empty list: count 1 plus one per container on it, never freed.
    static Data shared_null;

    Data *d;

    // Capacity for at least `n` slots, rounded up by `vortAllocMore`.
    static int grow(int n);

    int size() const { return d->last - d->first; }
    bool isEmpty() const { return d->last == d->first; }
    void **at(int i) const { return d->items + d->first + i; }
    void **begin() const { return d->items + d->first; }
    void **end() const { return d->items + d->last; }

    // Both give `d` a fresh, unshared copy of the block (same capacity, slots copied as they are)
    // and return the old block. After `detach2` the caller drops the old block's count and frees
    // it when that falls to zero. `detach` drops the count itself and returns the old block only
    // when it fell to zero, else null.
    Data *detach();
    Data *detach2();
    void realloc(int capacity);

    // Each of these makes room and returns the new slot(s); the list must be unshared.
    void **append();
    void **append(const VListData &other);  // copies the other's slots, returns the first
    void **prepend();
    void **insert(int i);

    // These move whichever side of the list is shorter.
    void remove(int i);
    void remove(int i, int n);
    void move(int from, int to);
    // Removes the slot at `slot`; returns the slot now at its index.
    void **erase(void **slot);
};

// Whether `VList<T>` keeps a `T` in the slot itself rather than a pointer to a heap copy.
template <typename T>
struct VListStoresInSlot
    : std::integral_constant<bool, std::is_scalar<T>::value && sizeof(T) <= sizeof(void *) &&
                                       alignof(T) <= alignof(void *)> {};

// `VList` keeps its block behind a `VListData`, whose operations work on the slots.
template <>
struct VSharedHandle<VListData> {
    using Block = VListData::Data;

    static VListData sharedNull() { return VListData{&VListData::shared_null}; }
    static Block *block(const VListData &handle) { return handle.d; }
    static int size(const VListData &handle) { return handle.size(); }
};

template <typename T>
class VList : public VSharedBlock<VList<T>, VListData> {
    using Base = VSharedBlock<VList<T>, VListData>;
    friend Base;

    static constexpr bool kInSlot = VListStoresInSlot<T>::value;

    // An element kept in its slot is the slot's bytes; the library moves those with memmove,
    // which carries the element along (a scalar has no identity beyond its bytes). No
    // std::launder here: it would stop the compiler from vectorising loops over the list.
    static T &item(void **slot) {
        if constexpr (kInSlot) {
            return *reinterpret_cast<T *>(slot);
        } else {
            return *static_cast<T *>(*slot);
        }
    }

public:
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;
    using pointer = T *;
    using const_pointer = const T *;

    class const_iterator;

    class iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = T *;
        using reference = T &;

        iterator() = default;
        explicit iterator(void **slot) : i(slot) {}

        T &operator*() const { return item(i); }
        T *operator->() const { return &item(i); }
        T &operator[](difference_type n) const { return item(i + n); }

        iterator &operator++() { return ++i, *this; }
        iterator operator++(int) { return iterator(i++); }
        iterator &operator--() { return --i, *this; }
        iterator operator--(int) { return iterator(i--); }
        iterator &operator+=(difference_type n) { return i += n, *this; }
        iterator &operator-=(difference_type n) { return i -= n, *this; }
        friend iterator operator+(iterator a, difference_type n) { return a += n; }
        friend iterator operator+(difference_type n, iterator a) { return a += n; }
        friend iterator operator-(iterator a, difference_type n) { return a -= n; }
        friend difference_type operator-(iterator a, iterator b) { return a.i - b.i; }

        friend bool operator==(iterator a, iterator b) { return a.i == b.i; }
        friend bool operator!=(iterator a, iterator b) { return a.i != b.i; }
        friend bool operator<(iterator a, iterator b) { return a.i < b.i; }
        friend bool operator>(iterator a, iterator b) { return a.i > b.i; }
        friend bool operator<=(iterator a, iterator b) { return a.i <= b.i; }
        friend bool operator>=(iterator a, iterator b) { return a.i >= b.i; }

        void **i = nullptr;
    };

    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T *;
        using reference = const T &;

        const_iterator() = default;
        explicit const_iterator(void **slot) : i(slot) {}
        const_iterator(iterator it) : i(it.i) {}  // NOLINT: implicit like the standard's

        const T &operator*() const { return item(i); }
        const T *operator->() const { return &item(i); }
        const T &operator[](difference_type n) const { return item(i + n); }

        const_iterator &operator++() { return ++i, *this; }
        const_iterator operator++(int) { return const_iterator(i++); }
        const_iterator &operator--() { return --i, *this; }
        const_iterator operator--(int) { return const_iterator(i--); }
        const_iterator &operator+=(difference_type n) { return i += n, *this; }
        const_iterator &operator-=(difference_type n) { return i -= n, *this; }
        friend const_iterator operator+(const_iterator a, difference_type n) { return a += n; }
        friend const_iterator operator+(difference_type n, const_iterator a) { return a += n; }
        friend const_iterator operator-(const_iterator a, difference_type n) { return a -= n; }
        friend difference_type operator-(const_iterator a, const_iterator b) { return a.i - b.i; }

        friend bool operator==(const_iterator a, const_iterator b) { return a.i == b.i; }
        friend bool operator!=(const_iterator a, const_iterator b) { return a.i != b.i; }
        friend bool operator<(const_iterator a, const_iterator b) { return a.i < b.i; }
        friend bool operator>(const_iterator a, const_iterator b) { return a.i > b.i; }
        friend bool operator<=(const_iterator a, const_iterator b) { return a.i <= b.i; }
        friend bool operator>=(const_iterator a, const_iterator b) { return a.i >= b.i; }

        void **i = nullptr;
    };

    using Iterator = iterator;
    using ConstIterator = const_iterator;

    using Base::count;
    using Base::detach;
    using Base::isEmpty;
    using Base::size;

    VList() noexcept = default;
    VList(std::initializer_list<T> items) {
        reserve(int(items.size()));
        for (const T &t : items) {
            append(t);
        }
    }
    template <typename InputIt,
              typename = typename std::iterator_traits<InputIt>::iterator_category>
    VList(InputIt from, InputIt to) {
        for (; from != to; ++from) {
            append(*from);
        }
    }

    // Size.
    int length() const { return d.size(); }
    int capacity() const { return block()->capacity; }
    // Makes room for `n` slots in all, keeping the list's place in the block.
    void reserve(int n) {
        if (block()->capacity < n) {
            detach();
            if (block()->capacity < n) {
                d.realloc(n);
            }
        }
    }

    // Access.
    const T &at(int i) const {
        assert(i >= 0 && i < size());
        return item(d.at(i));
    }
    const T &operator[](int i) const { return at(i); }
    T &operator[](int i) {
        assert(i >= 0 && i < size());
        detach();
        return item(d.at(i));
    }
    T value(int i) const { return i >= 0 && i < size() ? at(i) : T(); }
    T value(int i, const T &fallback) const { return i >= 0 && i < size() ? at(i) : fallback; }
    T &first() { return (*this)[0]; }
    const T &first() const { return at(0); }
    const T &constFirst() const { return at(0); }
    T &last() { return (*this)[size() - 1]; }
    const T &last() const { return at(size() - 1); }
    const T &constLast() const { return at(size() - 1); }
    T &front() { return first(); }
    const T &front() const { return first(); }
    T &back() { return last(); }
    const T &back() const { return last(); }

    // Adding.
    void append(const T &t) {
        if constexpr (kInSlot) {
            const T copy(t);  // `t` may live in this list's block
            appendWith([&copy](void **slot) { new (slot) T(copy); });
        } else {
            std::unique_ptr<T> node(new T(t));
            appendWith([&node](void **slot) { *slot = node.release(); });
        }
    }
    void append(T &&t) {
        if constexpr (kInSlot) {
            append(static_cast<const T &>(t));
        } else {
            std::unique_ptr<T> node(new T(std::move(t)));
            appendWith([&node](void **slot) { *slot = node.release(); });
        }
    }
    void append(const VList &other) {
        if (other.isEmpty()) {
            return;
        }
        if (isEmpty() && other.isSharable()) {
            *this = other;
            return;
        }
        detach();
        void **from = d.append(other.d);
        copyInPlace(from, d.end());
    }
    void prepend(const T &t) {
        storeAt(t, [this] { return prependSlot(); });
    }
    void prepend(T &&t) {
        storeAt(std::move(t), [this] { return prependSlot(); });
    }
    // Inserts before index `i`; `i <= 0` prepends and `i >= size()` appends.
    void insert(int i, const T &t) {
        storeAt(t, [this, i] { return d.insert(i); });
    }
    void insert(int i, T &&t) {
        storeAt(std::move(t), [this, i] { return d.insert(i); });
    }
    iterator insert(iterator before, const T &t) {
        const int i = slotIndex(before);
        insert(i, t);
        return iterator(d.at(i));
    }
    void replace(int i, const T &t) { (*this)[i] = t; }
    void push_back(const T &t) { append(t); }
    void push_back(T &&t) { append(std::move(t)); }
    void push_front(const T &t) { prepend(t); }
    void push_front(T &&t) { prepend(std::move(t)); }
    VList &operator+=(const VList &other) { return append(other), *this; }
    VList &operator+=(const T &t) { return append(t), *this; }
    VList &operator<<(const VList &other) { return append(other), *this; }
    VList &operator<<(const T &t) { return append(t), *this; }
    VList operator+(const VList &other) const {
        VList sum(*this);
        sum.append(other);
        return sum;
    }

    // Removing.
    void removeAt(int i) {
        assert(i >= 0 && i < size());
        detach();
        void **slot = d.at(i);
        void *old = *slot;
        d.remove(i);
        destroySlotValue(old);
    }
    void removeFirst() { removeAt(0); }
    void removeLast() { removeAt(size() - 1); }
    void pop_front() { removeFirst(); }
    void pop_back() { removeLast(); }
    T takeAt(int i) {
        T t(std::move((*this)[i]));
        removeAt(i);
        return t;
    }
    T takeFirst() { return takeAt(0); }
    T takeLast() { return takeAt(size() - 1); }
    // Removes every element equal to `t`; returns how many.
    int removeAll(const T &t) {
        const int from = indexOf(t);
        if (from < 0) {
            return 0;
        }
        const T copy(t);
        detach();
        int kept = from;
        for (int i = from; i < size(); ++i) {
            void **slot = d.at(i);
            if (item(slot) == copy) {
                destroySlotValue(*slot);
            } else {
                *d.at(kept++) = *slot;
            }
        }
        const int removed = size() - kept;
        block()->last -= removed;
        return removed;
    }
    bool removeOne(const T &t) {
        const int i = indexOf(t);
        if (i < 0) {
            return false;
        }
        removeAt(i);
        return true;
    }
    iterator erase(iterator pos) {
        const int i = slotIndex(pos);
        removeAt(i);
        return iterator(d.at(i));
    }
    iterator erase(iterator from, iterator to) {
        const int i = slotIndex(from);
        const int n = int(to - from);
        if (n > 0) {
            detach();
            for (int k = 0; k < n; ++k) {
                destroySlotValue(*d.at(i + k));
            }
            d.remove(i, n);
        }
        return iterator(d.at(i));
    }

    // Reordering.
    void move(int from, int to) {
        assert(from >= 0 && from < size() && to >= 0 && to < size());
        detach();
        d.move(from, to);
    }
    void swapItemsAt(int i, int j) {
        assert(i >= 0 && i < size() && j >= 0 && j < size());
        detach();
        std::swap(*d.at(i), *d.at(j));
    }

    // Searching.
    int indexOf(const T &t, int from = 0) const {
        if (from < 0) {
            from = from + size() < 0 ? 0 : from + size();
        }
        for (int i = from; i < size(); ++i) {
            if (item(d.at(i)) == t) {
                return i;
            }
        }
        return -1;
    }
    int lastIndexOf(const T &t, int from = -1) const {
        if (from < 0) {
            from += size();
        } else if (from >= size()) {
            from = size() - 1;
        }
        for (int i = from; i >= 0; --i) {
            if (item(d.at(i)) == t) {
                return i;
            }
        }
        return -1;
    }
    bool contains(const T &t) const { return indexOf(t) >= 0; }
    int count(const T &t) const {
        int n = 0;
        for (void **s = d.begin(); s != d.end(); ++s) {
            n += item(s) == t;
        }
        return n;
    }
    bool startsWith(const T &t) const { return !isEmpty() && at(0) == t; }
    bool endsWith(const T &t) const { return !isEmpty() && at(size() - 1) == t; }
    // `length` elements from `pos`, or all to the end when `length` is negative.
    VList mid(int pos, int length = -1) const {
        if (pos < 0) {
            pos = 0;
        }
        const int end = length < 0 || pos + length > size() ? size() : pos + length;
        if (pos == 0 && end == size()) {
            return *this;
        }
        VList part;
        part.reserve(end - pos > 0 ? end - pos : 0);
        for (int i = pos; i < end; ++i) {
            part.append(at(i));
        }
        return part;
    }

    bool operator==(const VList &other) const {
        if (block() == other.block()) {
            return true;
        }
        if (size() != other.size()) {
            return false;
        }
        for (void **a = d.begin(), **b = other.d.begin(); a != d.end(); ++a, ++b) {
            if (!(item(a) == item(b))) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const VList &other) const { return !(*this == other); }

    // Iteration. The non-const forms detach first, so writes through them never reach another
    // container.
    iterator begin() {
        detach();
        return iterator(d.begin());
    }
    iterator end() {
        detach();
        return iterator(d.end());
    }
    const_iterator begin() const { return const_iterator(d.begin()); }
    const_iterator end() const { return const_iterator(d.end()); }
    const_iterator cbegin() const { return const_iterator(d.begin()); }
    const_iterator cend() const { return const_iterator(d.end()); }
    const_iterator constBegin() const { return const_iterator(d.begin()); }
    const_iterator constEnd() const { return const_iterator(d.end()); }
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator crend() const { return const_reverse_iterator(begin()); }

    // The type-independent half, for code that inspects the block.
    const VListData &data() const { return d; }

private:
    // Detaches if need be and stores the new element through `store`. The common case (an
    // unshared block with room) is inline; `VListData::append` runs only when the block is
    // full. `last` is read before the count and written after the element, so that a loop of
    // appends can keep it in a register: the count's atomic read and the element's store
    // would otherwise force it back to memory each time.
    template <typename Store>
    void appendWith(Store store) {
        detach();
        VListData::Data *const b = block();
        const int last = b->last;
        if (last < b->capacity) {
            store(b->items + last);
            b->last = last + 1;
            return;
        }
        store(d.append());
    }

    void **prependSlot() {
        VListData::Data *const b = block();
        if (b->first > 0) {
            return b->items + --b->first;
        }
        return d.prepend();
    }

    template <typename U, typename MakeSlot>
    void storeAt(U &&t, MakeSlot makeSlot) {
        if constexpr (kInSlot) {
            const T copy(t);
            detach();
            new (makeSlot()) T(copy);
        } else {
            std::unique_ptr<T> node(new T(std::forward<U>(t)));
            detach();
            *makeSlot() = node.release();
        }
    }

    int slotIndex(const_iterator it) const { return int(it.i - d.begin()); }

    static void destroySlotValue(void *slot) {
        if constexpr (!kInSlot) {
            delete static_cast<T *>(slot);
        } else {
            (void)slot;
        }
    }

    // Slots [from, to) still point at another block's elements: give them copies of their own.
    // On an exception the copies made so far are deleted and the slots from the failing one on
    // are dropped, so the list stays consistent.
    void copyInPlace(void **from, void **to) {
        if constexpr (!kInSlot) {
            void **s = from;
            try {
                for (; s != to; ++s) {
                    *s = new T(*static_cast<T *>(*s));
                }
            } catch (...) {
                for (void **made = from; made != s; ++made) {
                    delete static_cast<T *>(*made);
                }
                block()->last -= int(to - from);
                throw;
            }
        } else {
            (void)from;
            (void)to;
        }
    }

    void detachHelper() {
        VListData::Data *old = d.detach2();
        if constexpr (!kInSlot) {
            void **from = d.begin();
            void **s = from;
            try {
                for (; s != d.end(); ++s) {
                    *s = new T(*static_cast<T *>(*s));
                }
            } catch (...) {
                for (void **made = from; made != s; ++made) {
                    delete static_cast<T *>(*made);
                }
                std::free(d.d);
                d.d = old;
                throw;
            }
        }
        if (!old->ref.deref()) {
            freeData(old);
        }
    }

    static void freeData(VListData::Data *x) {
        if constexpr (!kInSlot) {
            void **from = x->items + x->first;
            for (void **s = x->items + x->last; s != from;) {
                delete static_cast<T *>(*--s);
            }
        }
        std::free(x);
    }

    using Base::block;
    using Base::d;
};

template <typename T>
void swap(VList<T> &a, VList<T> &b) noexcept {
    a.swap(b);
}

}  // namespace VORT

#endif  // VORT_BONES_VLIST_H
