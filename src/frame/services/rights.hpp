#pragma once
// ClsSeguridadUsuario: the rights refused to users. A refusal is an action's name
// under a key path, per user, kept in <settingsDir>/historicos/usuarios/<user>/derechos.json
// with the settings store's durability; paths and names ignore case. What is not
// refused is allowed.
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/services/config.hpp"
#include "platform/object.hpp"

namespace hist::services {

// The rights store under one settings folder: every user's refusals.
class RightsStore {
public:
    explicit RightsStore(std::string settingsDir) : dir_(std::move(settingsDir)) {}

    bool refused(const std::string& user, const std::string& path, const std::string& action) const;
    // Refuses; true when it was not refused before.
    bool deny(const std::string& user, const std::string& path, const std::string& action);
    // Lifts a refusal; true when there was one.
    bool allow(const std::string& user, const std::string& path, const std::string& action);

    struct Entry {
        std::string user, path, action;
    };
    // Every refusal of every user, by user, path and action.
    std::vector<Entry> list() const;

    std::filesystem::path fileOf(const std::string& user) const;

private:
    std::string dir_;
};

// "SOFTWARE\<CompanyName>\<ProductName>\<Major>.<Minor>\Seguridad\": the application's
// security key, as the record classes compose it.
std::string securityKey(const AppIdentity& app);
// The key of a permission group as the record classes reach it:
// GetRutaSeguridad(securityKey) + "Seguridad\" + group + "\".
std::string groupKey(const AppIdentity& app, const std::string& group);

class ClsSeguridadUsuario : public Object {
public:
    std::string_view typeName() const override { return "ClsSeguridadUsuario"; }

    // True when the current user is refused sId under sRuta.
    bool bRestringido(std::string& sRuta, std::string& sId);
    // The path under which the current user's rights lie. The rights are kept per
    // user apart from the path, so the application's security key is that path.
    std::string GetRutaSeguridad(const std::string& sRuta);

    // The one instance of this thread, made on first use.
    static std::shared_ptr<ClsSeguridadUsuario> shared();
};

// `historicos rights deny|allow USER GROUP ACTION` and `historicos rights list [USER]`,
// as the command line gave them.
struct RightsOptions {
    enum class Verb { Deny, Allow, List } verb = Verb::List;
    std::string user{};    // List: empty for every user
    std::string group{};   // a permission group as the classes name it (one name)
    std::string action{};
    std::optional<std::string> config{};       // --config FILE: the application identity
    std::optional<std::string> settingsDir{};  // --settings-dir DIR
};

// Returns the exit status: 0 done, 1 failure.
int rightsCommand(const RightsOptions& o, std::ostream& out, std::ostream& err);

}  // namespace hist::services
