// The sample archive: links between documents, series and counters, stored
// forms, determinism, and the init command.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
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

namespace hs = hist::sample;
namespace fs = std::filesystem;

namespace {

fs::path tempDir() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / ("historicos-sample-" + std::to_string(::getpid()));
        fs::remove_all(d);
        fs::create_directories(d);
        return d;
    }();
    return dir;
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

class SampleArchive : public ::testing::Test {
protected:
    static void SetUpTestSuite() { path_ = new std::string(makeSample("small.db", 400, 7)); }
    static void TearDownTestSuite() {
        delete path_;
        path_ = nullptr;
    }
    static const std::string& path() { return *path_; }
    static std::string* path_;
};
std::string* SampleArchive::path_ = nullptr;

struct Check {
    const char* what;
    const char* query;  // counts the rows that break the rule
};

TEST_F(SampleArchive, EveryLinkNamesADocumentThatExists) {
    static const Check kChecks[] = {
        {"order Doc_F of an invoice",
         "SELECT COUNT(*) FROM HOrdenes o WHERE Facturado = 4 AND NOT EXISTS (SELECT 1 FROM HFacturas f WHERE f.Numero = o.Doc_F)"},
        {"order Doc_F of a delivery note",
         "SELECT COUNT(*) FROM HOrdenes o WHERE Facturado = 3 AND NOT EXISTS (SELECT 1 FROM HAlbaranes a WHERE a.Numero = o.Doc_F)"},
        {"order not taken but Doc_F set", "SELECT COUNT(*) FROM HOrdenes WHERE Facturado = 0 AND Doc_F <> 0"},
        {"order Facturado code", "SELECT COUNT(*) FROM HOrdenes WHERE Facturado NOT IN (0, 3, 4)"},
        {"customer order Doc_F of an invoice",
         "SELECT COUNT(*) FROM HPedidos_Clientes o WHERE Facturado = 4 AND NOT EXISTS (SELECT 1 FROM HFacturas f WHERE f.Numero = o.Doc_F)"},
        {"customer order Doc_F of a delivery note",
         "SELECT COUNT(*) FROM HPedidos_Clientes o WHERE Facturado = 3 AND NOT EXISTS (SELECT 1 FROM HAlbaranes a WHERE a.Numero = o.Doc_F)"},
        {"customer order Facturado code",
         "SELECT COUNT(*) FROM HPedidos_Clientes WHERE Facturado NOT IN (0, 3, 4) OR (Facturado = 0 AND Doc_F <> 0)"},
        {"delivery note Doc_F",
         "SELECT COUNT(*) FROM HAlbaranes a WHERE Facturado = 4 AND NOT EXISTS (SELECT 1 FROM HFacturas f WHERE f.Numero = a.Doc_F AND f.Fecha = a.Fecha_F)"},
        {"delivery note Facturado code",
         "SELECT COUNT(*) FROM HAlbaranes WHERE Facturado NOT IN (0, 4) OR (Facturado = 0 AND (Doc_F <> 0 OR Fecha_F <> '1899-12-30 00:00:00'))"},
        {"order line Doc_F",
         "SELECT COUNT(*) FROM HOrdenes_Lineas l WHERE Facturado = 4 AND NOT EXISTS (SELECT 1 FROM HFacturas f WHERE f.Numero = l.Doc_F)"},
        {"order line link differs from its order",
         "SELECT COUNT(*) FROM HOrdenes_Lineas l JOIN HOrdenes o ON o.Numero = l.Numero WHERE l.Doc_F <> CASE WHEN o.Facturado = 4 THEN o.Doc_F ELSE 0 END"},
        {"note taken from an order that does not point back",
         "SELECT COUNT(*) FROM HAlbaranes a JOIN HOrdenes o ON o.Numero = a.Doc_E WHERE a.Estado = 10 AND NOT "
         "((a.Facturado = 4 AND o.Facturado = 4 AND o.Doc_F = a.Doc_F) OR (a.Facturado = 0 AND o.Facturado = 3 AND o.Doc_F = a.Numero))"},
        {"note Doc_E of a work order",
         "SELECT COUNT(*) FROM HAlbaranes a WHERE Estado = 10 AND NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = a.Doc_E)"},
        {"note Doc_E of a customer order",
         "SELECT COUNT(*) FROM HAlbaranes a WHERE Estado = 2 AND NOT EXISTS (SELECT 1 FROM HPedidos_Clientes o WHERE o.Numero = a.Doc_E)"},
        {"note Estado", "SELECT COUNT(*) FROM HAlbaranes WHERE Estado NOT IN (2, 10)"},
        {"invoice from a work order",
         "SELECT COUNT(*) FROM HFacturas f WHERE Estado = 10 AND NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = f.Doc_E AND o.Doc_F = f.Numero AND o.Facturado = 4)"},
        {"invoice from a customer order",
         "SELECT COUNT(*) FROM HFacturas f WHERE Estado = 2 AND NOT EXISTS (SELECT 1 FROM HPedidos_Clientes o WHERE o.Numero = f.Doc_E AND o.Doc_F = f.Numero AND o.Facturado = 4)"},
        {"invoice from one delivery note",
         "SELECT COUNT(*) FROM HFacturas f WHERE Estado = 3 AND NOT EXISTS (SELECT 1 FROM HAlbaranes a WHERE a.Numero = f.Doc_E AND a.Doc_F = f.Numero)"},
        {"invoicing run without notes",
         "SELECT COUNT(*) FROM HFacturas f WHERE Estado = 7 AND (SELECT COUNT(*) FROM HAlbaranes a WHERE a.Doc_F = f.Numero AND a.Facturado = 4) < 2"},
        {"invoice Estado", "SELECT COUNT(*) FROM HFacturas WHERE Estado NOT IN (2, 3, 7, 10)"},
        {"receipt of no invoice",
         "SELECT COUNT(*) FROM Recibos r WHERE NOT EXISTS (SELECT 1 FROM HFacturas f WHERE f.Numero = r.Numero AND f.Serie = r.Serie AND f.Codigo = r.Codigo)"},
        {"invoice without receipts",
         "SELECT COUNT(*) FROM HFacturas f WHERE NOT EXISTS (SELECT 1 FROM Recibos r WHERE r.Numero = f.Numero)"},
        {"receipts not adding up to the invoice",
         "SELECT COUNT(*) FROM HFacturas f WHERE ABS(f.Total - (SELECT SUM(Total) FROM Recibos r WHERE r.Numero = f.Numero)) > 0.005"},
        {"receipt state", "SELECT COUNT(*) FROM Recibos WHERE Estado NOT IN (0, -1, 2)"},
        {"order line of no order",
         "SELECT COUNT(*) FROM HOrdenes_Lineas l WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = l.Numero AND o.Fecha = l.Fecha)"},
        {"customer order line of no customer order",
         "SELECT COUNT(*) FROM HPedidos_Clientes_Lineas l WHERE NOT EXISTS (SELECT 1 FROM HPedidos_Clientes o WHERE o.Numero = l.Numero)"},
        {"note line of no note",
         "SELECT COUNT(*) FROM HAlbaranes_Lineas l WHERE NOT EXISTS (SELECT 1 FROM HAlbaranes o WHERE o.Numero = l.Numero)"},
        {"invoice line of no invoice",
         "SELECT COUNT(*) FROM HFacturas_Lineas l WHERE NOT EXISTS (SELECT 1 FROM HFacturas o WHERE o.Numero = l.Numero)"},
        {"line of no article",
         "SELECT COUNT(*) FROM HOrdenes_Lineas l WHERE NOT EXISTS (SELECT 1 FROM Articulos a WHERE a.Codigo = l.Codigo)"},
        {"order base differs from its lines",
         "SELECT COUNT(*) FROM HOrdenes o WHERE ABS(o.Base - ROUND((SELECT SUM(Importe) FROM HOrdenes_Lineas l WHERE l.Numero = o.Numero)"
         " * (1 - o.Descuento / 100) * (1 - o.Descuento_PP / 100), 2)) > 0.011"},
        {"invoice base differs from its lines",
         "SELECT COUNT(*) FROM HFacturas o WHERE ABS(o.Base - ROUND((SELECT SUM(Importe) FROM HFacturas_Lineas l WHERE l.Numero = o.Numero)"
         " * (1 - o.Descuento / 100) * (1 - o.Descuento_PP / 100), 2)) > 0.011"},
        {"invoice total", "SELECT COUNT(*) FROM HFacturas WHERE ABS(Total - (Base + Gastos + Importe_Impuestos)) > 0.005"},
        {"order satellites of no order",
         "SELECT (SELECT COUNT(*) FROM HOrdenes_Odontograma s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha))"
         " + (SELECT COUNT(*) FROM HOrdenes_Color s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha))"
         " + (SELECT COUNT(*) FROM HOrdenes_Fases s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha_Codigo))"
         " + (SELECT COUNT(*) FROM HOrdenes_Pruebas s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo))"
         " + (SELECT COUNT(*) FROM HOrdenes_Declaraciones s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha_Codigo))"
         " + (SELECT COUNT(*) FROM HOrdenes_Reclamaciones s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Numero AND o.Codigo = s.Codigo))"
         " + (SELECT COUNT(*) FROM HOrdenes_Etiquetas s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha))"
         " + (SELECT COUNT(*) FROM HOrdenes_Comentarios s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Codigo AND o.Fecha = s.Fecha))"
         " + (SELECT COUNT(*) FROM HOrdenes_Cabecera s WHERE NOT EXISTS (SELECT 1 FROM HOrdenes o WHERE o.Numero = s.Numero AND o.Fecha = s.fecha AND o.Codigo = s.Codigo))"},
        {"document satellites of no document",
         "SELECT (SELECT COUNT(*) FROM HPedidos_Clientes_Comentarios s WHERE NOT EXISTS (SELECT 1 FROM HPedidos_Clientes o WHERE o.Numero = s.Codigo))"
         " + (SELECT COUNT(*) FROM HAlbaranes_Comentarios s WHERE NOT EXISTS (SELECT 1 FROM HAlbaranes o WHERE o.Numero = s.Codigo))"
         " + (SELECT COUNT(*) FROM HFacturas_Comentarios s WHERE NOT EXISTS (SELECT 1 FROM HFacturas o WHERE o.Numero = s.Codigo))"
         " + (SELECT COUNT(*) FROM HPedidos_Clientes_Cabecera s WHERE NOT EXISTS (SELECT 1 FROM HPedidos_Clientes o WHERE o.Numero = s.Numero))"
         " + (SELECT COUNT(*) FROM HAlbaranes_Cabecera s WHERE NOT EXISTS (SELECT 1 FROM HAlbaranes o WHERE o.Numero = s.Numero))"
         " + (SELECT COUNT(*) FROM HFacturas_Cabecera s WHERE NOT EXISTS (SELECT 1 FROM HFacturas o WHERE o.Numero = s.Numero))"},
        {"phase ID repeated", "SELECT COUNT(*) - COUNT(DISTINCT ID) FROM HOrdenes_Fases"},
        {"receipt Id repeated", "SELECT COUNT(*) - COUNT(DISTINCT Id) FROM Recibos"},
    };
    Query q(path());
    for (const Check& c : kChecks) EXPECT_EQ(q.scalar(c.query), 0) << c.what;
}

TEST_F(SampleArchive, EveryStateOfTheLinksOccurs) {
    static const Check kPresent[] = {
        {"order in production", "SELECT COUNT(*) FROM HOrdenes WHERE Cerrada = 'Fabricación' AND Fecha_Cierre IS NULL"},
        {"order waiting on a delivery note", "SELECT COUNT(*) FROM HOrdenes WHERE Facturado = 3"},
        {"invoiced order", "SELECT COUNT(*) FROM HOrdenes WHERE Facturado = 4"},
        {"closed order not invoiced", "SELECT COUNT(*) FROM HOrdenes WHERE Cerrada = 'Cerrada' AND Facturado = 0"},
        {"customer order pending", "SELECT COUNT(*) FROM HPedidos_Clientes WHERE Facturado = 0"},
        {"note pending", "SELECT COUNT(*) FROM HAlbaranes WHERE Facturado = 0"},
        {"invoice of a run", "SELECT COUNT(*) FROM HFacturas WHERE Estado = 7"},
        {"invoice of one note", "SELECT COUNT(*) FROM HFacturas WHERE Estado = 3"},
        {"invoice of an order", "SELECT COUNT(*) FROM HFacturas WHERE Estado = 10"},
        {"posted and pending invoices", "SELECT COUNT(DISTINCT Facturado) - 1 FROM HFacturas"},
        {"unpaid receipt", "SELECT COUNT(*) FROM Recibos WHERE Estado = 0"},
        {"paid receipt", "SELECT COUNT(*) FROM Recibos WHERE Estado = -1"},
        {"paid and posted receipt", "SELECT COUNT(*) FROM Recibos WHERE Estado = 2"},
        {"receipt in instalments", "SELECT COUNT(*) FROM Recibos WHERE Contador > 1"},
        {"claim", "SELECT COUNT(*) FROM HOrdenes_Reclamaciones"},
        {"live notes", "SELECT COUNT(*) FROM Albaranes"},
        {"live customer orders", "SELECT COUNT(*) FROM Pedidos_Clientes"},
        {"live invoices", "SELECT COUNT(*) FROM Facturas"},
    };
    Query q(path());
    for (const Check& c : kPresent) EXPECT_GT(q.scalar(c.query), 0) << c.what;

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
        EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM " + table +
                           " WHERE NOT ((Serie = 'A' AND Numero BETWEEN 1 AND 9999) OR (Serie = 'B' AND Numero BETWEEN 10001 AND 24999)"
                           " OR (Serie = 'C' AND Numero >= 25001))"),
                  0)
            << table;
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
            EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM " + table + " WHERE Serie = '" + s.serie + "'"), highest - s.start)
                << table << " " << s.serie;
        }
    }
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM Numeradores"), 4);
}

TEST_F(SampleArchive, ClosingRunsSitAtBothLevels) {
    Query q(path());
    for (const char* t : {"HPedidos_Clientes_Cabecera", "HAlbaranes_Cabecera", "HFacturas_Cabecera"}) {
        const std::string first = t, second = std::string("H") + t;
        EXPECT_GT(q.scalar("SELECT COUNT(*) FROM " + first + " WHERE Cierre IS NOT NULL"), 0) << first;
        EXPECT_GT(q.scalar("SELECT COUNT(*) FROM " + first + " WHERE Cierre IS NULL"), 0) << first;
        EXPECT_GT(q.scalar("SELECT COUNT(*) FROM " + second), 0) << second;
        EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM " + second + " WHERE Cierre IS NULL OR Id IS NOT NULL OR Numero IS NOT NULL OR fecha IS NOT NULL"), 0)
            << second;
        // A run is at one level at a time.
        EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM " + first + " WHERE Cierre IN (SELECT Cierre FROM " + second + ")"), 0)
            << first;
    }
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HHOrdenes_Cabecera"), 0);
}

TEST_F(SampleArchive, StoredFormsFitTheCatalog) {
    Query q(path());
    for (const hist::sql::Table& t : hist::sql::catalog().tables()) {
        for (const hist::sql::Column& c : t.columns) {
            std::string bad;
            switch (c.jet) {
                case hist::sql::JetType::Text:
                    bad = "length(" + c.name + ") > " + std::to_string(c.definedSize);
                    break;
                case hist::sql::JetType::Date:
                    bad = "typeof(" + c.name + ") <> 'text' OR " + c.name +
                          " NOT GLOB '[12][0-9][0-9][0-9]-[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-5][0-9]'";
                    break;
                case hist::sql::JetType::YesNo:
                    bad = c.name + " NOT IN (-1, 0)";
                    break;
                case hist::sql::JetType::Long:
                case hist::sql::JetType::Integer:
                    bad = "typeof(" + c.name + ") <> 'integer'";
                    break;
                case hist::sql::JetType::Double:
                    bad = "typeof(" + c.name + ") NOT IN ('real', 'integer')";
                    break;
                case hist::sql::JetType::Memo:
                    bad = "typeof(" + c.name + ") <> 'text'";
                    break;
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

TEST_F(SampleArchive, AccentedTextsSurviveTheRoundTrip) {
    Query q(path());
    // Texts written from the vocabulary come back byte for byte.
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HOrdenes WHERE Concepto = 'Prótesis dental a medida'"), 400);
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM Articulos WHERE Descripcion = 'Corona metal-cerámica' AND Codigo = 'CMC'"), 1);
    EXPECT_EQ(q.scalar("SELECT COUNT(*) FROM HOrdenes_Lineas l JOIN Articulos a ON a.Codigo = l.Codigo"
                       " WHERE substr(l.Descripcion, 1, length(a.Descripcion)) <> a.Descripcion"),
              0);
    // The first customer is the first clinic of the vocabulary, in every document.
    EXPECT_EQ(q.column("SELECT DISTINCT Razon_Social FROM HOrdenes WHERE Codigo = '1'"),
              std::vector<std::string>{"Clínica Dental Sonrisa"});
    EXPECT_EQ(q.column("SELECT DISTINCT Razon_Social FROM Recibos WHERE Codigo = '1'"),
              std::vector<std::string>{"Clínica Dental Sonrisa"});
    // Characters, not bytes: an accented letter counts once.
    EXPECT_EQ(q.scalar("SELECT length('Fabricación')"), 11);
    long long accented = 0;
    for (const char* s : {"á", "é", "í", "ó", "ú", "ñ", "Á", "Í", "Ó", "º"})
        accented += q.scalar(std::string("SELECT COUNT(*) FROM HOrdenes_Cabecera WHERE instr(Razon_Social || Nombre || Direccion || Poblacion, '") +
                             s + "') > 0");
    EXPECT_GT(accented, 0);
}

// Collects the first column of a selection as text.
class TextSink : public hist::backend::RowSink {
public:
    void columns(const std::vector<hist::backend::ColumnMeta>&) override {}
    void row(std::span<const hist::backend::Cell> cells) override { values.emplace_back(cells[0].text); }
    std::vector<std::string> values;
};

TEST_F(SampleArchive, TheEngineReadsBackWhatWasWritten) {
    hist::backend::DataSource ds;
    ds.path = path();
    auto session = hist::backend::openSession(ds);
    TextSink sink;
    session->query("SELECT Descripcion FROM Articulos WHERE Codigo = 'CMC'", sink);
    EXPECT_EQ(sink.values, std::vector<std::string>{"Corona metal-cerámica"});
    // The archive's text collation ignores case, accented capitals included.
    TextSink states;
    session->query("SELECT DISTINCT Cerrada FROM HOrdenes WHERE Cerrada = 'FABRICACIÓN'", states);
    EXPECT_EQ(states.values, std::vector<std::string>{"Fabricación"});
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
        hist::backend::openSession(ds);
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
    } days[] = {{1899, 12, 30}, {1900, 3, 1}, {2000, 2, 29}, {2019, 1, 7}, {2024, 12, 31}, {2026, 10, 30}};
    for (const auto& x : days) {
        const int s = d::serialOf(x.y, x.m, x.dd);
        EXPECT_EQ(s, static_cast<int>(hist::rt::dateSerial(x.y, x.m, x.dd))) << x.y << "-" << x.m << "-" << x.dd;
        EXPECT_EQ(d::isoText(s, 9 * 3600 + 5 * 60 + 7), hist::rt::isoText(s + hist::rt::timeSerial(9, 5, 7)));
        int y, m, dd;
        d::civilOf(s, y, m, dd);
        EXPECT_EQ(y * 10000 + m * 100 + dd, x.y * 10000 + x.m * 100 + x.dd);
    }
    EXPECT_EQ(d::isoText(0, 17 * 3600 + 30 * 60), "1899-12-30 17:30:00");
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
    std::vector<std::string> args;
    int code;
    const char* outHas;
    const char* errHas;
};

TEST(SampleInit, CommandLine) {
    const std::string db = (tempDir() / "init.db").string();
    fs::remove(db);
    const InitCase cases[] = {
        {{"init", "--db", db}, 0, "Created", ""},
        {{"init", "--db", db, "--sample", "--orders", "40", "--seed", "3"}, 0, "Filled", ""},
        {{"init", "--db", db, "--sample", "--orders", "40"}, 1, "", "use --force"},
        {{"init", "--db", db, "--force", "--sample", "--orders", "50", "--seed", "3"}, 0, "HOrdenes", ""},
        {{"init", "--db", db, "--orders", "x"}, 2, "", "whole number"},
        {{"init", "--db", db, "--orders", "0"}, 2, "", "above 0"},
        {{"init", "--bogus"}, 2, "", "unknown option '--bogus'"},
        {{"init", "--db"}, 2, "", "needs a path"},
    };
    for (const InitCase& c : cases) {
        std::ostringstream out, err;
        std::string line;
        for (const auto& a : c.args) line += a + " ";
        EXPECT_EQ(hs::initCommand(c.args, out, err), c.code) << line << "\n" << err.str();
        EXPECT_NE(out.str().find(c.outHas), std::string::npos) << line << "\n" << out.str();
        EXPECT_NE(err.str().find(c.errHas), std::string::npos) << line << "\n" << err.str();
    }
    // The forced run replaced the archive: 50 orders, not 40 + 50.
    EXPECT_EQ(Query(db).scalar("SELECT COUNT(*) FROM HOrdenes"), 50);

    // A file that is not an archive is not overwritten either.
    const std::string other = (tempDir() / "notes.txt").string();
    std::ofstream(other) << "lista de la compra: escayola, cera, silicona\n";
    std::ostringstream out, err;
    EXPECT_EQ(hs::initCommand({"init", "--db", other, "--sample"}, out, err), 1);
    EXPECT_NE(err.str().find("use --force"), std::string::npos) << err.str();
    std::ifstream back(other);
    std::string firstLine;
    std::getline(back, firstLine);
    EXPECT_EQ(firstLine, "lista de la compra: escayola, cera, silicona");
}

TEST(SampleInit, SummaryShowsCountsAndNewestDocuments) {
    const std::string db = makeSample("summary.db", 60, 5);
    std::ostringstream out;
    hs::summary(db, out);
    const std::string s = out.str();
    Query q(db);
    const std::string newest = q.column("SELECT Serie || '/' || Numero FROM HFacturas ORDER BY Fecha DESC, Numero DESC LIMIT 1").at(0);
    EXPECT_NE(s.find("HOrdenes_Lineas"), std::string::npos) << s;
    EXPECT_NE(s.find(" " + std::to_string(q.scalar("SELECT COUNT(*) FROM HOrdenes_Lineas")) + "\n"), std::string::npos) << s;
    EXPECT_NE(s.find("Newest invoices:\n  " + newest), std::string::npos) << s;
}

}  // namespace
