#pragma once
// Recordsets on rows the test writes itself, and fresh archive files.
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "ado/recordset.hpp"
#include "backends/archive_fixture.hpp"
#include "platform/error.hpp"
#include "support/errors.hpp"

namespace hist::testing {

struct ColumnDef {
    std::string name;
    backend::FieldType type = backend::FieldType::VarWChar;
};

// A cell as a test writes it: nothing (Null), an integer, a real or a text.
using CellInit = std::variant<std::monostate, long long, double, std::string>;

// Opens `rs` (a new recordset by default) on the rows given.
inline std::shared_ptr<ado::Recordset> fabricate(
    const std::vector<ColumnDef>& defs, const std::vector<std::vector<CellInit>>& rows,
    std::shared_ptr<ado::Recordset> rs = std::make_shared<ado::Recordset>()) {
    rs->OpenRows([&](backend::RowSink& sink) {
        std::vector<backend::ColumnMeta> cols(defs.size());
        for (std::size_t k = 0; k < defs.size(); ++k) {
            cols[k].name = defs[k].name;
            cols[k].type = defs[k].type;
        }
        sink.columns(cols);
        for (const auto& r : rows) {
            std::vector<backend::Cell> cells(r.size());
            for (std::size_t k = 0; k < r.size(); ++k) {
                if (auto* i = std::get_if<long long>(&r[k])) {
                    cells[k].kind = backend::Cell::Kind::Int;
                    cells[k].i = *i;
                } else if (auto* d = std::get_if<double>(&r[k])) {
                    cells[k].kind = backend::Cell::Kind::Real;
                    cells[k].d = *d;
                } else if (auto* s = std::get_if<std::string>(&r[k])) {
                    cells[k].kind = backend::Cell::Kind::Text;
                    cells[k].text = *s;
                }
            }
            sink.row(cells);
        }
    });
    return rs;
}

// The error numbers of several calls, in order.
inline std::vector<long> errorsOf(std::initializer_list<std::function<void()>> calls) {
    std::vector<long> out;
    for (const auto& f : calls) out.push_back(errorOf(f));
    return out;
}

}  // namespace hist::testing
