#include <vort/bones/VLinkedList.h>

namespace VORT {

// An empty ring: the block is its own first and last node.
VLinkedListData VLinkedListData::shared_null = {
    &VLinkedListData::shared_null, &VLinkedListData::shared_null, {1}, 0, 1};

}  // namespace VORT
