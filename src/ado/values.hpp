#pragma once
// Conversions between the engine's cells, the values a Field shows, and the
// values an edit stores, by the column's declared type.
#include <optional>
#include <string>
#include <string_view>

#include "ado/row_store.hpp"
#include "backends/engine.hpp"
#include "platform/variant.hpp"

namespace hist::ado {

// How a field's values compare and convert.
enum class ValueClass { Text, Memo, Number, Boolean, Date, Other };
ValueClass classOf(backend::FieldType t);

// The serial of a stored date text: "YYYY-MM-DD", "YYYY-MM-DD HH:MM[:SS]" (also with
// a 'T'), or a time "HH:MM[:SS]" on 1899-12-30. Nothing when it is not one.
std::optional<double> storedDateSerial(std::string_view s);

// The value a Field shows for a cell of a column of type t.
Variant cellToVariant(const CellView& c, backend::FieldType t);
// A look at a value held by an edit, in the same terms as a stored cell. Dates
// become their serial (Real); the view's text refers into `v`.
CellView variantToView(const Variant& v);
// The stored form of a value after write-back: dates as ISO text, yes/no as -1/0.
// `text` receives the text the view points to.
CellView variantToStored(const Variant& v, std::string& text);
// The value of an original cell as bound in a write-back check, with the type to bind it as.
Variant cellToBound(const CellView& c, backend::FieldType& type);

// A value assigned to a field, coerced to the field's type under the regional
// settings; Null and Empty pass as they are. Throws the runtime's error when the
// value does not convert.
Variant coerceToField(const Variant& v, backend::FieldType t);

// A number or date read as a double for comparison and sorting; nothing for Null or
// a text that is neither.
std::optional<double> numericOf(const CellView& c, ValueClass cls);
// The text form of a cell for text comparisons (numbers as the runtime writes them).
std::string_view textOf(const CellView& c, std::string& buf);

}  // namespace hist::ado
