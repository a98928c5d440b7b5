// ClsOrdenesDeclaraciones: the declarations of conformity that go out with a work
// order's product. A row's Id and its declaration number come from one count within
// the order; the recordset works in batch.
#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "clinical/clinical.hpp"
#include "platform/runtime.hpp"
#include "tools/registration.hpp"

namespace hist::clinical {

using namespace frame;

namespace {

constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Declaraciones ( Id, Codigo, Fecha, Fecha_Codigo, Letra, Producto, Finalidad, "
    "Declaracion ) Values ( {Id} , '{vCodigo}', {F:dtFecha}, {F:dtFecha_cod}, '{sLetra}', '{sProducto}', "
    "'{sFinalidad}', {D:dDeclaracion} )";
constexpr Template kObtener =
    "SELECT Letra, Fecha, Producto, Finalidad, Declaracion  FROM HOrdenes_Declaraciones Where ((ID = {vId}) "
    "And  (Codigo = {vNum}))";

const ClassVariants kVariants = batchClass({
    .className = "ClsOrdenesDeclaraciones",
    .table = "HOrdenes_Declaraciones",
    .select = "SELECT  Fecha, Fecha_Codigo, Declaracion as Declaración, Letra, Producto, Finalidad, Id, Codigo as "
        "Código  FROM HOrdenes_Declaraciones",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
    .nuevoCodigo = "SELECT MAX(Declaracion) AS Nuevo_Codigo FROM HOrdenes_Declaraciones Where Codigo = {vCod}",
    .deleteAll = "DELETE  FROM HOrdenes_Declaraciones  WHERE (Codigo = {vId} AND Fecha_Codigo = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Declaraciones SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    // On the declaration's own date, where DeleteAll keys on the order's.
    .obtenerCol = "SELECT  ID, Codigo From HOrdenes_Declaraciones Where (Codigo = {vId} AND Fecha = {FL:dtFecha} )",
    // Over all orders.
    .codigoLibre = "SELECT Declaracion FROM HOrdenes_Declaraciones WHERE Declaracion = {vId}",
    .statements = {{"Insertar", kInsertar}, {"Obtener", kObtener}},
    .addNewDefaults = {{"Id", ValueSource::RecordCount},
                       {"Declaración", ValueSource::RecordCount},
                       {"Fecha", ValueSource::TodayShortDate},
                       {"Producto", ValueSource::Constant, Variant(std::string("Prótesis "))},
                       {"Finalidad", ValueSource::Constant,
                        Variant(std::string("Compensación o modificación de la anatomia dental"))}},
    .del = DeleteForm::Plain,
    // The current row alone; "ID" takes the counter's first value.
    .affectCurrent = {.key = ValueSource::Counter},
    .permissionGroup = "Ordenes",
});

constexpr std::array<std::string_view, 46> kInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "CodigoLibre", "Insertar",
    "IniciaRs", "Obtener", "ObtenerCol", "ConvertirSerie", "SetValor", "NuevoCodigoDec", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "DeleteAll", "MoveToBookmark",
    "Requery", "UpdateId", "Update", "UpdateadAffectCurrent", "CnnBeginTrans", "CnnCommitTrans",
    "CnnRollbackTrans", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"};

}  // namespace

ClsOrdenesDeclaraciones::ClsOrdenesDeclaraciones() : RecordClass(kVariants) {}

void ClsOrdenesDeclaraciones::Insertar(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtFecha_cod,
                                       const std::string& sLetra, const std::string& sProducto,
                                       const std::string& sFinalidad, double dDeclaracion, ConnPtr& objCn) {
    // Id is the next number of the order; the declaration's number is the caller's.
    const int32_t id = rt::CLng(NuevoCodigo(vCodigo, objCn));
    execute(fill(kInsertar, {{"Id", Variant(id)},
                             {"vCodigo", vCodigo},
                             {"dtFecha", Variant(dtFecha)},
                             {"dtFecha_cod", Variant(dtFecha_cod)},
                             {"sLetra", Variant(sLetra)},
                             {"sProducto", Variant(sProducto)},
                             {"sFinalidad", Variant(sFinalidad)},
                             {"dDeclaracion", Variant(dDeclaracion)}}),
            objCn);
}

void ClsOrdenesDeclaraciones::Obtener(const Variant& vId, const Variant& vNum, DateValue& dtFecha,
                                      std::string& sLetra, std::string& sProducto, std::string& sFinalidad,
                                      double& dDeclaracion, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtener, {{"vId", vId}, {"vNum", vNum}}), objCn, kSecondBase);
    if (!r) return;
    // A null field leaves its argument as the caller put it.
    readField(*r, "Letra", sLetra, OnNull::Keep);
    readField(*r, "Fecha", dtFecha, OnNull::Keep);
    readField(*r, "Producto", sProducto, OnNull::Keep);
    readField(*r, "Finalidad", sFinalidad, OnNull::Keep);
    readField(*r, "Declaracion", dDeclaracion, OnNull::Keep);
}

void ClsOrdenesDeclaraciones::SetValor(const std::string& sDescripcion, const std::string& sFinalidad,
                                       const std::string& sLetra) {
    auto& r = rs();
    const Variant count(recordCount(r));
    r.setValue("Id", count);
    r.setValue("Producto", Variant(sDescripcion));
    r.setValue("Finalidad", Variant(sFinalidad));
    r.setValue("Declaración", count);
    r.setValue("Letra", Variant(sLetra));
    r.setValue("Código", Variant(int16_t{0}));
}

Variant ClsOrdenesDeclaraciones::NuevoCodigoDec(Variant& vCod, ConnPtr& objCn) { return NuevoCodigo(vCod, objCn); }

void registerDeclaraciones(Registry& r) {
    tools::defineRecordClass<ClsOrdenesDeclaraciones>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesDeclaraciones;
        b.method("Insertar",
                 {in("vCodigo"), in("dtFecha", PT::Date), in("dtFecha_cod", PT::Date), in("sLetra", PT::String),
                  in("sProducto", PT::String), in("sFinalidad", PT::String), in("dDeclaracion", PT::Double),
                  optObj("objCn")},
                 &C::Insertar);
        b.method("Obtener",
                 {in("vId"), in("vNum"), inout("dtFecha", PT::Date), inout("sLetra", PT::String),
                  inout("sProducto", PT::String), inout("sFinalidad", PT::String),
                  inout("dDeclaracion", PT::Double), optObj("objCn")},
                 &C::Obtener);
        b.method("SetValor", {in("sDescripcion", PT::String), in("sFinalidad", PT::String), in("sLetra", PT::String)},
                 &C::SetValor);
        b.method("NuevoCodigoDec", {inout("vCod"), optObj("objCn")}, &C::NuevoCodigoDec);
    });
}

}  // namespace hist::clinical
