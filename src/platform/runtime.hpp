#pragma once
// The runtime's conversion, comparison and format functions, under the regional
// settings in force (Regional::current()) unless one is passed.
#include <optional>
#include <string>
#include <string_view>

#include "platform/regional.hpp"
#include "platform/variant.hpp"

namespace hist::rt {

// ---- Date serials: days since 1899-12-30, time of day as the fraction ----
struct DateParts {
    int year = 1899, month = 12, day = 30;
    int hour = 0, minute = 0, second = 0;
};
// Serial of a calendar date (no range check beyond the calendar's).
double dateSerial(int year, int month, int day);
// Serial fraction of a time of day.
double timeSerial(int hour, int minute, int second);
// Calendar parts of a serial; the fraction of a negative serial is a time
// magnitude, as the runtime reads it. Seconds are rounded to the nearest.
DateParts splitDate(double serial);
// "YYYY-MM-DD HH:MM:SS" (the stored form of the archive; time-only values on 1899-12-30).
// A serial outside years 100 to 9999 raises Overflow (6).
std::string isoText(double serial);
// Reads "YYYY-MM-DD", "YYYY-MM-DD HH:MM[:SS]", "YYYY-MM-DDTHH:MM[:SS]" or "HH:MM[:SS]".
std::optional<double> parseIso(std::string_view text);
// Weekday 1 (Sunday) .. 7.
int weekday(double serial);

// ---- Numbers read and written as the runtime does ----
// The lax reader of IsNumeric/CDbl: blanks, sign before or after, parentheses,
// the thousands mark anywhere in the integer digits, one decimal mark, the currency
// symbol, an exponent, &H/&O. The whole text must be consumed.
std::optional<double> parseNumber(std::string_view text, const Regional& r = Regional::current());
// The plain text of a double as CStr writes it: up to 15 significant digits, the
// regional decimal mark, no grouping, exponent form for very large or small values.
std::string numberText(double d, const Regional& r = Regional::current());

// ---- Conversions (errors: 13 type mismatch, 6 overflow, 94 Null) ----
int16_t CInt(const Variant& v);
int32_t CLng(const Variant& v);
double CDbl(const Variant& v);
bool CBool(const Variant& v);
double CDate(const Variant& v);   // the serial
std::string CStr(const Variant& v);
double Val(std::string_view text);
bool IsNumeric(const Variant& v);
bool IsDate(const Variant& v);
// CDate of a text, or nothing when it is not a date under the regional settings.
std::optional<double> parseDate(std::string_view text, const Regional& r = Regional::current());

// Variant-preserving conversions used by dispatch and fields: the result has the kind
// named; Null and Missing pass through unchanged (the caller decides whether they are
// allowed); the other errors are those of the C* function.
Variant toInteger(const Variant& v);  // Integer kind
Variant toLong(const Variant& v);
Variant toDouble(const Variant& v);
Variant toBoolean(const Variant& v);
Variant toDate(const Variant& v);
Variant toString(const Variant& v);

// ---- Comparison ----
// The runtime's comparison: numbers numerically, texts as texts (binary), a number
// against a numeric text numerically, dates as their serials. Null on either side
// gives nothing (the result is Null). Empty counts as 0 or "".
std::optional<int> compare(const Variant& a, const Variant& b);

// ---- Format ----
// Format(value, mask): named masks ("General Number", "Currency", "Fixed", "Standard",
// "Percent", "Short Date", "Long Date", "Medium Date", "Short Time", "Long Time",
// "Medium Time", "General Date", "Yes/No", "True/False", "On/Off") and custom numeric
// and date masks, and the text masks (@ & < > !). An empty mask formats as CStr does.
// Null and Empty give "" under every mask but a numeric mask's fourth (null) section
// and a text mask's second section. A text that reads as neither a number nor a date
// comes back as it is.
// Rounds the plain decimal text of a number ("-12.3456") to at most `decimals`
// decimals, half away from zero on its digits, and drops trailing zeros ("-12.35").
// Format rounds by the same rule.
std::string roundDecimalText(std::string plain, int decimals);
std::string Format(const Variant& v, std::string_view mask = {});

// The text a value takes when printed into a listing file (Print #): a number with
// a blank for its sign and one after it, a date in short form, True/False, "Null";
// Empty gives nothing.
std::string printText(const Variant& v);

}  // namespace hist::rt
