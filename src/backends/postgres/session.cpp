#include "backends/postgres/session.hpp"

#include <libpq-fe.h>

#include <charconv>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "backends/address.hpp"
#include "backends/stored.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"
#include "sql/selection.hpp"
#include "sql/tokenizer.hpp"

namespace hist::backend::postgres {

namespace {

// Result column types by their built-in type numbers (pg_type.oid).
constexpr Oid kBool = 16, kInt8 = 20, kInt2 = 21, kInt4 = 23, kFloat4 = 700, kFloat8 = 701, kNumeric = 1700;

const char* const kInvalidStatement =
    "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";

// Functions a guarded statement may call (the ones the translator writes and the
// plain scalar and aggregate ones), and the keywords a parenthesis may follow.
bool allowedBeforeParen(std::string_view word) {
    static const char* const ok[] = {
        "max",   "min",    "sum",    "count",     "avg",    "abs",    "round",  "coalesce", "nullif", "lower",
        "upper", "length", "substr", "substring", "trim",   "ltrim",  "rtrim",  "replace",  "floor",  "ceil",
        "ceiling", "trunc", "sign",  "position",  "left",   "right",  "cast",   "in",       "exists", "values",
        "and",   "or",     "not",    "on",        "as",     "select", "from",   "where",    "when",   "then",
        "else",  "between", "like",  "is",        "set",    "any",    "all",    "using",    "distinct", "join",
        "by",    "having", "union",  "numeric"};
    for (const char* f : ok)
        if (sql::sameName(word, f)) return true;
    return false;
}

[[noreturn]] void denied(const std::string& why) {
    throw Error(err::SqlPermission, err::SrcSql, "Permission denied: " + why + ".");
}

std::string placeOf(std::string_view firstWord) {
    if (sql::sameName(firstWord, "INSERT")) return "INSERT INTO statement";
    if (sql::sameName(firstWord, "UPDATE")) return "UPDATE statement";
    if (sql::sameName(firstWord, "DELETE")) return "DELETE statement";
    return "query expression";
}

bool plainName(std::string_view s) {
    if (s.empty() || (s[0] >= '0' && s[0] <= '9')) return false;
    for (char c : s)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_')) return false;
    return true;
}

// The statement as the server reads it: the write-back's "?" marks become $1, $2,
// ... and its double-quoted plain names bare names (the schema's names are
// unquoted, so they fold to lower case as the statements' own names do). Strings
// are copied as they are.
std::string serverText(std::string_view sent, int* marks) {
    std::string out;
    out.reserve(sent.size() + 8);
    int n = 0;
    for (size_t i = 0; i < sent.size(); ++i) {
        const char c = sent[i];
        if (c == '\'') {
            size_t end = i + 1;
            while (end < sent.size()) {
                if (sent[end] == '\'' && end + 1 < sent.size() && sent[end + 1] == '\'') end += 2;
                else if (sent[end] == '\'') break;
                else ++end;
            }
            out.append(sent.substr(i, end + 1 - i));
            i = end;
        } else if (c == '"') {
            size_t end = sent.find('"', i + 1);
            std::string_view name = end == std::string_view::npos ? std::string_view() : sent.substr(i + 1, end - i - 1);
            if (plainName(name)) {
                out.append(name);
                i = end;
            } else {
                out += c;
            }
        } else if (c == '?') {
            out += '$' + std::to_string(++n);
        } else {
            out += c;
        }
    }
    if (marks) *marks = n;
    return out;
}

// Whether the statement has an ORDER BY of its own (outside parentheses).
bool hasOrder(std::string_view text) {
    auto toks = sql::tokenize(text);
    int depth = 0;
    const sql::Token* prev = nullptr;
    for (const auto& t : toks) {
        if (t.kind == sql::Tok::Blank) continue;
        if (t.is("(")) ++depth;
        else if (t.is(")")) --depth;
        else if (depth == 0 && prev && prev->isWord("ORDER") && t.isWord("BY")) return true;
        prev = &t;
    }
    return false;
}

// Appends ORDER BY `key` before the statement's closing semicolons and blanks.
void appendOrder(std::string& text, const std::string& key) {
    size_t end = text.size();
    while (end > 0 && (text[end - 1] == ';' || text[end - 1] == ' ' || text[end - 1] == '\n' ||
                       text[end - 1] == '\t' || text[end - 1] == '\r'))
        --end;
    text.insert(end, " ORDER BY " + key);
}

// The alias an item gives its column (`x AS Name`), as written; empty for none.
std::string aliasOf(std::string_view item) {
    auto toks = sql::tokenize(item);
    std::vector<const sql::Token*> solid;
    for (const auto& t : toks)
        if (t.kind != sql::Tok::Blank) solid.push_back(&t);
    if (solid.size() >= 3 && solid.back()->kind == sql::Tok::Word && solid[solid.size() - 2]->isWord("AS"))
        return std::string(solid.back()->text);
    return {};
}

// The server's address without a password, for messages.
std::string addressOf(PGconn* conn, const std::string& given) {
    if (!conn) return given;
    const char* host = PQhost(conn);
    const char* port = PQport(conn);
    const char* db = PQdb(conn);
    const char* user = PQuser(conn);
    std::string out = std::string(user && *user ? std::string(user) + "@" : "") + (host ? host : "") +
                      (port && *port ? std::string(":") + port : "") + "/" + (db ? db : "");
    return out;
}

struct Result {
    PGresult* r = nullptr;
    Result() = default;
    explicit Result(PGresult* x) : r(x) {}
    Result(Result&& o) noexcept : r(std::exchange(o.r, nullptr)) {}
    Result& operator=(Result&& o) noexcept {
        if (this != &o) {
            PQclear(r);
            r = std::exchange(o.r, nullptr);
        }
        return *this;
    }
    ~Result() { PQclear(r); }
    ExecStatusType status() const { return r ? PQresultStatus(r) : PGRES_FATAL_ERROR; }
    bool ok() const { return status() == PGRES_COMMAND_OK || status() == PGRES_TUPLES_OK; }
};

class PgSession final : public Session {
public:
    PgSession(const DataSource& ds, OpenMode mode) {
        // connect_timeout bounds a server that does not answer; the address may hold
        // its own parameters, which win over nothing here but the database name.
        const char* keys[] = {"dbname", "connect_timeout", "application_name", "client_encoding", nullptr};
        const char* values[] = {ds.path.c_str(), "10", "historicos", "UTF8", nullptr};
        conn_ = PQconnectdbParams(keys, values, 1);
        if (!conn_ || PQstatus(conn_) != CONNECTION_OK) {
            std::string msg = conn_ ? PQerrorMessage(conn_) : "out of memory";
            while (!msg.empty() && (msg.back() == '\n' || msg.back() == ' ')) msg.pop_back();
            std::string where = addressOf(conn_, ds.path);
            PQfinish(conn_);
            conn_ = nullptr;
            throw Error(err::ProviderFailure, err::SrcSql,
                        "Could not connect to the archive server " + where + ": " + msg +
                            " (check that the server is running and that the address, user and password are right).");
        }
        address_ = addressOf(conn_, ds.path);
        // The server's notices ("already exists, skipping") are not for the user.
        PQsetNoticeProcessor(conn_, [](void*, const char*) {}, nullptr);
        try {
            checkCharacterType();
            internal("SET DateStyle = 'ISO, YMD'");
            internal("SET standard_conforming_strings = on");
            internal("SET lock_timeout = " + std::to_string(ds.busyTimeoutMs > 0 ? ds.busyTimeoutMs : 1));
            internal("SET statement_timeout = " + std::to_string(ds.statementTimeoutMs > 0 ? ds.statementTimeoutMs : 0));
            size_t found = readSchema();
            if (found == 0 && mode == OpenMode::Existing)
                throw Error(err::ProviderFailure, err::SrcSql,
                            "The database " + address_ +
                                " holds no archive (none of the catalog's tables); create one with historicos init --db " +
                                shownAddress(ds.path) + ".");
            if (found < sql::catalog().tables().size()) {
                createSchema();
                readSchema();
            }
        } catch (...) {
            PQfinish(conn_);
            conn_ = nullptr;
            throw;
        }
    }

    ~PgSession() override {
        if (!conn_) return;
        if (depth_ > 0) PQclear(PQexec(conn_, "ROLLBACK"));
        PQfinish(conn_);
    }

    sql::Dialect dialect() const override { return sql::Dialect::Server; }

    void query(std::string_view sent, RowSink& sink) override {
        std::string text = serverText(sent, nullptr);
        guard(text, StatementKind::Read);
        StatementScope scope(*this);
        const std::string original = text;  // the shape's items view it; `text` may grow
        auto shape = sql::analyzeSelection(original);
        std::vector<const sql::Table*> hidden;  // tables whose identity the session adds
        Result res;
        if (shape.rowPerBaseRow && shape.fromPos != std::string_view::npos) {
            Result desc = describe(text);
            std::vector<const sql::Table*> shownIds;  // identities the selection shows itself (SELECT *)
            for (int c = 0; c < PQnfields(desc.r); ++c)
                if (columnOf(desc.r, c) == &rowIdColumn_) shownIds.push_back(tableOf(desc.r, c));
            std::string extra;
            for (int c = 0; c < PQnfields(desc.r); ++c) {
                const sql::Table* t = tableOf(desc.r, c);
                if (!t) continue;
                const sql::SelectionSource* src = shape.source(t->name);
                if (!src || src->occurrences != 1 || src->qualifier.empty()) continue;
                bool seen = false;
                for (auto* h : hidden) seen = seen || h == t;
                for (auto* h : shownIds) seen = seen || h == t;
                if (seen) continue;
                hidden.push_back(t);
                extra += ", " + src->qualifier + "." + sql::kServerRowId + " AS hist_rowid_" +
                         std::to_string(hidden.size()) + " ";
            }
            if (!extra.empty()) text.insert(shape.fromPos, extra);
            // One table read without an order comes in the order its rows were written,
            // as the embedded engine gives it (the server would give its storage order,
            // which an update changes).
            if (shape.sources.size() == 1 && !shape.sources[0].qualifier.empty() && !hasOrder(text))
                appendOrder(text, shape.sources[0].qualifier + "." + sql::kServerRowId);
        }
        res = run(text, {}, sent);
        const int total = PQnfields(res.r);
        std::vector<ColumnMeta> cols(static_cast<size_t>(total));
        std::vector<const sql::Table*> updatableTables = hidden;
        for (int c = 0; c < total; ++c)
            if (columnOf(res.r, c) == &rowIdColumn_) updatableTables.push_back(tableOf(res.r, c));
        const int shown = total - static_cast<int>(hidden.size());
        const int rows = PQntuples(res.r);
        for (int c = 0; c < total; ++c) {
            ColumnMeta& m = cols[static_cast<size_t>(c)];
            m.name = PQfname(res.r, c);
            const sql::Column* col = columnOf(res.r, c);
            if (col == &rowIdColumn_) {
                detail::typeRowId(m, tableOf(res.r, c)->name, sql::kServerRowId);
                continue;
            }
            // The server folds unquoted names to lower case: a column is named as the
            // embedded engine names it, by its alias as written, else the catalog's spelling.
            if (c < shown && static_cast<size_t>(shown) == shape.items.size() && !shape.hasStar) {
                if (std::string alias = aliasOf(shape.items[static_cast<size_t>(c)]); !alias.empty()) m.name = alias;
            }
            if (col) {
                if (sql::sameName(m.name, col->name)) m.name = col->name;
                m.baseTable = col->table;
                m.baseColumn = col->name;
                for (auto* t : updatableTables) m.updatable = m.updatable || t->name == col->table;
                detail::typeFromCatalog(m, *col);
                continue;
            }
            if (c < shown && static_cast<size_t>(shown) == shape.items.size() && !shape.hasStar) {
                // An unnamed expression is named by its text, as the embedded engine names it.
                std::string_view item = shape.items[static_cast<size_t>(c)];
                if (item.size() > m.name.size() && item[m.name.size()] == '(' &&
                    sql::sameName(item.substr(0, m.name.size()), m.name))
                    m.name = std::string(item);
            }
            if (c < shown && detail::typeFromItem(m, shape, static_cast<size_t>(c), static_cast<size_t>(shown))) continue;
            // A computed value with no catalog column behind it: typed by the server's type.
            switch (PQftype(res.r, c)) {
                case kInt2: case kInt4: case kInt8: case kBool: detail::typeComputed(m, detail::ValueKind::Integer); break;
                case kFloat4: case kFloat8: case kNumeric: detail::typeComputed(m, detail::ValueKind::Real); break;
                default: detail::typeComputed(m, detail::ValueKind::Text);
            }
        }
        sink.columns(cols);
        std::vector<Oid> types(static_cast<size_t>(total));
        for (int c = 0; c < total; ++c) types[static_cast<size_t>(c)] = PQftype(res.r, c);
        std::vector<Cell> cells(static_cast<size_t>(total));
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < total; ++c) {
                Cell& cell = cells[static_cast<size_t>(c)];
                if (PQgetisnull(res.r, r, c)) {
                    cell.kind = Cell::Kind::Null;
                    continue;
                }
                const char* v = PQgetvalue(res.r, r, c);
                const size_t len = static_cast<size_t>(PQgetlength(res.r, r, c));
                switch (types[static_cast<size_t>(c)]) {
                    case kInt2: case kInt4: case kInt8:
                        cell.kind = Cell::Kind::Int;
                        std::from_chars(v, v + len, cell.i);
                        break;
                    case kBool:
                        cell.kind = Cell::Kind::Int;
                        cell.i = v[0] == 't' ? -1 : 0;
                        break;
                    case kFloat4: case kFloat8: case kNumeric:
                        cell.kind = Cell::Kind::Real;
                        std::from_chars(v, v + len, cell.d);
                        break;
                    default:
                        cell.kind = Cell::Kind::Text;
                        cell.text = std::string_view(v, len);
                }
            }
            sink.row(cells);
        }
        scope.done();
    }

    long long execute(std::string_view sent) override { return execute(sent, {}, {}); }

    long long execute(std::string_view sent, std::span<const Variant> params,
                      std::span<const FieldType> types) override {
        int marks = 0;
        std::string text = serverText(sent, &marks);
        const bool insert = guard(text, StatementKind::Write);
        if (static_cast<size_t>(marks) != params.size())
            throw Error(err::SqlNoValue, err::SrcSql, "No value given for one or more required parameters.");
        std::vector<std::string> values(params.size());
        std::vector<bool> nulls(params.size());
        for (size_t i = 0; i < params.size(); ++i)
            nulls[i] = !bound(params[i], i < types.size() ? types[i] : FieldType::Empty, values[i]);
        if (insert) {
            // The new rows' identity comes back with the insert itself.
            while (!text.empty() && (text.back() == ';' || text.back() == ' ' || text.back() == '\n' ||
                                     text.back() == '\t' || text.back() == '\r'))
                text.pop_back();
            text += std::string(" RETURNING ") + sql::kServerRowId;
        }
        StatementScope scope(*this);
        std::vector<const char*> ptrs(params.size());
        for (size_t i = 0; i < params.size(); ++i) ptrs[i] = nulls[i] ? nullptr : values[i].c_str();
        Result res = run(text, ptrs, sent);
        if (insert && PQntuples(res.r) > 0) {
            const char* v = PQgetvalue(res.r, PQntuples(res.r) - 1, 0);
            std::from_chars(v, v + std::strlen(v), lastId_);
        }
        const char* n = PQcmdTuples(res.r);
        long long count = 0;
        if (n && *n) std::from_chars(n, n + std::strlen(n), count);
        scope.done();
        return count;
    }

    long long lastInsertRowId() override { return lastId_; }

    int begin() override {
        internal(depth_ == 0 ? std::string("BEGIN") : "SAVEPOINT hist_sp_" + std::to_string(depth_ + 1));
        return ++depth_;
    }

    void commit() override {
        requireTransaction();
        internal(depth_ == 1 ? std::string("COMMIT") : "RELEASE hist_sp_" + std::to_string(depth_));
        --depth_;
    }

    void rollback() override {
        requireTransaction();
        if (depth_ == 1) {
            internal("ROLLBACK");
        } else {
            std::string sp = "hist_sp_" + std::to_string(depth_);
            internal("ROLLBACK TO " + sp);
            internal("RELEASE " + sp);
        }
        --depth_;
    }

    int depth() const override { return depth_; }

private:
    // Inside a transaction a failed statement would end the server's transaction
    // for good; the embedded engine keeps it usable. So each statement in a
    // transaction runs under a savepoint of its own, rolled back when it fails.
    class StatementScope {
    public:
        explicit StatementScope(PgSession& s) : s_(s), armed_(s.depth_ > 0) {
            if (armed_) s_.internal("SAVEPOINT hist_stmt");
        }
        void done() {
            if (!armed_) return;
            armed_ = false;
            s_.internal("RELEASE hist_stmt");
        }
        ~StatementScope() {
            if (armed_ && s_.conn_ && PQstatus(s_.conn_) == CONNECTION_OK) {
                PQclear(PQexec(s_.conn_, "ROLLBACK TO hist_stmt"));
                PQclear(PQexec(s_.conn_, "RELEASE hist_stmt"));
            }
        }
        StatementScope(const StatementScope&) = delete;
        StatementScope& operator=(const StatementScope&) = delete;

    private:
        PgSession& s_;
        bool armed_;
    };

    // The statement guard: one statement of the expected kind, the catalog's
    // tables only, no function outside the allowed ones. Returns whether it is an
    // INSERT. (The extended protocol refuses a second statement on its own.)
    bool guard(std::string_view text, StatementKind kind) {
        auto toks = sql::tokenize(text);
        std::vector<const sql::Token*> solid;
        for (const auto& t : toks)
            if (t.kind != sql::Tok::Blank) solid.push_back(&t);
        if (solid.empty()) throw Error(err::SqlSyntax, err::SrcSql, kInvalidStatement);
        const sql::Token& first = *solid[0];
        firstWord_ = std::string(first.text);
        const bool select = first.isWord("SELECT");
        const bool write = first.isWord("INSERT") || first.isWord("UPDATE") || first.isWord("DELETE");
        if (!select && !write) {
            // The engine's own statements are refused by name, as the embedded engine refuses them.
            for (const char* w : {"CREATE", "DROP", "ALTER", "TRUNCATE", "COMMENT", "GRANT", "REVOKE", "REINDEX"})
                if (first.isWord(w)) denied("schema changes are not allowed");
            for (const char* w : {"BEGIN", "COMMIT", "ROLLBACK", "SAVEPOINT", "RELEASE", "START", "END", "ABORT"})
                if (first.isWord(w)) denied("transaction control goes through the connection, not a statement");
            for (const char* w : {"COPY", "SET", "RESET", "SHOW", "DO", "CALL", "LOCK", "VACUUM", "ANALYZE",
                                  "LISTEN", "NOTIFY", "LOAD", "PREPARE", "EXECUTE", "DISCARD", "WITH"})
                if (first.isWord(w)) denied(std::string(w) + " is not allowed");
            throw Error(err::SqlSyntax, err::SrcSql, kInvalidStatement);
        }
        if (kind == StatementKind::Read && !select) denied("a reading call may not change the archive");
        if (kind == StatementKind::Write && !write) denied("a writing call expects INSERT, UPDATE or DELETE");
        for (size_t k = 0; k < solid.size(); ++k) {
            const sql::Token& t = *solid[k];
            if (t.is(";")) {
                for (size_t m = k + 1; m < solid.size(); ++m)
                    if (!solid[m]->is(";")) denied("only one statement is allowed per call");
            }
            if (t.kind != sql::Tok::Word) continue;
            if (select && t.isWord("INTO")) denied("a selection may not make a table");
            // The server's own tables and other schemas are never the archive's.
            if ((t.text.size() >= 3 && sql::sameName(t.text.substr(0, 3), "pg_")) ||
                sql::sameName(t.text, "information_schema"))
                if (!(k + 1 < solid.size() && solid[k + 1]->is("(")))
                    denied("the table '" + std::string(t.text) + "' is outside the archive catalog");
            if (k + 1 < solid.size() && solid[k + 1]->is("(") && !allowedBeforeParen(t.text) &&
                !(k > 0 && solid[k - 1]->isWord("INTO")))
                denied("the function '" + std::string(t.text) + "' is not allowed");
            const bool names = t.isWord("FROM") || t.isWord("JOIN") || t.isWord("INTO") ||
                               (k == 0 && t.isWord("UPDATE"));
            if (!names) continue;
            // The tables it names (FROM A, B): a name the catalog lacks is refused when
            // the server has such a table; else the server reports it unknown.
            int depth = 0;
            for (size_t m = k + 1; m < solid.size(); ++m) {
                const sql::Token& n = *solid[m];
                if (n.is("(")) ++depth;
                else if (n.is(")")) --depth;
                if (depth < 0) break;
                const bool named = m == k + 1 || (depth == 0 && solid[m - 1]->is(","));
                if (named && n.kind == sql::Tok::Word && !sql::catalog().table(n.text)) {
                    const bool qualified = m + 1 < solid.size() && solid[m + 1]->is(".");
                    if (qualified || serverHasTable(n.text))
                        denied("the table '" + std::string(n.text) + "' is outside the archive catalog");
                }
                if (!t.isWord("FROM") || (depth == 0 && n.kind == sql::Tok::Word &&
                                          (n.isWord("WHERE") || n.isWord("GROUP") || n.isWord("ORDER") ||
                                           n.isWord("HAVING") || n.isWord("UNION") || n.isWord("JOIN"))))
                    break;
            }
        }
        return first.isWord("INSERT");
    }

    // Whether a name the catalog lacks is a table (or view, ...) the server knows.
    bool serverHasTable(std::string_view name) {
        const std::string n(name);
        const char* values[] = {n.c_str()};
        Result res(PQexecParams(conn_, "SELECT to_regclass($1) IS NOT NULL", 1, nullptr, values, nullptr, nullptr, 0));
        if (!res.ok()) fail(res, "SELECT to_regclass");
        return PQntuples(res.r) == 1 && PQgetvalue(res.r, 0, 0)[0] == 't';
    }

    Result describe(const std::string& text) {
        Result prep(PQprepare(conn_, "", text.c_str(), 0, nullptr));
        if (!prep.ok()) fail(prep, text);
        Result desc(PQdescribePrepared(conn_, ""));
        if (!desc.ok()) fail(desc, text);
        return desc;
    }

    Result run(const std::string& text, const std::vector<const char*>& params, std::string_view sent) {
        Result res(PQexecParams(conn_, text.c_str(), static_cast<int>(params.size()), nullptr, params.data(), nullptr,
                                nullptr, 0));
        if (!res.ok()) fail(res, sent);
        return res;
    }

    // A value in the text form of the column's stored type; false for Null.
    static bool bound(const Variant& v, FieldType type, std::string& out) {
        detail::StoredValue x = detail::storedValue(v, type);
        switch (x.kind) {
            case detail::StoredValue::Kind::Null: return false;
            case detail::StoredValue::Kind::Int: out = std::to_string(x.i); return true;
            case detail::StoredValue::Kind::Real: {
                // The shortest text that reads back as the same double.
                char buf[32];
                auto r = std::to_chars(buf, buf + sizeof buf, x.d);
                out.assign(buf, r.ptr);
                return true;
            }
            case detail::StoredValue::Kind::Text: out = std::move(x.text); return true;
        }
        return false;
    }

    void internal(const std::string& text) {
        Result res(PQexec(conn_, text.c_str()));
        if (!res.ok()) fail(res, text);
    }

    void requireTransaction() const {
        if (depth_ == 0) throw Error(err::NoTransaction, err::SrcSql, "No transaction is active.");
    }

    // The database must fold case as Unicode does: citext compares by the
    // database's character type, which only a UTF-8 locale gives.
    void checkCharacterType() {
        Result res(PQexec(conn_, "SELECT datctype FROM pg_database WHERE datname = current_database()"));
        if (!res.ok() || PQntuples(res.r) != 1) fail(res, "SELECT datctype");
        std::string ctype = PQgetvalue(res.r, 0, 0);
        std::string lower;
        for (char c : ctype) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        if (lower.find("utf-8") == std::string::npos && lower.find("utf8") == std::string::npos)
            throw Error(err::ProviderFailure, err::SrcSql,
                        "The database " + address_ + " has the character type '" + ctype +
                            "', which is not a UTF-8 locale, so text would not compare without regard to case "
                            "('\xC3\x81' and '\xC3\xA1' would differ); create the database with LC_CTYPE 'C.UTF-8' "
                            "(CREATE DATABASE ... LC_CTYPE 'C.UTF-8' TEMPLATE template0).");
    }

    // Reads which catalog tables the database holds, and the server's numbers of
    // their tables and columns, which result columns carry. Returns the count.
    size_t readSchema() {
        tables_.clear();
        Result res(PQexec(conn_,
                          "SELECT c.oid, c.relname, a.attnum, a.attname FROM pg_class c "
                          "JOIN pg_attribute a ON a.attrelid = c.oid "
                          "WHERE c.relnamespace = current_schema()::regnamespace AND c.relkind = 'r' "
                          "AND a.attnum > 0 AND NOT a.attisdropped"));
        if (!res.ok()) fail(res, "SELECT ... FROM pg_class");
        std::map<Oid, bool> seen;
        for (int r = 0; r < PQntuples(res.r); ++r) {
            const sql::Table* t = sql::catalog().table(PQgetvalue(res.r, r, 1));
            if (!t) continue;
            Oid oid = static_cast<Oid>(std::strtoul(PQgetvalue(res.r, r, 0), nullptr, 10));
            int attnum = std::atoi(PQgetvalue(res.r, r, 2));
            std::string_view name = PQgetvalue(res.r, r, 3);
            TableInfo& info = tables_[oid];
            info.table = t;
            const sql::Column* col = sql::sameName(name, sql::kServerRowId) ? &rowIdColumn_ : t->column(name);
            if (col) info.columns[attnum] = col;
            seen[oid] = true;
        }
        return seen.size();
    }

    void createSchema() {
        const auto& cat = sql::catalog();
        std::string ddl = "CREATE EXTENSION IF NOT EXISTS citext;\n";
        for (const sql::Table& t : cat.tables()) {
            bool present = false;
            for (const auto& [oid, info] : tables_) present = present || info.table == &t;
            if (!present) ddl += cat.tableDdl(t, sql::Dialect::Server);
        }
        internal(depth_ > 0 ? "SAVEPOINT hist_schema" : "BEGIN");
        Result res(PQexec(conn_, ddl.c_str()));
        if (!res.ok()) {
            PQclear(PQexec(conn_, depth_ > 0 ? "ROLLBACK TO hist_schema" : "ROLLBACK"));
            fail(res, "CREATE TABLE");
        }
        internal(depth_ > 0 ? "RELEASE hist_schema" : "COMMIT");
    }

    const sql::Table* tableOf(PGresult* r, int c) const {
        auto it = tables_.find(PQftable(r, c));
        return it == tables_.end() ? nullptr : it->second.table;
    }
    const sql::Column* columnOf(PGresult* r, int c) const {
        auto it = tables_.find(PQftable(r, c));
        if (it == tables_.end()) return nullptr;
        auto col = it->second.columns.find(PQftablecol(r, c));
        return col == it->second.columns.end() ? nullptr : col->second;
    }

    [[noreturn]] void fail(const Result& res, std::string_view sent) {
        std::string msg = res.r ? PQresultErrorMessage(res.r) : "";
        if (msg.empty()) msg = PQerrorMessage(conn_);
        while (!msg.empty() && (msg.back() == '\n' || msg.back() == ' ')) msg.pop_back();
        if (msg.starts_with("ERROR:  ")) msg = msg.substr(8);
        if (size_t nl = msg.find('\n'); nl != std::string::npos) msg.resize(nl);  // the server's LINE and caret
        const char* st = res.r ? PQresultErrorField(res.r, PG_DIAG_SQLSTATE) : nullptr;
        const std::string state = st ? st : "";
        if (PQstatus(conn_) != CONNECTION_OK || state.starts_with("08")) {
            depth_ = 0;  // the server ends a lost session's transaction
            throw Error(err::ProviderFailure, err::SrcSql,
                        "The connection to the archive server " + address_ + " was lost (" + msg +
                            "); nothing of the unfinished transaction was kept.");
        }
        if (state == "57014") throw Error(err::SqlTimeout, err::SrcSql, "Query timeout expired");
        if (state == "55P03" || state == "40P01" || state == "40001")
            throw Error(err::ProviderFailure, err::SrcSql, "Could not update; currently locked.");
        if (state == "42P01") {
            std::string name = msg;
            if (auto a = msg.find('"'), b = msg.rfind('"'); a != std::string::npos && b > a) name = msg.substr(a + 1, b - a - 1);
            // The server folds the name to lower case; name it as the statement spells it.
            for (const auto& t : sql::tokenize(sent))
                if (t.kind == sql::Tok::Word && sql::sameName(t.text, name)) name = std::string(t.text);
            throw Error(err::SqlNoTable, err::SrcSql, "Cannot find the input table or query '" + name + "'.");
        }
        if (state == "42703")
            throw Error(err::SqlNoValue, err::SrcSql, "No value given for one or more required parameters (" + msg + ").");
        if (msg.find("more expressions than target columns") != std::string::npos ||
            msg.find("more target columns than expressions") != std::string::npos)
            throw Error(err::SqlSyntax, err::SrcSql, "Number of query values and destination fields are not the same.");
        if (msg.find("multiple commands") != std::string::npos) denied("only one statement is allowed per call");
        if (state == "42501") denied(msg);
        if (state == "23505")
            throw Error(err::ProviderFailure, err::SrcSql,
                        "The changes you requested to the table were not successful because they would create "
                        "duplicate values in the index, primary key, or relationship.");
        if (state == "23502") throw Error(err::ProviderFailure, err::SrcSql, "Field cannot contain a Null value (" + msg + ").");
        // Values the column's type cannot take, operators without such operand types.
        if (state.starts_with("22") || state == "42804" || state == "42883" || state == "23514" || state == "42846")
            throw Error(err::SqlTypeMismatch, err::SrcSql, "Data type mismatch in criteria expression.");
        if (state == "42601" || state == "42000")
            throw Error(err::SqlSyntax, err::SrcSql, "Syntax error in " + placeOf(firstWord_) + " (" + msg + ").");
        throw Error(err::ProviderFailure, err::SrcSql, msg);
    }

    struct TableInfo {
        const sql::Table* table = nullptr;
        std::map<int, const sql::Column*> columns;  // attnum -> catalog column (or the row identity)
    };

    PGconn* conn_ = nullptr;
    std::string address_;
    std::map<Oid, TableInfo> tables_;
    sql::Column rowIdColumn_;  // stands for the hidden identity in tables_
    int depth_ = 0;
    long long lastId_ = 0;
    std::string firstWord_;
};

}  // namespace

std::unique_ptr<Session> open(const DataSource& ds, OpenMode mode) { return std::make_unique<PgSession>(ds, mode); }

}  // namespace hist::backend::postgres
