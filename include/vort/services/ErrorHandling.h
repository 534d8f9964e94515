// `VTServices::ErrorHandling`: the host's error mode and its diagnostic printouts.
//
// The print operations take an output function that writes one text and returns an int; the
// plain class writes nothing.
#ifndef VORT_SERVICES_ERRORHANDLING_H
#define VORT_SERVICES_ERRORHANDLING_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT ErrorHandling : public VTService<ErrorHandling> {
public:
    // The library only passes the mode through. The underlying type is fixed so that a host may
    // carry values of its own beyond the named ones.
    enum ErrorMode : int { DefaultErrorMode = 0, QuietErrorMode = 1, VerboseErrorMode = 2 };

    static std::string serviceName();  // "ErrorHandling"

    ~ErrorHandling() override;

    // Returns the mode in force before. The plain class returns 0.
    virtual ErrorMode setErrorMode(ErrorMode mode);
    virtual void printMachineConfiguration(int (*output)(const char *));
    virtual void printStackTrace(int (*output)(const char *));
};

extern template class VTService<ErrorHandling>;

}  // namespace VTServices

#endif  // VORT_SERVICES_ERRORHANDLING_H
