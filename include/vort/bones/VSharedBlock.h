// `VORT::VSharedBlock<Derived, Handle>`: the handle over a reference-counted block that every
// implicitly shared container template of the library (`VList`, `VVector`, `VLinkedList`,
// `VHash`, `VMap`) derives from; and `VORT::VNodeIterator`, the bidirectional iterator shell
// of the node-based ones.
//
// The base owns one count on the block: it starts on the block's `shared_null`, copies share
// the block (and deep-copy it at once when it is unsharable), moves and swaps exchange blocks,
// and the last owner frees it. What a deep copy or a free means is the container's business:
// the base calls `Derived::detachHelper()` (give `d` an unshared copy and drop the old count)
// and `Derived::freeData(block)`. A container keeps all of its state in the handle, so the
// copy constructor may call `detachHelper()` as soon as the handle is set.
//
// `VSharedHandle<Handle>` says how to reach the block from the handle. The default is a plain
// pointer to a block with `ref`, `size`, `sharable` and a static `shared_null`; a container
// whose handle is a richer record specialises it.
//
// Thread safety: only the reference count is atomic. Containers that share a block may be read,
// copied, detached and destroyed on different threads at once. One container used from two
// threads at once is not protected: callers lock.
//
// Failure: an exception from `detachHelper()` leaves the container on its old block.
#ifndef VORT_BONES_VSHAREDBLOCK_H
#define VORT_BONES_VSHAREDBLOCK_H

#include <vort/bones/AtomicCounter.h>

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

namespace VORT {

// How `VSharedBlock` reaches the block behind a handle: here, a handle that is the pointer.
template <typename Handle>
struct VSharedHandle {
    using Block = std::remove_pointer_t<Handle>;

    static Handle sharedNull() { return &Block::shared_null; }
    static Block *block(Handle handle) { return handle; }
    static int size(Handle handle) { return handle->size; }
};

template <typename Derived, typename Handle>
class VSharedBlock {
    using Access = VSharedHandle<Handle>;

public:
    void swap(Derived &other) noexcept { std::swap(d, other.VSharedBlock::d); }

    // Sharing.
    bool isDetached() const { return isOnlyReference(block()->ref); }
    void detach() {
        if (!isOnlyReference(block()->ref)) {
            derived().detachHelper();
        }
    }
    bool isSharedWith(const Derived &other) const { return block() == other.block(); }
    bool isSharable() const { return block()->sharable; }
    // An unsharable container owns its block (it detaches now if need be) and is deep-copied
    // by every copy, so references and iterators into it survive copies.
    void setSharable(bool sharable) {
        if (!sharable) {
            detach();
            block()->sharable = 0;
        } else if (!block()->sharable) {
            block()->sharable = 1;
        }
    }

    // Size.
    int size() const { return Access::size(d); }
    int count() const { return Access::size(d); }
    bool isEmpty() const { return Access::size(d) == 0; }
    bool empty() const { return Access::size(d) == 0; }
    void clear() { derived() = Derived(); }

protected:
    using Block = typename Access::Block;

    VSharedBlock() noexcept : d(Access::sharedNull()) { block()->ref.ref(); }
    VSharedBlock(const VSharedBlock &other) : d(other.d) {
        block()->ref.ref();
        if (!block()->sharable) {
            derived().detachHelper();
        }
    }
    VSharedBlock(VSharedBlock &&other) noexcept : VSharedBlock() { std::swap(d, other.d); }
    // The shared null keeps the reference it was born with, so its count never reaches 0. The
    // test of its address, made only on the way to a free, says so to the compiler too, which
    // otherwise sees a path that frees a static block and rejects it under -Werror.
    ~VSharedBlock() {
        if (!block()->ref.deref() && block() != Access::block(Access::sharedNull())) {
            Derived::freeData(block());
        }
    }

    VSharedBlock &operator=(const VSharedBlock &other) {
        if (block() != other.block()) {
            Derived copy(static_cast<const Derived &>(other));
            swap(copy);
        }
        return *this;
    }
    // The moved-from container is left with this one's old contents.
    VSharedBlock &operator=(VSharedBlock &&other) noexcept {
        std::swap(d, other.d);
        return *this;
    }

    Block *block() const { return Access::block(d); }

    Handle d;

private:
    Derived &derived() { return static_cast<Derived &>(*this); }
};

// The shell of a bidirectional iterator over linked nodes: the container's `Walk` gives
// `Walk::Node` and the steps `Walk::next` and `Walk::previous`; `Derived` adds the element
// access. `Value` is the element type, const for a const_iterator.
template <typename Derived, typename Walk, typename Value>
class VNodeIterator {
public:
    using Node = typename Walk::Node;

    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::remove_const_t<Value>;
    using difference_type = std::ptrdiff_t;
    using pointer = Value *;
    using reference = Value &;

    VNodeIterator() = default;
    explicit VNodeIterator(Node *node) : i(node) {}

    Derived &operator++() { return i = Walk::next(i), derived(); }
    Derived operator++(int) {
        Derived old = derived();
        i = Walk::next(i);
        return old;
    }
    Derived &operator--() { return i = Walk::previous(i), derived(); }
    Derived operator--(int) {
        Derived old = derived();
        i = Walk::previous(i);
        return old;
    }
    friend bool operator==(Derived a, Derived b) { return a.i == b.i; }
    friend bool operator!=(Derived a, Derived b) { return a.i != b.i; }

    Node *i = nullptr;

private:
    Derived &derived() { return static_cast<Derived &>(*this); }
};

}  // namespace VORT

#endif  // VORT_BONES_VSHAREDBLOCK_H
