// ClsFacturas: the invoice, one row of HFacturas per invoice to one customer. Beside
// the delivery note's shape it recomputes its totals into the live Facturas, gives the
// host what it needs to issue the receipts, and marks itself as posted.
#include <array>
#include <cmath>
#include <string>

#include "ado/recordset.hpp"
#include "documents/commercial.hpp"
#include "documents/document_members.hpp"
#include "frame/services/helpers.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::documents {

using namespace frame;

namespace {

class ClsFacturas : public RecordClass {
public:
    ClsFacturas();
    void ActualizarTotal(Variant& vId, ConnPtr& objCn);
    void ContabilizarFactura(const Variant& vId, int16_t iFacturado, const Variant& vIdFac, ConnPtr& cnnActive);
};

constexpr Template kSelect =
    "SELECT Numero AS Factura, Serie, Fecha, Codigo AS Cliente, Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, "
    "Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, "
    "Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Doc_E, Facturado , Doc_F,Impreso , CTA_Contable, CTA_Contrapartida, Concepto , "
    "Documento_P FROM {table}";

constexpr Template kInsertar =
    "INSERT INTO HFacturas ( Numero, Fecha, Codigo, Razon_Social, Tarifa, Serie, Almacen, Referencia, Transportista, "
    "Divisa, Valor_Divisa, Total_Divisa, Forma_Pago, Descuento, Descuento_PP, Base, Gastos, Impuesto, "
    "Importe_Impuestos, Recargo, Importe_recargo, IRPF, Importe_IRPF, Total, Doc_E, CTA_Contable, CTA_Contrapartida, "
    "Concepto, Documento_P, Estado ) SELECT {vId} AS Expr1, {F:dtFecha}  AS Expr2, '{sCod}' AS Expr3, '{sEmpresa}' "
    "AS Expr4, '{sTarifa}' AS Expr5, '{sSerie}' AS Expr6, '{sAlmacen}' AS Expr8, '{sRef}' AS Expr9, "
    "'{sTransportista}' AS Expr10, '{sDivisa}' AS Expr11, '{D:dCambio}' AS Expr12, {N:dTotaldivisa}, '{sFPago}', "
    "{N:dDto}, {N:dDtoPp}, {N:dBase}, {N:dPortes}, {iImpuesto}, {N:dImpImp}, {D:bRecargo}, {N:dImpRec}, {N:dIrpf}, "
    "{N:dImpIrpf}, {N:dTotal}, {vDocE} AS Expr26, '{sCtaContable}' AS Expr28, '{sCtaContrapartida}' AS Expr29, "
    "'{sConcepto}' AS Expr30,'{sTipoFactura}' AS Expr31, {iEstado} as Expr32;";

// "Factura" names both Numero and Doc_f: the lookup takes the first, the number.
constexpr Template kObtener =
    "SELECT Numero AS Factura, Serie, Fecha, Codigo , Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, "
    "Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, "
    "Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Facturado , Doc_f as Factura, Impreso , CTA_Contable, CTA_Contrapartida, Concepto "
    ", Documento_P  FROM HFacturas WHERE Numero = {vId}";

constexpr Template kTotalesLeer =
    "SELECT Numero AS Factura , Valor_Divisa AS Cambio, Total_Divisa , Descuento_PP, Base, Gastos AS Portes , "
    "Importe_Impuestos, Importe_recargo, IRPF, Importe_IRPF, Total FROM HFacturas WHERE Numero = {vId}";
// The live table: what it writes never touches the figures it read.
constexpr Template kTotalesEscribir =
    "Update Facturas set  Total_Divisa = '{D:second total}', Base = '{D:base}', Gastos = '{D:carriage}', "
    "Importe_Impuestos = '{D:tax}', Importe_recargo = '{D:surcharge}', Importe_IRPF = '{D:withheld}', Total = "
    "'{D:total}'  WHERE Numero = {vId}";

constexpr Template kDatosRecibo =
    "SELECT Serie, Fecha, Codigo , Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, Referencia, Transportista, "
    "Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, Descuento_PP, Base, Gastos AS "
    "Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , Importe_IRPF, Total, Estado, Facturado , "
    "Doc_f as Factura, Impreso , CTA_Contable, CTA_Contrapartida, Concepto , Documento_P  FROM HFacturas WHERE "
    "Numero = {vId}";

constexpr Template kContabilizar = "UPDATE  HFacturas SET Facturado = {iFacturado} WHERE(Numero = {vId})";

constexpr std::string_view kDatosReciboArgs =
    "vId dtFecha sSerie sCod sEmpresa sDivisa dCambio dTotaldivisa sFPago dTotal sCtaContable sCtaContrapartida "
    "sTipoFactura";

const ClassVariants kFacturas{
    .className = "ClsFacturas",
    .table = "HFacturas",
    .select = kSelect,
    // "pedidos" has no WHERE: the engine refuses it, as it always has.
    .selections = withDeletionSelections({{"vista rapida", ""},
                                          {"seleccion", " WHERE Numero = {id}"},
                                          {"pendientes", " WHERE Facturado = 0"},
                                          {"pedidos", " Estado = 1 or Estado = 2"},
                                          {"facturados", " WHERE Facturado = 4"}}),
    .nuevoCodigo = kDocumentNuevoCodigo,
    .codigoLibre = kDocumentCodigoLibre,
    .statements = documentStatements("ClsFacturas") +
                  std::vector<NamedStatement>{{"Insertar", kInsertar},
                                              {"Obtener", kObtener},
                                              {"ActualizarTotal[read]", kTotalesLeer},
                                              {"ActualizarTotal[write]", kTotalesEscribir},
                                              {"ObtenerDatosRecibo", kDatosRecibo},
                                              {"ContabilizarFactura", kContabilizar}},
    .signatures = commercialSignatures(false),
    .open = OpenForm::E,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = documentNewRow("Factura"),
    .update = {.scope = kAffectCurrent},
    .findField = 0,
    .permissionGroup = "Hist_Facturas",
    .filter = FilterForm::WideRange,
    .listingWalk = ListingWalk::GridColumns,
    .listingSums = true,
    .document = {.invoiced = InvoicedForm::Facturado},
};

constexpr auto kInterface = std::to_array<std::string_view>({
    "dtFecha", "GetRptPath", "sClassName", "bEstaFacturado", "bEsOrden", "bEsPresupuesto", "bEsPedido",
    "bEsAlbaran", "bEsTicket", "bEsCierre", "bEsFacturacion", "bDeshacerStock", "iQDocumento", "iQFactura",
    "EstaFacturado", "CerrarImpresionAuto", "ContabilizarFactura", "CodigoLibre", "GetState", "SeguridadPermiso",
    "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "Insertar", "ObtenerDatosRecibo", "Obtener",
    "ActualizarTotal", "IniciaRs", "NuevoCodigo", "GetNumerador", "SetNumerador", "UpdateNumerador",
    "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateState",
    "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext",
    "MovePrevious", "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter",
    "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"});

// A figure rounded as the listings show it: formatted with the mask, read back.
double roundedWith(double d, const std::string& mask) { return rt::CDbl(Variant(rt::Format(Variant(d), mask))); }

}  // namespace

ClsFacturas::ClsFacturas() : RecordClass(kFacturas) {}

void ClsFacturas::ActualizarTotal(Variant& vId, ConnPtr& objCn) {
    auto formats = services::ClsFormatoNumero::shared();
    const std::string moneda = formats->GetFormatoMoneda();
    const std::string divisa = formats->GetFormatoDivisa();
    double rate = 0, prompt = 0, base = 0, carriage = 0, tax = 0, surcharge = 0, withholdingRate = 0;
    {
        RsPtr r = open(ownStatement("ActualizarTotal[read]", {{"vId", vId}}), objCn);
        if (recordCount(*r) > 0) {
            // The second-currency total, the withholding and the total are read and
            // play no part: the first is dropped, the others are computed anew.
            double unused = 0;
            using enum OnNull;
            readField(*r, "Cambio", rate, Keep);
            readField(*r, "Total_Divisa", unused, Keep);
            readField(*r, "Descuento_PP", prompt, Keep);
            readField(*r, "Base", base, Keep);
            readField(*r, "Portes", carriage, Keep);
            readField(*r, "Importe_Impuestos", tax, Keep);
            readField(*r, "Importe_recargo", surcharge, Keep);
            readField(*r, "IRPF", withholdingRate, Keep);
            readField(*r, "Importe_IRPF", unused, Keep);
            readField(*r, "Total", unused, Keep);
        }
    }
    // The prompt-payment discount off base, tax and surcharge; the withholding on the
    // whole sum, carriage included. Carriage itself is taken as it stands.
    const auto finite = [](double d) {
        if (!std::isfinite(d)) raise(err::Overflow, err::SrcRuntime);
        return d;
    };
    const auto reduced = [&](double d) {
        d = finite(d - (prompt * d) / 100);
        return d != 0 ? roundedWith(d, moneda) : 0.0;
    };
    base = reduced(base);
    tax = reduced(tax);
    surcharge = reduced(surcharge);
    double withheld = finite(((tax + base + surcharge + carriage) * withholdingRate) / 100);
    withheld = withheld != 0 ? roundedWith(withheld, moneda) : 0.0;
    base = roundedWith(base, moneda);
    surcharge = roundedWith(surcharge, moneda);
    tax = roundedWith(tax, moneda);
    withheld = roundedWith(withheld, moneda);
    const double total = roundedWith(finite(tax + base + surcharge + carriage - withheld), moneda);
    // A rate of 0 (stored, Null or from a missing row) fails before anything is sent.
    if (rate == 0) raise(err::DivisionByZero, err::SrcRuntime);
    const double secondTotal = roundedWith(finite(total / rate), divisa);
    execute(ownStatement("ActualizarTotal[write]", {{"second total", Variant(secondTotal)},
                                                    {"base", Variant(base)},
                                                    {"carriage", Variant(carriage)},
                                                    {"tax", Variant(tax)},
                                                    {"surcharge", Variant(surcharge)},
                                                    {"withheld", Variant(withheld)},
                                                    {"total", Variant(total)},
                                                    {"vId", vId}}),
            objCn);
}

// vIdFac is accepted and never used: nothing is written to Doc_F.
void ClsFacturas::ContabilizarFactura(const Variant& vId, int16_t iFacturado, const Variant& /*vIdFac*/,
                                      ConnPtr& cnnActive) {
    execute(ownStatement("ContabilizarFactura", {{"vId", vId}, {"iFacturado", Variant(iFacturado)}}), cnnActive);
}

namespace {

// A Null "Referencia" leaves sRef as it came, unlike the delivery note.
void obtener(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    readByNumber(cls, "Obtener", a, objCn, documentReads(OnNull::Keep, false));
}

// The one read of an invoice that gives Documento_P, and the one where no Null fails.
void obtenerDatosRecibo(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    using enum OnNull;
    static constexpr std::array<FieldRead, 12> kReads{{{"Fecha", "dtFecha", Keep},
                                                       {"Serie", "sSerie", Keep},
                                                       {"Codigo", "sCod", Keep},
                                                       {"Empresa", "sEmpresa", Keep},
                                                       {"Divisa", "sDivisa", Keep},
                                                       {"Cambio", "dCambio", Keep},
                                                       {"Total_Divisa", "dTotaldivisa", Keep},
                                                       {"Pago", "sFPago", Keep},
                                                       {"Total", "dTotal", Keep},
                                                       {"CTA_Contable", "sCtaContable", Keep},
                                                       {"CTA_Contrapartida", "sCtaContrapartida", Keep},
                                                       {"Documento_P", "sTipoFactura", Keep}}};
    readByNumber(cls, "ObtenerDatosRecibo", a, objCn, kReads);
}

}  // namespace

void registerFacturas(Registry& r) {
    defineDocumentClass<ClsFacturas>(r, kFacturas, kInterface, [](ClassBuilder<ClsFacturas>& b) {
        b.method("ContabilizarFactura",
                 {in("vId"), in("iFacturado", PT::Integer), in("vIdFac"), optObj("cnnActive")},
                 &ClsFacturas::ContabilizarFactura);
        b.raw(namedMember("Insertar", documentParams(kDocumentInsertarArgs), &insertDocument));
        b.raw(namedMember("ObtenerDatosRecibo", documentParamsFirstByValue(kDatosReciboArgs),
                           &obtenerDatosRecibo));
        b.raw(namedMember("Obtener", documentParams(kDocumentObtenerArgs), &obtener));
        b.method("ActualizarTotal", {inout("vId"), optObj("objCn")}, &ClsFacturas::ActualizarTotal);
    });
}

}  // namespace hist::documents
