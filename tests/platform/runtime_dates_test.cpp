// Date serials both ways, ISO text, weekdays and the CDate/IsDate reader under both
// regional settings.
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "platform/clock.hpp"
#include "platform/runtime.hpp"
#include "runtime_test_util.hpp"

namespace hist::rt {
namespace {

using hist::testing::errorOf;
using hist::testing::Loc;
using hist::testing::regionalOf;

double hms(int h, int m, int s) { return (h * 3600 + m * 60 + s) / 86400.0; }

// Year, month, day, hour, minute and second of a serial.
std::array<int, 6> partsOf(double serial) {
    const DateParts p = splitDate(serial);
    return {p.year, p.month, p.day, p.hour, p.minute, p.second};
}

TEST(RuntimeDates, SerialsAndCalendarPartsBothWays) {
    struct Case {
        int y, m, d;
        double serial;
    };
    const Case cases[] = {
        {1899, 12, 30, 0}, {1899, 12, 29, -1}, {2026, 11, 22, 46348}, {1900, 3, 1, 61},
        {2000, 2, 29, 36585}, {100, 1, 1, -657434}, {9999, 12, 31, 2958465},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(dateSerial(c.y, c.m, c.d), c.serial) << c.y << '-' << c.m << '-' << c.d;
        EXPECT_EQ(partsOf(c.serial), (std::array{c.y, c.m, c.d, 0, 0, 0}));
    }
    // Months and days past their end roll over, as DateSerial does.
    EXPECT_EQ(dateSerial(2026, 13, 1), dateSerial(2027, 1, 1));
    EXPECT_EQ(dateSerial(2026, 0, 1), dateSerial(2025, 12, 1));
    EXPECT_EQ(dateSerial(2026, 2, 29), dateSerial(2026, 3, 1));
    EXPECT_EQ(timeSerial(14, 30, 0), 14.5 / 24);
    EXPECT_EQ(partsOf(46348 + hms(14, 30, 5)), (std::array{2026, 11, 22, 14, 30, 5}));
    // The fraction of a negative serial is a time magnitude, not subtracted.
    EXPECT_EQ(partsOf(-49192.24), (std::array{1765, 4, 24, 5, 45, 36}));
    // Seconds round to the nearest and carry into the day.
    EXPECT_EQ(partsOf(46348 + hms(23, 59, 59) + 0.6 / 86400), (std::array{2026, 11, 23, 0, 0, 0}));
    // Weekdays count from Sunday; a fraction is a time of the same day.
    const std::pair<double, int> weekdays[] = {{46348, 1}, {46348 + 0.99, 1}, {46352, 5}, {0, 7}, {-1, 6}, {-1.5, 6}};
    for (const auto& [serial, day] : weekdays) EXPECT_EQ(weekday(serial), day) << serial;
}

TEST(RuntimeDates, IsoTextBothWays) {
    EXPECT_EQ(isoText(46348 + hms(14, 30, 5)), "2026-11-22 14:30:05");
    EXPECT_EQ(isoText(46348), "2026-11-22 00:00:00");
    EXPECT_EQ(isoText(hms(9, 5, 0)), "1899-12-30 09:05:00");
    EXPECT_EQ(isoText(-49192.24), "1765-04-24 05:45:36");

    const auto none = std::nullopt;
    const std::pair<const char*, std::optional<double>> cases[] = {
        {"2026-11-22", 46348}, {"2026-11-22 14:30:05", 46348 + hms(14, 30, 5)},
        {"2026-11-22T14:30", 46348 + hms(14, 30, 0)}, {"1970-1-13", 25581}, {"14:30:00", hms(14, 30, 0)},
        {"1765-04-24 05:45:36", -49192.24}, {"2026-02-30", none}, {"2026-13-01", none},
        {"2026-11-22 24:00:00", none}, {"2026-11-22 10:61", none}, {"22/11/2026", none}, {"2026-11-22x", none},
    };
    for (const auto& [text, serial] : cases) {
        auto got = parseIso(text);
        ASSERT_EQ(got.has_value(), serial.has_value()) << text;
        if (serial) { EXPECT_NEAR(*got, *serial, 1e-9) << text; }
    }
    // Every stored form reads back to the same second.
    for (double s : {46348.604224, 0.25, -49192.24, 2958465.5}) {
        auto back = parseIso(isoText(s));
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(isoText(*back), isoText(s));
    }
    // The stored form covers the runtime's years 100 to 9999; past them it overflows as CDate does.
    EXPECT_EQ(isoText(-657434), "0100-01-01 00:00:00");
    EXPECT_EQ(isoText(2958465 + hms(23, 59, 59)), "9999-12-31 23:59:59");
    for (double s : {1e300, -1e300, 2958466.0, -657435.0, 2958465 + hms(23, 59, 59) + 0.9 / 86400,
                     std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(errorOf([&] { isoText(s); }), err::Overflow) << s;
}

struct DateCase {
    const char* text;
    std::optional<double> es;
    std::optional<double> en;
};

TEST(RuntimeParseDate, ReaderPerRegionalSettings) {
    const double feb13 = dateSerial(2003, 2, 13), t1430 = hms(14, 30, 0), nov22 = 46348 + t1430;
    const auto none = std::nullopt;
    const DateCase cases[] = {
        {"01/02/2003", 37653, 37623}, {"01-02-2003", 37653, 37623}, {"2003-02-01", 37653, 37653},
        {"13/02/2003", feb13, feb13},  // day and month swapped when 13 cannot be a month
        {"02/13/2003", feb13, feb13}, {"22/11/2026", 46348, 46348}, {"11/22/2026", 46348, 46348},
        {"1/2/29", dateSerial(2029, 2, 1), dateSerial(2029, 1, 2)},
        {"1/2/30", dateSerial(1930, 2, 1), dateSerial(1930, 1, 2)},
        {"1/2/00", dateSerial(2000, 2, 1), dateSerial(2000, 1, 2)},
        {"14:30", t1430, t1430}, {"9:05:00", hms(9, 5, 0), hms(9, 5, 0)}, {"2:30:00 PM", t1430, t1430},
        {"12:15 am", hms(0, 15, 0), hms(0, 15, 0)}, {"2 January, 1970", 25570, 25570}, {"2-Jan-1970", 25570, 25570},
        {"February 12, 1969", dateSerial(1969, 2, 12), dateSerial(1969, 2, 12)},
        {"29/02/2024", dateSerial(2024, 2, 29), dateSerial(2024, 2, 29)},
        {"22/11/2026 14:30:00", nov22, nov22}, {"11/22/2026 2:30:00 PM", nov22, nov22},
        {"02.01.1970", none, none}, {"0.0", none, none}, {"0", none, none}, {"1", none, none},
        {"True", none, none}, {"31/02/2026", none, none}, {"13/32/2014", none, none}, {"29/02/2023", none, none},
        {"domingo, 22 de noviembre de 2026", none, none}, {"Sunday, November 22, 2026", none, none},
        {"22/11/2026 25:00", none, none}, {"14:30 PM", none, none}, {"", none, none}, {"abc", none, none},
        {"1/1/99999", none, none},
    };
    for (const auto& c : cases) {
        for (Loc loc : {Loc::es, Loc::en}) {
            const auto& expected = loc == Loc::es ? c.es : c.en;
            const Regional& r = regionalOf(loc);
            auto got = parseDate(c.text, r);
            ASSERT_EQ(got.has_value(), expected.has_value()) << '"' << c.text << "\" " << r.name;
            if (expected) { EXPECT_NEAR(*got, *expected, 1e-9) << '"' << c.text << "\" " << r.name; }

            RegionalScope scope(r);
            EXPECT_EQ(IsDate(c.text), expected.has_value()) << c.text << ' ' << r.name;
            if (expected) { EXPECT_NEAR(CDate(c.text), *expected, 1e-9); }
            else { EXPECT_EQ(errorOf([&] { CDate(c.text); }), err::TypeMismatch) << c.text; }
        }
    }
    // en-US reads "2.5" as 2:05. Under es-ES the period is the thousands mark and the
    // text is left to the number reader (our choice; the original was not settled there).
    EXPECT_NEAR(*parseDate("2.5", Regional::enUS()), hms(2, 5, 0), 1e-9);
    EXPECT_FALSE(parseDate("2.5", Regional::esES()).has_value());
}

TEST(RuntimeParseDate, DayAndMonthWithoutYearTakeThisYear) {
    Clock::set(dateSerial(2026, 6, 15));
    EXPECT_EQ(parseDate("3/4", Regional::esES()), dateSerial(2026, 4, 3));
    EXPECT_EQ(parseDate("3/4", Regional::enUS()), dateSerial(2026, 3, 4));
    EXPECT_EQ(parseDate("5 May", Regional::esES()), dateSerial(2026, 5, 5));
    EXPECT_EQ(parseDate("5 mayo", Regional::esES()), dateSerial(2026, 5, 5));
    Clock::set(std::nullopt);
}

TEST(RuntimeCDate, NumbersAndOtherKinds) {
    EXPECT_EQ(CDate(37623.25), 37623.25);
    EXPECT_EQ(CDate(int32_t(46348)), 46348);
    EXPECT_EQ(errorOf([] { CDate(3e6); }), err::Overflow);  // past 31 Dec 9999
    EXPECT_FALSE(IsDate(37623.0));
    EXPECT_TRUE(IsDate(Variant::date(1)));
}

}  // namespace
}  // namespace hist::rt
