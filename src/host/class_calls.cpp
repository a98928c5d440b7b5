#include "host/class_calls.hpp"

#include "ado/recordset.hpp"
#include "frame/service_calls.hpp"
#include "platform/error.hpp"

namespace hist::host {

namespace {

Variant emptyOf(ParamType t) {
    switch (t) {
        case PT::String: return Variant(std::string());
        case PT::Boolean: return Variant(false);
        case PT::Integer: return Variant(int16_t{0});
        case PT::Long: return Variant(int32_t{0});
        case PT::Double: return Variant(0.0);
        case PT::Date: return Variant(DateValue{0});
        case PT::Object: return Variant::nothing();
        case PT::Variant: break;
    }
    return Variant();
}

}  // namespace

Called invoke(const ObjectPtr& obj, const std::string& member, std::map<std::string, Variant> named) {
    const ClassInfo* info = Registry::global().classOf(*obj);
    const Member* m = info ? info->find(member) : nullptr;
    if (!m) raise(err::NoSuchMember, err::SrcRuntime, std::string(obj->typeName()) + " has no " + member);
    Args args;
    for (const Param& p : m->params) {
        auto it = named.find(p.name);
        args.push_back(it != named.end() ? it->second : p.optional ? Variant::missing() : emptyOf(p.type));
    }
    while (!args.empty() && args.back().isMissing()) args.pop_back();
    Called c;
    c.result = call(obj, member, args);
    for (std::size_t i = 0; i < args.size(); ++i) c.args[m->params[i].name] = args[i];
    return c;
}

std::vector<std::vector<Variant>> rowsOf(const std::string& sql, frame::ConnPtr& cn) {
    frame::RsPtr rs = std::make_shared<ado::Recordset>();
    frame::svc::abrirRs(4, sql, rs, cn);
    std::vector<std::vector<Variant>> rows;
    auto fields = rs->Fields();
    for (; !rs->Eof(); rs->MoveNext()) {
        auto& r = rows.emplace_back();
        for (long i = 0; i < fields->Count(); ++i) r.push_back(fields->Item(Variant(static_cast<int32_t>(i)))->Value());
    }
    return rows;
}

}  // namespace hist::host
