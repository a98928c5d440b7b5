#include "documents/document_members.hpp"

#include <array>
#include <string>

#include "ado/recordset.hpp"
#include "frame/services/data_service.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "tools/tool_support.hpp"

namespace hist::documents {

using frame::NamedStatement;
using frame::Template;

namespace {

// ------------------------------------------------------------ the statements

constexpr NamedStatement kGetState{"GetState", "SELECT Numero, Estado FROM {table} WHERE Numero = {vId}"};
constexpr std::array<NamedStatement, 3> kSeriesMaxima{{
    {"UpdateNumerador[A]", "SELECT MAX(Numero) AS Nuevo_Codigo FROM {table} WHERE Serie = 'A'"},
    {"UpdateNumerador[B]", "SELECT MAX(Numero) AS Nuevo_Codigo FROM {table} WHERE Serie = 'B'"},
    {"UpdateNumerador[C]", "SELECT MAX(Numero) AS Nuevo_Codigo FROM {table} WHERE Serie = 'C'"},
}};
constexpr NamedStatement kCerrarImpresionAuto{"CerrarImpresionAuto", "UPDATE {table} SET Impreso = True"};
constexpr NamedStatement kEstaFacturado{"EstaFacturado", "SELECT Numero, Facturado FROM {table} WHERE Numero = {vId}"};
constexpr NamedStatement kEstaCerrada{"EstaFacturado", "SELECT Numero, Cerrada FROM {table} WHERE Numero = {vId}"};

// The statements that differ by class, as each sends them. The customer orders and
// delivery notes write their invoicing marks into the live tables, not the archive.
struct ClassStatement {
    std::string_view className;
    NamedStatement statement;
};
constexpr std::array<ClassStatement, 22> kByClass{{
    {"ClsOrdenes", {"ConvertirSerieSinNum", "UPDATE {table} SET  Serie = '{sSerie}' WHERE(Numero = {vId})"}},
    {"ClsOrdenes",
     {"FacturarDocumento",
      "UPDATE  {table} SET Cerrada = '{sCerrar}', Facturado = {iFacturado} , Doc_F = {vIdFac}, Fecha_Cierre = "
      "'{T:dtFecha}' , Fecha_Entrega = '{T:dtFechaNew}' WHERE(Numero = {vId})"}},
    {"ClsOrdenes",
     {"CambiarDocumento", "UPDATE {table}  SET Doc_F = {vIdFac} WHERE(Doc_F = {vId} And Facturado = {iFacturado} )"}},
    {"ClsOrdenes",
     {"CancelarFacturacion",
      "UPDATE  {table} SET Facturado = 0 , Doc_F = 0 WHERE(Numero = {vId} and Facturado = {iFacturado})"}},
    {"ClsOrdenes", {"ActualizarEuros[1]", "UPDATE {table} SET Base = 0 Where (((Base) Is Null))"}},
    {"ClsOrdenes", {"ActualizarEuros[2]", "UPDATE {table} SET Gastos = 0 Where (((Gastos) Is Null))"}},
    {"ClsOrdenes",
     {"ActualizarEuros[3]",
      "UPDATE  {table} SET Base = Format([Base]/'166,386','Currency'), Gastos = "
      "Format([Gastos]/'166,386','Currency'), Importe_Impuestos = Format([Importe_Impuestos]/'166,386','Currency'), "
      "Importe_Recargo = Format([Importe_Recargo]/'166,386','Currency'), Importe_Irpf = "
      "Format([Importe_Irpf]/'166,386','Currency'), Total = Format([Total]/'166,386','Currency');"}},
    {"ClsPedidosCli", {"ConvertirSerieSinNum", "UPDATE {table} SET Serie = '{sSerie}' WHERE(Numero = {vId})"}},
    {"ClsPedidosCli",
     {"FacturarDocumento",
      "UPDATE  Pedidos_Clientes  SET Facturado = {iFacturado} , Doc_F = {vIdFac} WHERE(Numero = {vId})"}},
    {"ClsPedidosCli",
     {"CambiarDocumento", "UPDATE {table}  SET Doc_F = {vIdFac} WHERE(Doc_F = {vId} And Facturado = {iFacturado} )"}},
    {"ClsPedidosCli",
     {"CancelarFacturacion",
      "UPDATE  Pedidos_Clientes SET Facturado = 0 , Doc_F = 0 WHERE(Numero = {vId} and Facturado = {iFacturado})"}},
    {"ClsPedidosCli",
     {"CancelarFacturas",
      "UPDATE  Pedidos_Clientes SET Facturado = 0 , Doc_F = 0 WHERE(Doc_F = {vId} and Facturado = {iFacturado})"}},
    {"ClsAlbaranes", {"ConvertirSerieSinNum", "UPDATE {table} SET  Serie = '{sSerie}' WHERE(Numero = {vId})"}},
    {"ClsAlbaranes",
     {"FacturarDocumento", "UPDATE  Albaranes  SET Facturado = {iFacturado} , Doc_F = {vIdFac} WHERE(Numero = {vId})"}},
    {"ClsAlbaranes",
     {"CancelarFacturacion",
      "UPDATE  Albaranes SET Facturado = 0 , Doc_F = 0 WHERE(Doc_F = {vId} and Facturado = {iFacturado})"}},
    {"ClsAlbaranes",
     {"CancelarFactura",
      "UPDATE  Albaranes SET Facturado = 0 , Doc_F = 0 WHERE(Numero = {vId} and Facturado = {iFacturado})"}},
    {"ClsOrdenesLineas",
     {"FacturarDocumento",
      "UPDATE  {table} SET Facturado = {iFacturado} , Doc_F = {vIdFac} Where ((ID = {vId}) And  (Numero = {vNum}))"}},
    {"ClsOrdenesLineas",
     {"CambiarDocumento", "UPDATE {table}  SET Doc_F = {vIdFac} WHERE(Doc_F = {vId} And Facturado = {iFacturado} )"}},
    {"ClsOrdenesLineas",
     {"CancelarFacturacion",
      "UPDATE  {table} SET Facturado = 0 , Doc_F = 0 WHERE(Doc_F = {vId} and Facturado = {iFacturado})"}},
    {"ClsOrdenesLineas", {"ActualizarEuros[1]", "UPDATE {table} SET Precio = 0 Where (((Precio) Is Null))"}},
    {"ClsOrdenesLineas", {"ActualizarEuros[2]", "UPDATE {table} SET Importe = 0 Where (((Importe) Is Null))"}},
    {"ClsOrdenesLineas",
     {"ActualizarEuros[3]",
      "UPDATE  {table} SET Precio = Format([Precio]/'166,386','Currency'), Importe = "
      "Format([Importe]/'166,386','Currency');"}},
}};

// ------------------------------------------------------------ reading the current row

Variant field(RecordClass& cls, std::string_view name) { return tools::primaryRecordset(cls).value(name); }

// A comparison with a Null field is Null, and its conversion to a boolean fails 94.
Variant notNull(Variant v) {
    if (v.isNull()) raise(err::InvalidUseOfNull, err::SrcRuntime);
    return v;
}

// ------------------------------------------------------------ statements run by name

void run(RecordClass& cls, std::string_view name, frame::HoleValues values, ConnPtr& cnnActive) {
    RecordClass::executeStatement(cls.ownStatement(name, values), cnnActive);
}

services::RsPtr select(RecordClass& cls, std::string_view name, const Variant& vId, ConnPtr& objCn) {
    return RecordClass::openStatement(cls.ownStatement(name, {{"vId", vId}}), objCn);
}

std::string tableName(RecordClass& cls) { return std::string(cls.variants().table); }

// ------------------------------------------------------------ members over the current row

double iQDocumentoF(RecordClass& cls) { return rt::CDbl(field(cls, "Doc_F")); }
double iQFactura(RecordClass& cls) { return rt::CDbl(field(cls, "Factura")); }
int32_t bQPresupuesto(RecordClass& cls) { return rt::CLng(field(cls, "Doc_E")); }
std::string sQAlmacen(RecordClass& cls) { return rt::CStr(field(cls, "Almacén")); }
DateValue dtFecha(RecordClass& cls) { return DateValue{rt::CDate(field(cls, "Fecha"))}; }

Variant iQDocumento(RecordClass& cls) {
    const Variant v = field(cls, "Doc_E");
    return cls.variants().document.sourceIsLong ? Variant(rt::CLng(v)) : Variant(rt::CDbl(v));
}

// ------------------------------------------------------------ invoicing links

void FacturarDocumento(RecordClass& cls, const Variant& vId, const Variant& vNum, int16_t iFacturado,
                       const Variant& vIdFac, const std::string& sCerrar, const DateValue& dtFecha,
                       const DateValue& dtFechaNew, ConnPtr& cnnActive) {
    run(cls, "FacturarDocumento",
        {{"vId", vId},
         {"vNum", vNum},
         {"iFacturado", Variant(iFacturado)},
         {"vIdFac", vIdFac},
         {"sCerrar", Variant(sCerrar)},
         {"dtFecha", Variant(dtFecha)},
         {"dtFechaNew", Variant(dtFechaNew)}},
        cnnActive);
}

void CambiarDocumento(RecordClass& cls, const Variant& vId, int16_t iFacturado, const Variant& vIdFac,
                      ConnPtr& cnnActive) {
    run(cls, "CambiarDocumento", {{"vId", vId}, {"iFacturado", Variant(iFacturado)}, {"vIdFac", vIdFac}}, cnnActive);
}

// The three undoing members differ only in their statement.
template <const char* Name>
void cancel(RecordClass& cls, const Variant& vId, int16_t iFacturado, ConnPtr& cnnActive) {
    run(cls, Name, {{"vId", vId}, {"iFacturado", Variant(iFacturado)}}, cnnActive);
}
constexpr char kCancelarFacturacion[] = "CancelarFacturacion";
constexpr char kCancelarFacturas[] = "CancelarFacturas";
constexpr char kCancelarFactura[] = "CancelarFactura";

void CerrarImpresionAuto(RecordClass& cls, ConnPtr& cnnActive) { run(cls, "CerrarImpresionAuto", {}, cnnActive); }

void ConvertirSerieSinNum(RecordClass& cls, const Variant& vId, const std::string& sSerie, ConnPtr& cnnActive) {
    run(cls, "ConvertirSerieSinNum", {{"vId", vId}, {"sSerie", Variant(sSerie)}}, cnnActive);
}

// Three statements on one connection, not in a transaction of their own: the first
// two only replace Null amounts, so they may stand when the third fails.
void ActualizarEuros(RecordClass& cls, ConnPtr& cnnActive) {
    for (std::string_view step : {"ActualizarEuros[1]", "ActualizarEuros[2]", "ActualizarEuros[3]"})
        run(cls, step, {}, cnnActive);
}

}  // namespace

// ------------------------------------------------------------ members with a C++ face

bool estadoIs(RecordClass& cls, int16_t code) { return rt::CDbl(notNull(field(cls, "Estado"))) == code; }

bool bDeshacerStock(RecordClass& cls) {
    const double estado = rt::CDbl(notNull(field(cls, "Estado")));
    return estado < 2 || estado == 4;
}

bool bEstaFacturado(RecordClass& cls) {
    if (cls.variants().document.invoiced == frame::InvoicedForm::Cerrada)
        return rt::CStr(notNull(field(cls, "Cerrada"))) == "Cerrada";
    // The SELECTs spell it "Facturado"; the name lookup ignores case.
    return rt::CDbl(notNull(field(cls, "facturado"))) != 0;
}

int16_t GetState(RecordClass& cls, Variant& vId, ConnPtr& objCn) {
    services::RsPtr r = select(cls, "GetState", vId, objCn);
    if (r->RecordCount() > 0) return rt::CInt(r->value("Estado"));
    return 0;
}

// The argument is the new state, whatever its name; nothing is saved until Update.
void UpdateState(RecordClass& cls, Variant& vId) { tools::primaryRecordset(cls).setValue("Estado", vId); }

bool EstaFacturado(RecordClass& cls, Variant& vId, ConnPtr& objCn) {
    services::RsPtr r = select(cls, "EstaFacturado", vId, objCn);
    if (r->RecordCount() <= 0) return false;
    switch (cls.variants().document.invoiced) {
        case frame::InvoicedForm::Cerrada: {
            const Variant v = r->value("Cerrada");
            return !v.isNull() && rt::CStr(v) == "Cerrada";
        }
        case frame::InvoicedForm::FacturadoNullFalse: {
            const Variant v = r->value("Facturado");
            return !v.isNull() && rt::CBool(v);
        }
        case frame::InvoicedForm::Facturado: break;
    }
    return rt::CBool(r->value("Facturado"));
}

// The counters are read on a connection of the service's own, whatever the caller
// passes; they are written on the caller's.
void GetNumerador(RecordClass& cls, double& dSerieA, double& dSerieB, double& dSerieC, ConnPtr& /*objCn*/) {
    std::string table = tableName(cls);
    ConnPtr local;
    services::ClsNumeradores().LeerSeries(table, dSerieA, dSerieB, dSerieC, local);
}

void SetNumerador(RecordClass& cls, double& dSerieA, double& dSerieB, double& dSerieC, ConnPtr& objCn) {
    std::string table = tableName(cls);
    std::string vacio;
    services::ClsNumeradores().GrabarSeries(table, dSerieA, dSerieB, dSerieC, objCn, vacio);
}

// Each series' counter from the table's maximum; a series without documents stores
// its start.
void UpdateNumerador(RecordClass& cls, ConnPtr& objCn) {
    constexpr std::array<double, 3> starts{services::kSerieStartA, services::kSerieStartB, services::kSerieStartC};
    std::array<services::RsPtr, 3> maxima;
    for (size_t i = 0; i < maxima.size(); ++i)
        maxima[i] = RecordClass::openStatement(cls.ownStatement(kSeriesMaxima[i].name, {}), objCn);
    std::array<double, 3> values{};
    for (size_t i = 0; i < maxima.size(); ++i) {
        const Variant max = maxima[i]->value("Nuevo_Codigo");
        values[i] = max.isNull() ? starts[i] : rt::CDbl(max);
    }
    SetNumerador(cls, values[0], values[1], values[2], objCn);
}

// ------------------------------------------------------------ declarations

std::vector<NamedStatement> documentStatements(std::string_view className) {
    std::vector<NamedStatement> out;
    const bool numbered = className == "ClsOrdenes" || className == "ClsPedidosCli" || className == "ClsAlbaranes" ||
                          className == "ClsFacturas";
    if (numbered || className == "ClsRecibos") out = {kGetState};
    if (numbered) {
        out.push_back(className == "ClsOrdenes" ? kEstaCerrada : kEstaFacturado);
        out.insert(out.end(), kSeriesMaxima.begin(), kSeriesMaxima.end());
        out.push_back(kCerrarImpresionAuto);
    }
    for (const ClassStatement& s : kByClass)
        if (s.className == className) out.push_back(s.statement);
    return out;
}

std::vector<frame::Signature> documentSignatures() {
    return {{"IniciaRs", {optRef("sSelecSql", PT::String), optRef("id")}},
            {"AddNew",
             {optRef("bDefVal", PT::Boolean, Variant(true)), optRef("bIsInvoiced", PT::Boolean, Variant(true))}}};
}

std::vector<NamedStatement> operator+(std::vector<NamedStatement> a, const std::vector<NamedStatement>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const frame::MemberTable& documentMembers() {
    using B = ClassBuilder<RecordClass>;
    static const frame::MemberTable table = {
        {"bEsPresupuesto", [](B& b) { b.get("bEsPresupuesto", [](RecordClass& c) { return estadoIs(c, 1); }); }},
        {"bEsPedido", [](B& b) { b.get("bEsPedido", [](RecordClass& c) { return estadoIs(c, 2); }); }},
        {"bEsAlbaran", [](B& b) { b.get("bEsAlbaran", [](RecordClass& c) { return estadoIs(c, 3); }); }},
        {"bEsTicket", [](B& b) { b.get("bEsTicket", [](RecordClass& c) { return estadoIs(c, 5); }); }},
        {"bEsCierre", [](B& b) { b.get("bEsCierre", [](RecordClass& c) { return estadoIs(c, 6); }); }},
        {"bEsFacturacion", [](B& b) { b.get("bEsFacturacion", [](RecordClass& c) { return estadoIs(c, 7); }); }},
        {"bEsOrden", [](B& b) { b.get("bEsOrden", [](RecordClass& c) { return estadoIs(c, 10); }); }},
        {"bDeshacerStock", [](B& b) { b.get("bDeshacerStock", &bDeshacerStock); }},
        {"bEstaFacturado", [](B& b) { b.get("bEstaFacturado", &bEstaFacturado); }},
        {"dtFecha", [](B& b) { b.get("dtFecha", &dtFecha); }},
        {"iQDocumento", [](B& b) { b.get("iQDocumento", &iQDocumento); }},
        {"bQPresupuesto", [](B& b) { b.get("bQPresupuesto", &bQPresupuesto); }},
        {"iQDocumentoF", [](B& b) { b.get("iQDocumentoF", &iQDocumentoF); }},
        {"iQFactura", [](B& b) { b.get("iQFactura", &iQFactura); }},
        {"sQAlmacen", [](B& b) { b.get("sQAlmacen", &sQAlmacen); }},
        {"GetState", [](B& b) { b.method("GetState", {inout("vId"), optObj("objCn")}, &GetState); }},
        {"UpdateState", [](B& b) { b.method("UpdateState", {inout("vId")}, &UpdateState); }},
        {"EstaFacturado", [](B& b) { b.method("EstaFacturado", {inout("vId"), optObj("objCn")}, &EstaFacturado); }},
        {"GetNumerador",
         [](B& b) {
             b.method("GetNumerador",
                      {inout("dSerieA", PT::Double), inout("dSerieB", PT::Double), inout("dSerieC", PT::Double),
                       optObj("objCn")},
                      &GetNumerador);
         }},
        {"SetNumerador",
         [](B& b) {
             b.method("SetNumerador",
                      {inout("dSerieA", PT::Double), inout("dSerieB", PT::Double), inout("dSerieC", PT::Double),
                       optObj("objCn")},
                      &SetNumerador);
         }},
        {"UpdateNumerador", [](B& b) { b.method("UpdateNumerador", {optObj("objCn")}, &UpdateNumerador); }},
        {"ConvertirSerieSinNum",
         [](B& b) {
             b.method("ConvertirSerieSinNum", {in("vId"), in("sSerie", PT::String), optObj("cnnActive")},
                      &ConvertirSerieSinNum);
         }},
        {"FacturarDocumento",
         {[](B& b) {
              b.method("FacturarDocumento",
                       {in("vId"), in("vNum"), in("iFacturado", PT::Integer), in("vIdFac"), in("sCerrar", PT::String),
                        in("dtFecha", PT::Date), opt("dtFechaNew", PT::Date), optObj("cnnActive")},
                       &FacturarDocumento);
          },
          {in("vId"), in("iFacturado", PT::Integer), in("vIdFac"), optObj("cnnActive")}}},
        {"CambiarDocumento",
         [](B& b) {
             b.method("CambiarDocumento", {in("vId"), in("iFacturado", PT::Integer), in("vIdFac"), optObj("cnnActive")},
                      &CambiarDocumento);
         }},
        {"CancelarFacturacion",
         [](B& b) {
             b.method("CancelarFacturacion", {in("vId"), in("iFacturado", PT::Integer), optObj("cnnActive")},
                      &cancel<kCancelarFacturacion>);
         }},
        {"CancelarFacturas",
         [](B& b) {
             b.method("CancelarFacturas", {in("vId"), in("iFacturado", PT::Integer), optObj("cnnActive")},
                      &cancel<kCancelarFacturas>);
         }},
        {"CancelarFactura",
         [](B& b) {
             b.method("CancelarFactura", {in("vId"), in("iFacturado", PT::Integer), optObj("cnnActive")},
                      &cancel<kCancelarFactura>);
         }},
        {"CerrarImpresionAuto",
         [](B& b) { b.method("CerrarImpresionAuto", {optObj("cnnActive")}, &CerrarImpresionAuto); }},
        {"ActualizarEuros", [](B& b) { b.method("ActualizarEuros", {optObj("cnnActive")}, &ActualizarEuros); }},
    };
    return table;
}

}  // namespace hist::documents
