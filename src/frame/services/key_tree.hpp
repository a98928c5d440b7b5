#pragma once
// The contents of one per-user store file: keys by path, each with named text
// values. Key paths and value names ignore case ("todos" and "Todos" are one key);
// a path keeps its backslashes as part of its name, and trailing backslashes do
// not make another key ("A\B\" and "A\B" are one). Names keep the spelling they
// were first written with.
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hist::services {

class KeyTree {
public:
    // Reads a store file's text; a damaged one raises hist::Error naming the file.
    static KeyTree parse(const std::string& text, const std::filesystem::path& file, std::string_view what);
    // The text of the store file.
    std::string serialize() const;

    bool hasKey(std::string_view path) const;
    void ensureKey(std::string_view path);
    std::optional<std::string> get(std::string_view path, std::string_view name) const;
    void set(std::string_view path, std::string_view name, std::string value);
    // Removes a value; true when it was there. A key left empty stays.
    bool remove(std::string_view path, std::string_view name);

    // Extra top-level text items of the file (the rights store keeps its user's name).
    std::optional<std::string> attribute(const std::string& name) const;
    void setAttribute(const std::string& name, std::string value);

    struct Entry {
        std::string path, name, value;
    };
    // Every value, keys and names in folded order.
    std::vector<Entry> entries() const;

    // The identity of a key path: folded, trailing backslashes dropped.
    static std::string pathKey(std::string_view path);

private:
    struct Value {
        std::string name, value;
    };
    struct Key {
        std::string path;
        std::map<std::string, Value> values;  // by folded name
    };
    std::map<std::string, Key> keys_;  // by pathKey
    std::map<std::string, std::string> attributes_;
};

}  // namespace hist::services
