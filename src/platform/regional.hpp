#pragma once
// Regional settings: the one explicit object every text form of a number or date,
// and every reading back of one, goes through. Nothing reads the process locale.
#include <array>
#include <string>

namespace hist {

struct Regional {
    std::string name;             // "es-ES", "en-US"
    char decimal = ',';           // decimal separator
    char thousands = '.';         // thousands separator
    char dateSep = '/';
    char timeSep = ':';
    std::string shortDate;        // "dd/MM/yyyy" (system picture syntax: d M y H h m s tt)
    std::string longDate;         // "dddd, d' de 'MMMM' de 'yyyy"
    std::string longTime;         // "H:mm:ss"
    std::string shortTime;        // "H:mm"
    std::string am, pm;           // AM/PM designators (empty under es-ES)
    std::array<std::string, 7> dayNames;     // Sunday first, as Weekday() numbers them
    std::array<std::string, 7> dayAbbrevs;
    std::array<std::string, 12> monthNames;  // January first
    std::array<std::string, 12> monthAbbrevs;
    std::string currencySymbol;   // "€", "$"
    int currencyDigits = 2;
    int currencyPositive = 3;     // 0 "$1.1", 1 "1.1$", 2 "$ 1.1", 3 "1.1 $"
    int currencyNegative = 8;     // the system's negative currency pattern number
    bool dayFirst = true;         // ambiguous numeric dates read day first

    static const Regional& esES();
    static const Regional& enUS();
    // By name ("es-ES", "en-US", case ignored); throws hist::Error 5 for another name.
    static const Regional& byName(const std::string& name);

    // The settings in force on this thread (default es-ES).
    static const Regional& current();
    static void setCurrent(const Regional& r);
};

// Puts other regional settings in force for a scope (tests, the host's --locale).
class RegionalScope {
public:
    explicit RegionalScope(const Regional& r) : saved_(Regional::current()) { Regional::setCurrent(r); }
    ~RegionalScope() { Regional::setCurrent(saved_); }
    RegionalScope(const RegionalScope&) = delete;
    RegionalScope& operator=(const RegionalScope&) = delete;

private:
    Regional saved_;
};

}  // namespace hist
