// The cursor model, counts, bookmarks, clones, the editing overlay and events, on
// rows the test feeds in itself.
#include <gtest/gtest.h>

#include "ado_fixture.hpp"

namespace hist {
namespace {

using backend::FieldType;
using testing::errorOf;
using testing::errorsOf;
using testing::fabricate;

constexpr long kNoRow = err::NoCurrentRecord;

std::shared_ptr<ado::Recordset> names(int n) {
    std::vector<std::vector<testing::CellInit>> rows;
    const char* words[] = {"Ana", "bruno", "Carla", "david", "Elena", "fermín"};
    for (int i = 0; i < n; ++i) rows.push_back({static_cast<long long>(i + 1), std::string(words[i % 6])});
    return fabricate({{"Id", FieldType::Integer}, {"Nombre", FieldType::VarWChar}}, rows);
}

long id(ado::Recordset& rs) { return rs.value("Id").asLong(); }

// Where the cursor stands, as "current@AbsolutePosition/RecordCount": the current row's
// Id, "new" or "deleted" for such a row, "BOF" and/or "EOF" off the rows.
std::string at(ado::Recordset& rs) {
    std::string where;
    if (rs.Bof() || rs.Eof()) where = rs.Bof() ? (rs.Eof() ? "BOF EOF" : "BOF") : "EOF";
    else if (rs.EditMode() == 4) where = "deleted";
    else if (rs.EditMode() == 2) where = "new";
    else where = std::to_string(id(rs));
    return where + "@" + std::to_string(rs.AbsolutePosition()) + "/" + std::to_string(rs.RecordCount());
}

// Applies moves (F first, L last, N next, P previous) and lists where each leaves the
// cursor, or "!" and the number of the error it raises.
std::string walk(ado::Recordset& rs, std::string_view moves) {
    std::string out;
    for (char m : moves) {
        const long e = errorOf([&] {
            if (m == 'F') rs.MoveFirst();
            else if (m == 'L') rs.MoveLast();
            else if (m == 'N') rs.MoveNext();
            else rs.MovePrevious();
        });
        out += (out.empty() ? "" : " ") + (e ? "!" + std::to_string(e) : at(rs));
    }
    return out;
}

TEST(Cursor, EmptyAndOneRowSetsWalkOffBothEnds) {
    auto rs = names(0);
    EXPECT_EQ(at(*rs), "BOF EOF@-1/0");
    EXPECT_EQ(walk(*rs, "FLNP"), "!3021 !3021 !3021 !3021");
    EXPECT_EQ(errorsOf({[&] { rs->Bookmark(); }, [&] { rs->EditMode(); }, [&] { rs->value("Id"); },
                        [&] { rs->setValue("Id", 1); }}),
              std::vector<long>(4, kNoRow));
    EXPECT_EQ(rs->Fields()->Count(), 2);  // the columns are there without rows

    rs = names(1);
    EXPECT_EQ(at(*rs), "1@1/1");
    // Off the end, then from EOF to the last row, from BOF to the first.
    EXPECT_EQ(walk(*rs, "NNPPPNNL"), "EOF@-3/1 !3021 1@1/1 BOF@-2/1 !3021 1@1/1 EOF@-3/1 1@1/1");
}

TEST(Cursor, FilterRenumbersAndCountsFollowAddAndDelete) {
    auto rs = names(6);
    EXPECT_EQ(at(*rs), "1@1/6");
    rs->SetFilter(Variant("Id > 2 And Id <= 5"));
    EXPECT_EQ(at(*rs), "3@1/3");
    EXPECT_EQ(walk(*rs, "L"), "5@3/3");

    rs->AddNew();  // counted at once, appended at the end of the view
    EXPECT_EQ(at(*rs), "new@4/4");
    EXPECT_TRUE(rs->value("Id").isEmpty());

    rs->MoveFirst();
    rs->Delete(1);  // neither BOF nor EOF, but no row to read and no position
    EXPECT_EQ(at(*rs), "deleted@-1/3");
    EXPECT_EQ(errorsOf({[&] { rs->value("Id"); }, [&] { rs->Bookmark(); }}), (std::vector<long>{kNoRow, kNoRow}));
    EXPECT_EQ(walk(*rs, "N"), "4@1/3");  // the row after the deleted one

    rs->SetFilter(Variant(""));  // lifted: every live row, cursor on the first
    EXPECT_EQ(at(*rs), "1@1/6");
    EXPECT_EQ(rs->Filter(), Variant(static_cast<int32_t>(0)));
    rs->SetFilter(Variant("Id > 100"));
    EXPECT_EQ(at(*rs), "BOF EOF@-1/0");
}

TEST(Cursor, DeletingEveryRowLeavesAnEmptySetAfterTheNextMove) {
    auto rs = names(2);
    rs->Delete(1);
    rs->MoveNext();
    rs->Delete(1);
    EXPECT_EQ(at(*rs), "deleted@-1/0");
    EXPECT_EQ(walk(*rs, "NF"), "BOF EOF@-1/0 !3021");
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
    for (const Variant& bad : {Variant(), Variant::null(), Variant(99.0), Variant(2.5), Variant("x")})
        EXPECT_EQ(errorOf([&] { rs->SetBookmark(bad); }), err::BadArgument);
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
    EXPECT_EQ(at(*c), "1@1/4");  // no filter carried over; on its first row
    EXPECT_EQ(c->Filter(), Variant(static_cast<int32_t>(0)));
    c->SetBookmark(Variant(rs->Bookmark()));
    EXPECT_EQ(id(*c), 4);

    c->setValue("Nombre", "Zoe");  // edits are visible both ways
    EXPECT_EQ(rs->value("Nombre").asString(), "Zoe");
    rs->setValue("Nombre", "Yago");
    EXPECT_EQ(c->value("Nombre").asString(), "Yago");

    c->MoveFirst();
    c->Delete(1);  // a deletion through the clone leaves the original's view
    rs->SetFilter(Variant(""));
    EXPECT_EQ(at(*rs), "2@1/3");
    rs->AddNew();  // an addition through the original reaches the clone
    EXPECT_EQ(c->RecordCount(), 4);

    auto ro = rs->Clone(1);
    EXPECT_EQ(errorsOf({[&] { ro->setValue("Nombre", "x"); }, [&] { ro->AddNew(); }, [&] { rs->Clone(4); }}),
              (std::vector<long>{err::NotCapable, err::NotCapable, err::BadArgument}));
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
    EXPECT_EQ(at(*rs), "deleted@-1/3");
    EXPECT_EQ(errorOf([&] { rs->value("Id"); }), kNoRow);
    EXPECT_EQ(walk(*rs, "N"), "3@2/3");
    c->CancelBatch(3);  // undone through the clone: back in every view
    EXPECT_EQ(at(*rs), "3@3/4");
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
    EXPECT_EQ(at(*rs), "new@4/4");
    EXPECT_EQ(id(*rs), 10);

    rs->MoveFirst();
    rs->setValue("Nombre", "Otra");
    EXPECT_EQ(rs->EditMode(), 1);
    EXPECT_EQ(rs->Fields()->Item(Variant("Nombre"))->OriginalValue().asString(), "Ana");
    rs->CancelUpdate();
    EXPECT_EQ(rs->EditMode(), 0);
    EXPECT_EQ(rs->value("Nombre").asString(), "Ana");
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
    walk(*rs, "NLPF");
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
    rs->Clone()->MoveNext();  // a clone does not raise the original's events
    rs->unsubscribe(rec.get());
    rs->MoveNext();
    EXPECT_EQ(rec->moves.size(), 10u);
}

TEST(ClosedRecordset, RefusesUseAndKeepsWhatIsGivenBeforeOpening) {
    auto rs = std::make_shared<ado::Recordset>();
    EXPECT_EQ(rs->State(), 0);
    EXPECT_EQ(errorsOf({[&] { rs->Close(); }, [&] { rs->RecordCount(); }, [&] { rs->EditMode(); },
                        [&] { rs->AddNew(); }, [&] { rs->Bookmark(); }}),
              std::vector<long>(5, err::ObjectClosed));
    EXPECT_EQ(errorsOf({[&] { rs->SetFilter(Variant()); }, [&] { rs->Open("SELECT 1", nullptr); },
                        [&] { rs->Open("SELECT 1", std::make_shared<ado::Connection>()); }}),
              (std::vector<long>{err::BadArgument, err::InvalidConnection, err::InvalidConnection}));
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
    fabricate({{"Id", FieldType::Integer}}, {{1LL}, {2LL}, {3LL}, {4LL}}, later);
    EXPECT_EQ(at(*later), "2@1/2");
    EXPECT_EQ(errorOf([&] { later->OpenRows([](backend::RowSink&) {}); }), err::ObjectOpen);
}

}  // namespace
}  // namespace hist
