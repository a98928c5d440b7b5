// Field validation for data-entry boxes, from what the recordset says of the bound
// field (Type, Precision, DefinedSize) and nothing else. None of these members
// changes the control or the recordset.
#include "platform/runtime.hpp"
#include "tools/tool_members.hpp"
#include "tools/tool_support.hpp"

namespace hist::tools {

namespace {

constexpr int kInteger = 3, kDouble = 5, kDate = 7, kTimeStamp = 135;
constexpr int kVarChar = 200, kVarWChar = 202, kLongText = 203;
// What the comment classes answer for a long-text box.
constexpr int32_t kLongTextLimit = 536870910;
// Keys up to the space bar (control keys, Backspace, space) always pass.
constexpr int16_t kLastControlKey = 32;
// A numeric or date box takes only keys below 'A': digits and punctuation.
constexpr int16_t kFirstLetter = 65;

}  // namespace

int32_t validaDefinedSize(frame::RecordClass& cls, Variant& Text) {
    const ControlRef ctl(Text);
    const auto field = boundField(cls, ctl);
    const frame::DefinedSizeForm form = cls.variants().definedSize;
    switch (field->Type()) {
        case kInteger:
            // Five digits short of the column: the limit stops values long before
            // the column is full, on purpose.
            return form == frame::DefinedSizeForm::WholePrecision ? field->Precision() : field->Precision() - 5;
        case kDouble:
            return field->Precision();
        case kLongText: {
            const auto size = static_cast<int32_t>(field->DefinedSize());
            return form == frame::DefinedSizeForm::LongTextConstant ? kLongTextLimit : size;
        }
        case kVarChar:
        case kVarWChar:
            return static_cast<int32_t>(field->DefinedSize());
        default:
            return 10;
    }
}

bool validaKey(frame::RecordClass& cls, Variant& Text, int16_t KeyAscii) {
    if (KeyAscii <= kLastControlKey) return true;
    const ControlRef ctl(Text);
    const frame::KeyForm form = cls.variants().key;
    // With text selected the key replaces it, so it always fits.
    if (form == frame::KeyForm::SelectionReplaces && !equalsNumber(ctl.get("SelLength"), 0)) return true;
    const auto field = boundField(cls, ctl);
    const int32_t len = textLength(ctl.value());
    const bool digitOrMark = KeyAscii < kFirstLetter;
    switch (field->Type()) {
        case kInteger: {
            const int32_t room = form == frame::KeyForm::WholePrecision ? field->Precision() : field->Precision() - 5;
            return digitOrMark && len < room;
        }
        case kVarChar:
        case kVarWChar:
            return len < field->DefinedSize();
        case kLongText:
            return true;
        default:
            return digitOrMark && len < field->Precision();
    }
}

bool validaValue(frame::RecordClass& cls, Variant& Text) {
    const ControlRef ctl(Text);
    const auto field = boundField(cls, ctl);
    switch (field->Type()) {
        case kInteger:
        case kDouble:
            return rt::IsNumeric(ctl.value());
        case kDate:
        case kTimeStamp:
            return rt::IsDate(ctl.value());
        default:
            return true;
    }
}

}  // namespace hist::tools
