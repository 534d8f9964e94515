#include <vort/bones/VList.h>
#include <vort/bones/VVector.h>

#include <cstdlib>
#include <cstring>

namespace VORT {

VVectorData VVectorData::shared_null = {{1}, 0, 0, 1, 0};

VVectorData *VVectorData::malloc(int sizeOfTypedData, int size, std::size_t sizeOfElement,
                                 VVectorData *old) {
    const std::size_t header = std::size_t(sizeOfTypedData) - sizeOfElement;
    VVectorData *x =
        static_cast<VVectorData *>(std::malloc(header + std::size_t(size) * sizeOfElement));
    // The header field by field: `old->ref` may be changing on another thread.
    x->ref = old->ref;
    x->capacity = old->capacity;
    x->size = old->size;
    x->sharable = old->sharable;
    x->reserved = old->reserved;
    const int n = size < old->capacity ? size : old->capacity;
    if (n > 0) {
        std::memcpy(reinterpret_cast<char *>(x) + header,
                    reinterpret_cast<const char *>(old) + header, std::size_t(n) * sizeOfElement);
    }
    return x;
}

int VVectorData::grow(int sizeOfTypedData, int size, std::size_t sizeOfElement, bool excessive) {
    if (excessive) {
        return size + size / 2;
    }
    const int element = int(sizeOfElement);
    return vortAllocMore(element * size, sizeOfTypedData - element) / element;
}

}  // namespace VORT
