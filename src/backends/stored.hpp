#pragma once
// What every engine's session does alike: the metadata of a result column (from the
// catalog, or by the kind of a computed value), and the stored form of a bound value
// for a column type (dates as ISO text, yes/no as -1/0, numbers by the type).
#include <cstdint>
#include <string>

#include "backends/engine.hpp"
#include "sql/catalog.hpp"
#include "sql/selection.hpp"

namespace hist::backend::detail {

// The kind of a value without a catalog column behind it.
enum class ValueKind { Integer, Real, Text };

void typeFromCatalog(ColumnMeta& m, const sql::Column& c);
void typeComputed(ColumnMeta& m, ValueKind k);
// The hidden row identity of `table`, named `column` in the engine.
void typeRowId(ColumnMeta& m, const std::string& table, const std::string& column);

// Types the column at `item` of a selection that has no catalog column as its
// origin: COUNT(...) is a Long, an expression over a column takes the column's type.
// Returns false when the item tells nothing (the engine's kind of the value decides).
bool typeFromItem(ColumnMeta& m, const sql::SelectionShape& shape, size_t item, size_t shownColumns);

// A bound value in the stored form of its column type.
struct StoredValue {
    enum class Kind : uint8_t { Null, Int, Real, Text } kind = Kind::Null;
    int64_t i = 0;
    double d = 0.0;
    std::string text;
};
// Throws the provider's data type mismatch when the value does not convert.
StoredValue storedValue(const Variant& v, FieldType type);

}  // namespace hist::backend::detail
