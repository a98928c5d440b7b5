// ClsAlbaranes: the delivery note, one row of HAlbaranes per delivery to a customer,
// pending while no invoice has taken it ("Facturado" 0).
#include <array>
#include <string>

#include "documents/commercial.hpp"
#include "documents/document_members.hpp"
#include "platform/clock.hpp"
#include "platform/runtime.hpp"

namespace hist::documents {

using namespace frame;

namespace {

class ClsAlbaranes : public RecordClass {
public:
    ClsAlbaranes();
};

// The main selection: the number first (AddNew writes position 0), "Albarán" and
// "Hora" for Update.
constexpr Template kSelect =
    "SELECT Numero AS Albarán, Serie, Fecha, Codigo AS Cliente, Razon_Social AS Empresa , Tarifa, Almacen AS "
    "Almacén, Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , "
    "Descuento, Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Doc_E, Facturado , Doc_F, Bloqueado, Impreso , Referencia_3 , CTA_Contable, "
    "CTA_Contrapartida, Concepto , Documento_P, Numero_Barras, Referencia_2 as Colaborador, Hora FROM {table}";

// The aliases skip numbers and a few are odd; they are sent as they stand. The
// invoice's date closes the statement while it passes the date test.
#define HIST_ALBARANES_INSERT(columnTail, valueTail)                                                                 \
    "INSERT INTO HAlbaranes ( Numero, Fecha, Codigo, Razon_Social, Tarifa, Serie, Almacen, Referencia, "             \
    "Transportista, Divisa, Valor_Divisa, Total_Divisa, Forma_Pago, Descuento, Descuento_PP, Base, Gastos, "         \
    "Impuesto, Importe_Impuestos, Recargo, Importe_recargo, IRPF, Importe_IRPF, Total, Doc_E, CTA_Contable, "        \
    "CTA_Contrapartida, Concepto, Documento_P, Estado, Numero_Barras, Referencia_2, Hora, Facturado, Doc_F" columnTail \
    " ) SELECT {vId} AS Expr1, {F:dtFecha} AS Expr2, '{sCod}' AS Expr3, '{sEmpresa}' AS Expr4, '{sTarifa}' AS "      \
    "Expr5, '{sSerie}' AS Expr6, '{sAlmacen}' AS Expr8, '{sRef}' AS Expr9, '{sTransportista}' AS Expr10, "           \
    "'{sDivisa}' AS Expr11, '{D:dCambio}' AS Expr12, {N:dTotaldivisa}, '{sFPago}', {N:dDto}, {N:dDtoPp}, "           \
    "{N:dBase}, {N:dPortes}, {iImpuesto}, {N:dImpImp}, {D:bRecargo}, {N:dImpRec}, {N:dIrpf}, {N:dImpIrpf}, "          \
    "{N:dTotal}, {vDocE} AS Expr26, '{sCtaContable}' AS Expr28, '{sCtaContrapartida}' AS Expr29, '{sConcepto}' AS "  \
    "Expr30,'{sTipoFactura}' AS Expr31, {iEstado} as Expr32, '{vId}' AS Expr1B, '{sReferencia_2}' AS Expr1c, "       \
    "'{time now}' as Expr1d, {iFacturado} AS Expr33, '{D:dFactura}' AS Expr34" valueTail

constexpr Template kInsertar = HIST_ALBARANES_INSERT(" , Fecha_F", " , {F:dFechaF} AS Expr35");
constexpr Template kInsertarSinFecha = HIST_ALBARANES_INSERT("", "");
#undef HIST_ALBARANES_INSERT

constexpr Template kObtener =
    "SELECT Numero AS Albarán, Serie, Fecha, Codigo , Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, "
    "Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, "
    "Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Facturado , Doc_F as Factura, Impreso , CTA_Contable, CTA_Contrapartida, Concepto "
    ", Documento_P, Doc_E FROM HAlbaranes WHERE Numero = {vId}";

// The notes an invoicing run can take: the dates as day numbers, never a blocked note.
constexpr Template kObtenerCol =
    "SELECT Numero From HAlbaranes WHERE (((Numero) Between {dDesde} And {dHasta}) AND ((Fecha) Between "
    "{S:dtFchIni} And {S:dtFchFin}) AND ((Codigo) Like '{vId}') AND ((Serie) Like '{sSerie}') AND ((Facturado)=0) "
    "AND ((Bloqueado)=0));";

const ClassVariants kAlbaranes{
    .className = "ClsAlbaranes",
    .table = "HAlbaranes",
    .select = kSelect,
    .selections = withDeletionSelections({{"vista rapida", ""},
                                          {"seleccion", " WHERE Numero = {id}"},
                                          {"pendientes", " WHERE Facturado = 0"},
                                          {"facturados", " WHERE Facturado = 4"}}),
    .nuevoCodigo = kDocumentNuevoCodigo,
    .convertirSerie = kDocumentConvertirSerie,
    .obtenerCol = kObtenerCol,
    .obtenerColBase = kBase,
    .obtenerColField = "Numero",
    .codigoLibre = kDocumentCodigoLibre,
    .statements = documentStatements("ClsAlbaranes") + std::vector<NamedStatement>{{"Insertar", kInsertar},
                                                                                   {"Insertar[no Fecha_F]",
                                                                                    kInsertarSinFecha},
                                                                                   {"Obtener", kObtener}},
    .signatures = commercialSignatures(true),
    .open = OpenForm::E,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = documentNewRow("Albarán"),
    .update = {.scope = kAffectCurrent, .copyInto = "Numero_Barras", .copyFrom = "Albarán", .stampTime = "Hora"},
    .findField = 0,
    .permissionGroup = "Hist_Albaranes",
    .filter = FilterForm::WideRange,
    .listingWalk = ListingWalk::GridColumns,
    .listingSums = true,
    .document = {.invoiced = InvoicedForm::FacturadoNullFalse, .sourceIsLong = true},
};

constexpr auto kInterface = std::to_array<std::string_view>({
    "dtFecha", "GetRptPath", "sClassName", "bEstaFacturado", "bEsPresupuesto", "bEsPedido", "bEsTicket", "bEsOrden",
    "iQDocumento", "sQAlmacen", "EstaFacturado", "ObtenerCol", "ConvertirSerie", "ConvertirSerieSinNum",
    "FacturarDocumento", "CerrarImpresionAuto", "CancelarFacturacion", "CancelarFactura", "CodigoLibre", "GetState",
    "SeguridadPermiso", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "Insertar", "Obtener",
    "IniciaRs", "NuevoCodigo", "GetNumerador", "SetNumerador", "UpdateNumerador", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateState", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"});

ClsAlbaranes::ClsAlbaranes() : RecordClass(kAlbaranes) {}

// Only the delivery note mends the company's name: each apostrophe becomes an acute
// accent. Any other apostrophe makes a statement the engine refuses.
void insertar(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    std::vector<HoleValue> holes = a.holes();
    std::string empresa = rt::CStr(a["sEmpresa"]);
    for (size_t at = empresa.find('\''); at != std::string::npos; at = empresa.find('\'', at))
        empresa.replace(at, 1, "´");
    for (HoleValue& h : holes)
        if (h.name == "sEmpresa") h.value = Variant(empresa);
    holes.push_back({"time now", Variant(DateValue{Clock::timeOfDay()})});
    // dFechaF is a date and so always passes the date test: Fecha_F is always written.
    const bool withInvoiceDate = rt::IsDate(a["dFechaF"]);
    RecordClass::executeStatement(cls.ownStatement(withInvoiceDate ? "Insertar" : "Insertar[no Fecha_F]", holes),
                                  objCn);
}

void obtener(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    readByNumber(cls, "Obtener", a, objCn, documentReads(OnNull::Empty, true));
}

}  // namespace

void registerAlbaranes(Registry& r) {
    defineDocumentClass<ClsAlbaranes>(r, kAlbaranes, kInterface, [](ClassBuilder<ClsAlbaranes>& b) {
        const std::string own = " sReferencia_2 iFacturado dFactura dFechaF";
        b.raw(namedMember("Insertar", documentParams(std::string(kDocumentInsertarArgs) + own), &insertar));
        b.raw(namedMember("Obtener", documentParamsFirstByValue(std::string(kDocumentObtenerArgs) + " dDocEmitido"),
                           &obtener));
    });
}

}  // namespace hist::documents
