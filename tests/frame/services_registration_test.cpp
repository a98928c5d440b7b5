#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/services/config.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services/registration.hpp"
#include "frame/services/rights.hpp"
#include "frame/services_testutil.hpp"
#include "platform/clock.hpp"
#include "platform/collection.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"

namespace hist::services {
namespace {

using ::testing::ElementsAre;
using testing::Scratch;

class ServicesRegistration : public ::testing::Test {
protected:
    void SetUp() override {
        registerServiceClasses(reg);
        Config c = Config::defaults(test::envOf({{"HOME", dir.str()}}));
        c.archive = (dir / "archivo.db").string();
        c.settingsDir = dir.str();
        backend::createArchive(c.dataSource(4));
        Configuration::install(c);
    }
    void TearDown() override { Configuration::reset(); }

    std::vector<std::string> listed(const char* cls) { return reg.find(cls)->listedNames(); }

    RegionalScope es{Regional::esES()};
    Scratch dir;
    // Calls by name look classes up in the global registry.
    Registry& reg = Registry::global();
};

TEST_F(ServicesRegistration, InterfacesInOrder) {
    EXPECT_THAT(listed("ClsServicioDatos"),
                ElementsAre("GetConnectionStr", "GetConnectionStrToRpt", "bFechaServidor", "GetRptPath", "GetDocPath",
                            "GetConexion", "EjecutarSql", "AbrirRs", "FechaSql", "FechaSqlLocal"));
    EXPECT_THAT(listed("ClsClaveRegistro"), ElementsAre("LeerValor", "EscribirValor", "AbrirClave"));
    EXPECT_THAT(listed("ClsSeguridadUsuario"), ElementsAre("bRestringido", "GetRutaSeguridad"));
    EXPECT_THAT(listed("ClsFormatoNumero"), ElementsAre("GetFormatoMoneda", "GetFormatoDivisa", "NumeroSql"));
    EXPECT_THAT(listed("ClsNumeradores"), ElementsAre("LeerSeries", "GrabarSeries"));
    EXPECT_THAT(listed("ClsCalculoLinea"), ElementsAre("GetRecargoArticulo"));
    EXPECT_THAT(listed("ClsRegistroLinea"), ElementsAre("AddRegistro"));
    EXPECT_THAT(listed("ClsRutasUsuario"), ElementsAre("GetRutaFichero"));
    EXPECT_THAT(listed("ClsTextoLinea"), ElementsAre("NormalizaTexto"));
}

TEST_F(ServicesRegistration, SharedCollaboratorsAreThisThreadsInstance) {
    EXPECT_EQ(reg.create("ClsSeguridadUsuario"), ClsSeguridadUsuario::shared());
    EXPECT_EQ(reg.create("clsformatonumero"), reg.create("ClsFormatoNumero"));
    EXPECT_EQ(reg.create("ClsRutasUsuario"), reg.create("ClsRutasUsuario"));
    EXPECT_EQ(reg.create("ClsTextoLinea"), reg.create("ClsTextoLinea"));
    EXPECT_NE(reg.create("ClsServicioDatos"), reg.create("ClsServicioDatos"));  // one per call
    EXPECT_NE(reg.create("ClsRegistroLinea"), reg.create("ClsRegistroLinea"));
}

TEST_F(ServicesRegistration, ByReferenceArgumentsComeBack) {
    ObjectPtr fmt = reg.create("ClsFormatoNumero");
    Args a{Variant("1234,5678"), Variant(int16_t{2})};
    EXPECT_EQ(call(fmt, "NumeroSql", a), Variant("1234.57"));
    EXPECT_EQ(a[1], Variant(int32_t{2}));  // converted to its declared Long, and written back

    ObjectPtr svc = reg.create("ClsServicioDatos");
    Args rpt{Variant(int16_t{4}), Variant(""), Variant(""), Variant("x"), Variant("x"), Variant("x")};
    call(svc, "GetConnectionStrToRpt", rpt);
    EXPECT_EQ(rpt, (Args{Variant(int16_t{4}), Variant("sqlite"), Variant((dir / "archivo.db").string()), Variant(""),
                         Variant(""), Variant("")}));

    // EjecutarSql fills an unset connection; AbrirRs leaves it unset and fills rs.
    Args ex{Variant(int16_t{4}),
            Variant("INSERT INTO Articulos ( Codigo, Descripcion, Recargo ) VALUES ('K1', 'Corona', '2,5')"),
            Variant::nothing()};
    call(svc, "EjecutarSql", ex);
    ASSERT_NE(ex[2].objectAs<ado::Connection>(), nullptr);
    Args open{Variant(int16_t{1}), Variant("SELECT Recargo FROM Articulos WHERE Codigo = 'K1'"), Variant::nothing(),
              Variant::nothing(), Variant(int16_t{0})};
    call(svc, "AbrirRs", open);
    EXPECT_TRUE(open[3].isNothing());
    auto rs = open[2].objectAs<ado::Recordset>();
    ASSERT_NE(rs, nullptr);
    EXPECT_EQ(rs->value("Recargo"), Variant(2.5));

    ObjectPtr calc = reg.create("ClsCalculoLinea");
    Args sur{Variant("K1"), Variant::nothing()};
    EXPECT_EQ(call(calc, "GetRecargoArticulo", sur), Variant(2.5));

    ObjectPtr counters = reg.create("ClsNumeradores");
    Args save{Variant("HAlbaranes"), Variant(5.0), Variant(int32_t{10005}), Variant("25005"), Variant::nothing(),
              Variant("")};
    call(counters, "GrabarSeries", save);
    EXPECT_NE(save[4].objectAs<ado::Connection>(), nullptr);
    Args read{Variant("HAlbaranes"), Variant(0.0), Variant(0.0), Variant(0.0), Variant::nothing()};
    call(counters, "LeerSeries", read);
    EXPECT_EQ(Args(read.begin() + 1, read.begin() + 4), (Args{Variant(5.0), Variant(10005.0), Variant(25005.0)}));

    // A connection argument that is not a connection is a type mismatch.
    Args wrong{Variant(int16_t{4}), Variant("DELETE FROM Articulos WHERE Codigo = 'K1'"),
               Variant(ObjectPtr(std::make_shared<Collection>()))};
    try {
        call(svc, "EjecutarSql", wrong);
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), err::TypeMismatch);
    }
}

TEST_F(ServicesRegistration, SettingsAndRightsByName) {
    ObjectPtr reg1 = reg.create("ClsClaveRegistro");
    Args open{Variant("SOFTWARE\\A\\todos\\")};
    call(reg1, "AbrirClave", open);
    Args write{Variant("Mode"), Variant(" DESC")};
    call(reg1, "EscribirValor", write);
    ObjectPtr reg2 = reg.create("ClsClaveRegistro");
    Args open2{Variant("software\\a\\TODOS")};
    call(reg2, "AbrirClave", open2);
    Args readBack{Variant("mode"), Variant("")};
    EXPECT_EQ(call(reg2, "LeerValor", readBack), Variant(" DESC"));

    RightsStore(dir.str()).deny(CurrentUser::name(), "SOFTWARE\\A\\Seguridad\\Seguridad\\Facturas\\", "Borrar");
    ObjectPtr sec = reg.create("ClsSeguridadUsuario");
    Args path{Variant("SOFTWARE\\A\\Seguridad\\")};
    Variant base = call(sec, "GetRutaSeguridad", path);
    Args check{Variant(base.asString() + "Seguridad\\Facturas\\"), Variant("Borrar")};
    EXPECT_EQ(call(sec, "bRestringido", check), Variant(true));
    Args other{Variant(base.asString() + "Seguridad\\Facturas\\"), Variant("Ver")};
    EXPECT_EQ(call(sec, "bRestringido", other), Variant(false));
}

TEST_F(ServicesRegistration, LineRecordsAreReadableByName) {
    ObjectPtr list = reg.create("ClsRegistroLinea");
    Args add{Variant("C1"), Variant("C1"), Variant(0.0), Variant("2,5"), Variant("L1"), Variant(int16_t{3}),
             Variant(12.0), Variant("")};
    call(list, "AddRegistro", add);
    EXPECT_EQ(call(list, "Count"), Variant(int32_t{1}));
    Args one{Variant(int32_t{1})};
    auto item = call(list, "Item", one).objectAs<Collection>();
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->Item(Variant("Cantidad2")), Variant(2.5));
    EXPECT_EQ(item->Item(Variant("idalm")), Variant(int16_t{3}));
    EXPECT_EQ(item->Item(Variant("Lote")), Variant("L1"));
}

}  // namespace
}  // namespace hist::services
