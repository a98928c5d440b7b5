// SeguridadPermiso: the key of the class's permission group and a refusal made
// with the rights command reported by the member.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "frame/services/rights.hpp"
#include "tools/tool_members.hpp"
#include "tools_fixture.hpp"

namespace hist::tools {
namespace {

using frame::DefinedSizeForm;
using frame::FilterForm;
using frame::KeyForm;

// A class of the given table in a permission group.
constexpr frame::ClassVariants inGroup(std::string_view cls, std::string_view table, std::string_view select,
                                       std::string_view group) {
    return test::toolVariants(cls, table, select, FilterForm::Base, DefinedSizeForm::Table, KeyForm::Table, group);
}
constexpr frame::ClassVariants kVentas =
    inGroup("ClsPruebaVentas", "HFacturas_Comentarios", "SELECT Id FROM HFacturas_Comentarios", "Facturas");
constexpr frame::ClassVariants kRecibos = inGroup("ClsPruebaRecibos", "Recibos", "SELECT Id FROM Recibos", "Facturas");
constexpr frame::ClassVariants kOrdenes =
    inGroup("ClsPruebaOrdenes", "HOrdenes_Comentarios", "SELECT Id FROM HOrdenes_Comentarios", "HOrdenes");
constexpr frame::ClassVariants kSinGrupo = inGroup("ClsPruebaSinGrupo", "Recibos", "SELECT Id FROM Recibos", "");

class Permissions : public test::ToolsFixture {
protected:
    static int rights(std::vector<std::string> args) {
        std::ostringstream out, err;
        return services::rightsCommand(args, out, err);
    }
    static bool allowed(frame::RecordClass& cls, std::string action) { return cls.SeguridadPermiso(action); }
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
    ASSERT_EQ(rights({"deny", "ana", "Facturas", "Borrar"}), 0);

    // Classes of one group answer alike; another group or action is untouched.
    EXPECT_FALSE(allowed(ventas, "Borrar"));
    EXPECT_FALSE(allowed(recibos, "Borrar"));
    EXPECT_TRUE(allowed(ventas, "Modificar"));
    EXPECT_TRUE(allowed(ordenes, "Borrar"));

    ASSERT_EQ(rights({"allow", "ana", "Facturas", "Borrar"}), 0);
    EXPECT_TRUE(allowed(ventas, "Borrar"));

    EXPECT_EQ(test::errorOf([&] { allowed(sinGrupo, "Borrar"); }), 5);
}

}  // namespace
}  // namespace hist::tools
