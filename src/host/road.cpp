#include "host/road.hpp"

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "ado/recordset.hpp"
#include "frame/record.hpp"
#include "frame/services/helpers.hpp"
#include "host/class_calls.hpp"
#include "host/grid_columns.hpp"
#include "platform/clock.hpp"
#include "platform/collection.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"

namespace hist::host {

namespace {

ObjectPtr create(const char* cls) { return Registry::global().create(cls); }
ado::Recordset& primary(const ObjectPtr& obj) {
    return *dynamic_cast<frame::RecordClass&>(*obj).primaryRecordset();
}
Variant object(const std::shared_ptr<Object>& o) { return Variant(o); }
std::string text(const Variant& v) { return v.isNull() ? std::string() : rt::CStr(v); }
std::string money(const Variant& v) { return v.isNull() ? std::string("0,00") : rt::Format(v, "#,##0.00"); }

// The rows of a table as the data service reads them, each row reduced to one
// text of its values: what changed between two of these is what the road wrote.
std::multiset<std::string> rowsOfTable(const std::string& table) {
    frame::ConnPtr cn;
    std::multiset<std::string> rows;
    for (const auto& cells : rowsOf("SELECT * FROM " + table, cn)) {
        std::string row;
        for (const Variant& v : cells) row += text(v) + '\x1f';
        rows.insert(std::move(row));
    }
    return rows;
}

const char* const kTables[] = {"HOrdenes", "HOrdenes_Lineas", "HFacturas", "Facturas",   "HAlbaranes",
                               "Albaranes", "Recibos",        "Numeradores"};

// The number of the delivery note made from an order, when there is one.
Variant deliveryNoteOf(const Variant& order, frame::ConnPtr& cn) {
    const auto rows = rowsOf("SELECT Numero FROM HAlbaranes WHERE Estado = 10 AND Doc_E = " + text(order), cn);
    return rows.empty() ? Variant() : rows.front().front();
}

}  // namespace

bool walkTheRoad(std::ostream& out) {
    std::map<std::string, std::multiset<std::string>> before;
    for (const char* t : kTables) before[t] = rowsOfTable(t);
    const DateValue today{Clock::today()};

    // 1. The pending work orders, as a form opens them.
    const ObjectPtr ordenes = create("ClsOrdenes");
    invoke(ordenes, "IniciaRs", {{"sSelecSql", Variant(std::string("pendientes"))}});
    ado::Recordset& pending = primary(ordenes);
    out << "1. ClsOrdenes.IniciaRs \"pendientes\": " << pending.RecordCount() << " work order(s) not closed\n";
    if (pending.RecordCount() == 0) {
        out << "   Nothing is pending: every work order of the archive is closed.\n";
        return false;
    }
    for (int i = 0; i < 3 && !pending.Eof(); ++i, pending.MoveNext())
        out << "     order " << text(pending.value("Orden")) << "  " << text(pending.value("Fecha")) << "  "
            << text(pending.value("Empresa")) << "  " << money(pending.value("Total")) << "  "
            << text(pending.value("Cerrada")) << "\n";

    // 2. Narrowed by a combo box over Facturado ("No": not invoiced), in the order saved for the view.
    auto combo = std::make_shared<StandInControl>(ControlKind::ComboBox);
    combo->define("DataField", Variant(std::string("Facturado")));
    combo->setList({"Sí", "No", "Todos"});
    combo->define("ListIndex", Variant(int32_t{1}));
    const std::string filter = text(invoke(ordenes, "CreateFilter", {{"ctl", object(combo)}}).result);
    invoke(ordenes, "AplyFilter", {{"Criteria", Variant(filter)}});
    invoke(ordenes, "SetOrder",
           {{"Index", Variant(int16_t{0})}, {"Mode", Variant(std::string())}, {"sLlave", Variant(std::string("todos"))}});
    out << "2. CreateFilter on a combo box over Facturado gave \"" << filter << "\"; AplyFilter leaves "
        << pending.RecordCount() << "; SetOrder saved the order by number for the view \"todos\"\n";
    if (pending.RecordCount() == 0) {
        out << "   Every pending order is already invoiced.\n";
        return false;
    }
    pending.MoveFirst();
    const Variant numero = pending.value("Orden");
    const DateValue fecha{rt::CDate(pending.value("Fecha"))};
    const Variant cliente = pending.value("Cliente"), empresa = pending.value("Empresa");

    // 3. Its lines summed, and the totals written back to the order.
    const ObjectPtr lineas = create("ClsOrdenesLineas");
    invoke(lineas, "IniciaRs",
           {{"sSelecSql", Variant(std::string("seleccion"))}, {"id", numero}, {"dtFecha", Variant(fecha)}});
    const double rate = 166.386;
    const Called sums = invoke(lineas, "ReSumarReg",
                               {{"bIncTax", Variant(false)}, {"bRecargos", Variant(true)}, {"dCambio", Variant(rate)},
                                {"vId", numero}});
    invoke(ordenes, "InsertarTotal",
           {{"vId", numero}, {"dTotaldivisa", sums["dTotalDv"]}, {"dBase", sums["dBase"]}, {"dTotal", sums["dTotal"]},
            {"dImpImp", sums["dImpIva"]}, {"dImpRec", sums["dImpRecargo"]}});
    out << "3. Order " << text(numero) << " of " << text(empresa) << ": " << primary(lineas).RecordCount()
        << " line(s); ReSumarReg gives base " << money(sums["dBase"]) << ", tax " << money(sums["dImpIva"])
        << ", total " << money(sums["dTotal"]) << " (" << money(sums["dTotalDv"])
        << " in the second currency); InsertarTotal wrote them\n";

    // 4. Invoiced in one transaction on one connection: the invoice, the order, its lines, its note.
    // The open class holds the transaction; the others get its connection.
    const ObjectPtr facturas = create("ClsFacturas");
    invoke(ordenes, "CnnBeginTrans");
    Variant cn = invoke(ordenes, "GetConnection").result;
    Variant factura, recibo;
    std::size_t marked = 0;
    Variant nota;
    try {
        factura = invoke(facturas, "NuevoCodigo", {{"serie", Variant(std::string("A"))}, {"objCn", cn}}).result;
        invoke(facturas, "Insertar",
               {{"vId", factura},         {"dtFecha", Variant(today)},          {"sSerie", Variant(std::string("A"))},
                {"sCod", cliente},        {"sEmpresa", empresa},                {"sDivisa", Variant(std::string("EUR"))},
                {"dCambio", Variant(rate)}, {"dTotaldivisa", sums["dTotalDv"]}, {"sFPago", Variant(std::string("CONTADO"))},
                {"dBase", sums["dBase"]}, {"dTotal", sums["dTotal"]},           {"iEstado", Variant(int16_t{10})},
                {"vDocE", numero},        {"dImpImp", sums["dImpIva"]},         {"dImpRec", sums["dImpRecargo"]},
                {"sConcepto", Variant("Orden " + text(numero))},                {"objCn", cn}});
        invoke(ordenes, "FacturarDocumento",
               {{"vId", numero}, {"iFacturado", Variant(int16_t{4})}, {"vIdFac", factura},
                {"sCerrar", Variant(std::string("Cerrada"))}, {"dtFecha", Variant(today)}, {"dtFechaNew", Variant(today)},
                {"cnnActive", cn}});
        const Variant ids = invoke(lineas, "ObtenerCol", {{"vId", numero}, {"dtFecha", Variant(fecha)}, {"objCn", cn}})
                                .result;
        if (ids.isObject() && ids.asObject()) {
            auto& col = dynamic_cast<Collection&>(*ids.asObject());
            for (int32_t i = 1; i <= col.Count(); ++i, ++marked)
                invoke(lineas, "FacturarDocumento",
                       {{"vId", col.Item(Variant(i))}, {"vNum", numero}, {"iFacturado", Variant(int16_t{4})},
                        {"vIdFac", factura}, {"cnnActive", cn}});
        }
        frame::ConnPtr conn = std::dynamic_pointer_cast<ado::Connection>(cn.asObject());
        nota = deliveryNoteOf(numero, conn);
        if (!nota.isEmpty())
            invoke(create("ClsAlbaranes"), "FacturarDocumento",
                   {{"vId", nota}, {"iFacturado", Variant(int16_t{4})}, {"vIdFac", factura}, {"cnnActive", cn}});
        // 5. The invoice's totals recomputed into the live table, and its receipt from its data.
        invoke(facturas, "ActualizarTotal", {{"vId", factura}, {"objCn", cn}});
        const Called datos = invoke(facturas, "ObtenerDatosRecibo", {{"vId", factura}, {"objCn", cn}});
        const ObjectPtr recibos = create("ClsRecibos");
        recibo = invoke(recibos, "NuevoCodigo", {{"objCn", cn}}).result;
        invoke(recibos, "Insertar",
               {{"vId", recibo},
                {"vNumero", factura},
                {"iCounter", Variant(int16_t{1})},
                {"dtFecha", datos["dtFecha"]},
                {"dtFechaVt", Variant(DateValue{today.serial + 30})},
                {"sSerie", datos["sSerie"]},
                {"sCod", datos["sCod"]},
                {"sEmpresa", datos["sEmpresa"]},
                {"sDivisa", datos["sDivisa"]},
                {"dCambio", datos["dCambio"]},
                {"dTotaldivisa", datos["dTotaldivisa"]},
                {"dTotal", datos["dTotal"]},
                {"sCtaContable", datos["sCtaContable"]},
                {"sCtaContrapartida", datos["sCtaContrapartida"]},
                {"sConcepto", Variant("Factura " + text(factura))},
                {"sTipoFactura", datos["sTipoFactura"]},
                {"sFPago", datos["sFPago"]},
                {"objCn", cn}});
        invoke(ordenes, "CnnCommitTrans");
    } catch (...) {
        invoke(ordenes, "CnnRollbackTrans");
        throw;
    }
    out << "4. In one transaction: invoice A/" << text(factura) << " inserted (ClsFacturas.Insertar), order "
        << text(numero) << " closed and marked with it, " << marked << " line(s) marked, "
        << (nota.isEmpty() ? std::string("no delivery note had been made from the order")
                           : "its delivery note " + text(nota) + " marked in the live Albaranes")
        << "\n";
    out << "5. ActualizarTotal recomputed the invoice into the live Facturas; receipt " << text(recibo)
        << " issued from ObtenerDatosRecibo (due in 30 days); committed\n";

    // 6. The invoices' listing, as a form's grid prints it.
    invoke(facturas, "IniciaRs", {{"sSelecSql", Variant(std::string("todos"))}});
    Variant grid = object(columnsOfFields(primary(facturas)));
    invoke(facturas, "ToHtmlGrid",
           {{"clColfields", grid}, {"bDoclone", Variant(true)}, {"sSelecSql", Variant(std::string("todos"))},
            {"bFilter", Variant(false)}});
    out << "6. ToHtmlGrid printed the " << primary(facturas).RecordCount() << " invoices to\n   "
        << services::ClsRutasUsuario::shared()->GetRutaFichero("HFacturas.htm") << "\n";

    out << "Rows new or changed, per table:";
    for (const char* t : kTables) {
        const auto after = rowsOfTable(t);
        std::size_t changed = 0;
        for (const auto& row : after)
            if (before[t].count(row) == 0) ++changed;
        if (changed) out << "  " << t << " " << changed;
    }
    out << "\n";
    return true;
}

}  // namespace hist::host
