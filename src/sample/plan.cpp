#include "sample/plan.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <map>
#include <tuple>

namespace hist::sample::detail {

double cents(double v) { return std::round(v * 100.0) / 100.0; }

namespace {

// The last working day of the history: a fixed date, so a seed always gives the
// same archive whatever day it is generated on.
const int kLastDay = serialOf(2026, 10, 30);

int monthKey(int serial) {
    int y, m, d;
    civilOf(serial, y, m, d);
    return y * 100 + m;
}

int lastWorkingDayOfMonth(int key) {
    int y = key / 100, m = key % 100 + 1;
    if (m > 12) m = 1, ++y;
    int s = serialOf(y, m, 1) - 1;
    while (!isWorkingDay(s)) --s;
    return s;
}

// Numbers documents series by series: A from 1 up to 9999, B from 10001 up to
// 24999, C from 25001 on. A document draws its series with odds proportional to
// what is left of each series' share, so the mix holds over the whole history and
// A and B never leave their ranges.
class SeriesNumbers {
public:
    SeriesNumbers(std::size_t total, double shareA, double shareB) {
        left_[0] = std::min<long>(std::lround(total * shareA), 9999);
        left_[1] = std::min<long>(std::lround(total * shareB), 14999);
        left_[2] = static_cast<long>(total) - left_[0] - left_[1];
        if (left_[2] < 0) left_[2] = 0;
    }
    void take(Rng& rng, Doc& doc) {
        const long all = left_[0] + left_[1] + left_[2];
        int s = 2;
        if (all > 0) {
            long r = static_cast<long>(rng.below(static_cast<uint32_t>(all)));
            s = r < left_[0] ? 0 : r < left_[0] + left_[1] ? 1 : 2;
            --left_[s];
        }
        doc.serie = static_cast<char>('A' + s);
        doc.numero = static_cast<int32_t>(next_[s]++);
    }
    void highest(long out[3]) const {
        for (int s = 0; s < 3; ++s) out[s] = next_[s] - 1;
    }

private:
    long left_[3]{};
    long next_[3] = {1, 10001, 25001};
};

std::string personName(Rng& rng, bool withTitle) {
    const bool female = rng.chance(0.5);
    std::string n;
    if (withTitle) n = female ? "Dra. " : "Dr. ";
    n += female ? rng.pick(givenNamesF()) : rng.pick(givenNamesM());
    n += ' ';
    n += rng.pick(surnames());
    n += ' ';
    n += rng.pick(surnames());
    return n;
}

std::string digits(Rng& rng, int count) {
    std::string s;
    for (int k = 0; k < count; ++k) s += static_cast<char>('0' + rng.below(10));
    return s;
}

Customer makeCustomer(Rng& rng, std::size_t k) {
    Customer c;
    c.code = std::to_string(k + 1);
    const Town& town = rng.pick(towns());
    const auto prefixes = clinicPrefixes();
    const auto names = clinicNames();
    const std::size_t combos = prefixes.size() * names.size();
    c.razon = std::string(prefixes[k % prefixes.size()]) + " " +
              names[(k / prefixes.size()) % names.size()];
    if (k >= combos) c.razon += std::string(" (") + town.name + ")";
    c.nombre = personName(rng, true);
    if (rng.chance(0.8)) {
        c.nif = "B" + digits(rng, 8);
    } else {
        const std::string dni = digits(rng, 8);
        c.nif = dni + "TRWAGMYFPDXBNJZSQVHLCKE"[std::stol(dni) % 23];
    }
    c.direccion = std::string(rng.pick(streets())) + ", " + std::to_string(rng.range(1, 180));
    if (rng.chance(0.6))
        c.direccion += ", " + std::to_string(rng.range(1, 8)) + "º " + static_cast<char>('A' + rng.below(4));
    c.cp = std::string(town.postalPrefix) + digits(rng, 2);
    c.poblacion = town.name;
    c.provincia = town.province;
    const std::string pre = town.phonePrefix;
    std::string rest = digits(rng, 9 - static_cast<int>(pre.size()));
    c.telefono = pre + " " + rest.substr(0, rest.size() - 4) + " " + rest.substr(rest.size() - 4, 2) + " " +
                 rest.substr(rest.size() - 2);
    if (rng.chance(0.05)) c.telefono.clear();  // some clinics never gave one
    c.doctors.push_back(c.nombre);
    for (int n = rng.range(0, 3); n > 0; --n) c.doctors.push_back(personName(rng, true));
    const uint32_t fp = rng.below(10);
    c.formaPago = fp < 5 ? "RECIBO" : fp < 8 ? "TRANSF" : fp < 9 ? "CONTADO" : "PAGARE";
    const uint32_t tf = rng.below(10);
    c.tarifa = tf < 6 ? "GENERAL" : tf < 9 ? "CLINICAS" : "ESPECIAL";
    const uint32_t tr = rng.below(20);
    c.transportista = tr < 10 ? "PROPIO" : tr < 17 ? "MENSAJERO" : "";
    const uint32_t ds = rng.below(10);
    c.descuento = ds < 7 ? 0.0 : ds < 9 ? 5.0 : 10.0;
    c.descuentoPP = c.formaPago == "CONTADO" ? 2.0 : 0.0;
    return c;
}

double tariffFactor(const Customer& c) {
    return c.tarifa == "CLINICAS" ? 0.92 : c.tarifa == "ESPECIAL" ? 0.85 : 1.0;
}

void addLine(Plan& p, Rng& rng, const Customer& c, int article, int tooth, double qty) {
    const Article& a = articles()[article];
    Line l;
    l.article = static_cast<uint16_t>(article);
    l.tooth = static_cast<uint8_t>(tooth);
    l.employee = static_cast<uint8_t>(rng.below(static_cast<uint32_t>(employees().size())));
    l.qty = qty;
    l.precio = cents(a.price * tariffFactor(c));
    l.dto = rng.chance(0.08) ? (rng.chance(0.5) ? 5.0 : 10.0) : 0.0;
    l.iva = a.iva;
    l.importe = cents(l.qty * l.precio * (1.0 - l.dto / 100.0));
    p.lines.push_back(l);
}

// Work order lines: the main piece (one line per tooth for fixed work), then
// what goes with it. About 4.5 lines per order.
void orderLines(Plan& p, Rng& rng, Doc& o) {
    static constexpr int kCountOdds[] = {8, 12, 15, 17, 16, 12, 9, 6, 5};  // 1..9 lines, per cent
    uint32_t r = rng.below(100);
    int n = 1;
    for (int w : kCountOdds) {
        if (r < static_cast<uint32_t>(w)) break;
        r -= static_cast<uint32_t>(w);
        ++n;
    }
    const Customer& c = p.customers[o.customer];
    const int main = rng.pick(mainArticles());
    const Article& a = articles()[main];
    o.plan = static_cast<uint8_t>(a.phasePlan);
    o.lineBegin = static_cast<uint32_t>(p.lines.size());
    int units = 1;
    int toothIndex = static_cast<int>(rng.below(32));
    if (a.perTooth) units = std::min(n, 1 + static_cast<int>(rng.below(4)));
    for (int u = 0; u < units; ++u) {
        const int ti = (toothIndex / 8) * 8 + (toothIndex % 8 + u) % 8;
        addLine(p, rng, c, main, a.perTooth ? toothOfIndex(ti) : 0, 1);
    }
    for (int k = units; k < n; ++k) {
        const int e = rng.pick(extraArticles());
        const Article& x = articles()[e];
        const double qty = x.perTooth ? 1 : (x.iva > 0 ? 1 : rng.range(1, 3));
        addLine(p, rng, c, e, x.perTooth ? toothOfIndex(static_cast<int>(rng.below(32))) : 0, qty);
    }
    o.lineCount = static_cast<uint32_t>(p.lines.size()) - o.lineBegin;
}

void customerOrderLines(Plan& p, Rng& rng, Doc& o) {
    static constexpr int kStock[] = {22, 24, 25, 16, 29, 30, 35, 4};
    const Customer& c = p.customers[o.customer];
    o.lineBegin = static_cast<uint32_t>(p.lines.size());
    for (int n = rng.range(1, 3); n > 0; --n) {
        const int art = kStock[rng.below(8)];
        addLine(p, rng, c, art, 0, rng.range(1, 10));
    }
    o.lineCount = static_cast<uint32_t>(p.lines.size()) - o.lineBegin;
}

struct Sums {
    double gross = 0, tax = 0;
};

Sums sumLines(const Plan& p, const Doc& d) {
    Sums s;
    for (uint32_t k = 0; k < d.lineCount; ++k) {
        const Line& l = p.lines[d.lineBegin + k];
        s.gross += l.importe;
        s.tax += l.importe * l.iva / 100.0;
    }
    return s;
}

void settle(Doc& d, Sums s) {
    const double factor = (1.0 - d.descuento / 100.0) * (1.0 - d.descuentoPP / 100.0);
    d.base = cents(s.gross * factor);
    d.taxes = cents(s.tax * factor);
    d.total = cents(d.base + d.gastos + d.taxes);
}

void priceFor(Doc& d, const Customer& c) {
    d.descuento = c.descuento;
    d.descuentoPP = c.descuentoPP;
}

}  // namespace

Plan makePlan(std::size_t count, uint64_t seed) {
    Plan p;
    p.seed = seed;
    const std::size_t n = std::max<std::size_t>(count, 1);

    // The history runs back from the last day: about 90 orders per working day,
    // never less than half a year nor more than eight.
    const std::size_t days = std::clamp<std::size_t>(n / 90, 130, 2090);
    std::vector<int> workdays(days);
    int d = kLastDay;
    for (std::size_t k = days; k-- > 0;) {
        while (!isWorkingDay(d)) --d;
        workdays[k] = d--;
    }
    p.first = workdays.front();
    p.last = workdays.back();
    const int lastMonth = monthKey(p.last);

    // Customers: a few big clinics and a long tail.
    Rng crng(seed, 1);
    const std::size_t nCustomers = std::clamp<std::size_t>(n / 150, 20, 900);
    std::vector<double> cumulative;
    double total = 0;
    for (std::size_t k = 0; k < nCustomers; ++k) {
        p.customers.push_back(makeCustomer(crng, k));
        total += 1.0 / std::pow(static_cast<double>(k) + 5.0, 0.8);
        cumulative.push_back(total);
    }
    auto drawCustomer = [&](Rng& rng) {
        const double x = rng.unit() * total;
        auto it = std::upper_bound(cumulative.begin(), cumulative.end(), x);
        return static_cast<int32_t>(std::min<std::size_t>(it - cumulative.begin(), nCustomers - 1));
    };

    // Work orders, in date order.
    Rng orng(seed, 2);
    SeriesNumbers orderSeries(n, 0.6, 0.25);
    p.orders.resize(count);
    p.lines.reserve(count * 5);
    for (std::size_t i = 0; i < count; ++i) {
        Doc& o = p.orders[i];
        o.kind = Kind::Order;
        o.date = workdays[i * days / n];
        o.customer = drawCustomer(orng);
        const Customer& c = p.customers[o.customer];
        o.doctor = static_cast<uint8_t>(orng.below(static_cast<uint32_t>(c.doctors.size())));
        o.control = static_cast<int32_t>(i + 1);
        orderSeries.take(orng, o);
        orderLines(p, orng, o);
        priceFor(o, c);
        o.repeat = orng.chance(0.03);
        o.gastos = c.transportista == "MENSAJERO" ? 6.5 : 0.0;
        settle(o, sumLines(p, o));
        o.delivery = addWorkingDays(o.date, orng.range(3, 9));
        o.closed = o.delivery <= p.last - 2 ? o.delivery : 0;
    }
    orderSeries.highest(p.maxOrders);

    // Customer orders: stock items the clinics order, a tenth of the work orders.
    Rng prng(seed, 3);
    const std::size_t nCustOrders = std::max<std::size_t>(5, count / 10);
    SeriesNumbers custSeries(nCustOrders, 0.7, 0.2);
    p.customerOrders.resize(nCustOrders);
    for (std::size_t i = 0; i < nCustOrders; ++i) {
        Doc& o = p.customerOrders[i];
        o.kind = Kind::CustomerOrder;
        o.date = workdays[i * days / nCustOrders];
        o.customer = drawCustomer(prng);
        o.doctor = static_cast<uint8_t>(prng.below(static_cast<uint32_t>(p.customers[o.customer].doctors.size())));
        custSeries.take(prng, o);
        customerOrderLines(p, prng, o);
        priceFor(o, p.customers[o.customer]);
        settle(o, sumLines(p, o));
        o.delivery = addWorkingDays(o.date, prng.range(1, 4));
    }
    custSeries.highest(p.maxCustomerOrders);

    // What takes each document: a delivery note, an invoice of its own, or
    // nothing yet. Keyed by date so the notes and invoices can be numbered in
    // date order.
    Rng lrng(seed, 4);
    struct Pending {
        int date;
        Kind kind;
        int32_t index;
    };
    std::vector<Pending> toNote, toInvoice;
    for (std::size_t i = 0; i < p.orders.size(); ++i) {
        const Doc& o = p.orders[i];
        if (!o.closed || o.repeat) continue;  // in production, or a remake at no charge
        (lrng.chance(0.15) ? toInvoice : toNote).push_back({o.closed, Kind::Order, static_cast<int32_t>(i)});
    }
    for (std::size_t i = 0; i < p.customerOrders.size(); ++i) {
        const Doc& o = p.customerOrders[i];
        if (o.delivery > p.last) continue;
        const uint32_t r = lrng.below(10);
        if (r < 7) toNote.push_back({o.delivery, Kind::CustomerOrder, static_cast<int32_t>(i)});
        else if (r < 9) toInvoice.push_back({o.delivery, Kind::CustomerOrder, static_cast<int32_t>(i)});
    }
    auto byDate = [](const Pending& a, const Pending& b) {
        return std::tie(a.date, a.kind, a.index) < std::tie(b.date, b.kind, b.index);
    };
    std::sort(toNote.begin(), toNote.end(), byDate);
    auto sourceOf = [&](Kind k, int32_t i) -> Doc& {
        return k == Kind::Order ? p.orders[i] : p.customerOrders[i];
    };

    // Delivery notes carry their source's lines and amounts.
    Rng nrng(seed, 5);
    SeriesNumbers noteSeries(toNote.size(), 0.65, 0.25);
    for (const Pending& q : toNote) {
        const Doc& src = sourceOf(q.kind, q.index);
        Doc note;
        note.kind = Kind::Note;
        note.date = q.date;
        note.customer = src.customer;
        note.doctor = src.doctor;
        note.lineBegin = src.lineBegin;
        note.lineCount = src.lineCount;
        note.descuento = src.descuento;
        note.descuentoPP = src.descuentoPP;
        note.gastos = src.gastos;
        note.base = src.base;
        note.taxes = src.taxes;
        note.total = src.total;
        note.estado = q.kind == Kind::Order ? 10 : 2;
        note.docE = src.numero;
        note.source = q.index;
        note.sourceKind = q.kind;
        noteSeries.take(nrng, note);
        p.notes.push_back(std::move(note));
    }
    noteSeries.highest(p.maxNotes);

    // Invoices: one of its own for a document invoiced directly, and one per
    // customer and month for the delivery notes (the monthly invoicing run). The
    // notes of the last month wait for the next run.
    struct Draft {
        int date;
        int order;  // creation order, to break ties
        Doc doc;
    };
    std::vector<Draft> drafts;
    for (const Pending& q : toInvoice) {
        const Doc& src = sourceOf(q.kind, q.index);
        Doc inv;
        inv.kind = Kind::Invoice;
        inv.date = q.date;
        inv.customer = src.customer;
        inv.estado = q.kind == Kind::Order ? 10 : 2;
        inv.docE = src.numero;
        inv.source = q.index;
        inv.sourceKind = q.kind;
        drafts.push_back({q.date, static_cast<int>(drafts.size()), std::move(inv)});
    }
    std::map<std::pair<int, int32_t>, std::vector<int32_t>> runs;  // (month, customer) -> notes
    for (std::size_t k = 0; k < p.notes.size(); ++k) {
        const int month = monthKey(p.notes[k].date);
        if (month < lastMonth) runs[{month, p.notes[k].customer}].push_back(static_cast<int32_t>(k));
    }
    for (auto& [key, taken] : runs) {
        Doc inv;
        inv.kind = Kind::Invoice;
        inv.date = std::min(lastWorkingDayOfMonth(key.first), p.last);
        inv.customer = key.second;
        if (taken.size() == 1) {
            inv.estado = 3;
            inv.docE = p.notes[taken.front()].numero;
        } else {
            inv.estado = 7;
            inv.docE = key.first;  // the invoicing run, by its month
        }
        inv.sourceKind = Kind::Note;
        inv.taken = taken;
        drafts.push_back({inv.date, static_cast<int>(drafts.size()), std::move(inv)});
    }
    std::sort(drafts.begin(), drafts.end(), [](const Draft& a, const Draft& b) {
        return std::tie(a.date, a.order) < std::tie(b.date, b.order);
    });

    Rng irng(seed, 6);
    SeriesNumbers invoiceSeries(drafts.size(), 0.75, 0.2);
    p.invoices.reserve(drafts.size());
    for (Draft& dr : drafts) {
        Doc inv = std::move(dr.doc);
        invoiceSeries.take(irng, inv);
        const Customer& c = p.customers[inv.customer];
        priceFor(inv, c);
        Sums s;
        auto take = [&](Doc& src) {
            const Sums part = sumLines(p, src);
            s.gross += part.gross;
            s.tax += part.tax;
            inv.gastos += src.gastos;
            src.facturado = 4;
            src.docF = inv.numero;
            src.takenDate = inv.date;
        };
        if (inv.sourceKind == Kind::Note) {
            for (int32_t k : inv.taken) {
                Doc& note = p.notes[k];
                take(note);
                Doc& src = sourceOf(note.sourceKind, note.source);
                src.facturado = 4;
                src.docF = inv.numero;
                src.takenDate = inv.date;
            }
        } else {
            take(sourceOf(inv.sourceKind, inv.source));
        }
        settle(inv, s);
        inv.posted = inv.date < p.last - 40;
        inv.facturado = inv.posted ? 4 : 0;
        p.invoices.push_back(std::move(inv));
    }
    invoiceSeries.highest(p.maxInvoices);

    // Notes still waiting for their invoice hold their source.
    for (Doc& note : p.notes) {
        if (note.facturado != 0) continue;
        Doc& src = sourceOf(note.sourceKind, note.source);
        src.facturado = 3;
        src.docF = note.numero;
        src.takenDate = note.date;
    }

    // Closing runs of the snapshots: one per month but the last; the older half
    // of them has been moved to the second level.
    std::vector<int> closedMonths;
    for (int m = monthKey(p.first); m < lastMonth; m = (m % 100 == 12) ? m + 89 : m + 1) closedMonths.push_back(m);
    const int cut = closedMonths.empty() ? 0 : closedMonths[closedMonths.size() / 2];
    auto close = [&](std::vector<Doc>& docs) {
        for (Doc& doc : docs) {
            const int m = monthKey(doc.date);
            if (m < lastMonth) {
                doc.cierre = m;
                doc.secondLevel = m < cut;
            }
        }
    };
    close(p.customerOrders);
    close(p.notes);
    close(p.invoices);
    return p;
}

}  // namespace hist::sample::detail
