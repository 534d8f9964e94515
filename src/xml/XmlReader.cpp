#include "XmlReader_p.h"
#include <hsl/hsl.h>
#include <vort/err/Exception.h>
#include <vort/xml/XmlConstants.h>
#include <vort/xml/XmlReader.h>

namespace VORT {

const std::string XmlConstants::DEFAULT_NS_PREFIX;
const std::string XmlConstants::NULL_NS_URI;
char const *const XmlConstants::XML_NS_PREFIX = "xml";
char const *const XmlConstants::XMLNS_ATTRIBUTE = "xmlns";
char const *const XmlConstants::XML_NS_URI = "http://www.w3.org/XML/1998/namespace";
char const *const XmlConstants::XMLNS_ATTRIBUTE_NS_URI = "http://www.w3.org/2000/xmlns/";
char const *const XmlConstants::W3C_XML_SCHEMA_INSTANCE_NS_URI =
    "http://www.w3.org/2001/XMLSchema-instance";

std::string QName::toString() const {
    return mPrefix.empty() ? mLocalName : mPrefix + ':' + mLocalName;
}

XmlStringRef::XmlStringRef() : mImpl(new XmlStringRefImpl) {}
XmlStringRef::XmlStringRef(XmlStringRefImpl *impl) : mImpl(impl) {}
XmlStringRef::XmlStringRef(XmlStringRef const &other) = default;
XmlStringRef &XmlStringRef::operator=(XmlStringRef const &other) = default;
XmlStringRef::~XmlStringRef() = default;

std::string XmlStringRef::toString() const {
    return mImpl->mText.toStdString();
}

bool XmlStringRef::isNull() const {
    return mImpl->mText.isNull();
}

bool XmlStringRef::operator==(XmlStringRef const &other) const {
    return mImpl == other.mImpl;
}

bool XmlStringRef::operator==(char const *text) const {
    return mImpl->mText == QString::fromUtf8(text);
}

bool XmlStringRef::operator==(std::string const &text) const {
    return mImpl->mText == QString::fromStdString(text);
}

unsigned int XmlStringRef::hashCode() const {
    return hsl_hash_n_bytes(0, &mImpl->mText, sizeof(QString));
}

XmlReader::XmlReader(char const *target, XmlReaderSettings const &settings)
    : mSettings(settings), mImpl(new XmlReaderImpl(target)) {
    XmlReaderImpl &d = *mImpl;
    if (!d.mFile.open(QIODevice::ReadOnly)) {
        throwException(
            SimpleErrorDescription(CodeLocation(".\\xml\\XmlReaderImpl", 58),
                                   std::string("Error in initializing XmlReader with target ") +
                                       target + " : " + d.mFile.errorString().toStdString()));
    }
    d.mFileInfo = QFileInfo(d.mFile);
    QIODevice *device = &d.mFile;
    bool tooLarge = false;
    if (d.mFile.isSequential()) {
        // A pipe or a device tells no size: it is read ahead, one byte past the bound.
        d.mContent = d.mFile.read(static_cast<qint64>(MAX_DOCUMENT_BYTES) + 1);
        tooLarge = static_cast<std::uint64_t>(d.mContent.size()) > MAX_DOCUMENT_BYTES;
        d.mBuffer.setBuffer(&d.mContent);
        d.mBuffer.open(QIODevice::ReadOnly);
        device = &d.mBuffer;
    } else {
        // A file is parsed from the file itself, which Qt reads faster than a buffer.
        tooLarge = static_cast<std::uint64_t>(d.mFile.size()) > MAX_DOCUMENT_BYTES;
    }
    if (tooLarge) {
        d.mContent.clear();
        d.mReader.raiseError(QStringLiteral("Document larger than %1 bytes")
                                 .arg(static_cast<qulonglong>(MAX_DOCUMENT_BYTES)));
        return;
    }
    // After the device: setting one starts the parser afresh, settings included.
    d.mReader.setDevice(device);
    d.mReader.setNamespaceProcessing(mSettings.getNamespaceProcessing());
}

XmlReader::XmlReader(XmlReader const &other) = default;
XmlReader &XmlReader::operator=(XmlReader const &other) = default;
XmlReader::~XmlReader() = default;

void XmlReader::close() {
    mImpl->mReader.clear();
}

XmlEventTypes::Type XmlReader::next() {
    return mImpl->next();
}

XmlEventTypes::Type XmlReader::nextTag() {
    mImpl->mReader.readElementText();
    return getEventType();
}

XmlEventTypes::Type XmlReader::getEventType() const {
    return static_cast<XmlEventTypes::Type>(mImpl->mReader.tokenType());
}

bool XmlReader::hasNext() const {
    return !mImpl->mReader.atEnd();
}

bool XmlReader::hasError() const {
    return mImpl->mReader.error() != QXmlStreamReader::NoError;
}

std::string XmlReader::error() const {
    return mImpl->mReader.errorString().toStdString();
}

void XmlReader::raiseError(std::string const &message) {
    mImpl->mReader.raiseError(QString::fromStdString(message));
}

Location XmlReader::getLocation() const {
    QXmlStreamReader const &reader = mImpl->mReader;
    return Location(mImpl->mFileInfo.canonicalFilePath().toStdString(),
                    static_cast<std::uint64_t>(reader.lineNumber()),
                    static_cast<std::uint64_t>(reader.columnNumber()),
                    static_cast<std::uint64_t>(reader.characterOffset()));
}

std::string XmlReader::getElementText() {
    return mImpl->mReader.readElementText().toStdString();
}

XmlStringRef XmlReader::getText() const {
    return XmlReaderImpl::ref(mImpl->mReader.text());
}

bool XmlReader::hasName() const {
    return isStartElement() || isEndElement();
}

bool XmlReader::hasText() const {
    return isCharacters() || isComment() || isDtd() || isEntityReference();
}

bool XmlReader::isStartElement() const {
    return getEventType() == XmlEventTypes::StartElement;
}

bool XmlReader::isEndElement() const {
    return getEventType() == XmlEventTypes::EndElement;
}

bool XmlReader::isCharacters() const {
    return getEventType() == XmlEventTypes::Characters;
}

bool XmlReader::isComment() const {
    return getEventType() == XmlEventTypes::Comment;
}

bool XmlReader::isDtd() const {
    return getEventType() == XmlEventTypes::DTD;
}

bool XmlReader::isEntityReference() const {
    return getEventType() == XmlEventTypes::EntityReference;
}

bool XmlReader::isProcessingInstruction() const {
    return getEventType() == XmlEventTypes::ProcessingInstruction;
}

bool XmlReader::isWhiteSpace() const {
    return mImpl->mReader.isWhitespace();
}

bool XmlReader::isStandalone() const {
    return mImpl->mReader.isStandaloneDocument();
}

XmlStringRef XmlReader::getLocalName() const {
    return XmlReaderImpl::ref(mImpl->mReader.name());
}

XmlStringRef XmlReader::getNamespaceURI() const {
    return XmlReaderImpl::ref(mImpl->mReader.namespaceUri());
}

XmlStringRef XmlReader::getPrefix() const {
    return XmlReaderImpl::prefixOf(mImpl->mReader.qualifiedName());
}

QName XmlReader::getName() const {
    return QName(getNamespaceURI().toString(), getLocalName().toString(), getPrefix().toString());
}

XmlStringRef XmlReader::getPIData() const {
    return XmlReaderImpl::ref(mImpl->mReader.processingInstructionData());
}

XmlStringRef XmlReader::getPITarget() const {
    return XmlReaderImpl::ref(mImpl->mReader.processingInstructionTarget());
}

int XmlReader::getAttributeCount() const {
    return static_cast<int>(mImpl->mAttributes.size());
}

XmlStringRef XmlReader::getAttributeLocalName(int index) const {
    return XmlReaderImpl::ref(mImpl->mAttributes.at(index).name());
}

XmlStringRef XmlReader::getAttributeNamespace(int index) const {
    return XmlReaderImpl::ref(mImpl->mAttributes.at(index).namespaceUri());
}

XmlStringRef XmlReader::getAttributeValue(int index) const {
    return XmlReaderImpl::ref(mImpl->mAttributes.at(index).value());
}

XmlStringRef XmlReader::getAttributePrefix(int index) const {
    return XmlReaderImpl::prefixOf(mImpl->mAttributes.at(index).qualifiedName());
}

QName XmlReader::getAttributeName(int index) const {
    return QName(getAttributeNamespace(index).toString(), getAttributeLocalName(index).toString(),
                 getAttributePrefix(index).toString());
}

bool XmlReader::isAttributeSpecified(int index) const {
    return !mImpl->mAttributes.at(index).isDefault();
}

XmlStringRef XmlReader::getAttributeValue(std::string const &namespaceURI,
                                          std::string const &localName) const {
    const QString uri = QString::fromStdString(namespaceURI);
    const QString name = QString::fromStdString(localName);
    for (QXmlStreamAttribute const &attribute : std::as_const(mImpl->mAttributes)) {
        if (attribute.namespaceUri() == uri && attribute.name() == name) {
            return XmlReaderImpl::ref(attribute.value());
        }
    }
    return XmlStringRef();
}

XmlStringRef XmlReader::getAttributeValue(XmlStringRef const &namespaceURI,
                                          XmlStringRef const &localName) const {
    for (QXmlStreamAttribute const &attribute : std::as_const(mImpl->mAttributes)) {
        if (XmlReaderImpl::ref(attribute.namespaceUri()) == namespaceURI &&
            XmlReaderImpl::ref(attribute.name()) == localName) {
            return XmlReaderImpl::ref(attribute.value());
        }
    }
    return XmlStringRef();
}

int XmlReader::getNamespaceCount() const {
    return static_cast<int>(mImpl->mNamespaces.size());
}

XmlStringRef XmlReader::getNamespacePrefix(int index) const {
    return XmlReaderImpl::ref(mImpl->mNamespaces.at(index).prefix());
}

XmlStringRef XmlReader::getNamespaceURI(int index) const {
    return XmlReaderImpl::ref(mImpl->mNamespaces.at(index).namespaceUri());
}

XmlStringRef XmlReader::getNamespaceURI(std::string const &prefix) const {
    const QString wanted = QString::fromStdString(prefix);
    for (QXmlStreamNamespaceDeclaration const &declaration : std::as_const(mImpl->mNamespaces)) {
        if (declaration.prefix() == wanted) {
            return XmlReaderImpl::ref(declaration.prefix());
        }
    }
    return XmlStringRef();
}

XmlStringRef XmlReader::getNamespaceURI(XmlStringRef const &prefix) const {
    for (QXmlStreamNamespaceDeclaration const &declaration : std::as_const(mImpl->mNamespaces)) {
        if (XmlReaderImpl::ref(declaration.prefix()) == prefix) {
            return XmlReaderImpl::ref(declaration.prefix());
        }
    }
    return XmlStringRef();
}

}  // namespace VORT
