#pragma once
// ClsServicioDatos: the data service. It owns the connections (a new open one per
// GetConexion, on the data source configured for the iBase), opens recordsets and
// runs statements, with the dialect translator between the text as the classes
// composed it and the text the engine receives, and tells every statement to the
// statement observers.
//
// ClsNumeradores (series counters, the Numeradores table) and ClsCalculoLinea
// (the article surcharge, Articulos.Recargo) work through it.
//
// Lifetimes: a new instance serves each call of a class member; nothing lasts in
// these objects between calls.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::ado {
class Connection;
class Recordset;
}  // namespace hist::ado

namespace hist::services {

using ConnPtr = std::shared_ptr<ado::Connection>;
using RsPtr = std::shared_ptr<ado::Recordset>;

// One statement as it went to the engine.
struct StatementEvent {
    std::string op;        // "AbrirRs", "EjecutarSql", or a recordset's "Requery", "UpdateBatch"
    int iBase = 0;         // the selector the connection was used with
    std::string composed;  // as the member composed it (the sent text for a recordset's own)
    std::string sent;      // as the engine received it; empty when the translator refused it
    ConnPtr connection;    // the connection that ran it
};

// The one list of statement observers of the process (the host's `sql` answer,
// --trace, tests). Observers are called on the thread that runs the statement,
// before the engine runs it, so a failing statement is told too.
class StatementObservers {
public:
    using Observer = std::function<void(const StatementEvent&)>;

    // Removes its observer when destroyed.
    class Subscription {
    public:
        Subscription() = default;
        explicit Subscription(uint64_t id) : id_(id) {}
        Subscription(Subscription&& o) noexcept : id_(o.id_) { o.id_ = 0; }
        Subscription& operator=(Subscription&& o) noexcept;
        ~Subscription();
        void reset();

    private:
        uint64_t id_ = 0;
    };

    [[nodiscard]] static Subscription subscribe(Observer observer);
    static void notify(const StatementEvent& e);
};

class ClsServicioDatos : public Object {
public:
    std::string_view typeName() const override { return "ClsServicioDatos"; }

    // The connection string of the data source.
    std::string GetConnectionStr(int16_t iBase);
    // What a report engine needs to open the archive file itself: the engine's
    // name, the file, and empty catalog, user and password.
    void GetConnectionStrToRpt(int16_t iBase, std::string& sDbtype, std::string& sDataSource, std::string& sCatalog,
                               std::string& sUser, std::string& sPasw);
    // The configured answer (true unless configured otherwise).
    bool bFechaServidor(int16_t iBase);
    // The full path of a report or document file of that name, in the configured
    // report or document folder; a path that is already absolute stays as it is.
    std::string GetRptPath(const std::string& sRptPath);
    std::string GetDocPath(const std::string& sDocPath);
    // A new open connection on the iBase's data source. objCnBase and iModo are
    // accepted for the interface's sake and change nothing.
    ConnPtr GetConexion(int16_t iBase, const ObjectPtr& objCnBase = nullptr, int16_t iModo = 0);
    // Runs a writing statement on objCn; an unset objCn receives a new connection
    // first, which the caller's variable then holds.
    void EjecutarSql(int16_t iBase, Variant& vSql, ConnPtr& objCn);
    // Opens a selection into rs (made when unset) on objCn, or, when objCn is unset,
    // on a connection of the service's own that objCn never receives.
    void AbrirRs(int16_t iBase, Variant& vSql, RsPtr& rs, ConnPtr& objCn, int16_t iModo = 0);
    // The date literal for a statement: always #YYYY-MM-DD HH:MM:SS#, a time-only
    // value on 1899-12-30.
    std::string FechaSql(int16_t iBase, const Variant& vFecha);
    std::string FechaSqlLocal(const Variant& vFecha);

    // EjecutarSql that also gives the rows the statement touched.
    long long execute(int iBase, const std::string& composed, ConnPtr& objCn);
};

class ClsNumeradores : public Object {
public:
    std::string_view typeName() const override { return "ClsNumeradores"; }

    // The three counters kept for a document table; a table with no row yet gives
    // the series' starts (0, 10000, 25000), as does a Null counter.
    void LeerSeries(std::string& sTabla, double& dSerieA, double& dSerieB, double& dSerieC, ConnPtr& objCn);
    // Stores them, creating the table's row when missing; on objCn, or on a new
    // connection that objCn then holds.
    void GrabarSeries(std::string& sTabla, double dSerieA, double dSerieB, double dSerieC, ConnPtr& objCn,
                      std::string& sVacio);
};

class ClsCalculoLinea : public Object {
public:
    std::string_view typeName() const override { return "ClsCalculoLinea"; }

    // The surcharge percentage of an article (Articulos.Recargo); 0 for an article
    // not in the table, a Null surcharge, or a line with no code.
    double GetRecargoArticulo(const Variant& vCodigo, ConnPtr& objCn);
};

// Where the counters live, and their starting values.
inline constexpr double kSerieStartA = 0, kSerieStartB = 10000, kSerieStartC = 25000;

}  // namespace hist::services
