// Opening the order lines from a server archive through the data layer (a
// Connection and a Recordset, with the hidden row identity) against libpq's own
// COPY ... TO STDOUT of the same columns, best of three.
//
//   bench_server_open URL [rows]   URL: postgresql://... of an archive database; its
//                                  HOrdenes_Lineas is filled with `rows` generated lines
//                                  (default 1000000) when it holds fewer
#include <libpq-fe.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "bench_common.hpp"

namespace {


using hist::bench::seconds;
constexpr const char* kColumns = hist::bench::kOrderLineColumns;

void exec(PGconn* c, const std::string& sql) {
    PGresult* r = PQexec(c, sql.c_str());
    if (PQresultStatus(r) != PGRES_COMMAND_OK && PQresultStatus(r) != PGRES_TUPLES_OK) {
        std::fprintf(stderr, "%s: %s\n", sql.c_str(), PQerrorMessage(c));
        std::exit(1);
    }
    PQclear(r);
}

long count(PGconn* c) {
    PGresult* r = PQexec(c, "SELECT count(*) FROM HOrdenes_Lineas");
    long n = PQresultStatus(r) == PGRES_TUPLES_OK ? std::atol(PQgetvalue(r, 0, 0)) : -1;
    PQclear(r);
    return n;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_server_open URL [rows]\n");
        return 2;
    }
    const std::string url = argv[1];
    const long rows = argc > 2 ? std::atol(argv[2]) : 1000000;
    {
        // The archive's tables, then the lines, written behind the data layer's back.
        hist::backend::DataSource ds;
        ds.path = url;
        hist::backend::createArchive(ds);
    }
    PGconn* raw = PQconnectdb(url.c_str());
    if (PQstatus(raw) != CONNECTION_OK) {
        std::fprintf(stderr, "%s\n", PQerrorMessage(raw));
        return 1;
    }
    if (count(raw) < rows) {
        exec(raw, "DELETE FROM HOrdenes_Lineas");
        exec(raw, std::string("INSERT INTO HOrdenes_Lineas (") + kColumns +
                      ") SELECT 'A' || (g % 500), (ARRAY['Corona','puente','Incrustación','férula','Prótesis'])[1 + g % 5] "
                      "|| ' ' || (ARRAY['metal-cerámica','Zirconio','disilicato','resina'])[1 + g % 4], 1 + g % 4, "
                      "(g % 9000) / 100.0, 0, 21, (g % 9000) / 25.0, 'L' || (g % 97), 'S' || (g % 7), 'E' || (g % 13), "
                      "g % 50, g, g / 5, 0, 0, timestamp '2020-01-01' + (g % 2000) * interval '1 day' "
                      "FROM generate_series(1, " + std::to_string(rows) + ") g");
        exec(raw, "VACUUM ANALYZE HOrdenes_Lineas");
    }
    const long n = count(raw);

    const std::string select = std::string("SELECT ") + kColumns + " FROM HOrdenes_Lineas";
    auto cn = std::make_shared<hist::ado::Connection>();
    hist::backend::DataSource ds;
    ds.path = url;
    ds.statementTimeoutMs = 0;
    cn->Open(ds);
    long opened = 0;
    const double recordset = seconds([&] {
        auto rs = std::make_shared<hist::ado::Recordset>();
        rs->Open(select, cn);
        opened = rs->RecordCount();
    });
    long bytes = 0;
    const double copy = seconds([&] {
        bytes = 0;
        PGresult* start = PQexec(raw, ("COPY (" + select + ") TO STDOUT").c_str());
        if (PQresultStatus(start) != PGRES_COPY_OUT) {
            std::fprintf(stderr, "COPY: %s\n", PQerrorMessage(raw));
            std::exit(1);
        }
        PQclear(start);
        char* buf = nullptr;
        int len;
        while ((len = PQgetCopyData(raw, &buf, 0)) > 0) {
            bytes += len;
            PQfreemem(buf);
        }
        PGresult* r = PQgetResult(raw);
        PQclear(r);
    });
    std::printf("rows %ld (recordset %ld)\n", n, opened);
    std::printf("recordset open   %.2f s\n", recordset);
    std::printf("COPY TO STDOUT   %.2f s (%ld bytes)\n", copy, bytes);
    std::printf("ratio            %.2fx (target <= 1.5x)\n", recordset / copy);
    PQfinish(raw);
    return 0;
}
