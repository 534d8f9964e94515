#include <hsl/hsl.h>
#include <vort/bones/StringID.h>
#include <vort/bones/VHash.h>
#include <vort/messaging/Mutex.h>

#include <cstdint>
#include <istream>
#include <new>
#include <ostream>

namespace VORT {

namespace {

// Where the interned strings live. An id points into a block, and blocks are never freed nor
// moved, so that a rehash of the table moves no string that an id points at, and ids stay
// readable after the table is gone at process exit. The chain of blocks hangs from a plain
// global, so that nothing runs to build it and it stays reachable (leak checkers see the
// strings as live, which they are).
class StringArena {
public:
    // Call with the repository's mutex held.
    static std::string const *make(const char *text) {
        if (s_last == nullptr || s_last->used == kSlots) {
            s_last = new Block(s_last);
        }
        void *slot = s_last->slots + s_last->used * sizeof(std::string);
        auto *string = new (slot) std::string(text);
        ++s_last->used;
        return string;
    }

private:
    static constexpr std::size_t kSlots = 127;

    struct Block {
        explicit Block(Block *before) : previous(before) {}
        Block *previous;
        std::size_t used = 0;
        alignas(std::string) unsigned char slots[kSlots * sizeof(std::string)];
    };

    static Block *s_last;
};

StringArena::Block *StringArena::s_last = nullptr;

// The table: the key is a copy of the text, the value the interned string whose address is
// the id. Built at first use under the mutex; its destructor runs at exit and frees the nodes
// and keys, never the interned strings.
using Table = VHash<std::string, std::string const *>;

Table &table() {
    static Table theTable;
    return theTable;
}

// The node layout that the table gives its data, so that a look-up can walk a chain with a
// hash computed once.
using TableNode = VHashNode<std::string, std::string const *>;

// `h % bucketCount` by multiplication (Lemire's remainder by a fixed divisor): the division it
// replaces costs more than the rest of walking a short chain. The divisor only changes when
// the table is rehashed, so its reciprocal is kept until then. Used under the mutex.
class BucketIndex {
public:
    unsigned int of(unsigned int h, unsigned int bucketCount) {
        if (bucketCount != m_divisor) {
            m_divisor = bucketCount;
            m_reciprocal = ~std::uint64_t{0} / bucketCount + 1;
        }
        __extension__ typedef unsigned __int128 Wide;
        const std::uint64_t fraction = m_reciprocal * h;
        return static_cast<unsigned int>((static_cast<Wide>(fraction) * bucketCount) >> 64);
    }

private:
    unsigned int m_divisor = 0;
    std::uint64_t m_reciprocal = 0;
};

BucketIndex s_bucketIndex;

// The interned string of `text`, whose hash is `h`, or null if the table doesn't know it.
std::string const *lookUp(Table const &repository, std::string const &text, unsigned int h) {
    VHashData const &data = repository.data();
    if (data.size == 0) {
        return nullptr;
    }
    const auto *const end = reinterpret_cast<TableNode const *>(&data);
    const auto *node = reinterpret_cast<TableNode const *>(
        data.buckets[s_bucketIndex.of(h, static_cast<unsigned int>(data.bucketCount))]);
    for (; node != end; node = node->next) {
        if (node->h == h && node->key == text) {
            return node->value;
        }
    }
    return nullptr;
}

// Out here so that interning, the hot caller, reaches it without a call through the
// library's exported symbol.
Mutex &reposMutex() {
    static Mutex mutex(Mutex::NonRecursive);
    return mutex;
}

bool asciiEqualsIgnoreCase(const char *a, const char *b) {
    for (;; ++a, ++b) {
        unsigned char x = static_cast<unsigned char>(*a);
        unsigned char y = static_cast<unsigned char>(*b);
        if (x != y) {
            if (x >= 'A' && x <= 'Z') {
                x = static_cast<unsigned char>(x - 'A' + 'a');
            }
            if (y >= 'A' && y <= 'Z') {
                y = static_cast<unsigned char>(y - 'A' + 'a');
            }
            if (x != y) {
                return false;
            }
        }
        if (x == 0) {
            return true;
        }
    }
}

}  // namespace

StringID::StringID(const char *text) : m_string(setStringID(std::string(text))) {}

StringID &StringID::operator=(const char *text) {
    m_string = setStringID(std::string(text));
    return *this;
}

Mutex &StringID::getReposMutex() {
    return reposMutex();
}

std::string const &StringID::emptyString() {
    // Never destroyed, so that an empty id reads as "" during exit too.
    static std::string const *const empty = new std::string();
    return *empty;
}

std::string const *StringID::setStringID(std::string const &text) {
    if (text.empty()) {
        return nullptr;
    }
    // The table's own hash of the text (`vHash`), computed once. It depends on the text alone,
    // so it is taken before the lock, which keeps the time under the lock short.
    const unsigned int h = hsl_hash_string(0, text.c_str());
    MutexLocker lock(reposMutex());
    Table &repository = table();
    if (std::string const *known = lookUp(repository, text, h)) {
        return known;
    }
    // The interned string stops at the first NUL, while the key is the whole text. Should the
    // insertion throw, the string is lost but nothing else changes.
    std::string const *interned = StringArena::make(text.c_str());
    repository.insert(text, interned);
    return interned;
}

StringID StringID::concat(StringID other) {
    if (other.empty()) {
        return *this;
    }
    return StringID(getString() + other.getString());
}

bool StringID::equalsIgnoreCase(StringID const &other) const {
    if (m_string == other.m_string) {
        return true;
    }
    if (m_string == nullptr || other.m_string == nullptr) {
        return false;
    }
    return asciiEqualsIgnoreCase(m_string->c_str(), other.m_string->c_str());
}

bool StringID::equalsIgnoreCase(std::string const &text) const {
    if (m_string == nullptr) {
        return false;
    }
    return asciiEqualsIgnoreCase(m_string->c_str(), text.c_str());
}

std::string toString(StringID const &id) {
    return id.getString();
}

std::ostream &operator<<(std::ostream &stream, StringID const &id) {
    return stream << id.getString();
}

std::istream &operator>>(std::istream &stream, StringID &id) {
    std::string text;
    const std::istream::sentry ready(stream, true);
    if (ready) {
        std::streambuf *buffer = stream.rdbuf();
        for (;;) {
            const std::istream::int_type c = buffer->sbumpc();
            if (std::istream::traits_type::eq_int_type(c, std::istream::traits_type::eof())) {
                stream.setstate(std::ios_base::eofbit);
                break;
            }
            if (c == 0xFF) {
                break;
            }
            text.push_back(std::istream::traits_type::to_char_type(c));
        }
    }
    id = text;
    return stream;
}

}  // namespace VORT

const VORT::StringID RD::DefaultFontName("Helvetica");
