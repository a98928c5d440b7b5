#include "clinical/clinical.hpp"

namespace hist::clinical {

void registerClinicalClasses(Registry& r) {
    registerOdontograma(r);
    registerColor(r);
    registerFases(r);
    registerPruebas(r);
    registerDeclaraciones(r);
    registerReclamaciones(r);
    registerEtiquetas(r);
}

}  // namespace hist::clinical
