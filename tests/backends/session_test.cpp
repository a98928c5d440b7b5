#include <gtest/gtest.h>
#include <fstream>
#include <iterator>
#include <sqlite3.h>

#include "archive_fixture.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"

namespace hist {
namespace {

using backend::Cell;
using backend::FieldType;
using backend::StatementKind;
using testing::CollectSink;
using testing::run;
using testing::TempArchive;

long errorNumber(const std::function<void()>& f, std::string* description = nullptr) {
    try {
        f();
    } catch (const Error& e) {
        if (description) *description = e.description();
        EXPECT_EQ(e.source(), err::SrcSql);
        return e.number();
    }
    return 0;
}

TEST(SqliteSession, CreatesEveryCatalogTableWithItsDeclaredTypes) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    sqlite3* raw = nullptr;
    ASSERT_EQ(sqlite3_open(a.path().c_str(), &raw), SQLITE_OK);
    for (const auto& t : sql::catalog().tables()) {
        for (const auto& c : t.columns) {
            const char* decl = nullptr;
            const char* coll = nullptr;
            int notNull = 0, pk = 0, autoinc = 0;
            ASSERT_EQ(sqlite3_table_column_metadata(raw, "main", t.name.c_str(), c.name.c_str(), &decl, &coll,
                                                    &notNull, &pk, &autoinc),
                      SQLITE_OK)
                << t.name << "." << c.name;
            std::string declared = c.declaredType();
            EXPECT_EQ(declared.substr(0, declared.find(" COLLATE")), decl) << t.name << "." << c.name;
            if (c.isText()) {
                EXPECT_STREQ(coll, sql::kTextCollation) << t.name << "." << c.name;
            }
        }
    }
    sqlite3_stmt* st = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(raw, "PRAGMA journal_mode", -1, &st, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(st), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(st, 0)), "wal");
    sqlite3_finalize(st);
    sqlite3_close(raw);
    // Reopening an existing archive keeps its rows.
    s->execute("INSERT INTO Articulos (Codigo, Recargo) VALUES ('A1', 2.5)");
    s.reset();
    auto again = backend::openSession(a.source());
    EXPECT_EQ(run(*again, "SELECT Recargo FROM Articulos WHERE Codigo = 'a1'").rows.size(), 1u);
}

TEST(SqliteSession, DefaultsAndStoredFormsOfBoundValues) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    // Bound values take the stored form of the type given for them.
    std::vector<Variant> vals{Variant::lng(7), Variant::date(37653.4375), Variant(true), Variant(12.5),
                              Variant("Fábrica")};
    std::vector<FieldType> types{FieldType::Integer, FieldType::Date, FieldType::Boolean, FieldType::Double,
                                 FieldType::VarWChar};
    EXPECT_EQ(s->execute("INSERT INTO HOrdenes (Numero, Fecha, Repeticion, Base, Descripcion) VALUES (?, ?, ?, ?, ?)",
                         vals, types),
              1);
    EXPECT_GT(s->lastInsertRowId(), 0);
    auto r = run(*s, "SELECT Numero, Fecha, Repeticion, Base, descripcion, Facturado, Imagenes FROM HOrdenes");
    ASSERT_EQ(r.rows.size(), 1u);
    EXPECT_EQ(r.rows[0][0], "7");
    EXPECT_EQ(r.rows[0][1], "2003-02-01 10:30:00");
    EXPECT_EQ(r.rows[0][2], "-1");
    EXPECT_EQ(r.rows[0][3], "12.5");
    EXPECT_EQ(r.rows[0][4], "Fábrica");
    EXPECT_EQ(r.rows[0][5], "0") << "Facturado defaults to 0";
    EXPECT_EQ(r.rows[0][6], "0") << "yes/no defaults to false";
    // A time alone is stored on 1899-12-30; text is read by the regional settings.
    std::vector<Variant> t{Variant::date(0.4375), Variant("01/02/2003")};
    std::vector<FieldType> tt{FieldType::Date, FieldType::Date};
    s->execute("UPDATE HOrdenes SET Hora_Entrega = ?, Fecha_Entrega = ?", t, tt);
    auto r2 = run(*s, "SELECT Hora_Entrega, Fecha_Entrega FROM HOrdenes");
    EXPECT_EQ(r2.rows[0][0], "1899-12-30 10:30:00");
    EXPECT_EQ(r2.rows[0][1], "2003-02-01 00:00:00");
    std::vector<Variant> bad{Variant("no es un número")};
    std::vector<FieldType> bt{FieldType::Double};
    EXPECT_EQ(errorNumber([&] { s->execute("UPDATE HOrdenes SET Base = ?", bad, bt); }), err::SqlTypeMismatch);
}

TEST(SqliteSession, ColumnMetadataFollowsTheSelectList) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    s->execute("INSERT INTO HFacturas (Numero, Serie, Base, Doc_F) VALUES (5, 'A', 10, 0)");
    auto r = run(*s, "SELECT Numero AS Factura, Estado, Doc_f as Factura, total, BASE FROM HFacturas");
    ASSERT_EQ(r.cols.size(), 6u) << "five shown columns and the row identity";
    EXPECT_EQ(r.cols[0].name, "Factura");
    EXPECT_EQ(r.cols[0].baseTable, "HFacturas");
    EXPECT_EQ(r.cols[0].baseColumn, "Numero");
    EXPECT_EQ(r.cols[0].type, FieldType::Integer);
    EXPECT_EQ(r.cols[0].precision, 10);
    EXPECT_EQ(r.cols[0].definedSize, 4);
    EXPECT_EQ(r.cols[1].type, FieldType::SmallInt);
    EXPECT_EQ(r.cols[2].name, "Factura") << "a repeated alias stays a second column";
    EXPECT_EQ(r.cols[3].name, "Total") << "a bare column reports its declared spelling";
    EXPECT_EQ(r.cols[4].name, "Base");
    EXPECT_EQ(r.cols[4].type, FieldType::Double);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(r.cols[i].updatable) << i;
        EXPECT_FALSE(r.cols[i].hiddenRowId) << i;
    }
    EXPECT_TRUE(r.cols[5].hiddenRowId);
    EXPECT_EQ(r.cols[5].baseTable, "HFacturas");
    ASSERT_EQ(r.rows.size(), 1u);
    EXPECT_EQ(r.kinds[0][5], Cell::Kind::Int);

    // A computed column takes its type from the column it reads; no row identity.
    auto m = run(*s, "SELECT MAX(ID) AS Nuevo_Codigo FROM Recibos");
    ASSERT_EQ(m.cols.size(), 1u);
    EXPECT_EQ(m.cols[0].name, "Nuevo_Codigo");
    EXPECT_EQ(m.cols[0].type, FieldType::Integer);
    EXPECT_EQ(m.cols[0].definedSize, 4);
    EXPECT_TRUE(m.cols[0].baseTable.empty());
    EXPECT_FALSE(m.cols[0].updatable);
    ASSERT_EQ(m.rows.size(), 1u);
    EXPECT_EQ(m.rows[0][0], "NULL");
    auto d = run(*s, "SELECT MAX(Declaracion) FROM HOrdenes_Declaraciones Where Codigo = 3");
    EXPECT_EQ(d.cols[0].type, FieldType::Double);

    // Grouped, distinct and aliased-table selections.
    EXPECT_EQ(run(*s, "SELECT DISTINCT Serie FROM HFacturas").cols.size(), 1u);
    EXPECT_FALSE(run(*s, "SELECT DISTINCT Serie FROM HFacturas").cols[0].updatable);
    auto al = run(*s, "SELECT f.Numero FROM HFacturas f WHERE f.Numero = 5");
    ASSERT_EQ(al.cols.size(), 2u);
    EXPECT_TRUE(al.cols[1].hiddenRowId);
    EXPECT_TRUE(al.cols[0].updatable);
}

TEST(SqliteSession, TextComparesWithoutCaseAcrossUnicode) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    for (const char* v : {"Élan", "CERRADA", "Fabricación", "c01", "C02", "Ñandú"})
        s->execute(std::string("INSERT INTO HOrdenes_Fases (ID, Descripcion) VALUES (") +
                   std::to_string(s->lastInsertRowId() + 1) + ", '" + v + "')");
    struct Case {
        const char* where;
        size_t rows;
    };
    const Case cases[] = {
        {"Descripcion = 'élan'", 1},
        {"Descripcion = 'ELAN'", 0},  // accents are kept apart
        {"Descripcion <> 'Cerrada'", 5},
        {"Descripcion Like 'é*'", 1},
        {"Descripcion Like 'é%'", 1},
        {"Descripcion Like 'C?2'", 1},
        {"Descripcion Like 'c_1'", 1},
        {"Descripcion Like 'C#1'", 1},
        {"Descripcion Like 'c0[12]'", 2},
        {"Descripcion Like '[!c]*'", 3},
        {"Descripcion Like 'ñAND*'", 1},
        {"Descripcion Like '*ción'", 1},
        {"Descripcion > 'c02'", 4},
        {"ID Like '1'", 1},  // Like on a number column compares its text
    };
    for (const auto& c : cases)
        EXPECT_EQ(run(*s, std::string("SELECT ID FROM HOrdenes_Fases WHERE ") + c.where).rows.size(), c.rows)
            << c.where;
    auto sorted = run(*s, "SELECT Descripcion FROM HOrdenes_Fases ORDER BY Descripcion");
    ASSERT_EQ(sorted.rows.size(), 6u);
    EXPECT_EQ(sorted.rows[0][0], "c01");
    EXPECT_EQ(sorted.rows[1][0], "C02");
}

TEST(SqliteSession, CurrencyRoundingFunction) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    s->execute("INSERT INTO HOrdenes (Numero, Base, Gastos) VALUES (1, 166386, NULL)");
    s->execute("INSERT INTO HOrdenes (Numero, Base) VALUES (2, 445.08255)");
    s->execute("INSERT INTO HOrdenes (Numero, Base) VALUES (3, -20.79825)");
    s->execute("UPDATE HOrdenes SET Base = jet_currency(Base/166.386, 2), Gastos = jet_currency(Gastos/166.386, 2)");
    auto r = run(*s, "SELECT Base, Gastos FROM HOrdenes ORDER BY Numero");
    EXPECT_EQ(r.rows[0][0], "1000");
    EXPECT_EQ(r.rows[0][1], "NULL");
    EXPECT_EQ(r.rows[1][0], "2.68");
    EXPECT_EQ(r.rows[2][0], "-0.13");
}

TEST(SqliteSession, NestedTransactions) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    EXPECT_EQ(s->begin(), 1);
    s->execute("INSERT INTO Articulos (Codigo) VALUES ('A')");
    EXPECT_EQ(s->begin(), 2);
    s->execute("INSERT INTO Articulos (Codigo) VALUES ('B')");
    s->rollback();  // only B
    EXPECT_EQ(s->begin(), 2);
    s->execute("INSERT INTO Articulos (Codigo) VALUES ('C')");
    s->commit();
    EXPECT_EQ(s->depth(), 1);
    EXPECT_EQ(run(*s, "SELECT Codigo FROM Articulos ORDER BY Codigo").rows,
              (std::vector<std::vector<std::string>>{{"A", "1"}, {"C", "2"}}));
    s->rollback();
    EXPECT_EQ(s->depth(), 0);
    EXPECT_TRUE(run(*s, "SELECT Codigo FROM Articulos").rows.empty());
    s->begin();
    s->execute("INSERT INTO Articulos (Codigo) VALUES ('D')");
    s->commit();
    EXPECT_EQ(run(*s, "SELECT Codigo FROM Articulos").rows.size(), 1u);
    EXPECT_NE(errorNumber([&] { s->commit(); }), 0);
}

TEST(SqliteSession, WriterWaitsTheBusyTimeoutThenFailsLocked) {
    TempArchive a;
    auto one = backend::openSession(a.source());
    auto two = backend::openSession(a.source(100));
    one->begin();
    one->execute("INSERT INTO Articulos (Codigo) VALUES ('A')");
    std::string desc;
    EXPECT_EQ(errorNumber([&] { two->execute("INSERT INTO Articulos (Codigo) VALUES ('B')"); }, &desc),
              err::SqlLocked);
    EXPECT_EQ(desc, "Could not update; currently locked.");
    // Readers still see the last committed state.
    EXPECT_TRUE(run(*two, "SELECT Codigo FROM Articulos").rows.empty());
    one->commit();
    two->execute("INSERT INTO Articulos (Codigo) VALUES ('B')");
    EXPECT_EQ(run(*one, "SELECT Codigo FROM Articulos").rows.size(), 2u);
}

TEST(SqliteSession, OpeningAnArchiveNeedsNoWriteLock) {
    // A member that opens its own connection while the host holds a transaction on
    // another one must be able to read: opening a complete archive writes nothing.
    TempArchive a;
    auto one = backend::openSession(a.source());
    one->begin();
    one->execute("INSERT INTO Articulos (Codigo) VALUES ('A')");
    std::unique_ptr<backend::Session> two;
    EXPECT_EQ(errorNumber([&] { two = backend::openSession(a.source(100)); }), 0);
    ASSERT_TRUE(two);
    EXPECT_TRUE(run(*two, "SELECT Codigo FROM Articulos").rows.empty());
    one->rollback();
}

TEST(SqliteSession, AFileThatIsNotAnArchiveIsNamedAndLeftAlone) {
    TempArchive a;
    {
        std::ofstream f(a.path(), std::ios::binary);
        f << "Presupuesto del laboratorio, no una base de datos.\n";
    }
    std::string desc;
    EXPECT_NE(errorNumber([&] { backend::openSession(a.source()); }, &desc), 0);
    EXPECT_NE(desc.find("'" + a.path() + "' is not an archive"), std::string::npos) << desc;
    std::ifstream back(a.path(), std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(back)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "Presupuesto del laboratorio, no una base de datos.\n");
}

TEST(SqliteSession, EngineFailuresCarryTheProviderNumbers) {
    TempArchive a;
    auto s = backend::openSession(a.source());
    s->execute("INSERT INTO HFacturas (Numero) VALUES (1)");
    struct Case {
        const char* sql;
        StatementKind kind;
        long number;
        const char* starts;
    };
    const Case cases[] = {
        {"SELECT * FROM NoExiste", StatementKind::Read, err::SqlNoTable, "Cannot find the input table or query 'NoExiste'"},
        {"SELECT Numero FROM HPedidos_Clientes Estado = 1 or Estado = 2", StatementKind::Read, err::SqlSyntax,
         "Syntax error"},
        {"SELECT Numero FROM HFacturas WHERE Numero = ", StatementKind::Read, err::SqlSyntax, "Syntax error"},
        {"INSERT INTO HFacturas (Numero, Base) VALUES (2, 12,5)", StatementKind::Write, err::SqlSyntax,
         "Number of query values and destination fields are not the same"},
        {"INSERT INTO HFacturas (Numero) VALUES (1)", StatementKind::Write, -2147467259,
         "The changes you requested"},
        {"SELECT Nada FROM HFacturas", StatementKind::Read, -2147217904, "No value given"},
        {"   ", StatementKind::Read, err::SqlSyntax, "Invalid SQL statement"},
    };
    for (const auto& c : cases) {
        std::string desc;
        long n = errorNumber(
            [&] {
                if (c.kind == StatementKind::Read) run(*s, c.sql);
                else s->execute(c.sql);
            },
            &desc);
        EXPECT_EQ(n, c.number) << c.sql;
        EXPECT_TRUE(desc.starts_with(c.starts)) << c.sql << " -> " << desc;
    }
}

}  // namespace
}  // namespace hist
