#include "frame/services/rights.hpp"

#include <algorithm>
#include <system_error>

#include "frame/services/key_tree.hpp"
#include "frame/services/store_file.hpp"
#include "platform/clock.hpp"

namespace hist::services {

namespace fs = std::filesystem;

namespace {

constexpr const char* kWhat = "rights store";
constexpr const char* kRefused = "denegado";

KeyTree loadTree(const fs::path& file) {
    auto text = readStoreFile(file, kWhat);
    if (!text) return KeyTree{};
    return KeyTree::parse(*text, file, kWhat);
}

}  // namespace

fs::path RightsStore::fileOf(const std::string& user) const { return userStoreDir(dir_, user) / "derechos.json"; }

bool RightsStore::refused(const std::string& user, const std::string& path, const std::string& action) const {
    return loadTree(fileOf(user)).get(path, action).has_value();
}

bool RightsStore::deny(const std::string& user, const std::string& path, const std::string& action) {
    fs::path file = fileOf(user);
    StoreLock lock(file, kWhat);
    KeyTree t = loadTree(file);
    bool before = t.get(path, action).has_value();
    t.setAttribute("user", user);
    t.set(path, action, kRefused);
    replaceStoreFile(file, t.serialize(), kWhat);
    return !before;
}

bool RightsStore::allow(const std::string& user, const std::string& path, const std::string& action) {
    fs::path file = fileOf(user);
    StoreLock lock(file, kWhat);
    KeyTree t = loadTree(file);
    if (!t.remove(path, action)) return false;
    replaceStoreFile(file, t.serialize(), kWhat);
    return true;
}

std::vector<RightsStore::Entry> RightsStore::list() const {
    std::vector<Entry> out;
    fs::path users = fs::path(dir_) / "historicos" / "usuarios";
    std::error_code ec;
    if (!fs::is_directory(users, ec)) return out;
    std::vector<fs::path> files;
    for (const auto& d : fs::directory_iterator(users, ec))
        if (fs::exists(d.path() / "derechos.json")) files.push_back(d.path() / "derechos.json");
    std::sort(files.begin(), files.end());
    for (const fs::path& f : files) {
        KeyTree t = loadTree(f);
        std::string user = t.attribute("user").value_or(f.parent_path().filename().string());
        for (const auto& e : t.entries()) out.push_back({user, e.path, e.name});
    }
    return out;
}

std::string securityKey(const AppIdentity& app) {
    return "SOFTWARE\\" + app.companyName + "\\" + app.productName + "\\" + std::to_string(app.major) + "." +
           std::to_string(app.minor) + "\\Seguridad\\";
}

std::string groupKey(const AppIdentity& app, const std::string& group) {
    ClsSeguridadUsuario s;
    return s.GetRutaSeguridad(securityKey(app)) + "Seguridad\\" + group + "\\";
}

bool ClsSeguridadUsuario::bRestringido(std::string& sRuta, std::string& sId) {
    // Read afresh at each call: the user, the settings folder and the store may
    // all have changed since the last one.
    auto c = Configuration::current();
    return RightsStore(c->resolvedSettingsDir()).refused(CurrentUser::name(), sRuta, sId);
}

std::string ClsSeguridadUsuario::GetRutaSeguridad(const std::string& sRuta) { return sRuta; }

std::shared_ptr<ClsSeguridadUsuario> ClsSeguridadUsuario::shared() {
    thread_local std::shared_ptr<ClsSeguridadUsuario> instance = std::make_shared<ClsSeguridadUsuario>();
    return instance;
}

}  // namespace hist::services
