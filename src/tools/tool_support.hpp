#pragma once
// What the record tools share: a form control read by kind and property name, the
// class's primary recordset, the field a control is bound to, and the runtime's tests
// on a control's value.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ado/recordset.hpp"
#include "frame/record.hpp"
#include "platform/host_objects.hpp"
#include "platform/variant.hpp"

namespace hist::tools {

// A control as the tools see it. A platform Control answers its kind and its
// properties directly; any other object is reached by late binding (its kind is
// none of the named ones, and its default property is its class's default member).
// A value that is no object is error 424, an unset object 91.
class ControlRef {
public:
    explicit ControlRef(const Variant& ctl);

    bool is(ControlKind k) const;
    Variant get(std::string_view property) const;
    void set(std::string_view property, const Variant& value) const;
    // The control's default property.
    Variant value() const;

private:
    ObjectPtr obj_;
    std::shared_ptr<Control> control_;
};

// The class's primary recordset; error 91 with the class's name as source while unset.
ado::Recordset& primaryRecordset(frame::RecordClass& cls);

// Fields(ctl.DataField) of the class's primary recordset: 438 when the control has
// no "DataField", 3265 when the recordset has no such field.
std::shared_ptr<ado::Field> boundField(frame::RecordClass& cls, const ControlRef& ctl);

using frame::applicationKey;

// The runtime's Len(v) <> 0: Null has no length, anything else the length of its text.
bool hasText(const Variant& v);
// The runtime's Len(v) as the validation compares it; Null counts as no text.
int32_t textLength(const Variant& v);
// The runtime's `v = n` against a whole number: Null is never equal; a text that is
// not numeric is error 13.
bool equalsNumber(const Variant& v, int32_t n);
// The text a value adds to a concatenation: Null and Empty add nothing.
std::string concatText(const Variant& v);

}  // namespace hist::tools
