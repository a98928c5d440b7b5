#include "sql/literals.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/runtime.hpp"

namespace hist::sql {

std::string numberLiteral(double d) {
    if (d == 0) return "0";
    char buf[40];
    // The shortest text that reads back as the same double.
    auto res = std::to_chars(buf, buf + sizeof buf, d);
    return std::string(buf, res.ptr);
}

double roundCurrency(double value, int digits) {
    if (!std::isfinite(value) || value == 0.0) return value;
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.14e", value);  // d.dddddddddddddde±XX: 15 significant digits
    bool neg = buf[0] == '-';
    const char* p = buf + (neg ? 1 : 0);
    char mant[16];
    int m = 0;
    for (; *p && *p != 'e'; ++p)
        if (*p != '.') mant[m++] = *p;
    int exp10 = std::atoi(p + 1);
    // value = 0.mant x 10^(exp10+1); keep the digits before the first dropped one.
    int keep = exp10 + 1 + digits;
    if (keep >= m) return value;
    if (keep < 0) return neg ? -0.0 : 0.0;
    long long kept = 0;
    for (int k = 0; k < keep; ++k) kept = kept * 10 + (mant[k] - '0');
    if (mant[keep] >= '5') ++kept;
    double r = static_cast<double>(kept);
    // Divide by a power of ten rather than multiply by its inverse, so 268/100 is 2.68 exactly as typed.
    int scale = digits;
    r = scale >= 0 ? r / std::pow(10.0, scale) : r * std::pow(10.0, -scale);
    char out[48];
    std::snprintf(out, sizeof out, "%.*f", digits > 0 ? digits : 0, r);
    r = std::strtod(out, nullptr);
    return neg ? -r : r;
}

namespace {

struct Cursor {
    std::string_view s;
    size_t i = 0;
    void blanks() {
        while (i < s.size() && s[i] == ' ') ++i;
    }
    bool number(int& v, int maxDigits = 4) {
        size_t start = i;
        v = 0;
        while (i < s.size() && s[i] >= '0' && s[i] <= '9' && i - start < static_cast<size_t>(maxDigits)) v = v * 10 + (s[i++] - '0');
        return i > start;
    }
    bool eat(char c) {
        if (i < s.size() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    }
    bool done() const { return i == s.size(); }
};

bool validDate(int y, int m, int d) {
    if (m < 1 || m > 12 || d < 1) return false;
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int dm = days[m - 1];
    if (m == 2 && ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0)) dm = 29;
    return d <= dm;
}

// "H:MM[:SS] [AM|PM]" from the cursor to the end; the time fraction.
std::optional<double> readTime(Cursor& c) {
    int h, mi, se = 0;
    if (!c.number(h, 2) || !c.eat(':') || !c.number(mi, 2)) return std::nullopt;
    if (c.eat(':') && !c.number(se, 2)) return std::nullopt;
    c.blanks();
    std::string_view rest = c.s.substr(c.i);
    if (!rest.empty()) {
        bool pm = rest == "PM" || rest == "pm" || rest == "P" || rest == "p";
        bool am = rest == "AM" || rest == "am" || rest == "A" || rest == "a";
        if (!pm && !am) return std::nullopt;
        if (h < 1 || h > 12) return std::nullopt;
        if (pm && h != 12) h += 12;
        if (am && h == 12) h = 0;
        c.i = c.s.size();
    }
    if (h > 23 || mi > 59 || se > 59) return std::nullopt;
    return rt::timeSerial(h, mi, se);
}

}  // namespace

std::optional<double> readHashDate(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    if (text.empty()) return std::nullopt;
    if (auto iso = rt::parseIso(text)) return iso;
    Cursor c{text};
    int a, b, y;
    size_t save = c.i;
    if (c.number(a, 4) && c.eat(':')) {  // a time alone
        c.i = save;
        auto t = readTime(c);
        if (!t || !c.done()) return std::nullopt;
        return *t;
    }
    c.i = save;
    if (!c.number(a, 4)) return std::nullopt;
    char sep = c.i < text.size() ? text[c.i] : 0;
    if (sep != '/' && sep != '-' && sep != '.') return std::nullopt;
    ++c.i;
    if (!c.number(b, 2) || !c.eat(sep) || !c.number(y, 4)) return std::nullopt;
    if (y < 100) y += y < 30 ? 2000 : 1900;
    int month = a, day = b;
    if (!validDate(y, month, day)) {
        std::swap(month, day);
        if (!validDate(y, month, day)) return std::nullopt;
    }
    double serial = rt::dateSerial(y, month, day);
    c.blanks();
    if (!c.done()) {
        auto t = readTime(c);
        if (!t || !c.done()) return std::nullopt;
        serial += serial < 0 ? -*t : *t;
    }
    return serial;
}

}  // namespace hist::sql
