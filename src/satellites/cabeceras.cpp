#include "satellites/cabeceras.hpp"

#include <array>
#include <string_view>
#include <type_traits>

#include "ado/recordset.hpp"
#include "platform/collection.hpp"
#include "platform/runtime.hpp"
#include "satellites/lineas.hpp"
#include "tools/registration.hpp"

namespace hist::satellites {

using namespace frame;

namespace {

// ------------------------------------------------------------ the statements ({table} is the class's)

constexpr Template kSelect =
    "SELECT Id, Numero, Codigo , Nombre, Razon_Social as Empresa, NIF,  Direccion as Dirección, Codigo_Postal, "
    "Poblacion as Población, Provincia, fecha FROM {table}";
constexpr Template kInsertar =
    "INSERT INTO {table} ( id, Numero, Nombre, Razon_Social, NIF,  Direccion, Codigo_Postal, Poblacion, Provincia, "
    "Fecha ) Values ( {vId},{vNum},'{sNombre}','{sEmpresa}','{sNif}','{sDireccion}','{sCp}','{sPoblacion}',"
    "'{sProvincia}', {F:dtFecha} )";
constexpr Template kObtener =
    "SELECT Nombre, Razon_Social as Empresa, NIF,  Direccion, Codigo_Postal, Poblacion, Provincia FROM {table} WHERE  "
    "Numero = {vId}";
constexpr Template kObtenerTodo =
    "SELECT Codigo, Nombre, Razon_Social as Empresa, NIF,  Direccion, Codigo_Postal, Poblacion, Provincia FROM "
    "{table} WHERE  Numero = {vId}";

// GetDatos: by telephone, by company, or the first row; at the first archive level or,
// with bHistor, at the second (the table with one more "H").
#define HIST_GETDATOS_LIST "SELECT Nombre, Razon_Social as Empresa, NIF,  Direccion, Codigo_Postal, Poblacion, Provincia, Telefono"
constexpr std::array<std::array<Template, 3>, 2> kGetDatos{{
    {HIST_GETDATOS_LIST " FROM {table} WHERE  Telefono =  '{idTel}'",
     HIST_GETDATOS_LIST " FROM {table} WHERE  Razon_Social = '{sEmpresa}' ", HIST_GETDATOS_LIST " FROM {table}"},
    {HIST_GETDATOS_LIST " FROM H{table} WHERE  Telefono =  '{idTel}'",
     HIST_GETDATOS_LIST " FROM H{table} WHERE  Razon_Social = '{sEmpresa}' ", HIST_GETDATOS_LIST " FROM H{table}"},
}};
#undef HIST_GETDATOS_LIST

// The way out names its ten columns; the way back copies whole rows.
constexpr Template kAHistoricosCopia =
    "INSERT INTO H{table} ( Codigo, Nombre, Razon_Social, NIF, Direccion, Codigo_Postal, Poblacion, Provincia, "
    "Telefono, Cierre ) SELECT Codigo, Nombre, Razon_Social, NIF, Direccion, Codigo_Postal, Poblacion, Provincia, "
    "Telefono, Cierre  FROM {table} WHERE(CIERRE = {vId})";
constexpr Template kAHistoricosBorrado = "DELETE  FROM {table} WHERE ((CIERRE = {vId}))";
constexpr Template kDeHistoricosCopia = "INSERT INTO {table} SELECT H{table}.* FROM H{table} WHERE(CIERRE = {vId})";
constexpr Template kDeHistoricosBorrado = "DELETE  FROM H{table} WHERE ((CIERRE = {vId}))";

std::vector<NamedStatement> snapshotStatements(bool orders) {
    std::vector<NamedStatement> out = {{"Insertar", kInsertar}, {"Obtener", kObtener}};
    if (orders) out.push_back({"Obtener_Todo", kObtenerTodo});
    out.push_back({"GetDatos[Index 0]", kGetDatos[0][0]});
    out.push_back({"GetDatos[Index 1,2]", kGetDatos[0][1]});
    out.push_back({"GetDatos[other Index]", kGetDatos[0][2]});
    out.push_back({"GetDatos[bHistor][Index 0]", kGetDatos[1][0]});
    out.push_back({"GetDatos[bHistor][Index 1,2]", kGetDatos[1][1]});
    out.push_back({"GetDatos[bHistor][other Index]", kGetDatos[1][2]});
    if (!orders) {
        out.push_back({"Mover_A_Historicos[1]", kAHistoricosCopia});
        out.push_back({"Mover_A_Historicos[2]", kAHistoricosBorrado});
        out.push_back({"Mover_De_Historicos[1]", kDeHistoricosCopia});
        out.push_back({"Mover_De_Historicos[2]", kDeHistoricosBorrado});
    }
    return out;
}

// ------------------------------------------------------------ the declarations

// The three document snapshots: open form B, numbered across the table, deleted by
// number alone, renumbered from 1 over every row without touching the date.
ClassVariants documentSnapshot(std::string_view className, std::string_view table,
                               std::string_view permissionGroup) {
    return ClassVariants{
        .className = className,
        .table = table,
        .select = kSelect,
        .selections = {{"seleccion", " Where (Numero = {id} AND Fecha = {F:dtFecha} )"},
                       {"ninguno", " Where Numero = 0"}},
        .nuevoCodigo = "SELECT MAX(Id) AS Nuevo_Codigo FROM {table}",
        .deleteAll = "DELETE  FROM {table} WHERE (Numero = {vId})",
        .convertirSerie = "UPDATE {table} SET Numero = {vNewId} WHERE(Numero = {vId})",
        .statements = snapshotStatements(false),
        .signatures = {{"NuevoCodigo", {optObj("objCn")}},
                       {"UpdateId", {inout("vId")}},
                       {"FindRecord",
                        {in("Criteria", PT::String), optRef("Index", PT::Integer, Variant(int16_t{0}))}}},
        .open = OpenForm::B,
        .addNewDefaults = {{"Id", ValueSource::RecordCount}, {"Fecha", ValueSource::TodayShortDate}},
        .findField = kFindByIndex,
        .updateId = {.parent = "Numero", .key = ValueSource::Counter, .writesFecha = false},
        .permissionGroup = permissionGroup,
    };
}

// The order's snapshot: open form C, numbered within the customer code, keyed on
// number and date (the date by bFechaServidor), renumbered with the date.
const ClassVariants kOrdenes = [] {
    ClassVariants v = documentSnapshot("ClsOrdenesCabecera", "HOrdenes_Cabecera", "HOrdenes");
    v.selections[0].clause = " Where (Numero = {id} AND Fecha = {FL:dtFecha} )";
    v.nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Cabecera Where Codigo = {vCod}";
    v.nuevoCodigoCloses = true;
    v.deleteAll = "DELETE  FROM HOrdenes_Cabecera  WHERE (Numero = {vId} AND Fecha = {F:dtFecha} )";
    v.statements = snapshotStatements(true);
    v.signatures = {v.signatures.back()};  // FindRecord with Index
    v.open = OpenForm::C;
    v.updateId.writesFecha = true;
    return v;
}();
const ClassVariants kPedidos =
    documentSnapshot("ClsPedidosCliCabecera", "HPedidos_Clientes_Cabecera", "Pedidos_Clientes");
const ClassVariants kAlbaranes = documentSnapshot("ClsAlbaranesCabecera", "HAlbaranes_Cabecera", "Albaranes_Clientes");
const ClassVariants kFacturas = documentSnapshot("ClsFacturasCabecera", "HFacturas_Cabecera", "Facturas");

constexpr auto kOrdenesInterface = std::to_array<std::string_view>({
    "sClassName", "ObtenerRegistroActivo", "Insertar", "Obtener_Todo", "Obtener", "GetCabecera", "ConvertirSerie",
    "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "GetDatos", "IniciaRs", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery",
    "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast",
    "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue",
    "GetFilter", "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid",
    "ToHtml", "ToTxt"});

constexpr auto kPedidosInterface = std::to_array<std::string_view>({
    "sClassName", "ConvertirSerie", "Insertar", "Obtener", "GetCabecera", "Mover_De_Historicos", "Mover_A_Historicos",
    "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "GetDatos", "IniciaRs", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery",
    "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast",
    "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue",
    "GetFilter", "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid",
    "ToHtml", "ToTxt"});

constexpr auto kFacturasInterface = std::to_array<std::string_view>({
    "sClassName", "Insertar", "Obtener", "GetCabecera", "Mover_De_Historicos", "Mover_A_Historicos", "ConvertirSerie",
    "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "GetDatos", "IniciaRs", "NuevoCodigo",
    "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery",
    "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast",
    "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue",
    "GetFilter", "AplyFilter", "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid",
    "ToHtml", "ToTxt"});

constexpr auto kAlbaranesInterface = std::to_array<std::string_view>({
    "GetRptPath", "sClassName", "Insertar", "Obtener", "GetCabecera", "Mover_De_Historicos", "Mover_A_Historicos",
    "ConvertirSerie", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "GetDatos",
    "IniciaRs", "NuevoCodigo", "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete",
    "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans",
    "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord",
    "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter", "CreateFilter", "SetFilter",
    "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"});

// A field's text, an empty text for a null field.
std::string textOf(ado::Recordset& r, std::string_view field) {
    const Variant v = r.value(field);
    return v.isNull() ? std::string() : rt::CStr(v);
}

}  // namespace

// ------------------------------------------------------------ the shared members

void CustomerSnapshot::Insertar(Variant& vId, Variant& vNum, DateValue& dtFecha, std::string& sNif,
                                std::string& sNombre, std::string& sEmpresa, std::string& sDireccion,
                                std::string& sCp, std::string& sPoblacion, std::string& sProvincia,
                                ConnPtr& objCn) {
    // Name, company, tax number: the columns' order, not the arguments'.
    execute(fill(kInsertar, {{"vId", vId},
                             {"vNum", vNum},
                             {"sNombre", Variant(sNombre)},
                             {"sEmpresa", Variant(sEmpresa)},
                             {"sNif", Variant(sNif)},
                             {"sDireccion", Variant(sDireccion)},
                             {"sCp", Variant(sCp)},
                             {"sPoblacion", Variant(sPoblacion)},
                             {"sProvincia", Variant(sProvincia)},
                             {"dtFecha", Variant(dtFecha)}}),
            objCn);
}

void CustomerSnapshot::readCustomer(ado::Recordset& r, std::string& sNif, std::string& sNombre,
                                    std::string& sEmpresa, std::string& sDireccion, std::string& sCp,
                                    std::string& sPoblacion, std::string& sProvincia) {
    readField(r, "NIF", sNif, OnNull::Keep);
    readField(r, "Nombre", sNombre, OnNull::Keep);
    readField(r, "Empresa", sEmpresa, OnNull::Keep);
    readField(r, "Direccion", sDireccion, OnNull::Keep);
    readField(r, "Codigo_Postal", sCp, OnNull::Keep);
    readField(r, "Poblacion", sPoblacion, OnNull::Keep);
    readField(r, "Provincia", sProvincia, OnNull::Keep);
}

void CustomerSnapshot::Obtener(const Variant& vId, std::string& sNif, std::string& sNombre, std::string& sEmpresa,
                               std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                               std::string& sProvincia, ConnPtr& objCn) {
    RsPtr r = open(fill(kObtener, {{"vId", vId}}), objCn);
    if (!bofAndEof(*r)) readCustomer(*r, sNif, sNombre, sEmpresa, sDireccion, sCp, sPoblacion, sProvincia);
}

ObjectPtr CustomerSnapshot::GetCabecera() {
    auto& r = rs();
    auto col = std::make_shared<Collection>();
    for (std::string_view field : {"Nombre", "Empresa", "Nif", "Dirección"}) col->Add(Variant(textOf(r, field)));
    const Variant cp = r.value("Codigo_Postal");
    const std::string poblacion = textOf(r, "Población");
    col->Add(Variant(cp.isNull() ? poblacion : rt::CStr(cp) + " " + poblacion));
    col->Add(Variant(textOf(r, "Provincia")));
    // The main selection has no "Teléfono": the host reads a recordset that has it.
    col->Add(Variant(textOf(r, "Teléfono")));
    return col;
}

void CustomerSnapshot::GetDatos(Variant& idTel, std::string& sNif, std::string& sNombre, std::string& sEmpresa,
                                std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                                std::string& sProvincia, bool& bHistor, int16_t& Index, ConnPtr& objCn) {
    const size_t form = Index == 0 ? 0 : (Index == 1 || Index == 2) ? 1 : 2;
    RsPtr r = open(fill(kGetDatos[bHistor ? 1 : 0][form], {{"idTel", idTel}, {"sEmpresa", Variant(sEmpresa)}}),
                   objCn);
    if (bofAndEof(*r)) {
        sNombre = "no";  // how the caller learns that nothing was found
        return;
    }
    // Only the first row is read, whichever matched.
    readField(*r, "Telefono", idTel, OnNull::Keep);
    readCustomer(*r, sNif, sNombre, sEmpresa, sDireccion, sCp, sPoblacion, sProvincia);
}

void DocumentSnapshot::Mover_A_Historicos(const Variant& vId, ConnPtr& cnnActive) {
    execute(fill(kAHistoricosCopia, {{"vId", vId}}), cnnActive);
    execute(fill(kAHistoricosBorrado, {{"vId", vId}}), cnnActive);
}

void DocumentSnapshot::Mover_De_Historicos(const Variant& vId, ConnPtr& cnnActive) {
    execute(fill(kDeHistoricosCopia, {{"vId", vId}}), cnnActive);
    execute(fill(kDeHistoricosBorrado, {{"vId", vId}}), cnnActive);
}

// ------------------------------------------------------------ ClsOrdenesCabecera

ClsOrdenesCabecera::ClsOrdenesCabecera() : CustomerSnapshot(kOrdenes) {}
ClsPedidosCliCabecera::ClsPedidosCliCabecera() : DocumentSnapshot(kPedidos) {}
ClsAlbaranesCabecera::ClsAlbaranesCabecera() : DocumentSnapshot(kAlbaranes) {}
ClsFacturasCabecera::ClsFacturasCabecera() : DocumentSnapshot(kFacturas) {}

void ClsOrdenesCabecera::Obtener_Todo(const Variant& vId, Variant& vCodigo, std::string& sNif,
                                      std::string& sNombre, std::string& sEmpresa, std::string& sDireccion,
                                      std::string& sCp, std::string& sPoblacion, std::string& sProvincia,
                                      ConnPtr& objCn) {
    RsPtr r = open(fill(kObtenerTodo, {{"vId", vId}}), objCn, 1);
    if (bofAndEof(*r)) return;
    readField(*r, "Codigo", vCodigo, OnNull::Keep);
    readCustomer(*r, sNif, sNombre, sEmpresa, sDireccion, sCp, sPoblacion, sProvincia);
}

void ClsOrdenesCabecera::ObtenerRegistroActivo(std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                                               std::string& sProvincia) {
    auto& r = rs();
    readField(r, "Dirección", sDireccion, OnNull::Fail);
    readField(r, "Codigo_Postal", sCp, OnNull::Fail);
    readField(r, "Población", sPoblacion, OnNull::Fail);
    readField(r, "Provincia", sProvincia, OnNull::Fail);
}

// ------------------------------------------------------------ registration

namespace {

template <class T>
void snapshotMembers(ClassBuilder<T>& b) {
    b.method("Insertar",
             {inout("vId"), inout("vNum"), inout("dtFecha", PT::Date), inout("sNif", PT::String),
              inout("sNombre", PT::String), inout("sEmpresa", PT::String), inout("sDireccion", PT::String),
              inout("sCp", PT::String), inout("sPoblacion", PT::String), inout("sProvincia", PT::String),
              optObj("objCn")},
             &CustomerSnapshot::Insertar);
    b.method("Obtener",
             {in("vId"), inout("sNif", PT::String), inout("sNombre", PT::String), inout("sEmpresa", PT::String),
              inout("sDireccion", PT::String), inout("sCp", PT::String), inout("sPoblacion", PT::String),
              inout("sProvincia", PT::String), optObj("objCn")},
             &CustomerSnapshot::Obtener);
    b.method("GetCabecera", {}, &CustomerSnapshot::GetCabecera);
    b.method("GetDatos",
             {inout("idTel"), inout("sNif", PT::String), inout("sNombre", PT::String), inout("sEmpresa", PT::String),
              inout("sDireccion", PT::String), inout("sCp", PT::String), inout("sPoblacion", PT::String),
              inout("sProvincia", PT::String), optRef("bHistor", PT::Boolean, Variant(false)),
              optRef("Index", PT::Integer, Variant(int16_t{0})), optObj("objCn")},
             &CustomerSnapshot::GetDatos);
    if constexpr (std::is_base_of_v<DocumentSnapshot, T>) {
        b.method("Mover_A_Historicos", {in("vId"), optObj("cnnActive")}, &DocumentSnapshot::Mover_A_Historicos);
        b.method("Mover_De_Historicos", {in("vId"), optObj("cnnActive")}, &DocumentSnapshot::Mover_De_Historicos);
    } else {
        b.method("Obtener_Todo",
                 {in("vId"), inout("vCodigo"), inout("sNif", PT::String), inout("sNombre", PT::String),
                  inout("sEmpresa", PT::String), inout("sDireccion", PT::String), inout("sCp", PT::String),
                  inout("sPoblacion", PT::String), inout("sProvincia", PT::String), optObj("objCn")},
                 &ClsOrdenesCabecera::Obtener_Todo);
        b.method("ObtenerRegistroActivo",
                 {inout("sDireccion", PT::String), inout("sCp", PT::String), inout("sPoblacion", PT::String),
                  inout("sProvincia", PT::String)},
                 &ClsOrdenesCabecera::ObtenerRegistroActivo);
    }
}

}  // namespace

void registerLineAndSnapshotClasses(Registry& r) {
    registerLineClasses(r);
    tools::defineRecordClass<ClsOrdenesCabecera>(r, kOrdenes, kOrdenesInterface,
                                                 [](auto& b) { snapshotMembers(b); });
    tools::defineRecordClass<ClsPedidosCliCabecera>(r, kPedidos, kPedidosInterface,
                                                    [](auto& b) { snapshotMembers(b); });
    tools::defineRecordClass<ClsAlbaranesCabecera>(r, kAlbaranes, kAlbaranesInterface,
                                                   [](auto& b) { snapshotMembers(b); });
    tools::defineRecordClass<ClsFacturasCabecera>(r, kFacturas, kFacturasInterface,
                                                  [](auto& b) { snapshotMembers(b); });
}

}  // namespace hist::satellites
