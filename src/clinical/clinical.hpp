#pragma once
// The clinical and production records of a work order: the tooth chart and what came
// in with the work, the shade, the manufacturing phases, the try-ins, the declarations
// of conformity, the claims and the labels. Each class is the frame with its
// declaration and its own members; each file also publishes its class.
#include <span>
#include <string>

#include "frame/record.hpp"
#include "frame/registration.hpp"
#include "platform/dispatch.hpp"

namespace hist {

class Registry;

namespace clinical {

using frame::ConnPtr;

class ClsOrdenesOdontograma : public frame::RecordClass {
public:
    ClsOrdenesOdontograma();
    // The 32 teeth run 11-18, 21-28, 31-38, 41-48 in every member.
    void ObtenerQuePiezas(const Variant& vId, std::span<Variant> teeth, ConnPtr& objCn);
    void ObtenerComentPiezas(const Variant& vId, std::span<Variant> comments, ConnPtr& objCn);
    void ObtenerQueEntra(const Variant& vId, bool& bArticulador, std::string& sMetal, std::string& sResina,
                         int16_t& iYeso_sup, int16_t& iYeso_Inf, int16_t& iSilicona_sup, int16_t& iSilicona_Inf,
                         int16_t& iAlginato_sup, int16_t& iAlginato_Inf, int16_t& iCeras_sup, int16_t& iCeras_Inf,
                         int16_t& iCubetas_sup, int16_t& iCubetas_Inf, ConnPtr& objCn);
    void InsertarQuePiezas(const Variant& vId, std::span<Variant> teeth, ConnPtr& objCn);
    void InsertarComentaPiezas(const Variant& vId, std::span<Variant> comments, ConnPtr& objCn);
    // The ten counts, upper before lower: casts, silicone, alginate, wax, trays.
    void Insertar(const Variant& sCodigo, std::span<Variant> values, ConnPtr& objCn);
    void GetDatosEntra(const Variant& vId, std::string& sLinea1, std::string& slinea2, ConnPtr& objCn);
};

class ClsOrdenesColor : public frame::RecordClass {
public:
    ClsOrdenesColor();
    // The 17 shade texts: colour, chroma, value, hue, description, guide, view, shape,
    // then the zones C1-C3, D1-D3, I1-I3.
    void Obtener(const Variant& vId, std::span<Variant> shade, ConnPtr& objCn);
    // The 17 texts, then dtFecha.
    void Insertar(const Variant& vId, std::span<Variant> values, ConnPtr& objCn);
};

class ClsOrdenesFases : public frame::RecordClass {
public:
    ClsOrdenesFases();
    void Obtener(const Variant& vId, Variant& vCodigo, DateValue& dtFecha, DateValue& dtHora, DateValue& dtFechaF,
                 DateValue& dtHoraF, std::string& sEmpleado, std::string& sFase, double& dCant,
                 std::string& sCodFase, std::string& sCodEmpleado, DateValue& dtTiempo, DateValue& dtFecha_Ent,
                 DateValue& dtHora_Ent, ConnPtr& objCn);
    void InicioFase(const Variant& vId, const DateValue& dtFecha, ConnPtr& objCn);
    void FinFase(const Variant& vId, const DateValue& dtFecha, ConnPtr& objCn);
    void Insertar(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtHora,
                  const DateValue& dtFechaF, const DateValue& dtHoraF, const std::string& sEmpleado,
                  const std::string& sFase, double dCant, const std::string& sCodFase,
                  const std::string& sCodEmpleado, const DateValue& dtTiempo, const DateValue& dtFecha_Ent,
                  const DateValue& dtHora_Ent, const DateValue& dtFecha_Codigo, ConnPtr& objCn);
    void SetValor(const std::string& sDescripcion, const Variant& vDate);
};

class ClsOrdenesPruebas : public frame::RecordClass {
public:
    ClsOrdenesPruebas();
    void Obtener(const Variant& vId, Variant& vCodigo, DateValue& dtFecha, DateValue& dtFechaF,
                 std::string& sComentario, ConnPtr& objCn);
    void Insertar(const std::string& sCodigo, const DateValue& dtFecha, const std::string& sComentario,
                  ConnPtr& objCn);
    void InsertarTodo(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtFechaFin,
                      const std::string& sComentario, const DateValue& dtFecha_Codigo, ConnPtr& objCn);
};

class ClsOrdenesDeclaraciones : public frame::RecordClass {
public:
    ClsOrdenesDeclaraciones();
    void Insertar(const Variant& vCodigo, const DateValue& dtFecha, const DateValue& dtFecha_cod,
                  const std::string& sLetra, const std::string& sProducto, const std::string& sFinalidad,
                  double dDeclaracion, ConnPtr& objCn);
    void Obtener(const Variant& vId, const Variant& vNum, DateValue& dtFecha, std::string& sLetra,
                 std::string& sProducto, std::string& sFinalidad, double& dDeclaracion, ConnPtr& objCn);
    void SetValor(const std::string& sDescripcion, const std::string& sFinalidad, const std::string& sLetra);
    Variant NuevoCodigoDec(Variant& vCod, ConnPtr& objCn);
};

class ClsOrdenesReclamaciones : public frame::RecordClass {
public:
    ClsOrdenesReclamaciones();
    bool ExisteReclamacion(const Variant& vId, ConnPtr& objCn);
    void Insertar(const std::string& sCodigo, const DateValue& dtFecha, const std::string& sRef, const Variant& vId,
                  const std::string& sDescripcion, const std::string& sIncidencia, ConnPtr& objCn);
};

// The frame alone: rows come only through the recordset.
class ClsOrdenesEtiquetas : public frame::RecordClass {
public:
    ClsOrdenesEtiquetas();
};

// The second data source, which some reads and INSERTs of the batch classes below use.
inline constexpr int kSecondBase = 1;

// What the phases, try-ins, declarations and claims declare alike, set over the class's
// own declaration: rows entered through the recordset in a batch and given to their
// order by "Código" (UpdateId entered only with rows, writing "Fecha", with no closing
// MoveFirst), Update doing nothing on an empty selection, FindRecord by its Index
// argument, NuevoCodigo closing its recordset, and listings that walk the grid's bound
// fields in the order of field 0.
inline frame::ClassVariants batchClass(frame::ClassVariants v) {
    using namespace frame;
    v.nuevoCodigoCloses = true;
    v.signatures.push_back(
        {"FindRecord", {in("Criteria", PT::String), optRef("Index", PT::Integer, Variant(int16_t{0}))}});
    v.open = OpenForm::A;
    v.update.guard = true;
    v.findField = kFindByIndex;
    v.updateId = {.parent = "Código", .moveFirstAfter = false, .countGuard = true};
    v.listingWalk = ListingWalk::GridDataField;
    v.listingSavedOrder = false;
    return v;
}

// Each class file publishes its class.
void registerOdontograma(Registry& r);
void registerColor(Registry& r);
void registerFases(Registry& r);
void registerPruebas(Registry& r);
void registerDeclaraciones(Registry& r);
void registerReclamaciones(Registry& r);
void registerEtiquetas(Registry& r);

// Publishes the seven classes for dispatch.
void registerClinicalClasses(Registry& r);

// A member over a run of like arguments: the first argument, the run (every argument
// between the first and the last, as dispatch converted them, written back where the
// member writes), and the optional connection last.
template <class T>
Member runMember(std::string name, std::vector<Param> params,
                 void (T::*f)(const Variant&, std::span<Variant>, ConnPtr&)) {
    return frame::connectionMember<T>(std::move(name), std::move(params), [f](T& self, Args& a, ConnPtr& cn) {
        (self.*f)(a.front(), std::span<Variant>(a.data() + 1, a.size() - 2), cn);
    });
}

}  // namespace clinical
}  // namespace hist
