// ClsOrdenesOdontograma: the tooth chart of a work order (32 teeth, FDI order, with a
// flag and a comment each) and what came in with the work, one row per order and date.
#include <array>
#include <string_view>
#include <vector>

#include "ado/recordset.hpp"
#include "clinical/clinical.hpp"
#include "platform/runtime.hpp"
#include "tools/registration.hpp"

namespace hist::clinical {

using namespace frame;

namespace {

constexpr Template kObtenerQuePiezas =
    "SELECT P11, P12, P13, P14, P15, P16, P17, P18, P21, P22,P23, P24, P25, P26, P27, P28, P31, P32, P33, "
    "P34,P35, P36, P37, P38, P41, P42, P43, P44, P45, P46, P47, P48 FROM HOrdenes_Odontograma WHERE  Codigo = "
    "{vId}";
constexpr Template kObtenerComentPiezas =
    "SELECT C11, C12, C13, C14, C15, C16, C17, C18, C21, C22, C23, C24, C25, C26, C27, C28, C31, C32, C33, "
    "C34, C35, C36, C37, C38, C41, C42, C43, C44, C45, C46, C47, C48 FROM HOrdenes_Odontograma WHERE  Codigo = "
    "{vId}";
constexpr Template kObtenerQueEntra =
    "SELECT Articulador, Metal, Resina, Yeso_sup, Yeso_Inf, Silicona_Sup, Silicona_Inf, Alginato_Sup, "
    "Alginato_Inf, Ceras_Sup, Ceras_Inf, Cubetas_Sup, Cubetas_Inf FROM HOrdenes_Odontograma WHERE  Codigo = "
    "{vId}";
constexpr Template kInsertarQuePiezas =
    "UPDATE HOrdenes_Odontograma SET  P11 = {B:bP11}, P12 = {B:bP12}, P13 = {B:bP13}, P14 = {B:bP14}, P15 = "
    "{B:bP15}, P16 = {B:bP16}, P17 = {B:bP17}, P18 = {B:bP18}, P21 = {B:bP21}, P22 = {B:bP22}, P23 = {B:bP23}, "
    "P24 = {B:bP24}, P25 = {B:bP25}, P26 = {B:bP26}, P27 = {B:bP27}, P28 = {B:bP28}, P31 = {B:bP31}, P32 = "
    "{B:bP32}, P33 = {B:bP33}, P34 = {B:bP34}, P35 = {B:bP35}, P36 = {B:bP36}, P37 = {B:bP37}, P38 = {B:bP38}, "
    "P41 = {B:bP41}, P42 = {B:bP42}, P43 = {B:bP43}, P44 = {B:bP44}, P45 = {B:bP45}, P46 = {B:bP46}, P47 = "
    "{B:bP47}, P48 = {B:bP48} Where (Codigo = {vId} )";
constexpr Template kInsertarComentaPiezas =
    "UPDATE HOrdenes_Odontograma SET  C11 = '{sC11}', C12 = '{sC12}', C13 = '{sC13}', C14 = '{sC14}', C15 = "
    "'{sC15}', C16 = '{sC16}', C17 = '{sC17}', C18 = '{sC18}', C21 = '{sC21}', C22 = '{sC22}', C23 = '{sC23}', "
    "C24 = '{sC24}', C25 = '{sC25}', C26 = '{sC26}', C27 = '{sC27}', C28 = '{sC28}', C31 = '{sC31}', C32 = "
    "'{sC32}', C33 = '{sC33}', C34 = '{sC34}', C35 = '{sC35}', C36 = '{sC36}', C37 = '{sC37}', C38 = '{sC38}', "
    "C41 = '{sC41}', C42 = '{sC42}', C43 = '{sC43}', C44 = '{sC44}', C45 = '{sC45}', C46 = '{sC46}', C47 = "
    "'{sC47}', C48 = '{sC48}' Where (Codigo = {vId} )";
constexpr Template kInsertar =
    "INSERT INTO HOrdenes_Odontograma ( Id, Codigo, Articulador, Metal, Resina, Yeso_sup, Yeso_Inf, "
    "Silicona_Sup, Silicona_Inf, Alginato_Sup, Alginato_Inf, Ceras_Sup, Ceras_Inf, Cubetas_Sup, Cubetas_Inf, "
    "Fecha ) Values ( {Id} , '{sCodigo}', {B:bArticulador}, '{sMetal}', '{sResina}', '{iYesoSup}', "
    "'{iYesoInf}', '{iSilSup}', '{iSilInf}', '{iAlgSup}', '{iAlgInf}', '{iCerSup}', '{iCerInf}', '{iCubSup}', "
    "'{iCubInf}', {F:dtFecha} )";
constexpr Template kGetDatosEntra =
    "SELECT Id, Codigo as Código, Articulador, Metal, Resina, Yeso_sup, Yeso_Inf, Silicona_Sup, Silicona_Inf, "
    "Alginato_Sup, Alginato_Inf, Ceras_Sup, Ceras_Inf, Cubetas_Sup, Cubetas_Inf FROM HOrdenes_Odontograma "
    "WHERE  Codigo =  {vId}";

// The teeth in the order of every member: four runs of eight.
constexpr std::array<std::string_view, 32> kTeeth{
    "11", "12", "13", "14", "15", "16", "17", "18", "21", "22", "23", "24", "25", "26", "27", "28",
    "31", "32", "33", "34", "35", "36", "37", "38", "41", "42", "43", "44", "45", "46", "47", "48"};

// A name per tooth with a prefix ("P11", "bP11", ...), kept for the life of the program.
std::array<std::string, 32> toothNames(std::string_view prefix) {
    std::array<std::string, 32> out;
    for (size_t i = 0; i < kTeeth.size(); ++i) out[i] = std::string(prefix) + std::string(kTeeth[i]);
    return out;
}
const std::array<std::string, 32> kFlagFields = toothNames("P");
// The comment reader asks in lower case ("c11"): field lookup ignores case.
const std::array<std::string, 32> kCommentFields = toothNames("c");
const std::array<std::string, 32> kFlagHoles = toothNames("bP");
const std::array<std::string, 32> kCommentHoles = toothNames("sC");

// The ten counts, upper before lower, as Insertar's holes and its arguments name them.
constexpr std::array<std::string_view, 10> kCountHoles{"iYesoSup", "iYesoInf", "iSilSup", "iSilInf", "iAlgSup",
                                                       "iAlgInf",  "iCerSup",  "iCerInf", "iCubSup", "iCubInf"};

// AddNew: ID, then the 32 flags false, no articulator, the material texts and no
// casts, impressions or wax (the trays, the comments, the order and the date stay unset).
std::vector<FieldDefault> addNewDefaults() {
    std::vector<FieldDefault> d{{"ID", ValueSource::RecordCount}};
    for (const std::string& f : kFlagFields) d.push_back({f, ValueSource::Constant, Variant(false)});
    d.push_back({"Articulador", ValueSource::Constant, Variant(false)});
    d.push_back({"Metal", ValueSource::Constant, Variant(std::string("Metal"))});
    d.push_back({"Resina", ValueSource::Constant, Variant(std::string("Resina"))});
    for (std::string_view f : {"Yeso_sup", "Yeso_Inf", "Silicona_Sup", "Silicona_Inf", "Alginato_Sup", "Alginato_Inf",
                               "Ceras_Sup", "Ceras_Inf"})
        d.push_back({f, ValueSource::Constant, Variant(int16_t{0})});
    return d;
}

const ClassVariants kVariants{
    .className = "ClsOrdenesOdontograma",
    .table = "HOrdenes_Odontograma",
    .select = "SELECT Id, Codigo as Código, P11, P12, P13, P14, P15, P16, P17, P18, P21, P22, P23, P24, P25, P26, "
        "P27, P28, P31, P32, P33, P34, P35, P36, P37, P38, P41, P42, P43, P44, P45, P46, P47, P48, "
        "Articulador, Metal, Resina, Yeso_sup, Yeso_Inf, Silicona_Sup, Silicona_Inf, Alginato_Sup, "
        "Alginato_Inf, Ceras_Sup, Ceras_Inf, Cubetas_Sup, Cubetas_Inf, C11, C12, C13, C14, C15, C16, C17, C18, "
        "C21, C22, C23, C24, C25, C26, C27, C28, C31, C32, C33, C34, C35, C36, C37, C38, C41, C42, C43, C44, "
        "C45, C46, C47, C48, Fecha FROM HOrdenes_Odontograma",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where (Id = 0)"}},
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Odontograma Where Codigo = {vCod}",
    .nuevoCodigoCloses = true,
    .deleteAll = "DELETE  FROM HOrdenes_Odontograma  WHERE (Codigo = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Odontograma SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .statements = {{"ObtenerQuePiezas", kObtenerQuePiezas},
                   {"ObtenerComentPiezas", kObtenerComentPiezas},
                   {"ObtenerQueEntra", kObtenerQueEntra},
                   {"InsertarQuePiezas", kInsertarQuePiezas},
                   {"InsertarComentaPiezas", kInsertarComentaPiezas},
                   {"Insertar", kInsertar},
                   {"GetDatosEntra", kGetDatosEntra}},
    .open = OpenForm::A,
    .orderOnRequery = true,
    .addNewDefaults = addNewDefaults(),
    .updateId = {.parent = "Código", .key = ValueSource::NuevoCodigoOfId},
    .permissionGroup = "HOrdenes",
};

constexpr std::array<std::string_view, 47> kInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "ObtenerQuePiezas",
    "ObtenerComentPiezas", "ObtenerQueEntra", "InsertarQuePiezas", "InsertarComentaPiezas", "Insertar",
    "GetDatosEntra", "IniciaRs", "ConvertirSerie", "NuevoCodigo", "SeguridadPermiso", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

// The holes of a per-tooth statement: vId, then one per tooth.
std::array<HoleValue, 33> toothHoles(const Variant& vId, const std::array<std::string, 32>& names,
                                     std::span<Variant> values) {
    std::array<HoleValue, 33> h;
    h[0] = {"vId", vId};
    for (size_t i = 0; i < 32; ++i) h[i + 1] = {names[i], values[i]};
    return h;
}

}  // namespace

ClsOrdenesOdontograma::ClsOrdenesOdontograma() : RecordClass(kVariants) {}

void ClsOrdenesOdontograma::ObtenerQuePiezas(const Variant& vId, std::span<Variant> teeth, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtenerQuePiezas, {{"vId", vId}}), objCn);
    if (!r) return;
    // No null test: a null flag fails, leaving the teeth before it set.
    for (size_t i = 0; i < 32; ++i) {
        bool flag = false;
        readField(*r, kFlagFields[i], flag, OnNull::Fail);
        teeth[i] = Variant(flag);
    }
}

void ClsOrdenesOdontograma::ObtenerComentPiezas(const Variant& vId, std::span<Variant> comments, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtenerComentPiezas, {{"vId", vId}}), objCn);
    if (!r) return;
    for (size_t i = 0; i < 32; ++i) {
        std::string text;
        readField(*r, kCommentFields[i], text, OnNull::Empty);
        comments[i] = Variant(text);
    }
}

void ClsOrdenesOdontograma::ObtenerQueEntra(const Variant& vId, bool& bArticulador, std::string& sMetal,
                                            std::string& sResina, int16_t& iYeso_sup, int16_t& iYeso_Inf,
                                            int16_t& iSilicona_sup, int16_t& iSilicona_Inf, int16_t& iAlginato_sup,
                                            int16_t& iAlginato_Inf, int16_t& iCeras_sup, int16_t& iCeras_Inf,
                                            int16_t& iCubetas_sup, int16_t& iCubetas_Inf, ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kObtenerQueEntra, {{"vId", vId}}), objCn);
    if (!r) return;
    readField(*r, "Articulador", bArticulador, OnNull::Fail);
    readField(*r, "Metal", sMetal, OnNull::Empty);
    readField(*r, "Resina", sResina, OnNull::Empty);
    // The reader spells the upper counts with a small "s"; the lookup ignores case.
    readField(*r, "Yeso_sup", iYeso_sup, OnNull::Empty);
    readField(*r, "Yeso_Inf", iYeso_Inf, OnNull::Empty);
    readField(*r, "Silicona_sup", iSilicona_sup, OnNull::Empty);
    readField(*r, "Silicona_Inf", iSilicona_Inf, OnNull::Empty);
    readField(*r, "Alginato_sup", iAlginato_sup, OnNull::Empty);
    readField(*r, "Alginato_Inf", iAlginato_Inf, OnNull::Empty);
    readField(*r, "Ceras_sup", iCeras_sup, OnNull::Empty);
    readField(*r, "Ceras_Inf", iCeras_Inf, OnNull::Empty);
    readField(*r, "Cubetas_sup", iCubetas_sup, OnNull::Empty);
    readField(*r, "Cubetas_Inf", iCubetas_Inf, OnNull::Empty);
}

void ClsOrdenesOdontograma::InsertarQuePiezas(const Variant& vId, std::span<Variant> teeth, ConnPtr& objCn) {
    // Every row of the order changes: the date is not in the condition.
    execute(fill(kInsertarQuePiezas, toothHoles(vId, kFlagHoles, teeth)), objCn);
}

void ClsOrdenesOdontograma::InsertarComentaPiezas(const Variant& vId, std::span<Variant> comments,
                                                  ConnPtr& objCn) {
    execute(fill(kInsertarComentaPiezas, toothHoles(vId, kCommentHoles, comments)), objCn);
}

void ClsOrdenesOdontograma::Insertar(const Variant& sCodigo, std::span<Variant> values, ConnPtr& objCn) {
    // values: bArticulador, sMetal, sResina, the ten counts, dtFecha. The teeth keep
    // the table's defaults.
    const int32_t id = rt::CLng(NuevoCodigo(sCodigo, objCn));
    std::array<HoleValue, 16> h;
    h[0] = {"Id", Variant(id)};
    h[1] = {"sCodigo", sCodigo};
    h[2] = {"bArticulador", values[0]};
    h[3] = {"sMetal", values[1]};
    h[4] = {"sResina", values[2]};
    for (size_t i = 0; i < kCountHoles.size(); ++i) h[5 + i] = {kCountHoles[i], values[3 + i]};
    h[15] = {"dtFecha", values[13]};
    execute(fill(kInsertar, h), objCn);
}

void ClsOrdenesOdontograma::GetDatosEntra(const Variant& vId, std::string& sLinea1, std::string& slinea2,
                                          ConnPtr& objCn) {
    RsPtr r = openAtLastRow(fill(kGetDatosEntra, {{"vId", vId}}), objCn);
    if (!r) {
        sLinea1 = "no";
        slinea2 = "no";
        return;
    }
    // A null count adds nothing behind its label. Alginate comes before silicone and
    // only the second line has a blank after its hyphens: printed forms rest on both.
    auto count = [&](std::string_view field) { return holeText("", r->value(field)); };
    sLinea1 = " YS-" + count("Yeso_sup") + " YI-" + count("Yeso_Inf") + ", AS-" + count("Alginato_Sup") + " AI-" +
              count("Alginato_Inf") + ", SS-" + count("Silicona_Sup") + " SI-" + count("Silicona_Inf");
    slinea2 = " CeS- " + count("Ceras_Sup") + " CeI- " + count("Ceras_Inf") + ", CuS- " + count("Cubetas_Sup") +
              " CuI- " + count("Cubetas_Inf");
}

void registerOdontograma(Registry& r) {
    tools::defineRecordClass<ClsOrdenesOdontograma>(r, kVariants, kInterface, [](auto& b) {
        using C = ClsOrdenesOdontograma;
        // A tooth run: vId, the 32 values of one type, the connection.
        auto teethParams = [](const std::array<std::string, 32>& names, bool byRef, ParamType type) {
            std::vector<Param> p{in("vId")};
            for (const std::string& n : names) p.push_back(byRef ? inout(n, type) : in(n, type));
            p.push_back(optObj("objCn"));
            return p;
        };
        b.raw(runMember<C>("ObtenerQuePiezas", teethParams(toothNames("bP"), true, PT::Boolean),
                           &C::ObtenerQuePiezas));
        b.raw(runMember<C>("ObtenerComentPiezas", teethParams(toothNames("sP"), true, PT::String),
                           &C::ObtenerComentPiezas));
        b.method("ObtenerQueEntra",
                 {in("vId"), inout("bArticulador", PT::Boolean), inout("sMetal", PT::String),
                  inout("sResina", PT::String), inout("iYeso_sup", PT::Integer), inout("iYeso_Inf", PT::Integer),
                  inout("iSilicona_sup", PT::Integer), inout("iSilicona_Inf", PT::Integer),
                  inout("iAlginato_sup", PT::Integer), inout("iAlginato_Inf", PT::Integer),
                  inout("iCeras_sup", PT::Integer), inout("iCeras_Inf", PT::Integer),
                  inout("iCubetas_sup", PT::Integer), inout("iCubetas_Inf", PT::Integer), optObj("objCn")},
                 &C::ObtenerQueEntra);
        b.raw(runMember<C>("InsertarQuePiezas", teethParams(kFlagHoles, false, PT::Boolean),
                           &C::InsertarQuePiezas));
        b.raw(runMember<C>("InsertarComentaPiezas", teethParams(kCommentHoles, false, PT::String),
                           &C::InsertarComentaPiezas));
        std::vector<Param> insertar{in("sCodigo", PT::String), in("bArticulador", PT::Boolean),
                                    in("sMetal", PT::String), in("sResina", PT::String)};
        for (std::string_view n : kCountHoles) insertar.push_back(in(std::string(n), PT::Integer));
        insertar.push_back(in("dtFecha", PT::Date));
        insertar.push_back(optObj("objCn"));
        b.raw(runMember<C>("Insertar", std::move(insertar), &C::Insertar));
        b.method("GetDatosEntra",
                 {in("vId"), inout("sLinea1", PT::String), inout("slinea2", PT::String), optObj("objCn")},
                 &C::GetDatosEntra);
    });
}

}  // namespace hist::clinical
