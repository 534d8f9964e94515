#include <vort/bones/VHash.h>
#include <vort/image/Mode.h>

namespace VORT {
namespace ImageCompositor {

namespace {

VHash<int, StringID> const &modeNames() {
    static const VHash<int, StringID> names = [] {
        static const char *const texts[] = {
            "SourceOver",     "DestinationOver", "Clear",           "Source",
            "Destination",    "SourceIn",        "DestinationIn",   "SourceOut",
            "DestinationOut", "SourceAtop",      "DestinationAtop", "Xor",
            "Plus",           "Multiply",        "Screen",          "Overlay",
            "Darken",         "Lighten",         "ColorDodge",      "ColorBurn",
            "HardLight",      "SoftLight",       "Difference",      "Exclusion"};
        VHash<int, StringID> table;
        int code = 0;
        for (const char *text : texts) {
            table.insert(code++, StringID(text));
        }
        return table;
    }();
    return names;
}

}  // namespace

StringID Mode::getName() const {
    static const StringID invalid("Invalid");
    return modeNames().value(mCode, invalid);
}

}  // namespace ImageCompositor
}  // namespace VORT
