// ToHtmlGrid timing: a comment class opened on rows generated into a temporary
// archive, its listing written through a sorted clone (the usual call from a form),
// best of three, reported in MB of listing per second against the target of 50 MB/s.
//
//   bench_listing [rows]      (default 100000)
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "ado/connection.hpp"
#include "backends/engine.hpp"
#include "tools/tool_members.hpp"
#include "frame/services/config.hpp"
#include "platform/clock.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "satellites/comentarios.hpp"
#include "tools/listing_tools.hpp"

namespace {

using SteadyClock = std::chrono::steady_clock;

void check(int rc, sqlite3* db, const char* what) {
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
        std::exit(1);
    }
}

// Order comments of a laboratory: a few hundred orders a day, one to three
// comments each, texts with accents and now and then a Null second text.
void generate(sqlite3* db, long rows) {
    static const char* phrases[] = {"Corona de zirconio, color A2, ajustar contactos",
                                    "Prótesis esquelética: revisar retenedores",
                                    "Urgente <entregar antes de las 12> & avisar",
                                    "Férula de descarga, grosor 2 mm",
                                    "Implante con pilar atornillado; repetir impresión",
                                    "Carilla de disilicato, tallado mínimo"};
    static const char* notes[] = {"Dr. Martínez", "Clínica Ávila", "reparación", "garantía"};
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    sqlite3_stmt* st = nullptr;
    check(sqlite3_prepare_v2(db,
                             "INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion, Fecha) "
                             "VALUES (?,?,?,?,?)",
                             -1, &st, nullptr),
          db, "prepare");
    unsigned long long x = 88172645463325252ULL;
    auto next = [&x] {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        return x;
    };
    const double first = hist::rt::dateSerial(2019, 1, 7);
    for (long i = 0; i < rows; ++i) {
        const auto r = next();
        sqlite3_bind_int64(st, 1, 1 + i % 3);
        sqlite3_bind_int64(st, 2, 100000 + i / 2);
        sqlite3_bind_text(st, 3, phrases[r % 6], -1, SQLITE_STATIC);
        if ((r >> 8) % 5 == 0)
            sqlite3_bind_null(st, 4);
        else
            sqlite3_bind_text(st, 4, notes[(r >> 12) % 4], -1, SQLITE_STATIC);
        const std::string date = hist::rt::isoText(first + static_cast<double>(i / 300));
        sqlite3_bind_text(st, 5, date.c_str(), -1, SQLITE_TRANSIENT);
        check(sqlite3_step(st), db, "insert");
        sqlite3_reset(st);
    }
    sqlite3_finalize(st);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace hist;
    const long rows = argc > 1 ? std::atol(argv[1]) : 100000;
    std::string tmpl = (std::filesystem::temp_directory_path() / "hist-bench-listing-XXXXXX").string();
    const std::filesystem::path dir = mkdtemp(tmpl.data());

    services::Config c = services::Config::defaults();
    c.archive = (dir / "archivo.db").string();
    c.workDir = (dir / "trabajo").string();
    c.settingsDir = (dir / "config").string();
    services::Configuration::install(c);
    Clock::set(rt::dateSerial(2026, 11, 22));

    hist::backend::createArchive(c.dataSource(4));  // the catalog's tables
    sqlite3* db = nullptr;
    check(sqlite3_open(c.archivePath().c_str(), &db), db, "open");
    const auto g0 = SteadyClock::now();
    generate(db, rows);
    sqlite3_close(db);
    std::printf("generated %ld rows in %.1f s\n", rows, std::chrono::duration<double>(SteadyClock::now() - g0).count());

    satellites::ClsOrdenesComentarios cls;
    frame::ConnPtr cn;
    std::string todos = "todos";
    Variant id;
    DateValue d{};
    cls.IniciaRs(cn, todos, id, d);
    Variant cols(std::make_shared<StandInColumns>(std::vector<ColumnData>{
        {"Id", true, 1, ""}, {"Código", true, 1, ""}, {"Comentarios", true, 3, ""}, {"Descripción", true, 3, ""},
        {"Fecha", true, 2, ""}}));

    double best = 1e100;
    for (int i = 0; i < 3; ++i) {
        bool clone = true, filtered = false;
        std::string key = "todos";
        const auto t0 = SteadyClock::now();
        tools::toHtmlGrid(cls, cols, clone, key, filtered);
        best = std::min(best, std::chrono::duration<double>(SteadyClock::now() - t0).count());
    }
    const auto file = std::filesystem::path(c.resolvedWorkDir()) / "HOrdenes_Comentarios.htm";
    const double mb = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    std::printf("ToHtmlGrid of %ld rows: %.1f MB in %.3f s = %.1f MB/s (target >= 50 MB/s) %s\n", rows, mb, best,
                mb / best, mb / best >= 50.0 ? "ok" : "UNDER");

    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    return 0;
}
