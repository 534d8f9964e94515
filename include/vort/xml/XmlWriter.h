// `VORT::XmlWriter`, which writes one XML file through Qt's stream writer, and its
// `XmlWriterSettings`.
//
// The writer keeps a state machine with a stack of states and refuses a call made in the wrong
// order. The text of an element or attribute is collected by `writeValue`, in as many pieces as
// the caller likes, and reaches the file only when the element or attribute is closed. Texts
// are UTF-8 `std::string`s, and the file is always written in UTF-8.
//
// Failure: a refused call throws `TypedException<SimpleErrorDescription>` at
// ".\xml\XmlWriterImpl" with a text that names the call, and writes nothing; what was written
// before stays. A file that cannot be opened throws from the constructor. Disk errors are not
// reported.
//
// Ownership: copies of a writer share one implementation, stream and state. The file is closed
// by `close` or when the last copy goes; open elements are not closed for the caller then.
//
// Thread safety: a writer belongs to one thread at a time.
#ifndef VORT_XML_XMLWRITER_H
#define VORT_XML_XMLWRITER_H

#include <vort/bones/Holder.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {

class VORT_EXPORT XmlWriterSettings {
public:
    // `codec` is kept and reported by `getCodec`; the output is UTF-8 whatever it names.
    // `autoFlush` opens the file unbuffered, so that what was written is on disk at once.
    explicit XmlWriterSettings(bool autoFormat = true, char const *codec = "UTF-8",
                               bool autoFlush = false)
        : mAutoFormat(autoFormat), mCodec(codec), mAutoFlush(autoFlush) {}

    bool getAutoFormat() const { return mAutoFormat; }
    char const *getCodec() const { return mCodec.c_str(); }
    bool getAutoFlush() const { return mAutoFlush; }

private:
    bool mAutoFormat;
    std::string mCodec;
    bool mAutoFlush;
};

class XmlWriterImpl;

class VORT_EXPORT XmlWriter {
public:
    // Creates or truncates `target` (a file name, UTF-8). Throws "Error in initializing
    // XmlWriter with target <target> : <the system's reason>" if it can't.
    explicit XmlWriter(char const *target, XmlWriterSettings const &settings = XmlWriterSettings());
    XmlWriter(XmlWriter const &other);
    XmlWriter &operator=(XmlWriter const &other);
    ~XmlWriter();

    // Closes the file whatever the state.
    void close();

    // Each call below is refused, with "Invalid state when processing <call>", outside the
    // states that its contract names. The states are INIT, START_DOCUMENT, START_ELEMENT,
    // EMPTY_ELEMENT, START_ATTRIBUTE and VALUE.

    // In INIT only. Afterwards START_DOCUMENT.
    void writeStartDocument(std::string const &version);
    // In START_ELEMENT, EMPTY_ELEMENT, START_DOCUMENT or VALUE: closes every open element, ends
    // the document and returns to INIT, so a new document may start on the same stream.
    void writeEndDocument();

    // In START_DOCUMENT, START_ELEMENT or EMPTY_ELEMENT; afterwards START_ELEMENT. With a
    // prefix the name is written as "prefix:localName" and the namespace is not declared.
    void writeStartElement(std::string const &localName);
    void writeStartElement(std::string const &localName, std::string const &namespaceURI);
    void writeStartElement(std::string const &prefix, std::string const &localName,
                           std::string const &namespaceURI);
    // As a start element, but the element takes no content; afterwards EMPTY_ELEMENT. Its
    // `writeEndElement` also closes the enclosing element in the file, one level ahead of the
    // state stack, which `writeEndDocument` copes with.
    void writeEmptyElement(std::string const &localName);
    void writeEmptyElement(std::string const &localName, std::string const &namespaceURI);
    void writeEmptyElement(std::string const &prefix, std::string const &localName,
                           std::string const &namespaceURI);
    // In START_ELEMENT, EMPTY_ELEMENT or VALUE: writes the pending text and the end tag, and
    // returns to the state before the element. Refused with `Invalid state "<state>" when
    // processing writeEndElement <last element's local name>`.
    void writeEndElement();

    void writeElement(std::string const &localName, std::string const &value);
    void writeElement(std::string const &localName, std::string const &namespaceURI,
                      std::string const &value);
    void writeElement(std::string const &prefix, std::string const &localName,
                      std::string const &namespaceURI, std::string const &value);

    // In START_ELEMENT or EMPTY_ELEMENT; afterwards START_ATTRIBUTE.
    void writeStartAttribute(std::string const &localName);
    void writeStartAttribute(std::string const &localName, std::string const &namespaceURI);
    void writeStartAttribute(std::string const &prefix, std::string const &localName,
                             std::string const &namespaceURI);
    // In START_ATTRIBUTE or VALUE: writes the attribute with the pending text and returns to
    // the element's state.
    void writeEndAttribute();

    void writeAttribute(std::string const &localName, std::string const &value);
    void writeAttribute(std::string const &localName, std::string const &namespaceURI,
                        std::string const &value);
    void writeAttribute(std::string const &prefix, std::string const &localName,
                        std::string const &namespaceURI, std::string const &value);

    // In START_ELEMENT, START_ATTRIBUTE or VALUE; afterwards VALUE. Appends to the pending text,
    // so no child element may follow in that element.
    void writeValue(std::string const &text);

    // Written at once, in any state, even before the document starts.
    void writeNamespace(std::string const &namespaceURI, std::string const &prefix);
    void writeDefaultNamespace(std::string const &namespaceURI);

private:
    XmlWriterSettings mSettings;
    Holder<XmlWriterImpl> mImpl;
};

}  // namespace VORT

#endif  // VORT_XML_XMLWRITER_H
