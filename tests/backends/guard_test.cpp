#include <gtest/gtest.h>

#include "archive_fixture.hpp"
#include "platform/error.hpp"

namespace hist {
namespace {

using backend::StatementKind;
using testing::Engine;
using testing::run;

// Every statement the guard must refuse, with the call kind it arrives through
// and a piece of the reason it must give.
struct Refusal {
    const char* sql;
    StatementKind kind;
    const char* why;
};

class Guard : public testing::EngineTest {
protected:
    void SetUp() override {
        testing::EngineTest::SetUp();
        if (HasFatalFailure()) return;
        // A table the catalog does not know, made behind the library's back.
        behindTheBack("CREATE TABLE Intrusa (x INTEGER); INSERT INTO Intrusa VALUES (1);");
        s->execute("INSERT INTO HFacturas (Numero, Serie) VALUES (1, 'A')");
        s->execute("INSERT INTO HFacturas (Numero, Serie) VALUES (2, 'B')");
    }
    bool server() const { return GetParam() == Engine::Postgres; }
    std::string behindTheBack(const char* sql) {
        const std::string where = archive->source().path;
        return server() ? testing::PgCluster::run(where, sql) : testing::rawExec(where, sql);
    }
    // The archive's content and schema, to show a refusal changed nothing.
    std::string snapshot() {
        if (server())
            return behindTheBack(
                "SELECT (SELECT string_agg(c.relname || ':' || c.relkind::text, '|' ORDER BY c.relname) FROM pg_class c "
                "WHERE c.relnamespace = 'public'::regnamespace) || E'\\n' || (SELECT string_agg(Numero || Serie, ',' "
                "ORDER BY Numero) FROM HFacturas) || E'\\n' || (SELECT count(*) FROM Intrusa) || E'\\n'");
        return behindTheBack(
            "SELECT group_concat(name || ':' || sql, '|') FROM sqlite_schema UNION ALL "
            "SELECT group_concat(Numero || Serie, ',') FROM (SELECT Numero, Serie FROM HFacturas "
            "ORDER BY Numero) UNION ALL SELECT count(*) FROM Intrusa");
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, Guard, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         testing::engineParamName);

TEST_P(Guard, RefusesAndLeavesTheArchiveUnchanged) {
    // Refused alike by both engines.
    std::vector<Refusal> cases = {
        {"SELECT Numero FROM HFacturas; DELETE FROM HFacturas", StatementKind::Read, "one statement"},
        {"DELETE FROM HFacturas WHERE Numero = 1; DELETE FROM HFacturas", StatementKind::Write, "one statement"},
        {"UPDATE HFacturas SET Serie = 'Z'; SELECT 1", StatementKind::Write, "one statement"},
        {"DELETE FROM HFacturas", StatementKind::Read, "reading call"},
        {"UPDATE HFacturas SET Serie = 'Z'", StatementKind::Read, "reading call"},
        {"SELECT Numero FROM HFacturas", StatementKind::Write, "writing call"},
        {"SELECT x FROM Intrusa", StatementKind::Read, "'Intrusa' is outside the archive catalog"},
        {"DELETE FROM Intrusa", StatementKind::Write, "'Intrusa' is outside the archive catalog"},
        {"INSERT INTO HFacturas (Numero) SELECT x FROM Intrusa", StatementKind::Write, "outside the archive catalog"},
        {"SELECT Numero FROM HFacturas AS F, Intrusa WHERE x = 1", StatementKind::Read, "'Intrusa' is outside"},
        {"DROP TABLE HFacturas", StatementKind::Write, "schema changes"},
        {"CREATE TABLE Otra (x)", StatementKind::Write, "schema changes"},
        {"ALTER TABLE HFacturas ADD COLUMN y", StatementKind::Write, "schema changes"},
        {"BEGIN", StatementKind::Write, "transaction"},
        {"COMMIT", StatementKind::Write, "transaction"},
    };
    const std::vector<Refusal> onFile = {
        {"SELECT name FROM sqlite_schema", StatementKind::Read, "outside the archive catalog"},
        {"PRAGMA writable_schema = 1", StatementKind::Write, "PRAGMA"},
        {"PRAGMA table_info(HFacturas)", StatementKind::Read, "PRAGMA"},
        {"ATTACH DATABASE 'otra.db' AS otra", StatementKind::Write, "ATTACH"},
        {"SELECT load_extension('x')", StatementKind::Read, "load_extension"},
        {"CREATE TRIGGER t AFTER INSERT ON HFacturas BEGIN DELETE FROM HFacturas; END", StatementKind::Write,
         "schema changes"},
    };
    const std::vector<Refusal> onServer = {
        {"SELECT relname FROM pg_class", StatementKind::Read, "'pg_class' is outside the archive catalog"},
        {"SELECT Numero FROM HFacturas, pg_catalog.pg_authid", StatementKind::Read, "outside the archive catalog"},
        {"DELETE FROM public.HFacturas", StatementKind::Write, "'public' is outside the archive catalog"},
        {"SELECT pg_sleep(0) FROM HFacturas", StatementKind::Read, "function 'pg_sleep'"},
        {"SELECT set_config('lock_timeout', '0', false)", StatementKind::Read, "function 'set_config'"},
        {"UPDATE HFacturas SET Serie = lo_import('/etc/passwd')", StatementKind::Write, "function 'lo_import'"},
        {"SELECT Numero INTO Copia FROM HFacturas", StatementKind::Read, "may not make a table"},
        {"COPY HFacturas TO STDOUT", StatementKind::Write, "COPY is not allowed"},
        {"TRUNCATE HFacturas", StatementKind::Write, "schema changes"},
        {"SET statement_timeout = 0", StatementKind::Write, "SET is not allowed"},
        {"WITH x AS (DELETE FROM HFacturas RETURNING *) SELECT * FROM x", StatementKind::Read, "WITH is not allowed"},
        {"ROLLBACK", StatementKind::Write, "transaction"},
    };
    for (const auto& c : server() ? onServer : onFile) cases.push_back(c);
    const std::string before = snapshot();
    ASSERT_NE(before.find("\n1A,2B\n1\n"), std::string::npos) << before;
    s->begin();  // refusals inside a transaction leave it usable
    for (const auto& c : cases) {
        try {
            if (c.kind == StatementKind::Read) run(*s, c.sql);
            else s->execute(c.sql);
            ADD_FAILURE() << "accepted: " << c.sql;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::SqlPermission) << c.sql << " -> " << e.description();
            EXPECT_TRUE(e.description().starts_with("Permission denied")) << e.description();
            EXPECT_NE(e.description().find(c.why), std::string::npos) << c.sql << " -> " << e.description();
        }
    }
    EXPECT_EQ(s->depth(), 1);
    s->rollback();
    EXPECT_EQ(snapshot(), before);
    // The session still works after the refusals; one statement may end in a semicolon.
    EXPECT_EQ(s->execute("UPDATE HFacturas SET Serie = 'C' WHERE Numero = 2;  "), 1);
    EXPECT_EQ(run(*s, "SELECT Numero FROM HFacturas WHERE Serie = 'c';").rows.size(), 1u);
    EXPECT_EQ(run(*s, "SELECT MAX(Numero) AS N, COUNT(*) FROM HFacturas WHERE Serie Like 'a'").rows.size(), 1u);
}

}  // namespace
}  // namespace hist
