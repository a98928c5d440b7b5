#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/services/config.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services_testutil.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"

namespace hist::services {
namespace {

using ::testing::HasSubstr;
using test::raised;
using testing::Scratch;

// An archive of its own in a scratch folder, reached by iBase 1 and 4.
class ServicesData : public ::testing::Test {
protected:
    void SetUp() override {
        Config c = Config::defaults(test::envOf({{"HOME", dir.str()}}));
        c.archive = (dir / "archivo.db").string();
        c.reportDir = "/srv/informes";
        c.documentDir = "/srv/documentos";
        backend::createArchive(c.dataSource(4));
        Configuration::install(c);
    }
    void TearDown() override { Configuration::reset(); }

    // Runs a statement on a connection of its own, committed.
    void exec(const std::string& text, int16_t iBase = 4) {
        Variant v(text);
        ConnPtr cn;
        svc.EjecutarSql(iBase, v, cn);
    }
    // Opens a selection on the given connection, or on one of the service's own.
    RsPtr open(const std::string& text, ConnPtr cn = nullptr) {
        Variant v(text);
        RsPtr rs;
        svc.AbrirRs(4, v, rs, cn);
        return rs;
    }
    long count(const std::string& where, ConnPtr cn = nullptr) {
        return open("SELECT Codigo FROM Articulos WHERE " + where, cn)->RecordCount();
    }

    RegionalScope es{Regional::esES()};
    Scratch dir;
    ClsServicioDatos svc;
};

TEST_F(ServicesData, GetConexionGivesANewOpenConnectionEachCall) {
    ConnPtr a = svc.GetConexion(4, nullptr, 0);
    ConnPtr b = svc.GetConexion(4, nullptr, 0);
    ConnPtr c = svc.GetConexion(1, nullptr, 0);
    ASSERT_TRUE(a && b && c);
    EXPECT_NE(a, b);
    for (const ConnPtr& cn : {a, b, c}) {
        EXPECT_EQ(cn->State(), 1);
        EXPECT_EQ(cn->dataSource().path, (dir / "archivo.db").string());
        EXPECT_EQ(cn->dataSource().busyTimeoutMs, 2000);
    }
    Error unset = raised([&] { svc.GetConexion(2, nullptr, 0); });  // iBase 2 is not configured
    EXPECT_EQ(unset.number(), err::InvalidCall);
    EXPECT_THAT(unset.description(), HasSubstr("iBase 2"));
}

TEST_F(ServicesData, OnlyEjecutarSqlWritesIntoAnUnsetConnection) {
    exec("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('C1', 'Corona', 4)");
    Variant sql("SELECT Codigo, Recargo FROM Articulos WHERE Codigo = 'C1'");
    RsPtr rs;  // unset: the service makes it
    ConnPtr objCn;
    svc.AbrirRs(4, sql, rs, objCn, 0);
    EXPECT_EQ(objCn, nullptr);
    ASSERT_NE(rs, nullptr);
    ASSERT_NE(rs->ActiveConnection(), nullptr);
    EXPECT_EQ(rs->ActiveConnection()->State(), 1);
    // The recordset is updatable in batch on the service's own connection.
    ASSERT_EQ(rs->RecordCount(), 1);
    rs->setValue("Recargo", Variant(7.5));
    rs->UpdateBatch(3);
    Variant check("SELECT Recargo FROM Articulos WHERE Codigo = 'C1'");
    EXPECT_EQ(rt::CDbl(open(check.asString())->value("Recargo")), 7.5);

    // A recordset the caller made is the one opened; a given connection is its connection.
    auto mine = std::make_shared<ado::Recordset>();
    RsPtr held = mine;
    ConnPtr cn = svc.GetConexion(4);
    svc.AbrirRs(4, check, held, cn, 0);
    EXPECT_EQ(held, mine);
    EXPECT_EQ(held->ActiveConnection(), cn);

    // EjecutarSql, unlike AbrirRs, leaves its connection in an unset variable.
    Variant ins("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('C2', 'Puente', 0)");
    svc.EjecutarSql(4, ins, objCn);  // objCn is still unset
    ASSERT_NE(objCn, nullptr);
    EXPECT_EQ(objCn->State(), 1);
    EXPECT_EQ(objCn->TransactionLevel(), 0);
    EXPECT_EQ(count("Codigo = 'C2'"), 1);  // no transaction: visible to everyone
}

TEST_F(ServicesData, AGivenConnectionIsUsedInsideTheCallersTransaction) {
    ConnPtr other = svc.GetConexion(4);  // opened before the caller's transaction begins
    ConnPtr cn = svc.GetConexion(4);
    ConnPtr same = cn;
    ASSERT_EQ(cn->BeginTrans(), 1);
    Variant ins("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('T1', 'Temporal', 1)");
    svc.EjecutarSql(4, ins, cn);
    EXPECT_EQ(cn, same);  // used as it is, not replaced
    EXPECT_EQ(cn->TransactionLevel(), 1);
    EXPECT_EQ(count("Codigo = 'T1'", cn), 1);  // the caller's connection sees its own work
    EXPECT_EQ(count("Codigo = 'T1'", other), 0);  // another connection does not
    cn->RollbackTrans();
    EXPECT_EQ(count("Codigo = 'T1'", cn), 0);
    EXPECT_EQ(count("Codigo = 'T1'", other), 0);

    cn->BeginTrans();
    svc.EjecutarSql(4, ins, cn);
    cn->CommitTrans();
    EXPECT_EQ(count("Codigo = 'T1'"), 1);
}

TEST_F(ServicesData, ObserversSeeEveryStatement) {
    std::vector<StatementEvent> seen;
    auto sub = StatementObservers::subscribe([&](const StatementEvent& e) { seen.push_back(e); });

    ConnPtr cn;
    std::string date = svc.FechaSql(4, Variant::date(rt::dateSerial(2026, 11, 22)));
    Variant ins("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('C3', 'Inlay', '2,5')");
    svc.EjecutarSql(4, ins, cn);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].op, "EjecutarSql");
    EXPECT_EQ(seen[0].iBase, 4);
    EXPECT_EQ(seen[0].composed, ins.asString());
    EXPECT_NE(seen[0].sent, seen[0].composed);  // the quoted locale number was rewritten
    EXPECT_THAT(seen[0].sent, HasSubstr("2.5"));
    EXPECT_EQ(seen[0].connection, cn);

    Variant sel("SELECT Codigo, Recargo FROM Articulos WHERE Codigo = 'C3'");
    RsPtr rs;
    ConnPtr unset;
    svc.AbrirRs(1, sel, rs, unset);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[1].op, "AbrirRs");
    EXPECT_EQ(seen[1].iBase, 1);
    EXPECT_EQ(seen[1].composed, sel.asString());
    EXPECT_EQ(seen[1].connection, rs->ActiveConnection());
    EXPECT_EQ(rt::CDbl(rs->value("Recargo")), 2.5);

    // The recordset's own statements come through its connection.
    rs->setValue("Recargo", Variant(3.0));
    rs->UpdateBatch(3);
    rs->Requery(-1);
    ASSERT_GE(seen.size(), 4u);
    bool wroteBack = false;
    for (size_t i = 2; i + 1 < seen.size(); ++i) {
        EXPECT_EQ(seen[i].op, "UpdateBatch");
        EXPECT_EQ(seen[i].iBase, 1);
        EXPECT_EQ(seen[i].connection, rs->ActiveConnection());
        wroteBack = wroteBack || seen[i].sent.rfind("UPDATE", 0) == 0;
    }
    EXPECT_TRUE(wroteBack) << "the write-back statement was not told";
    EXPECT_EQ(seen.back().op, "Requery");
    EXPECT_EQ(seen.back().connection, rs->ActiveConnection());

    // A refused statement is told, and its failure reaches the caller unchanged.
    Variant bad("UPDATE Articulos SET Descripcion = 'O'Brien' WHERE Codigo = 'C3'");
    size_t before = seen.size();
    EXPECT_EQ(raised([&] { svc.EjecutarSql(4, bad, cn); }).number(), err::SqlSyntax);  // a stray apostrophe
    ASSERT_EQ(seen.size(), before + 1);
    EXPECT_EQ(seen.back().composed, bad.asString());
    EXPECT_EQ(seen.back().sent, "");

    sub.reset();
    Variant more("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('C4', 'Onlay', 0)");
    svc.EjecutarSql(4, more, cn);
    EXPECT_EQ(seen.size(), before + 1);  // no longer subscribed
}

TEST_F(ServicesData, DateLiteralsAreAlwaysIso) {
    struct Case {
        Variant date;
        const char* literal;
    };
    const Case cases[] = {
        {Variant::date(rt::dateSerial(2026, 11, 22)), "#2026-11-22 00:00:00#"},
        {Variant::date(rt::dateSerial(2026, 2, 3) + rt::timeSerial(9, 5, 7)), "#2026-02-03 09:05:07#"},
        {Variant::date(rt::timeSerial(10, 30, 0)), "#1899-12-30 10:30:00#"},  // a time of day alone
        {Variant("03/02/2026"), "#2026-02-03 00:00:00#"},                     // a text, read day first
        {Variant(46348.5), "#2026-11-22 12:00:00#"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(svc.FechaSql(4, c.date), c.literal);
        EXPECT_EQ(svc.FechaSql(1, c.date), c.literal);
        EXPECT_EQ(svc.FechaSqlLocal(c.date), c.literal);
    }
    EXPECT_EQ(raised([&] { svc.FechaSql(4, Variant::null()); }).number(), err::InvalidUseOfNull);
    // The service's literals read back in statements: a date and a time of day.
    Variant day = Variant::date(rt::dateSerial(2026, 11, 22));
    Variant time = Variant::date(rt::timeSerial(10, 30, 0));
    exec("INSERT INTO HOrdenes_Fases ( ID, Codigo, Fecha, Hora ) VALUES ( 1, 5, " + svc.FechaSql(4, day) + ", " +
         svc.FechaSql(4, time) + " )");
    RsPtr rs = open("SELECT Codigo, Fecha, Hora FROM HOrdenes_Fases WHERE Fecha = " + svc.FechaSqlLocal(day) +
                    " AND Hora = " + svc.FechaSql(4, time));
    ASSERT_EQ(rs->RecordCount(), 1);
    EXPECT_EQ(rt::CDate(rs->value("Fecha")), rt::dateSerial(2026, 11, 22));
    EXPECT_EQ(rt::CDate(rs->value("Hora")), rt::timeSerial(10, 30, 0));

    // A number far outside the runtime's dates overflows, in a statement and in a
    // recordset's field alike, and the stored date stays as it was.
    EXPECT_EQ(raised([&] { exec("UPDATE HOrdenes_Fases SET Fecha = 1e300"); }).number(), err::Overflow);
    EXPECT_EQ(raised([&] { exec("INSERT INTO HOrdenes_Fases (ID, Codigo, Fecha) VALUES (2, 5, -1e300)"); }).number(),
              err::Overflow);
    EXPECT_NE(raised([&] { rs->setValue("Fecha", Variant(1e300)); }).number(), 0);  // refused as a wrong value
    EXPECT_EQ(raised([&] { svc.FechaSql(4, Variant(1e300)); }).number(), err::Overflow);
    RsPtr after = open("SELECT Fecha FROM HOrdenes_Fases");
    ASSERT_EQ(after->RecordCount(), 1);
    EXPECT_EQ(after->value("Fecha"), Variant::date(rt::dateSerial(2026, 11, 22)));
}

TEST_F(ServicesData, AMissingArchiveIsNamedNotCreated) {
    Config c = *Configuration::current();
    const std::string missing = (dir / "otro" / "nuevo.db").string();
    c.dataSources[1].path = missing;
    Configuration::install(c);
    Error e = raised([&] { svc.GetConexion(1, nullptr, 0); });
    EXPECT_THAT(e.description(), HasSubstr("'" + missing + "'"));
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(ServicesData, PathsConnectionTextsAndTheDateSwitch) {
    std::string archive = (dir / "archivo.db").string();
    EXPECT_EQ(svc.GetConnectionStr(4), "Provider=sqlite;Data Source=" + archive + ";Busy Timeout=2000");
    std::string type = "x", source = "x", catalog = "x", user = "x", pass = "x";
    svc.GetConnectionStrToRpt(1, type, source, catalog, user, pass);
    EXPECT_EQ((std::vector<std::string>{type, source, catalog, user, pass}),
              (std::vector<std::string>{"sqlite", archive, "", "", ""}));
    EXPECT_EQ(svc.GetRptPath("Ordenes.rpt"), "/srv/informes/Ordenes.rpt");
    EXPECT_EQ(svc.GetRptPath("/otra/Ordenes.rpt"), "/otra/Ordenes.rpt");  // stored back and asked again
    EXPECT_EQ(svc.GetDocPath("Orden.doc"), "/srv/documentos/Orden.doc");
    EXPECT_TRUE(svc.bFechaServidor(4));
    Config c = *Configuration::current();
    c.fechaServidor = false;
    Configuration::install(c);
    EXPECT_FALSE(svc.bFechaServidor(4));
    EXPECT_FALSE(svc.bFechaServidor(1));
}

TEST_F(ServicesData, SeriesCountersLiveInNumeradores) {
    ClsNumeradores n;
    std::string table = "HOrdenes";
    ConnPtr none;
    auto read = [&](std::string& t) {
        double a = -1, b = -1, c = -1;
        n.LeerSeries(t, a, b, c, none);
        return std::vector<double>{a, b, c};
    };
    EXPECT_EQ(read(table), (std::vector<double>{0, 10000, 25000}));  // nothing stored yet: the series' starts
    EXPECT_EQ(none, nullptr);

    ConnPtr objCn;
    std::string empty;
    n.GrabarSeries(table, 12, 10003.5, 25001, objCn, empty);
    ASSERT_NE(objCn, nullptr);  // the pattern of the optional connection
    n.GrabarSeries(table, 13, 10004, 25002, objCn, empty);
    std::string other = "HFacturas";
    n.GrabarSeries(other, 1, 2, 3, objCn, empty);
    EXPECT_EQ(read(table), (std::vector<double>{13, 10004, 25002}));
    EXPECT_EQ(read(other), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(open("SELECT Tabla FROM Numeradores WHERE Tabla = 'HOrdenes'")->RecordCount(), 1);  // updated in place, not added twice

    // Inside the caller's transaction, and gone with its rollback.
    ConnPtr tx = svc.GetConexion(4);
    tx->BeginTrans();
    n.GrabarSeries(table, 99, 99, 99, tx, empty);
    tx->RollbackTrans();
    EXPECT_EQ(read(table), (std::vector<double>{13, 10004, 25002}));

    // A Null counter reads as its series' start.
    exec("UPDATE Numeradores SET SerieB = Null WHERE Tabla = 'HFacturas'");
    EXPECT_EQ(read(other), (std::vector<double>{1, 10000, 3}));
}

TEST_F(ServicesData, SurchargeComesFromArticulos) {
    exec("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('C1', 'Corona', 5.2)");
    exec("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('O''X', 'Apostrofo', 1)");
    exec("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('N1', 'Sin recargo', Null)");
    ClsCalculoLinea calc;
    struct Case {
        Variant code;
        double surcharge;
    };
    const Case cases[] = {
        {Variant("C1"), 5.2}, {Variant("c1"), 5.2},  // codes compare as the archive compares text
        {Variant("O'X"), 1},  {Variant("N1"), 0},     {Variant("ZZ"), 0},
        {Variant::null(), 0}, {Variant(), 0},
    };
    for (const Case& c : cases) {
        ConnPtr objCn;
        EXPECT_DOUBLE_EQ(calc.GetRecargoArticulo(c.code, objCn), c.surcharge);
        EXPECT_EQ(objCn, nullptr);
    }
}

}  // namespace
}  // namespace hist::services
