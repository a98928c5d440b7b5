// What the statement tables cannot show of the work order and the shared document
// members: a new order's defaults saved through the recordset, the interface list,
// the shared members under the forms no class of this layer declares yet, and what
// the regional settings make of the peseta rate.
#include <gtest/gtest.h>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "documents/document_members.hpp"
#include "documents/ordenes.hpp"
#include "platform/dispatch.hpp"
#include "platform/regional.hpp"
#include "support/errors.hpp"
#include "tools/tools_fixture.hpp"

namespace hist::documents {
namespace {

class Documents : public test::TempArchive {
protected:
    std::string cell(const std::string& sql) {
        auto rs = std::make_shared<ado::Recordset>();
        rs->Open(sql::translate(sql, sql::StatementKind::Read), setup_);
        return rs->Eof() ? "<none>" : rt::CStr(rs->Fields()->Item(Variant(int16_t{0}))->Value());
    }
};

TEST_F(Documents, AddNewThenUpdateOnAnEmptyTableSavesOrderOneWithItsBarCodeAndState) {
    ClsOrdenes o;
    std::string key = "todos";
    Variant id;
    frame::ConnPtr cn;
    DateValue d{};
    o.IniciaRs(cn, key, id, d);
    bool def = true, invoiced = false;
    o.AddNewDocument(def, invoiced);
    // The new row has no series: the host gives it one, else the next number of
    // series "H" would be 1 again.
    o.primaryRecordset()->setValue("Serie", Variant("H"));
    o.Update();
    EXPECT_EQ(cell("SELECT COUNT(*) FROM HOrdenes"), "1");
    EXPECT_EQ(cell("SELECT Numero FROM HOrdenes"), "1");
    EXPECT_EQ(cell("SELECT Numero_Barras FROM HOrdenes"), "1");
    EXPECT_EQ(cell("SELECT Numero_control FROM HOrdenes"), "1");
    EXPECT_EQ(cell("SELECT Cerrada FROM HOrdenes"), "Fabricación");
    // Today, tomorrow and today from their "Short Date" texts; the time is the
    // present time of the fixed clock (10:30).
    EXPECT_EQ(cell("SELECT Fecha FROM HOrdenes"), "22/11/2026");
    EXPECT_EQ(cell("SELECT Fecha_Entrega FROM HOrdenes"), "23/11/2026");
    EXPECT_EQ(cell("SELECT Fecha_Cierre FROM HOrdenes"), "22/11/2026");
    EXPECT_EQ(cell("SELECT Hora_Entrega FROM HOrdenes"), "10:30:00");
    EXPECT_EQ(cell("SELECT COUNT(*) FROM HOrdenes WHERE Total = 0 AND Estado = 0 AND Impreso = 0"), "1");

    // A second order takes the next number of series "H"; the host's bar code is
    // overwritten by the number.
    o.AddNewDocument(def, invoiced);
    o.primaryRecordset()->setValue("Barras", Variant("tecleado"));
    o.Update();
    EXPECT_EQ(cell("SELECT Numero_Barras FROM HOrdenes WHERE Numero = 2"), "2");

    // Without defaults the row has no number.
    def = false;
    o.AddNewDocument(def, invoiced);
    EXPECT_TRUE(o.primaryRecordset()->value("Orden").isEmpty());
}

TEST_F(Documents, MembersAreTheInterfaceListInOrder) {
    Registry r;
    registerDocumentClasses(r);
    const auto names = r.find("ClsOrdenes")->listedNames();
    ASSERT_EQ(names.size(), 70u);
    EXPECT_EQ(names.front(), "ObtenerOtrosDatos");
    EXPECT_EQ(names[12], "dtFecha");
    EXPECT_EQ(names[33], "CloseRs");
    EXPECT_EQ(names.back(), "ToHtmlGrid");
}

// A delivery-note-like declaration: "Facturado" decides, a Null one is false for
// EstaFacturado on this form and fails on the default one; iQDocumento is a Long.
class Albaran : public frame::RecordClass {
public:
    explicit Albaran(const frame::ClassVariants& v) : RecordClass(v) {}
};

TEST_F(Documents, InvoicedFormsDecideTheNullRuleOfEstaFacturado) {
    exec("INSERT INTO HAlbaranes (Numero, Serie, Facturado, Estado, Doc_E) VALUES (5, 'A', Null, 4, 9)");
    exec("INSERT INTO HAlbaranes (Numero, Serie, Facturado, Estado, Doc_E) VALUES (6, 'B', 2, 2, 9)");
    frame::ClassVariants nullFalse{.className = "Albaran",
                                   .table = "HAlbaranes",
                                   .statements = documentStatements("ClsAlbaranes"),
                                   .document = {.invoiced = frame::InvoicedForm::FacturadoNullFalse}};
    frame::ClassVariants fails = nullFalse;
    fails.document.invoiced = frame::InvoicedForm::Facturado;
    Albaran lenient(nullFalse), strict(fails);
    frame::ConnPtr cn;
    Variant five(5), six(6);
    EXPECT_FALSE(EstaFacturado(lenient, five, cn));
    EXPECT_TRUE(EstaFacturado(lenient, six, cn));
    EXPECT_EQ(testing::errorOf([&] { EstaFacturado(strict, five, cn); }), err::InvalidUseOfNull);
    EXPECT_TRUE(EstaFacturado(strict, six, cn));

    // UpdateNumerador: the maxima of A and B, C empty so its start.
    UpdateNumerador(strict, cn);
    double a = 0, b = 0, c = 0;
    frame::ConnPtr callers;
    GetNumerador(strict, a, b, c, callers);
    EXPECT_EQ(a, 5);
    EXPECT_EQ(b, 6);
    EXPECT_EQ(c, 25000);
    EXPECT_FALSE(callers) << "the counters are read on a connection of the service's own";
}

TEST_F(Documents, StateFlagsReadTheCurrentRow) {
    exec("INSERT INTO HAlbaranes (Numero, Estado, Facturado, Doc_E) VALUES (1, 4, 0, 9)");
    frame::ClassVariants v{.className = "Albaran",
                           .table = "HAlbaranes",
                           .select = "SELECT Numero, Estado, Facturado, Doc_E FROM HAlbaranes",
                           .document = {.sourceIsLong = true}};
    Albaran doc(v);
    std::string key;
    Variant id;
    frame::ConnPtr cn;
    DateValue d{};
    doc.IniciaRs(cn, key, id, d);
    EXPECT_TRUE(bDeshacerStock(doc));
    EXPECT_FALSE(estadoIs(doc, 1));
    EXPECT_FALSE(bEstaFacturado(doc));
    Variant two(int16_t{2});
    UpdateState(doc, two);
    EXPECT_FALSE(bDeshacerStock(doc));
    EXPECT_TRUE(estadoIs(doc, 2));
}

// The rate is text in the statement: es-ES reads '166,386' as 166.386, en-US reads the
// comma as a thousands mark, so the same call divides by 166386.
TEST_F(Documents, EuroRateFollowsTheRegionalSettings) {
    exec("INSERT INTO HOrdenes (Numero, Base, Gastos, Total) VALUES (1, 166386, 0, 166386)");
    registerDocumentClasses(Registry::global());
    const ObjectPtr obj = Registry::global().create("ClsOrdenes");
    Args none;
    call(obj, "ActualizarEuros", none);
    EXPECT_EQ(cell("SELECT Base FROM HOrdenes"), "1000");
    {
        RegionalScope us(Regional::enUS());
        call(obj, "ActualizarEuros", none);
    }
    EXPECT_EQ(cell("SELECT Base FROM HOrdenes"), "0,01");
}

}  // namespace
}  // namespace hist::documents
