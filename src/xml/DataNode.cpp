#include "XmlReader_p.h"
#include <vort/bones/StringTokenizer.h>
#include <vort/bones/StringUtils.h>
#include <vort/xml/DataNode.h>

#include <boost/algorithm/string/trim.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

namespace VORT {
namespace XMLDB {

namespace {

bool sameWord(std::string const &text, char const *word) {
    return compareIgnoreCase(text.c_str(), word) == 0;
}

bool readBool(std::string const &text, bool *found) {
    if (found != nullptr) {
        *found = !text.empty();
    }
    return text == "1" || sameWord(text, "true");
}

// The text of an attribute's QName: "prefix:local", or the local name alone.
std::string attributeName(QXmlStreamAttribute const &attribute) {
    const QStringView qualified = attribute.qualifiedName();
    const qsizetype colon = qualified.indexOf(u':');
    std::string name;
    if (colon >= 0 && qualified.indexOf(u':', colon + 1) < 0) {
        appendUtf8(name, qualified.left(colon));
        name += ':';
    }
    appendUtf8(name, attribute.name());
    return name;
}

// Configuration files are written for every locale alike, so numbers read in the classic one.
template <typename Number>
Number readNumber(std::string const &text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Number value = 0;
    stream >> value;
    return value;
}

template <typename Number>
Number readNumber(std::string const &text, bool *found) {
    if (found != nullptr) {
        *found = !text.empty();
    }
    return text.empty() ? 0 : readNumber<Number>(text);
}

template <typename T, typename Convert>
std::vector<T> const *convertList(std::shared_ptr<std::vector<std::string>> const &list,
                                  std::shared_ptr<std::vector<T>> &cache, Convert convert) {
    if (!cache && list) {
        cache = std::make_shared<std::vector<T>>();
        cache->reserve(list->size());
        for (std::string const &value : *list) {
            cache->push_back(convert(value));
        }
    }
    return cache.get();
}

template <typename T>
void append(std::shared_ptr<std::vector<T>> &to, std::shared_ptr<std::vector<T>> const &from) {
    if (!from) {
        return;
    }
    if (!to) {
        to = std::make_shared<std::vector<T>>();
    }
    // Reserved first and copied by index, so that a node may absorb itself.
    const std::size_t count = from->size();
    to->reserve(to->size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        to->push_back((*from)[i]);
    }
}

}  // namespace

// Child and list vectors start with room for a few entries, sparing the first reallocations.
constexpr std::size_t kFirstCapacity = 8;

struct DataNode::LoadState {
    unsigned depth = 0;
    std::size_t bytes = 0;

    // Counts what a node holds; false, with an error raised on the reader, past the bound.
    bool charge(XmlReader &reader, std::size_t size) {
        bytes += size;
        if (bytes <= MAX_LOAD_BYTES) {
            return true;
        }
        reader.raiseError("Configuration data larger than " + std::to_string(MAX_LOAD_BYTES) +
                          " bytes in memory");
        return false;
    }
};

DataNode::DataNode() : mIsAttribute(false), mIsCombined(false) {}

DataNode::DataNode(DataNode const &other)
    : boost::enable_shared_from_this<DataNode>(other),
      mNodeList(other.mNodeList),
      mElements(other.mElements),
      mAttributes(other.mAttributes),
      mDataList(other.mDataList),
      mDataAsBool(other.mDataAsBool),
      mDataAsDouble(other.mDataAsDouble),
      mDataAsInteger(other.mDataAsInteger),
      mDataAsColor(other.mDataAsColor),
      mText(other.mText),
      mName(other.mName),
      mShortName(other.mShortName),
      mIsAttribute(other.mIsAttribute),
      mIsCombined(other.mIsCombined) {}

DataNode &DataNode::operator=(DataNode const &other) {
    mNodeList = other.mNodeList;
    mElements = other.mElements;
    mAttributes = other.mAttributes;
    mDataList = other.mDataList;
    mDataAsBool = other.mDataAsBool;
    mDataAsDouble = other.mDataAsDouble;
    mDataAsInteger = other.mDataAsInteger;
    mDataAsColor = other.mDataAsColor;
    mText = other.mText;
    mName = other.mName;
    mShortName = other.mShortName;
    mIsAttribute = other.mIsAttribute;
    mIsCombined = other.mIsCombined;
    return *this;
}

DataNode::~DataNode() = default;

bool DataNode::isNodeList() const {
    return mNodeList && !mNodeList->empty();
}

bool DataNode::hasDataList() const {
    return mDataList && !mDataList->empty();
}

std::vector<bool> const *DataNode::getDataCSVAsBool() const {
    return convertList(mDataList, mDataAsBool,
                       [](std::string const &value) { return readBool(value, nullptr); });
}

std::vector<long> const *DataNode::getDataCSVAsInteger() const {
    return convertList(mDataList, mDataAsInteger,
                       [](std::string const &value) { return readNumber<long>(value, nullptr); });
}

std::vector<double> const *DataNode::getDataCSVAsDouble() const {
    return convertList(mDataList, mDataAsDouble,
                       [](std::string const &value) { return readNumber<double>(value, nullptr); });
}

std::vector<Color> const *DataNode::getDataCSVAsColor() const {
    return convertList(mDataList, mDataAsColor, [](std::string const &value) {
        bool ok = false;
        return stringToColor(value, &ok);
    });
}

DataNode::NodePtr DataNode::getElement(std::string const &shortName) const {
    if (mElements) {
        for (NodePtr const &element : *mElements) {
            if (element->mShortName == shortName) {
                return element;
            }
        }
    }
    return NodePtr();
}

unsigned long DataNode::getElementsOfName(std::string const &shortName, NodeVector &out,
                                          bool clearFirst) const {
    if (clearFirst) {
        out.clear();
    }
    unsigned long count = 0;
    if (mElements) {
        for (NodePtr const &element : *mElements) {
            if (element->mShortName == shortName) {
                out.push_back(element);
                ++count;
            }
        }
    }
    return count;
}

DataNode::NodePtr DataNode::getAttributePtr(std::string const &shortName) const {
    if (mAttributes) {
        for (auto it = mAttributes->rbegin(); it != mAttributes->rend(); ++it) {
            if ((*it)->mShortName == shortName) {
                return *it;
            }
        }
    }
    return NodePtr();
}

bool DataNode::hasAttribute(std::string const &name) const {
    return static_cast<bool>(fetchAttributeNode(name, false));
}

DataNode::NodePtr DataNode::fetchAttributeNode(std::string const &name, bool) const {
    if (mAttributes) {
        for (auto it = mAttributes->rbegin(); it != mAttributes->rend(); ++it) {
            if ((*it)->mShortName == name || (*it)->mName == name) {
                return *it;
            }
        }
    }
    return NodePtr();
}

bool DataNode::loadAttribute(std::string const &parentName, std::string const &attributeName,
                             std::string const &value, bool &isDataList) {
    return doLoadAttribute(parentName, std::string(attributeName), std::string(value), isDataList);
}

bool DataNode::doLoadAttribute(std::string const &parentName, std::string &&attributeName,
                               std::string &&value, bool &isDataList) {
    mName.reserve(parentName.size() + 1 + attributeName.size());
    mName = parentName;
    mName += '/';
    mName += attributeName;
    mShortName = std::move(attributeName);
    mText = std::move(value);
    mIsAttribute = true;
    isDataList = sameWord(mShortName, "csv_list") && sameWord(mText, "true");
    return !mShortName.empty();
}

bool DataNode::loadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                       XmlEventTypes::Type event) {
    LoadState state;
    return doLoadXML(parentName, reader, nodes, event, state);
}

bool DataNode::doLoadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                         XmlEventTypes::Type event, LoadState &state) {
    // The parser is read directly: names and texts go straight into the nodes' strings.
    XmlReaderImpl &d = *reader.mImpl;
    QXmlStreamReader &parser = d.mReader;
    while (!parser.atEnd() && event != XmlEventTypes::StartElement) {
        event = d.next();
    }
    if (event != XmlEventTypes::StartElement) {
        return false;
    }
    const QStringView localName = parser.name();
    if (!parentName.empty()) {
        mName.reserve(parentName.size() + 1 + static_cast<std::size_t>(localName.size()));
        mName = parentName;
        mName += '/';
    }
    appendUtf8(mShortName, localName);
    mName += mShortName;
    if (!state.charge(reader, sizeof(DataNode) + 2 * mName.size() + mShortName.size())) {
        return false;
    }

    if (!d.mAttributes.isEmpty()) {
        mAttributes = std::make_shared<NodeVector>();
        mAttributes->reserve(static_cast<std::size_t>(d.mAttributes.size()));
        for (QXmlStreamAttribute const &source : std::as_const(d.mAttributes)) {
            NodePtr attribute = boost::make_shared<DataNode>();
            bool isDataList = false;
            if (!attribute->doLoadAttribute(mName, attributeName(source), toUtf8(source.value()),
                                            isDataList)) {
                continue;
            }
            if (!state.charge(reader, sizeof(DataNode) + attribute->mName.size() +
                                          attribute->mShortName.size() + attribute->mText.size())) {
                return false;
            }
            mAttributes->push_back(std::move(attribute));
            if (isDataList) {
                mDataList = std::make_shared<std::vector<std::string>>();
            }
        }
    }
    if (parser.atEnd()) {
        return false;
    }

    bool ended = false;
    while (!ended && !parser.atEnd()) {
        switch (d.next()) {
            case XmlEventTypes::StartElement: {
                if (state.depth == MAX_DEPTH) {
                    reader.raiseError("Elements nested deeper than " + std::to_string(MAX_DEPTH) +
                                      " levels");
                    break;
                }
                NodePtr child = boost::make_shared<DataNode>();
                ++state.depth;
                const bool loaded =
                    child->doLoadXML(mName, reader, nodes, XmlEventTypes::StartElement, state);
                --state.depth;
                if (!loaded) {
                    break;
                }
                if (!mElements) {
                    mElements = std::make_shared<NodeVector>();
                    mElements->reserve(kFirstCapacity);
                }
                const auto found = nodes.lower_bound(child->mName);
                if (found == nodes.end() || found->first != child->mName) {
                    nodes.emplace_hint(found, child->mName, child);
                    mElements->push_back(std::move(child));
                } else {
                    // A fresh child cannot be in the list yet: append without the search
                    // that `addToNodeList` makes, which would cost a pass per sibling.
                    DataNode &head = *found->second;
                    if (!head.mNodeList) {
                        head.mNodeList = std::make_shared<NodeVector>();
                        head.mNodeList->reserve(kFirstCapacity);
                    }
                    if (head.mNodeList->empty()) {
                        head.mNodeList->push_back(head.doBecomeNodeList());
                    }
                    head.mNodeList->push_back(std::move(child));
                }
                break;
            }
            case XmlEventTypes::EndElement:
                ended = true;
                break;
            case XmlEventTypes::Characters:
                if (parser.isWhitespace()) {
                    break;
                }
                mText.clear();
                appendUtf8(mText, parser.text());
                if (!state.charge(reader, mText.size())) {
                    break;
                }
                if (mDataList) {
                    StringTokenizer tokens(mText, ",", true, true);
                    while (tokens.hasMoreTokens()) {
                        mDataList->push_back(boost::algorithm::trim_copy(tokens.nextToken()));
                    }
                    state.charge(reader, mText.size() + mDataList->size() * sizeof(std::string));
                }
                break;
            default:
                break;
        }
    }

    if (ended && mText.empty() && !mDataList && mAttributes) {
        static const std::string value("value");
        if (const NodePtr attribute = fetchAttributeNode(value, false)) {
            mText = attribute->mText;
        }
    }
    return !mName.empty() && ended;
}

void DataNode::addToNodeList(NodePtr &node) {
    if (!node) {
        return;
    }
    if (!mNodeList) {
        mNodeList = std::make_shared<NodeVector>();
    }
    if (mNodeList->empty()) {
        mNodeList->push_back(doBecomeNodeList());
    }
    if (std::find(mNodeList->begin(), mNodeList->end(), node) == mNodeList->end()) {
        mNodeList->push_back(node);
    }
}

DataNode::NodePtr DataNode::doBecomeNodeList() {
    NodePtr clone = boost::make_shared<DataNode>();
    std::swap(mElements, clone->mElements);
    std::swap(mAttributes, clone->mAttributes);
    std::swap(mDataList, clone->mDataList);
    std::swap(mDataAsBool, clone->mDataAsBool);
    std::swap(mDataAsDouble, clone->mDataAsDouble);
    std::swap(mDataAsInteger, clone->mDataAsInteger);
    std::swap(mDataAsColor, clone->mDataAsColor);
    std::swap(mText, clone->mText);
    std::swap(mIsAttribute, clone->mIsAttribute);
    std::swap(mIsCombined, clone->mIsCombined);
    clone->mName = mName;
    clone->mShortName = mShortName;
    return clone;
}

void DataNode::absorb(NodePtr other) {
    mIsCombined = true;
    append(mElements, other->mElements);
    append(mAttributes, other->mAttributes);
    append(mDataList, other->mDataList);
    mText += other->mText;
    if (mName.empty()) {
        mName = other->mName;
    }
    if (mShortName.empty()) {
        mShortName = other->mShortName;
    }
}

std::string DataNode::doGetValue(std::string const &, bool, bool *found) const {
    if (found != nullptr) {
        *found = true;
    }
    return mText;
}

long DataNode::doGetValue(long, bool, bool *found) const {
    return readNumber<long>(mText, found);
}

double DataNode::doGetValue(double, bool, bool *found) const {
    return readNumber<double>(mText, found);
}

Color DataNode::doGetValue(Color const &, bool, bool *found) const {
    return stringToColor(mText, found);
}

bool DataNode::doGetValue(bool, bool, bool *found) const {
    return readBool(mText, found);
}

template <typename T>
T DataNode::attributeAs(std::string const &name, T const &defaultValue, bool flag,
                        bool *found) const {
    const NodePtr attribute = fetchAttributeNode(name, flag);
    if (!attribute) {
        if (found != nullptr) {
            *found = false;
        }
        return defaultValue;
    }
    return attribute->doGetValue(defaultValue, flag, found);
}

std::string DataNode::doGetAttribute(std::string const &name, std::string const &defaultValue,
                                     bool flag, bool *found) const {
    return attributeAs(name, defaultValue, flag, found);
}

long DataNode::doGetAttribute(std::string const &name, long defaultValue, bool flag,
                              bool *found) const {
    return attributeAs(name, defaultValue, flag, found);
}

double DataNode::doGetAttribute(std::string const &name, double defaultValue, bool flag,
                                bool *found) const {
    return attributeAs(name, defaultValue, flag, found);
}

Color DataNode::doGetAttribute(std::string const &name, Color const &defaultValue, bool flag,
                               bool *found) const {
    return attributeAs(name, defaultValue, flag, found);
}

bool DataNode::doGetAttribute(std::string const &name, bool defaultValue, bool flag,
                              bool *found) const {
    return attributeAs(name, defaultValue, flag, found);
}

Color stringToColor(std::string const &text, bool *ok) {
    const bool readable = !text.empty() && text.find(',') != std::string::npos;
    if (ok != nullptr) {
        *ok = readable;
    }
    if (!readable) {
        return Color();
    }
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double r = 1.0;
    double g = 1.0;
    double b = 1.0;
    double a = 1.0;
    char separator = 0;
    stream >> r >> separator >> g >> separator >> b >> separator;
    const bool big = r > 1.0 || g > 1.0 || b > 1.0;
    if (stream.eof()) {
        // Three numbers: opaque on either scale.
        a = big ? 255.0 : 1.0;
    } else {
        stream >> a;
    }
    Color color;
    if (big || a > 1.0) {
        color.setRGBA(r / 255.0, g / 255.0, b / 255.0, a / 255.0);
    } else {
        color.setRGBA(r, g, b, a);
    }
    return color;
}

}  // namespace XMLDB
}  // namespace VORT
