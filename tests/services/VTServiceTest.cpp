#include <vort/services/ApplicationContext.h>
#include <vort/services/Translation.h>
#include <vort/services/VTService.h>

#include <gtest/gtest.h>

#include <string>

using VTServices::ApplicationContext;
using VTServices::Translation;
using VTServices::VTService;

namespace {

// Reads the table itself, so that a test can tell an absent key from a key that holds null.
struct Table : VTServices::VTServiceBase {
    static bool hasKey(std::string const &key) { return g_serviceMap.count(key) != 0; }
    static VTServiceBase *stored(std::string const &key) {
        const auto found = g_serviceMap.find(key);
        return found == g_serviceMap.end() ? nullptr : found->second;
    }
};

int g_translationsDestroyed = 0;

class CountedTranslation : public Translation {
public:
    explicit CountedTranslation(const char *prefix = "") : m_prefix(prefix) {}
    ~CountedTranslation() override { ++g_translationsDestroyed; }
    const char *translate(const char *) override { return m_prefix; }

private:
    const char *m_prefix;
};

// Another class that claims the key "Translation", so that the table holds an object under the
// key that is not a `Translation`.
class Impostor : public VTService<Impostor> {
public:
    static std::string serviceName() { return "Translation"; }
};

class NeverInstalled : public VTService<NeverInstalled> {
public:
    static std::string serviceName() { return "NeverInstalled"; }
};

// Looks itself up while it is being replaced.
class Inquisitive : public Translation {
public:
    explicit Inquisitive(Translation **seen) : m_seen(seen) {}
    ~Inquisitive() override { *m_seen = VTService<Translation>::get(); }

private:
    Translation **m_seen;
};

class VTServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        VTService<Translation>::install(nullptr);
        VTService<ApplicationContext>::install(nullptr);
        g_translationsDestroyed = 0;
    }
    void TearDown() override {
        VTService<Translation>::install(nullptr);
        VTService<ApplicationContext>::install(nullptr);
    }
};

}  // namespace

TEST_F(VTServiceTest, InstallingReplacesAndDeletesTheOldObjectOnceAndNullKeepsTheKey) {
    EXPECT_EQ(VTService<NeverInstalled>::get(), nullptr);
    VTService<NeverInstalled>::install(nullptr);
    EXPECT_FALSE(Table::hasKey("NeverInstalled")) << "a null install on a new key added it";

    Translation *seen = nullptr;
    VTService<Translation>::install(new Inquisitive(&seen));
    auto *first = new CountedTranslation("first");
    VTService<Translation>::install(first);
    EXPECT_EQ(seen, first) << "the replaced object doesn't see its successor while it dies";
    auto *context = new ApplicationContext;
    VTService<ApplicationContext>::install(context);
    auto *second = new CountedTranslation("second");
    VTService<Translation>::install(second);
    EXPECT_EQ(g_translationsDestroyed, 1);
    EXPECT_STREQ(VTService<Translation>::get()->translate("x"), "second");
    EXPECT_EQ(VTService<ApplicationContext>::get(), context);  // keys are independent
    VTService<Translation>::install(nullptr);
    VTService<Translation>::install(nullptr);  // finds nothing to delete
    EXPECT_EQ(g_translationsDestroyed, 2);
    EXPECT_TRUE(Table::hasKey("Translation"));
    EXPECT_EQ(Table::stored("Translation"), nullptr);
}

TEST_F(VTServiceTest, AnObjectOfAnotherClassUnderTheKeyIsNotFound) {
    VTService<Translation>::install(new CountedTranslation("derived"));
    auto *impostor = new Impostor;
    VTService<Impostor>::install(impostor);  // replaces the translation's object
    EXPECT_EQ(g_translationsDestroyed, 1);
    EXPECT_EQ(VTService<Impostor>::get(), impostor);
    EXPECT_EQ(VTService<Translation>::get(), nullptr) << "an object of another class was found";
}
