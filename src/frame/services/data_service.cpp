#include "frame/services/data_service.hpp"

#include <charconv>
#include <filesystem>
#include <mutex>
#include <vector>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/services/config.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "sql/translator.hpp"

namespace hist::services {

// ---- Statement observers ----

namespace {

struct ObserverList {
    std::mutex mutex;
    uint64_t next = 1;
    std::vector<std::pair<uint64_t, StatementObservers::Observer>> items;
};

ObserverList& observerList() {
    static ObserverList list;
    return list;
}

void unsubscribe(uint64_t id) {
    if (id == 0) return;
    ObserverList& l = observerList();
    std::lock_guard lock(l.mutex);
    std::erase_if(l.items, [id](const auto& p) { return p.first == id; });
}

}  // namespace

StatementObservers::Subscription& StatementObservers::Subscription::operator=(Subscription&& o) noexcept {
    if (this != &o) {
        unsubscribe(id_);
        id_ = o.id_;
        o.id_ = 0;
    }
    return *this;
}

StatementObservers::Subscription::~Subscription() { unsubscribe(id_); }

void StatementObservers::Subscription::reset() {
    unsubscribe(id_);
    id_ = 0;
}

StatementObservers::Subscription StatementObservers::subscribe(Observer observer) {
    ObserverList& l = observerList();
    std::lock_guard lock(l.mutex);
    uint64_t id = l.next++;
    l.items.emplace_back(id, std::move(observer));
    return Subscription(id);
}

void StatementObservers::notify(const StatementEvent& e) {
    std::vector<Observer> copy;
    {
        ObserverList& l = observerList();
        std::lock_guard lock(l.mutex);
        copy.reserve(l.items.size());
        for (const auto& p : l.items) copy.push_back(p.second);
    }
    // Called outside the lock: an observer may subscribe or leave.
    for (const Observer& o : copy) o(e);
}

// ---- ClsServicioDatos ----

namespace {

constexpr const char* kSource = "ClsServicioDatos";

ConnPtr connectionOf(ado::Connection& cn) {
    return std::static_pointer_cast<ado::Connection>(cn.weak_from_this().lock());
}

// The recordset's own statements (Requery, UpdateBatch) reach the observers
// through the connection's hook, with the selector last used on it.
void watch(const ConnPtr& cn, int iBase) {
    cn->setStatementHook([iBase](std::string_view op, std::string_view text, ado::Connection& c) {
        StatementObservers::notify({std::string(op), iBase, std::string(text), std::string(text), connectionOf(c)});
    });
}

// Translates, telling the observers what is about to be sent (or that the
// translator refused it, with an empty sent text).
std::string translateAndTell(const char* op, int iBase, const std::string& composed, sql::StatementKind kind,
                             const ConnPtr& cn) {
    std::string sent;
    try {
        // The dialect of the engine the connection's session runs on (a closed one fails when used).
        sent = sql::translate(composed, kind, cn && cn->State() ? cn->session().dialect() : sql::Dialect::Embedded);
    } catch (...) {
        StatementObservers::notify({op, iBase, composed, std::string(), cn});
        throw;
    }
    StatementObservers::notify({op, iBase, composed, sent, cn});
    return sent;
}

std::string fileIn(const std::string& dir, const std::string& name) {
    std::filesystem::path p(name);
    if (p.is_absolute()) return name;
    return (std::filesystem::path(dir) / p).string();
}

std::string dateLiteral(const Variant& v) { return "#" + rt::isoText(rt::CDate(v)) + "#"; }

}  // namespace

std::string ClsServicioDatos::GetConnectionStr(int16_t iBase) {
    backend::DataSource ds = Configuration::current()->dataSource(iBase);
    return "Provider=" + ds.kind + ";Data Source=" + ds.path + ";Busy Timeout=" + std::to_string(ds.busyTimeoutMs);
}

void ClsServicioDatos::GetConnectionStrToRpt(int16_t iBase, std::string& sDbtype, std::string& sDataSource,
                                             std::string& sCatalog, std::string& sUser, std::string& sPasw) {
    backend::DataSource ds = Configuration::current()->dataSource(iBase);
    sDbtype = ds.kind;
    sDataSource = ds.path;
    sCatalog.clear();
    sUser.clear();
    sPasw.clear();
}

bool ClsServicioDatos::bFechaServidor(int16_t iBase) {
    auto c = Configuration::current();
    c->dataSource(iBase);  // an unknown selector fails here as everywhere
    return c->fechaServidor;
}

std::string ClsServicioDatos::GetRptPath(const std::string& sRptPath) {
    return fileIn(Configuration::current()->resolvedReportDir(), sRptPath);
}

std::string ClsServicioDatos::GetDocPath(const std::string& sDocPath) {
    return fileIn(Configuration::current()->resolvedDocumentDir(), sDocPath);
}

ConnPtr ClsServicioDatos::GetConexion(int16_t iBase, const ObjectPtr&, int16_t) {
    backend::DataSource ds = Configuration::current()->dataSource(iBase);
    auto cn = std::make_shared<ado::Connection>();
    cn->Open(ds);
    watch(cn, iBase);
    return cn;
}

long long ClsServicioDatos::execute(int iBase, const std::string& composed, ConnPtr& objCn) {
    if (!objCn) objCn = GetConexion(static_cast<int16_t>(iBase));
    watch(objCn, iBase);
    std::string sent = translateAndTell("EjecutarSql", iBase, composed, sql::StatementKind::Write, objCn);
    return objCn->Execute(sent);
}

void ClsServicioDatos::EjecutarSql(int16_t iBase, Variant& vSql, ConnPtr& objCn) {
    execute(iBase, rt::CStr(vSql), objCn);
}

void ClsServicioDatos::AbrirRs(int16_t iBase, Variant& vSql, RsPtr& rs, ConnPtr& objCn, int16_t) {
    std::string composed = rt::CStr(vSql);
    // An unset objCn stays unset: the selection runs on a connection of its own,
    // which the recordset keeps as its ActiveConnection.
    ConnPtr cn = objCn ? objCn : GetConexion(iBase);
    watch(cn, iBase);
    std::string sent = translateAndTell("AbrirRs", iBase, composed, sql::StatementKind::Read, cn);
    if (!rs) rs = std::make_shared<ado::Recordset>();
    rs->Open(sent, cn);
}

std::string ClsServicioDatos::FechaSql(int16_t, const Variant& vFecha) { return dateLiteral(vFecha); }

std::string ClsServicioDatos::FechaSqlLocal(const Variant& vFecha) { return dateLiteral(vFecha); }

// ---- ClsNumeradores ----

namespace {

constexpr int kCountersBase = 4;

std::string sqlText(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        out += c;
        if (c == '\'') out += '\'';
    }
    return out + "'";
}

// A double as a bare statement literal: point decimal, no exponent, exact.
std::string plainNumber(double d) {
    char buf[512];
    auto r = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::fixed);
    if (r.ec != std::errc()) raise(err::Overflow, "ClsNumeradores");
    return std::string(buf, r.ptr);
}

double counterOr(const Variant& v, double start) { return v.isNull() || v.isEmpty() ? start : rt::CDbl(v); }

}  // namespace

void ClsNumeradores::LeerSeries(std::string& sTabla, double& dSerieA, double& dSerieB, double& dSerieC,
                                ConnPtr& objCn) {
    Variant sql("SELECT SerieA, SerieB, SerieC FROM Numeradores WHERE Tabla = " + sqlText(sTabla));
    RsPtr rs;
    ClsServicioDatos().AbrirRs(kCountersBase, sql, rs, objCn);
    if (rs->RecordCount() > 0) {
        dSerieA = counterOr(rs->value("SerieA"), kSerieStartA);
        dSerieB = counterOr(rs->value("SerieB"), kSerieStartB);
        dSerieC = counterOr(rs->value("SerieC"), kSerieStartC);
    } else {
        dSerieA = kSerieStartA;
        dSerieB = kSerieStartB;
        dSerieC = kSerieStartC;
    }
    rs->Close();
}

void ClsNumeradores::GrabarSeries(std::string& sTabla, double dSerieA, double dSerieB, double dSerieC,
                                  ConnPtr& objCn, std::string&) {
    ClsServicioDatos service;
    if (!objCn) objCn = service.GetConexion(kCountersBase);
    long long touched = service.execute(kCountersBase,
                                        "UPDATE Numeradores SET SerieA = " + plainNumber(dSerieA) +
                                            ", SerieB = " + plainNumber(dSerieB) + ", SerieC = " +
                                            plainNumber(dSerieC) + " WHERE Tabla = " + sqlText(sTabla),
                                        objCn);
    if (touched == 0)
        service.execute(kCountersBase,
                        "INSERT INTO Numeradores ( Tabla, SerieA, SerieB, SerieC ) VALUES ( " + sqlText(sTabla) +
                            ", " + plainNumber(dSerieA) + ", " + plainNumber(dSerieB) + ", " +
                            plainNumber(dSerieC) + " )",
                        objCn);
}

// ---- ClsCalculoLinea ----

double ClsCalculoLinea::GetRecargoArticulo(const Variant& vCodigo, ConnPtr& objCn) {
    if (vCodigo.isNull() || vCodigo.isEmpty() || vCodigo.isMissing()) return 0.0;
    Variant sql("SELECT Recargo FROM Articulos WHERE Codigo = " + sqlText(rt::CStr(vCodigo)));
    RsPtr rs;
    ClsServicioDatos().AbrirRs(kCountersBase, sql, rs, objCn);
    double recargo = 0.0;
    if (rs->RecordCount() > 0) {
        Variant v = rs->value("Recargo");
        if (!v.isNull()) recargo = rt::CDbl(v);
    }
    rs->Close();
    return recargo;
}

}  // namespace hist::services
