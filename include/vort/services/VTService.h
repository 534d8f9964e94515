// `VTServices::VTServiceBase` and `VTServices::VTService<T>`: the table through which the host
// hands the library its services (translation, timers, paths, events, printing and the rest).
//
// Every service class `S` derives from `VTService<S>` and supplies `static std::string
// serviceName()`, its key in the table. The host installs one object per key at start-up with
// `VTService<S>::install`; the library and the tools reach it with `VTService<S>::get`.
//
// Ownership: the table owns what is installed. Installing over an object deletes that object, and
// so does `install(nullptr)`; the host must not use an object after it has been replaced.
// Installing the very pointer that is already stored deletes it and leaves the entry dangling:
// don't. Objects still installed at process end are not deleted, so a service must not rely on
// its destructor running at exit.
//
// Thread safety: the table has no lock. Installation belongs to start-up, before other threads
// use services; afterwards `get` may be called from any thread, since it only reads.
//
// Failure: `get` answers null for a service that isn't installed (or holds an object of another
// class). The library's own callers (timers, translated strings, preferences) call straight
// through that pointer, so using them before the host has installed `TessarTimerService`,
// `Translation` or `ApplicationContext` is a programming error with undefined result.
#ifndef VORT_SERVICES_VTSERVICE_H
#define VORT_SERVICES_VTSERVICE_H

#include <vort/vort_export.h>

#include <map>
#include <string>

namespace VTServices {

class VORT_EXPORT VTServiceBase {
public:
    virtual ~VTServiceBase();

protected:
    // Keyed by service name. Built when the library is loaded, before any host code runs.
    static std::map<std::string, VTServiceBase *> g_serviceMap;
};

template <class T>
class VORT_EXPORT VTService : public VTServiceBase {
public:
    ~VTService() override {}

    // The installed object as a `T`, or null if none is installed or the stored object is not a
    // `T` (an object of a class derived from `T` comes back as itself).
    static T *get();

    // Stores `service` under `T::serviceName()`, deleting the object stored there before.
    // `install(nullptr)` empties an existing entry and adds none where there was none.
    static void install(T *service);
};

template <class T>
T *VTService<T>::get() {
    const auto found = g_serviceMap.find(T::serviceName());
    if (found == g_serviceMap.end()) {
        return nullptr;
    }
    return dynamic_cast<T *>(found->second);
}

template <class T>
void VTService<T>::install(T *service) {
    const std::string key = T::serviceName();
    const auto found = g_serviceMap.find(key);
    if (found == g_serviceMap.end()) {
        if (service != nullptr) {
            g_serviceMap.emplace(key, service);
        }
        return;
    }
    // The entry points at the new object before the old one is deleted, so that a destructor
    // that looks the service up doesn't find itself.
    VTServiceBase *const previous = found->second;
    found->second = service;
    delete previous;
}

}  // namespace VTServices

#endif  // VORT_SERVICES_VTSERVICE_H
