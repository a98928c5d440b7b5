#include "host/registration.hpp"

#include "ado/registration.hpp"
#include "frame/services/registration.hpp"
#include "satellites/comentarios.hpp"
#include "tools/filter_tools.hpp"
#include "tools/listing_tools.hpp"

namespace hist::host {

void registerAllClasses(Registry& r) {
    static Registry* done = nullptr;
    if (done == &r) return;
    registerPlatformClasses(r);
    // The layers above the platform, in layer order (data layer, frame and
    // collaborators, tools, record classes).
    ado::registerAdoClasses(r);
    services::registerServiceClasses(r);
    tools::installFilterTools();
    tools::installListingTools();
    satellites::registerCommentClasses(r);
    done = &r;
}

}  // namespace hist::host
