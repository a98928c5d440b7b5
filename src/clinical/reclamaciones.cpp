// ClsOrdenesReclamaciones: the claims made against a work order. Here the order's
// number is in Numero and Codigo holds the customer.
#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "clinical/clinical.hpp"
#include "platform/runtime.hpp"
#include "tools/registration.hpp"

namespace hist::clinical {

using namespace frame;

namespace {

constexpr Template kExisteReclamacion =
    "SELECT Id, Numero as Orden, Codigo AS Cliente, Referencia as Paciente FROM HOrdenes_Reclamaciones WHERE  "
    "Numero =  {vId}";
constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Reclamaciones ( Id, Codigo, Fecha, Referencia, Numero, Descripcion, Incidencia ) "
    "Values ( {Id} , '{sCodigo}', '{T:dtFecha}', '{sRef}', '{vId}', '{sDescripcion}', '{sIncidencia}' )";

const ClassVariants kVariants = batchClass({
    .className = "ClsOrdenesReclamaciones",
    .table = "HOrdenes_Reclamaciones",
    .select = "SELECT Id, Numero as Orden, Codigo AS Cliente, Referencia as Paciente, Devuelto, Incidencia, "
        "Descripcion as Descripción, Empleado as Recibida, Tiempo_Boca as Tiempo, Fecha, Estudio, Clinica as "
        "Clínica, Laboratorio, Acciones, Seguimiento, Fecha_Resolucion as Resolución FROM "
        "HOrdenes_Reclamaciones",
    .selections = {{"seleccion", " Where (Numero = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
    // The apostrophe before Where stays: the engine refuses the statement, so the
    // number (and Insertar, which asks it first) fails there.
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Reclamaciones 'Where Numero = {vCod}",
    .deleteAll = "DELETE  FROM HOrdenes_Reclamaciones  WHERE (Numero = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Reclamaciones SET Numero = {vNewId} WHERE(Numero = {vId})",
    .codigoLibre = "SELECT ID FROM HOrdenes_Reclamaciones WHERE ID = {vId}",
    .statements = {{"ExisteReclamacion", kExisteReclamacion}, {"Insertar", kInsertar}},
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .addNewDefaults = {{"Id", ValueSource::RecordCount}},
    .update = {.scope = 1},
    // The selection has no "Código": on a recordset from IniciaRs UpdateId and
    // UpdateadAffectCurrent fail there.
    .affectCurrent = {.key = ValueSource::RecordCount},
    .permissionGroup = "HOrdenes_Reclamaciones",
});

constexpr std::array<std::string_view, 45> kInterface{
    "GetRptPath", "sClassName", "ObtenerColRs", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr",
    "ExisteReclamacion", "Insertar", "IniciaRs", "ConvertirSerie", "CodigoLibre", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "DeleteAll", "MoveToBookmark",
    "Requery", "UpdateId", "Update", "UpdateadAffectCurrent", "CnnBeginTrans", "CnnCommitTrans",
    "CnnRollbackTrans", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"};

}  // namespace

ClsOrdenesReclamaciones::ClsOrdenesReclamaciones() : RecordClass(kVariants) {}

bool ClsOrdenesReclamaciones::ExisteReclamacion(const Variant& vId, ConnPtr& objCn) {
    RsPtr r = open(fill(kExisteReclamacion, {{"vId", vId}}), objCn);
    return recordCount(*r) > 0;
}

void ClsOrdenesReclamaciones::Insertar(const std::string& sCodigo, const DateValue& dtFecha, const std::string& sRef,
                                       const Variant& vId, const std::string& sDescripcion,
                                       const std::string& sIncidencia, ConnPtr& objCn) {
    // Only these seven columns; the rest of a claim is filled through the recordset.
    const int32_t id = rt::CLng(NuevoCodigo(vId, objCn));
    execute(fill(kInsertar, {{"Id", Variant(id)},
                             {"sCodigo", Variant(sCodigo)},
                             {"dtFecha", Variant(dtFecha)},
                             {"sRef", Variant(sRef)},
                             {"vId", vId},
                             {"sDescripcion", Variant(sDescripcion)},
                             {"sIncidencia", Variant(sIncidencia)}}),
            objCn);
}

void registerReclamaciones(Registry& r) {
    tools::defineRecordClass<ClsOrdenesReclamaciones>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesReclamaciones;
        b.method("ExisteReclamacion", {in("vId"), optObj("objCn")}, &C::ExisteReclamacion);
        b.method("Insertar",
                 {in("sCodigo", PT::String), in("dtFecha", PT::Date), in("sRef", PT::String), in("vId"),
                  in("sDescripcion", PT::String), in("sIncidencia", PT::String), optObj("objCn")},
                 &C::Insertar);
    });
}

}  // namespace hist::clinical
