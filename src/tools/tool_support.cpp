#include "tools/tool_support.hpp"

#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::tools {

ControlRef::ControlRef(const Variant& ctl) {
    if (!ctl.isObject()) raise(err::ObjectRequired, err::SrcRuntime);
    obj_ = ctl.asObject();
    if (!obj_) raise(err::ObjectNotSet, err::SrcRuntime);
    control_ = std::dynamic_pointer_cast<Control>(obj_);
}

bool ControlRef::is(ControlKind k) const { return control_ ? control_->isKind(k) : k == ControlKind::Other; }

Variant ControlRef::get(std::string_view property) const {
    if (control_) return control_->get(property);
    Args none;
    return call(obj_, property, none);
}

void ControlRef::set(std::string_view property, const Variant& value) const {
    if (control_) {
        control_->set(property, value);
        return;
    }
    Args none;
    let(obj_, property, none, value);
}

Variant ControlRef::value() const {
    if (control_) return control_->value();
    const ClassInfo* ci = Registry::global().classOf(*obj_);
    if (!ci || ci->defaultMember().empty()) raise(err::NoSuchMember, err::SrcRuntime);
    Args none;
    return call(obj_, ci->defaultMember(), none);
}

ado::Recordset& primaryRecordset(frame::RecordClass& cls) {
    const auto& rs = cls.primaryRecordset();
    if (!rs) raise(err::ObjectNotSet, std::string(cls.variants().className));
    return *rs;
}

std::shared_ptr<ado::Field> boundField(frame::RecordClass& cls, const ControlRef& ctl) {
    ado::Recordset& rs = primaryRecordset(cls);
    const Variant dataField = ctl.get("DataField");
    return rs.Fields()->Item(dataField);
}

bool hasText(const Variant& v) { return !v.isNull() && !rt::CStr(v).empty(); }

int32_t textLength(const Variant& v) {
    if (v.isNull() || v.isEmpty()) return 0;
    // Characters, not bytes: continuation bytes of UTF-8 are not counted.
    int32_t n = 0;
    for (unsigned char c : rt::CStr(v))
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

bool equalsNumber(const Variant& v, int32_t n) {
    if (v.isNull()) return false;
    return rt::CDbl(v) == static_cast<double>(n);
}

std::string concatText(const Variant& v) {
    if (v.isNull() || v.isEmpty() || v.isMissing()) return {};
    return rt::CStr(v);
}

}  // namespace hist::tools
