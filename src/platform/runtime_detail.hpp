#pragma once
// Helpers shared by the runtime's source files (dates, conversions, Format); not part
// of the library's interface.
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/regional.hpp"
#include "platform/runtime.hpp"

namespace hist::rt::detail {

// Days since 1899-12-30 of a proleptic Gregorian date (month and day may run over).
int64_t daysFromCivil(int64_t year, int month, int day);
void civilFromDays(int64_t days, int& year, int& month, int& day);

// A serial split the way the runtime reads it: the signed day number and the seconds
// of the time of day (rounded to the nearest second, carried into the day).
struct DaySeconds {
    int64_t day = 0;
    int seconds = 0;
};
DaySeconds splitSerial(double serial);
// The serial of a day number and a time fraction (the fraction is subtracted for days
// before 1899-12-30, being a magnitude).
double joinSerial(int64_t day, double timeFraction);

// A date written through a picture of the system's syntax: d dd ddd dddd, M MM MMM MMMM,
// y yy yyyy, H HH h hh, m mm, s ss, t tt, 'literal text'.
std::string renderPicture(std::string_view picture, double serial, const Regional& r);
// The date text of CStr: short date, long time, or both.
std::string dateText(double serial, const Regional& r);

// Whether a serial lies within 1 Jan 100 .. 31 Dec 9999.
bool serialInRange(double serial);

// ASCII lower-case copy (non-ASCII bytes as they are).
std::string lowerAscii(std::string_view s);

}  // namespace hist::rt::detail
