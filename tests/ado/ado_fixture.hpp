#pragma once
// Recordsets on rows the test writes itself, and fresh archive files.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "ado/recordset.hpp"
#include "platform/error.hpp"

namespace hist::testing {

struct ColumnDef {
    std::string name;
    backend::FieldType type = backend::FieldType::VarWChar;
};

// A cell as a test writes it: nothing (Null), an integer, a real or a text.
using CellInit = std::variant<std::monostate, long long, double, std::string>;

inline std::shared_ptr<ado::Recordset> fabricate(const std::vector<ColumnDef>& defs,
                                                 const std::vector<std::vector<CellInit>>& rows) {
    auto rs = std::make_shared<ado::Recordset>();
    rs->OpenRows([&](backend::RowSink& sink) {
        std::vector<backend::ColumnMeta> cols;
        for (const auto& d : defs) {
            backend::ColumnMeta m;
            m.name = d.name;
            m.type = d.type;
            cols.push_back(m);
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

// The error number a call raises, 0 when it raises none.
inline long errorOf(const std::function<void()>& f, std::string* description = nullptr) {
    try {
        f();
    } catch (const Error& e) {
        if (description) *description = e.description();
        return e.number();
    }
    return 0;
}

class TempArchive {
public:
    TempArchive() {
        std::string tmpl = (std::filesystem::temp_directory_path() / "hist-ado-XXXXXX").string();
        dir_ = mkdtemp(tmpl.data());
        path_ = (std::filesystem::path(dir_) / "archivo.db").string();
    }
    ~TempArchive() {
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }
    backend::DataSource source(int busyMs = 2000) const {
        backend::DataSource ds;
        ds.path = path_;
        ds.busyTimeoutMs = busyMs;
        return ds;
    }

private:
    std::string dir_, path_;
};

}  // namespace hist::testing
