// The listings on a real archive: the files compared byte for byte with texts written
// out by hand from the listing format (CRLF line ends and the pieces without one,
// Windows-1252 bytes, upper-cased captions and names, printed numbers with their
// blanks, dates, Null), the empty clone, the two paths, the saved filter with and
// without a clone, the walks and sums other classes declare, and a write that fails.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services/settings.hpp"
#include "platform/regional.hpp"
#include "support/scratch.hpp"
#include "tools/listing_tools.hpp"
#include "tools/tool_members.hpp"
#include "tools/tools_fixture.hpp"

namespace hist::tools {
namespace {

namespace fs = std::filesystem;
using hist::testing::readFile;
using test::errorOf;
using Cells = std::vector<std::pair<const char*, std::string>>;  // alignment and printed value

// The pieces of a page, as the listing format writes them.
std::string pageHead(const std::string& table) {
    return "<HTML>\r\n<HEAD>\r\n"
           "<meta http-equiv='Content-Type'content='text/html; charset=iso-8859-1'>\r\n"
           "<meta name='GENERATOR' content='Vandrel HtmlPage Express 1.0'>\r\n"
           "<TITLE>Hist\xF3rico - " + table + "</TITLE>\r\n"
           "</HEAD>\r\n\r\n<BODY bgcolor=white text=Black>\r\n";
}
std::string cells(const Cells& cs) {
    std::string out;
    for (const auto& [align, v] : cs) out += std::string("        <TD align=") + align + "><FONT Size=1>" + v + "</TD></FONT>\r\n";
    return out + "</TR>";
}
std::string row(const Cells& cs) { return "    <TR>" + cells(cs); }
// A grid page up to its last caption; h1Font is what the heading's font carries past its size.
std::string gridHead(const std::string& table, const std::vector<std::string>& captions, const std::string& h1Font = "") {
    std::string out = pageHead(table) + "<H1><font size=4" + h1Font + ">Listado de " + table +
                      "</Font></H1><hr size=2 noshade><Br>\r\n"
                      "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=1>\r\n    <TR>\r\n";
    for (const auto& c : captions) out += "        <TH bgcolor=Silver ><FONT Size=1>" + c + "</TH></FONT>\r\n";
    return out + "    </TR>\r\n";
}
std::string gridFoot(int rows) {
    return "</TABLE>\r\n<P><FONT Size=2>\r\n" + std::to_string(rows) + " registros. - 22/11/2026\r\n<HR>\r\n</BODY>\r\n</HTML>\r\n";
}

enum class Out { Grid, Html, Txt };

// Comment tables as the comment classes select them: the work orders' with a
// description, the documents' without.
const frame::ClassVariants kOrderComments = test::toolVariants(
    "ClsPruebaComentarios", "HOrdenes_Comentarios",
    "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios");
frame::ClassVariants documentComments(std::string_view table, std::string_view select) {
    return test::toolVariants("ClsPruebaDocumento", table, select);
}
const frame::ClassVariants kOrderCustomerComments = documentComments(
    "HPedidos_Clientes_Comentarios", "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HPedidos_Clientes_Comentarios");
const frame::ClassVariants kNoteComments = documentComments(
    "HAlbaranes_Comentarios", "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HAlbaranes_Comentarios");
const frame::ClassVariants kInvoiceComments = documentComments(
    "HFacturas_Comentarios", "SELECT Id, Codigo AS Código, Comentarios, fecha FROM HFacturas_Comentarios");

class Listings : public test::ToolsFixture {
protected:
    void SetUp() override {
        ToolsFixture::SetUp();
        auto app = std::make_shared<DefaultApplication>();
        app->setProductName("Histórico");  // the pages' title
        app->setPath((workDir().parent_path() / "aplicación").string());
        setApplication(app);
        observer_ = services::StatementObservers::subscribe([this](const services::StatementEvent& e) {
            if (e.op == "Requery") ++requeries;
        });
    }
    void TearDown() override {
        observer_.reset();
        setApplication(nullptr);
        ToolsFixture::TearDown();
    }

    static fs::path workDir() { return services::Configuration::current()->resolvedWorkDir(); }
    static fs::path rptFile(const std::string& name) { return workDir().parent_path() / "aplicación" / "rpt" / name; }

    // Writes a listing of the class as the host would ask for it.
    static void write(Out out, frame::RecordClass& c, bool clone, std::string key = "todos", bool filtered = false,
                      Variant cols = Variant()) {
        if (out == Out::Grid) tools::toHtmlGrid(c, cols, clone, key, filtered);
        if (out == Out::Html) tools::toHtml(c, clone, key, filtered);
        if (out == Out::Txt) tools::toTxt(c, clone, key, filtered);
    }

    // Adds a row through the class's recordset and saves it.
    static void addRow(frame::RecordClass& cls, const std::vector<std::pair<std::string, Variant>>& values) {
        bool noDefaults = false;
        cls.AddNew(noDefaults);
        for (const auto& [name, v] : values) cls.primaryRecordset()->setValue(name, v);
        cls.Update();
    }

    // Three order comments: a text with markup, an accent and the euro; a Null comment
    // and a date with its time; a negative code, an empty text and a Null date.
    void fillOrderComments(frame::RecordClass& c) {
        open(c);
        addRow(c, {{"Id", int32_t{1}}, {"Código", int32_t{7}}, {"Comentarios", "Corona <b>niño</b> & 20 €"},
                   {"Descripción", "Ávila"}, {"Fecha", Variant::date(rt::dateSerial(2026, 11, 5))}});
        addRow(c, {{"Id", int32_t{2}}, {"Código", int32_t{7}}, {"Comentarios", Variant::null()},
                   {"Descripción", "b"},
                   {"Fecha", Variant::date(rt::dateSerial(2026, 11, 5) + rt::timeSerial(14, 30, 0))}});
        addRow(c, {{"Id", int32_t{3}}, {"Código", int32_t{-4}}, {"Comentarios", ""}, {"Descripción", Variant::null()},
                   {"Fecha", Variant::null()}});
    }

    static Variant grid(const std::vector<ColumnData>& cols) { return Variant(std::make_shared<StandInColumns>(cols)); }

    // Saves values of one view of the class, as the saved-view members store them.
    static void saveView(frame::RecordClass& c, const std::string& key,
                         std::initializer_list<std::pair<const char*, std::string>> values) {
        services::ClsClaveRegistro store;
        store.AbrirClave(c.viewKey(key));
        for (const auto& [name, text] : values) {
            Variant n(name);
            std::string v = text;
            store.EscribirValor(n, v);
        }
    }
    static void saveOrder(frame::RecordClass& c, const std::string& key, int index, const std::string& mode = "") {
        saveView(c, key, {{"IndexOrderField", std::to_string(index)}, {"Mode", mode}});
    }

    frame::RecordClass ordenes{kOrderComments};
    int requeries = 0;

private:
    services::StatementObservers::Subscription observer_;
};

// Id right, Código centre (0), Comentarios left, Descripción hidden, Fecha centre (2).
const std::vector<ColumnData> kOrderColumns = {
    {"Id", true, 1, ""}, {"Código", true, 0, ""}, {"Comentarios", true, 3, ""},
    {"Descripción", false, 3, ""}, {"Fecha", true, 2, ""},
};

TEST_F(Listings, GridOfOrderCommentsIsWrittenByteForByteToTheWorkFolder) {
    fillOrderComments(ordenes);
    ordenes.MoveFirst();
    ordenes.MoveNext();  // the primary stands on its second row
    saveOrder(ordenes, "seleccion", 0, " DESC");
    saveOrder(ordenes, "todos", 1);
    write(Out::Grid, ordenes, true, "seleccion", false, grid(kOrderColumns));
    const std::string expected =
        gridHead("HOrdenes_Comentarios", {"ID", "C\xD3" "DIGO", "COMENTARIOS", "FECHA"}) +
        row({{"right", " 3 "}, {"center", "-4 "}, {"left", ""}, {"center", "Null"}}) +
        row({{"right", " 2 "}, {"center", " 7 "}, {"left", "Null"}, {"center", "05/11/2026 14:30:00"}}) +
        row({{"right", " 1 "}, {"center", " 7 "}, {"left", "Corona <b>ni\xF1o</b> & 20 \x80"}, {"center", "05/11/2026"}}) +
        gridFoot(3);
    EXPECT_EQ(readFile(workDir() / "HOrdenes_Comentarios.htm"), expected);
    // The saved order was read under the caller's key; the primary did not move.
    EXPECT_EQ(ordenes.AbsolutePosition(), 2);
    // The file named to the host is not the one written.
    EXPECT_EQ(tools::getHtmlFile(ordenes), rptFile("HOrdenes_Comentarios.htm").string());
    EXPECT_EQ(tools::listingTxtFile(ordenes), rptFile("HOrdenes_Comentarios.txt").string());
    EXPECT_FALSE(fs::exists(tools::getHtmlFile(ordenes)));
}

TEST_F(Listings, GridWithoutCloneListsThePrimaryAndLeavesItAtEof) {
    fillOrderComments(ordenes);
    ordenes.MoveLast();
    saveOrder(ordenes, "todos", 0, " DESC");
    write(Out::Grid, ordenes, false, "", false,
          grid({{"Id", true, 1, ""}, {"Código", false, 1, ""}, {"x", false, 0, ""}, {"y", false, 0, ""},
                {"z", false, 0, ""}}));
    const std::string text = readFile(workDir() / "HOrdenes_Comentarios.htm");
    // Fetch order, no saved order asked, every row from the first.
    EXPECT_NE(text.find("    </TR>\r\n" + row({{"right", " 1 "}}) + row({{"right", " 2 "}}) + row({{"right", " 3 "}}) +
                        "</TABLE>\r\n"),
              std::string::npos)
        << text;
    EXPECT_TRUE(ordenes.primaryRecordset()->Eof());
}

TEST_F(Listings, ToHtmlWritesTheFirstRowOfTheSortedClone) {
    frame::RecordClass pedidos(kOrderCustomerComments);
    open(pedidos);
    addRow(pedidos, {{"Id", int32_t{4}}, {"Código", int32_t{12}}, {"Comentarios", "Entregar <antes> del día 5"},
               {"Fecha", Variant::date(rt::dateSerial(2026, 11, 20))}});
    addRow(pedidos, {{"Id", int32_t{9}}, {"Código", int32_t{11}}, {"Comentarios", Variant::null()},
               {"Fecha", Variant::date(rt::dateSerial(2026, 11, 21))}});
    saveOrder(pedidos, "todos", 1);  // by Código: the row of 11 comes first
    write(Out::Html, pedidos, true);
    const auto field = [](const std::string& name, const std::string& value) {
        return "    <TR>\r\n"
               "        <th align='Right'; bgcolor='Silver'><FONT Size=1>" +
               name + "        </TH></FONT>\r\n        <td><font size= 1 >" + value + "    </TD></FONT>\r\n</TR>";
    };
    const std::string expected =
        pageHead("HPedidos_Clientes_Comentarios") +
        "<H1><font size=4>HPedidos_Clientes_Comentarios</Font></H1><hr size=0 noshade><Br>\r\n"
        "<table border='1'; cellpadding='5'; cellspacing='5';width='50' bgcolor = '#FFFFFF'; "
        "bordercolordark = '#C5C5C5' >\r\n" +
        field("ID", " 9 ") + field("C\xD3" "DIGO", " 11 ") + field("COMENTARIOS", "Null") +
        field("FECHA", "21/11/2026") +
        "</TABLE>\r\n<P><FONT Size=2>\r\ndomingo, 22 de noviembre de 2026\r\n</BODY>\r\n</HTML>\r\n";
    EXPECT_EQ(readFile(workDir() / "HPedidos_Clientes_Comentarios.htm"), expected);
}

TEST_F(Listings, ToTxtWritesNamesAndValuesUnderBothRegionalSettings) {
    const auto text = [](const std::string& date, const std::string& today) {
        return "ID:  5 \r\n\r\nC\xD3" "DIGO:  31 \r\n\r\nCOMENTARIOS: Pago a 30 d\xED" "as & <IVA>\r\n\r\nFECHA: " +
               date + "\r\n\r\n\r\n\r\n" + today + "\r\n\r\n";
    };
    const std::vector<std::pair<const Regional*, std::string>> cases = {
        {&Regional::esES(), text("05/11/2026", "domingo, 22 de noviembre de 2026")},
        {&Regional::enUS(), text("11/5/2026", "Sunday, November 22, 2026")},
    };
    frame::RecordClass facturas(kInvoiceComments);
    open(facturas);
    addRow(facturas, {{"Id", int32_t{5}}, {"Código", int32_t{31}}, {"Comentarios", "Pago a 30 días & <IVA>"},
               {"fecha", Variant::date(rt::dateSerial(2026, 11, 5))}});
    for (const auto& [regional, expected] : cases) {
        RegionalScope scope(*regional);
        write(Out::Txt, facturas, true);
        // The text file goes to the application's report folder, under the name
        // GetHtmlFile gives with .txt.
        EXPECT_EQ(readFile(rptFile("HFacturas_Comentarios.txt")), expected) << regional->name;
    }
}

TEST_F(Listings, AnEmptyCloneWritesNothingAndWithoutACloneHeadFootAndZero) {
    frame::RecordClass albaranes(kNoteComments);
    open(albaranes, "ninguno");
    const fs::path html = workDir() / "HAlbaranes_Comentarios.htm", txt = rptFile("HAlbaranes_Comentarios.txt");
    for (const auto& [p, text] : {std::pair{html, "old listing"}, std::pair{txt, "old text"}}) {
        fs::create_directories(p.parent_path());
        std::ofstream(p, std::ios::binary) << text;
    }
    for (Out out : {Out::Grid, Out::Html, Out::Txt}) write(out, albaranes, true, "ninguno", false, grid({}));
    EXPECT_EQ(readFile(html), "old listing");
    EXPECT_EQ(readFile(txt), "old text");
    // The saved order is asked before the clone is found empty: a damaged one fails.
    saveView(albaranes, "ninguno", {{"IndexOrderField", "x"}});
    for (Out out : {Out::Grid, Out::Html, Out::Txt})
        EXPECT_EQ(errorOf([&] { write(out, albaranes, true, "ninguno", false, grid({})); }), err::TypeMismatch);

    write(Out::Grid, albaranes, false, "ninguno", false,
          grid({{"Id", true, 1, ""}, {"Código", true, 0, ""}, {"Comentarios", true, 0, ""}, {"Fecha", true, 0, ""}}));
    EXPECT_EQ(readFile(html),
              gridHead("HAlbaranes_Comentarios", {"ID", "C\xD3" "DIGO", "COMENTARIOS", "FECHA"}) + gridFoot(0));
}

TEST_F(Listings, SavedFilterWithAndWithoutAClone) {
    for (bool clone : {true, false}) {
        SCOPED_TRACE(clone ? "clone" : "primary");
        exec("DELETE FROM HOrdenes_Comentarios");
        frame::RecordClass c(kOrderComments);
        fillOrderComments(c);
        // A row that reaches the archive behind the class's back: only a requery sees it.
        const std::string newId = clone ? "8" : "9";
        exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Fecha) VALUES (" + newId +
             ", 7, 'nuevo', #2026-11-06#)");
        saveView(c, "Filter", {{"Criteria", "Código = 7"}});
        saveView(c, "todos", {{"Criteria", "Código = -4"}});  // not the key a listing reads
        requeries = 0;
        write(Out::Grid, c, clone, "todos", true,
              grid({{"Id", true, 1, ""}, {"Código", true, 1, ""}, {"a", false, 0, ""}, {"b", false, 0, ""},
                    {"c", false, 0, ""}}));
        const std::string text = readFile(workDir() / "HOrdenes_Comentarios.htm");
        EXPECT_NE(text.find("<TD align=right><FONT Size=1> " + newId + " </TD>"), std::string::npos);
        EXPECT_EQ(text.find("-4 "), std::string::npos);  // filtered out
        EXPECT_NE(text.find("\r\n3 registros. - "), std::string::npos);
        EXPECT_EQ(requeries, 1);
        // A clone leaves the primary as it was; without one the primary was filtered,
        // read again, and stands at EOF.
        ado::Recordset& primary = *c.primaryRecordset();
        EXPECT_EQ(primary.RecordCount(), 3);
        EXPECT_EQ(primary.Eof(), !clone);
        if (!clone) {
            EXPECT_EQ(rt::CStr(primary.Filter()), "Código = 7");
        }
    }
    // An empty saved filter still requeries.
    frame::RecordClass c(kInvoiceComments);
    open(c);
    exec("INSERT INTO HFacturas_Comentarios (Id, Codigo, Comentarios, Fecha) VALUES (1, 2, 'x', #2026-11-06#)");
    requeries = 0;
    write(Out::Txt, c, false, "todos", true);
    EXPECT_EQ(requeries, 1);
    EXPECT_EQ(readFile(rptFile("HFacturas_Comentarios.txt")).substr(0, 10), "ID:  1 \r\n\r");
}

TEST_F(Listings, ColumnsMustBeAnObjectAnsweringTheGridMembers) {
    fillOrderComments(ordenes);
    // A grid with fewer columns than the recordset has fields fails at position 3.
    const Variant three = grid({{"Id", true, 1, ""}, {"C", true, 1, ""}, {"D", true, 1, ""}});
    for (const auto& [cols, number] : {std::pair{Variant("columnas"), 424L}, std::pair{Variant::nothing(), 91L},
                                       std::pair{three, 9L}})
        EXPECT_EQ(errorOf([&] { write(Out::Grid, ordenes, true, "todos", false, cols); }), number);
}

// ------------------------------------------------------------ walks and sums of other classes

// A class of the document kind (the grid's count, the block of sums) and one that
// reads its cells by the columns' DataField and keeps no saved order, declared as
// those classes will declare them.
frame::ClassVariants listingVariants(std::string_view cls, std::string_view table,
                                               std::string_view select, frame::ListingWalk walk, bool sums,
                                               bool savedOrder) {
    frame::ClassVariants v = test::toolVariants(cls, table, select);
    v.listingWalk = walk;
    v.listingSums = sums;
    v.listingSavedOrder = savedOrder;
    return v;
}
const frame::ClassVariants kDocumentLike = listingVariants(
    "PruebaFacturas", "HFacturas",
    "SELECT Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos AS total FROM HFacturas",
    frame::ListingWalk::GridColumns, true, true);
const frame::ClassVariants kByDataField =
    listingVariants("PruebaFases", "HOrdenes_Fases", "SELECT ID, Fase, Cantidad FROM HOrdenes_Fases",
                    frame::ListingWalk::GridDataField, false, false);

TEST_F(Listings, DocumentClassesAddTheirSumsHiddenColumnsIncluded) {
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos) "
         "VALUES (1, 100.5, 21.1, -15, 106.6, True, 1000)");
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos) "
         "VALUES (2, 0.25, 0.05, 0, 0.3, False, 1000)");
    frame::RecordClass c(kDocumentLike);
    open(c);
    // Base is hidden, yet summed; "total" (a field named so in lower case) is shown
    // and adds nothing.
    write(Out::Grid, c, true, "todos", false,
          grid({{"Número", true, 1, ""}, {"Base", false, 1, ""}, {"Impuestos", true, 1, ""}, {"IRPF", true, 1, ""},
                {"Total", true, 1, ""}, {"Impreso", true, 2, ""}, {"total", true, 1, ""}}));
    std::string sumCaptions;
    for (const char* s : {"Base Imponible", "Importe Impuestos", "Importe IRPF", "Total"})
        sumCaptions += std::string("        <TH bgcolor=Silver><FONT Size=1> ") + s + "</TH></FONT>\r\n";
    const std::string expected =
        gridHead("HFacturas", {"N\xDAMERO", "IMPUESTOS", "IRPF", "TOTAL", "IMPRESO", "TOTAL"}, " face=Verdana") +
        row({{"right", " 1 "}, {"right", " 21,1 "}, {"right", "-15 "}, {"right", " 106,6 "}, {"center", "True"},
             {"right", " 1000 "}}) +
        row({{"right", " 2 "}, {"right", " 0,05 "}, {"right", " 0 "}, {"right", " 0,3 "}, {"center", "False"},
             {"right", " 1000 "}}) +
        "</TABLE>\r\n"
        "<p>&nbsp;</p>\r\n"
        "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=0>\r\n"
        "    <TR>\r\n"
        "        <TH align=Left bgcolor=Silver ><FONT Size=2><font face=Verdana> Sumas</TH></FONT>\r\n"
        "    </TR>\r\n"
        "    <TR>\r\n" + sumCaptions + "    </TR>\r\n" +
        cells({{"right", " 100,75 "}, {"right", " 21,15 "}, {"right", "-15 "}, {"right", " 106,9 "}}) +
        "</TABLE>\r\n<HR>\r\n<P><FONT Size=2>\r\n2 registros. - 22/11/2026\r\n</P>\r\n</BODY>\r\n</HTML>\r\n";
    EXPECT_EQ(readFile(workDir() / "HFacturas.htm"), expected);
}

TEST_F(Listings, ANullAmountFailsTheListingHalfWritten) {
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total) VALUES (1, 1, 1, 1, 1)");
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF) VALUES (2, 1, 1, 1)");
    frame::RecordClass c(kDocumentLike);
    open(c);
    const Variant cols = grid({{"Número", true, 1, ""}, {"Base", true, 1, ""}, {"I", true, 1, ""}, {"R", true, 1, ""},
                               {"Total", true, 1, ""}, {"Impreso", true, 2, ""}, {"total", true, 1, ""}});
    EXPECT_EQ(errorOf([&] { write(Out::Grid, c, true, "todos", false, cols); }), 94) << "a Null total was summed";
    const std::string text = readFile(workDir() / "HFacturas.htm");
    EXPECT_EQ(text.rfind("<HTML>\r\n", 0), 0u);
    EXPECT_NE(text.find("<FONT Size=1>Null</TD></FONT>\r\n</TR>    <TR>"), std::string::npos) << text;
    EXPECT_EQ(text.find("</HTML>"), std::string::npos);
}

TEST_F(Listings, DataFieldWalkReadsCellsByTheColumnsFieldAndSortsByTheFirstField) {
    exec("INSERT INTO HOrdenes_Fases (ID, Fase, Cantidad) VALUES (5, 'Colado', 2.5)");
    exec("INSERT INTO HOrdenes_Fases (ID, Fase, Cantidad) VALUES (2, 'Pulido & brillo', 1)");
    frame::RecordClass c(kByDataField);
    open(c);
    saveOrder(c, "todos", 2, " DESC");  // a saved order these classes never ask for
    write(Out::Grid, c, true, "todos", false, grid({{"Cantidad", true, 1, "Cantidad"}, {"Fase", true, 3, "Fase"}}));
    const std::string text = readFile(workDir() / "HOrdenes_Fases.htm");
    EXPECT_NE(text.find("    </TR>\r\n" + row({{"right", " 1 "}, {"left", "Pulido & brillo"}}) +
                        row({{"right", " 2,5 "}, {"left", "Colado"}}) + gridFoot(2)),
              std::string::npos)
        << text;
}

// A listing whose file cannot take what is written fails with the runtime's "Disk full",
// under the class's name, wherever the file is: the work folder or the report folder.
TEST_F(Listings, AWriteThatFailsIsDiskFull) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    fillOrderComments(ordenes);
    const fs::path html = workDir() / "HOrdenes_Comentarios.htm", txt = rptFile("HOrdenes_Comentarios.txt");
    for (const fs::path& p : {html, txt}) {
        fs::create_directories(p.parent_path());
        fs::create_symlink("/dev/full", p);
    }
    for (Out out : {Out::Grid, Out::Html, Out::Txt}) {
        std::string why;
        EXPECT_EQ(errorOf([&] { write(out, ordenes, true, "todos", false, grid(kOrderColumns)); }, &why), 61)
            << static_cast<int>(out);
        EXPECT_EQ(why, "Disk full");
    }
}

}  // namespace
}  // namespace hist::tools
