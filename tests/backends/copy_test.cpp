// Moving a whole archive between engines: what arrives is what left, row for row,
// and a copy that fails leaves the target as it was.
#include <gtest/gtest.h>

#include <algorithm>

#include "archive_fixture.hpp"
#include "backends/copy.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"

namespace hist {
namespace {

using testing::Engine;
using testing::EngineArchive;
using testing::Rows;

// Every catalog table's rows as text, sorted, without the hidden row identities.
std::vector<Rows> contents(backend::Session& s) {
    std::vector<Rows> out;
    for (const sql::Table& t : sql::catalog().tables()) {
        std::string list;
        for (const sql::Column& c : t.columns) list += (list.empty() ? "" : ", ") + c.name;
        auto r = testing::run(s, "SELECT " + list + " FROM " + t.name);
        for (auto& row : r.rows) row.resize(t.columns.size());
        std::sort(r.rows.begin(), r.rows.end());
        out.push_back(std::move(r.rows));
    }
    return out;
}

const char* const kRows[] = {
    "INSERT INTO HOrdenes (Numero, Serie, Fecha, Hora_Entrega, Base, Total, Repeticion, Imagenes, Referencia) "
    "VALUES (1, 'A', '2003-02-01 10:30:00', '1899-12-30 22:15:00', 445.08255, 0.1, -1, 0, 'Ñandú ''Élan''')",
    "INSERT INTO HOrdenes (Numero, Serie, Base) VALUES (2, 'B', -1e-7)",
    "INSERT INTO HOrdenes_Lineas (Numero, ID, Descripcion, Cantidad) VALUES (1, 1, 'corona de zirconio', 2)",
    "INSERT INTO Articulos (Codigo, Recargo) VALUES ('A1', NULL)",
    "INSERT INTO HOrdenes_Odontograma (Codigo, P11, P12) VALUES (1, -1, 0)",
};

class ArchiveCopy : public ::testing::Test {
protected:
    void SetUp() override {
        try {
            file = std::make_unique<EngineArchive>(Engine::Sqlite);
            server = std::make_unique<EngineArchive>(Engine::Postgres);
            back = std::make_unique<EngineArchive>(Engine::Sqlite);
        } catch (const std::runtime_error& e) {
            GTEST_FAIL() << e.what();
        }
        a = backend::openSession(file->source());
        b = backend::openSession(server->source());
        c = backend::openSession(back->source());
        for (const char* sql : kRows) a->execute(sql);
    }
    std::unique_ptr<EngineArchive> file, server, back;
    std::unique_ptr<backend::Session> a, b, c;
};

TEST_F(ArchiveCopy, FromTheFileToTheServerAndBackIsIdenticalRowForRow) {
    std::vector<std::string> told;
    auto copied = backend::copyArchive(*a, *b, false, [&](const backend::TableCopy& t) { told.push_back(t.table); });
    EXPECT_EQ(told.size(), sql::catalog().tables().size());
    long long total = 0;
    for (const auto& t : copied) total += t.rows;
    EXPECT_EQ(total, static_cast<long long>(std::size(kRows)));
    EXPECT_EQ(contents(*b), contents(*a));
    backend::copyArchive(*b, *c);
    EXPECT_EQ(contents(*c), contents(*a));
    // The checksum the copy compares: equal on both engines, and it sees one changed value.
    for (const sql::Table& t : sql::catalog().tables())
        EXPECT_EQ(backend::tableChecksum(*a, t.name), backend::tableChecksum(*b, t.name)) << t.name;
    const uint64_t before = backend::tableChecksum(*b, "HOrdenes");
    b->execute("UPDATE HOrdenes SET Base = 445.0825 WHERE Numero = 1");
    EXPECT_NE(backend::tableChecksum(*b, "HOrdenes"), before);
    b->execute("UPDATE HOrdenes SET Base = 445.08255 WHERE Numero = 1");
    EXPECT_EQ(backend::tableChecksum(*b, "HOrdenes"), before);
    // Written in the stored forms: the date, the time alone, the accented text, the tiny double.
    EXPECT_EQ(testing::run(*c, "SELECT Fecha, Hora_Entrega, Referencia FROM HOrdenes WHERE Numero = 1").rows.at(0).at(2),
              "Ñandú 'Élan'");
    EXPECT_EQ(testing::run(*b, "SELECT Base FROM HOrdenes WHERE Numero = 2").rows.at(0).at(0), "-1e-07");
}

TEST_F(ArchiveCopy, ATargetWithRowsIsRefusedUnlessReplacedAndAFailedCopyLeavesItAsItWas) {
    backend::copyArchive(*a, *b);
    const auto before = contents(*b);
    try {
        backend::copyArchive(*a, *b);
        ADD_FAILURE() << "copied over rows";
    } catch (const Error& e) {
        EXPECT_NE(e.description().find("already holds rows"), std::string::npos) << e.description();
    }
    EXPECT_EQ(contents(*b), before);
    // A text the file holds in a number column (its engine keeps what does not convert)
    // fails the copy midway, after other tables were written.
    a->execute("UPDATE HOrdenes_Lineas SET Cantidad = 'dos'");
    EXPECT_THROW(backend::copyArchive(*a, *b, true), Error);
    EXPECT_EQ(contents(*b), before);
    EXPECT_EQ(b->depth(), 0);
    // Replacing: the target's rows give way to the source's.
    a->execute("UPDATE HOrdenes_Lineas SET Cantidad = 2");
    a->execute("DELETE FROM Articulos");
    backend::copyArchive(*a, *b, true);
    EXPECT_EQ(contents(*b), contents(*a));
}

}  // namespace
}  // namespace hist
