// CreateFilter: one search control of a form into one condition of the recordset's
// Filter. The field's type picks the table, the control's kind the row; every
// condition that says something ends in a blank so the host can append the next.
#include <string>

#include "platform/runtime.hpp"
#include "tools/tool_members.hpp"
#include "tools/tool_support.hpp"

namespace hist::tools {

namespace {

using frame::FilterForm;

struct Operators {
    std::string text;   // for text fields
    std::string other;  // for everything else
};

Operators operatorsFor(FilterForm form, const std::string& iType) {
    bool ge = iType == "1", le = iType == "2";
    switch (form) {
        case FilterForm::Base:
            break;
        case FilterForm::WideRange:
            ge = ge || iType == "11";
            le = le || iType == "12";
            break;
        case FilterForm::Orders:
            ge = ge || iType == "10" || iType == "12";
            le = le || iType == "11" || iType == "13";
            break;
    }
    if (ge) return {">=", ">="};
    if (le) return {"<=", "<="};
    return {"Like", "="};
}

// <name> + one blank + operator + the opening piece + value + the closing piece.
std::string condition(const std::string& name, const std::string& op, const char* open, const Variant& value,
                      const char* close) {
    return name + " " + op + open + concatText(value) + close;
}

// Every row of a list, selected or not, joined by " Or ". Each row is made current
// (so "Text" follows it) and the control stays on its last row.
template <class Row>
std::string listWalk(const ControlRef& ctl, Row row) {
    std::string result;
    const int32_t count = rt::CLng(ctl.get("ListCount"));
    for (int32_t i = 0; i < count; ++i) {
        if (!result.empty()) result += " Or ";
        ctl.set("ListIndex", Variant(i));
        result += row();
    }
    return result;
}

bool listHasRows(const ControlRef& ctl) { return !equalsNumber(ctl.get("ListCount"), 0); }

// The three-way combo of the orders' form: first row "<> 0", second "= 0", else nothing.
std::string threeWay(const ControlRef& ctl, const std::string& name) {
    const Variant index = ctl.get("ListIndex");
    if (equalsNumber(index, 0)) return name + " <> 0 ";
    if (equalsNumber(index, 1)) return name + " = 0 ";
    return {};
}

std::string onText(const ControlRef& ctl, const std::string& name, const std::string& top) {
    if (ctl.is(ControlKind::DataCombo)) {
        // A bound combo compares the whole bound value.
        return hasText(ctl.value()) ? condition(name, top, " '", ctl.get("BoundText"), "' ") : std::string();
    }
    if (ctl.is(ControlKind::ListBox)) {
        if (!listHasRows(ctl)) return {};
        return listWalk(ctl, [&] { return condition(name, top, " '", ctl.get("Text"), "' "); });
    }
    // Combo boxes and any other control: the text as a prefix, whatever the operator.
    return hasText(ctl.value()) ? condition(name, top, " '", ctl.get("Text"), "*' ") : std::string();
}

std::string onNumber(const ControlRef& ctl, const std::string& name, const std::string& op, FilterForm form) {
    if (ctl.is(ControlKind::CheckBox)) {
        const Variant value = ctl.get("Value");
        if (equalsNumber(value, 1)) return name + " <> 0 ";
        if (equalsNumber(ctl.get("Value"), 0)) return condition(name, "=", " ", ctl.value(), " ");
        return {};
    }
    if (form == FilterForm::Orders && ctl.is(ControlKind::ComboBox)) return threeWay(ctl, name);
    if (ctl.is(ControlKind::ListBox)) {
        if (!listHasRows(ctl)) return {};
        return listWalk(ctl, [&] { return condition(name, op, " ", ctl.get("Text"), " "); });
    }
    return hasText(ctl.value()) ? condition(name, op, " ", ctl.value(), " ") : std::string();
}

std::string onBoolean(const ControlRef& ctl, const std::string& name, const std::string& op, FilterForm form) {
    if (ctl.is(ControlKind::CheckBox)) {
        // An unchecked box adds no condition on a boolean.
        return equalsNumber(ctl.get("Value"), 1) ? name + " <> 0 " : std::string();
    }
    if (ctl.is(ControlKind::TextBox))
        return hasText(ctl.value()) ? condition(name, op, " ", ctl.value(), " ") : std::string();
    if (form == FilterForm::Orders && ctl.is(ControlKind::ComboBox)) return threeWay(ctl, name);
    if (ctl.is(ControlKind::ListBox)) {
        if (!listHasRows(ctl)) return {};
        return listWalk(ctl, [&] { return condition(name, op, "  ", ctl.get("Text"), " "); });
    }
    // Any other control must have "Value".
    const Variant value = ctl.get("Value");
    if (equalsNumber(value, 1) || equalsNumber(ctl.get("Value"), 0))
        return condition(name, "=", " ", ctl.value(), " ");
    return {};
}

}  // namespace

std::string createFilter(frame::RecordClass& cls, Variant& ctlArg, std::string& iType) {
    const FilterForm form = cls.variants().filter;
    const Operators ops = operatorsFor(form, iType);
    const ControlRef ctl(ctlArg);
    const auto field = boundField(cls, ctl);
    const std::string name = field->Name();
    const int type = field->Type();
    if (type == 200 || type == 202) return onText(ctl, name, ops.text);
    // The orders' form counts a 16-bit integer as a number too.
    if (type == 3 || type == 5 || (type == 2 && form == FilterForm::Orders))
        return onNumber(ctl, name, ops.other, form);
    if (type == 11) return onBoolean(ctl, name, ops.other, form);
    // Dates and every other type, long text among them: the control's text as shown,
    // between #, with no conversion.
    return hasText(ctl.value()) ? condition(name, ops.other, " #", ctl.value(), "# ") : std::string();
}

}  // namespace hist::tools
