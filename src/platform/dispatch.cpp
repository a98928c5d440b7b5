#include "platform/dispatch.hpp"
#include "platform/text.hpp"

#include <algorithm>

#include "platform/collection.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"

namespace hist {

Param in(std::string name, ParamType type) { return Param{std::move(name), type, false, false, Variant::missing()}; }
Param inout(std::string name, ParamType type) { return Param{std::move(name), type, true, false, Variant::missing()}; }
Param opt(std::string name, ParamType type, Variant def) {
    return Param{std::move(name), type, false, true, std::move(def)};
}
Param optRef(std::string name, ParamType type, Variant def) {
    return Param{std::move(name), type, true, true, std::move(def)};
}
Param optObj(std::string name) { return Param{std::move(name), PT::Object, true, true, Variant::nothing()}; }

std::string foldName(std::string_view name) { return text::fold(name); }

// ---- ClassInfo, Registry ----

ClassInfo::ClassInfo(std::string name, std::function<ObjectPtr()> factory)
    : name_(std::move(name)), factory_(std::move(factory)) {}

ObjectPtr ClassInfo::create() const {
    if (!factory_) raise(err::CannotCreateObject, err::SrcRuntime, "Cannot create an object of class " + name_);
    return factory_();
}

Member& ClassInfo::add(Member m) {
    std::string key = foldName(m.name);
    if (auto it = index_.find(key); it != index_.end()) {
        members_[it->second] = std::move(m);
        return members_[it->second];
    }
    index_.emplace(std::move(key), members_.size());
    members_.push_back(std::move(m));
    return members_.back();
}

const Member* ClassInfo::find(std::string_view name) const {
    auto it = index_.find(foldName(name));
    return it == index_.end() ? nullptr : &members_[it->second];
}

std::vector<std::string> ClassInfo::listedNames() const {
    std::vector<std::string> out;
    for (const auto& m : members_)
        if (m.listed) out.push_back(m.name);
    return out;
}

Registry& Registry::global() {
    static Registry r;
    return r;
}

ClassInfo& Registry::add(std::string name, std::function<ObjectPtr()> factory) {
    std::string key = foldName(name);
    auto info = std::make_unique<ClassInfo>(std::move(name), std::move(factory));
    if (auto it = index_.find(key); it != index_.end()) {
        classes_[it->second] = std::move(info);
        return *classes_[it->second];
    }
    index_.emplace(std::move(key), classes_.size());
    classes_.push_back(std::move(info));
    return *classes_.back();
}

const ClassInfo* Registry::find(std::string_view name) const {
    auto it = index_.find(foldName(name));
    return it == index_.end() ? nullptr : classes_[it->second].get();
}

ObjectPtr Registry::create(std::string_view name) const {
    const ClassInfo* ci = find(name);
    if (!ci) raise(err::CannotCreateObject, err::SrcRuntime, "Unknown class " + std::string(name));
    return ci->create();
}

std::vector<std::string> Registry::classNames() const {
    std::vector<std::string> out;
    for (const auto& c : classes_) out.push_back(c->name());
    return out;
}

// ---- Conversions ----

Variant convertTo(const Variant& v, ParamType type) {
    // A typed parameter cannot hold Null; the runtime's conversions let it pass.
    if (v.isNull() && type != PT::Variant && type != PT::Object) raise(err::InvalidUseOfNull, err::SrcRuntime);
    switch (type) {
        case PT::Variant: return v;
        case PT::String: return v.isString() ? v : rt::toString(v);
        case PT::Boolean: return v.type() == VarType::Boolean ? v : rt::toBoolean(v);
        case PT::Integer: return v.type() == VarType::Integer ? v : rt::toInteger(v);
        case PT::Long: return v.type() == VarType::Long ? v : rt::toLong(v);
        case PT::Double: return v.type() == VarType::Double ? v : rt::toDouble(v);
        case PT::Date: return v.type() == VarType::Date ? v : rt::toDate(v);
        case PT::Object:
            if (!v.isObject()) raise(err::TypeMismatch, err::SrcRuntime);
            return v;
    }
    return v;
}

Variant zeroOf(ParamType type) {
    switch (type) {
        case PT::Variant: return Variant();
        case PT::String: return Variant(std::string());
        case PT::Boolean: return Variant(false);
        case PT::Integer: return Variant(int16_t{0});
        case PT::Long: return Variant(int32_t{0});
        case PT::Double: return Variant(0.0);
        case PT::Date: return Variant::date(0.0);
        case PT::Object: return Variant::nothing();
    }
    return Variant();
}

namespace dispatch_detail {
std::string Binder<std::string>::load(const Variant& v) { return v.isString() ? v.asString() : rt::CStr(v); }
bool Binder<bool>::load(const Variant& v) { return v.type() == VarType::Boolean ? v.asBool() : rt::CBool(v); }
int16_t Binder<int16_t>::load(const Variant& v) {
    return v.type() == VarType::Integer ? v.asInteger() : rt::CInt(v);
}
int32_t Binder<int32_t>::load(const Variant& v) { return v.type() == VarType::Long ? v.asLong() : rt::CLng(v); }
double Binder<double>::load(const Variant& v) { return v.type() == VarType::Double ? v.asDouble() : rt::CDbl(v); }
DateValue Binder<DateValue>::load(const Variant& v) {
    return v.type() == VarType::Date ? v.asDate() : DateValue{rt::CDate(v)};
}
ObjectPtr Binder<ObjectPtr>::load(const Variant& v) {
    if (!v.isObject()) raise(err::TypeMismatch, err::SrcRuntime);
    return v.asObject();
}
}  // namespace dispatch_detail

// ---- Calling ----

namespace {

[[noreturn]] void wrongCount() {
    raise(err::WrongArgumentCount, err::SrcRuntime, err::WrongArgumentCountText);
}

// Converts the caller's arguments to the member's declared parameters.
Args prepare(const Member& m, const Args& args) {
    Args work(m.params.size());
    for (size_t i = 0; i < m.params.size(); ++i) {
        const Param& p = m.params[i];
        const bool omitted = i >= args.size() || args[i].isMissing();
        if (omitted) {
            if (!p.optional)
                raise(err::ArgumentNotOptional, err::SrcRuntime,
                      std::string(err::standardDescription(err::ArgumentNotOptional)) + ": " + p.name);
            if (!p.defaultValue.isMissing()) work[i] = convertTo(p.defaultValue, p.type);
            else work[i] = p.type == PT::Variant ? Variant::missing() : zeroOf(p.type);
        } else {
            work[i] = convertTo(args[i], p.type);
        }
    }
    return work;
}

// Writes what the member left in its by-reference parameters back to the caller's
// arguments (those the caller supplied).
void writeBack(const Member& m, const Args& work, Args& args) {
    for (size_t i = 0; i < args.size() && i < m.params.size(); ++i)
        if (m.params[i].byRef && !args[i].isMissing()) args[i] = work[i];
}

Variant invokeMember(Object& obj, const Member& m, Args& args) {
    if (args.size() > m.params.size()) {
        // A parameterless property called with arguments applies its result's default
        // member: rs.Fields("Cerrada") is rs.Fields.Item("Cerrada").
        if (m.params.empty() && m.returnsValue) {
            Args none;
            Variant r = m.invoke(obj, none);
            if (r.isObject() && !r.isNothing()) {
                const ClassInfo* ci = Registry::global().classOf(*r.asObject());
                if (ci && !ci->defaultMember().empty()) return call(*r.asObject(), ci->defaultMember(), args);
            }
        }
        wrongCount();
    }
    Args work = prepare(m, args);
    try {
        Variant r = m.invoke(obj, work);
        writeBack(m, work, args);
        return m.returnsValue ? r : Variant();
    } catch (...) {
        writeBack(m, work, args);
        throw;
    }
}

}  // namespace

const Member* findMember(const Object& obj, std::string_view member) {
    const ClassInfo* ci = Registry::global().classOf(obj);
    return ci ? ci->find(member) : nullptr;
}

namespace {

thread_local CallSite outermost;
thread_local int callDepth = 0;

// Names the outermost call while it runs; inner calls leave it as it is.
class CallScope {
public:
    CallScope(const Object& obj, const Member& m) {
        if (callDepth++ == 0) outermost = {std::string(obj.typeName()), m.name};
    }
    ~CallScope() {
        if (--callDepth == 0) outermost = {};
    }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;
};

}  // namespace

const CallSite& outermostCall() { return outermost; }

Variant call(Object& obj, std::string_view member, Args& args) {
    const Member* m = findMember(obj, member);
    if (!m) raise(err::NoSuchMember, err::SrcRuntime);
    CallScope scope(obj, *m);
    return invokeMember(obj, *m, args);
}

Variant call(const ObjectPtr& obj, std::string_view member, Args& args) {
    if (!obj) raise(err::ObjectNotSet, err::SrcRuntime);
    return call(*obj, member, args);
}

Variant call(const Variant& obj, std::string_view member, Args& args) {
    if (!obj.isObject()) raise(err::ObjectRequired, err::SrcRuntime);
    return call(obj.asObject(), member, args);
}

void let(Object& obj, std::string_view member, Args& args, const Variant& value) {
    const Member* m = findMember(obj, member);
    if (!m) raise(err::NoSuchMember, err::SrcRuntime);
    if (!m->let || args.size() > m->params.size()) wrongCount();
    Args work = prepare(*m, args);
    m->let(obj, work, convertTo(value, m->valueType));
}

void let(const ObjectPtr& obj, std::string_view member, Args& args, const Variant& value) {
    if (!obj) raise(err::ObjectNotSet, err::SrcRuntime);
    let(*obj, member, args, value);
}

// ---- The runtime's functions by name ----

namespace {
class RuntimeObject : public Object {
public:
    std::string_view typeName() const override { return "Runtime"; }
};
}  // namespace

void registerPlatformClasses(Registry& r) {
    auto rtc = r.define<RuntimeObject>("Runtime");
    rtc.method("CInt", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::CInt(v); });
    rtc.method("CLng", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::CLng(v); });
    rtc.method("CDbl", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::CDbl(v); });
    rtc.method("CBool", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::CBool(v); });
    rtc.method("CDate", {in("Expression")},
               [](RuntimeObject&, const Variant& v) { return DateValue{rt::CDate(v)}; });
    rtc.method("CStr", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::CStr(v); });
    rtc.method("Val", {in("String", PT::String)},
               [](RuntimeObject&, const std::string& s) { return rt::Val(s); });
    rtc.method("IsNumeric", {in("Expression")},
               [](RuntimeObject&, const Variant& v) { return rt::IsNumeric(v); });
    rtc.method("IsDate", {in("Expression")}, [](RuntimeObject&, const Variant& v) { return rt::IsDate(v); });
    rtc.method("Format", {in("Expression"), opt("Format", PT::String)},
               [](RuntimeObject&, const Variant& v, const std::string& mask) { return rt::Format(v, mask); });

    registerCollectionClass(r);
    registerHostObjectClasses(r);
}

}  // namespace hist
