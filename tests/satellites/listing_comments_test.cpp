// The listings of the comment classes on a real archive: the files compared byte for
// byte with texts written from the listing's description (CRLF line ends and the
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

}  // namespace
}  // namespace hist::satellites
