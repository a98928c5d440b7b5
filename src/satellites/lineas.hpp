#pragma once
// The lines of the four document kinds, one table each: what was sold or made, and
// the one place where a document's money is worked out line by line (SumaCol over
// the open lines, ReSumarReg over a document's lines read afresh). The lines hold
// their recordset plainly: the recordset's MoveComplete is never raised as theirs.
// ClsOrdenesLineas is the richest: section, employee, points, and its invoicing state.
#include <cstdint>
#include <memory>
#include <string>

#include "frame/record.hpp"
#include "frame/services/helpers.hpp"

namespace hist {

class Registry;

namespace satellites {

using frame::ConnPtr;

// What the four line classes share.
class DocumentLines : public frame::RecordClass {
public:
    // Adds the open lines to the three running totals, which it does not clear first.
    // A failing step is passed over and the next runs with what the totals held.
    void SumaCol(bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo, bool bRecargos);
    // A document's totals from its lines in the archive, rounded through the masks.
    void ReSumarReg(bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo, bool bRecargos,
                    double& dTotal, double& dTotalDv, const Variant& dCambio, const Variant& vId, ConnPtr& objCn);
    // One ClsRegistroLinea record per open line.
    std::shared_ptr<services::ClsRegistroLinea> GetCollectionRegs(Variant& vIdAlm);
    // Reads one line; every value arrives as a Variant (a null field as Null).
    void Obtener(Variant& vId, Variant& sCodigo, Variant& sDescripcion, Variant& dCantidad, Variant& dPrecio,
                 Variant& dDtoLin, Variant& dIva, Variant& dImporte, Variant& sLote, ConnPtr& objCn);
    // The description is normalised first and the caller sees the normalised text.
    void Insertar(Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha, std::string& sCodigo,
                  std::string& sDescripcion, double& dCantidad, double& dPrecio, double& dDtoLin, double& dIva,
                  double& dImporte, std::string& sLote, ConnPtr& cnnActive);

protected:
    using RecordClass::RecordClass;
    template <class Step>
    void sumLines(ado::Recordset& r, bool bIncTax, double& dBase, double& dImpIva, double& dImpRecargo,
                  bool bRecargos, const Step& step, double* dTotal);
    // Every Obtener: opens the line's selection and, when it has a row, reads it into
    // the typed arguments of the order lines or the Variants of the others. Gives the
    // recordset for further reads, or null when it had no row.
    template <class S, class D>
    static frame::RsPtr obtainLine(const frame::Statement& sql, ConnPtr& objCn, int iBase, S& sCodigo,
                                   S& sDescripcion, D& dCantidad, D& dPrecio, D& dDtoLin, D& dIva, D& dImporte,
                                   S& sLote);
    // Every Insertar: the description normalised first (the caller sees the normalised
    // text), then the template filled with the holes every kind has and `more`, and run.
    void insertLine(const frame::Template& t, Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha,
                    std::string& sCodigo, std::string& sDescripcion, double dCantidad, double dPrecio,
                    double dDtoLin, double dIva, double dImporte, std::string& sLote, frame::HoleValues more,
                    ConnPtr& cnnActive);
};

class ClsOrdenesLineas : public DocumentLines {
public:
    ClsOrdenesLineas();
    // The lines an invoice took over, by kind of document.
    ObjectPtr ObtenerColDoc(Variant& vId, int16_t& iFact, ConnPtr& objCn);
    void Obtener(Variant& vId, std::string& sCodigo, std::string& sDescripcion, double& dCantidad,
                 double& dPrecio, double& dDtoLin, double& dIva, double& dImporte, std::string& sLote,
                 Variant& vNum, ConnPtr& objCn);
    void Obtener_Todo(Variant& vId, std::string& sCodigo, std::string& sDescripcion, double& dCantidad,
                      double& dPrecio, double& dDtoLin, double& dIva, double& dImporte, std::string& sLote,
                      Variant& vNum, ConnPtr& objCn, std::string& sSeccion, std::string& sColabo,
                      int16_t& iFacturado, double& dDocfactur, double& dPuntos);
    void Insertar(Variant& vDoc, Variant& vIdNewReg, DateValue& dtFecha, std::string& sCodigo,
                  std::string& sDescripcion, double& dCantidad, double& dPrecio, double& dDtoLin, double& dIva,
                  double& dImporte, std::string& sLote, std::string& sSeccion, std::string& sEmpleado,
                  double& iPuntos, int16_t& iFacturado, Variant& vDocFac, ConnPtr& cnnActive);
    // Writes the current row's fields (not saved); Facturado, Doc and Orden become 0.
    void SetValor(Variant& vId, std::string& sCodigo, std::string& sDescripcion, double& dCantidad,
                  double& dPrecio, double& dDtoLin, double& dIva, double& dImporte, std::string& sLote,
                  std::string& sSeccion, std::string& sEmpleado, double& dPuntos);
    // Adds to the current line's quantity (a negative value takes away).
    void SetCantidad(double& dCantidad);
    void SetPuntos(Variant& vPuntos);
    void DeleteOne(const Variant& vId, DateValue& dtFecha, const Variant& vIdRec, ConnPtr& cnnActive);
    // Find on field 0; false when the search ran off either end.
    bool FindReg(const std::string& Criteria);
};

class ClsPedidosCliLineas : public DocumentLines {
public:
    ClsPedidosCliLineas();
};

class ClsAlbaranesLineas : public DocumentLines {
public:
    ClsAlbaranesLineas();
};

class ClsFacturasLineas : public DocumentLines {
public:
    ClsFacturasLineas();
};

// Publishes the four line classes for dispatch.
void registerLineClasses(Registry& r);

}  // namespace satellites
}  // namespace hist
