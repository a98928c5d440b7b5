// Statement templates: filling gives the text concatenation gives, each hole kind
// writes its value as the class would, and a value that would change the statement's
// shape is refused with the provider's syntax error, where the statement is sent.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "frame/statement.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "support/errors.hpp"

namespace hist::frame {
namespace {

const Variant kFecha{DateValue{rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0)}};

TEST(StatementTemplate, HolesWriteTheirValuesAsTheClassesDo) {
    struct Case {
        const char* tpl;
        Variant value;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"WHERE Codigo = {v}", Variant(int32_t{12}), "WHERE Codigo = 12"},
        {"WHERE Codigo = {v}", Variant(int16_t{-3}), "WHERE Codigo = -3"},
        {"WHERE Codigo = {v}", Variant::null(), "WHERE Codigo = "},  // concatenation adds nothing
        {"WHERE Codigo = {v}", Variant::missing(), "WHERE Codigo = "},
        {"WHERE Codigo = {v}", Variant("77"), "WHERE Codigo = 77"},
        {"VALUES ('{v}')", Variant("O''Brien"), "VALUES ('O''Brien')"},
        {"VALUES ('{v}')", Variant("a; DROP -- /* x"), "VALUES ('a; DROP -- /* x')"},
        {"Fecha = {F:v}", kFecha, "Fecha = #2026-11-22 10:30:00#"},
        {"Fecha = {FL:v}", kFecha, "Fecha = #2026-11-22 10:30:00#"},
        {"Total = {N:v}", Variant(12.5), "Total = 12.5"},
        {"Total = {N2:v}", Variant(0.125), "Total = 0.13"},
        {"Cambio = '{D:v}'", Variant(166.386), "Cambio = '166,386'"},
        {"Hora = '{T:v}'", kFecha, "Hora = '22/11/2026 10:30:00'"},
        {"Impreso = {B:v}", Variant(true), "Impreso = -1"},
        {"Impreso = {B:v}", Variant(false), "Impreso = 0"},
        {"Pagado = {A:v}", Variant(true), "Pagado = 1"},
        {"Dia >= {S:v}", Variant(DateValue{rt::dateSerial(2003, 2, 1)}), "Dia >= 37653"},
        {"Fecha = {v}", Variant(true), "Fecha = True"},
    };
    RegionalScope es(Regional::esES());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tpl);
        EXPECT_EQ(Template(c.tpl).fill({{"v", c.value}}).text(), c.expected);
    }
    EXPECT_EQ(Template("DELETE  FROM {table} WHERE (Codigo = {vId})").fill({{"vId", Variant(int32_t{9})}}, "HAlbaranes_Comentarios").text(),
              "DELETE  FROM HAlbaranes_Comentarios WHERE (Codigo = 9)");
    EXPECT_EQ(Template("SELECT * FROM {table} WHERE Id = {vId}").withTable("HFacturas"),
              "SELECT * FROM HFacturas WHERE Id = {vId}");
}

TEST(StatementTemplate, AValueThatChangesTheShapeIsRefusedWhenSent) {
    struct Case {
        const char* tpl;
        Variant value;
    };
    const std::vector<Case> refused = {
        {"UPDATE T SET Codigo = 99 WHERE(Codigo = {v})", Variant("11 OR 1=1")},
        {"UPDATE T SET Codigo = {v} WHERE(Codigo = 11)", Variant("98 WHERE 1=1 --")},
        {"DELETE  FROM T WHERE (Codigo = {v})", Variant("Codigo")},  // a column reads every row
        {"DELETE  FROM T WHERE (Codigo = {v})", Variant("[Codigo]")},
        {"DELETE  FROM T WHERE (Codigo = {v})", Variant("1)  OR (1=1")},
        {"DELETE  FROM T WHERE (Codigo = {v})", Variant("-Codigo")},
        {"DELETE  FROM T WHERE (Codigo = {v})", Variant("'a' OR 'b'")},
        {"INSERT INTO T (A, B) Values ( 1 , '{v}')", Variant("D'Angelo")},
        {"INSERT INTO T (A, B) Values ( 1 , '{v}')", Variant("x'); DELETE FROM T; --")},
        {"INSERT INTO T (A, B) Values ( 1 , '{v}')", Variant("it'''s")},  // three: one is lone
        {"INSERT INTO T (A, B) Values ( 1 , '{v}*')", Variant("'")},
    };
    for (const Case& c : refused) {
        SCOPED_TRACE(rt::CStr(c.value));
        const Statement s = Template(c.tpl).fill({{"v", c.value}});
        EXPECT_TRUE(s.refused());
        std::string description;
        EXPECT_EQ(testing::errorOf([&] { (void)s.text(); }, &description), err::SqlSyntax);
        EXPECT_NE(description.find("The value of v would change the statement"), std::string::npos);
    }
    // Constants of one token pass, a sign included; doubled apostrophes stay quoted.
    for (const char* ok : {"-12", "+3", "1.5", "1E+15", "#2026-11-22#", "'7'", "True", "Null", ""}) {
        SCOPED_TRACE(ok);
        EXPECT_FALSE(Template("DELETE  FROM T WHERE (Codigo = {v})").fill({{"v", Variant(ok)}}).refused());
    }
    EXPECT_FALSE(Template("VALUES ('{v}', 'x''{w}')").fill({{"v", Variant("''")}, {"w", Variant("a''b")}}).refused());
    // A decimal comma in a bare number adds tokens, as it broke the statement before.
    RegionalScope es(Regional::esES());
    EXPECT_TRUE(Template("Values ( {D:v} )").fill({{"v", Variant(12.5)}}).refused());
}

TEST(StatementTemplate, AHoleWithoutAValueIsAProgrammingError) {
    EXPECT_THROW(Template("WHERE Codigo = {vId}").fill({{"vCod", Variant(1)}}), std::logic_error);
    EXPECT_THROW(Template("WHERE Codigo = {vId").fill({{"vId", Variant(1)}}), std::logic_error);
    EXPECT_THROW(Template("WHERE Codigo = {Q:vId}").fill({{"vId", Variant(1)}}), std::logic_error);
}

}  // namespace
}  // namespace hist::frame
