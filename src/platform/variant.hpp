#pragma once
// Variant: the value currency of the interface. Its kinds and their numbers are
// the runtime's VarType codes. A Date is a double of days since 1899-12-30 with
// the time of day as the fraction. Strings are UTF-8. Missing is an optional
// argument the caller left out (it is not Empty).
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "platform/object.hpp"

namespace hist {

enum class VarType : int {
    Empty = 0,
    Null = 1,
    Integer = 2,
    Long = 3,
    Double = 5,
    Date = 7,
    String = 8,
    Object = 9,
    Missing = 10,  // the runtime's error-typed "parameter not found" value
    Boolean = 11,
};

struct DateValue {
    double serial = 0.0;
    friend bool operator==(const DateValue&, const DateValue&) = default;
};

class Variant {
public:
    struct EmptyTag { friend bool operator==(EmptyTag, EmptyTag) { return true; } };
    struct NullTag { friend bool operator==(NullTag, NullTag) { return true; } };
    struct MissingTag { friend bool operator==(MissingTag, MissingTag) { return true; } };

    Variant() = default;  // Empty
    Variant(bool b) : v_(b) {}
    Variant(int16_t i) : v_(i) {}
    Variant(int32_t l) : v_(l) {}
    Variant(double d) : v_(d) {}
    Variant(DateValue d) : v_(d) {}
    Variant(std::string s) : v_(std::move(s)) {}
    Variant(const char* s) : v_(std::string(s)) {}
    Variant(std::string_view s) : v_(std::string(s)) {}
    Variant(ObjectPtr o) : v_(std::move(o)) {}
    template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T>>>
    Variant(std::shared_ptr<T> o) : v_(ObjectPtr(std::move(o))) {}

    static Variant null() { Variant v; v.v_ = NullTag{}; return v; }
    static Variant missing() { Variant v; v.v_ = MissingTag{}; return v; }
    static Variant nothing() { return Variant(ObjectPtr{}); }
    static Variant integer(long i);  // Integer; error 6 outside -32768..32767
    static Variant lng(long long l); // Long; error 6 outside the 32-bit range
    static Variant date(double serial) { return Variant(DateValue{serial}); }

    VarType type() const noexcept;
    bool isEmpty() const noexcept { return std::holds_alternative<EmptyTag>(v_); }
    bool isNull() const noexcept { return std::holds_alternative<NullTag>(v_); }
    bool isMissing() const noexcept { return std::holds_alternative<MissingTag>(v_); }
    bool isObject() const noexcept { return std::holds_alternative<ObjectPtr>(v_); }
    // An object kind holding no object.
    bool isNothing() const noexcept { return isObject() && !std::get<ObjectPtr>(v_); }
    bool isString() const noexcept { return std::holds_alternative<std::string>(v_); }
    bool isNumeric() const noexcept;  // Integer, Long, Double, Boolean (not Date)

    // Raw access; each throws error 13 when the kind differs.
    bool asBool() const;
    int16_t asInteger() const;
    int32_t asLong() const;
    double asDouble() const;
    DateValue asDate() const;
    const std::string& asString() const;
    const ObjectPtr& asObject() const;
    template <class T>
    std::shared_ptr<T> objectAs() const {  // null when no object or another class
        return isObject() ? std::dynamic_pointer_cast<T>(std::get<ObjectPtr>(v_)) : nullptr;
    }

    // Exact identity of kind and value (not the runtime's comparison, see runtime.hpp).
    friend bool operator==(const Variant&, const Variant&) = default;

private:
    std::variant<EmptyTag, NullTag, bool, int16_t, int32_t, double, DateValue, std::string, ObjectPtr,
                 MissingTag>
        v_;
};

// VarType's name as TypeName gives it ("Empty", "Null", "Integer", "Long", ...).
const char* typeName(VarType t) noexcept;

}  // namespace hist
