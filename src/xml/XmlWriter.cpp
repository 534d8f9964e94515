#include <vort/err/Exception.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlWriter.h>

#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtCore/QXmlStreamWriter>

#include <vector>

namespace VORT {

namespace {

enum State { INIT, EMPTY_ELEMENT, START_ELEMENT, START_DOCUMENT, START_ATTRIBUTE, VALUE };

char const *const kStateNames[] = {"INIT",           "EMPTY_ELEMENT",   "START_ELEMENT",
                                   "START_DOCUMENT", "START_ATTRIBUTE", "VALUE"};

// A set of states as bits, so that each call tests its allowed states in one step.
constexpr unsigned bit(State state) {
    return 1u << state;
}

[[noreturn]] void refuse(std::string const &text) {
    throwException(SimpleErrorDescription(CodeLocation(".\\xml\\XmlWriterImpl", 97), text));
}

QString q(std::string const &text) {
    return QString::fromStdString(text);
}

}  // namespace

class XmlWriterImpl : public ReferencedTemplate<unsigned int> {
public:
    explicit XmlWriterImpl(char const *target) : mFile(QFile::decodeName(target)) {}

    void require(unsigned allowed, char const *call) const {
        if ((bit(mState) & allowed) == 0) {
            refuse(std::string("Invalid state when processing ") + call);
        }
    }

    void push(State state) {
        mStates.push_back(mState);
        mState = state;
    }

    void pop() {
        mState = mStates.back();
        mStates.pop_back();
    }

    void startElement(bool empty, std::string const &prefix, std::string const &localName,
                      std::string const &namespaceURI) {
        require(bit(START_DOCUMENT) | bit(START_ELEMENT) | bit(EMPTY_ELEMENT),
                empty ? "writeEmptyElement" : "writeStartElement");
        if (!prefix.empty()) {
            const QString qualifiedName = q(prefix + ':' + localName);
            if (empty) {
                mWriter.writeEmptyElement(qualifiedName);
            } else {
                mWriter.writeStartElement(qualifiedName);
            }
        } else if (empty) {
            mWriter.writeEmptyElement(q(namespaceURI), q(localName));
        } else {
            mWriter.writeStartElement(q(namespaceURI), q(localName));
        }
        push(empty ? EMPTY_ELEMENT : START_ELEMENT);
        mElementName = localName;
    }

    void endElement() {
        if ((bit(mState) & (bit(START_ELEMENT) | bit(EMPTY_ELEMENT) | bit(VALUE))) == 0) {
            refuse(std::string("Invalid state \"") + kStateNames[mState] +
                   "\" when processing writeEndElement " + mElementName);
        }
        if (!mValue.empty()) {
            mWriter.writeCharacters(q(mValue));
            mValue.clear();
        }
        mWriter.writeEndElement();
        while (mState == VALUE) {
            pop();
        }
        pop();
    }

    void startAttribute(std::string const &prefix, std::string const &localName,
                        std::string const &namespaceURI) {
        require(bit(START_ELEMENT) | bit(EMPTY_ELEMENT), "writeStartAttribute");
        mAttrPrefix = prefix;
        mAttrLocalName = localName;
        mAttrNamespace = namespaceURI;
        push(START_ATTRIBUTE);
    }

    void endAttribute() {
        require(bit(START_ATTRIBUTE) | bit(VALUE), "writeEndAttribute");
        while (mState == VALUE) {
            pop();
        }
        if (!mAttrPrefix.empty()) {
            mWriter.writeAttribute(q(mAttrPrefix + ':' + mAttrLocalName), q(mValue));
        } else {
            mWriter.writeAttribute(q(mAttrNamespace), q(mAttrLocalName), q(mValue));
        }
        mValue.clear();
        mAttrPrefix.clear();
        mAttrLocalName.clear();
        mAttrNamespace.clear();
        pop();
    }

    void value(std::string const &text) {
        require(bit(START_ELEMENT) | bit(START_ATTRIBUTE) | bit(VALUE), "writeValue");
        push(VALUE);
        mValue += text;
    }

    QFile mFile;
    QXmlStreamWriter mWriter;
    std::string mElementName;
    State mState = INIT;
    std::string mValue;
    std::string mAttrPrefix;
    std::string mAttrLocalName;
    std::string mAttrNamespace;
    std::vector<State> mStates;
};

XmlWriter::XmlWriter(char const *target, XmlWriterSettings const &settings)
    : mSettings(settings), mImpl(new XmlWriterImpl(target)) {
    XmlWriterImpl &d = *mImpl;
    QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Truncate;
    if (mSettings.getAutoFlush()) {
        mode |= QIODevice::Unbuffered;
    }
    if (!d.mFile.open(mode)) {
        throwException(
            SimpleErrorDescription(CodeLocation(".\\xml\\XmlWriterImpl", 41),
                                   std::string("Error in initializing XmlWriter with target ") +
                                       target + " : " + d.mFile.errorString().toStdString()));
    }
    d.mWriter.setDevice(&d.mFile);
    d.mWriter.setAutoFormatting(mSettings.getAutoFormat());
}

XmlWriter::XmlWriter(XmlWriter const &other) = default;
XmlWriter &XmlWriter::operator=(XmlWriter const &other) = default;
XmlWriter::~XmlWriter() = default;

void XmlWriter::close() {
    mImpl->mFile.close();
}

void XmlWriter::writeStartDocument(std::string const &version) {
    XmlWriterImpl &d = *mImpl;
    d.require(bit(INIT), "writeStartDocument");
    d.mWriter.writeStartDocument(q(version));
    d.push(START_DOCUMENT);
}

void XmlWriter::writeEndDocument() {
    XmlWriterImpl &d = *mImpl;
    d.require(bit(START_ELEMENT) | bit(EMPTY_ELEMENT) | bit(START_DOCUMENT) | bit(VALUE),
              "writeEndDocument");
    while (d.mState != START_DOCUMENT) {
        d.endElement();
    }
    d.mWriter.writeEndDocument();
    d.mState = d.mStates.back();
    if (d.mState != INIT) {
        refuse("Invalid end state in XmlWriterImpl");
    }
    d.mStates.pop_back();
}

void XmlWriter::writeStartElement(std::string const &localName) {
    mImpl->startElement(false, XmlConstants::DEFAULT_NS_PREFIX, localName,
                        XmlConstants::NULL_NS_URI);
}

void XmlWriter::writeStartElement(std::string const &localName, std::string const &namespaceURI) {
    mImpl->startElement(false, XmlConstants::DEFAULT_NS_PREFIX, localName, namespaceURI);
}

void XmlWriter::writeStartElement(std::string const &prefix, std::string const &localName,
                                  std::string const &namespaceURI) {
    mImpl->startElement(false, prefix, localName, namespaceURI);
}

void XmlWriter::writeEmptyElement(std::string const &localName) {
    mImpl->startElement(true, XmlConstants::DEFAULT_NS_PREFIX, localName,
                        XmlConstants::NULL_NS_URI);
}

void XmlWriter::writeEmptyElement(std::string const &localName, std::string const &namespaceURI) {
    mImpl->startElement(true, XmlConstants::DEFAULT_NS_PREFIX, localName, namespaceURI);
}

void XmlWriter::writeEmptyElement(std::string const &prefix, std::string const &localName,
                                  std::string const &namespaceURI) {
    mImpl->startElement(true, prefix, localName, namespaceURI);
}

void XmlWriter::writeEndElement() {
    mImpl->endElement();
}

void XmlWriter::writeElement(std::string const &localName, std::string const &value) {
    writeStartElement(localName);
    writeValue(value);
    writeEndElement();
}

void XmlWriter::writeElement(std::string const &localName, std::string const &namespaceURI,
                             std::string const &value) {
    writeStartElement(localName, namespaceURI);
    writeValue(value);
    writeEndElement();
}

void XmlWriter::writeElement(std::string const &prefix, std::string const &localName,
                             std::string const &namespaceURI, std::string const &value) {
    writeStartElement(prefix, localName, namespaceURI);
    writeValue(value);
    writeEndElement();
}

void XmlWriter::writeStartAttribute(std::string const &localName) {
    mImpl->startAttribute(XmlConstants::DEFAULT_NS_PREFIX, localName, XmlConstants::NULL_NS_URI);
}

void XmlWriter::writeStartAttribute(std::string const &localName, std::string const &namespaceURI) {
    mImpl->startAttribute(XmlConstants::DEFAULT_NS_PREFIX, localName, namespaceURI);
}

void XmlWriter::writeStartAttribute(std::string const &prefix, std::string const &localName,
                                    std::string const &namespaceURI) {
    mImpl->startAttribute(prefix, localName, namespaceURI);
}

void XmlWriter::writeEndAttribute() {
    mImpl->endAttribute();
}

void XmlWriter::writeAttribute(std::string const &localName, std::string const &value) {
    writeStartAttribute(localName);
    writeValue(value);
    writeEndAttribute();
}

void XmlWriter::writeAttribute(std::string const &localName, std::string const &namespaceURI,
                               std::string const &value) {
    writeStartAttribute(localName, namespaceURI);
    writeValue(value);
    writeEndAttribute();
}

void XmlWriter::writeAttribute(std::string const &prefix, std::string const &localName,
                               std::string const &namespaceURI, std::string const &value) {
    writeStartAttribute(prefix, localName, namespaceURI);
    writeValue(value);
    writeEndAttribute();
}

void XmlWriter::writeValue(std::string const &text) {
    mImpl->value(text);
}

void XmlWriter::writeNamespace(std::string const &namespaceURI, std::string const &prefix) {
    mImpl->mWriter.writeNamespace(q(namespaceURI), q(prefix));
}

void XmlWriter::writeDefaultNamespace(std::string const &namespaceURI) {
    mImpl->mWriter.writeDefaultNamespace(q(namespaceURI));
}

}  // namespace VORT
