#include "support/PlatformHooks.h"
#include <vort/bones/Library.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/Exception.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <typeinfo>

using namespace VORT;

namespace {

const CodeLocation kHere(".\\bones\\Registry", 88);

// Counts the copies and destructions of a description, so that holder rules can be observed.
struct CountingDescription : SimpleErrorDescription {
    static int alive;
    explicit CountingDescription(std::string const &message)
        : SimpleErrorDescription(kHere, message) {
        ++alive;
    }
    CountingDescription(CountingDescription const &other) : SimpleErrorDescription(other) {
        ++alive;
    }
    ~CountingDescription() override { --alive; }
    ErrorDescription *clone() override { return new CountingDescription(*this); }
};
int CountingDescription::alive = 0;

class Errors : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override {
        initialize_vort_util();
        CountingDescription::alive = 0;
    }
    void TearDown() override { EXPECT_EQ(CountingDescription::alive, 0) << "a description leaked"; }
};

}  // namespace

TEST_F(Errors, BaseAndSimpleDescriptionsSayWhatTheyWereGiven) {
    ErrorDescription plain(kHere);
    EXPECT_EQ(plain.what(), "Unspecified error");
    EXPECT_EQ(plain.id(), "Nexlark::GenericError");
    EXPECT_EQ(plain.where().file(), ".\\bones\\Registry");
    EXPECT_EQ(plain.where().line(), 88u);

    SimpleErrorDescription generic(kHere, "broken");
    EXPECT_EQ(generic.what(), "broken");
    EXPECT_EQ(generic.id(), "Nexlark::GenericError");
    SimpleErrorDescription withId(kHere, "Tools::Paint", "also broken");
    EXPECT_EQ(withId.id(), "Tools::Paint") << "the id comes first, the message second";
    EXPECT_EQ(withId.what(), "also broken");
    generic = withId;
    EXPECT_EQ(generic.id(), "Tools::Paint");

    ZQFErrorDescription byDefault;
    EXPECT_EQ(byDefault.where().file(), ".\\err\\ZQFErrorDescription");
    EXPECT_EQ(byDefault.where().line(), 16u);
    EXPECT_EQ(byDefault.getMessageCode(), 0u);
    EXPECT_EQ(byDefault.id(), "Nexlark::GenericError");
}

TEST_F(Errors, CatalogueDescriptionFormatsLazilyOnceInTheLanguageOfTheTime) {
    ZQFErrorDescription error(kHere, VT_PackageNotFound, "a.b");
    EXPECT_EQ(error.what(), "Package 'a.b' not found.");
    hslSetLanguage("ja");
    EXPECT_EQ(error.what(), "Package 'a.b' not found.") << "the first text stays cached";

    ZQFErrorDescription fresh(kHere, "Tools::Id", VT_PackageCannotBeRegisteredInUniverse, "x.y",
                              "Root");
    EXPECT_EQ(fresh.id(), "Tools::Id");
    const ZQFErrorDescription copy = fresh;
    const std::string japanese = fresh.what();
    EXPECT_NE(japanese.find("x.y"), std::string::npos);
    EXPECT_NE(japanese.find("Root"), std::string::npos);
    EXPECT_NE(japanese, "Package 'x.y' cannot be registered in Universe with root Root.");
    hslSetLanguage("en");
    EXPECT_EQ(copy.what(), "Package 'x.y' cannot be registered in Universe with root Root.")
        << "a copy made before the first what() formats on its own";
    ASSERT_EQ(copy.arguments().size(), 2);
    EXPECT_EQ(copy.arguments().at(1), "Root");
}

TEST_F(Errors, CatalogueDescriptionFormatsUntilItHasText) {
    ZQFErrorDescription formatted(kHere, VT_BadCommandState);
    const std::string english = formatted.what();
    EXPECT_EQ(english, "Command not in an appropriate state for request.");

    // A language whose text is empty: nothing is cached, so the next what() formats again.
    static const char *const kEmpty[] = {""};
    static const uint32_t kFacilities[] = {0x5A, 0xFFFFFFFF};
    static const uint32_t *const kCodes[] = {primaryMessageTable().codes};
    static const char *const *const kTexts[] = {kEmpty};
    static const uint32_t kCounts[] = {1};
    static const hsl_language_table kSilent = {kFacilities, kCodes, kTexts, kCounts};
    hsl_mem_add_language(hslGetMemoryContext(), "xx-silent", &kSilent);
    hslSetLanguage("xx-silent");
    ZQFErrorDescription empty(kHere, VT_BadCommandState);
    EXPECT_EQ(empty.what(), "");

    // Without the catalogue a fresh description gets the platform's unknown-code text, while
    // the one formatted before keeps its cached text.
    hslSetLanguage("en");
    vort_catalogue_hooks.unload();
    ZQFErrorDescription fresh(kHere, VT_BadCommandState);
    const std::string unknown = fresh.what();
    EXPECT_NE(unknown.find("5A0001"), std::string::npos);
    EXPECT_EQ(formatted.what(), english);
    vort_catalogue_hooks.load();
    EXPECT_EQ(fresh.what(), unknown);
    EXPECT_EQ(empty.what(), english) << "an empty text was not cached";
}

TEST_F(Errors, EmptyHoldersAreEqualAndSayNothing) {
    ErrorHolder a;
    ErrorHolder b;
    EXPECT_FALSE(a.hasError());
    EXPECT_EQ(a.what(), "");
    EXPECT_EQ(a.id(), "");
    EXPECT_EQ(a.description(), nullptr);
    EXPECT_TRUE(a == b);
    ErrorHolder copy(a);
    EXPECT_FALSE(copy.hasError());
}

TEST_F(Errors, SetErrorReplacesAndStoresTheStaticType) {
    ErrorHolder holder;
    holder.setError(CountingDescription("first"));
    EXPECT_EQ(CountingDescription::alive, 1);
    holder.setError(CountingDescription("second"));
    EXPECT_EQ(CountingDescription::alive, 1) << "the first error is deleted";
    EXPECT_EQ(holder.what(), "second");

    const ZQFErrorType<VT_PackageNotFound> typed(kHere, "a.b");
    const ZQFErrorDescription &asBase = typed;
    holder.setError(asBase);
    EXPECT_EQ(typeid(*holder.description()), typeid(ZQFErrorDescription))
        << "setError copies with the static type passed";
    holder.setError(typed);
    EXPECT_EQ(typeid(*holder.description()), typeid(ZQFErrorType<VT_PackageNotFound>));
    holder.clear();
    EXPECT_FALSE(holder.hasError());
}

TEST_F(Errors, CopiesCloneSoTheTemplateTypeIsLost) {
    ErrorHolder h1;
    h1.setError(ZQFErrorType<VT_PackageNotFound>(kHere, "a.b"));
    ASSERT_EQ(h1.what(), "Package 'a.b' not found.");

    ErrorHolder h2;
    h2 = h1;
    ASSERT_TRUE(h2.hasError());
    EXPECT_EQ(typeid(*h2.description()), typeid(ZQFErrorDescription));
    auto *description = dynamic_cast<ZQFErrorDescription *>(h2.description());
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->getMessageCode(), VT_PackageNotFound);
    EXPECT_EQ(h2.what(), "Package 'a.b' not found.");
    EXPECT_FALSE(h1 == h2) << "a holder and its copy hold different descriptions";

    ErrorHolder h3(h1);
    EXPECT_NE(h3.description(), h1.description());
    ErrorHolder h4;
    h4.copy(h1);
    EXPECT_EQ(h4.what(), h1.what());
    h4.copy(ErrorHolder());
    EXPECT_FALSE(h4.hasError()) << "copying an empty holder empties";
}

TEST_F(Errors, AssignmentDeletesOwnThenClonesAndIgnoresItself) {
    ErrorHolder holder;
    holder.setError(CountingDescription("mine"));
    ErrorHolder other;
    other.setError(CountingDescription("theirs"));
    EXPECT_EQ(CountingDescription::alive, 2);
    ErrorDescription *before = holder.description();
    holder = holder;
    EXPECT_EQ(holder.description(), before) << "self-assignment changes nothing";
    holder = other;
    EXPECT_EQ(CountingDescription::alive, 2);
    EXPECT_EQ(holder.what(), "theirs");
    holder = ErrorHolder();
    EXPECT_EQ(CountingDescription::alive, 1);
}

namespace {

struct ThrowingDescription : SimpleErrorDescription {
    enum Kind { Standard, Other };
    ThrowingDescription(Kind kind) : SimpleErrorDescription(kHere, ""), kind(kind) {}
    std::string what() const override {
        if (kind == Standard) {
            throw std::runtime_error("formatter failed");
        }
        throw 42;
    }
    Kind kind;
};

}  // namespace

TEST_F(Errors, ExceptionsCarryTheirDescriptionAndSurviveFailingReports) {
    try {
        throwException(SimpleErrorDescription(kHere, "Uri::Bad", "bad uri"));
        FAIL() << "nothing thrown";
    } catch (TypedException<SimpleErrorDescription> const &e) {
        EXPECT_STREQ(e.what(), "bad uri");
        EXPECT_EQ(e.description()->id(), "Uri::Bad");
        EXPECT_EQ(e.where().file(), ".\\bones\\Registry");
        EXPECT_EQ(e.where().line(), 88u);
    }

    const TypedException<ThrowingDescription> standard(ThrowingDescription::Standard);
    EXPECT_STREQ(standard.what(), "formatter failed");
    const TypedException<ThrowingDescription> other(ThrowingDescription::Other);
    EXPECT_STREQ(other.what(), "Internal error: Error report threw exception");
    EXPECT_EQ(other.where().line(), 88u);

    const Exception &base = standard;
    EXPECT_NE(dynamic_cast<std::exception const *>(&base), nullptr);
}
