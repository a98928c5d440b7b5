// ValidaDefinedSize, ValidaKey and ValidaValue from the bound field's Type,
// Precision and DefinedSize as the catalog gives them, in each form a class can take.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/tool_members.hpp"
#include "tools_fixture.hpp"

namespace hist::tools {
namespace {

using frame::DefinedSizeForm;
using frame::FilterForm;
using frame::KeyForm;
using test::kAllTypes;
using test::control;
using test::errorOf;

const frame::ClassVariants kTable = test::toolVariants("ClsPruebaTabla", "HOrdenes_Lineas", kAllTypes);
const frame::ClassVariants kWhole =
    test::toolVariants("ClsPruebaPrecision", "HOrdenes_Lineas", kAllTypes, FilterForm::Base,
                       DefinedSizeForm::WholePrecision, KeyForm::WholePrecision);
const frame::ClassVariants kLines =
    test::toolVariants("ClsPruebaSeleccion", "HOrdenes_Lineas", kAllTypes, FilterForm::Base, DefinedSizeForm::Table,
                       KeyForm::SelectionReplaces);

class ValidationTest : public test::ToolsFixture {
protected:
    void SetUp() override {
        ToolsFixture::SetUp();
        for (auto* c : {&table, &whole, &lines}) open(*c);
    }

    static Variant box(const char* field, const std::string& text, int32_t selLength = 0) {
        return Variant(control(ControlKind::TextBox, field, {{"Text", text}, {"SelLength", selLength}}));
    }

    frame::RecordClass table{kTable};
    frame::RecordClass whole{kWhole};
    frame::RecordClass lines{kLines};
};

// The long-text constant form is checked on the comment classes, which declare it.
TEST_F(ValidationTest, DefinedSizeByTypeAndForm) {
    struct Case {
        const char* field;
        int32_t table, whole;
    };
    const std::vector<Case> cases = {
        {"Numero", 5, 10},  // Precision 10, five digits short unless whole
        {"Cantidad", 15, 15},
        {"Codigo", 20, 20},
        {"Comentarios", 536870910, 536870910},
        {"Fecha", 10, 10},
        {"Facturado", 10, 10},
        {"P11", 10, 10},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.field);
        Variant b = box(c.field, "");
        EXPECT_EQ(tools::validaDefinedSize(table, b), c.table);
        EXPECT_EQ(tools::validaDefinedSize(whole, b), c.whole);
    }
}

TEST_F(ValidationTest, KeysByTypeRoomAndForm) {
    const std::string full(20, 'x');
    const std::string oneShort(19, 'x');
    // Nineteen two-byte letters: nineteen characters, room for one more.
    std::string accents;
    for (int i = 0; i < 19; ++i) accents += "ñ";
    struct Case {
        const char* what;
        const char* field;
        std::string text;
        int16_t key;
        int32_t selLength;
        bool table, whole, lines;
    };
    const std::vector<Case> cases = {
        {"Backspace on a full box", "Codigo", full, 8, 0, true, true, true},
        {"space on a full box", "Codigo", full, 32, 0, true, true, true},
        {"letter on a full box", "Codigo", full, 97, 0, false, false, false},
        {"letter on a full box with text selected", "Codigo", full, 97, 3, false, false, true},
        {"letter with room for one", "Codigo", oneShort, 97, 0, true, true, true},
        {"characters, not bytes", "Codigo", accents, 97, 0, true, true, true},
        {"A on a number", "Numero", "", 65, 0, false, false, false},
        {"minus with room", "Numero", "", 45, 0, true, true, true},
        {"digit on four digits", "Numero", "1234", 48, 0, true, true, true},
        {"digit on five digits", "Numero", "12345", 48, 0, false, true, false},
        {"digit on five digits, text selected", "Numero", "12345", 48, 5, false, true, true},
        {"digit on a double", "Cantidad", "12345678901234", 48, 0, true, true, true},
        {"digit on a full double", "Cantidad", "123456789012345", 48, 0, false, false, false},
        {"slash in a date", "Fecha", "01/02", 47, 0, true, true, true},
        {"letter in a date", "Fecha", "01/02", 97, 0, false, false, false},
        {"letter in a long text", "Comentarios", full, 122, 0, true, true, true},
        {"T on a boolean", "P11", "", 84, 0, false, false, false},
        {"digit on a boolean", "P11", "", 49, 0, true, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.field) + ": " + c.what);
        Variant b = box(c.field, c.text, c.selLength);
        EXPECT_EQ(tools::validaKey(table, b, c.key), c.table);
        EXPECT_EQ(tools::validaKey(whole, b, c.key), c.whole);
        EXPECT_EQ(tools::validaKey(lines, b, c.key), c.lines);
    }
}

TEST_F(ValidationTest, ControlKeysPassWithoutLookingAtTheFieldAndUnknownFieldsFail) {
    Variant unbound(std::make_shared<StandInControl>(ControlKind::TextBox));
    EXPECT_TRUE(tools::validaKey(table, unbound, 8));
    EXPECT_TRUE(tools::validaKey(lines, unbound, 13));
    EXPECT_EQ(errorOf([&] { tools::validaKey(table, unbound, 48); }), 438);
    // The selection form reads SelLength before the field.
    Variant noSelection(control(ControlKind::TextBox, "Codigo", {{"Text", "a"}}));
    EXPECT_TRUE(tools::validaKey(table, noSelection, 97));
    EXPECT_EQ(errorOf([&] { tools::validaKey(lines, noSelection, 97); }), 438);
    // A field the recordset lacks fails each member.
    Variant b = box("Nada", "1");
    EXPECT_EQ(errorOf([&] { tools::validaDefinedSize(table, b); }), 3265);
    EXPECT_EQ(errorOf([&] { tools::validaKey(table, b, 48); }), 3265);
    EXPECT_EQ(errorOf([&] { tools::validaValue(table, b); }), 3265);
}

TEST_F(ValidationTest, ValuesByType) {
    struct Case {
        const char* field;
        const char* text;
        bool valid;
    };
    const std::vector<Case> cases = {
        {"Codigo", "", true},
        {"Comentarios", "lo que sea", true},
        {"P11", "quizá", true},
        {"Numero", "", false},
        {"Numero", "12", true},
        {"Numero", "abc", false},
        {"Cantidad", "12,5", true},
        {"Cantidad", "1.234,5", true},
        {"Cantidad", "-3", true},
        {"Fecha", "01/02/2003", true},
        {"Fecha", "1 de febrero", false},
        {"Fecha", "", false},
        {"Fecha", "hola", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.field) + " '" + c.text + "'");
        Variant b = box(c.field, c.text);
        EXPECT_EQ(tools::validaValue(table, b), c.valid);
    }
}

}  // namespace
}  // namespace hist::tools
