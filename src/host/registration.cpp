#include "host/registration.hpp"

namespace hist::host {

void registerAllClasses(Registry& r) {
    static Registry* done = nullptr;
    if (done == &r) return;
    registerPlatformClasses(r);
    // The layers above the platform add their registration calls here, in layer
    // order (data layer, frame and collaborators, tools, record classes).
    done = &r;
}

}  // namespace hist::host
