// Recordset timing against the engine itself, on rows generated into a temporary
// archive: opening a selection versus a raw sqlite3_step loop copying the same
// values, the recordset's memory versus the size of those values, and Sort and a
// Like filter versus the engine's ORDER BY and WHERE ... LIKE over the same rows.
//
//   bench_recordset [rows]           (default 1000000)
//   bench_recordset --archive PATH   the order lines of an existing archive, such as
//                                    one made by `historicos init --sample --orders 220000`
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "bench_common.hpp"
#include "backends/sqlite/functions.hpp"

namespace {

using Clock = std::chrono::steady_clock;

using hist::bench::seconds;
constexpr const char* kColumns = hist::bench::kOrderLineColumns;

void check(int rc, sqlite3* db, const char* what) {
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
        std::exit(1);
    }
}

void generate(sqlite3* db, long rows) {
    static const char* words[] = {"Corona", "puente", "Incrustación", "férula", "Prótesis", "carilla",
                                  "Implante", "pilar", "Esquelético", "ajuste", "Compostura", "modelo"};
    static const char* materials[] = {"metal-cerámica", "Zirconio", "disilicato", "resina", "Cromo-cobalto"};
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    sqlite3_stmt* st = nullptr;
    const std::string sql = std::string("INSERT INTO HOrdenes_Lineas (") + kColumns +
                            ") VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
    check(sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr), db, "prepare insert");
    unsigned long long x = 88172645463325252ULL;
    auto next = [&x] {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        return x;
    };
    char buf[96];
    for (long i = 0; i < rows; ++i) {
        const auto r = next();
        std::snprintf(buf, sizeof buf, "A%05llu", r % 20000);
        sqlite3_bind_text(st, 1, buf, -1, SQLITE_TRANSIENT);
        std::snprintf(buf, sizeof buf, "%s %s %llu", words[r % 12], materials[(r >> 8) % 5], (r >> 16) % 1000);
        sqlite3_bind_text(st, 2, buf, -1, SQLITE_TRANSIENT);
        const double qty = static_cast<double>(1 + (r >> 20) % 8);
        const double price = static_cast<double>((r >> 24) % 50000) / 100.0;
        sqlite3_bind_double(st, 3, qty);
        sqlite3_bind_double(st, 4, price);
        sqlite3_bind_double(st, 5, static_cast<double>((r >> 30) % 20));
        sqlite3_bind_double(st, 6, 21.0);
        sqlite3_bind_double(st, 7, qty * price);
        std::snprintf(buf, sizeof buf, "L%llu", (r >> 34) % 500);
        sqlite3_bind_text(st, 8, buf, -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(st, 9, (r >> 40) % 2 ? "CER" : "MET", -1, SQLITE_STATIC);
        std::snprintf(buf, sizeof buf, "E%llu", (r >> 42) % 40);
        sqlite3_bind_text(st, 10, buf, -1, SQLITE_TRANSIENT);
        sqlite3_bind_double(st, 11, static_cast<double>((r >> 46) % 100));
        sqlite3_bind_int(st, 12, static_cast<int>(i % 20 + 1));
        sqlite3_bind_int(st, 13, static_cast<int>(i / 20 + 1));
        sqlite3_bind_int(st, 14, static_cast<int>((r >> 50) % 5));
        sqlite3_bind_int(st, 15, static_cast<int>((r >> 52) % 3000));
        std::snprintf(buf, sizeof buf, "20%02llu-%02llu-%02llu 00:00:00", 10 + (r >> 54) % 17, 1 + (r >> 56) % 12,
                      1 + (r >> 58) % 28);
        sqlite3_bind_text(st, 16, buf, -1, SQLITE_TRANSIENT);
        check(sqlite3_step(st), db, "insert");
        sqlite3_reset(st);
    }
    sqlite3_finalize(st);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
}

// The baseline: every value copied into typed column vectors.
struct RawCopy {
    std::vector<std::vector<long long>> ints;
    std::vector<std::vector<double>> reals;
    std::vector<std::vector<std::string>> texts;
    std::size_t valueBytes = 0;  // 8 per number, the bytes of each text
};

RawCopy rawCopy(sqlite3* db, const std::string& sql) {
    RawCopy out;
    sqlite3_stmt* st = nullptr;
    check(sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr), db, "prepare select");
    const int n = sqlite3_column_count(st);
    out.ints.resize(static_cast<std::size_t>(n));
    out.reals.resize(static_cast<std::size_t>(n));
    out.texts.resize(static_cast<std::size_t>(n));
    while (sqlite3_step(st) == SQLITE_ROW) {
        for (int c = 0; c < n; ++c) {
            const auto k = static_cast<std::size_t>(c);
            switch (sqlite3_column_type(st, c)) {
            case SQLITE_INTEGER:
                out.ints[k].push_back(sqlite3_column_int64(st, c));
                out.valueBytes += 8;
                break;
            case SQLITE_FLOAT:
                out.reals[k].push_back(sqlite3_column_double(st, c));
                out.valueBytes += 8;
                break;
            case SQLITE_NULL:
                out.valueBytes += 8;
                break;
            default: {
                const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(st, c));
                const int len = sqlite3_column_bytes(st, c);
                out.texts[k].emplace_back(p, static_cast<std::size_t>(len));
                out.valueBytes += static_cast<std::size_t>(len);
            }
            }
        }
    }
    sqlite3_finalize(st);
    return out;
}

// The engine's own work: the statement stepped to its end, rows counted.
long engineRun(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* st = nullptr;
    check(sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr), db, "prepare");
    long rows = 0;
    while (sqlite3_step(st) == SQLITE_ROW) ++rows;
    sqlite3_finalize(st);
    return rows;
}

void line(const char* what, double ours, double theirs, double target) {
    const double ratio = ours / theirs;
    std::printf("%-34s %10.3f s %10.3f s %8.2fx  (target <= %.1fx) %s\n", what, ours, theirs, ratio, target,
                ratio <= target ? "ok" : "OVER");
}

}  // namespace

int main(int argc, char** argv) {
    const bool onArchive = argc > 2 && std::string(argv[1]) == "--archive";
    const long rows = !onArchive && argc > 1 ? std::atol(argv[1]) : 1000000;
    std::filesystem::path dir;
    hist::backend::DataSource ds;
    if (onArchive) {
        ds.path = argv[2];
        if (!std::filesystem::exists(ds.path)) {
            std::fprintf(stderr, "bench_recordset: no archive at %s\n", ds.path.c_str());
            return 2;
        }
    } else {
        std::string tmpl = (std::filesystem::temp_directory_path() / "hist-bench-XXXXXX").string();
        dir = mkdtemp(tmpl.data());
        ds.path = (dir / "archivo.db").string();
        hist::backend::createArchive(ds);
    }

    auto cn = std::make_shared<hist::ado::Connection>();
    cn->Open(ds);

    sqlite3* db = nullptr;
    check(sqlite3_open(ds.path.c_str(), &db), db, "open");
    check(hist::backend::sqlite::registerFunctions(db), db, "functions");
    if (onArchive) {
        std::printf("order lines of %s\n\n", ds.path.c_str());
    } else {
        const auto g0 = Clock::now();
        generate(db, rows);
        std::printf("generated %ld rows in %.1f s\n\n", rows,
                    std::chrono::duration<double>(Clock::now() - g0).count());
    }

    const std::string select = std::string("SELECT ") + kColumns + " FROM HOrdenes_Lineas";
    std::printf("%-34s %12s %12s %9s\n", "", "recordset", "engine", "ratio");

    std::size_t rawBytes = 0;
    const double raw = seconds([&] { rawBytes = rawCopy(db, select).valueBytes; });
    std::shared_ptr<hist::ado::Recordset> rs;
    const double open = seconds([&] {
        rs.reset();
        rs = std::make_shared<hist::ado::Recordset>();
        rs->Open(select, cn);
    });
    line("open (vs raw step loop copying)", open, raw, 1.5);
    const double mem = static_cast<double>(rs->memoryBytes());
    std::printf("%-34s %10.1f MB %10.1f MB %8.2fx  (target <= 2.0x) %s\n", "memory (vs raw values)", mem / 1e6,
                static_cast<double>(rawBytes) / 1e6, mem / static_cast<double>(rawBytes),
                mem <= 2.0 * static_cast<double>(rawBytes) ? "ok" : "OVER");

    struct Work {
        const char* what;
        std::function<void()> ours;
        std::string engine;
    } work[] = {
        {"sort text (Descripcion)", [&] { rs->SetSort("Descripcion"); }, select + " ORDER BY Descripcion"},
        {"sort number desc (Importe DESC)", [&] { rs->SetSort("Importe DESC"); }, select + " ORDER BY Importe DESC"},
        {"sort date (Fecha)", [&] { rs->SetSort("Fecha"); }, select + " ORDER BY Fecha"},
        {"filter Like prefix ('pu*')", [&] { rs->SetFilter(hist::Variant("Descripcion Like 'pu*'")); },
         select + " WHERE Descripcion LIKE 'pu%'"},
        {"filter Like both ends ('*zirc*')", [&] { rs->SetFilter(hist::Variant("Descripcion Like '*zirc*'")); },
         select + " WHERE Descripcion LIKE '%zirc%'"},
    };
    for (auto& w : work) {
        rs->SetSort("");
        rs->SetFilter(hist::Variant(""));
        const double ours = seconds(w.ours);
        const double theirs = seconds([&] { engineRun(db, w.engine); });
        line(w.what, ours, theirs, 2.0);
    }
    std::printf("\nrows visible after the last filter: %ld\n", rs->RecordCount());

    rs.reset();
    cn->Close();
    sqlite3_close(db);
    std::error_code ec;
    if (!dir.empty()) std::filesystem::remove_all(dir, ec);
    return 0;
}
