#include "backends/stored.hpp"

#include <cmath>

#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::backend::detail {

namespace {

void typeAs(ColumnMeta& m, FieldType t, int precision, long size) {
    m.type = t;
    m.precision = precision;
    m.definedSize = size;
}

StoredValue integer(int64_t i) {
    StoredValue s;
    s.kind = StoredValue::Kind::Int;
    s.i = i;
    return s;
}
StoredValue real(double d) {
    StoredValue s;
    s.kind = StoredValue::Kind::Real;
    s.d = d;
    return s;
}
StoredValue text(std::string t) {
    StoredValue s;
    s.kind = StoredValue::Kind::Text;
    s.text = std::move(t);
    return s;
}

}  // namespace

void typeFromCatalog(ColumnMeta& m, const sql::Column& c) {
    typeAs(m, static_cast<FieldType>(c.adoType), c.precision, c.definedSize);
}

void typeComputed(ColumnMeta& m, ValueKind k) {
    switch (k) {
        case ValueKind::Integer: typeAs(m, FieldType::Integer, 10, 4); return;
        case ValueKind::Real: typeAs(m, FieldType::Double, 15, 8); return;
        case ValueKind::Text: typeAs(m, FieldType::VarWChar, 255, 255); return;
    }
}

void typeRowId(ColumnMeta& m, const std::string& table, const std::string& column) {
    m.baseTable = table;
    m.baseColumn = column;
    typeAs(m, FieldType::Integer, 19, 8);
    m.hiddenRowId = true;
}

bool typeFromItem(ColumnMeta& m, const sql::SelectionShape& shape, size_t item, size_t shownColumns) {
    if (shownColumns != shape.items.size() || shape.hasStar) return false;
    bool isCount = false;
    const sql::Column* col = shape.itemSourceColumn(item, &isCount);
    if (isCount) {
        typeComputed(m, ValueKind::Integer);
        return true;
    }
    if (!col) return false;
    typeFromCatalog(m, *col);
    return true;
}

StoredValue storedValue(const Variant& v, FieldType type) {
    if (v.isNull() || v.isEmpty() || v.isMissing()) return {};
    try {
        switch (type) {
            case FieldType::Date: {
                double serial = v.type() == VarType::String
                                    ? rt::CDate(v)
                                    : rt::CDbl(v.type() == VarType::Date ? Variant(v.asDate().serial) : v);
                return text(rt::isoText(serial));
            }
            case FieldType::Boolean: return integer(rt::CBool(v) ? -1 : 0);
            case FieldType::SmallInt:
            case FieldType::UnsignedTinyInt: return integer(rt::CInt(v));
            case FieldType::Integer:
                if (v.type() == VarType::Double) {
                    double d = v.asDouble();
                    if (d == std::floor(d) && std::fabs(d) < 9.2e18) return integer(static_cast<int64_t>(d));
                }
                return integer(rt::CLng(v));
            case FieldType::Single:
            case FieldType::Double:
            case FieldType::Currency:
            case FieldType::Numeric: return real(rt::CDbl(v));
            case FieldType::WChar:
            case FieldType::VarWChar:
            case FieldType::LongVarWChar:
            case FieldType::LongVarBinary: return text(v.isString() ? v.asString() : rt::CStr(v));
            case FieldType::Empty: break;
        }
        // No type given: the value's own kind.
        switch (v.type()) {
            case VarType::Boolean: return integer(v.asBool() ? -1 : 0);
            case VarType::Integer: return integer(v.asInteger());
            case VarType::Long: return integer(v.asLong());
            case VarType::Double: return real(v.asDouble());
            case VarType::Date: return text(rt::isoText(v.asDate().serial));
            default: return text(rt::CStr(v));
        }
    } catch (const Error& e) {
        if (e.number() == err::TypeMismatch)
            throw Error(err::SqlTypeMismatch, err::SrcSql, "Data type mismatch in criteria expression.");
        throw;
    }
}

}  // namespace hist::backend::detail
