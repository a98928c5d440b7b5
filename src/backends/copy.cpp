#include "backends/copy.hpp"

#include <charconv>
#include <optional>

#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "sql/catalog.hpp"

namespace hist::backend {

namespace {

constexpr const char* kSource = "historicos.copy";

// Reads the first cell of a one-row selection as a count.
struct CountSink : RowSink {
    long long n = 0;
    void columns(const std::vector<ColumnMeta>&) override {}
    void row(std::span<const Cell> cells) override {
        if (cells.empty()) return;
        n = cells[0].kind == Cell::Kind::Int ? cells[0].i : static_cast<long long>(cells[0].d);
    }
};

long long countRows(Session& s, const std::string& table) {
    CountSink sink;
    s.query("SELECT COUNT(*) FROM " + table, sink);
    return sink.n;
}

// Writes each row it is given into the target with bound values, typed by the catalog.
class RowWriter : public RowSink {
public:
    RowWriter(Session& to, const sql::Table& t) : to_(to), table_(t) {
        std::string names, marks;
        for (const sql::Column& c : t.columns) {
            names += (names.empty() ? "" : ", ") + c.name;
            marks += marks.empty() ? "?" : ", ?";
            types_.push_back(static_cast<FieldType>(c.adoType));
        }
        insert_ = "INSERT INTO " + t.name + " (" + names + ") VALUES (" + marks + ")";
        values_.resize(t.columns.size());
    }
    void columns(const std::vector<ColumnMeta>&) override {}
    void row(std::span<const Cell> cells) override {
        // Cells past the catalog's columns are the source's hidden row identities.
        for (size_t k = 0; k < values_.size(); ++k) values_[k] = value(cells[k], table_.columns[k]);
        to_.execute(insert_, values_, types_);
        ++rows_;
    }
    long long rows() const { return rows_; }

private:
    static Variant value(const Cell& c, const sql::Column& col) {
        switch (c.kind) {
            case Cell::Kind::Null: return Variant::null();
            case Cell::Kind::Int: return col.jet == sql::JetType::Double ? Variant(static_cast<double>(c.i)) : Variant::lng(c.i);
            case Cell::Kind::Real: return Variant(c.d);
            case Cell::Kind::Text:
                if (col.jet == sql::JetType::Date) {
                    if (auto d = rt::parseIso(c.text)) return Variant::date(*d);
                }
                return Variant(std::string(c.text));
        }
        return Variant::null();
    }

    Session& to_;
    const sql::Table& table_;
    std::string insert_;
    std::vector<FieldType> types_;
    std::vector<Variant> values_;
    long long rows_ = 0;
};

// Adds up a hash of each row it is given.
class ChecksumSink : public RowSink {
public:
    explicit ChecksumSink(const sql::Table& t) : table_(t) {}
    void columns(const std::vector<ColumnMeta>&) override {}
    void row(std::span<const Cell> cells) override {
        uint64_t h = 1469598103934665603ull;
        auto mix = [&](std::string_view bytes) {
            for (unsigned char c : bytes) h = (h ^ c) * 1099511628211ull;
            h = (h ^ 0xff) * 1099511628211ull;  // the end of a value
        };
        for (size_t k = 0; k < table_.columns.size() && k < cells.size(); ++k) {
            const Cell& c = cells[k];
            char buf[32];
            switch (c.kind) {
                case Cell::Kind::Null: mix(std::string_view("\0N", 2)); break;
                case Cell::Kind::Int:
                case Cell::Kind::Real: {
                    // By value: the file may hold a whole double as an integer.
                    const double d = c.kind == Cell::Kind::Int ? static_cast<double>(c.i) : c.d;
                    auto r = std::to_chars(buf, buf + sizeof buf, d);
                    mix(std::string_view(buf, static_cast<size_t>(r.ptr - buf)));
                    break;
                }
                case Cell::Kind::Text: mix(c.text); break;
            }
        }
        sum_ += h;
    }
    uint64_t sum() const { return sum_; }

private:
    const sql::Table& table_;
    uint64_t sum_ = 0;
};

std::string columnList(const sql::Table& t) {
    std::string list;
    for (const sql::Column& c : t.columns) list += (list.empty() ? "" : ", ") + c.name;
    return list;
}

}  // namespace

uint64_t tableChecksum(Session& s, const std::string& table) {
    const sql::Table* t = sql::catalog().table(table);
    if (!t) throw Error(err::SqlNoTable, kSource, "Cannot find the input table or query '" + table + "'.");
    ChecksumSink sink(*t);
    s.query("SELECT " + columnList(*t) + " FROM " + t->name, sink);
    return sink.sum();
}

std::vector<TableCopy> countArchive(Session& s) {
    std::vector<TableCopy> out;
    for (const sql::Table& t : sql::catalog().tables()) out.push_back({t.name, countRows(s, t.name)});
    return out;
}

std::vector<TableCopy> copyArchive(Session& from, Session& to, bool replace,
                                   const std::function<void(const TableCopy&)>& progress) {
    const int level = to.begin();
    std::vector<TableCopy> done;
    try {
        for (const sql::Table& t : sql::catalog().tables()) {
            if (countRows(to, t.name) > 0) {
                if (!replace)
                    throw Error(err::ProviderFailure, kSource,
                                "The target archive already holds rows (table " + t.name + "); nothing was copied.");
                to.execute("DELETE FROM " + t.name);
            }
            RowWriter writer(to, t);
            from.query("SELECT " + columnList(t) + " FROM " + t.name, writer);
            const long long there = countRows(to, t.name);
            if (there != writer.rows() || there != countRows(from, t.name))
                throw Error(err::ProviderFailure, kSource,
                            "The copy of table " + t.name + " holds " + std::to_string(there) + " rows where the source has " +
                                std::to_string(countRows(from, t.name)) + "; nothing was copied.");
            if (tableChecksum(to, t.name) != tableChecksum(from, t.name))
                throw Error(err::ProviderFailure, kSource,
                            "The copy of table " + t.name + " differs from the source in its values; nothing was copied.");
            done.push_back({t.name, writer.rows()});
            if (progress) progress(done.back());
        }
        to.commit();
    } catch (...) {
        while (to.depth() >= level) to.rollback();
        throw;
    }
    return done;
}

}  // namespace hist::backend
