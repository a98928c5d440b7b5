#include "host/grid_columns.hpp"

#include "backends/engine.hpp"

namespace hist::host {

std::shared_ptr<StandInColumns> columnsOfFields(ado::Recordset& rs) {
    auto fields = rs.Fields();
    auto columns = std::make_shared<StandInColumns>();
    for (long i = 0; i < fields->Count(); ++i) {
        auto f = fields->Item(Variant(static_cast<int32_t>(i)));
        const bool number = f->Type() != static_cast<int>(backend::FieldType::VarWChar) &&
                            f->Type() != static_cast<int>(backend::FieldType::LongVarWChar) &&
                            f->Type() != static_cast<int>(backend::FieldType::Date);
        columns->add(ColumnData{f->Name(), true, number ? 1 : 3, f->Name()});
    }
    return columns;
}

}  // namespace hist::host
