// Format under both regional settings: numeric and currency masks (rounding half away
// from zero, unlike CInt), named and custom date masks, sections and text masks.
#include <gtest/gtest.h>

#include "platform/runtime.hpp"
#include "runtime_test_util.hpp"

namespace hist::rt {
namespace {

using hist::testing::Loc;
using hist::testing::regionalOf;

double hms(int h, int m, int s) { return (h * 3600 + m * 60 + s) / 86400.0; }

struct FormatCase {
    Variant value;
    const char* mask;
    const char* es;
    const char* en;
};

void runCases(const std::vector<FormatCase>& cases) {
    for (Loc loc : {Loc::es, Loc::en}) {
        RegionalScope scope(regionalOf(loc));
        for (const auto& c : cases) {
            EXPECT_EQ(Format(c.value, c.mask), loc == Loc::es ? c.es : c.en)
                << "mask \"" << c.mask << "\" under " << regionalOf(loc).name;
        }
    }
}

TEST(RuntimeFormat, NumericMasksSectionsAndNamedNumberMasks) {
    const double serial18h = 46348.75, serial11h = 46348 + hms(11, 0, 0);
    runCases({
        {1234.5, "", "1234,5", "1234.5"}, {23.0, "", "23", "23"}, {0.0, "#", "", ""}, {1.0, "#", "1", "1"},
        // Half away from zero, where CInt goes to even.
        {0.5, "0", "1", "1"}, {2.5, "0", "3", "3"}, {0.4, "0", "0", "0"}, {-2.5, "0", "-3", "-3"}, {1.7, "#0", "2", "2"},
        {0.125, "0.00", "0,13", "0.13"},
        {1.005, "0.00", "1,01", "1.01"},  // the 15-digit decimal text is rounded, not the stored binary
        {-1.57, "0.00", "-1,57", "-1.57"}, {0.17, "#.00", ",17", ".17"}, {9.9999999, "#0.000000", "10,000000", "10.000000"},
        {5459.4, "##,##0.00", "5.459,40", "5,459.40"}, {334.9, "###0.00", "334,90", "334.90"},
        {5.0, "0.00%", "500,00%", "500.00%"}, {100000.0, "#,###,###,###", "100.000", "100,000"},
        {1234567.891, "#,##0.00", "1.234.567,89", "1,234,567.89"}, {0.0, "#,##0.00", "0,00", "0.00"},
        {1234.5, "#,##0.00 €", "1.234,50 €", "1,234.50 €"},
        {1234.5, "0.0#", "1234,5", "1234.5"}, {1234.0, "0.0#", "1234,0", "1234.0"},
        {1234567.0, "#,##0,", "1.235", "1,235"},  // a comma after the digits divides by 1000
        {123.0, "00-00", "01-23", "01-23"}, {12345.0, "00-00", "123-45", "123-45"},
        {7.0, "\"Nº \"0", "Nº 7", "Nº 7"}, {7.0, "\\#0", "#7", "#7"}, {-5.0, "$0.00", "-$5,00", "-$5.00"},
        {Variant::date(serial18h), "#", "46349", "46349"}, {Variant::date(serial11h), "#", "46348", "46348"},
        {true, "0", "-1", "-1"}, {"1234,5", "0.00", "1234,50", "12345.00"}, {"abc", "0.00", "abc", "abc"},
        {Variant::null(), "0.00", "", ""}, {1.0, "0.00E+00", "1,00E+00", "1.00E+00"},
        {12345.0, "0.00E+00", "1,23E+04", "1.23E+04"}, {0.00012, "0.0E-00", "1,2E-04", "1.2E-04"},
        // Sections: positive, negative, zero, Null.
        {-1.0, "#;-#", "-1", "-1"}, {-1.0, "0;(0)", "(1)", "(1)"}, {3.0, "0;(0)", "3", "3"},
        {0.0, "0;(0);\"cero\"", "cero", "cero"}, {0.0, "0;(0)", "0", "0"}, {-2.0, "0;;\"cero\"", "-2", "-2"},
        {-0.001, "0.00", "-0,00", "-0.00"},  // the sign of the value, not of its rounding
        {Variant::null(), "0;(0);\"cero\";\"nulo\"", "nulo", "nulo"}, {Variant::null(), "0;(0);\"cero\"", "", ""},
        {-1234.5, "#,##0.00;(#,##0.00)", "(1.234,50)", "(1,234.50)"},
        {1.0, "Standard", "1,00", "1.00"}, {0.0, "Standard", "0,00", "0.00"},
        {1234567.5, "Standard", "1.234.567,50", "1,234,567.50"}, {1.0, "Percent", "100,00%", "100.00%"},
        {1.0, "Scientific", "1,00E+00", "1.00E+00"}, {1234.5, "Fixed", "1234,50", "1234.50"},
        {0.125, "Fixed", "0,13", "0.13"}, {1234.5, "General Number", "1234,5", "1234.5"},
        {1.0, "Yes/No", "Yes", "Yes"}, {0.0, "On/Off", "Off", "Off"}, {1.0, "True/False", "True", "True"},
        {Variant::null(), "Standard", "", ""},
        {1.0, "standard", "1,00", "1.00"},  // names are not case-sensitive
    });
}

TEST(RuntimeFormat, CurrencyFollowsTheRegionalPattern) {
    runCases({
        {1234.5, "Currency", "1.234,50 €", "$1,234.50"}, {1234.565, "Currency", "1.234,57 €", "$1,234.57"},
        {-1234.5, "Currency", "-1.234,50 €", "($1,234.50)"}, {0.0, "Currency", "0,00 €", "$0.00"},
        {0.005, "Currency", "0,01 €", "$0.01"}, {"1234,5", "Currency", "1.234,50 €", "$12,345.00"},
    });
    // The currency digits of the settings are used (0 under the peseta-era settings).
    Regional pesetas = Regional::esES();
    pesetas.currencySymbol = "Pts";
    pesetas.currencyDigits = 0;
    RegionalScope scope(pesetas);
    EXPECT_EQ(Format(166386.5, "Currency"), "166.387 Pts");
}

TEST(RuntimeFormat, NamedAndCustomDateMasks) {
    const Variant when = Variant::date(46348 + hms(14, 30, 5));  // Sunday 22 Nov 2026 14:30:05
    const Variant early = Variant::date(46348 + hms(9, 5, 0));
    const char* longEs = "domingo, 22 de noviembre de 2026";
    const char* longEn = "Sunday, November 22, 2026";
    runCases({
        {when, "Short Date", "22/11/2026", "11/22/2026"}, {when, "Long Date", longEs, longEn},
        {when, "Short Time", "14:30", "14:30"}, {when, "Long Time", "14:30:05", "2:30:05 PM"},
        {when, "General Date", "22/11/2026 14:30:05", "11/22/2026 2:30:05 PM"},
        {when, "Medium Time", "14:30", "02:30 PM"}, {when, "Medium Date", "22-nov-26", "22-Nov-26"},
        {early, "Short Time", "09:05", "09:05"}, {early, "Long Time", "9:05:00", "9:05:00 AM"},
        // no leading zero on the day of the long date
        {Variant::date(46331), "Long Date", "jueves, 5 de noviembre de 2026", "Thursday, November 5, 2026"},
        {46348.0, "Short Date", "22/11/2026", "11/22/2026"}, {"2026-11-22", "Long Date", longEs, longEn},
        {Variant::null(), "Short Date", "", ""}, {Variant(), "Long Date", "", ""},
    });
    const Variant at = Variant::date(46348 + hms(14, 7, 5));  // custom masks
    runCases({
        {at, "dd/mm/yyyy", "22/11/2026", "22/11/2026"}, {at, "d/m/yy", "22/11/26", "22/11/26"},
        {at, "ddd d mmm yyyy", "dom 22 nov 2026", "Sun 22 Nov 2026"}, {at, "dddd", "domingo", "Sunday"},
        {at, "mmmm", "noviembre", "November"},
        {at, "hh:mm:ss", "14:07:05", "14:07:05"},  // m after h is the minute
        {at, "h:n", "14:7", "14:7"}, {at, "h:nn", "14:07", "14:07"},
        {at, "hh:nn AM/PM", "02:07 PM", "02:07 PM"}, {at, "h:nn am/pm", "2:07 pm", "2:07 pm"},
        {at, "h:nn a/p", "2:07 p", "2:07 p"},
        {at, "\"Fecha: \"dd-mm-yyyy", "Fecha: 22-11-2026", "Fecha: 22-11-2026"}, {at, "w q y", "1 4 326", "1 4 326"},
        {at, "ddddd", "22/11/2026", "11/22/2026"},
        {at, "dddddd", "domingo, 22 de noviembre de 2026", "Sunday, November 22, 2026"},
        {Variant::date(46331), "d", "5", "5"}, {Variant::date(46331), "dd", "05", "05"},
        {"22/11/2026", "yyyy", "2026", "2026"},
    });
    // '/' and ':' in a mask stand for the separators of the settings.
    Regional dotted = Regional::esES();
    dotted.dateSep = '.';
    dotted.timeSep = '.';
    RegionalScope scope(dotted);
    EXPECT_EQ(Format(at, "dd/mm/yyyy hh:nn"), "22.11.2026 14.07");
}

TEST(RuntimeFormat, TextMasksAndNoMask) {
    runCases({
        {"ab", "@@@@@", "   ab", "   ab"}, {"ab", "&&&&&", "ab", "ab"}, {"ab", "!@@@@@", "ab   ", "ab   "},
        {"abc", ">@@@", "ABC", "ABC"}, {"ABC", "<&&&", "abc", "abc"}, {"abcdef", "@@@", "abcdef", "abcdef"},
        {"12345678", "@@@@-@@@@", "1234-5678", "1234-5678"}, {"", "@;\"vacío\"", "vacío", "vacío"},
        // Without a mask, Format writes what CStr writes, but Null gives an empty text.
        {Variant::date(46348), "", "22/11/2026", "11/22/2026"}, {true, "", "True", "True"},
        {Variant::null(), "", "", ""}, {Variant(), "", "", ""}, {int32_t(-42), "", "-42", "-42"},
    });
}

}  // namespace
}  // namespace hist::rt
