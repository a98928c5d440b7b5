#include "platform/regional.hpp"

#include <cctype>

#include "platform/error.hpp"

namespace hist {

const Regional& Regional::esES() {
    static const Regional r = [] {
        Regional s;
        s.name = "es-ES";
        s.decimal = ',';
        s.thousands = '.';
        s.dateSep = '/';
        s.timeSep = ':';
        s.shortDate = "dd/MM/yyyy";
        // The day without a leading zero: "domingo, 22 de noviembre de 2026", "jueves, 5 de ...".
        s.longDate = "dddd, d' de 'MMMM' de 'yyyy";
        s.longTime = "H:mm:ss";
        s.shortTime = "H:mm";
        s.am = "";
        s.pm = "";
        s.dayNames = {"domingo", "lunes", "martes", "miércoles", "jueves", "viernes", "sábado"};
        s.dayAbbrevs = {"dom", "lun", "mar", "mié", "jue", "vie", "sáb"};
        s.monthNames = {"enero", "febrero", "marzo",      "abril",   "mayo",      "junio",
                        "julio", "agosto",  "septiembre", "octubre", "noviembre", "diciembre"};
        s.monthAbbrevs = {"ene", "feb", "mar", "abr", "may", "jun",
                          "jul", "ago", "sep", "oct", "nov", "dic"};
        s.currencySymbol = "€";
        s.currencyDigits = 2;
        s.currencyPositive = 3;  // 1,1 €
        s.currencyNegative = 8;  // -1,1 €
        s.dayFirst = true;
        return s;
    }();
    return r;
}

const Regional& Regional::enUS() {
    static const Regional r = [] {
        Regional s;
        s.name = "en-US";
        s.decimal = '.';
        s.thousands = ',';
        s.dateSep = '/';
        s.timeSep = ':';
        s.shortDate = "M/d/yyyy";
        s.longDate = "dddd, MMMM d, yyyy";
        s.longTime = "h:mm:ss tt";
        s.shortTime = "h:mm tt";
        s.am = "AM";
        s.pm = "PM";
        s.dayNames = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
        s.dayAbbrevs = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        s.monthNames = {"January", "February", "March",     "April",   "May",      "June",
                        "July",    "August",   "September", "October", "November", "December"};
        s.monthAbbrevs = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        s.currencySymbol = "$";
        s.currencyDigits = 2;
        s.currencyPositive = 0;  // $1.1
        s.currencyNegative = 0;  // ($1.1)
        s.dayFirst = false;
        return s;
    }();
    return r;
}

const Regional& Regional::byName(const std::string& name) {
    std::string n;
    for (char c : name) n += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (n == "es-es") return esES();
    if (n == "en-us") return enUS();
    raise(err::InvalidCall, err::SrcRuntime,
          std::string(err::standardDescription(err::InvalidCall)) + ": unknown regional settings \"" +
              name + "\"");
}

namespace {
// Each thread carries its own copy, so a host serving several sessions can give each
// its settings without one changing the numbers of another.
Regional& threadRegional() {
    thread_local Regional r = Regional::esES();
    return r;
}
}  // namespace

const Regional& Regional::current() { return threadRegional(); }

void Regional::setCurrent(const Regional& r) {
    Regional& slot = threadRegional();
    if (&slot != &r) slot = r;
}

}  // namespace hist
