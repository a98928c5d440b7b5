#include "tools/filter_tools.hpp"

#include "frame/record_tools.hpp"
#include "frame/saved_order.hpp"
#include "tools/tool_members.hpp"

namespace hist::tools {

void installFilterTools() {
    frame::RecordTools& t = frame::recordTools();
    t.seguridadPermiso = seguridadPermiso;
    t.validaDefinedSize = validaDefinedSize;
    t.validaKey = validaKey;
    t.validaValue = validaValue;
    t.getFilter = getFilter;
    t.aplyFilter = aplyFilter;
    t.setFilter = setFilter;
    t.setOrder = setOrder;
    t.getOrder = getOrder;
    t.createFilter = createFilter;
    frame::setSavedOrderStep(restoreOrder);
}

}  // namespace hist::tools
