// The record class's two fields, its connection and report members, opening
// (IniciaRs, Requery) and its life as a data source and event source.
#include "frame/record.hpp"

#include <optional>
#include <utility>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/service_calls.hpp"
#include "platform/error.hpp"

namespace hist::frame {

namespace {
constexpr const char* kPrimary = "Primary";
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

void RecordClass::IniciaRs(ConnPtr& cnnActive, std::string& sSelecSql, Variant& id, DateValue& dtFecha) {
    // Form D makes sure of the connection before anything else.
    if (v_.open == OpenForm::D && !cnnActive) cnnActive = svc::getConexion(kBase);
    // The old recordset is released, not closed: a host that still holds it keeps it.
    detachEvents();
    adoPrimaryRS_ = std::make_shared<ado::Recordset>();
    attachEvents();

    std::string sql = fill(v_.select, {}).text();
    bool restoresOrder = v_.orderOnIniciaRs;
    const Selection* chosen = nullptr;
    for (const Selection& s : v_.selections)
        if (s.keyword == sSelecSql) chosen = &s;
    std::optional<Statement> clause;
    if (chosen) {
        clause = fill(chosen->clause, {{"id", id}, {"dtFecha", Variant(dtFecha)}});
        sql = chosen->whole ? clause->filled() : sql + clause->filled();
        restoresOrder = restoresOrder && chosen->restoresOrder;
        if (!chosen->keyBack.empty()) sSelecSql = std::string(chosen->keyBack);
    } else {
        sSelecSql = "todos";
    }

    switch (v_.open) {
        case OpenForm::A:
            dataMembers_->Clear();
            if (!cnnActive) cnnActive = svc::getConexion(kBase);
            if (clause) clause->text();  // a refused value fails here, where the engine would
            svc::abrirRs(kBase, sql, adoPrimaryRS_, cnnActive);
            break;
        case OpenForm::B:
        case OpenForm::E: {
            // The caller's connection is deliberately neither read nor written.
            ConnPtr own = svc::getConexion(kBase);
            if (clause) clause->text();
            svc::abrirRs(kBase, sql, adoPrimaryRS_, own);
            dataMembers_->Clear();
            break;
        }
        case OpenForm::C:  // the caller's connection as it came, set or unset
        case OpenForm::D:  // the connection was filled first
            if (clause) clause->text();
            svc::abrirRs(kBase, sql, adoPrimaryRS_, cnnActive);
            dataMembers_->Clear();
            break;
    }
    cnnPrimary_ = rs().ActiveConnection();
    dataMembers_->Add(kPrimary);
    if (restoresOrder) restoreSavedOrder(sSelecSql);
}

void RecordClass::Requery(std::string& sSelecSql) {
    rs().Requery(-1);
    DataMemberChanged(kPrimary);
    if (sSelecSql.empty()) sSelecSql = std::string(v_.requeryDefaultKey);
    if (v_.orderOnRequery) restoreSavedOrder(sSelecSql);
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
    if (!v_.relaysMoveComplete) return;
    if (!relay_) relay_ = std::make_shared<MoveRelay>(*this);
    adoPrimaryRS_->subscribe(relay_);
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

const std::vector<Param>* ClassVariants::signatureOf(std::string_view member) const {
    for (const Signature& s : signatures)
        if (s.member == member) return &s.params;
    return nullptr;
}

std::vector<std::pair<std::string, std::string>> ClassVariants::templates() const {
    std::vector<std::pair<std::string, std::string>> out;
    const std::string selectText = select.withTable(table);
    out.emplace_back("IniciaRs[todos]", selectText);
    for (const Selection& s : selections)
        out.emplace_back("IniciaRs[" + std::string(s.keyword) + "]",
                         (s.whole ? std::string() : selectText) + s.clause.withTable(table));
    auto add = [&](std::string name, const Template& t) {
        if (!t.empty()) out.emplace_back(std::move(name), t.withTable(table));
    };
    add("NuevoCodigo", nuevoCodigo);
    add("DeleteAll", deleteAll);
    add("ConvertirSerie", convertirSerie);
    add("ObtenerCol", obtenerCol);
    add("CodigoLibre", codigoLibre);
    for (const NamedStatement& s : statements) add(std::string(s.name), s.text);
    return out;
}

}  // namespace hist::frame
