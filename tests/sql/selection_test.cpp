#include "sql/selection.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
    // The shape views the text it was given, so the texts outlive it.
    const std::string items = "SELECT MAX(ID) AS Nuevo_Codigo, COUNT(*) AS N, MAX(h.Precio) + 1 AS B, 'x' AS Lit FROM ";
    const std::string facturas = items + "HFacturas h", lineas = items + "HFacturas_Lineas h";
    SelectionShape s = analyzeSelection(facturas);
    ASSERT_EQ(s.items.size(), 4u);
    EXPECT_EQ(s.items[0], "MAX(ID) AS Nuevo_Codigo");
    bool isCount = false;
    EXPECT_EQ(s.itemSourceColumn(0, &isCount), nullptr) << "HFacturas has no ID column";
    s = analyzeSelection(lineas);
    // Per item: the source column's name ("-" for none) and whether it counts rows.
    std::vector<std::string> got;
    for (size_t i = 0; i < 4; ++i) {
        const Column* c = s.itemSourceColumn(i, &isCount);
        got.push_back((c ? c->name : "-") + (isCount ? " count" : ""));
    }
    EXPECT_EQ(got, (std::vector<std::string>{"ID", "- count", "Precio", "-"}));
}

}  // namespace
}  // namespace hist::sql
