// ClsOrdenesPruebas: the try-ins of a work order (a piece out to the clinic and back),
// numbered within the order; the recordset works in batch as the phases' does.
#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "clinical/clinical.hpp"
#include "platform/runtime.hpp"
#include "tools/registration.hpp"

namespace hist::clinical {

using namespace frame;

namespace {

constexpr Template kObtener =
    "SELECT ID, Codigo, Fecha as Inicio, Fecha_fin, Comentario as Descripcion FROM HOrdenes_Pruebas Where ((ID "
    "= {vId} AND codigo = {vCodigo}))";
constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Pruebas ( Id, Codigo, Fecha, Comentario ) Values ( {Id} , '{sCodigo}', "
    "'{T:dtFecha}', '{sComentario}' )";
constexpr Template kInsertarTodo =
    "INSERT INTO HOrdenes_Pruebas ( Id, Codigo, Fecha, Comentario, Fecha_Fin, fecha_codigo ) Values ( "
    "{Id},{vCodigo} , {F:dtFecha}, '{sComentario}', {F:dtFechaFin}, {F:dtFecha_Codigo})";
constexpr Template kInsertarTodoSinFin =
    "INSERT INTO HOrdenes_Pruebas ( Id, Codigo, Fecha, Comentario, fecha_codigo ) Values ( {Id},{vCodigo} , "
    "{F:dtFecha}, '{sComentario}', {F:dtFecha_Codigo})";

const ClassVariants kVariants = batchClass({
    .className = "ClsOrdenesPruebas",
    .table = "HOrdenes_Pruebas",
    .select = "SELECT   Fecha as Inicio, Fecha_fin as Final, Comentario as Descripción, Id, Codigo as Código  FROM "
        "HOrdenes_Pruebas",
    // "seleccionrecepcion" gives the rows of "seleccion" without asking the database
    // kind, and keeps a saved order of its own.
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"},
                   {"seleccionrecepcion", " Where (Codigo = {id} AND Fecha = {F:dtFecha} )"},
                   {"seleccion_h", " Where (Codigo = {id} AND Fecha_Codigo = {FL:dtFecha} )"},
                   {"ninguno", " Where Id = 0"}},
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Pruebas Where Codigo = {vCod}",
    .deleteAll = "DELETE  FROM HOrdenes_Pruebas  WHERE (Codigo = {vId} AND Fecha_Codigo = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Pruebas SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .obtenerCol = "SELECT  ID, Codigo From HOrdenes_Pruebas Where (Codigo = {vId} AND Fecha_Codigo = {FL:dtFecha} )",
    .statements = {{"Insertar", kInsertar},
                   {"InsertarTodo[with Fecha_Fin]", kInsertarTodo},
                   {"InsertarTodo[zero Fecha_Fin]", kInsertarTodoSinFin},
                   {"Obtener", kObtener}},
    .orderOnIniciaRs = true,
    .addNewDefaults = {{"Id", ValueSource::RecordCount}},
    .del = DeleteForm::Plain,
    // The selection calls the date "Inicio": on a recordset from IniciaRs, UpdateId
    // fails at "Fecha".
    .affectCurrent = {.key = ValueSource::RecordCount},
    .permissionGroup = "Fabricacion_Pruebas",
});

constexpr std::array<std::string_view, 45> kInterface{
    "sClassName", "ObtenerColRs", "ObtenerCol", "Obtener", "GetConnection", "GetConnectionStrToRpt",
    "GetConnectionStr", "Insertar", "InsertarTodo", "IniciaRs", "ConvertirSerie", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "DeleteAll", "MoveToBookmark",
    "Requery", "UpdateId", "Update", "UpdateadAffectCurrent", "CnnBeginTrans", "CnnCommitTrans",
    "CnnRollbackTrans", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"};

}  // namespace

ClsOrdenesPruebas::ClsOrdenesPruebas() : RecordClass(kVariants) {}

void ClsOrdenesPruebas::Obtener(const Variant& vId, Variant& vCodigo, DateValue& dtFecha, DateValue& dtFechaF,
                                std::string& sComentario, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtener, {{"vId", vId}, {"vCodigo", vCodigo}}), objCn, kSecondBase);
    if (!r) return;
    const Variant codigo = r->value("Codigo");
    vCodigo = codigo.isNull() ? Variant(int16_t{0}) : codigo;
    // Unlike the phases, a null date reads as the zero time here.
    readField(*r, "Inicio", dtFecha, OnNull::Empty);
    readField(*r, "Fecha_fin", dtFechaF, OnNull::Empty);
    readField(*r, "Descripcion", sComentario, OnNull::Empty);
}

void ClsOrdenesPruebas::Insertar(const std::string& sCodigo, const DateValue& dtFecha, const std::string& sComentario,
                                 ConnPtr& objCn) {
    const Variant codigo(sCodigo);
    const int32_t id = rt::CLng(NuevoCodigo(codigo, objCn));
    execute(fill(kInsertar, {{"Id", Variant(id)},
                             {"sCodigo", codigo},
                             {"dtFecha", Variant(dtFecha)},
                             {"sComentario", Variant(sComentario)}}),
            objCn);
}

void ClsOrdenesPruebas::InsertarTodo(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtFechaFin,
                                     const std::string& sComentario, const DateValue& dtFecha_Codigo,
                                     ConnPtr& objCn) {
    const int32_t id = rt::CLng(NuevoCodigo(vCodigo, objCn));
    // The return date and its column are written only for a real date: the zero
    // time 0:00:00 leaves both out (a date's text is never blank).
    const Template& t = dtFechaFin.serial != 0 ? kInsertarTodo : kInsertarTodoSinFin;
    execute(fill(t, {{"Id", Variant(id)},
                     {"vCodigo", vCodigo},
                     {"dtFecha", Variant(dtFecha)},
                     {"sComentario", Variant(sComentario)},
                     {"dtFechaFin", Variant(dtFechaFin)},
                     {"dtFecha_Codigo", Variant(dtFecha_Codigo)}}),
            objCn, kSecondBase);
}

void registerPruebas(Registry& r) {
    tools::defineRecordClass<ClsOrdenesPruebas>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesPruebas;
        b.method("Obtener",
                 {in("vId"), inout("vCodigo"), inout("dtFecha", PT::Date), inout("dtFechaF", PT::Date),
                  inout("sComentario", PT::String), optObj("objCn")},
                 &C::Obtener);
        b.method("Insertar",
                 {in("sCodigo", PT::String), in("dtFecha", PT::Date), in("sComentario", PT::String),
                  optObj("objCn")},
                 &C::Insertar);
        b.method("InsertarTodo",
                 {in("vCodigo"), in("dtFecha", PT::Date), in("dtFechaFin", PT::Date), in("sComentario", PT::String),
                  in("dtFecha_Codigo", PT::Date), optObj("objCn")},
                 &C::InsertarTodo);
    });
}

}  // namespace hist::clinical
