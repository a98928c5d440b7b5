#include "platform/collection.hpp"


#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "platform/text.hpp"

namespace hist {

namespace {
std::string foldKey(const std::string& key) { return text::fold(key); }

bool given(const Variant& v) { return !v.isMissing() && !v.isEmpty(); }
}  // namespace

Collection::~Collection() {
    std::vector<Variant> pending;
    for (Entry& e : items_) pending.push_back(std::move(e.value));
    items_.clear();
    while (!pending.empty()) {
        Variant v = std::move(pending.back());
        pending.pop_back();
        if (!v.isObject()) continue;
        ObjectPtr o = v.asObject();
        v = Variant();
        // The last holder of a nested collection hands its items over before it goes.
        if (auto* c = dynamic_cast<Collection*>(o.get()); c && o.use_count() == 1) {
            for (Entry& e : c->items_) pending.push_back(std::move(e.value));
            c->items_.clear();
        }
    }
}

size_t Collection::positionOf(const Variant& index) const {
    if (index.isString()) {
        const std::string folded = foldKey(index.asString());
        for (size_t i = 0; i < items_.size(); ++i)
            if (items_[i].key && items_[i].folded == folded) return i;
        raise(err::InvalidCall, err::SrcRuntime);
    }
    if (!index.isNumeric() && index.type() != VarType::Date) raise(err::TypeMismatch, err::SrcRuntime);
    const int32_t pos = rt::CLng(index);
    if (pos < 1 || pos > Count()) raise(err::SubscriptOutOfRange, err::SrcRuntime);
    return static_cast<size_t>(pos - 1);
}

void Collection::Add(const Variant& item, const Variant& key, const Variant& before, const Variant& after) {
    Entry e{item, std::nullopt, {}};
    if (given(key)) {
        if (!key.isString()) raise(err::TypeMismatch, err::SrcRuntime);
        e.folded = foldKey(key.asString());
        for (const auto& x : items_)
            if (x.key && x.folded == e.folded) raise(err::DuplicateKey, err::SrcRuntime);
        e.key = key.asString();
    }
    if (given(before) && given(after)) raise(err::InvalidCall, err::SrcRuntime);
    size_t at = items_.size();
    if (given(before)) at = positionOf(before);
    else if (given(after)) at = positionOf(after) + 1;
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at), std::move(e));
}

Variant Collection::Item(const Variant& index) const { return items_[positionOf(index)].value; }

void Collection::Remove(const Variant& index) {
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(positionOf(index)));
}

std::vector<Variant> Collection::values() const {
    std::vector<Variant> out;
    out.reserve(items_.size());
    for (const auto& e : items_) out.push_back(e.value);
    return out;
}

std::optional<std::string> Collection::keyAt(size_t pos) const {
    return pos < items_.size() ? items_[pos].key : std::nullopt;
}

void registerCollectionClass(Registry& r) {
    r.define<Collection>("Collection")
        .method("Add", {in("Item"), opt("Key"), opt("Before"), opt("After")}, &Collection::Add)
        .get("Count", &Collection::Count)
        .method("Item", {in("Index")}, &Collection::Item)
        .method("Remove", {in("Index")}, &Collection::Remove)
        .defaultMember("Item");
}

}  // namespace hist
