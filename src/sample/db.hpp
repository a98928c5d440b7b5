#pragma once
// A plain engine connection on an archive file, with the archive's collation and
// functions registered, for the bulk load and the counts.
#include <sqlite3.h>

#include <string>

#include "backends/sqlite/functions.hpp"
#include "platform/error.hpp"

namespace hist::sample::detail {

inline constexpr const char* kSource = "historicos.sample";

class Db {
public:
    explicit Db(const std::string& path) : path_(path) {
        if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
            std::string msg = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close(db_);
            throw hist::Error(err::InvalidCall, kSource, "Cannot open " + path + ": " + msg);
        }
        sqlite3_busy_timeout(db_, 2000);
        if (backend::sqlite::registerFunctions(db_) != SQLITE_OK)
            throw hist::Error(err::InvalidCall, kSource, "Cannot register the archive's collation");
    }
    ~Db() { sqlite3_close(db_); }
    Db(const Db&) = delete;
    Db& operator=(const Db&) = delete;

    sqlite3* get() const { return db_; }
    void exec(const std::string& text) {
        char* msg = nullptr;
        if (sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &msg) != SQLITE_OK) {
            std::string m = msg ? msg : "unknown failure";
            sqlite3_free(msg);
            throw hist::Error(err::InvalidCall, kSource, path_ + ": " + m + " in " + text);
        }
    }
    std::string pragma(const std::string& name) {
        sqlite3_stmt* s = nullptr;
        std::string out;
        if (sqlite3_prepare_v2(db_, ("PRAGMA " + name).c_str(), -1, &s, nullptr) == SQLITE_OK &&
            sqlite3_step(s) == SQLITE_ROW && sqlite3_column_text(s, 0))
            out = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
        sqlite3_finalize(s);
        return out;
    }
    // The first column of the first row of a selection, as a whole number.
    long long scalar(const std::string& sql) {
        sqlite3_stmt* s = nullptr;
        long long n = 0;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &s, nullptr) != SQLITE_OK) {
            std::string m = sqlite3_errmsg(db_);
            sqlite3_finalize(s);
            throw hist::Error(err::InvalidCall, kSource, path_ + ": " + m);
        }
        const int rc = sqlite3_step(s);
        if (rc == SQLITE_ROW) n = sqlite3_column_int64(s, 0);
        const std::string m = rc == SQLITE_ROW ? "" : sqlite3_errmsg(db_);
        sqlite3_finalize(s);
        if (rc != SQLITE_ROW) throw hist::Error(err::InvalidCall, kSource, path_ + ": " + m);
        return n;
    }
    long long count(const std::string& table) { return scalar("SELECT COUNT(*) FROM " + table); }

private:
    std::string path_;
    sqlite3* db_ = nullptr;
};

}  // namespace hist::sample::detail
