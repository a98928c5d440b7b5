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
    void set(const ObjectPtr& o, const char* member, const Variant& v) {
        Args none;
        let(o, member, none, v);
    }
};

TEST_F(AdoByName, RecordsetMembersAndTheirDefaults) {
    ObjectPtr rs = testing::fabricate({{"Id", FieldType::Integer}, {"Nombre", FieldType::VarWChar}},
                                      {{1LL, "Ana"}, {2LL, "Bruno"}, {3LL, "Carla"}});
    EXPECT_EQ(get(rs, "recordcount"), Variant(int32_t{3}));
    EXPECT_EQ(get(rs, "BOF"), Variant(false));
    get(rs, "Find", {Variant("Nombre = 'carla'")});  // skip, direction and start left out
    EXPECT_EQ(get(rs, "AbsolutePosition"), Variant(int32_t{3}));
    call(rs, "MoveNext");
    EXPECT_EQ(get(rs, "EOF"), Variant(true));

    set(rs, "Bookmark", Variant(1.0));
    const ObjectPtr fields = get(rs, "Fields").asObject();
    EXPECT_EQ(get(fields, "Count"), Variant(int32_t{2}));
    const ObjectPtr nombre = get(fields, "Item", {Variant("NOMBRE")}).asObject();
    EXPECT_EQ(get(nombre, "Value"), Variant("Ana"));
    set(nombre, "Value", Variant("Ana María"));
    EXPECT_EQ(get(nombre, "OriginalValue"), Variant("Ana"));
    EXPECT_EQ(get(nombre, "Type"), Variant(int32_t{202}));
    EXPECT_EQ(get(rs, "EditMode"), Variant(int32_t{1}));
    EXPECT_EQ(get(rs, "Status"), Variant(int32_t{2}));

    call(rs, "MoveNext");
    get(rs, "UpdateBatch", {Variant(int32_t{1})});  // the current row has nothing pending
    EXPECT_EQ(errorOf([&] { call(rs, "UpdateBatch"); }), err::InvalidConnection);  // all rows by default

    set(rs, "Sort", Variant("Id DESC"));
    EXPECT_EQ(get(rs, "Sort"), Variant("Id DESC"));
    set(rs, "Filter", Variant("Id < 3"));
    EXPECT_EQ(get(rs, "RecordCount"), Variant(int32_t{2}));
    call(rs, "Delete");  // the current row by default
    EXPECT_EQ(get(rs, "RecordCount"), Variant(int32_t{1}));
    EXPECT_EQ(get(get(rs, "Clone").asObject(), "RecordCount"), Variant(int32_t{2}));
    set(rs, "Filter", Variant(int32_t{1}));  // pending: the edited and the deleted row
    EXPECT_EQ(get(rs, "RecordCount"), Variant(int32_t{2}));
    EXPECT_EQ(get(rs, "Filter"), Variant(int32_t{1}));
    EXPECT_TRUE(get(rs, "ActiveConnection").isNothing());
}

TEST_F(AdoByName, ConnectionAndRecordsetAreCreatable) {
    EXPECT_EQ(get(Registry::global().create("Connection"), "State"), Variant(int32_t{0}));
    EXPECT_EQ(get(Registry::global().create("Recordset"), "State"), Variant(int32_t{0}));
}

}  // namespace
}  // namespace hist
