#pragma once
// The customer as a document found it: one snapshot row per document, so that a
// later change of the customer's file does not rewrite old paper, and what a reprint
// reads. Customer orders, delivery notes and invoices keep a second archive level of
// these rows (the table with one more "H"): a closing run moves there and back.
#include <string>

#include "frame/record.hpp"

namespace hist {

class Registry;

namespace satellites {

using frame::ConnPtr;

// What the four snapshot classes share.
class CustomerSnapshot : public frame::RecordClass {
public:
    void Insertar(Variant& vId, Variant& vNum, DateValue& dtFecha, std::string& sNif, std::string& sNombre,
                  std::string& sEmpresa, std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                  std::string& sProvincia, ConnPtr& objCn);
    // A null field leaves its argument as it was.
    void Obtener(const Variant& vId, std::string& sNif, std::string& sNombre, std::string& sEmpresa,
                 std::string& sDireccion, std::string& sCp, std::string& sPoblacion, std::string& sProvincia,
                 ConnPtr& objCn);
    // The seven texts of a printed heading, from the current row.
    ObjectPtr GetCabecera();
    // A customer's data from any earlier document, by telephone (Index 0) or company
    // (1, 2), else the first row; bHistor reads the second archive level. Nothing
    // found: sNombre becomes "no" and nothing else changes.
    void GetDatos(Variant& idTel, std::string& sNif, std::string& sNombre, std::string& sEmpresa,
                  std::string& sDireccion, std::string& sCp, std::string& sPoblacion, std::string& sProvincia,
                  bool& bHistor, int16_t& Index, ConnPtr& objCn);

protected:
    using RecordClass::RecordClass;
    void readCustomer(ado::Recordset& r, std::string& sNif, std::string& sNombre, std::string& sEmpresa,
                      std::string& sDireccion, std::string& sCp, std::string& sPoblacion, std::string& sProvincia);
};

class ClsOrdenesCabecera : public CustomerSnapshot {
public:
    ClsOrdenesCabecera();
    void Obtener_Todo(const Variant& vId, Variant& vCodigo, std::string& sNif, std::string& sNombre,
                      std::string& sEmpresa, std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                      std::string& sProvincia, ConnPtr& objCn);
    // The address of the current row, with no test for a null field.
    void ObtenerRegistroActivo(std::string& sDireccion, std::string& sCp, std::string& sPoblacion,
                               std::string& sProvincia);
};

// The snapshots with a second archive level.
class DocumentSnapshot : public CustomerSnapshot {
public:
    // A closing run's rows to the second level (ten columns travel), then deleted
    // here; a failed copy deletes nothing. Both on the caller's connection when given.
    void Mover_A_Historicos(const Variant& vId, ConnPtr& cnnActive);
    // And back, whole rows, then deleted at the second level.
    void Mover_De_Historicos(const Variant& vId, ConnPtr& cnnActive);

protected:
    using CustomerSnapshot::CustomerSnapshot;
};

class ClsPedidosCliCabecera : public DocumentSnapshot {
public:
    ClsPedidosCliCabecera();
};

class ClsAlbaranesCabecera : public DocumentSnapshot {
public:
    ClsAlbaranesCabecera();
};

class ClsFacturasCabecera : public DocumentSnapshot {
public:
    ClsFacturasCabecera();
};

// Publishes the four snapshot classes and the four line classes (lineas.hpp) for
// dispatch.
void registerLineAndSnapshotClasses(Registry& r);

}  // namespace satellites
}  // namespace hist
