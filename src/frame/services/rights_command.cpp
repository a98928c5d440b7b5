// The command line of the rights store: `historicos rights deny|allow USER GROUP ACTION`
// and `historicos rights list [USER]`. GROUP is a permission group as the record
// classes name it (`Facturas`, `Hist_Fabricacion`, ...): the refusal is kept under
// the key the classes ask about for that group, built from the application identity
// of the configuration.
#include <ostream>

#include "frame/services/rights.hpp"
#include "frame/services/store_file.hpp"
#include "platform/error.hpp"

namespace hist::services {

namespace {

// The group of a key under the application's groups, or the whole key.
std::string shownGroup(const std::string& path, const std::string& prefix) {
    if (path.size() > prefix.size() && foldKey(path.substr(0, prefix.size())) == foldKey(prefix)) {
        std::string rest = path.substr(prefix.size());
        while (!rest.empty() && rest.back() == '\\') rest.pop_back();
        if (!rest.empty() && rest.find('\\') == std::string::npos) return rest;
    }
    return path;
}

}  // namespace

int rightsCommand(const RightsOptions& o, std::ostream& out, std::ostream& err) {
    try {
        Config c = o.config || !Configuration::installed() ? Config::load(o.config) : *Configuration::current();
        if (o.settingsDir) {
            Config::Overrides ov;
            ov.settingsDir = o.settingsDir;
            c.apply(ov);
        }
        RightsStore store(c.resolvedSettingsDir());

        if (o.verb != RightsOptions::Verb::List) {
            const std::string &user = o.user, &group = o.group, &action = o.action;
            // The command line refuses these before the work starts; a C++ caller that
            // passes them fails here rather than writing a key of several levels.
            if (user.empty() || group.empty() || action.empty() || group.find('\\') != std::string::npos)
                throw Error(err::InvalidCall, "ClsSeguridadUsuario",
                            "USER, GROUP and ACTION must not be empty, and GROUP is one name without backslashes");
            std::string key = groupKey(c.app, group);
            if (o.verb == RightsOptions::Verb::Deny) {
                bool changed = store.deny(user, key, action);
                out << (changed ? "refused: " : "already refused: ") << user << " " << group << " " << action
                    << "\n";
            } else {
                bool changed = store.allow(user, key, action);
                out << (changed ? "allowed: " : "was not refused: ") << user << " " << group << " " << action
                    << "\n";
            }
            return 0;
        }
        std::string prefix = ClsSeguridadUsuario().GetRutaSeguridad(securityKey(c.app)) + "Seguridad\\";
        std::string only = foldKey(o.user);
        for (const auto& e : store.list()) {
            if (!only.empty() && foldKey(e.user) != only) continue;
            out << e.user << "\t" << shownGroup(e.path, prefix) << "\t" << e.action << "\n";
        }
        return 0;
    } catch (const Error& e) {
        err << "historicos rights: " << e.description() << "\n";
        return 1;
    }
}

}  // namespace hist::services
