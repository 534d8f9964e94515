// Not public API: the test that tells a key from a plain file name.
#ifndef VORT_IMAGE_IMAGEKEY_P_H
#define VORT_IMAGE_IMAGEKEY_P_H

#include <string>

namespace VORT {
namespace ImageCompositor {

// A key proper begins with "(", ends with ")" and holds a ";"; "" is none.
inline bool isKeyProper(std::string const &text) {
    return !text.empty() && text.front() == '(' && text.back() == ')' &&
           text.find(';') != std::string::npos;
}

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_IMAGEKEY_P_H
