#include "frame/services/registration.hpp"

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services/helpers.hpp"
#include "frame/services/rights.hpp"
#include "frame/services/settings.hpp"
#include "platform/collection.hpp"

namespace hist::services {

namespace {

// One line record as the host reads it: a collection keyed by the values' names.
ObjectPtr recordItem(ClsRegistroLinea& list, int32_t index) {
    const LineRecord& rec = list.record(index);
    auto c = std::make_shared<Collection>();
    c->Add(Variant(rec.clave), Variant("Clave"));
    c->Add(Variant(rec.codigo), Variant("Codigo"));
    c->Add(Variant(static_cast<double>(rec.cantidadPrevia)), Variant("Cantidad1"));
    c->Add(Variant(static_cast<double>(rec.cantidad)), Variant("Cantidad2"));
    c->Add(Variant(rec.lote), Variant("Lote"));
    c->Add(rec.idAlmacen, Variant("IdAlm"));
    c->Add(Variant(rec.precio), Variant("Precio"));
    c->Add(Variant(rec.extra), Variant("Extra"));
    return c;
}

}  // namespace

void registerServiceClasses(Registry& r) {
    r.define<ClsServicioDatos>("ClsServicioDatos")
        .method("GetConnectionStr", {in("iBase", PT::Integer)}, &ClsServicioDatos::GetConnectionStr)
        .method("GetConnectionStrToRpt",
                {in("iBase", PT::Integer), inout("sDbtype", PT::String), inout("sDataSource", PT::String),
                 inout("sCatalog", PT::String), inout("sUser", PT::String), inout("sPasw", PT::String)},
                &ClsServicioDatos::GetConnectionStrToRpt)
        .method("bFechaServidor", {in("iBase", PT::Integer)}, &ClsServicioDatos::bFechaServidor)
        .method("GetRptPath", {in("sRptPath", PT::String)}, &ClsServicioDatos::GetRptPath)
        .method("GetDocPath", {in("sDocPath", PT::String)}, &ClsServicioDatos::GetDocPath)
        .method("GetConexion", {in("iBase", PT::Integer), in("objCnBase", PT::Object), in("iModo", PT::Integer)},
                &ClsServicioDatos::GetConexion)
        .method("EjecutarSql", {in("iBase", PT::Integer), inout("vSql"), inout("objCn", PT::Object)},
                &ClsServicioDatos::EjecutarSql)
        .method("AbrirRs",
                {in("iBase", PT::Integer), inout("vSql"), inout("rs", PT::Object), inout("objCn", PT::Object),
                 in("iModo", PT::Integer)},
                &ClsServicioDatos::AbrirRs)
        .method("FechaSql", {in("iBase", PT::Integer), in("vFecha")}, &ClsServicioDatos::FechaSql)
        .method("FechaSqlLocal", {in("vFecha")}, &ClsServicioDatos::FechaSqlLocal);

    r.define<ClsClaveRegistro>("ClsClaveRegistro")
        .method("LeerValor", {in("vNombre"), in("sDefecto", PT::String)}, &ClsClaveRegistro::LeerValor)
        .method("EscribirValor", {inout("vNombre"), inout("sValor", PT::String)}, &ClsClaveRegistro::EscribirValor)
        .method("AbrirClave", {in("sRuta", PT::String)}, &ClsClaveRegistro::AbrirClave);

    r.define<ClsSeguridadUsuario>("ClsSeguridadUsuario", [] { return ObjectPtr(ClsSeguridadUsuario::shared()); })
        .method("bRestringido", {inout("sRuta", PT::String), inout("sId", PT::String)},
                &ClsSeguridadUsuario::bRestringido)
        .method("GetRutaSeguridad", {in("sRuta", PT::String)}, &ClsSeguridadUsuario::GetRutaSeguridad);

    r.define<ClsFormatoNumero>("ClsFormatoNumero", [] { return ObjectPtr(ClsFormatoNumero::shared()); })
        .method("GetFormatoMoneda", {}, &ClsFormatoNumero::GetFormatoMoneda)
        .method("GetFormatoDivisa", {}, &ClsFormatoNumero::GetFormatoDivisa)
        .method("NumeroSql", {inout("vNumero"), inout("iDecimales", PT::Long)}, &ClsFormatoNumero::NumeroSql);

    r.define<ClsNumeradores>("ClsNumeradores")
        .method("LeerSeries",
                {inout("sTabla", PT::String), inout("dSerieA", PT::Double), inout("dSerieB", PT::Double),
                 inout("dSerieC", PT::Double), inout("objCn", PT::Object)},
                &ClsNumeradores::LeerSeries)
        .method("GrabarSeries",
                {inout("sTabla", PT::String), in("dSerieA", PT::Double), in("dSerieB", PT::Double),
                 in("dSerieC", PT::Double), inout("objCn", PT::Object), inout("sVacio", PT::String)},
                &ClsNumeradores::GrabarSeries);

    r.define<ClsCalculoLinea>("ClsCalculoLinea")
        .method("GetRecargoArticulo", {in("vCodigo"), inout("objCn", PT::Object)},
                &ClsCalculoLinea::GetRecargoArticulo);

    r.define<ClsRegistroLinea>("ClsRegistroLinea")
        .method("AddRegistro",
                {inout("sCodigo", PT::String), inout("vCodigo", PT::String), inout("vCantidad1", PT::Double),
                 inout("vCantidad2", PT::Double), inout("vLote", PT::String), inout("vIdAlm"),
                 inout("vPrecio", PT::Double), inout("vExtra", PT::String)},
                &ClsRegistroLinea::AddRegistro)
        // What the host reads back: not part of the interface the classes use.
        .get("Count", &ClsRegistroLinea::Count)
        .unlisted()
        .method("Item", {in("Index", PT::Long)}, [](ClsRegistroLinea& self, int32_t index) {
            return recordItem(self, index);
        })
        .unlisted();

    r.define<ClsRutasUsuario>("ClsRutasUsuario", [] { return ObjectPtr(ClsRutasUsuario::shared()); })
        .method("GetRutaFichero", {in("sFichero", PT::String)}, &ClsRutasUsuario::GetRutaFichero);

    r.define<ClsTextoLinea>("ClsTextoLinea", [] { return ObjectPtr(ClsTextoLinea::shared()); })
        .method("NormalizaTexto", {in("sTexto", PT::String)}, &ClsTextoLinea::NormalizaTexto);
}

}  // namespace hist::services
