// The tools on the comment classes: the saved order restored where each class's
// variant says, each class's permission group and the long-text limit they report.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "frame/services/rights.hpp"
#include "frame/services/settings.hpp"
#include "satellites/comentarios.hpp"
#include "satellites/comentarios_fixture.hpp"
#include "tools/tool_members.hpp"

namespace hist::satellites {
namespace {

const DateValue kFecha{rt::dateSerial(2026, 11, 22)};

// The tools' own fixture; every comment table holds three rows of document 7, and
// descending by comment or by date row 2 comes first.
class CommentTools : public test::ToolsFixture, public test::CommentClasses {
protected:
    void SetUp() override {
        ToolsFixture::SetUp();
        for (const std::string t :
             {"HOrdenes_Comentarios", "HPedidos_Clientes_Comentarios", "HAlbaranes_Comentarios", "HFacturas_Comentarios"}) {
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (1, 7, 'b', #2026-11-22#)");
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (2, 7, 'c', #2026-11-23#)");
            exec("INSERT INTO " + t + " (Id, Codigo, Comentarios, Fecha) VALUES (3, 7, 'a', #2026-11-21#)");
        }
    }

    // Saves an order under the "todos" view of a table, as the settings store keeps it.
    static void saveOrder(const std::string& table, std::string index, std::string mode) {
        services::ClsClaveRegistro store;
        store.AbrirClave("SOFTWARE\\Laboratorio\\Historicos\\1.0\\Configuracion\\registros\\" + table + "\\todos\\");
        Variant i("IndexOrderField"), m("Mode");
        store.EscribirValor(i, index);
        store.EscribirValor(m, mode);
    }

    static std::string sortOf(frame::RecordClass& cls) { return cls.primaryRecordset()->Sort(); }
};

TEST_F(CommentTools, TheSavedOrderIsRestoredAsEachClassDeclares) {
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
        saveOrder(c.cls->sClassName(), c.index, " DESC");
        open(*c.cls, "", Variant(int32_t{7}), kFecha);
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
    const auto rights = [](services::RightsOptions::Verb verb, const char* group) {
        std::ostringstream out, err;
        return services::rightsCommand({.verb = verb, .user = "ana", .group = group, .action = "Borrar"}, out, err);
    };
    for (const auto& refused : cases) {
        SCOPED_TRACE(refused.group);
        ASSERT_EQ(rights(services::RightsOptions::Verb::Deny, refused.group), 0);
        for (const auto& c : cases) {
            std::string action = "Borrar";
            EXPECT_EQ(tools::seguridadPermiso(*c.cls, action), c.cls != refused.cls) << c.group;
        }
        ASSERT_EQ(rights(services::RightsOptions::Verb::Allow, refused.group), 0);
    }
}

// Only the long text and the whole numbers tell this form from the others (the
// validation tests show the rest).
TEST_F(CommentTools, TheCommentIsALongTextOfTheConstantLimit) {
    open(ordenes);
    auto box = [](const char* field) {
        return Variant(test::control(ControlKind::TextBox, field, {{"Text", Variant(std::string(300, 'x'))}}));
    };
    Variant comment = box("Comentarios"), code = box("Código"), description = box("Descripción");
    EXPECT_EQ(tools::validaDefinedSize(ordenes, comment), 536870910);
    EXPECT_EQ(tools::validaDefinedSize(ordenes, code), 5);
    EXPECT_TRUE(tools::validaKey(ordenes, comment, 'z'));
    EXPECT_FALSE(tools::validaKey(ordenes, description, 'z'));
}

}  // namespace
}  // namespace hist::satellites
