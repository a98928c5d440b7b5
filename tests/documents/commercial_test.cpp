// What the statement tables cannot show of the customer order, delivery note, invoice
// and receipt: the receipts' batch change on a connection of its own that it closes,
// a receipt moving between the selections, numbers inside a transaction, and the
// interface lists.
#include <gtest/gtest.h>

#include "ado/recordset.hpp"
#include "documents/ordenes.hpp"
#include "platform/collection.hpp"
#include "platform/dispatch.hpp"
#include "support/errors.hpp"
#include "tools/tools_fixture.hpp"

namespace hist::documents {
namespace {

class Receipts : public test::TempArchive {
protected:
    void SetUp() override {
        test::TempArchive::SetUp();
        registerDocumentClasses(Registry::global());
        for (int id = 1; id <= 3; ++id)
            exec("INSERT INTO Recibos (Id, Numero, Contador, Total, Estado) VALUES (" + std::to_string(id) + ", 500, " +
                 std::to_string(id) + ", 40, 0)");
        recibos = Registry::global().create("ClsRecibos");
    }
    Variant run(std::string_view member, Args args = {}) { return call(recibos, member, args); }
    // The receipt numbers a selection shows, in order.
    std::string shown(const std::string& keyword) {
        run("IniciaRs", {Variant(keyword)});
        auto& rs = *dynamic_cast<frame::RecordClass&>(*recibos).primaryRecordset();
        std::string ids;
        if (rs.RecordCount() == 0) return ids;
        for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) ids += rt::CStr(rs.value("Id")) + " ";
        return ids;
    }
    // The rows of a selection on the fixture's connection: cells joined by '|', rows by '\n'.
    std::string cell(const std::string& sql) {
        auto rs = std::make_shared<ado::Recordset>();
        rs->Open(sql::translate(sql, sql::StatementKind::Read), setup_);
        std::string out;
        for (; !rs->Eof(); rs->MoveNext()) {
            if (!out.empty()) out += "\n";
            for (int16_t i = 0; i < rs->Fields()->Count(); ++i)
                out += (i ? "|" : "") + rt::CStr(rs->Fields()->Item(Variant(i))->Value());
        }
        return out;
    }
    ObjectPtr recibos;
};

TEST_F(Receipts, APaidReceiptMovesFromUnpaidToPaidAndMarksItsInvoice) {
    EXPECT_EQ(shown("impagados"), "1 2 3 ");
    EXPECT_EQ(shown("cobrados"), "");
    EXPECT_FALSE(rt::CBool(run("RecibosPagados", {Variant(500)})));
    run("CambEstadoRecibo", {Variant(2), Variant(true), Variant(false)});
    EXPECT_EQ(shown("impagados"), "1 3 ");
    EXPECT_EQ(shown("cobrados"), "2 ");
    // One of three is enough for the invoice to count as paid.
    EXPECT_TRUE(rt::CBool(run("RecibosPagados", {Variant(500)})));
}

TEST_F(Receipts, TheBatchChangeWritesMinusOneAndClosesItsConnection) {
    run("IniciaRs", {Variant("todos")});
    auto ids = std::make_shared<Collection>();
    ids->Add(Variant(1));
    ids->Add(Variant(3));
    run("CambEstadoRecibos", {Variant(ObjectPtr(ids)), Variant(true)});
    EXPECT_EQ(cell("SELECT Id, Estado FROM Recibos ORDER BY Id"), "1|-1\n2|0\n3|-1");
    // The class's connection is now the closed one: no transaction can start on it.
    EXPECT_EQ(testing::errorOf([&] { run("CnnBeginTrans"); }), err::ObjectClosed);

    // Back to unpaid; an empty collection sends nothing and still closes a connection.
    run("CambEstadoRecibos", {Variant(ObjectPtr(ids)), Variant(false)});
    EXPECT_EQ(cell("SELECT COUNT(*) FROM Recibos WHERE Estado = 0"), "3");
    run("IniciaRs", {Variant("todos")});
    run("CambEstadoRecibos", {Variant(ObjectPtr(std::make_shared<Collection>())), Variant(true)});
    EXPECT_EQ(cell("SELECT COUNT(*) FROM Recibos WHERE Estado = 0"), "3");
    EXPECT_EQ(testing::errorOf([&] { run("CnnCommitTrans"); }), err::ObjectClosed);
}

// Inside a transaction the next number must be asked on the transaction's connection:
// a connection of the call's own does not see the receipt not yet committed.
TEST_F(Receipts, NumbersInATransactionComeFromItsConnection) {
    run("IniciaRs", {Variant("todos")});
    run("CnnBeginTrans");
    const Variant cn = run("GetConnection");
    Args insertar{Variant(4), Variant(500), Variant(int16_t{4}), Variant(DateValue{46348}), Variant(DateValue{46378}),
                  Variant("A"), Variant("C1"), Variant("Sol"), Variant("EUR"), Variant(1.0), Variant(40.0),
                  Variant(40.0), Variant(int16_t{0}), Variant("430"), Variant("700"), Variant("572"), Variant("R"),
                  Variant("F"), Variant("EF"), cn};
    call(recibos, "Insertar", insertar);
    EXPECT_EQ(rt::CStr(run("NuevoCodigo", {Variant("A"), cn})), "5");
    EXPECT_EQ(rt::CStr(run("NuevoCodigo", {Variant("A")})), "4");
    run("CnnRollbackTrans");
    EXPECT_EQ(cell("SELECT COUNT(*) FROM Recibos"), "3");
}

TEST(CommercialDocuments, AnswerWithTheirInterfaceListsInOrder) {
    Registry r;
    registerDocumentClasses(r);
    struct Expected {
        const char* cls;
        size_t count;
        const char* first;
        const char* last;
    };
    for (const Expected& e : {Expected{"ClsPedidosCli", 60, "dtFecha", "ToHtmlGrid"},
                              Expected{"ClsAlbaranes", 60, "dtFecha", "ToHtmlGrid"},
                              Expected{"ClsFacturas", 61, "dtFecha", "ToHtmlGrid"},
                              Expected{"ClsRecibos", 47, "GetRptPath", "ToHtmlGrid"}}) {
        SCOPED_TRACE(e.cls);
        const auto names = r.find(e.cls)->listedNames();
        EXPECT_EQ(names.size(), e.count);
        EXPECT_EQ(names.front(), e.first);
        EXPECT_EQ(names.back(), e.last);
    }
    // The documents' own lists differ where their descriptions say.
    const auto facturas = r.find("ClsFacturas")->listedNames();
    EXPECT_EQ(facturas[16], "ContabilizarFactura");
    EXPECT_EQ(facturas[26], "ActualizarTotal");
    const auto recibos = r.find("ClsRecibos")->listedNames();
    EXPECT_EQ(recibos[3], "CambEstadoRecibos");
    EXPECT_EQ(recibos[6], "DeleteAll");
}

}  // namespace
}  // namespace hist::documents
