// `VTServices::Printing`: hands Qt pictures to the host's plotting and printing system.
//
// `QPicture` is only named here, so that this header pulls in no Qt header; the plain class
// never touches the pictures it is given.
#ifndef VORT_SERVICES_PRINTING_H
#define VORT_SERVICES_PRINTING_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

class QPicture;

namespace VTServices {

class VORT_EXPORT Printing : public VTService<Printing> {
public:
    static std::string serviceName();  // "Printing"

    ~Printing() override;

    // Turns the picture into a figure of the host's plotting system and answers its number.
    // The plain class answers 0.0.
    virtual double QPicture2Figure(QPicture &picture);
    // The plotting system's names of paper orientation and size as Qt's values; 0 by default.
    virtual int LGtoQtPaperOrientation(const char *orientation);
    virtual int LGtoQtPaperSize(const char *size);
    virtual void PrintQPicture(QPicture &picture, const char *, const char *, const char *, short,
                               const char *, const char *, bool, bool, bool, bool, bool);
    virtual void PrintQPictureWithDialog(QPicture &picture);
};

extern template class VTService<Printing>;

}  // namespace VTServices

#endif  // VORT_SERVICES_PRINTING_H
