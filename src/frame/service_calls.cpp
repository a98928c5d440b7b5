#include "frame/service_calls.hpp"

#include "frame/services/data_service.hpp"

namespace hist::frame::svc {

// Each operation runs on a new service object that lives for the call, as the
// record classes hold their data service.
namespace {
services::ClsServicioDatos service() { return services::ClsServicioDatos(); }
int16_t base(int iBase) { return static_cast<int16_t>(iBase); }
}  // namespace

ConnPtr getConexion(int iBase) { return service().GetConexion(base(iBase), nullptr, 0); }

void abrirRs(int iBase, const std::string& sql, RsPtr& rs, ConnPtr& objCn) {
    Variant vSql(sql);
    service().AbrirRs(base(iBase), vSql, rs, objCn, 0);
}

void ejecutarSql(int iBase, const std::string& sql, ConnPtr& objCn) {
    Variant vSql(sql);
    service().EjecutarSql(base(iBase), vSql, objCn);
}

std::string fechaSql(int iBase, const DateValue& d) { return service().FechaSql(base(iBase), Variant(d)); }

std::string fechaSqlLocal(const DateValue& d) { return service().FechaSqlLocal(Variant(d)); }

bool fechaServidor(int iBase) { return service().bFechaServidor(base(iBase)); }

std::string connectionStr(int iBase) { return service().GetConnectionStr(base(iBase)); }

void connectionStrToRpt(int iBase, std::string& sDbtype, std::string& sDataSource, std::string& sCatalog,
                        std::string& sUser, std::string& sPasw) {
    service().GetConnectionStrToRpt(base(iBase), sDbtype, sDataSource, sCatalog, sUser, sPasw);
}

std::string rptPath(const std::string& sRptPath) { return service().GetRptPath(sRptPath); }

}  // namespace hist::frame::svc
