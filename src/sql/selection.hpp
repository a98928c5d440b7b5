#pragma once
// The shape of a SELECT statement as the data layer needs it: its top-level
// items, the catalog tables it reads and the names it reads them by, and whether
// its rows map one to one onto base-table rows (no grouping, aggregate, DISTINCT
// or compound), which is what write-back needs.
#include <string>
#include <string_view>
#include <vector>

#include "sql/catalog.hpp"
#include "sql/tokenizer.hpp"

namespace hist::sql {

struct SelectionSource {
    const Table* table = nullptr;
    std::string qualifier;  // the alias, or the table name as the text writes it
    int occurrences = 0;    // how many times the FROM clause names the table
};

struct SelectionShape {
    bool isSelect = false;
    bool rowPerBaseRow = false;  // not grouped, aggregated, distinct or compound
    bool hasStar = false;        // an item is * or T.*
    size_t fromPos = std::string_view::npos;  // byte offset of the top-level FROM
    std::vector<std::string_view> items;     // each top-level select item, as written
    std::vector<SelectionSource> sources;

    const SelectionSource* source(std::string_view table) const;
    // The catalog column a computed item takes its type from: the column its
    // expression reads (MAX(ID) reads ID), or null. `aggregate` tells whether the
    // item is COUNT(...), which is a Long whatever it counts.
    const Column* itemSourceColumn(size_t item, bool* isCount = nullptr) const;
};

// The shape's items are views into `sql`: keep the text alive as long as the shape.
SelectionShape analyzeSelection(std::string_view sql, const Catalog& cat = catalog());

}  // namespace hist::sql
