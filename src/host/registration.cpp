#include "host/registration.hpp"

#include "ado/registration.hpp"
#include "clinical/clinical.hpp"
#include "documents/ordenes.hpp"
#include "frame/services/registration.hpp"
#include "satellites/cabeceras.hpp"
#include "satellites/comentarios.hpp"

namespace hist::host {

void registerAllClasses(Registry& r) {
    static Registry* done = nullptr;
    if (done == &r) return;
    registerPlatformClasses(r);
    // The layers above the platform, in layer order (data layer, collaborators,
    // record classes, which carry the frame's and the tools' members).
    ado::registerAdoClasses(r);
    services::registerServiceClasses(r);
    documents::registerDocumentClasses(r);
    satellites::registerCommentClasses(r);
    clinical::registerClinicalClasses(r);
    satellites::registerLineAndSnapshotClasses(r);
    done = &r;
}

}  // namespace hist::host
