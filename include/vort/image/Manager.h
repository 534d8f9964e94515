// `VORT::ImageCompositor::Manager`: the one cache of composed images of the library, from key to
// node, and the table of modifier prototypes, from name to modifier.
//
// A key is a recipe (see ImageKey.h): one file, two keys composed with a mode, or a key tinted
// with a colour, nested to any depth. `getImage` with `build` true gives the cached node, or
// builds it: `parseKey` splits the key, the modifier named in it (or "comp_mode:SourceOver" for
// two operands and no name, or "loadImg:" for one) is cloned with the key's arguments and
// renders, asking the manager in turn for its operands by their normalised keys, and the new node
// enters the cache. Every operand on the way is cached under its own key as well.
//
// Collection: a node that only the cache still holds is dropped by `forceGarbageCollection`, all
// such nodes at once, never for size or age. `update` and `dereferenceNode` collect when the
// clock of `hslRealtime` has passed the time due, which a collection moves to 5 units later; the
// first call collects at once. Nothing else collects: there is no timer and no size limit.
//
// Lifetime: `instance()` builds the manager at first use and it ends at process exit. Its
// destructor does not destroy the cached nodes: they move to a heap map that is never freed, so
// that no picture (a `QPixmap` in particular) is destroyed after the application has gone.
//
// Thread safety: none. Every call belongs to the thread that owns the display; only the nodes'
// counts are atomic, so a holder may be dropped elsewhere.
//
// Failure: silent. A key that does not parse, an unknown modifier, a file that does not load or
// an operand that does not build gives a null holder and caches nothing, so the next build tries
// again. So does a key nested more than 64 levels deep.
#ifndef VORT_IMAGE_MANAGER_H
#define VORT_IMAGE_MANAGER_H

#include <vort/bones/Holder.h>
#include <vort/image/ImageKey.h>
#include <vort/image/Modifier.h>
#include <vort/image/Node.h>
#include <vort/vort_export.h>

#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace VORT {
namespace ImageCompositor {

class VORT_EXPORT Manager : private boost::noncopyable {
public:
    static Manager &instance();

    virtual ~Manager();

    // Adds a prototype under `name` in lower case (ASCII). A name already there, in any case,
    // keeps its first prototype.
    void registerModifier(std::string const &name, boost::shared_ptr<Modifier> modifier);
    // A clone of the prototype named `name` (as given, else in lower case) with `args`; null for
    // an empty or unknown name, or when the prototype refuses `args`.
    virtual boost::shared_ptr<Modifier> buildModifier(std::string const &name,
                                                      std::string const &args);
    // Drops every cached node that nothing but the cache holds, then sets the next collection
    // 5 units of `hslRealtime` ahead.
    virtual void forceGarbageCollection();
    // The cached node of `key`, else with `build` the node built from it (null if it does not
    // build), else null. An empty key gives null. A bare file name is no key: normalise it with
    // `buildKey` first.
    virtual Holder<Node> getImage(std::string const &key, bool build);
    // Caches `node` under `key`; false, changing nothing, for an empty key, a null node or a key
    // already cached. The node's own key is not touched.
    virtual bool storeImage(std::string const &key, Holder<Node> node);
    // Nothing: the resources that call it keep no count with the manager.
    virtual void referenceNode(std::string const &key);
    // Collects when a collection is due; the key is not looked at.
    virtual void dereferenceNode(std::string const &key);
    // Collects when a collection is due.
    virtual void update();

protected:
    // Registers "loadImg:", "comp_mode:" with each mode's name from code 0 to 24 (the last is
    // "comp_mode:Invalid"), and "color_modifier:" with opaque white and grayscale on.
    Manager();

    // Builds `key` as described above and caches the node, unless `render` already cached one
    // under the key, which then stays; the new node is returned either way.
    virtual Holder<Node> doBuildImageNode(std::string const &key);

private:
    // The fields of the keys being built, one set per level of nesting, cleared and refilled by
    // each build so that their buffers serve every later one.
    struct KeyFields {
        std::string a, b, modifierName, modifierArgs;
    };

    std::map<std::string, Holder<Node>> mNodes;
    // Keyed by lower-case names, and searched by views of lower-cased text.
    std::map<std::string, boost::shared_ptr<Modifier>, std::less<>> mModifiers;
    double mNextGC;
    // How many builds are under way, one inside the other.
    int mBuildDepth;
    std::vector<KeyFields> mKeyFields;
};

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_MANAGER_H
