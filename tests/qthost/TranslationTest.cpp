#include "QtHostTestSupport.h"
#include <vort/bones/StringID.h>
#include <vort/qthost/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTranslator>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using VORT::QtHost::Translation;
using vort_test::QtHostWarnings;

namespace {

// Translates two texts of the library's context into French.
class French : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *source, const char *, int) const override {
        if (qstrcmp(context, "VortUtil") != 0) {
            return QString();
        }
        if (qstrcmp(source, "Untitled") == 0) {
            return QStringLiteral("Sans titre");
        }
        if (qstrcmp(source, "Colour") == 0) {
            return QString::fromUtf8(
                "Couleur \xc3\xa9"
                "clatante");
        }
        return QString();
    }
};

class Installed {
public:
    explicit Installed(QTranslator &translator) : m_translator(translator) {
        QCoreApplication::installTranslator(&m_translator);
    }
    ~Installed() { QCoreApplication::removeTranslator(&m_translator); }

private:
    QTranslator &m_translator;
};

}  // namespace

TEST(QtTranslation, GoesThroughTheApplicationsTranslators) {
    Translation translation;
    EXPECT_EQ(translation.context(), "VortUtil");
    const char untitled[] = "Untitled";
    EXPECT_EQ(translation.translate(untitled), untitled) << "no translator: the very pointer";

    French french;
    const char *translated = nullptr;
    {
        Installed installed(french);
        translated = translation.translate(untitled);
        EXPECT_STREQ(translated, "Sans titre");
        EXPECT_EQ(translation.translate("Untitled"), translated) << "kept once, handed out again";
        EXPECT_STREQ(translation.translate("Colour"),
                     "Couleur \xc3\xa9"
                     "clatante");
        const char other[] = "Other";
        EXPECT_EQ(translation.translate(other), other);
    }
    EXPECT_EQ(translation.translate(untitled), untitled);
    EXPECT_STREQ(translated, "Sans titre") << "a text handed out before must stay valid";

    Installed again(french);
    Translation tools("Tools");  // its own context, which the translator doesn't know
    EXPECT_EQ(tools.context(), "Tools");
    EXPECT_EQ(tools.translate(untitled), untitled);
    QtHostWarnings warnings;
    EXPECT_EQ(translation.translate(nullptr), nullptr);
    EXPECT_TRUE(warnings.has({"Translation", "null text"}));
    VTServices::VTService<VTServices::Translation>::install(new Translation);
    EXPECT_EQ(VORT::StringID("Untitled").getXlateString(), "Sans titre");
    EXPECT_EQ(VORT::StringID("Other").getXlateString(), "Other");
    VTServices::VTService<VTServices::Translation>::install(nullptr);
}

TEST(QtTranslationConcurrency, TranslatesFromManyThreads) {
    French french;
    Installed installed(french);
    Translation translation;
    std::vector<std::thread> threads;
    std::vector<const char *> first(4, nullptr);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                const char *text = translation.translate(i % 2 ? "Untitled" : "Colour");
                if (i == 1) {
                    first[t] = text;
                }
                ASSERT_NE(text, nullptr);
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    for (const char *text : first) {
        EXPECT_EQ(text, first[0]) << "two threads got two copies of one translation";
    }
    EXPECT_STREQ(first[0], "Sans titre");
}
