// Host objects: stand-in controls, grid columns, data members, the beep and events.
#include "platform/host_objects.hpp"

#include <gtest/gtest.h>

#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "support/errors.hpp"

namespace hist {
namespace {

using testing::errorOf;

TEST(HostObjectsTest, DefaultPropertyAndPropertiesByName) {
    const std::tuple<ControlKind, const char*, const char*> kinds[] = {
        {ControlKind::TextBox, "TextBox", "Text"},    {ControlKind::ComboBox, "ComboBox", "Text"},
        {ControlKind::ListBox, "ListBox", "Text"},    {ControlKind::DataCombo, "DataCombo", "Text"},
        {ControlKind::CheckBox, "CheckBox", "Value"}, {ControlKind::Other, "Other", "Value"}};
    for (const auto& [kind, name, property] : kinds) {
        EXPECT_STREQ(controlKindName(kind), name);
        EXPECT_EQ(controlKindFromName(name), kind);
        EXPECT_EQ(StandInControl(kind).defaultProperty(), property) << name;
    }
    EXPECT_EQ(controlKindFromName("checkbox"), ControlKind::CheckBox) << "kind names ignore case";
    EXPECT_EQ(controlKindFromName("Slider"), std::nullopt);

    StandInControl box(ControlKind::CheckBox);
    box.define("Value", Variant(int32_t{1}));
    box.define("Caption", Variant(std::string("Cerrada")));
    EXPECT_EQ(box.value(), Variant(int32_t{1}));
    box.setDefaultProperty("Caption");
    EXPECT_EQ(box.value(), Variant(std::string("Cerrada")));

    StandInControl t(ControlKind::TextBox);
    t.define("Text", Variant(std::string("Ana")));
    t.set("TEXT", Variant(std::string("Eva")));
    EXPECT_EQ(t.value(), Variant(std::string("Eva"))) << "names ignore case";
    EXPECT_EQ(errorOf([&] { t.get("BoundText"); }), err::NoSuchMember);
    EXPECT_EQ(errorOf([&] { t.set("Value", Variant(int32_t{1})); }), err::NoSuchMember);
    EXPECT_EQ(errorOf([&] { t.get("ListCount"); }), err::NoSuchMember) << "no list, no ListCount";
}

TEST(HostObjectsTest, AListKeepsListIndexAndTextTogether) {
    StandInControl l(ControlKind::ListBox);
    l.define("DataField", Variant(std::string("Nombre")));
    l.setList({"A", "B", "C"});
    EXPECT_EQ(l.get("ListCount"), Variant(int32_t{3}));
    EXPECT_EQ(l.get("ListIndex"), Variant(int32_t{-1}));
    EXPECT_EQ(l.get("Text"), Variant(std::string()));
    struct Step {
        const char* property;
        Variant value;
        int32_t index;
        const char* text;
    };
    const Step steps[] = {
        {"ListIndex", Variant(int32_t{1}), 1, "B"},
        {"ListIndex", Variant(int16_t{2}), 2, "C"},
        {"Text", Variant(std::string("A")), 0, "A"},
        {"Text", Variant(std::string("Z")), -1, "Z"},
        {"ListIndex", Variant(int32_t{-1}), -1, ""},
    };
    for (const auto& s : steps) {
        l.set(s.property, s.value);
        EXPECT_EQ(l.get("ListIndex"), Variant(s.index)) << s.property;
        EXPECT_EQ(l.get("Text"), Variant(std::string(s.text))) << s.property;
    }
    EXPECT_EQ(errorOf([&] { l.set("ListCount", Variant(int32_t{9})); }), err::NoSuchMember);

    // A list given with a text selects the row that text names.
    StandInControl c(ControlKind::ComboBox);
    c.define("Text", Variant(std::string("B")));
    c.setList({"A", "B"});
    EXPECT_EQ(c.get("ListIndex"), Variant(int32_t{1}));
}

TEST(HostObjectsTest, GridColumnsByInterfaceAndByName) {
    registerPlatformClasses(Registry::global());
    auto cols = std::make_shared<StandInColumns>(std::vector<ColumnData>{
        {"Orden", true, 1, "Orden"}, {"Oculta", false, 0, "Id"}});
    EXPECT_EQ(cols->Count(), 2);
    EXPECT_EQ(cols->Item(1)->Caption(), "Oculta");
    EXPECT_FALSE(cols->Item(1)->Visible());
    EXPECT_EQ(errorOf([&] { cols->Item(2); }), err::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { cols->Item(-1); }), err::SubscriptOutOfRange);

    Args none;
    EXPECT_EQ(call(ObjectPtr(cols), "Count", none), Variant(int32_t{2}));
    Args first{Variant(int32_t{0})};
    Variant col = call(ObjectPtr(cols), "Item", first);
    EXPECT_EQ(call(col.asObject(), "Alignment", none), Variant(int32_t{1}));
    EXPECT_EQ(call(col.asObject(), "DataField", none), Variant(std::string("Orden")));
}

TEST(HostObjectsTest, DataMembersAndTheirChangeNotification) {
    Events::resetCounts();
    std::vector<std::pair<const Object*, std::string>> seen;
    const int token = Events::subscribe([&](const Object* s, std::string_view n) { seen.emplace_back(s, n); });
    auto owner = std::make_shared<StandInColumns>();
    DataMembers dm(owner.get());
    dm.Add("Primary");
    EXPECT_EQ(dm.Item(Variant(std::string("primary"))), "Primary");
    EXPECT_FALSE(dm.contains("primary")) << "the data member name compares exactly";
    EXPECT_EQ(errorOf([&] { dm.Item(Variant(int32_t{2})); }), err::SubscriptOutOfRange);
    dm.changed("Primary");
    dm.Clear();
    EXPECT_EQ(dm.Count(), 0);
    Events::unsubscribe(token);
    dm.changed("Primary");
    EXPECT_EQ(Events::count(event::DataMemberChanged), 2);
    ASSERT_EQ(seen.size(), 1u) << "listeners stop after unsubscribing";
    EXPECT_EQ(seen[0].first, owner.get());
    EXPECT_EQ(seen[0].second, event::DataMemberChanged);
}

TEST(HostObjectsTest, TheBeepIsSilentByDefaultAndTheApplicationReplaceable) {
    Events::resetCounts();
    int sounds = 0;
    Events::setBeepSound([&] { ++sounds; });
    Events::beep();
    Events::setBeepSound(nullptr);
    Events::beep();
    EXPECT_EQ(sounds, 1);
    EXPECT_EQ(Events::counts(), (std::map<std::string, int>{{"beep", 2}}));
    Events::resetCounts();

    auto app = std::make_shared<DefaultApplication>();
    app->setMajor(3);
    app->setPath("/opt/gestion/");
    setApplication(app);
    EXPECT_EQ(application().Path(), "/opt/gestion") << "no trailing separator";
    registerPlatformClasses(Registry::global());
    Args none;
    EXPECT_EQ(call(applicationPtr(), "Major", none), Variant(int16_t{3})) << "the host reaches the one in force";
    setApplication(nullptr);
    EXPECT_EQ(application().Major(), 1);
}

}  // namespace
}  // namespace hist
