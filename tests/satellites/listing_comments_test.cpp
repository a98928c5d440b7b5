// The listings of the comment classes on a real archive: the files compared byte for
// byte with texts written out by hand from the listing format (CRLF line ends and the
// pieces without one, Windows-1252 bytes, upper-cased captions and names, printed
// numbers with their blanks, dates, Null), the empty clone, the two paths, and the
// saved filter with and without a clone.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/record_tools.hpp"
#include "frame/services/config.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "tools/listing_tools.hpp"

namespace hist::satellites {
namespace {

namespace fs = std::filesystem;

const std::string kHead =
    "<HTML>\r\n"
    "<HEAD>\r\n"
    "<meta http-equiv='Content-Type'content='text/html; charset=iso-8859-1'>\r\n"
    "<meta name='GENERATOR' content='Vandrel HtmlPage Express 1.0'>\r\n";
const std::string kHeadEnd =
    "</HEAD>\r\n"
    "\r\n"
    "<BODY bgcolor=white text=Black>\r\n";

std::string readFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& p, const std::string& text) {
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << text;
}

class Listings : public test::ArchiveFixture {
protected:
    void SetUp() override {
        ArchiveFixture::SetUp();
        saved_ = frame::recordTools();
        tools::installListingTools();
        // Stand-ins for the saved orders and filters: what they answer is set per test.
        frame::recordTools().getOrder = [this](frame::RecordClass&, int16_t& index, std::string& mode,
                                               const std::string& key) {
            orderKeys.push_back(key);
            index = orderIndex;
            mode = orderMode;
        };
        frame::recordTools().getFilter = [this](frame::RecordClass&, const std::string& key) {
            filterKeys.push_back(key);
            return filter;
        };
        app_ = std::make_shared<DefaultApplication>();
        app_->setProductName("Histórico");
        appDir = fs::path(services::Configuration::current()->resolvedWorkDir()).parent_path() / "aplicación";
        app_->setPath(appDir.string());
        setApplication(app_);
    }
    void TearDown() override {
        setApplication(nullptr);
        frame::recordTools() = saved_;
        ArchiveFixture::TearDown();
    }

    fs::path workFile(const std::string& name) const {
        return fs::path(services::Configuration::current()->resolvedWorkDir()) / name;
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
    void fillOrderComments(ClsOrdenesComentarios& c) {
        ConnPtr cn;
        std::string todos = "todos";
        Variant id;
        DateValue d{};
        c.IniciaRs(cn, todos, id, d);
        addRow(c, {{"Id", int32_t{1}}, {"Código", int32_t{7}}, {"Comentarios", "Corona <b>niño</b> & 20 €"},
                   {"Descripción", "Ávila"}, {"Fecha", Variant::date(rt::dateSerial(2026, 11, 5))}});
        addRow(c, {{"Id", int32_t{2}}, {"Código", int32_t{7}}, {"Comentarios", Variant::null()},
                   {"Descripción", "b"},
                   {"Fecha", Variant::date(rt::dateSerial(2026, 11, 5) + rt::timeSerial(14, 30, 0))}});
        addRow(c, {{"Id", int32_t{3}}, {"Código", int32_t{-4}}, {"Comentarios", ""}, {"Descripción", Variant::null()},
                   {"Fecha", Variant::null()}});
    }

    static Variant grid(const std::vector<ColumnData>& cols) { return Variant(std::make_shared<StandInColumns>(cols)); }

    int16_t orderIndex = 0;
    std::string orderMode;
    std::string filter;
    std::vector<std::string> orderKeys, filterKeys;
    fs::path appDir;

private:
    frame::RecordTools saved_;
    std::shared_ptr<DefaultApplication> app_;
};

// Id right, Código centre (0), Comentarios left, Descripción hidden, Fecha centre (2).
const std::vector<ColumnData> kOrderColumns = {
    {"Id", true, 1, ""},
    {"Código", true, 0, ""},
    {"Comentarios", true, 3, ""},
    {"Descripción", false, 3, ""},
    {"Fecha", true, 2, ""},
};

TEST_F(Listings, GridOfOrderCommentsIsWrittenByteForByte) {
    ClsOrdenesComentarios c;
    fillOrderComments(c);
    c.MoveFirst();
    c.MoveNext();  // the primary stands on its second row
    orderIndex = 0;
    orderMode = " DESC";
    Variant cols = grid(kOrderColumns);
    bool clone = true, filtered = false;
    std::string key = "seleccion";
    c.ToHtmlGrid(cols, clone, key, filtered);

    const std::string row3 =
        "    <TR>"
        "        <TD align=right><FONT Size=1> 3 </TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>-4 </TD></FONT>\r\n"
        "        <TD align=left><FONT Size=1></TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>Null</TD></FONT>\r\n"
        "</TR>";
    const std::string row2 =
        "    <TR>"
        "        <TD align=right><FONT Size=1> 2 </TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1> 7 </TD></FONT>\r\n"
        "        <TD align=left><FONT Size=1>Null</TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>05/11/2026 14:30:00</TD></FONT>\r\n"
        "</TR>";
    const std::string row1 =
        "    <TR>"
        "        <TD align=right><FONT Size=1> 1 </TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1> 7 </TD></FONT>\r\n"
        "        <TD align=left><FONT Size=1>Corona <b>ni\xF1o</b> & 20 \x80</TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>05/11/2026</TD></FONT>\r\n"
        "</TR>";
    const std::string expected =
        kHead + "<TITLE>Hist\xF3rico - HOrdenes_Comentarios</TITLE>\r\n" + kHeadEnd +
        "<H1><font size=4>Listado de HOrdenes_Comentarios</Font></H1><hr size=2 noshade><Br>\r\n"
        "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=1>\r\n"
        "    <TR>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>ID</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>C\xD3" "DIGO</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>COMENTARIOS</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>FECHA</TH></FONT>\r\n"
        "    </TR>\r\n" +
        row3 + row2 + row1 +
        "</TABLE>\r\n"
        "<P><FONT Size=2>\r\n"
        "3 registros. - 22/11/2026\r\n"
        "<HR>\r\n"
        "</BODY>\r\n"
        "</HTML>\r\n";
    EXPECT_EQ(readFile(workFile("HOrdenes_Comentarios.htm")), expected);
    // The saved order was read under the caller's key; the primary did not move.
    EXPECT_EQ(orderKeys, std::vector<std::string>{"seleccion"});
    EXPECT_EQ(c.AbsolutePosition(), 2);
}

TEST_F(Listings, GridWithoutCloneListsThePrimaryAndLeavesItAtEof) {
    ClsOrdenesComentarios c;
    fillOrderComments(c);
    c.MoveLast();
    Variant cols = grid({{"Id", true, 1, ""}, {"Código", false, 1, ""}, {"x", false, 0, ""},
                         {"y", false, 0, ""}, {"z", false, 0, ""}});
    bool clone = false, filtered = false;
    std::string key;
    c.ToHtmlGrid(cols, clone, key, filtered);
    const std::string text = readFile(workFile("HOrdenes_Comentarios.htm"));
    // Fetch order, no saved order asked, every row from the first.
    EXPECT_NE(text.find("    </TR>\r\n    <TR>        <TD align=right><FONT Size=1> 1 </TD></FONT>\r\n</TR>"
                        "    <TR>        <TD align=right><FONT Size=1> 2 </TD></FONT>\r\n</TR>"
                        "    <TR>        <TD align=right><FONT Size=1> 3 </TD></FONT>\r\n</TR></TABLE>\r\n"),
              std::string::npos)
        << text;
    EXPECT_TRUE(orderKeys.empty());
    EXPECT_TRUE(c.primaryRecordset()->Eof());
}

TEST_F(Listings, ToHtmlWritesTheFirstRowOfTheSortedClone) {
    ClsPedidosCliComent c;
    ConnPtr cn;
    std::string todos = "todos";
    Variant id;
    DateValue d{};
    c.IniciaRs(cn, todos, id, d);
    addRow(c, {{"Id", int32_t{4}}, {"Código", int32_t{12}}, {"Comentarios", "Entregar <antes> del día 5"},
               {"Fecha", Variant::date(rt::dateSerial(2026, 11, 20))}});
    addRow(c, {{"Id", int32_t{9}}, {"Código", int32_t{11}}, {"Comentarios", Variant::null()},
               {"Fecha", Variant::date(rt::dateSerial(2026, 11, 21))}});
    orderIndex = 1;  // by Código: the row of 11 comes first
    bool clone = true, filtered = false;
    std::string key = "todos";
    c.ToHtml(clone, key, filtered);
    const auto field = [](const std::string& name, const std::string& value) {
        return "    <TR>\r\n"
               "        <th align='Right'; bgcolor='Silver'><FONT Size=1>" +
               name + "        </TH></FONT>\r\n        <td><font size= 1 >" + value + "    </TD></FONT>\r\n</TR>";
    };
    const std::string expected =
        kHead + "<TITLE>Hist\xF3rico - HPedidos_Clientes_Comentarios</TITLE>\r\n" + kHeadEnd +
        "<H1><font size=4>HPedidos_Clientes_Comentarios</Font></H1><hr size=0 noshade><Br>\r\n"
        "<table border='1'; cellpadding='5'; cellspacing='5';width='50' bgcolor = '#FFFFFF'; "
        "bordercolordark = '#C5C5C5' >\r\n" +
        field("ID", " 9 ") + field("C\xD3" "DIGO", " 11 ") + field("COMENTARIOS", "Null") +
        field("FECHA", "21/11/2026") +
        "</TABLE>\r\n"
        "<P><FONT Size=2>\r\n"
        "domingo, 22 de noviembre de 2026\r\n"
        "</BODY>\r\n"
        "</HTML>\r\n";
    EXPECT_EQ(readFile(workFile("HPedidos_Clientes_Comentarios.htm")), expected);
}

TEST_F(Listings, ToTxtWritesNamesAndValuesUnderBothRegionalSettings) {
    struct Case {
        const Regional* regional;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {&Regional::esES(),
         "ID:  5 \r\n\r\nC\xD3" "DIGO:  31 \r\n\r\nCOMENTARIOS: Pago a 30 d\xED" "as & <IVA>\r\n\r\n"
         "FECHA: 05/11/2026\r\n\r\n\r\n\r\ndomingo, 22 de noviembre de 2026\r\n\r\n"},
        {&Regional::enUS(),
         "ID:  5 \r\n\r\nC\xD3" "DIGO:  31 \r\n\r\nCOMENTARIOS: Pago a 30 d\xED" "as & <IVA>\r\n\r\n"
         "FECHA: 11/5/2026\r\n\r\n\r\n\r\nSunday, November 22, 2026\r\n\r\n"},
    };
    ClsFacturasComentarios c;
    ConnPtr cn;
    std::string todos = "todos";
    Variant id;
    DateValue d{};
    c.IniciaRs(cn, todos, id, d);
    addRow(c, {{"Id", int32_t{5}}, {"Código", int32_t{31}}, {"Comentarios", "Pago a 30 días & <IVA>"},
               {"fecha", Variant::date(rt::dateSerial(2026, 11, 5))}});
    for (const Case& k : cases) {
        RegionalScope scope(*k.regional);
        bool clone = true, filtered = false;
        std::string key = "todos";
        c.ToTxt(clone, key, filtered);
        // The text file goes to the application's report folder, under the name
        // GetHtmlFile gives with .txt.
        EXPECT_EQ(readFile(appDir / "rpt" / "HFacturas_Comentarios.txt"), k.expected) << k.regional->name;
    }
}

TEST_F(Listings, AnEmptyCloneWritesNothingAndLeavesTheOldFile) {
    ClsAlbaranesComentarios c;
    ConnPtr cn;
    std::string ninguno = "ninguno";
    Variant id;
    DateValue d{};
    c.IniciaRs(cn, ninguno, id, d);
    const fs::path html = workFile("HAlbaranes_Comentarios.htm");
    const fs::path txt = appDir / "rpt" / "HAlbaranes_Comentarios.txt";
    writeFile(html, "old listing");
    writeFile(txt, "old text");
    bool clone = true, filtered = false;
    std::string key = "ninguno";
    Variant cols = grid({});
    c.ToHtmlGrid(cols, clone, key, filtered);
    c.ToHtml(clone, key, filtered);
    c.ToTxt(clone, key, filtered);
    EXPECT_EQ(readFile(html), "old listing");
    EXPECT_EQ(readFile(txt), "old text");
    // The saved order is asked before the clone is found empty.
    EXPECT_EQ(orderKeys.size(), 3u);
}

TEST_F(Listings, WithoutACloneAnEmptySelectionGivesHeadFootAndZero) {
    ClsAlbaranesComentarios c;
    ConnPtr cn;
    std::string ninguno = "ninguno";
    Variant id;
    DateValue d{};
    c.IniciaRs(cn, ninguno, id, d);
    Variant cols = grid({{"Id", true, 1, ""}, {"Código", true, 0, ""}, {"Comentarios", true, 0, ""},
                         {"Fecha", true, 0, ""}});
    bool clone = false, filtered = false;
    std::string key = "ninguno";
    c.ToHtmlGrid(cols, clone, key, filtered);
    const std::string expected =
        kHead + "<TITLE>Hist\xF3rico - HAlbaranes_Comentarios</TITLE>\r\n" + kHeadEnd +
        "<H1><font size=4>Listado de HAlbaranes_Comentarios</Font></H1><hr size=2 noshade><Br>\r\n"
        "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=1>\r\n"
        "    <TR>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>ID</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>C\xD3" "DIGO</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>COMENTARIOS</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>FECHA</TH></FONT>\r\n"
        "    </TR>\r\n"
        "</TABLE>\r\n"
        "<P><FONT Size=2>\r\n"
        "0 registros. - 22/11/2026\r\n"
        "<HR>\r\n"
        "</BODY>\r\n"
        "</HTML>\r\n";
    EXPECT_EQ(readFile(workFile("HAlbaranes_Comentarios.htm")), expected);
}

TEST_F(Listings, TheHtmlFileNamedToTheHostIsNotTheOneWritten) {
    ClsOrdenesComentarios c;
    fillOrderComments(c);
    Variant cols = grid(kOrderColumns);
    bool clone = true, filtered = false;
    std::string key = "todos";
    c.ToHtmlGrid(cols, clone, key, filtered);
    EXPECT_EQ(c.GetHtmlFile(), (appDir / "rpt" / "HOrdenes_Comentarios.htm").string());
    EXPECT_EQ(tools::listingTxtFile(c), (appDir / "rpt" / "HOrdenes_Comentarios.txt").string());
    EXPECT_TRUE(fs::exists(workFile("HOrdenes_Comentarios.htm")));
    EXPECT_FALSE(fs::exists(c.GetHtmlFile()));
}

TEST_F(Listings, SavedFilterWithAndWithoutAClone) {
    for (bool clone : {true, false}) {
        SCOPED_TRACE(clone ? "clone" : "primary");
        exec("DELETE FROM HOrdenes_Comentarios");
        ClsOrdenesComentarios c;
        fillOrderComments(c);
        // A row that reaches the archive behind the class's back: only a requery sees it.
        exec("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Fecha) VALUES (" +
             std::string(clone ? "8" : "9") + ", 7, 'nuevo', #2026-11-06#)");
        filter = "Código = 7";
        filterKeys.clear();
        log.clear();
        Variant cols = grid({{"Id", true, 1, ""}, {"Código", true, 1, ""}, {"a", false, 0, ""},
                             {"b", false, 0, ""}, {"c", false, 0, ""}});
        bool bDoclone = clone, bFilter = true;
        std::string key = "todos";
        c.ToHtmlGrid(cols, bDoclone, key, bFilter);
        const std::string text = readFile(workFile("HOrdenes_Comentarios.htm"));
        const std::string newRow = clone ? " 8 " : " 9 ";
        EXPECT_NE(text.find("<TD align=right><FONT Size=1>" + newRow + "</TD>"), std::string::npos);
        EXPECT_EQ(text.find("-4 "), std::string::npos);  // filtered out
        EXPECT_NE(text.find("\r\n3 registros. - "), std::string::npos);
        EXPECT_EQ(filterKeys, std::vector<std::string>{"Filter"});
        EXPECT_EQ(log.texts("Requery").size(), 1u);
        // A clone leaves the primary as it was; without one the primary was filtered,
        // read again, and stands at EOF.
        ado::Recordset& primary = *c.primaryRecordset();
        if (clone) {
            EXPECT_EQ(primary.RecordCount(), 3);
            EXPECT_FALSE(primary.Eof());
        } else {
            EXPECT_EQ(primary.RecordCount(), 3);
            EXPECT_TRUE(primary.Eof());
            EXPECT_EQ(rt::CStr(primary.Filter()), "Código = 7");
        }
    }
}

TEST_F(Listings, AnEmptySavedFilterStillRequeries) {
    ClsFacturasComentarios c;
    ConnPtr cn;
    std::string todos = "todos";
    Variant id;
    DateValue d{};
    c.IniciaRs(cn, todos, id, d);
    exec("INSERT INTO HFacturas_Comentarios (Id, Codigo, Comentarios, Fecha) VALUES (1, 2, 'x', #2026-11-06#)");
    log.clear();
    bool clone = false, bFilter = true;
    std::string key = "todos";
    c.ToTxt(clone, key, bFilter);
    EXPECT_EQ(log.texts("Requery").size(), 1u);
    EXPECT_EQ(readFile(appDir / "rpt" / "HFacturas_Comentarios.txt").substr(0, 10), "ID:  1 \r\n\r");
}

TEST_F(Listings, MissingSavedOrderOrFilterToolsFailWithTheirError) {
    ClsOrdenesComentarios c;
    fillOrderComments(c);
    Variant cols = grid(kOrderColumns);
    std::string key = "todos";
    const auto failsWith = [&](auto call, const std::string& member) {
        try {
            call();
            ADD_FAILURE() << "no error for " << member;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), 5);
            EXPECT_NE(e.description().find(member), std::string::npos) << e.description();
        }
    };
    frame::recordTools().getOrder = nullptr;
    failsWith([&] { bool b = true, f = false; c.ToHtmlGrid(cols, b, key, f); }, "GetOrder");
    failsWith([&] { bool b = true, f = false; c.ToTxt(b, key, f); }, "GetOrder");
    frame::recordTools().getFilter = nullptr;
    failsWith([&] { bool b = false, f = true; c.ToHtml(b, key, f); }, "GetFilter");
    EXPECT_FALSE(fs::exists(workFile("HOrdenes_Comentarios.htm")));
    EXPECT_FALSE(fs::exists(appDir / "rpt" / "HOrdenes_Comentarios.txt"));
}

// ------------------------------------------------------------ walks and sums of other classes

// A class of the document kind (the grid's count, the block of sums) and one that
// reads its cells by the columns' DataField and keeps no saved order, declared as
// those classes will declare them.
constexpr frame::ClassVariants kDocumentLike{
    .className = "PruebaFacturas",
    .table = "HFacturas",
    .selectSql = "SELECT Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos AS total FROM HFacturas",
    .selectionKey = "Numero",
    .open = frame::OpenForm::B,
    .nuevoCodigoColumn = "Numero",
    .deleteAllKey = "Numero",
    .convertirSerieKey = "Numero",
    .updateIdParent = "Numero",
    .listingWalk = frame::ListingWalk::GridColumns,
    .listingSums = true,
};

constexpr frame::ClassVariants kByDataField{
    .className = "PruebaFases",
    .table = "HOrdenes_Fases",
    .selectSql = "SELECT ID, Fase, Cantidad FROM HOrdenes_Fases",
    .selectionKey = "Codigo",
    .nuevoCodigoColumn = "ID",
    .deleteAllKey = "Codigo",
    .convertirSerieKey = "Codigo",
    .updateIdParent = "Codigo",
    .listingWalk = frame::ListingWalk::GridDataField,
    .listingSavedOrder = false,
};

class TestClass : public frame::RecordClass {
public:
    using RecordClass::RecordClass;
    void open() {
        ConnPtr cn;
        std::string todos = "todos";
        Variant id;
        DateValue d{};
        IniciaRs(cn, todos, id, d);
    }
};

TEST_F(Listings, DocumentClassesAddTheirSumsHiddenColumnsIncluded) {
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos) "
         "VALUES (1, 100.5, 21.1, -15, 106.6, True, 1000)");
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total, Impreso, Gastos) "
         "VALUES (2, 0.25, 0.05, 0, 0.3, False, 1000)");
    TestClass c(kDocumentLike);
    c.open();
    // Base is hidden, yet summed; "total" (a field named so in lower case) is shown
    // and adds nothing.
    Variant cols = grid({{"Número", true, 1, ""}, {"Base", false, 1, ""}, {"Impuestos", true, 1, ""},
                         {"IRPF", true, 1, ""}, {"Total", true, 1, ""}, {"Impreso", true, 2, ""},
                         {"total", true, 1, ""}});
    bool clone = true, filtered = false;
    std::string key = "todos";
    c.ToHtmlGrid(cols, clone, key, filtered);
    const std::string expected =
        kHead + "<TITLE>Hist\xF3rico - HFacturas</TITLE>\r\n" + kHeadEnd +
        "<H1><font size=4 face=Verdana>Listado de HFacturas</Font></H1><hr size=2 noshade><Br>\r\n"
        "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=1>\r\n"
        "    <TR>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>N\xDAMERO</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>IMPUESTOS</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>IRPF</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>TOTAL</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>IMPRESO</TH></FONT>\r\n"
        "        <TH bgcolor=Silver ><FONT Size=1>TOTAL</TH></FONT>\r\n"
        "    </TR>\r\n"
        "    <TR>"
        "        <TD align=right><FONT Size=1> 1 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 21,1 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1>-15 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 106,6 </TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>True</TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 1000 </TD></FONT>\r\n"
        "</TR>"
        "    <TR>"
        "        <TD align=right><FONT Size=1> 2 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 0,05 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 0 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 0,3 </TD></FONT>\r\n"
        "        <TD align=center><FONT Size=1>False</TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 1000 </TD></FONT>\r\n"
        "</TR>"
        "</TABLE>\r\n"
        "<p>&nbsp;</p>\r\n"
        "<TABLE WIDTH=100% CELLPADDING=1 CELLSPACING=1 BGCOLOR=white BORDER=0>\r\n"
        "    <TR>\r\n"
        "        <TH align=Left bgcolor=Silver ><FONT Size=2><font face=Verdana> Sumas</TH></FONT>\r\n"
        "    </TR>\r\n"
        "    <TR>\r\n"
        "        <TH bgcolor=Silver><FONT Size=1> Base Imponible</TH></FONT>\r\n"
        "        <TH bgcolor=Silver><FONT Size=1> Importe Impuestos</TH></FONT>\r\n"
        "        <TH bgcolor=Silver><FONT Size=1> Importe IRPF</TH></FONT>\r\n"
        "        <TH bgcolor=Silver><FONT Size=1> Total</TH></FONT>\r\n"
        "    </TR>\r\n"
        "        <TD align=right><FONT Size=1> 100,75 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 21,15 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1>-15 </TD></FONT>\r\n"
        "        <TD align=right><FONT Size=1> 106,9 </TD></FONT>\r\n"
        "</TR>"
        "</TABLE>\r\n"
        "<HR>\r\n"
        "<P><FONT Size=2>\r\n"
        "2 registros. - 22/11/2026\r\n"
        "</P>\r\n"
        "</BODY>\r\n"
        "</HTML>\r\n";
    EXPECT_EQ(readFile(workFile("HFacturas.htm")), expected);
}

TEST_F(Listings, ANullAmountFailsTheListingHalfWritten) {
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF, Total) VALUES (1, 1, 1, 1, 1)");
    exec("INSERT INTO HFacturas (Numero, Base, Importe_Impuestos, Importe_IRPF) VALUES (2, 1, 1, 1)");
    TestClass c(kDocumentLike);
    c.open();
    Variant cols = grid({{"Número", true, 1, ""}, {"Base", true, 1, ""}, {"I", true, 1, ""}, {"R", true, 1, ""},
                         {"Total", true, 1, ""}, {"Impreso", true, 2, ""}, {"total", true, 1, ""}});
    bool clone = true, filtered = false;
    std::string key = "todos";
    try {
        c.ToHtmlGrid(cols, clone, key, filtered);
        ADD_FAILURE() << "a Null total was summed";
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), 94);
    }
    const std::string text = readFile(workFile("HFacturas.htm"));
    EXPECT_EQ(text.rfind("<HTML>\r\n", 0), 0u);
    EXPECT_NE(text.find("<FONT Size=1>Null</TD></FONT>\r\n</TR>    <TR>"), std::string::npos) << text;
    EXPECT_EQ(text.find("</HTML>"), std::string::npos);
}

TEST_F(Listings, DataFieldWalkReadsCellsByTheColumnsFieldAndSortsByTheFirstField) {
    exec("INSERT INTO HOrdenes_Fases (ID, Fase, Cantidad) VALUES (5, 'Colado', 2.5)");
    exec("INSERT INTO HOrdenes_Fases (ID, Fase, Cantidad) VALUES (2, 'Pulido & brillo', 1)");
    TestClass c(kByDataField);
    c.open();
    orderIndex = 2;  // a saved order these classes never ask for
    Variant cols = grid({{"Cantidad", true, 1, "Cantidad"}, {"Fase", true, 3, "Fase"}});
    bool clone = true, filtered = false;
    std::string key = "todos";
    c.ToHtmlGrid(cols, clone, key, filtered);
    const std::string text = readFile(workFile("HOrdenes_Fases.htm"));
    EXPECT_NE(text.find("    </TR>\r\n"
                        "    <TR>        <TD align=right><FONT Size=1> 1 </TD></FONT>\r\n"
                        "        <TD align=left><FONT Size=1>Pulido & brillo</TD></FONT>\r\n"
                        "</TR>    <TR>        <TD align=right><FONT Size=1> 2,5 </TD></FONT>\r\n"
                        "        <TD align=left><FONT Size=1>Colado</TD></FONT>\r\n"
                        "</TR></TABLE>\r\n"
                        "<P><FONT Size=2>\r\n2 registros. - 22/11/2026\r\n<HR>\r\n"),
              std::string::npos)
        << text;
    EXPECT_TRUE(orderKeys.empty());
}

TEST_F(Listings, ColumnsMustBeAnObjectAnsweringTheGridMembers) {
    ClsOrdenesComentarios c;
    fillOrderComments(c);
    bool clone = true, filtered = false;
    std::string key = "todos";
    const auto numberOf = [&](Variant cols) {
        try {
            c.ToHtmlGrid(cols, clone, key, filtered);
        } catch (const Error& e) {
            return e.number();
        }
        return 0L;
    };
    EXPECT_EQ(numberOf(Variant("columnas")), 424);
    EXPECT_EQ(numberOf(Variant::nothing()), 91);
    // A grid with fewer columns than the recordset has fields: position 3 is out of range.
    EXPECT_EQ(numberOf(grid({{"Id", true, 1, ""}, {"C", true, 1, ""}, {"D", true, 1, ""}})), 9);
}

}  // namespace
}  // namespace hist::satellites
