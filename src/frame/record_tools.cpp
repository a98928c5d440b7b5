// The tool members: each calls the tool installed for it (record_tools.hpp).
#include "frame/record.hpp"
#include "frame/record_tools.hpp"

#include "platform/error.hpp"

namespace hist::frame {

[[noreturn]] void notAvailableYet(std::string_view className, std::string_view member) {
    raise(err::InvalidCall, std::string(className),
          std::string(member) + " is not available yet in this version of the library");
}


RecordTools& recordTools() {
    static RecordTools tools;
    return tools;
}

namespace {
// The installed tool of a member, or error 5 naming the member when none is.
template <class F>
const F& tool(const F& f, std::string_view className, std::string_view member) {
    if (!f) notAvailableYet(className, member);
    return f;
}
}  // namespace

bool RecordClass::SeguridadPermiso(std::string& sId) {
    return tool(recordTools().seguridadPermiso, v_.className, "SeguridadPermiso")(*this, sId);
}
int32_t RecordClass::ValidaDefinedSize(Variant& Text) {
    return tool(recordTools().validaDefinedSize, v_.className, "ValidaDefinedSize")(*this, Text);
}
bool RecordClass::ValidaKey(Variant& Text, int16_t KeyAscii) {
    return tool(recordTools().validaKey, v_.className, "ValidaKey")(*this, Text, KeyAscii);
}
bool RecordClass::ValidaValue(Variant& Text) {
    return tool(recordTools().validaValue, v_.className, "ValidaValue")(*this, Text);
}
std::string RecordClass::GetFilter(const std::string& sLlave) {
    return tool(recordTools().getFilter, v_.className, "GetFilter")(*this, sLlave);
}
void RecordClass::AplyFilter(const std::string& Criteria) {
    tool(recordTools().aplyFilter, v_.className, "AplyFilter")(*this, Criteria);
}
std::string RecordClass::CreateFilter(Variant& ctl, std::string& iType) {
    return tool(recordTools().createFilter, v_.className, "CreateFilter")(*this, ctl, iType);
}
void RecordClass::SetFilter(std::string& Criteria, std::string& sLlave) {
    tool(recordTools().setFilter, v_.className, "SetFilter")(*this, Criteria, sLlave);
}
void RecordClass::SetOrder(int16_t& Index, std::string& Mode, std::string& sLlave) {
    tool(recordTools().setOrder, v_.className, "SetOrder")(*this, Index, Mode, sLlave);
}
void RecordClass::GetOrder(int16_t& Index, std::string& Mode, const std::string& sLlave) {
    tool(recordTools().getOrder, v_.className, "GetOrder")(*this, Index, Mode, sLlave);
}
std::string RecordClass::GetHtmlFile() { return tool(recordTools().getHtmlFile, v_.className, "GetHtmlFile")(*this); }
void RecordClass::ToHtmlGrid(Variant& clColfields, bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    tool(recordTools().toHtmlGrid, v_.className, "ToHtmlGrid")(*this, clColfields, bDoclone, sSelecSql, bFilter);
}
void RecordClass::ToHtml(bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    tool(recordTools().toHtml, v_.className, "ToHtml")(*this, bDoclone, sSelecSql, bFilter);
}
void RecordClass::ToTxt(bool& bDoclone, std::string& sSelecSql, bool& bFilter) {
    tool(recordTools().toTxt, v_.className, "ToTxt")(*this, bDoclone, sSelecSql, bFilter);
}

}  // namespace hist::frame
