#include "backends/sqlite/session.hpp"

#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "backends/sqlite/functions.hpp"
#include "backends/stored.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "sql/catalog.hpp"
#include "sql/selection.hpp"

namespace hist::backend::sqlite {

namespace {

// Virtual machine steps between two looks at the statement's deadline: a clock read
// every few thousand steps costs nothing measurable.
constexpr int kProgressSteps = 4096;

const char* const kInvalidStatement =
    "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";

// Functions a guarded statement may call: the engine's pure scalar and aggregate
// functions and our own. Anything else (load_extension, ...) is refused.
bool allowedFunction(const char* name) {
    static const char* const ok[] = {
        "like",     "jet_currency", "max",     "min",      "sum",        "count",  "avg",      "total",
        "abs",      "round",        "coalesce", "ifnull",  "nullif",     "iif",    "length",   "lower",
        "upper",    "substr",       "substring", "trim",   "ltrim",      "rtrim",  "replace",  "instr",
        "date",     "time",         "datetime", "julianday", "strftime", "typeof", "cast",     "floor",
        "ceil",     "ceiling",      "trunc",    "sign",    "group_concat", "printf", "char",   "unicode",
        "hex",      "quote",        "glob",     "min",     "max",        "random"};
    for (const char* f : ok)
        if (sqlite3_stricmp(f, name) == 0) return true;
    return false;
}

const char* actionName(int action) {
    switch (action) {
        case SQLITE_CREATE_INDEX: case SQLITE_CREATE_TABLE: case SQLITE_CREATE_TEMP_INDEX:
        case SQLITE_CREATE_TEMP_TABLE: case SQLITE_CREATE_TEMP_TRIGGER: case SQLITE_CREATE_TEMP_VIEW:
        case SQLITE_CREATE_TRIGGER: case SQLITE_CREATE_VIEW: case SQLITE_CREATE_VTABLE:
        case SQLITE_DROP_INDEX: case SQLITE_DROP_TABLE: case SQLITE_DROP_TEMP_INDEX:
        case SQLITE_DROP_TEMP_TABLE: case SQLITE_DROP_TEMP_TRIGGER: case SQLITE_DROP_TEMP_VIEW:
        case SQLITE_DROP_TRIGGER: case SQLITE_DROP_VIEW: case SQLITE_DROP_VTABLE: case SQLITE_ALTER_TABLE:
            return "schema changes are not allowed";
        case SQLITE_PRAGMA: return "PRAGMA is not allowed";
        case SQLITE_ATTACH: return "ATTACH is not allowed";
        case SQLITE_DETACH: return "DETACH is not allowed";
        case SQLITE_TRANSACTION: case SQLITE_SAVEPOINT:
            return "transaction control goes through the connection, not a statement";
        case SQLITE_ANALYZE: return "ANALYZE is not allowed";
        case SQLITE_REINDEX: return "REINDEX is not allowed";
        case SQLITE_RECURSIVE: return "recursive queries are not allowed";
        default: return "the operation is not allowed";
    }
}

std::string placeOf(std::string_view sent) {
    auto toks = sql::tokenize(sent);
    for (const auto& t : toks) {
        if (t.kind == sql::Tok::Blank) continue;
        if (t.isWord("INSERT")) return "INSERT INTO statement";
        if (t.isWord("UPDATE")) return "UPDATE statement";
        if (t.isWord("DELETE")) return "DELETE statement";
        break;
    }
    return "query expression";
}

// The path as a file: URI, for the read-only open's parameters.
std::string fileUri(const std::string& path) {
    static const char hex[] = "0123456789ABCDEF";
    std::string out = "file:";
    for (unsigned char c : path) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/' || c == '.' ||
            c == '-' || c == '_' || c == '~') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

bool mayWrite(const std::string& path) { return ::access(path.c_str(), W_OK) == 0; }

class SqliteSession final : public Session {
public:
    SqliteSession(const DataSource& ds, OpenMode mode) : path_(ds.path), timeoutMs_(ds.statementTimeoutMs) {
        namespace fs = std::filesystem;
        std::error_code ec;
        const fs::file_status st = fs::status(path_, ec);
        if (fs::is_directory(st))
            throw Error(err::ProviderFailure, err::SrcSql, "The archive '" + path_ + "' is a folder, not an archive file.");
        const bool exists = fs::exists(st);
        if (!exists && mode == OpenMode::Existing)
            throw Error(err::ProviderFailure, err::SrcSql,
                        "Could not find the archive file '" + path_ +
                            "'; name an existing archive, or create one with historicos init.");
        // A file or folder this process may not write is opened read-only, so it can still be read.
        const std::string folder = fs::path(path_).has_parent_path() ? fs::path(path_).parent_path().string() : ".";
        const bool folderWritable = mayWrite(folder);
        readOnly_ = exists && (!mayWrite(path_) || !folderWritable);
        std::string name = path_;
        int flags = SQLITE_OPEN_NOMUTEX;
        if (readOnly_) {
            flags |= SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
            name = fileUri(path_) + "?mode=ro";
            // A reader of a WAL archive needs the shared-memory index beside it; where
            // the folder cannot take one and no writer left a log, the file is read as
            // it stands.
            if (!folderWritable && !fs::exists(path_ + "-wal", ec)) name += "&immutable=1";
        } else {
            flags |= SQLITE_OPEN_READWRITE | (mode == OpenMode::Create ? SQLITE_OPEN_CREATE : 0);
        }
        int rc = sqlite3_open_v2(name.c_str(), &db_, flags, nullptr);
        if (rc != SQLITE_OK) {
            std::string msg = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close(db_);
            db_ = nullptr;
            throw Error(err::ProviderFailure, err::SrcSql, "Could not open the archive '" + ds.path + "': " + msg + ".");
        }
        sqlite3_extended_result_codes(db_, 1);
        sqlite3_busy_timeout(db_, ds.busyTimeoutMs);
        sqlite3_db_config(db_, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
        sqlite3_db_config(db_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(db_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        sqlite3_limit(db_, SQLITE_LIMIT_ATTACHED, 0);
        if (timeoutMs_ > 0) sqlite3_progress_handler(db_, kProgressSteps, &SqliteSession::progress, this);
        try {
            if (registerFunctions(db_) != SQLITE_OK) fail(SQLITE_ERROR, "");
            // Nothing is written to a file before it is known to be an archive (or empty,
            // when creating): another program's database keeps its tables and journal.
            const SchemaSeen seen = readSchema();
            const bool empty = seen.objects == 0;
            if (seen.catalogTables == 0 && (mode == OpenMode::Existing || !empty))
                throw Error(err::ProviderFailure, err::SrcSql,
                            "The file '" + path_ + "' is not an archive (" +
                                (empty ? std::string("it is empty") : std::string("it has none of the catalog's tables")) +
                                "); name an archive file, or create one with historicos init.");
            if (!readOnly_) internalExec("PRAGMA journal_mode=WAL");
            internalExec("PRAGMA foreign_keys=OFF");
            // An archive made before a table joined the catalog gains it; a read-only one
            // is read as it is.
            if (seen.catalogTables < sql::catalog().tables().size() && (!readOnly_ || seen.catalogTables == 0))
                createSchema();
        } catch (...) {
            sqlite3_close(db_);
            db_ = nullptr;
            throw;
        }
        sqlite3_set_authorizer(db_, &SqliteSession::authorize, this);
    }

    ~SqliteSession() override {
        if (!db_) return;
        if (depth_ > 0) {
            internal_ = true;
            sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
        }
        sqlite3_close_v2(db_);
    }

    void query(std::string_view sent, RowSink& sink) override {
        Deadline deadline(*this);
        auto shape = sql::analyzeSelection(sent);
        std::string text(sent);
        std::vector<const sql::Table*> hidden;
        // Row identities: one per base table whose plain columns the selection shows.
        Stmt probe = prepare(text, StatementKind::Read);
        if (shape.rowPerBaseRow && shape.fromPos != std::string_view::npos) {
            std::string extra;
            int n = sqlite3_column_count(probe.s);
            for (int c = 0; c < n; ++c) {
                const char* tab = sqlite3_column_table_name(probe.s, c);
                if (!tab) continue;
                const sql::SelectionSource* src = shape.source(tab);
                if (!src || src->occurrences != 1 || src->qualifier.empty()) continue;
                bool seen = false;
                for (auto* h : hidden) seen = seen || h == src->table;
                if (seen) continue;
                hidden.push_back(src->table);
                extra += ", " + src->qualifier + ".rowid AS hist_rowid_" + std::to_string(hidden.size()) + " ";
            }
            if (!hidden.empty()) {
                text.insert(shape.fromPos, extra);
                probe = prepare(text, StatementKind::Read);
            }
        }
        sqlite3_stmt* st = probe.s;
        const int total = sqlite3_column_count(st);
        const int shown = total - static_cast<int>(hidden.size());
        int rc = sqlite3_step(st);
        if (rc != SQLITE_ROW && rc != SQLITE_DONE) fail(rc, sent);

        std::vector<ColumnMeta> cols(static_cast<size_t>(total));
        const auto& cat = sql::catalog();
        for (int c = 0; c < shown; ++c) {
            ColumnMeta& m = cols[static_cast<size_t>(c)];
            m.name = sqlite3_column_name(st, c);
            const char* tab = sqlite3_column_table_name(st, c);
            const char* origin = sqlite3_column_origin_name(st, c);
            const sql::Column* col = nullptr;
            if (tab && origin) {
                if (const sql::Table* t = cat.table(tab)) col = t->column(origin);
                if (col) {
                    m.baseTable = col->table;
                    m.baseColumn = col->name;
                    for (auto* h : hidden) m.updatable = m.updatable || h->name == col->table;
                }
            } else if (detail::typeFromItem(m, shape, static_cast<size_t>(c), static_cast<size_t>(shown))) {
                continue;
            }
            if (col) {
                detail::typeFromCatalog(m, *col);
            } else {
                // A computed value with no catalog column behind it: typed by what it holds.
                int t = rc == SQLITE_ROW ? sqlite3_column_type(st, c) : SQLITE_NULL;
                detail::typeComputed(m, t == SQLITE_INTEGER ? detail::ValueKind::Integer
                                        : t == SQLITE_FLOAT ? detail::ValueKind::Real
                                                            : detail::ValueKind::Text);
            }
        }
        for (size_t h = 0; h < hidden.size(); ++h) {
            ColumnMeta& m = cols[static_cast<size_t>(shown) + h];
            m.name = sqlite3_column_name(st, shown + static_cast<int>(h));
            detail::typeRowId(m, hidden[h]->name, "rowid");
        }
        sink.columns(cols);

        std::vector<Cell> cells(static_cast<size_t>(total));
        while (rc == SQLITE_ROW) {
            for (int c = 0; c < total; ++c) {
                Cell& cell = cells[static_cast<size_t>(c)];
                switch (sqlite3_column_type(st, c)) {
                    case SQLITE_INTEGER:
                        cell.kind = Cell::Kind::Int;
                        cell.i = sqlite3_column_int64(st, c);
                        break;
                    case SQLITE_FLOAT:
                        cell.kind = Cell::Kind::Real;
                        cell.d = sqlite3_column_double(st, c);
                        break;
                    case SQLITE_NULL: cell.kind = Cell::Kind::Null; break;
                    default: {
                        const unsigned char* p = sqlite3_column_text(st, c);
                        cell.kind = Cell::Kind::Text;
                        cell.text = std::string_view(reinterpret_cast<const char*>(p),
                                                     static_cast<size_t>(sqlite3_column_bytes(st, c)));
                    }
                }
            }
            sink.row(cells);
            rc = sqlite3_step(st);
        }
        if (rc != SQLITE_DONE) fail(rc, sent);
    }

    long long execute(std::string_view sent) override { return execute(sent, {}, {}); }

    long long execute(std::string_view sent, std::span<const Variant> params,
                      std::span<const FieldType> types) override {
        Deadline deadline(*this);
        Stmt st = prepare(sent, StatementKind::Write);
        int expected = sqlite3_bind_parameter_count(st.s);
        if (static_cast<size_t>(expected) != params.size())
            throw Error(err::SqlNoValue, err::SrcSql, "No value given for one or more required parameters.");
        for (size_t i = 0; i < params.size(); ++i)
            bind(st.s, static_cast<int>(i) + 1, params[i], i < types.size() ? types[i] : FieldType::Empty);
        int rc;
        while ((rc = sqlite3_step(st.s)) == SQLITE_ROW) {
        }
        if (rc != SQLITE_DONE) fail(rc, sent);
        return sqlite3_changes64(db_);
    }

    long long lastInsertRowId() override { return sqlite3_last_insert_rowid(db_); }

    int begin() override {
        if (depth_ == 0) {
            transactionExec("BEGIN IMMEDIATE");
        } else {
            transactionExec(("SAVEPOINT hist_sp_" + std::to_string(depth_ + 1)).c_str());
        }
        return ++depth_;
    }

    void commit() override {
        requireTransaction();
        if (depth_ == 1) {
            transactionExec("COMMIT");
        } else {
            transactionExec(("RELEASE hist_sp_" + std::to_string(depth_)).c_str());
        }
        --depth_;
    }

    void rollback() override {
        requireTransaction();
        if (depth_ == 1) {
            transactionExec("ROLLBACK");
        } else {
            std::string sp = "hist_sp_" + std::to_string(depth_);
            transactionExec(("ROLLBACK TO " + sp).c_str());
            transactionExec(("RELEASE " + sp).c_str());
        }
        --depth_;
    }

    int depth() const override { return depth_; }

    std::vector<std::string> integrityCheck() override {
        // The session's own statement: the guard that refuses a caller's PRAGMA stands aside.
        std::vector<std::string> problems;
        sqlite3_stmt* st = nullptr;
        internal_ = true;
        int rc = sqlite3_prepare_v2(db_, "PRAGMA integrity_check", -1, &st, nullptr);
        if (rc == SQLITE_OK) {
            while ((rc = sqlite3_step(st)) == SQLITE_ROW) {
                const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
                if (t && std::string_view(t) != "ok") problems.emplace_back(t);
            }
        }
        sqlite3_finalize(st);
        internal_ = false;
        if (rc != SQLITE_DONE) fail(rc, "PRAGMA integrity_check");
        return problems;
    }

private:
    using SteadyClock = std::chrono::steady_clock;

    // Arms the statement timeout for one call.
    struct Deadline {
        SqliteSession& s;
        explicit Deadline(SqliteSession& session) : s(session) {
            s.timedOut_ = false;
            if (s.timeoutMs_ <= 0) return;
            s.deadline_ = SteadyClock::now() + std::chrono::milliseconds(s.timeoutMs_);
            s.timing_ = true;
        }
        ~Deadline() { s.timing_ = false; }
        Deadline(const Deadline&) = delete;
        Deadline& operator=(const Deadline&) = delete;
    };

    // The engine's progress callback: a non-zero answer interrupts the statement.
    static int progress(void* self) {
        auto* s = static_cast<SqliteSession*>(self);
        if (!s->timing_ || SteadyClock::now() < s->deadline_) return 0;
        s->timedOut_ = true;
        return 1;
    }

    struct Stmt {
        sqlite3_stmt* s = nullptr;
        Stmt() = default;
        explicit Stmt(sqlite3_stmt* x) : s(x) {}
        Stmt(Stmt&& o) noexcept : s(o.s) { o.s = nullptr; }
        Stmt& operator=(Stmt&& o) noexcept {
            if (this != &o) {
                sqlite3_finalize(s);
                s = o.s;
                o.s = nullptr;
            }
            return *this;
        }
        ~Stmt() { sqlite3_finalize(s); }
    };

    // Prepares one guarded statement of the expected kind.
    Stmt prepare(std::string_view sent, StatementKind kind) {
        kind_ = kind;
        internal_ = false;
        denial_.clear();
        denialStrong_ = false;
        sqlite3_stmt* raw = nullptr;
        const char* tail = nullptr;
        int rc = sqlite3_prepare_v2(db_, sent.data(), static_cast<int>(sent.size()), &raw, &tail);
        Stmt st(raw);
        if (rc != SQLITE_OK) fail(rc, sent);
        if (!raw) throw Error(err::SqlSyntax, err::SrcSql, kInvalidStatement);
        for (const char* p = tail; p && p < sent.data() + sent.size(); ++p) {
            if (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == ';') continue;
            throw Error(err::SqlPermission, err::SrcSql, "Permission denied: only one statement is allowed per call.");
        }
        bool readonly = sqlite3_stmt_readonly(raw) != 0;
        if (kind == StatementKind::Read && !readonly)
            throw Error(err::SqlPermission, err::SrcSql, "Permission denied: a reading call may not change the archive.");
        if (kind == StatementKind::Write && readonly)
            throw Error(err::SqlPermission, err::SrcSql,
                        "Permission denied: a writing call expects INSERT, UPDATE or DELETE.");
        return st;
    }

    static int authorize(void* self, int action, const char* a, const char* b, const char* dbName, const char*) {
        auto* s = static_cast<SqliteSession*>(self);
        if (s->internal_) return SQLITE_OK;
        auto inCatalog = [&](const char* table) {
            return table && (!dbName || std::strcmp(dbName, "main") == 0) && sql::catalog().table(table) != nullptr;
        };
        // The first reason stands, except that the reason of the statement's own
        // action (a schema change, a PRAGMA) outranks the schema-table accesses it implies.
        auto deny = [&](std::string why, bool strong = false) {
            if (s->denial_.empty() || (strong && !s->denialStrong_)) {
                s->denial_ = std::move(why);
                s->denialStrong_ = strong;
            }
            return SQLITE_DENY;
        };
        switch (action) {
            case SQLITE_SELECT: return SQLITE_OK;
            case SQLITE_READ:
                if (inCatalog(a)) return SQLITE_OK;
                return deny(std::string("the table '") + (a ? a : "") + "' is outside the archive catalog");
            case SQLITE_INSERT:
            case SQLITE_UPDATE:
            case SQLITE_DELETE:
                if (s->kind_ == StatementKind::Read) return deny("a reading call may not change the archive");
                if (inCatalog(a)) return SQLITE_OK;
                return deny(std::string("the table '") + (a ? a : "") + "' is outside the archive catalog");
            case SQLITE_FUNCTION:
                if (b && allowedFunction(b)) return SQLITE_OK;
                return deny(std::string("the function '") + (b ? b : "") + "' is not allowed");
            default: return deny(actionName(action), true);
        }
    }

    [[noreturn]] void fail(int rc, std::string_view sent) {
        std::string msg = sqlite3_errmsg(db_);
        int primary = rc & 0xff;
        if (primary == SQLITE_AUTH || (!denial_.empty() && msg.find("not authorized") != std::string::npos)) {
            // DDL reads the schema table before it asks for its own action, so name the action.
            auto toks = sql::tokenize(sent);
            for (const auto& t : toks) {
                if (t.kind == sql::Tok::Blank) continue;
                if (t.isWord("CREATE") || t.isWord("DROP") || t.isWord("ALTER")) denial_ = actionName(SQLITE_DROP_TABLE);
                break;
            }
            throw Error(err::SqlPermission, err::SrcSql,
                        "Permission denied: " + (denial_.empty() ? msg : denial_) + ".");
        }
        switch (primary) {
            case SQLITE_INTERRUPT:
                if (!timedOut_) break;
                // An interrupted write may have ended the transaction it ran in.
                if (depth_ > 0 && sqlite3_get_autocommit(db_)) depth_ = 0;
                throw Error(err::SqlTimeout, err::SrcSql, "Query timeout expired");
            case SQLITE_NOTADB:
                throw Error(err::ProviderFailure, err::SrcSql, "The file '" + path_ + "' is not an archive (" + msg + ").");
            case SQLITE_READONLY:
                throw Error(err::ProviderFailure, err::SrcSql,
                            "The archive '" + path_ + "' is read-only: it can be read but not changed (" + msg + ").");
            case SQLITE_CORRUPT:
            case SQLITE_IOERR:
            case SQLITE_CANTOPEN:
            case SQLITE_FULL:
            case SQLITE_PERM:
            case SQLITE_PROTOCOL:
            case SQLITE_NOLFS:
                throw Error(err::ProviderFailure, err::SrcSql, "The archive '" + path_ + "' cannot be used: " + msg + ".");
            default: break;
        }
        if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED)
            throw Error(err::ProviderFailure, err::SrcSql, "Could not update; currently locked.");
        if (msg.starts_with("no such table: ")) {
            std::string name = msg.substr(15);
            if (name.starts_with("main.")) name = name.substr(5);
            throw Error(err::SqlNoTable, err::SrcSql, "Cannot find the input table or query '" + name + "'.");
        }
        if (msg.starts_with("no such column: "))
            throw Error(err::SqlNoValue, err::SrcSql,
                        "No value given for one or more required parameters (unknown field '" + msg.substr(16) + "').");
        if (msg.find("values for") != std::string::npos || msg.find("values were supplied") != std::string::npos)
            throw Error(err::SqlSyntax, err::SrcSql, "Number of query values and destination fields are not the same.");
        if (rc == SQLITE_CONSTRAINT_UNIQUE || rc == SQLITE_CONSTRAINT_PRIMARYKEY)
            throw Error(err::ProviderFailure, err::SrcSql,
                        "The changes you requested to the table were not successful because they would create "
                        "duplicate values in the index, primary key, or relationship.");
        if (rc == SQLITE_CONSTRAINT_NOTNULL)
            throw Error(err::ProviderFailure, err::SrcSql, "Field cannot contain a Null value (" + msg + ").");
        if (primary == SQLITE_MISMATCH || msg.find("Data type mismatch") != std::string::npos)
            throw Error(err::SqlTypeMismatch, err::SrcSql, "Data type mismatch in criteria expression.");
        if (primary == SQLITE_ERROR &&
            (msg.find("syntax error") != std::string::npos || msg.find("incomplete input") != std::string::npos ||
             msg.find("unrecognized token") != std::string::npos))
            throw Error(err::SqlSyntax, err::SrcSql, "Syntax error in " + placeOf(sent) + " (" + msg + ").");
        throw Error(err::ProviderFailure, err::SrcSql, msg);
    }

    static void bind(sqlite3_stmt* st, int idx, const Variant& v, FieldType type) {
        const detail::StoredValue x = detail::storedValue(v, type);
        switch (x.kind) {
            case detail::StoredValue::Kind::Null: sqlite3_bind_null(st, idx); return;
            case detail::StoredValue::Kind::Int: sqlite3_bind_int64(st, idx, x.i); return;
            case detail::StoredValue::Kind::Real: sqlite3_bind_double(st, idx, x.d); return;
            case detail::StoredValue::Kind::Text:
                sqlite3_bind_text(st, idx, x.text.data(), static_cast<int>(x.text.size()), SQLITE_TRANSIENT);
                return;
        }
    }

    void internalExec(const char* sqlText) {
        internal_ = true;
        char* errmsg = nullptr;
        int rc = sqlite3_exec(db_, sqlText, nullptr, nullptr, &errmsg);
        internal_ = false;
        sqlite3_free(errmsg);
        if (rc != SQLITE_OK) fail(rc, sqlText);
    }

    void transactionExec(const char* sqlText) { internalExec(sqlText); }

    void requireTransaction() const {
        if (depth_ == 0) throw Error(err::NoTransaction, err::SrcSql, "No transaction is active.");
    }

    struct SchemaSeen {
        size_t objects = 0;        // tables, indexes, views and triggers of any kind
        size_t catalogTables = 0;  // tables the catalog names
    };

    // Reads the schema only, so that opening a complete archive takes no write lock
    // and never waits for another connection's transaction.
    SchemaSeen readSchema() {
        const auto& cat = sql::catalog();
        sqlite3_stmt* st = nullptr;
        internal_ = true;
        int rc = sqlite3_prepare_v2(db_, "SELECT type, name FROM sqlite_master", -1, &st, nullptr);
        SchemaSeen seen;
        if (rc == SQLITE_OK) {
            while ((rc = sqlite3_step(st)) == SQLITE_ROW) {
                ++seen.objects;
                auto type = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
                auto name = reinterpret_cast<const char*>(sqlite3_column_text(st, 1));
                if (type && name && std::strcmp(type, "table") == 0 && cat.table(name)) ++seen.catalogTables;
            }
        }
        sqlite3_finalize(st);
        internal_ = false;
        if (rc != SQLITE_DONE) fail(rc, "SELECT type, name FROM sqlite_master");
        return seen;
    }

    void createSchema() {
        const auto& cat = sql::catalog();
        std::string ddl = cat.ddl();
        // IF NOT EXISTS, so an archive made before a table joined the catalog gains it.
        std::string guarded;
        guarded.reserve(ddl.size() + 1024);
        size_t pos = 0;
        while (pos < ddl.size()) {
            size_t ct = ddl.find("CREATE TABLE ", pos), ci = ddl.find("CREATE INDEX ", pos);
            size_t next = std::min(ct, ci);
            if (next == std::string::npos) {
                guarded.append(ddl, pos, std::string::npos);
                break;
            }
            guarded.append(ddl, pos, next - pos);
            guarded += next == ct ? "CREATE TABLE IF NOT EXISTS " : "CREATE INDEX IF NOT EXISTS ";
            pos = next + 13;
        }
        internalExec("BEGIN IMMEDIATE");
        try {
            internalExec(guarded.c_str());
            internalExec("COMMIT");
        } catch (...) {
            internal_ = true;
            sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
            internal_ = false;
            throw;
        }
    }

    sqlite3* db_ = nullptr;
    std::string path_;
    bool readOnly_ = false;
    int timeoutMs_ = 0;
    bool timing_ = false;
    bool timedOut_ = false;
    SteadyClock::time_point deadline_{};
    int depth_ = 0;
    bool internal_ = true;
    StatementKind kind_ = StatementKind::Read;
    std::string denial_;
    bool denialStrong_ = false;
};

}  // namespace

std::unique_ptr<Session> open(const DataSource& ds, OpenMode mode) {
    return std::make_unique<SqliteSession>(ds, mode);
}

}  // namespace hist::backend::sqlite
