// `VORT::UUID`: new random identifiers as text.
//
// Thread safety: any thread may call. Failure: none.
#ifndef VORT_BONES_UUID_H
#define VORT_BONES_UUID_H

#include <vort/vort_export.h>

#include <string>

namespace VORT {

class VORT_EXPORT UUID {
public:
    // A new random (version 4) UUID as 36 characters, lower-case hexadecimal in groups of 8,
    // 4, 4, 4 and 12 joined by hyphens, without braces.
    static std::string createUuidAsString();
};

}  // namespace VORT

#endif  // VORT_BONES_UUID_H
