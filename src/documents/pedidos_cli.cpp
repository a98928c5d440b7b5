// ClsPedidosCli: the customer order, one row of HPedidos_Clientes per order, taken
// by another document once "Facturado" is not 0. It has the delivery note's shape.
#include <array>

#include "documents/commercial.hpp"
#include "documents/document_members.hpp"

namespace hist::documents {

using namespace frame;

namespace {

class ClsPedidosCli : public RecordClass {
public:
    ClsPedidosCli();
};

constexpr Template kSelect =
    "SELECT Numero AS Pedido, Serie, Fecha, Codigo AS Cliente, Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, "
    "Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, "
    "Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Doc_E, Facturado , Doc_F,Impreso , Referencia_2 as Colaborador, Fecha_Entrega , "
    "CTA_Contable, CTA_Contrapartida, Concepto , Documento_P, Numero_Barras FROM {table}";

// VALUES, no aliases, and no treatment of apostrophes; the number twice, the second
// time quoted into Numero_Barras.
constexpr Template kInsertar =
    "INSERT INTO HPedidos_Clientes ( Numero, Fecha, Codigo, Razon_Social, Tarifa, Serie, Almacen, Referencia, "
    "Transportista, Divisa, Valor_Divisa, Total_Divisa, Forma_Pago, Descuento, Descuento_PP, Base, Gastos, Impuesto, "
    "Importe_Impuestos, Recargo, Importe_recargo, IRPF, Importe_IRPF, Total, Doc_E, CTA_Contable, CTA_Contrapartida, "
    "Concepto, Documento_P, Estado, Numero_Barras, Referencia_2 ) VALUES ( {vId} , {F:dtFecha} , '{sCod}' , "
    "'{sEmpresa}' , '{sTarifa}' , '{sSerie}' , '{sAlmacen}' , '{sRef}' , '{sTransportista}' , '{sDivisa}' , "
    "'{D:dCambio}' , {N:dTotaldivisa}, '{sFPago}', {N:dDto}, {N:dDtoPp}, {N:dBase}, {N:dPortes}, {iImpuesto}, "
    "{N:dImpImp}, {D:bRecargo}, {N:dImpRec}, {N:dIrpf}, {N:dImpIrpf}, {N:dTotal}, {vDocE} , '{sCtaContable}' , "
    "'{sCtaContrapartida}' , '{sConcepto}' ,'{sTipoFactura}' , {iEstado} ,'{vId}' , '{sReferencia_2}' );";

// "Factura" is unique here: it is Doc_F.
constexpr Template kObtener =
    "SELECT Numero AS Pedido, Serie, Fecha, Codigo , Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, "
    "Referencia, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, "
    "Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , "
    "Importe_IRPF, Total, Estado, Facturado , Doc_F as Factura, Impreso , CTA_Contable, CTA_Contrapartida, Concepto "
    ", Documento_P FROM HPedidos_Clientes WHERE Numero = {vId}";

// No block: the table has no Bloqueado.
constexpr Template kObtenerCol =
    "SELECT Numero From HPedidos_Clientes WHERE (((Numero) Between {dDesde} And {dHasta}) AND ((Fecha) Between "
    "{S:dtFchIni} And {S:dtFchFin}) AND ((Codigo) Like '{vId}') AND ((Serie) Like '{sSerie}') AND ((Facturado)=0));";

const ClassVariants kPedidosCli{
    .className = "ClsPedidosCli",
    .table = "HPedidos_Clientes",
    .select = kSelect,
    // "pendientes" ends in a blank; "entregados" has no WHERE and the engine refuses it;
    // "facturados" keeps every taken order, whatever its code.
    .selections = withDeletionSelections({{"vista rapida", ""},
                                          {"seleccion", " WHERE Numero = {id}"},
                                          {"pendientes", " WHERE Facturado = 0 "},
                                          {"entregados", " Estado = 1 or Estado = 2"},
                                          {"facturados", " WHERE Facturado <> 0"}}),
    .nuevoCodigo = kDocumentNuevoCodigo,
    .convertirSerie = kDocumentConvertirSerie,
    .obtenerCol = kObtenerCol,
    .obtenerColBase = kBase,
    .obtenerColField = "Numero",
    .codigoLibre = kDocumentCodigoLibre,
    .statements = documentStatements("ClsPedidosCli") +
                  std::vector<NamedStatement>{{"Insertar", kInsertar}, {"Obtener", kObtener}},
    .signatures = commercialSignatures(true),
    .open = OpenForm::E,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = documentNewRow("Pedido"),
    .update = {.scope = kAffectCurrent, .copyInto = "Numero_Barras", .copyFrom = "Pedido"},
    .findField = 0,
    .permissionGroup = "Hist_Pedidos_Clientes",
    .filter = FilterForm::WideRange,
    .listingWalk = ListingWalk::GridColumns,
    .listingSums = true,
    .document = {.invoiced = InvoicedForm::Facturado, .sourceIsLong = true},
};

constexpr auto kInterface = std::to_array<std::string_view>({
    "dtFecha", "GetRptPath", "sClassName", "sQAlmacen", "bEstaFacturado", "bEsPresupuesto", "bQPresupuesto",
    "bEsOrden", "iQDocumento", "EstaFacturado", "CodigoLibre", "GetState", "SeguridadPermiso", "GetConnection",
    "GetConnectionStrToRpt", "GetConnectionStr", "FacturarDocumento", "CambiarDocumento", "CancelarFacturacion",
    "CerrarImpresionAuto", "CancelarFacturas", "ConvertirSerie", "ConvertirSerieSinNum", "Insertar", "ObtenerCol",
    "Obtener", "IniciaRs", "NuevoCodigo", "GetNumerador", "SetNumerador", "UpdateNumerador", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateState", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"});

ClsPedidosCli::ClsPedidosCli() : RecordClass(kPedidosCli) {}

// As the delivery note's read, without its source number.
void obtener(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    readByNumber(cls, "Obtener", a, objCn, documentReads(OnNull::Empty, false));
}

}  // namespace

void registerPedidosCli(Registry& r) {
    defineDocumentClass<ClsPedidosCli>(r, kPedidosCli, kInterface, [](ClassBuilder<ClsPedidosCli>& b) {
        b.raw(namedMember("Insertar", documentParams(std::string(kDocumentInsertarArgs) + " sReferencia_2"),
                           &insertDocument));
        b.raw(namedMember("Obtener", documentParams(kDocumentObtenerArgs), &obtener));
    });
}

}  // namespace hist::documents
