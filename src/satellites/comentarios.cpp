#include "satellites/comentarios.hpp"

#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "tools/registration.hpp"
#include "platform/runtime.hpp"

namespace hist::satellites {

using namespace frame;

namespace {

// ------------------------------------------------------------ ClsOrdenesComentarios

constexpr Template kInsertarOrden =
    "INSERT INTO HOrdenes_Comentarios ( Id, Codigo, Comentarios, Descripcion, Fecha) Values ( {Id} , '{vCodigo}', "
    "'{sComent}', '{sDescripcion}' , {F:dtFecha} )";
constexpr Template kObtenerOrden = "SELECT Comentarios, Descripcion  FROM HOrdenes_Comentarios WHERE  Codigo = {vId}";

const ClassVariants kOrdenes{
    .className = "ClsOrdenesComentarios",
    .table = "HOrdenes_Comentarios",
    .select = "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM HOrdenes_Comentarios",
    .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {FL:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
    .nuevoCodigo = "SELECT MAX(ID) AS Nuevo_Codigo FROM HOrdenes_Comentarios Where Codigo = {vCod}",
    .nuevoCodigoCloses = true,
    .deleteAll = "DELETE  FROM HOrdenes_Comentarios  WHERE (Codigo = {vId} AND Fecha = {F:dtFecha} )",
    .convertirSerie = "UPDATE HOrdenes_Comentarios SET Codigo = {vNewId} WHERE(Codigo = {vId})",
    .statements = {{"Insertar", kInsertarOrden}, {"Obtener", kObtenerOrden}},
    .open = OpenForm::A,
    .orderOnIniciaRs = false,
    .orderOnRequery = true,
    .updateId = {.parent = "Código"},
    .permissionGroup = "HOrdenes",
    .definedSize = DefinedSizeForm::LongTextConstant,
};

// GetConnectionStrToRpt goes to the data service's default operation, which is the
// same GetConnectionStrToRpt the other classes call.
constexpr std::array<std::string_view, 42> kOrdenesInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "Obtener",
    "Insertar", "IniciaRs", "ConvertirSerie", "NuevoCodigo", "SeguridadPermiso", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

// ------------------------------------------------------------ the three document comments

constexpr Template kInsertarDocumento =
    "INSERT INTO {table} ( Id, Codigo, Comentarios, Fecha) Values ( {Id} , '{vCodigo}', '{sComent}', {F:dtFecha} )";
constexpr Template kObtenerDocumento = "SELECT Comentarios FROM {table} WHERE Codigo = {vId}";

// What the comments of customer orders, delivery notes and invoices declare alike:
// numbered across the table, keyed on the document alone.
ClassVariants documentComments(std::string_view className, std::string_view table, Template select,
                               std::string_view permissionGroup, std::vector<NamedStatement> statements) {
    return ClassVariants{
        .className = className,
        .table = table,
        .select = select,
        .selections = {{"seleccion", " Where (Codigo = {id} AND Fecha = {F:dtFecha} )"}, {"ninguno", " Where Id = 0"}},
        .nuevoCodigo = "SELECT MAX(Id) AS Nuevo_Codigo FROM {table}",
        .deleteAll = "DELETE  FROM {table} WHERE (Codigo = {vId})",
        .convertirSerie = "UPDATE {table} SET Codigo = {vNewId} WHERE(Codigo = {vId})",
        .statements = std::move(statements),
        .signatures = {{"NuevoCodigo", {optObj("objCn")}}, {"DeleteAll", {in("vId"), optObj("cnnActive")}}},
        .open = OpenForm::B,
        .orderOnIniciaRs = true,
        .orderOnRequery = true,
        .addNewDefaults = {{"ID", ValueSource::NuevoCodigoPlusCount}},
        .updateId = {.parent = "Código"},
        .permissionGroup = permissionGroup,
        .definedSize = DefinedSizeForm::LongTextConstant,
    };
}

const ClassVariants kPedidos =
    documentComments("ClsPedidosCliComent", "HPedidos_Clientes_Comentarios",
                     "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM {table}", "Pedidos_Clientes",
                     {{"Insertar", kInsertarDocumento}, {"Obtener", kObtenerDocumento}});

const ClassVariants kAlbaranes =
    documentComments("ClsAlbaranesComentarios", "HAlbaranes_Comentarios",
                     "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM {table}", "Albaranes_Clientes",
                     {{"Insertar", kInsertarDocumento}, {"Obtener", kObtenerDocumento}});

// The main selection writes the date column in lower case, so the field is "fecha".
// Invoices' comments have no ConvertirSerie.
const ClassVariants kFacturas = [] {
    ClassVariants v = documentComments("ClsFacturasComentarios", "HFacturas_Comentarios",
                                       "SELECT Id, Codigo AS Código, Comentarios, fecha FROM {table}", "Facturas",
                                       {{"Insertar", kInsertarDocumento}});
    v.convertirSerie = {};
    return v;
}();

constexpr std::array<std::string_view, 42> kPedidosInterface{
    "sClassName", "GetConnection", "ConvertirSerie", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll",
    "Obtener", "Insertar", "IniciaRs", "NuevoCodigo", "SeguridadPermiso", "EditingRecord", "AbsolutePosition",
    "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans",
    "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious", "ExistenRegistros",
    "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter", "CreateFilter",
    "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

constexpr std::array<std::string_view, 43> kAlbaranesInterface{
    "GetRptPath", "sClassName", "ConvertirSerie", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr",
    "DeleteAll", "Insertar", "IniciaRs", "Obtener", "NuevoCodigo", "SeguridadPermiso", "EditingRecord",
    "AbsolutePosition", "AddNew", "Delete", "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans",
    "CnnCommitTrans", "CnnRollbackTrans", "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious",
    "ExistenRegistros", "FindRecord", "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter",
    "CreateFilter", "SetFilter", "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

constexpr std::array<std::string_view, 40> kFacturasInterface{
    "sClassName", "GetConnection", "GetConnectionStrToRpt", "GetConnectionStr", "DeleteAll", "Insertar",
    "IniciaRs", "NuevoCodigo", "SeguridadPermiso", "EditingRecord", "AbsolutePosition", "AddNew", "Delete",
    "MoveToBookmark", "Requery", "Update", "UpdateId", "CnnBeginTrans", "CnnCommitTrans", "CnnRollbackTrans",
    "Cancel", "MoveFirst", "MoveLast", "MoveNext", "MovePrevious", "ExistenRegistros", "FindRecord",
    "ValidaDefinedSize", "ValidaKey", "ValidaValue", "GetFilter", "AplyFilter", "CreateFilter", "SetFilter",
    "SetOrder", "GetOrder", "GetHtmlFile", "ToHtmlGrid", "ToHtml", "ToTxt"};

}  // namespace

// ------------------------------------------------------------ ClsOrdenesComentarios

ClsOrdenesComentarios::ClsOrdenesComentarios() : RecordClass(kOrdenes) {}

void ClsOrdenesComentarios::Insertar(const Variant& vCodigo, std::string& sComent, std::string& sDescripcion,
                                     DateValue& dtFecha, ConnPtr& objCn) {
    // The new row's number comes first, on the caller's connection as it stands.
    const int32_t id = rt::CLng(NuevoCodigo(vCodigo, objCn));
    execute(fill(kInsertarOrden, {{"Id", Variant(id)},
                                  {"vCodigo", vCodigo},
                                  {"sComent", Variant(sComent)},
                                  {"sDescripcion", Variant(sDescripcion)},
                                  {"dtFecha", Variant(dtFecha)}}),
            objCn);
}

void ClsOrdenesComentarios::Obtener(const Variant& vId, std::string& sComent, std::string& sDescripcion,
                                    ConnPtr& objCn) {
    RsPtr r = open(fill(kObtenerOrden, {{"vId", vId}}), objCn);
    // Of several comments of an order, the last one is read.
    if (!r->Bof() && !r->Eof()) {
        r->MoveLast();
        readField(*r, "Comentarios", sComent, OnNull::Keep);
        readField(*r, "Descripcion", sDescripcion, OnNull::Keep);
    }
}

// ------------------------------------------------------------ the three document comments

void DocumentComments::Insertar(const Variant& vCodigo, std::string& sComent, DateValue& dtFecha, ConnPtr& objCn) {
    const int32_t id = rt::CLng(NuevoCodigo(Variant(), objCn));
    execute(fill(kInsertarDocumento, {{"Id", Variant(id)},
                                      {"vCodigo", vCodigo},
                                      {"sComent", Variant(sComent)},
                                      {"dtFecha", Variant(dtFecha)}}),
            objCn);
}

void DocumentComments::Obtener(const Variant& vId, std::string& sComentarios, ConnPtr& objCn) {
    RsPtr r = open(fill(kObtenerDocumento, {{"vId", vId}}), objCn);
    // Of several comments of a document, the first one is read.
    if (recordCount(*r) > 0) readField(*r, "Comentarios", sComentarios, OnNull::Keep);
}

ClsPedidosCliComent::ClsPedidosCliComent() : DocumentComments(kPedidos) {}
ClsAlbaranesComentarios::ClsAlbaranesComentarios() : DocumentComments(kAlbaranes) {}
ClsFacturasComentarios::ClsFacturasComentarios() : DocumentComments(kFacturas) {}

// ------------------------------------------------------------ registration

namespace {

// Insertar, and Obtener where the class offers it.
template <class T>
void documentCommentMembers(ClassBuilder<T>& b) {
    b.method("Insertar",
             {in("vCodigo"), inout("sComent", PT::String), inout("dtFecha", PT::Date), optObj("objCn")},
             &DocumentComments::Insertar);
    if constexpr (requires(T& c, const Variant& v, std::string& s, ConnPtr& cn) { c.Obtener(v, s, cn); })
        b.method("Obtener", {in("vId"), inout("sComentarios", PT::String), optObj("objCn")},
                 [](T& c, const Variant& vId, std::string& s, ConnPtr& cn) { c.Obtener(vId, s, cn); });
}

}  // namespace

void registerCommentClasses(Registry& r) {
    tools::defineRecordClass<ClsOrdenesComentarios>(
        r, kOrdenes, kOrdenesInterface, [](ClassBuilder<ClsOrdenesComentarios>& b) {
            b.method("Obtener",
                     {in("vId"), inout("sComent", PT::String), inout("sDescripcion", PT::String), optObj("objCn")},
                     &ClsOrdenesComentarios::Obtener);
            b.method("Insertar",
                     {in("vCodigo"), inout("sComent", PT::String), inout("sDescripcion", PT::String),
                      inout("dtFecha", PT::Date), optObj("objCn")},
                     &ClsOrdenesComentarios::Insertar);
        });
    tools::defineRecordClass<ClsPedidosCliComent>(r, kPedidos, kPedidosInterface,
                                           [](auto& b) { documentCommentMembers(b); });
    tools::defineRecordClass<ClsAlbaranesComentarios>(r, kAlbaranes, kAlbaranesInterface,
                                               [](auto& b) { documentCommentMembers(b); });
    tools::defineRecordClass<ClsFacturasComentarios>(r, kFacturas, kFacturasInterface,
                                              [](auto& b) { documentCommentMembers(b); });
}

}  // namespace hist::satellites
