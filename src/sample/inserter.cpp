#include "sample/inserter.hpp"

#include "platform/error.hpp"
#include "sample/db.hpp"
#include "sample/detail.hpp"
#include "sql/catalog.hpp"

namespace hist::sample::detail {

namespace {

sqlite3_stmt* prepare(sqlite3* db, const std::string& table, const std::vector<std::string>& cols) {
    const sql::Table* t = sql::catalog().table(table);
    if (!t) throw Error(err::InvalidCall, kSource, "Table not in the catalog: " + table);
    std::string text = "INSERT INTO " + table + " (";
    std::string marks;
    for (std::size_t k = 0; k < cols.size(); ++k) {
        if (!t->column(cols[k]))
            throw Error(err::InvalidCall, kSource, "Column not in the catalog: " + table + "." + cols[k]);
        text += (k ? ", " : "") + cols[k];
        marks += k ? ", ?" : "?";
    }
    text += ") VALUES (" + marks + ")";
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v3(db, text.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr) != SQLITE_OK)
        throw Error(err::InvalidCall, kSource, std::string(sqlite3_errmsg(db)) + " in " + text);
    return s;
}
}  // namespace

Inserter::Inserter(sqlite3* db, std::string table, std::vector<std::string> columns, std::string twin)
    : db_(db), table_(std::move(table)), columns_(columns.size()) {
    stmt_ = prepare(db_, table_, columns);
    if (!twin.empty()) twin_ = prepare(db_, twin, columns);
}

Inserter::~Inserter() {
    sqlite3_finalize(stmt_);
    sqlite3_finalize(twin_);
}

void Inserter::check(int rc, const char* what) {
    if (rc != SQLITE_OK && rc != SQLITE_DONE)
        throw Error(err::InvalidCall, kSource,
                    std::string(what) + " " + table_ + ": " + sqlite3_errmsg(db_));
}

Inserter& Inserter::mirror() {
    if (!twin_) throw Error(err::InvalidCall, kSource, "No live twin for " + table_);
    mirror_ = true;
    return *this;
}

int Inserter::next() {
    if (static_cast<std::size_t>(index_) >= columns_)
        throw Error(err::InvalidCall, kSource, "Too many values for " + table_);
    return ++index_;
}

Inserter& Inserter::i(int64_t v) {
    const int k = next();
    check(sqlite3_bind_int64(stmt_, k, v), "bind");
    if (mirror_) check(sqlite3_bind_int64(twin_, k, v), "bind");
    return *this;
}

Inserter& Inserter::d(double v) {
    const int k = next();
    check(sqlite3_bind_double(stmt_, k, v), "bind");
    if (mirror_) check(sqlite3_bind_double(twin_, k, v), "bind");
    return *this;
}

Inserter& Inserter::t(std::string_view v) {
    const int k = next();
    check(sqlite3_bind_text(stmt_, k, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT), "bind");
    if (mirror_)
        check(sqlite3_bind_text(twin_, k, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT), "bind");
    return *this;
}

Inserter& Inserter::null() {
    const int k = next();
    check(sqlite3_bind_null(stmt_, k), "bind");
    if (mirror_) check(sqlite3_bind_null(twin_, k), "bind");
    return *this;
}

Inserter& Inserter::date(int serial, int seconds) { return t(isoText(serial, seconds)); }

void Inserter::row() {
    if (static_cast<std::size_t>(index_) != columns_)
        throw Error(err::InvalidCall, kSource, "Too few values for " + table_);
    check(sqlite3_step(stmt_), "insert into");
    sqlite3_reset(stmt_);
    ++rows_;
    if (mirror_) {
        check(sqlite3_step(twin_), "insert into the twin of");
        sqlite3_reset(twin_);
    }
    mirror_ = false;
    index_ = 0;
}

}  // namespace hist::sample::detail
