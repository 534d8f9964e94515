#include <vort/bones/StringTokenizer.h>
#include <vort/xml/DataNode.h>

#include <boost/algorithm/string/trim.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <cctype>
#include <locale>
#include <sstream>
#include <utility>

namespace VORT {
namespace XMLDB {

namespace {

std::string lower(std::string text) {
    for (char &c : text) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

bool readBool(std::string const &text, bool *found) {
    if (found != nullptr) {
        *found = !text.empty();
    }
    return text == "true" || text == "1" || lower(text) == "true";
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
    mName = parentName + '/' + attributeName;
    mShortName = attributeName;
    mText = value;
    mIsAttribute = true;
    isDataList = lower(attributeName) == "csv_list" && lower(value) == "true";
    return !mName.empty() && !attributeName.empty();
}

bool DataNode::loadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                       XmlEventTypes::Type event) {
    LoadState state;
    return doLoadXML(parentName, reader, nodes, event, state);
}

bool DataNode::doLoadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                         XmlEventTypes::Type event, LoadState &state) {
    while (reader.hasNext() && event != XmlEventTypes::StartElement) {
        event = reader.next();
    }
    if (event != XmlEventTypes::StartElement) {
        return false;
    }
    if (!parentName.empty()) {
        mName = parentName + '/';
    }
    mShortName = reader.getLocalName().toString();
    mName += mShortName;
    if (!state.charge(reader, sizeof(DataNode) + 2 * mName.size() + mShortName.size())) {
        return false;
    }

    const int attributeCount = reader.getAttributeCount();
    for (int i = 0; i < attributeCount; ++i) {
        NodePtr attribute = boost::make_shared<DataNode>();
        bool isDataList = false;
        if (!attribute->loadAttribute(mName, reader.getAttributeName(i).toString(),
                                      reader.getAttributeValue(i).toString(), isDataList)) {
            continue;
        }
        if (!state.charge(reader, sizeof(DataNode) + attribute->mName.size() +
                                      attribute->mShortName.size() + attribute->mText.size())) {
            return false;
        }
        if (!mAttributes) {
            mAttributes = std::make_shared<NodeVector>();
        }
        mAttributes->push_back(std::move(attribute));
        if (isDataList) {
            mDataList = std::make_shared<std::vector<std::string>>();
        }
    }
    if (!reader.hasNext()) {
        return false;
    }

    bool ended = false;
    while (!ended && reader.hasNext()) {
        switch (reader.next()) {
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
                }
                const auto found = nodes.find(child->mName);
                if (found == nodes.end()) {
                    nodes.emplace(child->mName, child);
                    mElements->push_back(std::move(child));
                } else {
                    // A fresh child cannot be in the list yet: append without the search
                    // that `addToNodeList` makes, which would cost a pass per sibling.
                    DataNode &head = *found->second;
                    if (!head.mNodeList) {
                        head.mNodeList = std::make_shared<NodeVector>();
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
                if (reader.isWhiteSpace()) {
                    break;
                }
                mText = reader.getText().toString();
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

    if (ended && mText.empty() && !mDataList && mAttributes && hasAttribute("value")) {
        mText = fetchAttributeNode("value", false)->mText;
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
