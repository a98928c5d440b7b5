#pragma once
// Publishes Connection, Recordset, Fields and Field to dispatch, so that script
// hosts reach them by name.
#include "platform/dispatch.hpp"

namespace hist::ado {

void registerAdoClasses(Registry& r);

}  // namespace hist::ado
