// Saved filters and orders: per user, per class and per view, in the settings
// store. Each member opens the store afresh and keeps nothing, so two instances
// writing one key simply overwrite each other.
#include <string>

#include "frame/services/settings.hpp"
#include "platform/runtime.hpp"
#include "tools/tool_members.hpp"
#include "tools/tool_support.hpp"

namespace hist::tools {

namespace {

constexpr const char* kCriteria = "Criteria";
constexpr const char* kIndex = "IndexOrderField";
constexpr const char* kMode = "Mode";

// The store opened on a view's key.
services::ClsClaveRegistro openView(frame::RecordClass& cls, const std::string& sLlave) {
    services::ClsClaveRegistro store;
    store.AbrirClave(viewKey(cls, sLlave));
    return store;
}

void write(services::ClsClaveRegistro& store, const char* name, std::string value) {
    Variant vName(name);
    store.EscribirValor(vName, value);
}

}  // namespace

std::string viewKey(frame::RecordClass& cls, const std::string& sLlave) {
    // The store compares key names without case, so "todos" (IniciaRs) and
    // "Todos" (Requery) are one view.
    return applicationKey() + "Configuracion\\registros\\" + cls.sClassName() + "\\" + sLlave + "\\";
}

std::string getFilter(frame::RecordClass& cls, const std::string& sLlave) {
    auto store = openView(cls, sLlave);
    return store.LeerValor(Variant(kCriteria), "");
}

void setFilter(frame::RecordClass& cls, std::string& Criteria, std::string& sLlave) {
    auto store = openView(cls, sLlave);
    write(store, kCriteria, Criteria);
}

void getOrder(frame::RecordClass& cls, int16_t& Index, std::string& Mode, const std::string& sLlave) {
    auto store = openView(cls, sLlave);
    // A stored index that is no 16-bit number fails here, before Mode is read.
    Index = rt::CInt(Variant(store.LeerValor(Variant(kIndex), "0")));
    Mode = store.LeerValor(Variant(kMode), "");
}

void setOrder(frame::RecordClass& cls, int16_t& Index, std::string& Mode, std::string& sLlave) {
    ado::Recordset& rs = primaryRecordset(cls);
    // An order is saved only when it could be applied: not on an empty selection,
    // not for a position past the last field (the lookup fails first), not for a
    // sort the recordset refuses.
    if (rs.RecordCount() == 0) return;
    const std::string name = rs.Fields()->Item(Variant(Index))->Name();
    // A descending Mode brings its own leading blank.
    rs.SetSort(name + Mode);
    auto store = openView(cls, sLlave);
    write(store, kIndex, std::to_string(Index));
    write(store, kMode, Mode);
}

void aplyFilter(frame::RecordClass& cls, const std::string& Criteria) {
    // The empty text lifts any filter.
    primaryRecordset(cls).SetFilter(Variant(Criteria));
}

void restoreOrder(frame::RecordClass& cls, std::string& key) {
    int16_t index = 0;
    std::string mode;
    cls.GetOrder(index, mode, key);
    cls.SetOrder(index, mode, key);
}

}  // namespace hist::tools
