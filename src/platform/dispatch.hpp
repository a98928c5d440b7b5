#pragma once
// Dispatch: members by name. Every class, collaborator and data-layer object of the
// library publishes its public members here, in interface order, so that script
// hosts (`historicos host`) and tests reach them by name, with arguments passed by
// reference as the interface declares.
//
// Registering a class
// -------------------
// Each layer has one explicit registration function, called by the host at start-up
// (`registerAllClasses` in host/registration.hpp calls them in layer order):
//
//     void registerPlatformClasses(Registry&);   // platform: Collection, Runtime, grid columns
//     void registerAdoClasses(Registry&);        // ado: Connection, Recordset, Fields, Field
//     ...                                        // frame, tools, clinical, documents, satellites
//
// A static registrar object would not do: the linker drops an unreferenced object file
// of a static library, and its registration with it. Inside the function:
//
//     void registerClinicalClasses(Registry& r) {
//         auto c = r.define<ClsOrdenesFases>("ClsOrdenesFases");   // factory: make_shared<T>()
//         c.get("sClassName", &ClsOrdenesFases::sClassName);       // read-only property
//         c.method("NuevoCodigo", {inout("vCod"), optObj("objCn")}, &ClsOrdenesFases::NuevoCodigo);
//         c.method("IniciaRs", {optObj("cnnActive"), optRef("sSelecSql", PT::String),
//                               optRef("id"), optRef("dtFecha", PT::Date)},
//                  &ClsOrdenesFases::IniciaRs);
//         c.method("Class_GetDataMember", {inout("DataMember", PT::String), inout("Data")},
//                  &ClsOrdenesFases::Class_GetDataMember).unlisted();
//     }
//     // A property with get and let, and a collection's default member:
//     r.define<Field>("Field", nullptr).property("Value", &Field::Value, &Field::SetValue);
//     r.define<Fields>("Fields", nullptr).get("Count", &Fields::Count)
//         .method("Item", {in("Index")}, &Fields::Item).defaultMember("Item");
//
// Members are listed in the order they are registered; `unlisted()` keeps a member
// callable but out of `members` (the data-source members). `defaultMember("Item")`
// names the member a call with arguments on a parameterless property of this class's
// objects falls through to (`rs.Fields("Cerrada")` is `rs.Fields.Item("Cerrada")`).
//
// The C++ implementation is a member function (or a lambda or function whose first parameter is
// `T&`) with one parameter per declared parameter, in order. Each parameter may be
// `Variant&` or a typed reference (`std::string&`, `bool&`, `int16_t&`, `int32_t&`,
// `double&`, `DateValue&`, `ObjectPtr&`, `std::shared_ptr<U>&`), or the same by value or
// const reference. Whatever it writes into a by-reference parameter goes back to the
// caller. The result may be `void` (the member returns nothing), `Variant` or any of
// those types.
//
// Parameters
// ----------
//   in(name, type)             required, by value
//   inout(name, type)          required, by reference
//   opt(name, type, default)   optional, by value
//   optRef(name, type, def)    optional, by reference
//   optObj(name)               optional, by reference, an Object defaulting to no object
//                              (the connection arguments `objCn`, `cnnActive`)
// Types are the declared types of the interface (PT::Variant by default). An omitted
// optional argument takes its default; without one, a Variant parameter receives
// Missing and a typed one its type's zero ("" , 0, False, no object).
//
// Calling
// -------
// `call(obj, "IniciaRs", args)` converts each argument to its declared type (errors 13,
// 94, 6 as the conversion raises them), fills omitted optional ones, raises 449 for an
// omitted required one, 450 for too many, 438 for an unknown member, 91 on no object;
// after the call the by-reference arguments the caller passed hold what the member
// wrote. Names of classes and members ignore case.
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/error.hpp"
#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist {

namespace err {
inline constexpr const char* WrongArgumentCountText =
    "Wrong number of arguments or invalid property assignment";
}  // namespace err

// The declared type of a parameter or property value.
enum class ParamType { Variant, String, Boolean, Integer, Long, Double, Date, Object };
using PT = ParamType;

struct Param {
    std::string name;
    ParamType type = ParamType::Variant;
    bool byRef = false;
    bool optional = false;
    Variant defaultValue = Variant::missing();  // Missing: no default declared
};

Param in(std::string name, ParamType type = PT::Variant);
Param inout(std::string name, ParamType type = PT::Variant);
Param opt(std::string name, ParamType type = PT::Variant, Variant def = Variant::missing());
Param optRef(std::string name, ParamType type = PT::Variant, Variant def = Variant::missing());
Param optObj(std::string name);

using Args = std::vector<Variant>;

enum class MemberKind { Method, Property };

struct Member {
    std::string name;
    MemberKind kind = MemberKind::Method;
    std::vector<Param> params;
    bool listed = true;
    bool returnsValue = true;  // false: a Sub, the call has no result
    // Method body or property get. Receives the arguments already converted and
    // completed (one per parameter); writes by-reference results into them.
    std::function<Variant(Object&, Args&)> invoke;
    // Property let/set, or empty for a read-only property or a method.
    std::function<void(Object&, Args&, const Variant&)> let;
    ParamType valueType = PT::Variant;  // what a let converts the assigned value to
};

class ClassInfo {
public:
    ClassInfo(std::string name, std::function<ObjectPtr()> factory);

    const std::string& name() const { return name_; }
    ObjectPtr create() const;  // error 429 when the class cannot be created
    bool creatable() const { return static_cast<bool>(factory_); }

    Member& add(Member m);  // replaces a member of the same name
    const Member* find(std::string_view name) const;  // case ignored
    const std::vector<Member>& members() const { return members_; }
    std::vector<std::string> listedNames() const;

    void setDefaultMember(std::string name) { defaultMember_ = std::move(name); }
    const std::string& defaultMember() const { return defaultMember_; }

private:
    std::string name_;
    std::function<ObjectPtr()> factory_;
    std::vector<Member> members_;
    std::unordered_map<std::string, size_t> index_;
    std::string defaultMember_;
};

template <class T>
class ClassBuilder;

class Registry {
public:
    // The registry the host and the library use.
    static Registry& global();

    // Adds (or replaces) a class; the returned reference stays valid.
    ClassInfo& add(std::string name, std::function<ObjectPtr()> factory);
    const ClassInfo* find(std::string_view name) const;  // case ignored
    const ClassInfo* classOf(const Object& obj) const { return find(obj.typeName()); }
    ObjectPtr create(std::string_view name) const;       // 429 for an unknown class
    std::vector<std::string> classNames() const;

    // Builder for class T; T must derive from Object. Without a factory the class
    // is created with make_shared<T>() when T is default-constructible.
    template <class T>
    ClassBuilder<T> define(std::string name);
    template <class T>
    ClassBuilder<T> define(std::string name, std::function<ObjectPtr()> factory);

private:
    std::vector<std::unique_ptr<ClassInfo>> classes_;
    std::unordered_map<std::string, size_t> index_;
};

// ---- Calling by name ----
// Method call or property read. The result is Empty for a member that returns nothing.
Variant call(Object& obj, std::string_view member, Args& args);
Variant call(const ObjectPtr& obj, std::string_view member, Args& args);  // 91 on no object
Variant call(const Variant& obj, std::string_view member, Args& args);    // 91/424
template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T> && !std::is_same_v<Object, T>>>
Variant call(const std::shared_ptr<T>& obj, std::string_view member, Args& args) {
    return call(ObjectPtr(obj), member, args);
}
inline Variant call(const ObjectPtr& obj, std::string_view member) {
    Args none;
    return call(obj, member, none);
}
// The outermost member call in progress on this thread (the one a host or a form
// made), for the records that name who wrote what: empty texts when none is.
struct CallSite {
    std::string className;
    std::string member;
};
const CallSite& outermostCall();

// Property let/set: `obj.member(args) = value`.
void let(Object& obj, std::string_view member, Args& args, const Variant& value);
void let(const ObjectPtr& obj, std::string_view member, Args& args, const Variant& value);
// The member a name designates on an object's class, or null (no 438 raised).
const Member* findMember(const Object& obj, std::string_view member);

// Converts a value to a declared type with the runtime's conversions.
Variant convertTo(const Variant& v, ParamType type);
// The zero value of a declared type ("" , 0, False, a zero date, no object; Empty for Variant).
Variant zeroOf(ParamType type);
// The folded form of a member or class name (the library's one case folding).
std::string foldName(std::string_view name);

// ---- Binding C++ members ----
namespace dispatch_detail {

template <class T>
struct Binder;  // how a C++ parameter type is loaded from and stored into a Variant

template <>
struct Binder<Variant> {
    static Variant load(const Variant& v) { return v; }
    static Variant store(const Variant& h) { return h; }
};
template <>
struct Binder<std::string> {
    static std::string load(const Variant& v);
    static Variant store(const std::string& h) { return Variant(h); }
};
template <>
struct Binder<bool> {
    static bool load(const Variant& v);
    static Variant store(bool h) { return Variant(h); }
};
template <>
struct Binder<int16_t> {
    static int16_t load(const Variant& v);
    static Variant store(int16_t h) { return Variant(h); }
};
template <>
struct Binder<int32_t> {
    static int32_t load(const Variant& v);
    static Variant store(int32_t h) { return Variant(h); }
};
template <>
struct Binder<double> {
    static double load(const Variant& v);
    static Variant store(double h) { return Variant(h); }
};
template <>
struct Binder<DateValue> {
    static DateValue load(const Variant& v);
    static Variant store(DateValue h) { return Variant(h); }
};
template <>
struct Binder<ObjectPtr> {
    static ObjectPtr load(const Variant& v);
    static Variant store(const ObjectPtr& h) { return Variant(h); }
};
template <class U>
struct Binder<std::shared_ptr<U>> {
    static std::shared_ptr<U> load(const Variant& v) {
        ObjectPtr o = Binder<ObjectPtr>::load(v);
        if (!o) return nullptr;
        auto p = std::dynamic_pointer_cast<U>(o);
        if (!p) raise(err::TypeMismatch, err::SrcRuntime);
        return p;
    }
    static Variant store(const std::shared_ptr<U>& h) { return Variant(ObjectPtr(h)); }
};

template <class R>
Variant toResult(R&& r) {
    using D = std::decay_t<R>;
    if constexpr (std::is_same_v<D, Variant>) return std::forward<R>(r);
    else if constexpr (std::is_same_v<D, std::shared_ptr<Object>>) return Variant(std::forward<R>(r));
    else if constexpr (requires { typename D::element_type; })
        return Variant(ObjectPtr(std::forward<R>(r)));
    else return Binder<D>::store(r);
}

template <class T>
T& self(Object& o) {
    auto* p = dynamic_cast<T*>(&o);
    if (!p) raise(err::NoSuchMember, err::SrcRuntime);
    return *p;
}

// Signature of a callable: R(T&, P...) for member functions and lambdas.
template <class M>
struct LambdaSig;
template <class L, class R, class T, class... P>
struct LambdaSig<R (L::*)(T&, P...) const> {
    using Ret = R;
    using Self = T;
    using Params = std::tuple<P...>;
};
template <class L, class R, class T, class... P>
struct LambdaSig<R (L::*)(T&, P...)> : LambdaSig<R (L::*)(T&, P...) const> {};
template <class F>
struct Sig : LambdaSig<decltype(&F::operator())> {};
template <class R, class T, class... P>
struct MemSig {
    using Ret = R;
    using Self = T;
    using Params = std::tuple<P...>;
};
template <class R, class T, class... P>
struct Sig<R (T::*)(P...)> : MemSig<R, T, P...> {};
// A free function whose first parameter is the object.
template <class R, class T, class... P>
struct Sig<R (*)(T&, P...)> : MemSig<R, T, P...> {};
template <class R, class T, class... P>
struct Sig<R (T::*)(P...) const> : MemSig<R, T, P...> {};
template <class R, class T, class... P>
struct Sig<R (T::*)(P...) noexcept> : MemSig<R, T, P...> {};
template <class R, class T, class... P>
struct Sig<R (T::*)(P...) const noexcept> : MemSig<R, T, P...> {};

template <class T, class F, class Tuple, size_t... I>
Variant invokeBound(F& f, T& obj, Args& a, std::index_sequence<I...>) {
    using Ret = typename Sig<F>::Ret;
    std::tuple<std::decay_t<std::tuple_element_t<I, Tuple>>...> held{
        Binder<std::decay_t<std::tuple_element_t<I, Tuple>>>::load(a[I])...};
    (void)a;
    // What the member wrote into its parameters goes back into the argument slots,
    // also when it fails midway (its writes stand, as a by-reference caller sees them).
    auto storeBack = [&] {
        ((a[I] = Binder<std::decay_t<std::tuple_element_t<I, Tuple>>>::store(std::get<I>(held))), ...);
    };
    Variant result;
    try {
        if constexpr (std::is_void_v<Ret>) std::invoke(f, obj, std::get<I>(held)...);
        else result = toResult(std::invoke(f, obj, std::get<I>(held)...));
    } catch (...) {
        storeBack();
        throw;
    }
    storeBack();
    return result;
}

template <class T, class F>
std::function<Variant(Object&, Args&)> wrap(F f, size_t declared, const std::string& name) {
    using Params = typename Sig<F>::Params;
    constexpr size_t n = std::tuple_size_v<Params>;
    if (declared != n)
        throw std::logic_error("dispatch: member " + name + " declares " + std::to_string(declared) +
                               " parameters, its implementation takes " + std::to_string(n));
    return [f](Object& o, Args& a) mutable -> Variant {
        return invokeBound<T, F, Params>(f, self<T>(o), a, std::make_index_sequence<n>{});
    };
}

template <class F>
constexpr bool returnsVoid() {
    return std::is_void_v<typename Sig<F>::Ret>;
}

}  // namespace dispatch_detail

template <class T>
class ClassBuilder {
public:
    explicit ClassBuilder(ClassInfo& info) : info_(&info) {}

    // A method. `f` is &T::Method or a lambda (T&, P...).
    template <class F>
    ClassBuilder& method(std::string name, std::vector<Param> params, F f) {
        Member m;
        m.name = std::move(name);
        m.kind = MemberKind::Method;
        m.returnsValue = !dispatch_detail::returnsVoid<F>();
        m.invoke = dispatch_detail::wrap<T>(f, params.size(), m.name);
        m.params = std::move(params);
        last_ = &info_->add(std::move(m));
        return *this;
    }
    // A read-only property without parameters.
    template <class G>
    ClassBuilder& get(std::string name, G g) {
        return property(std::move(name), {}, g);
    }
    // A read-only property with parameters.
    template <class G>
    ClassBuilder& property(std::string name, std::vector<Param> params, G g) {
        Member m;
        m.name = std::move(name);
        m.kind = MemberKind::Property;
        m.invoke = dispatch_detail::wrap<T>(g, params.size(), m.name);
        m.params = std::move(params);
        last_ = &info_->add(std::move(m));
        return *this;
    }
    // A property with get and let; the setter takes (T&, value) with the value typed as
    // `valueType` declares (or any Binder type).
    template <class G, class S>
    ClassBuilder& property(std::string name, G g, S s, ParamType valueType = PT::Variant) {
        get(std::move(name), g);
        using SP = typename dispatch_detail::Sig<S>::Params;
        static_assert(std::tuple_size_v<SP> == 1, "a property setter takes the value only");
        using V = std::decay_t<std::tuple_element_t<0, SP>>;
        last_->valueType = valueType;
        last_->let = [s](Object& o, Args&, const Variant& v) mutable {
            std::invoke(s, dispatch_detail::self<T>(o), dispatch_detail::Binder<V>::load(v));
        };
        return *this;
    }
    // Keeps the last member callable but out of the listed interface.
    ClassBuilder& unlisted() {
        if (last_) last_->listed = false;
        return *this;
    }
    ClassBuilder& defaultMember(std::string name) {
        info_->setDefaultMember(std::move(name));
        return *this;
    }
    // A member written directly against the arguments (variable parameter lists).
    ClassBuilder& raw(Member m) {
        last_ = &info_->add(std::move(m));
        return *this;
    }
    ClassInfo& info() { return *info_; }

private:
    ClassInfo* info_;
    Member* last_ = nullptr;
};

template <class T>
ClassBuilder<T> Registry::define(std::string name) {
    static_assert(std::is_base_of_v<Object, T>, "a registered class derives from Object");
    std::function<ObjectPtr()> factory;
    if constexpr (std::is_default_constructible_v<T>) factory = [] { return std::make_shared<T>(); };
    return define<T>(std::move(name), std::move(factory));
}

template <class T>
ClassBuilder<T> Registry::define(std::string name, std::function<ObjectPtr()> factory) {
    return ClassBuilder<T>(add(std::move(name), std::move(factory)));
}

// Registers the platform's own classes: Collection, Runtime, the stand-in grid columns.
void registerPlatformClasses(Registry& r);

}  // namespace hist
