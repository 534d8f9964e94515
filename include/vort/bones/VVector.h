// `VORT::VVector<T>`: an implicitly shared array of `T` stored directly behind the header of
// the exported, non-template `VVectorData`; and `VORT::VTypeInfo<T>`, the trait that says
// whether a `T` may be moved by copying its bytes.
//
// Movable and other types: `VTypeInfo<T>::isMovable` defaults to
// `std::is_trivially_copyable<T>`. A movable `T` (numbers, raw pointers, `VTPoint<double>`) is
// relocated with `realloc`/`memmove` and grows by powers of two; any other `T` (`std::string`,
// `Holder<Package>`: objects that know their own address or own something) is copy-constructed
// one by one, last to first, into every new block and grows by half its size each time.
// Specialise `VTypeInfo` to declare a class movable that is not trivially copyable but may
// still be relocated by its bytes.
//
// Sharing: a copy shares the block; the first write through a container whose block is shared
// gives it a deep copy first. Every empty vector shares `VVectorData::shared_null`. An
// unsharable vector (`setSharable(false)`) is deep-copied whenever it is copied. `reserve`
// marks the block so that shrinking `resize` calls keep the capacity; `squeeze` clears that.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock.
//
// Failure: allocation failures are not tested (the process falls on a null block). Indices must
// be valid; a debug build asserts. An exception from a `T` while the capacity changes leaves the
// vector as it was.
#ifndef VORT_BONES_VVECTOR_H
#define VORT_BONES_VVECTOR_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/vort_export.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace VORT {

// Whether a `T` may be moved to another address by copying its bytes (and then forgetting the
// original without destroying it).
template <typename T>
struct VTypeInfo {
    static constexpr bool isMovable = std::is_trivially_copyable<T>::value;
};

// The type-independent half of `VVector`: a header that the elements follow directly, at the
// alignment of `T`. "Typed data" below means header plus one element, padding included.
struct VORT_EXPORT VVectorData {
    AtomicCounter ref;
    int capacity;
    int size;
    unsigned int sharable : 1;
    unsigned int reserved : 1;  // the caller reserved space: shrinking keeps it

    // Shared by every empty vector: count 1 plus one per container on it, never freed.
    static VVectorData shared_null;

    // A new block for `size` elements with `old`'s header and the bytes of its first
    // `min(size, old->capacity)` elements.
    static VVectorData *malloc(int sizeOfTypedData, int size, std::size_t sizeOfElement,
                               VVectorData *old);
    // The capacity to give a vector that must hold `size` elements: half as much again when
    // `excessive`, else the elements that fit the block `vortAllocMore` sizes.
    static int grow(int sizeOfTypedData, int size, std::size_t sizeOfElement, bool excessive);
};

template <typename T>
class VVector : public VSharedBlock<VVector<T>, VVectorData *> {
    using Base = VSharedBlock<VVector<T>, VVectorData *>;
    friend Base;

    static_assert(alignof(T) <= alignof(std::max_align_t), "over-aligned vector elements");

    static constexpr bool kMovable = VTypeInfo<T>::isMovable;
    // Copies out of a shared block may be made of bytes only for plain data.
    static constexpr bool kBitwise = std::is_trivially_copyable<T>::value;
    static constexpr std::size_t kOffset =
        (sizeof(VVectorData) + alignof(T) - 1) / alignof(T) * alignof(T);
    static constexpr int kSizeOfTypedData = int(kOffset + sizeof(T));

    static T *array(VVectorData *x) {
        return reinterpret_cast<T *>(reinterpret_cast<char *>(x) + kOffset);
    }
    static std::size_t bytesFor(int capacity) {
        return kOffset + std::size_t(capacity) * sizeof(T);
    }
    static int grow(int size) {
        return VVectorData::grow(kSizeOfTypedData, size, sizeof(T), !kMovable);
    }

public:
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = const T &;
    using pointer = T *;
    using const_pointer = const T *;
    using iterator = T *;
    using const_iterator = const T *;
    using Iterator = iterator;
    using ConstIterator = const_iterator;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    using Base::count;
    using Base::detach;
    using Base::isEmpty;
    using Base::size;

    VVector() noexcept = default;
    // `size` value-initialised elements, and no spare capacity.
    explicit VVector(int size) {
        if (size > 0) {
            reallocData(size, size);
        }
    }
    VVector(int size, const T &t) {
        if (size > 0) {
            reallocData(0, size);
            fillEnd(size, t);
        }
    }
    VVector(std::initializer_list<T> items) {
        reserveExactly(int(items.size()));
        for (const T &t : items) {
            new (array(d) + d->size) T(t);
            ++d->size;
        }
    }

    static VVector fromStdVector(const std::vector<T> &items) {
        VVector v;
        v.reserveExactly(int(items.size()));
        for (const T &t : items) {
            new (array(v.d) + v.d->size) T(t);
            ++v.d->size;
        }
        return v;
    }
    std::vector<T> toStdVector() const { return std::vector<T>(begin(), end()); }

    // Size and capacity.
    int length() const { return d->size; }
    int capacity() const { return d->capacity; }
    // New elements are value-initialised. Shrinking below half the capacity gives memory back
    // unless space was reserved.
    void resize(int size) {
        const bool reallocate =
            size > d->capacity || (!d->reserved && size < d->size && size < (d->capacity >> 1));
        if (!reallocate && size == d->size) {
            return;  // nothing changes, so nothing to detach for
        }
        reallocData(size, reallocate ? grow(size) : d->capacity);
    }
    // Makes room for `n` elements and keeps it through shrinking `resize` calls.
    void reserve(int n) {
        if (n > d->capacity) {
            reallocData(d->size, n);
        }
        if (isOnlyReference(d->ref)) {
            d->reserved = 1;
        }
    }
    void squeeze() {
        if (d->size < d->capacity) {
            reallocData(d->size, d->size);
        }
        if (isOnlyReference(d->ref) && d->reserved) {
            d->reserved = 0;
        }
    }

    // Access.
    T *data() {
        detach();
        return array(d);
    }
    const T *data() const { return array(d); }
    const T *constData() const { return array(d); }
    const T &at(int i) const {
        assert(i >= 0 && i < d->size);
        return array(d)[i];
    }
    const T &operator[](int i) const { return at(i); }
    T &operator[](int i) {
        assert(i >= 0 && i < d->size);
        return data()[i];
    }
    T value(int i) const { return i >= 0 && i < d->size ? at(i) : T(); }
    T value(int i, const T &fallback) const { return i >= 0 && i < d->size ? at(i) : fallback; }
    T &first() { return (*this)[0]; }
    const T &first() const { return at(0); }
    const T &constFirst() const { return at(0); }
    T &last() { return (*this)[d->size - 1]; }
    const T &last() const { return at(d->size - 1); }
    const T &constLast() const { return at(d->size - 1); }
    T &front() { return first(); }
    const T &front() const { return first(); }
    T &back() { return last(); }
    const T &back() const { return last(); }

    // Adding.
    void append(const T &t) {
        if (isOnlyReference(d->ref) && d->size < d->capacity) {
            new (array(d) + d->size) T(t);
            ++d->size;
            return;
        }
        const T copy(t);  // `t` may live in the block that is about to go
        reallocData(d->size, grow(d->size + 1));
        new (array(d) + d->size) T(copy);
        ++d->size;
    }
    void append(const VVector &other) {
        if (other.isEmpty()) {
            return;
        }
        if (isEmpty() && other.d->sharable) {
            *this = other;
            return;
        }
        const VVector keep(other);  // `other` may be this vector
        const int n = keep.size();
        if (!isOnlyReference(d->ref) || d->size + n > d->capacity) {
            reallocData(d->size, d->size + n > d->capacity ? grow(d->size + n) : d->capacity);
        }
        const T *from = array(keep.d);
        for (int k = 0; k < n; ++k) {
            new (array(d) + d->size) T(from[k]);
            ++d->size;
        }
    }
    void prepend(const T &t) { insert(0, 1, t); }
    void insert(int i, const T &t) { insert(i, 1, t); }
    // Inserts `n` copies of `t` before index `i`.
    void insert(int i, int n, const T &t) {
        assert(i >= 0 && i <= d->size && n >= 0);
        if (n <= 0) {
            return;
        }
        const T copy(t);
        if (!isOnlyReference(d->ref) || d->size + n > d->capacity) {
            reallocData(d->size, d->size + n > d->capacity ? grow(d->size + n) : d->capacity);
        }
        T *b = array(d);
        const int size = d->size;
        if constexpr (kMovable) {
            std::memmove(static_cast<void *>(b + i + n), static_cast<const void *>(b + i),
                         std::size_t(size - i) * sizeof(T));
            int made = 0;
            try {
                for (; made < n; ++made) {
                    new (b + i + made) T(copy);
                }
            } catch (...) {
                destroy(b + i, b + i + made);
                std::memmove(static_cast<void *>(b + i), static_cast<const void *>(b + i + n),
                             std::size_t(size - i) * sizeof(T));
                throw;
            }
        } else {
            // The new end is made by copies, the rest shifts by assignment.
            int k = size + n;
            try {
                while (k > size) {
                    --k;
                    new (b + k) T(k - n >= i ? b[k - n] : copy);
                }
            } catch (...) {
                destroy(b + k + 1, b + size + n);
                throw;
            }
            d->size = size + n;
            for (int j = size - 1; j >= i + n; --j) {
                b[j] = b[j - n];
            }
            for (int j = i; j < i + n && j < size; ++j) {
                b[j] = copy;
            }
            return;
        }
        d->size = size + n;
    }
    iterator insert(iterator before, const T &t) { return insert(before, 1, t); }
    iterator insert(iterator before, int n, const T &t) {
        const int i = int(before - array(d));
        insert(i, n, t);
        return array(d) + i;
    }
    void replace(int i, const T &t) {
        const T copy(t);
        (*this)[i] = copy;
    }
    void push_back(const T &t) { append(t); }
    void push_front(const T &t) { prepend(t); }
    VVector &operator+=(const VVector &other) { return append(other), *this; }
    VVector &operator+=(const T &t) { return append(t), *this; }
    VVector &operator<<(const VVector &other) { return append(other), *this; }
    VVector &operator<<(const T &t) { return append(t), *this; }
    VVector operator+(const VVector &other) const {
        VVector sum(*this);
        sum.append(other);
        return sum;
    }
    // Sets every element to `t`, after resizing to `size` when it is not negative.
    VVector &fill(const T &t, int size = -1) {
        const T copy(t);
        if (size >= 0) {
            resize(size);
        }
        T *b = data();
        for (int k = 0; k < d->size; ++k) {
            b[k] = copy;
        }
        return *this;
    }

    // Removing.
    iterator erase(iterator from, iterator to) {
        const int f = int(from - array(d));
        const int n = int(to - from);
        if (n <= 0) {
            return data() + f;
        }
        detach();
        T *b = array(d);
        const int size = d->size;
        if constexpr (kMovable) {
            destroy(b + f, b + f + n);
            std::memmove(static_cast<void *>(b + f), static_cast<const void *>(b + f + n),
                         std::size_t(size - f - n) * sizeof(T));
        } else {
            std::move(b + f + n, b + size, b + f);
            destroy(b + size - n, b + size);
        }
        d->size = size - n;
        return b + f;
    }
    iterator erase(iterator pos) { return erase(pos, pos + 1); }
    void remove(int i) { remove(i, 1); }
    void remove(int i, int n) {
        assert(i >= 0 && n >= 0 && i + n <= d->size);
        erase(array(d) + i, array(d) + i + n);
    }
    void removeAt(int i) { remove(i, 1); }
    void removeFirst() { remove(0, 1); }
    void removeLast() {
        assert(d->size > 0);
        detach();
        --d->size;
        array(d)[d->size].~T();
    }
    void pop_front() { removeFirst(); }
    void pop_back() { removeLast(); }
    T takeAt(int i) {
        T t(std::move((*this)[i]));
        remove(i);
        return t;
    }
    T takeFirst() { return takeAt(0); }
    T takeLast() {
        T t(std::move(last()));
        removeLast();
        return t;
    }
    int removeAll(const T &t) {
        const int from = indexOf(t);
        if (from < 0) {
            return 0;
        }
        const T copy(t);
        T *b = data();
        T *kept = std::remove(b + from, b + d->size, copy);
        const int removed = int(b + d->size - kept);
        erase(kept, b + d->size);
        return removed;
    }
    bool removeOne(const T &t) {
        const int i = indexOf(t);
        if (i < 0) {
            return false;
        }
        remove(i);
        return true;
    }

    // Searching.
    int indexOf(const T &t, int from = 0) const {
        if (from < 0) {
            from = std::max(from + d->size, 0);
        }
        const T *b = array(d);
        for (int i = from; i < d->size; ++i) {
            if (b[i] == t) {
                return i;
            }
        }
        return -1;
    }
    int lastIndexOf(const T &t, int from = -1) const {
        if (from < 0) {
            from += d->size;
        } else if (from >= d->size) {
            from = d->size - 1;
        }
        const T *b = array(d);
        for (int i = from; i >= 0; --i) {
            if (b[i] == t) {
                return i;
            }
        }
        return -1;
    }
    bool contains(const T &t) const { return indexOf(t) >= 0; }
    int count(const T &t) const { return int(std::count(begin(), end(), t)); }
    bool startsWith(const T &t) const { return !isEmpty() && first() == t; }
    bool endsWith(const T &t) const { return !isEmpty() && last() == t; }
    VVector mid(int pos, int length = -1) const {
        pos = std::max(pos, 0);
        const int end = length < 0 || pos + length > d->size ? d->size : pos + length;
        if (pos == 0 && end == d->size) {
            return *this;
        }
        VVector part;
        if (end > pos) {
            part.reserveExactly(end - pos);
            for (int i = pos; i < end; ++i) {
                new (array(part.d) + part.d->size) T(at(i));
                ++part.d->size;
            }
        }
        return part;
    }

    bool operator==(const VVector &other) const {
        return d == other.d ||
               (d->size == other.d->size && std::equal(begin(), end(), other.begin()));
    }
    bool operator!=(const VVector &other) const { return !(*this == other); }

    // Iteration. The non-const forms detach first.
    iterator begin() { return data(); }
    iterator end() { return data() + d->size; }
    const_iterator begin() const { return array(d); }
    const_iterator end() const { return array(d) + d->size; }
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

    // The type-independent half, for code that inspects the block.
    const VVectorData &header() const { return *d; }

private:
    static void destroy(T *from, T *to) {
        if constexpr (!std::is_trivially_destructible<T>::value) {
            while (to != from) {
                (--to)->~T();
            }
        } else {
            (void)from;
            (void)to;
        }
    }

    static void freeData(VVectorData *x) {
        destroy(array(x), array(x) + x->size);
        std::free(x);
    }

    // An own block of exactly `n` elements' room, for filling by hand from empty.
    void reserveExactly(int n) {
        if (n > 0) {
            reallocData(0, n);
        }
    }

    // Appends `n` copies of `t`; the room is there.
    void fillEnd(int n, const T &t) {
        for (int k = 0; k < n; ++k) {
            new (array(d) + d->size) T(t);
            ++d->size;
        }
    }

    // Gives the vector `size` elements in a block of `capacity`, unshared. With the same
    // capacity and an unshared block, elements are only made or destroyed at the end.
    void reallocData(int size, int capacity) {
        VVectorData *const old = d;
        const int oldSize = old->size;
        // The shared null is always shared (every empty vector holds it on top of the reference
        // it was born with); saying so outright keeps the compiler from seeing it reallocated
        // or freed below.
        const bool shared = old == &VVectorData::shared_null || !isOnlyReference(old->ref);
        const bool newCapacity = capacity != old->capacity || shared;
        // Whether the elements go to a new block as copies, rather than staying or moving
        // with their bytes.
        const bool copies = newCapacity && !(kMovable && !shared);
        const int keep = std::min(size, oldSize);

        if (!copies && size < oldSize) {
            destroy(array(old) + size, array(old) + oldSize);
            old->size = size;
        }
        VVectorData *x = old;
        if (newCapacity) {
            if (copies) {
                x = VVectorData::malloc(kSizeOfTypedData, capacity, sizeof(T), old);
            } else {
                x = static_cast<VVectorData *>(
                    std::realloc(static_cast<void *>(old), bytesFor(capacity)));
                d = x;  // the old address is gone
            }
            x->ref.init(1);
            x->sharable = 1;
            x->capacity = capacity;
        }

        T *const to = array(x);
        int low = keep;   // copies made: [low, keep)
        int high = keep;  // new elements made: [keep, high)
        try {
            if (copies && !kBitwise) {
                const T *const from = array(old);
                while (low > 0) {  // one by one, from the last to the first
                    new (to + low - 1) T(from[low - 1]);
                    --low;
                }
            }
            for (; high < size; ++high) {
                new (to + high) T();
            }
        } catch (...) {
            if (copies) {
                destroy(to + low, to + high);
                std::free(x);
            } else {
                destroy(to + keep, to + high);
                x->size = keep;
            }
            throw;
        }
        x->size = size;
        if (copies) {
            if (!old->ref.deref() && old != &VVectorData::shared_null) {
                freeData(old);
            }
            d = x;
        }
    }

    // A copy of a shared or unsharable block keeps its capacity.
    void detachHelper() { reallocData(d->size, d->capacity); }

    using Base::d;
};

template <typename T>
void swap(VVector<T> &a, VVector<T> &b) noexcept {
    a.swap(b);
}

}  // namespace VORT

#endif  // VORT_BONES_VVECTOR_H
