#include <hsl/hsl.h>
#include <vort/bones/VHash.h>

#include <climits>
#include <cstdint>
#include <cstdlib>

namespace VORT {

namespace {

// Added to 1 << bits to make the bucket count of each size class: primes up to class 26, plain
// powers of two above it.
constexpr unsigned char kPrimeDeltas[32] = {
    0, 0,  1, 3,  1, 5,  3, 3, 1, 9,  7,  5, 3, 9, 25, 3,
    1, 21, 3, 21, 7, 15, 9, 5, 3, 29, 15, 0, 0, 0, 0,  0,
};

// The smallest size class in use, and the largest whose bucket count an int holds.
constexpr int kMinimumBits = 4;
constexpr int kMaximumBits = 30;

int countOf(int bits) {
    return int((1u << bits) + kPrimeDeltas[bits]);  // class 31 would not fit: never asked for
}

// Floor of log2(n), 0 for n < 2, at most 31.
int floorLog2(int n) {
    int b = 0;
    while (b < 31 && (n >> (b + 1)) > 0) {
        ++b;
    }
    return b;
}

// `h % divisor` by one multiplication with a reciprocal made once per table size (Lemire's
// "faster remainder by direct computation"): exact for 32-bit numerators and divisors, and a
// rehash takes the remainder of every node's hash.
class Remainder {
public:
    explicit Remainder(unsigned int divisor)
        : m_divisor(divisor), m_reciprocal(~std::uint64_t(0) / divisor + 1) {}
    unsigned int of(unsigned int h) const {
        // The high 64 bits of the 96-bit product `low * divisor`.
        const std::uint64_t low = m_reciprocal * h;
        const std::uint64_t upper = (low >> 32) * m_divisor;
        const std::uint64_t lower = (low & 0xFFFFFFFFu) * m_divisor;
        return static_cast<unsigned int>((upper + (lower >> 32)) >> 32);
    }

private:
    std::uint64_t m_divisor;
    std::uint64_t m_reciprocal;
};

VHashData::Node *endOf(VHashData *d) {
    return reinterpret_cast<VHashData::Node *>(d);
}

// Points every bucket of a new array at the block.
VHashData::Node **newBuckets(VHashData *d, int count) {
    VHashData::Node **buckets = new VHashData::Node *[size_t(count)];
    for (int i = 0; i < count; ++i) {
        buckets[i] = endOf(d);
    }
    return buckets;
}

}  // namespace

unsigned int vHash(const std::string &text) {
    return hsl_hash_string(0, text.c_str());
}

VHashData VHashData::shared_null = {nullptr, nullptr, {1}, 0, 0, kMinimumBits, 0, 0, 1};

int VHashData::bucketCountOf(int bits) {
    return countOf(bits);
}

void *VHashData::allocateNode() {
    return std::malloc(size_t(nodeSize));
}

void VHashData::freeNode(void *node) {
    std::free(node);
}

VHashData *VHashData::detach_helper(void (*duplicate)(Node *, void *), int newNodeSize) {
    VHashData *d = new VHashData;
    d->sentinelNext = nullptr;
    d->buckets = nullptr;
    d->ref.init(1);
    d->size = size;
    d->nodeSize = newNodeSize;
    d->minimumBits = minimumBits;
    d->bits = bits;
    d->bucketCount = bucketCount;
    d->sharable = 1;
    if (bucketCount == 0) {
        return d;
    }

    Node *const e = endOf(this);
    Node *const de = endOf(d);
    d->buckets = new Node *[size_t(bucketCount)];
    for (int i = 0; i < bucketCount; ++i) {
        Node **tail = &d->buckets[i];
        for (Node *source = buckets[i]; source != e; source = source->next) {
            Node *copy = static_cast<Node *>(std::malloc(size_t(nodeSize)));
            duplicate(source, copy);
            copy->h = source->h;
            *tail = copy;
            tail = &copy->next;
        }
        *tail = de;
    }
    return d;
}

void VHashData::mightGrow() {
    if (size >= bucketCount) {
        rehash(bits + 1);
    }
}

bool VHashData::willGrow() {
    if (size >= bucketCount) {
        rehash(bits + 1);
        return true;
    }
    return false;
}

void VHashData::hasShrunk() {
    if (size <= (bucketCount >> 3) && bits > minimumBits) {
        rehash(bits - 2 > minimumBits ? bits - 2 : minimumBits);
    }
}

void VHashData::rehash(int hint) {
    int b;
    if (hint < 0) {
        const int wanted = hint == INT_MIN ? INT_MAX : -hint;
        b = floorLog2(wanted);
        if (countOf(b) < wanted && b < kMaximumBits) {
            ++b;
        }
        if (b < kMinimumBits) {
            b = kMinimumBits;
        }
        minimumBits = short(b);
        while (b < kMaximumBits && countOf(b) < (size >> 1)) {
            ++b;
        }
    } else {
        b = hint < kMinimumBits ? kMinimumBits : hint > kMaximumBits ? kMaximumBits : hint;
    }
    if (b == bits) {
        return;
    }

    Node *const e = endOf(this);
    Node **const oldBuckets = buckets;
    const int oldCount = bucketCount;
    bits = short(b);
    bucketCount = countOf(b);
    buckets = newBuckets(this, bucketCount);
    const Remainder bucketOf(static_cast<unsigned int>(bucketCount));

    for (int i = 0; i < oldCount; ++i) {
        Node *first = oldBuckets[i];
        while (first != e) {
            // A run of equal hashes moves as one, in its order, to the end of its new chain.
            const unsigned int h = first->h;
            Node *last = first;
            while (last->next != e && last->next->h == h) {
                last = last->next;
            }
            Node *const afterRun = last->next;
            Node **tail = &buckets[bucketOf.of(h)];
            while (*tail != e) {
                tail = &(*tail)->next;
            }
            last->next = e;
            *tail = first;
            first = afterRun;
        }
    }
    delete[] oldBuckets;
}

void VHashData::destroyAndFree() {
    delete[] buckets;
    delete this;
}

VHashData::Node *VHashData::firstNode() {
    Node *const e = endOf(this);
    for (int i = 0; i < bucketCount; ++i) {
        if (buckets[i] != e) {
            return buckets[i];
        }
    }
    return e;
}

VHashData::Node *VHashData::nextNode(Node *node) {
    Node *next = node->next;
    if (next->next) {
        return next;
    }
    // `next` is the block: go on with the following buckets.
    VHashData *d = reinterpret_cast<VHashData *>(next);
    for (int i = int(node->h % unsigned(d->bucketCount)) + 1; i < d->bucketCount; ++i) {
        if (d->buckets[i] != next) {
            return d->buckets[i];
        }
    }
    return next;
}

VHashData::Node *VHashData::previousNode(Node *node) {
    Node *e = node;
    while (e->next) {
        e = e->next;
    }
    VHashData *d = reinterpret_cast<VHashData *>(e);
    if (d->bucketCount == 0) {
        return e;
    }
    Node **bucket = node == e ? d->buckets + d->bucketCount - 1
                              : d->buckets + node->h % unsigned(d->bucketCount);
    // While the head is what we look for (the node, then the block, which marks an empty
    // bucket), go one bucket down; then the predecessor is in that chain.
    Node *target = node;
    while (*bucket == target) {
        if (bucket == d->buckets) {
            return e;
        }
        --bucket;
        target = e;
    }
    Node *previous = *bucket;
    while (previous->next != target) {
        previous = previous->next;
    }
    return previous;
}

}  // namespace VORT
