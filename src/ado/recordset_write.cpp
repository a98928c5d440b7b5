// The batch write-back. One UpdateBatch is one savepoint on the connection's session:
// every statement finds its row by the hidden row identity and checks the original
// values of the columns it changes, so a row changed or gone since it was read undoes
// the whole batch. After each write the row is read back, so the store holds what the
// archive now holds: the identity of a new row, the defaults of the columns it left
// out, and the stored forms of what was written.
#include <algorithm>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "ado/recordset_rows.hpp"
#include "ado/values.hpp"
#include "platform/error.hpp"
#include "sql/textmatch.hpp"

namespace hist::ado {

using namespace detail;

namespace {

[[noreturn]] void insufficient(const std::string& field) {
    raise(err::ProviderFailure, err::SrcRecordset,
          "Insufficient base table information for updating or refreshing. Field: " + field);
}

[[noreturn]] void conflict() {
    raise(err::SqlRowConflict, err::SrcRecordset,
          "Row cannot be located for updating. Some values may have been changed since it was last read.");
}

// A statement with its bound values and their field types.
struct Bound {
    std::string sql;
    std::vector<Variant> params;
    std::vector<backend::FieldType> types;
    void bind(Variant v, backend::FieldType t) {
        params.push_back(std::move(v));
        types.push_back(t);
    }
};

// Collects what the read-back of one row returns, column by column.
class ReadBackSink : public backend::RowSink {
public:
    ReadBackSink(std::vector<RowRefresh>& out, const std::vector<std::size_t>& cols, uint32_t row)
        : out_(out), cols_(cols), row_(row) {}
    bool seen() const { return seen_; }
    void columns(const std::vector<backend::ColumnMeta>&) override {}
    void row(std::span<const backend::Cell> cells) override {
        if (seen_) return;
        seen_ = true;
        for (std::size_t k = 0; k < cols_.size() && k < cells.size(); ++k) {
            RowRefresh r{row_, cols_[k], CellTag::Null, 0, 0.0, {}};
            switch (cells[k].kind) {
                case backend::Cell::Kind::Null: break;
                case backend::Cell::Kind::Int: r.tag = CellTag::Int; r.i = cells[k].i; break;
                case backend::Cell::Kind::Real: r.tag = CellTag::Real; r.d = cells[k].d; break;
                case backend::Cell::Kind::Text: r.tag = CellTag::Text; r.s = std::string(cells[k].text); break;
            }
            out_.push_back(std::move(r));
        }
    }

private:
    std::vector<RowRefresh>& out_;
    const std::vector<std::size_t>& cols_;
    uint32_t row_;
    bool seen_ = false;
};

// Writes the pending rows of one batch, row by row.
class BatchWriter {
public:
    BatchWriter(RowData& d, Connection& cn) : d_(d), cn_(cn), session_(cn.session()) {}

    void write(uint32_t row) {
        const Overlay* ov = nullptr;
        if (auto it = d_.overlay.find(row); it != d_.overlay.end()) ov = &it->second;
        switch (d_.statusOf(row)) {
            case RowStatus::Deleted: deleteRow(row); break;
            case RowStatus::Modified: if (ov) updateRow(row, *ov); break;
            case RowStatus::New: if (ov) insertRow(row, *ov); break;
            default: break;
        }
    }

    std::vector<RowRefresh> refreshed;

private:
    // The hidden identity column of a base table, or -1.
    int identityOf(const std::string& table) const {
        for (std::size_t k = 0; k < d_.cols.size(); ++k)
            if (d_.cols[k].hiddenRowId && sql::equalNoCase(d_.cols[k].baseTable, table)) return static_cast<int>(k);
        return -1;
    }
    std::string identityName(int col) const {
        const std::string& n = d_.cols[static_cast<std::size_t>(col)].baseColumn;
        return n.empty() ? std::string("rowid") : n;
    }
    const backend::ColumnMeta& fieldMeta(std::size_t field) const {
        return d_.cols[static_cast<std::size_t>(d_.fieldCol[field])];
    }
    // The base table of a field that can be written back.
    const std::string& tableOf(std::size_t field) const {
        const backend::ColumnMeta& m = fieldMeta(field);
        if (!m.updatable || m.baseTable.empty() || m.baseColumn.empty() || identityOf(m.baseTable) < 0)
            insufficient(m.name);
        return m.baseTable;
    }
    void bindIdentity(Bound& b, uint32_t row, int col) const {
        const CellView c = d_.store.get(row, static_cast<std::size_t>(col));
        if (c.tag == CellTag::Null) conflict();
        backend::FieldType t;
        Variant v = cellToBound(c, t);
        b.bind(std::move(v), t);
    }
    long run(const Bound& b) {
        cn_.report("UpdateBatch", b.sql);
        return session_.execute(b.sql, b.params, b.types);
    }
    // The base tables of the fields `use` picks, each once, in field order.
    template <class Use>
    std::vector<std::string> tablesOf(const Overlay& ov, Use use) const {
        std::vector<std::string> tables;
        for (std::size_t f = 0; f < ov.values.size(); ++f) {
            if (!use(f)) continue;
            const std::string& t = tableOf(f);
            if (std::none_of(tables.begin(), tables.end(), [&](const std::string& x) { return sql::equalNoCase(x, t); }))
                tables.push_back(t);
        }
        return tables;
    }

    void deleteRow(uint32_t row) {
        int idCol = -1;
        for (std::size_t k = 0; k < d_.cols.size() && idCol < 0; ++k)
            if (d_.cols[k].hiddenRowId) idCol = static_cast<int>(k);
        if (idCol < 0) insufficient(d_.cols.empty() ? std::string() : d_.cols[0].name);
        Bound b;
        b.sql = "DELETE FROM " + quoteName(d_.cols[static_cast<std::size_t>(idCol)].baseTable) + " WHERE " +
                identityName(idCol) + " = ?";
        bindIdentity(b, row, idCol);
        if (run(b) == 0) conflict();
    }

    // One UPDATE per base table among the changed fields, checking each changed
    // column's original value (IS NULL for a null).
    void updateRow(uint32_t row, const Overlay& ov) {
        for (const std::string& table : tablesOf(ov, [&](std::size_t f) { return ov.changed[f] != 0; })) {
            const int idCol = identityOf(table);
            Bound b, checks;
            std::string set, where;
            for (std::size_t f = 0; f < ov.changed.size(); ++f) {
                const backend::ColumnMeta& m = fieldMeta(f);
                if (!ov.changed[f] || !sql::equalNoCase(m.baseTable, table)) continue;
                const std::string col = quoteName(m.baseColumn);
                set += (set.empty() ? "" : ", ") + col + " = ?";
                b.bind(ov.values[f].isEmpty() ? Variant::null() : ov.values[f], m.type);
                const CellView orig = d_.store.get(row, static_cast<std::size_t>(d_.fieldCol[f]));
                if (orig.tag == CellTag::Null) {
                    where += " AND " + col + " IS NULL";
                } else {
                    backend::FieldType t;
                    Variant v = cellToBound(orig, t);
                    checks.bind(std::move(v), t);
                    where += " AND " + col + " = ?";
                }
            }
            bindIdentity(b, row, idCol);
            b.params.insert(b.params.end(), checks.params.begin(), checks.params.end());
            b.types.insert(b.types.end(), checks.types.begin(), checks.types.end());
            b.sql = "UPDATE " + quoteName(table) + " SET " + set + " WHERE " + identityName(idCol) + " = ?" + where;
            if (run(b) == 0) conflict();
            readBack(row, table, d_.store.get(row, static_cast<std::size_t>(idCol)).i);
        }
    }

    // One INSERT per base table among the assigned fields; a row with none assigned
    // goes to the first table with an identity, all defaults.
    void insertRow(uint32_t row, const Overlay& ov) {
        std::vector<std::string> tables = tablesOf(ov, [&](std::size_t f) { return !ov.values[f].isEmpty(); });
        if (tables.empty()) {
            for (const backend::ColumnMeta& m : d_.cols)
                if (m.hiddenRowId) {
                    tables.push_back(m.baseTable);
                    break;
                }
            if (tables.empty()) insufficient(d_.cols.empty() ? std::string() : d_.cols[0].name);
        }
        for (const std::string& table : tables) {
            Bound b;
            std::string names, marks;
            for (std::size_t f = 0; f < ov.values.size(); ++f) {
                const backend::ColumnMeta& m = fieldMeta(f);
                if (ov.values[f].isEmpty() || !sql::equalNoCase(m.baseTable, table)) continue;
                names += (names.empty() ? "" : ", ") + quoteName(m.baseColumn);
                marks += marks.empty() ? "?" : ", ?";
                b.bind(ov.values[f], m.type);
            }
            b.sql = names.empty() ? "INSERT INTO " + quoteName(table) + " DEFAULT VALUES"
                                  : "INSERT INTO " + quoteName(table) + " (" + names + ") VALUES (" + marks + ")";
            run(b);
            readBack(row, table, session_.lastInsertRowId());
        }
    }

    void readBack(uint32_t row, const std::string& table, long long id) {
        std::vector<std::size_t> cols;
        std::string list;
        for (std::size_t k = 0; k < d_.cols.size(); ++k) {
            const backend::ColumnMeta& m = d_.cols[k];
            if (!sql::equalNoCase(m.baseTable, table) || m.baseColumn.empty()) continue;
            if (!m.hiddenRowId && !m.updatable) continue;
            cols.push_back(k);
            list += (list.empty() ? "" : ", ") +
                    (m.hiddenRowId ? identityName(static_cast<int>(k)) : quoteName(m.baseColumn));
        }
        const std::string sql = "SELECT " + list + " FROM " + quoteName(table) + " WHERE " +
                                identityName(identityOf(table)) + " = " + std::to_string(id);
        ReadBackSink sink(refreshed, cols, row);
        cn_.report("UpdateBatch", sql);
        session_.query(sql, sink);
        if (!sink.seen()) conflict();
    }

    RowData& d_;
    Connection& cn_;
    backend::Session& session_;
};

}  // namespace

std::vector<RowRefresh> Recordset::writeBack(const std::vector<uint32_t>& rows) {
    if (!cn_ || cn_->State() == 0) raise(err::InvalidConnection, err::SrcRecordset);
    BatchWriter writer(*data_, *cn_);
    backend::Session& session = cn_->session();
    session.begin();
    uint32_t at = 0;  // the row being written, kept when it conflicts
    try {
        for (uint32_t row : rows) {
            at = row;
            writer.write(row);
        }
        session.commit();
    } catch (...) {
        try {
            session.rollback();
        } catch (...) {
            // The batch's own failure is the one to report.
        }
        try {
            throw;
        } catch (const Error& e) {
            if (e.number() == err::SqlRowConflict) conflicts_.assign(1, at);
            throw;
        }
    }
    return std::move(writer.refreshed);
}

}  // namespace hist::ado
