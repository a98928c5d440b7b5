// The recordset's edit overlay: the edit mode and status of a row, AddNew, Update,
// CancelUpdate, Delete, and the batch members that write back or drop pending rows.
#include <algorithm>

#include "ado/recordset.hpp"
#include "ado/recordset_rows.hpp"
#include "ado/values.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::ado {

using namespace detail;

// ---------------------------------------------------------------- editing

int Recordset::EditMode() {
    requireOpen();
    sync();
    if (pos_ == Pos::Deleted) return static_cast<int>(EditModeValue::Delete);
    const uint32_t row = currentRow();
    switch (data_->statusOf(row)) {
    case RowStatus::New: return static_cast<int>(EditModeValue::Add);
    case RowStatus::Modified: return static_cast<int>(EditModeValue::InProgress);
    case RowStatus::Deleted: return static_cast<int>(EditModeValue::Delete);
    default: return static_cast<int>(EditModeValue::None);
    }
}

int Recordset::Status() {
    requireOpen();
    sync();
    const uint32_t row = pos_ == Pos::Deleted ? deletedRow_ : currentRow();
    int flags = rec::Unmodified;
    switch (data_->statusOf(row)) {
    case RowStatus::New: flags = rec::New; break;
    case RowStatus::Modified: flags = rec::Modified; break;
    case RowStatus::Deleted:
    case RowStatus::Gone: flags = rec::Deleted; break;
    case RowStatus::Unchanged:
        if (touchedWritten_ && std::binary_search(touched_.begin(), touched_.end(), row)) flags = rec::OK;
        break;
    }
    if (std::binary_search(conflicts_.begin(), conflicts_.end(), row)) flags |= rec::ConcurrencyViolation;
    return flags;
}

void Recordset::AddNew() {
    requireOpen();
    requireWritable();
    sync();
    fireWill(EventReason::AddNew, 1);
    RowData& d = *data_;
    const uint32_t row = static_cast<uint32_t>(d.store.appendNullRow());
    d.status.push_back(static_cast<uint8_t>(RowStatus::New));
    Overlay ov;
    ov.values.assign(d.fieldCol.size(), Variant());
    ov.changed.assign(d.fieldCol.size(), 0);
    d.overlay.emplace(row, std::move(ov));
    if (pos_ == Pos::Row)
        beforeAdd_ = order_[idx_];
    else
        beforeAdd_.reset();
    order_.push_back(row);
    idx_ = order_.size() - 1;
    pos_ = Pos::Row;
    editing_ = true;
    ++d.generation;
    seenGeneration_ = d.generation;
    fireMove(EventReason::AddNew);
}

void Recordset::Update() {
    requireOpen();
    sync();
    if (pos_ != Pos::Row && pos_ != Pos::Deleted) noCurrentRecord();
    if (editing_) fireWill(EventReason::Update, 1);
    editing_ = false;  // in batch mode the change stays pending until UpdateBatch
}

void Recordset::CancelUpdate() {
    requireOpen();
    sync();
    editing_ = false;
    if (pos_ != Pos::Row) return;
    RowData& d = *data_;
    const uint32_t row = order_[idx_];
    switch (d.statusOf(row)) {
    case RowStatus::New: {
        fireWill(EventReason::UndoAddNew, 1);
        d.status[row] = static_cast<uint8_t>(RowStatus::Gone);
        d.overlay.erase(row);
        order_.erase(order_.begin() + static_cast<std::ptrdiff_t>(idx_));
        ++d.generation;
        seenGeneration_ = d.generation;
        settle(beforeAdd_);
        beforeAdd_.reset();
        fireMove(EventReason::UndoAddNew);
        break;
    }
    case RowStatus::Modified:
        fireWill(EventReason::UndoUpdate, 1);
        d.status[row] = static_cast<uint8_t>(RowStatus::Unchanged);
        d.overlay.erase(row);
        break;
    default:
        break;
    }
}

void Recordset::Delete(int affectRecords) {
    requireOpen();
    requireWritable();
    sync();
    RowData& d = *data_;
    auto mark = [&d](uint32_t row) {
        if (d.statusOf(row) == RowStatus::New) {
            d.status[row] = static_cast<uint8_t>(RowStatus::Gone);
            d.overlay.erase(row);
        } else {
            d.status[row] = static_cast<uint8_t>(RowStatus::Deleted);
        }
    };
    if (affectRecords == 1) {
        const uint32_t row = liveCurrentRow();
        fireWill(EventReason::Delete, 1);
        mark(row);
        touched_.assign(1, row);
        touchedWritten_ = false;
        order_.erase(order_.begin() + static_cast<std::ptrdiff_t>(idx_));
        pos_ = Pos::Deleted;
        deletedRow_ = row;
    } else if (affectRecords == 3 || affectRecords == 2) {
        // Every visible row; the group form only under a group filter.
        if (affectRecords == 2 && group_ == FilterGroup::None)
            raise(err::BadArgument, err::SrcRecordset,
                  withDetail(err::BadArgument, "Delete AffectRecords 2 needs a group filter."));
        std::optional<uint32_t> current;
        if (pos_ == Pos::Row) current = order_[idx_];
        std::erase_if(order_, [&d](uint32_t row) { return !d.live(row); });  // rows already marked
        fireWill(EventReason::Delete, static_cast<long>(order_.size()));
        for (uint32_t row : order_) mark(row);
        touched_ = order_;
        std::sort(touched_.begin(), touched_.end());
        touchedWritten_ = false;
        if (current) {
            pos_ = Pos::Deleted;
            deletedRow_ = *current;
        } else {
            pos_ = Pos::Empty;
        }
        order_.clear();
        idx_ = 0;
    } else {
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "AffectRecords."));
    }
    editing_ = false;
    ++d.generation;
    seenGeneration_ = d.generation;
}

// The pending rows an UpdateBatch or CancelBatch acts on: the current row (1), the
// visible rows of a group filter (2), or every pending row, only those passing a
// criteria filter when one is set (3).
std::vector<uint32_t> Recordset::affected(int affectRecords, const char* what) {
    RowData& d = *data_;
    std::vector<uint32_t> rows;
    auto pending = [&d](uint32_t r) {
        const RowStatus s = d.statusOf(r);
        return s == RowStatus::Modified || s == RowStatus::New || s == RowStatus::Deleted;
    };
    if (affectRecords == 1) {
        uint32_t row;
        if (pos_ == Pos::Deleted)
            row = deletedRow_;
        else
            row = currentRow();
        if (pending(row)) rows.push_back(row);
    } else if (affectRecords == 2) {
        if (group_ == FilterGroup::None)
            raise(err::BadArgument, err::SrcRecordset,
                  withDetail(err::BadArgument, std::string(what) + " AffectRecords 2 needs a group filter."));
        if (order_.empty()) noCurrentRecord();
        for (uint32_t r : order_)
            if (pending(r)) rows.push_back(r);
        std::sort(rows.begin(), rows.end());
    } else if (affectRecords == 3) {
        const uint32_t n = static_cast<uint32_t>(d.store.rows());
        for (uint32_t r = 0; r < n; ++r) {
            if (d.statusOf(r) == RowStatus::Unchanged || !pending(r)) continue;
            if (!filter_.empty() && !filter_.matches([&](int f) { return cell(r, f); })) continue;
            rows.push_back(r);
        }
    } else {
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, std::string(what) + " AffectRecords."));
    }
    return rows;
}

void Recordset::UpdateBatch(int affectRecords) {
    requireOpen();
    sync();
    const std::vector<uint32_t> rows = affected(affectRecords, "UpdateBatch");
    editing_ = false;
    touched_ = rows;
    touchedWritten_ = false;
    conflicts_.clear();
    if (rows.empty()) return;
    const std::vector<RowRefresh> refreshed = writeBack(rows);  // all or nothing; on failure the rows stay pending
    touchedWritten_ = true;
    RowData& d = *data_;
    std::string buf;
    bool gone = false;
    for (uint32_t row : rows) {
        const RowStatus s = d.statusOf(row);
        if (s == RowStatus::Deleted) {
            d.status[row] = static_cast<uint8_t>(RowStatus::Gone);
            d.overlay.erase(row);
            gone = true;
            continue;
        }
        auto it = d.overlay.find(row);
        if (it != d.overlay.end()) {
            const Overlay& ov = it->second;
            for (std::size_t f = 0; f < ov.values.size(); ++f) {
                if (s == RowStatus::Modified && !ov.changed[f]) continue;
                d.store.set(row, static_cast<std::size_t>(d.fieldCol[f]), variantToStored(ov.values[f], buf));
            }
            d.overlay.erase(it);
        }
        d.status[row] = static_cast<uint8_t>(RowStatus::Unchanged);
    }
    for (const RowRefresh& r : refreshed) {
        CellView c;
        c.tag = r.tag;
        c.i = r.i;
        c.d = r.d;
        c.s = r.s;
        d.store.set(r.row, r.col, c);
    }
    // Rows deleted in the archive leave every view; a group view is taken again,
    // as what belongs to the group has changed.
    if (gone) ++d.generation;
    if (gone || group_ != FilterGroup::None) {
        std::optional<uint32_t> keep;
        if (pos_ == Pos::Row && d.live(order_[idx_])) keep = order_[idx_];
        computeOrder();
        settle(keep);
    }
}

void Recordset::CancelBatch(int affectRecords) {
    requireOpen();
    sync();
    editing_ = false;
    const std::vector<uint32_t> rows = affected(affectRecords, "CancelBatch");
    if (rows.empty()) return;
    RowData& d = *data_;
    fireWill(EventReason::UndoUpdate, static_cast<long>(rows.size()));
    for (uint32_t row : rows) {
        d.status[row] = static_cast<uint8_t>(d.statusOf(row) == RowStatus::New ? RowStatus::Gone : RowStatus::Unchanged);
        d.overlay.erase(row);
    }
    touched_ = rows;
    std::sort(touched_.begin(), touched_.end());
    touchedWritten_ = false;
    std::erase_if(conflicts_, [&](uint32_t r) { return std::binary_search(touched_.begin(), touched_.end(), r); });
    std::optional<uint32_t> keep;
    if (pos_ == Pos::Row) keep = order_[idx_];
    if (pos_ == Pos::Deleted) keep = deletedRow_;
    // A row added and now dropped gives way to the row that was current before it.
    if (keep && d.statusOf(*keep) == RowStatus::Gone) keep = beforeAdd_;
    beforeAdd_.reset();
    ++d.generation;
    computeOrder();
    settle(keep);
    fireMove(EventReason::UndoUpdate);
}

}  // namespace hist::ado
