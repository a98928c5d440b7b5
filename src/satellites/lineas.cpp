#include "satellites/lineas.hpp"

#include <array>
#include <stdexcept>
#include <type_traits>
#include <string_view>

#include "ado/recordset.hpp"
#include "documents/document_members.hpp"
#include "frame/services/data_service.hpp"
#include "platform/collection.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "tools/registration.hpp"

namespace hist::satellites {

using namespace frame;
using documents::operator+;

namespace {

// ------------------------------------------------------------ the statements

constexpr std::string_view kOrdenesSelect =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, Seccion as "
    "Sección, Empleado, Puntos, ID, Numero AS Orden, Facturado, Doc_F as Doc, Fecha From HOrdenes_Lineas";

constexpr Template kOrdenesObtener =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero AS "
    "Orden From HOrdenes_Lineas Where ((ID = {vId}) And  (Numero = {vNum}))";
constexpr Template kOrdenesObtenerTodo =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, Seccion as "
    "Sección, Empleado, Puntos, ID, Numero AS Orden, Facturado, Doc_F as Doc From HOrdenes_Lineas Where ((ID = "
    "{vId}) And  (Numero = {vNum}))";
constexpr Template kOrdenesInsertar =
    "INSERT INTO HOrdenes_Lineas ( Codigo, Descripcion, Cantidad, Precio, DTO, IVA, Importe , Lote, ID, Numero, "
    "Seccion , Empleado, Puntos, Facturado, Doc_F, Fecha ) VALUES ('{sCodigo}', '{sDescripcion}', {N:dCantidad} , "
    "{N:dPrecio}, {N:dDtoLin}, {N:dIva}, {N:dImporte}, '{sLote}', {vIdNewReg}, {vDoc} , '{sSeccion}', "
    "'{sEmpleado}', '{D:iPuntos}', {iFacturado}, {vDocFac} , {F:dtFecha} )";
constexpr Template kOrdenesObtenerCol =
    "SELECT  ID, Numero From HOrdenes_Lineas Where (Numero = {vId} AND Fecha = {FL:dtFecha} )";
constexpr Template kOrdenesObtenerColDoc =
    "SELECT  ID, Numero From HOrdenes_Lineas Where (Doc_F = {vId}) And (Facturado = {iFact})";
constexpr Template kOrdenesDeleteOne =
    "DELETE  FROM HOrdenes_Lineas  WHERE (Numero = {vId}) And (ID = {vIdRec} )";

// The three other kinds write their statements alike; only the table and the alias
// of Numero differ.
constexpr Template kInsertar =
    "INSERT INTO {table} ( Codigo, Descripcion, Cantidad, Precio, DTO, IVA,  Importe , Lote, ID, Numero, Fecha ) "
    "VALUES ( '{sCodigo}' , '{sDescripcion}', {N:dCantidad}  , {N:dPrecio} , {N:dDtoLin} , {N:dIva} , "
    "{N:dImporte} , '{sLote}' , {vIdNewReg} , {vDoc} , {F:dtFecha} )";
constexpr Template kObtenerCol = "SELECT  ID, Numero From {table} Where (Numero = {vId})";
constexpr Template kReSumarReg =
    "Select  CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "From {table} Where (Numero = {vId})";

constexpr Template kPedidosSelect =
    "SELECT  CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Pedido From HPedidos_Clientes_Lineas";
constexpr Template kPedidosObtener =
    "SELECT  CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Pedido From HPedidos_Clientes_Lineas Where (ID = {vId})";
constexpr Template kPedidosReSumarReg =
    "Select  CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Pedido From HPedidos_Clientes_Lineas Where (Numero = {vId})";
constexpr Template kAlbaranesSelect =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Albarán From HAlbaranes_Lineas";
constexpr Template kAlbaranesObtener =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Albarán From HAlbaranes_Lineas Where (ID = {vId})";
constexpr Template kFacturasSelect =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Factura From HFacturas_Lineas";
// The invoice lines' Obtener names Numero "Albarán", unlike their selection.
constexpr Template kFacturasObtener =
    "SELECT CODIGO AS Código, Descripcion as Descripción , Cantidad, Precio, DTO, IVA, Importe, Lote, ID, Numero "
    "AS Albarán From HFacturas_Lineas Where (ID = {vId})";

// ------------------------------------------------------------ the declarations

// The lines' AddNew takes the document classes' arguments; bIsInvoiced is not read.
frame::Signature lineAddNew() {
    return {"AddNew", {optRef("bDefVal", PT::Boolean, Variant(true)), optRef("bIsInvoiced", PT::Boolean, Variant(true))}};
}

// What the four classes declare alike: the plain variant, open form D, the keywords,
// the saved order on both opening members, the line form of Delete, FindRecord on
// field 0, the new line's defaults after its number.
ClassVariants lineClass(std::string_view className, std::string_view table, Template select,
                        std::string_view alias, std::string_view permissionGroup, FieldDefault id,
                        std::vector<NamedStatement> statements) {
    return ClassVariants{
        .className = className,
        .table = table,
        .select = select,
        .selections = {{"seleccion", " Where (Numero = {id} AND Fecha = {F:dtFecha} )"},
                       {"ninguno", " Where (Numero = 0)"},
                       {"deeliminar", " Where (CODIGO = '{id}')"}},
        .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM {table}",
        .deleteAll = "DELETE  FROM {table}  WHERE (Numero = {vId})",
        .convertirSerie = "UPDATE {table} SET Numero = {vNewId} WHERE(Numero = {vId})",
        .obtenerCol = kObtenerCol,
        .obtenerColBase = 4,
        .statements = std::move(statements),
        .signatures = {{"NuevoCodigo", {optObj("objCn")}},
                       {"DeleteAll", {in("vId"), optObj("cnnActive")}},
                       {"UpdateId", {inout("vId")}},
                       {"ObtenerCol", {inout("vId"), optObj("objCn")}},
                       lineAddNew()},
        .open = OpenForm::D,
        .orderOnIniciaRs = true,
        .orderOnRequery = true,
        .relaysMoveComplete = false,
        .requeryDefaultKey = "todos",
        .addNewDefaults = {id,
                           {"Cantidad", ValueSource::Constant, Variant(int16_t{1})},
                           {"Precio", ValueSource::Constant, Variant(int16_t{0})},
                           {"Dto", ValueSource::Constant, Variant(int16_t{0})},
                           {"Iva", ValueSource::Constant, Variant(int16_t{0})}},
        .del = DeleteForm::Line,
        .findField = 0,
        .updateId = {.parent = alias, .key = ValueSource::NuevoCodigoCounter, .writesFecha = false},
        .affectCurrent = {.parent = alias, .writesId = false, .batch = true},
        .permissionGroup = permissionGroup,
        .key = KeyForm::SelectionReplaces,
    };
}

const FieldDefault kUnnumbered{"ID", ValueSource::Constant, Variant(int16_t{-1})};
constexpr FieldDefault kNumberedAcross{"ID", ValueSource::NuevoCodigoPlusCount};

const ClassVariants kOrdenes = [] {
    ClassVariants v = lineClass("ClsOrdenesLineas", "HOrdenes_Lineas", kOrdenesSelect, "Orden", "Fabricacion_Lineas",
                                kUnnumbered,
                                documents::documentStatements("ClsOrdenesLineas") +
                                    std::vector<NamedStatement>{{"ReSumarReg", kReSumarReg},
                                                                {"ObtenerColDoc", kOrdenesObtenerColDoc},
                                                                {"Obtener", kOrdenesObtener},
                                                                {"Obtener_Todo", kOrdenesObtenerTodo},
                                                                {"Insertar", kOrdenesInsertar},
                                                                {"DeleteOne", kOrdenesDeleteOne}});
    // The order's lines key on number and date, and the date follows bFechaServidor.
    v.selections[0].clause = " Where (Numero = {id} AND Fecha = {FL:dtFecha} )";
    // Every line with a batch, by a selection of its own (batches compare as text).
    v.selections.push_back({"lotes",
                            "SELECT Numero AS Orden, CODIGO AS Código, Descripcion as Descripción , Cantidad, Lote  "
                            "From HOrdenes_Lineas Where (Lote > '0')",
                            true, true});
    v.nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Lineas Where Numero = {vCod}";
    v.nuevoCodigoCloses = true;
    v.deleteAll = "DELETE  FROM HOrdenes_Lineas  WHERE (Numero = {vId} AND Fecha = {F:dtFecha} )";
    // The new number goes in quoted.
    v.convertirSerie = "UPDATE HOrdenes_Lineas SET Numero = '{vNewId}' WHERE(Numero = {vId})";
    v.obtenerCol = kOrdenesObtenerCol;
    // FacturarDocumento addresses one line, by its number within an order.
    v.signatures = {lineAddNew(),
                    {"FacturarDocumento",
                     {in("vId"), in("vNum"), in("iFacturado", PT::Integer), in("vIdFac"), optObj("cnnActive")}}};
    v.updateId = {.parent = "Orden", .key = ValueSource::NuevoCodigoCounter, .onlyUnnumbered = true};
    return v;
}();

const ClassVariants kPedidos =
    lineClass("ClsPedidosCliLineas", "HPedidos_Clientes_Lineas", kPedidosSelect, "Pedido", "Pedidos_Clientes_Lineas",
              kNumberedAcross,
              {{"ReSumarReg", kPedidosReSumarReg},
               {"Obtener", kPedidosObtener},
               {"Insertar", kInsertar}});

const ClassVariants kAlbaranes = [] {
    ClassVariants v = lineClass("ClsAlbaranesLineas", "HAlbaranes_Lineas", kAlbaranesSelect, "Albarán",
                                "Albaranes_Lineas", kUnnumbered,
                                {{"ReSumarReg", kReSumarReg},
                                                   {"Obtener", kAlbaranesObtener},
                                 {"Insertar", kInsertar}});
    v.updateId.onlyUnnumbered = true;
    return v;
}();

// Invoice lines have neither ConvertirSerie nor ReSumarReg.
const ClassVariants kFacturas = [] {
    ClassVariants v = lineClass("ClsFacturasLineas", "HFacturas_Lineas", kFacturasSelect, "Factura",
                                "Facturas_Lineas", kNumberedAcross,
                                {{"Obtener", kFacturasObtener}, {"Insertar", kInsertar}});
    v.convertirSerie = {};
    return v;
}();

// bEstaFacturado, ActualizarEuros and the invoicing links are the document classes'
// shared members (documents/document_members.hpp), run on the statements below.
constexpr auto kOrdenesInterface = std::to_array<std::string_view>({
    "sClassName", "bEstaFacturado", "ReSumarReg", "ActualizarEuros", "CambiarDocumento", "CancelarFacturacion",
    "FacturarDocumento", "SeguridadPermiso", "GetCollectionRegs", "GetConnection", "ObtenerCol", "ObtenerColDoc",
    "ObtenerColRs", "SetValor", "SetCantidad", "Obtener_Todo", "Obtener", "Insertar", "IniciaRs", "ConvertirSerie",
    "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "NuevoCodigo", "AddNew", "SetPuntos",
    "UpdateadAffectCurrent", "UpdateId", "DeleteAll", "DeleteOne", "EditingRecord", "AbsolutePosition", "Delete",
    "Requery", "Update", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveToBookmark", "MoveNext",
    "MovePrevious", "ExistenRegistros", "FindRecord", "FindReg", "ValidaDefinedSize", "ValidaKey", "ValidaValue",
    "GetFilter", "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid",
    "SumaCol"});

constexpr auto kPedidosInterface = std::to_array<std::string_view>({
    "sClassName", "SeguridadPermiso", "ConvertirSerie", "GetCollectionRegs", "GetConnection", "ObtenerCol", "Obtener",
    "Insertar", "IniciaRs", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "NuevoCodigo", "AddNew",
    "UpdateadAffectCurrent", "UpdateId", "DeleteAll", "EditingRecord", "AbsolutePosition", "Delete", "Requery",
    "Update", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveToBookmark", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "SumaCol", "ReSumarReg"});

constexpr auto kFacturasInterface = std::to_array<std::string_view>({
    "sClassName", "SeguridadPermiso", "GetCollectionRegs", "GetConnection", "ObtenerCol", "Obtener", "Insertar",
    "IniciaRs", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "NuevoCodigo", "AddNew",
    "UpdateadAffectCurrent", "UpdateId", "DeleteAll", "EditingRecord", "AbsolutePosition", "Delete", "Requery",
    "Update", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveToBookmark", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "SumaCol"});

constexpr auto kAlbaranesInterface = std::to_array<std::string_view>({
    "GetRptPath", "sClassName", "ConvertirSerie", "SeguridadPermiso", "GetCollectionRegs", "GetConnection",
    "ObtenerCol", "Obtener", "Insertar", "IniciaRs", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans",
    "NuevoCodigo", "AddNew", "UpdateadAffectCurrent", "UpdateId", "DeleteAll", "EditingRecord", "AbsolutePosition",
    "Delete", "Requery", "Update", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveToBookmark", "MoveNext",
    "MovePrevious", "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter",
    "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "SumaCol",
    "ReSumarReg"});

// ------------------------------------------------------------ reading helpers

// A text field where a null field reads as a fixed text ("0" for a line with no
// batch, "000" for no employee).
std::string textOr(ado::Recordset& r, std::string_view field, std::string_view ifNull) {
    const Variant v = r.value(field);
    return v.isNull() ? std::string(ifNull) : rt::CStr(v);
}
void assignText(std::string& target, std::string text) { target = std::move(text); }
void assignText(Variant& target, std::string text) { target = Variant(std::move(text)); }
}  // namespace

// ------------------------------------------------------------ the money

// The code and amounts unguarded, the description kept on a null field, the batch "0"
// on a null field.
template <class S, class D>
RsPtr DocumentLines::obtainLine(const Statement& sql, ConnPtr& objCn, int iBase, S& sCodigo, S& sDescripcion,
                                D& dCantidad, D& dPrecio, D& dDtoLin, D& dIva, D& dImporte, S& sLote) {
    RsPtr r = open(sql, objCn, iBase);
    if (recordCount(*r) == 0) return nullptr;
    readField(*r, "Código", sCodigo, OnNull::Fail);
    readField(*r, "Descripción", sDescripcion, OnNull::Keep);
    readField(*r, "Cantidad", dCantidad, OnNull::Fail);
    readField(*r, "Precio", dPrecio, OnNull::Fail);
    readField(*r, "Dto", dDtoLin, OnNull::Fail);
    readField(*r, "Iva", dIva, OnNull::Fail);
    readField(*r, "Importe", dImporte, OnNull::Fail);
    assignText(sLote, textOr(*r, "Lote", "0"));
    return r;
}

void DocumentLines::insertLine(const Template& t, Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha,
                               std::string& sCodigo, std::string& sDescripcion, double dCantidad, double dPrecio,
                               double dDtoLin, double dIva, double dImporte, std::string& sLote, HoleValues more,
                               ConnPtr& cnnActive) {
    sDescripcion = services::ClsTextoLinea::shared()->NormalizaTexto(sDescripcion);
    std::vector<HoleValue> holes = {{"sCodigo", Variant(sCodigo)},
                                    {"sDescripcion", Variant(sDescripcion)},
                                    {"dCantidad", Variant(dCantidad)},
                                    {"dPrecio", Variant(dPrecio)},
                                    {"dDtoLin", Variant(dDtoLin)},
                                    {"dIva", Variant(dIva)},
                                    {"dImporte", Variant(dImporte)},
                                    {"sLote", Variant(sLote)},
                                    {"vIdNewReg", vIdNewReg},
                                    {"vDoc", vDoc},
                                    {"dtFecha", Variant(dtFecha)}};
    holes.insert(holes.end(), more.begin(), more.end());
    execute(fill(t, holes), cnnActive);
}


template <class Step>
void DocumentLines::sumLines(ado::Recordset& r, bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo,
                             bool bRecargos, const Step& step, double* dTotal) {
    std::unique_ptr<services::ClsCalculoLinea> calculo;  // one serves the whole run
    double importe = 0, impuesto = 0, recargo = 0;
    step([&] { r.MoveFirst(); });
    bool atEnd = true;
    step([&] { atEnd = r.Eof(); });
    while (!atEnd) {
        step([&] {
            const Variant v = r.value("Importe");
            importe = v.isNull() ? 0 : rt::CDbl(v);
        });
        step([&] {
            const Variant iva = r.value("Iva");
            if (bIncTax) {
                // Prices include tax: the tax is taken out of the amount.
                impuesto = iva.isNull() ? 0 : importe - (importe * 100 / (rt::CDbl(iva) + 100));
            } else {
                impuesto = iva.isNull() ? 0 : importe * rt::CDbl(iva) / 100;
            }
        });
        if (bIncTax) step([&] { importe -= impuesto; });
        step([&] {
            if (!bRecargos) {
                recargo = 0;
                return;
            }
            // The surcharge is reckoned on the net amount.
            if (!calculo) calculo = std::make_unique<services::ClsCalculoLinea>();
            ConnPtr none;
            recargo = importe * calculo->GetRecargoArticulo(r.value("Código"), none) / 100;
        });
        step([&] {
            dBase += importe;
            dImpIva += impuesto;
            dImpRecargo += recargo;
        });
        if (dTotal) *dTotal = dBase + dImpIva + dImpRecargo;
        bool moved = false;
        step([&] {
            r.MoveNext();
            moved = true;
        });
        if (!moved) break;  // a cursor that cannot move would walk for ever
        step([&] { atEnd = r.Eof(); });
    }
}

void DocumentLines::SumaCol(bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo, bool bRecargos) {
    // Every failure is passed over; a recordset never opened ends the walk at once.
    if (!primaryRecordset()) return;
    const auto passOver = [](const auto& f) {
        try {
            f();
        } catch (const Error&) {
        }
    };
    sumLines(*primaryRecordset(), bIncTax, dBase, dImpIva, dImpRecargo, bRecargos, passOver, nullptr);
}

void DocumentLines::ReSumarReg(bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo, bool bRecargos,
                               double& dTotal, double& dTotalDv, const Variant& dCambio, const Variant& vId,
                               ConnPtr& objCn) {
    auto formats = services::ClsFormatoNumero::shared();
    const std::string moneda = formats->GetFormatoMoneda();
    const std::string divisa = formats->GetFormatoDivisa();
    dBase = dImpIva = dImpRecargo = dTotal = dTotalDv = 0;
    RsPtr r = open(ownStatement("ReSumarReg", {{"vId", vId}}), objCn);
    if (bofAndEof(*r)) return;  // no lines: zeros, nothing formatted
    const auto run = [](const auto& f) { f(); };
    sumLines(*r, bIncTax, dBase, dImpIva, dImpRecargo, bRecargos, run, &dTotal);
    // Rounded one by one through the masks: the total is the rounded sum of the
    // unrounded parts, and may differ by a cent from the sum of the rounded ones.
    const auto round = [](double d, const std::string& mask) { return rt::CDbl(Variant(rt::Format(Variant(d), mask))); };
    dBase = round(dBase, moneda);
    dImpRecargo = round(dImpRecargo, moneda);
    dImpIva = round(dImpIva, moneda);
    dTotal = round(dTotal, moneda);
    const double cambio = rt::CDbl(dCambio);
    if (cambio == 0) raise(err::DivisionByZero, err::SrcRuntime);
    dTotalDv = round(dTotal / cambio, divisa);
}

// ------------------------------------------------------------ the shared members

std::shared_ptr<services::ClsRegistroLinea> DocumentLines::GetCollectionRegs(Variant& vIdAlm) {
    auto regs = std::make_shared<services::ClsRegistroLinea>();
    auto& r = rs();
    if (bofAndEof(r)) return regs;
    r.MoveFirst();
    while (!r.Eof()) {
        std::string codigo = rt::CStr(r.Fields()->Item(Variant(int16_t{0}))->Value());
        // The first amount is the quantity less itself: 0, or a failure on a null field.
        const Variant cantidad = r.value("Cantidad");
        if (cantidad.isNull()) raise(err::InvalidUseOfNull, err::SrcRuntime);
        Variant previa(static_cast<double>(static_cast<float>(rt::CDbl(cantidad) - rt::CDbl(cantidad))));
        Variant unidades(static_cast<double>(static_cast<float>(rt::CDbl(cantidad))));
        Variant lote(textOr(r, "Lote", "0"));
        const Variant precioField = r.value("Precio");
        if (precioField.isNull()) raise(err::InvalidUseOfNull, err::SrcRuntime);
        Variant precio(rt::CDbl(precioField));
        Variant codigoValue(codigo);
        Variant extra{std::string()};
        regs->AddRegistro(codigo, codigoValue, previa, unidades, lote, vIdAlm, precio, extra);
        r.MoveNext();
    }
    return regs;
}

void DocumentLines::Obtener(Variant& vId, Variant& sCodigo, Variant& sDescripcion, Variant& dCantidad,
                            Variant& dPrecio, Variant& dDtoLin, Variant& dIva, Variant& dImporte, Variant& sLote,
                            ConnPtr& objCn) {
    obtainLine(ownStatement("Obtener", {{"vId", vId}}), objCn, kBase, sCodigo, sDescripcion, dCantidad, dPrecio,
               dDtoLin, dIva, dImporte, sLote);
}

void DocumentLines::Insertar(Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha, std::string& sCodigo,
                             std::string& sDescripcion, double& dCantidad, double& dPrecio, double& dDtoLin,
                             double& dIva, double& dImporte, std::string& sLote, ConnPtr& cnnActive) {
    insertLine(kInsertar, vDoc, vIdNewReg, dtFecha, sCodigo, sDescripcion, dCantidad, dPrecio, dDtoLin, dIva,
               dImporte, sLote, {}, cnnActive);
}

// ------------------------------------------------------------ ClsOrdenesLineas

ClsOrdenesLineas::ClsOrdenesLineas() : DocumentLines(kOrdenes) {}
ClsPedidosCliLineas::ClsPedidosCliLineas() : DocumentLines(kPedidos) {}
ClsAlbaranesLineas::ClsAlbaranesLineas() : DocumentLines(kAlbaranes) {}
ClsFacturasLineas::ClsFacturasLineas() : DocumentLines(kFacturas) {}

ObjectPtr ClsOrdenesLineas::ObtenerColDoc(Variant& vId, int16_t& iFact, ConnPtr& objCn) {
    RsPtr r = open(fill(kOrdenesObtenerColDoc, {{"vId", vId}, {"iFact", Variant(iFact)}}), objCn);
    return collectIds(*r);
}

void ClsOrdenesLineas::Obtener(Variant& vId, std::string& sCodigo, std::string& sDescripcion, double& dCantidad,
                               double& dPrecio, double& dDtoLin, double& dIva, double& dImporte, std::string& sLote,
                               Variant& vNum, ConnPtr& objCn) {
    obtainLine(fill(kOrdenesObtener, {{"vId", vId}, {"vNum", vNum}}), objCn, kBase, sCodigo, sDescripcion,
               dCantidad, dPrecio, dDtoLin, dIva, dImporte, sLote);
}

void ClsOrdenesLineas::Obtener_Todo(Variant& vId, std::string& sCodigo, std::string& sDescripcion,
                                    double& dCantidad, double& dPrecio, double& dDtoLin, double& dIva,
                                    double& dImporte, std::string& sLote, Variant& vNum, ConnPtr& objCn,
                                    std::string& sSeccion, std::string& sColabo, int16_t& iFacturado,
                                    double& dDocfactur, double& dPuntos) {
    RsPtr r = obtainLine(fill(kOrdenesObtenerTodo, {{"vId", vId}, {"vNum", vNum}}), objCn, 1, sCodigo,
                         sDescripcion, dCantidad, dPrecio, dDtoLin, dIva, dImporte, sLote);
    if (!r) return;
    sSeccion = textOr(*r, "Sección", "0");
    sColabo = textOr(*r, "Empleado", "000");
    readField(*r, "Puntos", dPuntos, OnNull::Fail);
    readField(*r, "Facturado", iFacturado, OnNull::Fail);
    readField(*r, "Doc", dDocfactur, OnNull::Fail);
}

void ClsOrdenesLineas::Insertar(Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha, std::string& sCodigo,
                                std::string& sDescripcion, double& dCantidad, double& dPrecio, double& dDtoLin,
                                double& dIva, double& dImporte, std::string& sLote, std::string& sSeccion,
                                std::string& sEmpleado, double& iPuntos, int16_t& iFacturado, Variant& vDocFac,
                                ConnPtr& cnnActive) {
    insertLine(kOrdenesInsertar, vDoc, vIdNewReg, dtFecha, sCodigo, sDescripcion, dCantidad, dPrecio, dDtoLin, dIva,
               dImporte, sLote,
               {{"sSeccion", Variant(sSeccion)},
                {"sEmpleado", Variant(sEmpleado)},
                {"iPuntos", Variant(iPuntos)},
                {"iFacturado", Variant(iFacturado)},
                {"vDocFac", vDocFac}},
               cnnActive);
}

void ClsOrdenesLineas::SetValor(Variant& vId, std::string& sCodigo, std::string& sDescripcion, double& dCantidad,
                                double& dPrecio, double& dDtoLin, double& dIva, double& dImporte, std::string& sLote,
                                std::string& sSeccion, std::string& sEmpleado, double& dPuntos) {
    auto& r = rs();
    r.setValue("Id", vId);
    r.setValue("Código", Variant(sCodigo));
    r.setValue("Descripción", Variant(sDescripcion));
    r.setValue("Cantidad", Variant(dCantidad));
    r.setValue("Precio", Variant(dPrecio));
    // The discount arrives as a single-precision value.
    r.setValue("DTO", Variant(static_cast<double>(static_cast<float>(dDtoLin))));
    r.setValue("IVA", Variant(dIva));
    r.setValue("Importe", Variant(dImporte));
    r.setValue("Lote", Variant(sLote));
    r.setValue("Sección", Variant(sSeccion));
    r.setValue("Empleado", Variant(sEmpleado));
    r.setValue("Puntos", Variant(dPuntos));
    r.setValue("Facturado", Variant(int16_t{0}));
    r.setValue("Doc", Variant(int16_t{0}));
    r.setValue("orden", Variant(int16_t{0}));
}

void ClsOrdenesLineas::SetCantidad(double& dCantidad) {
    auto& r = rs();
    r.setValue("Cantidad", Variant(rt::CDbl(r.value("Cantidad")) + dCantidad));
}

void ClsOrdenesLineas::SetPuntos(Variant& vPuntos) { rs().setValue("Puntos", vPuntos); }

void ClsOrdenesLineas::DeleteOne(const Variant& vId, DateValue& /*dtFecha*/, const Variant& vIdRec,
                                 ConnPtr& cnnActive) {
    // The date is accepted and not used: a line is addressed by number and line.
    execute(fill(kOrdenesDeleteOne, {{"vId", vId}, {"vIdRec", vIdRec}}), cnnActive);
}

bool ClsOrdenesLineas::FindReg(const std::string& Criteria) {
    FindRecord(Criteria);
    auto& r = rs();
    return !(r.Bof() || r.Eof());
}

// ------------------------------------------------------------ registration

namespace {

// A line's values as the typed members take them (code, text, amounts, batch), between
// the arguments `before` and `after` them.
std::vector<Param> lineParams(std::initializer_list<Param> before, std::initializer_list<Param> after) {
    std::vector<Param> p = before;
    p.insert(p.end(), {inout("sCodigo", PT::String), inout("sDescripcion", PT::String), inout("dCantidad", PT::Double),
                       inout("dPrecio", PT::Double), inout("dDtoLin", PT::Double), inout("dIva", PT::Double),
                       inout("dImporte", PT::Double), inout("sLote", PT::String)});
    p.insert(p.end(), after);
    return p;
}

// Insertar's arguments: the order lines put theirs (`more`) before the connection.
std::vector<Param> insertarParams(std::initializer_list<Param> more = {}) {
    std::vector<Param> p = lineParams({inout("vDoc"), inout("vIdNewReg"), inout("dtFecha", PT::Date)}, more);
    p.push_back(optObj("cnnActive"));
    return p;
}

// The members the four classes share, with the argument lists of the three other
// kinds; ClsOrdenesLineas defines its own forms of ObtenerCol, Obtener and Insertar
// after these.
template <class T>
void sharedLineMembers(ClassBuilder<T>& b, bool reSumarReg) {
    b.method("SumaCol",
             {in("bIncTax", PT::Boolean), inout("dBase", PT::Double), inout("dImpIva", PT::Double),
              inout("dImpRecargo", PT::Double), in("bRecargos", PT::Boolean)},
             &DocumentLines::SumaCol);
    if (reSumarReg)
        b.method("ReSumarReg",
                 {in("bIncTax", PT::Boolean), inout("dBase", PT::Double), inout("dImpIva", PT::Double),
                  inout("dImpRecargo", PT::Double), in("bRecargos", PT::Boolean), inout("dTotal", PT::Double),
                  inout("dTotalDv", PT::Double), in("dCambio"), in("vId"), optObj("objCn")},
                 &DocumentLines::ReSumarReg);
    b.method("GetCollectionRegs", {inout("vIdAlm")}, &DocumentLines::GetCollectionRegs);
    if constexpr (!std::is_same_v<T, ClsOrdenesLineas>) {
        b.method("Obtener",
                 {inout("vId"), inout("sCodigo"), inout("sDescripcion"), inout("dCantidad"), inout("dPrecio"),
                  inout("dDtoLin"), inout("dIva"), inout("dImporte"), inout("sLote"), optObj("objCn")},
                 [](T& c, Variant& vId, Variant& a, Variant& b2, Variant& d1, Variant& d2, Variant& d3, Variant& d4,
                    Variant& d5, Variant& l, ConnPtr& cn) {
                     c.DocumentLines::Obtener(vId, a, b2, d1, d2, d3, d4, d5, l, cn);
                 });
        b.method("Insertar", insertarParams(),
                 [](T& c, Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha, std::string& sCodigo,
                    std::string& sDescripcion, double& dCantidad, double& dPrecio, double& dDtoLin, double& dIva,
                    double& dImporte, std::string& sLote, ConnPtr& cn) {
                     c.DocumentLines::Insertar(vDoc, vIdNewReg, dtFecha, sCodigo, sDescripcion, dCantidad, dPrecio,
                                               dDtoLin, dIva, dImporte, sLote, cn);
                 });
    }
}

void orderLineMembers(ClassBuilder<ClsOrdenesLineas>& b) {
    sharedLineMembers(b, true);
    b.method("ObtenerColDoc", {inout("vId"), inout("iFact", PT::Integer), optObj("objCn")},
             &ClsOrdenesLineas::ObtenerColDoc);
    const std::vector<Param> obtener = lineParams({inout("vId")}, {inout("vNum"), optObj("objCn")});
    b.method("Obtener", obtener, &ClsOrdenesLineas::Obtener);
    std::vector<Param> todo = obtener;
    for (Param p : {optRef("sSeccion", PT::String), optRef("sColabo", PT::String), optRef("iFacturado", PT::Integer),
                    optRef("dDocfactur", PT::Double), optRef("dPuntos", PT::Double)})
        todo.push_back(p);
    b.method("Obtener_Todo", todo, &ClsOrdenesLineas::Obtener_Todo);
    b.method("Insertar",
             insertarParams({inout("sSeccion", PT::String), inout("sEmpleado", PT::String), inout("iPuntos", PT::Double),
                             inout("iFacturado", PT::Integer), inout("vDocFac")}),
             &ClsOrdenesLineas::Insertar);
    b.method("SetValor",
             lineParams({inout("vId")},
                        {inout("sSeccion", PT::String), inout("sEmpleado", PT::String), inout("dPuntos", PT::Double)}),
             &ClsOrdenesLineas::SetValor);
    b.method("SetCantidad", {inout("dCantidad", PT::Double)}, &ClsOrdenesLineas::SetCantidad);
    b.method("SetPuntos", {inout("vPuntos")}, &ClsOrdenesLineas::SetPuntos);
    b.method("DeleteOne", {in("vId"), inout("dtFecha", PT::Date), in("vIdRec"), optObj("cnnActive")},
             &ClsOrdenesLineas::DeleteOne);
    b.method("FindReg", {in("Criteria", PT::String)}, &ClsOrdenesLineas::FindReg);
}

}  // namespace

void registerLineClasses(Registry& r) {
    documents::defineDocumentClass<ClsOrdenesLineas>(r, kOrdenes, kOrdenesInterface, orderLineMembers);
    tools::defineRecordClass<ClsPedidosCliLineas>(r, kPedidos, kPedidosInterface,
                                                  [](auto& b) { sharedLineMembers(b, true); });
    tools::defineRecordClass<ClsAlbaranesLineas>(r, kAlbaranes, kAlbaranesInterface,
                                                 [](auto& b) { sharedLineMembers(b, true); });
    tools::defineRecordClass<ClsFacturasLineas>(r, kFacturas, kFacturasInterface,
                                                [](auto& b) { sharedLineMembers(b, false); });
}

}  // namespace hist::satellites
