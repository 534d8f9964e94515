// `VTServices::Translation`: the host's translation of user-visible texts, which
// `VORT::StringID::getXlateString` goes through.
//
// Thread safety: `translate` may be called from any thread once the service is installed; an
// override that keeps state must guard it. Ownership: the returned text belongs to the service
// (or is the argument itself) and must stay valid at least until the caller has copied it.
// Failure: none; a text without translation comes back unchanged.
#ifndef VORT_SERVICES_TRANSLATION_H
#define VORT_SERVICES_TRANSLATION_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT Translation : public VTService<Translation> {
public:
    static std::string serviceName();  // "Translation"

    ~Translation() override;

    // The text in the host's language. The plain class returns the very pointer it was given.
    virtual const char *translate(const char *text);
};

extern template class VTService<Translation>;

}  // namespace VTServices

#endif  // VORT_SERVICES_TRANSLATION_H
