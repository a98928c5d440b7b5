// The writing pass of the generator: every row of the archive, from the plan.
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "backends/engine.hpp"
#include "platform/error.hpp"
#include "sample/detail.hpp"
#include "sample/db.hpp"
#include "sample/inserter.hpp"
#include "sample/plan.hpp"
#include "sample/sample.hpp"
#include "sql/catalog.hpp"

namespace hist::sample {

using namespace detail;

namespace {


// Tables whose rows the generator writes under unique keys; an archive that already
// holds rows in one of them is not filled again.
const char* const kDocumentTables[] = {"HOrdenes",  "HPedidos_Clientes", "HAlbaranes", "HFacturas",
                                       "Recibos",   "HOrdenes_Fases",    "Numeradores", "Articulos",
                                       "Albaranes", "Pedidos_Clientes",  "Facturas"};

const char* const kMonths[] = {"enero", "febrero", "marzo",     "abril",   "mayo",      "junio",
                               "julio", "agosto",  "septiembre", "octubre", "noviembre", "diciembre"};
const char* const kSections[] = {"FIJA", "CADCAM", "REMOVIBLE", "ESQUELET", "ORTO", "REPARAC", "MODELOS", "IMPLANT"};

std::string ledger(const Customer& c) {
    std::string code = c.code;
    if (code.size() < 6) code.insert(0, 6 - code.size(), '0');
    return "4300" + code;
}

std::string lineText(const Line& l) {
    std::string s = articles()[l.article].description;
    if (l.tooth) s += " (pieza " + std::to_string(l.tooth) + ")";
    return s;
}

// A batch number for ceramic and metal pieces, the same wherever the line is copied.
std::string batch(uint32_t lineIndex, uint64_t seed) {
    Rng r(seed, 0x10000000ull + lineIndex);
    if (!r.chance(0.45)) return {};
    char buf[16];
    std::snprintf(buf, sizeof buf, "L%02u-%04u", 20 + r.below(7), r.below(10000));
    return buf;
}

// How long the piece was in the mouth, as the laboratory writes it down.
std::string inMouth(int days) {
    if (days < 14) return std::to_string(std::max(days, 1)) + (days > 1 ? " días" : " día");
    if (days < 60) return std::to_string(days / 7) + " semanas";
    return std::to_string(days / 30) + " meses";
}

std::string patientOf(const Plan& p, std::size_t order) {
    Rng r(p.seed, 0x20000000ull + order);
    if (r.chance(0.02)) return {};
    const bool female = r.chance(0.5);
    std::string n = female ? r.pick(givenNamesF()) : r.pick(givenNamesM());
    n += ' ';
    n += r.pick(surnames());
    n += ' ';
    n += r.pick(surnames());
    return n;
}

class Writer {
public:
    Writer(sqlite3* db, const Plan& plan, const Options& opt) : db_(db), p_(plan), opt_(opt) {}
    void run();

private:
    static std::vector<std::string> block() {
        return {"Numero", "Serie", "Fecha", "Codigo", "Razon_Social", "Tarifa", "Almacen", "Referencia",
                "Transportista", "Divisa", "Valor_Divisa", "Total_Divisa", "Forma_Pago", "Descuento",
                "Descuento_PP", "Base", "Gastos", "Impuesto", "Importe_Impuestos", "Recargo", "Importe_recargo",
                "IRPF", "Importe_IRPF", "Total", "Estado", "Doc_E", "Facturado", "Doc_F"};
    }
    static std::vector<std::string> with(std::vector<std::string> a, std::initializer_list<const char*> b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    }
    void bindBlock(Inserter& ins, const Doc& d, const std::string& referencia);
    bool live(const Doc& d) const { return d.date >= p_.last - 45; }
    void snapshot(Inserter& first, Inserter& second, const Doc& d, long long& id);

    void orders();
    void customerOrders();
    void notes();
    void invoices();
    void reference();

    sqlite3* db_;
    const Plan& p_;
    const Options& opt_;
};

void Writer::bindBlock(Inserter& ins, const Doc& d, const std::string& referencia) {
    const Customer& c = p_.customers[d.customer];
    ins.i(d.numero).t(std::string(1, d.serie)).date(d.date).t(c.code).t(c.razon).t(c.tarifa).t("CENTRAL")
        .tn(referencia).tn(c.transportista).t("EUR").d(1.0).d(d.total).t(c.formaPago).d(d.descuento)
        .d(d.descuentoPP).d(d.base).d(d.gastos).i(1).d(d.taxes).d(0.0).d(0.0).d(0.0).d(0.0).d(d.total)
        .i(d.estado).i(d.docE).i(d.facturado).i(d.docF);
}

void Writer::snapshot(Inserter& first, Inserter& second, const Doc& d, long long& id) {
    const Customer& c = p_.customers[d.customer];
    if (d.secondLevel) {
        // Only the customer's data and the run travel to the second level.
        second.t(c.code).t(c.nombre).t(c.razon).t(c.nif).t(c.direccion).t(c.cp).t(c.poblacion).t(c.provincia)
            .tn(c.telefono).i(d.cierre).row();
        return;
    }
    first.i(++id).i(d.numero).t(c.code).t(c.nombre).t(c.razon).t(c.nif).t(c.direccion).t(c.cp).t(c.poblacion)
        .t(c.provincia).date(d.date).tn(c.telefono);
    if (d.cierre) first.i(d.cierre); else first.null();
    first.row();
}

const std::vector<std::string> kSnapshotColumns = {"Id", "Numero", "Codigo", "Nombre", "Razon_Social", "NIF",
                                                   "Direccion", "Codigo_Postal", "Poblacion", "Provincia",
                                                   "fecha", "Telefono", "Cierre"};
const std::vector<std::string> kSecondLevelColumns = {"Codigo", "Nombre", "Razon_Social", "NIF", "Direccion",
                                                      "Codigo_Postal", "Poblacion", "Provincia", "Telefono",
                                                      "Cierre"};
const std::vector<std::string> kLineColumns = {"Codigo", "Descripcion", "Cantidad", "Precio", "DTO", "IVA",
                                               "Importe", "Lote", "ID", "Numero", "Fecha"};

// The clinical and production rows of one work order.
struct OrderSatellites {
    explicit OrderSatellites(sqlite3* db)
        : odontogram(db, "HOrdenes_Odontograma", odontogramColumns()),
          shade(db, "HOrdenes_Color",
                {"Id", "Codigo", "Color", "Croma", "Valor", "Tonalidad", "Descripcion", "Guia", "Vista", "Forma",
                 "C1", "C2", "C3", "D1", "D2", "D3", "I1", "I2", "I3", "Fecha"}),
          phases(db, "HOrdenes_Fases",
                 {"ID", "Fecha", "Hora", "Fecha_Fin", "Hora_Fin", "C_Fase", "Descripcion", "Fecha_ent",
                  "C_Empleado", "Empleado", "Finalizado", "Cantidad", "Codigo", "Fecha_Codigo", "Fase", "Hora_ent",
                  "Tiempo"}),
          tryIns(db, "HOrdenes_Pruebas", {"Fecha", "Fecha_Fin", "Comentario", "Id", "Codigo", "fecha_codigo"}),
          declarations(db, "HOrdenes_Declaraciones",
                       {"Fecha", "Fecha_Codigo", "Declaracion", "Letra", "Producto", "Finalidad", "Id", "Codigo"}),
          claims(db, "HOrdenes_Reclamaciones",
                 {"Id", "Numero", "Codigo", "Referencia", "Devuelto", "Incidencia", "Descripcion", "Empleado",
                  "Tiempo_Boca", "Fecha", "Estudio", "Clinica", "Laboratorio", "Acciones", "Seguimiento",
                  "Fecha_Resolucion"}),
          labels(db, "HOrdenes_Etiquetas",
                 {"Id", "Codigo", "Conservacion", "Manipulacion", "Advertencia", "Fecha", "Numero"}),
          comments(db, "HOrdenes_Comentarios", {"Id", "Codigo", "Comentarios", "Descripcion", "Fecha"}) {}

    static std::vector<std::string> odontogramColumns() {
        std::vector<std::string> c = {"Id", "Codigo"};
        for (int k = 0; k < 32; ++k) c.push_back("P" + std::to_string(toothOfIndex(k)));
        for (const char* n : {"Articulador", "Metal", "Resina", "Yeso_sup", "Yeso_Inf", "Silicona_Sup",
                              "Silicona_Inf", "Alginato_Sup", "Alginato_Inf", "Ceras_Sup", "Ceras_Inf",
                              "Cubetas_Sup", "Cubetas_Inf"})
            c.push_back(n);
        for (int k = 0; k < 32; ++k) c.push_back("C" + std::to_string(toothOfIndex(k)));
        c.push_back("Fecha");
        return c;
    }

    Inserter odontogram, shade, phases, tryIns, declarations, claims, labels, comments;
    long long phaseId = 0, declaration = 0, claimId = 0;
};

void writeOrderSatellites(OrderSatellites& w, const Plan& p, const Doc& o, Rng& r, const std::string& patient) {
    const Customer& c = p.customers[o.customer];
    const int last = p.last;

    // Odontogram: the teeth of the work, what came with the impression.
    if (r.chance(0.92)) {
        bool marked[32] = {};
        for (uint32_t k = 0; k < o.lineCount; ++k) {
            const int t = p.lines[o.lineBegin + k].tooth;
            if (t) marked[(t / 10 - 1) * 8 + t % 10 - 1] = true;
        }
        if (o.plan == 2 || o.plan == 3) {
            const int arch = r.chance(0.5) ? 0 : 16;
            for (int n = r.range(2, 6); n > 0; --n) marked[arch + static_cast<int>(r.below(16))] = true;
        }
        w.odontogram.i(1).i(o.numero);
        for (bool m : marked) w.odontogram.yn(m);
        w.odontogram.yn(r.chance(0.4));
        if (o.plan == 0 || o.plan == 3) w.odontogram.t(o.plan == 3 ? "Cromo-cobalto" : r.pick(metals()));
        else if (o.plan == 7) w.odontogram.t("Titanio grado 5");
        else w.odontogram.null();
        if (o.plan == 2) w.odontogram.t(r.pick(resins()));
        else if (o.plan == 4) w.odontogram.t("Resina flexible de poliamida");
        else w.odontogram.null();
        const bool upper = r.chance(0.55);
        w.odontogram.i(r.range(0, 2)).i(r.range(0, 2)).i(upper ? 1 : 0).i(upper ? 0 : 1).i(r.chance(0.1) ? 1 : 0)
            .i(r.chance(0.1) ? 1 : 0).i(r.chance(0.3) ? 1 : 0).i(r.chance(0.3) ? 1 : 0).i(r.chance(0.2) ? 1 : 0)
            .i(r.chance(0.2) ? 1 : 0);
        const int noted = r.chance(0.25) ? static_cast<int>(r.below(32)) : -1;
        for (int k = 0; k < 32; ++k) {
            if (k == noted || (marked[k] && r.chance(0.08))) w.odontogram.t(r.pick(toothNotes()));
            else w.odontogram.null();
        }
        w.odontogram.date(o.date).row();
    }

    // Shade, for work that shows.
    if ((o.plan <= 2 || o.plan == 7) && r.chance(0.85)) {
        const char* shade = r.pick(shadesVita());
        static constexpr std::array<const char*, 3> kChroma = {"Normal", "Alto", "Bajo"};
        static constexpr std::array<const char*, 3> kValue = {"Medio", "Alto", "Bajo"};
        static constexpr std::array<const char*, 4> kHue = {"Amarillenta", "Rojiza", "Grisácea", "Neutra"};
        static constexpr std::array<const char*, 3> kView = {"Incisivo", "Vestibular", "Oclusal"};
        w.shade.i(1).i(o.numero).t(shade).t(r.pick(kChroma)).t(r.pick(kValue)).t(r.pick(kHue));
        if (r.chance(0.6)) w.shade.t(std::string("Tono ") + shade + ", borde incisal translúcido y cuello más saturado");
        else w.shade.null();
        w.shade.t(r.chance(0.8) ? "Vita" : "Vita 3D-Master").t(r.pick(kView)).t(r.pick(shapes()));
        for (int z = 0; z < 9; ++z) {
            if (r.chance(0.25)) w.shade.null();
            else if (z >= 6 && r.chance(0.4)) w.shade.t("Transl.");
            else w.shade.t(r.pick(shadesVita()));
        }
        w.shade.date(o.date).row();
    }

    // Production phases: all of them once the order is closed; up to the one
    // in hand while it is in production.
    const auto plan = phasePlans()[o.plan];
    const int end = o.closed ? o.closed : std::max(o.date, last);
    const std::size_t steps = plan.size();
    const std::size_t done = o.closed ? steps : r.below(static_cast<uint32_t>(steps));
    const std::size_t shown = o.closed ? steps : done + 1;
    for (std::size_t k = 0; k < shown; ++k) {
        const Phase& ph = phases()[plan[k]];
        const Employee& e = r.pick(employees());
        int day = o.date + static_cast<int>((static_cast<long>(end - o.date) * static_cast<long>(k)) /
                                            static_cast<long>(steps));
        day = std::min(workingOnOrAfter(day), std::max(end, o.date));
        const int start = (8 * 60 + static_cast<int>(r.below(9 * 60))) * 60;
        const int worked = (10 + static_cast<int>(r.below(170))) * 60;
        const bool finished = k < done;
        w.phases.i(++w.phaseId).date(day).time(start);
        if (finished) w.phases.date(day).time(std::min(start + worked, 86399));
        else w.phases.null().null();
        w.phases.t(ph.code).t(ph.description).date(day).t(e.code).t(e.name).yn(finished).d(o.lineCount)
            .i(o.numero).date(o.date).t(e.code).time(start);
        if (finished) w.phases.time(worked); else w.phases.null();
        w.phases.row();
    }

    // Try-ins of structures and wax set-ups.
    if (o.plan == 0 || o.plan == 2 || o.plan == 3 || o.plan == 7) {
        const int n = r.chance(0.6) ? 1 : r.chance(0.5) ? 2 : 0;
        for (int k = 0; k < n; ++k) {
            const int out = std::min(addWorkingDays(o.date, 2 + 2 * k), last);
            const int back = addWorkingDays(out, r.range(1, 3));
            w.tryIns.date(out);
            if (back <= last && (o.closed || r.chance(0.5))) w.tryIns.date(back); else w.tryIns.null();
            w.tryIns.t(r.pick(tryInTexts())).i(k + 1).i(o.numero);
            if (r.chance(0.1)) w.tryIns.null(); else w.tryIns.date(o.date);
            w.tryIns.row();
        }
    }

    if (!o.closed) return;

    // Declaration of conformity of the custom-made device.
    if (r.chance(0.95)) {
        const Article& a = articles()[p.lines[o.lineBegin].article];
        w.declarations.date(o.closed).date(o.date).d(static_cast<double>(++w.declaration)).t("A")
            .t(std::string("Prótesis dental a medida: ") + a.description)
            .t("Restaurar la función masticatoria, fonética y estética del paciente").i(1).i(o.numero).row();
    }

    // Claims, now and then.
    if (r.chance(0.015)) {
        const int when = std::min(addWorkingDays(o.closed, r.range(5, 120)), last);
        const Employee& e = r.pick(employees());
        w.claims.i(++w.claimId).i(o.numero).t(c.code).tn(patient).yn(r.chance(0.3)).t(r.pick(claimIncidents()))
            .t("El doctor comunica la incidencia por teléfono y devuelve la pieza con el modelo.").t(e.name)
            .t(inMouth(when - o.closed)).date(when);
        if (r.chance(0.5)) w.claims.t("Revisión del modelo y del registro de mordida"); else w.claims.null();
        w.claims.t(c.razon).t("Laboratorio central").t(r.pick(claimActions()));
        const int solved = addWorkingDays(when, r.range(3, 20));
        if (solved <= last && r.chance(0.8)) w.claims.t("Resuelta: el paciente está conforme").date(solved);
        else w.claims.null().null();
        w.claims.row();
    }

    // Labels of removable work and appliances.
    if (o.plan == 2 || o.plan == 3 || o.plan == 4 || o.plan == 7) {
        w.labels.i(1).i(o.numero).t(r.pick(labelConservation())).t(r.pick(labelHandling()))
            .t(r.pick(labelWarnings())).date(o.date).null().row();
    }
}

void writeOrderComments(OrderSatellites& w, const Doc& o, Rng& r) {
    if (!r.chance(0.25)) return;
    static constexpr std::array<const char*, 3> kWhat = {"Indicaciones del doctor", "Nota interna", "Llamada"};
    for (int k = 1, n = r.chance(0.7) ? 1 : 2; k <= n; ++k) {
        w.comments.i(k).i(o.numero).t(r.pick(orderComments()));
        if (r.chance(0.8)) w.comments.t(r.pick(kWhat)); else w.comments.null();
        w.comments.date(o.date).row();
    }
}

void Writer::orders() {
    Inserter head(db_, "HOrdenes",
                  with(block(), {"Numero_control", "Fecha_Entrega", "Hora_Entrega", "Repeticion", "Incidencia",
                                 "Colaborador", "Caja", "Cerrada", "Fecha_Cierre", "descripcion", "Imagenes",
                                 "Impreso", "CTA_Contable", "CTA_Contrapartida", "Concepto", "Archivo",
                                 "Documento_P", "Impuesto_Incluido", "Numero_Barras"}));
    Inserter lines(db_, "HOrdenes_Lineas",
                   {"Codigo", "Descripcion", "Cantidad", "Precio", "DTO", "IVA", "Importe", "Lote", "Seccion",
                    "Empleado", "Puntos", "ID", "Numero", "Facturado", "Doc_F", "Fecha"});
    Inserter snap(db_, "HOrdenes_Cabecera", kSnapshotColumns);
    std::vector<long long> snapIds(p_.customers.size(), 0);
    OrderSatellites sat(db_);

    const std::size_t total = p_.orders.size();
    for (std::size_t i = 0; i < total; ++i) {
        const Doc& o = p_.orders[i];
        const Customer& c = p_.customers[o.customer];
        Rng r(p_.seed, 0x30000000ull + i);
        const std::string patient = patientOf(p_, i);

        const Line& mainLine = p_.lines[o.lineBegin];
        uint32_t units = 0;
        for (uint32_t k = 0; k < o.lineCount; ++k) units += p_.lines[o.lineBegin + k].article == mainLine.article;
        std::string what = articles()[mainLine.article].description;
        if (units > 1) what += " (" + std::to_string(units) + " piezas)";
        const bool images = r.chance(0.3);

        bindBlock(head, o, patient);
        head.i(o.control).date(o.delivery).time(r.range(18, 38) * 1800).yn(o.repeat);
        if (r.chance(0.06)) head.t(r.pick(incidents())); else head.null();
        head.t(c.doctors[o.doctor]).t("C-" + std::to_string(r.range(1, 60)))
            .t(o.closed ? "Cerrada" : "Fabricación");
        if (o.closed) head.date(o.closed); else head.null();
        head.t(what).yn(images).yn(o.closed != 0 && r.chance(0.95)).t(ledger(c)).t("70500000")
            .t("Prótesis dental a medida");
        if (images) head.t("imagenes/ordenes/" + std::to_string(o.numero) + ".jpg"); else head.null();
        head.t("ORD").yn(false).t(std::to_string(o.numero)).row();

        const bool lineInvoiced = o.facturado == kTakenByInvoice;
        for (uint32_t k = 0; k < o.lineCount; ++k) {
            const uint32_t li = o.lineBegin + k;
            const Line& l = p_.lines[li];
            lines.t(articles()[l.article].code).t(lineText(l)).d(l.qty).d(l.precio).d(l.dto).d(l.iva)
                .d(l.importe).tn(batch(li, p_.seed)).t(kSections[o.plan]).t(employees()[l.employee].code)
                .d(cents(l.importe / 10.0)).i(k + 1).i(o.numero).i(lineInvoiced ? kTakenByInvoice : 0)
                .i(lineInvoiced ? o.docF : 0).date(o.date).row();
        }

        snap.i(++snapIds[o.customer]).i(o.numero).t(c.code).t(c.doctors[o.doctor]).t(c.razon).t(c.nif)
            .t(c.direccion).t(c.cp).t(c.poblacion).t(c.provincia).date(o.date).tn(c.telefono).null().row();

        writeOrderSatellites(sat, p_, o, r, patient);
        writeOrderComments(sat, o, r);
        if (opt_.progress && ((i + 1) % 4096 == 0 || i + 1 == total)) opt_.progress(i + 1, total);
    }
}

void Writer::customerOrders() {
    Inserter head(db_, "HPedidos_Clientes",
                  with(block(), {"Impreso", "Referencia_2", "Fecha_Entrega", "CTA_Contable", "CTA_Contrapartida",
                                 "Concepto", "Documento_P", "Numero_Barras"}),
                  "Pedidos_Clientes");
    Inserter lines(db_, "HPedidos_Clientes_Lineas", kLineColumns);
    Inserter snap(db_, "HPedidos_Clientes_Cabecera", kSnapshotColumns);
    Inserter snap2(db_, "HHPedidos_Clientes_Cabecera", kSecondLevelColumns);
    Inserter comments(db_, "HPedidos_Clientes_Comentarios", {"Id", "Codigo", "Comentarios", "Fecha"});
    long long lineId = 0, snapId = 0, commentId = 0;
    static constexpr std::array<const char*, 3> kRef = {"Pedido telefónico", "Pedido por correo electrónico",
                                                        "Pedido del comercial"};
    for (std::size_t i = 0; i < p_.customerOrders.size(); ++i) {
        const Doc& o = p_.customerOrders[i];
        const Customer& c = p_.customers[o.customer];
        Rng r(p_.seed, 0x40000000ull + i);
        if (live(o)) head.mirror();
        bindBlock(head, o, r.chance(0.8) ? r.pick(kRef) : "");
        head.yn(o.date < p_.last - 5).t(c.doctors[o.doctor]).date(o.delivery).t(ledger(c)).t("70500000")
            .t("Venta de material y aparatología").t("PED").t(std::to_string(o.numero)).row();
        for (uint32_t k = 0; k < o.lineCount; ++k) {
            const uint32_t li = o.lineBegin + k;
            const Line& l = p_.lines[li];
            lines.t(articles()[l.article].code).t(lineText(l)).d(l.qty).d(l.precio).d(l.dto).d(l.iva)
                .d(l.importe).tn(batch(li, p_.seed)).i(++lineId).i(o.numero).date(o.date).row();
        }
        snapshot(snap, snap2, o, snapId);
        if (r.chance(0.15)) comments.i(++commentId).i(o.numero).t(r.pick(documentComments())).date(o.date).row();
    }
}

void Writer::notes() {
    Inserter head(db_, "HAlbaranes",
                  with(block(), {"Bloqueado", "Impreso", "Referencia_3", "CTA_Contable", "CTA_Contrapartida",
                                 "Concepto", "Documento_P", "Numero_Barras", "Referencia_2", "Hora", "Fecha_F"}),
                  "Albaranes");
    Inserter lines(db_, "HAlbaranes_Lineas", kLineColumns);
    Inserter snap(db_, "HAlbaranes_Cabecera", kSnapshotColumns);
    Inserter snap2(db_, "HHAlbaranes_Cabecera", kSecondLevelColumns);
    Inserter comments(db_, "HAlbaranes_Comentarios", {"Id", "Codigo", "Comentarios", "Fecha"});
    long long lineId = 0, snapId = 0, commentId = 0;
    for (std::size_t i = 0; i < p_.notes.size(); ++i) {
        const Doc& n = p_.notes[i];
        const Customer& c = p_.customers[n.customer];
        Rng r(p_.seed, 0x50000000ull + i);
        const std::string ref = n.sourceKind == Kind::Order
                                    ? patientOf(p_, static_cast<std::size_t>(n.source))
                                    : "Pedido " + std::to_string(n.docE);
        if (live(n)) head.mirror();
        bindBlock(head, n, ref);
        head.yn(false).yn(true).null().t(ledger(c)).t("70500000")
            .t(n.sourceKind == Kind::Order ? "Entrega de trabajos de prótesis" : "Entrega de material")
            .t("ALB").t(std::to_string(n.numero)).t(c.doctors[n.doctor]).time(r.range(18, 38) * 1800);
        if (n.facturado == kTakenByInvoice) head.date(n.takenDate); else head.date(0);
        head.row();
        for (uint32_t k = 0; k < n.lineCount; ++k) {
            const uint32_t li = n.lineBegin + k;
            const Line& l = p_.lines[li];
            lines.t(articles()[l.article].code).t(lineText(l)).d(l.qty).d(l.precio).d(l.dto).d(l.iva)
                .d(l.importe).tn(batch(li, p_.seed)).i(++lineId).i(n.numero).date(n.date).row();
        }
        snapshot(snap, snap2, n, snapId);
        if (r.chance(0.1)) comments.i(++commentId).i(n.numero).t(r.pick(documentComments())).date(n.date).row();
    }
}

void Writer::invoices() {
    Inserter head(db_, "HFacturas",
                  with(block(), {"Impreso", "CTA_Contable", "CTA_Contrapartida", "Concepto", "Documento_P"}),
                  "Facturas");
    Inserter lines(db_, "HFacturas_Lineas", kLineColumns);
    Inserter snap(db_, "HFacturas_Cabecera", kSnapshotColumns);
    Inserter snap2(db_, "HHFacturas_Cabecera", kSecondLevelColumns);
    Inserter comments(db_, "HFacturas_Comentarios", {"Id", "Codigo", "Comentarios", "fecha"});
    Inserter receipts(db_, "Recibos",
                      {"Id", "Numero", "Contador", "Serie", "Fecha_Expedicion", "Fecha_Vencimiento", "Codigo",
                       "Razon_Social", "Divisa", "Valor_Divisa", "Total_Divisa", "Total", "Estado", "Forma_Pago",
                       "Presentado", "Impreso", "CTA_Contable", "CTA_Contrapartida", "Concepto", "Documento_P",
                       "CTA_Tesoreria"});
    long long lineId = 0, snapId = 0, commentId = 0, receiptId = 0;
    for (std::size_t i = 0; i < p_.invoices.size(); ++i) {
        const Doc& f = p_.invoices[i];
        const Customer& c = p_.customers[f.customer];
        Rng r(p_.seed, 0x60000000ull + i);
        std::string ref;
        if (f.estado == 7) {
            ref = std::string("Facturación de ") + kMonths[f.docE % 100 - 1] + " de " + std::to_string(f.docE / 100);
        } else if (f.estado == 3) {
            ref = "Albarán " + std::to_string(f.docE);
        } else if (f.estado == 10) {
            ref = "Orden " + std::to_string(f.docE);
        } else {
            ref = "Pedido " + std::to_string(f.docE);
        }
        const std::string name = std::string(1, f.serie) + "/" + std::to_string(f.numero);
        if (live(f)) head.mirror();
        bindBlock(head, f, ref);
        head.yn(f.posted).t(ledger(c)).t("70500000").t("Factura " + name).t("FAC").row();

        auto copyLines = [&](const Doc& src) {
            for (uint32_t k = 0; k < src.lineCount; ++k) {
                const uint32_t li = src.lineBegin + k;
                const Line& l = p_.lines[li];
                lines.t(articles()[l.article].code).t(lineText(l)).d(l.qty).d(l.precio).d(l.dto).d(l.iva)
                    .d(l.importe).tn(batch(li, p_.seed)).i(++lineId).i(f.numero).date(f.date).row();
            }
        };
        if (f.sourceKind == Kind::Note) {
            for (int32_t k : f.taken) copyLines(p_.notes[k]);
        } else {
            copyLines(f.sourceKind == Kind::Order ? p_.orders[f.source] : p_.customerOrders[f.source]);
        }
        snapshot(snap, snap2, f, snapId);
        if (r.chance(0.08)) comments.i(++commentId).i(f.numero).t(r.pick(documentComments())).date(f.date).row();

        // Receipts: instalments at 30, 60 and 90 days for domiciled payment,
        // one receipt otherwise.
        const bool bank = c.formaPago == "RECIBO";
        const int count = bank ? (f.total > 600 ? 3 : f.total > 250 ? 2 : 1) : 1;
        double left = f.total;
        for (int k = 1; k <= count; ++k) {
            const double amount = k == count ? cents(left) : cents(f.total / count);
            left -= amount;
            const int due = c.formaPago == "CONTADO" ? f.date : f.date + 30 * k;
            int state = 0;
            if (due <= p_.last - 15) state = r.chance(0.03) ? 0 : (f.posted ? 2 : -1);
            else if (due <= p_.last) state = r.chance(0.5) ? -1 : 0;
            receipts.i(++receiptId).i(f.numero).i(k).t(std::string(1, f.serie)).date(f.date).date(due).t(c.code)
                .t(c.razon).t("EUR").d(1.0).d(amount).d(amount).i(state).t(c.formaPago).yn(bank && due <= p_.last)
                .yn(f.posted).t(ledger(c)).t("70500000")
                .t("Recibo " + std::to_string(k) + "/" + std::to_string(count) + " de la factura " + name).t("FAC")
                .t(c.formaPago == "CONTADO" ? "5700000000" : "5720000001").row();
        }
    }
}

void Writer::reference() {
    Inserter art(db_, "Articulos", {"Codigo", "Descripcion", "Recargo"});
    for (const Article& a : articles()) art.t(a.code).t(a.description).d(a.recargo).row();
    Inserter num(db_, "Numeradores", {"Tabla", "SerieA", "SerieB", "SerieC"});
    auto counters = [&](const char* table, const long highest[3]) {
        const long start[3] = {kSeriesStartA, kSeriesStartB, kSeriesStartC};
        num.t(table);
        for (int s = 0; s < 3; ++s) num.d(static_cast<double>(std::max(highest[s], start[s])));
        num.row();
    };
    counters("HOrdenes", p_.maxOrders);
    counters("HPedidos_Clientes", p_.maxCustomerOrders);
    counters("HAlbaranes", p_.maxNotes);
    counters("HFacturas", p_.maxInvoices);
}

void Writer::run() {
    reference();
    orders();
    customerOrders();
    notes();
    invoices();
}

}  // namespace

Result generate(const std::string& dbPath, const Options& opt) {
    if (opt.orders > kMaxOrders)
        throw Error(err::InvalidCall, kSource,
                    "A sample has at most " + std::to_string(kMaxOrders) + " work orders (asked for " +
                        std::to_string(opt.orders) + ")");
    const auto started = std::chrono::steady_clock::now();
    const bool existed = std::filesystem::exists(dbPath);
    {
        // Creates the catalog's tables in a new or empty file; refuses any other file
        // that is not an archive.
        backend::DataSource ds;
        ds.path = dbPath;
        backend::createArchive(ds);
    }
    try {
        Db db(dbPath);
        for (const char* t : kDocumentTables)
            if (db.count(t) > 0)
                throw Error(err::InvalidCall, kSource, std::string("The archive already holds rows in ") + t);

        const Plan plan = makePlan(opt.orders, opt.seed);

        // One transaction, with the rollback journal in memory and syncing off for
        // the load; both are put back afterwards. (A journal kept in memory still
        // lets a failed load roll back, which no journal at all would not; pages
        // added past the file's end are not journalled, so it stays small.)
        const std::string journal = db.pragma("journal_mode");
        const std::string sync = db.pragma("synchronous");
        db.exec("PRAGMA journal_mode=MEMORY");
        db.exec("PRAGMA synchronous=OFF");
        db.exec("PRAGMA cache_size=-131072");
        db.exec("BEGIN");
        try {
            Writer(db.get(), plan, opt).run();
            db.exec("COMMIT");
        } catch (...) {
            sqlite3_exec(db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
        db.exec("PRAGMA journal_mode=" + (journal.empty() ? std::string("WAL") : journal));
        db.exec("PRAGMA synchronous=" + (sync.empty() ? std::string("2") : sync));
    } catch (...) {
        if (!existed) {
            std::error_code ec;
            std::filesystem::remove(dbPath, ec);
            std::filesystem::remove(dbPath + "-wal", ec);
            std::filesystem::remove(dbPath + "-shm", ec);
        }
        throw;
    }
    Result res;
    res.counts = countRows(dbPath);
    res.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return res;
}

bool holdsRows(const std::string& dbPath) {
    Db db(dbPath);
    for (const sql::Table& t : sql::catalog().tables())
        if (db.scalar("SELECT EXISTS (SELECT 1 FROM " + t.name + ")")) return true;
    return false;
}

std::vector<TableCount> countRows(const std::string& dbPath) {
    Db db(dbPath);
    std::vector<TableCount> out;
    for (const sql::Table& t : sql::catalog().tables()) out.push_back({t.name, db.count(t.name)});
    return out;
}

}  // namespace hist::sample
