#pragma once
// Publishes the collaborators for calls by name: ClsServicioDatos, ClsClaveRegistro,
// ClsSeguridadUsuario, ClsFormatoNumero, ClsNumeradores, ClsCalculoLinea,
// ClsRegistroLinea, ClsRutasUsuario, ClsTextoLinea, each with its members in
// interface order. Creating one of the per-thread shared collaborators by name
// gives this thread's instance.
#include "platform/dispatch.hpp"

namespace hist::services {

void registerServiceClasses(Registry& r);

}  // namespace hist::services
