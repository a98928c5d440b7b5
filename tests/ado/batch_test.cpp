// Connections and batch write-back on real archives (files, and the seeded tests on
// a server database as well).
#include <gtest/gtest.h>

#include "ado_fixture.hpp"

namespace hist {
namespace {

using testing::errorOf;
using testing::errorsOf;
using testing::Engine;
using Rows = std::vector<std::string>;

constexpr const char* kSelect =
    "SELECT Id, Codigo AS Código, Descripcion AS Descripción, Fecha FROM HOrdenes_Comentarios WHERE Codigo > 0";

struct Archive {
    explicit Archive(Engine e = Engine::Sqlite) : file(e) {}
    testing::EngineArchive file;
    std::shared_ptr<ado::Connection> connect() const {
        auto cn = std::make_shared<ado::Connection>();
        cn->Open(file.source(300));
        return cn;
    }
    std::shared_ptr<ado::Recordset> open(const std::shared_ptr<ado::Connection>& cn, const char* sql = kSelect) const {
        auto rs = std::make_shared<ado::Recordset>();
        rs->Open(sql, cn);
        return rs;
    }
    // "Id:Descripcion" of every row, read on a connection of its own.
    std::vector<std::string> rows() const {
        auto rs = open(connect(), "SELECT Id, Descripcion FROM HOrdenes_Comentarios ORDER BY Id");
        std::vector<std::string> out;
        while (!rs->Eof()) {
            const Variant d = rs->value("Descripcion");
            out.push_back(std::to_string(rs->value("Id").asLong()) + ":" + (d.isNull() ? "NULL" : d.asString()));
            rs->MoveNext();
        }
        return out;
    }
};

void seed(ado::Connection& cn) {
    cn.Execute("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Descripcion, Fecha) VALUES "
               "(1, 10, 'uno', '2026-11-22 00:00:00'), (2, 10, 'dos', '2026-11-22 00:00:00'), "
               "(3, 11, 'tres', NULL)");
}

// The seeded archive on each engine and a connection to it.
class Seeded : public ::testing::TestWithParam<Engine> {
protected:
    void SetUp() override { seed(*cn); }
    Archive a{GetParam()};
    std::shared_ptr<ado::Connection> cn = a.connect();
};
using Recordset = Seeded;
using UpdateBatch = Seeded;
using Requery = Seeded;
const auto kEngines = ::testing::Values(Engine::Sqlite, Engine::Postgres);
INSTANTIATE_TEST_SUITE_P(Engines, Recordset, kEngines, testing::engineParamName);
INSTANTIATE_TEST_SUITE_P(Engines, UpdateBatch, kEngines, testing::engineParamName);
INSTANTIATE_TEST_SUITE_P(Engines, Requery, kEngines, testing::engineParamName);

TEST(Connection, UnopenedIsHeldAndRefusesUse) {
    ado::Connection cn;
    EXPECT_EQ(cn.State(), 0);
    EXPECT_EQ(errorsOf({[&] { cn.BeginTrans(); }, [&] { cn.CommitTrans(); }, [&] { cn.RollbackTrans(); },
                        [&] { cn.Close(); }, [&] { cn.Execute("DELETE FROM Articulos WHERE 1 = 1"); }}),
              (std::vector<long>{err::ObjectClosed, err::ObjectClosed, err::ObjectClosed, err::ObjectClosed,
                                 err::InvalidConnection}));
}

TEST(Connection, TransactionsNestAndGuardClose) {
    Archive a;
    auto cn = a.connect();
    EXPECT_EQ(cn->State(), 1);
    EXPECT_EQ(errorOf([&] { cn->Open(a.file.source()); }), err::ObjectOpen);
    EXPECT_NE(errorOf([&] { cn->CommitTrans(); }), 0);  // no transaction begun
    EXPECT_EQ(cn->BeginTrans(), 1);
    seed(*cn);
    EXPECT_EQ(cn->BeginTrans(), 2);
    cn->Execute("DELETE FROM HOrdenes_Comentarios WHERE Id = 3");
    cn->RollbackTrans();  // only the inner level goes
    EXPECT_EQ(errorOf([&] { cn->Close(); }), err::InTransaction);
    cn->CommitTrans();
    EXPECT_EQ(a.rows(), (Rows{"1:uno", "2:dos", "3:tres"}));
    cn->Close();
    EXPECT_EQ(cn->State(), 0);
    EXPECT_EQ(errorOf([&] { cn->Close(); }), err::ObjectClosed);
}

TEST_P(Recordset, OpensWithTheSelectListNamesAndTypes) {
    auto rs = a.open(cn);
    EXPECT_EQ(rs->ActiveConnection(), cn);
    EXPECT_EQ(rs->RecordCount(), 3);
    auto f = rs->Fields();
    EXPECT_EQ(f->Count(), 4);  // the row identity is not shown
    EXPECT_EQ(f->Item(Variant(static_cast<int32_t>(1)))->Name(), "Código");
    EXPECT_EQ(f->Item(Variant("descripción"))->Type(), 202);
    EXPECT_EQ(f->Item(Variant("Descripción"))->DefinedSize(), 255);
    EXPECT_EQ(f->Item(Variant("Fecha"))->Type(), 7);
    EXPECT_EQ(f->Item(Variant("Fecha"))->Value(), Variant::date(46348));
    EXPECT_EQ(f->Item(Variant("Id"))->Value(), Variant(static_cast<int32_t>(1)));
}

TEST_P(UpdateBatch, EditsStayPendingUntilSentAndReportTheirStatements) {
    std::vector<std::string> seen;
    cn->setStatementHook([&](std::string_view op, std::string_view text, ado::Connection& c) {
        EXPECT_EQ(&c, cn.get());
        seen.push_back(std::string(op) + ": " + std::string(text));
    });
    auto rs = a.open(cn);
    rs->setValue("Descripción", "UNO");
    rs->MoveNext();
    rs->Delete(1);
    rs->AddNew();
    rs->setValue("Id", 4);
    rs->setValue("Código", "12");
    rs->setValue("Descripción", "cuatro");
    rs->Update();
    EXPECT_EQ(a.rows(), (Rows{"1:uno", "2:dos", "3:tres"}));  // nothing sent yet

    rs->UpdateBatch(3);
    EXPECT_EQ(a.rows(), (Rows{"1:UNO", "3:tres", "4:cuatro"}));
    EXPECT_EQ(rs->EditMode(), 0);
    // Each write is followed by reading the row back (new identity, defaults, stored forms).
    // The hidden row identity is the engine's own: rowid in the file, hist_rowid on the server.
    const std::string id = GetParam() == Engine::Sqlite ? "rowid" : "hist_rowid";
    const std::string readBack = "UpdateBatch: SELECT \"Id\", \"Codigo\", \"Descripcion\", \"Fecha\", " + id +
                                 " FROM \"HOrdenes_Comentarios\" WHERE " + id + " = ";
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "UpdateBatch: UPDATE \"HOrdenes_Comentarios\" SET \"Descripcion\" = ? WHERE " + id +
                            " = ? AND \"Descripcion\" = ?",
                        readBack + "1",
                        "UpdateBatch: DELETE FROM \"HOrdenes_Comentarios\" WHERE " + id + " = ?",
                        "UpdateBatch: INSERT INTO \"HOrdenes_Comentarios\" (\"Id\", \"Codigo\", \"Descripcion\") "
                        "VALUES (?, ?, ?)",
                        readBack + "4",
                    }));

    // The new row learned its identity: a later change reaches it.
    rs->setValue("Descripción", "CUATRO");
    rs->UpdateBatch(1);
    EXPECT_EQ(a.rows(), (Rows{"1:UNO", "3:tres", "4:CUATRO"}));
    EXPECT_EQ(rs->value("Código"), Variant(static_cast<int32_t>(12)));
}

TEST_P(UpdateBatch, ANewRowTakesTheColumnDefaultsItLeftOut) {
    auto rs = a.open(cn, "SELECT Codigo, Descripcion, Recargo FROM Articulos WHERE Codigo <> ''");
    rs->AddNew();
    rs->setValue("Codigo", "A1");
    rs->UpdateBatch(3);
    EXPECT_EQ(rs->value("Recargo"), Variant(0.0));  // the column's default, as the archive holds it
    rs->setValue("Recargo", 2.5);  // checked against that default, so no false conflict
    rs->UpdateBatch(3);
    auto check = a.open(a.connect(), "SELECT Recargo FROM Articulos WHERE Codigo = 'a1'");
    EXPECT_EQ(check->value("Recargo"), Variant(2.5));
}

TEST_P(UpdateBatch, ScopeOfCurrentRowAndOfAFilteredViewAndWhatCancelBatchUndoes) {
    auto rs = a.open(cn);
    rs->setValue("Descripción", "a");
    rs->MoveNext();
    rs->setValue("Descripción", "b");
    rs->UpdateBatch(1);  // only the current row
    EXPECT_EQ(a.rows(), (Rows{"1:uno", "2:b", "3:tres"}));

    rs->MoveLast();
    rs->setValue("Descripción", "c");
    rs->SetFilter(Variant("Código = 11"));
    rs->UpdateBatch(3);  // rows hidden by the filter stay pending
    EXPECT_EQ(a.rows(), (Rows{"1:uno", "2:b", "3:c"}));
    rs->SetFilter(Variant(""));
    EXPECT_EQ(rs->EditMode(), 1);
    rs->CancelBatch(3);
    EXPECT_EQ(rs->value("Descripción").asString(), "uno");

    // A deletion, a change and a new row, all undone without touching the archive;
    // the row before the new one is current again.
    rs->Delete(1);
    rs->MoveNext();
    rs->setValue("Descripción", "x");
    rs->AddNew();
    rs->CancelBatch(3);
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(rs->value("Id").asLong(), 2);
    EXPECT_EQ(rs->value("Descripción").asString(), "b");
    rs->UpdateBatch(3);
    EXPECT_EQ(a.rows(), (Rows{"1:uno", "2:b", "3:c"}));
}

TEST_P(UpdateBatch, AConflictBetweenTwoRecordsetsWritesNothing) {
    auto cn1 = cn, cn2 = a.connect();
    auto first = a.open(cn1);
    auto second = a.open(cn2);

    first->setValue("Descripción", "primero");
    first->UpdateBatch(3);

    second->MoveLast();
    second->setValue("Descripción", "otro");  // a row nobody else touched
    second->MoveFirst();
    second->setValue("Descripción", "segundo");  // the row changed since it was read
    std::string description;
    EXPECT_EQ(errorOf([&] { second->UpdateBatch(3); }, &description), err::SqlRowConflict);
    EXPECT_EQ(description.rfind("Row cannot be located for updating", 0), 0u) << description;
    EXPECT_EQ(a.rows(), (Rows{"1:primero", "2:dos", "3:tres"}));  // all or nothing
    EXPECT_EQ(second->EditMode(), 1);  // still pending
    EXPECT_EQ(cn2->TransactionLevel(), 0);

    // A row deleted by someone else is a conflict as well.
    auto third = a.open(cn2);
    cn1->Execute("DELETE FROM HOrdenes_Comentarios WHERE Id = 2");
    third->MoveNext();
    third->Delete(1);
    EXPECT_EQ(errorOf([&] { third->UpdateBatch(3); }), err::SqlRowConflict);

    // Inside the caller's transaction the batch is a savepoint that leaves it open.
    second->CancelBatch(3);
    cn2->BeginTrans();
    second->MoveLast();
    second->setValue("Descripción", "en transacción");
    second->UpdateBatch(3);
    EXPECT_EQ(cn2->TransactionLevel(), 1);
    cn2->RollbackTrans();
    EXPECT_EQ(a.rows(), (Rows{"1:primero", "3:tres"}));
}

// The group filters show rows by what happened to them, and the group form of
// UpdateBatch, CancelBatch and Delete acts on what such a filter shows.
TEST(FilterGroups, PendingFetchedAffectedAndConflictingRows) {
    Archive a;
    auto cn1 = a.connect();
    auto cn2 = a.connect();
    seed(*cn1);
    auto rs = a.open(cn1);
    auto other = a.open(cn2);
    auto ids = [](ado::Recordset& r) {
        std::vector<long> out;
        if (r.RecordCount() == 0) return out;
        r.MoveFirst();
        for (; !r.Eof(); r.MoveNext()) out.push_back(static_cast<long>(r.Bookmark()));  // row place = Id here
        return out;
    };
    const auto group = [](int g) { return Variant(static_cast<int32_t>(g)); };

    EXPECT_EQ(errorOf([&] { rs->UpdateBatch(2); }), err::BadArgument);  // no group filter
    rs->setValue("Descripción", "x");   // row 1 modified
    rs->MoveNext();
    rs->Delete(1);                      // row 2 deleted
    rs->AddNew();                       // row 4 new
    rs->setValue("Id", 4);
    rs->setValue("Código", 12);
    rs->setValue("Descripción", "cuatro");
    rs->Update();

    rs->SetFilter(group(1));
    EXPECT_EQ(rs->Filter(), group(1));
    EXPECT_EQ(ids(*rs), (std::vector<long>{1, 2, 4}));
    std::vector<int> statuses;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) statuses.push_back(rs->Status());
    EXPECT_EQ(statuses, (std::vector<int>{ado::rec::Modified, ado::rec::Deleted, ado::rec::New}));
    rs->MoveFirst();
    rs->MoveNext();  // the deleted row is shown, but cannot be read or written
    EXPECT_EQ(rs->EditMode(), 4);
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->setValue("Descripción", "y"); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->Delete(1); }), err::NoCurrentRecord);

    rs->SetFilter(group(3));  // the fetched rows still live: not the deleted, not the new
    EXPECT_EQ(ids(*rs), (std::vector<long>{1, 3}));
    rs->SetFilter(Variant("Código = 10"));
    EXPECT_EQ(errorOf([&] { rs->UpdateBatch(2); }), err::BadArgument);  // a criteria filter is no group

    rs->SetFilter(group(1));
    rs->UpdateBatch(2);
    EXPECT_EQ(a.rows(), (std::vector<std::string>{"1:x", "3:tres", "4:cuatro"}));
    EXPECT_EQ(rs->RecordCount(), 0);  // nothing is pending any more
    rs->SetFilter(group(2));  // what the batch wrote, still live
    EXPECT_EQ(ids(*rs), (std::vector<long>{1, 4}));
    rs->MoveFirst();
    EXPECT_EQ(rs->Status(), ado::rec::OK);

    // The other recordset read the rows before: row 1 conflicts, row 3 would not.
    other->setValue("Descripción", "y");
    other->MoveLast();
    other->setValue("Descripción", "z");
    EXPECT_EQ(errorOf([&] { other->UpdateBatch(3); }), err::SqlRowConflict);
    other->SetFilter(group(5));
    EXPECT_EQ(ids(*other), (std::vector<long>{1}));
    other->MoveFirst();
    EXPECT_EQ(other->Status(), ado::rec::Modified | ado::rec::ConcurrencyViolation);
    EXPECT_EQ(other->value("Descripción"), Variant("y"));
    other->SetFilter(group(1));
    EXPECT_EQ(ids(*other), (std::vector<long>{1, 3}));
    other->CancelBatch(2);
    other->SetFilter(group(1));
    EXPECT_EQ(errorOf([&] { other->UpdateBatch(2); }), err::NoCurrentRecord);  // the group shows nothing
    other->SetFilter(group(5));
    EXPECT_EQ(other->RecordCount(), 0);

    // Delete of a group: the fetched rows, then undone.
    other->SetFilter(group(3));
    other->Delete(2);
    other->SetFilter(group(1));
    EXPECT_EQ(ids(*other), (std::vector<long>{1, 2, 3}));
    other->CancelBatch(3);
    other->SetFilter(Variant(""));
    EXPECT_EQ(other->RecordCount(), 3);
    EXPECT_EQ(a.rows(), (std::vector<std::string>{"1:x", "3:tres", "4:cuatro"}));
}

TEST_P(UpdateBatch, ComputedFieldsCannotBeWrittenBack) {
    auto rs = a.open(cn, "SELECT MAX(Id) AS Nuevo_Codigo FROM HOrdenes_Comentarios WHERE Codigo = 10");
    EXPECT_EQ(rs->value("Nuevo_Codigo"), Variant(static_cast<int32_t>(2)));
    EXPECT_EQ(rs->Fields()->Item(Variant("Nuevo_Codigo"))->Type(), 3);
    rs->setValue("Nuevo_Codigo", 5);
    std::string description;
    EXPECT_EQ(errorOf([&] { rs->UpdateBatch(3); }, &description), -2147467259L);
    EXPECT_NE(description.find("Nuevo_Codigo"), std::string::npos);
}

TEST_P(Requery, RunsTheSelectionAgainKeepingFilterAndSort) {
    std::vector<std::string> ops;
    cn->setStatementHook([&](std::string_view op, std::string_view text, ado::Connection&) {
        ops.push_back(std::string(op) + ": " + std::string(text));
    });
    auto rs = a.open(cn);
    rs->SetFilter(Variant("Código = 10"));
    rs->SetSort("Id DESC");
    auto clone = rs->Clone();
    rs->setValue("Descripción", "pendiente");
    rs->Update();
    cn->Execute("INSERT INTO HOrdenes_Comentarios (Id, Codigo, Descripcion) VALUES (5, 10, 'cinco')");
    rs->Requery();
    EXPECT_EQ(ops, (std::vector<std::string>{std::string("Requery: ") + kSelect}));
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(rs->value("Id").asLong(), 5);  // first row of the sorted, filtered view
    rs->MoveLast();
    EXPECT_EQ(rs->value("Descripción").asString(), "uno");  // the pending change is gone
    EXPECT_EQ(clone->RecordCount(), 3);  // the clone keeps the old rows
    EXPECT_EQ(clone->value("Descripción").asString(), "pendiente");
}

}  // namespace
}  // namespace hist
