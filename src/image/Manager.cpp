#include <hsl/hsl.h>
#include <vort/image/Manager.h>

#include <QtGui/QImage>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <string_view>

namespace VORT {
namespace ImageCompositor {

namespace {

const char kLoadImage[] = "loadImg:";
const char kCompositionMode[] = "comp_mode:";
const char kColorModifier[] = "color_modifier:";
const char kDefaultComposition[] = "comp_mode:SourceOver";

const double kCollectionInterval = 5.0;
// Each level of a key is a level of recursion through `render`; a key nested deeper than any
// picture needs must not exhaust the stack.
const int kMaxBuildDepth = 64;

// The caches of managers that have ended: kept, never freed, and reachable from here, so that
// leak checkers see them as kept rather than lost.
struct RetiredCache {
    std::map<std::string, Holder<Node>> nodes;
    RetiredCache *next;
};
RetiredCache *g_retiredCaches = nullptr;

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowerCase(std::string text) {
    for (char &c : text) {
        c = lowerCase(c);
    }
    return text;
}

// The count, read by a balanced increment and decrement: the count offers no plain read.
int referenceCount(Node *node) {
    node->incrementReference();
    return node->decrementReference();
}

class BuildDepth {
public:
    explicit BuildDepth(int &depth) : mDepth(depth) { ++mDepth; }
    ~BuildDepth() { --mDepth; }
    BuildDepth(BuildDepth const &) = delete;
    BuildDepth &operator=(BuildDepth const &) = delete;

private:
    int &mDepth;
};

}  // namespace

Manager &Manager::instance() {
    static Manager manager;
    return manager;
}

Manager::Manager() : mNextGC(0.0), mBuildDepth(0), mKeyFields(kMaxBuildDepth) {
    registerModifier(kLoadImage, boost::make_shared<DefaultModifier>());
    for (int code = Mode::SourceOver; code <= Mode::Exclusion + 1; ++code) {
        const Mode mode(code);
        registerModifier(kCompositionMode + mode.getName().getString(),
                         boost::make_shared<QtModifier>(mode));
    }
    registerModifier(kColorModifier,
                     boost::make_shared<ColorModifier>(Color(1.0, 1.0, 1.0, 1.0), true));
}

Manager::~Manager() {
    g_retiredCaches = new RetiredCache{{}, g_retiredCaches};
    g_retiredCaches->nodes.swap(mNodes);
    mModifiers.clear();
    mNodes.clear();
}

void Manager::registerModifier(std::string const &name, boost::shared_ptr<Modifier> modifier) {
    mModifiers.emplace(lowerCase(name), std::move(modifier));
}

boost::shared_ptr<Modifier> Manager::buildModifier(std::string const &name,
                                                   std::string const &args) {
    if (name.empty()) {
        return boost::shared_ptr<Modifier>();
    }
    // The names are stored in lower case, so one search for the lower-case form finds what a
    // search for the name as given and then for that form would. Names of usual length are
    // lowered on the stack.
    char buffer[64];
    std::string longName;
    std::string_view lowered;
    if (name.size() <= sizeof buffer) {
        std::transform(name.begin(), name.end(), buffer, [](char c) { return lowerCase(c); });
        lowered = std::string_view(buffer, name.size());
    } else {
        longName = lowerCase(name);
        lowered = longName;
    }
    const auto found = mModifiers.find(lowered);
    if (found == mModifiers.end()) {
        return boost::shared_ptr<Modifier>();
    }
    return boost::shared_ptr<Modifier>(found->second->clone(args));
}

void Manager::forceGarbageCollection() {
    // The entries move to a map of their own and their nodes are destroyed after the walk, so
    // that a node whose destruction calls back into the manager never finds the map half
    // walked. Moving an entry between maps allocates nothing.
    std::map<std::string, Holder<Node>> collected;
    for (auto entry = mNodes.begin(); entry != mNodes.end();) {
        Node *node = entry->second.get();
        if (node != nullptr && referenceCount(node) == 1) {
            collected.insert(mNodes.extract(entry++));
        } else {
            ++entry;
        }
    }
    collected.clear();
    mNextGC = hslRealtime() + kCollectionInterval;
}

Holder<Node> Manager::getImage(std::string const &key, bool build) {
    if (key.empty()) {
        return Holder<Node>();
    }
    const auto found = mNodes.find(key);
    if (found != mNodes.end()) {
        return found->second;
    }
    return build ? doBuildImageNode(key) : Holder<Node>();
}

bool Manager::storeImage(std::string const &key, Holder<Node> node) {
    if (key.empty() || !node) {
        return false;
    }
    return mNodes.emplace(key, node).second;
}

void Manager::referenceNode(std::string const &) {}

void Manager::dereferenceNode(std::string const &) {
    if (hslRealtime() > mNextGC) {
        forceGarbageCollection();
    }
}

void Manager::update() {
    if (hslRealtime() > mNextGC) {
        forceGarbageCollection();
    }
}

Holder<Node> Manager::doBuildImageNode(std::string const &key) {
    if (mBuildDepth >= kMaxBuildDepth) {
        return Holder<Node>();
    }
    KeyFields &fields = mKeyFields[mBuildDepth];
    const BuildDepth depth(mBuildDepth);
    std::string &a = fields.a;
    std::string &b = fields.b;
    std::string &modifierName = fields.modifierName;
    std::string &modifierArgs = fields.modifierArgs;
    a.clear();
    b.clear();
    modifierName.clear();
    modifierArgs.clear();
    if (!parseKey(key, a, b, modifierName, modifierArgs)) {
        return Holder<Node>();
    }
    if (!b.empty() && modifierName.empty()) {
        modifierName = kDefaultComposition;
    }
    if (modifierName.empty() && !a.empty()) {
        modifierName = kLoadImage;
    }
    const boost::shared_ptr<Modifier> modifier = buildModifier(modifierName, modifierArgs);
    if (!modifier) {
        return Holder<Node>();
    }
    QImage result;
    if (!modifier->render(result, &a, &b)) {
        return Holder<Node>();
    }
    // The operands by their plain text, as the modifiers have always been given them: a plain
    // file name finds nothing, since files are cached under their normalised keys.
    const Holder<Node> nodeB = getImage(b, false);
    const Holder<Node> nodeA = getImage(a, false);
    if (!modifier->postRender(result, nodeA, nodeB)) {
        return Holder<Node>();
    }
    const Holder<Node> node(new Node(key, new QImage(std::move(result))));
    mNodes.try_emplace(key, node);
    return node;
}

}  // namespace ImageCompositor
}  // namespace VORT
