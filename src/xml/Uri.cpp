#include <vort/bones/StringTokenizer.h>
#include <vort/err/Exception.h>
#include <vort/xml/Uri.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <utility>

namespace VORT {

class UriImpl : public ReferencedTemplate<unsigned int> {
public:
    explicit UriImpl(QUrl url) : mUrl(std::move(url)) {}

    QUrl mUrl;
};

namespace {

// Texts end at their first NUL byte, as C strings do: no name or URI holds one, and Qt's file
// functions refuse such names with a warning.
QString text(std::string const &value) {
    return QString::fromUtf8(value.c_str());
}

// An empty query or fragment is none at all, rather than a lone "?" or "#".
QString optional(std::string const &value) {
    return value.empty() ? QString() : text(value);
}

// Builds a URL from its components. Qt's setters each clear the error that an earlier one left,
// so the URL is tested after every component: an invalid scheme is refused even when the
// components after it are fine.
class Builder {
public:
    // An empty URL counts as invalid too, but only the finished one is refused for it.
    template <typename Setter>
    Builder &set(Setter setter) {
        setter(mUrl);
        if (!mUrl.isValid() && !mUrl.isEmpty()) {
            fail();
        }
        return *this;
    }
    Builder &scheme(std::string const &v) {
        return set([&](QUrl &u) { u.setScheme(text(v)); });
    }
    Builder &userInfo(std::string const &v) {
        return set([&](QUrl &u) { u.setUserInfo(text(v)); });
    }
    Builder &host(std::string const &v) {
        return set([&](QUrl &u) { u.setHost(text(v)); });
    }
    Builder &port(int v) {
        return set([&](QUrl &u) { u.setPort(v); });
    }
    Builder &authority(std::string const &v) {
        return set([&](QUrl &u) { u.setAuthority(text(v)); });
    }
    Builder &path(std::string const &v) {
        return set([&](QUrl &u) { u.setPath(text(v)); });
    }
    // The query is taken as already encoded, so a character that needs encoding is refused.
    Builder &query(std::string const &v) {
        return set([&](QUrl &u) { u.setQuery(optional(v), QUrl::StrictMode); });
    }
    Builder &fragment(std::string const &v) {
        return set([&](QUrl &u) { u.setFragment(optional(v)); });
    }
    UriImpl *finish() {
        if (!mUrl.isValid()) {
            fail();
        }
        return new UriImpl(std::move(mUrl));
    }

private:
    [[noreturn]] void fail() const {
        throwException(
            SimpleErrorDescription(CodeLocation(".\\xml\\UriImpl", 62),
                                   "Unable to create URI: " + mUrl.errorString().toStdString()));
    }

    QUrl mUrl;
};

}  // namespace

Uri::Uri() : mImpl(new UriImpl(QUrl())) {}

Uri::Uri(std::string const &value) : mImpl(new UriImpl(QUrl(text(value), QUrl::TolerantMode))) {}

Uri::Uri(std::string const &scheme, std::string const &userInfo, std::string const &host, int port,
         std::string const &path, std::string const &query, std::string const &fragment)
    : mImpl(Builder()
                .scheme(scheme)
                .userInfo(userInfo)
                .host(host)
                .port(port)
                .path(path)
                .query(query)
                .fragment(fragment)
                .finish()) {}

Uri::Uri(std::string const &scheme, std::string const &host, int port, std::string const &path,
         std::string const &query, std::string const &fragment)
    : mImpl(Builder()
                .scheme(scheme)
                .host(host)
                .port(port)
                .path(path)
                .query(query)
                .fragment(fragment)
                .finish()) {}

Uri::Uri(std::string const &scheme, std::string const &host, std::string const &path,
         std::string const &fragment)
    : mImpl(Builder().scheme(scheme).host(host).path(path).fragment(fragment).finish()) {}

Uri::Uri(std::string const &scheme, std::string const &authority, std::string const &path,
         std::string const &query, std::string const &fragment)
    : mImpl(Builder()
                .scheme(scheme)
                .authority(authority)
                .path(path)
                .query(query)
                .fragment(fragment)
                .finish()) {}

Uri::Uri(UriImpl *impl) : mImpl(impl) {}

Uri::Uri(Uri const &other) : mImpl(new UriImpl(other.mImpl->mUrl)) {}

Uri::~Uri() = default;

Uri &Uri::operator=(Uri const &other) {
    mImpl = new UriImpl(other.mImpl->mUrl);
    return *this;
}

Uri &Uri::operator=(std::string const &value) {
    mImpl = new UriImpl(QUrl(text(value), QUrl::TolerantMode));
    return *this;
}

std::string Uri::getScheme() const {
    return mImpl->mUrl.scheme().toStdString();
}

std::string Uri::getUserName() const {
    return mImpl->mUrl.userName().toStdString();
}

std::string Uri::getPassword() const {
    return mImpl->mUrl.password().toStdString();
}

std::string Uri::getUserInfo() const {
    return mImpl->mUrl.userInfo().toStdString();
}

std::string Uri::getHost() const {
    return mImpl->mUrl.host().toStdString();
}

std::string Uri::getAuthority() const {
    return mImpl->mUrl.authority().toStdString();
}

std::string Uri::getPath() const {
    return mImpl->mUrl.path().toStdString();
}

std::string Uri::getFragment() const {
    return mImpl->mUrl.fragment().toStdString();
}

std::string Uri::getQuery() const {
    return mImpl->mUrl.query(QUrl::FullyEncoded).toStdString();
}

int Uri::getPort() const {
    return mImpl->mUrl.port();
}

bool Uri::hasFragment() const {
    return mImpl->mUrl.hasFragment();
}

bool Uri::hasQuery() const {
    return mImpl->mUrl.hasQuery();
}

bool Uri::isValid() const {
    return mImpl->mUrl.isValid();
}

bool Uri::isRelative() const {
    return mImpl->mUrl.isRelative();
}

bool Uri::isParent(Uri const &other) const {
    return mImpl->mUrl.isParentOf(other.mImpl->mUrl);
}

bool Uri::isPrefix(Uri const &other) const {
    return other.getPath().rfind(getPath(), 0) == 0;
}

bool Uri::isOpaque() const {
    QUrl const &url = mImpl->mUrl;
    if (url.isRelative() || !url.authority().isEmpty()) {
        return false;
    }
    const QString path = url.path();
    return !path.isEmpty() && path[0] != u'/';
}

bool Uri::operator==(Uri const &other) const {
    return mImpl->mUrl == other.mImpl->mUrl;
}

std::string Uri::error() const {
    return mImpl->mUrl.errorString().toStdString();
}

std::string Uri::toLocalFile() const {
    return QFile::encodeName(mImpl->mUrl.toLocalFile()).toStdString();
}

std::string Uri::toString() const {
    return mImpl->mUrl.toString().toStdString();
}

std::string Uri::toEncodedString() const {
    return mImpl->mUrl.toEncoded().toStdString();
}

Uri Uri::resolve(Uri const &relative) const {
    return Uri(new UriImpl(mImpl->mUrl.resolved(relative.mImpl->mUrl)));
}

Uri Uri::resolve(std::string const &relative) const {
    return resolve(Uri(relative));
}

Uri Uri::relativize(Uri const &target) const {
    if (isOpaque() || target.isOpaque() || getScheme() != target.getScheme() ||
        getAuthority() != target.getAuthority()) {
        return target;
    }
    // Runs of "/" count as one; a leading "/" gives a first empty token and a trailing one a
    // last empty token, so "/a/b/" ends in a segment that can differ from the target's.
    StringTokenizer base(getPath(), "/", false, true);
    StringTokenizer rest(target.getPath(), "/", false, true);
    bool shared = false;
    std::string result;
    while (base.hasMoreTokens() && rest.hasMoreTokens()) {
        const std::string baseToken = base.nextToken();
        const std::string targetToken = rest.nextToken();
        if (baseToken != targetToken) {
            if (!shared) {
                // Paths without one common named segment are not related.
                return target;
            }
            while (base.hasMoreTokens()) {
                base.nextToken();
                result += "../";
            }
            result += targetToken;
            if (rest.hasMoreTokens()) {
                result += '/';
                result += rest.remainingString();
            }
            break;
        }
        shared = shared || !baseToken.empty();
    }
    if (!shared) {
        return target;
    }
    if (target.hasQuery()) {
        result += '?';
        result += target.getQuery();
    }
    if (target.hasFragment()) {
        result += '#';
        result += target.getFragment();
    }
    return Uri(result);
}

Uri Uri::fromLocalFile(std::string const &path) {
    QFileInfo info(QFile::decodeName(path.c_str()));
    info.makeAbsolute();
    QDir dir = info.dir();
    const QString canonical = dir.canonicalPath();
    QString local = info.filePath();
    if (!canonical.isEmpty()) {
        dir.setPath(canonical);
        local = dir.filePath(info.fileName());
    }
    // Qt takes a path that starts with "//" for a network share's; here it is the root. Such a
    // path survives canonicalPath() too, when the name is too long for the system to resolve.
    qsizetype slashes = 0;
    while (slashes + 1 < local.size() && local[slashes] == u'/' && local[slashes + 1] == u'/') {
        ++slashes;
    }
    return Uri(new UriImpl(QUrl::fromLocalFile(local.mid(slashes))));
}

Uri Uri::fromLocalFileOrUri(std::string const &value) {
    const QUrl url(text(value));
    const QString local = url.toLocalFile();
    if (local.isEmpty() || local == url.toString()) {
        return fromLocalFile(value);
    }
    return fromLocalFile(QFile::encodeName(local).toStdString());
}

}  // namespace VORT
