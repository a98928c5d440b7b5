#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <tuple>

#include "platform/error.hpp"
#include "sql/catalog.hpp"

namespace hist::sql {
namespace {

TEST(CatalogData, EmbeddedTextMatchesTheDataFile) {
    std::ifstream in(std::string(HISTORICOS_SOURCE_DIR) + "/data/catalog.tsv", std::ios::binary);
    ASSERT_TRUE(in) << "data/catalog.tsv";
    std::stringstream ss;
    ss << in.rdbuf();
    EXPECT_EQ(ss.str(), catalogTsv()) << "run data/embed_catalog.py after editing data/catalog.tsv";
}

TEST(Catalog, TablesColumnsAndMetadata) {
    const Catalog& cat = catalog();
    size_t columns = 0;
    for (const auto& t : cat.tables()) columns += t.columns.size();
    EXPECT_EQ(std::make_pair(cat.tables().size(), columns), std::make_pair(size_t{33}, size_t{615}));  // no row lost

    struct Case {  // the column asked for, its spelling in the catalog, types, size and default
        const char *table, *column, *declared;
        JetType jet;
        int ado, precision;
        long size;
        const char* def;
    };
    const Case cases[] = {
        // Long, Integer, Double and Text columns are described through the engine's metadata (test_backends).
        {"hordenes_fases", "id", "ID", JetType::Long, 3, 10, 4, ""},
        {"HOrdenes_Cabecera", "FECHA", "fecha", JetType::Date, 7, 255, 8, ""},
        {"HOrdenes_Odontograma", "p11", "P11", JetType::YesNo, 11, 255, 2, "0"},
        {"HOrdenes_Comentarios", "Comentarios", "Comentarios", JetType::Memo, 203, 255, 536870910, ""},
        {"Numeradores", "SerieB", "SerieB", JetType::Double, 5, 15, 8, "10000"},
    };
    for (const auto& c : cases) {
        const Table* t = cat.table(c.table);
        const Column* col = t ? t->column(c.column) : nullptr;
        ASSERT_NE(col, nullptr) << c.table << "." << c.column;
        EXPECT_EQ(std::tie(col->name, col->jet, col->adoType, col->precision, col->definedSize, col->defaultValue),
                  std::tie(c.declared, c.jet, c.ado, c.precision, c.size, c.def))
            << c.column;
    }
    EXPECT_EQ(cat.table("NoExiste"), nullptr);
    EXPECT_EQ(cat.table("HOrdenes")->column("NoExiste"), nullptr);
    ASSERT_NE(cat.table("HHOrdenes_Cabecera"), nullptr);
    ASSERT_NE(cat.table("HOrdenes_Etiquetas")->column("Numero"), nullptr);
}

TEST(Catalog, DdlDeclaresTypesCollationKeysAndIndexes) {
    std::string ddl = catalog().ddl();
    for (const char* piece : {"CREATE TABLE HOrdenes (", "Numero INTEGER NOT NULL", "UNIQUE (Numero)",
                              "Fecha DATETIME", "P11 YESNO DEFAULT 0", "Serie VARCHAR(1) COLLATE JETTEXT",
                              "Comentarios TEXT COLLATE JETTEXT", "SerieC REAL DEFAULT 25000",
                              "CREATE INDEX IX_HOrdenes_Lineas ON HOrdenes_Lineas (Numero, Fecha, ID);"})
        EXPECT_NE(ddl.find(piece), std::string::npos) << piece;
    EXPECT_EQ(ddl.find("MEMO"), std::string::npos) << "MEMO has numeric affinity";
}

TEST(Catalog, MalformedRowsAreRefused) {
    // Too few fields, an unknown type, a column declared twice (names ignore case).
    for (const char* bad : {"h\nT\tC\tLong\t3\n", "h\nT\tC\tMoney\t3\t10\t4\tyes\t\t\t\n",
                            "h\nT\tC\tLong\t3\t10\t4\tyes\t\t\t\nT\tc\tLong\t3\t10\t4\tyes\t\t\t\n"})
        EXPECT_THROW(Catalog::parse(bad), Error) << bad;
    auto ok = Catalog::parse("h\nT\tC\tText(7)\t202\t255\t7\tno\t\tPK1\tnote\n");
    ASSERT_EQ(ok.tables().size(), 1u);
    EXPECT_EQ(ok.tables()[0].columns[0].definedSize, 7);
    EXPECT_FALSE(ok.tables()[0].columns[0].nullable);
}

}  // namespace
}  // namespace hist::sql
