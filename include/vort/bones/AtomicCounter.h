// `VORT::AtomicCounter`: the word on which every reference count of the library rests.
//
// It has no constructor, so that a counter in static storage is zero before any constructor of
// the program has run. Read-modify-write operations are atomic and sequentially consistent;
// the plain stores and reads carry no ordering (they are relaxed atomic accesses, which cost
// the same as plain ones and keep race detectors quiet).
#ifndef VORT_BONES_ATOMICCOUNTER_H
#define VORT_BONES_ATOMICCOUNTER_H

namespace VORT {

class AtomicCounter {
public:
    void init(int value) { __atomic_store_n(&m_value, value, __ATOMIC_RELAXED); }
    AtomicCounter &operator=(int value) {
        init(value);
        return *this;
    }
    AtomicCounter &operator=(const AtomicCounter &other) {
        init(other.load());
        return *this;
    }

    bool operator==(int value) const { return load() == value; }
    bool operator!=(int value) const { return load() != value; }
    bool operator!() const { return load() == 0; }
    operator int() const { return load(); }

    // True if the new value is not 0.
    bool ref() { return __atomic_add_fetch(&m_value, 1, __ATOMIC_SEQ_CST) != 0; }
    bool deref() { return __atomic_sub_fetch(&m_value, 1, __ATOMIC_SEQ_CST) != 0; }

    // Prefix forms return the new value, postfix forms the old one.
    int operator++() { return __atomic_add_fetch(&m_value, 1, __ATOMIC_SEQ_CST); }
    int operator--() { return __atomic_sub_fetch(&m_value, 1, __ATOMIC_SEQ_CST); }
    int operator++(int) const { return __atomic_fetch_add(word(), 1, __ATOMIC_SEQ_CST); }
    int operator--(int) const { return __atomic_fetch_sub(word(), 1, __ATOMIC_SEQ_CST); }

    // Compare and swap: true if the value was `expected` and is now `newValue`.
    bool testAndSet(int expected, int newValue) {
        return __atomic_compare_exchange_n(&m_value, &expected, newValue, false, __ATOMIC_SEQ_CST,
                                           __ATOMIC_SEQ_CST);
    }
    bool testAndSetAcquire(int expected, int newValue) {
        return __atomic_compare_exchange_n(&m_value, &expected, newValue, false, __ATOMIC_ACQUIRE,
                                           __ATOMIC_ACQUIRE);
    }
    bool testAndSetRelease(int expected, int newValue) {
        return __atomic_compare_exchange_n(&m_value, &expected, newValue, false, __ATOMIC_RELEASE,
                                           __ATOMIC_RELAXED);
    }

    // Returns the old value.
    int exchange(int value) { return __atomic_exchange_n(&m_value, value, __ATOMIC_SEQ_CST); }

    volatile int m_value;

private:
    int load() const { return __atomic_load_n(&m_value, __ATOMIC_RELAXED); }
    // The postfix operators are const by the library's long-standing signature, yet they write.
    volatile int *word() const { return const_cast<volatile int *>(&m_value); }
};

// Whether `count` is 1, read with acquire ordering: what a container asks before it writes to
// its block. The acquire pairs with the release of the other owners' `deref`, so whatever they
// did with the block happens before the write of the one owner left.
inline bool isOnlyReference(const AtomicCounter &count) {
    return __atomic_load_n(&count.m_value, __ATOMIC_ACQUIRE) == 1;
}

}  // namespace VORT

#endif  // VORT_BONES_ATOMICCOUNTER_H
