// Test support: `ProbeType`, a member of the type family that exists to observe the frame. It
// carries an `int`, has one `int` parameter that `isEqualTo` and `isLessThan` compare, counts
// its live objects and its clones, and keeps the base class's bodies wherever a test needs to
// see them: reading any text but "ok" falls to `Type`'s fallback, writing bytes and `isValid`
// are `Type`'s, and reading bytes is `Type`'s unless the probe is made to fail there.
#ifndef VORT_TESTS_SUPPORT_PROBETYPE_H
#define VORT_TESTS_SUPPORT_PROBETYPE_H

#include <vort/types/Type.h>

#include <atomic>
#include <string>

namespace vort_test {

class ProbeType : public VORT::Type {
public:
    explicit ProbeType(int parameter, bool failBytes = false)
        : m_parameter(parameter), m_failBytes(failBytes) {
        ++live;
    }
    ProbeType(ProbeType const &other)
        : VORT::Type(other), m_parameter(other.m_parameter), m_failBytes(other.m_failBytes) {
        ++live;
    }
    ProbeType &operator=(ProbeType const &) = delete;
    ~ProbeType() override { --live; }

    static VORT::TypeInfo Create(int parameter = 0, bool failBytes = false) {
        return CreateTypeInfo(new ProbeType(parameter, failBytes));
    }
    static bool Is(VORT::TypeInfo const &info) {
        return dynamic_cast<ProbeType *>(GetBaseType(info)) != nullptr;
    }
    // The parameter of the probe that `info` holds; -1 if it holds none.
    static int parameterOf(VORT::TypeInfo const &info) {
        auto *probe = dynamic_cast<ProbeType *>(GetBaseType(info));
        return probe != nullptr ? probe->m_parameter : -1;
    }
    // The `Type` object that `info` owns, to tell clones from shared objects.
    static VORT::Type const *objectOf(VORT::TypeInfo const &info) { return GetBaseType(info); }

    inline static std::atomic<int> live{0};
    inline static std::atomic<int> clones{0};

protected:
    VORT::any convertFromString(std::string const &text, VORT::ErrorHolder &error) const override {
        return text == "ok" ? VORT::any(m_parameter) : VORT::Type::convertFromString(text, error);
    }
    std::string convertToString(VORT::any const &value) const override {
        return std::to_string(VORT::any_cast<int>(value));
    }
    VORT::any convertFromByteArray(VORT::ByteArray const &bytes,
                                   VORT::ErrorHolder &error) const override {
        if (!m_failBytes) {
            return VORT::Type::convertFromByteArray(bytes, error);
        }
        error.setError(
            VORT::SimpleErrorDescription(VORT::CodeLocation(".\\probe", 1), "probe refuses bytes"));
        return VORT::any();
    }
    VORT::any defaultConstruct() const override { return VORT::any(m_parameter); }
    bool isEqualTo(VORT::Type *other) const override { return m_parameter == of(other); }
    bool isLessThan(VORT::Type *other) const override { return m_parameter < of(other); }
    ProbeType *clone() const override {
        ++clones;
        return new ProbeType(*this);
    }

private:
    static int of(VORT::Type *other) { return static_cast<ProbeType *>(other)->m_parameter; }
    int m_parameter;
    bool m_failBytes;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_PROBETYPE_H
