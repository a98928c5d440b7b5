#include "host/values.hpp"

#include <cmath>

#include "platform/collection.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/runtime.hpp"

namespace hist::host {

void malformed(const std::string& what) {
    raise(err::InvalidCall, err::SrcHost, "Malformed request: " + what);
}

// ---- names ----

void ObjectNames::bind(const std::string& name, ObjectPtr obj) {
    release(name);
    if (obj) byObject_[obj.get()].push_back(name);
    byName_[name] = std::move(obj);
}

ObjectPtr ObjectNames::find(const std::string& name) const {
    auto it = byName_.find(name);
    return it == byName_.end() ? nullptr : it->second;
}

std::string ObjectNames::nameOf(const ObjectPtr& obj) {
    if (auto it = byObject_.find(obj.get()); it != byObject_.end() && !it->second.empty()) return it->second.front();
    std::string name;
    do name = "r" + std::to_string(next_++);
    while (byName_.count(name));
    byName_[name] = obj;
    byObject_[obj.get()].push_back(name);
    return name;
}

bool ObjectNames::release(const std::string& name) {
    auto it = byName_.find(name);
    if (it == byName_.end()) return false;
    if (it->second) {
        // Another name of the same object, the oldest, becomes its name.
        auto ob = byObject_.find(it->second.get());
        if (ob != byObject_.end()) {
            std::erase(ob->second, name);
            if (ob->second.empty()) byObject_.erase(ob);
        }
    }
    byName_.erase(it);
    return true;
}

// ---- decoding ----

namespace {

double parseDateText(const std::string& text) {
    std::string t = text;
    if (!t.empty() && (t[0] == 'T' || t[0] == 't')) t.erase(0, 1);
    auto serial = rt::parseIso(t);
    if (!serial) malformed("\"" + text + "\" is not a date (YYYY-MM-DD, YYYY-MM-DDTHH:MM:SS or THH:MM:SS)");
    return *serial;
}

std::string dateText(double serial) {
    std::string s = rt::isoText(serial);
    if (auto sp = s.find(' '); sp != std::string::npos) s[sp] = 'T';
    return s;
}

Variant decodeAt(const Json& j, ObjectNames& names, int depth);

std::shared_ptr<StandInControl> decodeControl(const Json& given, ObjectNames& names, int depth) {
    if (!given.is_object()) malformed("\"control\" takes an object of properties");
    ControlKind kind = ControlKind::Other;
    if (auto k = given.find("kind"); k != given.end()) {
        if (!k->is_string()) malformed("a control's \"kind\" is a text");
        auto parsed = controlKindFromName(k->get<std::string>());
        if (!parsed)
            malformed("unknown control kind \"" + k->get<std::string>() +
                      "\" (CheckBox, TextBox, ComboBox, ListBox, DataCombo, Other)");
        kind = *parsed;
    }
    auto ctl = std::make_shared<StandInControl>(kind);
    std::optional<std::vector<std::string>> rows;
    for (auto it = given.begin(); it != given.end(); ++it) {
        const std::string& key = it.key();
        if (key == "kind") continue;
        if (key == "Default") {
            if (!it->is_string()) malformed("a control's \"Default\" names a property");
            ctl->setDefaultProperty(it->get<std::string>());
        } else if (key == "List") {
            if (!it->is_array()) malformed("a control's \"List\" is a list of texts");
            rows.emplace();
            for (const auto& row : *it) {
                if (!row.is_string()) malformed("a control's \"List\" is a list of texts");
                rows->push_back(row.get<std::string>());
            }
        } else {
            ctl->define(key, decodeAt(*it, names, depth + 1));
        }
    }
    if (rows) ctl->setList(std::move(*rows));
    return ctl;
}

std::shared_ptr<StandInColumns> decodeColumns(const Json& given) {
    if (!given.is_array()) malformed("\"columns\" takes a list of columns");
    auto cols = std::make_shared<StandInColumns>();
    for (const auto& c : given) {
        if (!c.is_object()) malformed("a grid column is an object");
        ColumnData d;
        for (auto it = c.begin(); it != c.end(); ++it) {
            const std::string& key = it.key();
            if (key == "Caption" && it->is_string()) d.caption = it->get<std::string>();
            else if (key == "DataField" && it->is_string()) d.dataField = it->get<std::string>();
            else if (key == "Visible" && it->is_boolean()) d.visible = it->get<bool>();
            else if (key == "Alignment" && it->is_number_integer()) d.alignment = it->get<int32_t>();
            else
                malformed("a grid column has Caption (text), Visible (true/false), Alignment (whole number) "
                          "and DataField (text); found \"" + key + "\"");
        }
        cols->add(std::move(d));
    }
    return cols;
}

// The keys of an object, for a message: the first few only, so that a huge value
// does not make a huge answer.
std::string keysOf(const Json& j) {
    std::string out;
    int shown = 0;
    for (auto it = j.begin(); it != j.end(); ++it) {
        if (shown == 5) return out + ", ...";
        out += (shown++ ? ", \"" : "\"") + it.key() + "\"";
    }
    return out;
}

Variant decodeAt(const Json& j, ObjectNames& names, int depth) {
    // Each level of a value is a level of this recursion: a limit keeps a hostile
    // line from exhausting the stack.
    if (depth >= kMaxValueDepth)
        malformed("a value nests deeper than " + std::to_string(kMaxValueDepth) + " levels");
    switch (j.type()) {
        case Json::value_t::null: return Variant::null();
        case Json::value_t::boolean: return Variant(j.get<bool>());
        case Json::value_t::number_integer: return Variant::lng(j.get<int64_t>());
        case Json::value_t::number_unsigned: {
            const uint64_t u = j.get<uint64_t>();
            if (u > static_cast<uint64_t>(INT32_MAX)) raise(err::Overflow, err::SrcHost);
            return Variant(static_cast<int32_t>(u));
        }
        case Json::value_t::number_float: return Variant(j.get<double>());
        case Json::value_t::string: return Variant(j.get<std::string>());
        case Json::value_t::object: break;
        default: malformed("a value is a JSON scalar or one of the tagged objects, not " + std::string(j.type_name()));
    }
    if (j.size() != 1)
        malformed("a tagged value has exactly one key; found " + std::to_string(j.size()) +
                  (j.empty() ? std::string() : ": " + keysOf(j)));
    const auto first = j.begin();
    const std::string& key = first.key();
    const Json& val = first.value();
    if (key == "empty") return Variant();
    if (key == "nothing") return Variant::nothing();
    if (key == "missing") return Variant::missing();
    if (key == "int16") {
        if (!val.is_number_integer()) malformed("\"int16\" takes a whole number");
        return Variant::integer(static_cast<long>(val.get<int64_t>()));
    }
    if (key == "double") {
        if (!val.is_number()) malformed("\"double\" takes a number");
        return Variant(val.get<double>());
    }
    if (key == "date") {
        if (!val.is_string()) malformed("\"date\" takes a text");
        return Variant::date(parseDateText(val.get<std::string>()));
    }
    if (key == "ref") {
        if (!val.is_string()) malformed("\"ref\" takes an object's name");
        ObjectPtr o = names.find(val.get<std::string>());
        if (!o) raise(err::ObjectRequired, err::SrcHost, "Object required: no object is named \"" + val.get<std::string>() + "\"");
        return Variant(o);
    }
    if (key == "control") return Variant(decodeControl(val, names, depth));
    if (key == "columns") return Variant(decodeColumns(val));
    if (key == "collection") {
        if (!val.is_array()) malformed("\"collection\" takes a list of values");
        auto c = std::make_shared<Collection>();
        for (const auto& item : val) c->Add(decodeAt(item, names, depth + 1));
        return Variant(c);
    }
    malformed("unknown tagged value \"" + key + "\"");
}

}  // namespace

Variant decodeValue(const Json& j, ObjectNames& names) { return decodeAt(j, names, 0); }

// ---- encoding ----

namespace {

Json encodeAt(const Variant& v, ObjectNames& names, int depth);

Json encodeObject(const ObjectPtr& o, ObjectNames& names, int depth) {
    if (auto ctl = std::dynamic_pointer_cast<StandInControl>(o)) {
        Json props = Json::object();
        props["kind"] = controlKindName(ctl->kind());
        for (const auto& [name, value] : ctl->properties()) props[name] = encodeAt(value, names, depth + 1);
        if (ctl->list()) props["List"] = *ctl->list();
        if (ctl->explicitDefault()) props["Default"] = *ctl->explicitDefault();
        return Json{{"control", props}};
    }
    if (auto cols = std::dynamic_pointer_cast<GridColumns>(o)) {
        Json list = Json::array();
        for (int32_t i = 0; i < cols->Count(); ++i) {
            auto c = cols->Item(i);
            list.push_back(Json{{"Caption", c->Caption()},
                                {"Visible", c->Visible()},
                                {"Alignment", c->Alignment()},
                                {"DataField", c->DataField()}});
        }
        return Json{{"columns", list}};
    }
    Json out = Json::object();
    out["ref"] = names.nameOf(o);
    if (auto coll = std::dynamic_pointer_cast<Collection>(o)) {
        Json items = Json::array();
        // A collection holding itself (or nesting too deep) shows its items as refs only.
        if (depth < 8)
            for (const auto& item : coll->values()) items.push_back(encodeAt(item, names, depth + 1));
        else
            for (const auto& item : coll->values())
                items.push_back(item.isObject() && !item.isNothing() ? Json{{"ref", names.nameOf(item.asObject())}}
                                                                     : encodeAt(item, names, depth + 1));
        out["collection"] = items;
    }
    return out;
}

Json encodeAt(const Variant& v, ObjectNames& names, int depth) {
    switch (v.type()) {
        case VarType::Empty: return Json{{"empty", true}};
        case VarType::Null: return nullptr;
        case VarType::Missing: return Json{{"missing", true}};
        case VarType::Boolean: return v.asBool();
        case VarType::Integer: return v.asInteger();
        case VarType::Long: return v.asLong();
        case VarType::Double: {
            const double d = v.asDouble();
            if (!std::isfinite(d)) return nullptr;
            return d;
        }
        case VarType::Date: return Json{{"date", dateText(v.asDate().serial)}};
        case VarType::String: return v.asString();
        case VarType::Object:
            if (v.isNothing()) return Json{{"nothing", true}};
            return encodeObject(v.asObject(), names, depth);
    }
    return nullptr;
}

}  // namespace

Json encodeValue(const Variant& v, ObjectNames& names) { return encodeAt(v, names, 0); }

}  // namespace hist::host
