// The four comment classes on a real archive (their statements are the tables of
// tests/classes/data/, run by class_tables_test): the opening forms;
// navigation; editing and renumbering; transactions across classes. Then the
// published interface: argument shapes, members of other classes unreachable, and the
// data-source members callable but unlisted.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>

#include "platform/dispatch.hpp"

#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"

namespace hist::satellites {
namespace {

using test::errorOf;

const DateValue kFecha{rt::dateSerial(2026, 11, 22)};
const Variant k7(int32_t{7});

class Comments : public test::ArchiveFixture {};

// ------------------------------------------------------------ statements

// The orders' table shows the selection with the server's date; the local date gives the same literal.
TEST_F(Comments, TheOrdersSelectionWithTheLocalDateWritesTheSameLiteral) {
    services::Config c = *services::Configuration::current();
    c.fechaServidor = false;
    services::Configuration::install(c);
    open(ordenes, "seleccion", k7, kFecha);
    EXPECT_EQ(log.texts("AbrirRs"), std::vector<std::string>{
        "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios "
        "Where (Codigo = 7 AND Fecha = #2026-11-22 00:00:00# )"});
}

// The document classes read the first comment (their tables show it); the orders' the last.
TEST_F(Comments, OrdersObtenerReadsTheLastCommentAndLeavesNullsAlone) {
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion) VALUES (1, 7, 'uno', 'd1')");
    exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion) VALUES (2, 7, 'dos', NULL)");
    frame::ConnPtr cn;
    std::string coment = "previo", desc = "previa";
    ordenes.Obtener(k7, coment, desc, cn);
    EXPECT_EQ(coment, "dos");
    EXPECT_EQ(desc, "previa");  // Null column: the argument keeps what it had
}

// ------------------------------------------------------------ opening

TEST_F(Comments, OpeningFormsTreatTheCallersConnectionDifferently) {
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

TEST_F(Comments, NingunoOpensTheColumnsWithoutRowsAndRequeryKeepsIt) {
    exec("INSERT INTO HFacturas_Comentarios (Id, Codigo) VALUES (1, 7)");
    open(facturas, "ninguno");
    EXPECT_FALSE(facturas.ExistenRegistros());
    auto rs = facturas.primaryRecordset();
    EXPECT_EQ(rs->Fields()->Count(), 4);
    EXPECT_EQ(rs->Fields()->Item(Variant(int16_t{3}))->Name(), "fecha");
    EXPECT_EQ(facturas.dataMembers()->names(), std::vector<std::string>{"Primary"});
    Variant data;
    facturas.Class_GetDataMember("Primary", data);
    EXPECT_EQ(data.objectAs<ado::Recordset>(), rs);

    // Requery keeps the selection, names the empty key "Todos" and tells the data member once.
    Events::resetCounts();
    std::string empty;
    facturas.Requery(empty);
    EXPECT_EQ(empty, "Todos");
    EXPECT_FALSE(facturas.ExistenRegistros());
    EXPECT_EQ(Events::count(event::DataMemberChanged), 1);
}

TEST_F(Comments, AFailedOpeningLeavesANeverOpenedRecordset) {
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
        EXPECT_EQ(errorOf([&] { cls->MoveNext(); }), err::ObjectClosed);
    }
}

TEST_F(Comments, ReportDataComesFromTheDataService) {
    services::ClsServicioDatos service;
    std::string a[5], c[5];
    service.GetConnectionStrToRpt(4, c[0], c[1], c[2], c[3], c[4]);
    ordenes.GetConnectionStrToRpt(a[0], a[1], a[2], a[3], a[4]);
    EXPECT_EQ(std::vector<std::string>(a, a + 5), std::vector<std::string>(c, c + 5));
    EXPECT_EQ(albaranes.GetConnectionStr(), service.GetConnectionStr(4));
    std::string rpt = "albaran.rpt";
    EXPECT_EQ(albaranes.GetRptPath(rpt), service.GetRptPath("albaran.rpt"));
    EXPECT_EQ(rpt, service.GetRptPath("albaran.rpt"));
}

// ------------------------------------------------------------ navigation

TEST_F(Comments, MovingOffEitherEndBeepsAndStaysOnTheLastRowAnEmptySelectionNeither) {
    for (int i = 1; i <= 3; ++i)
        exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo) VALUES (" + std::to_string(i) + ", " +
             std::to_string(6 + i) + ")");
    open(ordenes, "");
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

    open(pedidos, "");
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
    open(pedidos, "ninguno");
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

TEST_F(Comments, OrdersKeyNewRowsByTheirCountAndInvoicesRenumberThroughTheirLowerCaseDate) {
    open(ordenes, "ninguno");
    ordenes.Update();  // no rows and no guard: UpdateBatch runs all the same
    bool defaults = true, none = false;
    ordenes.AddNew(defaults);
    ordenes.AddNew(defaults);
    EXPECT_EQ(rt::CLng(ordenes.primaryRecordset()->value("ID")), 2);
    ordenes.AddNew(none);
    const Variant unset = ordenes.primaryRecordset()->value("ID");
    EXPECT_TRUE(unset.isNull() || unset.isEmpty());

    open(facturas, "ninguno");
    facturas.AddNew(defaults);
    Variant doc(int32_t{5});
    DateValue dia = kFecha;
    facturas.UpdateId(doc, dia);
    facturas.Update();
    EXPECT_EQ(query("SELECT Id, Codigo, fecha FROM HFacturas_Comentarios"), "1|5|2026-11-22 00:00:00");
}

TEST_F(Comments, UpdateIdOverflowsItsSixteenBitCounterPartway) {
    open(albaranes, "ninguno");
    bool none = false;
    for (int i = 0; i < 32768; ++i) albaranes.AddNew(none);
    Variant doc(int32_t{3});
    DateValue dia = kFecha;
    EXPECT_EQ(errorOf([&] { albaranes.UpdateId(doc, dia); }), err::Overflow);
    auto rs = albaranes.primaryRecordset();
    rs->MoveFirst();
    EXPECT_EQ(rt::CLng(rs->value("ID")), 1);
    rs->MoveLast();
    EXPECT_TRUE(rs->value("ID").isNull() || rs->value("ID").isEmpty());  // never reached
}

// ------------------------------------------------------------ transactions

TEST_F(Comments, ATransactionSpansTwoClassesOnOneConnection) {
    open(ordenes, "ninguno");

    std::string c1 = "uno", d1 = "x", c2 = "dos";
    DateValue dia = kFecha;
    ordenes.CnnBeginTrans();
    frame::ConnPtr shared = ordenes.GetConnection();
    ordenes.Insertar(k7, c1, d1, dia, shared);
    facturas.Insertar(k7, c2, dia, shared);
    ordenes.CnnRollbackTrans();
    EXPECT_EQ(query("SELECT COUNT(*) FROM HOrdenes_Comentarios"), "0");
    EXPECT_EQ(query("SELECT COUNT(*) FROM HFacturas_Comentarios"), "0");

    ordenes.CnnBeginTrans();
    facturas.Insertar(k7, c2, dia, shared);
    facturas.DeleteAll(Variant(int32_t{99}), dia, shared);
    ordenes.CnnCommitTrans();
    EXPECT_EQ(query("SELECT Comentarios FROM HFacturas_Comentarios"), "dos");
}

TEST_F(Comments, BeforeIniciaRsTheConnectionIsNewAndUnopenedAndInsertarFillsAnUnsetOne) {
    auto unopened = pedidos.GetConnection();
    ASSERT_TRUE(unopened);
    EXPECT_EQ(unopened->State(), 0);
    EXPECT_THROW(pedidos.CnnBeginTrans(), Error);
    frame::ConnPtr cn;
    std::string coment = "Sin prisa";
    DateValue fecha = kFecha;
    albaranes.Insertar(Variant(int32_t{5}), coment, fecha, cn);
    ASSERT_TRUE(cn);
    EXPECT_EQ(cn->State(), 1);
}

// ------------------------------------------------------------ the published interface

class CommentInterface : public ::testing::Test {
protected:
    void SetUp() override { registerCommentClasses(registry); }
    Registry& registry = Registry::global();

    // Calls a member by name and expects it to fail with the number given, the
    // description naming every text given.
    static void expectFailure(ObjectPtr obj, const char* member, Args args, long number,
                              std::initializer_list<std::string_view> named = {}) {
        try {
            call(obj, member, args);
            ADD_FAILURE() << member << " answered";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), number) << member;
            for (std::string_view text : named)
                EXPECT_NE(e.description().find(text), std::string::npos) << member << ": " << e.description();
        }
    }
};

TEST_F(CommentInterface, ArgumentShapesFollowTheClassVariants) {
    struct ShapeCase {
        const char* cls;
        const char* member;
        std::vector<std::string> params;
    };
    // Names only a call by name shows: the class tables call by position.
    const ShapeCase cases[] = {
        {"ClsOrdenesComentarios", "NuevoCodigo", {"vCod", "objCn"}},
        {"ClsPedidosCliComent", "NuevoCodigo", {"objCn"}},
        {"ClsOrdenesComentarios", "DeleteAll", {"vId", "dtFecha", "cnnActive"}},
        {"ClsFacturasComentarios", "DeleteAll", {"vId", "cnnActive"}},
        {"ClsOrdenesComentarios", "Insertar", {"vCodigo", "sComent", "sDescripcion", "dtFecha", "objCn"}},
        {"ClsAlbaranesComentarios", "Insertar", {"vCodigo", "sComent", "dtFecha", "objCn"}},
        {"ClsOrdenesComentarios", "Obtener", {"vId", "sComent", "sDescripcion", "objCn"}},
        {"ClsPedidosCliComent", "Obtener", {"vId", "sComentarios", "objCn"}},
        {"ClsAlbaranesComentarios", "IniciaRs", {"cnnActive", "sSelecSql", "id", "dtFecha"}},
        {"ClsFacturasComentarios", "FindRecord", {"Criteria"}},
        {"ClsFacturasComentarios", "UpdateId", {"vId", "dFecha"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.cls) + "." + c.member);
        const Member* m = registry.find(c.cls)->find(c.member);
        ASSERT_NE(m, nullptr);
        std::vector<std::string> names;
        for (const auto& p : m->params) names.push_back(p.name);
        EXPECT_EQ(names, c.params);
    }
    // The in/out marks of the interface reach the caller.
    const Member* ins = registry.find("ClsOrdenesComentarios")->find("Insertar");
    EXPECT_FALSE(ins->params[0].byRef);
    EXPECT_TRUE(ins->params[1].byRef);
    EXPECT_TRUE(ins->params[4].optional);
}

TEST_F(CommentInterface, ClassNameAndTableBeforeAnyOpeningAndOtherClassesMembersUnreachable) {
    const std::pair<const char*, const char*> tables[] = {{"ClsOrdenesComentarios", "HOrdenes_Comentarios"},
                                                          {"ClsPedidosCliComent", "HPedidos_Clientes_Comentarios"},
                                                          {"ClsAlbaranesComentarios", "HAlbaranes_Comentarios"},
                                                          {"ClsFacturasComentarios", "HFacturas_Comentarios"}};
    for (const auto& [cls, table] : tables) {
        auto obj = registry.create(cls);
        EXPECT_EQ(obj->typeName(), cls);
        EXPECT_EQ(call(obj, "sClassName"), Variant(table));
    }
    auto facturas = registry.create("ClsFacturasComentarios");
    for (const char* name : {"Obtener", "ConvertirSerie", "GetRptPath", "CloseRs", "CancelBatch"})
        expectFailure(facturas, name, {}, err::NoSuchMember);
    // The data source members answer but are not listed.
    for (const char* name : {"Class_GetDataMember", "DataMembers", "DataMemberChanged"}) {
        const Member* m = registry.find("ClsFacturasComentarios")->find(name);
        ASSERT_NE(m, nullptr) << name;
        EXPECT_FALSE(m->listed) << name;
    }
}


}  // namespace
}  // namespace hist::satellites
