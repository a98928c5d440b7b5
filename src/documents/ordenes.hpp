#pragma once
// ClsOrdenes: the work order, one row of HOrdenes per job of the laboratory for one
// patient of one customer. Its lines, customer snapshot, comments and clinical
// records hang from it by the order's number in their own tables; it knows none of
// them. The flags, counters and invoicing links it shares with the other document
// kinds are the documents' shared members (document_members.hpp).
#include <cstdint>
#include <string>

#include "frame/record.hpp"

namespace hist {

class Registry;

namespace documents {

using frame::ConnPtr;

class ClsOrdenes : public frame::RecordClass {
public:
    ClsOrdenes();

    // ---- writing a whole order ----
    void Insertar(Variant& vId, int32_t& lNumControl, DateValue& dtFecha, std::string& sSerie, std::string& sCod,
                  std::string& sEmpresa, std::string& sTarifa, std::string& sAlmacen, std::string& sRef,
                  std::string& sTransportista, std::string& sDivisa, double& dCambio, double& dTotaldivisa,
                  std::string& sFPago, double& dDto, double& dDtoPp, double& dBase, double& dPortes,
                  int16_t& iImpuesto, double& dTotal, int16_t& iEstado, Variant& vDocE, double& dImpImp,
                  double& bRecargo, double& dImpRec, double& dIrpf, double& dImpIrpf, std::string& sCtaContable,
                  std::string& sCtaContrapartida, std::string& sConcepto, std::string& sTipoFactura,
                  DateValue& dtFechaEnt, bool& bRepeticion, std::string& sIncidencia, std::string& sColaborador,
                  std::string& sCaja, std::string& sCerrada, DateValue& dtFechaCierre, DateValue& dtHoraEnt,
                  bool& bImagenes, std::string& sArchivo, std::string& sDescripcion, int16_t& iFacturado,
                  double& dFactura, ConnPtr& objCn);
    void InsertarTotal(Variant& vId, double& dTotaldivisa, double& dBase, double& dTotal, double& dImpImp,
                       double& dImpRec, double& dImpIrpf, ConnPtr& objCn);

    // ---- reading an order ----
    void Obtener(Variant& vId, DateValue& dtFecha, std::string& sSerie, std::string& sCod, std::string& sEmpresa,
                 std::string& sTarifa, std::string& sAlmacen, std::string& sRef, std::string& sTransportista,
                 std::string& sDivisa, double& dCambio, double& dTotaldivisa, std::string& sFPago, double& dDto,
                 double& dDtoPp, double& dBase, double& dPortes, int16_t& iImpuesto, double& dTotal,
                 int16_t& iEstado, double& dDocE, int16_t& iFacturado, double& dFactura, double& dImpImp,
                 double& bRecargo, double& dImpRec, double& dIrpf, double& dImpIrpf, std::string& sCtaContable,
                 std::string& sCtaContrapartida, std::string& sConcepto, std::string& sTipoFactura,
                 std::string& sRef2, bool& bRepeticion, ConnPtr& objCn);
    void ObtenerOtrosDatos(Variant& vId, DateValue& dtFechaEnt, DateValue& dtHoraEnta, bool& bRepeticion,
                           std::string& sIncidencia, std::string& sColaborador, std::string& sCaja,
                           std::string& sCerrada, DateValue& dtFechaCierre, bool& bImagenes, std::string& sArchivo,
                           std::string& sDescripcion, ConnPtr& objCn);
    // The row under the cursor; never fails.
    void ObtenerRegistroActivo(Variant& vId, DateValue& dtFecha, std::string& sPaciente, std::string& sEmpresa,
                               std::string& sDescripcion, DateValue& dtEntrega, Variant& vIdCli);
    void GetRegistroActivo(Variant& vId, Variant& dtFecha, std::string& sPaciente, std::string& sCod,
                           std::string& sEmpresa, std::string& sDescripcion, Variant& dtEntrega, ConnPtr& objCn);
    void ObtenerNumControl(Variant& vId, Variant& vIdNumControl, ConnPtr& objCn);
    int16_t GetIncTax(Variant& vId, ConnPtr& objCn);

    // ---- numbers ----
    Variant NuevoCodigoControl(std::string& serie, ConnPtr& objCn);
    bool CodigoControlLibre(Variant& vId, Variant& vIdcod, ConnPtr& objCn);

    // ---- the current row, the recordset, files ----
    void UpdateIncTax(bool& vIdIncTax);
    void CloseRs();
    void GetDocPath(std::string& sDocPath);
    std::string GetTxtFile();

protected:
    void writeNewRowDefaults(ado::Recordset& rs) override;
};

// Publishes the five document classes for dispatch (registration.cpp).
void registerDocumentClasses(Registry& r);

}  // namespace documents
}  // namespace hist
