#include "platform/collection.hpp"

#include <gtest/gtest.h>

#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "runtime_test_util.hpp"

namespace hist {
namespace {

Variant S(const char* s) { return Variant(std::string(s)); }
Variant L(int32_t v) { return Variant(v); }

using hist::testing::errorOf;

TEST(CollectionTest, AddPlacesItemsAtTheEndOrBeforeAndAfterRemoveFreesTheKey) {
    Collection c;
    c.Add(S("b"), S("kb"));
    c.Add(S("d"));
    c.Add(S("a"), Variant::missing(), L(1));          // before position 1
    c.Add(S("c"), Variant::missing(), S("KB"), Variant::missing());
    c.Add(S("e"), Variant::missing(), Variant::missing(), L(4));  // after the last
    c.Add(S("c2"), Variant::missing(), Variant::missing(), S("kb"));
    EXPECT_EQ(c.values(), (std::vector<Variant>{S("a"), S("c"), S("b"), S("c2"), S("d"), S("e")}));
    EXPECT_EQ(c.Count(), 6);
    EXPECT_EQ(c.keyAt(2), std::optional<std::string>("kb"));
    EXPECT_EQ(c.keyAt(0), std::nullopt);
    // Removed by key in another case, the key can be given again; then removed by position.
    c.Remove(S("KB"));
    c.Add(S("b2"), S("kb"));
    c.Remove(L(1));
    EXPECT_EQ(c.values(), (std::vector<Variant>{S("c"), S("c2"), S("d"), S("e"), S("b2")}));
    EXPECT_EQ(c.Item(S("kb")), S("b2"));
    EXPECT_EQ(c.Item(Variant(int16_t{2})), S("c2"));
    EXPECT_EQ(c.Item(Variant(1.6)), S("c2")) << "a fractional position rounds";
    c.Add(L(10), S("Año"));
    EXPECT_EQ(c.Item(S("AÑO")), L(10)) << "keys fold case beyond ASCII";
}

TEST(CollectionTest, AChainOfNestedCollectionsOfAnyLengthIsFreed) {
    // Each collection holds the one before: freed one inside another, 300,000 levels
    // would exhaust the stack.
    auto chain = std::make_shared<Collection>();
    for (int i = 0; i < 300000; ++i) {
        auto next = std::make_shared<Collection>();
        next->Add(Variant(ObjectPtr(chain)));
        chain = next;
    }
    std::weak_ptr<Collection> watch = chain;
    chain.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(CollectionTest, FailuresCarryTheRuntimeNumbers) {
    Collection c;
    c.Add(S("x"), S("k"));
    c.Add(S("y"));
    struct Case {
        const char* what;
        std::function<void()> f;
        long error;
    };
    const Case cases[] = {
        {"position 0", [&] { c.Item(L(0)); }, err::SubscriptOutOfRange},
        {"position past Count", [&] { c.Item(L(3)); }, err::SubscriptOutOfRange},
        {"unknown key", [&] { c.Item(S("nokey")); }, err::InvalidCall},
        {"Null index", [&] { c.Item(Variant::null()); }, err::TypeMismatch},
        {"duplicate key in another case", [&] { c.Add(S("z"), S("K")); }, err::DuplicateKey},
        {"numeric key", [&] { c.Add(S("z"), L(4)); }, err::TypeMismatch},
        {"before and after", [&] { c.Add(S("z"), Variant::missing(), L(1), L(1)); }, err::InvalidCall},
        {"before past Count", [&] { c.Add(S("z"), Variant::missing(), L(9)); }, err::SubscriptOutOfRange},
        {"remove unknown key", [&] { c.Remove(S("nokey")); }, err::InvalidCall},
        {"remove past Count", [&] { c.Remove(L(3)); }, err::SubscriptOutOfRange},
    };
    for (const auto& k : cases) EXPECT_EQ(errorOf(k.f), k.error) << k.what;
    EXPECT_EQ(c.Count(), 2) << "failed calls change nothing";
}

TEST(CollectionTest, AddTakesBeforeAsItsThirdArgumentByName) {
    // The other members by name, and the member list, are driven through the host's tests.
    registerPlatformClasses(Registry::global());
    ObjectPtr c = Registry::global().create("Collection");
    Args add{S("a"), S("ka")}, addBefore{S("b"), Variant::missing(), S("ka")}, at1{L(1)};
    call(c, "Add", add);
    call(c, "add", addBefore);
    EXPECT_EQ(call(c, "Item", at1), S("b"));
}

}  // namespace
}  // namespace hist
