#include "documents/commercial.hpp"

#include <stdexcept>

#include "ado/recordset.hpp"
#include "documents/document_members.hpp"
#include "platform/error.hpp"

namespace hist::documents {

using frame::OnNull;

size_t ArgsByName::indexOf(std::string_view name) const {
    for (size_t i = 0; i < params_.size(); ++i)
        if (params_[i].name == name) return i;
    throw std::logic_error("no argument " + std::string(name));
}

Variant& ArgsByName::operator[](std::string_view name) { return args_[indexOf(name)]; }

ParamType ArgsByName::typeOf(std::string_view name) const { return params_[indexOf(name)].type; }

std::vector<frame::HoleValue> ArgsByName::holes() const {
    std::vector<frame::HoleValue> out;
    for (size_t i = 0; i + 1 < params_.size(); ++i) out.push_back({params_[i].name, args_[i]});
    return out;
}

Member namedMember(std::string name, std::vector<Param> params, NamedBody body) {
    const std::vector<Param> names = params;
    return frame::connectionMember<RecordClass>(std::move(name), std::move(params),
                                                [body, names](RecordClass& self, Args& a, ConnPtr& cn) {
                                                    ArgsByName named(names, a);
                                                    body(self, named, cn);
                                                });
}

namespace {

ParamType typeByName(std::string_view n) {
    if (n.starts_with("dt") || n.starts_with("dFecha")) return PT::Date;
    if (n.starts_with("s")) return PT::String;
    if (n.starts_with("i")) return PT::Integer;
    if (n.starts_with("d") || n == "bRecargo") return PT::Double;
    return PT::Variant;
}

}  // namespace

std::vector<Param> documentParams(std::string_view names, std::string_view connection) {
    std::vector<Param> out;
    size_t at = 0;
    while (at < names.size()) {
        const size_t end = std::min(names.find(' ', at), names.size());
        if (end > at) {
            const std::string name(names.substr(at, end - at));
            out.push_back(inout(name, typeByName(name)));
        }
        at = end + 1;
    }
    out.push_back(optObj(std::string(connection)));
    return out;
}

std::vector<Param> documentParamsFirstByValue(std::string_view names) {
    std::vector<Param> out = documentParams(names);
    out.front().byRef = false;
    return out;
}

void readFields(ado::Recordset& r, ArgsByName& a, std::span<const FieldRead> reads) {
    for (const FieldRead& f : reads) {
        const Variant value = r.value(f.field);
        Variant& target = a[f.arg];
        if (!value.isNull()) {
            target = convertTo(value, a.typeOf(f.arg));
            continue;
        }
        switch (f.rule) {
            case OnNull::Keep: break;
            case OnNull::Empty: target = zeroOf(a.typeOf(f.arg)); break;
            case OnNull::Fail: raise(err::InvalidUseOfNull, err::SrcRuntime);
        }
    }
}

std::vector<FieldRead> documentReads(OnNull referencia, bool withSource) {
    using enum OnNull;
    std::vector<FieldRead> reads{
        {"Fecha", "dtFecha", Keep},
        {"Serie", "sSerie", Keep},
        {"Codigo", "sCod", Keep},
        {"Empresa", "sEmpresa", Keep},
        {"Tarifa", "sTarifa", Keep},
        {"Almacén", "sAlmacen", Keep},
        {"Referencia", "sRef", referencia},
        {"Transportista", "sTransportista", Keep},
        {"Divisa", "sDivisa", Keep},
        {"Cambio", "dCambio", Keep},
        {"Total_Divisa", "dTotaldivisa", Keep},
        {"Pago", "sFPago", Keep},
        {"Descuento", "dDto", Keep},
        {"Descuento_PP", "dDtoPp", Keep},
        {"Base", "dBase", Keep},
        {"Portes", "dPortes", Keep},
        {"Impuesto", "iImpuesto", Fail},
        {"Importe_Impuestos", "dImpImp", Keep},
        {"Recargo", "bRecargo", Fail},
        {"Importe_recargo", "dImpRec", Keep},
        {"IRPF", "dIrpf", Keep},
        {"Importe_IRPF", "dImpIrpf", Keep},
        {"Total", "dTotal", Keep},
        {"Estado", "iEstado", Fail},
        {"Facturado", "iFacturado", Fail},
        {"Factura", "dFactura", Keep},
    };
    if (withSource) reads.push_back({"Doc_E", "dDocEmitido", Keep});
    for (FieldRead f : {FieldRead{"CTA_Contable", "sCtaContable", Keep},
                        FieldRead{"CTA_Contrapartida", "sCtaContrapartida", Keep},
                        FieldRead{"Concepto", "sConcepto", Keep}})
        reads.push_back(f);
    return reads;
}

void readByNumber(RecordClass& cls, std::string_view statement, ArgsByName& a, ConnPtr& objCn,
                  std::span<const FieldRead> reads) {
    services::RsPtr r = RecordClass::openStatement(cls.ownStatement(statement, {{"vId", a["vId"]}}), objCn);
    if (r->RecordCount() <= 0) return;
    readFields(*r, a, reads);
}

void insertDocument(RecordClass& cls, ArgsByName& a, ConnPtr& objCn) {
    RecordClass::executeStatement(cls.ownStatement("Insertar", a.holes()), objCn);
}

std::vector<frame::FieldDefault> documentNewRow(std::string_view numberField) {
    using frame::ValueSource;
    std::vector<frame::FieldDefault> out{{numberField, ValueSource::NuevoCodigoInSeries, Variant("A")},
                                         {"Fecha", ValueSource::TodayShortDate}};
    for (std::string_view amount : {"Cambio", "Total_divisa", "descuento", "descuento_pp", "Base", "Portes", "Impuesto",
                                    "Importe_Impuestos", "Recargo", "Importe_Recargo", "irpf", "importe_irpf", "Total"})
        out.push_back({amount, ValueSource::Constant, Variant(int16_t{0})});
    out.push_back({"Impreso", ValueSource::Constant, Variant(false)});
    out.push_back({"Estado", ValueSource::Constant, Variant(int16_t{0})});
    return out;
}

std::vector<frame::Selection> withDeletionSelections(std::vector<frame::Selection> own) {
    own.push_back({"deeliminardocumento", "  Where ( Documento_P =  '{id}')"});
    own.push_back({"deeliminartransportista", "  Where ( Transportista =  '{id}')"});
    own.push_back({"deeliminaralmacen", "  Where ( Almacen =  '{id}')"});
    return own;
}

std::vector<frame::Signature> commercialSignatures(bool withObtenerCol) {
    std::vector<frame::Signature> s = documentSignatures();
    s.push_back({"NuevoCodigo", {optRef("serie", PT::String, Variant("A")), optObj("objCn")}});
    if (withObtenerCol)
        s.push_back({"ObtenerCol",
                     {inout("vId"), inout("sSerie", PT::String), inout("dtFchIni", PT::Date),
                      inout("dtFchFin", PT::Date), inout("dDesde"), inout("dHasta"), optObj("objCn")}});
    return s;
}

}  // namespace hist::documents
