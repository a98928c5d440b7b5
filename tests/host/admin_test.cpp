// The administrator's commands on a small sample archive: `classes` from the
// registry, `list` through the class's IniciaRs and AplyFilter in each format, and
// their failures as exit codes with a message.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "cli_run.hpp"

namespace hist {
namespace {

using test::runCommandLine;

class Admin : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home_ = new test::DataHome;
        db_ = (home_->path / "archivo.db").string();
        ASSERT_EQ(runCommandLine({"init", "--db", db_, "--sample", "--orders", "40"}).code, 0);
        // A comment whose text needs quoting in CSV and escaping in JSON.
        sqlite3* h = nullptr;
        ASSERT_EQ(sqlite3_open(db_.c_str(), &h), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(h,
                               "INSERT INTO HOrdenes_Comentarios (Id, Codigo, Comentarios) "
                               "VALUES (900, 424242, 'dice \"ok\", y\nsigue')",
                               nullptr, nullptr, nullptr),
                  SQLITE_OK);
        sqlite3_close(h);
    }
    static void TearDownTestSuite() { delete home_; }

    static test::CliRun list(std::vector<std::string> args) {
        args.insert(args.begin(), {"list", "ClsOrdenesComentarios", "--db", db_});
        return runCommandLine(args);
    }

    static inline test::DataHome* home_ = nullptr;
    static inline std::string db_;
};

TEST_F(Admin, ClassesComeFromTheRegistry) {
    const auto all = runCommandLine({"classes"});
    ASSERT_EQ(all.code, 0) << all.err;
    EXPECT_NE(all.out.find("  ClsOrdenesComentarios  HOrdenes_Comentarios  42 members  keywords \"seleccion\", "
                           "\"ninguno\"\n"),
              std::string::npos)
        << all.out;
    EXPECT_NE(all.out.find("Other classes\n"), std::string::npos);

    const auto one = runCommandLine({"classes", "clsordenescomentarios"});
    ASSERT_EQ(one.code, 0) << one.err;
    EXPECT_NE(one.out.find("  table     HOrdenes_Comentarios\n"), std::string::npos) << one.out;
    EXPECT_NE(one.out.find("    IniciaRs([ByRef cnnActive As Object], [ByRef sSelecSql As String], [ByRef id], "
                           "[ByRef dtFecha As Date])\n"),
              std::string::npos)
        << one.out;
    // Unlisted members (the data-source plumbing) stay out.
    EXPECT_EQ(one.out.find("DataMemberChanged"), std::string::npos);

    const auto unknown = runCommandLine({"classes", "ClsNada"});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_NE(unknown.err.find("No class is named \"ClsNada\""), std::string::npos);
}

TEST_F(Admin, ListFiltersAndSortsTheClassSelection) {
    const auto r = list({"--filter", "Código >= 10000", "--sort", "Código DESC"});
    ASSERT_EQ(r.code, 0) << r.err;
    std::istringstream lines(r.out);
    std::string header, rule, row;
    std::getline(lines, header);
    std::getline(lines, rule);
    EXPECT_EQ(header.rfind("Id ", 0), 0u) << header;
    EXPECT_NE(header.find(" Código  Comentarios "), std::string::npos) << header;
    long previous = 1L << 30;
    int rows = 0;
    while (std::getline(lines, row) && row.front() != '(') {
        std::istringstream cells(row);
        long id = 0, codigo = 0;
        cells >> id >> codigo;
        EXPECT_GE(codigo, 10000) << row;
        EXPECT_LE(codigo, previous) << row;
        previous = codigo;
        ++rows;
    }
    EXPECT_GT(rows, 0);
    EXPECT_EQ(row, "(" + std::to_string(rows) + " row" + (rows == 1 ? "" : "s") + ")");
    // Line breaks inside a value do not break the table's rows.
    EXPECT_NE(list({"--filter", "Código = 424242"}).out.find("dice \"ok\", y sigue"), std::string::npos);
}

TEST_F(Admin, ListWritesCsvJsonAndTheClassesOwnListing) {
    const auto csv = list({"--keyword", "seleccion", "--id", "424242", "--format", "csv"});
    ASSERT_EQ(csv.code, 0) << csv.err;
    // The keyword's date is unset, so "seleccion" finds no row: the header alone.
    EXPECT_EQ(csv.out, "Id,Código,Comentarios,Descripción,Fecha\r\n");
    const auto quoted = list({"--filter", "Código = 424242", "--format", "csv"});
    EXPECT_EQ(quoted.out, "Id,Código,Comentarios,Descripción,Fecha\r\n900,424242,\"dice \"\"ok\"\", y\nsigue\",,\r\n");

    const auto json = list({"--filter", "Código = 424242", "--format", "json"});
    EXPECT_EQ(json.out,
              "{\"Id\":900,\"Código\":424242,\"Comentarios\":\"dice \\\"ok\\\", y\\nsigue\",\"Descripción\":null,"
              "\"Fecha\":null}\n");

    const std::string out = (home_->path / "listado.htm").string();
    const auto html = list({"--format", "html", "--out", out});
    ASSERT_EQ(html.code, 0) << html.err;
    std::ifstream copy(out, std::ios::binary), written(home_->path / "historicos" / "HOrdenes_Comentarios.htm",
                                                       std::ios::binary);
    std::stringstream a, b;
    a << copy.rdbuf();
    b << written.rdbuf();
    EXPECT_GT(a.str().size(), 1000u);
    EXPECT_EQ(a.str(), b.str());
}

TEST_F(Admin, ListFailuresAreExitCodesWithTheirReason) {
    struct Case {
        std::vector<std::string> args;
        int code;
        const char* says;
    };
    const Case cases[] = {
        {{"list", "ClsNada", "--db", db_}, 1, "No class is named \"ClsNada\""},
        {{"list", "ClsServicioDatos", "--db", db_}, 1, "is not a record class"},
        {{"list", "ClsOrdenesComentarios", "--db", db_, "--filter", "Nada = 1"}, 1, "Field: Nada (error 3265"},
        {{"list", "ClsOrdenesComentarios", "--db", db_, "--format", "xml"}, 2, "--format"},
        {{"list", "ClsOrdenesComentarios", "--db", (home_->path / "missing.db").string()}, 1, "missing.db"},
        {{"list", "ClsOrdenesComentarios", "--db", db_, "--out", "/nonexistent/dir/x"}, 1, "/nonexistent/dir/x"},
        {{"list", "ClsOrdenesComentarios", "--db", db_, "--out", "/dev/full"}, 1, "Disk full"},
        {{"list"}, 2, "CLASS is required"},
    };
    for (const Case& c : cases) {
        const auto r = runCommandLine(c.args);
        EXPECT_EQ(r.code, c.code) << c.args.back() << "\n" << r.err;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    }
}

// Every write that reached the engine, with who sent it; a rolled-back transaction
// leaves nothing, a committed one its writes; `audit` reads the log back.
TEST_F(Admin, TheAuditLogHoldsCommittedWritesAndAuditReadsIt) {
    const std::string log = (home_->path / "audit.jsonl").string();
    const std::string config = (home_->path / "audit-config.json").string();
    std::ofstream(config) << "{\"auditLog\": \"" << log << "\"}";
    const std::string requests =
        "{\"id\":1,\"new\":\"ClsOrdenesComentarios\",\"as\":\"c\"}\n"
        "{\"id\":2,\"call\":\"c.IniciaRs\",\"args\":[{\"nothing\":true},\"ninguno\"]}\n"
        "{\"id\":3,\"call\":\"c.CnnBeginTrans\"}\n"
        "{\"id\":4,\"call\":\"c.DeleteAll\",\"args\":[31337,{\"date\":\"2026-01-01\"},{\"ref\":\"r1\"}]}\n"
        "{\"id\":5,\"call\":\"c.CnnRollbackTrans\"}\n"
        "{\"id\":6,\"call\":\"c.CnnBeginTrans\"}\n"
        "{\"id\":7,\"call\":\"c.ConvertirSerie\",\"args\":[31338,31339,\"A\",{\"ref\":\"r1\"}]}\n"
        "{\"id\":8,\"call\":\"c.CnnCommitTrans\"}\n"
        "{\"id\":9,\"call\":\"c.Insertar\",\"args\":[31340,\"nota\",\"d\",{\"date\":\"2026-01-02\"}]}\n";
    const auto host = runCommandLine({"host", "--db", db_, "--config", config, "--user", "ana"}, requests);
    ASSERT_EQ(host.code, 0) << host.err;
    EXPECT_EQ(host.out.find("\"error\""), std::string::npos) << host.out;

    const auto all = runCommandLine({"audit", "--config", config, "--json"});
    ASSERT_EQ(all.code, 0) << all.err;
    std::istringstream lines(all.out);
    std::vector<nlohmann::json> entries;
    for (std::string l; std::getline(lines, l);) entries.push_back(nlohmann::json::parse(l));
    ASSERT_EQ(entries.size(), 2u) << all.out;
    EXPECT_EQ(entries[0]["member"], "ConvertirSerie");
    EXPECT_EQ(entries[0]["text"], "UPDATE HOrdenes_Comentarios SET Codigo = 31339 WHERE(Codigo = 31338)");
    EXPECT_EQ(entries[1]["member"], "Insertar");
    EXPECT_EQ(entries[1]["class"], "ClsOrdenesComentarios");
    EXPECT_EQ(entries[1]["user"], "ana");
    EXPECT_NE(entries[1]["text"].get<std::string>().find("'nota'"), std::string::npos);

    EXPECT_EQ(runCommandLine({"audit", "--log", log, "--class", "ClsFacturasComentarios"}).out, "");
    EXPECT_EQ(runCommandLine({"audit", "--log", log, "--since", "9999-01-01"}).out, "");
    const auto readable = runCommandLine({"audit", "--log", log, "--class", "clsordenescomentarios"});
    EXPECT_NE(readable.out.find("  ana  ClsOrdenesComentarios.ConvertirSerie\n    UPDATE HOrdenes_Comentarios"),
              std::string::npos)
        << readable.out;

    std::ofstream(log, std::ios::app) << "not json\n";
    const auto damaged = runCommandLine({"audit", "--log", log});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_NE(damaged.err.find("line 3 of " + log + " is not an audit entry"), std::string::npos) << damaged.err;
    EXPECT_EQ(runCommandLine({"audit", "--log", (home_->path / "none").string()}).code, 1);
}

// The archive's upkeep. Each case works on a copy of the sample so the others keep theirs.
class Upkeep : public Admin {
protected:
    void SetUp() override {
        copy_ = (home_->path / "upkeep.db").string();
        std::filesystem::copy_file(db_, copy_, std::filesystem::copy_options::overwrite_existing);
    }
    void exec(const std::string& sql) {
        sqlite3* h = nullptr;
        ASSERT_EQ(sqlite3_open(copy_.c_str(), &h), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(h, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_close(h);
    }
    std::string copy_;
};

TEST_F(Upkeep, CheckFindsEveryBrokenLinkAndSaysWhich) {
    const auto sound = runCommandLine({"check", "--db", copy_});
    EXPECT_EQ(sound.code, 0) << sound.out << sound.err;
    EXPECT_NE(sound.out.find("engine check: sound\nevery link between documents holds\n"), std::string::npos);

    exec("UPDATE HFacturas_Lineas SET Numero = 777777 WHERE ID = (SELECT MIN(ID) FROM HFacturas_Lineas)");
    exec("UPDATE HOrdenes SET Doc_F = 888888 WHERE Numero = (SELECT MIN(Numero) FROM HOrdenes WHERE Facturado = 4)");
    exec("UPDATE Numeradores SET SerieA = 1 WHERE Tabla = 'HAlbaranes' COLLATE BINARY");
    exec("INSERT INTO Recibos (Id, Numero) VALUES (999001, 999999)");
    const auto broken = runCommandLine({"check", "--db", copy_});
    EXPECT_EQ(broken.code, 1);
    for (const char* says :
         {"BROKEN HFacturas_Lineas: a line of a document that does not exist: 1 row(s), e.g. ",
          "BROKEN HOrdenes: invoiced (Facturado = 4) by an invoice that does not exist: 1 row(s), e.g. ",
          " 888888\n", "BROKEN Numeradores: the counter of HAlbaranes series A is 1 but the table holds number ",
          "BROKEN Recibos: a receipt of an invoice that does not exist: 1 row(s), e.g. 999001 999999\n",
          "\n4 broken\n"})
        EXPECT_NE(broken.out.find(says), std::string::npos) << says << "\n" << broken.out;
}

TEST_F(Upkeep, EurosConvertsTotalsAndLinesTogetherAndADryRunChangesNothing) {
    exec("UPDATE HOrdenes SET Total = 166386");
    exec("UPDATE HOrdenes_Lineas SET Importe = 332772");
    const auto dry = runCommandLine({"euros", "--dry-run", "--db", copy_});
    ASSERT_EQ(dry.code, 0) << dry.err;
    const std::string before = dry.out;
    EXPECT_NE(before.find(" rows, sum of Total "), std::string::npos) << before;
    // Every order is 1.000,00 euros and every line 2.000,00 after the conversion.
    const auto real = runCommandLine({"euros", "--db", copy_});
    EXPECT_EQ(real.out.substr(0, real.out.rfind('\n', real.out.size() - 2)),
              before.substr(0, before.rfind('\n', before.size() - 2)));
    const auto again = runCommandLine({"euros", "--dry-run", "--db", copy_});
    const std::size_t orders = std::stoul(again.out.substr(again.out.find(": ") + 2));
    EXPECT_NE(again.out.find("sum of Total " + std::to_string(orders) + ".000,00 -> "), std::string::npos)
        << again.out;
}

TEST_F(Upkeep, CopyMovesAWholeArchiveAndRefusesToMixTwo) {
    const std::string target = (home_->path / "copia.db").string();
    std::filesystem::remove(target);
    const auto copied = runCommandLine({"copy", "--from", copy_, "--to", target});
    ASSERT_EQ(copied.code, 0) << copied.err;
    EXPECT_NE(copied.out.find("every table's row count and checksum agree"), std::string::npos) << copied.out;
    EXPECT_EQ(runCommandLine({"list", "ClsOrdenes", "--db", target, "--format", "csv"}).out,
              runCommandLine({"list", "ClsOrdenes", "--db", copy_, "--format", "csv"}).out);
    EXPECT_EQ(runCommandLine({"check", "--db", target}).code, 0);

    const auto again = runCommandLine({"copy", "--from", copy_, "--to", target});
    EXPECT_EQ(again.code, 1);
    EXPECT_NE(again.err.find("already holds rows"), std::string::npos) << again.err;
    EXPECT_EQ(runCommandLine({"copy", "--from", copy_, "--to", target, "--force"}).code, 0);

    // A failed copy leaves no new target behind.
    const std::string none = (home_->path / "nunca.db").string();
    EXPECT_EQ(runCommandLine({"copy", "--from", (home_->path / "falta.db").string(), "--to", none}).code, 1);
    EXPECT_FALSE(std::filesystem::exists(none));
    EXPECT_EQ(runCommandLine({"copy", "--from", copy_}).code, 2);
}

TEST_F(Upkeep, MoveGoesToTheSecondLevelAndBackInOneTransaction) {
    exec("UPDATE HFacturas_Cabecera SET CIERRE = 4242 WHERE Id IN (SELECT Id FROM HFacturas_Cabecera LIMIT 3)");
    const auto dry = runCommandLine({"move", "4242", "--to-history", "--dry-run", "--db", copy_});
    ASSERT_EQ(dry.code, 0) << dry.err;
    EXPECT_NE(dry.out.find("HFacturas_Cabecera / HHFacturas_Cabecera: 3 / 0 -> 0 / 3\n"), std::string::npos)
        << dry.out;
    // The dry run left both levels as they were.
    EXPECT_NE(runCommandLine({"move", "4242", "--to-history", "--db", copy_})
                  .out.find("HFacturas_Cabecera / HHFacturas_Cabecera: 3 / 0 -> 0 / 3\n"),
              std::string::npos);
    EXPECT_NE(runCommandLine({"move", "4242", "--back", "--db", copy_})
                  .out.find("HFacturas_Cabecera / HHFacturas_Cabecera: 0 / 3 -> 3 / 0\n"),
              std::string::npos);
    EXPECT_EQ(runCommandLine({"move", "4242", "--db", copy_}).code, 2);
    EXPECT_EQ(runCommandLine({"move", "x", "--back", "--db", copy_}).code, 2);
}

}  // namespace
}  // namespace hist
