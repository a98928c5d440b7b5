#include <cmath>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/services/config.hpp"
#include "frame/services/helpers.hpp"
#include "frame/services_testutil.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"

namespace hist::services {
namespace {

using test::ScratchDir;

std::string numeroSql(Variant v, int32_t decimals) {
    ClsFormatoNumero f;
    return f.NumeroSql(v, decimals);
}

TEST(ServicesFormatoNumero, NumeroSqlWritesAPointAndAtMostTheDecimals) {
    RegionalScope es(Regional::esES());  // the statement form never follows the locale
    struct Case {
        Variant value;
        int32_t decimals;
        const char* text;
    };
    const Case cases[] = {
        {12.5, 6, "12.5"},
        {100.0, 6, "100"},
        {0.0, 6, "0"},
        {-0.0, 6, "0"},
        {1.0 / 3.0, 6, "0.333333"},
        {2.0 / 3.0, 6, "0.666667"},
        {-2.0 / 3.0, 6, "-0.666667"},
        {0.125, 2, "0.13"},       // half away from zero, on the number as written
        {-0.125, 2, "-0.13"},
        {2.675, 2, "2.68"},
        {0.5, 0, "1"},
        {2.5, 0, "3"},
        {9.9999999, 6, "10"},
        {999.9996, 3, "1000"},
        {-999.9996, 3, "-1000"},
        {1234567.891, 6, "1234567.891"},  // no grouping
        {1e20, 6, "100000000000000000000"},  // no exponent
        {1e-7, 6, "0"},
        {-1e-7, 6, "0"},
        {166.386, 6, "166.386"},
        {Variant(int16_t{5}), 6, "5"},
        {Variant(int32_t{-70000}), 6, "-70000"},
        {Variant("12,5"), 6, "12.5"},  // a text is read by the regional settings
        {Variant(true), 6, "-1"},
    };
    for (const Case& c : cases) EXPECT_EQ(numeroSql(c.value, c.decimals), c.text) << c.text;
}

TEST(ServicesFormatoNumero, NumeroSqlFailures) {
    struct Case {
        Variant value;
        int32_t decimals;
        long number;
    };
    const Case cases[] = {
        {Variant::null(), 6, err::InvalidUseOfNull},
        {Variant("doce"), 6, err::TypeMismatch},
        {1.5, -1, err::InvalidCall},
    };
    for (const Case& c : cases) {
        try {
            numeroSql(c.value, c.decimals);
            ADD_FAILURE() << "no failure, expected " << c.number;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), c.number);
        }
    }
}

TEST(ServicesFormatoNumero, MasksComeFromTheConfiguration) {
    Configuration::reset();
    ClsFormatoNumero f;
    EXPECT_EQ(f.GetFormatoMoneda(), "#,##0.00");
    EXPECT_EQ(f.GetFormatoDivisa(), "#,##0.00");
    Config c = Config::defaults();
    c.formatoMoneda = "#,##0";
    c.formatoDivisa = "0.000";
    Configuration::install(c);
    EXPECT_EQ(f.GetFormatoMoneda(), "#,##0");  // asked afresh at each call
    EXPECT_EQ(f.GetFormatoDivisa(), "0.000");
    Configuration::reset();
}

TEST(ServicesRutasUsuario, FilesGoInTheWorkingFolderWhichIsCreated) {
    ScratchDir dir;
    Config c = Config::defaults();
    c.workDir = (dir / "a/b").string();
    Configuration::install(c);
    EXPECT_FALSE(std::filesystem::exists(dir / "a/b"));
    std::string path = ClsRutasUsuario::shared()->GetRutaFichero("HOrdenes_Fases.htm");
    EXPECT_EQ(path, (dir / "a/b/HOrdenes_Fases.htm").string());
    EXPECT_TRUE(std::filesystem::is_directory(dir / "a/b"));
    // A name never leaves the folder by being absolute.
    EXPECT_EQ(ClsRutasUsuario::shared()->GetRutaFichero("/x.htm"), (dir / "a/b/x.htm").string());

    test::writeFile(dir / "file", "");
    c.workDir = (dir / "file/sub").string();  // a file where the folder should be
    Configuration::install(c);
    try {
        ClsRutasUsuario::shared()->GetRutaFichero("x.htm");
        FAIL() << "a folder that cannot be made must fail";
    } catch (const Error& e) {
        EXPECT_THAT(e.description(), ::testing::HasSubstr((dir / "file/sub").string()));
    }
    Configuration::reset();
}

TEST(ServicesTextoLinea, NormalizaTextoTrimsAndFoldsBlanks) {
    struct Case {
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {"Corona metal-cerámica", "Corona metal-cerámica"},
        {"  Corona  ", "Corona"},
        {"Corona   de\tzirconio", "Corona de zirconio"},
        {"Línea 1\r\nLínea 2", "Línea 1 Línea 2"},
        {"Puente\xC2\xA0\xC2\xA0" "3 piezas", "Puente 3 piezas"},  // no-break spaces
        {"Con\x01trol\x7F", "Control"},
        {"O'Brien  ", "O'Brien"},  // apostrophes are the caller's business
        {"MAYÚSCULAS y minúsculas", "MAYÚSCULAS y minúsculas"},
        {" \t\n ", ""},
        {"", ""},
    };
    ClsTextoLinea t;
    for (const Case& c : cases) EXPECT_EQ(t.NormalizaTexto(c.in), c.out) << c.in;
}

TEST(ServicesRegistroLinea, AddRegistroKeepsEveryValueInOrder) {
    ClsRegistroLinea list;
    EXPECT_EQ(list.Count(), 0);
    std::string key = "C-001";
    Variant codigo("C-001"), zero(0.0), qty(2.5), lote("L7"), alm(int16_t{3}), precio(12.345), extra("");
    list.AddRegistro(key, codigo, zero, qty, lote, alm, precio, extra);
    std::string key2 = "C-002";
    Variant codigo2("C-002"), qty2(1.0 / 3.0), lote2("0"), alm2("A1"), precio2(int32_t{7});
    list.AddRegistro(key2, codigo2, zero, qty2, lote2, alm2, precio2, extra);
    ASSERT_EQ(list.Count(), 2);
    const LineRecord& a = list.record(1);
    EXPECT_EQ(a.clave, "C-001");
    EXPECT_EQ(a.codigo, "C-001");
    EXPECT_EQ(a.cantidadPrevia, 0.0f);
    EXPECT_EQ(a.cantidad, 2.5f);
    EXPECT_EQ(a.lote, "L7");
    EXPECT_EQ(a.idAlmacen, Variant(int16_t{3}));  // as received
    EXPECT_EQ(a.precio, 12.345);
    const LineRecord& b = list.record(2);
    EXPECT_EQ(b.cantidad, static_cast<float>(1.0 / 3.0));  // a single's precision
    EXPECT_NE(static_cast<double>(b.cantidad), 1.0 / 3.0);
    EXPECT_EQ(b.idAlmacen, Variant("A1"));
    EXPECT_EQ(b.precio, 7.0);
    for (int32_t bad : {0, 3}) {
        try {
            list.record(bad);
            ADD_FAILURE() << bad;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::SubscriptOutOfRange);
        }
    }
    Variant huge(1e300);
    try {
        list.AddRegistro(key, codigo, zero, huge, lote, alm, precio, extra);
        ADD_FAILURE() << "a single cannot hold 1e300";
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), err::Overflow);
    }
    EXPECT_EQ(list.Count(), 2);
}

TEST(ServicesHelpers, SharedInstancesArePerThread) {
    auto f = ClsFormatoNumero::shared();
    auto r = ClsRutasUsuario::shared();
    auto t = ClsTextoLinea::shared();
    EXPECT_EQ(f, ClsFormatoNumero::shared());
    EXPECT_EQ(r, ClsRutasUsuario::shared());
    EXPECT_EQ(t, ClsTextoLinea::shared());
    std::shared_ptr<ClsFormatoNumero> f2;
    std::shared_ptr<ClsRutasUsuario> r2;
    std::shared_ptr<ClsTextoLinea> t2;
    std::thread th([&] {
        f2 = ClsFormatoNumero::shared();
        r2 = ClsRutasUsuario::shared();
        t2 = ClsTextoLinea::shared();
    });
    th.join();
    EXPECT_NE(f, f2);
    EXPECT_NE(r, r2);
    EXPECT_NE(t, t2);
}

}  // namespace
}  // namespace hist::services
