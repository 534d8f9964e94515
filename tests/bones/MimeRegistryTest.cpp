#include "support/Latch.h"
#include "support/ProbeType.h"
#include <vort/bones/MimeRegistry.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>
#include <vort/types/VectorType.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using VORT::MimeRegistry;
using VORT::StringID;
using VORT::TypeInfo;
using vort_test::ProbeType;

TEST(MimeRegistry, StartsWithTheBuiltInRowsInTheirOrder) {
    using namespace VORT;
    const TypeInfo colorType = ColorType::Create(true);
    const TypeInfo uriList = SpecificVectorType<std::string>::Create(StringType::Create());
    struct Row {
        const char *names;
        bool (*is)(TypeInfo const &);
    };
    // Consecutive names of one type share a row.
    const Row rows[] = {
        {"text/plain text/html", &StringType::Is},
        {"text/uri-list", &VectorType::Is},
        {"application/x-color", &ColorType::Is},
        {"image/gif image/ief image/jp2 image/jpeg image/jpm image/jpx image/png image/tiff",
         &PixmapType::Is},
        {"cv-vort-booltype", &BoolType::Is},
        {"cv-vort-bytearraytype", &ByteArrayType::Is},
        {"cv-vort-colortype", &ColorType::Is},
        {"cv-vort-doubletype", &DoubleType::Is},
        {"cv-vort-floattype", &FloatType::Is},
        {"cv-vort-inttype", &IntType::Is},
        {"cv-vort-md5hashtype", &MD5HashType::Is},
        {"cv-vort-pathtype", &PathType::Is},
        {"cv-vort-pixmaptype", &PixmapType::Is},
        {"cv-vort-ipointtype", &IPointType::Is},
        {"cv-vort-dpointtype", &DPointType::Is},
        {"cv-vort-irecttype", &IRectType::Is},
        {"cv-vort-drecttype", &DRectType::Is},
        {"cv-vort-stringtype", &StringType::Is},
        {"cv-vort-transformtype", &TransformType::Is}};
    std::vector<StringID> expected;
    for (Row const &row : rows) {
        std::istringstream names(row.names);
        for (std::string name; names >> name;) {
            EXPECT_TRUE(row.is(MimeRegistry::resolveMimeType(StringID(name)))) << name;
            expected.emplace_back(name);
        }
    }
    EXPECT_EQ(MimeRegistry::defaultMimeTypes(), expected);
    // Both colour names use alpha, and the URI list holds strings.
    EXPECT_TRUE(MimeRegistry::resolveMimeType(StringID("application/x-color")) == colorType);
    EXPECT_TRUE(MimeRegistry::resolveMimeType(StringID("cv-vort-colortype")) == colorType);
    EXPECT_TRUE(MimeRegistry::resolveMimeType(StringID("text/uri-list")) == uriList);
}

TEST(MimeRegistry, UnknownNamesArePlainBytesAndTheFirstRegistrationWins) {
    for (const char *name :
         {"application/x-never-registered", "CV-VORT-BOOLTYPE", "", "cv-vort-booltype "}) {
        EXPECT_TRUE(VORT::ByteArrayType::Is(MimeRegistry::resolveMimeType(StringID(name)))) << name;
    }
    const StringID name("application/x-mimeregistry-test-first");
    MimeRegistry::registerMimeType(name, ProbeType::Create(1));
    MimeRegistry::registerMimeType(name, ProbeType::Create(2));
    MimeRegistry::registerMimeType(name, VORT::BoolType::Create());
    const TypeInfo first = MimeRegistry::resolveMimeType(name);
    const TypeInfo second = MimeRegistry::resolveMimeType(name);
    EXPECT_EQ(ProbeType::parameterOf(first), 1);
    EXPECT_NE(ProbeType::objectOf(first), ProbeType::objectOf(second));  // clones, not its own
    EXPECT_TRUE(first == second);
    // The built-in rows can't be overridden either.
    MimeRegistry::registerMimeType(StringID("cv-vort-booltype"), VORT::MD5HashType::Create());
    EXPECT_TRUE(VORT::BoolType::Is(MimeRegistry::resolveMimeType(StringID("cv-vort-booltype"))));
    MimeRegistry::registerMimeType(StringID("text/plain"), VORT::BoolType::Create());
    EXPECT_TRUE(VORT::StringType::Is(MimeRegistry::resolveMimeType(StringID("text/plain"))));
}

TEST(MimeRegistryConcurrency, RacingRegistrationsAgreeOnOneWinner) {
    // The registry is made before the threads start, as its contract asks.
    MimeRegistry::resolveMimeType(StringID("cv-vort-booltype"));

    constexpr int kThreads = 8;
    constexpr int kNames = 500;
    const StringID contested("application/x-mimeregistry-test-contested");
    // The names are interned up front so that the threads meet in the registry only.
    std::vector<std::vector<StringID>> own(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        for (int n = 0; n < kNames; ++n) {
            own[t].emplace_back("application/x-mimeregistry-test-" + std::to_string(t) + "-" +
                                std::to_string(n));
        }
    }
    std::vector<int> winnerSeen(kThreads, -2);
    std::vector<int> ownFound(kThreads, 0);
    vort_test::runTogether(kThreads, [&](int t) {
        // Registrations back to back, then lookups, so that writers overlap writers.
        MimeRegistry::registerMimeType(contested, ProbeType::Create(t));
        for (int n = 0; n < kNames; ++n) {
            MimeRegistry::registerMimeType(own[t][n], ProbeType::Create(t * 1000 + n));
        }
        winnerSeen[t] = ProbeType::parameterOf(MimeRegistry::resolveMimeType(contested));
        for (int n = 0; n < kNames; ++n) {
            ownFound[t] +=
                ProbeType::parameterOf(MimeRegistry::resolveMimeType(own[t][n])) == t * 1000 + n;
        }
    });

    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(winnerSeen[t], winnerSeen[0]) << "thread " << t;
        EXPECT_EQ(ownFound[t], kNames) << "thread " << t;
    }
    EXPECT_TRUE(winnerSeen[0] >= 0 && winnerSeen[0] < kThreads);
    EXPECT_TRUE(VORT::BoolType::Is(MimeRegistry::resolveMimeType(StringID("cv-vort-booltype"))));
}
