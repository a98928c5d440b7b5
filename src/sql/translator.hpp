#pragma once
// The dialect translator: statements arrive written for the desktop engine and
// leave in the dialect of the engine the session runs on (the embedded engine
// unless told otherwise), rewritten only where the engine would read them
// differently:
//   - #date# literals become 'YYYY-MM-DD HH:MM:SS' (read as ISO, else month first);
//   - True / False become -1 / 0;
//   - a qualified target in UPDATE ... SET (T.col =) loses its qualifier;
//   - Format(x,'Currency') becomes jet_currency(x, <currency digits>);
//   - a quoted number operand of * / + - is read by the regional settings;
//   - a literal assigned to a column (INSERT values, INSERT ... SELECT items,
//     UPDATE SET) takes the column's stored form: locale numbers, yes/no as -1/0,
//     regional date and time texts as ISO dates;
//   - a date column compared with a bare day number compares with that date;
//   - INSERT INTO T SELECT H.* is spelled out column by column, by name.
// For the server engine, also:
//   - [name] loses its brackets (a name that is no plain word is double-quoted);
//   - Format(x,'Currency') becomes round((x)::numeric, <digits>)::double precision
//     (numeric rounding is half away from zero, as the currency format rounds);
//   - x Like 'pattern' becomes x::text ~* '<regular expression>', which reads both
//     wildcard families, # and [sets] and ignores case as Like does.
// What the engine must refuse is refused here first, with the provider's numbers:
// an unterminated string or an apostrophe inside a value (syntax error), a value
// count that differs from the column count, a value that does not convert (data
// type mismatch), a second statement or a statement of the other kind
// (permission denied), and the concatenation operator &.
#include <string>
#include <string_view>

#include "platform/regional.hpp"
#include "sql/catalog.hpp"
#include "sql/statement_kind.hpp"

namespace hist::sql {

std::string translate(std::string_view composed, StatementKind kind, const Regional& regional = Regional::current(),
                      const Catalog& cat = catalog());
std::string translate(std::string_view composed, StatementKind kind, Dialect dialect,
                      const Regional& regional = Regional::current(), const Catalog& cat = catalog());

}  // namespace hist::sql
