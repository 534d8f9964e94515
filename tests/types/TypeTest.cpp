#include "support/PlatformHooks.h"
#include "support/ProbeType.h"
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/EnumType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>
#include <vort/types/Type.h>
#include <vort/types/VectorType.h>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

using namespace VORT;
using vort_test::ProbeType;

TEST(TypeInfo, CopiesCloneMovesHandOverAndSelfAssignmentEmpties) {
    const int liveBefore = ProbeType::live;
    {
        const TypeInfo original = ProbeType::Create(7);
        const int clonesBefore = ProbeType::clones;
        const TypeInfo copy(original);
        TypeInfo assigned = ProbeType::Create(1);
        assigned = original;
        EXPECT_EQ(std::make_tuple(ProbeType::clones - clonesBefore, ProbeType::parameterOf(copy),
                                  ProbeType::parameterOf(assigned)),
                  std::make_tuple(2, 7, 7));
        EXPECT_TRUE(ProbeType::objectOf(copy) != ProbeType::objectOf(original) &&
                    ProbeType::objectOf(assigned) != ProbeType::objectOf(original));
        // Assigning an empty handle deletes the held type and leaves the target empty.
        assigned = TypeInfo();
        EXPECT_EQ(ProbeType::objectOf(assigned), nullptr);
        EXPECT_EQ(ProbeType::live, liveBefore + 2);
    }
    EXPECT_EQ(ProbeType::live, liveBefore);

    TypeInfo source = ProbeType::Create(3);
    VORT::Type const *object = ProbeType::objectOf(source);
    const int clonesBefore = ProbeType::clones;
    TypeInfo moved(std::move(source));
    EXPECT_EQ(std::make_pair(ProbeType::objectOf(moved), ProbeType::objectOf(source)),
              std::make_pair(object, static_cast<VORT::Type const *>(nullptr)));
    TypeInfo target = BoolType::Create();
    target = std::move(moved);
    EXPECT_EQ(std::make_pair(ProbeType::objectOf(target), ProbeType::objectOf(moved)),
              std::make_pair(object, static_cast<VORT::Type const *>(nullptr)));
    EXPECT_EQ(ProbeType::clones, clonesBefore);

    // A caller fault by design (delete, then clone): it must not read the freed type.
    TypeInfo &alias = target;
    target = alias;
    EXPECT_EQ(ProbeType::objectOf(target), nullptr);
    EXPECT_EQ(ProbeType::live, liveBefore);
}

TEST(TypeInfo, IsTellsTheFamilyMembersApart) {
    using namespace VORT;
    const TypeInfo strings = SpecificVectorType<std::string>::Create(StringType::Create());
    const std::vector<TypeInfo> types = {
        BoolType::Create(),   ByteArrayType::Create(),  MD5HashType::Create(),
        IntType::Create(),    FloatType::Create(),      DoubleType::Create(),
        StringType::Create(), ColorType::Create(false), IPointType::Create(),
        DPointType::Create(), IRectType::Create(),      DRectType::Create(),
        PathType::Create(),   TransformType::Create(),  strings};
    const std::vector<bool (*)(TypeInfo const &)> tests = {
        &BoolType::Is,   &ByteArrayType::Is, &MD5HashType::Is, &IntType::Is,       &FloatType::Is,
        &DoubleType::Is, &StringType::Is,    &ColorType::Is,   &IPointType::Is,    &DPointType::Is,
        &IRectType::Is,  &DRectType::Is,     &PathType::Is,    &TransformType::Is, &VectorType::Is};
    for (size_t t = 0; t < types.size(); ++t) {
        for (size_t i = 0; i < tests.size(); ++i) {
            EXPECT_EQ(tests[i](types[t]), t == i) << "type " << t << ", test " << i;
        }
        EXPECT_FALSE(ProbeType::Is(types[t]));
        EXPECT_FALSE(EnumType::Is(types[t]));
    }
    // An empty handle, and a copy or an assignment of one, is of no class at all.
    TypeInfo assigned = BoolType::Create();
    assigned = TypeInfo();
    for (TypeInfo const &empty : {TypeInfo(), TypeInfo(assigned), assigned}) {
        EXPECT_EQ(ProbeType::objectOf(empty), nullptr);
        EXPECT_FALSE(BoolType::Is(empty) || VectorType::Is(empty) || ColorType::Is(empty));
    }
    EXPECT_FALSE(BoolType::Is(static_cast<Type *>(nullptr)));
}

TEST(TypeInfo, EqualityComparesKindsAndOrderingIsStrictAndTotal) {
    // Same class: the verdict is the class's own, on its parameters. Different classes are never
    // equal, whatever the parameters say.
    EXPECT_TRUE(BoolType::Create() == BoolType::Create() &&
                ProbeType::Create(4) == ProbeType::Create(4));
    EXPECT_FALSE(BoolType::Create() == VORT::ByteArrayType::Create() ||
                 VORT::MD5HashType::Create() == VORT::ByteArrayType::Create() ||
                 ProbeType::Create(4) == ProbeType::Create(5) ||
                 BoolType::Create() == ProbeType::Create(0) ||
                 ProbeType::Create(0) == BoolType::Create());

    const std::vector<TypeInfo> kinds = {BoolType::Create(), VORT::ByteArrayType::Create(),
                                         VORT::MD5HashType::Create(), ProbeType::Create(0)};
    for (size_t a = 0; a < kinds.size(); ++a) {
        EXPECT_FALSE(kinds[a] < kinds[a]) << a;
        EXPECT_FALSE(kinds[a] < TypeInfo(kinds[a])) << a;
        for (size_t b = 0; b < kinds.size(); ++b) {
            if (a != b) {
                EXPECT_NE(kinds[a] < kinds[b], kinds[b] < kinds[a]) << a << " " << b;
            }
            for (size_t c = 0; c < kinds.size(); ++c) {
                if (kinds[a] < kinds[b] && kinds[b] < kinds[c]) {
                    EXPECT_TRUE(kinds[a] < kinds[c]) << a << " " << b << " " << c;
                }
            }
        }
    }

    // Within one class the parameters decide.
    EXPECT_TRUE(ProbeType::Create(1) < ProbeType::Create(2));
    EXPECT_FALSE(ProbeType::Create(2) < ProbeType::Create(1) ||
                 ProbeType::Create(2) < ProbeType::Create(2));
    // The class order comes before the parameters: every probe sits on the same side of a bool.
    const bool probeFirst = ProbeType::Create(0) < BoolType::Create();
    EXPECT_EQ(ProbeType::Create(-100) < BoolType::Create(), probeFirst);
    EXPECT_EQ(ProbeType::Create(100) < BoolType::Create(), probeFirst);
}

TEST(Type, BaseBodiesReadNothingAndRefuseText) {
    const TypeInfo probe = ProbeType::Create(9);
    ErrorHolder error;

    EXPECT_TRUE(probe.convertFromByteArray(ByteArray("\x01\x02", 2u), error).empty() &&
                probe.convertToByteArray(any(9)).isEmpty());
    EXPECT_FALSE(error.hasError() || probe.isValid(any(9)));
    EXPECT_TRUE(probe.convertFromString("nine", error).empty());
    EXPECT_EQ(std::make_tuple(error.what(), error.id(), error.description()->where().file()),
              std::make_tuple("Can't convert string", "Nexlark::GenericError", ".\\types\\Type"));

    // Forwarding reaches the class's own operations.
    EXPECT_EQ(VORT::any_cast<int>(probe.convertFromString("ok", error)), 9);
    EXPECT_EQ(VORT::any_cast<int>(probe.defaultConstruct()), 9);
    EXPECT_EQ(probe.convertToString(any(12)), "12");
}

TEST(TypeInfo, HolderlessReadersAssertOnFailure) {
    vort_test::PlatformCapture platform;
    const TypeInfo boolType = BoolType::Create();
    EXPECT_TRUE(VORT::any_cast<bool>(boolType.convertFromString("true")) &&
                !VORT::any_cast<bool>(boolType.convertFromByteArray(ByteArray(1u, '\0'))));
    EXPECT_TRUE(platform.assertions().empty());
    EXPECT_TRUE(boolType.convertFromString("yes").empty() &&
                ProbeType::Create(0, true).convertFromByteArray(ByteArray(4u, '\0')).empty());
    const auto reports = platform.assertions();
    ASSERT_EQ(reports.size(), 2u);
    for (vort_test::AssertionReport const &report : reports) {
        EXPECT_EQ(std::make_tuple(report.expression, report.file, report.hasMessage),
                  std::make_tuple(": !error.hasError(),", ".\\types\\Type", false));
    }
    EXPECT_NE(reports[1].line, reports[0].line);
}
