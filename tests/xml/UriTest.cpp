#include <vort/err/Exception.h>
#include <vort/xml/Uri.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>

#include <gtest/gtest.h>

#include <functional>
#include <string>

using VORT::Uri;

namespace {

std::string local(QString const &path) {
    return QFile::encodeName(path).toStdString();
}

}  // namespace

TEST(Uri, RelativizeGivesWhatALinkInTheBaseFileWouldSay) {
    struct Row {
        const char *base;
        const char *target;
        const char *result;  // null: the target comes back unchanged
    };
    const Row rows[] = {
        {"file:///a/b/c.xml", "file:///a/b/d.xml", "d.xml"},
        {"file:///a/b/c.xml", "file:///a/b/sub/d.xml", "sub/d.xml"},
        {"file:///a/b/c/e.xml", "file:///a/b/d.xml", "../d.xml"},
        {"file:///a/b/c/e/f.xml", "file:///a/b/d/g.xml", "../../d/g.xml"},
        {"file:///a/b/", "file:///a/b/c.xml", "c.xml"},
        {"file:///x/c.xml", "file:///y/d.xml", nullptr},
        {"file:///a/b/c.xml", "file:///a/b/c.xml", ""},
        // Once the base runs out, the rest of the target's path is dropped.
        {"file:///a/b", "file:///a/b/c", ""},
        // Runs of "/" count as one.
        {"file:///a//b/c.xml", "file:///a/b///d.xml", "d.xml"},
        // The target's query and fragment are kept, the base's are not.
        {"file:///a/b.xml?x=2#g", "file:///a/c.xml?q=1#f", "c.xml?q=1#f"},
        {"file:///a/b.xml", "file:///a/b.xml#top", "#top"},
        // Another scheme, another authority, an opaque URI: the target.
        {"file:///a/b.xml", "http:///a/c.xml", nullptr},
        {"http://one/a/b.xml", "http://two/a/c.xml", nullptr},
        {"mailto:a/b", "mailto:a/c", nullptr},
        {"file:///a/b.xml", "mailto:a/c", nullptr},
        // Relative paths share named segments too.
        {"a/b/c.xml", "a/d.xml", "../d.xml"},
        {"a/b.xml", "c/d.xml", nullptr},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(std::string(row.base) + " -> " + row.target);
        const Uri base(row.base);
        const Uri target(row.target);
        const Uri result = base.relativize(target);
        if (row.result == nullptr) {
            EXPECT_EQ(result, target);
            EXPECT_EQ(result.toString(), target.toString());
        } else {
            EXPECT_EQ(result.toString(), row.result);
        }
    }
}

TEST(Uri, PrefixIsPlainTextAndOpaqueNeedsAnAbsoluteUriWithoutAuthority) {
    EXPECT_TRUE(Uri("file:///a/b").isPrefix(Uri("file:///a/bc")));
    EXPECT_TRUE(Uri("http://x").isPrefix(Uri("file:///anything")));
    EXPECT_TRUE(Uri("http://x/a").isPrefix(Uri("ftp://y/a/b")));
    EXPECT_FALSE(Uri("file:///a/b").isPrefix(Uri("file:///a")));

    struct Row {
        const char *text;
        bool opaque;
    };
    const Row rows[] = {
        {"mailto:someone", true}, {"file:///a", false}, {"a/b", false},
        {"urn:isbn:123", true},   {"file:", false},     {"x:/abs", false},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(Uri(row.text).isOpaque(), row.opaque) << row.text;
    }
    EXPECT_TRUE(Uri("http://h/a").isParent(Uri("http://h/a/b")));
    EXPECT_FALSE(Uri("http://h/a").isParent(Uri("http://h/ab")));
}

TEST(Uri, ComponentFormsBuildTheUrlOrThrowWithQtsExplanation) {
    const Uri all("http", "me:pw", "example.org", 8080, "/p", "a=1&b=%20", "top");
    EXPECT_EQ(all.toEncodedString(), "http://me:pw@example.org:8080/p?a=1&b=%20#top");
    EXPECT_EQ(all.getQuery(), "a=1&b=%20");
    EXPECT_EQ(all.getPassword(), "pw");
    EXPECT_EQ(all.getUserInfo(), "me:pw");
    const Uri parts("http", "example.org", 81, "/p", "", "");
    EXPECT_EQ(parts.toString(), "http://example.org:81/p");
    EXPECT_FALSE(parts.hasQuery());
    EXPECT_FALSE(parts.hasFragment());
    EXPECT_EQ(parts.getPort(), 81);
    EXPECT_EQ(Uri("file", "", "/tmp/a b.xml", "f").toEncodedString(), "file:///tmp/a%20b.xml#f");
    const Uri authority("ftp", "u@h:21", "/d", "q=%3D", "");
    EXPECT_EQ(authority.getUserName(), "u");
    EXPECT_EQ(authority.getHost(), "h");
    EXPECT_EQ(authority.getAuthority(), "u@h:21");
    EXPECT_EQ(authority.getQuery(), "q=%3D");

    struct Bad {
        const char *what;
        std::function<void()> build;
    };
    const Bad bad[] = {
        {"scheme", [] { Uri("1http", "host", "/p", ""); }},
        {"query", [] { Uri("http", "host", 80, "/p", "a b", ""); }},
        {"scheme before valid parts", [] { Uri("ht tp", "", "h", 1, "/p", "", ""); }},
    };
    for (Bad const &row : bad) {
        try {
            row.build();
            ADD_FAILURE() << row.what << " did not throw";
        } catch (VORT::Exception const &e) {
            const std::string text = e.what();
            EXPECT_EQ(text.rfind("Unable to create URI: ", 0), 0u) << text;
            EXPECT_EQ(e.where().file(), ".\\xml\\UriImpl");
        }
    }
}

TEST(Uri, TextFormsNeverThrowAndCopiesAreIndependent) {
    Uri bad("http://[::1");
    EXPECT_FALSE(bad.isValid());
    EXPECT_FALSE(bad.error().empty());
    Uri good("http://h/a/b.xml?x=1");
    EXPECT_TRUE(good.isValid());
    EXPECT_TRUE(good.error().empty());
    EXPECT_EQ(good.resolve("../c.xml").toString(), "http://h/c.xml");
    EXPECT_EQ(good.resolve(Uri("d/e")).toString(), "http://h/a/d/e");

    Uri copy = good;
    copy = std::string("http://other/");
    EXPECT_EQ(good.toString(), "http://h/a/b.xml?x=1");
    Uri &self = good;
    good = self;
    EXPECT_EQ(good, Uri("http://h/a/b.xml?x=1"));
    EXPECT_NE(good, copy);
    EXPECT_EQ(Uri().toString(), "");
    EXPECT_EQ(Uri().getPort(), -1);
}

TEST(Uri, LocalFilesAreMadeAbsoluteAndCanonicalWhenTheFolderExists) {
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString root = QDir(temp.path()).canonicalPath();
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("real/sub")));
    ASSERT_TRUE(QFile::link(root + QStringLiteral("/real"), root + QStringLiteral("/link")));
    ASSERT_TRUE(QDir(root).mkpath(QStringLiteral("Ünïcødé")));

    struct Row {
        QString given;
        QString file;
    };
    const Row rows[] = {
        {root + QStringLiteral("/real/sub/../a.xml"), root + QStringLiteral("/real/a.xml")},
        {root + QStringLiteral("/link/sub/b.xml"), root + QStringLiteral("/real/sub/b.xml")},
        {root + QStringLiteral("/Ünïcødé/ç.xml"), root + QStringLiteral("/Ünïcødé/ç.xml")},
        // No such folder: absolute, but left as it was written.
        {root + QStringLiteral("/none/../x.xml"), root + QStringLiteral("/none/../x.xml")},
        // Two slashes lead to the root here, not to a network share.
        {QStringLiteral("//none-") + root + QStringLiteral("/x.xml"),
         QStringLiteral("/none-") + root + QStringLiteral("/x.xml")},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.given.toStdString());
        const Uri uri = Uri::fromLocalFile(local(row.given));
        EXPECT_EQ(uri.getScheme(), "file");
        EXPECT_EQ(uri.toLocalFile(), local(row.file));
        const Uri again = Uri::fromLocalFileOrUri(
            QUrl::fromLocalFile(row.given).toString(QUrl::FullyEncoded).toStdString());
        EXPECT_EQ(again.toLocalFile(), local(row.file));
        EXPECT_EQ(Uri::fromLocalFileOrUri(local(row.given)).toLocalFile(), local(row.file));
    }

    // A relative name is taken from the working folder; so is a text of another scheme.
    const std::string cwd = local(QDir::currentPath());
    EXPECT_EQ(Uri::fromLocalFile("rel.xml").toLocalFile(), cwd + "/rel.xml");
    EXPECT_EQ(Uri::fromLocalFileOrUri("http://host/x.xml").toLocalFile(),
              cwd + "/http:/host/x.xml");
}
