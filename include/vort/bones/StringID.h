// `VORT::StringID`: an interned string, one pointer wide, so that ids compare and hash in
// constant time; `RD::DefaultFontName`; the hashes `VORT::vHash` and `qHash`, and the stream
// operators.
//
// Every distinct text is stored once, in one process-wide repository, and an id points at that
// string; the empty id is null. Two ids are equal exactly when their texts are. Comparison and
// hashing look at the address only, so maps and hashes keyed by ids iterate in an order that
// has nothing to do with the texts and may change from run to run.
//
// Thread safety: any thread may make an id. Making one from text takes the repository's lock
// and hashes the text every time, even for a known text: code on a hot path keeps its ids in
// statics. Copying, comparing, hashing and reading an existing id take no lock and touch no
// shared mutable state, since interned strings never change or move.
//
// Lifetime: the repository is built at first use (ids may be made by file-scope initialisers)
// and nothing is ever removed from it. Interned strings are never freed, so an id stays
// readable for the whole life of the process, during its exit too.
//
// Failure: none. A `const char *` handed to an id must not be null.
#ifndef VORT_BONES_STRINGID_H
#define VORT_BONES_STRINGID_H

#include <vort/vort_export.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace VORT {

class Mutex;

class VORT_EXPORT StringID {
public:
    // The empty id.
    StringID() : m_string(nullptr) {}
    // The id of `text`; an empty text gives the empty id, without taking the lock. A text
    // with an embedded NUL gets an id of its own that reads as the part before the NUL.
    StringID(std::string const &text) : m_string(setStringID(text)) {}
    StringID(const char *text);
    StringID(StringID const &other) = default;
    ~StringID() = default;

    StringID &operator=(StringID const &other) = default;
    StringID &operator=(std::string const &text) {
        m_string = setStringID(text);
        return *this;
    }
    StringID &operator=(const char *text);

    // By address, as unsigned values: fast, and unrelated to the order of the texts.
    bool operator==(StringID const &other) const { return address() == other.address(); }
    bool operator!=(StringID const &other) const { return address() != other.address(); }
    bool operator<(StringID const &other) const { return address() < other.address(); }
    bool operator<=(StringID const &other) const { return address() <= other.address(); }
    bool operator>(StringID const &other) const { return address() > other.address(); }
    bool operator>=(StringID const &other) const { return address() >= other.address(); }

    bool empty() const { return m_string == nullptr; }
    // The text; "" for the empty id.
    const char *c_str() const { return m_string != nullptr ? m_string->c_str() : ""; }
    // The interned string; an empty string for the empty id.
    std::string const &getString() const { return m_string != nullptr ? *m_string : emptyString(); }

    // The id of this text followed by the other's; the empty id counts as an empty text.
    StringID concat(StringID other);

    // Byte-wise comparison of the two texts, ASCII letters without regard to case. Two empty
    // ids are equal; an empty id equals no text, not even an empty one.
    bool equalsIgnoreCase(StringID const &other) const;
    bool equalsIgnoreCase(std::string const &text) const;

private:
    friend unsigned int vHash(StringID const &id);

    std::uintptr_t address() const { return reinterpret_cast<std::uintptr_t>(m_string); }

    // Interning: the repository's string for `text`, made on first sight; null for "".
    static std::string const *setStringID(std::string const &text);
    static Mutex &getReposMutex();
    static std::string const &emptyString();

    std::string const *m_string;
};

// The address `p` hashed as `(p >> 31 ^ p)`, cut to 32 bits; the empty id hashes to 0.
inline unsigned int vHash(StringID const &id) {
    const std::uintptr_t p = id.address();
    return static_cast<unsigned int>((static_cast<std::uint64_t>(p) >> 31) ^ p);
}

// For ids as keys of Qt's hashes. Declared here so that argument-dependent lookup finds it from
// inside Qt's templates, and brought to global scope below.
inline std::size_t qHash(StringID const &id, std::size_t seed = 0) noexcept {
    return seed ^ vHash(id);
}

// A copy of the text.
VORT_EXPORT std::string toString(StringID const &id);

// Writes the text, with no framing.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, StringID const &id);
// Takes the rest of the stream, blanks and line ends included, up to its end or the first byte
// 0xFF (which is consumed and not kept), and assigns the id of what it read. Reaching the end
// sets eofbit only; a stream that is not good on entry reads nothing, so the target becomes
// the empty id and the stream fails.
VORT_EXPORT std::istream &operator>>(std::istream &stream, StringID &id);

}  // namespace VORT

using VORT::qHash;

namespace RD {

// "Helvetica", interned while the library loads.
VORT_EXPORT extern const VORT::StringID DefaultFontName;

}  // namespace RD

#endif  // VORT_BONES_STRINGID_H
