#include <vort/bones/StringUtils.h>
#include <vort/bones/VTStringList.h>

#include <cstring>
#include <iterator>

namespace {

std::unique_ptr<char[]> copyOf(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), text, size);
    return copy;
}

}  // namespace

VTStringList::VTStringList() : m_cursor(m_elements.end()) {}

// The end of a list stays where it is while elements come and go, so the cursor is set first.
VTStringList::VTStringList(std::vector<std::string> const &strings) : m_cursor(m_elements.end()) {
    for (std::string const &text : strings) {
        m_elements.push_back(copyOf(text.c_str()));
    }
}

VTStringList::VTStringList(VTStringList const &other) : m_cursor(m_elements.end()) {
    for (auto const &element : other.m_elements) {
        m_elements.push_back(copyOf(element.get()));
    }
}

VTStringList &VTStringList::operator=(VTStringList const &other) {
    if (this != &other) {
        VTStringList copy(other);
        m_elements.swap(copy.m_elements);
        m_cursor = m_elements.end();
    }
    return *this;
}

VTStringList::~VTStringList() = default;

bool VTStringList::matches(const char *element, const char *text, bool caseSensitive) {
    return caseSensitive ? std::strcmp(element, text) == 0
                         : VORT::compareIgnoreCase(element, text) == 0;
}

void VTStringList::addElement(const char *text) {
    if (text != nullptr) {
        m_elements.push_back(copyOf(text));
    }
}

void VTStringList::insertElement(int index, const char *text) {
    if (text == nullptr) {
        return;
    }
    Elements::iterator before = m_elements.begin();
    if (index >= size()) {
        before = m_elements.end();
    } else if (index > 0) {
        std::advance(before, index);
    }
    m_elements.insert(before, copyOf(text));
}

bool VTStringList::removeElement(const char *text, bool caseSensitive) {
    if (text == nullptr) {
        return false;
    }
    bool removed = false;
    for (Elements::iterator it = m_elements.begin(); it != m_elements.end();) {
        if (matches(it->get(), text, caseSensitive)) {
            it = m_elements.erase(it);
            removed = true;
        } else {
            ++it;
        }
    }
    if (removed) {
        m_cursor = m_elements.begin();
    }
    return removed;
}

bool VTStringList::isInList(const char *text, bool caseSensitive) const {
    if (text == nullptr) {
        return false;
    }
    for (auto const &element : m_elements) {
        if (matches(element.get(), text, caseSensitive)) {
            return true;
        }
    }
    return false;
}

char *VTStringList::firstElement() {
    m_cursor = m_elements.begin();
    return m_cursor == m_elements.end() ? nullptr : m_cursor->get();
}

char *VTStringList::nextElement() {
    if (m_cursor == m_elements.end() || ++m_cursor == m_elements.end()) {
        return nullptr;
    }
    return m_cursor->get();
}

char *VTStringList::elementAt(int index) {
    // A walk round the ring comes back where it started after size() + 1 links.
    const int links = index > 0 ? index % (size() + 1) : 0;
    if (links == size()) {
        return nullptr;
    }
    return std::next(m_elements.begin(), links)->get();
}

bool VTStringList::operator==(VTStringList const &other) const {
    if (m_elements.size() != other.m_elements.size()) {
        return false;
    }
    auto theirs = other.m_elements.begin();
    for (auto const &mine : m_elements) {
        if (std::strcmp(mine.get(), (theirs++)->get()) != 0) {
            return false;
        }
    }
    return true;
}
