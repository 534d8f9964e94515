// Test support: a value type that counts its constructions and destructions, and notices a
// destruction of an object that is not alive (destroyed twice, or never constructed), so that a
// container test can check that every element it made was destroyed exactly once.
//
// The counters are process-wide atomics; use `Counted::Scope` to measure one test.
#ifndef VORT_TESTS_SUPPORT_COUNTED_H
#define VORT_TESTS_SUPPORT_COUNTED_H

#include <atomic>
#include <cstdint>

namespace vort_test {

class Counted {
public:
    Counted() : m_value(0) { made(); }
    Counted(int value) : m_value(value) { made(); }  // NOLINT: converting, like an int
    Counted(const Counted &other) : m_value(other.checked()) {
        made();
        copies.fetch_add(1, std::memory_order_relaxed);
    }
    Counted &operator=(const Counted &other) {
        checked();
        m_value = other.checked();
        return *this;
    }
    ~Counted() {
        if (m_alive != kAlive) {
            badDestructions.fetch_add(1, std::memory_order_relaxed);
        }
        // A volatile store: the compiler may drop a plain store into an object that is ending.
        *static_cast<volatile std::uint32_t *>(&m_alive) = 0;
        live.fetch_sub(1, std::memory_order_relaxed);
    }

    int value() const { return checked(); }
    bool operator==(const Counted &other) const { return checked() == other.checked(); }
    bool operator!=(const Counted &other) const { return !(*this == other); }
    bool operator<(const Counted &other) const { return checked() < other.checked(); }

    // Objects alive now, copies made, and destructions of dead objects since process start.
    static inline std::atomic<int> live{0};
    static inline std::atomic<int> copies{0};
    static inline std::atomic<int> badDestructions{0};
    // Uses of an object that is not alive.
    static inline std::atomic<int> badUses{0};

    // Remembers the counters at construction; `leaked()` and `copied()` are relative to them.
    class Scope {
    public:
        Scope()
            : m_live(live.load()),
              m_copies(copies.load()),
              m_bad(Counted::badDestructions.load()),
              m_badUses(Counted::badUses.load()) {}
        int leaked() const { return live.load() - m_live; }
        int copied() const { return copies.load() - m_copies; }
        int badDestructions() const {
            return Counted::badDestructions.load() - m_bad + Counted::badUses.load() - m_badUses;
        }

    private:
        int m_live, m_copies, m_bad, m_badUses;
    };

private:
    static constexpr std::uint32_t kAlive = 0xA11CE5u;

    void made() {
        m_alive = kAlive;
        live.fetch_add(1, std::memory_order_relaxed);
    }
    int checked() const {
        if (m_alive != kAlive) {
            badUses.fetch_add(1, std::memory_order_relaxed);
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
