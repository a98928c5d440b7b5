// What the tools keep in the per-user settings store. Saved filters and orders: where
// they are kept, their defaults, when SetOrder saves and when it does not, AplyFilter,
// and the order restored at the end of IniciaRs and Requery. SeguridadPermiso: the
// key of the class's permission group and a refusal made with the rights command
// reported by the member.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/services/rights.hpp"
#include "frame/services/settings.hpp"
#include "tools/tool_members.hpp"
#include "tools_fixture.hpp"

namespace hist::tools {
namespace {

using test::errorOf;

constexpr const char* kSelect =
    "SELECT Id, Codigo, Comentarios, Fecha, Descripcion AS [Mi campo] FROM HOrdenes_Comentarios";
const frame::ClassVariants kPlain = test::toolVariants("ClsPruebaVistas", "HOrdenes_Comentarios", kSelect);

frame::ClassVariants restoring(frame::ClassVariants v) {
    v.orderOnIniciaRs = v.orderOnRequery = true;
    return v;
}
const frame::ClassVariants kRestoring = restoring(kPlain);

const std::string kTodos =
    "SOFTWARE\\Laboratorio\\Historicos\\1.0\\Configuracion\\registros\\HOrdenes_Comentarios\\todos\\";

class SavedViews : public test::ToolsFixture {
protected:
    void SetUp() override {
        ToolsFixture::SetUp();
        for (const char* values : {"1, 7, 'b', 'y', #2026-01-02#", "2, 7, 'c', 'x', #2026-01-03#",
                                   "3, 8, 'a', 'z', #2026-01-01#"})
            exec(std::string("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios, Descripcion, Fecha) VALUES (") +
                 values + ")");
    }

    // A value as the store holds it under a key path, read past the class.
    static std::string stored(const std::string& key, const char* name, const std::string& absent = "<none>") {
        services::ClsClaveRegistro store;
        store.AbrirClave(key);
        return store.LeerValor(Variant(name), absent);
    }

    // Opens under a keyword; the selection is document 7 of 2026-01-02.
    static void open(frame::RecordClass& cls, const std::string& keyword) {
        TempArchive::open(cls, keyword, Variant(int32_t{7}), DateValue{rt::dateSerial(2026, 1, 2)});
    }
    // The order saved under the "todos" view, as "<index>|<mode>".
    static std::string savedOrder() { return stored(kTodos, "IndexOrderField") + "|" + stored(kTodos, "Mode"); }

    // The Id of each row in the order the recordset shows them.
    static std::string ids(frame::RecordClass& cls) {
        auto& rs = *cls.primaryRecordset();
        std::string out;
        if (rs.RecordCount() == 0) return out;
        rs.MoveFirst();
        while (!rs.Eof()) {
            out += rt::CStr(rs.value("Id"));
            rs.MoveNext();
        }
        return out;
    }
};

TEST_F(SavedViews, FiltersAreKeptPerClassTableAndViewWithoutCase) {
    // Nothing saved reads as the defaults.
    frame::RecordClass cls{kPlain};
    EXPECT_EQ(cls.GetFilter("todos"), "");
    int16_t index = 7;
    std::string mode = " DESC";
    cls.GetOrder(index, mode, "todos");
    EXPECT_EQ(index, 0);
    EXPECT_EQ(mode, "");

    std::string criteria = "Codigo = 7", key = "todos";
    cls.SetFilter(criteria, key);
    EXPECT_EQ(stored(kTodos, "Criteria"), "Codigo = 7");
    EXPECT_EQ(cls.GetFilter("Todos"), "Codigo = 7");
    EXPECT_EQ(cls.GetFilter("seleccion"), "");
    // SetFilter does not touch the recordset.
    open(cls, "todos");
    EXPECT_EQ(cls.primaryRecordset()->RecordCount(), 3);

    // Another table is another key.
    const frame::ClassVariants kOther =
        test::toolVariants("ClsOtra", "HFacturas_Comentarios", "SELECT Id FROM HFacturas_Comentarios");
    frame::RecordClass other{kOther};
    EXPECT_EQ(other.GetFilter("todos"), "");

    // The application's own values, asked at each call, make the path.
    auto app = std::make_shared<DefaultApplication>();
    app->setCompanyName("Otra");
    app->setMajor(2);
    app->setMinor(3);
    setApplication(app);
    EXPECT_EQ(cls.viewKey("todos"),
              "SOFTWARE\\Otra\\Historicos\\2.3\\Configuracion\\registros\\HOrdenes_Comentarios\\todos\\");
    EXPECT_EQ(cls.GetFilter("todos"), "");
    criteria = "Codigo = 8";
    cls.SetFilter(criteria, key);
    setApplication(nullptr);
    EXPECT_EQ(cls.GetFilter("todos"), "Codigo = 7");
}

TEST_F(SavedViews, SetOrderSortsByTheFieldAndModeThenSavesAndSavesNothingItCouldNotApply) {
    frame::RecordClass cls{kPlain};
    open(cls, "todos");
    std::string key = "todos";
    // A name with a blank goes in as it stands.
    const std::vector<std::tuple<int16_t, std::string, std::string>> orders = {
        {3, " DESC", "Fecha DESC"}, {4, "", "Mi campo"}, {2, " DESC", "Comentarios DESC"}};
    for (auto [index, mode, sort] : orders) {
        const std::string saved = std::to_string(index) + "|" + mode;
        cls.SetOrder(index, mode, key);
        EXPECT_EQ(cls.primaryRecordset()->Sort(), sort);
        EXPECT_EQ(ids(cls), "213");
        EXPECT_EQ(savedOrder(), saved);
        int16_t readIndex = 0;
        std::string readMode;
        cls.GetOrder(readIndex, readMode, "Todos");
        EXPECT_EQ(std::to_string(readIndex) + "|" + readMode, saved);
    }

    struct Case {
        const char* what;
        int16_t index;
        std::string mode;
    };
    const std::vector<Case> cases = {
        {"past the last field", 5, ""},
        {"before the first field", -1, ""},
        {"a mode the recordset refuses", 1, " SIDEWAYS"},
    };
    for (auto c : cases) {
        EXPECT_EQ(errorOf([&] { cls.SetOrder(c.index, c.mode, key); }), 3265) << c.what;
        EXPECT_EQ(savedOrder(), "2| DESC") << c.what;
    }

    // An empty selection neither sorts nor saves.
    frame::RecordClass none{kPlain};
    open(none, "ninguno");
    int16_t index = 0;
    std::string mode;
    none.SetOrder(index, mode, key);
    EXPECT_EQ(none.primaryRecordset()->Sort(), "");
    EXPECT_EQ(savedOrder(), "2| DESC");
}

TEST_F(SavedViews, AStoredIndexThatIsNoNumberFailsGetOrder) {
    services::ClsClaveRegistro store;
    store.AbrirClave(kTodos);
    Variant name("IndexOrderField");
    std::string value = "tres";
    store.EscribirValor(name, value);
    frame::RecordClass cls{kPlain};
    int16_t index = 1;
    std::string mode = "sin leer";
    EXPECT_EQ(errorOf([&] { cls.GetOrder(index, mode, "todos"); }), 13);
    EXPECT_EQ(mode, "sin leer");
}

TEST_F(SavedViews, AplyFilterSetsOrLiftsTheFilterAndLeavesTheSavedOne) {
    frame::RecordClass cls{kPlain};
    open(cls, "todos");
    std::string criteria = "Codigo = 7", key = "todos";
    cls.SetFilter(criteria, key);
    cls.AplyFilter(cls.GetFilter("todos"));
    EXPECT_EQ(cls.primaryRecordset()->RecordCount(), 2);
    cls.AplyFilter("");
    EXPECT_EQ(cls.primaryRecordset()->RecordCount(), 3);
    EXPECT_EQ(cls.GetFilter("todos"), "Codigo = 7");

    frame::RecordClass closed{kPlain};
    EXPECT_EQ(errorOf([&] { closed.AplyFilter(""); }), 91);
}

TEST_F(SavedViews, TheOrderIsRestoredWhereTheClassSaysSo) {
    // Nothing saved: the first field, ascending, and that is written back.
    frame::RecordClass restoring{kRestoring};
    open(restoring, "");
    EXPECT_EQ(restoring.primaryRecordset()->Sort(), "Id");
    EXPECT_EQ(savedOrder(), "0|");

    int16_t index = 2;
    std::string mode = " DESC", key = "Todos";
    restoring.SetOrder(index, mode, key);

    // Saved under "Todos", read back by IniciaRs under "todos" (a keyword it does not
    // know opens everything): one view. Requery's "Todos" and a class that restores on
    // Requery only are checked on the comment classes.
    frame::RecordClass again{kRestoring};
    open(again, "otra cosa");
    EXPECT_EQ(again.primaryRecordset()->Sort(), "Comentarios DESC");
    EXPECT_EQ(ids(again), "213");

    // Each selection keyword is its own view.
    frame::RecordClass selection{kRestoring};
    open(selection, "seleccion");
    EXPECT_EQ(selection.primaryRecordset()->Sort(), "Id");
    EXPECT_EQ(stored(selection.viewKey("seleccion"), "IndexOrderField"), "0");

    // An empty selection is left unsorted and saves nothing.
    frame::RecordClass none{kRestoring};
    open(none, "ninguno");
    EXPECT_EQ(none.primaryRecordset()->Sort(), "");
    EXPECT_EQ(stored(none.viewKey("ninguno"), "IndexOrderField"), "<none>");
}

TEST_F(SavedViews, ADamagedSavedOrderFailsTheOpeningNamingTheFormAndView) {
    struct Case {
        const char* index;
        const char* mode;
        long number;
    };
    const Case cases[] = {
        {"99", "", 3265},           // past the last field
        {"1", " SIDEWAYS", 3265},   // a direction the recordset refuses
        {"tres", "", 13},           // no number at all
    };
    for (const Case& c : cases) {
        services::ClsClaveRegistro store;
        store.AbrirClave(kTodos);
        Variant index("IndexOrderField"), mode("Mode");
        std::string indexValue = c.index, modeValue = c.mode;
        store.EscribirValor(index, indexValue);
        store.EscribirValor(mode, modeValue);
        frame::RecordClass cls{kRestoring};
        std::string description;
        EXPECT_EQ(errorOf([&] { open(cls, "todos"); }, &description), c.number) << c.index << c.mode;
        EXPECT_NE(description.find("saved order of HOrdenes_Comentarios (view \"todos\")"), std::string::npos)
            << description;
    }
}

// ------------------------------------------------------------ permissions


// A class of the given table in a permission group.
frame::ClassVariants inGroup(std::string_view cls, std::string_view table, std::string_view select,
                                       std::string_view group) {
    return test::toolVariants(cls, table, select, frame::FilterForm::Base, frame::DefinedSizeForm::Table,
                              frame::KeyForm::Table, group);
}
const frame::ClassVariants kVentas =
    inGroup("ClsPruebaVentas", "HFacturas_Comentarios", "SELECT Id FROM HFacturas_Comentarios", "Facturas");
const frame::ClassVariants kRecibos = inGroup("ClsPruebaRecibos", "Recibos", "SELECT Id FROM Recibos", "Facturas");
const frame::ClassVariants kOrdenes =
    inGroup("ClsPruebaOrdenes", "HOrdenes_Comentarios", "SELECT Id FROM HOrdenes_Comentarios", "HOrdenes");
const frame::ClassVariants kSinGrupo = inGroup("ClsPruebaSinGrupo", "Recibos", "SELECT Id FROM Recibos", "");

class Permissions : public test::ToolsFixture {
protected:
    using Verb = services::RightsOptions::Verb;
    static int rights(Verb verb, std::string user, std::string group, std::string action) {
        std::ostringstream out, err;
        return services::rightsCommand({.verb = verb, .user = user, .group = group, .action = action}, out, err);
    }
    static bool allowed(frame::RecordClass& cls, std::string action) { return tools::seguridadPermiso(cls, action); }
};

TEST_F(Permissions, TheGroupKeyHoldsSeguridadTwice) {
    frame::RecordClass ventas{kVentas};
    EXPECT_EQ(permissionKey(ventas), "SOFTWARE\\Laboratorio\\Historicos\\1.0\\Seguridad\\Seguridad\\Facturas\\");
    auto app = std::make_shared<DefaultApplication>();
    app->setProductName("Archivo");
    app->setMinor(4);
    setApplication(app);
    EXPECT_EQ(permissionKey(ventas), "SOFTWARE\\Laboratorio\\Archivo\\1.4\\Seguridad\\Seguridad\\Facturas\\");
}

TEST_F(Permissions, ARefusalIsReportedForItsGroupAndActionOnlyAndAGroupIsNeeded) {
    frame::RecordClass ventas{kVentas}, recibos{kRecibos}, ordenes{kOrdenes}, sinGrupo{kSinGrupo};
    EXPECT_TRUE(allowed(ventas, "Borrar"));
    ASSERT_EQ(rights(Verb::Deny, "ana", "Facturas", "Borrar"), 0);

    // Classes of one group answer alike; another group or action is untouched.
    EXPECT_FALSE(allowed(ventas, "Borrar"));
    EXPECT_FALSE(allowed(recibos, "Borrar"));
    EXPECT_TRUE(allowed(ventas, "Modificar"));
    EXPECT_TRUE(allowed(ordenes, "Borrar"));

    ASSERT_EQ(rights(Verb::Allow, "ana", "Facturas", "Borrar"), 0);
    EXPECT_TRUE(allowed(ventas, "Borrar"));

    EXPECT_EQ(test::errorOf([&] { allowed(sinGrupo, "Borrar"); }), 5);
}

}  // namespace
}  // namespace hist::tools
