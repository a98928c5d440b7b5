// The cursor model, counts, bookmarks, clones, the editing overlay and events, on
// rows the test feeds in itself.
#include <gtest/gtest.h>

#include "ado_fixture.hpp"

namespace hist {
namespace {

using backend::FieldType;
using testing::errorOf;
using testing::fabricate;

std::shared_ptr<ado::Recordset> names(int n) {
    std::vector<std::vector<testing::CellInit>> rows;
    const char* words[] = {"Ana", "bruno", "Carla", "david", "Elena", "fermín"};
    for (int i = 0; i < n; ++i) rows.push_back({static_cast<long long>(i + 1), std::string(words[i % 6])});
    return fabricate({{"Id", FieldType::Integer}, {"Nombre", FieldType::VarWChar}}, rows);
}

long id(ado::Recordset& rs) { return rs.value("Id").asLong(); }

TEST(Cursor, EmptySetHasNoCurrentRowAndRefusesEveryMove) {
    auto rs = names(0);
    EXPECT_TRUE(rs->Bof());
    EXPECT_TRUE(rs->Eof());
    EXPECT_EQ(rs->RecordCount(), 0);
    EXPECT_EQ(rs->AbsolutePosition(), -1);
    for (auto move : {&ado::Recordset::MoveFirst, &ado::Recordset::MoveLast, &ado::Recordset::MoveNext,
                      &ado::Recordset::MovePrevious})
        EXPECT_EQ(errorOf([&] { ((*rs).*move)(); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->Bookmark(); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->EditMode(); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->setValue("Id", 1); }), err::NoCurrentRecord);
    EXPECT_EQ(rs->Fields()->Count(), 2);  // the columns are there without rows
}

TEST(Cursor, OneRowWalksOffBothEnds) {
    auto rs = names(1);
    EXPECT_FALSE(rs->Bof());
    EXPECT_FALSE(rs->Eof());
    EXPECT_EQ(rs->AbsolutePosition(), 1);
    rs->MoveNext();
    EXPECT_TRUE(rs->Eof());
    EXPECT_FALSE(rs->Bof());
    EXPECT_EQ(rs->AbsolutePosition(), -3);
    EXPECT_EQ(errorOf([&] { rs->MoveNext(); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), err::NoCurrentRecord);
    rs->MovePrevious();  // from EOF to the last row
    EXPECT_EQ(id(*rs), 1);
    rs->MovePrevious();
    EXPECT_TRUE(rs->Bof());
    EXPECT_FALSE(rs->Eof());
    EXPECT_EQ(rs->AbsolutePosition(), -2);
    EXPECT_EQ(errorOf([&] { rs->MovePrevious(); }), err::NoCurrentRecord);
    rs->MoveNext();  // from BOF to the first row
    EXPECT_EQ(id(*rs), 1);
    rs->MoveNext();
    rs->MoveLast();
    EXPECT_EQ(id(*rs), 1);
}

TEST(Cursor, FilterRenumbersAndCountsFollowAddAndDelete) {
    auto rs = names(6);
    EXPECT_EQ(rs->RecordCount(), 6);
    rs->SetFilter(Variant("Id > 2 And Id <= 5"));
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(rs->AbsolutePosition(), 1);
    EXPECT_EQ(id(*rs), 3);
    rs->MoveLast();
    EXPECT_EQ(rs->AbsolutePosition(), 3);

    rs->AddNew();  // counted at once, appended at the end of the view
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(rs->AbsolutePosition(), 4);
    EXPECT_EQ(rs->EditMode(), 2);
    EXPECT_TRUE(rs->value("Id").isEmpty());

    rs->MoveFirst();
    rs->Delete(1);
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(rs->EditMode(), 4);
    EXPECT_FALSE(rs->Bof());
    EXPECT_FALSE(rs->Eof());
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->Bookmark(); }), err::NoCurrentRecord);
    rs->MoveNext();  // the row after the deleted one
    EXPECT_EQ(id(*rs), 4);
    EXPECT_EQ(rs->AbsolutePosition(), 1);

    rs->SetFilter(Variant(""));  // lifted: every live row, cursor on the first
    EXPECT_EQ(rs->RecordCount(), 6);
    EXPECT_EQ(id(*rs), 1);
    EXPECT_EQ(rs->Filter(), Variant(static_cast<int32_t>(0)));

    rs->SetFilter(Variant("Id > 100"));
    EXPECT_TRUE(rs->Bof() && rs->Eof());
    EXPECT_EQ(rs->RecordCount(), 0);
}

TEST(Cursor, DeletingEveryRowLeavesAnEmptySetAfterTheNextMove) {
    auto rs = names(2);
    rs->Delete(1);
    rs->MoveNext();
    rs->Delete(1);
    EXPECT_FALSE(rs->Bof());
    EXPECT_FALSE(rs->Eof());
    rs->MoveNext();
    EXPECT_TRUE(rs->Bof() && rs->Eof());
    EXPECT_EQ(rs->RecordCount(), 0);
    EXPECT_EQ(errorOf([&] { rs->MoveFirst(); }), err::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rs->Delete(2); }), err::BadArgument);
}

TEST(Cursor, BookmarksSurviveSortAndFilterAndRefuseWhatNamesNoRow) {
    auto rs = names(6);
    rs->MoveNext();
    rs->MoveNext();
    const double third = rs->Bookmark();
    EXPECT_EQ(third, 3.0);  // whole numbers, so they travel as text and back
    rs->SetSort("Nombre DESC");
    EXPECT_EQ(id(*rs), 3);  // the same record stays current
    EXPECT_EQ(rs->Bookmark(), third);
    rs->MoveFirst();
    rs->SetBookmark(Variant(third));
    EXPECT_EQ(id(*rs), 3);

    struct Bad {
        Variant v;
        long number;
    } bad[] = {{Variant(), err::BadArgument}, {Variant::null(), err::BadArgument},
               {Variant(99.0), err::BadArgument}, {Variant(2.5), err::BadArgument}, {Variant("x"), err::BadArgument}};
    for (const auto& b : bad) EXPECT_EQ(errorOf([&] { rs->SetBookmark(b.v); }), b.number);
    EXPECT_EQ(id(*rs), 3);  // a refused bookmark does not move

    rs->SetFilter(Variant("Id <> 5"));
    EXPECT_EQ(errorOf([&] { rs->SetBookmark(Variant(5.0)); }), err::BadArgument);
    rs->SetBookmark(Variant("6"));  // a numeric text reads as the number
    EXPECT_EQ(id(*rs), 6);
}

TEST(Cursor, ClonesShareRowsAndBookmarksButNotPositionOrFilter) {
    auto rs = names(4);
    rs->SetFilter(Variant("Id >= 3"));
    rs->MoveLast();
    auto c = rs->Clone();
    EXPECT_EQ(c->RecordCount(), 4);  // the filter is not carried over
    EXPECT_EQ(c->Filter(), Variant(static_cast<int32_t>(0)));
    EXPECT_EQ(id(*c), 1);            // starts on its first row
    c->SetBookmark(Variant(rs->Bookmark()));
    EXPECT_EQ(id(*c), 4);

    c->setValue("Nombre", "Zoe");  // edits are visible both ways
    EXPECT_EQ(rs->value("Nombre").asString(), "Zoe");
    rs->setValue("Nombre", "Yago");
    EXPECT_EQ(c->value("Nombre").asString(), "Yago");

    c->MoveFirst();
    c->Delete(1);  // a deletion through the clone leaves the original's view
    rs->SetFilter(Variant(""));
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(id(*rs), 2);

    rs->AddNew();  // an addition through the original reaches the clone
    EXPECT_EQ(c->RecordCount(), 4);

    auto ro = rs->Clone(1);
    EXPECT_EQ(errorOf([&] { ro->setValue("Nombre", "x"); }), err::NotCapable);
    EXPECT_EQ(errorOf([&] { ro->AddNew(); }), err::NotCapable);
    EXPECT_EQ(errorOf([&] { rs->Clone(4); }), err::BadArgument);

    rs->Close();  // closing the original leaves the clone open
    EXPECT_EQ(c->State(), 1);
    EXPECT_EQ(c->RecordCount(), 4);
}

TEST(Cursor, ACurrentRowDeletedThroughACloneIsGoneHereToo) {
    auto rs = names(4);
    rs->MoveNext();
    auto c = rs->Clone();
    c->SetBookmark(Variant(rs->Bookmark()));
    c->Delete(1);
    EXPECT_EQ(rs->EditMode(), 4);
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), err::NoCurrentRecord);
    EXPECT_EQ(rs->RecordCount(), 3);
    rs->MoveNext();
    EXPECT_EQ(id(*rs), 3);
    c->CancelBatch(3);  // undone through the clone: back in every view
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(id(*rs), 3);
}

TEST(Editing, BatchUpdateKeepsTheEditModeAndCancelUpdateUndoes) {
    auto rs = names(3);
    rs->MoveNext();
    rs->AddNew();
    rs->setValue("Id", 10);
    rs->Update();
    EXPECT_EQ(rs->EditMode(), 2);  // batch mode: Update leaves it as it was
    rs->AddNew();
    EXPECT_TRUE(rs->value("Id").isEmpty());
    rs->MoveFirst();
    rs->MoveLast();
    rs->MovePrevious();
    EXPECT_EQ(id(*rs), 10);  // moving off a new row keeps it

    rs->MoveLast();
    rs->CancelUpdate();  // drops the row being added; the row before AddNew is current
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(id(*rs), 10);

    rs->MoveFirst();
    rs->setValue("Nombre", "Otra");
    EXPECT_EQ(rs->EditMode(), 1);
    EXPECT_EQ(rs->Fields()->Item(Variant("Nombre"))->OriginalValue().asString(), "Ana");
    rs->CancelUpdate();
    EXPECT_EQ(rs->EditMode(), 0);
    EXPECT_EQ(rs->value("Nombre").asString(), "Ana");

    rs->Delete(1);
    rs->CancelBatch(3);  // everything pending goes: the deletion and the added row
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(id(*rs), 1);
    EXPECT_EQ(rs->EditMode(), 0);
}

TEST(Editing, WithoutAConnectionPendingRowsCannotBeSent) {
    auto rs = names(2);
    rs->UpdateBatch(3);  // nothing pending: nothing to do
    rs->setValue("Nombre", "x");
    EXPECT_EQ(errorOf([&] { rs->Requery(); }), err::IllegalOperation);  // an edit is in progress
    EXPECT_EQ(errorOf([&] { rs->UpdateBatch(3); }), err::InvalidConnection);
    EXPECT_EQ(rs->EditMode(), 1);  // still pending
    EXPECT_EQ(rs->value("Nombre").asString(), "x");
    EXPECT_EQ(errorOf([&] { rs->Requery(); }), err::InvalidConnection);  // UpdateBatch ended the edit
}

struct Recorder : ado::RecordsetEvents {
    std::vector<ado::EventReason> moves, changes;
    void MoveComplete(ado::EventReason r, ado::Recordset&) override { moves.push_back(r); }
    void WillChangeRecord(ado::EventReason r, long, ado::Recordset&) override { changes.push_back(r); }
};

TEST(Events, MoveCompleteOnEveryOperationThatSetsTheCurrentRow) {
    using R = ado::EventReason;
    auto rs = names(4);
    auto rec = std::make_shared<Recorder>();
    rs->subscribe(rec);
    rs->MoveNext();
    rs->MoveLast();
    rs->MovePrevious();
    rs->MoveFirst();
    rs->SetFilter(Variant("Id > 1"));
    rs->SetSort("Id DESC");
    rs->SetBookmark(Variant(2.0));
    rs->Find("Id = 3");
    rs->AddNew();
    rs->setValue("Id", 9);
    rs->setValue("Nombre", "n");  // only the first change of a row is announced
    rs->MoveFirst();
    rs->setValue("Nombre", "m");
    EXPECT_EQ(rec->moves, (std::vector<R>{R::MoveNext, R::MoveLast, R::MovePrevious, R::MoveFirst, R::Move, R::Move,
                                          R::Move, R::Move, R::AddNew, R::MoveFirst}));
    EXPECT_EQ(rec->changes, (std::vector<R>{R::AddNew, R::FirstChange}));
    auto clone = rs->Clone();
    clone->MoveNext();  // a clone does not raise the original's events
    EXPECT_EQ(rec->moves.size(), 10u);
    rs->unsubscribe(rec.get());
    rs->MoveNext();
    EXPECT_EQ(rec->moves.size(), 10u);
}

TEST(ClosedRecordset, RefusesUseAndKeepsWhatIsGivenBeforeOpening) {
    auto rs = std::make_shared<ado::Recordset>();
    EXPECT_EQ(rs->State(), 0);
    EXPECT_EQ(errorOf([&] { rs->Close(); }), err::ObjectClosed);
    EXPECT_EQ(errorOf([&] { rs->RecordCount(); }), err::ObjectClosed);
    EXPECT_EQ(errorOf([&] { rs->EditMode(); }), err::ObjectClosed);
    EXPECT_EQ(errorOf([&] { rs->AddNew(); }), err::ObjectClosed);
    EXPECT_EQ(errorOf([&] { rs->Bookmark(); }), err::ObjectClosed);
    EXPECT_EQ(errorOf([&] { rs->SetFilter(Variant()); }), err::BadArgument);
    EXPECT_EQ(errorOf([&] { rs->Open("SELECT 1", nullptr); }), err::InvalidConnection);
    EXPECT_EQ(errorOf([&] { rs->Open("SELECT 1", std::make_shared<ado::Connection>()); }), err::InvalidConnection);
    EXPECT_EQ(rs->Fields()->Count(), 0);
    EXPECT_FALSE(rs->ActiveConnection());

    auto open = names(5);
    auto field = open->Fields()->Item(Variant(static_cast<int32_t>(0)));
    open->Close();
    EXPECT_EQ(open->Fields()->Count(), 0);
    EXPECT_EQ(errorOf([&] { field->Name(); }), err::ObjectNoLongerValid);

    // A filter and a sort given before opening apply when it opens.
    auto later = std::make_shared<ado::Recordset>();
    later->SetFilter(Variant("Id < 3"));
    later->SetSort("Id DESC");
    later->OpenRows([](backend::RowSink& sink) {
        backend::ColumnMeta m;
        m.name = "Id";
        m.type = FieldType::Integer;
        sink.columns({m});
        for (long long i = 1; i <= 4; ++i) {
            backend::Cell c;
            c.kind = backend::Cell::Kind::Int;
            c.i = i;
            sink.row(std::span<const backend::Cell>(&c, 1));
        }
    });
    EXPECT_EQ(later->RecordCount(), 2);
    EXPECT_EQ(id(*later), 2);
    EXPECT_EQ(errorOf([&] { later->OpenRows([](backend::RowSink&) {}); }), err::ObjectOpen);
}

}  // namespace
}  // namespace hist
