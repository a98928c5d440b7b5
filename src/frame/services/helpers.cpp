#include "frame/services/helpers.hpp"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "frame/services/config.hpp"
#include "platform/collection.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::services {

namespace {

// A Single, as the runtime's CSng converts: overflow beyond its range.
float toSingle(const Variant& v, const char* source) {
    double d = rt::CDbl(v);
    if (std::isfinite(d) && std::fabs(d) > static_cast<double>(std::numeric_limits<float>::max()))
        raise(err::Overflow, source);
    return static_cast<float>(d);
}

}  // namespace

// ---- ClsFormatoNumero ----

std::string ClsFormatoNumero::GetFormatoMoneda() { return Configuration::current()->formatoMoneda; }
std::string ClsFormatoNumero::GetFormatoDivisa() { return Configuration::current()->formatoDivisa; }

std::string ClsFormatoNumero::NumeroSql(Variant& vNumero, int32_t& iDecimales) {
    if (iDecimales < 0)
        raise(err::InvalidCall, "ClsFormatoNumero", "Invalid procedure call or argument: iDecimales below 0");
    double d = rt::CDbl(vNumero);
    if (!std::isfinite(d)) raise(err::Overflow, "ClsFormatoNumero");
    // The shortest text that reads back to the same double, in plain notation, is
    // what a person wrote; rounding that text keeps 0.125 at 0.13.
    char buf[512];
    auto res = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::fixed);
    if (res.ec != std::errc()) raise(err::Overflow, "ClsFormatoNumero");
    return rt::roundDecimalText(std::string(buf, res.ptr), iDecimales);
}

std::shared_ptr<ClsFormatoNumero> ClsFormatoNumero::shared() {
    thread_local auto instance = std::make_shared<ClsFormatoNumero>();
    return instance;
}

// ---- ClsRutasUsuario ----

std::string ClsRutasUsuario::GetRutaFichero(const std::string& sFichero) {
    std::filesystem::path dir = Configuration::current()->resolvedWorkDir();
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec)
        throw Error(err::InvalidCall, "ClsRutasUsuario",
                    "The working folder " + dir.string() + " cannot be created (" + ec.message() + ")");
    return (dir / std::filesystem::path(sFichero).relative_path()).string();
}

std::shared_ptr<ClsRutasUsuario> ClsRutasUsuario::shared() {
    thread_local auto instance = std::make_shared<ClsRutasUsuario>();
    return instance;
}

// ---- ClsTextoLinea ----

std::string ClsTextoLinea::NormalizaTexto(const std::string& sTexto) {
    std::string out;
    out.reserve(sTexto.size());
    bool pendingBlank = false;
    for (size_t i = 0; i < sTexto.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(sTexto[i]);
        bool blank = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
        if (c == 0xC2 && i + 1 < sTexto.size() && static_cast<unsigned char>(sTexto[i + 1]) == 0xA0) {
            blank = true;  // no-break space
            ++i;
        }
        if (blank) {
            pendingBlank = true;
            continue;
        }
        if (c < 0x20 || c == 0x7F) continue;  // other control characters
        if (pendingBlank && !out.empty()) out += ' ';
        pendingBlank = false;
        out += static_cast<char>(c);
    }
    return out;
}

std::shared_ptr<ClsTextoLinea> ClsTextoLinea::shared() {
    thread_local auto instance = std::make_shared<ClsTextoLinea>();
    return instance;
}

// ---- ClsRegistroLinea ----

Variant ClsRegistroLinea::AddRegistro(std::string& sCodigo, Variant& vCodigo, Variant& vCantidad1,
                                      Variant& vCantidad2, Variant& vLote, Variant& vIdAlm, Variant& vPrecio,
                                      Variant& vExtra) {
    LineRecord r;
    r.clave = sCodigo;
    r.codigo = rt::CStr(vCodigo);
    r.cantidadPrevia = toSingle(vCantidad1, "ClsRegistroLinea");
    r.cantidad = toSingle(vCantidad2, "ClsRegistroLinea");
    r.lote = rt::CStr(vLote);
    r.idAlmacen = vIdAlm;
    r.precio = rt::CDbl(vPrecio);
    r.extra = rt::CStr(vExtra);
    records_.push_back(std::move(r));
    return {};
}

const LineRecord& ClsRegistroLinea::record(int32_t index) const {
    if (index < 1 || index > Count()) raise(err::SubscriptOutOfRange, "ClsRegistroLinea");
    return records_[static_cast<size_t>(index - 1)];
}

}  // namespace hist::services
