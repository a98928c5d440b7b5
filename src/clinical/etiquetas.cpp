// ClsOrdenesEtiquetas: the label text of a work order (conservation, handling,
// warning). The frame alone: rows come only through the recordset.
#include <array>
#include <string_view>

#include "clinical/clinical.hpp"
#include "tools/registration.hpp"

namespace hist::clinical {

using namespace frame;

namespace {

const ClassVariants kVariants{
    .className = "ClsOrdenesEtiquetas",
    .table = "HOrdenes_Etiquetas",
    .select = "SELECT Id, Codigo AS Código, Conservacion as Conservación, Manipulacion as Manipulación, Advertencia, "
        "Fecha FROM HOrdenes_Etiquetas",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Etiquetas Where Codigo = {vCod}",
    .nuevoCodigoCloses = true,
    // DeleteAll names the order by Numero, everything else by Codigo.
    .deleteAll = "DELETE  FROM HOrdenes_Etiquetas  WHERE (Numero = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Etiquetas SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .open = OpenForm::A,
    .orderOnRequery = true,
    .updateId = {.parent = "Código", .key = ValueSource::NuevoCodigoOfId},
    .permissionGroup = "Ordenes",
    .definedSize = DefinedSizeForm::LongTextConstant,
};

constexpr std::array<std::string_view, 40> kInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "IniciaRs",
    "ConvertirSerie", "NuevoCodigo", "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete",
    "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans",
    "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord",
    "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter", "CreateFilter", "SetFilter",
    "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

}  // namespace

ClsOrdenesEtiquetas::ClsOrdenesEtiquetas() : RecordClass(kVariants) {}

void registerEtiquetas(Registry& r) { tools::defineRecordClass<ClsOrdenesEtiquetas>(r, kVariants, kInterface); }

}  // namespace hist::clinical
