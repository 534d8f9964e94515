#include <vort/services/Printing.h>

namespace VTServices {

template class VTService<Printing>;

std::string Printing::serviceName() {
    return "Printing";
}

Printing::~Printing() = default;

double Printing::QPicture2Figure(QPicture &) {
    return 0.0;
}

int Printing::LGtoQtPaperOrientation(const char *) {
    return 0;
}

int Printing::LGtoQtPaperSize(const char *) {
    return 0;
}

void Printing::PrintQPicture(QPicture &, const char *, const char *, const char *, short,
                             const char *, const char *, bool, bool, bool, bool, bool) {}

void Printing::PrintQPictureWithDialog(QPicture &) {}

}  // namespace VTServices
