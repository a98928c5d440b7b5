// ClsOrdenesFases: the manufacturing phases of a work order, numbered over the whole
// table. A phase is started and finished by two statements of their own, apart from
// the primary recordset, which works in batch.
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
    "SELECT ID, Codigo, Fecha as Inicio, Hora, Fecha_fin, Hora_Fin, C_Fase , Descripcion, Fecha_ent, Hora_ent, "
    "C_Empleado, Empleado, Finalizado, Cantidad, Tiempo FROM HOrdenes_Fases Where ((ID = {vId}) And  (Codigo = "
    "{vCodigo}))";
constexpr Template kInicioFase =
    "UPDATE HOrdenes_Fases SET HOrdenes_Fases.Fecha = '{T:dtFecha}', HOrdenes_Fases.Finalizado = False WHERE "
    "(((HOrdenes_Fases.Id)={vId}));";
constexpr Template kFinFase =
    "UPDATE HOrdenes_Fases SET HOrdenes_Fases.Fecha_Fin = '{T:dtFecha}', HOrdenes_Fases.Finalizado = True "
    "WHERE (((HOrdenes_Fases.Id)={vId}));";
// The phase's name goes to Descripcion and the employee's code to both Fase and
// C_Empleado. Fecha_Fin and Hora_ent are listed only when the text of dtFechaF,
// dtFecha_Ent is not blank; a date always has a text, so the statement is always whole.
constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Fases ( Id, Codigo, Fecha, Hora, Fecha_Fin, Hora_Fin, Empleado, Descripcion, "
    "Cantidad, Fase, C_Fase, C_Empleado, Fecha_ent, Hora_ent, Tiempo, Fecha_Codigo, Finalizado ) Values ( "
    "{Id},{vCodigo} , {F:dtFecha},'{T:dtHora}', {F:dtFechaF}, '{T:dtHoraF}', '{sEmpleado}', '{sFase}', "
    "{D:dCant}, '{sCodEmpleado}', '{sCodFase}', '{sCodEmpleado}', {F:dtFecha_Ent}, '{T:dtHora_Ent}', "
    "'{T:dtTiempo}', {F:dtFecha_Codigo}, '1')";

const ClassVariants kVariants = batchClass({
    .className = "ClsOrdenesFases",
    .table = "HOrdenes_Fases",
    .select = "SELECT  ID, Fecha as Inicio, Hora, Fecha_fin as Final, Hora_Fin, C_Fase , Descripcion as Descripción, "
        "Fecha_ent as Asignado, C_Empleado, Empleado, Finalizado, Cantidad,  Codigo as Código, Fecha_Codigo "
        "FROM HOrdenes_Fases",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"},
                   {"seleccion_h", " Where (Codigo = {id} AND Fecha_Codigo = {FL:dtFecha} )"},
                   {"ninguno", " Where Id = 0"}},
    // One running number over the whole table: vCod is accepted and not used.
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Fases",
    .deleteAll = "DELETE  FROM HOrdenes_Fases  WHERE (Codigo = {vId} AND Fecha_Codigo = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Fases SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .obtenerCol = "SELECT  ID, Codigo From HOrdenes_Fases Where (Codigo = {vId} AND Fecha_Codigo = {FL:dtFecha} )",
    .statements = {{"InicioFase", kInicioFase}, {"FinFase", kFinFase}, {"Insertar", kInsertar}, {"Obtener", kObtener}},
    .orderOnIniciaRs = true,
    .addNewDefaults = {{"Id", ValueSource::RecordCount},
                       {"Finalizado", ValueSource::Constant, Variant(int16_t{0})},
                       {"Hora", ValueSource::TimeOfDay}},
    .del = DeleteForm::Plain,
    // The selection calls the date "Inicio": on a recordset from IniciaRs, UpdateId
    // fails at "Fecha".
    .affectCurrent = {.key = ValueSource::NuevoCodigoOfIdAlone},
    .permissionGroup = "Fabricacion_Fases",
    .definedSize = DefinedSizeForm::WholePrecision,
});

constexpr std::array<std::string_view, 47> kInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "ObtenerColRs", "ObtenerCol",
    "Obtener", "InicioFase", "FinFase", "Insertar", "IniciaRs", "ConvertirSerie", "SetValor", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "DeleteAll", "MoveToBookmark",
    "Requery", "UpdateId", "Update", "UpdateadAffectCurrent", "CnnBeginTrans", "CnnCommitTrans",
    "CnnRollbackTrans", "Cancel", "CancelBatch", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid"};

}  // namespace

ClsOrdenesFases::ClsOrdenesFases() : RecordClass(kVariants) {}

void ClsOrdenesFases::Obtener(const Variant& vId, Variant& vCodigo, DateValue& dtFecha, DateValue& dtHora,
                              DateValue& dtFechaF, DateValue& dtHoraF, std::string& sEmpleado, std::string& sFase,
                              double& dCant, std::string& sCodFase, std::string& sCodEmpleado, DateValue& dtTiempo,
                              DateValue& dtFecha_Ent, DateValue& dtHora_Ent, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtener, {{"vId", vId}, {"vCodigo", vCodigo}}), objCn, kSecondBase);
    if (!r) return;
    // vCodigo served as the condition and now takes the field.
    const Variant codigo = r->value("Codigo");
    vCodigo = codigo.isNull() ? Variant(int16_t{0}) : codigo;
    // A null start converts the empty text to a date, which fails (13).
    const Variant inicio = r->value("Inicio");
    dtFecha = DateValue{rt::CDate(inicio.isNull() ? Variant(std::string()) : inicio)};
    readField(*r, "Hora", dtHora, OnNull::Empty);
    readField(*r, "Fecha_fin", dtFechaF, OnNull::Keep);
    readField(*r, "Hora_Fin", dtHoraF, OnNull::Empty);
    readField(*r, "Empleado", sEmpleado, OnNull::Empty);
    readField(*r, "Descripcion", sFase, OnNull::Empty);
    readField(*r, "Cantidad", dCant, OnNull::Empty);
    readField(*r, "C_Fase", sCodFase, OnNull::Empty);
    readField(*r, "C_Empleado", sCodEmpleado, OnNull::Empty);
    readField(*r, "Tiempo", dtTiempo, OnNull::Empty);
    readField(*r, "Fecha_ent", dtFecha_Ent, OnNull::Keep);
    readField(*r, "Hora_ent", dtHora_Ent, OnNull::Empty);
}

void ClsOrdenesFases::InicioFase(const Variant& vId, const DateValue& dtFecha, ConnPtr& objCn) {
    execute(fill(kInicioFase, {{"vId", vId}, {"dtFecha", Variant(dtFecha)}}), objCn);
}

void ClsOrdenesFases::FinFase(const Variant& vId, const DateValue& dtFecha, ConnPtr& objCn) {
    execute(fill(kFinFase, {{"vId", vId}, {"dtFecha", Variant(dtFecha)}}), objCn);
}

void ClsOrdenesFases::Insertar(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtHora,
                               const DateValue& dtFechaF, const DateValue& dtHoraF, const std::string& sEmpleado,
                               const std::string& sFase, double dCant, const std::string& sCodFase,
                               const std::string& sCodEmpleado, const DateValue& dtTiempo,
                               const DateValue& dtFecha_Ent, const DateValue& dtHora_Ent,
                               const DateValue& dtFecha_Codigo, ConnPtr& objCn) {
    // The number is asked on the caller's connection as it stands, with the first data
    // source; the row goes to the second.
    const int32_t id = rt::CLng(NuevoCodigo(vCodigo, objCn));
    execute(fill(kInsertar, {{"Id", Variant(id)},
                             {"vCodigo", vCodigo},
                             {"dtFecha", Variant(dtFecha)},
                             {"dtHora", Variant(dtHora)},
                             {"dtFechaF", Variant(dtFechaF)},
                             {"dtHoraF", Variant(dtHoraF)},
                             {"sEmpleado", Variant(sEmpleado)},
                             {"sFase", Variant(sFase)},
                             {"dCant", Variant(dCant)},
                             {"sCodEmpleado", Variant(sCodEmpleado)},
                             {"sCodFase", Variant(sCodFase)},
                             {"dtFecha_Ent", Variant(dtFecha_Ent)},
                             {"dtHora_Ent", Variant(dtHora_Ent)},
                             {"dtTiempo", Variant(dtTiempo)},
                             {"dtFecha_Codigo", Variant(dtFecha_Codigo)}}),
            objCn, kSecondBase);
}

void ClsOrdenesFases::SetValor(const std::string& sDescripcion, const Variant& vDate) {
    auto& r = rs();
    r.setValue("Id", Variant(recordCount(r)));
    r.setValue("Descripción", Variant(sDescripcion));
    r.setValue("Inicio", vDate);
    r.setValue("Código", Variant(int16_t{0}));
}

void registerFases(Registry& r) {
    tools::defineRecordClass<ClsOrdenesFases>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesFases;
        b.method("Obtener",
                 {in("vId"), inout("vCodigo"), inout("dtFecha", PT::Date), inout("dtHora", PT::Date),
                  inout("dtFechaF", PT::Date), inout("dtHoraF", PT::Date), inout("sEmpleado", PT::String),
                  inout("sFase", PT::String), inout("dCant", PT::Double), inout("sCodFase", PT::String),
                  inout("sCodEmpleado", PT::String), inout("dtTiempo", PT::Date), inout("dtFecha_Ent", PT::Date),
                  inout("dtHora_Ent", PT::Date), optObj("objCn")},
                 &C::Obtener);
        b.method("InicioFase", {in("vId"), in("dtFecha", PT::Date), optObj("objCn")}, &C::InicioFase);
        b.method("FinFase", {in("vId"), in("dtFecha", PT::Date), optObj("objCn")}, &C::FinFase);
        b.method("Insertar",
                 {in("vCodigo"), in("dtFecha", PT::Date), in("dtHora", PT::Date), in("dtFechaF", PT::Date),
                  in("dtHoraF", PT::Date), in("sEmpleado", PT::String), in("sFase", PT::String),
                  in("dCant", PT::Double), in("sCodFase", PT::String), in("sCodEmpleado", PT::String),
                  in("dtTiempo", PT::Date), in("dtFecha_Ent", PT::Date), in("dtHora_Ent", PT::Date),
                  in("dtFecha_Codigo", PT::Date), optObj("objCn")},
                 &C::Insertar);
        b.method("SetValor", {in("sDescripcion", PT::String), in("vDate")}, &C::SetValor);
    });
}

}  // namespace hist::clinical
