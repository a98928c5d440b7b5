#pragma once
// The base of every object a Variant can hold: record classes, collaborators,
// connections, recordsets, fields, collections, host objects. Members are reached
// by name through the class's registered interface (see dispatch.hpp).
#include <memory>
#include <string_view>

namespace hist {

class Object : public std::enable_shared_from_this<Object> {
public:
    virtual ~Object() = default;
    // The registered class name ("ClsOrdenes", "Recordset", "Collection", ...).
    virtual std::string_view typeName() const = 0;
};

using ObjectPtr = std::shared_ptr<Object>;

}  // namespace hist
