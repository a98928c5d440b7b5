// The runtime's number reader and writer, the C* conversions, Val, IsNumeric/IsDate,
// the comparison and the Print # form of a value.
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>

#include "platform/error.hpp"
#include "platform/runtime_detail.hpp"

namespace hist::rt {

namespace {

// Reads the sign and digits of an exponent whose marker stands at s[i], appending
// "e<sign><digits>" to plain. The index after the digits, or i itself (and nothing
// appended) when no digit follows the marker.
size_t readExponent(std::string_view s, size_t i, std::string& plain) {
    size_t j = i + 1;
    std::string exp = "e";
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) exp += s[j++];
    const size_t first = j;
    while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) exp += s[j++];
    if (j == first) return i;
    plain += exp;
    return j;
}

[[noreturn]] void fail(long number) { raise(number, err::SrcRuntime); }

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Reads the digits of &H/&O text into the runtime's value: up to 16 bits it is an
// Integer (so &HFFFF is -1), up to 32 bits a Long.
std::optional<double> radixValue(std::string_view digits, int base) {
    if (digits.empty()) return std::nullopt;
    uint64_t v = 0;
    for (char c : digits) {
        int d;
        if (c >= '0' && c <= '9') d = c - '0';
        else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
        else return std::nullopt;
        if (d >= base) return std::nullopt;
        v = v * static_cast<uint64_t>(base) + static_cast<uint64_t>(d);
        if (v > 0xFFFFFFFFull) return std::nullopt;
    }
    if (v <= 0xFFFF) return static_cast<double>(static_cast<int16_t>(static_cast<uint16_t>(v)));
    return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(v)));
}

double fromPlain(const std::string& plain) {
    double d = 0;
    std::from_chars(plain.data(), plain.data() + plain.size(), d);
    return d;
}

// Round half to even, as CInt and CLng do.
double roundHalfEven(double x) {
    const double f = std::floor(x);
    const double diff = x - f;
    if (diff < 0.5) return f;
    if (diff > 0.5) return f + 1;
    return std::fmod(f, 2.0) == 0 ? f : f + 1;
}

double numberOf(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty: return 0;
        case VarType::Null: fail(err::InvalidUseOfNull);
        case VarType::Boolean: return v.asBool() ? -1 : 0;
        case VarType::Integer: return v.asInteger();
        case VarType::Long: return v.asLong();
        case VarType::Double: return v.asDouble();
        case VarType::Date: return v.asDate().serial;
        case VarType::String: {
            auto d = parseNumber(v.asString());
            if (!d) fail(err::TypeMismatch);
            return *d;
        }
        default: fail(err::TypeMismatch);
    }
}

int sign(double d) { return d < 0 ? -1 : (d > 0 ? 1 : 0); }

}  // namespace

std::optional<double> parseNumber(std::string_view s, const Regional& r) {
    size_t i = 0;
    const size_t n = s.size();
    auto skipBlanks = [&] {
        while (i < n && isBlank(s[i])) ++i;
    };
    const std::string_view cur = r.currencySymbol;
    bool haveCurrency = false;
    auto eatCurrency = [&] {
        if (!haveCurrency && !cur.empty() && s.substr(i, cur.size()) == cur) {
            i += cur.size();
            haveCurrency = true;
            return true;
        }
        return false;
    };

    bool negative = false, haveSign = false, paren = false, closed = false;
    // One sign, before or after the number, unless a parenthesis makes it negative.
    auto eatSign = [&] {
        if (i < n && (s[i] == '+' || s[i] == '-') && !haveSign && !paren) {
            negative = s[i] == '-';
            haveSign = true;
            ++i;
            return true;
        }
        return false;
    };
    auto eatChar = [&](char c, bool allowed) {
        if (i < n && s[i] == c && allowed) {
            ++i;
            return true;
        }
        return false;
    };
    // Leading markers: blanks, one sign, an opening parenthesis, the currency symbol.
    for (bool progress = true; progress;) {
        skipBlanks();
        progress = eatSign() || eatCurrency();
        if (!progress && eatChar('(', !paren && !haveSign)) progress = paren = negative = true;
    }

    std::string plain;  // the number rebuilt for the locale-free reader
    double value = 0;
    if (i + 1 < n && s[i] == '&' && (s[i + 1] == 'H' || s[i + 1] == 'h' || s[i + 1] == 'O' || s[i + 1] == 'o')) {
        const int base = (s[i + 1] == 'H' || s[i + 1] == 'h') ? 16 : 8;
        i += 2;
        const size_t start = i;
        while (i < n && std::isxdigit(static_cast<unsigned char>(s[i]))) ++i;
        auto v = radixValue(s.substr(start, i - start), base);
        if (!v) return std::nullopt;
        value = *v;
    } else {
        size_t digits = 0;
        // Integer digits, with the thousands mark anywhere after the first digit.
        while (i < n) {
            if (std::isdigit(static_cast<unsigned char>(s[i]))) {
                plain += s[i];
                ++digits;
                ++i;
            } else if (s[i] == r.thousands && digits > 0 && r.thousands != r.decimal) {
                ++i;
            } else {
                break;
            }
        }
        if (i < n && s[i] == r.decimal) {
            ++i;
            plain += '.';
            while (i < n && std::isdigit(static_cast<unsigned char>(s[i]))) {
                plain += s[i];
                ++digits;
                ++i;
            }
        }
        if (digits == 0) return std::nullopt;
        if (i < n && (s[i] == 'e' || s[i] == 'E')) {
            const size_t j = readExponent(s, i, plain);
            if (j == i) return std::nullopt;
            i = j;
        }
        double d = 0;
        auto [p, ec] = std::from_chars(plain.data(), plain.data() + plain.size(), d);
        if (ec != std::errc() || p != plain.data() + plain.size() || !std::isfinite(d)) return std::nullopt;
        value = d;
    }

    // Trailing markers: the currency symbol, one sign (if none led), the closing parenthesis.
    for (bool progress = true; progress;) {
        skipBlanks();
        progress = eatSign() || eatCurrency();
        if (!progress && eatChar(')', paren && !closed)) progress = closed = true;
    }
    if (i != n || paren != closed) return std::nullopt;
    return negative ? -value : value;
}

std::string numberText(double d, const Regional& r) {
    if (d == 0) return "0";  // also -0
    if (!std::isfinite(d)) return std::isnan(d) ? "NaN" : (d < 0 ? "-Inf" : "Inf");
    // 15 significant digits; exponent form from 1E15 up and below 1E-4, like "%.15G".
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::general, 15);
    std::string out(buf, res.ptr);
    for (char& c : out) {
        if (c == 'e') c = 'E';
        else if (c == '.') c = r.decimal;
    }
    return out;
}

// ---- Conversions ----

int16_t CInt(const Variant& v) {
    if (v.type() == VarType::Integer) return v.asInteger();
    const double x = roundHalfEven(numberOf(v));
    if (!(x >= -32768.0 && x <= 32767.0)) fail(err::Overflow);
    return static_cast<int16_t>(x);
}

int32_t CLng(const Variant& v) {
    if (v.type() == VarType::Long) return v.asLong();
    const double x = roundHalfEven(numberOf(v));
    if (!(x >= -2147483648.0 && x <= 2147483647.0)) fail(err::Overflow);
    return static_cast<int32_t>(x);
}

double CDbl(const Variant& v) { return numberOf(v); }

bool CBool(const Variant& v) {
    if (v.isString()) {
        std::string_view s = v.asString();
        while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
        while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
        const std::string low = detail::lowerAscii(s);
        if (low == "true" || s == "#TRUE#") return true;
        if (low == "false" || s == "#FALSE#") return false;
        auto d = parseNumber(v.asString());
        if (!d) fail(err::TypeMismatch);
        return *d != 0;
    }
    return numberOf(v) != 0;
}

double CDate(const Variant& v) {
    switch (v.type()) {
        case VarType::Null: fail(err::InvalidUseOfNull);
        case VarType::Date: return v.asDate().serial;
        case VarType::String: {
            auto d = parseDate(v.asString());
            if (!d) fail(err::TypeMismatch);
            return *d;
        }
        default: {
            const double d = numberOf(v);
            if (!detail::serialInRange(d)) fail(err::Overflow);
            return d;
        }
    }
}

std::string CStr(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty: return "";
        case VarType::Null: fail(err::InvalidUseOfNull);
        case VarType::Boolean: return v.asBool() ? "True" : "False";
        case VarType::Integer: return std::to_string(v.asInteger());
        case VarType::Long: return std::to_string(v.asLong());
        case VarType::Double: return numberText(v.asDouble());
        case VarType::Date: return detail::dateText(v.asDate().serial, Regional::current());
        case VarType::String: return v.asString();
        default: fail(err::TypeMismatch);
    }
}

double Val(std::string_view text) {
    // Blanks, tabs and line feeds are skipped everywhere; only '.' is a decimal point.
    std::string s;
    for (char c : text)
        if (!isBlank(c)) s += c;
    size_t i = 0;
    const size_t n = s.size();
    if (i + 1 < n && s[i] == '&' && (s[i + 1] == 'H' || s[i + 1] == 'h' || s[i + 1] == 'O' || s[i + 1] == 'o')) {
        const int base = (s[i + 1] == 'H' || s[i + 1] == 'h') ? 16 : 8;
        i += 2;
        const size_t start = i;
        auto isDigit = [&](char c) {
            return base == 16 ? std::isxdigit(static_cast<unsigned char>(c)) != 0 : (c >= '0' && c <= '7');
        };
        while (i < n && isDigit(s[i])) ++i;
        const std::string_view digits(s.data() + start, i - start);
        // A trailing '&' asks for a Long: &HFFFF& is 65535.
        if (i < n && s[i] == '&' && !digits.empty()) {
            uint64_t u = 0;
            for (char c : digits) {
                const int d = std::isdigit(static_cast<unsigned char>(c))
                                  ? c - '0'
                                  : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
                u = u * static_cast<uint64_t>(base) + static_cast<uint64_t>(d);
                if (u > 0xFFFFFFFFull) return 0;
            }
            return static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(u)));
        }
        auto v = radixValue(digits, base);
        return v ? *v : 0;
    }
    std::string plain;
    if (i < n && (s[i] == '+' || s[i] == '-')) {
        if (s[i] == '-') plain += '-';
        ++i;
    }
    size_t digits = 0;
    while (i < n && std::isdigit(static_cast<unsigned char>(s[i]))) {
        plain += s[i++];
        ++digits;
    }
    if (i < n && s[i] == '.') {
        plain += s[i++];
        while (i < n && std::isdigit(static_cast<unsigned char>(s[i]))) {
            plain += s[i++];
            ++digits;
        }
    }
    if (digits == 0) return 0;
    if (i < n && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) readExponent(s, i, plain);
    if (plain.back() == '.') plain.pop_back();
    const double d = fromPlain(plain);
    if (!std::isfinite(d)) fail(err::Overflow);
    return d;
}

bool IsNumeric(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty:
        case VarType::Boolean:
        case VarType::Integer:
        case VarType::Long:
        case VarType::Double: return true;
        case VarType::String: return parseNumber(v.asString()).has_value();
        default: return false;
    }
}

bool IsDate(const Variant& v) {
    if (v.type() == VarType::Date) return true;
    if (v.isString()) return parseDate(v.asString()).has_value();
    return false;
}

// ---- Variant-preserving conversions: Null and Missing pass through unchanged ----

namespace {
bool passes(const Variant& v) { return v.isNull() || v.isMissing(); }
}  // namespace

Variant toInteger(const Variant& v) { return passes(v) ? v : Variant(CInt(v)); }
Variant toLong(const Variant& v) { return passes(v) ? v : Variant(CLng(v)); }
Variant toDouble(const Variant& v) { return passes(v) ? v : Variant(CDbl(v)); }
Variant toBoolean(const Variant& v) { return passes(v) ? v : Variant(CBool(v)); }
Variant toDate(const Variant& v) { return passes(v) ? v : Variant::date(CDate(v)); }
Variant toString(const Variant& v) { return passes(v) ? v : Variant(CStr(v)); }

// ---- Comparison ----

std::optional<int> compare(const Variant& a, const Variant& b) {
    if (a.isNull() || b.isNull()) return std::nullopt;
    if (a.isObject() || b.isObject() || a.isMissing() || b.isMissing()) fail(err::TypeMismatch);
    const bool aText = a.isString(), bText = b.isString();
    if (aText && bText) {
        const int c = a.asString().compare(b.asString());
        return c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    if (a.isEmpty() && bText) return b.asString().empty() ? 0 : -1;
    if (b.isEmpty() && aText) return a.asString().empty() ? 0 : 1;
    if (aText != bText) {
        // A number (or date) against text: numerically when the text reads as one, else
        // the number sorts first.
        const Variant& text = aText ? a : b;
        const Variant& other = aText ? b : a;
        std::optional<double> t = parseNumber(text.asString());
        if (!t && other.type() == VarType::Date) t = parseDate(text.asString());
        if (!t) return aText ? 1 : -1;
        const double o = numberOf(other);
        return aText ? sign(*t - o) : sign(o - *t);
    }
    const double x = numberOf(a), y = numberOf(b);
    return x < y ? -1 : (x > y ? 1 : 0);
}

// ---- Print # ----

std::string printText(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty: return "";
        case VarType::Null: return "Null";
        case VarType::Boolean: return v.asBool() ? "True" : "False";
        case VarType::Missing: return "Error 448";
        case VarType::Integer:
        case VarType::Long:
        case VarType::Double: {
            // A blank holds the place of the sign, and one follows every number.
            std::string s = CStr(v);
            if (s.front() != '-') s.insert(s.begin(), ' ');
            return s + ' ';
        }
        case VarType::Date: return CStr(v);
        case VarType::String: return v.asString();
        default: fail(err::TypeMismatch);
    }
}

}  // namespace hist::rt
