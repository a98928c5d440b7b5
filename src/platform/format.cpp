// Format: the named masks and the custom numeric, date and text masks.
//
// Numbers are rounded on their 15-significant-digit decimal text, half away from zero
// (2.5 gives 3, 1.005 gives 1.01), which is not how CInt rounds.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include "platform/error.hpp"
#include "platform/runtime_detail.hpp"
#include "platform/text.hpp"

namespace hist::rt {

namespace {

using detail::lowerAscii;

// Cuts a digit string to its first `keep` digits, rounding half away from zero on the
// first digit dropped; true when the carry added a leading digit ("995" to 2 is "100").
bool cutRounded(std::string& digits, size_t keep) {
    const bool up = digits[keep] >= '5';
    digits.resize(keep);
    if (!up) return false;
    for (size_t k = keep; k-- > 0;) {
        if (digits[k] != '9') {
            ++digits[k];
            return false;
        }
        digits[k] = '0';
    }
    digits.insert(digits.begin(), '1');
    return true;
}

// The digits of |x| rounded to `decimals` places on its 15-digit text: the integer digits
// without leading zeros ("" for zero) and exactly `decimals` fraction digits.
void roundedDigits(double x, int decimals, std::string& intDigits, std::string& fracDigits) {
    x = std::fabs(x);
    intDigits.clear();
    if (x == 0 || !std::isfinite(x)) {
        fracDigits.assign(static_cast<size_t>(decimals), '0');
        return;
    }
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::scientific, 14);
    const std::string sci(buf, res.ptr);  // d.ddddddddddddddde±XX
    const size_t e = sci.find('e');
    std::string digits = sci.substr(0, 1) + sci.substr(2, e - 2);
    const int exp10 = std::atoi(sci.c_str() + e + 1);
    long pointPos = exp10 + 1;  // digits before the decimal point
    std::string all;
    long ip;
    if (pointPos <= 0) {
        all.assign(static_cast<size_t>(-pointPos), '0');
        all += digits;
        ip = 0;
    } else {
        all = digits;
        if (pointPos > static_cast<long>(all.size())) all.append(static_cast<size_t>(pointPos) - all.size(), '0');
        ip = pointPos;
    }
    const size_t keep = static_cast<size_t>(ip + decimals);
    if (keep < all.size()) {
        if (cutRounded(all, keep)) ++ip;
    } else {
        all.append(keep - all.size(), '0');
    }
    intDigits = all.substr(0, static_cast<size_t>(ip));
    fracDigits = all.substr(static_cast<size_t>(ip));
    const size_t nz = intDigits.find_first_not_of('0');
    intDigits = nz == std::string::npos ? std::string() : intDigits.substr(nz);
}

std::string grouped(const std::string& digits, char mark) {
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        out += digits[i];
        const size_t left = digits.size() - 1 - i;
        if (left > 0 && left % 3 == 0) out += mark;
    }
    return out;
}

// ---- Masks split into sections and items ----

// One piece of a mask: quoted text ("...") and an escaped character (\x) are literals;
// every other character is a mask character at its place.
struct MaskPiece {
    bool literal;
    std::string_view text;  // the literal's text, or the one mask character
    std::string_view raw;   // as written in the mask, quotes and backslash included
    size_t pos;             // where the piece starts in the mask
};

// The one walk over a mask. f(piece) returns how many further characters of the mask
// the piece used (a date token "dddd" or an exponent "E+00" reads on); literals use none.
template <class F>
void scanMask(std::string_view mask, F f) {
    for (size_t i = 0; i < mask.size();) {
        if (mask[i] == '"') {
            const size_t j = mask.find('"', i + 1);
            const size_t end = j == std::string_view::npos ? mask.size() : j;
            const size_t next = std::min(end + 1, mask.size());
            f(MaskPiece{true, mask.substr(i + 1, end - i - 1), mask.substr(i, next - i), i});
            i = next;
        } else if (mask[i] == '\\' && i + 1 < mask.size()) {
            f(MaskPiece{true, mask.substr(i + 1, 1), mask.substr(i, 2), i});
            i += 2;
        } else {
            const size_t used = f(MaskPiece{false, mask.substr(i, 1), mask.substr(i, 1), i});
            i += 1 + used;
        }
    }
}

// Calls f(i, c) for every mask character.
template <class F>
void forUnquoted(std::string_view mask, F f) {
    scanMask(mask, [&](const MaskPiece& p) -> size_t {
        if (!p.literal) f(p.pos, p.text[0]);
        return 0;
    });
}

// Splits on ';' outside quotes and escapes.
std::vector<std::string> sections(std::string_view mask) {
    std::vector<std::string> out(1);
    scanMask(mask, [&](const MaskPiece& p) -> size_t {
        if (!p.literal && p.text[0] == ';') out.emplace_back();
        else out.back() += p.raw;
        return 0;
    });
    return out;
}

bool isDateMask(std::string_view mask) {
    bool date = false;
    forUnquoted(mask, [&](size_t i, char c) {
        switch (c) {
            case 'd': case 'D': case 'm': case 'M': case 'y': case 'Y': case 'h': case 'H':
            case 'n': case 'N': case 's': case 'S': case 'w': case 'W': case 'q': case 'Q':
            case 'c': case 'C': case 't': case 'T':
                date = true;
                break;
            case 'a': case 'A': {
                const std::string rest = lowerAscii(mask.substr(i, 5));
                if (rest.rfind("am/pm", 0) == 0 || rest.rfind("a/p", 0) == 0 || rest.rfind("ampm", 0) == 0)
                    date = true;
                break;
            }
            default: break;
        }
    });
    return date;
}

bool isTextMask(std::string_view mask) {
    bool text = false;
    forUnquoted(mask, [&](size_t, char c) {
        if (c == '@' || c == '&') text = true;
    });
    return text;
}

// The literal characters of a section, placeholders left out (a null section).
std::string literalsOnly(std::string_view sec) {
    std::string out;
    scanMask(sec, [&](const MaskPiece& p) -> size_t {
        const char c = p.text.empty() ? '\0' : p.text[0];
        if (p.literal || (c != '0' && c != '#' && c != '.' && c != ',' && c != '@' && c != '&')) out += p.text;
        return 0;
    });
    return out;
}

// ---- Numeric masks ----

struct NumItem {
    enum Kind { Zero, Hash, Point, Comma, Percent, Exp, Literal } kind;
    std::string text;  // literal text; for Exp: the letter and the sign rule ("E+")
    int expDigits = 0;
};

std::vector<NumItem> parseNumeric(std::string_view sec) {
    std::vector<NumItem> items;
    bool point = false, exp = false;
    scanMask(sec, [&](const MaskPiece& p) -> size_t {
        if (p.literal) {
            items.push_back({NumItem::Literal, std::string(p.text)});
            return 0;
        }
        const size_t i = p.pos;
        const char c = p.text[0];
        if (c == '0' && !exp) {
            items.push_back({NumItem::Zero, {}});
        } else if (c == '#' && !exp) {
            items.push_back({NumItem::Hash, {}});
        } else if (c == '.' && !point && !exp) {
            point = true;
            items.push_back({NumItem::Point, {}});
        } else if (c == ',' && !point && !exp) {
            items.push_back({NumItem::Comma, {}});
        } else if (c == '%') {
            items.push_back({NumItem::Percent, {}});
        } else if ((c == 'E' || c == 'e') && !exp && i + 1 < sec.size() && (sec[i + 1] == '+' || sec[i + 1] == '-')) {
            exp = true;
            NumItem e{NumItem::Exp, std::string{c, sec[i + 1]}};
            size_t k = i + 2;
            while (k < sec.size() && (sec[k] == '0' || sec[k] == '#')) {
                if (sec[k] == '0') ++e.expDigits;
                ++k;
            }
            items.push_back(e);
            return k - i - 1;
        } else {
            items.push_back({NumItem::Literal, std::string(1, c)});
        }
        return 0;
    });
    return items;
}

std::string renderNumeric(std::string_view sec, double x, const Regional& r) {
    std::vector<NumItem> items = parseNumeric(sec);
    // Where the integer placeholders are, and what the commas among them mean: between
    // two placeholders a comma asks for grouping; after the last one it divides by 1000.
    long firstInt = -1, lastInt = -1, pointAt = -1, expAt = -1;
    for (size_t k = 0; k < items.size(); ++k) {
        const auto kind = items[k].kind;
        if (kind == NumItem::Point) pointAt = static_cast<long>(k);
        if (kind == NumItem::Exp) expAt = static_cast<long>(k);
        if ((kind == NumItem::Zero || kind == NumItem::Hash) && pointAt < 0 && expAt < 0) {
            if (firstInt < 0) firstInt = static_cast<long>(k);
            lastInt = static_cast<long>(k);
        }
    }
    bool grouping = false;
    int scale = 0, percent = 0;
    for (size_t k = 0; k < items.size(); ++k) {
        const long kk = static_cast<long>(k);
        if (items[k].kind == NumItem::Comma) {
            if (kk > firstInt && kk < lastInt) grouping = true;
            else if (firstInt >= 0 && kk > lastInt && (pointAt < 0 || kk < pointAt)) ++scale;
        } else if (items[k].kind == NumItem::Percent) {
            ++percent;
        }
    }
    for (int k = 0; k < percent; ++k) x *= 100;
    for (int k = 0; k < scale; ++k) x /= 1000;

    int intPh = 0, decimals = 0;
    std::vector<char> decKinds;
    for (size_t k = 0; k < items.size(); ++k) {
        const long kk = static_cast<long>(k);
        const bool ph = items[k].kind == NumItem::Zero || items[k].kind == NumItem::Hash;
        if (!ph || (expAt >= 0 && kk > expAt)) continue;
        if (pointAt >= 0 && kk > pointAt) {
            ++decimals;
            decKinds.push_back(items[k].kind == NumItem::Zero ? '0' : '#');
        } else {
            ++intPh;
        }
    }

    std::string intDigits, fracDigits;
    int exponent = 0;
    if (expAt >= 0) {
        // Scientific: the mantissa keeps as many integer digits as the mask has.
        const int k = std::max(intPh, 1);
        if (x != 0) {
            exponent = static_cast<int>(std::floor(std::log10(std::fabs(x)))) - (k - 1);
            roundedDigits(x / std::pow(10.0, exponent), decimals, intDigits, fracDigits);
            if (static_cast<int>(intDigits.size()) > k) {
                ++exponent;
                roundedDigits(x / std::pow(10.0, exponent), decimals, intDigits, fracDigits);
            } else if (static_cast<int>(intDigits.size()) < k) {
                --exponent;
                roundedDigits(x / std::pow(10.0, exponent), decimals, intDigits, fracDigits);
            }
        } else {
            fracDigits.assign(static_cast<size_t>(decimals), '0');
        }
    } else {
        roundedDigits(x, decimals, intDigits, fracDigits);
    }

    // Trailing '#' decimal places drop their zeros.
    size_t fracShown = fracDigits.size();
    while (fracShown > 0 && decKinds[fracShown - 1] == '#' && fracDigits[fracShown - 1] == '0') --fracShown;

    std::string out;
    const int len = static_cast<int>(intDigits.size());
    auto emitDigit = [&](char d, int q) {
        out += d;
        if (grouping && q > 0 && q % 3 == 0) out += r.thousands;
    };
    int intIdx = 0, decIdx = 0;
    bool intDone = intPh == 0;
    for (size_t k = 0; k < items.size(); ++k) {
        const NumItem& it = items[k];
        const long kk = static_cast<long>(k);
        const bool afterExp = expAt >= 0 && kk > expAt;
        switch (it.kind) {
            case NumItem::Zero:
            case NumItem::Hash:
                if (afterExp) break;
                if (pointAt >= 0 && kk > pointAt) {
                    if (static_cast<size_t>(decIdx) < fracShown) out += fracDigits[static_cast<size_t>(decIdx)];
                    ++decIdx;
                } else {
                    const int p = intPh - 1 - intIdx;  // power of ten of this place
                    if (intIdx == 0)
                        for (int q = len - 1; q > p; --q) emitDigit(intDigits[static_cast<size_t>(len - 1 - q)], q);
                    if (p < len) emitDigit(intDigits[static_cast<size_t>(len - 1 - p)], p);
                    else if (it.kind == NumItem::Zero) emitDigit('0', p);
                    ++intIdx;
                    if (intIdx == intPh) intDone = true;
                }
                break;
            case NumItem::Point:
                if (!intDone) {  // a mask with no integer places still shows the integer digits
                    out += intDigits;
                    intDone = true;
                }
                out += r.decimal;
                break;
            case NumItem::Comma: break;
            case NumItem::Percent: out += '%'; break;
            case NumItem::Exp: {
                out += it.text[0];
                if (exponent < 0) out += '-';
                else if (it.text[1] == '+') out += '+';
                std::string e = std::to_string(std::abs(exponent));
                if (static_cast<int>(e.size()) < it.expDigits) e.insert(0, static_cast<size_t>(it.expDigits) - e.size(), '0');
                out += e;
                break;
            }
            case NumItem::Literal: out += it.text; break;
        }
    }
    return out;
}

std::string formatNumber(double x, std::string_view mask, const Regional& r) {
    const auto secs = sections(mask);
    const bool negative = x < 0;
    if (x == 0 && secs.size() >= 3 && !secs[2].empty()) return renderNumeric(secs[2], 0, r);
    if (negative && secs.size() >= 2 && !secs[1].empty()) return renderNumeric(secs[1], -x, r);
    // One section for every value: a negative number takes a leading minus.
    return (negative ? "-" : "") + renderNumeric(secs[0], std::fabs(x), r);
}

std::string formatNullNumeric(std::string_view mask) {
    const auto secs = sections(mask);
    return secs.size() >= 4 ? literalsOnly(secs[3]) : std::string();
}

std::string currency(double x, const Regional& r) {
    std::string ip, fp;
    roundedDigits(x, r.currencyDigits, ip, fp);
    std::string n = grouped(ip.empty() ? "0" : ip, r.thousands);
    if (!fp.empty()) n += r.decimal + fp;
    const std::string& s = r.currencySymbol;
    if (!(x < 0)) {
        switch (r.currencyPositive) {
            case 0: return s + n;
            case 1: return n + s;
            case 2: return s + " " + n;
            default: return n + " " + s;
        }
    }
    // The system's negative currency patterns.
    switch (r.currencyNegative) {
        case 0: return "(" + s + n + ")";
        case 1: return "-" + s + n;
        case 2: return s + "-" + n;
        case 3: return s + n + "-";
        case 4: return "(" + n + s + ")";
        case 5: return "-" + n + s;
        case 6: return n + "-" + s;
        case 7: return n + s + "-";
        case 8: return "-" + n + " " + s;
        case 9: return "-" + s + " " + n;
        case 10: return n + " " + s + "-";
        case 11: return s + " " + n + "-";
        case 12: return s + " -" + n;
        case 13: return n + "- " + s;
        case 14: return "(" + s + " " + n + ")";
        default: return "(" + n + " " + s + ")";
    }
}

// ---- Date masks ----

std::string two(int v) {
    char b[8];
    std::snprintf(b, sizeof b, "%02d", v);
    return b;
}

bool maskHasAmPm(std::string_view mask, const Regional& r) {
    bool found = false;
    forUnquoted(mask, [&](size_t i, char c) {
        if (c != 'a' && c != 'A') return;
        const std::string rest = lowerAscii(mask.substr(i, 5));
        if (rest.rfind("am/pm", 0) == 0 || rest.rfind("a/p", 0) == 0) found = true;
        if (rest.rfind("ampm", 0) == 0 && !r.am.empty()) found = true;
    });
    return found;
}

std::string formatDate(double serial, std::string_view mask, const Regional& r) {
    const DateParts p = splitDate(serial);
    const bool twelve = maskHasAmPm(mask, r);
    const int wd = weekday(serial);
    std::string out;
    bool afterHour = false;
    scanMask(mask, [&](const MaskPiece& piece) -> size_t {
        if (piece.literal) {
            out += piece.text;
            return 0;
        }
        const size_t i = piece.pos;
        const char c = piece.text[0];
        if (c == 'a' || c == 'A') {
            const std::string rest = lowerAscii(mask.substr(i, 5));
            const bool am = p.hour < 12;
            if (rest.rfind("am/pm", 0) == 0) {
                out += am ? mask.substr(i, 2) : mask.substr(i + 3, 2);
                return 4;
            }
            if (rest.rfind("a/p", 0) == 0) {
                out += am ? mask[i] : mask[i + 2];
                return 2;
            }
            if (rest.rfind("ampm", 0) == 0) {
                out += am ? r.am : r.pm;
                return 3;
            }
        }
        auto lower = [](char ch) { return (ch >= 'A' && ch <= 'Z') ? static_cast<char>(ch - 'A' + 'a') : ch; };
        const char lc = lower(c);
        size_t n = 1;
        while (i + n < mask.size() && lower(mask[i + n]) == lc) ++n;
        bool token = true;
        switch (lc) {
            case 'd':
                if (n == 1) out += std::to_string(p.day);
                else if (n == 2) out += two(p.day);
                else if (n == 3) out += r.dayAbbrevs[static_cast<size_t>(wd - 1)];
                else if (n == 4) out += r.dayNames[static_cast<size_t>(wd - 1)];
                else if (n == 5) out += detail::renderPicture(r.shortDate, serial, r);
                else out += detail::renderPicture(r.longDate, serial, r);
                break;
            case 'w':
                if (n == 1) {
                    out += std::to_string(wd);
                } else {
                    // Week of the year, weeks starting on Sunday, 1 January in week 1.
                    const double jan1 = dateSerial(p.year, 1, 1);
                    const int doy = static_cast<int>(dateSerial(p.year, p.month, p.day) - jan1);
                    out += std::to_string((doy + weekday(jan1) - 1) / 7 + 1);
                }
                break;
            case 'm':
                if (afterHour) out += n == 1 ? std::to_string(p.minute) : two(p.minute);
                else if (n == 1) out += std::to_string(p.month);
                else if (n == 2) out += two(p.month);
                else if (n == 3) out += r.monthAbbrevs[static_cast<size_t>(p.month - 1)];
                else out += r.monthNames[static_cast<size_t>(p.month - 1)];
                break;
            case 'q': out += std::to_string((p.month - 1) / 3 + 1); break;
            case 'y':
                if (n == 1) out += std::to_string(static_cast<int>(dateSerial(p.year, p.month, p.day) - dateSerial(p.year, 1, 1)) + 1);
                else if (n == 2) out += two(p.year % 100);
                else out += std::to_string(p.year);
                break;
            case 'h': {
                int h = p.hour;
                if (twelve) h = h % 12 == 0 ? 12 : h % 12;
                out += n == 1 ? std::to_string(h) : two(h);
                break;
            }
            case 'n': out += n == 1 ? std::to_string(p.minute) : two(p.minute); break;
            case 's': out += n == 1 ? std::to_string(p.second) : two(p.second); break;
            case 'c': out += detail::dateText(serial, r); break;
            case 't':
                if (n >= 5) out += detail::renderPicture(r.longTime, serial, r);
                else out.append(mask.substr(i, n));
                break;
            case '/': token = false; out.append(n, r.dateSep); break;
            case ':': token = false; out.append(n, r.timeSep); break;
            default: token = false; out.append(mask.substr(i, n)); break;
        }
        if (token) afterHour = lc == 'h';
        return n - 1;
    });
    return out;
}

// ---- Text masks ----

std::string formatText(const std::string& s, std::string_view mask) {
    // Split the text into characters (UTF-8 sequences), then fill the placeholders from
    // the right unless '!' asks for left to right; '@' shows a blank where no character
    // is left, '&' nothing; '<' and '>' force lower or upper case.
    std::vector<std::string> chars;
    for (size_t i = 0; i < s.size();) {
        const size_t start = i;
        text::nextCodePoint(s, i);
        chars.push_back(s.substr(start, i - start));
    }
    bool leftToRight = false, lower = false, upper = false;
    size_t slots = 0;
    forUnquoted(mask, [&](size_t, char c) {
        if (c == '!') leftToRight = true;
        else if (c == '<') lower = true;
        else if (c == '>') upper = true;
        else if (c == '@' || c == '&') ++slots;
    });
    auto cased = [&](std::string ch) {
        if (lower) ch = lowerAscii(ch);
        if (upper)
            for (char& c : ch)
                if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        return ch;
    };
    std::vector<std::string> fill(slots);
    std::string extra;
    if (leftToRight) {
        for (size_t k = 0; k < chars.size(); ++k)
            if (k < slots) fill[k] = chars[k];
            else extra += chars[k];
    } else {
        const size_t over = chars.size() > slots ? chars.size() - slots : 0;
        for (size_t k = 0; k < over; ++k) extra += chars[k];
        const size_t offset = slots - (chars.size() - over);
        for (size_t k = over; k < chars.size(); ++k) fill[offset + k - over] = chars[k];
    }
    std::string out;
    if (!leftToRight) out += cased(extra);
    size_t slot = 0;
    scanMask(mask, [&](const MaskPiece& p) -> size_t {
        const char c = p.text.empty() ? '\0' : p.text[0];
        if (p.literal) {
            out += p.text;
        } else if (c == '@' || c == '&') {
            const std::string& ch = fill[slot++];
            out += ch.empty() ? (c == '@' ? " " : "") : cased(ch);
        } else if (c != '!' && c != '<' && c != '>') {
            out += c;
        }
        return 0;
    });
    if (leftToRight) out += cased(extra);
    return out;
}

// ---- Values as the masks want them ----

double serialOf(const Variant& v) {
    if (v.isString()) {
        if (auto d = parseDate(v.asString())) return *d;
        if (auto n = parseNumber(v.asString())) return *n;
        raise(err::TypeMismatch, err::SrcRuntime);
    }
    return CDate(v);
}

}  // namespace

std::string Format(const Variant& v, std::string_view mask) {
    const Regional& r = Regional::current();
    const bool nothing = v.isNull() || v.isEmpty();
    if (mask.empty()) return nothing ? std::string() : CStr(v);

    if (isTextMask(mask)) {
        const auto secs = sections(mask);
        std::string s = nothing ? std::string() : CStr(v);
        if (s.empty() && secs.size() >= 2) return formatText(s, secs[1]);
        return formatText(s, secs[0]);
    }

    const std::string name = lowerAscii(mask);
    // A text that is neither number nor date goes out as it is.
    std::optional<double> textNumber, textDate;
    if (v.isString()) {
        textNumber = parseNumber(v.asString());
        textDate = parseDate(v.asString());
        if (!textNumber && !textDate) return v.asString();
    }
    auto number = [&]() -> double {
        if (v.isString()) return textNumber ? *textNumber : *textDate;
        return CDbl(v);
    };
    auto serial = [&]() -> double {
        if (v.isString()) return textDate ? *textDate : *textNumber;
        return serialOf(v);
    };

    // Named number masks.
    if (name == "general number" || name == "currency" || name == "fixed" || name == "standard" ||
        name == "percent" || name == "scientific" || name == "yes/no" || name == "true/false" ||
        name == "on/off") {
        if (nothing) return {};
        const double x = number();
        if (name == "general number") return numberText(x, r);
        if (name == "currency") return currency(x, r);
        if (name == "fixed") return formatNumber(x, "0.00", r);
        if (name == "standard") return formatNumber(x, "#,##0.00", r);
        if (name == "percent") return formatNumber(x, "0.00%", r);
        if (name == "scientific") return formatNumber(x, "0.00E+00", r);
        if (name == "yes/no") return x != 0 ? "Yes" : "No";
        if (name == "true/false") return x != 0 ? "True" : "False";
        return x != 0 ? "On" : "Off";
    }
    // Named date masks.
    if (name == "general date" || name == "long date" || name == "medium date" || name == "short date" ||
        name == "long time" || name == "medium time" || name == "short time") {
        if (nothing) return {};
        const double d = serial();
        if (name == "general date") return detail::dateText(d, r);
        if (name == "long date") return detail::renderPicture(r.longDate, d, r);
        if (name == "short date") return detail::renderPicture(r.shortDate, d, r);
        if (name == "long time") return detail::renderPicture(r.longTime, d, r);
        if (name == "medium date") return formatDate(d, "dd-mmm-yy", r);
        // Short time is always 24-hour with two-digit hours; medium time is 12-hour where
        // the settings have AM/PM designators.
        if (name == "short time") return formatDate(d, "hh:nn", r);
        return formatDate(d, r.am.empty() ? "hh:nn" : "hh:nn AMPM", r);
    }

    if (isDateMask(mask)) {
        if (nothing) return {};
        return formatDate(serial(), mask, r);
    }
    if (nothing) return formatNullNumeric(mask);
    return formatNumber(number(), mask, r);
}

std::string roundDecimalText(std::string s, int decimals) {
    const bool negative = !s.empty() && s[0] == '-';
    if (negative) s.erase(0, 1);
    const size_t point = s.find('.');
    std::string ip = point == std::string::npos ? s : s.substr(0, point);
    std::string fp = point == std::string::npos ? std::string() : s.substr(point + 1);
    if (static_cast<int>(fp.size()) > decimals) {
        std::string digits = ip + fp;
        const bool longer = cutRounded(digits, ip.size() + static_cast<size_t>(decimals));
        const size_t intLength = ip.size() + (longer ? 1 : 0);
        ip = digits.substr(0, intLength);
        fp = digits.substr(intLength);
    }
    while (!fp.empty() && fp.back() == '0') fp.pop_back();
    if (ip.empty()) ip = "0";
    std::string out = fp.empty() ? ip : ip + "." + fp;
    if (negative && out.find_first_not_of("0.") != std::string::npos) out.insert(out.begin(), '-');
    return out;
}

}  // namespace hist::rt
