// `VORT::ChangeLevel`: a 32-bit number that tells the edits of a process apart in the order in
// which they were made.
//
// Levels come from one process-wide rising series, shared by every command and every command
// target: a level does not count the edits of one document, and two neighbouring commands of
// one target may lie far apart. The first level of a process is 1; `INVALID` (0) marks "no
// level". The series is 32 bits wide and wraps after 2^32 - 1 levels back through 0, which is
// not guarded against.
//
// Thread safety: `next()` may be called from any number of threads at once; each call gets a
// level of its own, and the levels are strictly increasing in the order of the calls. A
// `ChangeLevel` value itself is a plain value, to be guarded like an `int`.
//
// Failure: nothing here fails.
#ifndef VORT_COMMAND_CHANGELEVEL_H
#define VORT_COMMAND_CHANGELEVEL_H

#include <vort/vort_export.h>

#include <cstdint>

namespace VORT {

class VORT_EXPORT ChangeLevel {
public:
    static constexpr unsigned long INVALID = 0;

    ChangeLevel() : m_value(0) {}
    // Levels are 32 bits wide: wider values keep their low 32 bits.
    ChangeLevel(unsigned long value) : m_value(static_cast<std::uint32_t>(value)) {}

    // The next level of the process-wide series: the series after one atomic increment.
    static ChangeLevel next();

    // The number itself, for printing and storage.
    unsigned long value() const { return m_value; }

    // Plain unsigned comparison of the numbers; friends, so that a number converts on either
    // side.
    friend bool operator==(ChangeLevel a, ChangeLevel b) { return a.m_value == b.m_value; }
    friend bool operator!=(ChangeLevel a, ChangeLevel b) { return a.m_value != b.m_value; }
    friend bool operator<(ChangeLevel a, ChangeLevel b) { return a.m_value < b.m_value; }
    friend bool operator<=(ChangeLevel a, ChangeLevel b) { return a.m_value <= b.m_value; }
    friend bool operator>(ChangeLevel a, ChangeLevel b) { return a.m_value > b.m_value; }
    friend bool operator>=(ChangeLevel a, ChangeLevel b) { return a.m_value >= b.m_value; }

private:
    std::uint32_t m_value;
};

}  // namespace VORT

#endif  // VORT_COMMAND_CHANGELEVEL_H
