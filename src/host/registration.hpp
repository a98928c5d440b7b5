#pragma once
// Every class the host can create by name, registered layer by layer. Each layer
// offers one explicit registration function (see platform/dispatch.hpp); this is the
// one place that calls them, so a layer's classes are linked in and registered.
#include "platform/dispatch.hpp"

namespace hist::host {

// Registers every layer's classes in `r` (once; later calls do nothing).
void registerAllClasses(Registry& r = Registry::global());

}  // namespace hist::host
