// The filter tools on the four comment classes: the saved order restored where each
// class's variant says, each class's permission group and the long-text limit they
// report.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/record_tools.hpp"
#include "frame/saved_order.hpp"
#include "frame/services/rights.hpp"
#include "frame/services/settings.hpp"
#include "platform/host_objects.hpp"
#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "tools/filter_tools.hpp"

namespace hist::satellites {
namespace {

const DateValue kFecha{rt::dateSerial(2026, 11, 22)};

class CommentTools : public test::ArchiveFixture {
protected:
    void SetUp() override {
        ArchiveFixture::SetUp();
        CurrentUser::set("ana");
        setApplication(nullptr);
        saved_ = frame::recordTools();
        tools::installFilterTools();
        for (const char* table :
             {"HOrdenes_Comentarios", "HPedidos_Clientes_Comentarios", "HAlbaranes_Comentarios", "HFacturas_Comentarios"}) {
            const std::string t(table);
            // Descending by comment or by date, row 2 comes first.
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (1, 7, 'b', #2026-11-22#)");
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (2, 7, 'c', #2026-11-23#)");
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (3, 7, 'a', #2026-11-21#)");
        }
    }
    void TearDown() override {
        frame::recordTools() = saved_;
        frame::setSavedOrderStep({});
        CurrentUser::set(std::nullopt);
        ArchiveFixture::TearDown();
    }

    // Saves an order under a view of a table, as the settings store keeps it.
    static void saveOrder(const std::string& table, const std::string& view, const std::string& index,
                          const std::string& mode) {
        services::ClsClaveRegistro store;
        store.AbrirClave("SOFTWARE\\Laboratorio\\Historicos\\1.0\\Configuracion\\registros\\" + table + "\\" + view +
                         "\\");
        Variant i("IndexOrderField"), m("Mode");
        std::string iv = index, mv = mode;
        store.EscribirValor(i, iv);
        store.EscribirValor(m, mv);
    }

    static void open(frame::RecordClass& cls, const std::string& keyword) {
        frame::ConnPtr cn;
        std::string key = keyword;
        Variant id(int32_t{7});
        DateValue fecha = kFecha;
        cls.IniciaRs(cn, key, id, fecha);
    }

    static std::string sortOf(frame::RecordClass& cls) { return cls.primaryRecordset()->Sort(); }

    static int rights(const std::vector<std::string>& args) {
        std::ostringstream out, err;
        return services::rightsCommand(args, out, err);
    }

private:
    frame::RecordTools saved_;
};

TEST_F(CommentTools, TheSavedOrderIsRestoredAsEachClassDeclares) {
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    ClsAlbaranesComentarios albaranes;
    ClsFacturasComentarios facturas;
    struct Case {
        frame::RecordClass* cls;
        const char* index;
        std::string onIniciaRs;  // the Sort after IniciaRs with no keyword
        std::string onRequery;   // ... and after Requery with none
    };
    const std::vector<Case> cases = {
        {&ordenes, "2", "", "Comentarios DESC"},
        {&pedidos, "2", "Comentarios DESC", "Comentarios DESC"},
        {&albaranes, "2", "Comentarios DESC", "Comentarios DESC"},
        {&facturas, "3", "fecha DESC", "fecha DESC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.cls->variants().className));
        // Saved under "todos"; Requery reads "Todos", the same view.
        saveOrder(c.cls->sClassName(), "todos", c.index, " DESC");
        open(*c.cls, "");
        EXPECT_EQ(sortOf(*c.cls), c.onIniciaRs);
        std::string key;
        c.cls->Requery(key);
        EXPECT_EQ(key, "Todos");
        EXPECT_EQ(sortOf(*c.cls), c.onRequery);
        c.cls->MoveFirst();
        EXPECT_EQ(c.cls->primaryRecordset()->value("Id"), Variant(int32_t{2}));
    }
}

TEST_F(CommentTools, EachClassAsksItsOwnPermissionGroup) {
    ClsOrdenesComentarios ordenes;
    ClsPedidosCliComent pedidos;
    ClsAlbaranesComentarios albaranes;
    ClsFacturasComentarios facturas;
    struct Case {
        frame::RecordClass* cls;
        const char* group;
    };
    const std::vector<Case> cases = {
        {&ordenes, "HOrdenes"},
        {&pedidos, "Pedidos_Clientes"},
        {&albaranes, "Albaranes_Clientes"},
        {&facturas, "Facturas"},
    };
    for (const auto& refused : cases) {
        SCOPED_TRACE(refused.group);
        ASSERT_EQ(rights({"deny", "ana", refused.group, "Borrar"}), 0);
        for (const auto& c : cases) {
            std::string action = "Borrar";
            EXPECT_EQ(c.cls->SeguridadPermiso(action), c.cls != refused.cls) << c.group;
        }
        ASSERT_EQ(rights({"allow", "ana", refused.group, "Borrar"}), 0);
    }
}

TEST_F(CommentTools, TheCommentIsALongTextOfTheConstantLimit) {
    ClsOrdenesComentarios ordenes;
    ClsFacturasComentarios facturas;
    open(ordenes, "todos");
    open(facturas, "todos");
    auto box = [](const char* field) {
        auto c = std::make_shared<StandInControl>(ControlKind::TextBox);
        c->define("DataField", Variant(field));
        c->define("Text", Variant(std::string(300, 'x')));
        return Variant(c);
    };
    struct Case {
        frame::RecordClass* cls;
        const char* field;
        int32_t size;
    };
    const std::vector<Case> cases = {
        {&ordenes, "Comentarios", 536870910}, {&ordenes, "Descripción", 255}, {&ordenes, "Código", 5},
        {&ordenes, "Fecha", 10},              {&facturas, "Comentarios", 536870910}, {&facturas, "fecha", 10},
    };
    for (const auto& c : cases) {
        Variant b = box(c.field);
        EXPECT_EQ(c.cls->ValidaDefinedSize(b), c.size) << c.field;
    }
    Variant comment = box("Comentarios");
    EXPECT_TRUE(ordenes.ValidaKey(comment, 'z'));
    Variant description = box("Descripción");
    EXPECT_FALSE(ordenes.ValidaKey(description, 'z'));
}

}  // namespace
}  // namespace hist::satellites
