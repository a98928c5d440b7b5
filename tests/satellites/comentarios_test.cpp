// The four comment classes on a real archive: the statements they compose, compared
// byte for byte with the texts the class descriptions give; the opening forms;
// navigation; editing and renumbering; transactions across classes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/saved_order.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"

namespace hist::satellites {
namespace {

using test::ArchiveFixture;

// 2026-11-22 and its literal in a statement.
const DateValue kFecha{rt::dateSerial(2026, 11, 22)};
const std::string kLit = "#2026-11-22 00:00:00#";
const DateValue kOtraFecha{rt::dateSerial(2026, 11, 23)};

class Comments : public ArchiveFixture {};

// ------------------------------------------------------------ statements

TEST_F(Comments, IniciaRsComposesTheSelectionOfEachKeyword) {
    struct Case {
        frame::RecordClass* cls;
        std::string keyword;
        std::string expected;
    };
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    ClsAlbaranesComentarios albaranes;
    ClsFacturasComentarios facturas;
    const std::vector<Case> cases = {
        {&ordenes, "todos",
         "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios"},
        {&ordenes, "seleccion",
         "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios"
         " Where (Codigo = 7 AND Fecha = " + kLit + " )"},
        {&ordenes, "ninguno",
         "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios"
         " Where Id = 0"},
        {&pedidos, "seleccion",
         "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HPedidos_Clientes_Comentarios"
         " Where (Codigo = 7 AND Fecha = " + kLit + " )"},
        {&albaranes, "ninguno",
         "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HAlbaranes_Comentarios Where Id = 0"},
        {&facturas, "todos", "SELECT Id, Codigo AS Código, Comentarios, fecha FROM HFacturas_Comentarios"},
        {&facturas, "seleccion",
         "SELECT Id, Codigo AS Código, Comentarios, fecha FROM HFacturas_Comentarios"
         " Where (Codigo = 7 AND Fecha = " + kLit + " )"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        log.clear();
        frame::ConnPtr cn;
        std::string key = c.keyword;
        Variant id(int32_t{7});
        DateValue fecha = kFecha;
        c.cls->IniciaRs(cn, key, id, fecha);
        EXPECT_EQ(log.texts("AbrirRs"), std::vector<std::string>{c.expected});
    }
}

TEST_F(Comments, StatementMembersComposeTheDescribedTexts) {
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    ClsAlbaranesComentarios albaranes;
    frame::ConnPtr cn;
    std::string coment = "Bien", desc = "Color A2", salida;
    DateValue fecha = kFecha;

    ordenes.Insertar(Variant(int32_t{7}), coment, desc, fecha, cn);
    EXPECT_EQ(log.all(), (std::vector<std::string>{
                             "AbrirRs SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Comentarios Where Codigo = 7",
                             "EjecutarSql INSERT INTO HOrdenes_Comentarios ( Id, Codigo, Comentarios, Descripcion, "
                             "Fecha) Values ( 1 , '7', 'Bien', 'Color A2' , " + kLit + " )"}));
    log.clear();
    pedidos.Insertar(Variant(int32_t{9}), coment, fecha, cn);
    EXPECT_EQ(log.all(), (std::vector<std::string>{
                             "AbrirRs SELECT MAX(Id) AS Nuevo_Codigo FROM HPedidos_Clientes_Comentarios",
                             "EjecutarSql INSERT INTO HPedidos_Clientes_Comentarios ( Id, Codigo, Comentarios, "
                             "Fecha) Values ( 1 , '9', 'Bien', " + kLit + " )"}));
    log.clear();
    ordenes.Obtener(Variant(int32_t{7}), salida, desc, cn);
    albaranes.Obtener(Variant(int32_t{9}), salida, cn);
    ordenes.DeleteAll(Variant(int32_t{7}), fecha, cn);
    pedidos.DeleteAll(Variant(int32_t{9}), fecha, cn);
    ordenes.ConvertirSerie(Variant(int32_t{7}), Variant(int32_t{70}), "B", cn);
    albaranes.ConvertirSerie(Variant(int32_t{9}), Variant(int32_t{90}), "B", cn);
    EXPECT_EQ(log.all(), (std::vector<std::string>{
                             "AbrirRs SELECT Comentarios, Descripcion  FROM HOrdenes_Comentarios WHERE  Codigo = 7",
                             "AbrirRs SELECT Comentarios FROM HAlbaranes_Comentarios WHERE Codigo = 9",
                             "EjecutarSql DELETE  FROM HOrdenes_Comentarios  WHERE (Codigo = 7 AND Fecha = " + kLit +
                                 " )",
                             "EjecutarSql DELETE  FROM HPedidos_Clientes_Comentarios WHERE (Codigo = 9)",
                             "EjecutarSql UPDATE HOrdenes_Comentarios SET Codigo = 70 WHERE(Codigo = 7)",
                             "EjecutarSql UPDATE HAlbaranes_Comentarios SET Codigo = 90 WHERE(Codigo = 9)"}));
}

TEST_F(Comments, NuevoCodigoNumbersWithinTheOrderOrAcrossTheTable) {
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios) VALUES (4, 7, 'a')");
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo, Comentarios) VALUES (11, 3, 'a')");
    ClsOrdenesComentarios ordenes;
    ClsFacturasComentarios facturas;
    frame::ConnPtr cn;
    EXPECT_EQ(ordenes.NuevoCodigo(Variant(int32_t{7}), cn), Variant(int32_t{5}));
    EXPECT_EQ(ordenes.NuevoCodigo(Variant(int32_t{8}), cn), Variant(int16_t{1}));  // first of its order
    EXPECT_EQ(facturas.NuevoCodigo(Variant(), cn), Variant(int16_t{1}));           // empty table
    ClsPedidosCliComent pedidos;
    EXPECT_EQ(pedidos.NuevoCodigo(Variant(), cn), Variant(int32_t{12}));
    EXPECT_FALSE(cn) << "a reading member leaves an unset connection unset";
}

TEST_F(Comments, InsertarFillsAnUnsetConnectionAndAnApostropheBreaksTheStatement) {
    ClsAlbaranesComentarios albaranes;
    frame::ConnPtr cn;
    std::string coment = "Sin prisa";
    DateValue fecha = kFecha;
    albaranes.Insertar(Variant(int32_t{5}), coment, fecha, cn);
    ASSERT_TRUE(cn);
    EXPECT_EQ(cn->State(), 1);
    EXPECT_EQ(query("SELECT Id, Codigo, Comentarios FROM HAlbaranes_Comentarios"), "1|5|Sin prisa");

    std::string roto = "D'Angelo";
    try {
        albaranes.Insertar(Variant(int32_t{5}), roto, fecha, cn);
        ADD_FAILURE() << "the statement ran";
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), err::SqlSyntax);
    }
}

TEST_F(Comments, ObtenerReadsTheLastOrTheFirstCommentAndLeavesNullsAlone) {
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion) VALUES (1, 7, 'uno', 'd1')");
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion) VALUES (2, 7, 'dos', NULL)");
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo, Comentarios) VALUES (1, 7, 'primero')");
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo, Comentarios) VALUES (2, 7, 'segundo')");
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    frame::ConnPtr cn;
    std::string coment = "previo", desc = "previa";
    ordenes.Obtener(Variant(int32_t{7}), coment, desc, cn);
    EXPECT_EQ(coment, "dos");
    EXPECT_EQ(desc, "previa");  // Null column: the argument keeps what it had
    pedidos.Obtener(Variant(int32_t{7}), coment, cn);
    EXPECT_EQ(coment, "primero");
    pedidos.Obtener(Variant(int32_t{99}), coment, cn);
    EXPECT_EQ(coment, "primero");  // no row: nothing changes
}

TEST_F(Comments, DeleteAllKeysOnOrderAndDateOrOnTheDocumentAlone) {
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Fecha) VALUES (1, 7, #2026-11-22 00:00:00#)");
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Fecha) VALUES (2, 7, #2026-11-23 00:00:00#)");
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo, Fecha) VALUES (1, 7, #2026-11-22 00:00:00#)");
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo, Fecha) VALUES (2, 7, #2026-11-23 00:00:00#)");
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    frame::ConnPtr cn;
    ordenes.DeleteAll(Variant(int32_t{7}), kFecha, cn);
    pedidos.DeleteAll(Variant(int32_t{7}), kFecha, cn);
    EXPECT_EQ(query("SELECT Id FROM HOrdenes_Comentarios"), "2");
    EXPECT_EQ(query("SELECT COUNT(*) FROM HPedidos_Clientes_Comentarios"), "0");
}

// ------------------------------------------------------------ opening

TEST_F(Comments, OpeningFormsTreatTheCallersConnectionDifferently) {
    ClsOrdenesComentarios ordenes;   // form A
    ClsFacturasComentarios facturas;  // form B
    std::string key;
    Variant id;
    DateValue fecha;

    frame::ConnPtr unsetA, unsetB;
    ordenes.IniciaRs(unsetA, key, id, fecha);
    EXPECT_EQ(key, "todos");
    ASSERT_TRUE(unsetA) << "form A writes the connection it asked for into the caller's argument";
    EXPECT_EQ(ordenes.GetConnection(), unsetA);
    facturas.IniciaRs(unsetB, key, id, fecha);
    EXPECT_FALSE(unsetB) << "form B neither reads nor writes the caller's argument";

    // Form A opens on the caller's connection; form B on one of its own.
    frame::ConnPtr mine = unsetA;
    ordenes.IniciaRs(mine, key, id, fecha);
    EXPECT_EQ(ordenes.GetConnection(), mine);
    facturas.IniciaRs(mine, key, id, fecha);
    EXPECT_NE(facturas.GetConnection(), mine);
    EXPECT_EQ(mine, unsetA);
}

TEST_F(Comments, NingunoOpensTheColumnsWithoutRowsAndDataMembersHoldPrimary) {
    ClsFacturasComentarios facturas;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    facturas.IniciaRs(cn, key, id, fecha);
    EXPECT_FALSE(facturas.ExistenRegistros());
    auto rs = facturas.primaryRecordset();
    EXPECT_EQ(rs->Fields()->Count(), 4);
    EXPECT_EQ(rs->Fields()->Item(Variant(int16_t{3}))->Name(), "fecha");
    EXPECT_EQ(facturas.dataMembers()->names(), std::vector<std::string>{"Primary"});
    Variant data;
    facturas.Class_GetDataMember("Primary", data);
    EXPECT_EQ(data.objectAs<ado::Recordset>(), rs);
}

TEST_F(Comments, AFailedOpeningLeavesANeverOpenedRecordset) {
    ClsOrdenesComentarios ordenes;  // form A: DataMembers cleared before opening
    ClsPedidosCliComent pedidos;    // form B: after
    const std::vector<std::pair<frame::RecordClass*, size_t>> cases = {{&ordenes, 0}, {&pedidos, 1}};
    for (auto [cls, membersLeft] : cases) {
        SCOPED_TRACE(cls->typeName());
        frame::ConnPtr cn;
        std::string key = "todos";
        Variant id;
        DateValue fecha = kFecha;
        cls->IniciaRs(cn, key, id, fecha);
        auto first = cls->primaryRecordset();

        key = "seleccion";
        id = Variant("7'");  // breaks the statement
        EXPECT_THROW(cls->IniciaRs(cn, key, id, fecha), Error);
        EXPECT_NE(cls->primaryRecordset(), first);
        EXPECT_EQ(first->State(), 1) << "the old recordset is released, not closed";
        EXPECT_EQ(cls->dataMembers()->names().size(), membersLeft);
        try {
            cls->MoveNext();
            ADD_FAILURE() << "moved";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::ObjectClosed);
        }
    }
}

TEST_F(Comments, TheSavedOrderStepEndsIniciaRsOrRequeryAsEachClassDeclares) {
    std::vector<std::string> keys;
    frame::setSavedOrderStep([&](frame::RecordClass& cls, std::string& key) {
        keys.push_back(std::string(cls.typeName()) + ":" + key);
    });
    ClsOrdenesComentarios ordenes;
    ClsFacturasComentarios facturas;
    frame::ConnPtr cn;
    Variant id;
    DateValue fecha;
    std::string key, again;
    ordenes.IniciaRs(cn, key, id, fecha);
    ordenes.Requery(again);
    key.clear();
    again.clear();
    facturas.IniciaRs(cn, key, id, fecha);
    facturas.Requery(again);
    frame::setSavedOrderStep({});
    EXPECT_EQ(keys, (std::vector<std::string>{"ClsOrdenesComentarios:Todos", "ClsFacturasComentarios:todos",
                                              "ClsFacturasComentarios:Todos"}));
}

TEST_F(Comments, ByNameIniciaRsWritesItsInOutArgumentsBack) {
    registerCommentClasses(Registry::global());
    auto ordenes = Registry::global().create("ClsOrdenesComentarios");
    Args args{Variant::nothing(), Variant("cualquiera")};
    call(ordenes, "IniciaRs", args);
    EXPECT_EQ(args[1], Variant("todos"));
    EXPECT_TRUE(args[0].objectAs<ado::Connection>()) << "form A fills the caller's connection";
    Args data{Variant("Primary"), Variant()};
    call(ordenes, "Class_GetDataMember", data);
    EXPECT_TRUE(data[1].objectAs<ado::Recordset>());
    EXPECT_EQ(call(ordenes, "ExistenRegistros"), Variant(false));
}

TEST_F(Comments, ReportDataComesFromTheDataService) {
    ClsOrdenesComentarios ordenes;
    ClsAlbaranesComentarios albaranes;
    services::ClsServicioDatos service;
    std::string a[5], b[5], c[5];
    service.GetConnectionStrToRpt(4, c[0], c[1], c[2], c[3], c[4]);
    ordenes.GetConnectionStrToRpt(a[0], a[1], a[2], a[3], a[4]);
    albaranes.GetConnectionStrToRpt(b[0], b[1], b[2], b[3], b[4]);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(a[i], c[i]);
        EXPECT_EQ(b[i], c[i]);
    }
    EXPECT_EQ(albaranes.GetConnectionStr(), service.GetConnectionStr(4));
    std::string rpt = "albaran.rpt";
    const std::string full = albaranes.GetRptPath(rpt);
    EXPECT_EQ(full, service.GetRptPath("albaran.rpt"));
    EXPECT_EQ(rpt, full);
}

TEST_F(Comments, OrdersAskTheServerDateBranchAndGetTheSameLiteral) {
    services::Config c = *services::Configuration::current();
    c.fechaServidor = false;
    services::Configuration::install(c);
    ClsOrdenesComentarios ordenes;
    frame::ConnPtr cn;
    std::string key = "seleccion";
    Variant id(int32_t{7});
    DateValue fecha = kFecha;
    ordenes.IniciaRs(cn, key, id, fecha);
    EXPECT_EQ(log.texts("AbrirRs"),
              std::vector<std::string>{"SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha "
                                       "FROM HOrdenes_Comentarios Where (Codigo = 7 AND Fecha = " + kLit + " )"});
}

TEST_F(Comments, RequeryKeepsTheSelectionAndNamesTheEmptyKeyTodos) {
    exec("INSERT INTO HAlbaranes_Comentarios (Id, Codigo) VALUES (1, 7)");
    ClsAlbaranesComentarios albaranes;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    albaranes.IniciaRs(cn, key, id, fecha);
    Events::resetCounts();
    std::string empty;
    albaranes.Requery(empty);
    EXPECT_EQ(empty, "Todos");
    EXPECT_FALSE(albaranes.ExistenRegistros());
    EXPECT_EQ(Events::count(event::DataMemberChanged), 1);
}

// ------------------------------------------------------------ navigation

TEST_F(Comments, MovingOffEitherEndBeepsAndStaysOnTheLastRow) {
    for (int i = 1; i <= 3; ++i)
        exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo) VALUES (" + std::to_string(i) + ", " +
             std::to_string(6 + i) + ")");
    ClsOrdenesComentarios ordenes;
    frame::ConnPtr cn;
    std::string key;
    Variant id;
    DateValue fecha;
    ordenes.IniciaRs(cn, key, id, fecha);
    int moves = 0;
    ordenes.subscribeMoveComplete([&] { ++moves; });
    Events::resetCounts();

    ordenes.MoveNext();
    ordenes.MoveNext();
    EXPECT_EQ(ordenes.AbsolutePosition(), 3);
    EXPECT_EQ(Events::count(event::Beep), 0);
    ordenes.MoveNext();
    EXPECT_EQ(ordenes.AbsolutePosition(), 3);
    EXPECT_EQ(Events::count(event::Beep), 1);
    ordenes.MoveFirst();
    ordenes.MovePrevious();
    EXPECT_EQ(ordenes.AbsolutePosition(), 1);
    EXPECT_EQ(Events::count(event::Beep), 2);
    EXPECT_GE(moves, 5) << "the recordset's moves reach the class's listeners";

    Variant mark("2 y algo");
    ordenes.MoveToBookmark(mark);
    EXPECT_EQ(ordenes.AbsolutePosition(), 2);
    ordenes.FindRecord("9");  // searches Código, the second field
    EXPECT_EQ(ordenes.AbsolutePosition(), 3);
}

TEST_F(Comments, AnEmptySelectionNeitherMovesNorBeeps) {
    ClsPedidosCliComent pedidos;
    frame::ConnPtr cn;
    std::string key;
    Variant id;
    DateValue fecha;
    pedidos.IniciaRs(cn, key, id, fecha);
    Events::resetCounts();
    pedidos.MoveNext();
    pedidos.MovePrevious();
    pedidos.MoveFirst();
    pedidos.MoveLast();
    EXPECT_EQ(Events::count(event::Beep), 0);
    EXPECT_FALSE(pedidos.ExistenRegistros());
}

// ------------------------------------------------------------ editing

TEST_F(Comments, AddNewRenumberSaveCancelAndDelete) {
    exec("INSERT INTO HPedidos_Clientes_Comentarios (Id, Codigo) VALUES (40, 1)");
    ClsPedidosCliComent pedidos;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    pedidos.IniciaRs(cn, key, id, fecha);
    auto rs = pedidos.primaryRecordset();

    log.clear();
    bool defaults = true;
    pedidos.AddNew(defaults);
    EXPECT_TRUE(pedidos.EditingRecord());
    // The default key is the next number of the table plus the row count.
    EXPECT_EQ(rt::CLng(rs->value("ID")), 42);
    EXPECT_EQ(log.texts("AbrirRs"),
              std::vector<std::string>{"SELECT MAX(Id) AS Nuevo_Codigo FROM HPedidos_Clientes_Comentarios"});
    rs->setValue("Comentarios", Variant("a"));
    pedidos.AddNew(defaults);
    rs->setValue("Comentarios", Variant("b"));

    Variant doc(int32_t{8});
    DateValue dia = kFecha;
    pedidos.UpdateId(doc, dia);
    EXPECT_EQ(pedidos.AbsolutePosition(), 1);
    pedidos.Update();
    EXPECT_EQ(query("SELECT Id, Codigo, Comentarios, Fecha FROM HPedidos_Clientes_Comentarios WHERE Codigo = 8"
                    " ORDER BY Id"),
              "1|8|a|2026-11-22 00:00:00\n2|8|b|2026-11-22 00:00:00");

    pedidos.AddNew(defaults);
    pedidos.Cancel();
    pedidos.Update();
    EXPECT_EQ(query("SELECT COUNT(*) FROM HPedidos_Clientes_Comentarios"), "3");

    pedidos.MoveFirst();
    pedidos.Delete();  // batch: gone from the table at once
    EXPECT_EQ(query("SELECT COUNT(*) FROM HPedidos_Clientes_Comentarios WHERE Codigo = 8"), "1");
}

TEST_F(Comments, OrdersKeyNewRowsByTheirCountAndUpdateRunsWithoutRows) {
    ClsOrdenesComentarios ordenes;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    ordenes.IniciaRs(cn, key, id, fecha);
    ordenes.Update();  // no rows and no guard: UpdateBatch runs all the same
    bool defaults = true;
    ordenes.AddNew(defaults);
    ordenes.AddNew(defaults);
    EXPECT_EQ(rt::CLng(ordenes.primaryRecordset()->value("ID")), 2);
    bool none = false;
    ordenes.AddNew(none);
    EXPECT_TRUE(ordenes.primaryRecordset()->value("ID").isNull() ||
                ordenes.primaryRecordset()->value("ID").isEmpty());
}

TEST_F(Comments, InvoiceCommentsRenumberThroughTheirLowerCaseDateField) {
    ClsFacturasComentarios facturas;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    facturas.IniciaRs(cn, key, id, fecha);
    bool defaults = true;
    facturas.AddNew(defaults);
    Variant doc(int32_t{5});
    DateValue dia = kFecha;
    facturas.UpdateId(doc, dia);
    facturas.Update();
    EXPECT_EQ(query("SELECT Id, Codigo, fecha FROM HFacturas_Comentarios"), "1|5|2026-11-22 00:00:00");
}

TEST_F(Comments, UpdateIdOverflowsItsSixteenBitCounterPartway) {
    ClsAlbaranesComentarios albaranes;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    albaranes.IniciaRs(cn, key, id, fecha);
    bool none = false;
    for (int i = 0; i < 32768; ++i) albaranes.AddNew(none);
    Variant doc(int32_t{3});
    DateValue dia = kFecha;
    try {
        albaranes.UpdateId(doc, dia);
        ADD_FAILURE() << "no overflow";
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), err::Overflow);
    }
    auto rs = albaranes.primaryRecordset();
    rs->MoveFirst();
    EXPECT_EQ(rt::CLng(rs->value("ID")), 1);
    rs->MoveLast();
    EXPECT_TRUE(rs->value("ID").isNull() || rs->value("ID").isEmpty());  // never reached
}

// ------------------------------------------------------------ transactions

TEST_F(Comments, ATransactionSpansTwoClassesOnOneConnection) {
    ClsOrdenesComentarios ordenes;
    ClsFacturasComentarios facturas;
    frame::ConnPtr cn;
    std::string key = "ninguno";
    Variant id;
    DateValue fecha;
    ordenes.IniciaRs(cn, key, id, fecha);

    std::string c1 = "uno", d1 = "x", c2 = "dos";
    DateValue dia = kFecha;
    ordenes.CnnBeginTrans();
    frame::ConnPtr shared = ordenes.GetConnection();
    ordenes.Insertar(Variant(int32_t{7}), c1, d1, dia, shared);
    facturas.Insertar(Variant(int32_t{7}), c2, dia, shared);
    ordenes.CnnRollbackTrans();
    EXPECT_EQ(query("SELECT COUNT(*) FROM HOrdenes_Comentarios"), "0");
    EXPECT_EQ(query("SELECT COUNT(*) FROM HFacturas_Comentarios"), "0");

    ordenes.CnnBeginTrans();
    facturas.Insertar(Variant(int32_t{7}), c2, dia, shared);
    facturas.DeleteAll(Variant(int32_t{99}), dia, shared);
    ordenes.CnnCommitTrans();
    EXPECT_EQ(query("SELECT Comentarios FROM HFacturas_Comentarios"), "dos");
}

TEST_F(Comments, BeforeIniciaRsTheConnectionIsNewAndUnopened) {
    ClsPedidosCliComent pedidos;
    auto cn = pedidos.GetConnection();
    ASSERT_TRUE(cn);
    EXPECT_EQ(cn->State(), 0);
    EXPECT_EQ(pedidos.GetConnection(), cn);
    EXPECT_THROW(pedidos.CnnBeginTrans(), Error);
}

}  // namespace
}  // namespace hist::satellites
