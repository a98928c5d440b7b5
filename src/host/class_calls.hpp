#pragma once
// How the host's own commands use the classes and the data service, as a form and
// its host would: a member called with the arguments it names (each other one the
// empty value of its type, an optional one left out), and a selection's rows read
// through the data service.
#include <map>
#include <string>
#include <vector>

#include "frame/record.hpp"
#include "platform/dispatch.hpp"

namespace hist::host {

// A call's result and its arguments afterwards, by name: the by-reference ones hold
// what the member wrote.
struct Called {
    Variant result;
    std::map<std::string, Variant> args;
    const Variant& operator[](const std::string& name) const { return args.at(name); }
};

// 438 when the object has no such member.
Called invoke(const ObjectPtr& obj, const std::string& member, std::map<std::string, Variant> named = {});

// Every row of a selection run through the data service on `cn` (unset: one of the
// service's own), each row its cells in field order.
std::vector<std::vector<Variant>> rowsOf(const std::string& sql, frame::ConnPtr& cn);

}  // namespace hist::host
