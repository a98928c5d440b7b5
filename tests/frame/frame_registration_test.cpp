// Publishing record classes: the interface list decides the members and their order,
// the declared argument lists pick from the shared members' arguments, and a list that names something neither
// the class nor the frame has is refused at registration.
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include "frame/registration.hpp"
#include "frame/services_testutil.hpp"
#include "platform/error.hpp"

namespace hist::frame {
namespace {

const ClassVariants kProbe{
    .className = "ClsProbe",
    .table = "HProbe",
    .select = "SELECT Id FROM HProbe",
    .open = OpenForm::B,
    .orderOnIniciaRs = true,
    .orderOnRequery = true,
    .updateId = {.parent = "Código"},
};

class ClsProbe : public RecordClass {
public:
    ClsProbe() : RecordClass(kProbe) {}
    std::string Saludo() { return "hola"; }
};

TEST(FrameRegistration, OrderComesFromTheListAndOwnMembersSitAmongFrameMembers) {
    Registry& r = Registry::global();
    constexpr std::array<std::string_view, 4> order{"MoveNext", "Saludo", "sClassName", "MoveFirst"};
    defineRecordClass<ClsProbe>(r, kProbe, order,
                                [](ClassBuilder<ClsProbe>& b) { b.method("Saludo", {}, &ClsProbe::Saludo); });
    const ClassInfo* info = r.find("ClsProbe");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->listedNames(), (std::vector<std::string>{"MoveNext", "Saludo", "sClassName", "MoveFirst"}));
    auto obj = r.create("ClsProbe");
    EXPECT_EQ(call(obj, "Saludo"), Variant("hola"));
    EXPECT_EQ(call(obj, "sClassName"), Variant("HProbe"));
    // A frame member the list leaves out is not reachable.
    Args none;
    EXPECT_THROW(call(obj, "MoveLast", none), Error);
}

TEST(FrameRegistration, RefusesListsThatDoNotMatchTheClass) {
    Registry& r = Registry::global();
    constexpr std::array<std::string_view, 2> unknown{"MoveNext", "Inventado"};
    EXPECT_THROW(defineRecordClass<ClsProbe>(r, kProbe, unknown), std::logic_error);

    constexpr std::array<std::string_view, 1> withoutOwn{"MoveNext"};
    EXPECT_THROW(defineRecordClass<ClsProbe>(
                     r, kProbe, withoutOwn,
                     [](ClassBuilder<ClsProbe>& b) { b.method("Saludo", {}, &ClsProbe::Saludo); }),
                 std::logic_error);
}

TEST(FrameRegistration, WithoutARecordsetMembersFailAsAnUnsetObjectExceptTheSwallowingOnes) {
    Registry& r = Registry::global();
    constexpr std::array<std::string_view, 8> order{"MoveNext", "Update",        "Delete",           "ExistenRegistros",
                                                    "Cancel",   "EditingRecord", "AbsolutePosition", "sClassName"};
    defineRecordClass<ClsProbe>(r, kProbe, order);
    auto obj = r.create("ClsProbe");
    for (const char* name : {"MoveNext", "Update", "Delete", "ExistenRegistros", "Cancel"})
        EXPECT_EQ(test::raised([&] { call(obj, name); }).number(), err::ObjectNotSet) << name;
    EXPECT_EQ(call(obj, "EditingRecord"), Variant(false));
    EXPECT_EQ(call(obj, "AbsolutePosition"), Variant(int32_t{0}));
    // The data member answers only to "Primary" in its case; with no recordset it is no object.
    Args lower{Variant("primary"), Variant()};
    call(obj, "Class_GetDataMember", lower);
    EXPECT_TRUE(lower[1].isEmpty());
    Args exact{Variant("Primary"), Variant()};
    call(obj, "Class_GetDataMember", exact);
    EXPECT_TRUE(exact[1].isNothing());  // no recordset yet: no object, no failure
}

}  // namespace
}  // namespace hist::frame
