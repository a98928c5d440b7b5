// Position, navigation, editing and the transaction members over the primary
// recordset.
#include "frame/record.hpp"

#include "ado/connection.hpp"
#include "ado/recordset.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"

namespace hist::frame {


bool RecordClass::EditingRecord() {
    try {
        return rs().EditMode() != 0;
    } catch (const Error&) {
        return false;
    }
}

int32_t RecordClass::AbsolutePosition() {
    try {
        return static_cast<int32_t>(rs().AbsolutePosition());
    } catch (const Error&) {
        return 0;
    }
}

bool RecordClass::ExistenRegistros() { return !bofAndEof(rs()); }

void RecordClass::MoveFirst() {
    auto& r = rs();
    if (!bofAndEof(r)) r.MoveFirst();
}

void RecordClass::MoveLast() {
    auto& r = rs();
    if (!bofAndEof(r)) r.MoveLast();
}

void RecordClass::MoveNext() {
    auto& r = rs();
    if (!r.Eof()) r.MoveNext();
    // The cursor never rests past the end; running off it is told by a beep.
    if (r.Eof() && r.RecordCount() >= 1) {
        Events::beep();
        r.MoveLast();
    }
}

void RecordClass::MovePrevious() {
    auto& r = rs();
    if (!r.Bof()) r.MovePrevious();
    if (r.Bof() && r.RecordCount() >= 1) {
        Events::beep();
        r.MoveFirst();
    }
}

void RecordClass::MoveToBookmark(Variant& mybookmark) {
    // Bookmarks travel as numbers: the leading numeric value of the text form.
    const double bookmark = rt::Val(rt::CStr(mybookmark));
    rs().SetBookmark(Variant(bookmark));
}

void RecordClass::FindRecord(const std::string& Criteria, int16_t Index) {
    auto& r = rs();
    const int16_t position = v_.findField == kFindByIndex ? Index : v_.findField;
    const std::string field = r.Fields()->Item(Variant(position))->Name();
    // The criterion is not escaped: it is a recordset filter, not a statement.
    const bool prefix = v_.findPrefix && Index != 0;
    r.Find(field + (prefix ? " Like '" + Criteria + "*'" : " = '" + Criteria + "'"), 0, 1, Variant::missing());
}

Variant RecordClass::sourcedValue(ValueSource source, const Variant& vId, const Variant& constant) {
    switch (source) {
        case ValueSource::NuevoCodigoPlusCount: {
            ConnPtr cn = GetConnection();
            return plus(NuevoCodigo(Variant(), cn), recordCount(rs()));
        }
        case ValueSource::NuevoCodigoOfId: {
            ConnPtr cn = GetConnection();
            return NuevoCodigo(vId, cn);
        }
        case ValueSource::NuevoCodigoOfIdAlone: {
            ConnPtr none;
            return NuevoCodigo(vId, none);
        }
        case ValueSource::NuevoCodigoInSeries: {
            ConnPtr none;
            return NuevoCodigoIn(Variant(), rt::CStr(constant), none);
        }
        case ValueSource::Constant:
            return constant;
        case ValueSource::TimeOfDay:
            return Variant(DateValue{Clock::timeOfDay()});
        case ValueSource::TodayShortDate:
            return Variant(rt::Format(Variant(DateValue{Clock::today()}), "Short Date"));
        case ValueSource::RecordCount:
        case ValueSource::Counter:
        case ValueSource::NuevoCodigoCounter:
            break;
    }
    return Variant(recordCount(rs()));
}

void RecordClass::AddNew(bool& bDefVal) {
    auto& r = rs();
    r.AddNew();
    if (!bDefVal) return;
    writeNewRowDefaults(r);
}

void RecordClass::AddNewDocument(bool& bDefVal, bool& /*bIsInvoiced*/) { AddNew(bDefVal); }

void RecordClass::writeNewRowDefaults(ado::Recordset& r) {
    for (const FieldDefault& d : v_.addNewDefaults) r.setValue(d.field, sourcedValue(d.source, Variant(), d.constant));
}

void RecordClass::Update() {
    auto& r = rs();
    if (v_.update.guard && bofAndEof(r)) return;
    if (!v_.update.copyInto.empty()) r.setValue(v_.update.copyInto, r.value(v_.update.copyFrom));
    if (!v_.update.stampTime.empty()) r.setValue(v_.update.stampTime, sourcedValue(ValueSource::TimeOfDay, Variant()));
    r.UpdateBatch(v_.update.scope);
}

void RecordClass::Delete() {
    switch (v_.del) {
        case DeleteForm::Batch:
            rs().Delete(kAffectCurrent);
            rs().UpdateBatch(kAffectAll);
            break;
        case DeleteForm::Plain:
            rs().Delete(kAffectCurrent);
            break;
        case DeleteForm::Line:
            rs().Delete(kAffectCurrent);
            rs().Update();
            break;
    }
}

void RecordClass::Cancel() { rs().CancelUpdate(); }

void RecordClass::CancelBatch() { rs().CancelBatch(kAffectAll); }

void RecordClass::CnnBeginTrans() {
    ensureConnection();
    cnnPrimary_->BeginTrans();
}

void RecordClass::CnnCommitTrans() {
    ensureConnection();
    cnnPrimary_->CommitTrans();
}

void RecordClass::CnnRollbackTrans() {
    ensureConnection();
    cnnPrimary_->RollbackTrans();
}

}  // namespace hist::frame
