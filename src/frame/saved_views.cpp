// Saved filters and orders: per user, per class and per view, in the settings
// store. Each member opens the store afresh and keeps nothing, so two instances
// writing one key simply overwrite each other.
#include <string>

#include "ado/recordset.hpp"
#include "frame/record.hpp"
#include "frame/services/settings.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"

namespace hist::frame {

namespace {

constexpr const char* kCriteria = "Criteria";
constexpr const char* kIndex = "IndexOrderField";
constexpr const char* kMode = "Mode";

void write(services::ClsClaveRegistro& store, const char* name, std::string value) {
    Variant vName(name);
    store.EscribirValor(vName, value);
}

}  // namespace

std::string applicationKey() {
    const Application& app = application();
    return "SOFTWARE\\" + app.CompanyName() + "\\" + app.ProductName() + "\\" + std::to_string(app.Major()) + "." +
           std::to_string(app.Minor()) + "\\";
}

std::string RecordClass::viewKey(const std::string& sLlave) const {
    // The store compares key names without case, so "todos" (IniciaRs) and
    // "Todos" (Requery) are one view.
    return applicationKey() + "Configuracion\\registros\\" + sClassName() + "\\" + sLlave + "\\";
}

namespace {
// The store opened on a view's key.
services::ClsClaveRegistro openView(const RecordClass& cls, const std::string& sLlave) {
    services::ClsClaveRegistro store;
    store.AbrirClave(cls.viewKey(sLlave));
    return store;
}
}  // namespace

std::string RecordClass::GetFilter(const std::string& sLlave) {
    auto store = openView(*this, sLlave);
    return store.LeerValor(Variant(kCriteria), "");
}

void RecordClass::SetFilter(std::string& Criteria, std::string& sLlave) {
    auto store = openView(*this, sLlave);
    write(store, kCriteria, Criteria);
}

void RecordClass::GetOrder(int16_t& Index, std::string& Mode, const std::string& sLlave) {
    auto store = openView(*this, sLlave);
    // A stored index that is no 16-bit number fails here, before Mode is read.
    Index = rt::CInt(Variant(store.LeerValor(Variant(kIndex), "0")));
    Mode = store.LeerValor(Variant(kMode), "");
}

void RecordClass::SetOrder(int16_t& Index, std::string& Mode, std::string& sLlave) {
    ado::Recordset& r = rs();
    // An order is saved only when it could be applied: not on an empty selection,
    // not for a position past the last field (the lookup fails first), not for a
    // sort the recordset refuses.
    if (r.RecordCount() == 0) return;
    const std::string name = r.Fields()->Item(Variant(Index))->Name();
    // A descending Mode brings its own leading blank.
    r.SetSort(name + Mode);
    auto store = openView(*this, sLlave);
    write(store, kIndex, std::to_string(Index));
    write(store, kMode, Mode);
}

void RecordClass::AplyFilter(const std::string& Criteria) {
    // The empty text lifts any filter.
    rs().SetFilter(Variant(Criteria));
}

void RecordClass::restoreSavedOrder(const std::string& key) {
    // GetOrder then SetOrder under the selection keyword. A damaged saved order (an
    // index past the fields, a direction the recordset refuses, an index that is no
    // number) fails the opening with its own number; the description says which
    // form's saved order it was, since nothing else in the caller's hands points at
    // the settings store.
    std::string k = key;
    int16_t index = 0;
    std::string mode;
    try {
        GetOrder(index, mode, k);
        SetOrder(index, mode, k);
    } catch (const Error& e) {
        throw Error(e.number(), e.source(),
                    "The saved order of " + sClassName() + " (view \"" + key + "\") cannot be applied: " +
                        e.description());
    }
}

}  // namespace hist::frame
