#pragma once
// The grid a form binds to a whole selection: one visible column per field, titled
// and bound by the field's name, numbers right-aligned, texts and dates left.
#include <memory>

#include "ado/recordset.hpp"
#include "platform/host_objects.hpp"

namespace hist::host {

std::shared_ptr<StandInColumns> columnsOfFields(ado::Recordset& rs);

}  // namespace hist::host
