#include <cmath>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/services/config.hpp"
#include "frame/services/helpers.hpp"
#include "frame/services/rights.hpp"
#include "frame/services_testutil.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"

namespace hist::services {
namespace {

using test::raised;
using testing::Scratch;

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
        {12.5, 6, "12.5"}, {100.0, 6, "100"}, {0.0, 6, "0"}, {-0.0, 6, "0"}, {1.0 / 3.0, 6, "0.333333"},
        {2.0 / 3.0, 6, "0.666667"}, {-2.0 / 3.0, 6, "-0.666667"},
        {0.125, 2, "0.13"}, {-0.125, 2, "-0.13"}, {2.675, 2, "2.68"},  // half away from zero, on the number as written
        {0.5, 0, "1"}, {2.5, 0, "3"}, {9.9999999, 6, "10"}, {999.9996, 3, "1000"}, {-999.9996, 3, "-1000"},
        {1234567.891, 6, "1234567.891"},     // no grouping
        {1e20, 6, "100000000000000000000"},  // no exponent
        {1e-7, 6, "0"}, {-1e-7, 6, "0"}, {166.386, 6, "166.386"}, {Variant(int16_t{5}), 6, "5"},
        {Variant(int32_t{-70000}), 6, "-70000"}, {Variant(true), 6, "-1"},
        {Variant("12,5"), 6, "12.5"},  // a text is read by the regional settings
    };
    for (const Case& c : cases) EXPECT_EQ(numeroSql(c.value, c.decimals), c.text) << c.text;
    EXPECT_EQ(raised([] { numeroSql(Variant::null(), 6); }).number(), err::InvalidUseOfNull);
    EXPECT_EQ(raised([] { numeroSql(Variant("doce"), 6); }).number(), err::TypeMismatch);
    EXPECT_EQ(raised([] { numeroSql(1.5, -1); }).number(), err::InvalidCall);
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
    Scratch dir;
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
    EXPECT_THAT(raised([] { ClsRutasUsuario::shared()->GetRutaFichero("x.htm"); }).description(),
                ::testing::HasSubstr((dir / "file/sub").string()));
    Configuration::reset();
}

TEST(ServicesTextoLinea, NormalizaTextoTrimsAndFoldsBlanks) {
    struct Case {
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {"Corona metal-cerámica", "Corona metal-cerámica"}, {"  Corona  ", "Corona"},
        {"Corona   de\tzirconio", "Corona de zirconio"}, {"Línea 1\r\nLínea 2", "Línea 1 Línea 2"},
        {"Puente\xC2\xA0\xC2\xA0" "3 piezas", "Puente 3 piezas"},  // no-break spaces
        {"Con\x01trol\x7F", "Control"}, {"MAYÚSCULAS y minúsculas", "MAYÚSCULAS y minúsculas"},
        {"O'Brien  ", "O'Brien"},  // apostrophes are the caller's business
        {" \t\n ", ""}, {"", ""},
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
    for (int32_t bad : {0, 3}) EXPECT_EQ(raised([&] { list.record(bad); }).number(), err::SubscriptOutOfRange);
    Variant huge(1e300);  // a single cannot hold it
    EXPECT_EQ(raised([&] { list.AddRegistro(key, codigo, zero, huge, lote, alm, precio, extra); }).number(),
              err::Overflow);
    EXPECT_EQ(list.Count(), 2);
}

TEST(ServicesHelpers, SharedInstancesArePerThread) {
    auto all = [] {
        return std::vector<std::shared_ptr<void>>{ClsFormatoNumero::shared(), ClsRutasUsuario::shared(),
                                                  ClsTextoLinea::shared(), ClsSeguridadUsuario::shared()};
    };
    const auto mine = all();
    EXPECT_EQ(mine, all());
    std::vector<std::shared_ptr<void>> other;
    std::thread([&] { other = all(); }).join();
    for (size_t i = 0; i < mine.size(); ++i) {
        ASSERT_NE(other[i], nullptr);
        EXPECT_NE(mine[i], other[i]) << i;
    }
}

}  // namespace
}  // namespace hist::services
