#pragma once
// The small collaborators: number formats, the user's file paths, line text
// normalisation and the line records list.
//
// Lifetimes: ClsFormatoNumero, ClsRutasUsuario and ClsTextoLinea have one shared
// instance per thread (shared()); a ClsRegistroLinea is made per list.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::services {

class ClsFormatoNumero : public Object {
public:
    std::string_view typeName() const override { return "ClsFormatoNumero"; }

    // Format masks from the configuration in force (default "#,##0.00").
    std::string GetFormatoMoneda();
    std::string GetFormatoDivisa();
    // The number for a statement: a point as the decimal mark, no grouping, no
    // exponent, at most iDecimales decimals (rounded half away from zero), trailing
    // zeros dropped ("12.5", "100", "-0.333333"). Null fails with 94, a text that is
    // not a number with 13.
    std::string NumeroSql(Variant& vNumero, int32_t& iDecimales);

    static std::shared_ptr<ClsFormatoNumero> shared();
};

class ClsRutasUsuario : public Object {
public:
    std::string_view typeName() const override { return "ClsRutasUsuario"; }

    // The full path of a file of that name in the user's working folder, which is
    // created when missing.
    std::string GetRutaFichero(const std::string& sFichero);

    static std::shared_ptr<ClsRutasUsuario> shared();
};

class ClsTextoLinea : public Object {
public:
    std::string_view typeName() const override { return "ClsTextoLinea"; }

    // A line description made fit for storing: blanks (spaces, tabs, line breaks,
    // no-break spaces) at either end removed, every run of them inside folded into
    // one space, control characters dropped. Letters, case and apostrophes are left
    // as they are.
    std::string NormalizaTexto(const std::string& sTexto);

    static std::shared_ptr<ClsTextoLinea> shared();
};

// One line record, as GetCollectionRegs adds it.
struct LineRecord {
    std::string clave;      // sCodigo: the record's key
    std::string codigo;     // the article code
    float cantidadPrevia = 0;  // first single-precision amount
    float cantidad = 0;        // second single-precision amount
    std::string lote;
    Variant idAlmacen;      // vIdAlm as received
    double precio = 0;
    std::string extra;      // the trailing text (empty from the classes)
};

class ClsRegistroLinea : public Object {
public:
    std::string_view typeName() const override { return "ClsRegistroLinea"; }

    // Adds one record; the values are converted as the interface declares them
    // (texts, singles, a double), vIdAlm kept as it came.
    Variant AddRegistro(std::string& sCodigo, Variant& vCodigo, Variant& vCantidad1, Variant& vCantidad2,
                        Variant& vLote, Variant& vIdAlm, Variant& vPrecio, Variant& vExtra);

    // What the host reads.
    int32_t Count() const { return static_cast<int32_t>(records_.size()); }
    // 1-based, as the platform's lists are; error 9 out of range.
    const LineRecord& record(int32_t index) const;
    const std::vector<LineRecord>& records() const { return records_; }

private:
    std::vector<LineRecord> records_;
};

}  // namespace hist::services
