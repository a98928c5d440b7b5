#pragma once
// The data-service operations the frame uses, each on a new ClsServicioDatos that
// lives for the one call, as the record classes hold it. Connections come back
// cast to Connection: an object that is not one fails with a type mismatch.
#include <string>

#include "frame/record.hpp"

namespace hist::frame::svc {

// GetConexion(iBase, no object, 0), cast to Connection.
ConnPtr getConexion(int iBase);
// AbrirRs(iBase, sql, rs, objCn, 0): rs already created; objCn passed as it is.
void abrirRs(int iBase, const std::string& sql, RsPtr& rs, ConnPtr& objCn);
// EjecutarSql(iBase, sql, objCn).
void ejecutarSql(int iBase, const std::string& sql, ConnPtr& objCn);
std::string fechaSql(int iBase, const DateValue& d);
std::string fechaSqlLocal(const DateValue& d);
bool fechaServidor(int iBase);
std::string connectionStr(int iBase);
void connectionStrToRpt(int iBase, std::string& sDbtype, std::string& sDataSource, std::string& sCatalog,
                        std::string& sUser, std::string& sPasw);
std::string rptPath(const std::string& sRptPath);

}  // namespace hist::frame::svc
