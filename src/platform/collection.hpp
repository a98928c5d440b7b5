#pragma once
// Collection: the runtime's 1-based list of values with optional text keys. Keys
// compare without regard to case (Unicode case folding). Errors: 5 for an unknown
// key, 9 for a position outside 1..Count, 457 for a key already present, 13 for an
// index or key of the wrong kind.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist {

class Registry;

class Collection : public Object {
public:
    std::string_view typeName() const override { return "Collection"; }

    // Adds `item`, under `key` when given, before or after the item that `before` or
    // `after` designates (a position or a key; at most one of them), else at the end.
    void Add(const Variant& item, const Variant& key = Variant::missing(),
             const Variant& before = Variant::missing(), const Variant& after = Variant::missing());
    // Frees nested collections one after another rather than one inside another, so a
    // chain of any length built by a host cannot exhaust the stack when it goes.
    ~Collection() override;

    int32_t Count() const { return static_cast<int32_t>(items_.size()); }
    // By position (1-based) or by key.
    Variant Item(const Variant& index) const;
    void Remove(const Variant& index);

    // The values in order, for hosts that show the whole list.
    std::vector<Variant> values() const;
    // The key of the item at a 0-based position, if it has one.
    std::optional<std::string> keyAt(size_t pos) const;

private:
    struct Entry {
        Variant value;
        std::optional<std::string> key;  // as given
        std::string folded;              // case-folded key, empty when none
    };
    size_t positionOf(const Variant& index) const;  // 0-based
    std::vector<Entry> items_;
};

// Registers Collection for dispatch (Add, Count, Item, Remove; Item is the default member).
void registerCollectionClass(Registry& r);

}  // namespace hist
