// Not public API: the byte forms of the type family's fields, least significant byte first
// whatever the machine's own order, written into and read out of plain buffers.
//
// Readers take a pointer to as many bytes as the field is wide; the type family reads by index
// with no length check, so a short array is its caller's fault.
#ifndef VORT_TYPES_BYTEFORM_P_H
#define VORT_TYPES_BYTEFORM_P_H

#include <cstdint>
#include <cstring>

namespace VORT {
namespace ByteForm {

inline void store32(unsigned char *at, std::uint32_t value) {
    for (int index = 0; index < 4; ++index) {
        at[index] = static_cast<unsigned char>(value >> (8 * index));
    }
}

inline void store64(unsigned char *at, std::uint64_t value) {
    for (int index = 0; index < 8; ++index) {
        at[index] = static_cast<unsigned char>(value >> (8 * index));
    }
}

inline std::uint32_t load32(unsigned char const *at) {
    std::uint32_t value = 0;
    for (int index = 0; index < 4; ++index) {
        value |= static_cast<std::uint32_t>(at[index]) << (8 * index);
    }
    return value;
}

inline std::uint64_t load64(unsigned char const *at) {
    std::uint64_t value = 0;
    for (int index = 0; index < 8; ++index) {
        value |= static_cast<std::uint64_t>(at[index]) << (8 * index);
    }
    return value;
}

inline void store(unsigned char *at, int value) {
    store32(at, static_cast<std::uint32_t>(value));
}

inline void store(unsigned char *at, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    store32(at, bits);
}

inline void store(unsigned char *at, double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    store64(at, bits);
}

inline void load(unsigned char const *at, int &value) {
    value = static_cast<int>(load32(at));
}

inline void load(unsigned char const *at, float &value) {
    const std::uint32_t bits = load32(at);
    std::memcpy(&value, &bits, sizeof value);
}

inline void load(unsigned char const *at, double &value) {
    const std::uint64_t bits = load64(at);
    std::memcpy(&value, &bits, sizeof value);
}

}  // namespace ByteForm
}  // namespace VORT

#endif  // VORT_TYPES_BYTEFORM_P_H
