#include "sql/selection.hpp"

#include <gtest/gtest.h>

namespace hist::sql {
namespace {

struct Shape {
    const char* sql;
    bool rowPerBaseRow;
    size_t items;
    const char* table;      // a source expected in FROM, or null
    const char* qualifier;  // the name it is read by
    int occurrences;
};

TEST(Selection, ShapeOfTheStatement) {
    const Shape cases[] = {
        {"SELECT Numero AS Factura, Serie FROM HFacturas WHERE Numero = 1", true, 2, "HFacturas", "HFacturas", 1},
        {"select f.Numero, f.Serie from HFacturas AS f", true, 2, "HFacturas", "f", 1},
        {"SELECT Numero FROM hfacturas h INNER JOIN HFacturas_Lineas l ON h.Numero = l.Numero", true, 1,
         "HFacturas_Lineas", "l", 1},
        {"SELECT MAX(ID) AS Nuevo_Codigo FROM Recibos", false, 1, "Recibos", "Recibos", 1},
        {"SELECT DISTINCT Serie FROM HFacturas", false, 1, "HFacturas", "HFacturas", 1},
        {"SELECT Serie, COUNT(*) FROM HFacturas GROUP BY Serie", false, 2, "HFacturas", "HFacturas", 1},
        {"SELECT Numero FROM HFacturas WHERE Numero = (SELECT MAX(Numero) FROM HFacturas)", true, 1, "HFacturas",
         "HFacturas", 1},
        {"SELECT a.Numero FROM HFacturas a, HFacturas b", true, 1, "HFacturas", "a", 2},
        {"SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Reclamaciones 'Where Numero = 5'", false, 1,
         "HOrdenes_Reclamaciones", "", 1},
        {"SELECT x FROM NoExiste", false, 1, nullptr, nullptr, 0},
        {"UPDATE HFacturas SET Serie = 'A'", false, 0, nullptr, nullptr, 0},
    };
    for (const auto& c : cases) {
        SelectionShape s = analyzeSelection(c.sql);
        EXPECT_EQ(s.rowPerBaseRow, c.rowPerBaseRow) << c.sql;
        EXPECT_EQ(s.items.size(), c.items) << c.sql;
        if (!c.table) {
            EXPECT_TRUE(s.sources.empty()) << c.sql;
            continue;
        }
        const SelectionSource* src = s.source(c.table);
        ASSERT_NE(src, nullptr) << c.sql;
        EXPECT_EQ(src->qualifier, c.qualifier) << c.sql;
        EXPECT_EQ(src->occurrences, c.occurrences) << c.sql;
        EXPECT_TRUE(sameName(std::string(c.sql).substr(s.fromPos, 4), "FROM")) << c.sql;
    }
}

TEST(Selection, ComputedItemsTakeTheirSourceColumn) {
    SelectionShape s = analyzeSelection(
        "SELECT MAX(ID) AS Nuevo_Codigo, COUNT(*) AS N, MAX(h.Base) + 1 AS B, 'x' AS Lit FROM HFacturas h");
    ASSERT_EQ(s.items.size(), 4u);
    EXPECT_EQ(s.items[0], "MAX(ID) AS Nuevo_Codigo");
    bool isCount = false;
    const Column* c = s.itemSourceColumn(0, &isCount);
    EXPECT_EQ(c, nullptr) << "HFacturas has no ID column";
    s = analyzeSelection("SELECT MAX(ID) AS Nuevo_Codigo, COUNT(*) AS N, MAX(h.Precio) + 1 AS B, 'x' AS Lit FROM "
                         "HFacturas_Lineas h");
    c = s.itemSourceColumn(0, &isCount);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->name, "ID");
    EXPECT_FALSE(isCount);
    s.itemSourceColumn(1, &isCount);
    EXPECT_TRUE(isCount);
    c = s.itemSourceColumn(2, &isCount);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->name, "Precio");
    EXPECT_EQ(s.itemSourceColumn(3, &isCount), nullptr);
}

}  // namespace
}  // namespace hist::sql
