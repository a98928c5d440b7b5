#include "platform/dispatch.hpp"

#include <gtest/gtest.h>

#include "platform/collection.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "runtime_test_util.hpp"

namespace hist {
namespace {

using hist::testing::errorOf;

// A class with members of every shape the record classes use.
class Probe : public Object {
public:
    std::string_view typeName() const override { return "Probe"; }

    // In/out variant and an optional in/out connection.
    Variant NuevoCodigo(Variant& vCod, ObjectPtr& objCn) {
        seenConnection = objCn;
        vCod = Variant(int32_t{42});
        if (!objCn) objCn = std::make_shared<Collection>();
        return Variant(std::string("nuevo"));
    }
    // Typed in/out parameters, one by value.
    void Fill(std::string& sSelecSql, int16_t& iCount, int32_t lByVal) {
        if (sSelecSql.empty()) sSelecSql = "todos";
        iCount = static_cast<int16_t>(iCount + lByVal);
        lByVal = 0;
    }
    // Optional arguments: a Variant without default, a typed one without default, and
    // a Boolean defaulting to true.
    std::string Optionals(const Variant& v, const std::string& s, bool bDefVal) {
        return std::string(v.isMissing() ? "missing" : "given") + "|" + s + "|" + (bDefVal ? "T" : "F");
    }
    // Receives each declared type as the conversion on entry left it.
    Variant Kinds(Variant& i, Variant& l, Variant& d, Variant& b, Variant& dt, Variant& s) {
        return Variant(std::string(hist::typeName(i.type())) + "," + hist::typeName(l.type()) + "," + hist::typeName(d.type()) +
                       "," + hist::typeName(b.type()) + "," + hist::typeName(dt.type()) + "," + hist::typeName(s.type()));
    }
    // Writes its argument, then fails.
    void WriteThenFail(Variant& out) {
        out = Variant(std::string("partial"));
        raise(err::NoCurrentRecord, "Probe");
    }
    std::shared_ptr<Collection> Items() const { return items; }

    ObjectPtr seenConnection;
    std::shared_ptr<Collection> items = std::make_shared<Collection>();
    Variant value = Variant(int32_t{1});
};

class DispatchTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        Registry& r = Registry::global();
        registerPlatformClasses(r);
        r.define<Probe>("Probe")
            .method("NuevoCodigo", {inout("vCod"), optObj("objCn")}, &Probe::NuevoCodigo)
            .method("Fill", {inout("sSelecSql", PT::String), inout("iCount", PT::Integer), in("lByVal", PT::Long)},
                    &Probe::Fill)
            .method("Optionals", {opt("v"), opt("s", PT::String), optRef("bDefVal", PT::Boolean, true)},
                    &Probe::Optionals)
            .method("Kinds",
                    {inout("i", PT::Integer), inout("l", PT::Long), inout("d", PT::Double), inout("b", PT::Boolean),
                     inout("dt", PT::Date), inout("s", PT::String)},
                    &Probe::Kinds)
            .method("WriteThenFail", {inout("out")}, &Probe::WriteThenFail)
            .get("Items", &Probe::Items)
            .property(
                "Value", [](Probe& p) { return p.value; }, [](Probe& p, const Variant& v) { p.value = v; })
            .method("Class_GetDataMember", {inout("DataMember", PT::String), inout("Data")},
                    [](Probe&, std::string& name, Variant& data) {
                        if (name == "Primary") data = Variant(std::string("rs"));
                    })
            .unlisted();
    }

    std::shared_ptr<Probe> probe = std::make_shared<Probe>();
};

TEST_F(DispatchTest, ByReferenceArgumentsComeBackToTheCaller) {
    Args args{Variant(), Variant::nothing()};
    Variant r = call(*probe, "NuevoCodigo", args);
    EXPECT_EQ(r, Variant(std::string("nuevo")));
    EXPECT_EQ(args[0], Variant(int32_t{42}));
    ASSERT_TRUE(args[1].isObject());
    EXPECT_NE(args[1].asObject(), nullptr) << "an unset connection argument is written back";

    // Typed in/out: the caller's value is converted on entry and the typed result comes back;
    // the by-value argument is left as the caller passed it.
    Args fill{Variant(std::string()), Variant(int32_t{2}), Variant(std::string("3"))};
    call(*probe, "Fill", fill);
    EXPECT_EQ(fill, (Args{Variant(std::string("todos")), Variant(int16_t{5}), Variant(std::string("3"))}));
}

TEST_F(DispatchTest, OmittedOptionalArgumentsTakeTheirDefaults) {
    struct Case {
        Args args;
        std::string expected;
    };
    const Case cases[] = {
        {{}, "missing||T"}, {{Variant(int32_t{1})}, "given||T"},
        {{Variant::missing(), Variant(std::string("x"))}, "missing|x|T"},
        {{Variant::missing(), Variant::missing(), Variant(false)}, "missing||F"},
        // An Empty Boolean is not an omitted one: it converts to False.
        {{Variant::missing(), Variant::missing(), Variant()}, "missing||F"},
    };
    for (const auto& c : cases) {
        Args a = c.args;
        EXPECT_EQ(call(*probe, "Optionals", a), Variant(c.expected)) << c.expected;
    }
    // An omitted optional connection arrives as no object, and what the member
    // writes into it has nowhere to go back to.
    Args a{Variant(), Variant::missing()};
    call(*probe, "NuevoCodigo", a);
    EXPECT_EQ(probe->seenConnection, nullptr);
    EXPECT_TRUE(a[1].isMissing());
    EXPECT_EQ(a[0], Variant(int32_t{42}));
}

TEST_F(DispatchTest, ArgumentsAreConvertedToTheDeclaredTypeOnEntry) {
    RegionalScope es(Regional::esES());
    Args a{Variant(std::string("12")), Variant(2.5), Variant(int16_t{3}), Variant(int32_t{1}),
           Variant(std::string("22/11/2026")), Variant(int32_t{7})};
    EXPECT_EQ(call(*probe, "Kinds", a), Variant(std::string("Integer,Long,Double,Boolean,Date,String")));
    EXPECT_EQ(a, (Args{Variant(int16_t{12}), Variant(int32_t{2}), Variant(3.0), Variant(true), Variant::date(46348),
                       Variant(std::string("7"))}))
        << "2.5 rounds half to even";

    struct Bad {
        size_t slot;
        Variant value;
        long error;
    };
    const Bad bad[] = {
        {0, Variant(std::string("abc")), err::TypeMismatch},
        {0, Variant(int32_t{40000}), err::Overflow},
        {1, Variant::null(), err::InvalidUseOfNull},
        {4, Variant(std::string("no es fecha")), err::TypeMismatch},
        {5, Variant::null(), err::InvalidUseOfNull},
    };
    for (const auto& b : bad) {
        Args args{Variant(int16_t{1}), Variant(int32_t{1}), Variant(1.0), Variant(true), Variant::date(1), Variant("s")};
        args[b.slot] = b.value;
        EXPECT_EQ(errorOf([&] { call(*probe, "Kinds", args); }), b.error) << "slot " << b.slot;
    }
    // An Object parameter refuses a value that is not an object.
    Args notObject{Variant(), Variant(int32_t{3})};
    EXPECT_EQ(errorOf([&] { call(*probe, "NuevoCodigo", notObject); }), err::TypeMismatch);
}

TEST_F(DispatchTest, CallFailuresCarryTheRuntimeNumbers) {
    Args none;
    Args one{Variant(int32_t{1})};
    Args tooMany{Variant(), Variant::nothing(), Variant()};
    EXPECT_EQ(errorOf([&] { call(*probe, "NoSuchMember", none); }), err::NoSuchMember);
    EXPECT_EQ(errorOf([&] { call(*probe, "NuevoCodigo", none); }), err::ArgumentNotOptional);
    EXPECT_EQ(errorOf([&] { call(*probe, "NuevoCodigo", tooMany); }), err::WrongArgumentCount);
    EXPECT_EQ(errorOf([&] { call(ObjectPtr{}, "NuevoCodigo", one); }), err::ObjectNotSet);
    EXPECT_EQ(errorOf([&] { call(Variant::nothing(), "NuevoCodigo", one); }), err::ObjectNotSet);
    EXPECT_EQ(errorOf([&] { call(Variant(int32_t{1}), "NuevoCodigo", one); }), err::ObjectRequired);
    // A property without a let, and a method, cannot be assigned.
    EXPECT_EQ(errorOf([&] { let(*probe, "Items", none, Variant()); }), err::WrongArgumentCount);
    EXPECT_EQ(errorOf([&] { let(*probe, "Fill", none, Variant()); }), err::WrongArgumentCount);
}

TEST_F(DispatchTest, ByReferenceWritesBeforeAFailureStand) {
    Args a{Variant(int32_t{0})};
    EXPECT_EQ(errorOf([&] { call(*probe, "WriteThenFail", a); }), err::NoCurrentRecord);
    EXPECT_EQ(a[0], Variant(std::string("partial")));
}

TEST_F(DispatchTest, NamesIgnoreCaseListingKeepsInterfaceOrderPropertiesLet) {
    Args a{Variant(), Variant::nothing()};
    EXPECT_NO_THROW(call(*probe, "nuevocodigo", a));
    const ClassInfo* ci = Registry::global().find("PROBE");
    ASSERT_NE(ci, nullptr);
    EXPECT_EQ(ci->listedNames(), (std::vector<std::string>{"NuevoCodigo", "Fill", "Optionals", "Kinds",
                                                           "WriteThenFail", "Items", "Value"}));
    // The unlisted data-source member is still callable.
    Args dm{Variant(std::string("Primary")), Variant()};
    call(*probe, "Class_GetDataMember", dm);
    EXPECT_EQ(dm[1], Variant(std::string("rs")));
    Args none;
    let(*probe, "value", none, Variant(std::string("nuevo")));
    EXPECT_EQ(call(*probe, "Value", none), Variant(std::string("nuevo")));
}

TEST_F(DispatchTest, ArgumentsOnAParameterlessPropertyGoToItsDefaultMember) {
    probe->items->Add(Variant(std::string("uno")), Variant(std::string("a")));
    probe->items->Add(Variant(std::string("dos")), Variant(std::string("b")));
    Args byKey{Variant(std::string("B"))};
    EXPECT_EQ(call(*probe, "Items", byKey), Variant(std::string("dos")));
    Args byPos{Variant(int32_t{1})};
    EXPECT_EQ(call(*probe, "Items", byPos), Variant(std::string("uno")));
    // Without a default member on the result, extra arguments are an error.
    Args extra{Variant(int32_t{1})};
    EXPECT_EQ(errorOf([&] { call(*probe, "Value", extra); }), err::WrongArgumentCount);
}

TEST_F(DispatchTest, RegistrationChecksArityAndCreatesByName) {
    Registry r;
    auto c = r.define<Probe>("Probe");
    EXPECT_THROW(c.method("Fill", {inout("s", PT::String)}, &Probe::Fill), std::logic_error);
    ObjectPtr o = Registry::global().create("probe");
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->typeName(), "Probe");
    EXPECT_EQ(errorOf([] { Registry::global().create("NoSuchClass"); }), err::CannotCreateObject);
}

}  // namespace
}  // namespace hist
