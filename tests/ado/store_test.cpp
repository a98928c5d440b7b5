// The packed row store and the reading of stored dates.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "ado/row_store.hpp"
#include "ado/values.hpp"

namespace hist {
namespace {

using ado::CellTag;
using backend::Cell;

Cell text(std::string_view s) {
    Cell c;
    c.kind = Cell::Kind::Text;
    c.text = s;
    return c;
}
Cell integer(int64_t i) {
    Cell c;
    c.kind = Cell::Kind::Int;
    c.i = i;
    return c;
}

TEST(RowStore, KeepsEveryKindAndReplacesCells) {
    ado::RowStore store;
    store.reset(3);
    const std::string big(17u << 20, 'x');  // beyond a packed reference's length
    Cell real;
    real.kind = Cell::Kind::Real;
    real.d = -2.5;
    const Cell rows[][3] = {{integer(-7), real, text("uno")}, {Cell{}, text(""), text(big)},
                            {integer(INT64_MAX), text("Código"), Cell{}}};
    for (const auto& r : rows) store.append(r);
    ASSERT_EQ(store.rows(), 3u);
    EXPECT_EQ(store.get(0, 0).i, -7);
    EXPECT_EQ(store.get(0, 1).d, -2.5);
    EXPECT_EQ(store.get(1, 0).tag, CellTag::Null);
    EXPECT_EQ(store.get(1, 1).tag, CellTag::Text);  // an empty text is not Null
    EXPECT_EQ(store.get(1, 2).s.size(), big.size());
    EXPECT_EQ(store.get(2, 0).i, INT64_MAX);

    // A replacement may come from the store itself (the arena grows under it).
    store.set(0, 2, store.get(2, 1));
    EXPECT_EQ(store.get(0, 2).s, "Código");
    ado::CellView v;
    v.tag = CellTag::Int;
    v.i = 42;
    store.set(1, 1, v);
    EXPECT_EQ(store.get(1, 1).tag, CellTag::Int);
    EXPECT_EQ(store.get(1, 1).i, 42);
    EXPECT_EQ(store.get(2, 1).s, "Código");  // other cells untouched

    const std::size_t r = store.appendNullRow();
    EXPECT_EQ(r, 3u);
    EXPECT_EQ(store.get(3, 2).tag, CellTag::Null);
}

TEST(RowStore, NumericRowsCostNineBytesACell) {
    ado::RowStore store;
    store.reset(4);
    const Cell row[4] = {integer(1), integer(2), integer(3), integer(4)};
    for (int i = 0; i < 10000; ++i) store.append(row);
    store.shrink();
    EXPECT_LE(store.bytes(), 10000u * 4u * 9u + 1024u);
}

TEST(StoredDates, ReadTheArchiveForms) {
    struct Case {
        const char* text;
        std::optional<double> serial;
    } cases[] = {
        {"2026-11-22", 46348.0}, {"2003-02-01T06:00", 37653.25}, {"09:05:00", (9 * 3600.0 + 5 * 60.0) / 86400.0},
        {"1899-12-29 12:00:00", -1.5},  // before the epoch the time counts away from zero
        {"2026-13-01", std::nullopt}, {"2026-11-22 25:00:00", std::nullopt}, {"22/11/2026", std::nullopt},
        {"2026-11-22 00:00:00x", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(ado::storedDateSerial(c.text), c.serial) << c.text;
}

}  // namespace
}  // namespace hist
