// The sample archive: links between documents, series and counters, stored
// forms, determinism, and the init command.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "backends/engine.hpp"
#include "platform/runtime.hpp"
#include "sample/db.hpp"
#include "sample/detail.hpp"
#include "sample/inserter.hpp"
#include "sample/plan.hpp"
#include "sample/sample.hpp"
#include "sql/catalog.hpp"
#include "support/scratch.hpp"

namespace hs = hist::sample;
namespace fs = std::filesystem;

namespace {

// One folder per test process, removed when the process ends.
fs::path tempDir() {
    static const hist::testing::Scratch dir("historicos-sample");
    return dir.path();
}

class Query {
public:
    explicit Query(const std::string& path) : db_(path) {}
    long long scalar(const std::string& q) {
        sqlite3_stmt* s = prepare(q);
        long long v = sqlite3_step(s) == SQLITE_ROW ? sqlite3_column_int64(s, 0) : -1;
        sqlite3_finalize(s);
        return v;
    }
    std::vector<std::string> column(const std::string& q) {
        sqlite3_stmt* s = prepare(q);
        std::vector<std::string> out;
        while (sqlite3_step(s) == SQLITE_ROW) {
            const unsigned char* t = sqlite3_column_text(s, 0);
            out.emplace_back(t ? reinterpret_cast<const char*>(t) : "<null>");
        }
        sqlite3_finalize(s);
        return out;
    }
    // Every row of every catalog table, in row order, as one text.
    std::string content() {
        std::string all;
        for (const hist::sql::Table& t : hist::sql::catalog().tables()) {
            sqlite3_stmt* s = prepare("SELECT * FROM " + t.name + " ORDER BY rowid");
            all += "#" + t.name + "\n";
            while (sqlite3_step(s) == SQLITE_ROW) {
                for (int c = 0; c < sqlite3_column_count(s); ++c) {
                    const unsigned char* v = sqlite3_column_text(s, c);
                    all += std::to_string(sqlite3_column_type(s, c)) + ":" +
                           (v ? reinterpret_cast<const char*>(v) : "") + "|";
                }
                all += "\n";
            }
            sqlite3_finalize(s);
        }
        return all;
    }

private:
    sqlite3_stmt* prepare(const std::string& q) {
        sqlite3_stmt* s = nullptr;
        if (sqlite3_prepare_v2(db_.get(), q.c_str(), -1, &s, nullptr) != SQLITE_OK) {
            ADD_FAILURE() << sqlite3_errmsg(db_.get()) << " in " << q;
        }
        return s;
    }
    hs::detail::Db db_;
};

std::string makeSample(const std::string& name, std::size_t orders, uint64_t seed) {
    const std::string path = (tempDir() / name).string();
    fs::remove(path);
    hs::Options opt;
    opt.orders = orders;
    opt.seed = seed;
    hs::generate(path, opt);
    return path;
}

// One small sample, made on first use and shared by the tests that only read it.
class SampleArchive : public ::testing::Test {
protected:
    static const std::string& path() {
        static const std::string made = makeSample("small.db", 400, 7);
        return made;
    }
};

struct Check {
    std::string what;
    std::string query;  // counts the rows that break the rule, or that show the state
};

std::string count(const std::string& table, const std::string& where) {
    return "SELECT COUNT(*) FROM " + table + " WHERE " + where;
}
// Rows of child (as c) meeting `where` that no row of parent (as p) matches.
std::string orphans(const std::string& child, const std::string& where, const std::string& parent,
                    const std::string& match) {
    return count(child + " c", where + " AND NOT EXISTS (SELECT 1 FROM " + parent + " p WHERE " + match + ")");
}
// Documents whose base is not the sum of their lines less both discounts.
std::string baseDiffers(const std::string& doc) {
    return count(doc + " o", "ABS(o.Base - ROUND((SELECT SUM(Importe) FROM " + doc +
                                 "_Lineas l WHERE l.Numero = o.Numero) * (1 - o.Descuento / 100) * (1 - o.Descuento_PP / 100), 2)) > 0.011");
}

TEST_F(SampleArchive, EveryLinkNamesADocumentThatExists) {
    const std::string byNumber = "p.Numero = c.Numero", byDate = "p.Numero = c.Codigo AND p.Fecha = c.Fecha";
    const std::string takenBy = "p.Numero = c.Doc_E AND p.Doc_F = c.Numero";
    const Check checks[] = {
        {"order Doc_F of an invoice", orphans("HOrdenes", "Facturado = 4", "HFacturas", "p.Numero = c.Doc_F")},
        {"order Doc_F of a delivery note", orphans("HOrdenes", "Facturado = 3", "HAlbaranes", "p.Numero = c.Doc_F")},
        {"order not taken but Doc_F set", count("HOrdenes", "Facturado = 0 AND Doc_F <> 0")},
        {"order Facturado code", count("HOrdenes", "Facturado NOT IN (0, 3, 4)")},
        {"customer order Doc_F of an invoice",
         orphans("HPedidos_Clientes", "Facturado = 4", "HFacturas", "p.Numero = c.Doc_F")},
        {"customer order Doc_F of a delivery note",
         orphans("HPedidos_Clientes", "Facturado = 3", "HAlbaranes", "p.Numero = c.Doc_F")},
        {"customer order Facturado code",
         count("HPedidos_Clientes", "Facturado NOT IN (0, 3, 4) OR (Facturado = 0 AND Doc_F <> 0)")},
        {"delivery note Doc_F",
         orphans("HAlbaranes", "Facturado = 4", "HFacturas", "p.Numero = c.Doc_F AND p.Fecha = c.Fecha_F")},
        {"delivery note Facturado code",
         count("HAlbaranes",
               "Facturado NOT IN (0, 4) OR (Facturado = 0 AND (Doc_F <> 0 OR Fecha_F <> '1899-12-30 00:00:00'))")},
        {"order line Doc_F", orphans("HOrdenes_Lineas", "Facturado = 4", "HFacturas", "p.Numero = c.Doc_F")},
        {"order line link differs from its order",
         "SELECT COUNT(*) FROM HOrdenes_Lineas l JOIN HOrdenes o ON o.Numero = l.Numero WHERE l.Doc_F <> CASE WHEN o.Facturado = 4 THEN o.Doc_F ELSE 0 END"},
        {"note taken from an order that does not point back",
         "SELECT COUNT(*) FROM HAlbaranes a JOIN HOrdenes o ON o.Numero = a.Doc_E WHERE a.Estado = 10 AND NOT "
         "((a.Facturado = 4 AND o.Facturado = 4 AND o.Doc_F = a.Doc_F) OR (a.Facturado = 0 AND o.Facturado = 3 AND o.Doc_F = a.Numero))"},
        {"note Doc_E of a work order", orphans("HAlbaranes", "Estado = 10", "HOrdenes", "p.Numero = c.Doc_E")},
        {"note Doc_E of a customer order", orphans("HAlbaranes", "Estado = 2", "HPedidos_Clientes", "p.Numero = c.Doc_E")},
        {"note Estado", count("HAlbaranes", "Estado NOT IN (2, 10)")},
        {"invoice from a work order", orphans("HFacturas", "Estado = 10", "HOrdenes", takenBy + " AND p.Facturado = 4")},
        {"invoice from a customer order",
         orphans("HFacturas", "Estado = 2", "HPedidos_Clientes", takenBy + " AND p.Facturado = 4")},
        {"invoice from one delivery note", orphans("HFacturas", "Estado = 3", "HAlbaranes", takenBy)},
        {"invoicing run without notes",
         count("HFacturas f", "Estado = 7 AND (SELECT COUNT(*) FROM HAlbaranes a WHERE a.Doc_F = f.Numero AND a.Facturado = 4) < 2")},
        {"invoice Estado", count("HFacturas", "Estado NOT IN (2, 3, 7, 10)")},
        {"receipt of no invoice", orphans("Recibos", "1", "HFacturas", byNumber + " AND p.Serie = c.Serie AND p.Codigo = c.Codigo")},
        {"invoice without receipts", orphans("HFacturas", "1", "Recibos", byNumber)},
        {"receipts not adding up to the invoice",
         count("HFacturas f", "ABS(f.Total - (SELECT SUM(Total) FROM Recibos r WHERE r.Numero = f.Numero)) > 0.005")},
        {"receipt state", count("Recibos", "Estado NOT IN (0, -1, 2)")},
        {"order line of no order", orphans("HOrdenes_Lineas", "1", "HOrdenes", byNumber + " AND p.Fecha = c.Fecha")},
        {"customer order line of no customer order", orphans("HPedidos_Clientes_Lineas", "1", "HPedidos_Clientes", byNumber)},
        {"note line of no note", orphans("HAlbaranes_Lineas", "1", "HAlbaranes", byNumber)},
        {"invoice line of no invoice", orphans("HFacturas_Lineas", "1", "HFacturas", byNumber)},
        {"line of no article", orphans("HOrdenes_Lineas", "1", "Articulos", "p.Codigo = c.Codigo")},
        {"order base differs from its lines", baseDiffers("HOrdenes")},
        {"invoice base differs from its lines", baseDiffers("HFacturas")},
        {"invoice total", count("HFacturas", "ABS(Total - (Base + Gastos + Importe_Impuestos)) > 0.005")},
        {"odontogram of no order", orphans("HOrdenes_Odontograma", "1", "HOrdenes", byDate)},
        {"colour of no order", orphans("HOrdenes_Color", "1", "HOrdenes", byDate)},
        {"phase of no order", orphans("HOrdenes_Fases", "1", "HOrdenes", "p.Numero = c.Codigo AND p.Fecha = c.Fecha_Codigo")},
        {"try-in of no order", orphans("HOrdenes_Pruebas", "1", "HOrdenes", "p.Numero = c.Codigo")},
        {"declaration of no order",
         orphans("HOrdenes_Declaraciones", "1", "HOrdenes", "p.Numero = c.Codigo AND p.Fecha = c.Fecha_Codigo")},
        {"claim of no order", orphans("HOrdenes_Reclamaciones", "1", "HOrdenes", "p.Numero = c.Numero AND p.Codigo = c.Codigo")},
        {"label of no order", orphans("HOrdenes_Etiquetas", "1", "HOrdenes", byDate)},
        {"order comment of no order", orphans("HOrdenes_Comentarios", "1", "HOrdenes", byDate)},
        {"order closing of no order",
         orphans("HOrdenes_Cabecera", "1", "HOrdenes", byNumber + " AND p.Fecha = c.fecha AND p.Codigo = c.Codigo")},
        {"customer order comment", orphans("HPedidos_Clientes_Comentarios", "1", "HPedidos_Clientes", "p.Numero = c.Codigo")},
        {"note comment", orphans("HAlbaranes_Comentarios", "1", "HAlbaranes", "p.Numero = c.Codigo")},
        {"invoice comment", orphans("HFacturas_Comentarios", "1", "HFacturas", "p.Numero = c.Codigo")},
        {"customer order closing", orphans("HPedidos_Clientes_Cabecera", "1", "HPedidos_Clientes", byNumber)},
        {"note closing", orphans("HAlbaranes_Cabecera", "1", "HAlbaranes", byNumber)},
        {"invoice closing", orphans("HFacturas_Cabecera", "1", "HFacturas", byNumber)},
        {"phase ID repeated", "SELECT COUNT(*) - COUNT(DISTINCT ID) FROM HOrdenes_Fases"},
        {"receipt Id repeated", "SELECT COUNT(*) - COUNT(DISTINCT Id) FROM Recibos"},
    };
    Query q(path());
    for (const Check& c : checks) EXPECT_EQ(q.scalar(c.query), 0) << c.what;
}

TEST_F(SampleArchive, EveryStateOfTheLinksOccurs) {
    const Check present[] = {
        {"order in production", count("HOrdenes", "Cerrada = 'Fabricación' AND Fecha_Cierre IS NULL")},
        {"closed order not invoiced", count("HOrdenes", "Cerrada = 'Cerrada' AND Facturado = 0")},
        {"order waiting on a note", count("HOrdenes", "Facturado = 3")}, {"invoiced order", count("HOrdenes", "Facturado = 4")},
        {"customer order pending", count("HPedidos_Clientes", "Facturado = 0")},
        {"note pending", count("HAlbaranes", "Facturado = 0")}, {"claim", count("HOrdenes_Reclamaciones", "1")},
        {"invoice of a run", count("HFacturas", "Estado = 7")}, {"invoice of one note", count("HFacturas", "Estado = 3")},
        {"invoice of an order", count("HFacturas", "Estado = 10")},
        {"posted and pending invoices", "SELECT COUNT(DISTINCT Facturado) - 1 FROM HFacturas"},
        {"unpaid receipt", count("Recibos", "Estado = 0")}, {"paid receipt", count("Recibos", "Estado = -1")},
        {"paid and posted receipt", count("Recibos", "Estado = 2")}, {"instalments", count("Recibos", "Contador > 1")},
        {"live notes", count("Albaranes", "1")}, {"live customer orders", count("Pedidos_Clientes", "1")},
        {"live invoices", count("Facturas", "1")},
    };
    Query q(path());
    for (const Check& c : present) EXPECT_GT(q.scalar(c.query), 0) << c.what;

    const double lines = static_cast<double>(q.scalar("SELECT COUNT(*) FROM HOrdenes_Lineas"));
    const double orders = static_cast<double>(q.scalar("SELECT COUNT(*) FROM HOrdenes"));
    EXPECT_EQ(orders, 400);
    EXPECT_GT(lines / orders, 4.0);
    EXPECT_LT(lines / orders, 5.0);
}

TEST_F(SampleArchive, LiveTablesRepeatTheirArchiveRows) {
    Query q(path());
    for (const char* t : {"Albaranes", "Pedidos_Clientes", "Facturas"}) {
        EXPECT_EQ(q.scalar(std::string("SELECT COUNT(*) FROM (SELECT * FROM ") + t + " EXCEPT SELECT * FROM H" + t + ")"), 0)
            << t;
    }
}

TEST_F(SampleArchive, SeriesStayInTheirRangesAndCountersFollowThem) {
    Query q(path());
    for (const char* t : {"HOrdenes", "HPedidos_Clientes", "HAlbaranes", "HFacturas"}) {
        const std::string table = t;
        EXPECT_EQ(q.scalar(count(table, "NOT ((Serie = 'A' AND Numero BETWEEN 1 AND 9999) OR "
                                        "(Serie = 'B' AND Numero BETWEEN 10001 AND 24999) OR (Serie = 'C' AND Numero >= 25001))")),
                  0) << table;
        const struct {
            const char* serie;
            const char* column;
            long start;
        } series[] = {{"A", "SerieA", 0}, {"B", "SerieB", 10000}, {"C", "SerieC", 25000}};
        for (const auto& s : series) {
            const long long highest = q.scalar("SELECT COALESCE(MAX(Numero), " + std::to_string(s.start) + ") FROM " +
                                               table + " WHERE Serie = '" + s.serie + "'");
            EXPECT_GT(highest, s.start) << table << " has no document in series " << s.serie;
            EXPECT_EQ(q.scalar(std::string("SELECT ") + s.column + " FROM Numeradores WHERE Tabla = '" + table + "'"),
                      highest)
                << table << " " << s.serie;
            // Numbers follow one another within a series.
            EXPECT_EQ(q.scalar(count(table, "Serie = '" + std::string(s.serie) + "'")), highest - s.start) << t << s.serie;
        }
    }
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM Numeradores"), 4);
}

TEST_F(SampleArchive, ClosingRunsSitAtBothLevels) {
    Query q(path());
    for (const char* t : {"HPedidos_Clientes_Cabecera", "HAlbaranes_Cabecera", "HFacturas_Cabecera"}) {
        const std::string first = t, second = std::string("H") + t;
        EXPECT_GT(q.scalar(count(first, "Cierre IS NOT NULL")), 0) << first;
        EXPECT_GT(q.scalar(count(first, "Cierre IS NULL")), 0) << first;
        EXPECT_GT(q.scalar(count(second, "1")), 0) << second;
        EXPECT_EQ(q.scalar(count(second, "Cierre IS NULL OR Id IS NOT NULL OR Numero IS NOT NULL OR fecha IS NOT NULL")), 0)
            << second;
        // A run is at one level at a time.
        EXPECT_EQ(q.scalar(count(first, "Cierre IN (SELECT Cierre FROM " + second + ")")), 0) << first;
    }
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HHOrdenes_Cabecera"), 0);
}

TEST_F(SampleArchive, StoredFormsFitTheCatalog) {
    Query q(path());
    for (const hist::sql::Table& t : hist::sql::catalog().tables()) {
        for (const hist::sql::Column& c : t.columns) {
            std::string bad;
            const std::string type = "typeof(" + c.name + ")";
            switch (c.jet) {
                using enum hist::sql::JetType;
                case Text: bad = "length(" + c.name + ") > " + std::to_string(c.definedSize); break;
                case Date:
                    bad = type + " <> 'text' OR " + c.name +
                          " NOT GLOB '[12][0-9][0-9][0-9]-[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-5][0-9]'";
                    break;
                case YesNo: bad = c.name + " NOT IN (-1, 0)"; break;
                case Long:
                case Integer: bad = type + " <> 'integer'"; break;
                case Double: bad = type + " NOT IN ('real', 'integer')"; break;
                case Memo: bad = type + " <> 'text'"; break;
            }
            EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM " + t.name + " WHERE " + c.name + " IS NOT NULL AND (" + bad + ")"), 0)
                << t.name << "." << c.name;
        }
    }
    // Some columns are left null where the catalog allows it.
    EXPECT_GT(q.scalar("SELECT COUNT(*) FROM HOrdenes WHERE Incidencia IS NULL"), 0);
    EXPECT_GT(q.scalar("SELECT COUNT(*) FROM HOrdenes_Lineas WHERE Lote IS NULL"), 0);
    EXPECT_GT(q.scalar("SELECT COUNT(*) FROM HOrdenes_Pruebas WHERE fecha_codigo IS NULL"), 0);
}

// The archive's schema (its collation included) is the one the engine's tests check.
TEST_F(SampleArchive, TextsFromTheVocabularyComeBackByteForByte) {
    Query q(path());
    EXPECT_EQ(q.column("SELECT Descripcion FROM Articulos WHERE Codigo = 'CMC'"),
              std::vector<std::string>{"Corona metal-cerámica"});
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HOrdenes WHERE Concepto = 'Prótesis dental a medida'"), 400);
    EXPECT_EQ(q.column("SELECT DISTINCT Razon_Social FROM Recibos WHERE Codigo = '1'"),
              std::vector<std::string>{"Clínica Dental Sonrisa"});
}

TEST(SamplePlan, LargeHistoriesKeepSeriesAInsideItsRange) {
    // 60,000 orders would give series A 36,000 numbers by its share: it stops at 9999
    // and B at 24999, the rest goes to C.
    const hs::detail::Plan p = hs::detail::makePlan(60000, 3);
    const std::vector<hs::detail::Doc>* tables[] = {&p.orders, &p.customerOrders, &p.notes, &p.invoices};
    for (const auto* docs : tables) {
        long count[3] = {}, highest[3] = {};
        for (const hs::detail::Doc& d : *docs) {
            const int s = d.serie - 'A';
            ASSERT_TRUE(s >= 0 && s < 3) << d.serie;
            ++count[s];
            highest[s] = std::max<long>(highest[s], d.numero);
        }
        EXPECT_LE(highest[0], 9999);
        EXPECT_LE(highest[1], 24999);
        EXPECT_EQ(highest[0], count[0]);
        EXPECT_EQ(highest[1], 10000 + count[1]);
        EXPECT_EQ(highest[2], 25000 + count[2]);
    }
    EXPECT_EQ(p.maxOrders[0], 9999);
    EXPECT_EQ(p.maxOrders[1], 24999);
    EXPECT_EQ(p.maxOrders[2], 25000 + 60000 - 9999 - 14999);
}

TEST(SampleInserter, RefusesWhatTheCatalogDoesNotHave) {
    const std::string path = (tempDir() / "inserter.db").string();
    fs::remove(path);
    {
        hist::backend::DataSource ds;
        ds.path = path;
        hist::backend::createArchive(ds);
    }
    hs::detail::Db db(path);
    struct Case {
        const char* table;
        std::vector<std::string> columns;
        const char* message;
    } cases[] = {
        {"HOrdenes_Lineas", {"Numero", "Importe_Total"}, "Column not in the catalog: HOrdenes_Lineas.Importe_Total"},
        {"HOrdenesLineas", {"Numero"}, "Table not in the catalog: HOrdenesLineas"},
    };
    for (const Case& c : cases) {
        try {
            hs::detail::Inserter ins(db.get(), c.table, c.columns);
            ADD_FAILURE() << c.message;
        } catch (const hist::Error& e) {
            EXPECT_EQ(e.description(), c.message);
        }
    }
    hs::detail::Inserter ins(db.get(), "Articulos", {"Codigo", "Descripcion", "Recargo"});
    ins.t("CMC").t("Corona metal-cerámica");
    EXPECT_THROW(ins.row(), hist::Error);  // a value short
    hs::detail::Inserter full(db.get(), "Articulos", {"Codigo", "Recargo"});
    full.t("CZM").d(2.5);
    EXPECT_THROW(full.t("sobra"), hist::Error);  // a value too many
    EXPECT_THROW(full.mirror(), hist::Error);    // no live twin for Articulos
    EXPECT_EQ(db.count("Articulos"), 0);
}

TEST(SampleCalendar, DatesMatchTheRuntimesSerials) {
    namespace d = hs::detail;
    const struct {
        int y, m, dd;
    } days[] = {{1899, 12, 30}, {1900, 3, 1}, {2000, 2, 29}, {2026, 10, 30}};
    for (const auto& x : days) {
        const int s = d::serialOf(x.y, x.m, x.dd);
        EXPECT_EQ(s, static_cast<int>(hist::rt::dateSerial(x.y, x.m, x.dd))) << x.y << "-" << x.m << "-" << x.dd;
        EXPECT_EQ(d::isoText(s, 9 * 3600 + 5 * 60 + 7), hist::rt::isoText(s + hist::rt::timeSerial(9, 5, 7)));
        int y, m, dd;
        d::civilOf(s, y, m, dd);
        EXPECT_EQ(y * 10000 + m * 100 + dd, x.y * 10000 + x.m * 100 + x.dd);
    }
    EXPECT_EQ(d::shortDate(d::serialOf(2026, 3, 5)), "05/03/2026");
    // 2026-10-30 is a Friday; the next working day after it is Monday 2 November.
    EXPECT_EQ(d::weekdayIndex(d::serialOf(2026, 10, 30)), 6);
    EXPECT_EQ(d::addWorkingDays(d::serialOf(2026, 10, 30), 1), d::serialOf(2026, 11, 2));
    EXPECT_EQ(d::workingOnOrAfter(d::serialOf(2026, 10, 31)), d::serialOf(2026, 11, 2));
}

TEST_F(SampleArchive, HistoryEndsOnItsLastWorkingDay) {
    Query q(path());
    EXPECT_EQ(q.column("SELECT MAX(Fecha) FROM HOrdenes").at(0), "2026-10-30 00:00:00");
    // Half a year of history at least for a small sample, documents after their sources.
    EXPECT_LE(q.column("SELECT MIN(Fecha) FROM HOrdenes").at(0), "2026-05-04 00:00:00");
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HAlbaranes a JOIN HOrdenes o ON o.Numero = a.Doc_E WHERE a.Estado = 10 AND a.Fecha < o.Fecha"), 0);
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HAlbaranes a JOIN HFacturas f ON f.Numero = a.Doc_F WHERE a.Facturado = 4 AND f.Fecha < a.Fecha"), 0);
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM Recibos WHERE Fecha_Vencimiento < Fecha_Expedicion"), 0);
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HOrdenes_Fases WHERE Hora NOT LIKE '1899-12-30 %' OR Fecha < Fecha_Codigo"), 0);
}

TEST(SampleDeterminism, SameSeedSameContentOtherSeedOtherContent) {
    const std::string a = makeSample("seed11a.db", 150, 11);
    const std::string b = makeSample("seed11b.db", 150, 11);
    const std::string c = makeSample("seed12.db", 150, 12);
    const std::string ca = Query(a).content(), cb = Query(b).content(), cc = Query(c).content();
    EXPECT_GT(ca.size(), 10000u);
    EXPECT_TRUE(ca == cb) << "the same seed gave different archives";
    EXPECT_FALSE(ca == cc) << "another seed gave the same archive";
}

TEST(SampleGenerate, RefusesAnArchiveThatAlreadyHoldsDocuments) {
    const std::string a = makeSample("twice.db", 30, 1);
    hs::Options opt;
    opt.orders = 30;
    try {
        hs::generate(a, opt);
        FAIL() << "a second fill was accepted";
    } catch (const hist::Error& e) {
        EXPECT_NE(e.description().find("already holds rows"), std::string::npos) << e.description();
    }
    EXPECT_EQ(Query(a).scalar("SELECT COUNT(*) FROM HOrdenes"), 30);
}

TEST(SampleGenerate, RefusesMoreOrdersThanItCanPlanBeforeTouchingTheFile) {
    const std::string path = (tempDir() / "huge.db").string();
    hs::Options opt;
    opt.orders = hs::kMaxOrders + 1;
    try {
        hs::generate(path, opt);
        FAIL() << "a sample past the bound was accepted";
    } catch (const hist::Error& e) {
        EXPECT_NE(e.description().find("at most 5000000 work orders"), std::string::npos) << e.description();
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(SampleGenerate, ReportsProgressUpToTheTotal) {
    const std::string path = (tempDir() / "progress.db").string();
    hs::Options opt;
    opt.orders = 5000;
    std::vector<std::size_t> seen;
    opt.progress = [&](std::size_t done, std::size_t total) {
        EXPECT_EQ(total, 5000u);
        seen.push_back(done);
    };
    hs::generate(path, opt);
    ASSERT_GE(seen.size(), 2u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_EQ(seen.back(), 5000u);
}

struct InitCase {
    hs::InitOptions options;
    int code;
    const char* outHas;
    const char* errHas;
};

// What init does with the file; the command line's own refusals are the host's tests.
TEST(SampleInit, CreatesFillsAndRefusesToOverwrite) {
    const std::string db = (tempDir() / "init.db").string();
    fs::remove(db);
    const auto sample = [](std::size_t orders, uint64_t seed) {
        hs::Options o;
        o.orders = orders;
        o.seed = seed;
        return o;
    };
    const InitCase cases[] = {
        {{db}, 0, "Created", ""},
        {{db, false, true, sample(40, 3)}, 0, "Filled", ""},
        {{db, false, true, sample(40, 1)}, 1, "", "use --force"},
        {{db, true, true, sample(50, 3)}, 0, "HOrdenes", ""},
    };
    for (const InitCase& c : cases) {
        std::ostringstream out, err;
        const std::string line = c.options.db + (c.options.force ? " force" : "") + (c.options.sample ? " sample" : "");
        EXPECT_EQ(hs::initCommand(c.options, out, err), c.code) << line << "\n" << err.str();
        EXPECT_NE(out.str().find(c.outHas), std::string::npos) << line << "\n" << out.str();
        EXPECT_NE(err.str().find(c.errHas), std::string::npos) << line << "\n" << err.str();
    }
    // The forced run replaced the archive: 50 orders, not 40 + 50, and left nothing beside it.
    EXPECT_EQ(Query(db).scalar("SELECT COUNT(*) FROM HOrdenes"), 50);
    for (const auto& f : fs::directory_iterator(tempDir()))
        EXPECT_EQ(f.path().filename().string().find("init.db."), std::string::npos) << f.path();
}

std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// init writes only over an archive: anything else is named and kept, with or without --force.
TEST(SampleInit, NeverOverwritesWhatIsNotAnArchive) {
    const fs::path dir = tempDir() / "not-archives";
    fs::remove_all(dir);
    fs::create_directories(dir / "carpeta.db");
    std::ofstream(dir / "notas.txt") << "lista de la compra: escayola, cera, silicona\n";
    const std::string whole = bytesOf(makeSample("to-truncate.db", 60, 2));
    std::ofstream(dir / "cortado.db", std::ios::binary) << whole.substr(0, whole.size() / 2);
    {
        sqlite3* other = nullptr;
        ASSERT_EQ(sqlite3_open((dir / "ajeno.db").c_str(), &other), SQLITE_OK);
        sqlite3_exec(other, "CREATE TABLE notas (texto TEXT); INSERT INTO notas VALUES ('hornos')", nullptr, nullptr,
                     nullptr);
        sqlite3_close(other);
    }
    for (const char* name : {"carpeta.db", "notas.txt", "cortado.db", "ajeno.db"}) {
        const std::string path = (dir / name).string();
        const std::string before = fs::is_regular_file(path) ? bytesOf(path) : "";
        for (bool force : {false, true}) {
            hs::InitOptions o{.db = path, .force = force, .sample = true};
            o.generation.orders = 20;
            std::ostringstream out, err;
            EXPECT_EQ(hs::initCommand(o, out, err), 1) << name;
            EXPECT_NE(err.str().find(path), std::string::npos) << name << ": " << err.str();
            EXPECT_NE(err.str().find("init replaces only an archive"), std::string::npos) << name << ": " << err.str();
            EXPECT_EQ(err.str().find("--force"), std::string::npos) << name << ": " << err.str();
            EXPECT_EQ(fs::is_regular_file(path) ? bytesOf(path) : "", before) << name;
        }
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 4);  // no scratch file left
}

// A forced run that cannot finish keeps the old archive whole: here another
// connection holds the old archive's write lock, so it cannot be replaced.
TEST(SampleInit, AForcedRunThatFailsKeepsTheOldArchive) {
    const std::string db = makeSample("kept.db", 30, 4);
    sqlite3* holder = nullptr;
    ASSERT_EQ(sqlite3_open(db.c_str(), &holder), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(holder, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    std::ostringstream out, err;
    hs::InitOptions o{.db = db, .force = true, .sample = true};
    o.generation.orders = 20;
    EXPECT_EQ(hs::initCommand(o, out, err), 1);
    EXPECT_NE(err.str().find(db), std::string::npos) << err.str();
    sqlite3_exec(holder, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(holder);
    EXPECT_EQ(Query(db).scalar("SELECT COUNT(*) FROM HOrdenes"), 30);
    for (const auto& f : fs::directory_iterator(tempDir()))
        EXPECT_EQ(f.path().filename().string().find("kept.db.new"), std::string::npos) << f.path();
}

TEST(SampleInit, SummaryShowsCountsAndNewestDocuments) {
    const std::string db = makeSample("summary.db", 60, 5);
    std::ostringstream out;
    hs::summary(db, out);
    const std::string s = out.str();
    Query q(db);
    const std::string newest = q.column("SELECT Serie || '/' || Numero FROM HFacturas ORDER BY Fecha DESC, Numero DESC LIMIT 1").at(0);
    EXPECT_NE(s.find(" " + std::to_string(q.scalar("SELECT COUNT(*) FROM HOrdenes_Lineas")) + "\n"), std::string::npos) << s;
    EXPECT_NE(s.find("Newest invoices:\n  " + newest), std::string::npos) << s;
}

}  // namespace
