// The recordset's cursor and views: opening and closing, position and moves, Find,
// Filter, Sort, Clone, Requery, and the fields of the current row. Editing is in
// recordset_edit.cpp, the batch write-back in recordset_write.cpp.
#include "ado/recordset.hpp"

#include <algorithm>
#include <unordered_map>

#include "ado/recordset_rows.hpp"
#include "ado/text_fold.hpp"
#include "ado/values.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"
#include "sql/textmatch.hpp"

namespace hist::ado {

using namespace detail;

namespace {


class Loader : public backend::RowSink {
public:
    explicit Loader(RowData& d) : d_(d) {}
    void columns(const std::vector<backend::ColumnMeta>& cols) override {
        d_.cols = cols;
        d_.store.reset(cols.size());
        d_.fieldCol.clear();
        d_.byName.clear();
        for (std::size_t k = 0; k < cols.size(); ++k) {
            if (cols[k].hiddenRowId) continue;
            const int field = static_cast<int>(d_.fieldCol.size());
            d_.fieldCol.push_back(static_cast<int>(k));
            d_.byName.emplace(text::fold(cols[k].name), field);  // the first of equal names stays
        }
    }
    void row(std::span<const backend::Cell> cells) override { d_.store.append(cells); }

private:
    RowData& d_;
};

}  // namespace

Recordset::Recordset() = default;
Recordset::~Recordset() = default;

// ---------------------------------------------------------------- helpers

void Recordset::requireOpen() const {
    if (!open_) raise(err::ObjectClosed, err::SrcRecordset);
}

void Recordset::requireWritable() const {
    if (readOnly_)
        raise(err::NotCapable, err::SrcRecordset,
              "Current Recordset does not support updating. This may be a limitation of the provider, or of "
              "the selected locktype.");
}

CellView Recordset::cell(uint32_t row, int field) const {
    const RowData& d = *data_;
    if (d.statusOf(row) != RowStatus::Unchanged) {
        auto it = d.overlay.find(row);
        if (it != d.overlay.end()) return variantToView(it->second.values[static_cast<std::size_t>(field)]);
    }
    return d.store.get(row, static_cast<std::size_t>(d.fieldCol[static_cast<std::size_t>(field)]));
}

Criteria Recordset::parseCriteria(std::string_view text, bool single) const {
    const RowData& d = *data_;
    return Criteria::parse(
        text, [this](std::string_view name) { return fieldIndex(name); },
        [&d](int f) { return d.cols[static_cast<std::size_t>(d.fieldCol[static_cast<std::size_t>(f)])].type; },
        single);
}

// Whether a row belongs to this view: a live row passing the criteria, or under a
// group filter a row of that group.
bool Recordset::inView(uint32_t r) const {
    const RowData& d = *data_;
    const RowStatus s = d.statusOf(r);
    switch (group_) {
    case FilterGroup::None: return d.live(r) && (filter_.empty() || filter_.matches([&](int f) { return cell(r, f); }));
    case FilterGroup::Pending: return s == RowStatus::Modified || s == RowStatus::New || s == RowStatus::Deleted;
    case FilterGroup::Affected: return d.live(r) && std::binary_search(touched_.begin(), touched_.end(), r);
    case FilterGroup::Fetched: return d.live(r) && r < d.fetched;
    case FilterGroup::Conflicting:
        return s != RowStatus::Gone && std::binary_search(conflicts_.begin(), conflicts_.end(), r);
    }
    return false;
}

// The visible rows, in fetch order, then sorted.
void Recordset::computeOrder() {
    RowData& d = *data_;
    order_.clear();
    const uint32_t n = static_cast<uint32_t>(d.store.rows());
    order_.reserve(n);
    if (filter_.empty() && group_ == FilterGroup::None) {
        for (uint32_t r = 0; r < n; ++r)
            if (d.live(r)) order_.push_back(r);
    } else {
        for (uint32_t r = 0; r < n; ++r)
            if (inView(r)) order_.push_back(r);
    }
    applySort();
    seenGeneration_ = d.generation;
}

void Recordset::applySort() {
    if (sort_.empty()) return;
    const RowData& d = *data_;
    sortRows(
        order_, sort_, [this](uint32_t r, int f) { return cell(r, f); },
        [&d](int f) { return classOf(d.cols[static_cast<std::size_t>(d.fieldCol[static_cast<std::size_t>(f)])].type); });
}

// Puts the cursor on `keepRow` when it is visible, else on the first row.
void Recordset::settle(std::optional<uint32_t> keepRow) {
    if (keepRow) {
        auto it = std::find(order_.begin(), order_.end(), *keepRow);
        if (it != order_.end()) {
            pos_ = Pos::Row;
            idx_ = static_cast<std::size_t>(it - order_.begin());
            return;
        }
    }
    goFirst();
}

void Recordset::goFirst() {
    idx_ = 0;
    pos_ = order_.empty() ? Pos::Empty : Pos::Row;
}

// Rows added or removed through a clone: this view is computed again.
void Recordset::sync() {
    if (!open_ || seenGeneration_ == data_->generation) return;
    const Pos was = pos_;
    std::optional<uint32_t> keep;
    if (pos_ == Pos::Row) keep = order_[idx_];
    const std::size_t oldIdx = idx_;
    computeOrder();
    if (keep) {
        auto it = std::find(order_.begin(), order_.end(), *keep);
        if (it != order_.end()) {
            idx_ = static_cast<std::size_t>(it - order_.begin());
            return;
        }
        // The current row went away through the clone: as after a Delete here.
        pos_ = Pos::Deleted;
        deletedRow_ = *keep;
        idx_ = std::min(oldIdx, order_.size());
        return;
    }
    if (was == Pos::Deleted) {
        idx_ = std::min(oldIdx, order_.size());
    } else if (order_.empty()) {
        pos_ = Pos::Empty;
    } else if (was == Pos::Empty) {
        pos_ = Pos::Bof;
    }
}

uint32_t Recordset::currentRow() const {
    if (pos_ != Pos::Row) noCurrentRecord();
    return order_[idx_];
}

uint32_t Recordset::liveCurrentRow() const {
    const uint32_t row = currentRow();
    if (!data_->live(row))
        raise(err::NoCurrentRecord, err::SrcRecordset,
              withDetail(err::NoCurrentRecord, "The current row is marked for deletion."));
    return row;
}

void Recordset::fireMove(EventReason r) {
    // Counted in the thread's events for the host, once per operation. A clone's
    // moves are not: the listings walk clones row by row.
    if (!clone_) Events::raise(this, event::MoveComplete);
    auto copy = listeners_;
    for (auto& w : copy)
        if (auto l = w.lock()) l->MoveComplete(r, *this);
}

void Recordset::fireWill(EventReason r, long records) {
    auto copy = listeners_;
    for (auto& w : copy)
        if (auto l = w.lock()) l->WillChangeRecord(r, records, *this);
}

void Recordset::subscribe(const std::shared_ptr<RecordsetEvents>& listener) { listeners_.push_back(listener); }

void Recordset::unsubscribe(const RecordsetEvents* listener) {
    std::erase_if(listeners_, [&](const std::weak_ptr<RecordsetEvents>& w) {
        auto l = w.lock();
        return !l || l.get() == listener;
    });
}

// ---------------------------------------------------------------- open / close

void Recordset::load(const std::function<void(backend::RowSink&)>& produce) {
    auto d = std::make_shared<RowData>();
    Loader loader(*d);
    produce(loader);
    d->store.shrink();
    d->status.assign(d->store.rows(), static_cast<uint8_t>(RowStatus::Unchanged));
    d->fetched = static_cast<uint32_t>(d->store.rows());
    touched_.clear();
    touchedWritten_ = false;
    conflicts_.clear();
    data_ = std::move(d);
    editing_ = false;
    beforeAdd_.reset();
    // A filter or sort given before opening is read now, against the real fields.
    filter_ = filterText_.empty() ? Criteria{} : parseCriteria(filterText_, false);
    sort_ = parseSort(sortText_, [this](std::string_view n) { return fieldIndex(n); });
    computeOrder();
    goFirst();
}

void Recordset::Open(std::string_view sent, std::shared_ptr<Connection> cn) {
    if (open_) raise(err::ObjectOpen, err::SrcRecordset);
    if (!cn || cn->State() == 0) raise(err::InvalidConnection, err::SrcRecordset);
    std::string text(sent);
    try {
        load([&](backend::RowSink& sink) { cn->Query(text, sink); });
    } catch (...) {
        data_.reset();
        order_.clear();
        throw;
    }
    cn_ = std::move(cn);
    source_ = std::move(text);
    open_ = true;
    readOnly_ = false;
    fireMove(EventReason::Move);
}

void Recordset::OpenRows(const std::function<void(backend::RowSink&)>& produce) {
    if (open_) raise(err::ObjectOpen, err::SrcRecordset);
    try {
        load(produce);
    } catch (...) {
        data_.reset();
        order_.clear();
        throw;
    }
    cn_.reset();
    source_.clear();
    open_ = true;
    readOnly_ = false;
    fireMove(EventReason::Move);
}

void Recordset::Close() {
    requireOpen();
    open_ = false;
    data_.reset();
    order_.clear();
    order_.shrink_to_fit();
    cn_.reset();
    pos_ = Pos::Empty;
    editing_ = false;
    ++epoch_;
}

// ---------------------------------------------------------------- position

bool Recordset::Bof() {
    requireOpen();
    sync();
    return pos_ == Pos::Bof || pos_ == Pos::Empty;
}

bool Recordset::Eof() {
    requireOpen();
    sync();
    return pos_ == Pos::Eof || pos_ == Pos::Empty;
}

long Recordset::RecordCount() {
    requireOpen();
    sync();
    return static_cast<long>(order_.size());
}

long Recordset::AbsolutePosition() {
    requireOpen();
    sync();
    switch (pos_) {
    case Pos::Row: return static_cast<long>(idx_) + 1;
    case Pos::Bof: return -2;
    case Pos::Eof: return -3;
    default: return -1;
    }
}

double Recordset::Bookmark() {
    requireOpen();
    sync();
    return static_cast<double>(currentRow()) + 1.0;
}

void Recordset::SetBookmark(const Variant& bookmark) {
    requireOpen();
    sync();
    idx_ = indexOfBookmark(bookmark);
    pos_ = Pos::Row;
    editing_ = false;
    fireMove(EventReason::Move);
}

// The place in this view of the row a bookmark names; 3001 when it names none.
std::size_t Recordset::indexOfBookmark(const Variant& bookmark) const {
    auto bad = [&] {
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "Bookmark names no row."));
    };
    if (bookmark.isEmpty() || bookmark.isNull() || bookmark.isMissing() || bookmark.isObject()) bad();
    double d = 0;
    try {
        d = rt::CDbl(bookmark);
    } catch (const Error&) {
        bad();
    }
    if (d < 1 || d != static_cast<double>(static_cast<int64_t>(d)) ||
        d > static_cast<double>(data_->store.rows()))
        bad();
    const uint32_t row = static_cast<uint32_t>(d) - 1;
    auto it = std::find(order_.begin(), order_.end(), row);
    if (it == order_.end()) bad();
    return static_cast<std::size_t>(it - order_.begin());
}

void Recordset::MoveFirst() {
    requireOpen();
    sync();
    if (pos_ == Pos::Empty) noCurrentRecord();
    editing_ = false;
    goFirst();
    fireMove(EventReason::MoveFirst);
}

void Recordset::MoveLast() {
    requireOpen();
    sync();
    if (pos_ == Pos::Empty) noCurrentRecord();
    editing_ = false;
    if (order_.empty()) {
        pos_ = Pos::Empty;
    } else {
        pos_ = Pos::Row;
        idx_ = order_.size() - 1;
    }
    fireMove(EventReason::MoveLast);
}

void Recordset::MoveNext() {
    requireOpen();
    sync();
    std::size_t next = 0;
    switch (pos_) {
    case Pos::Empty:
    case Pos::Eof: noCurrentRecord();
    case Pos::Bof: next = 0; break;
    case Pos::Row: next = idx_ + 1; break;
    case Pos::Deleted: next = idx_; break;
    }
    editing_ = false;
    if (order_.empty()) {
        pos_ = Pos::Empty;
    } else if (next >= order_.size()) {
        pos_ = Pos::Eof;
        idx_ = order_.size();
    } else {
        pos_ = Pos::Row;
        idx_ = next;
    }
    fireMove(EventReason::MoveNext);
}

void Recordset::MovePrevious() {
    requireOpen();
    sync();
    std::size_t prev = 0;
    bool before = false;
    switch (pos_) {
    case Pos::Empty:
    case Pos::Bof: noCurrentRecord();
    case Pos::Eof: prev = order_.size(); break;
    case Pos::Row: prev = idx_; break;
    case Pos::Deleted: prev = idx_; break;
    }
    before = prev == 0;
    editing_ = false;
    if (order_.empty()) {
        pos_ = Pos::Empty;
    } else if (before) {
        pos_ = Pos::Bof;
        idx_ = 0;
    } else {
        pos_ = Pos::Row;
        idx_ = prev - 1;
    }
    fireMove(EventReason::MovePrevious);
}

void Recordset::Find(std::string_view criteria, long skipRecords, int searchDirection, const Variant& start) {
    requireOpen();
    sync();
    const Criteria c = parseCriteria(criteria, true);
    if (searchDirection != 1 && searchDirection != -1)
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "SearchDirection."));
    const long n = static_cast<long>(order_.size());
    long from = 0;
    if (start.isMissing() || start.isEmpty() ||
        ((start.type() == VarType::Long || start.type() == VarType::Integer) && rt::CLng(start) == 0)) {
        from = static_cast<long>(order_.empty() ? 0 : idx_);
        if (pos_ != Pos::Row) noCurrentRecord();
    } else if (start.type() == VarType::Long || start.type() == VarType::Integer) {
        const long which = rt::CLng(start);
        if (which == 1)
            from = 0;
        else if (which == 2)
            from = n - 1;
        else
            raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "Start."));
    } else {
        from = static_cast<long>(indexOfBookmark(start));
    }
    from += searchDirection * skipRecords;
    editing_ = false;
    for (long i = from; i >= 0 && i < n; i += searchDirection) {
        const uint32_t r = order_[static_cast<std::size_t>(i)];
        if (c.matches([&](int f) { return cell(r, f); })) {
            pos_ = Pos::Row;
            idx_ = static_cast<std::size_t>(i);
            fireMove(EventReason::Move);
            return;
        }
    }
    if (searchDirection > 0) {
        pos_ = order_.empty() ? Pos::Empty : Pos::Eof;
        idx_ = order_.size();
    } else {
        pos_ = order_.empty() ? Pos::Empty : Pos::Bof;
        idx_ = 0;
    }
    fireMove(EventReason::Move);
}

// ---------------------------------------------------------------- filter, sort, clone, requery

Variant Recordset::Filter() const {
    if (group_ != FilterGroup::None) return Variant(static_cast<int32_t>(group_));
    if (filterText_.empty()) return Variant(static_cast<int32_t>(0));
    return Variant(filterText_);
}

void Recordset::SetFilter(const Variant& filter) {
    std::string text;
    FilterGroup group = FilterGroup::None;
    if (filter.isString()) {
        text = filter.asString();
    } else if (filter.type() == VarType::Integer || filter.type() == VarType::Long) {
        const long value = rt::CLng(filter);
        if (value != 0 && value != 1 && value != 2 && value != 3 && value != 5)
            raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "Filter."));
        group = static_cast<FilterGroup>(value);
    } else {
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "Filter."));
    }
    if (!open_) {  // kept, read when the recordset opens
        filterText_ = text;
        group_ = group;
        return;
    }
    sync();
    Criteria parsed = text.empty() ? Criteria{} : parseCriteria(text, false);
    filterText_ = std::move(text);
    filter_ = std::move(parsed);
    group_ = group;
    editing_ = false;
    computeOrder();
    goFirst();
    fireMove(EventReason::Move);
}

void Recordset::SetSort(std::string_view sort) {
    if (!open_) {
        sortText_ = std::string(sort);
        return;
    }
    sync();
    std::vector<SortKey> keys = parseSort(sort, [this](std::string_view n) { return fieldIndex(n); });
    std::optional<uint32_t> keep;
    if (pos_ == Pos::Row) keep = order_[idx_];
    sortText_ = std::string(sort);
    sort_ = std::move(keys);
    // Equal keys keep the fetch order, and an empty sort is the fetch order itself.
    std::sort(order_.begin(), order_.end());
    applySort();
    settle(keep);
    fireMove(EventReason::Move);
}

std::shared_ptr<Recordset> Recordset::Clone(int lockType) {
    requireOpen();
    if (lockType != -1 && lockType != 1)
        raise(err::BadArgument, err::SrcRecordset, withDetail(err::BadArgument, "LockType."));
    sync();
    auto c = std::make_shared<Recordset>();
    c->data_ = data_;
    c->cn_ = cn_;
    c->source_ = source_;
    c->open_ = true;
    c->readOnly_ = readOnly_ || lockType == 1;
    c->clone_ = true;
    c->computeOrder();
    c->goFirst();
    return c;
}

void Recordset::Requery(long /*options*/) {
    requireOpen();
    if (editing_)
        raise(err::IllegalOperation, err::SrcRecordset,
              withDetail(err::IllegalOperation, "Requery while a row is being edited or added."));
    if (!cn_ || cn_->State() == 0) raise(err::InvalidConnection, err::SrcRecordset);
    cn_->report("Requery", source_);
    // The old rows stay with the clones, which are no longer in step with this one.
    std::shared_ptr<Connection> cn = cn_;
    load([&](backend::RowSink& sink) { cn->Query(source_, sink); });
    fireMove(EventReason::Requery);
}

// ---------------------------------------------------------------- fields

std::shared_ptr<ado::Fields> Recordset::Fields() {
    if (!fields_) fields_ = std::make_shared<ado::Fields>(std::static_pointer_cast<Recordset>(shared_from_this()));
    return fields_;
}

int Recordset::fieldCount() const { return open_ ? static_cast<int>(data_->fieldCol.size()) : 0; }

int Recordset::fieldIndex(std::string_view name) const {
    if (!data_) return -1;
    auto it = data_->byName.find(text::fold(name));
    return it == data_->byName.end() ? -1 : it->second;
}

namespace {
[[noreturn]] void unknownField(std::string_view name) {
    raise(err::ItemNotFound, err::SrcRecordset, withDetail(err::ItemNotFound, "Field: " + std::string(name)));
}
}  // namespace

Variant Recordset::value(std::string_view name) {
    requireOpen();
    const int f = fieldIndex(name);
    if (f < 0) unknownField(name);
    return fieldValue(f);
}

void Recordset::setValue(std::string_view name, const Variant& v) {
    requireOpen();
    const int f = fieldIndex(name);
    if (f < 0) unknownField(name);
    setFieldValue(f, v);
}

const backend::ColumnMeta& Recordset::fieldMeta(int field) const {
    return data_->cols[static_cast<std::size_t>(data_->fieldCol[static_cast<std::size_t>(field)])];
}

Variant Recordset::fieldValue(int field) {
    requireOpen();
    sync();
    const uint32_t row = liveCurrentRow();
    const RowData& d = *data_;
    if (d.statusOf(row) != RowStatus::Unchanged) {
        auto it = d.overlay.find(row);
        if (it != d.overlay.end()) return it->second.values[static_cast<std::size_t>(field)];
    }
    return cellToVariant(d.store.get(row, static_cast<std::size_t>(d.fieldCol[static_cast<std::size_t>(field)])),
                         fieldMeta(field).type);
}

Variant Recordset::fieldOriginal(int field) {
    requireOpen();
    sync();
    const uint32_t row = liveCurrentRow();
    const RowData& d = *data_;
    if (d.statusOf(row) == RowStatus::New) return Variant();
    return cellToVariant(d.store.get(row, static_cast<std::size_t>(d.fieldCol[static_cast<std::size_t>(field)])),
                         fieldMeta(field).type);
}

void Recordset::setFieldValue(int field, const Variant& v) {
    requireOpen();
    sync();
    requireWritable();
    const uint32_t row = liveCurrentRow();
    const backend::ColumnMeta& meta = fieldMeta(field);
    Variant coerced;
    try {
        coerced = coerceToField(v, meta.type);
    } catch (const Error& e) {
        raise(err::DataConversion, err::SrcRecordset,
              withDetail(err::DataConversion, "Field: " + meta.name + " (" + e.description() + ")"));
    }
    RowData& d = *data_;
    if (d.statusOf(row) == RowStatus::Unchanged) {
        fireWill(EventReason::FirstChange, 1);
        Overlay ov;
        ov.values.reserve(d.fieldCol.size());
        for (std::size_t f = 0; f < d.fieldCol.size(); ++f)
            ov.values.push_back(
                cellToVariant(d.store.get(row, static_cast<std::size_t>(d.fieldCol[f])), d.cols[static_cast<std::size_t>(d.fieldCol[f])].type));
        ov.changed.assign(d.fieldCol.size(), 0);
        d.overlay[row] = std::move(ov);
        d.status[row] = static_cast<uint8_t>(RowStatus::Modified);
    }
    Overlay& ov = d.overlay[row];
    ov.values[static_cast<std::size_t>(field)] = std::move(coerced);
    ov.changed[static_cast<std::size_t>(field)] = 1;
    editing_ = true;
}

std::size_t Recordset::memoryBytes() const {
    std::size_t total = sizeof(*this) + order_.capacity() * sizeof(uint32_t);
    if (data_) total += data_->store.bytes() + data_->status.capacity() + data_->overlay.size() * 64;
    return total;
}

// ---- Fields / Field

long Fields::Count() const {
    auto rs = rs_.lock();
    return rs ? rs->fieldCount() : 0;
}

std::shared_ptr<Field> Fields::Item(const Variant& index) {
    auto rs = rs_.lock();
    if (!rs || !rs->open_) raise(err::ObjectClosed, err::SrcRecordset);
    if (itemsEpoch_ != rs->epoch() || items_.size() != static_cast<std::size_t>(rs->fieldCount())) {
        items_.clear();
        for (int f = 0; f < rs->fieldCount(); ++f) items_.push_back(std::make_shared<Field>(rs_, f, rs->epoch()));
        itemsEpoch_ = rs->epoch();
    }
    long pos = -1;
    if (index.isString()) {
        pos = rs->fieldIndex(index.asString());
        if (pos < 0) unknownField(index.asString());
    } else if (index.isNumeric()) {
        try {
            pos = rt::CLng(index);
        } catch (const Error&) {
            pos = -1;
        }
    }
    if (pos < 0 || pos >= static_cast<long>(items_.size()))
        raise(err::ItemNotFound, err::SrcRecordset,
              withDetail(err::ItemNotFound, index.isNumeric() ? "Position: " + rt::CStr(index) : "Index."));
    return items_[static_cast<std::size_t>(pos)];
}

std::shared_ptr<Recordset> Field::owner() const {
    auto rs = rs_.lock();
    if (!rs || !rs->open_ || rs->epoch() != epoch_ || index_ >= rs->fieldCount())
        raise(err::ObjectNoLongerValid, err::SrcRecordset);
    return rs;
}

Variant Field::Value() const { return owner()->fieldValue(index_); }
void Field::SetValue(const Variant& v) const { owner()->setFieldValue(index_, v); }
Variant Field::OriginalValue() const { return owner()->fieldOriginal(index_); }
std::string Field::Name() const { return owner()->fieldMeta(index_).name; }
int Field::Type() const { return static_cast<int>(owner()->fieldMeta(index_).type); }
int Field::Precision() const { return owner()->fieldMeta(index_).precision; }
long Field::DefinedSize() const { return owner()->fieldMeta(index_).definedSize; }

}  // namespace hist::ado
