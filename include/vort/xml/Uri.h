// `VORT::Uri`: a resource name, a thin layer over Qt's URL class.
//
// The getters, the parser and the resolver are Qt's; this class adds its own constructors,
// local file names, and `relativize`. Texts cross this interface as UTF-8 `std::string`s. Each
// `Uri` owns its implementation outright: copying and assigning make a new one.
//
// Failure: only the component constructors throw, `TypedException<SimpleErrorDescription>` with
// "Unable to create URI: " and Qt's explanation, at ".\xml\UriImpl". Every other operation takes
// any text without throwing; `isValid` and `error` tell whether and why a text did not parse.
//
// Thread safety: a `Uri` may be used on any thread, as long as no two threads touch one object.
#ifndef VORT_XML_URI_H
#define VORT_XML_URI_H

#include <vort/bones/Holder.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {

class UriImpl;

class VORT_EXPORT Uri {
public:
    // The empty URI.
    Uri();
    // Parses `text` tolerantly; a text that does not parse is kept, and `isValid` tells.
    Uri(std::string const &text);  // NOLINT(google-explicit-constructor): texts stand for URIs
    // The component forms set the components in the order of the arguments and throw if the
    // result is not valid. An empty query or fragment means none; a port of -1 means none. The
    // query is taken as already percent-encoded, and any character not allowed there is refused.
    Uri(std::string const &scheme, std::string const &userInfo, std::string const &host, int port,
        std::string const &path, std::string const &query, std::string const &fragment);
    Uri(std::string const &scheme, std::string const &host, int port, std::string const &path,
        std::string const &query, std::string const &fragment);
    Uri(std::string const &scheme, std::string const &host, std::string const &path,
        std::string const &fragment);
    Uri(std::string const &scheme, std::string const &authority, std::string const &path,
        std::string const &query, std::string const &fragment);
    Uri(Uri const &other);
    ~Uri();

    Uri &operator=(Uri const &other);
    Uri &operator=(std::string const &text);

    std::string getScheme() const;
    std::string getUserName() const;
    std::string getPassword() const;
    std::string getUserInfo() const;
    std::string getHost() const;
    std::string getAuthority() const;
    std::string getPath() const;
    std::string getFragment() const;
    // The query as it stands in the URI, percent-encoded.
    std::string getQuery() const;
    // -1 when the URI has no port.
    int getPort() const;
    bool hasFragment() const;
    bool hasQuery() const;

    bool isValid() const;
    bool isRelative() const;
    // Whether `other` lies below this URI (Qt's test: same scheme and authority, and this path
    // followed by a "/" begins `other`'s path).
    bool isParent(Uri const &other) const;
    // Whether this path begins `other`'s path, as plain text: "/a/b" begins "/a/bc", and the
    // empty path begins every path.
    bool isPrefix(Uri const &other) const;
    // An absolute URI with no authority whose path does not start with "/", as "mailto:x".
    bool isOpaque() const;

    bool operator==(Uri const &other) const;
    bool operator!=(Uri const &other) const { return !(*this == other); }

    // Qt's explanation of why the text did not parse; empty for a valid URI.
    std::string error() const;
    std::string toLocalFile() const;
    std::string toString() const;
    std::string toEncodedString() const;

    Uri resolve(Uri const &relative) const;
    Uri resolve(std::string const &relative) const;
    // What a link inside this URI's file would say to reach `target`: this URI's last segment
    // counts as a file. A target of another scheme or authority, an opaque one, or one whose
    // path shares no named segment with this one comes back unchanged. Once this path runs out
    // of segments, the rest of the target's path is dropped: "/a/b" to "/a/b/c" gives "".
    Uri relativize(Uri const &target) const;

    // A file URI for a file name (UTF-8). The folder part is made absolute and canonical (links
    // and ".." resolved) when the folder exists; the file itself need not exist.
    static Uri fromLocalFile(std::string const &path);
    // A "file:" URI's file or a plain file name, as `fromLocalFile`. Texts of other schemes
    // are taken as relative file names: remote URIs are not kept.
    static Uri fromLocalFileOrUri(std::string const &text);

private:
    explicit Uri(UriImpl *impl);

    Holder<UriImpl> mImpl;
};

}  // namespace VORT

#endif  // VORT_XML_URI_H
