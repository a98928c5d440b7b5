// Filter, Find and Sort texts, field lookup and value coercion under both locales.
#include <gtest/gtest.h>

#include "ado_fixture.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"

namespace hist {
namespace {

using backend::FieldType;
using testing::CellInit;
using testing::errorOf;
using testing::errorsOf;
using testing::fabricate;

std::shared_ptr<ado::Recordset> people() {
    const CellInit null;
    return fabricate({{"Id", FieldType::Integer},
                      {"Nombre", FieldType::VarWChar},
                      {"Precio", FieldType::Double},
                      {"Fecha", FieldType::Date},
                      {"Activo", FieldType::Boolean},
                      {"Notas", FieldType::LongVarWChar},
                      {"Fecha Entrega", FieldType::Date}},
                     {
                         {1LL, "Ana", 12.5, "2003-02-01 00:00:00", -1LL, "x", "2003-03-01 00:00:00"},
                         {2LL, "Alaska", 3.0, "2003-01-02 00:00:00", 0LL, null, "2003-01-05 00:00:00"},
                         {3LL, "O'Malley", null, null, 0LL, null, null},
                         {4LL, "bruno", 50LL, "2026-11-22 09:05:00", -1LL, null, "2026-12-01 00:00:00"},
                         {5LL, "Ánxela", 7.25, "1999-12-31 00:00:00", 0LL, null, "2000-01-01 00:00:00"},
                         {6LL, "arkansas", 3.0, "2003-01-02 00:00:00", 0LL, null, null},
                     });
}

// Ids of the visible rows in view order.
std::vector<long> ids(ado::Recordset& rs) {
    std::vector<long> out;
    if (rs.RecordCount() == 0) return out;
    rs.MoveFirst();
    while (!rs.Eof()) {
        out.push_back(rs.value("Id").asLong());
        rs.MoveNext();
    }
    rs.MoveFirst();
    return out;
}

struct FilterCase {
    const char* criteria;
    long count;  // rows passing, or -1 when `error` is expected
    long error;
};

// Each filter is set over "Id > 1" on a fresh set; one that is refused must leave that filter in force.
void runFilterTable(const std::vector<FilterCase>& table) {
    for (const auto& c : table) {
        auto rs = people();
        rs->SetFilter(Variant("Id > 1"));
        std::string description;
        const long got = errorOf([&] { rs->SetFilter(Variant(c.criteria)); }, &description);
        if (c.count < 0) {
            EXPECT_EQ(got, c.error) << c.criteria;
            EXPECT_NE(description.find(got == err::ItemNotFound ? "Field:" : ""), std::string::npos);
            EXPECT_EQ(rs->RecordCount(), 5) << c.criteria;
            EXPECT_EQ(rs->Filter(), Variant("Id > 1")) << c.criteria;
        } else {
            EXPECT_EQ(got, 0) << c.criteria << ": " << description;
            EXPECT_EQ(rs->RecordCount(), c.count) << c.criteria;
        }
    }
}

TEST(Filter, GrammarAcceptsAndRefuses) {
    RegionalScope es(Regional::esES());
    std::vector<FilterCase> table = {
        {"Nombre = 'ana'", 1, 0}, {"Nombre LIKE 'a%'", 3, 0}, {"Nombre like '*AS*'", 2, 0},
        {"Nombre Like 'Ana'  Or Nombre Like 'BRUNO' ", 2, 0}, {"Nombre Like 'ánx*'", 1, 0},
        {"Nombre = 'O''Malley'", 1, 0}, {"Nombre = #Ana#", 1, 0},
        {"Nombre >= 'Ana*'", 4, 0},  // a star outside Like is a plain character
        {"Precio > 7.2", 3, 0}, {"Precio <= $12.50", 4, 0}, {"Precio > 1e1", 2, 0},
        {"Precio = '12,5'", 1, 0},  // a quoted number reads by the regional settings
        {"Precio = Null", 1, 0}, {"Precio <> Null", 5, 0},
        {"Id = 1 OR Id = 2 or Id = 3", 3, 0}, {"(Id = 1 AND Activo <> 0) OR (Id = 2 AND Activo = 0)", 2, 0},
        {"Id > 1 AND Id < 4 OR Id = 6", 3, 0}, {"(Id = 1 OR Id = 2) OR Id = 3", 3, 0}, {"Activo <> 0", 2, 0},
        {"Fecha = #01/02/2003#", 1, 0},  // day first under es-ES
        {"Fecha = #2003-01-02#", 2, 0}, {"Fecha = '01/02/2003'", 1, 0}, {"[Fecha Entrega] < #2003-01-06#", 2, 0},
        {"Nada = 1", -1, err::ItemNotFound},
        {"Notas = #x#", -1, err::SqlTypeMismatch},  // a long text compared with a #value#
    };
    for (const char* bad : {"Nombre Like '*as'", "Nombre Like 's*r'", "Nombre = 'O'Malley'", "Nombre = 'Ana",
                            "Precio = 12,5", "Precio Is Null", "Precio > Null", "(Id = 1 OR Id = 2) AND Activo = 0",
                            "Id = 1 AND (Id = 2 OR Id = 3)", "(Id = 1", "Id = 1 AND", "Id 1", "Id =", "Id = 'x'",
                            "Fecha = #xyz#", "Fecha Entrega = 1"})
        table.push_back({bad, -1, err::BadArgument});
    runFilterTable(table);
}

// Parentheses nest up to 100 deep; deeper text is refused with 3001 (before the bound
// a run of 10,000 of them overflowed the stack), and the description stays short.
TEST(Filter, NestingIsBoundedAndTooDeepIsRefused) {
    const auto nested = [](int depth) {
        return std::string(static_cast<std::size_t>(depth), '(') + "Id = 2" + std::string(static_cast<std::size_t>(depth), ')');
    };
    runFilterTable({{nested(100).c_str(), 1, 0}, {nested(101).c_str(), -1, err::BadArgument}});
    auto rs = people();
    std::string description;
    EXPECT_EQ(errorOf([&] { rs->SetFilter(Variant(nested(10000))); }, &description), err::BadArgument);
    EXPECT_NE(description.find("too deep"), std::string::npos) << description;
    EXPECT_LT(description.size(), 300u);
}

TEST(Filter, DatesAndNumbersFollowTheRegionalSettings) {
    RegionalScope us(Regional::enUS());
    // Month first, and the comma a thousands mark ('12,5' is 125), under en-US.
    runFilterTable({{"Fecha = #01/02/2003#", 2, 0}, {"Precio = '12,5'", 0, 0}, {"Precio = '12.5'", 1, 0}});
}

TEST(Filter, GroupValuesAndOtherKinds) {
    auto rs = people();
    for (const Variant& bad : {Variant(), Variant(1.5), Variant(int32_t{7}), Variant(int32_t{4})})
        EXPECT_EQ(errorOf([&] { rs->SetFilter(bad); }), err::BadArgument) << rt::CStr(bad);
    // (What the accepted group values show is FilterGroups' matter, in batch_test.)
    rs->SetFilter(Variant("Id = 2"));
    rs->SetFilter(Variant(static_cast<int16_t>(0)));  // adFilterNone, as a 16-bit number
    EXPECT_EQ(rs->RecordCount(), 6);
}

TEST(Find, MovesToMatchesAndStopsAtTheEnds) {
    auto rs = people();
    // Finds and tells where the cursor is left: the current Id, "BOF" or "EOF".
    auto find = [&](const char* criteria, long skip = 0, int direction = 1,
                    const Variant& start = Variant::missing()) {
        rs->Find(criteria, skip, direction, start);
        return rs->Bof() ? std::string("BOF")
                         : rs->Eof() ? std::string("EOF") : std::to_string(rs->value("Id").asLong());
    };
    EXPECT_EQ(find("Nombre = 'BRUNO'"), "4");
    EXPECT_EQ(find("Nombre = 'BRUNO'"), "4");  // the current row is tested first
    EXPECT_EQ(find("Nombre Like 'A*'"), "6");
    EXPECT_EQ(find("Nombre Like 'A*'", 1), "EOF");
    EXPECT_EQ(errorOf([&] { rs->Find("Id = 1"); }), err::NoCurrentRecord);

    rs->MoveLast();
    EXPECT_EQ(find("Nombre Like 'a*'", 1, -1), "2");
    EXPECT_EQ(find("Nombre Like 'a*'", 1, -1), "1");
    EXPECT_EQ(find("Nombre Like 'a*'", 1, -1), "BOF");

    rs->MoveLast();
    EXPECT_EQ(find("Id = '3'", 0, 1, Variant(static_cast<int32_t>(1))), "3");  // from the first row; quoted number
    EXPECT_EQ(find("Id < 3", 0, -1, Variant(static_cast<int32_t>(2))), "2");    // backwards from the last row
    EXPECT_EQ(find("Id > 0", 1, 1, Variant(5.0)), "6");                          // from a bookmark, skipping it

    EXPECT_EQ(errorsOf({[&] { rs->Find("Id = 1 AND Id = 2"); }, [&] { rs->Find("Id = 1 OR Id = 2"); },
                        [&] { rs->Find("Nombre Like '*na'"); }, [&] { rs->Find("Nada = 1"); },
                        [&] { rs->Find("Id = 1", 0, 2); }}),
              (std::vector<long>{err::BadArgument, err::BadArgument, err::BadArgument, err::ItemNotFound,
                                 err::BadArgument}));
    EXPECT_EQ(rs->value("Id").asLong(), 6);  // a refused criterion does not move
}

TEST(Sort, KeysDirectionsAndTheOriginalOrder) {
    auto rs = people();
    const std::pair<const char*, std::vector<long>> cases[] = {
        {"Nombre", {2, 1, 6, 4, 3, 5}},  // case ignored; an accented initial after the plain letters
        {"Precio DESC", {4, 1, 5, 2, 6, 3}},  // Null last when descending
        {"Precio", {3, 2, 6, 5, 1, 4}},       // Null first when ascending
        {"Precio DESC, Nombre DESC", {4, 1, 5, 6, 2, 3}},
        {"Fecha, Id DESC", {3, 5, 6, 2, 1, 4}},
        {"Fecha Entrega DESC", {4, 1, 2, 5, 3, 6}},  // a bare name with a blank that names a field
        {"fecha entrega", {3, 6, 5, 2, 1, 4}},
        {"", {1, 2, 3, 4, 5, 6}},
    };
    for (const auto& [sort, order] : cases) {
        rs->SetSort(sort);
        EXPECT_EQ(ids(*rs), order) << sort;
        EXPECT_EQ(rs->Sort(), sort);
    }
    rs->SetSort("Nombre DESC");
    rs->SetBookmark(Variant(3.0));
    const std::pair<const char*, long> bad[] = {{"Nada", err::ItemNotFound},   {"NombreDESC", err::ItemNotFound},
                                                {"Nombre DESC,", err::BadArgument}, {"DESC", err::BadArgument},
                                                {", Id", err::BadArgument},         {"[Nombre", err::BadArgument}};
    for (const auto& [sort, number] : bad) EXPECT_EQ(errorOf([&] { rs->SetSort(sort); }), number) << sort;
    EXPECT_EQ(rs->Sort(), "Nombre DESC");  // a refused sort leaves the order and the row
    EXPECT_EQ(rs->value("Id").asLong(), 3);
    EXPECT_EQ(rs->AbsolutePosition(), 2);
}

TEST(Sort, TextsEqualButForCaseKeepTheirFetchOrder) {
    auto rs = fabricate({{"Id", FieldType::Integer}, {"Nombre", FieldType::VarWChar}},
                        {{1LL, "b"}, {2LL, "Álvaro"}, {3LL, "A"}, {4LL, "a"}, {5LL, "ÁLVARO"}, {6LL, "B"}, {7LL, 12LL}});
    rs->SetSort("Nombre");
    EXPECT_EQ(ids(*rs), (std::vector<long>{7, 3, 4, 1, 6, 2, 5}));  // a number in a text field as its text
    rs->SetSort("Nombre DESC, Id DESC");
    EXPECT_EQ(ids(*rs), (std::vector<long>{5, 2, 6, 1, 4, 3, 7}));
}

TEST(Fields, LookupByNameAndPosition) {
    auto rs = fabricate({{"Código", FieldType::Integer}, {"Factura", FieldType::Integer},
                         {"Factura", FieldType::VarWChar}, {"Descripción", FieldType::VarWChar}},
                        {{7LL, 10LL, "F-10", CellInit{}}});
    auto fields = rs->Fields();
    EXPECT_EQ(fields->Count(), 4);
    EXPECT_EQ(fields->Item(Variant("CÓDIGO"))->Name(), "Código");
    EXPECT_EQ(fields->Item(Variant("código"))->Value(), Variant(static_cast<int32_t>(7)));
    EXPECT_EQ(fields->Item(Variant("Factura"))->Type(), 3);  // the first of two equal names
    EXPECT_EQ(fields->Item(Variant(static_cast<int16_t>(2)))->Value(), Variant("F-10"));
    EXPECT_EQ(fields->Item(Variant(0.1))->Name(), "Código");
    EXPECT_EQ(fields->Item(Variant("DESCRIPCIÓN"))->Value(), Variant::null());
    EXPECT_EQ(fields->Item(Variant("Factura")), fields->Item(Variant(static_cast<int32_t>(1))));  // one object
    for (const Variant& bad : {Variant("codigo"), Variant("1"), Variant(static_cast<int32_t>(4)),
                               Variant(static_cast<int32_t>(-1)), Variant::nothing(), Variant::null()})
        EXPECT_EQ(errorOf([&] { fields->Item(bad); }), err::ItemNotFound);
    std::string description;
    errorOf([&] { rs->value("Nada"); }, &description);
    EXPECT_NE(description.find("Nada"), std::string::npos);
}

TEST(Fields, AssignedValuesAreCoercedUnderTheRegionalSettings) {
    struct Case {  // the value given to a field of the type, and the value it holds (Empty: refused)
        const Regional* locale;
        FieldType type;
        Variant input, expected;
    } cases[] = {
        {&Regional::esES(), FieldType::Double, Variant("12,5"), Variant(12.5)},
        {&Regional::enUS(), FieldType::Double, Variant("12,5"), Variant(125.0)},
        {&Regional::enUS(), FieldType::Double, Variant("12.5"), Variant(12.5)},
        {&Regional::esES(), FieldType::Integer, Variant(2.5), Variant(static_cast<int32_t>(2))},
        {&Regional::esES(), FieldType::Integer, Variant(3.5), Variant(static_cast<int32_t>(4))},
        {&Regional::esES(), FieldType::SmallInt, Variant("7"), Variant(static_cast<int16_t>(7))},
        {&Regional::esES(), FieldType::Date, Variant("01/02/2003"), Variant::date(37653)},
        {&Regional::enUS(), FieldType::Date, Variant("01/02/2003"), Variant::date(37623)},
        {&Regional::esES(), FieldType::VarWChar, Variant(12.5), Variant("12,5")},
        {&Regional::esES(), FieldType::Boolean, Variant(static_cast<int32_t>(1)), Variant(true)},
        {&Regional::esES(), FieldType::Double, Variant::null(), Variant::null()},
        {&Regional::esES(), FieldType::Integer, Variant("abc"), Variant()},
        {&Regional::esES(), FieldType::SmallInt, Variant(static_cast<int32_t>(40000)), Variant()},
        {&Regional::esES(), FieldType::Date, Variant("no date"), Variant()},
    };
    for (const auto& c : cases) {
        RegionalScope scope(*c.locale);
        auto rs = fabricate({{"Valor", c.type}}, {{CellInit{}}});
        std::string description;
        const long got = errorOf([&] { rs->setValue("valor", c.input); }, &description);
        if (c.expected.isEmpty()) {
            EXPECT_EQ(got, err::DataConversion) << rt::CStr(c.input);
            EXPECT_NE(description.find("Valor"), std::string::npos) << description;
            EXPECT_EQ(rs->EditMode(), 0);  // the row is untouched
            EXPECT_TRUE(rs->value("Valor").isNull());
        } else {
            EXPECT_EQ(got, 0) << description;
            EXPECT_EQ(rs->value("Valor"), c.expected) << c.locale->name << " " << static_cast<int>(c.type);
        }
    }
}

}  // namespace
}  // namespace hist
