#pragma once
// Number and date literals in the engine's own form, and the currency rounding
// the desktop engine's Format(x,'Currency') applies.
#include <optional>
#include <string>
#include <string_view>

namespace hist::sql {

// A double as a plain SQL numeric literal: point decimal, the shortest text that
// reads back as the same double ("166.386", "12", "-0.5", "1e+300").
std::string numberLiteral(double d);

// The value rounded to `digits` decimals from its 15-significant-digit decimal
// form, halves away from zero (2.675 gives 2.68), as a currency format shows it.
double roundCurrency(double value, int digits);

// A #...# date literal's content read as the statement dialect reads it: ISO
// ("2003-02-01", with an optional time), else month first ("2/1/2003"), falling
// back to day first when the first number cannot be a month; a time alone
// ("10:30:00", "10:30 PM") is a time on 1899-12-30. The date serial, or nothing.
std::optional<double> readHashDate(std::string_view text);

}  // namespace hist::sql
