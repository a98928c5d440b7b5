#include "host/maintenance.hpp"

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <vector>

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "backends/address.hpp"
#include "backends/copy.hpp"
#include "backends/engine.hpp"
#include "frame/record.hpp"
#include "frame/service_calls.hpp"
#include "host/class_calls.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/progress.hpp"
#include "platform/runtime.hpp"

namespace hist::host {

namespace {

using frame::ConnPtr;
using frame::RsPtr;

std::string text(const Variant& v) { return v.isNull() ? std::string("Null") : rt::CStr(v); }

// ------------------------------------------------------------------ check

// A rule over the links between documents: the selection lists the rows that break
// it, by their key and the value that points nowhere.
struct LinkRule {
    std::string what;
    std::string sql;
};

std::vector<LinkRule> linkRules() {
    std::vector<LinkRule> rules;
    // Facturado says what took a document (4 an invoice, 3 a delivery note) and
    // Doc_F its number, which may still be in the live table.
    for (const char* t : {"HOrdenes", "HOrdenes_Lineas", "HPedidos_Clientes", "HAlbaranes"}) {
        const std::string key = std::string(t) == "HOrdenes_Lineas" ? "ID, Numero" : "Numero";
        rules.push_back({std::string(t) + ": marked taken (Facturado <> 0) with no document in Doc_F",
                         "SELECT " + key + ", Facturado FROM " + t +
                             " WHERE Facturado <> 0 AND (Doc_F = 0 OR Doc_F Is Null)"});
        rules.push_back({std::string(t) + ": invoiced (Facturado = 4) by an invoice that does not exist",
                         "SELECT " + key + ", Doc_F FROM " + t +
                             " WHERE Facturado = 4 AND Doc_F NOT IN (SELECT Numero FROM HFacturas) AND Doc_F NOT IN "
                             "(SELECT Numero FROM Facturas)"});
    }
    for (const char* t : {"HOrdenes", "HPedidos_Clientes"})
        rules.push_back({std::string(t) + ": taken by a delivery note (Facturado = 3) that does not exist",
                         std::string("SELECT Numero, Doc_F FROM ") + t +
                             " WHERE Facturado = 3 AND Doc_F NOT IN (SELECT Numero FROM HAlbaranes) AND Doc_F NOT IN "
                             "(SELECT Numero FROM Albaranes)"});
    rules.push_back({"Recibos: a receipt of an invoice that does not exist",
                     "SELECT Id, Numero FROM Recibos WHERE Numero NOT IN (SELECT Numero FROM HFacturas) AND Numero NOT "
                     "IN (SELECT Numero FROM Facturas)"});
    for (const auto& [lines, doc] : std::array<std::pair<const char*, const char*>, 4>{
             {{"HOrdenes_Lineas", "HOrdenes"},
              {"HPedidos_Clientes_Lineas", "HPedidos_Clientes"},
              {"HAlbaranes_Lineas", "HAlbaranes"},
              {"HFacturas_Lineas", "HFacturas"}}})
        rules.push_back({std::string(lines) + ": a line of a document that does not exist",
                         std::string("SELECT ID, Numero FROM ") + lines + " WHERE Numero NOT IN (SELECT Numero FROM " +
                             doc + ")"});
    return rules;
}

// The series counters: each series' counter must be at or past the highest number
// the table holds in it, or NuevoCodigo's successor would collide.
std::vector<std::string> counterProblems(ConnPtr& cn) {
    static const std::array<std::pair<char, double>, 3> kSeries{{{'A', 0}, {'B', 10000}, {'C', 25000}}};
    std::vector<std::string> problems;
    for (const char* t : {"HOrdenes", "HPedidos_Clientes", "HAlbaranes", "HFacturas"}) {
        const auto counters =
            rowsOf(std::string("SELECT SerieA, SerieB, SerieC FROM Numeradores WHERE Tabla = '") + t + "'", cn);
        for (const auto& row : rowsOf(std::string("SELECT Serie, MAX(Numero) AS Ultimo FROM ") + t +
                                          " GROUP BY Serie",
                                      cn)) {
            if (row[0].isNull() || row[1].isNull()) continue;
            const std::string serie = rt::CStr(row[0]);
            for (std::size_t i = 0; i < kSeries.size(); ++i) {
                if (serie.size() != 1 || serie[0] != kSeries[i].first) continue;
                const Variant c = counters.empty() ? Variant() : counters[0][i];
                const double counter = c.isNull() || c.isEmpty() ? kSeries[i].second : rt::CDbl(c);
                const double last = rt::CDbl(row[1]);
                if (counter < last)
                    problems.push_back(std::string("Numeradores: the counter of ") + t + " series " + serie + " is " +
                                       text(Variant(counter)) + " but the table holds number " + text(row[1]));
            }
        }
    }
    return problems;
}

// ------------------------------------------------------------------ euros and move

// Runs `work` in one transaction on one connection of the data service: committed,
// or rolled back for a dry run or a failure.
void inOneTransaction(bool dryRun, const std::function<void(ConnPtr&)>& work) {
    ConnPtr cn = frame::svc::getConexion(4);
    cn->BeginTrans();
    try {
        work(cn);
    } catch (...) {
        cn->RollbackTrans();
        throw;
    }
    if (dryRun) cn->RollbackTrans();
    else cn->CommitTrans();
}

ObjectPtr create(const std::string& cls) { return Registry::global().create(cls); }
Variant connection(const ConnPtr& cn) { return Variant(std::static_pointer_cast<Object>(cn)); }

std::string amount(const Variant& v) { return v.isNull() ? std::string("0") : rt::Format(v, "#,##0.00"); }

int failed(const char* command, const Error& e, std::ostream& err) {
    err << "historicos " << command << ": " << e.description() << " (error " << e.number() << ", " << e.source()
        << ")\n";
    return 1;
}

}  // namespace

int checkCommand(const ArchiveOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env(o, trace, err);
        env.requireArchive();
        ConnPtr cn = frame::svc::getConexion(4);
        int broken = 0;
        const auto engine = cn->session().integrityCheck();
        out << "engine check: " << (engine.empty() ? "sound" : std::to_string(engine.size()) + " problem(s)") << "\n";
        for (const auto& p : engine) out << "  BROKEN " << p << "\n";
        broken += static_cast<int>(engine.size());
        for (const LinkRule& rule : linkRules()) {
            const auto rows = rowsOf(rule.sql, cn);
            if (rows.empty()) continue;
            broken += static_cast<int>(rows.size());
            out << "  BROKEN " << rule.what << ": " << rows.size() << " row(s), e.g.";
            for (std::size_t i = 0; i < rows.size() && i < 5; ++i) {
                out << (i ? "; " : " ");
                for (std::size_t k = 0; k < rows[i].size(); ++k) out << (k ? " " : "") << text(rows[i][k]);
            }
            out << "\n";
        }
        for (const auto& p : counterProblems(cn)) {
            out << "  BROKEN " << p << "\n";
            ++broken;
        }
        out << (broken ? std::to_string(broken) + " broken" : std::string("every link between documents holds"))
            << "\n";
        return broken ? 1 : 0;
    } catch (const Error& e) {
        return failed("check", e, err);
    }
}

int eurosCommand(const EurosOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env(o.archive, trace, err);
        env.requireArchive();
        // What the conversion touches, summed before and after inside the transaction.
        const std::array<std::pair<std::string, std::string>, 2> sums{
            {{"HOrdenes", "SELECT COUNT(*) AS N, SUM(Total) AS S FROM HOrdenes"},
             {"HOrdenes_Lineas", "SELECT COUNT(*) AS N, SUM(Importe) AS S FROM HOrdenes_Lineas"}}};
        inOneTransaction(o.dryRun, [&](ConnPtr& cn) {
            std::vector<std::vector<Variant>> before;
            for (const auto& s : sums) before.push_back(rowsOf(s.second, cn).at(0));
            // Totals and lines on one connection, so they stand or fall together.
            ProgressLine progress(err, "classes converted", ProgressLine::forStandardError(err));
            progress.update(0, 2);
            invoke(create("ClsOrdenes"), "ActualizarEuros", {{"cnnActive", connection(cn)}});
            progress.update(1, 2);
            invoke(create("ClsOrdenesLineas"), "ActualizarEuros", {{"cnnActive", connection(cn)}});
            progress.update(2, 2);
            for (std::size_t i = 0; i < sums.size(); ++i) {
                const auto after = rowsOf(sums[i].second, cn).at(0);
                out << sums[i].first << ": " << text(after[0]) << " rows, "
                    << (i == 0 ? "sum of Total " : "sum of Importe ") << amount(before[i][1]) << " -> "
                    << amount(after[1]) << "\n";
            }
        });
        out << (o.dryRun ? "dry run: nothing was changed\n" : "converted to euros at 166,386 (run it once only)\n");
        return 0;
    } catch (const Error& e) {
        return failed("euros", e, err);
    }
}

int moveCommand(const MoveOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env(o.archive, trace, err);
        env.requireArchive();
        const Variant closing(rt::CLng(Variant(o.closing)));
        const std::string member = o.toHistory ? "Mover_A_Historicos" : "Mover_De_Historicos";
        inOneTransaction(o.dryRun, [&](ConnPtr& cn) {
            for (const char* cls : {"ClsPedidosCliCabecera", "ClsAlbaranesCabecera", "ClsFacturasCabecera"}) {
                const ObjectPtr obj = create(cls);
                const std::string table(dynamic_cast<frame::RecordClass&>(*obj).variants().table);
                auto count = [&](const std::string& t) {
                    return rt::CLng(rowsOf("SELECT COUNT(*) AS N FROM " + t + " WHERE CIERRE = " + text(closing), cn)
                                        .at(0)
                                        .at(0));
                };
                const int32_t h0 = count(table), hh0 = count("H" + table);
                invoke(obj, member, {{"vId", closing}, {"cnnActive", connection(cn)}});
                out << table << " / H" << table << ": " << h0 << " / " << hh0 << " -> " << count(table) << " / "
                    << count("H" + table) << "\n";
            }
        });
        out << (o.dryRun ? "dry run: nothing was moved\n" : "moved\n");
        return 0;
    } catch (const Error& e) {
        return failed("move", e, err);
    }
}

int copyCommand(const CopyOptions& o, std::ostream& out, std::ostream& err) {
    backend::DataSource from, to;
    from.path = o.from;
    to.path = o.to;
    const bool newFile = !backend::isServerSource(to) && !std::filesystem::exists(o.to);
    try {
        auto source = backend::openSession(from);
        auto target = backend::createArchive(to);
        const auto tables = backend::countArchive(*source);
        ProgressLine progress(err, "tables copied", ProgressLine::forStandardError(err));
        std::size_t done = 0;
        long long rows = 0;
        backend::copyArchive(*source, *target, o.force, [&](const backend::TableCopy& t) {
            progress.update(++done, tables.size());
            rows += t.rows;
        });
        out << "Copied " << rows << " rows in " << tables.size() << " tables from " << backend::shownAddress(o.from)
            << " to " << backend::shownAddress(o.to) << "; every table's row count and checksum agree.\n";
        return 0;
    } catch (const Error& e) {
        if (newFile) {
            std::error_code ec;
            for (const char* suffix : {"", "-journal", "-wal", "-shm"}) std::filesystem::remove(o.to + suffix, ec);
        }
        return failed("copy", e, err);
    }
}

}  // namespace hist::host
