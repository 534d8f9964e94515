#include <hsl/hsl.h>
#include <vort/bones/Holder.h>

namespace VORT {

// The destructors are out of line so that each base's virtual table and type information live
// in the library once, whatever a client instantiates.
ReferencedTemplate<unsigned int>::~ReferencedTemplate() = default;

void ReferencedTemplate<unsigned int>::destroy() {
    delete this;
}

bool ReferencedTemplate<unsigned int>::ensureSingleThread(ReferencedTemplate<unsigned int> *,
                                                          bool) {
    hsl_assertstr(": Forced Assertion", ".\\bones\\Holder", 47,
                  "Debug code, this shouldn't be run in release.");
    return true;
}

ReferencedTemplate<AtomicCounter>::~ReferencedTemplate() = default;

void ReferencedTemplate<AtomicCounter>::destroy() {
    delete this;
}

SingletonFactoryBase::SingletonFactoryBase() = default;

SingletonFactoryBase::~SingletonFactoryBase() = default;

}  // namespace VORT
