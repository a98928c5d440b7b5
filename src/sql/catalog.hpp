#pragma once
// The archive catalog: every table and column the statements touch, with the
// desktop engine's type, the metadata a recordset field reports (ADO type,
// precision, defined size), the stored default and the keys. It generates the
// DDL, types the translator's coercions and the recordset's fields.
//
// The data is data/catalog.tsv, embedded in the library (catalog_data.cpp is
// generated from it by data/embed_catalog.py).
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sql/statement_kind.hpp"

namespace hist::sql {

// The desktop engine's column types.
enum class JetType { Long, Integer, Double, Date, YesNo, Text, Memo };

struct Column {
    std::string table;
    std::string name;         // the declared spelling
    JetType jet = JetType::Text;
    int adoType = 202;        // ADO DataTypeEnum value
    int precision = 255;
    long definedSize = 0;
    bool nullable = true;
    std::string defaultValue; // the stored default, empty for none
    std::string key;          // "PK1", "IX2", ... or empty
    int ordinal = 0;          // position in its table

    bool isNumber() const { return jet == JetType::Long || jet == JetType::Integer || jet == JetType::Double; }
    bool isText() const { return jet == JetType::Text || jet == JetType::Memo; }
    // The SQLite declared type with its collation ("VARCHAR(10) COLLATE JETTEXT").
    std::string declaredType() const;
    // The server engine's type: text as citext (case-blind comparison and LIKE),
    // yes/no as smallint -1/0, dates as timestamp, numbers as double precision.
    std::string serverType() const;
};

// Hashing and equality of names without regard to ASCII case, usable with views.
struct NameHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const noexcept;
};
struct NameEq {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept;
};
using NameIndex = std::unordered_map<std::string, size_t, NameHash, NameEq>;

struct Table {
    std::string name;
    std::vector<Column> columns;
    NameIndex index;  // column name -> position
    // The column by name, case ignored; null when the table has none.
    const Column* column(std::string_view name) const;
};

class Catalog {
public:
    // Parses a catalog in the TSV layout (header row first). Throws hist::Error 5
    // on a malformed row.
    static Catalog parse(std::string_view tsv);

    const std::vector<Table>& tables() const { return tables_; }
    // The table by name, case ignored; null when the catalog has none.
    const Table* table(std::string_view name) const;
    // CREATE TABLE and CREATE INDEX statements for every table, each ending in ';'.
    // The server's tables also get the hidden row identity (kServerRowId) last.
    std::string ddl(Dialect dialect = Dialect::Embedded) const;
    // The same for one table.
    std::string tableDdl(const Table& t, Dialect dialect = Dialect::Embedded) const;

private:
    std::vector<Table> tables_;
    NameIndex index_;  // table name -> position
};

// The library's catalog (parsed once from the embedded data).
const Catalog& catalog();
// The embedded TSV text.
const char* catalogTsv();

// The name of the case-insensitive collation declared on text columns.
inline constexpr const char* kTextCollation = "JETTEXT";

// ASCII case-insensitive equality of identifiers.
bool sameName(std::string_view a, std::string_view b);

}  // namespace hist::sql
