#include <vort/bones/VList.h>

#include <climits>
#include <cstddef>
#include <cstring>

namespace VORT {

namespace {

constexpr int kSlot = int(sizeof(void *));
// The header ends where the slots begin; the one slot that `Data` declares belongs to them.
constexpr int kHeader = int(offsetof(VListData::Data, items));

static_assert(sizeof(void *) != 8 || kHeader == 24, "the list header is 24 bytes on 64 bits");

void moveSlots(void **to, void **from, int n) {
    if (n > 0) {
        std::memmove(to, from, size_t(n) * sizeof(void *));
    }
}

}  // namespace

int vortAllocMore(int alloc, int extra) {
    const long long total = static_cast<long long>(alloc) + extra;
    if (total < 64) {
        return int((total & ~7LL) + 8 - extra);
    }
    int n = total < 4096 ? 8 : 4096;
    while (n < total) {
        if (n > INT_MAX / 2) {
            return 0x7FFFFFFF;  // the next doubling would overflow
        }
        n *= 2;
    }
    return n - extra;
}

// The count is 1 and stays at least 1: every container that adopts the block adds one.
VListData::Data VListData::shared_null = {{1}, 0, 0, 0, 1, {nullptr}};

int VListData::grow(int n) {
    return vortAllocMore(n * kSlot, kHeader) / kSlot;
}

VListData::Data *VListData::detach2() {
    Data *old = d;
    // Field by field rather than one copy of the header: `ref` may be changing on another
    // thread, and is not ours to read as plain bytes.
    d = static_cast<Data *>(std::malloc(size_t(kHeader) + size_t(old->capacity) * kSlot));
    d->ref.init(1);
    d->capacity = old->capacity;
    d->first = old->first;
    d->last = old->last;
    d->sharable = 1;
    if (d->capacity == 0) {
        d->first = d->last = 0;
    } else {
        std::memcpy(d->items, old->items, size_t(old->capacity) * sizeof(void *));
    }
    return old;
}

VListData::Data *VListData::detach() {
    Data *old = detach2();
    return old->ref.deref() ? nullptr : old;
}

void VListData::realloc(int capacity) {
    d = static_cast<Data *>(
        std::realloc(static_cast<void *>(d), size_t(kHeader) + size_t(capacity) * kSlot));
    d->capacity = capacity;
    if (capacity == 0) {
        d->first = d->last = 0;
    }
}

void **VListData::append() {
    if (d->last == d->capacity) {
        const int n = d->last - d->first;
        if (d->first > 2 * d->capacity / 3) {
            // Mostly empty at the front (items were taken from there): slide back, don't grow.
            moveSlots(d->items + n, d->items + d->first, n);
            d->first = n;
            d->last = 2 * n;
        } else {
            realloc(grow(d->capacity + 1));
        }
    }
    return d->items + d->last++;
}

void **VListData::append(const VListData &other) {
    const int n = other.d->last - other.d->first;
    const int e = d->last;
    if (n != 0) {
        if (e + n > d->capacity) {
            realloc(grow(e + n));
        }
        // `other` may be this very object, so its block is read only after the realloc.
        std::memcpy(d->items + d->last, other.d->items + other.d->first,
                    size_t(n) * sizeof(void *));
        d->last += n;
    }
    return d->items + e;
}

void **VListData::prepend() {
    if (d->first == 0) {
        if (d->last >= d->capacity / 3) {
            realloc(grow(d->capacity + 1));
        }
        // Keep a third of the block free behind the items when there is room for it.
        if (d->last < d->capacity / 3) {
            d->first = d->capacity - 2 * d->last;
        } else {
            d->first = d->capacity - d->last;
        }
        moveSlots(d->items + d->first, d->items, d->last);
        d->last += d->first;
    }
    return d->items + --d->first;
}

void **VListData::insert(int i) {
    if (i < 1) {
        return prepend();
    }
    const int size = d->last - d->first;
    if (i >= size) {
        return append();
    }
    bool leftward = false;
    if (d->first == 0) {
        if (d->last == d->capacity) {
            realloc(grow(d->capacity + 1));
        }
    } else {
        leftward = d->last == d->capacity || i < size - i;
    }
    if (leftward) {
        --d->first;
        moveSlots(d->items + d->first, d->items + d->first + 1, i);
    } else {
        moveSlots(d->items + d->first + i + 1, d->items + d->first + i, size - i);
        ++d->last;
    }
    return d->items + d->first + i;
}

void VListData::remove(int i) {
    const int slot = d->first + i;
    if (i >= d->last - slot) {
        moveSlots(d->items + slot, d->items + slot + 1, d->last - slot - 1);
        --d->last;
    } else {
        moveSlots(d->items + d->first + 1, d->items + d->first, i);
        ++d->first;
    }
}

void VListData::remove(int i, int n) {
    const int middle = d->first + i + n / 2;
    if (middle - d->first >= d->last - middle) {
        const int from = d->first + i;
        moveSlots(d->items + from, d->items + from + n, d->last - from - n);
        d->last -= n;
    } else {
        moveSlots(d->items + d->first + n, d->items + d->first, i);
        d->first += n;
    }
}

void VListData::move(int from, int to) {
    if (from == to) {
        return;
    }
    void **items = d->items;
    const int size = d->last - d->first;
    from += d->first;
    to += d->first;
    void *const t = items[from];
    if (from < to) {
        if (d->last == d->capacity || 3 * (to - from) < 2 * size) {
            moveSlots(items + from, items + from + 1, to - from);
        } else {
            // Cheaper to shift both outer parts up by one and leave the middle in place.
            moveSlots(items + d->first + 1, items + d->first, from - d->first);
            moveSlots(items + to + 2, items + to + 1, d->last - (to + 1));
            ++d->first;
            ++d->last;
            ++to;
        }
    } else {
        if (d->first == 0 || 3 * (from - to) < 2 * size) {
            moveSlots(items + to + 1, items + to, from - to);
        } else {
            moveSlots(items + d->first - 1, items + d->first, to - d->first);
            moveSlots(items + from, items + from + 1, d->last - (from + 1));
            --d->first;
            --d->last;
            --to;
        }
    }
    items[to] = t;
}

void **VListData::erase(void **slot) {
    const int i = int(slot - (d->items + d->first));
    remove(i);
    return d->items + d->first + i;
}

}  // namespace VORT
