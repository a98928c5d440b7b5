#include "host/demo.hpp"

#include "tools/tool_members.hpp"

#include <filesystem>
#include <iostream>
#include <optional>

#include "ado/recordset.hpp"
#include "backends/engine.hpp"
#include "frame/services/config.hpp"
#include "frame/services/data_service.hpp"
#include "frame/services/helpers.hpp"
#include "host/archive_env.hpp"
#include "host/grid_columns.hpp"
#include "platform/host_objects.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "sample/sample.hpp"
#include "satellites/comentarios.hpp"

namespace hist::host {

namespace {

// The newest document that has comments: its number and date, from its comment table.
struct Newest {
    Variant numero;
    DateValue fecha;
};

std::optional<Newest> newestCommented(const std::string& commentTable) {
    services::ClsServicioDatos ds;
    Variant sql("SELECT Codigo, Fecha FROM " + commentTable + " WHERE Fecha Is Not Null");
    services::RsPtr rs;
    services::ConnPtr cn;
    ds.AbrirRs(4, sql, rs, cn);
    if (rs->Bof() && rs->Eof()) return std::nullopt;
    rs->SetSort("Fecha DESC, Codigo DESC");
    rs->MoveFirst();  // Sort keeps the current row; the newest is now the first
    return Newest{rs->value("Codigo"), DateValue{rt::CDate(rs->value("Fecha"))}};
}

// Opens a comment class on one document and prints its rows, as a bound grid shows them.
void showComments(frame::RecordClass& cls, const std::string& title, const Newest& doc, std::ostream& out) {
    services::ConnPtr cn;
    std::string keyword = "seleccion";
    Variant id = doc.numero;
    DateValue fecha = doc.fecha;
    cls.IniciaRs(cn, keyword, id, fecha);
    ado::Recordset& rs = *cls.primaryRecordset();
    out << "\n" << title << " " << rt::CStr(doc.numero) << " (" << rt::Format(Variant(doc.fecha), "Long Date")
        << "): " << rs.RecordCount() << " comment(s) through " << cls.typeName() << "\n";
    if (!cls.ExistenRegistros()) return;
    cls.MoveFirst();
    while (!rs.Eof()) {
        Variant text = rs.value("Comentarios");
        out << "  " << rt::CStr(rs.value("Id")) << ". " << (text.isNull() ? std::string("(sin texto)") : rt::CStr(text))
            << "\n";
        rs.MoveNext();
    }
}

// Prints the whole comment table of work orders as the HTML listing a form's grid
// would print, with one grid column per field, and tells where it went.
void writeListing(std::ostream& out) {
    satellites::ClsOrdenesComentarios cls;
    services::ConnPtr cn;
    std::string keyword = "todos";
    Variant id;
    DateValue fecha;
    cls.IniciaRs(cn, keyword, id, fecha);
    Variant grid(std::static_pointer_cast<Object>(columnsOfFields(*cls.primaryRecordset())));
    bool doClone = true, filter = false;
    tools::toHtmlGrid(cls, grid, doClone, keyword, filter);
    out << "\nListing of " << cls.sClassName() << " (" << cls.primaryRecordset()->RecordCount()
        << " rows) written with ToHtmlGrid to\n  "
        << services::ClsRutasUsuario::shared()->GetRutaFichero(cls.sClassName() + ".htm") << "\n";
}

}  // namespace

int demoCommand(const DemoOptions& o, bool trace, std::ostream& out, std::ostream& err) {
    try {
        ArchiveEnvironment env({o.db, o.config}, trace, err);
        const std::string& path = env.archivePath();

        // A missing archive, or one without rows (as the host leaves it when it runs
        // first), gets the sample; an archive with any row is shown as it is.
        const bool missing = !std::filesystem::exists(path);
        // An existing file must be an archive: refused here, by name, before anything reads it.
        if (!missing) env.requireArchive();
        if (missing || !sample::holdsRows(path)) {
            if (missing) std::filesystem::create_directories(std::filesystem::path(path).parent_path());
            out << (missing ? "Creating the sample archive " : "Filling the empty archive ") << path
                << " with the sample (" << o.orders << " work orders)...\n";
            sample::Options so;
            so.orders = o.orders;
            so.seed = o.seed;
            sample::generate(path, so);
        }
        sample::summary(path, out);

        // Each document kind's comment class, opened on its newest commented document.
        const std::pair<std::shared_ptr<frame::RecordClass>, const char*> kinds[] = {
            {std::make_shared<satellites::ClsOrdenesComentarios>(), "work order"},
            {std::make_shared<satellites::ClsPedidosCliComent>(), "customer order"},
            {std::make_shared<satellites::ClsAlbaranesComentarios>(), "delivery note"},
            {std::make_shared<satellites::ClsFacturasComentarios>(), "invoice"},
        };
        for (const auto& [cls, kind] : kinds) {
            if (auto doc = newestCommented(cls->sClassName()))
                showComments(*cls, std::string("Newest commented ") + kind, *doc, out);
        }
        writeListing(out);
        return 0;
    } catch (const Error& e) {
        err << "historicos demo: " << e.description() << " (error " << e.number() << ", " << e.source() << ")\n";
        return 1;
    } catch (const std::exception& e) {
        err << "historicos demo: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace hist::host
