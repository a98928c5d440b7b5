#pragma once
// The first pass of the generator: who ordered what and when, and how every
// document was taken by the next one (work order or customer order -> delivery
// note -> invoice -> receipts). Amounts are worked out here from the lines, so the
// writing pass only formats and stores.
#include <cstdint>
#include <string>
#include <vector>

#include "sample/detail.hpp"

namespace hist::sample::detail {

struct Customer {
    std::string code;  // numeric text, as the snapshots compare it bare with a number
    std::string razon, nombre, nif, direccion, cp, poblacion, provincia, telefono;
    std::vector<std::string> doctors;
    std::string formaPago, tarifa, transportista;
    double descuento = 0, descuentoPP = 0;
};

struct Line {
    uint16_t article = 0;
    uint8_t tooth = 0;  // FDI number, 0 when the line names none
    uint8_t employee = 0;
    double qty = 1, precio = 0, dto = 0, iva = 0, importe = 0;
};

enum class Kind : uint8_t { Order, CustomerOrder, Note, Invoice };

struct Doc {
    Kind kind = Kind::Order;
    int32_t numero = 0;
    char serie = 'A';
    int32_t date = 0;
    int32_t customer = 0;
    uint32_t lineBegin = 0, lineCount = 0;  // into Plan::lines
    double descuento = 0, descuentoPP = 0;
    double base = 0, gastos = 0, taxes = 0, total = 0;
    int16_t estado = 0;
    int32_t docE = 0;
    int16_t facturado = 0;
    int32_t docF = 0;
    int32_t takenDate = 0;   // date of the document that took it
    int32_t source = -1;     // notes and direct invoices: index of the source document
    Kind sourceKind = Kind::Order;
    // Work orders
    int32_t control = 0;
    int32_t delivery = 0;
    int32_t closed = 0;      // closing date, 0 while in production
    uint8_t doctor = 0;
    uint8_t plan = 0;        // kind of work (phase plan)
    bool repeat = false;
    // Invoices: the documents taken (indexes into notes, or one order/customer order)
    std::vector<int32_t> taken;
    bool posted = false;
    int32_t cierre = 0;      // closing run of the snapshot, 0 for none
    bool secondLevel = false;  // snapshot moved to the second level
};

struct Plan {
    uint64_t seed = 0;
    int32_t first = 0, last = 0;  // first and last working day of the history
    std::vector<Customer> customers;
    std::vector<Line> lines;
    std::vector<Doc> orders, customerOrders, notes, invoices;
    // Highest number used per series (A, B, C) for each document table.
    long maxOrders[3]{}, maxCustomerOrders[3]{}, maxNotes[3]{}, maxInvoices[3]{};
};

Plan makePlan(std::size_t orders, uint64_t seed);

// The document a Doc_F names, by the Facturado code beside it.
inline bool linksToInvoice(int facturado) { return facturado == 4; }

// Money rounded to cents.
double cents(double v);

}  // namespace hist::sample::detail
