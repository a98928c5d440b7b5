// What the line and snapshot statement tables (tests/classes/data/) cannot show: the
// lines never raise MoveComplete as their own, and a closing run's move between archive
// levels on the caller's connection stands or falls with its transaction.
#include <gtest/gtest.h>

#include "satellites/cabeceras.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "satellites/lineas.hpp"
#include "support/errors.hpp"

namespace hist::satellites {
namespace {

class LinesAndSnapshots : public test::ArchiveFixture {};

TEST_F(LinesAndSnapshots, ALineClassNeverTellsItsListenersOfAMove) {
    for (int i = 1; i <= 2; ++i)
        exec("INSERT INTO HOrdenes_Lineas (Codigo, ID, Numero) VALUES ('A', " + std::to_string(i) + ", 7)");
    ClsOrdenesLineas lineas;
    int lineMoves = 0;
    lineas.subscribeMoveComplete([&] { ++lineMoves; });
    int commentMoves = 0;
    ordenes.subscribeMoveComplete([&] { ++commentMoves; });

    open(lineas);
    open(ordenes);
    for (frame::RecordClass* c : {static_cast<frame::RecordClass*>(&lineas), static_cast<frame::RecordClass*>(&ordenes)}) {
        c->MoveNext();
        c->MoveLast();
        std::string key;
        c->Requery(key);
        bool defaults = true;
        c->AddNew(defaults);
    }
    EXPECT_EQ(lineMoves, 0);
    EXPECT_GT(commentMoves, 0) << "the event variant does relay the same moves";
}

TEST_F(LinesAndSnapshots, AClosingRunMovesOnTheCallersConnectionAndARollbackLeavesBothLevels) {
    exec("INSERT INTO HFacturas_Cabecera (Id, Numero, Nombre, Telefono, Cierre) VALUES (1, 30, 'Ana', '953', 4)");
    exec("INSERT INTO HFacturas_Cabecera (Id, Numero, Nombre, Telefono, Cierre) VALUES (2, 31, 'Luis', '910', 5)");
    const std::string before = query("SELECT Nombre, Cierre FROM HFacturas_Cabecera ORDER BY Id");
    ClsFacturasCabecera facturas;
    open(facturas);
    facturas.CnnBeginTrans();
    ConnPtr cn = facturas.GetConnection();
    const ConnPtr held = cn;
    facturas.Mover_A_Historicos(Variant(int32_t{4}), cn);
    EXPECT_EQ(cn, held) << "the caller's connection is used as given";
    EXPECT_EQ(log.texts("EjecutarSql").size(), 2u);

    // Inside the transaction the run stands at the second level alone.
    std::string nif, nombre, empresa, dir, cp, pob, prov;
    Variant tel(std::string("953"));
    bool historic = true;
    int16_t index = 0;
    facturas.GetDatos(tel, nif, nombre, empresa, dir, cp, pob, prov, historic, index, cn);
    EXPECT_EQ(nombre, "Ana");
    historic = false;
    facturas.GetDatos(tel, nif, nombre, empresa, dir, cp, pob, prov, historic, index, cn);
    EXPECT_EQ(nombre, "no");

    facturas.CnnRollbackTrans();
    EXPECT_EQ(query("SELECT Nombre, Cierre FROM HFacturas_Cabecera ORDER BY Id"), before);
    EXPECT_EQ(query("SELECT COUNT(*) FROM HHFacturas_Cabecera"), "0");

    // Committed, out and back: the row has lost its number and key, which stayed behind.
    facturas.CnnBeginTrans();
    facturas.Mover_A_Historicos(Variant(int32_t{4}), cn);
    facturas.Mover_De_Historicos(Variant(int32_t{4}), cn);
    facturas.CnnCommitTrans();
    EXPECT_EQ(query("SELECT Nombre, IFNULL(Numero, '-'), IFNULL(Id, '-') FROM HFacturas_Cabecera ORDER BY Nombre"),
              "Ana|-|-\nLuis|31|2");
}

TEST_F(LinesAndSnapshots, AFailedCopyDeletesNothing) {
    exec("INSERT INTO HPedidos_Clientes_Cabecera (Id, Numero, Nombre, Cierre) VALUES (1, 30, 'Ana', 4)");
    ClsPedidosCliCabecera pedidos;
    ConnPtr cn;
    // Null gives "WHERE(CIERRE = )", which the engine refuses at the copy.
    EXPECT_EQ(test::errorOf([&] { pedidos.Mover_A_Historicos(Variant::null(), cn); }), err::SqlSyntax);
    EXPECT_EQ(log.texts("EjecutarSql").size(), 1u);
    EXPECT_EQ(query("SELECT COUNT(*) FROM HPedidos_Clientes_Cabecera"), "1");
}

}  // namespace
}  // namespace hist::satellites
