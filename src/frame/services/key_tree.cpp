#include "frame/services/key_tree.hpp"

#include <nlohmann/json.hpp>

#include "frame/services/store_file.hpp"
#include "platform/error.hpp"

namespace hist::services {

using nlohmann::json;

namespace {
constexpr int kVersion = 1;
}

std::string KeyTree::pathKey(std::string_view path) {
    while (!path.empty() && path.back() == '\\') path.remove_suffix(1);
    return foldKey(path);
}

KeyTree KeyTree::parse(const std::string& text, const std::filesystem::path& file, std::string_view what) {
    auto damaged = [&](const std::string& why) -> Error {
        return Error(err::InvalidCall, SrcSettings,
                     std::string(what) + " " + file.string() + " is damaged (" + why +
                         "); repair it or move it away, it is left as it is");
    };
    json root;
    try {
        root = json::parse(text);
    } catch (const json::parse_error&) {
        throw damaged(text.empty() ? "the file is empty" : "it is not complete JSON");
    } catch (const json::exception&) {
        // The reader's only other refusal: a number beyond the range of a double.
        throw damaged("it holds a number too large to be read");
    }
    if (!root.is_object()) throw damaged("it is not a JSON object");
    auto version = root.find("version");
    if (version == root.end() || !version->is_number_integer()) throw damaged("no \"version\"");
    if (version->get<long long>() != kVersion)
        throw damaged("version " + version->dump() + " is not known to this program");
    auto keys = root.find("keys");
    if (keys == root.end() || !keys->is_object()) throw damaged("no \"keys\" object");
    KeyTree t;
    for (const auto& [name, v] : root.items()) {
        if (name == "version" || name == "keys") continue;
        if (!v.is_string()) throw damaged("\"" + name + "\" is not a text");
        t.attributes_[name] = v.get<std::string>();
    }
    for (const auto& [path, values] : keys->items()) {
        if (!values.is_object()) throw damaged("key \"" + path + "\" is not an object");
        t.ensureKey(path);
        for (const auto& [name, value] : values.items()) {
            if (!value.is_string()) throw damaged("value \"" + name + "\" of key \"" + path + "\" is not a text");
            t.set(path, name, value.get<std::string>());
        }
    }
    return t;
}

std::string KeyTree::serialize() const {
    json keys = json::object();
    for (const auto& [id, key] : keys_) {
        json values = json::object();
        for (const auto& [fid, v] : key.values) values[v.name] = v.value;
        keys[key.path] = std::move(values);
    }
    json root = json::object();
    for (const auto& [name, value] : attributes_) root[name] = value;
    root["version"] = kVersion;
    root["keys"] = std::move(keys);
    return root.dump(2) + "\n";
}

bool KeyTree::hasKey(std::string_view path) const { return keys_.count(pathKey(path)) != 0; }

void KeyTree::ensureKey(std::string_view path) {
    std::string id = pathKey(path);
    if (keys_.count(id) == 0) keys_[id].path = std::string(path);
}

std::optional<std::string> KeyTree::get(std::string_view path, std::string_view name) const {
    auto k = keys_.find(pathKey(path));
    if (k == keys_.end()) return std::nullopt;
    auto v = k->second.values.find(foldKey(name));
    if (v == k->second.values.end()) return std::nullopt;
    return v->second.value;
}

void KeyTree::set(std::string_view path, std::string_view name, std::string value) {
    ensureKey(path);
    Key& k = keys_[pathKey(path)];
    auto [it, added] = k.values.try_emplace(foldKey(name));
    if (added) it->second.name = std::string(name);
    it->second.value = std::move(value);
}

bool KeyTree::remove(std::string_view path, std::string_view name) {
    auto k = keys_.find(pathKey(path));
    if (k == keys_.end()) return false;
    return k->second.values.erase(foldKey(name)) != 0;
}

std::optional<std::string> KeyTree::attribute(const std::string& name) const {
    auto it = attributes_.find(name);
    if (it == attributes_.end()) return std::nullopt;
    return it->second;
}

void KeyTree::setAttribute(const std::string& name, std::string value) { attributes_[name] = std::move(value); }

std::vector<KeyTree::Entry> KeyTree::entries() const {
    std::vector<Entry> out;
    for (const auto& [id, key] : keys_)
        for (const auto& [fid, v] : key.values) out.push_back({key.path, v.name, v.value});
    return out;
}

}  // namespace hist::services
