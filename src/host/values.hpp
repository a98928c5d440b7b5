#pragma once
// The host protocol's values: JSON to Variant and back, and the names under which a
// session knows its objects.
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::host {

using Json = nlohmann::ordered_json;

// The objects a session can name: those created with `new ... as`, and every object
// an answer carries, under a generated name ("r1", "r2", ...). An object keeps its
// first name for the session: the same object always comes back under the same name.
// A name holds its object alive until released.
class ObjectNames {
public:
    void bind(const std::string& name, ObjectPtr obj);
    ObjectPtr find(const std::string& name) const;  // null when no such name
    // The object's name, generating one when it has none.
    std::string nameOf(const ObjectPtr& obj);
    bool release(const std::string& name);
    size_t size() const { return byName_.size(); }

private:
    std::unordered_map<std::string, ObjectPtr> byName_;
    // Every name of an object, its first name first: releasing one never walks all names.
    std::unordered_map<const Object*, std::vector<std::string>> byObject_;
    long next_ = 1;
};

// How deep a request's values may nest (a collection in a collection, a control's
// property holding a collection, ...), counting the value itself as one level.
inline constexpr int kMaxValueDepth = 64;

// JSON to Variant. A value that cannot be read, or that nests deeper than
// kMaxValueDepth, raises hist::Error 5 (source historicos.host) naming what was
// wrong; an unknown ref raises 424.
Variant decodeValue(const Json& j, ObjectNames& names);
// Variant to JSON: Integer and Long as integers, a Double always with a decimal point
// or an exponent, dates as {"date":"YYYY-MM-DDTHH:MM:SS"}, stand-in controls and grid
// columns with all their properties, collections as a ref with their items, any other
// object as its ref.
Json encodeValue(const Variant& v, ObjectNames& names);

// Raises the protocol's error for a malformed request.
[[noreturn]] void malformed(const std::string& what);

}  // namespace hist::host
