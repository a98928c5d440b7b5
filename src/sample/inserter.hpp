#pragma once
// A prepared INSERT for one catalog table, bound cell by cell in the order of the
// column list it was made with. The column list is checked against the catalog, so
// a misspelt or missing column fails at once, not as a silent null.
#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hist::sample::detail {

class Inserter {
public:
    // `twin`: a second table with the same columns (a live table) that receives the
    // rows marked with mirror().
    Inserter(sqlite3* db, std::string table, std::vector<std::string> columns,
             std::string twin = {});
    ~Inserter();
    Inserter(const Inserter&) = delete;
    Inserter& operator=(const Inserter&) = delete;

    // The next row goes to the twin table as well.
    Inserter& mirror();
    Inserter& i(int64_t v);
    Inserter& d(double v);
    Inserter& t(std::string_view v);
    Inserter& null();
    Inserter& yn(bool v) { return i(v ? -1 : 0); }
    // A date serial with seconds into the day, in the stored ISO form.
    Inserter& date(int serial, int seconds = 0);
    // A time-only value (on 1899-12-30).
    Inserter& time(int seconds) { return date(0, seconds); }
    // Text, or null when empty.
    Inserter& tn(std::string_view v) { return v.empty() ? null() : t(v); }
    // Runs the row; every column must have been bound.
    void row();

    const std::string& table() const { return table_; }
    long long rows() const { return rows_; }

private:
    void check(int rc, const char* what);
    int next();

    sqlite3* db_;
    std::string table_;
    std::size_t columns_;
    sqlite3_stmt* stmt_ = nullptr;
    sqlite3_stmt* twin_ = nullptr;
    bool mirror_ = false;
    int index_ = 0;
    long long rows_ = 0;
};

}  // namespace hist::sample::detail
