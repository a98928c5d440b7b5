// Date serials, their ISO text, the system date pictures and the lax date reader of
// CDate/IsDate.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <vector>

#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/runtime_detail.hpp"

namespace hist::rt {

namespace detail {

namespace {
// Days from 1970-01-01 to 1899-12-30.
constexpr int64_t kEpochOffset = 25569;

int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
}  // namespace

int64_t daysFromCivil(int64_t year, int month, int day) {
    // Months past December or before January move the year, as the runtime's DateSerial does.
    int64_t m0 = static_cast<int64_t>(month) - 1;
    year += floorDiv(m0, 12);
    const int64_t m = m0 - floorDiv(m0, 12) * 12 + 1;
    const int64_t y = year - (m <= 2 ? 1 : 0);
    const int64_t era = floorDiv(y, 400);
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468 + kEpochOffset + (static_cast<int64_t>(day) - 1);
}

void civilFromDays(int64_t days, int& year, int& month, int& day) {
    const int64_t z = days - kEpochOffset + 719468;
    const int64_t era = floorDiv(z, 146097);
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

DaySeconds splitSerial(double serial) {
    // The integer part is the day (towards zero) and the fraction the time of day as a
    // magnitude, so -1.25 is 29 Dec 1899 06:00. Rounding the whole to seconds carries
    // 23:59:59.6 into the next day (away from zero for negative serials).
    if (!std::isfinite(serial)) return {};
    const double mag = std::fabs(serial);
    const auto total = static_cast<int64_t>(std::llround(mag * 86400.0));
    const int64_t dayAbs = total / 86400;
    DaySeconds ds;
    ds.seconds = static_cast<int>(total % 86400);
    ds.day = serial < 0 ? -dayAbs : dayAbs;
    return ds;
}

double joinSerial(int64_t day, double timeFraction) {
    return day < 0 ? static_cast<double>(day) - timeFraction : static_cast<double>(day) + timeFraction;
}

bool serialInRange(double serial) {
    static const double lo = static_cast<double>(daysFromCivil(100, 1, 1));
    static const double hi = static_cast<double>(daysFromCivil(9999, 12, 31)) + 1.0;
    return std::isfinite(serial) && serial > lo - 1.0 && serial < hi;
}

std::string lowerAscii(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

namespace {
std::string pad(int64_t v, int width) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%0*lld", width, static_cast<long long>(v));
    return buf;
}
}  // namespace

std::string renderPicture(std::string_view pic, double serial, const Regional& r) {
    const DateParts p = splitDate(serial);
    const int wd = weekday(serial) - 1;
    std::string out;
    for (size_t i = 0; i < pic.size();) {
        const char c = pic[i];
        if (c == '\'') {  // quoted literal; '' inside stands for one apostrophe
            size_t j = i + 1;
            for (; j < pic.size(); ++j) {
                if (pic[j] == '\'') {
                    if (j + 1 < pic.size() && pic[j + 1] == '\'') {
                        out += '\'';
                        ++j;
                        continue;
                    }
                    break;
                }
                out += pic[j];
            }
            i = j + 1;
            continue;
        }
        size_t n = 1;
        while (i + n < pic.size() && pic[i + n] == c) ++n;
        switch (c) {
            case 'd':
                if (n == 1) out += std::to_string(p.day);
                else if (n == 2) out += pad(p.day, 2);
                else if (n == 3) out += r.dayAbbrevs[wd];
                else out += r.dayNames[wd];
                break;
            case 'M':
                if (n == 1) out += std::to_string(p.month);
                else if (n == 2) out += pad(p.month, 2);
                else if (n == 3) out += r.monthAbbrevs[p.month - 1];
                else out += r.monthNames[p.month - 1];
                break;
            case 'y':
                if (n == 1) out += std::to_string(p.year % 100);
                else if (n == 2) out += pad(p.year % 100, 2);
                else out += pad(p.year, 4);
                break;
            case 'H': out += n == 1 ? std::to_string(p.hour) : pad(p.hour, 2); break;
            case 'h': {
                const int h12 = p.hour % 12 == 0 ? 12 : p.hour % 12;
                out += n == 1 ? std::to_string(h12) : pad(h12, 2);
                break;
            }
            case 'm': out += n == 1 ? std::to_string(p.minute) : pad(p.minute, 2); break;
            case 's': out += n == 1 ? std::to_string(p.second) : pad(p.second, 2); break;
            case 't': {
                const std::string& d = p.hour < 12 ? r.am : r.pm;
                out += n == 1 ? d.substr(0, d.empty() ? 0 : 1) : d;
                break;
            }
            default: out.append(n, c); break;
        }
        i += n;
    }
    return out;
}

std::string dateText(double serial, const Regional& r) {
    const DaySeconds ds = splitSerial(serial);
    if (ds.day == 0) return renderPicture(r.longTime, serial, r);
    if (ds.seconds == 0) return renderPicture(r.shortDate, serial, r);
    return renderPicture(r.shortDate, serial, r) + " " + renderPicture(r.longTime, serial, r);
}

}  // namespace detail

using namespace detail;

double dateSerial(int year, int month, int day) {
    return static_cast<double>(daysFromCivil(year, month, day));
}

double timeSerial(int hour, int minute, int second) {
    return (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
}

DateParts splitDate(double serial) {
    const DaySeconds ds = splitSerial(serial);
    DateParts p;
    civilFromDays(ds.day, p.year, p.month, p.day);
    p.hour = ds.seconds / 3600;
    p.minute = ds.seconds / 60 % 60;
    p.second = ds.seconds % 60;
    return p;
}

std::string isoText(double serial) {
    // Only dates the runtime holds (years 100 to 9999) have a stored form; anything
    // else fails as CDate does, before a statement or a row carries it.
    if (!serialInRange(serial)) raise(err::Overflow, err::SrcRuntime);
    const DateParts p = splitDate(serial);
    if (p.year > 9999) raise(err::Overflow, err::SrcRuntime);  // the last half second rounds up
    char buf[20];
    // Written digit by digit: dates go into every statement and row, and the
    // formatted print costs several times more.
    auto two = [](char* at, int v) {
        at[0] = static_cast<char>('0' + v / 10);
        at[1] = static_cast<char>('0' + v % 10);
    };
    two(buf, p.year / 100);
    two(buf + 2, p.year % 100);
    buf[4] = '-';
    two(buf + 5, p.month);
    buf[7] = '-';
    two(buf + 8, p.day);
    buf[10] = ' ';
    two(buf + 11, p.hour);
    buf[13] = ':';
    two(buf + 14, p.minute);
    buf[16] = ':';
    two(buf + 17, p.second);
    return std::string(buf, 19);
}

int weekday(double serial) {
    const int64_t day = splitSerial(serial).day;
    // Day 0 (30 Dec 1899) was a Saturday, 7 in the Sunday-first numbering.
    const int64_t m = ((day % 7) + 7) % 7;
    return static_cast<int>((m + 6) % 7 + 1);
}

namespace {

int daysInMonth(int year, int month) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month == 2) {
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        return leap ? 29 : 28;
    }
    return kDays[month - 1];
}

bool validDate(int y, int m, int d) {
    return y >= 100 && y <= 9999 && m >= 1 && m <= 12 && d >= 1 && d <= daysInMonth(y, m);
}

bool validTime(int h, int m, int s) { return h >= 0 && h <= 23 && m >= 0 && m <= 59 && s >= 0 && s <= 59; }

// A cursor over text for the strict ISO forms.
struct Cursor {
    std::string_view s;
    size_t i = 0;
    bool end() const { return i >= s.size(); }
    bool eat(char c) {
        if (!end() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    }
    // Reads between minDigits and maxDigits decimal digits.
    bool digits(size_t minDigits, size_t maxDigits, int& out) {
        size_t n = 0;
        int v = 0;
        while (!end() && n < maxDigits && std::isdigit(static_cast<unsigned char>(s[i]))) {
            v = v * 10 + (s[i] - '0');
            ++i;
            ++n;
        }
        out = v;
        return n >= minDigits;
    }
};

// HH:MM[:SS[.fff]] at the cursor; the fraction of the time of day.
std::optional<double> isoTime(Cursor& c) {
    int h = 0, m = 0, s = 0;
    if (!c.digits(1, 2, h) || !c.eat(':') || !c.digits(2, 2, m)) return std::nullopt;
    double frac = 0;
    if (c.eat(':')) {
        if (!c.digits(2, 2, s)) return std::nullopt;
        if (c.eat('.')) {
            double scale = 0.1;
            size_t n = 0;
            while (!c.end() && std::isdigit(static_cast<unsigned char>(c.s[c.i]))) {
                frac += (c.s[c.i] - '0') * scale;
                scale /= 10;
                ++c.i;
                ++n;
            }
            if (n == 0) return std::nullopt;
        }
    }
    if (!validTime(h, m, s)) return std::nullopt;
    return (h * 3600.0 + m * 60.0 + s + frac) / 86400.0;
}

std::string_view trim(std::string_view t) {
    while (!t.empty() && std::isspace(static_cast<unsigned char>(t.front()))) t.remove_prefix(1);
    while (!t.empty() && std::isspace(static_cast<unsigned char>(t.back()))) t.remove_suffix(1);
    return t;
}

}  // namespace

std::optional<double> parseIso(std::string_view text) {
    text = trim(text);
    Cursor c{text};
    // Time only.
    if (text.size() >= 3 && (text[1] == ':' || text[2] == ':')) {
        auto t = isoTime(c);
        if (!t || !c.end()) return std::nullopt;
        return *t;
    }
    int y = 0, mo = 0, d = 0;
    if (!c.digits(4, 4, y) || !c.eat('-') || !c.digits(1, 2, mo) || !c.eat('-') || !c.digits(1, 2, d))
        return std::nullopt;
    if (!validDate(y, mo, d)) return std::nullopt;
    const int64_t day = daysFromCivil(y, mo, d);
    if (c.end()) return static_cast<double>(day);
    if (!c.eat(' ') && !c.eat('T')) return std::nullopt;
    auto t = isoTime(c);
    if (!t || !c.end()) return std::nullopt;
    return joinSerial(day, *t);
}

namespace {

struct Token {
    enum Kind { Num, Word, Sep } kind = Num;
    int value = 0;
    int digits = 0;
    std::string text;  // words in lower case
    char sep = 0;
};

bool tokenize(std::string_view s, std::vector<Token>& out) {
    for (size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (std::isdigit(c)) {
            Token t;
            t.kind = Token::Num;
            while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
                if (t.digits >= 9) return false;  // no date part is that long
                t.value = t.value * 10 + (s[i] - '0');
                ++t.digits;
                ++i;
            }
            out.push_back(t);
        } else if (std::isalpha(c) || c >= 0x80) {
            Token t;
            t.kind = Token::Word;
            size_t j = i;
            while (j < s.size() && (std::isalpha(static_cast<unsigned char>(s[j])) ||
                                    static_cast<unsigned char>(s[j]) >= 0x80))
                ++j;
            t.text = lowerAscii(s.substr(i, j - i));
            out.push_back(t);
            i = j;
        } else if (std::isspace(c)) {
            while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
            Token t;
            t.kind = Token::Sep;
            t.sep = ' ';
            out.push_back(t);
        } else {
            Token t;
            t.kind = Token::Sep;
            t.sep = static_cast<char>(c);
            out.push_back(t);
            ++i;
        }
    }
    return true;
}

// 1..12 for an English or regional month name or abbreviation, else 0.
int monthByName(const std::string& w, const Regional& r) {
    static const char* const kEnglish[] = {"january", "february", "march",     "april",
                                           "may",     "june",     "july",      "august",
                                           "september", "october", "november", "december"};
    for (int m = 0; m < 12; ++m) {
        const std::string en = kEnglish[m];
        if (w == en || w == en.substr(0, 3)) return m + 1;
        if (w == lowerAscii(r.monthNames[m]) || w == lowerAscii(r.monthAbbrevs[m])) return m + 1;
    }
    if (w == "sept") return 9;
    return 0;
}

// 0 for an AM word, 1 for PM, -1 otherwise.
int designator(const std::string& w, const Regional& r) {
    if (w == "am" || w == "a" || (!r.am.empty() && w == lowerAscii(r.am))) return 0;
    if (w == "pm" || w == "p" || (!r.pm.empty() && w == lowerAscii(r.pm))) return 1;
    return -1;
}

int fullYear(const Token& t) {
    // Two-digit years: 00-29 are this century, 30-99 the last.
    if (t.digits <= 2) return t.value < 30 ? 2000 + t.value : 1900 + t.value;
    return t.value;
}

bool looksLikeYear(const Token& t) { return t.digits > 2 || t.value > 31; }

int currentYear() { return splitDate(Clock::today()).year; }

}  // namespace

std::optional<double> parseDate(std::string_view text, const Regional& r) {
    text = trim(text);
    if (text.empty()) return std::nullopt;
    if (auto iso = parseIso(text)) return iso;

    std::vector<Token> toks;
    if (!tokenize(text, toks)) return std::nullopt;

    // "2.5" as 2:05: a period between the parts of a time, where the period is not the
    // thousands mark of the settings (it is under es-ES, where such text is a number).
    if (r.thousands != '.' && (toks.size() == 3 || toks.size() == 5)) {
        bool dotted = true;
        bool allZero = true;
        for (size_t k = 0; k < toks.size(); ++k) {
            const bool wantNum = k % 2 == 0;
            if (wantNum ? toks[k].kind != Token::Num : (toks[k].kind != Token::Sep || toks[k].sep != '.'))
                dotted = false;
            else if (wantNum && toks[k].value != 0)
                allZero = false;
        }
        if (dotted) {
            const int h = toks[0].value, m = toks[2].value, s = toks.size() == 5 ? toks[4].value : 0;
            if (allZero || !validTime(h, m, s)) return std::nullopt;
            return timeSerial(h, m, s);
        }
    }

    std::vector<Token> nums;
    int monthName = 0;
    bool haveTime = false;
    int hh = 0, mi = 0, ss = 0;
    int ampm = -1;
    for (size_t i = 0; i < toks.size();) {
        const Token& t = toks[i];
        if (t.kind == Token::Sep) {
            if (t.sep != ' ' && t.sep != '/' && t.sep != '-' && t.sep != ',') return std::nullopt;
            ++i;
            continue;
        }
        if (t.kind == Token::Word) {
            const int m = monthByName(t.text, r);
            const int d = designator(t.text, r);
            if (m && !monthName) {
                monthName = m;
            } else if (d >= 0 && haveTime && ampm < 0) {
                ampm = d;
            } else {
                return std::nullopt;
            }
            ++i;
            continue;
        }
        // A number followed by the time separator starts the time of day.
        if (i + 1 < toks.size() && toks[i + 1].kind == Token::Sep && toks[i + 1].sep == ':') {
            if (haveTime) return std::nullopt;
            int parts[3] = {0, 0, 0};
            int n = 0;
            size_t j = i;
            while (true) {
                if (j >= toks.size() || toks[j].kind != Token::Num || n == 3) return std::nullopt;
                parts[n++] = toks[j].value;
                ++j;
                if (j < toks.size() && toks[j].kind == Token::Sep && toks[j].sep == ':') {
                    ++j;
                    continue;
                }
                break;
            }
            hh = parts[0];
            mi = parts[1];
            ss = parts[2];
            haveTime = true;
            i = j;
            continue;
        }
        nums.push_back(t);
        ++i;
    }

    if (haveTime && ampm >= 0) {
        if (hh < 1 || hh > 12) return std::nullopt;
        hh = hh % 12 + (ampm == 1 ? 12 : 0);
    }
    if (haveTime && !validTime(hh, mi, ss)) return std::nullopt;
    const double time = haveTime ? timeSerial(hh, mi, ss) : 0.0;

    int y = 0, m = 0, d = 0;
    if (monthName) {
        m = monthName;
        if (nums.size() == 1) {
            if (looksLikeYear(nums[0])) {
                y = nums[0].value;
                d = 1;
            } else {
                d = nums[0].value;
                y = currentYear();
            }
        } else if (nums.size() == 2) {
            if (looksLikeYear(nums[0])) {
                y = fullYear(nums[0]);
                d = nums[1].value;
            } else {
                d = nums[0].value;
                y = fullYear(nums[1]);
            }
        } else {
            return std::nullopt;
        }
        if (!validDate(y, m, d)) return std::nullopt;
    } else if (nums.empty()) {
        if (!haveTime) return std::nullopt;
        return time;
    } else if (nums.size() == 1) {
        return std::nullopt;  // a lone number is not a date
    } else if (nums.size() == 2) {
        if (looksLikeYear(nums[0]) || looksLikeYear(nums[1])) {
            // month and year
            const bool firstYear = looksLikeYear(nums[0]);
            y = fullYear(firstYear ? nums[0] : nums[1]);
            m = (firstYear ? nums[1] : nums[0]).value;
            d = 1;
            if (!validDate(y, m, d)) return std::nullopt;
        } else {
            y = currentYear();
            const int a = nums[0].value, b = nums[1].value;
            d = r.dayFirst ? a : b;
            m = r.dayFirst ? b : a;
            if (!validDate(y, m, d)) std::swap(d, m);
            if (!validDate(y, m, d)) return std::nullopt;
        }
    } else if (nums.size() == 3) {
        if (looksLikeYear(nums[0])) {
            y = fullYear(nums[0]);
            m = nums[1].value;
            d = nums[2].value;
            if (!validDate(y, m, d)) return std::nullopt;
        } else {
            y = fullYear(nums[2]);
            const int a = nums[0].value, b = nums[1].value;
            d = r.dayFirst ? a : b;
            m = r.dayFirst ? b : a;
            // The order of the settings first; when that is no date, the other order.
            if (!validDate(y, m, d)) std::swap(d, m);
            if (!validDate(y, m, d)) return std::nullopt;
        }
    } else {
        return std::nullopt;
    }
    return joinSerial(daysFromCivil(y, m, d), time);
}

}  // namespace hist::rt
