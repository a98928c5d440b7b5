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

const char* kUsage =
    "usage: historicos rights [--config FILE] [--settings-dir DIR] deny|allow USER GROUP ACTION\n"
    "       historicos rights [--config FILE] [--settings-dir DIR] list [USER]\n";

int usage(std::ostream& err, const std::string& problem) {
    err << "historicos rights: " << problem << "\n" << kUsage;
    return 2;
}

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

int rightsCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    std::optional<std::string> configFile, settingsDir;
    size_t i = 0;
    for (; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--config" || a == "--settings-dir") {
            if (i + 1 >= args.size()) return usage(err, a + " needs a value");
            (a == "--config" ? configFile : settingsDir) = args[++i];
        } else if (a.rfind("--", 0) == 0) {
            return usage(err, "unknown option " + a);
        } else {
            break;
        }
    }
    if (i >= args.size()) return usage(err, "say deny, allow or list");
    const std::string verb = args[i];
    std::vector<std::string> rest(args.begin() + static_cast<std::ptrdiff_t>(i) + 1, args.end());

    try {
        Config c = configFile || !Configuration::installed() ? Config::load(configFile) : *Configuration::current();
        if (settingsDir) {
            Config::Overrides o;
            o.settingsDir = settingsDir;
            c.apply(o);
        }
        RightsStore store(c.resolvedSettingsDir());

        if (verb == "deny" || verb == "allow") {
            if (rest.size() != 3) return usage(err, verb + " takes USER GROUP ACTION");
            const std::string &user = rest[0], &group = rest[1], &action = rest[2];
            if (user.empty() || group.empty() || action.empty())
                return usage(err, "USER, GROUP and ACTION must not be empty");
            if (group.find('\\') != std::string::npos)
                return usage(err, "GROUP is one name, without backslashes (for example Facturas)");
            std::string key = groupKey(c.app, group);
            if (verb == "deny") {
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
        if (verb == "list") {
            if (rest.size() > 1) return usage(err, "list takes at most a USER");
            std::string prefix = ClsSeguridadUsuario().GetRutaSeguridad(securityKey(c.app)) + "Seguridad\\";
            std::string only = rest.empty() ? std::string() : foldKey(rest[0]);
            for (const auto& e : store.list()) {
                if (!only.empty() && foldKey(e.user) != only) continue;
                out << e.user << "\t" << shownGroup(e.path, prefix) << "\t" << e.action << "\n";
            }
            return 0;
        }
        return usage(err, "unknown command " + verb + " (say deny, allow or list)");
    } catch (const Error& e) {
        err << "historicos rights: " << e.description() << "\n";
        return 1;
    }
}

}  // namespace hist::services
