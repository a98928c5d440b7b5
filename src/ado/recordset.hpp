#pragma once
// Recordset: a client-side, batch-optimistic cursor that owns its rows.
//
// The rows live in a RowStore shared with every clone; each Recordset object has its
// own view of them (the visible rows in filter and sort order) and its own position.
// Edits are an overlay over the stored rows: each row has a status (unchanged,
// modified, new, deleted) and the edited values beside the original ones, so that
// UpdateBatch can write back by the hidden row identity, checking the originals,
// and CancelBatch can undo. Nothing reaches the archive before UpdateBatch.
//
// Member names are the platform's; BOF and EOF are spelled Bof() and Eof() because
// EOF is a macro of the C library.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.hpp"
#include "ado/criteria.hpp"
#include "ado/sort.hpp"
#include "backends/engine.hpp"
#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::ado {

// A stored cell as read back after a write (recordset_rows.hpp).
struct RowRefresh;

class Recordset;
class Fields;
class Field;
struct RowData;

// Why an event fires (the platform's EventReasonEnum).
enum class EventReason : int {
    AddNew = 1, Delete = 2, Update = 3, UndoUpdate = 4, UndoAddNew = 5, UndoDelete = 6, Requery = 7,
    Resynch = 8, Close = 9, Move = 10, FirstChange = 11, MoveFirst = 12, MoveNext = 13, MovePrevious = 14,
    MoveLast = 15,
};

// The recordset's events. A clone starts with no listeners of its own.
class RecordsetEvents {
public:
    virtual ~RecordsetEvents() = default;
    // After every operation that sets the current row (open, moves, Find, Filter,
    // Sort, Bookmark, AddNew, Requery, CancelUpdate of a new row, CancelBatch).
    virtual void MoveComplete(EventReason /*reason*/, Recordset& /*rs*/) {}
    // Before a row changes: its first edit, AddNew, Delete, Update, the undo operations.
    virtual void WillChangeRecord(EventReason /*reason*/, long /*records*/, Recordset& /*rs*/) {}
};

enum class EditModeValue : int { None = 0, InProgress = 1, Add = 2, Delete = 4 };

// The filters that select rows by what happened to them (the platform's FilterGroupEnum).
enum class FilterGroup : int { None = 0, Pending = 1, Affected = 2, Fetched = 3, Conflicting = 5 };

// A row's state as Status reports it (flags of the platform's RecordStatusEnum).
namespace rec {
inline constexpr int OK = 0, New = 1, Modified = 2, Deleted = 4, Unmodified = 8, ConcurrencyViolation = 0x800;
}

class Recordset : public Object {
public:
    Recordset();
    ~Recordset() override;
    std::string_view typeName() const override { return "Recordset"; }

    // ---- Opening and closing ----
    // Runs a reading statement on the connection and takes all its rows
    // (3705 when open, 3709 when the connection is missing or not open).
    void Open(std::string_view sent, std::shared_ptr<Connection> cn);
    // Opens on rows produced by the caller, with no connection (a fabricated set).
    void OpenRows(const std::function<void(backend::RowSink&)>& produce);
    void Close();
    int State() const noexcept { return open_ ? 1 : 0; }
    std::shared_ptr<Connection> ActiveConnection() const { return cn_; }
    const std::string& Source() const noexcept { return source_; }

    // ---- Position ----
    bool Bof();
    bool Eof();
    long RecordCount();
    long AbsolutePosition();
    double Bookmark();
    void SetBookmark(const Variant& bookmark);
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    // Start: Missing/Empty for the current row; a Long or Integer 0, 1, 2 for the
    // current, first or last row; a Double for a bookmark.
    void Find(std::string_view criteria, long skipRecords = 0, int searchDirection = 1,
              const Variant& start = Variant::missing());

    // ---- Selection ----
    // 0 (adFilterNone) when no filter is set, the group value for a group filter,
    // else the criteria text.
    Variant Filter() const;
    // A criteria text, "" or 0 to lift the filter, or a group value: 1 the rows
    // with pending changes (deleted ones included), 2 the rows the last Delete,
    // UpdateBatch or CancelBatch acted on, 3 the rows of the last fetch, 5 the
    // rows that failed the last UpdateBatch.
    void SetFilter(const Variant& filter);
    const std::string& Sort() const noexcept { return sortText_; }
    void SetSort(std::string_view sort);
    std::shared_ptr<Recordset> Clone(int lockType = -1);
    void Requery(long options = -1);

    // ---- Editing ----
    int EditMode();
    // The current row's rec:: flags: New, Modified, Deleted, Unmodified, or OK for
    // a row the last UpdateBatch wrote; ConcurrencyViolation when that batch failed on it.
    int Status();
    void AddNew();
    void Update();
    void CancelUpdate();
    void UpdateBatch(int affectRecords = 3);
    void CancelBatch(int affectRecords = 3);
    void Delete(int affectRecords = 1);

    // ---- Fields ----
    // The same Fields object on every call. The recordset must be held by a
    // shared_ptr (make_shared, the registry's factory): its fields refer back to it.
    std::shared_ptr<ado::Fields> Fields();
    int fieldCount() const;
    // -1 when no field has that name (case ignored, the first of equal names).
    int fieldIndex(std::string_view name) const;
    Variant value(std::string_view name);
    void setValue(std::string_view name, const Variant& v);

    // ---- Events ----
    void subscribe(const std::shared_ptr<RecordsetEvents>& listener);
    void unsubscribe(const RecordsetEvents* listener);

    // Bytes held by the rows and this view (for the benchmarks).
    std::size_t memoryBytes() const;

private:
    friend class Field;
    friend class ado::Fields;
    enum class Pos : uint8_t { Bof, Eof, Row, Deleted, Empty };

    void requireOpen() const;
    void requireWritable() const;
    void sync();
    void computeOrder();
    void applySort();
    void settle(std::optional<uint32_t> keepRow);
    void goFirst();
    uint32_t currentRow() const;
    // The current row when its fields can be read and written: not one marked
    // deleted, which a pending-rows filter shows.
    uint32_t liveCurrentRow() const;
    bool inView(uint32_t row) const;
    std::size_t indexOfBookmark(const Variant& bookmark) const;
    CellView cell(uint32_t row, int field) const;
    Criteria parseCriteria(std::string_view text, bool single) const;
    std::vector<uint32_t> affected(int affectRecords, const char* what);
    // Writes the rows back in one savepoint; what the archive holds afterwards.
    std::vector<RowRefresh> writeBack(const std::vector<uint32_t>& rows);
    void load(const std::function<void(backend::RowSink&)>& produce);
    void fireMove(EventReason r);
    void fireWill(EventReason r, long records);

    // Members reached through Field.
    const backend::ColumnMeta& fieldMeta(int field) const;
    Variant fieldValue(int field);
    Variant fieldOriginal(int field);
    void setFieldValue(int field, const Variant& v);
    uint64_t epoch() const noexcept { return epoch_; }

    std::shared_ptr<RowData> data_;
    std::shared_ptr<Connection> cn_;
    std::string source_;
    bool open_ = false;
    bool readOnly_ = false;
    bool clone_ = false;  // made by Clone: its moves are not counted as host events

    std::vector<uint32_t> order_;  // visible rows, in view order
    Pos pos_ = Pos::Empty;
    std::size_t idx_ = 0;           // index in order_ (for Deleted: where the next row now is)
    uint32_t deletedRow_ = 0;       // the deleted row still current
    uint64_t seenGeneration_ = 0;
    bool editing_ = false;          // a field written or a row added since the last Update
    std::optional<uint32_t> beforeAdd_;

    std::string filterText_;
    Criteria filter_;
    FilterGroup group_ = FilterGroup::None;
    // Sorted rows: those the last Delete, UpdateBatch or CancelBatch acted on,
    // whether they were written by a successful UpdateBatch, and those it failed on.
    std::vector<uint32_t> touched_;
    bool touchedWritten_ = false;
    std::vector<uint32_t> conflicts_;
    std::string sortText_;
    std::vector<SortKey> sort_;

    std::vector<std::weak_ptr<RecordsetEvents>> listeners_;
    uint64_t epoch_ = 0;
    std::shared_ptr<ado::Fields> fields_;
};

// The fields of a recordset, by name or by 0-based position.
class Fields : public Object {
public:
    explicit Fields(std::weak_ptr<Recordset> rs) : rs_(std::move(rs)) {}
    std::string_view typeName() const override { return "Fields"; }
    // A text is always a name; a number is a position (3265 when neither matches).
    std::shared_ptr<Field> Item(const Variant& index);
    long Count() const;

private:
    std::weak_ptr<Recordset> rs_;
    std::vector<std::shared_ptr<Field>> items_;
    uint64_t itemsEpoch_ = ~uint64_t{0};
};

class Field : public Object {
public:
    Field(std::weak_ptr<Recordset> rs, int index, uint64_t epoch) : rs_(std::move(rs)), index_(index), epoch_(epoch) {}
    std::string_view typeName() const override { return "Field"; }
    Variant Value() const;
    // Coerced to the field's type under the regional settings; Null allowed.
    void SetValue(const Variant& v) const;
    Variant OriginalValue() const;
    std::string Name() const;
    int Type() const;
    int Precision() const;
    long DefinedSize() const;

private:
    std::shared_ptr<Recordset> owner() const;  // 3420 once the recordset closed
    std::weak_ptr<Recordset> rs_;
    int index_;
    uint64_t epoch_;
};

}  // namespace hist::ado
