// The data-layer objects reached by name, as script hosts reach them.
#include <gtest/gtest.h>

#include "ado/registration.hpp"
#include "ado_fixture.hpp"

namespace hist {
namespace {

using backend::FieldType;
using testing::errorOf;

class AdoByName : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static bool done = false;
        if (!done) ado::registerAdoClasses(Registry::global());
        done = true;
    }
    Variant get(const ObjectPtr& o, const char* member, Args args = {}) { return call(o, member, args); }
};

TEST_F(AdoByName, RecordsetMembersAndTheirDefaults) {
    ObjectPtr rs = testing::fabricate({{"Id", FieldType::Integer}, {"Nombre", FieldType::VarWChar}},
                                      {{1LL, "Ana"}, {2LL, "Bruno"}, {3LL, "Carla"}});
    EXPECT_EQ(get(rs, "recordcount"), Variant(static_cast<int32_t>(3)));
    EXPECT_EQ(get(rs, "BOF"), Variant(false));
    Args findArgs{Variant("Nombre = 'carla'")};  // skip, direction and start left out
    call(rs, "Find", findArgs);
    EXPECT_EQ(get(rs, "AbsolutePosition"), Variant(static_cast<int32_t>(3)));
    call(rs, "MoveNext");
    EXPECT_EQ(get(rs, "EOF"), Variant(true));

    Args none;
    let(rs, "Bookmark", none, Variant(1.0));
    const ObjectPtr fields = get(rs, "Fields").asObject();
    EXPECT_EQ(get(fields, "Count"), Variant(static_cast<int32_t>(2)));
    const ObjectPtr nombre = get(fields, "Item", {Variant("NOMBRE")}).asObject();
    EXPECT_EQ(get(nombre, "Value"), Variant("Ana"));
    let(nombre, "Value", none, Variant("Ana María"));
    EXPECT_EQ(get(nombre, "OriginalValue"), Variant("Ana"));
    EXPECT_EQ(get(nombre, "Type"), Variant(static_cast<int32_t>(202)));
    EXPECT_EQ(get(rs, "EditMode"), Variant(static_cast<int32_t>(1)));
    EXPECT_EQ(get(rs, "Status"), Variant(static_cast<int32_t>(2)));

    call(rs, "MoveNext");
    Args current{Variant(static_cast<int32_t>(1))};
    call(rs, "UpdateBatch", current);  // the current row has nothing pending
    EXPECT_EQ(errorOf([&] { call(rs, "UpdateBatch"); }), err::InvalidConnection);  // all rows by default

    let(rs, "Sort", none, Variant("Id DESC"));
    EXPECT_EQ(get(rs, "Sort"), Variant("Id DESC"));
    let(rs, "Filter", none, Variant("Id < 3"));
    EXPECT_EQ(get(rs, "RecordCount"), Variant(static_cast<int32_t>(2)));
    call(rs, "Delete");  // the current row by default
    EXPECT_EQ(get(rs, "RecordCount"), Variant(static_cast<int32_t>(1)));
    const ObjectPtr clone = get(rs, "Clone").asObject();
    EXPECT_EQ(get(clone, "RecordCount"), Variant(static_cast<int32_t>(2)));
    let(rs, "Filter", none, Variant(static_cast<int32_t>(1)));  // pending: the edited and the deleted row
    EXPECT_EQ(get(rs, "RecordCount"), Variant(static_cast<int32_t>(2)));
    EXPECT_EQ(get(rs, "Filter"), Variant(static_cast<int32_t>(1)));
    EXPECT_TRUE(get(rs, "ActiveConnection").isNothing());
}

TEST_F(AdoByName, ConnectionIsCreatableAndRefusesUseUnopened) {
    const ObjectPtr cn = Registry::global().create("Connection");
    EXPECT_EQ(get(cn, "State"), Variant(static_cast<int32_t>(0)));
    EXPECT_EQ(errorOf([&] { call(cn, "BeginTrans"); }), err::ObjectClosed);
    const ObjectPtr rs = Registry::global().create("Recordset");
    EXPECT_EQ(get(rs, "State"), Variant(static_cast<int32_t>(0)));
    EXPECT_EQ(errorOf([&] { call(rs, "MoveFirst"); }), err::ObjectClosed);
}

}  // namespace
}  // namespace hist
