#include "ado/values.hpp"

#include <cmath>
#include <limits>

#include "platform/runtime.hpp"

namespace hist::ado {

using backend::FieldType;

ValueClass classOf(FieldType t) {
    switch (t) {
    case FieldType::WChar:
    case FieldType::VarWChar:
        return ValueClass::Text;
    case FieldType::LongVarWChar:
        return ValueClass::Memo;
    case FieldType::SmallInt:
    case FieldType::Integer:
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Currency:
    case FieldType::UnsignedTinyInt:
    case FieldType::Numeric:
        return ValueClass::Number;
    case FieldType::Boolean:
        return ValueClass::Boolean;
    case FieldType::Date:
        return ValueClass::Date;
    default:
        return ValueClass::Other;
    }
}

namespace {

// Days from 1899-12-30 to a proleptic Gregorian date.
double civilSerial(int y, int m, int d) {
    y -= m <= 2;
    const int era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * static_cast<unsigned>(m + (m > 2 ? -3 : 9)) + 2) / 5 + static_cast<unsigned>(d) - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const long days1970 = static_cast<long>(era) * 146097 + static_cast<long>(doe) - 719468;
    return static_cast<double>(days1970 + 25569);
}

bool digits(std::string_view s, std::size_t at, std::size_t n, int& out) {
    if (at + n > s.size()) return false;
    int v = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const char c = s[at + k];
        if (c < '0' || c > '9') return false;
        v = v * 10 + (c - '0');
    }
    out = v;
    return true;
}

// "HH:MM[:SS]" at s[at..]; the fraction of a day.
std::optional<double> timePart(std::string_view s, std::size_t at) {
    int h, mi, se = 0;
    if (!digits(s, at, 2, h) || at + 2 >= s.size() || s[at + 2] != ':' || !digits(s, at + 3, 2, mi))
        return std::nullopt;
    std::size_t end = at + 5;
    if (end < s.size()) {
        if (s[end] != ':' || !digits(s, end + 1, 2, se)) return std::nullopt;
        end += 3;
    }
    if (end != s.size() || h > 23 || mi > 59 || se > 59) return std::nullopt;
    return (h * 3600.0 + mi * 60.0 + se) / 86400.0;
}

}  // namespace

std::optional<double> storedDateSerial(std::string_view s) {
    int y, m, d;
    if (s.size() >= 10 && s[4] == '-' && s[7] == '-' && digits(s, 0, 4, y) && digits(s, 5, 2, m) &&
        digits(s, 8, 2, d)) {
        if (m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
        const double day = civilSerial(y, m, d);
        if (s.size() == 10) return day;
        if (s[10] != ' ' && s[10] != 'T') return std::nullopt;
        const auto t = timePart(s, 11);
        if (!t) return std::nullopt;
        // Before the epoch the runtime keeps the time as a positive fraction beyond the day.
        return day < 0 ? day - *t : day + *t;
    }
    return timePart(s, 0);
}

Variant cellToVariant(const CellView& c, FieldType t) {
    if (c.tag == CellTag::Null) return Variant::null();
    switch (t) {
    case FieldType::SmallInt:
    case FieldType::UnsignedTinyInt:
        if (c.tag == CellTag::Int && c.i >= -32768 && c.i <= 32767) return Variant(static_cast<int16_t>(c.i));
        break;
    case FieldType::Integer:
        if (c.tag == CellTag::Int && c.i >= std::numeric_limits<int32_t>::min() &&
            c.i <= std::numeric_limits<int32_t>::max())
            return Variant(static_cast<int32_t>(c.i));
        break;
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Currency:
    case FieldType::Numeric:
        if (c.tag == CellTag::Int) return Variant(static_cast<double>(c.i));
        if (c.tag == CellTag::Real) return Variant(c.d);
        break;
    case FieldType::Boolean:
        if (c.tag == CellTag::Int) return Variant(c.i != 0);
        if (c.tag == CellTag::Real) return Variant(c.d != 0.0);
        break;
    case FieldType::Date:
        if (c.tag == CellTag::Text) {
            if (auto serial = storedDateSerial(c.s)) return Variant::date(*serial);
        } else if (c.tag == CellTag::Real) {
            return Variant::date(c.d);
        } else if (c.tag == CellTag::Int) {
            return Variant::date(static_cast<double>(c.i));
        }
        break;
    case FieldType::WChar:
    case FieldType::VarWChar:
    case FieldType::LongVarWChar:
        if (c.tag == CellTag::Text) return Variant(c.s);
        if (c.tag == CellTag::Int) return Variant(std::to_string(c.i));
        if (c.tag == CellTag::Real) return Variant(rt::numberText(c.d));
        break;
    default:
        break;
    }
    // A cell whose stored kind differs from the declared type shows as what it holds.
    switch (c.tag) {
    case CellTag::Int:
        if (c.i >= std::numeric_limits<int32_t>::min() && c.i <= std::numeric_limits<int32_t>::max())
            return Variant(static_cast<int32_t>(c.i));
        return Variant(static_cast<double>(c.i));
    case CellTag::Real:
        return Variant(c.d);
    case CellTag::Text:
        return Variant(c.s);
    case CellTag::Null:
        break;
    }
    return Variant::null();
}

CellView variantToView(const Variant& v) {
    CellView c;
    switch (v.type()) {
    case VarType::Boolean:
        c.tag = CellTag::Int;
        c.i = v.asBool() ? -1 : 0;
        break;
    case VarType::Integer:
        c.tag = CellTag::Int;
        c.i = v.asInteger();
        break;
    case VarType::Long:
        c.tag = CellTag::Int;
        c.i = v.asLong();
        break;
    case VarType::Double:
        c.tag = CellTag::Real;
        c.d = v.asDouble();
        break;
    case VarType::Date:
        c.tag = CellTag::Real;
        c.d = v.asDate().serial;
        break;
    case VarType::String:
        c.tag = CellTag::Text;
        c.s = v.asString();
        break;
    default:
        break;  // Null, Empty: no value
    }
    return c;
}

CellView variantToStored(const Variant& v, std::string& text) {
    if (v.type() == VarType::Date) {
        text = rt::isoText(v.asDate().serial);
        CellView c;
        c.tag = CellTag::Text;
        c.s = text;
        return c;
    }
    return variantToView(v);
}

Variant cellToBound(const CellView& c, FieldType& type) {
    switch (c.tag) {
    case CellTag::Int:
        if (c.i >= std::numeric_limits<int32_t>::min() && c.i <= std::numeric_limits<int32_t>::max()) {
            type = FieldType::Integer;
            return Variant(static_cast<int32_t>(c.i));
        }
        type = FieldType::Double;
        return Variant(static_cast<double>(c.i));
    case CellTag::Real:
        type = FieldType::Double;
        return Variant(c.d);
    case CellTag::Text:
        type = FieldType::LongVarWChar;
        return Variant(c.s);
    case CellTag::Null:
        break;
    }
    type = FieldType::VarWChar;
    return Variant::null();
}

Variant coerceToField(const Variant& v, FieldType t) {
    if (v.isNull() || v.isEmpty()) return v;
    switch (t) {
    case FieldType::SmallInt:
    case FieldType::UnsignedTinyInt:
        return rt::toInteger(v);
    case FieldType::Integer:
        return rt::toLong(v);
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Currency:
    case FieldType::Numeric:
        return rt::toDouble(v);
    case FieldType::Boolean:
        return rt::toBoolean(v);
    case FieldType::Date:
        return rt::toDate(v);
    case FieldType::WChar:
    case FieldType::VarWChar:
    case FieldType::LongVarWChar:
        return rt::toString(v);
    default:
        if (v.isObject()) return rt::toString(v);  // raises the runtime's type mismatch
        return v;
    }
}

std::optional<double> numericOf(const CellView& c, ValueClass cls) {
    switch (c.tag) {
    case CellTag::Null:
        return std::nullopt;
    case CellTag::Int:
        return static_cast<double>(c.i);
    case CellTag::Real:
        return c.d;
    case CellTag::Text:
        if (cls == ValueClass::Date) return storedDateSerial(c.s);
        return rt::parseNumber(c.s);
    }
    return std::nullopt;
}

std::string_view textOf(const CellView& c, std::string& buf) {
    switch (c.tag) {
    case CellTag::Text:
        return c.s;
    case CellTag::Int:
        buf = std::to_string(c.i);
        return buf;
    case CellTag::Real:
        buf = rt::numberText(c.d);
        return buf;
    case CellTag::Null:
        break;
    }
    return {};
}

}  // namespace hist::ado
