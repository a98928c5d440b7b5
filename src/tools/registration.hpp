#pragma once
// Publishing a record class with the frame's members and the record tools' members
// (SeguridadPermiso, the validations, CreateFilter and the listings), each a function
// of tool_members.hpp called with the class.
#include "frame/registration.hpp"

namespace hist::tools {

// The record tools' members by name.
const frame::MemberTable& toolMembers();

template <class T>
ClassInfo& defineRecordClass(Registry& r, const frame::ClassVariants& v, frame::InterfaceList order,
                             const std::function<void(ClassBuilder<T>&)>& ownMembers = {}) {
    return frame::defineRecordClass<T>(r, v, order, ownMembers, {&frame::frameMembers(), &toolMembers()});
}

}  // namespace hist::tools
