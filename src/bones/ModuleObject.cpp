#include <vort/bones/ModuleObject.h>

namespace VORT {

ModuleObject::~ModuleObject() = default;

ModuleObjectDeleter &ModuleObjectDeleter::operator=(const ModuleObjectDeleter &other) {
    if (this != &other) {
        m_objects = other.m_objects;
    }
    return *this;
}

ModuleObjectDeleter::~ModuleObjectDeleter() {
    // Walk a copy: a destructor that runs now may enter objects into, or clear, this very list.
    const std::list<ModuleObject *> entries = m_objects;
    for (ModuleObject *entry : entries) {
        entry->release();
    }
}

}  // namespace VORT
