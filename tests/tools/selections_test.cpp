// IniciaRs by keyword rows: an appended clause or a whole statement, the saved order
// restored or not per row, and the key written back for the saved order.
#include <gtest/gtest.h>

#include "ado/recordset.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services/settings.hpp"
#include "tools_fixture.hpp"

namespace hist::tools {
namespace {

class Selections : public test::ToolsFixture {};

const frame::ClassVariants kRows = [] {
    frame::ClassVariants v = test::toolVariants("ClsPruebaFilas", "HOrdenes_Comentarios",
                                                "SELECT Id, Codigo FROM HOrdenes_Comentarios");
    v.orderOnIniciaRs = true;
    v.selections = {
        {"seleccion", " Where (Codigo = {id} AND Fecha = {F:dtFecha} )"},
        {"sinorden", " Where Codigo = {id}", false},
        {"pendientes", "SELECT Id, Codigo FROM HOrdenes_Comentarios WHERE Codigo > {id}", true, true, "todos"},
    };
    return v;
}();

TEST_F(Selections, RowsAppendOrReplaceAndDecideTheSavedOrder) {
    for (int id : {1, 2, 3}) exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo) VALUES (" + std::to_string(id) + ", " +
                                  std::to_string(id) + ")");
    // A saved order, descending by Id, under both keys a row can read it from.
    for (const char* key : {"todos", "sinorden", "pendientes"}) {
        frame::RecordClass probe(kRows);
        services::ClsClaveRegistro store;
        store.AbrirClave(probe.viewKey(key));
        Variant index("IndexOrderField"), mode("Mode");
        std::string i = "0", m = " DESC";
        store.EscribirValor(index, i);
        store.EscribirValor(mode, m);
    }
    std::vector<std::string> sent;
    auto observer = services::StatementObservers::subscribe(
        [&](const services::StatementEvent& e) { sent.push_back(e.composed); });
    struct Case {
        const char* keyword;
        const char* statement;
        const char* keyBack;
        int firstId;  // 3 when the saved (descending) order was restored
    };
    const Case cases[] = {
        {"sinorden", "SELECT Id, Codigo FROM HOrdenes_Comentarios Where Codigo = 1", "sinorden", 1},
        {"pendientes", "SELECT Id, Codigo FROM HOrdenes_Comentarios WHERE Codigo > 1", "todos", 3},
        {"otra", "SELECT Id, Codigo FROM HOrdenes_Comentarios", "todos", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.keyword);
        frame::RecordClass cls(kRows);
        sent.clear();
        frame::ConnPtr cn;
        std::string key = c.keyword;
        Variant id(int32_t{1});
        DateValue fecha{};
        cls.IniciaRs(cn, key, id, fecha);
        EXPECT_EQ(sent, std::vector<std::string>{c.statement});
        EXPECT_EQ(key, c.keyBack);
        cls.MoveFirst();
        EXPECT_EQ(cls.primaryRecordset()->value("Id"), Variant(int32_t{c.firstId})) << "saved order";
    }
}

}  // namespace
}  // namespace hist::tools
