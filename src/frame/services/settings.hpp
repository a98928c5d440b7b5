#pragma once
// ClsClaveRegistro: the per-user settings store, named text values under key
// paths. One JSON file per user, <settingsDir>/historicos/usuarios/<user>/registro.json;
// every write replaces it atomically under an exclusive lock, every read reads it
// afresh (nothing is cached between instances: a new instance serves each call).
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist::services {

struct Config;

class ClsClaveRegistro : public Object {
public:
    // The current user's store under the settings folder of the configuration in force.
    ClsClaveRegistro();
    // A store file of the caller's choosing.
    explicit ClsClaveRegistro(std::filesystem::path storeFile);

    std::string_view typeName() const override { return "ClsClaveRegistro"; }

    // The value of that name under the key opened last; sDefecto when absent.
    std::string LeerValor(const Variant& vNombre, const std::string& sDefecto);
    // Stores the value under the key opened last, creating the name.
    Variant EscribirValor(Variant& vNombre, std::string& sValor);
    // Makes sRuta the current key, creating it when missing.
    Variant AbrirClave(const std::string& sRuta);

    const std::filesystem::path& storeFile() const { return file_; }
    const std::string& currentKey() const { return key_; }

    static std::filesystem::path storeFileFor(const Config& c, const std::string& user);

private:
    std::filesystem::path file_;
    std::string key_;  // the root key until AbrirClave
};

inline constexpr const char* kSettingsWhat = "settings store";

}  // namespace hist::services
