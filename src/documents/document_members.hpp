#pragma once
// The members every document kind shares, written once: the state and type flags
// over the current row (bEs..., bEstaFacturado, dtFecha, iQ..., sQAlmacen), the reads
// by number (GetState, EstaFacturado), the series counters over
// ClsNumeradores, ConvertirSerieSinNum, the invoicing links and the euro conversion.
//
// A document class switches them on by naming them on its interface list and
// publishing itself with defineDocumentClass; their statements are the class's own
// named statements (documentStatements gives them by class), and where classes
// differ the declaration says how (ClassVariants::document).
#include <functional>
#include <string_view>
#include <vector>

#include "frame/registration.hpp"
#include "tools/registration.hpp"

namespace hist::documents {

using frame::ConnPtr;
using frame::RecordClass;

// The shared members by name, each with every argument it can take; a class's
// narrower list is its declared signature.
const frame::MemberTable& documentMembers();

// The shared statements a class sends, by class: GetState on the five document
// classes; EstaFacturado, the counters' maxima and CerrarImpresionAuto
// on the four numbered ones; ConvertirSerieSinNum, the invoicing links and the euro
// conversion where the class has them. The order lines ask for theirs too.
std::vector<frame::NamedStatement> documentStatements(std::string_view className);

// CodigoLibre of the five document classes (the frame's member runs it).
inline constexpr frame::Template kDocumentCodigoLibre = "SELECT Numero FROM {table} WHERE Numero = {vId}";

// NuevoCodigo of the four numbered document classes: the highest number within a series.
inline constexpr frame::Template kDocumentNuevoCodigo =
    "SELECT MAX(Numero) AS Nuevo_Codigo FROM {table} WHERE Serie = '{serie}'";

// ConvertirSerie of the document classes: the new number twice, the series written.
inline constexpr frame::Template kDocumentConvertirSerie =
    "UPDATE {table} SET Numero = {vNewId} , Numero_Barras = '{vNewId}' , Serie = '{sSerie}' WHERE(Numero = {vId})";

// The argument lists the five document classes share: IniciaRs without a connection
// (open form E), AddNew with bIsInvoiced.
std::vector<frame::Signature> documentSignatures();

// The class's declared statements followed by more.
std::vector<frame::NamedStatement> operator+(std::vector<frame::NamedStatement> a,
                                             const std::vector<frame::NamedStatement>& b);

template <class T>
ClassInfo& defineDocumentClass(Registry& r, const frame::ClassVariants& v, frame::InterfaceList order,
                               const std::function<void(ClassBuilder<T>&)>& ownMembers = {}) {
    return frame::defineRecordClass<T>(r, v, order, ownMembers,
                                       {&frame::frameMembers(), &tools::toolMembers(), &documentMembers()});
}

// ---- the members, for C++ hosts ----
bool estadoIs(RecordClass& cls, int16_t code);  // "Estado" = code of the current row
bool bDeshacerStock(RecordClass& cls);
bool bEstaFacturado(RecordClass& cls);
int16_t GetState(RecordClass& cls, Variant& vId, ConnPtr& objCn);
void UpdateState(RecordClass& cls, Variant& vId);
bool EstaFacturado(RecordClass& cls, Variant& vId, ConnPtr& objCn);
void GetNumerador(RecordClass& cls, double& dSerieA, double& dSerieB, double& dSerieC, ConnPtr& objCn);
void SetNumerador(RecordClass& cls, double& dSerieA, double& dSerieB, double& dSerieC, ConnPtr& objCn);
void UpdateNumerador(RecordClass& cls, ConnPtr& objCn);

}  // namespace hist::documents
