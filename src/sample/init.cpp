// `historicos init` and the archive summary.
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string>

#include "backends/address.hpp"
#include "backends/copy.hpp"
#include "backends/engine.hpp"
#include "platform/error.hpp"
#include "platform/progress.hpp"
#include "sample/db.hpp"
#include "sample/sample.hpp"

#include "platform/progress.hpp"
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

// What lies at the path init is to write.
enum class Target {
    Free,             // no file, or an empty one
    EmptyArchive,     // an archive without rows
    ArchiveWithRows,  // replaced only with --force
    NotArchive,       // never replaced: a folder, another program's file, a damaged archive
};

struct Found {
    Target target = Target::Free;
    std::string why;  // for NotArchive: what it is, or what failed reading it, naming the file
};

Found inspect(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::file_status st = fs::status(path, ec);
    if (!fs::exists(st)) return {};
    if (fs::is_directory(st)) return {Target::NotArchive, path + " is a folder, not an archive"};
    if (!fs::is_regular_file(st)) return {Target::NotArchive, path + " is not a regular file"};
    if (fs::file_size(path, ec) == 0 && !ec) return {};
    try {
        backend::DataSource ds;
        ds.path = path;
        backend::openSession(ds);  // refuses a file without the catalog's tables
        // Counting walks every table, so a truncated or damaged archive fails here.
        for (const TableCount& t : countRows(path))
            if (t.rows > 0) return {Target::ArchiveWithRows, ""};
        return {Target::EmptyArchive, ""};
    } catch (const Error& e) {
        std::string why = e.description();
        if (!why.empty() && why.back() == '.') why.pop_back();
        return {Target::NotArchive, why};
    }
}

// The file the new archive is built in, beside the one it is to become.
std::string scratchBeside(const std::string& path) { return path + ".new-" + std::to_string(::getpid()); }

void removeArchiveFiles(const std::string& path) {
    std::error_code ec;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) std::filesystem::remove(path + suffix, ec);
}

// Folds the archive's write-ahead log into its main file and drops the log, so that
// the main file alone is the whole archive and no stale log is left to meet a new file.
void settle(const std::string& path) {
    try {
        Db db(path);
        db.exec("PRAGMA journal_mode=DELETE");
    } catch (const Error& e) {
        throw Error(e.number(), e.source(), path + ": " + e.description());
    }
}

// Moves the finished archive over `path` in one rename: until then the old file is
// whole, and after it the new one is.
void putInPlace(const std::string& built, const std::string& path, bool replacing) {
    settle(built);
    if (replacing) settle(path);
    std::error_code ec;
    std::filesystem::rename(built, path, ec);
    if (ec) throw Error(err::InvalidCall, detail::kSource, "Cannot put " + built + " in place of " + path + ": " + ec.message());
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

namespace {

// The archive on a server: the schema is made where missing, and the rows (none, or
// the sample, generated into a scratch file first) are copied in one transaction,
// so a failure leaves the server's archive as it was.
int initOnServer(const InitOptions& o, Options opt, std::ostream& out, std::ostream& err) {
    const std::string shown = backend::shownAddress(o.db);
    const std::string scratch =
        (std::filesystem::temp_directory_path() / ("historicos-init-" + std::to_string(::getpid()) + ".db")).string();
    try {
        backend::DataSource ds;
        ds.path = o.db;
        auto target = backend::createArchive(ds);
        long long rows = 0;
        for (const auto& t : backend::countArchive(*target)) rows += t.rows;
        if (rows > 0 && !o.force) {
            err << "historicos init: " << shown << " already holds an archive with rows; use --force to replace it\n";
            return 1;
        }
        removeArchiveFiles(scratch);
        backend::DataSource file;
        file.path = scratch;
        if (o.sample) generate(scratch, opt);
        else backend::createArchive(file);
        auto source = backend::openSession(file);
        out << "Copying to " << shown << "\n" << std::flush;
        const auto copied = backend::copyArchive(*source, *target, o.force, [&](const backend::TableCopy& t) {
            if (t.rows > 0) out << "  " << pad(t.table, 32) << " " << t.rows << "\n" << std::flush;
        });
        source.reset();
        removeArchiveFiles(scratch);
        long long total = 0;
        for (const auto& t : copied) total += t.rows;
        out << (o.sample ? "Filled " : "Created ") << shown << " with the catalog's tables"
            << (o.sample ? " and a sample history (" + std::to_string(opt.orders) + " work orders, seed " +
                               std::to_string(opt.seed) + ")"
                         : std::string())
            << ": " << total << " rows.\n";
        return 0;
    } catch (const Error& e) {
        removeArchiveFiles(scratch);
        err << "historicos init: " << e.description() << "\n";
        return 1;
    } catch (const std::exception& e) {
        removeArchiveFiles(scratch);
        err << "historicos init: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace

int initCommand(const InitOptions& o, std::ostream& out, std::ostream& err) {
    const std::string& db = o.db;
    {
        backend::DataSource ds;
        ds.path = db;
        if (backend::isServerSource(ds)) return initOnServer(o, o.generation, out, err);
    }
    const bool force = o.force, sample = o.sample;
    Options opt = o.generation;

    std::string built;
    try {
        const Found found = inspect(db);
        if (found.target == Target::NotArchive) {
            err << "historicos init: " << found.why
                << "; init replaces only an archive: remove it or name another file\n";
            return 1;
        }
        if (found.target == Target::ArchiveWithRows && !force) {
            err << "historicos init: " << db << " already holds an archive with rows; "
                << "use --force to replace it\n";
            return 1;
        }
        const bool replacing = found.target != Target::Free;
        built = scratchBeside(db);
        removeArchiveFiles(built);
        if (!sample) {
            backend::DataSource ds;
            ds.path = built;
            backend::createArchive(ds);
            putInPlace(built, db, replacing);
            out << "Created " << db << " with the catalog's tables.\n";
            summary(db, out);
            return 0;
        }
        // Long runs say how far they are, about every tenth of the way.
        const std::size_t step = opt.orders >= 20000 ? opt.orders / 10 : 0;
        std::size_t nextReport = step;
        // On a terminal the progress line shows it instead.
        const bool terminal = ProgressLine::forStandardError(err);
        Result r;
        {
            ProgressLine line(err, "work orders", terminal);  // erased before the result is told
            opt.progress = [&](std::size_t done, std::size_t total) {
                line.update(done, total);
                if (!terminal && step && (done >= nextReport || done == total)) {
                    out << "  work orders written: " << done << " of " << total << "\n" << std::flush;
                    while (nextReport <= done) nextReport += step;
                }
            };
            r = generate(built, opt);
            opt.progress = nullptr;
        }
        putInPlace(built, db, replacing);
        char secs[32];
        std::snprintf(secs, sizeof secs, "%.1f", r.seconds);
        out << "Filled " << db << " with a sample history (" << opt.orders << " work orders, seed " << opt.seed
            << ") in " << secs << " s.\n";
        summary(db, out);
        return 0;
    } catch (const Error& e) {
        if (!built.empty()) removeArchiveFiles(built);
        err << "historicos init: " << e.description() << "\n";
        return 1;
    } catch (const std::exception& e) {
        if (!built.empty()) removeArchiveFiles(built);
        err << "historicos init: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace hist::sample
