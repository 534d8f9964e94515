// `VTStringList`: a list of C strings with a cursor, the older, C-string style of list. It lives
// at global scope.
//
// The list owns a copy of every string put in, and hands out pointers to its copies: they stay
// valid until their element is removed or the list is destroyed or assigned to. Comparisons
// without case are byte-wise, with only ASCII letters folded (see `VORT::compareIgnoreCase`).
//
// Thread safety: none. Moving the cursor writes to the list, so even reading a list belongs to
// one thread at a time.
//
// Failure: none is reported; null strings are ignored, or give false or null. Running out of
// memory throws `std::bad_alloc`, and the list then stays as it was.
#ifndef VORT_BONES_VTSTRINGLIST_H
#define VORT_BONES_VTSTRINGLIST_H

#include <vort/vort_export.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

class VORT_EXPORT VTStringList {
public:
    // Empty, with the cursor at the end.
    VTStringList();
    // One element per string, in order; a string stops at its first NUL.
    explicit VTStringList(std::vector<std::string> const &strings);
    // Copies the elements; the cursor of the copy (or of the target) is at the end.
    VTStringList(VTStringList const &other);
    VTStringList &operator=(VTStringList const &other);
    virtual ~VTStringList();

    // Appends a copy. The cursor stays where it is.
    void addElement(const char *text);
    // Inserts a copy before the element at `index`: 0 or less puts it first, an index past the
    // end appends. The cursor stays on its element.
    void insertElement(int index, const char *text);
    // Removes every element equal to `text`, and puts the cursor on the first element if any
    // was removed; returns whether one was.
    bool removeElement(const char *text, bool caseSensitive);
    bool isInList(const char *text, bool caseSensitive) const;

    // Puts the cursor on the first element and returns it; null for an empty list.
    char *firstElement();
    // Moves the cursor on (unless it is at the end already) and returns its element, or null
    // at the end.
    char *nextElement();
    // The element `index` links on from the first. The end counts as a link of the ring the
    // list forms: `size()` gives null and `size() + 1` the first element again. An index below
    // 0 walks no link. The cursor doesn't move.
    char *elementAt(int index);

    int size() const { return static_cast<int>(m_elements.size()); }

    // Equal sizes and, in order, byte-equal elements.
    bool operator==(VTStringList const &other) const;
    bool operator!=(VTStringList const &other) const { return !(*this == other); }

private:
    using Elements = std::list<std::unique_ptr<char[]>>;

    static bool matches(const char *element, const char *text, bool caseSensitive);

    Elements m_elements;
    Elements::iterator m_cursor;
};

#endif  // VORT_BONES_VTSTRINGLIST_H
