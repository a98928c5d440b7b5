// `historicos init` and the archive summary.
#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string>

#include "backends/engine.hpp"
#include "platform/error.hpp"
#include "sample/db.hpp"
#include "sample/sample.hpp"
#include "sql/catalog.hpp"

namespace hist::sample {

using detail::Db;

namespace {

std::string money(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.2f", v);
    return buf;
}

std::string pad(std::string s, std::size_t width) {
    // Width in characters, not bytes: accented letters take two bytes in UTF-8.
    std::size_t chars = 0;
    for (unsigned char ch : s) chars += (ch & 0xC0) != 0x80;
    if (chars < width) s.append(width - chars, ' ');
    return s;
}

std::string text(sqlite3_stmt* s, int col) {
    const unsigned char* t = sqlite3_column_text(s, col);
    return t ? reinterpret_cast<const char*>(t) : "";
}

// Prints the newest rows of a document table: number, series, date, customer, total.
void newest(Db& db, std::ostream& out, const char* title, const char* table, int limit) {
    const std::string q = std::string("SELECT Numero, Serie, Fecha, Razon_Social, Total FROM ") + table +
                          " ORDER BY Fecha DESC, Numero DESC LIMIT " + std::to_string(limit);
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(db.get(), q.c_str(), -1, &s, nullptr) != SQLITE_OK) {
        std::string m = sqlite3_errmsg(db.get());
        sqlite3_finalize(s);
        throw Error(err::InvalidCall, detail::kSource, m);
    }
    out << title << ":\n";
    bool any = false;
    while (sqlite3_step(s) == SQLITE_ROW) {
        any = true;
        out << "  " << pad(text(s, 1) + "/" + text(s, 0), 9) << "  " << text(s, 2).substr(0, 10) << "  "
            << pad(text(s, 3), 48) << " " << money(sqlite3_column_double(s, 4)) << "\n";
    }
    if (!any) out << "  (none)\n";
    sqlite3_finalize(s);
}

// True when the file holds rows in any catalog table, or is not an archive at all.
bool holdsRows(const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return false;
    if (std::filesystem::file_size(path, ec) == 0 && !ec) return false;
    try {
        for (const TableCount& t : countRows(path))
            if (t.rows > 0) return true;
        return false;
    } catch (const Error&) {
        return true;
    }
}

}  // namespace

void summary(const std::string& dbPath, std::ostream& out) {
    out << "Archive " << dbPath << "\n";
    Db db(dbPath);
    long long total = 0;
    for (const sql::Table& t : sql::catalog().tables()) {
        const long long n = db.count(t.name);
        total += n;
        out << "  " << pad(t.name, 32) << " " << n << "\n";
    }
    out << "  " << pad("(all tables)", 32) << " " << total << "\n";
    newest(db, out, "Newest work orders", "HOrdenes", 5);
    newest(db, out, "Newest invoices", "HFacturas", 5);
}

int initCommand(const InitOptions& o, std::ostream& out, std::ostream& err) {
    const std::string& db = o.db;
    const bool force = o.force, sample = o.sample;
    Options opt = o.generation;

    try {
        if (holdsRows(db)) {
            if (!force) {
                err << "historicos init: " << db << " already holds an archive with rows; "
                    << "use --force to replace it\n";
                return 1;
            }
            std::error_code ec;
            for (const char* suffix : {"", "-wal", "-shm", "-journal"})
                std::filesystem::remove(db + suffix, ec);
        }
        if (!sample) {
            backend::DataSource ds;
            ds.path = db;
            backend::openSession(ds);
            out << "Created " << db << " with the catalog's tables.\n";
            summary(db, out);
            return 0;
        }
        // Long runs say how far they are, about every tenth of the way.
        const std::size_t step = opt.orders >= 20000 ? opt.orders / 10 : 0;
        std::size_t nextReport = step;
        opt.progress = [&](std::size_t done, std::size_t total) {
            if (step && (done >= nextReport || done == total)) {
                out << "  work orders written: " << done << " of " << total << "\n" << std::flush;
                while (nextReport <= done) nextReport += step;
            }
        };
        const Result r = generate(db, opt);
        char secs[32];
        std::snprintf(secs, sizeof secs, "%.1f", r.seconds);
        out << "Filled " << db << " with a sample history (" << opt.orders << " work orders, seed " << opt.seed
            << ") in " << secs << " s.\n";
        summary(db, out);
        return 0;
    } catch (const Error& e) {
        err << "historicos init: " << e.description() << "\n";
        return 1;
    } catch (const std::exception& e) {
        err << "historicos init: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace hist::sample
