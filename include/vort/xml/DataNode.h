// `VORT::XMLDB::DataNode`, one element or attribute of a configuration file kept in memory as a
// tree, and `VORT::XMLDB::stringToColor`.
//
// A node loads itself from an `XmlReader` (`loadXML`), holds its child elements, its attributes
// and its text, and answers typed questions about them (`getValue`, `getAttribute`). Names are
// long, the path from the root with parts joined by "/" ("Root/Colors/Background"), and short,
// the element's local name or the attribute's qualified name. Two aggregations go beyond plain
// XML: a node list, where several elements of one file share a long name (the first of them
// becomes a list head that holds only its names and the list), and a combined node, which the
// database makes by merging the nodes of one long name from several files (`absorb`).
//
// Values: an element's text is its last non-blank text run; an element without text, without a
// data list and with a "value" attribute takes that attribute's text. An element whose attribute
// "csv_list" reads "true" (in any case) keeps its text also as a data list: the text split at
// ",", runs of "," counting as one, each value trimmed of white space.
//
// Ownership: nodes are always held by `boost::shared_ptr`. The vectors that the accessors give
// stay owned by the node and are null until something is put in them. A copy of a node shares
// its vectors with the original. Failure: a malformed file ends `loadXML` with false at the level
// where it broke, and keeps what was finished before; nothing throws, nothing is reported.
// Loading refuses, with a reader error, elements nested deeper than `MAX_DEPTH` and trees that
// would take more than `MAX_LOAD_BYTES` of memory. Thread safety: a node belongs to one thread at
// a time; the typed CSV readers fill caches, so even reading is not safe from two threads.
#ifndef VORT_XML_DATANODE_H
#define VORT_XML_DATANODE_H

#include <vort/types/Color.h>
#include <vort/vort_export.h>
#include <vort/xml/XmlReader.h>

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VORT {
namespace XMLDB {

struct VORT_EXPORT DataNode : public boost::enable_shared_from_this<DataNode> {
public:
    typedef boost::shared_ptr<DataNode> NodePtr;
    typedef std::vector<NodePtr> NodeVector;
    // One file's nodes by long name.
    typedef std::map<std::string, NodePtr> NodeMap;

    // Bounds of one `loadXML`: nesting depth, and the bytes of names and texts that its nodes
    // may hold (counting each node's own size and its long name twice, for the file's map).
    static constexpr unsigned MAX_DEPTH = 256;
    static constexpr std::size_t MAX_LOAD_BYTES = 128u * 1024u * 1024u;

    DataNode();
    DataNode(DataNode const &other);
    DataNode &operator=(DataNode const &other);
    virtual ~DataNode();

    std::string const &getName() const { return mName; }
    std::string const &getShortName() const { return mShortName; }
    bool getIsAttribute() const { return mIsAttribute; }
    bool isCombinedNode() const { return mIsCombined; }
    // A list head with at least one entry. Its first entry carries the content that the head
    // had; the head itself has no elements, attributes or text.
    bool isNodeList() const;
    bool hasDataList() const;

    NodeVector const *getNodeList() const { return mNodeList.get(); }
    NodeVector const *getElements() const { return mElements.get(); }
    NodeVector const *getAttributes() const { return mAttributes.get(); }

    // The data list and its conversions, each made once and then kept: a conversion made before
    // an `absorb` does not see the values absorbed. Integers and doubles read as a stream reads
    // them (0 for an empty value), booleans by the rule of `getValue<bool>`, colours by
    // `stringToColor`. Null when the node has no data list.
    std::vector<std::string> const *getDataCSVAsStrings() const { return mDataList.get(); }
    std::vector<bool> const *getDataCSVAsBool() const;
    std::vector<long> const *getDataCSVAsInteger() const;
    std::vector<double> const *getDataCSVAsDouble() const;
    std::vector<Color> const *getDataCSVAsColor() const;

    // The first child element with that short name, or null. A merged node's children are the
    // files' own nodes, so this finds the first file's child.
    NodePtr getElement(std::string const &shortName) const;
    // Appends every child element with that short name; returns how many were appended.
    unsigned long getElementsOfName(std::string const &shortName, NodeVector &out,
                                    bool clearFirst) const;
    // The last attribute with that short name, or null: of merged attributes the later file's.
    NodePtr getAttributePtr(std::string const &shortName) const;
    // Whether an attribute has this short or long name.
    bool hasAttribute(std::string const &name) const;

    // The node's text as `T`, one of `std::string`, `long`, `double`, `Color` and `bool`.
    // `found` (if not null) tells whether there was a value. The default is never used:
    // - `std::string`: the text, even empty; found.
    // - `long`, `double`: empty text gives 0 and not found; otherwise found, and what a stream
    //   extracts from the text in the classic locale (trailing text is ignored, and a text that
    //   is no number gives 0).
    // - `Color`: `stringToColor`.
    // - `bool`: empty text gives false and not found; otherwise found, and true for "true" in
    //   any case and for "1".
    template <typename T>
    T getValue(T const &defaultValue = T(), bool *found = nullptr) const {
        return doGetValue(defaultValue, false, found);
    }
    // The text of the attribute that `name` names (its short or long name; the last one wins)
    // as `T`, by the rules of `getValue`. `defaultValue`, with `found` false, only when there is
    // no such attribute.
    template <typename T>
    T getAttribute(std::string const &name, T const &defaultValue = T(),
                   bool *found = nullptr) const {
        return doGetAttribute(name, defaultValue, false, found);
    }

    // Makes this node the attribute `attributeName` of the element `parentName`. `isDataList`
    // tells whether it is "csv_list" with the value "true", in any case. False when a name is
    // empty.
    bool loadAttribute(std::string const &parentName, std::string const &attributeName,
                       std::string const &value, bool &isDataList);
    // Loads the next element of `reader` (skipping to a start element from `event`, the event
    // the reader stands on) with its attributes and children, as a child of `parentName` (empty
    // for a root). Child elements enter `nodes` under their long names; a child whose long name
    // is already there joins that node's list instead of this node's elements. True when the
    // element ended properly; after a parse error the nodes finished before stay in `nodes`.
    bool loadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                 XmlEventTypes::Type event);
    // Called on the first node of a long name: makes it a list head on the first call (its
    // content moves to a new first entry) and appends `node` unless it is there already.
    void addToNodeList(NodePtr &node);
    // Merges `other` in: its elements, attributes and data list are appended, its text is
    // appended to this text, and empty names are taken from it. The node becomes combined.
    void absorb(NodePtr other);

protected:
    NodePtr fetchAttributeNode(std::string const &name, bool flag) const;
    NodePtr doBecomeNodeList();

    // The typed readers behind `getValue` and `getAttribute`; `flag` has no effect.
    std::string doGetValue(std::string const &defaultValue, bool flag, bool *found) const;
    long doGetValue(long defaultValue, bool flag, bool *found) const;
    double doGetValue(double defaultValue, bool flag, bool *found) const;
    Color doGetValue(Color const &defaultValue, bool flag, bool *found) const;
    bool doGetValue(bool defaultValue, bool flag, bool *found) const;
    std::string doGetAttribute(std::string const &name, std::string const &defaultValue, bool flag,
                               bool *found) const;
    long doGetAttribute(std::string const &name, long defaultValue, bool flag, bool *found) const;
    double doGetAttribute(std::string const &name, double defaultValue, bool flag,
                          bool *found) const;
    Color doGetAttribute(std::string const &name, Color const &defaultValue, bool flag,
                         bool *found) const;
    bool doGetAttribute(std::string const &name, bool defaultValue, bool flag, bool *found) const;

    // Shared, so that a copy of a node shares them and either may be destroyed.
    std::shared_ptr<NodeVector> mNodeList;
    std::shared_ptr<NodeVector> mElements;
    std::shared_ptr<NodeVector> mAttributes;
    std::shared_ptr<std::vector<std::string>> mDataList;
    mutable std::shared_ptr<std::vector<bool>> mDataAsBool;
    mutable std::shared_ptr<std::vector<double>> mDataAsDouble;
    mutable std::shared_ptr<std::vector<long>> mDataAsInteger;
    mutable std::shared_ptr<std::vector<Color>> mDataAsColor;
    std::string mText;
    std::string mName;
    std::string mShortName;
    bool mIsAttribute;
    bool mIsCombined;

private:
    struct LoadState;
    bool doLoadAttribute(std::string const &parentName, std::string &&attributeName,
                         std::string &&value, bool &isDataList);
    template <typename T>
    T attributeAs(std::string const &name, T const &defaultValue, bool flag, bool *found) const;
    bool doLoadXML(std::string const &parentName, XmlReader &reader, NodeMap &nodes,
                   XmlEventTypes::Type event, LoadState &state);
};

// A colour from three or four numbers with any one character between them, such as "1,0,0" or
// "255, 128, 0, 64". Numbers above 1.0 (red, green or blue, or the fourth) put all four on the
// 0 to 255 scale; three numbers mean opaque. `*ok` is false, and the result `Color()`, for an
// empty text or one without a ",". There are no colour names.
VORT_EXPORT Color stringToColor(std::string const &text, bool *ok);

}  // namespace XMLDB
}  // namespace VORT

#endif  // VORT_XML_DATANODE_H
