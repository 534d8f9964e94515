// The text of image keys: `VORT::ImageCompositor::parseKey`, the one reader, and the builders
// `buildKey` and `Builders::buildKeyColor`.
//
// A key is a recipe: "(a;b;modifierName;modifierArgs)", its fields split by ";" outside any
// nested parentheses. `a` is the first operand (a file path or a nested key), `b` the second,
// `modifierName` a name from the manager's table ("loadImg:", "comp_mode:" and a mode's name,
// "color_modifier:") and `modifierArgs` its argument text. Only `a` must not be empty. The
// grammar has three consequences that callers have long relied on, kept as they are:
// - a field stands only when a ";" closes it: in "(a;b;Multiply)" the name is dropped, so that
//   key composes with the default mode; a key that selects a mode reads
//   "(a;b;comp_mode:Multiply;)";
// - an arguments field without a closing ";" needs two characters: "(a;b;m;x)" has no
//   arguments, "(a;b;m;xy)" has "xy";
// - arguments closed by a ";" run to the last ";" before the first ")" after them, so the colour
//   key "(a;;color_modifier:;1,0,0,1;1;)" has the arguments "1,0,0,1;1".
// A plain file name is not a key: callers normalise it with `buildKey` ("x.png" becomes
// "(x.png;;)"), and the cache keeps every file under that normalised key.
//
// Thread safety: pure functions of their arguments.
#ifndef VORT_IMAGE_IMAGEKEY_H
#define VORT_IMAGE_IMAGEKEY_H

#include <vort/image/Mode.h>
#include <vort/types/Color.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {
namespace ImageCompositor {

// "" for "", a key proper (it begins with "(", ends with ")" and holds a ";") as it is, and any
// other text `k` as "(k;;)".
VORT_EXPORT std::string buildKey(std::string const &key);
// "(a;b;c)", with no test of the parts. Mind the first consequence above: `c` is not read back
// as a modifier name.
VORT_EXPORT std::string buildKey(std::string const &a, std::string const &b, std::string const &c);
// "(a;;Name)" and "(a;b;Name)" with the mode's plain name: cache keys of their own that render
// with the default composition, by the first consequence above.
VORT_EXPORT std::string buildKey(std::string const &a, Mode const &mode);
VORT_EXPORT std::string buildKey(std::string const &a, std::string const &b, Mode const &mode);

namespace Builders {

// "" for "", a key proper as it is (so a key can't be tinted through this function: the colour
// is lost), and any other text `a` as "(a;;color_modifier:;R,G,B,A;F;)": the colour's bytes
// divided by 255 as a default stream writes doubles (six significant digits, so 128 is
// 0.501961), and the flag as 1 or 0. An opaque red tint of "ok.png" with the flag is
// "(ok.png;;color_modifier:;1,0,0,1;1;)".
VORT_EXPORT std::string buildKeyColor(std::string const &a, Color const &color, bool toGrayscale);

}  // namespace Builders

// Splits `key` into its four fields. The outputs are assigned only as their fields are found,
// so callers pass empty strings. False when `key` is shorter than three characters, is not
// parenthesised or has an empty first field; the fields found are assigned all the same.
VORT_EXPORT bool parseKey(std::string const &key, std::string &a, std::string &b,
                          std::string &modifierName, std::string &modifierArgs);

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_IMAGEKEY_H
