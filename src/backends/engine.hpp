#pragma once
// The engine-neutral interface the data layer runs statements through. A backend
// (the embedded SQLite file, or a PostgreSQL server) gives sessions; each session owns one engine
// handle for its whole life and belongs to one Connection at a time.
//
// Texts handed to a session are already in the engine's dialect (the translator in
// sql/ produced them) and are guarded there: one statement, of the kind expected,
// on the catalog's tables only.
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/variant.hpp"
#include "sql/statement_kind.hpp"

namespace hist::backend {

// ADO DataTypeEnum values the catalog declares.
enum class FieldType : int {
    Empty = 0,
    SmallInt = 2,      // adSmallInt, Integer
    Integer = 3,       // adInteger, Long
    Single = 4,        // adSingle
    Double = 5,        // adDouble
    Currency = 6,      // adCurrency
    Boolean = 11,      // adBoolean (yes/no)
    UnsignedTinyInt = 17,  // adUnsignedTinyInt, Byte
    Numeric = 131,     // adNumeric
    Date = 7,          // adDate
    WChar = 130,       // adWChar
    VarWChar = 202,    // adVarWChar (text)
    LongVarWChar = 203,  // adLongVarWChar (memo)
    LongVarBinary = 205, // adLongVarBinary
};

// What a selection's column is, as the recordset reports it.
struct ColumnMeta {
    std::string name;        // as the SELECT list writes it (the alias, or the column as written)
    std::string baseTable;   // the catalog table the value comes from; empty when computed
    std::string baseColumn;  // the catalog column; empty when computed
    FieldType type = FieldType::VarWChar;
    int precision = 255;
    long definedSize = 0;
    bool hiddenRowId = false;  // the engine's row identity of baseTable, not shown in Fields
    bool updatable = false;    // a plain column of a base table whose identity the selection carries
};

// One cell as the engine hands it over; views are valid during the row callback only.
struct Cell {
    enum class Kind : uint8_t { Null, Int, Real, Text } kind = Kind::Null;
    int64_t i = 0;
    double d = 0.0;
    std::string_view text;
};

class RowSink {
public:
    virtual ~RowSink() = default;
    virtual void columns(const std::vector<ColumnMeta>& cols) = 0;
    // One row; cells.size() equals the column count, hidden row-identity columns included.
    virtual void row(std::span<const Cell> cells) = 0;
};

// The translator and the sessions share one notion of the kind a call expects.
using StatementKind = sql::StatementKind;

class Session {
public:
    virtual ~Session() = default;
    // Runs a reading statement and streams its rows. Where the selection allows
    // write-back, the session itself adds each base table's row identity as a hidden
    // column (ColumnMeta::hiddenRowId), so `sent` stays as the translator gave it.
    virtual void query(std::string_view sent, RowSink& sink) = 0;
    // Runs a writing statement; returns the number of rows it touched.
    virtual long long execute(std::string_view sent) = 0;
    // A writing statement with bound values (write-back of a recordset); the values
    // are stored in the engine's stored forms for the column types given.
    virtual long long execute(std::string_view sent, std::span<const Variant> params,
                              std::span<const FieldType> types) = 0;
    virtual long long lastInsertRowId() = 0;

    // Transactions; nesting allowed. begin returns the new level (1 for the outermost).
    virtual int begin() = 0;
    virtual void commit() = 0;
    virtual void rollback() = 0;
    virtual int depth() const = 0;

    // The engine's own check of the archive's storage: one line per problem, none
    // when it is sound (an engine without such a check finds none).
    virtual std::vector<std::string> integrityCheck() { return {}; }
    // The dialect the translator renders statements in for this session.
    virtual sql::Dialect dialect() const { return sql::Dialect::Embedded; }
};

struct DataSource {
    std::string kind = "sqlite";  // backend name: "sqlite", or "postgresql"
    std::string path;             // the archive file, or the server's postgresql://user@host:port/name
    int busyTimeoutMs = 2000;
    int statementTimeoutMs = 30000;  // a statement running longer is interrupted; 0: no limit
    std::string auditLog;            // the audit log of the session's writes; empty: none
};

// Whether a data source names a server archive: kind "postgresql", or a path that
// is a postgresql:// (or postgres://) address.
bool isServerSource(const DataSource& ds);

// Opens a session on an existing archive. A missing file, a folder, and a file that
// is not an archive (none of the catalog's tables) are refused with an error that
// names the file; such a file is left as it was. An archive that lacks some newer
// catalog tables gains them. A file or folder this process may not write opens
// read-only: reads work, and a write fails naming the file as read-only.
// Throws hist::Error on failure.
std::unique_ptr<Session> openSession(const DataSource& ds);

// Creates the catalog's tables in a new file, an empty file (no bytes, or a database
// with no objects), or an archive (which gains the tables it lacks), and opens a
// session on it. Any other file is refused, unchanged.
std::unique_ptr<Session> createArchive(const DataSource& ds);

}  // namespace hist::backend
