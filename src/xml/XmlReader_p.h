// Not public API: the records behind XmlReader and XmlStringRef. The loader of data nodes reads
// the parser through them on its hot path.
#ifndef VORT_SRC_XML_XMLREADER_P_H
#define VORT_SRC_XML_XMLREADER_P_H

#include <vort/xml/XmlReader.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QStringView>
#include <QtCore/QXmlStreamReader>

#include <string>
#include <utility>

namespace VORT {

// The referenced text is held by value: Qt 6 hands out views into the parser's own buffers,
// which its next step reuses, and a held string keeps a reference readable however long it is
// kept.
class XmlStringRefImpl : public ReferencedTemplate<unsigned int> {
public:
    XmlStringRefImpl() = default;
    explicit XmlStringRefImpl(QString text) : mText(std::move(text)) {}

    QString mText;
};

class XmlReaderImpl : public ReferencedTemplate<unsigned int> {
public:
    explicit XmlReaderImpl(char const *target) : mFile(QFile::decodeName(target)) {}

    static XmlStringRef ref(QStringView text) {
        return XmlStringRef(new XmlStringRefImpl(text.toString()));
    }

    // The part before the one ":" of a qualified name. References hold their own text, so the
    // answer stays readable after the next such call.
    static XmlStringRef prefixOf(QStringView qualifiedName) {
        const qsizetype colon = qualifiedName.indexOf(u':');
        if (colon < 0 || qualifiedName.indexOf(u':', colon + 1) >= 0) {
            return XmlStringRef();
        }
        return ref(qualifiedName.left(colon));
    }

    XmlEventTypes::Type next() {
        // The snapshots let go of the parser's lists first, so that the parser refills them in
        // place instead of copying them away from a reader that still shares them. Only a start
        // element has attributes or declarations; for every other event Qt's lists are empty,
        // and the snapshots stay so without asking.
        mAttributes = QXmlStreamAttributes();
        mNamespaces = QXmlStreamNamespaceDeclarations();
        const QXmlStreamReader::TokenType type = mReader.readNext();
        if (type == QXmlStreamReader::StartElement) {
            mAttributes = mReader.attributes();
            mNamespaces = mReader.namespaceDeclarations();
        }
        return static_cast<XmlEventTypes::Type>(type);
    }

    QFile mFile;
    QFileInfo mFileInfo;
    // What is read ahead of the parser from a device that tells no size, up to the bound.
    QByteArray mContent;
    QBuffer mBuffer;
    QXmlStreamReader mReader;
    QXmlStreamAttributes mAttributes;
    QXmlStreamNamespaceDeclarations mNamespaces;
};

// Appends `text` as UTF-8, without the two intermediate strings of a Qt conversion; the
// configuration files' names and values are mostly ASCII.
inline void appendUtf8(std::string &out, QStringView text) {
    const qsizetype size = text.size();
    const char16_t *data = text.utf16();
    qsizetype i = 0;
    while (i < size && data[i] < 0x80) {
        ++i;
    }
    if (i == size) {
        const std::size_t start = out.size();
        out.resize(start + static_cast<std::size_t>(size));
        for (qsizetype j = 0; j < size; ++j) {
            out[start + static_cast<std::size_t>(j)] = static_cast<char>(data[j]);
        }
        return;
    }
    const QByteArray utf8 = text.toUtf8();
    out.append(utf8.constData(), static_cast<std::size_t>(utf8.size()));
}

inline std::string toUtf8(QStringView text) {
    std::string out;
    appendUtf8(out, text);
    return out;
}

}  // namespace VORT

#endif  // VORT_SRC_XML_XMLREADER_P_H
