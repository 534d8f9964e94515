// `VORT::XmlReader`, a pull reader over one XML file, and the values it hands out:
// `XmlEventTypes`, `XmlReaderSettings`, `Location`, `QName` and `XmlStringRef`.
//
// The reader walks the file event by event (`next`), with a cursor that the accessors read. At
// each step it keeps a snapshot of the current element's attributes and namespace declarations.
// All parsing is Qt's streaming parser; texts cross this interface as UTF-8 `std::string`s.
//
// Failure: a file that cannot be opened throws `TypedException<SimpleErrorDescription>` from the
// constructor. A parse error never throws: the event becomes `Invalid`, `hasError` turns true,
// `error` has the parser's text and `getLocation` tells where. A document above
// `MAX_DOCUMENT_BYTES` reads as nothing but that error (a file by its size, a pipe once that
// much was read), so no file makes the reader hold more. Entities may expand to at most 4096
// characters each.
//
// Ownership: copies of a reader share one implementation, and so one cursor. An `XmlStringRef`
// belongs to the event that gave it: it is meant to be read before the reader moves on.
//
// Thread safety: a reader, its copies and its string references belong to one thread at a time.
#ifndef VORT_XML_XMLREADER_H
#define VORT_XML_XMLREADER_H

#include <vort/bones/Holder.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <string>

namespace VORT {

// The reader's events. The values are those of Qt's token types, passed on unconverted.
struct VORT_EXPORT XmlEventTypes {
    enum Type {
        NoToken = 0,
        Invalid = 1,
        StartDocument = 2,
        EndDocument = 3,
        StartElement = 4,
        EndElement = 5,
        Characters = 6,
        Comment = 7,
        DTD = 8,
        EntityReference = 9,
        ProcessingInstruction = 10
    };
};

class VORT_EXPORT XmlReaderSettings {
public:
    // Namespace processing is on unless turned off here.
    explicit XmlReaderSettings(bool namespaceProcessing = true)
        : mNamespaceProcessing(namespaceProcessing) {}

    bool getNamespaceProcessing() const { return mNamespaceProcessing; }
    void setNamespaceProcessing(bool on) { mNamespaceProcessing = on; }

private:
    bool mNamespaceProcessing;
};

// A position in a document: the file, the line and column (from 1) and the character offset.
class VORT_EXPORT Location {
public:
    Location() : mLineNumber(0), mColumnNumber(0), mCharacterOffset(0) {}
    Location(std::string const &systemId, std::uint64_t lineNumber, std::uint64_t columnNumber,
             std::uint64_t characterOffset)
        : mSystemId(systemId),
          mLineNumber(lineNumber),
          mColumnNumber(columnNumber),
          mCharacterOffset(characterOffset) {}

    std::string const &getSystemId() const { return mSystemId; }
    std::uint64_t getLineNumber() const { return mLineNumber; }
    std::uint64_t getColumnNumber() const { return mColumnNumber; }
    std::uint64_t getCharacterOffset() const { return mCharacterOffset; }

private:
    std::string mSystemId;
    std::uint64_t mLineNumber;
    std::uint64_t mColumnNumber;
    std::uint64_t mCharacterOffset;
};

// A qualified name: local name, namespace URI and prefix.
class VORT_EXPORT QName {
public:
    QName() = default;
    explicit QName(std::string const &localName) : mLocalName(localName) {}
    QName(std::string const &namespaceURI, std::string const &localName)
        : mLocalName(localName), mNamespaceURI(namespaceURI) {}
    QName(std::string const &namespaceURI, std::string const &localName, std::string const &prefix)
        : mLocalName(localName), mNamespaceURI(namespaceURI), mPrefix(prefix) {}

    std::string const &getLocalName() const { return mLocalName; }
    std::string const &getNamespaceURI() const { return mNamespaceURI; }
    std::string const &getPrefix() const { return mPrefix; }

    // "prefix:localName", or the local name alone when the prefix is empty.
    std::string toString() const;

private:
    std::string mLocalName;
    std::string mNamespaceURI;
    std::string mPrefix;
};

class XmlStringRefImpl;
class XmlReaderImpl;
namespace XMLDB {
struct DataNode;
}

// A cheap handle on a text of the reader. Copies share one implementation.
class VORT_EXPORT XmlStringRef {
public:
    // A null reference.
    XmlStringRef();
    XmlStringRef(XmlStringRef const &other);
    XmlStringRef &operator=(XmlStringRef const &other);
    ~XmlStringRef();

    // The text, or empty for a null reference.
    std::string toString() const;
    // True when the reference has no text at all (as opposed to an empty one).
    bool isNull() const;

    // Identity of the implementation, not the text: two references to the same text from two
    // calls are unequal. Compare with a string to compare texts.
    bool operator==(XmlStringRef const &other) const;
    bool operator!=(XmlStringRef const &other) const { return !(*this == other); }
    // Text comparison with UTF-8 text; a null reference equals the empty text.
    bool operator==(char const *text) const;
    bool operator==(std::string const &text) const;
    bool operator!=(char const *text) const { return !(*this == text); }
    bool operator!=(std::string const &text) const { return !(*this == text); }

    // A hash of the reference's own handle, not of its text: two references to one text hash
    // apart, and nothing should store the value.
    unsigned int hashCode() const;

private:
    friend class XmlReaderImpl;
    explicit XmlStringRef(XmlStringRefImpl *impl);

    Holder<XmlStringRefImpl> mImpl;
};

class VORT_EXPORT XmlReader {
public:
    // Documents above this size read as one error and nothing else.
    static constexpr std::uint64_t MAX_DOCUMENT_BYTES = 16u * 1024u * 1024u;

    // Opens `target` (a file name, UTF-8) for reading. Throws, at ".\xml\XmlReaderImpl", "Error
    // in initializing XmlReader with target <target> : <the system's reason>" if it can't.
    explicit XmlReader(char const *target, XmlReaderSettings const &settings = XmlReaderSettings());
    XmlReader(XmlReader const &other);
    XmlReader &operator=(XmlReader const &other);
    ~XmlReader();

    // Ends parsing; the file stays open until the last copy of the reader goes.
    void close();

    // Moves to the next event, takes the new snapshots, and returns the event.
    XmlEventTypes::Type next();
    // Reads and drops the element's text: from a start element it lands on the matching end
    // element (or on an error), and the snapshots are not refreshed.
    XmlEventTypes::Type nextTag();
    XmlEventTypes::Type getEventType() const;
    bool hasNext() const;

    bool hasError() const;
    std::string error() const;
    // A custom error: `hasError` turns true and parsing stops at the next step.
    void raiseError(std::string const &message);
    // The canonical path of the file, and where the cursor stands.
    Location getLocation() const;

    // From a start element: its text up to the end element, where the cursor then stands.
    std::string getElementText();
    XmlStringRef getText() const;

    bool hasName() const;  // a start or end element
    bool hasText() const;  // characters, a comment, a DTD or an entity reference
    bool isStartElement() const;
    bool isEndElement() const;
    bool isCharacters() const;
    bool isComment() const;
    bool isDtd() const;
    bool isEntityReference() const;
    bool isProcessingInstruction() const;
    bool isWhiteSpace() const;
    bool isStandalone() const;

    XmlStringRef getLocalName() const;
    XmlStringRef getNamespaceURI() const;
    // The part of the qualified name before its one ":", or null when the name has no colon or
    // more than one. It works on the written name, so it answers with namespace processing off.
    XmlStringRef getPrefix() const;
    QName getName() const;
    XmlStringRef getPIData() const;
    XmlStringRef getPITarget() const;

    // Attributes of the current event's snapshot. An index outside 0 to count - 1 is a caller
    // fault that is not checked.
    int getAttributeCount() const;
    XmlStringRef getAttributeLocalName(int index) const;
    XmlStringRef getAttributeNamespace(int index) const;
    XmlStringRef getAttributeValue(int index) const;
    XmlStringRef getAttributePrefix(int index) const;
    QName getAttributeName(int index) const;
    // False when the value came from a default in the DTD.
    bool isAttributeSpecified(int index) const;
    // The value of the first attribute with that namespace (empty for none) and local name, or
    // a null reference.
    XmlStringRef getAttributeValue(std::string const &namespaceURI,
                                   std::string const &localName) const;
    // Compares by identity (see `XmlStringRef`) against references made for each attribute, so
    // it finds nothing and answers a null reference: kept as callers have always seen it.
    XmlStringRef getAttributeValue(XmlStringRef const &namespaceURI,
                                   XmlStringRef const &localName) const;

    // Namespace declarations of the current event's snapshot; indexes as for attributes.
    int getNamespaceCount() const;
    XmlStringRef getNamespacePrefix(int index) const;
    XmlStringRef getNamespaceURI(int index) const;
    // For the first declaration whose prefix is `prefix`, that declaration's prefix (not its
    // URI: the long-standing answer, which callers rely on), else a null reference.
    XmlStringRef getNamespaceURI(std::string const &prefix) const;
    // By identity, as `getAttributeValue(XmlStringRef, XmlStringRef)`: a null reference.
    XmlStringRef getNamespaceURI(XmlStringRef const &prefix) const;

private:
    // The configuration loader reads the parser directly.
    friend struct XMLDB::DataNode;

    XmlReaderSettings mSettings;
    Holder<XmlReaderImpl> mImpl;
};

}  // namespace VORT

#endif  // VORT_XML_XMLREADER_H
