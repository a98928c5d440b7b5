#include "frame/services/settings.hpp"

#include "frame/services/config.hpp"
#include "frame/services/key_tree.hpp"
#include "frame/services/store_file.hpp"
#include "platform/clock.hpp"
#include "platform/runtime.hpp"

namespace hist::services {

namespace {

KeyTree loadTree(const std::filesystem::path& file) {
    auto text = readStoreFile(file, kSettingsWhat);
    if (!text) return KeyTree{};
    return KeyTree::parse(*text, file, kSettingsWhat);
}

}  // namespace

std::filesystem::path ClsClaveRegistro::storeFileFor(const Config& c, const std::string& user) {
    return userStoreDir(c.resolvedSettingsDir(), user) / "registro.json";
}

ClsClaveRegistro::ClsClaveRegistro()
    : file_(storeFileFor(*Configuration::current(), CurrentUser::name())) {}

ClsClaveRegistro::ClsClaveRegistro(std::filesystem::path storeFile) : file_(std::move(storeFile)) {}

std::string ClsClaveRegistro::LeerValor(const Variant& vNombre, const std::string& sDefecto) {
    std::string name = rt::CStr(vNombre);
    auto v = loadTree(file_).get(key_, name);
    return v ? *v : sDefecto;
}

Variant ClsClaveRegistro::EscribirValor(Variant& vNombre, std::string& sValor) {
    std::string name = rt::CStr(vNombre);
    StoreLock lock(file_, kSettingsWhat);
    KeyTree t = loadTree(file_);
    t.set(key_, name, sValor);
    replaceStoreFile(file_, t.serialize(), kSettingsWhat);
    return {};
}

Variant ClsClaveRegistro::AbrirClave(const std::string& sRuta) {
    // Read first: opening an existing key writes nothing.
    if (!loadTree(file_).hasKey(sRuta)) {
        StoreLock lock(file_, kSettingsWhat);
        KeyTree t = loadTree(file_);
        if (!t.hasKey(sRuta)) {
            t.ensureKey(sRuta);
            replaceStoreFile(file_, t.serialize(), kSettingsWhat);
        }
    }
    key_ = sRuta;
    return {};
}

}  // namespace hist::services
