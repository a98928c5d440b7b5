#include "satellites/comentarios.hpp"

#include <array>
#include <string_view>

#include "ado/recordset.hpp"
#include "frame/registration.hpp"
#include "platform/runtime.hpp"

namespace hist::satellites {

using namespace frame;

namespace {

// ------------------------------------------------------------ ClsOrdenesComentarios

constexpr ClassVariants kOrdenes{
    .className = "ClsOrdenesComentarios",
    .table = "HOrdenes_Comentarios",
    .selectSql = "SELECT Id, Codigo AS Código, Comentarios, Descripcion as Descripción, Fecha FROM "
                 "HOrdenes_Comentarios",
    .selectionKey = "Codigo",
    .open = OpenForm::A,
    .selectionDate = SelectionDate::ServerBranch,
    .orderOnIniciaRs = false,
    .orderOnRequery = true,
    .addNewKey = AddNewKey::RecordCount,
    .nuevoCodigo = NuevoCodigoForm::WithinCode,
    .nuevoCodigoColumn = "ID",
    .nuevoCodigoCloses = true,
    .deleteAll = DeleteAllForm::NumberAndDate,
    .deleteAllKey = "Codigo",
    .deleteAllDateColumn = "Fecha",
    .convertirSerieKey = "Codigo",
    .updateId = UpdateIdForm::Counter,
    .updateIdParent = "Código",
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

// What the comments of customer orders, delivery notes and invoices declare alike.
constexpr ClassVariants documentComments(std::string_view className, std::string_view table,
                                         std::string_view selectSql, std::string_view permissionGroup) {
    return ClassVariants{
        .className = className,
        .table = table,
        .selectSql = selectSql,
        .selectionKey = "Codigo",
        .open = OpenForm::B,
        .selectionDate = SelectionDate::FechaSql,
        .orderOnIniciaRs = true,
        .orderOnRequery = true,
        .addNewKey = AddNewKey::NuevoCodigoPlusCount,
        .nuevoCodigo = NuevoCodigoForm::WholeTable,
        .nuevoCodigoColumn = "Id",
        .nuevoCodigoCloses = false,
        .deleteAll = DeleteAllForm::NumberOneBlank,
        .deleteAllKey = "Codigo",
        .convertirSerieKey = "Codigo",
        .updateId = UpdateIdForm::Counter,
        .updateIdParent = "Código",
        .permissionGroup = permissionGroup,
        .definedSize = DefinedSizeForm::LongTextConstant,
    };
}

constexpr ClassVariants kPedidos = documentComments(
    "ClsPedidosCliComent", "HPedidos_Clientes_Comentarios",
    "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HPedidos_Clientes_Comentarios", "Pedidos_Clientes");

constexpr ClassVariants kAlbaranes = documentComments(
    "ClsAlbaranesComentarios", "HAlbaranes_Comentarios",
    "SELECT Id, Codigo AS Código, Comentarios, Fecha FROM HAlbaranes_Comentarios", "Albaranes_Clientes");

// The main selection writes the date column in lower case, so the field is "fecha".
constexpr ClassVariants kFacturas = documentComments(
    "ClsFacturasComentarios", "HFacturas_Comentarios",
    "SELECT Id, Codigo AS Código, Comentarios, fecha FROM HFacturas_Comentarios", "Facturas");

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
    const std::string sql = "INSERT INTO HOrdenes_Comentarios ( Id, Codigo, Comentarios, Descripcion, Fecha) Values ( " +
                            std::to_string(id) + " , '" + keyText(vCodigo) + "', '" + sComent + "', '" +
                            sDescripcion + "' , " + fechaSql(dtFecha) + " )";
    execute(sql, objCn);
}

void ClsOrdenesComentarios::Obtener(const Variant& vId, std::string& sComent, std::string& sDescripcion,
                                    ConnPtr& objCn) {
    RsPtr r = open("SELECT Comentarios, Descripcion  FROM HOrdenes_Comentarios WHERE  Codigo = " + keyText(vId),
                   objCn);
    // Of several comments of an order, the last one is read.
    if (!r->Bof() && !r->Eof()) {
        r->MoveLast();
        copyIfNotNull(*r, "Comentarios", sComent);
        copyIfNotNull(*r, "Descripcion", sDescripcion);
    }
}

// ------------------------------------------------------------ the three document comments

void DocumentComments::Insertar(const Variant& vCodigo, std::string& sComent, DateValue& dtFecha, ConnPtr& objCn) {
    const int32_t id = rt::CLng(NuevoCodigo(Variant(), objCn));
    const std::string sql = "INSERT INTO " + table() + " ( Id, Codigo, Comentarios, Fecha) Values ( " +
                            std::to_string(id) + " , '" + keyText(vCodigo) + "', '" + sComent + "', " +
                            fechaSql(dtFecha) + " )";
    execute(sql, objCn);
}

void DocumentComments::Obtener(const Variant& vId, std::string& sComentarios, ConnPtr& objCn) {
    RsPtr r = open("SELECT Comentarios FROM " + sClassName() + " WHERE Codigo = " + keyText(vId), objCn);
    // Of several comments of a document, the first one is read.
    if (recordCount(*r) > 0) copyIfNotNull(*r, "Comentarios", sComentarios);
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
    defineRecordClass<ClsOrdenesComentarios>(
        r, kOrdenes, kOrdenesInterface, [](ClassBuilder<ClsOrdenesComentarios>& b) {
            b.method("Obtener",
                     {in("vId"), inout("sComent", PT::String), inout("sDescripcion", PT::String), optObj("objCn")},
                     &ClsOrdenesComentarios::Obtener);
            b.method("Insertar",
                     {in("vCodigo"), inout("sComent", PT::String), inout("sDescripcion", PT::String),
                      inout("dtFecha", PT::Date), optObj("objCn")},
                     &ClsOrdenesComentarios::Insertar);
        });
    defineRecordClass<ClsPedidosCliComent>(r, kPedidos, kPedidosInterface,
                                           [](auto& b) { documentCommentMembers(b); });
    defineRecordClass<ClsAlbaranesComentarios>(r, kAlbaranes, kAlbaranesInterface,
                                               [](auto& b) { documentCommentMembers(b); });
    defineRecordClass<ClsFacturasComentarios>(r, kFacturas, kFacturasInterface,
                                              [](auto& b) { documentCommentMembers(b); });
}

}  // namespace hist::satellites
