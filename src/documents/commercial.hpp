#pragma once
// What the customer order, the delivery note, the invoice and the receipt share
// beyond the members of document_members.hpp: the long argument lists of their
// Insertar and Obtener, taken by name; the read of a whole document into those
// arguments, each field with its rule for a Null; the defaults of a new row.
//
// Their Insertar and Obtener take thirty-odd arguments. They are published as members
// whose body finds each argument by its name (ArgsByName), so one statement template
// is filled from the arguments as they stand and one table of reads writes them back.
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/record.hpp"
#include "frame/registration.hpp"
#include "platform/dispatch.hpp"

namespace hist {

class Registry;

namespace documents {

using frame::ConnPtr;
using frame::RecordClass;

// A member's arguments, converted to their declared types by dispatch, by name.
class ArgsByName {
public:
    ArgsByName(const std::vector<Param>& params, Args& args) : params_(params), args_(args) {}
    // The argument of that name; a name the list lacks is a programming error.
    Variant& operator[](std::string_view name);
    ParamType typeOf(std::string_view name) const;
    // Every argument (the connection left out) as the statement hole of its name.
    std::vector<frame::HoleValue> holes() const;

private:
    size_t indexOf(std::string_view name) const;
    const std::vector<Param>& params_;
    Args& args_;
};

// The body of a member over named arguments; the list ends with the optional connection,
// which the body may fill and which goes back to the caller.
using NamedBody = void (*)(RecordClass&, ArgsByName&, ConnPtr&);
Member namedMember(std::string name, std::vector<Param> params, NamedBody body);

// The arguments of Insertar and Obtener that the customer order, the delivery note and
// the invoice share, in their order; a class adds its own after them.
inline constexpr std::string_view kDocumentInsertarArgs =
    "vId dtFecha sSerie sCod sEmpresa sTarifa sAlmacen sRef sTransportista sDivisa dCambio dTotaldivisa sFPago dDto "
    "dDtoPp dBase dPortes iImpuesto dTotal iEstado vDocE dImpImp bRecargo dImpRec dIrpf dImpIrpf sCtaContable "
    "sCtaContrapartida sConcepto sTipoFactura";
inline constexpr std::string_view kDocumentObtenerArgs =
    "vId dtFecha sSerie sCod sEmpresa sTarifa sAlmacen sRef sTransportista sDivisa dCambio dTotaldivisa sFPago dDto "
    "dDtoPp dBase dPortes iImpuesto dTotal iEstado iFacturado dFactura dImpImp bRecargo dImpRec dIrpf dImpIrpf "
    "sCtaContable sCtaContrapartida sConcepto sTipoFactura";

// The parameters of a blank-separated list of names, all by reference, typed by the
// documents' naming: "s" text, "dt" and "dFecha" dates, "i" 16-bit integers, "v"
// variants, "d" and "bRecargo" doubles; then the optional connection.
std::vector<Param> documentParams(std::string_view names, std::string_view connection = "objCn");
// The same with the first argument taken by value.
std::vector<Param> documentParamsFirstByValue(std::string_view names);

// One field of a read and its argument.
struct FieldRead {
    std::string_view field;
    std::string_view arg;
    frame::OnNull rule;
};
// Reads each field into its argument: Keep leaves the argument on a Null, Empty writes
// its type's empty value, Fail raises 94; a value goes through the argument's type.
void readFields(ado::Recordset& r, ArgsByName& a, std::span<const FieldRead> reads);

// The reads of a whole customer order, delivery note or invoice (Obtener): the null
// rule of "Referencia" differs by class, and only the delivery note reads "Doc_E".
std::vector<FieldRead> documentReads(frame::OnNull referencia, bool withSource);
// A read by number: the class's statement of that name for vId; with no row the
// arguments stay as they came, else the reads.
void readByNumber(RecordClass& cls, std::string_view statement, ArgsByName& a, ConnPtr& objCn,
                  std::span<const FieldRead> reads);
// Insertar of the documents that write every argument as it stands: the class's
// "Insertar" filled from the arguments by name.
void insertDocument(RecordClass& cls, ArgsByName& a, ConnPtr& objCn);

// What AddNew writes into a new document row when bDefVal holds: the number (position 0,
// named here) from NuevoCodigo in series "A" on no connection, the date as "Short Date"
// text, zero amounts, not printed, state 0.
std::vector<frame::FieldDefault> documentNewRow(std::string_view numberField);

// A document's own selections followed by those the three documents share: documents
// of a type, carrier or warehouse about to be deleted.
std::vector<frame::Selection> withDeletionSelections(std::vector<frame::Selection> own);

// The argument lists the four classes declare: the documents' (documentSignatures),
// NuevoCodigo in series "A" by default, and where the class has it ObtenerCol by
// customer and series pattern, date range and number range.
std::vector<frame::Signature> commercialSignatures(bool withObtenerCol);

// Each class file publishes its class.
void registerOrdenes(Registry& r);
void registerPedidosCli(Registry& r);
void registerAlbaranes(Registry& r);
void registerFacturas(Registry& r);
void registerRecibos(Registry& r);

}  // namespace documents
}  // namespace hist
