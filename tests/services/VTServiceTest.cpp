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
};

int g_destroyed = 0;

// Counts its deaths, and sees who is installed while it dies.
class Counted : public Translation {
public:
    explicit Counted(const char *answer, Translation **seen = nullptr)
        : m_answer(answer), m_seen(seen) {}
    ~Counted() override {
        ++g_destroyed;
        if (m_seen != nullptr) {
            *m_seen = VTService<Translation>::get();
        }
    }
    const char *translate(const char *) override { return m_answer; }

private:
    const char *m_answer;
    Translation **m_seen;
};

// Another class that claims the key "Translation".
class Impostor : public VTService<Impostor> {
public:
    static std::string serviceName() { return "Translation"; }
};

class NeverInstalled : public VTService<NeverInstalled> {
public:
    static std::string serviceName() { return "NeverInstalled"; }
};

}  // namespace

TEST(VTService, InstallReplacesAndDeletesOnceAndNullKeepsTheKey) {
    EXPECT_EQ(VTService<NeverInstalled>::get(), nullptr);
    VTService<NeverInstalled>::install(nullptr);
    EXPECT_FALSE(Table::hasKey("NeverInstalled")) << "a null install on a new key added it";

    Translation *seen = nullptr;
    VTService<Translation>::install(new Counted("zeroth", &seen));
    auto *first = new Counted("first");
    VTService<Translation>::install(first);
    EXPECT_EQ(seen, first) << "the replaced object doesn't see its successor while it dies";
    auto *context = new ApplicationContext;
    VTService<ApplicationContext>::install(context);
    VTService<Translation>::install(new Counted("second"));
    EXPECT_EQ(g_destroyed, 2);
    EXPECT_STREQ(VTService<Translation>::get()->translate("x"), "second");
    EXPECT_EQ(VTService<ApplicationContext>::get(), context);  // keys are independent
    VTService<Translation>::install(nullptr);
    VTService<Translation>::install(nullptr);  // finds nothing to delete
    EXPECT_EQ(g_destroyed, 3);
    EXPECT_TRUE(Table::hasKey("Translation"));
    EXPECT_EQ(VTService<Translation>::get(), nullptr);

    // An object of another class under the key is not found.
    VTService<Translation>::install(new Counted("derived"));
    auto *impostor = new Impostor;
    VTService<Impostor>::install(impostor);
    EXPECT_EQ(g_destroyed, 4);
    EXPECT_EQ(VTService<Impostor>::get(), impostor);
    EXPECT_EQ(VTService<Translation>::get(), nullptr);
    VTService<Impostor>::install(nullptr);
    VTService<ApplicationContext>::install(nullptr);
}
