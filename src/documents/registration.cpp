#include "documents/commercial.hpp"
#include "documents/ordenes.hpp"

namespace hist::documents {

void registerDocumentClasses(Registry& r) {
    registerOrdenes(r);
    registerPedidosCli(r);
    registerAlbaranes(r);
    registerFacturas(r);
    registerRecibos(r);
}

}  // namespace hist::documents
