// ClsOrdenesColor: the shade a work order must match, one row per order and date.
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
    "SELECT Color, Croma, Valor, Tonalidad, Descripcion, Guia, Vista, Forma,  C1, C2, C3, D1, D2, D3, I1, I2, "
    "I3 FROM HOrdenes_Color WHERE  Codigo = {vId}";
constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Color ( Id, Codigo, Color, Croma, Valor, Tonalidad, Descripcion, Guia, Vista, Forma, "
    " C1, C2, C3, D1, D2, D3, I1, I2, I3, Fecha ) Values ( {Id} , '{vId}', '{sColor}', '{sCroma}','{sValor}' , "
    "'{sTonalidad}', '{sDescripcion}', '{sGuia}', '{sVista}','{sForma}' , '{sC1}', '{sC2}', '{sC3}','{sD1}' , "
    "'{sD2}', '{sD3}', '{sI1}','{sI2}' , '{sI3}', {F:dtFecha} )";

// The 17 shade fields in the order of the members' arguments, and their holes.
constexpr std::array<std::string_view, 17> kFields{"Color", "Croma", "Valor", "Tonalidad", "Descripcion", "Guia",
                                                   "Vista", "Forma", "C1",    "C2",        "C3",          "D1",
                                                   "D2",    "D3",    "I1",    "I2",        "I3"};
constexpr std::array<std::string_view, 17> kHoles{"sColor", "sCroma", "sValor", "sTonalidad", "sDescripcion",
                                                  "sGuia",  "sVista", "sForma", "sC1",        "sC2",
                                                  "sC3",    "sD1",    "sD2",    "sD3",        "sI1",
                                                  "sI2",    "sI3"};

const ClassVariants kVariants{
    .className = "ClsOrdenesColor",
    .table = "HOrdenes_Color",
    .select = "SELECT Id, Codigo as Código, Color, Croma, Valor, Tonalidad, Descripcion as Descripción , Guia, "
        "Vista, Forma, C1, C2, C3, D1, D2, D3, I1, I2, I3, Fecha  FROM HOrdenes_Color",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Color Where Codigo = {vCod}",
    .nuevoCodigoCloses = true,
    .deleteAll = "DELETE  FROM HOrdenes_Color  WHERE (Codigo = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Color SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .statements = {{"Obtener", kObtener}, {"Insertar", kInsertar}},
    .open = OpenForm::A,
    .orderOnRequery = true,
    .addNewDefaults = {{"ID", ValueSource::RecordCount},
                       {"Guia", ValueSource::Constant, Variant(std::string("Vita"))},
                       {"Croma", ValueSource::Constant, Variant(std::string("Normal"))},
                       {"Vista", ValueSource::Constant, Variant(std::string("Incisivo"))}},
    .updateId = {.parent = "Código"},
    .permissionGroup = "Ordenes",
};

constexpr std::array<std::string_view, 42> kInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "Obtener", "DeleteAll",
    "Insertar", "IniciaRs", "ConvertirSerie", "NuevoCodigo", "SeguridadPermiso", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

}  // namespace

ClsOrdenesColor::ClsOrdenesColor() : RecordClass(kVariants) {}

void ClsOrdenesColor::Obtener(const Variant& vId, std::span<Variant> shade, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtener, {{"vId", vId}}), objCn);
    if (!r) return;
    for (size_t i = 0; i < kFields.size(); ++i) {
        std::string text;
        readField(*r, kFields[i], text, OnNull::Empty);
        shade[i] = Variant(text);
    }
}

void ClsOrdenesColor::Insertar(const Variant& vId, std::span<Variant> values, ConnPtr& objCn) {
    // values: the 17 texts, then dtFecha.
    const int32_t id = rt::CLng(NuevoCodigo(vId, objCn));
    std::array<HoleValue, 20> h;
    h[0] = {"Id", Variant(id)};
    h[1] = {"vId", vId};
    for (size_t i = 0; i < kHoles.size(); ++i) h[2 + i] = {kHoles[i], values[i]};
    h[19] = {"dtFecha", values[17]};
    execute(fill(kInsertar, h), objCn);
}

void registerColor(Registry& r) {
    tools::defineRecordClass<ClsOrdenesColor>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesColor;
        std::vector<Param> obtener{in("vId")};
        std::vector<Param> insertar{in("vId")};
        for (std::string_view n : kHoles) {
            obtener.push_back(inout(std::string(n), PT::String));
            insertar.push_back(in(std::string(n), PT::String));
        }
        obtener.push_back(optObj("objCn"));
        insertar.push_back(in("dtFecha", PT::Date));
        insertar.push_back(optObj("objCn"));
        b.raw(runMember<C>("Obtener", std::move(obtener), &C::Obtener));
        b.raw(runMember<C>("Insertar", std::move(insertar), &C::Insertar));
    });
}

}  // namespace hist::clinical
