#include "platform/variant.hpp"

#include "platform/error.hpp"

namespace hist {

Variant Variant::integer(long i) {
    if (i < -32768 || i > 32767) raise(err::Overflow, err::SrcRuntime);
    return Variant(static_cast<int16_t>(i));
}

Variant Variant::lng(long long l) {
    if (l < INT32_MIN || l > INT32_MAX) raise(err::Overflow, err::SrcRuntime);
    return Variant(static_cast<int32_t>(l));
}

VarType Variant::type() const noexcept {
    switch (v_.index()) {
        case 0: return VarType::Empty;
        case 1: return VarType::Null;
        case 2: return VarType::Boolean;
        case 3: return VarType::Integer;
        case 4: return VarType::Long;
        case 5: return VarType::Double;
        case 6: return VarType::Date;
        case 7: return VarType::String;
        case 8: return VarType::Object;
        default: return VarType::Missing;
    }
}

bool Variant::isNumeric() const noexcept {
    auto t = type();
    return t == VarType::Integer || t == VarType::Long || t == VarType::Double || t == VarType::Boolean;
}

namespace {
template <class T>
const T& getOr13(const auto& v) {
    if (auto p = std::get_if<T>(&v)) return *p;
    raise(err::TypeMismatch, err::SrcRuntime);
}
}  // namespace

bool Variant::asBool() const { return getOr13<bool>(v_); }
int16_t Variant::asInteger() const { return getOr13<int16_t>(v_); }
int32_t Variant::asLong() const { return getOr13<int32_t>(v_); }
double Variant::asDouble() const { return getOr13<double>(v_); }
DateValue Variant::asDate() const { return getOr13<DateValue>(v_); }
const std::string& Variant::asString() const { return getOr13<std::string>(v_); }
const ObjectPtr& Variant::asObject() const { return getOr13<ObjectPtr>(v_); }

const char* typeName(VarType t) noexcept {
    switch (t) {
        case VarType::Empty: return "Empty";
        case VarType::Null: return "Null";
        case VarType::Integer: return "Integer";
        case VarType::Long: return "Long";
        case VarType::Double: return "Double";
        case VarType::Date: return "Date";
        case VarType::String: return "String";
        case VarType::Object: return "Object";
        case VarType::Missing: return "Error";
        case VarType::Boolean: return "Boolean";
    }
    return "Unknown";
}

}  // namespace hist
