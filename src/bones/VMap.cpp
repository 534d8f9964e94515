#include <vort/bones/VMap.h>

#include <cstdlib>

namespace VORT {

namespace {

using Node = VMapData::Node;

Node *endOf(VMapData *d) {
    return reinterpret_cast<Node *>(d);
}

// Bytes of a node with links up to `level`, without the template's payload in front.
std::size_t nodeBytes(int level) {
    return sizeof(Node *) * std::size_t(2 + level);
}

}  // namespace

static_assert(sizeof(void *) != 8 || sizeof(Node) == 16, "a level-0 node is 16 bytes");

// Head and end of an empty list at once. The links point at the block itself, an address the
// linker fills in, so the block is complete before any constructor runs.
VMapData VMapData::shared_null = {
    reinterpret_cast<Node *>(&VMapData::shared_null),
    {reinterpret_cast<Node *>(&VMapData::shared_null)},
    {1},
    0,
    0,
    0,
    0,
    1,
};

VMapData *VMapData::createData() {
    VMapData *d = new VMapData;
    Node *const e = endOf(d);
    d->previous = e;
    d->next[0] = e;
    for (int i = 1; i <= LastLevel; ++i) {
        d->next[i] = nullptr;
    }
    d->ref.init(1);
    d->topLevel = 0;
    d->size = 0;
    d->randomBits = 0;
    d->insertInOrder = 0;
    d->sharable = 1;
    return d;
}

void VMapData::continueFreeData(int offset) {
    Node *const e = endOf(this);
    Node *cur = e->next[0];
    while (cur != e) {
        Node *next = cur->next[0];
        std::free(reinterpret_cast<char *>(cur) - offset);
        cur = next;
    }
    delete this;
}

VMapData::Node *VMapData::node_create(Node *update[], int offset) {
    // Each level is one eighth as likely as the one below. The counter itself is the pattern;
    // `rand()` stirs it now and then, except while a copy appends keys in order, where a
    // regular pattern is what we want.
    int level = 0;
    unsigned int mask = (1u << Sparseness) - 1;
    const unsigned int bits = static_cast<unsigned int>(randomBits);
    while ((bits & mask) == mask && level < LastLevel) {
        ++level;
        mask <<= Sparseness;
    }
    randomBits = static_cast<int>(bits + 1u);
    if (level == 3 && !insertInOrder) {
        randomBits = std::rand();
    }

    Node *const e = endOf(this);
    if (level > topLevel) {
        level = ++topLevel;
        e->next[level] = e;
        update[level] = e;
    }

    char *memory = static_cast<char *>(std::malloc(std::size_t(offset) + nodeBytes(level)));
    Node *node = reinterpret_cast<Node *>(memory + offset);
    node->previous = update[0];
    update[0]->next[0]->previous = node;
    for (int i = level; i >= 0; --i) {
        node->next[i] = update[i]->next[i];
        update[i]->next[i] = node;
        update[i] = node;
    }
    ++size;
    return node;
}

void VMapData::node_delete(Node *update[], int offset, Node *node) {
    node->next[0]->previous = node->previous;
    for (int i = 0; i <= topLevel; ++i) {
        if (update[i]->next[i] != node) {
            break;
        }
        update[i]->next[i] = node->next[i];
    }
    --size;
    std::free(reinterpret_cast<char *>(node) - offset);
}

}  // namespace VORT
