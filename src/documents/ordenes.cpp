#include "documents/ordenes.hpp"

#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "documents/commercial.hpp"
#include "documents/document_members.hpp"
#include "frame/services/data_service.hpp"
#include "platform/clock.hpp"
#include "platform/runtime.hpp"
#include "tools/listing_tools.hpp"

namespace hist::documents {

using namespace frame;

namespace {

// The main selection: 47 fields, the number first (AddNew writes position 0).
#define HIST_ORDENES_SELECT                                                                                           \
    "SELECT Numero AS Orden, Numero_control as Control, Serie, Fecha, Fecha_Entrega as Entrega, Hora_Entrega as "    \
    "Hora, Referencia as Paciente, Repeticion as Repetición, Incidencia, Codigo AS Cliente, Razon_Social AS Empresa " \
    ", Colaborador as Doctor, Caja, Cerrada, Fecha_Cierre as Cierre, descripcion as Descripción, Imagenes as "       \
    "Imágenes, Tarifa, Almacen AS Almacén, Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago " \
    "AS Pago , Descuento, Descuento_PP, Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, "             \
    "Importe_recargo, IRPF , Importe_IRPF, Total, Estado, Doc_E, Facturado , Doc_F, Impreso , CTA_Contable, "        \
    "CTA_Contrapartida, Concepto, Archivo , Documento_P, Impuesto_Incluido, Numero_Barras as Barras FROM HOrdenes"

constexpr Template kSelect = HIST_ORDENES_SELECT;
constexpr Template kPorNumero = HIST_ORDENES_SELECT " WHERE Numero = {id}";
#undef HIST_ORDENES_SELECT

constexpr Template kInsertar =
    "INSERT INTO HOrdenes ( Numero, Fecha, Codigo, Razon_Social, Tarifa, Serie, Almacen, Referencia, Transportista, "
    "Divisa, Valor_Divisa, Total_Divisa, Forma_Pago, Descuento, Descuento_PP, Base, Gastos, Impuesto, "
    "Importe_Impuestos, Recargo, Importe_recargo, IRPF, Importe_IRPF, Total, Doc_E, CTA_Contable, CTA_Contrapartida, "
    "Concepto, Documento_P, Estado, Numero_control, Fecha_Cierre, Cerrada, Fecha_Entrega, Hora_Entrega, Repeticion, "
    "Incidencia, Colaborador, Caja, Archivo, Imagenes, Descripcion, Facturado , Doc_F ) VALUES ({vId}, {F:dtFecha}, "
    "'{sCod}', '{sEmpresa}', '{sTarifa}', '{sSerie}', '{sAlmacen}', '{sRef}', '{sTransportista}', '{sDivisa}', "
    "{N:dCambio}, {N:dTotaldivisa}, '{sFPago}', {N:dDto}, {N:dDtoPp}, {N:dBase}, {N:dPortes}, {iImpuesto}, "
    "{N:dImpImp}, {D:bRecargo}, {N:dImpRec}, {N:dIrpf}, {N:dImpIrpf}, {N:dTotal}, {vDocE}, '{sCtaContable}', "
    "'{sCtaContrapartida}', '{sConcepto}','{sTipoFactura}', {iEstado},{lNumControl},{F:dtFechaEnt}, '{sCerrada}', "
    "{F:dtFechaEnt}, '{T:dtHoraEnt}', '{A:bRepeticion}', '{sIncidencia}', '{sColaborador}','{sCaja}','{sArchivo}', "
    "'{A:bImagenes}', '{sDescripcion}', {iFacturado}, '{D:dFactura}')";
constexpr Template kInsertarTotal =
    "UPDATE HOrdenes Set Total_Divisa = '{D:dTotaldivisa}', Base = '{D:dBase}', Importe_Impuestos = '{D:dImpImp}', "
    "Importe_recargo = '{D:dImpRec}', Importe_IRPF = '{D:dImpIrpf}', Total = '{D:dTotal}' WHERE (Numero = {vId} )";
constexpr Template kObtener =
    "SELECT Numero AS Orden, Serie, Fecha, Codigo , Razon_Social AS Empresa , Tarifa, Almacen AS Almacén, Referencia, "
    "Transportista, Divisa , Valor_Divisa AS Cambio, Total_Divisa, Forma_Pago AS Pago , Descuento, Descuento_PP, "
    "Base, Gastos AS Portes, Impuesto , Importe_Impuestos, Recargo, Importe_recargo, IRPF , Importe_IRPF, Total, "
    "Estado, Doc_E, Facturado, Doc_F as Factura, Impreso , CTA_Contable, CTA_Contrapartida, Concepto , Documento_P, "
    "Colaborador, Repeticion FROM HOrdenes WHERE Numero = {vId}";
constexpr Template kObtenerOtrosDatos =
    "SELECT Fecha_Entrega, Hora_Entrega, Repeticion , Incidencia, Colaborador , Caja, Cerrada, Fecha_Cierre, "
    "Imagenes, Archivo, descripcion FROM HOrdenes WHERE Numero = {vId}";
constexpr Template kObtenerNumControl = "SELECT Numero_Control FROM HOrdenes WHERE Numero = {vId}";
constexpr Template kGetIncTax = "SELECT Numero, Impuesto_Incluido FROM HOrdenes WHERE Numero = {vId}";
constexpr Template kNuevoCodigoControl = "SELECT MAX(Numero_control) AS Nuevo_Codigo FROM HOrdenes";
constexpr Template kCodigoControlLibre =
    "SELECT Numero_Control FROM HOrdenes WHERE Numero  <> {vId} And Numero_Control = {vIdcod}";

// The customer's lists: a whole statement each, the customer code quoted.
constexpr Template kPorPaciente =
    "SELECT Numero AS Código, Referencia as Descripción, Descripcion as  Trabajo, Fecha_Entrega as Entrega  FROM "
    "HOrdenes WHERE (((Codigo) ='{id}'));";
constexpr Template kRecuperar =
    "SELECT Numero AS Código, Referencia as Descripción, Fecha,Doc_E as Origen, Codigo AS Cliente, Razon_Social AS "
    "Empresa, Descripcion as  Trabajo, Fecha_Entrega as Entrega  FROM HOrdenes;";
constexpr Template kRecuperarCliente =
    "SELECT Numero AS Código, Referencia as Descripción, Fecha,Doc_E as Origen, Codigo AS Cliente, Razon_Social AS "
    "Empresa, Descripcion as  Trabajo, Fecha_Entrega as Entrega  FROM HOrdenes WHERE (((Codigo) ='{id}'));";
constexpr Template kNoCerrada =
    "SELECT Numero AS Código, Referencia as Descripción, Codigo as Cliente, Razon_Social AS Empresa, Numero_control "
    "as Control FROM HOrdenes";

const ClassVariants kOrdenes{
    .className = "ClsOrdenes",
    .table = "HOrdenes",
    .select = kSelect,
    // "vista rapida" keeps its key; "pendientes" restores the order saved under "todos";
    // "seleccionnocerrada" has no condition, in spite of its name.
    .selections = {{"vista rapida", ""},
                   {"seleccionnocerrada", kNoCerrada, true, true},
                   {"seleccpac", kPorPaciente, true, true},
                   {"seleccrecuper", kRecuperar, true, true},
                   {"seleccrecuperH", kRecuperarCliente, true, true},
                   {"seleccion", " WHERE Numero = {id}"},
                   {"pendientes", " WHERE Cerrada <> 'Cerrada'", true, false, "todos"},
                   {"facturados", " WHERE Facturado = 4"}},
    .nuevoCodigo = kDocumentNuevoCodigo,
    .deleteAll = "DELETE  FROM {table}  WHERE (Numero = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = kDocumentConvertirSerie,
    .codigoLibre = kDocumentCodigoLibre,
    .statements = documentStatements("ClsOrdenes") +
                  std::vector<NamedStatement>{{"Insertar", kInsertar},
                                              {"InsertarTotal", kInsertarTotal},
                                              {"Obtener", kObtener},
                                              {"ObtenerOtrosDatos", kObtenerOtrosDatos},
                                              {"GetRegistroActivo", kPorNumero},
                                              {"ObtenerNumControl", kObtenerNumControl},
                                              {"GetIncTax", kGetIncTax},
                                              {"NuevoCodigoControl", kNuevoCodigoControl},
                                              {"CodigoControlLibre", kCodigoControlLibre}},
    .signatures = [] {
        std::vector<Signature> s = documentSignatures();
        s.push_back({"NuevoCodigo", {optRef("serie", PT::String, Variant("H")), optObj("objCn")}});
        s.push_back({"DeleteAll", {in("vId"), in("dtFecha", PT::Date), optObj("cnnActive")}});
        s.push_back({"FindRecord", {in("Criteria", PT::String), opt("Index", PT::Integer, Variant(int16_t{0}))}});
        s.push_back({"FacturarDocumento",
                     {in("vId"), in("iFacturado", PT::Integer), in("vIdFac"), in("sCerrar", PT::String),
                      in("dtFecha", PT::Date), opt("dtFechaNew", PT::Date), optObj("cnnActive")}});
        return s;
    }(),
    .open = OpenForm::E,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = {},
    .update = {.scope = 1, .copyInto = "Barras", .copyFrom = "Orden"},
    .findField = kFindByIndex,
    .findPrefix = true,
    .deleteAllBase = 1,
    .permissionGroup = "Hist_Fabricacion",
    .filter = FilterForm::Orders,
    .key = KeyForm::WholePrecision,
    .listingWalk = ListingWalk::GridColumns,
    .listingSums = true,
    .document = {.invoiced = InvoicedForm::Cerrada},
};

constexpr std::array<std::string_view, 70> kInterface{
    "ObtenerOtrosDatos", "ObtenerNumControl", "GetDocPath", "ConvertirSerieSinNum", "ConvertirSerie", "GetTxtFile",
    "GetRptPath", "sClassName", "iQDocumentoF", "iQDocumento", "bEstaFacturado", "bEsPresupuesto", "dtFecha",
    "Insertar", "InsertarTotal", "ActualizarEuros", "CodigoLibre", "CodigoControlLibre", "EstaFacturado", "GetState",
    "SeguridadPermiso", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "GetIncTax",
    "FacturarDocumento", "CerrarImpresionAuto", "CambiarDocumento", "CancelarFacturacion", "Obtener",
    "ObtenerRegistroActivo", "GetRegistroActivo", "IniciaRs", "CloseRs", "NuevoCodigoControl", "NuevoCodigo",
    "GetNumerador", "SetNumerador", "UpdateNumerador", "EditingRecord", "AbsolutePosition", "AddNew", "Delete",
    "DeleteAll", "MoveToBookmark", "Requery", "UpdateIncTax", "Update", "UpdateState", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"};

// A step of ObtenerRegistroActivo: whatever fails (no recordset, no row, no such
// field, a conversion) is ignored and the argument keeps what it had.
template <class F>
void guarded(F step) {
    try {
        step();
    } catch (const Error&) {
    }
}

}  // namespace

ClsOrdenes::ClsOrdenes() : RecordClass(kOrdenes) {}

// ------------------------------------------------------------ writing

void ClsOrdenes::Insertar(Variant& vId, int32_t& lNumControl, DateValue& dtFecha, std::string& sSerie,
                          std::string& sCod, std::string& sEmpresa, std::string& sTarifa, std::string& sAlmacen,
                          std::string& sRef, std::string& sTransportista, std::string& sDivisa, double& dCambio,
                          double& dTotaldivisa, std::string& sFPago, double& dDto, double& dDtoPp, double& dBase,
                          double& dPortes, int16_t& iImpuesto, double& dTotal, int16_t& iEstado, Variant& vDocE,
                          double& dImpImp, double& bRecargo, double& dImpRec, double& dIrpf, double& dImpIrpf,
                          std::string& sCtaContable, std::string& sCtaContrapartida, std::string& sConcepto,
                          std::string& sTipoFactura, DateValue& dtFechaEnt, bool& bRepeticion,
                          std::string& sIncidencia, std::string& sColaborador, std::string& sCaja,
                          std::string& sCerrada, DateValue& /*dtFechaCierre*/, DateValue& dtHoraEnt, bool& bImagenes,
                          std::string& sArchivo, std::string& sDescripcion, int16_t& iFacturado, double& dFactura,
                          ConnPtr& objCn) {
    // A zero delivery date becomes the order's date, and the caller sees it. The
    // closing date is written from the delivery date: dtFechaCierre is never read.
    if (dtFechaEnt.serial == 0) dtFechaEnt = dtFecha;
    execute(fill(kInsertar, {{"vId", vId},
                             {"dtFecha", Variant(dtFecha)},
                             {"sCod", Variant(sCod)},
                             {"sEmpresa", Variant(sEmpresa)},
                             {"sTarifa", Variant(sTarifa)},
                             {"sSerie", Variant(sSerie)},
                             {"sAlmacen", Variant(sAlmacen)},
                             {"sRef", Variant(sRef)},
                             {"sTransportista", Variant(sTransportista)},
                             {"sDivisa", Variant(sDivisa)},
                             {"dCambio", Variant(dCambio)},
                             {"dTotaldivisa", Variant(dTotaldivisa)},
                             {"sFPago", Variant(sFPago)},
                             {"dDto", Variant(dDto)},
                             {"dDtoPp", Variant(dDtoPp)},
                             {"dBase", Variant(dBase)},
                             {"dPortes", Variant(dPortes)},
                             {"iImpuesto", Variant(iImpuesto)},
                             {"dImpImp", Variant(dImpImp)},
                             {"bRecargo", Variant(bRecargo)},
                             {"dImpRec", Variant(dImpRec)},
                             {"dIrpf", Variant(dIrpf)},
                             {"dImpIrpf", Variant(dImpIrpf)},
                             {"dTotal", Variant(dTotal)},
                             {"vDocE", vDocE},
                             {"sCtaContable", Variant(sCtaContable)},
                             {"sCtaContrapartida", Variant(sCtaContrapartida)},
                             {"sConcepto", Variant(sConcepto)},
                             {"sTipoFactura", Variant(sTipoFactura)},
                             {"iEstado", Variant(iEstado)},
                             {"lNumControl", Variant(lNumControl)},
                             {"dtFechaEnt", Variant(dtFechaEnt)},
                             {"sCerrada", Variant(sCerrada)},
                             {"dtHoraEnt", Variant(dtHoraEnt)},
                             {"bRepeticion", Variant(bRepeticion)},
                             {"sIncidencia", Variant(sIncidencia)},
                             {"sColaborador", Variant(sColaborador)},
                             {"sCaja", Variant(sCaja)},
                             {"sArchivo", Variant(sArchivo)},
                             {"bImagenes", Variant(bImagenes)},
                             {"sDescripcion", Variant(sDescripcion)},
                             {"iFacturado", Variant(iFacturado)},
                             {"dFactura", Variant(dFactura)}}),
            objCn);
}

void ClsOrdenes::InsertarTotal(Variant& vId, double& dTotaldivisa, double& dBase, double& dTotal, double& dImpImp,
                               double& dImpRec, double& dImpIrpf, ConnPtr& objCn) {
    execute(fill(kInsertarTotal, {{"vId", vId},
                                  {"dTotaldivisa", Variant(dTotaldivisa)},
                                  {"dBase", Variant(dBase)},
                                  {"dImpImp", Variant(dImpImp)},
                                  {"dImpRec", Variant(dImpRec)},
                                  {"dImpIrpf", Variant(dImpIrpf)},
                                  {"dTotal", Variant(dTotal)}}),
            objCn);
}

// ------------------------------------------------------------ reading

void ClsOrdenes::Obtener(Variant& vId, DateValue& dtFecha, std::string& sSerie, std::string& sCod,
                         std::string& sEmpresa, std::string& sTarifa, std::string& sAlmacen, std::string& sRef,
                         std::string& sTransportista, std::string& sDivisa, double& dCambio, double& dTotaldivisa,
                         std::string& sFPago, double& dDto, double& dDtoPp, double& dBase, double& dPortes,
                         int16_t& iImpuesto, double& dTotal, int16_t& iEstado, double& dDocE, int16_t& iFacturado,
                         double& dFactura, double& dImpImp, double& bRecargo, double& dImpRec, double& dIrpf,
                         double& dImpIrpf, std::string& sCtaContable, std::string& sCtaContrapartida,
                         std::string& sConcepto, std::string& /*sTipoFactura*/, std::string& sRef2,
                         bool& bRepeticion, ConnPtr& objCn) {
    RsPtr held = open(fill(kObtener, {{"vId", vId}}), objCn);
    ado::Recordset& r = *held;
    if (recordCount(r) <= 0) return;
    using enum OnNull;
    readField(r, "Fecha", dtFecha, Keep);
    readField(r, "Serie", sSerie, Keep);
    readField(r, "Codigo", sCod, Keep);
    readField(r, "Empresa", sEmpresa, Keep);
    readField(r, "Tarifa", sTarifa, Keep);
    readField(r, "Almacén", sAlmacen, Keep);
    readField(r, "Referencia", sRef, Empty);
    readField(r, "Colaborador", sRef2, Empty);
    readField(r, "Transportista", sTransportista, Keep);
    readField(r, "Divisa", sDivisa, Keep);
    readField(r, "Cambio", dCambio, Keep);
    readField(r, "Total_Divisa", dTotaldivisa, Keep);
    readField(r, "Pago", sFPago, Keep);
    readField(r, "Descuento", dDto, Keep);
    readField(r, "Descuento_PP", dDtoPp, Keep);
    readField(r, "Base", dBase, Keep);
    readField(r, "Portes", dPortes, Keep);
    readField(r, "Impuesto", iImpuesto, Fail);
    readField(r, "Importe_Impuestos", dImpImp, Keep);
    readField(r, "Recargo", bRecargo, Fail);
    readField(r, "Importe_recargo", dImpRec, Keep);
    readField(r, "IRPF", dIrpf, Keep);
    readField(r, "Importe_IRPF", dImpIrpf, Keep);
    readField(r, "Total", dTotal, Keep);
    readField(r, "Estado", iEstado, Fail);
    readField(r, "Doc_E", dDocE, Keep);
    readField(r, "Facturado", iFacturado, Fail);
    readField(r, "Factura", dFactura, Keep);
    readField(r, "CTA_Contable", sCtaContable, Keep);
    readField(r, "CTA_Contrapartida", sCtaContrapartida, Keep);
    readField(r, "Concepto", sConcepto, Keep);
    readField(r, "Repeticion", bRepeticion, Fail);
}

void ClsOrdenes::ObtenerOtrosDatos(Variant& vId, DateValue& dtFechaEnt, DateValue& dtHoraEnta, bool& bRepeticion,
                                   std::string& sIncidencia, std::string& sColaborador, std::string& sCaja,
                                   std::string& sCerrada, DateValue& dtFechaCierre, bool& bImagenes,
                                   std::string& sArchivo, std::string& sDescripcion, ConnPtr& objCn) {
    RsPtr held = open(fill(kObtenerOtrosDatos, {{"vId", vId}}), objCn, 1);
    ado::Recordset& r = *held;
    if (recordCount(r) <= 0) return;
    using enum OnNull;
    readField(r, "Fecha_Entrega", dtFechaEnt, Keep);
    readField(r, "Hora_Entrega", dtHoraEnta, Keep);
    readField(r, "Incidencia", sIncidencia, Empty);
    readField(r, "Colaborador", sColaborador, Empty);
    readField(r, "Caja", sCaja, Empty);
    readField(r, "Cerrada", sCerrada, Empty);
    readField(r, "Archivo", sArchivo, Empty);
    readField(r, "Fecha_Cierre", dtFechaCierre, Keep);
    readField(r, "Imagenes", bImagenes, Fail);
    readField(r, "Repeticion", bRepeticion, Fail);
    readField(r, "Descripcion", sDescripcion, Empty);
}

void ClsOrdenes::ObtenerRegistroActivo(Variant& vId, DateValue& dtFecha, std::string& sPaciente,
                                       std::string& sEmpresa, std::string& sDescripcion, DateValue& dtEntrega,
                                       Variant& vIdCli) {
    using enum OnNull;
    // A Null date is the conversion of an empty text, which fails and is ignored.
    guarded([&] { readField(rs(), "Orden", vId, Empty); });
    guarded([&] { readField(rs(), "Fecha", dtFecha, Keep); });
    guarded([&] { readField(rs(), "Paciente", sPaciente, Empty); });
    guarded([&] { readField(rs(), "Empresa", sEmpresa, Empty); });
    guarded([&] {
        const Variant v = rs().value("Cliente");
        vIdCli = v.isNull() ? Variant(std::string()) : v;
    });
    guarded([&] { readField(rs(), "Descripción", sDescripcion, Empty); });
    guarded([&] { readField(rs(), "Entrega", dtEntrega, Keep); });
}

void ClsOrdenes::GetRegistroActivo(Variant& vId, Variant& dtFecha, std::string& sPaciente, std::string& sCod,
                                   std::string& sEmpresa, std::string& sDescripcion, Variant& dtEntrega,
                                   ConnPtr& objCn) {
    RsPtr held = open(fill(kPorNumero, {{"id", vId}}), objCn);
    ado::Recordset& r = *held;
    if (recordCount(r) <= 0) return;
    using enum OnNull;
    // Dates come back as variants so that a Null one can be the empty text.
    auto dateOrEmpty = [&](std::string_view name, Variant& target) {
        const Variant v = r.value(name);
        target = v.isNull() ? Variant(std::string()) : v;
    };
    dateOrEmpty("Fecha", dtFecha);
    readField(r, "Paciente", sPaciente, Empty);
    // A Null customer clears the company and keeps the code; the next step fills the
    // company anyway.
    if (r.value("Cliente").isNull()) sEmpresa.clear();
    else readField(r, "Cliente", sCod, Keep);
    readField(r, "Empresa", sEmpresa, Empty);
    readField(r, "Descripción", sDescripcion, Empty);
    dateOrEmpty("Entrega", dtEntrega);
}

void ClsOrdenes::ObtenerNumControl(Variant& vId, Variant& vIdNumControl, ConnPtr& objCn) {
    RsPtr held = open(fill(kObtenerNumControl, {{"vId", vId}}), objCn, 1);
    if (recordCount(*held) > 0) readField(*held, "Numero_Control", vIdNumControl, OnNull::Keep);
}

int16_t ClsOrdenes::GetIncTax(Variant& vId, ConnPtr& objCn) {
    RsPtr held = open(fill(kGetIncTax, {{"vId", vId}}), objCn);
    if (recordCount(*held) > 0) return rt::CInt(held->value("Impuesto_Incluido"));
    return 0;
}

// ------------------------------------------------------------ numbers

// The control numbers run across every series: the series is not used.
Variant ClsOrdenes::NuevoCodigoControl(std::string& /*serie*/, ConnPtr& objCn) {
    RsPtr held = open(fill(kNuevoCodigoControl, {}), objCn);
    return nextCode(*held);
}

bool ClsOrdenes::CodigoControlLibre(Variant& vId, Variant& vIdcod, ConnPtr& objCn) {
    return recordCount(*open(fill(kCodigoControlLibre, {{"vId", vId}, {"vIdcod", vIdcod}}), objCn)) < 1;
}

// ------------------------------------------------------------ the current row, files

void ClsOrdenes::writeNewRowDefaults(ado::Recordset& r) {
    // The number from series "H" and the control number from series "A", each on a
    // connection of its own, whatever the series the order will have.
    ConnPtr none;
    r.setValue(r.Fields()->Item(Variant(int16_t{0}))->Name(), NuevoCodigoIn(Variant(), "H", none));
    std::string serieA = "A";
    r.setValue("Control", NuevoCodigoControl(serieA, none));
    // Dates go in as their "Short Date" text; the time is the present time.
    const double today = Clock::today();
    r.setValue("Fecha", Variant(rt::Format(Variant(DateValue{today}), "Short Date")));
    r.setValue("Entrega", Variant(rt::Format(Variant(DateValue{today + 1}), "Short Date")));
    r.setValue("Cierre", Variant(rt::Format(Variant(DateValue{today}), "Short Date")));
    r.setValue("Hora", Variant(rt::Format(Variant(DateValue{Clock::now() + 1}), "Short Time")));
    for (std::string_view amount : {"Cambio", "Total_divisa", "descuento", "descuento_pp", "Base", "Portes", "Impuesto",
                                    "Importe_Impuestos", "Recargo", "Importe_Recargo", "irpf", "importe_irpf", "Total"})
        r.setValue(amount, Variant(int16_t{0}));
    r.setValue("Impreso", Variant(false));
    r.setValue("Estado", Variant(int16_t{0}));
    r.setValue("Repetición", Variant(false));
    r.setValue("Cerrada", Variant(std::string("Fabricación")));
    r.setValue("Imágenes", Variant(false));
}

void ClsOrdenes::UpdateIncTax(bool& vIdIncTax) { rs().setValue("Impuesto_Incluido", Variant(vIdIncTax)); }

void ClsOrdenes::CloseRs() {
    dataMembers()->Clear();
    rs().Close();
}

void ClsOrdenes::GetDocPath(std::string& sDocPath) { sDocPath = services::ClsServicioDatos().GetDocPath(sDocPath); }

std::string ClsOrdenes::GetTxtFile() { return tools::listingTxtFile(*this); }

namespace {

// Insertar and Obtener share the order's commercial arguments in one order: the
// head (series to state) and the amounts and accounts, with their own pieces around.
std::vector<Param> orderParams(std::vector<Param> first, const std::vector<Param>& middle,
                               const std::vector<Param>& last) {
    const std::vector<Param> headParams{
        inout("sSerie", PT::String),
        inout("sCod", PT::String),
        inout("sEmpresa", PT::String),
        inout("sTarifa", PT::String),
        inout("sAlmacen", PT::String),
        inout("sRef", PT::String),
        inout("sTransportista", PT::String),
        inout("sDivisa", PT::String),
        inout("dCambio", PT::Double),
        inout("dTotaldivisa", PT::Double),
        inout("sFPago", PT::String),
        inout("dDto", PT::Double),
        inout("dDtoPp", PT::Double),
        inout("dBase", PT::Double),
        inout("dPortes", PT::Double),
        inout("iImpuesto", PT::Integer),
        inout("dTotal", PT::Double),
        inout("iEstado", PT::Integer),
    };
    const std::vector<Param> amounts{
        inout("dImpImp", PT::Double),
        inout("bRecargo", PT::Double),
        inout("dImpRec", PT::Double),
        inout("dIrpf", PT::Double),
        inout("dImpIrpf", PT::Double),
        inout("sCtaContable", PT::String),
        inout("sCtaContrapartida", PT::String),
        inout("sConcepto", PT::String),
        inout("sTipoFactura", PT::String),
    };
    for (const auto* part : {&headParams, &middle, &amounts, &last}) first.insert(first.end(), part->begin(), part->end());
    return first;
}

}  // namespace

// ------------------------------------------------------------ registration

void registerOrdenes(Registry& r) {
    defineDocumentClass<ClsOrdenes>(r, kOrdenes, kInterface, [](ClassBuilder<ClsOrdenes>& b) {
        b.method("ObtenerOtrosDatos",
                 {inout("vId"), inout("dtFechaEnt", PT::Date), inout("dtHoraEnta", PT::Date),
                              inout("bRepeticion", PT::Boolean), inout("sIncidencia", PT::String),
                              inout("sColaborador", PT::String), inout("sCaja", PT::String), inout("sCerrada", PT::String),
                              inout("dtFechaCierre", PT::Date), inout("bImagenes", PT::Boolean), inout("sArchivo", PT::String),
                              inout("sDescripcion", PT::String), optObj("objCn")},
                 &ClsOrdenes::ObtenerOtrosDatos);
        b.method("ObtenerNumControl", {inout("vId"), inout("vIdNumControl"), optObj("objCn")},
                 &ClsOrdenes::ObtenerNumControl);
        b.method("GetDocPath", {inout("sDocPath", PT::String)}, &ClsOrdenes::GetDocPath);
        b.method("GetTxtFile", {}, &ClsOrdenes::GetTxtFile);
        b.method("Insertar",
                 orderParams({inout("vId"), inout("lNumControl", PT::Long), inout("dtFecha", PT::Date)},
                             {inout("vDocE")},
                             {inout("dtFechaEnt", PT::Date),
                              inout("bRepeticion", PT::Boolean),
                              inout("sIncidencia", PT::String),
                              inout("sColaborador", PT::String),
                              inout("sCaja", PT::String),
                              inout("sCerrada", PT::String),
                              inout("dtFechaCierre", PT::Date),
                              inout("dtHoraEnt", PT::Date),
                              inout("bImagenes", PT::Boolean),
                              inout("sArchivo", PT::String),
                              inout("sDescripcion", PT::String),
                              inout("iFacturado", PT::Integer),
                              inout("dFactura", PT::Double), optObj("objCn")}),
                 &ClsOrdenes::Insertar);
        b.method("InsertarTotal",
                 {inout("vId"), inout("dTotaldivisa", PT::Double), inout("dBase", PT::Double),
                              inout("dTotal", PT::Double), inout("dImpImp", PT::Double), inout("dImpRec", PT::Double),
                              inout("dImpIrpf", PT::Double), optObj("objCn")},
                 &ClsOrdenes::InsertarTotal);
        b.method("CodigoControlLibre", {inout("vId"), inout("vIdcod"), optObj("objCn")},
                 &ClsOrdenes::CodigoControlLibre);
        b.method("GetIncTax", {inout("vId"), optObj("objCn")}, &ClsOrdenes::GetIncTax);
        b.method("Obtener",
                 orderParams({inout("vId"), inout("dtFecha", PT::Date)},
                             {inout("dDocE", PT::Double), inout("iFacturado", PT::Integer), inout("dFactura", PT::Double)},
                             {inout("sRef2", PT::String), inout("bRepeticion", PT::Boolean), optObj("objCn")}),
                 &ClsOrdenes::Obtener);
        b.method("ObtenerRegistroActivo",
                 {inout("vId"), inout("dtFecha", PT::Date), inout("sPaciente", PT::String),
                              inout("sEmpresa", PT::String), inout("sDescripción", PT::String), inout("dtEntrega", PT::Date),
                  optRef("vIdCli")},
                 &ClsOrdenes::ObtenerRegistroActivo);
        b.method("GetRegistroActivo",
                 {inout("vId"), inout("dtFecha"), inout("sPaciente", PT::String), inout("sCod", PT::String),
                              inout("sEmpresa", PT::String), inout("sDescripción", PT::String), inout("dtEntrega"),
                  optObj("objCn")},
                 &ClsOrdenes::GetRegistroActivo);
        b.method("CloseRs", {}, &ClsOrdenes::CloseRs);
        b.method("NuevoCodigoControl", {optRef("serie", PT::String, Variant("A")), optObj("objCn")},
                 &ClsOrdenes::NuevoCodigoControl);
        b.method("UpdateIncTax", {inout("vIdIncTax", PT::Boolean)}, &ClsOrdenes::UpdateIncTax);
    });
}

}  // namespace hist::documents
