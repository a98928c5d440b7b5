#include "tools/registration.hpp"

#include "tools/tool_members.hpp"

namespace hist::tools {

namespace {

using frame::RecordClass;
using B = ClassBuilder<RecordClass>;

// Omitted listing arguments take the listing's own defaults.
std::vector<Param> listingParams() {
    return {optRef("bDoclone", PT::Boolean, Variant(true)), optRef("sSelecSql", PT::String, Variant("todos")),
            optRef("bFilter", PT::Boolean, Variant(false))};
}

}  // namespace

const frame::MemberTable& toolMembers() {
    static const frame::MemberTable table = {
        {"SeguridadPermiso", [](B& b) { b.method("SeguridadPermiso", {inout("sId", PT::String)}, &seguridadPermiso); }},
        {"ValidaDefinedSize", [](B& b) { b.method("ValidaDefinedSize", {inout("Text")}, &validaDefinedSize); }},
        {"ValidaKey",
         [](B& b) { b.method("ValidaKey", {inout("Text"), in("KeyAscii", PT::Integer)}, &validaKey); }},
        {"ValidaValue", [](B& b) { b.method("ValidaValue", {inout("Text")}, &validaValue); }},
        {"CreateFilter",
         [](B& b) { b.method("CreateFilter", {inout("ctl"), optRef("iType", PT::String)}, &createFilter); }},
        {"GetHtmlFile", [](B& b) { b.method("GetHtmlFile", {}, &getHtmlFile); }},
        {"ToHtmlGrid",
         [](B& b) {
             std::vector<Param> p = listingParams();
             p.insert(p.begin(), inout("clColfields"));
             b.method("ToHtmlGrid", std::move(p), &toHtmlGrid);
         }},
        {"ToHtml", [](B& b) { b.method("ToHtml", listingParams(), &toHtml); }},
        {"ToTxt", [](B& b) { b.method("ToTxt", listingParams(), &toTxt); }},
    };
    return table;
}

}  // namespace hist::tools
