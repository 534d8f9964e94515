// Test support: a value type that counts its constructions and destructions, and notices a
// destruction or use of an object that is not alive (destroyed twice, or never constructed), so
// that a container test can check that every element it made was destroyed exactly once.
//
// The counters are process-wide atomics; use `Counted::Scope` to measure one test.
#ifndef VORT_TESTS_SUPPORT_COUNTED_H
#define VORT_TESTS_SUPPORT_COUNTED_H

#include <atomic>
#include <cstdint>

namespace vort_test {

class Counted {
public:
    Counted(int value = 0) : m_value(value) { made(); }  // NOLINT: converting, like an int
    Counted(const Counted &other) : m_value(other.checked()) { made(); }
    Counted &operator=(const Counted &other) {
        checked();
        m_value = other.checked();
        return *this;
    }
    ~Counted() {
        checked();
        // A volatile store: the compiler may drop a plain store into an object that is ending.
        *static_cast<volatile std::uint32_t *>(&m_alive) = 0;
        live.fetch_sub(1, std::memory_order_relaxed);
    }

    int value() const { return checked(); }
    bool operator==(const Counted &other) const { return checked() == other.checked(); }
    bool operator!=(const Counted &other) const { return !(*this == other); }

    // Remembers the counters at construction; the counts are relative to them.
    class Scope {
    public:
        int leaked() const { return live.load() - m_live; }
        // Destructions and uses of objects that were not alive.
        int badDestructions() const { return bad.load() - m_bad; }

    private:
        int m_live = live.load(), m_bad = bad.load();
    };

private:
    static constexpr std::uint32_t kAlive = 0xA11CE5u;
    static inline std::atomic<int> live{0}, bad{0};

    void made() {
        m_alive = kAlive;
        live.fetch_add(1, std::memory_order_relaxed);
    }
    int checked() const {
        if (m_alive != kAlive) {
            bad.fetch_add(1, std::memory_order_relaxed);
        }
        return m_value;
    }

    int m_value;
    std::uint32_t m_alive = 0;
};

// Found by argument-dependent lookup from `VORT::VHash`.
inline unsigned int vHash(const Counted &c) {
    return static_cast<unsigned int>(c.value());
}

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_COUNTED_H
