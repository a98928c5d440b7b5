#include "frame/record.hpp"
#include "frame/record_tools.hpp"

#include <utility>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/saved_order.hpp"
#include "frame/service_calls.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::frame {

namespace {

constexpr const char* kPrimary = "Primary";
constexpr int kAffectCurrent = 1;
constexpr int kAffectAll = 3;

// The runtime's sum of a numeric value and a whole number: whole numbers stay a Long
// while they fit, anything else is a Double (a numeric text included).
Variant plus(const Variant& v, int32_t n) {
    const double sum = rt::CDbl(v) + n;
    const VarType t = v.type();
    const bool whole = t == VarType::Integer || t == VarType::Long || t == VarType::Boolean;
    if (whole && sum >= -2147483648.0 && sum <= 2147483647.0) return Variant(static_cast<int32_t>(sum));
    return Variant(sum);
}

}  // namespace

// Relays the primary recordset's MoveComplete to the class's own listeners. The
// recordset holds it weakly; the class owns it.
class MoveRelay : public ado::RecordsetEvents {
public:
    explicit MoveRelay(RecordClass& owner) : owner_(owner) {}
    void MoveComplete(ado::EventReason, ado::Recordset&) override { owner_.raiseMoveComplete(); }
    // WillChangeRecord: the class does nothing on it.

private:
    RecordClass& owner_;
};

[[noreturn]] void notAvailableYet(std::string_view className, std::string_view member) {
    raise(err::InvalidCall, std::string(className),
          std::string(member) + " is not available yet in this version of the library");
}

RecordClass::RecordClass(const ClassVariants& variants)
    : v_(variants), dataMembers_(std::make_shared<DataMembers>(this)) {}

RecordClass::~RecordClass() { detachEvents(); }

// ------------------------------------------------------------ connection, reports

std::string RecordClass::sClassName() const { return std::string(v_.table); }

void RecordClass::ensureConnection() {
    if (!cnnPrimary_) cnnPrimary_ = std::make_shared<ado::Connection>();
}

ConnPtr RecordClass::GetConnection() {
    ensureConnection();
    return cnnPrimary_;
}

void RecordClass::GetConnectionStrToRpt(std::string& sDbtype, std::string& sDataSource, std::string& sCatalog,
                                        std::string& sUser, std::string& sPasw) {
    svc::connectionStrToRpt(kBase, sDbtype, sDataSource, sCatalog, sUser, sPasw);
}

std::string RecordClass::GetConnectionStr() { return svc::connectionStr(kBase); }

std::string RecordClass::GetRptPath(std::string& sRptPath) {
    sRptPath = svc::rptPath(sRptPath);
    return sRptPath;
}

// ------------------------------------------------------------ opening

ado::Recordset& RecordClass::rs() {
    if (!adoPrimaryRS_) raise(err::ObjectNotSet, std::string(v_.className));
    return *adoPrimaryRS_;
}

std::string RecordClass::selectionDate(const DateValue& d) const {
    switch (v_.selectionDate) {
        case SelectionDate::ServerBranch:
            return svc::fechaServidor(kBase) ? svc::fechaSql(kBase, d) : svc::fechaSqlLocal(d);
        case SelectionDate::FechaSql:
            break;
    }
    return svc::fechaSql(kBase, d);
}

void RecordClass::IniciaRs(ConnPtr& cnnActive, std::string& sSelecSql, Variant& id, DateValue& dtFecha) {
    // The old recordset is released, not closed: a host that still holds it keeps it.
    detachEvents();
    adoPrimaryRS_ = std::make_shared<ado::Recordset>();
    attachEvents();

    std::string sql(v_.selectSql);
    if (sSelecSql == "seleccion") {
        sql += " Where (";
        sql += v_.selectionKey;
        sql += " = " + keyText(id) + " AND Fecha = " + selectionDate(dtFecha) + " )";
    } else if (sSelecSql == "ninguno") {
        sql += v_.noneClause;
    } else {
        sSelecSql = "todos";
    }

    switch (v_.open) {
        case OpenForm::A:
            dataMembers_->Clear();
            if (!cnnActive) cnnActive = svc::getConexion(kBase);
            svc::abrirRs(kBase, sql, adoPrimaryRS_, cnnActive);
            break;
        case OpenForm::B: {
            // The caller's connection is deliberately neither read nor written.
            ConnPtr own = svc::getConexion(kBase);
            svc::abrirRs(kBase, sql, adoPrimaryRS_, own);
            dataMembers_->Clear();
            break;
        }
    }
    cnnPrimary_ = rs().ActiveConnection();
    dataMembers_->Add(kPrimary);
    if (v_.orderOnIniciaRs) restoreSavedOrder(sSelecSql);
}

void RecordClass::Requery(std::string& sSelecSql) {
    rs().Requery(-1);
    DataMemberChanged(kPrimary);
    if (sSelecSql.empty()) sSelecSql = std::string(v_.requeryDefaultKey);
    if (v_.orderOnRequery) restoreSavedOrder(sSelecSql);
}

void RecordClass::restoreSavedOrder(const std::string& key) {
    std::string k = key;
    applySavedOrder(*this, k);
}

// ------------------------------------------------------------ position

bool RecordClass::EditingRecord() {
    try {
        return rs().EditMode() != 0;
    } catch (const Error&) {
        return false;
    }
}

int32_t RecordClass::AbsolutePosition() {
    try {
        return static_cast<int32_t>(rs().AbsolutePosition());
    } catch (const Error&) {
        return 0;
    }
}

bool RecordClass::ExistenRegistros() { return !bofAndEof(rs()); }

void RecordClass::MoveFirst() {
    auto& r = rs();
    if (!bofAndEof(r)) r.MoveFirst();
}

void RecordClass::MoveLast() {
    auto& r = rs();
    if (!bofAndEof(r)) r.MoveLast();
}

void RecordClass::MoveNext() {
    auto& r = rs();
    if (!r.Eof()) r.MoveNext();
    // The cursor never rests past the end; running off it is told by a beep.
    if (r.Eof() && r.RecordCount() >= 1) {
        Events::beep();
        r.MoveLast();
    }
}

void RecordClass::MovePrevious() {
    auto& r = rs();
    if (!r.Bof()) r.MovePrevious();
    if (r.Bof() && r.RecordCount() >= 1) {
        Events::beep();
        r.MoveFirst();
    }
}

void RecordClass::MoveToBookmark(Variant& mybookmark) {
    // Bookmarks travel as numbers: the leading numeric value of the text form.
    const double bookmark = rt::Val(rt::CStr(mybookmark));
    rs().SetBookmark(Variant(bookmark));
}

void RecordClass::FindRecord(const std::string& Criteria) {
    auto& r = rs();
    int16_t position = 0;
    switch (v_.find) {
        case FindField::Second:
            position = 1;
            break;
    }
    const std::string field = r.Fields()->Item(Variant(position))->Name();
    r.Find(field + " = '" + Criteria + "'", 0, 1, Variant::missing());
}

// ------------------------------------------------------------ editing

Variant RecordClass::addNewKey() {
    switch (v_.addNewKey) {
        case AddNewKey::NuevoCodigoPlusCount: {
            ConnPtr cn = GetConnection();
            return plus(NuevoCodigo(Variant(), cn), recordCount(rs()));
        }
        case AddNewKey::RecordCount:
            break;
    }
    return Variant(recordCount(rs()));
}

void RecordClass::AddNew(bool& bDefVal) {
    auto& r = rs();
    r.AddNew();
    if (bDefVal) r.setValue("ID", addNewKey());
}

void RecordClass::Update() {
    switch (v_.update) {
        case UpdateForm::All:
            rs().UpdateBatch(kAffectAll);
            break;
    }
}

void RecordClass::Delete() {
    switch (v_.del) {
        case DeleteForm::Batch:
            rs().Delete(kAffectCurrent);
            rs().UpdateBatch(kAffectAll);
            break;
    }
}

void RecordClass::Cancel() { rs().CancelUpdate(); }

// ------------------------------------------------------------ transactions

void RecordClass::CnnBeginTrans() {
    ensureConnection();
    cnnPrimary_->BeginTrans();
}

void RecordClass::CnnCommitTrans() {
    ensureConnection();
    cnnPrimary_->CommitTrans();
}

void RecordClass::CnnRollbackTrans() {
    ensureConnection();
    cnnPrimary_->RollbackTrans();
}

// ------------------------------------------------------------ statement members

Variant RecordClass::NuevoCodigo(const Variant& vCod, ConnPtr& objCn) {
    std::string sql = "SELECT MAX(" + std::string(v_.nuevoCodigoColumn) + ") AS Nuevo_Codigo FROM " +
                      std::string(v_.table);
    switch (v_.nuevoCodigo) {
        case NuevoCodigoForm::WithinCode:
            sql += " Where Codigo = " + keyText(vCod);
            break;
        case NuevoCodigoForm::WholeTable:
            break;
    }
    RsPtr r = open(sql, objCn);
    Variant result(int16_t{0});
    const Variant max = r->value("Nuevo_Codigo");
    if (max.isNull()) {
        result = Variant(int16_t{1});
    } else if (rt::IsNumeric(max)) {
        result = plus(max, 1);
    } else {
        result = max;
    }
    if (v_.nuevoCodigoCloses) r->Close();
    return result;
}

void RecordClass::DeleteAll(const Variant& vId, const DateValue& dtFecha, ConnPtr& cnnActive) {
    const std::string table(v_.table), key(v_.deleteAllKey);
    std::string sql;
    switch (v_.deleteAll) {
        case DeleteAllForm::NumberAndDate:
            sql = "DELETE  FROM " + table + "  WHERE (" + key + " = " + keyText(vId) + " AND " +
                  std::string(v_.deleteAllDateColumn) + " = " + fechaSql(dtFecha) + " )";
            break;
        case DeleteAllForm::NumberOneBlank:
            sql = "DELETE  FROM " + table + " WHERE (" + key + " = " + keyText(vId) + ")";
            break;
    }
    execute(sql, cnnActive);
}

void RecordClass::ConvertirSerie(const Variant& vId, const Variant& vNewId, const std::string& /*sSerie*/,
                                 ConnPtr& cnnActive) {
    // The series is accepted and not used: satellites follow their document's number.
    const std::string key(v_.convertirSerieKey);
    execute("UPDATE " + std::string(v_.table) + " SET " + key + " = " + keyText(vNewId) + " WHERE(" + key +
                " = " + keyText(vId) + ")",
            cnnActive);
}

void RecordClass::UpdateId(Variant& vId, DateValue& dFecha) {
    auto& r = rs();
    if (bofAndEof(r)) return;
    switch (v_.updateId) {
        case UpdateIdForm::Counter: {
            r.MoveFirst();
            int16_t counter = 1;
            while (!r.Eof()) {
                r.setValue(v_.updateIdParent, vId);
                r.setValue("ID", Variant(counter));
                r.setValue("Fecha", Variant(dFecha));
                r.Update();
                r.MoveNext();
                // A 16-bit counter: the row after 32,767 fails with an overflow.
                counter = rt::CInt(Variant(static_cast<int32_t>(counter) + 1));
            }
            r.MoveFirst();
            break;
        }
    }
}

// ------------------------------------------------------------ record tools

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

// ------------------------------------------------------------ data source and events

void RecordClass::Class_GetDataMember(const std::string& DataMember, Variant& Data) {
    try {
        if (DataMember == kPrimary) Data = Variant(ObjectPtr(adoPrimaryRS_));
    } catch (...) {
        // A data source never fails its consumer.
    }
}

void RecordClass::attachEvents() {
    switch (v_.events) {
        case EventForm::Event:
            if (!relay_) relay_ = std::make_shared<MoveRelay>(*this);
            adoPrimaryRS_->subscribe(relay_);
            break;
    }
}

void RecordClass::detachEvents() {
    if (adoPrimaryRS_ && relay_) adoPrimaryRS_->unsubscribe(relay_.get());
}

int RecordClass::subscribeMoveComplete(MoveCompleteHandler h) {
    moveHandlers_.emplace_back(++nextHandler_, std::move(h));
    return nextHandler_;
}

void RecordClass::unsubscribeMoveComplete(int token) {
    std::erase_if(moveHandlers_, [token](const auto& e) { return e.first == token; });
}

void RecordClass::raiseMoveComplete() {
    auto handlers = moveHandlers_;  // a handler may unsubscribe while being told
    for (auto& [token, h] : handlers) h();
}

// ------------------------------------------------------------ helpers for class members

void RecordClass::execute(const std::string& sql, ConnPtr& objCn, int iBase) {
    if (!objCn) objCn = svc::getConexion(iBase);
    svc::ejecutarSql(iBase, sql, objCn);
}

RsPtr RecordClass::open(const std::string& sql, ConnPtr& objCn, int iBase) {
    RsPtr r = std::make_shared<ado::Recordset>();
    svc::abrirRs(iBase, sql, r, objCn);
    return r;
}

std::string RecordClass::fechaSql(const DateValue& d) { return svc::fechaSql(kBase, d); }

std::string RecordClass::keyText(const Variant& v) {
    // Concatenation treats Null and Empty as the empty text.
    if (v.isNull() || v.isEmpty() || v.isMissing()) return {};
    return rt::CStr(v);
}

void RecordClass::copyIfNotNull(ado::Recordset& r, std::string_view field, std::string& target) {
    const Variant value = r.value(field);
    if (!value.isNull()) target = rt::CStr(value);
}

bool RecordClass::bofAndEof(ado::Recordset& r) { return r.Bof() && r.Eof(); }

int32_t RecordClass::recordCount(ado::Recordset& r) { return static_cast<int32_t>(r.RecordCount()); }

}  // namespace hist::frame
