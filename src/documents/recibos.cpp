// ClsRecibos: the receipts of invoices, one row of Recibos per instalment, numbered
// across the whole table. Every reader tells only unpaid (Estado 0) from paid.
#include <array>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "documents/commercial.hpp"
#include "documents/document_members.hpp"
#include "frame/service_calls.hpp"
#include "platform/collection.hpp"
#include "platform/runtime.hpp"

namespace hist::documents {

using namespace frame;

namespace {

class ClsRecibos : public RecordClass {
public:
    ClsRecibos();
    bool bEstaPagado();
    void CambEstadoRecibos(const std::shared_ptr<Collection>& cRecords, bool bEstdo);
    void CambEstadoRecibo(const Variant& vIdRec, bool bEstdo, bool bConta, ConnPtr& cnn);
    void PresentarRecibo(const Variant& vIdRec, bool bEstdo, ConnPtr& cnn);
    bool RecibosPagados(const Variant& vId, ConnPtr& objCn);
};

constexpr Template kSelect =
    "SELECT Id, Numero AS Factura, Contador, Serie, Fecha_Expedicion as  Fecha, Fecha_Vencimiento as  Vencimiento, "
    "Codigo AS Cliente, Razon_Social AS Empresa , Divisa , Valor_Divisa AS Cambio, Total_Divisa , Total, Estado, "
    "Forma_Pago as Pago, Presentado, Impreso , CTA_Contable as Cuenta, CTA_Contrapartida as Contrapartida, Concepto "
    ", Documento_P FROM {table}";

// Dates and money go in as quoted locale text: the engine reads them back.
constexpr Template kInsertar =
    "INSERT INTO Recibos ( Id, Numero, Contador, Fecha_Expedicion, Fecha_Vencimiento, Codigo, Razon_Social, Serie, "
    "Divisa, Valor_Divisa, Total_Divisa, Total, CTA_Contable, CTA_Contrapartida, CTA_Tesoreria, Concepto, "
    "Documento_P, Estado, Forma_Pago) SELECT {vId} AS Expr1, {vNumero} AS Expr2, {iCounter} AS Expr, '{T:dtFecha}' "
    "AS Expr3,'{T:dtFechaVt}' AS Expr4, '{sCod}' AS Expr5, '{sEmpresa}' AS Expr6, '{sSerie}' AS Expr7, '{sDivisa}' "
    "AS Expr8, '{D:dCambio}' AS Expr9, '{D:dTotaldivisa}' AS Expr10, '{D:dTotal}' AS Expr11, '{sCtaContable}' AS "
    "Expr12, '{sCtaContrapartida}' AS Expr13, '{sCtaTesoreria}' AS Expr133, '{sConcepto}' AS Expr14,'{sTipoFactura}' "
    "AS Expr15, {iEstado} as Expr16, '{sFPago}' AS Expr17;";

constexpr Template kObtener =
    "SELECT Numero, Contador, Serie, Fecha_Vencimiento, Codigo , Total, Estado, Cta_Tesoreria as cta FROM Recibos "
    "WHERE Id = {vId}";
constexpr Template kCambEstado = "UPDATE  Recibos SET Estado = {state} WHERE(ID = {vIdRec})";
constexpr Template kCambEstados = "UPDATE  Recibos SET Estado = {B:bEstdo} WHERE(ID = {element})";
constexpr Template kPresentar = "UPDATE  Recibos SET Presentado = {B:bEstdo} WHERE(ID = {vIdRec})";
constexpr Template kPagados = "SELECT Estado FROM Recibos WHERE ((Numero = {vId}) And (Estado <> 0 ))";

constexpr std::string_view kInsertarArgs =
    "vId vNumero iCounter dtFecha dtFechaVt sSerie sCod sEmpresa sDivisa dCambio dTotaldivisa dTotal iEstado "
    "sCtaContable sCtaContrapartida sCtaTesoreria sConcepto sTipoFactura sFPago";
constexpr std::string_view kObtenerArgs = "vId vIdRecibo iContador dtFecha sSerie sCod dTotal iEstado sContaTeso";

const ClassVariants kRecibos{
    .className = "ClsRecibos",
    .table = "Recibos",
    .select = kSelect,
    .selections = {{"vista rapida", ""},
                   {"seleccion", " WHERE Numero = {id}"},
                   {"impagados", " WHERE Estado = 0"},
                   {"cobrados", " WHERE Estado <> 0"}},
    // Over the whole table: the series is accepted and not used.
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM {table}",
    .nuevoCodigoWithinSize = true,
    .deleteAll = "DELETE  FROM {table}  WHERE (Numero = {vId})",
    // CodigoLibre and GetState go by the invoice's number.
    .codigoLibre = kDocumentCodigoLibre,
    .statements = documentStatements("ClsRecibos") + std::vector<NamedStatement>{{"Insertar", kInsertar},
                                                                                 {"Obtener", kObtener},
                                                                                 {"CambEstadoRecibo", kCambEstado},
                                                                                 {"CambEstadoRecibos", kCambEstados},
                                                                                 {"PresentarRecibo", kPresentar},
                                                                                 {"RecibosPagados", kPagados}},
    .signatures = [] {
        std::vector<Signature> s = commercialSignatures(false);
        s.push_back({"DeleteAll", {in("vId"), optObj("cnnActive")}});
        return s;
    }(),
    .open = OpenForm::E,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = {{"Id", ValueSource::NuevoCodigoInSeries, Variant("A")},
                       {"Fecha", ValueSource::TodayShortDate},
                       {"Cambio", ValueSource::Constant, Variant(int16_t{0})},
                       {"Total_divisa", ValueSource::Constant, Variant(int16_t{0})},
                       {"Total", ValueSource::Constant, Variant(int16_t{0})},
                       {"Impreso", ValueSource::Constant, Variant(false)},
                       {"Estado", ValueSource::Constant, Variant(int16_t{0})}},
    .update = {.scope = kAffectCurrent},
    .findField = 0,
    .permissionGroup = "Facturas",
    .filter = FilterForm::WideRange,
    .listingWalk = ListingWalk::GridColumns,
    .listingSums = true,
};

constexpr auto kInterface = std::to_array<std::string_view>({
    "GetRptPath", "sClassName", "bEstaPagado", "CambEstadoRecibos", "CambEstadoRecibo", "PresentarRecibo",
    "DeleteAll", "CodigoLibre", "RecibosPagados", "GetState", "SeguridadPermiso", "GetConnection",
    "GetConnectionStrToRpt", "GetConnectionStr", "Obtener", "Insertar", "IniciaRs", "NuevoCodigo", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateState", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"});

}  // namespace

ClsRecibos::ClsRecibos() : RecordClass(kRecibos) {}

bool ClsRecibos::bEstaPagado() { return rt::CDbl(rs().value("Estado")) != 0; }

// Over a connection of its own, which takes the place of the class's and is closed at
// the end: the transaction members then fail on it. No transaction: a failure leaves
// the earlier receipts changed and the connection open.
void ClsRecibos::CambEstadoRecibos(const std::shared_ptr<Collection>& cRecords, bool bEstdo) {
    ConnPtr cn = svc::getConexion(kBase);
    replacePrimaryConnection(cn);
    if (cRecords) {
        for (int32_t i = 1; i <= cRecords->Count(); ++i)
            execute(ownStatement("CambEstadoRecibos",
                                 {{"bEstdo", Variant(bEstdo)}, {"element", cRecords->Item(Variant(i))}}),
                    cn);
    }
    cn->Close();
}

// Paid is -1, paid and posted 2; bConta alone changes nothing.
void ClsRecibos::CambEstadoRecibo(const Variant& vIdRec, bool bEstdo, bool bConta, ConnPtr& cnn) {
    const int16_t state = bEstdo && bConta ? 2 : bEstdo ? -1 : 0;
    execute(ownStatement("CambEstadoRecibo", {{"state", Variant(state)}, {"vIdRec", vIdRec}}), cnn);
}

void ClsRecibos::PresentarRecibo(const Variant& vIdRec, bool bEstdo, ConnPtr& cnn) {
    execute(ownStatement("PresentarRecibo", {{"bEstdo", Variant(bEstdo)}, {"vIdRec", vIdRec}}), cnn);
}

// Whether any receipt of the invoice is paid, not whether all are.
bool ClsRecibos::RecibosPagados(const Variant& vId, ConnPtr& objCn) {
    return recordCount(*open(ownStatement("RecibosPagados", {{"vId", vId}}), objCn)) >= 1;
}

namespace {

// One receipt by its own key ("Id", from vId); the date is the due date. Every field,
// the state too, is tested for Null.
void obtener(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    using enum OnNull;
    static constexpr std::array<FieldRead, 8> kReads{{{"Numero", "vIdRecibo", Keep},
                                                      {"Contador", "iContador", Keep},
                                                      {"Fecha_Vencimiento", "dtFecha", Keep},
                                                      {"Serie", "sSerie", Keep},
                                                      {"Codigo", "sCod", Keep},
                                                      {"Total", "dTotal", Keep},
                                                      {"Estado", "iEstado", Keep},
                                                      {"cta", "sContaTeso", Keep}}};
    readByNumber(cls, "Obtener", a, objCn, kReads);
}

}  // namespace

void registerRecibos(Registry& r) {
    defineDocumentClass<ClsRecibos>(r, kRecibos, kInterface, [](ClassBuilder<ClsRecibos>& b) {
        b.get("bEstaPagado", &ClsRecibos::bEstaPagado);
        b.method("CambEstadoRecibos", {in("cRecords"), in("bEstdo", PT::Boolean)}, &ClsRecibos::CambEstadoRecibos);
        b.method("CambEstadoRecibo",
                 {in("vIdRec"), in("bEstdo", PT::Boolean), in("bConta", PT::Boolean), optObj("cnn")},
                 &ClsRecibos::CambEstadoRecibo);
        b.method("PresentarRecibo", {in("vIdRec"), in("bEstdo", PT::Boolean), optObj("cnn")},
                 &ClsRecibos::PresentarRecibo);
        b.method("RecibosPagados", {in("vId"), optObj("objCn")}, &ClsRecibos::RecibosPagados);
        b.raw(namedMember("Obtener", documentParamsFirstByValue(kObtenerArgs), &obtener));
        b.raw(namedMember("Insertar", documentParams(kInsertarArgs), &insertDocument));
    });
}

}  // namespace hist::documents
