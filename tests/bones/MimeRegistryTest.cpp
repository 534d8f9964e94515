#include "support/Latch.h"
#include "support/ProbeType.h"
#include <vort/bones/MimeRegistry.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/VectorType.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::MimeRegistry;
using VORT::StringID;
using VORT::TypeInfo;
using vort_test::ProbeType;

TEST(MimeRegistry, StartsWithTheBuiltInRowsInTheirOrder) {
    using namespace VORT;
    std::string names;
    for (StringID const &name : MimeRegistry::defaultMimeTypes()) {
        names += name.getString() + " ";
    }
    EXPECT_EQ(
        names,
        "text/plain text/html text/uri-list application/x-color image/gif image/ief image/jp2 "
        "image/jpeg image/jpm image/jpx image/png image/tiff cv-vort-booltype "
        "cv-vort-bytearraytype cv-vort-colortype cv-vort-doubletype cv-vort-floattype "
        "cv-vort-inttype cv-vort-md5hashtype cv-vort-pathtype cv-vort-pixmaptype "
        "cv-vort-ipointtype cv-vort-dpointtype cv-vort-irecttype cv-vort-drecttype "
        "cv-vort-stringtype cv-vort-transformtype ");
    const auto type = [](const char *name) {
        return MimeRegistry::resolveMimeType(StringID(name));
    };
    EXPECT_TRUE(StringType::Is(type("text/html")) && PixmapType::Is(type("image/tiff")) &&
                MD5HashType::Is(type("cv-vort-md5hashtype")) &&
                DRectType::Is(type("cv-vort-drecttype")));
    // Both colour names use alpha, and the URI list holds strings.
    EXPECT_TRUE(type("application/x-color") == ColorType::Create(true));
    EXPECT_TRUE(type("cv-vort-colortype") == ColorType::Create(true));
    EXPECT_TRUE(type("text/uri-list") ==
                SpecificVectorType<std::string>::Create(StringType::Create()));
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
