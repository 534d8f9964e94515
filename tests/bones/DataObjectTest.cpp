#include "support/FuzzCorpus.h"
#include "support/Latch.h"
#include "support/ProbeType.h"
#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/bones/DataObject.h>
#include <vort/bones/MimeRegistry.h>
#include <vort/err/ErrorHolder.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/VectorType.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

using namespace VORT;
using vort_test::ProbeType;

namespace {

const StringID kBool("cv-vort-booltype");
const StringID kBytes("cv-vort-bytearraytype");
const StringID kHash("cv-vort-md5hashtype");
const StringID kUnknown("application/x-dataobject-test-unknown");

ByteArray bytesOf(std::string const &text) {
    return ByteArray(text.data(), static_cast<unsigned int>(text.size()));
}

std::string textOf(ByteArray const &bytes) {
    return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

// The decoder written the slow, obvious way, one character at a time: the library's version
// takes shortcuts and must agree with this on every input.
bool referenceDecode(std::string const &text, std::string &out) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    out.clear();
    unsigned int accumulator = 0;
    int bits = 0;
    for (char ch : text) {
        const size_t value = alphabet.find(ch);
        if (ch == '=') {
            continue;
        }
        if (value == std::string::npos) {
            out.clear();
            return false;
        }
        accumulator = accumulator << 6 | static_cast<unsigned int>(value);
        if ((bits += 6) >= 8) {
            bits -= 8;
            out.push_back(static_cast<char>(accumulator >> bits));
            accumulator &= (1u << bits) - 1;
        }
    }
    return true;
}

// Decodes `text` and checks the outcome against the reference decoder.
void expectDecodedAsTheReference(std::string const &text) {
    std::string expected;
    const bool valid = referenceDecode(text, expected);
    ErrorHolder error;
    ASSERT_EQ(textOf(ByteArray::fromBase64(text, error)), expected) << text;
    ASSERT_EQ(error.hasError(), !valid) << text;
    if (!valid) {
        ASSERT_EQ(error.what() + error.description()->where().file() +
                      std::to_string(error.description()->where().line()),
                  "Can't convert string '" + text + "' from Base64..\\types\\ByteArrayType290");
    }
}

int decodeAsTheReference(const std::uint8_t *data, std::size_t size) {
    expectDecodedAsTheReference(std::string(reinterpret_cast<const char *>(data), size));
    return 0;
}

}  // namespace

TEST(DataObject, StoresValuesAsGivenOnePerNameAndReportsMissingOnes) {
    DataObject data;
    for (StringID const &name : {kBool, kUnknown, StringID()}) {
        ErrorHolder error, bytesError;
        EXPECT_TRUE(!data.hasData(name) && data.getData(name, error).empty() &&
                    data.getDataAsBytes(name, bytesError).isEmpty());
        for (ErrorHolder const *e : {&error, &bytesError}) {
            ASSERT_TRUE(e->hasError());
            EXPECT_EQ(e->what() + e->id() + e->description()->where().file() +
                          std::to_string(e->description()->where().line()),
                      "Unsupported Mime TypeNexlark::GenericError.\\bones\\DataObject84");
        }
    }
    // Not checked against the name's type: a string under the bool name is kept as it is, and
    // writing it as bytes goes through the bool type, which can't take it.
    data.setData(kBool, any(false));
    data.setData(kBool, any(std::string("true")));
    data.setData(kUnknown, any(ByteArray(3u, 'x')));
    data.setData(kHash, any());
    ErrorHolder error;
    EXPECT_EQ(any_cast<std::string>(data.getData(kBool, error)), "true");
    EXPECT_TRUE(data.hasData(kHash) && data.getData(kHash, error).empty());
    EXPECT_FALSE(error.hasError());
    EXPECT_THROW(data.getDataAsBytes(kBool, error), bad_any_cast);
    std::vector<StringID> names = data.getDataTypes();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()) && names.size() == 3u);
    DataObject copy(data), assigned;
    copy.setData(kBytes, any(ByteArray()));
    assigned = data;
    assigned.clear();
    EXPECT_TRUE(assigned.getDataTypes().empty() && !data.hasData(kBytes) && copy.hasData(kUnknown));
}

TEST(DataObject, BytesGoThroughTheRegisteredTypeAndAFailedReadStillStores) {
    DataObject data;
    ErrorHolder error;
    data.setData(kBool, any(true));
    EXPECT_EQ(data.getDataAsBytes(kBool, error), ByteArray(1u, '\x01'));
    const ByteArray hashBytes("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16u);
    data.setDataFromBytes(kHash, hashBytes, error);
    EXPECT_TRUE(any_cast<MD5Hash>(data.getData(kHash, error)) == MD5Hash(1, 2, 3, 4) &&
                data.getDataAsBytes(kHash, error) == hashBytes);
    const ByteArray raw("\0\x01\xFEpayload", 10u);  // unknown names carry bytes unchanged
    data.setDataFromBytes(kUnknown, raw, error);
    EXPECT_TRUE(any_cast<ByteArray>(data.getData(kUnknown, error)) == raw &&
                data.getDataAsBytes(kUnknown, error) == raw && !error.hasError());

    const StringID refusing("application/x-dataobject-test-refusing");
    MimeRegistry::registerMimeType(refusing, vort_test::ProbeType::Create(0, true));
    data.setData(refusing, any(41));
    data.setDataFromBytes(refusing, ByteArray(2u, '\x07'), error);
    EXPECT_EQ(error.what(), "probe refuses bytes");
    // The store isn't guarded: the name now holds an empty value.
    ErrorHolder getError;
    EXPECT_TRUE(data.hasData(refusing) && data.getData(refusing, getError).empty());
    // An error already in the holder empties a read that would succeed, and empties the bytes
    // of a name that is there.
    data.setDataFromBytes(kHash, hashBytes, error);
    EXPECT_TRUE(data.hasData(kHash) && data.getData(kHash, getError).empty());
    EXPECT_TRUE(data.getDataAsBytes(kBool, error).isEmpty() && !getError.hasError());
}

namespace {}  // namespace

TEST(ByteArray, Base64RoundTripsEveryLengthAndByte) {
    const char *const known[] = {
        "",     "",         "f",     "Zg==",     "fo",           "Zm8=", "foo",          "Zm9v",
        "foob", "Zm9vYg==", "fooba", "Zm9vYmE=", "\xFF\xFF\xFF", "////", "\xFB\xEF\xBE", "++++"};
    for (size_t i = 0; i < std::size(known); i += 2) {
        // The terminating NUL is in the string.
        EXPECT_EQ(bytesOf(known[i]).toBase64(), std::string(known[i + 1]) + '\0');
    }
    std::mt19937 random(42);
    std::string bytes;
    for (unsigned int length = 0; length < 300; ++length) {
        const std::string encoded = bytesOf(bytes).toBase64();
        ASSERT_TRUE(encoded.size() == (length + 2) / 3 * 4 + 1 &&
                    encoded.find('\0') == encoded.size() - 1)
            << length;
        ErrorHolder error;
        ASSERT_EQ(textOf(ByteArray::fromBase64(encoded.c_str(), error)), bytes) << length;
        bytes.push_back(static_cast<char>(random()));
    }
}

TEST(ByteArray, FromBase64SkipsPaddingAnywhereDropsLooseBitsAndRejectsTheRest) {
    const char *const texts[] = {"TW=Fu",    "=T=W=F=u=", "TWFu====", "====",          "Zg",
                                 "Zm8",      "T",         "TWF",      "TWFu=TWFuTWFu", "TW==FuTW",
                                 "TWFu\n",   "TW Fu",     "TWFu-",    "TWFu_",         "\tTWFu",
                                 "\x80TWFu", "TWFuTWFu.", "TWF\xFF"};
    std::for_each(std::begin(texts), std::end(texts), expectDecodedAsTheReference);
    expectDecodedAsTheReference(std::string(1, '\0'));
    expectDecodedAsTheReference(bytesOf("Man").toBase64());  // its own output, NUL and all
    // Mostly alphabet, with padding and the odd foreign byte sprinkled in, so that the
    // quadruple shortcut is entered, left and re-entered at every alignment.
    std::mt19937 random(7);
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (unsigned int i = random() % 70; i > 0; --i) {
            const unsigned int pick = random() % 1000;
            text.push_back(pick < 40                  ? '='
                           : pick >= 995 && round % 3 ? char(random())
                                                      : alphabet[random() % 64]);
        }
        expectDecodedAsTheReference(text);
    }
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "base64_fuzzer", &decodeAsTheReference);
}

TEST(MimeRegistry, UnknownNamesArePlainBytesAndTheFirstRegistrationWins) {
    for (const char *name : {"CV-VORT-BOOLTYPE", "", "cv-vort-booltype "}) {
        EXPECT_TRUE(ByteArrayType::Is(MimeRegistry::resolveMimeType(StringID(name)))) << name;
    }
    const StringID name("application/x-mimeregistry-test-first");
    MimeRegistry::registerMimeType(name, ProbeType::Create(1));
    MimeRegistry::registerMimeType(name, ProbeType::Create(2));
    MimeRegistry::registerMimeType(name, BoolType::Create());
    const TypeInfo first = MimeRegistry::resolveMimeType(name);
    const TypeInfo second = MimeRegistry::resolveMimeType(name);
    // Clones, not its own object.
    EXPECT_TRUE(ProbeType::parameterOf(first) == 1 && first == second &&
                ProbeType::objectOf(first) != ProbeType::objectOf(second));
    // The built-in rows can't be overridden either.
    MimeRegistry::registerMimeType(StringID("text/plain"), BoolType::Create());
    EXPECT_TRUE(StringType::Is(MimeRegistry::resolveMimeType(StringID("text/plain"))));
}

TEST(MimeRegistryConcurrency, RacingRegistrationsAgreeOnOneWinner) {
    // The registry is made before the threads start, as its contract asks.
    MimeRegistry::resolveMimeType(StringID("cv-vort-booltype"));
    constexpr int kThreads = 8, kNames = 500;
    const StringID contested("application/x-mimeregistry-test-contested");
    // The names are interned up front so that the threads meet in the registry only.
    std::vector<std::vector<StringID>> own(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        for (int n = 0; n < kNames; ++n) {
            own[t].emplace_back("application/x-mimeregistry-test-" + std::to_string(t) + "-" +
                                std::to_string(n));
        }
    }
    std::vector<int> winnerSeen(kThreads, -2), ownFound(kThreads, 0);
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

    EXPECT_EQ(winnerSeen, std::vector<int>(kThreads, winnerSeen[0]));
    EXPECT_EQ(ownFound, std::vector<int>(kThreads, kNames));
    EXPECT_TRUE(winnerSeen[0] >= 0 && winnerSeen[0] < kThreads);
}
