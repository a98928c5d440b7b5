#pragma once
// A realistic, deterministic history of a dental laboratory, written into an
// archive file: customers and their snapshots, work orders with their clinical and
// production detail, customer orders, delivery notes, invoices and receipts, tied
// together the way the invoicing process ties them (Estado/Doc_E back to the
// source document, Facturado/Doc_F forward to the document that took it).
//
// The archive is created through the engine (so its schema is the catalog's) and
// then filled in one transaction with prepared statements.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace hist::sample {

struct Options {
    std::size_t orders = 2000;  // work orders; about 4.5 lines each
    uint64_t seed = 1;
    // Called now and then while rows are written: work orders done of the total.
    std::function<void(std::size_t done, std::size_t total)> progress;
};

// The most work orders a sample may have. The generator plans the whole history in
// memory before it writes a row, and numbers series C up from 25001 in 32 bits: five
// million orders (about 22 million order lines, 23 times the million-line sample)
// stays well inside both; far more only ends in an allocation failure.
inline constexpr std::size_t kMaxOrders = 5'000'000;

// Facturado codes the sample writes, and what Doc_F names with each.
inline constexpr int kNotTaken = 0;         // Doc_F 0
inline constexpr int kTakenByNote = 3;      // Doc_F: a delivery note (HAlbaranes.Numero)
inline constexpr int kTakenByInvoice = 4;   // Doc_F: an invoice (HFacturas.Numero)

// Numbers of the series: A 1..9999, B 10001..24999, C from 25001. A series with
// no document keeps its start (A 0, B 10000, C 25000) in Numeradores.
inline constexpr long kSeriesStartA = 0;
inline constexpr long kSeriesStartB = 10000;
inline constexpr long kSeriesStartC = 25000;

struct TableCount {
    std::string table;
    long long rows = 0;
};

struct Result {
    std::vector<TableCount> counts;  // every catalog table, in catalog order
    double seconds = 0;
};

// Fills the archive at dbPath with a sample history. The file is created with the
// catalog's tables when missing; an existing archive must have empty document
// tables, and `orders` at most kMaxOrders. Throws hist::Error on failure.
Result generate(const std::string& dbPath, const Options& opt);

// Whether any catalog table of the archive at dbPath holds a row (one look per table,
// no counting).
bool holdsRows(const std::string& dbPath);

// Rows per catalog table of the archive at dbPath (in catalog order).
std::vector<TableCount> countRows(const std::string& dbPath);

// Counts per table and the newest work orders and invoices with their totals.
void summary(const std::string& dbPath, std::ostream& out);

// `historicos init`, its options as the command line gave them.
struct InitOptions {
    std::string db{};    // the archive file
    bool force = false;  // replace an archive that already holds rows
    bool sample = false; // fill it with the sample
    Options generation{};  // orders and seed of the sample
};

// Creates (and with `sample` fills) the archive. Returns the process exit code (0 done,
// 1 failure).
int initCommand(const InitOptions& o, std::ostream& out, std::ostream& err);

}  // namespace hist::sample
