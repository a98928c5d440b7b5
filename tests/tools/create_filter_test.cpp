// CreateFilter over stand-in controls: every row of the tables by field type and
// control kind, the list walk and what it leaves on the control, the operators of
// each form, and the failures that pass to the caller.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ado/recordset.hpp"
#include "platform/dispatch.hpp"
#include "tools/tool_members.hpp"
#include "tools_fixture.hpp"

namespace hist::tools {
namespace {

using frame::FilterForm;
using test::control;
using test::errorOf;

using test::kAllTypes;

const frame::ClassVariants kBase = test::toolVariants("ClsPruebaBase", "HOrdenes_Lineas", kAllTypes);
const frame::ClassVariants kWide =
    test::toolVariants("ClsPruebaDocumento", "HOrdenes_Lineas", kAllTypes, FilterForm::WideRange);
const frame::ClassVariants kOrders =
    test::toolVariants("ClsPruebaOrdenes", "HOrdenes_Lineas", kAllTypes, FilterForm::Orders);

class CreateFilterTest : public test::ToolsFixture {
protected:
    void SetUp() override {
        ToolsFixture::SetUp();
        for (auto* c : {&base, &wide, &orders}) open(*c);
    }

    static std::string build(frame::RecordClass& cls, const std::shared_ptr<StandInControl>& ctl,
                             std::string iType = {}) {
        Variant v(ctl);
        return tools::createFilter(cls, v, iType);
    }

    frame::RecordClass base{kBase};
    frame::RecordClass wide{kWide};
    frame::RecordClass orders{kOrders};
};

struct Case {
    const char* what;
    ControlKind kind;
    const char* field;
    std::vector<std::pair<std::string_view, Variant>> props;
    std::string iType;
    std::string expected;
};

TEST_F(CreateFilterTest, BaseFormByFieldTypeAndControlKind) {
    using K = ControlKind;
    const std::vector<Case> cases = {
        // Text fields.
        {"text box, iType omitted", K::TextBox, "Codigo", {{"Text", "Ana"}}, "", "Codigo Like 'Ana*' "},
        {"text box, iType 1 keeps the *", K::TextBox, "Codigo", {{"Text", "Ana"}}, "1", "Codigo >= 'Ana*' "},
        {"text box, iType 2", K::TextBox, "Codigo", {{"Text", "Ana"}}, "2", "Codigo <= 'Ana*' "},
        {"text box, unknown iType", K::TextBox, "Codigo", {{"Text", "Ana"}}, "7", "Codigo Like 'Ana*' "},
        {"quotes are not doubled", K::TextBox, "Codigo", {{"Text", "O'Neil"}}, "", "Codigo Like 'O'Neil*' "},
        {"combo box", K::ComboBox, "Codigo", {{"Text", "Ana"}}, "", "Codigo Like 'Ana*' "},
        {"bound combo compares whole", K::DataCombo, "Codigo", {{"Text", "Ana"}, {"BoundText", "A-17"}}, "",
         "Codigo Like 'A-17' "},
        {"bound combo without text", K::DataCombo, "Codigo", {{"Text", ""}, {"BoundText", "A-17"}}, "", ""},
        {"other control: Value tested, Text used", K::Other, "Codigo", {{"Value", "x"}, {"Text", "Ana"}}, "",
         "Codigo Like 'Ana*' "},
        // Number fields.
        {"text box on a double, iType 2", K::TextBox, "Cantidad", {{"Text", "12"}}, "2", "Cantidad <= 12 "},
        {"text box on a long", K::TextBox, "Numero", {{"Text", "12"}}, "", "Numero = 12 "},
        {"text is not checked", K::TextBox, "Numero", {{"Text", "abc"}}, "", "Numero = abc "},
        {"check box on", K::CheckBox, "Numero", {{"Value", int16_t{1}}}, "", "Numero <> 0 "},
        {"check box off is its Value", K::CheckBox, "Numero", {{"Value", int16_t{0}}}, "", "Numero = 0 "},
        {"check box off ignores iType", K::CheckBox, "Numero", {{"Value", int16_t{0}}}, "1", "Numero = 0 "},
        {"check box greyed", K::CheckBox, "Cantidad", {{"Value", int16_t{2}}}, "", ""},
        {"combo box is any other control", K::ComboBox, "Numero", {{"Text", "7"}}, "1", "Numero >= 7 "},
        // Boolean fields.
        {"check box on", K::CheckBox, "P11", {{"Value", int16_t{1}}}, "", "P11 <> 0 "},
        {"check box off adds nothing", K::CheckBox, "P11", {{"Value", int16_t{0}}}, "", ""},
        {"text box", K::TextBox, "P11", {{"Text", "-1"}}, "", "P11 = -1 "},
        {"text box, iType 1", K::TextBox, "P11", {{"Text", "-1"}}, "1", "P11 >= -1 "},
        {"other control at 0", K::Other, "P11", {{"Value", int16_t{0}}}, "", "P11 = 0 "},
        {"other control at 1 ignores iType", K::Other, "P11", {{"Value", int16_t{1}}}, "2", "P11 = 1 "},
        {"other control at 2", K::Other, "P11", {{"Value", int16_t{2}}}, "", ""},
        {"combo box tests Value, writes its text", K::ComboBox, "P11", {{"Text", "Sí"}, {"Value", int16_t{1}}}, "",
         "P11 = Sí "},
        {"combo box with Value 2", K::ComboBox, "P11", {{"Text", "Sí"}, {"Value", int16_t{2}}}, "", ""},
        // Dates and every other type.
        {"date, iType 1", K::TextBox, "Fecha", {{"Text", "01/02/2003"}}, "1", "Fecha >= #01/02/2003# "},
        {"date, check box off has the text 0", K::CheckBox, "Fecha", {{"Value", int16_t{0}}}, "", "Fecha = #0# "},
        {"long text goes the date way", K::TextBox, "Comentarios", {{"Text", "hola"}}, "", "Comentarios = #hola# "},
        {"16-bit integer is no number here", K::TextBox, "Facturado", {{"Text", "3"}}, "", "Facturado = #3# "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.field) + ": " + c.what);
        auto ctl = control(c.kind, c.field);
        for (const auto& [name, value] : c.props) ctl->define(name, value);
        EXPECT_EQ(build(base, ctl, c.iType), c.expected);
    }
}

TEST_F(CreateFilterTest, AnEmptyTextBoxSaysNothingOnEveryFieldType) {
    for (const char* field : {"Codigo", "Cantidad", "Numero", "Facturado", "Fecha", "P11", "Comentarios"}) {
        for (frame::RecordClass* cls : {&base, &wide, &orders}) {
            SCOPED_TRACE(std::string(field) + " in " + std::string(cls->variants().className));
            EXPECT_EQ(build(*cls, control(ControlKind::TextBox, field, {{"Text", ""}})), "");
            EXPECT_EQ(build(*cls, control(ControlKind::TextBox, field, {{"Text", Variant::null()}})), "");
        }
    }
}

TEST_F(CreateFilterTest, TheListWalkJoinsEveryRowAndLeavesTheLastOneCurrent) {
    auto names = control(ControlKind::ListBox, "Codigo");
    names->setList({"A", "B", "C"});
    names->define("ListIndex", int32_t{0});
    EXPECT_EQ(build(base, names), "Codigo Like 'A'  Or Codigo Like 'B'  Or Codigo Like 'C' ");
    EXPECT_EQ(names->get("ListIndex"), Variant(int32_t{2}));
    EXPECT_EQ(names->get("Text"), Variant("C"));

    struct ListCase {
        const char* field;
        std::vector<std::string> rows;
        std::string iType;
        std::string expected;
    };
    const std::vector<ListCase> cases = {
        {"Codigo", {"A"}, "", "Codigo Like 'A' "},
        {"Codigo", {"A", "B"}, "2", "Codigo <= 'A'  Or Codigo <= 'B' "},
        {"Numero", {"1", "2"}, "1", "Numero >= 1  Or Numero >= 2 "},
        {"Cantidad", {"1,5"}, "", "Cantidad = 1,5 "},
        // Two blanks after the operator on a boolean.
        {"P11", {"-1", "0"}, "", "P11 =  -1  Or P11 =  0 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.field) + " " + c.expected);
        auto list = control(ControlKind::ListBox, c.field);
        list->setList(c.rows);
        EXPECT_EQ(build(base, list, c.iType), c.expected);
        EXPECT_EQ(list->get("ListIndex"), Variant(static_cast<int32_t>(c.rows.size() - 1)));
    }

    // An empty list says nothing and is left as it was.
    for (const char* field : {"Codigo", "Numero", "P11"}) {
        auto empty = control(ControlKind::ListBox, field);
        empty->setList({});
        EXPECT_EQ(build(base, empty), "") << field;
        EXPECT_EQ(empty->get("ListIndex"), Variant(int32_t{-1})) << field;
    }
}

TEST_F(CreateFilterTest, EachFormReadsItsOwnITypes) {
    struct OpCase {
        std::string iType;
        std::string base, wide, orders;  // the condition of the text box "5" on Numero
    };
    const std::vector<OpCase> cases = {
        {"", "Numero = 5 ", "Numero = 5 ", "Numero = 5 "},
        {"1", "Numero >= 5 ", "Numero >= 5 ", "Numero >= 5 "},
        {"2", "Numero <= 5 ", "Numero <= 5 ", "Numero <= 5 "},
        {"10", "Numero = 5 ", "Numero = 5 ", "Numero >= 5 "},
        {"11", "Numero = 5 ", "Numero >= 5 ", "Numero <= 5 "},
        {"12", "Numero = 5 ", "Numero <= 5 ", "Numero >= 5 "},
        {"13", "Numero = 5 ", "Numero = 5 ", "Numero <= 5 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("iType " + c.iType);
        auto box = control(ControlKind::TextBox, "Numero", {{"Text", "5"}});
        EXPECT_EQ(build(base, box, c.iType), c.base);
        EXPECT_EQ(build(wide, box, c.iType), c.wide);
        EXPECT_EQ(build(orders, box, c.iType), c.orders);
    }
    // The text operator follows the same choice; "11" is Like only in the base form.
    auto text = control(ControlKind::TextBox, "Codigo", {{"Text", "Ana"}});
    EXPECT_EQ(build(base, text, "11"), "Codigo Like 'Ana*' ");
    EXPECT_EQ(build(wide, text, "11"), "Codigo >= 'Ana*' ");
    EXPECT_EQ(build(orders, text, "11"), "Codigo <= 'Ana*' ");
}

TEST_F(CreateFilterTest, TheOrdersFormCountsShortIntegersAndReadsCombosThreeWays) {
    EXPECT_EQ(build(orders, control(ControlKind::TextBox, "Facturado", {{"Text", "3"}})), "Facturado = 3 ");
    EXPECT_EQ(build(wide, control(ControlKind::TextBox, "Facturado", {{"Text", "3"}})), "Facturado = #3# ");

    struct ComboCase {
        int32_t listIndex;
        const char* expected;  // the condition on Numero; on P11 the same with its name
    };
    const std::vector<ComboCase> cases = {{0, " <> 0 "}, {1, " = 0 "}, {2, ""}, {-1, ""}};
    for (const char* field : {"Numero", "Facturado", "P11"}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(field) + " at " + std::to_string(c.listIndex));
            auto combo = control(ControlKind::ComboBox, field);
            combo->setList({"Sí", "No", "Todos"});
            combo->define("ListIndex", c.listIndex);
            combo->define("Value", int16_t{1});
            const std::string expected = *c.expected ? std::string(field) + c.expected : std::string();
            EXPECT_EQ(build(orders, combo), expected);
        }
    }
    // The base form takes the same combo as any other control.
    auto combo = control(ControlKind::ComboBox, "Numero");
    combo->setList({"Sí", "No", "Todos"});
    combo->define("ListIndex", int32_t{0});
    EXPECT_EQ(build(base, combo), "Numero = Sí ");
    // Text fields keep the base rows in the orders' form.
    auto text = control(ControlKind::ComboBox, "Codigo", {{"Text", "Ana"}});
    EXPECT_EQ(build(orders, text), "Codigo Like 'Ana*' ");
}

TEST_F(CreateFilterTest, LookupFailuresPassToTheCaller) {
    auto unbound = std::make_shared<StandInControl>(ControlKind::TextBox);
    unbound->define("Text", "Ana");
    frame::RecordClass closed{kBase};
    const std::vector<std::tuple<const char*, frame::RecordClass*, Variant, long>> cases = {
        {"no DataField", &base, Variant(unbound), 438},
        {"a field the recordset lacks", &base, Variant(control(ControlKind::TextBox, "Nada", {{"Text", "Ana"}})), 3265},
        {"a bound combo on a boolean must have Value", &base,
         Variant(control(ControlKind::DataCombo, "P11", {{"Text", "Sí"}, {"BoundText", "-1"}})), 438},
        {"a text", &base, Variant("Ana"), 424},
        {"Nothing", &base, Variant::nothing(), 91},
        {"a class never opened", &closed, Variant(control(ControlKind::TextBox, "Codigo", {{"Text", "Ana"}})), 91},
    };
    for (auto [what, cls, v, number] : cases) {
        std::string iType;
        EXPECT_EQ(errorOf([&] { tools::createFilter(*cls, v, iType); }), number) << what;
    }
}

// A control of a script host: no platform Control, reached by late binding only.
class ScriptBox : public Object {
public:
    std::string_view typeName() const override { return "CajaDeGuion"; }
    std::string dataField, text;
};

TEST_F(CreateFilterTest, AnObjectThatIsNoPlatformControlIsReadByName) {
    Registry::global()
        .define<ScriptBox>("CajaDeGuion")
        .property(
            "DataField", [](ScriptBox& b) { return b.dataField; },
            [](ScriptBox& b, std::string v) { b.dataField = std::move(v); }, PT::String)
        .property(
            "Text", [](ScriptBox& b) { return b.text; }, [](ScriptBox& b, std::string v) { b.text = std::move(v); },
            PT::String)
        .defaultMember("Text");
    auto box = std::make_shared<ScriptBox>();
    box->dataField = "Codigo";
    box->text = "Ana";
    Variant v(box);
    std::string iType;
    // Of no named kind: the last row of each table.
    EXPECT_EQ(tools::createFilter(base, v, iType), "Codigo Like 'Ana*' ");
    box->dataField = "Numero";
    box->text = "12";
    EXPECT_EQ(tools::createFilter(base, v, iType), "Numero = 12 ");
    box->dataField = "Fecha";
    EXPECT_EQ(tools::createFilter(base, v, iType), "Fecha = #12# ");
    EXPECT_TRUE(tools::validaKey(base, v, '3'));
    // On a boolean it must have "Value", which it lacks.
    box->dataField = "P11";
    EXPECT_EQ(errorOf([&] { tools::createFilter(base, v, iType); }), 438);
}

// The conditions are the recordset's own dialect: joined, they filter real rows.
const frame::ClassVariants kLines = test::toolVariants(
    "ClsPruebaLineas", "HOrdenes_Lineas", "SELECT Codigo, Cantidad, Numero, Fecha FROM HOrdenes_Lineas");

TEST_F(CreateFilterTest, JoinedConditionsFilterTheRecordset) {
    for (const char* values : {"'Ana', 1, 10, #2003-02-01#", "'Anabel', 5, 11, #2003-02-03#", "'Berta', 9, 12, #2003-02-05#"})
        exec(std::string("INSERT INTO HOrdenes_Lineas (Codigo, Cantidad, Numero, Fecha) VALUES (") + values + ")");
    frame::RecordClass lines{kLines};
    open(lines);
    auto& rs = *lines.primaryRecordset();

    const std::string byName = build(lines, control(ControlKind::TextBox, "Codigo", {{"Text", "ana"}}));
    const std::string byAmount = build(lines, control(ControlKind::TextBox, "Cantidad", {{"Text", "5"}}), "1");
    lines.AplyFilter(byName + "And " + byAmount);
    EXPECT_EQ(rs.RecordCount(), 1);
    EXPECT_EQ(rs.value("Codigo"), Variant("Anabel"));

    auto list = control(ControlKind::ListBox, "Numero");
    list->setList({"10", "12"});
    lines.AplyFilter(build(lines, list));
    EXPECT_EQ(rs.RecordCount(), 2);

    lines.AplyFilter(build(lines, control(ControlKind::TextBox, "Fecha", {{"Text", "03/02/2003"}}), "2"));
    EXPECT_EQ(rs.RecordCount(), 2);

    lines.AplyFilter("");
    EXPECT_EQ(rs.RecordCount(), 3);
}

}  // namespace
}  // namespace hist::tools
