#include "support/PlatformHooks.h"
#include <vort/bones/Library.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/Exception.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace VORT;

namespace {

const CodeLocation kHere(".\\bones\\Registry", 88);

// Counts its live copies, so that the holder's rules of ownership can be observed.
struct CountingDescription : SimpleErrorDescription {
    static inline int alive = 0;
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

class Errors : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { initialize_vort_util(); }
    void TearDown() override { EXPECT_EQ(CountingDescription::alive, 0) << "a description leaked"; }
};

}  // namespace

TEST_F(Errors, DescriptionsSayWhatTheyWereGiven) {
    ErrorDescription plain(kHere);
    EXPECT_EQ(
        plain.what() + plain.id() + plain.where().file() + std::to_string(plain.where().line()),
        "Unspecified errorNexlark::GenericError.\\bones\\Registry88");
    SimpleErrorDescription generic(kHere, "broken");
    EXPECT_EQ(generic.what() + generic.id(), "brokenNexlark::GenericError");
    const SimpleErrorDescription withId(CodeLocation("x", 7), "Tools::Paint", "also broken");
    generic = withId;  // the id comes first, the message second
    EXPECT_EQ(generic.what() + generic.id() + generic.where().file(), "also brokenTools::Paintx");
    const ZQFErrorDescription byDefault;
    EXPECT_EQ(byDefault.where().file(), ".\\err\\ZQFErrorDescription");
    EXPECT_EQ(byDefault.where().line() + byDefault.getMessageCode(), 16u);
    EXPECT_EQ(ZQFErrorDescription(kHere, 0x1005A0001UL).getMessageCode(), 0x5A0001UL);
}

TEST_F(Errors, CatalogueDescriptionFormatsLazilyInTheLanguageOfTheTimeUntilItHasText) {
    ZQFErrorDescription error(kHere, VT_PackageNotFound, "a.b");
    EXPECT_EQ(error.what(), "Package 'a.b' not found.");
    hslSetLanguage("ja");
    EXPECT_EQ(error.what(), "Package 'a.b' not found.") << "the first text stays cached";
    ZQFErrorDescription fresh(kHere, "Tools::Id", VT_PackageCannotBeRegisteredInUniverse, "x.y",
                              "Root");
    const ZQFErrorDescription copy = fresh;
    const std::string japanese = fresh.what() + fresh.id();
    EXPECT_TRUE(japanese.find("x.y") < japanese.find("Root") &&
                japanese.find("Root") < japanese.find("Tools::Id"));
    hslSetLanguage("en");
    EXPECT_EQ(copy.what(), "Package 'x.y' cannot be registered in Universe with root Root.")
        << "a copy made before the first what() formats on its own";
    EXPECT_EQ(ZQFErrorDescription(kHere, VT_ClassNotFound, "a", "b", "c", "d").arguments().at(3),
              "d");

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
    hslSetLanguage("en");
    vort_catalogue_hooks.unload();  // without the catalogue: the platform's unknown-code text
    ZQFErrorDescription unknown(kHere, VT_BadCommandState);
    const std::string unknownText = unknown.what();
    EXPECT_NE(unknownText.find("5A0001"), std::string::npos);
    EXPECT_EQ(error.what(), "Package 'a.b' not found.");
    vort_catalogue_hooks.load();
    EXPECT_EQ(unknown.what(), unknownText);
    EXPECT_EQ(empty.what(), "Command not in an appropriate state for request.");
}

TEST_F(Errors, HoldersOwnOneCloneAndAssignmentReplacesIt) {
    ErrorHolder holder;
    EXPECT_TRUE(!holder.hasError() && holder.what().empty() && holder.id().empty());
    EXPECT_TRUE(holder == ErrorHolder() && ErrorHolder(holder).description() == nullptr);
    holder.setError(CountingDescription("first"));
    holder.setError(CountingDescription("second"));  // a later error replaces the earlier
    EXPECT_EQ(holder.what() + std::to_string(CountingDescription::alive), "second1");
    ErrorDescription *const before = holder.description();
    holder = holder;
    ErrorHolder other(holder);
    EXPECT_FALSE(holder.description() != before || other.description() == before ||
                 other == holder);
    other.setError(CountingDescription("theirs"));
    holder = other;
    EXPECT_EQ(holder.what() + std::to_string(CountingDescription::alive), "theirs2");
    holder.copy(ErrorHolder());  // copying an empty holder empties
    other.clear();
    EXPECT_EQ(CountingDescription::alive, 0);
}

TEST_F(Errors, ExceptionsCarryTheirDescriptionAndSurviveFailingReports) {
    try {
        throwException(SimpleErrorDescription(kHere, "Uri::Bad", "bad uri"));
        FAIL() << "nothing thrown";
    } catch (TypedException<SimpleErrorDescription> const &e) {
        EXPECT_EQ(e.what() + e.description()->id() + std::to_string(e.where().line()),
                  "bad uriUri::Bad88");
    }
    struct Throwing : SimpleErrorDescription {
        explicit Throwing(bool standard) : SimpleErrorDescription(kHere, ""), standard(standard) {}
        std::string what() const override {
            if (standard) {
                throw std::runtime_error("formatter failed");
            }
            throw 42;
        }
        bool standard;
    };
    EXPECT_STREQ(TypedException<Throwing>(Throwing(true)).what(), "formatter failed");
    const TypedException<Throwing> other(Throwing(false));
    EXPECT_EQ(other.what() + std::to_string(other.where().line()),
              "Internal error: Error report threw exception88");
}
