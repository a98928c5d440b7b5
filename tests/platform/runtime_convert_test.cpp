// Conversions, the number reader and writer, Val, comparison and the Print # form,
// under both regional settings.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <thread>

#include "platform/clock.hpp"
#include "platform/runtime.hpp"
#include "runtime_test_util.hpp"

namespace hist::rt {
namespace {

using hist::testing::errorOf;
using hist::testing::Loc;
using hist::testing::regionalOf;

const double k22Nov2026 = 46348;
const double k1430 = (14 * 3600 + 30 * 60) / 86400.0;
const double k0905 = (9 * 3600 + 5 * 60) / 86400.0;

// ---- CStr ----

struct CStrCase {
    Variant value;
    const char* es;
    const char* en;
};

TEST(RuntimeCStr, TextFormsPerRegionalSettings) {
    const CStrCase cases[] = {
        {-1234.5, "-1234,5", "-1234.5"}, {0.1 + 0.2, "0,3", "0.3"}, {0.0009, "0,0009", "0.0009"},
        {Variant::date(k22Nov2026), "22/11/2026", "11/22/2026"},
        {Variant::date(k22Nov2026 + k1430), "22/11/2026 14:30:00", "11/22/2026 2:30:00 PM"},
        {Variant::date(k0905), "9:05:00", "9:05:00 AM"}, {Variant::date(0), "0:00:00", "12:00:00 AM"},
        {Variant::date(-49192.24), "24/04/1765 5:45:36", "4/24/1765 5:45:36 AM"},
        {true, "True", "True"}, {Variant(), "", ""}, {"texto", "texto", "texto"},
    };
    for (Loc loc : {Loc::es, Loc::en}) {
        RegionalScope scope(regionalOf(loc));
        for (const auto& c : cases) {
            EXPECT_EQ(CStr(c.value), loc == Loc::es ? c.es : c.en) << regionalOf(loc).name;
        }
    }
}

TEST(RuntimeCStr, NumberTextSwitchesToExponentAtTheEdges) {
    // Not settled on the original platform: we write like "%.15G" (1E15 and up, below 1E-4).
    RegionalScope scope(Regional::esES());
    EXPECT_EQ(numberText(1e15), "1E+15");
    EXPECT_EQ(numberText(999999999999999.0), "999999999999999");
    EXPECT_EQ(numberText(0.00001), "1E-05");
    EXPECT_EQ(numberText(0.0001), "0,0001");
    EXPECT_EQ(numberText(-0.0), "0");
    EXPECT_EQ(numberText(1.5e-7, Regional::enUS()), "1.5E-07");
}

// ---- CInt / CLng ----

struct IntCase {
    double in;
    long expected;  // or the error number when err is set
    bool err;
};

TEST(RuntimeCIntCLng, RoundHalfToEvenAndOverflowAfterRounding) {
    const IntCase cint[] = {
        {0.5, 0, false},        {1.5, 2, false},      {2.5, 2, false},       {0.6, 1, false},
        {0.4, 0, false},        {-0.5, 0, false},     {-1.5, -2, false},     {32767.49, 32767, false},
        {32767.5, 6, true},     {32768, 6, true},     {-32768.5, -32768, false},
        {-32768.51, 6, true},   {32767, 32767, false}, {-32768, -32768, false},
    };
    const IntCase clng[] = {
        {25427.45, 25427, false}, {25427.55, 25428, false}, {2147483647.0, 2147483647, false},
        {2147483646.5, 2147483646, false}, {-2147483648.0, -2147483647 - 1, false}, {2147483647.5, 6, true},
        {2147483648.0, 6, true}, {-2147483649.0, 6, true}, {std::nan(""), 6, true},
    };
    auto check = [](const auto& convert, const IntCase& c) {
        if (c.err) {
            EXPECT_EQ(errorOf([&] { convert(c.in); }), c.expected) << c.in;
        } else {
            EXPECT_EQ(convert(c.in), c.expected) << c.in;
        }
    };
    for (const auto& c : cint) check([](double d) { return long{CInt(d)}; }, c);
    for (const auto& c : clng) check([](double d) { return long{CLng(d)}; }, c);
    EXPECT_EQ(CLng(Variant::date(46348.75)), 46349);
}

TEST(RuntimeCInt, OtherKindsAndTexts) {
    EXPECT_EQ(CInt(Variant()), 0);
    EXPECT_EQ(CInt(true), -1);
    EXPECT_EQ(errorOf([] { CInt(int32_t(40000)); }), err::Overflow);
    EXPECT_EQ(errorOf([] { CInt(""); }), err::TypeMismatch);
    EXPECT_EQ(errorOf([] { CInt(Variant::missing()); }), err::TypeMismatch);
    {
        RegionalScope scope(Regional::esES());
        EXPECT_EQ(CInt("12,5"), 12);  // 12.5 to even
        EXPECT_EQ(CInt("13,5"), 14);
        EXPECT_EQ(CLng("1.234"), 1234);
    }
    RegionalScope scope(Regional::enUS());
    EXPECT_EQ(CInt("12,5"), 125);  // the comma is the thousands mark
    EXPECT_EQ(CInt("12.5"), 12);
    EXPECT_EQ(errorOf([] { CInt("32767.5"); }), err::Overflow);
}

// ---- the errors the conversions raise ----

TEST(RuntimeErrors, NumberSourceAndDescription) {
    const Variant null = Variant::null();
    const struct {
        std::function<void()> call;
        long number;
        const char* description;
    } cases[] = {
        {[&] { CLng(null); }, 94, "Invalid use of Null"}, {[&] { CDbl(null); }, 94, "Invalid use of Null"},
        {[&] { CStr(null); }, 94, "Invalid use of Null"}, {[&] { CDate(null); }, 94, "Invalid use of Null"},
        {[] { CInt("abc"); }, 13, "Type mismatch"},
        {[] { CInt(40000.0); }, 6, "Overflow"},
    };
    for (const auto& c : cases) {
        try {
            c.call();
            ADD_FAILURE() << "no error raised, expected " << c.number;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), c.number);
            EXPECT_EQ(e.source(), "historicos.runtime");
            EXPECT_EQ(e.description(), c.description);
        }
    }
    EXPECT_FALSE(IsNumeric(null));
    EXPECT_FALSE(IsNumeric(Variant::date(46348)));
    EXPECT_TRUE(IsNumeric(Variant()));
    // The Variant-preserving conversions, used on entry to typed parameters (values and
    // failures are checked in the dispatch tests), let Null and Missing through.
    EXPECT_TRUE(toLong(Variant::missing()).isMissing());
    EXPECT_TRUE(toInteger(null).isNull());
    EXPECT_TRUE(toDate(null).isNull());
    EXPECT_TRUE(toString(null).isNull());
}

// ---- CBool ----

TEST(RuntimeCBool, NumbersWordsAndRefusals) {
    struct Case {
        Variant in;
        int expected;  // 1 true, 0 false, else the error number
    };
    const Case cases[] = {
        {0.0, 0},       {-0.0, 0},       {0.4, 1},         {-0.5, 1},       {int16_t(0), 0},
        {"True", 1},    {"true", 1},     {"FALSE", 0},     {"false", 0},    {"#TRUE#", 1},
        {"#FALSE#", 0}, {"#False#", 13}, {"0", 0},         {"-1", 1},       {"+1", 1},
        {"Verdadero", 13}, {"Yes", 13},  {"On", 13},       {Variant(), 0},  {Variant::null(), 94},
    };
    for (const auto& c : cases) {
        if (c.expected > 1) {
            EXPECT_EQ(errorOf([&] { CBool(c.in); }), c.expected) << CStr(c.in);
        } else {
            EXPECT_EQ(CBool(c.in), c.expected == 1) << CStr(c.in);
        }
    }
    RegionalScope es(Regional::esES());
    EXPECT_TRUE(CBool("0.1"));  // the thousands mark: reads as 1
    RegionalScope en(Regional::enUS());
    EXPECT_TRUE(CBool("0.1"));
}

// ---- IsNumeric / CDbl ----

struct NumCase {
    const char* text;
    std::optional<double> es;  // nothing: not numeric there
    std::optional<double> en;
};

TEST(RuntimeParseNumber, LaxReaderPerRegionalSettings) {
    const auto none = std::nullopt;
    const NumCase cases[] = {
        {"1.234,5", 1234.5, none}, {"1,234.5", none, 1234.5}, {"1234,5", 1234.5, 12345}, {"1234.5", 12345, 1234.5},
        {"1,2,3", none, 123},  // a second decimal comma stops the reading
        {"", none, none}, {" ", none, none}, {" 53 ", 53, 53}, {"459.95", 45995, 459.95}, {"45 Help", none, none},
        {"&H1F", 31, 31}, {"&O17", 15, 15}, {"&HFFFF", -1, -1}, {"1e3", 1000, 1000}, {"(5)", -5, -5},
        {"5-", -5, -5}, {"-5-", none, none}, {"(5", none, none}, {"$11", none, 11}, {"1e", none, none},
        {"1.234,50 €", 1234.5, none}, {"-1.234,50 €", -1234.5, none}, {"($1,234.50)", none, -1234.5},
        {"1,000", 1, 1000},
        {",5", 0.5, none},  // the thousands mark counts only after a digit
        {".5", none, 0.5},
    };
    for (const auto& c : cases) {
        for (Loc loc : {Loc::es, Loc::en}) {
            const auto& expected = loc == Loc::es ? c.es : c.en;
            const Regional& r = regionalOf(loc);
            auto got = parseNumber(c.text, r);
            ASSERT_EQ(got.has_value(), expected.has_value()) << '"' << c.text << "\" " << r.name;
            if (expected) { EXPECT_DOUBLE_EQ(*got, *expected) << '"' << c.text << "\" " << r.name; }

            RegionalScope scope(r);
            EXPECT_EQ(IsNumeric(c.text), expected.has_value()) << c.text << ' ' << r.name;
            if (expected) { EXPECT_DOUBLE_EQ(CDbl(c.text), *expected); }
            else { EXPECT_EQ(errorOf([&] { CDbl(c.text); }), err::TypeMismatch) << c.text; }
        }
    }
}

// ---- Val ----

TEST(RuntimeVal, ReadsWithThePeriodInAnySettings) {
    struct Case {
        const char* text;
        double expected;
    };
    const Case cases[] = {
        {"    1615 198th Street N.E.", 1615198}, {"2457", 2457}, {" 2 45 7", 2457}, {"24 and 57", 24},
        {"&HFFFF", -1}, {"&HFFFF&", 65535}, {"&O17", 15}, {"1234,5", 1234}, {"12abc", 12}, {"", 0}, {"abc", 0},
        {"12.5.6", 12.5}, {"1e3", 1000}, {"-3.5", -3.5}, {"\t1\n2", 12},
    };
    for (Loc loc : {Loc::es, Loc::en}) {
        RegionalScope scope(regionalOf(loc));
        for (const auto& c : cases) EXPECT_DOUBLE_EQ(Val(c.text), c.expected) << '"' << c.text << '"';
        // A whole number rebuilt through CStr and Val is exact in either settings.
        EXPECT_EQ(Val(CStr(123456789.0)), 123456789.0);
    }
}

// ---- compare ----

TEST(RuntimeCompare, KindsAgainstEachOther) {
    RegionalScope scope(Regional::esES());
    struct Case {
        Variant a, b;
        std::optional<int> expected;
    };
    const Case cases[] = {
        {1, 2.5, -1}, {int32_t(3), int16_t(3), 0},
        {"10", 9.0, 1}, {"1,5", 1.5, 0},  // numeric text against a number: numerically
        {"abc", "abd", -1}, {"a", "B", 1},  // texts compare as bytes
        {"abc", 5.0, 1},                    // a text that is no number sorts after the number
        {Variant::date(46348), 46348.0, 0}, {Variant::date(46348), "22/11/2026", 0},
        {Variant(), 0.0, 0}, {Variant(), "", 0}, {Variant(), "x", -1}, {true, -1.0, 0},
        {Variant::null(), 1.0, std::nullopt}, {"x", Variant::null(), std::nullopt},
        {Variant::null(), Variant::null(), std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(compare(c.a, c.b), c.expected) << CStr(c.a.isNull() ? Variant("Null") : c.a);
        if (c.expected) { EXPECT_EQ(compare(c.b, c.a), -*c.expected); }
    }
}

// ---- Print # ----

TEST(RuntimePrintText, ListingFormsPerRegionalSettings) {
    const CStrCase cases[] = {
        {1234.5, " 1234,5 ", " 1234.5 "}, {int16_t(-7), "-7 ", "-7 "}, {0.0, " 0 ", " 0 "},
        {Variant::date(k22Nov2026 + k1430), "22/11/2026 14:30:00", "11/22/2026 2:30:00 PM"},
        {true, "True", "True"}, {Variant::null(), "Null", "Null"}, {Variant(), "", ""}, {"<b>&\"", "<b>&\"", "<b>&\""},
    };
    for (Loc loc : {Loc::es, Loc::en}) {
        RegionalScope scope(regionalOf(loc));
        for (const auto& c : cases) EXPECT_EQ(printText(c.value), loc == Loc::es ? c.es : c.en);
    }
}

// ---- Regional settings in force ----

TEST(RuntimeRegional, CurrentIsPerThreadAndDefaultsToSpanishAndByName) {
    EXPECT_EQ(Regional::current().name, "es-ES");
    {
        RegionalScope scope(Regional::enUS());
        EXPECT_EQ(Regional::current().name, "en-US");
        std::string other;
        std::thread t([&] { other = Regional::current().name + "|" + CStr(1.5); });
        t.join();
        EXPECT_EQ(other, "es-ES|1,5");
        EXPECT_EQ(CStr(1.5), "1.5");
    }
    EXPECT_EQ(Regional::current().name, "es-ES");
    EXPECT_EQ(Regional::byName("EN-us").decimal, '.');
    EXPECT_EQ(errorOf([] { Regional::byName("fr-FR"); }), err::InvalidCall);
}

// ---- Clock and user ----

TEST(RuntimeClock, FixedClockAndTheSystemUser) {
    Clock::set(k22Nov2026 + k1430);
    EXPECT_EQ(Clock::now(), k22Nov2026 + k1430);
    EXPECT_EQ(Clock::today(), k22Nov2026);
    EXPECT_NEAR(Clock::timeOfDay(), k1430, 1e-9);
    Clock::set(std::nullopt);
    EXPECT_GT(Clock::now(), dateSerial(2020, 1, 1));

    CurrentUser::set(std::nullopt);
    EXPECT_FALSE(CurrentUser::name().empty()) << "the system's user when none is fixed";
}

}  // namespace
}  // namespace hist::rt
