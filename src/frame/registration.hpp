#pragma once
// Publishing a record class for dispatch. The class gives its interface list (the
// names of its public members in interface order) and defines its own members; every
// other name on the list comes from the shared member tables (the frame's, and the
// record tools' for the classes of the library), with the argument list the class
// declares where it differs from the common one. The
// data-source members (Class_GetDataMember, DataMembers, DataMemberChanged) are
// added after the list, callable and unlisted.
//
// A name on the list that is neither the class's own nor a frame member, or an own
// member missing from the list, is a programming error (std::logic_error at
// registration, and the registry is left as it was), so a class offers exactly
// its interface. Calls by name find a class in the registry it was defined in;
// hosts use Registry::global().
#include <functional>
#include <initializer_list>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "frame/record.hpp"
#include "platform/dispatch.hpp"

namespace hist::frame {

// A member whose body takes the converted argument list as it stands, the optional
// connection last: the connection the body used (or made) is written back into the
// caller's argument, also when the body fails. For members with long argument runs.
template <class T>
Member connectionMember(std::string name, std::vector<Param> params, std::function<void(T&, Args&, ConnPtr&)> body) {
    Member m;
    m.name = std::move(name);
    m.returnsValue = false;
    m.params = std::move(params);
    m.invoke = [body = std::move(body)](Object& o, Args& a) -> Variant {
        using Conn = dispatch_detail::Binder<ConnPtr>;
        T& self = dispatch_detail::self<T>(o);
        ConnPtr cn = Conn::load(a.back());
        try {
            body(self, a, cn);
        } catch (...) {
            a.back() = Conn::store(cn);
            throw;
        }
        a.back() = Conn::store(cn);
        return Variant();
    };
    return m;
}

using InterfaceList = std::span<const std::string_view>;

// Shared members by name: each defines the member with every argument it can take.
using MemberAdder = void (*)(ClassBuilder<RecordClass>&);
struct SharedMember {
    // From a captureless lambda, so a table reads as {name, [](B& b) {...}}.
    template <class F>
    SharedMember(F a, std::vector<Param> c = {}) : add(a), common(std::move(c)) {}  // NOLINT
    MemberAdder add;
    // The common interface's argument list where it takes fewer than the member can
    // (FindRecord's Index belongs to the classes that declare it); empty: all of them.
    std::vector<Param> common;
};
using MemberTable = std::map<std::string, SharedMember, std::less<>>;

// The frame's members (navigation, editing, statements, saved views, ...).
const MemberTable& frameMembers();
// Adds the member `name` of `table` to a class, with the class's declared argument
// list where it declares one; false when the table has no member of that name.
bool addMemberFrom(const MemberTable& table, ClassInfo& info, std::string_view name, const ClassVariants& v);
// Adds the data-source members, unlisted.
void addDataSourceMembers(ClassInfo& info);
// Checks that every own member appears on the list.
void checkOwnMembersListed(const ClassInfo& own, InterfaceList order);

// `shared` are the tables the names of the list are looked up in after the class's
// own members: the frame's, and the tools' (tools/registration.hpp) for the classes.
template <class T>
ClassInfo& defineRecordClass(Registry& r, const ClassVariants& v, InterfaceList order,
                             const std::function<void(ClassBuilder<T>&)>& ownMembers = {},
                             std::initializer_list<const MemberTable*> shared = {&frameMembers()}) {
    static_assert(std::is_base_of_v<RecordClass, T>, "a record class derives from RecordClass");
    ClassInfo own(std::string(v.className), {});
    ClassBuilder<T> ownBuilder(own);
    if (ownMembers) ownMembers(ownBuilder);
    checkOwnMembersListed(own, order);

    // The whole list is built first, so a refused list leaves the registry as it was.
    ClassInfo built(std::string(v.className), {});
    for (std::string_view name : order) {
        bool found = false;
        if (const Member* m = own.find(name)) {
            built.add(*m);
            found = true;
        }
        for (const MemberTable* table : shared) found = found || addMemberFrom(*table, built, name, v);
        if (!found) {
            throw std::logic_error(std::string(v.className) + ": no member " + std::string(name) +
                                   " in the class or the frame");
        }
    }
    addDataSourceMembers(built);
    ClassInfo& info = r.define<T>(std::string(v.className)).info();
    for (const Member& m : built.members()) info.add(m);
    return info;
}

}  // namespace hist::frame
