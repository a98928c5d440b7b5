// The statement members every class shares, filled from the class's templates,
// UpdateId, and the helpers a class's own Insertar and Obtener use.
#include "frame/record.hpp"

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/service_calls.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::frame {

Variant RecordClass::plus(const Variant& v, int32_t n) {
    // The runtime's sum of a numeric value and a whole number: whole numbers stay a
    // Long while they fit, anything else is a Double (a numeric text included).
    const double sum = rt::CDbl(v) + n;
    const VarType t = v.type();
    const bool whole = t == VarType::Integer || t == VarType::Long || t == VarType::Boolean;
    if (whole && sum >= -2147483648.0 && sum <= 2147483647.0) return Variant(static_cast<int32_t>(sum));
    return Variant(sum);
}

Variant RecordClass::nextCode(ado::Recordset& r) {
    Variant result(int16_t{0});
    const Variant max = r.value("Nuevo_Codigo");
    if (max.isNull()) {
        result = Variant(int16_t{1});
    } else if (rt::IsNumeric(max)) {
        result = plus(max, 1);
    } else {
        result = max;
    }
    return result;
}

Variant RecordClass::NuevoCodigo(const Variant& vCod, ConnPtr& objCn) { return NuevoCodigoIn(vCod, {}, objCn); }

Variant RecordClass::NuevoCodigoIn(const Variant& vCod, const std::string& serie, ConnPtr& objCn) {
    RsPtr r = open(fill(v_.nuevoCodigo, {{"vCod", vCod}, {"serie", Variant(serie)}}), objCn);
    Variant result = nextCode(*r);
    if (v_.nuevoCodigoWithinSize && rt::IsNumeric(result)) {
        const int32_t size = static_cast<int32_t>(r->Fields()->Item(Variant("Nuevo_Codigo"))->DefinedSize());
        if (static_cast<int32_t>(rt::CStr(result).size()) > size) result = r->value("Nuevo_Codigo");
    }
    if (v_.nuevoCodigoCloses) r->Close();
    return result;
}

void RecordClass::DeleteAll(const Variant& vId, const DateValue& dtFecha, ConnPtr& cnnActive) {
    execute(fill(v_.deleteAll, {{"vId", vId}, {"dtFecha", Variant(dtFecha)}}), cnnActive, v_.deleteAllBase);
}

void RecordClass::ConvertirSerie(const Variant& vId, const Variant& vNewId, const std::string& sSerie,
                                 ConnPtr& cnnActive) {
    // Satellites accept the series and do not use it (they follow their document's
    // number); the documents' statement writes it.
    execute(fill(v_.convertirSerie, {{"vId", vId}, {"vNewId", vNewId}, {"sSerie", Variant(sSerie)}}), cnnActive);
}

Statement RecordClass::ownStatement(std::string_view name, HoleValues values) const {
    return ownStatement(name, std::span<const HoleValue>(values.begin(), values.size()));
}

Statement RecordClass::ownStatement(std::string_view name, std::span<const HoleValue> values) const {
    for (const NamedStatement& s : v_.statements)
        if (s.name == name) return fill(s.text, values);
    throw std::logic_error(std::string(v_.className) + " declares no statement " + std::string(name));
}

void RecordClass::UpdateId(Variant& vId, DateValue& dFecha) {
    auto& r = rs();
    if (bofAndEof(r)) return;
    const UpdateIdForm& f = v_.updateId;
    if (f.countGuard && recordCount(r) == 0) return;
    int16_t counter = 1;
    if (f.key == ValueSource::NuevoCodigoCounter) {
        // Asked once, kept as a 16-bit counter: a maximum past 32,766 overflows here.
        ConnPtr cn = GetConnection();
        counter = rt::CInt(NuevoCodigo(vId, cn));
    }
    const bool counted = f.key == ValueSource::Counter || f.key == ValueSource::NuevoCodigoCounter;
    r.MoveFirst();
    while (!r.Eof()) {
        if (!f.onlyUnnumbered || isUnnumbered(r.value("ID"))) {
            r.setValue(f.parent, vId);
            r.setValue("ID", counted ? Variant(counter) : sourcedValue(f.key, vId));
            if (f.writesFecha) r.setValue("Fecha", Variant(dFecha));
            r.Update();
            // A 16-bit counter: the row after 32,767 fails with an overflow.
            if (f.onlyUnnumbered) counter = rt::CInt(Variant(static_cast<int32_t>(counter) + 1));
        }
        r.MoveNext();
        if (!f.onlyUnnumbered) counter = rt::CInt(Variant(static_cast<int32_t>(counter) + 1));
    }
    if (f.moveFirstAfter) r.MoveFirst();
}

void RecordClass::UpdateadAffectCurrent(Variant& vId) {
    auto& r = rs();
    const AffectCurrentForm& f = v_.affectCurrent;
    r.setValue(f.parent, vId);
    if (f.writesId) r.setValue("ID", f.key == ValueSource::Counter ? Variant(int16_t{1}) : sourcedValue(f.key, vId));
    if (f.batch) r.UpdateBatch(kAffectCurrent);
    else r.Update();
}

bool RecordClass::CodigoLibre(Variant& vId, ConnPtr& objCn) {
    RsPtr r = open(fill(v_.codigoLibre, {{"vId", vId}}), objCn);
    return recordCount(*r) < 1;
}

std::shared_ptr<Collection> RecordClass::collectIds(ado::Recordset& r, std::string_view field) {
    if (bofAndEof(r)) return nullptr;
    auto ids = std::make_shared<Collection>();
    r.MoveFirst();
    for (; !r.Eof(); r.MoveNext()) ids->Add(r.value(field));
    return ids;
}

std::shared_ptr<Collection> RecordClass::ObtenerCol(Variant& vId, DateValue& dtFecha, ConnPtr& objCn) {
    std::string sSerie;
    DateValue none{};
    Variant noRange;
    return ObtenerColIn(vId, sSerie, none, none, noRange, noRange, dtFecha, objCn);
}

std::shared_ptr<Collection> RecordClass::ObtenerColIn(Variant& vId, std::string& sSerie, DateValue& dtFchIni,
                                                      DateValue& dtFchFin, Variant& dDesde, Variant& dHasta,
                                                      DateValue& dtFecha, ConnPtr& objCn) {
    RsPtr r = open(fill(v_.obtenerCol, {{"vId", vId},
                                        {"dtFecha", Variant(dtFecha)},
                                        {"sSerie", Variant(sSerie)},
                                        {"dtFchIni", Variant(dtFchIni)},
                                        {"dtFchFin", Variant(dtFchFin)},
                                        {"dDesde", dDesde},
                                        {"dHasta", dHasta}}),
                   objCn, v_.obtenerColBase);
    return collectIds(*r, v_.obtenerColField);
}

std::shared_ptr<Collection> RecordClass::ObtenerColRs() { return collectIds(rs()); }

bool RecordClass::isUnnumbered(const Variant& id) {
    return !id.isNull() && rt::IsNumeric(id) && rt::CDbl(id) == -1;
}

// ------------------------------------------------------------ helpers for class members

void RecordClass::execute(const Statement& sql, ConnPtr& objCn, int iBase) {
    if (!objCn) objCn = svc::getConexion(iBase);
    svc::ejecutarSql(iBase, sql.text(), objCn);
}

RsPtr RecordClass::open(const Statement& sql, ConnPtr& objCn, int iBase) {
    RsPtr r = std::make_shared<ado::Recordset>();
    svc::abrirRs(iBase, sql.text(), r, objCn);
    return r;
}

RsPtr RecordClass::openAtLastRow(const Statement& sql, ConnPtr& objCn, int iBase) {
    RsPtr r = open(sql, objCn, iBase);
    if (r->Bof() || r->Eof()) return nullptr;
    r->MoveLast();
    return r;
}

namespace {

// The conversion of a field's value into a typed argument, Null by the rule.
template <class T, class Convert>
void readTyped(ado::Recordset& r, std::string_view field, T& target, OnNull rule, Convert convert) {
    const Variant value = r.value(field);
    if (value.isNull()) {
        switch (rule) {
            case OnNull::Keep: return;
            case OnNull::Empty: target = T{}; return;
            case OnNull::Fail: raise(err::InvalidUseOfNull, err::SrcRuntime);
        }
    }
    target = convert(value);
}

}  // namespace

void RecordClass::readField(ado::Recordset& r, std::string_view field, std::string& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return rt::CStr(v); });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, int16_t& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return rt::CInt(v); });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, int32_t& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return rt::CLng(v); });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, double& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return rt::CDbl(v); });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, bool& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return rt::CBool(v); });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, DateValue& target, OnNull rule) {
    readTyped(r, field, target, rule, [](const Variant& v) { return DateValue{rt::CDate(v)}; });
}
void RecordClass::readField(ado::Recordset& r, std::string_view field, Variant& target, OnNull rule) {
    const Variant value = r.value(field);
    if (value.isNull() && rule == OnNull::Keep) return;
    target = value;
}

bool RecordClass::bofAndEof(ado::Recordset& r) { return r.Bof() && r.Eof(); }

int32_t RecordClass::recordCount(ado::Recordset& r) { return static_cast<int32_t>(r.RecordCount()); }

}  // namespace hist::frame
