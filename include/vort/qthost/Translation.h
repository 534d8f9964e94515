// `VORT::QtHost::Translation`: a `VTServices::Translation` through
// `QCoreApplication::translate`, so that the translators the application installs translate the
// library's texts too. Part of the Qt host kit (target `Vort::QtHost`).
//
// Texts are looked up in one translation context, "VortUtil" unless the constructor is told
// otherwise, and are UTF-8 both ways. A text without translation comes back as the very pointer
// it was given; a translated text is kept by the service, so the pointer stays valid as long as
// the service lives, also when the installed translators change.
//
// Thread safety: `translate` may be called from any thread. Failure: a null text is reported as
// a warning in the category "vort.qthost" and answered with null.
#ifndef VORT_QTHOST_TRANSLATION_H
#define VORT_QTHOST_TRANSLATION_H

#include <vort/qthost/qthost_export.h>
#include <vort/services/Translation.h>

#include <memory>
#include <string>

namespace VORT {
namespace QtHost {

class VORTQTHOST_EXPORT Translation : public VTServices::Translation {
public:
    explicit Translation(std::string context = "VortUtil");
    ~Translation() override;
    Translation(const Translation &) = delete;
    Translation &operator=(const Translation &) = delete;

    const char *translate(const char *text) override;

    const std::string &context() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_TRANSLATION_H
