#pragma once
// The configuration of the collaborators: one JSON file, every item with a working
// default, so that nothing needs configuring. The host's command-line options
// override the file through Config::Overrides.
//
// Location: an explicit file (the host's --config), else $HISTORICOS_CONFIG, else
// $XDG_CONFIG_HOME/historicos/config.json (else ~/.config/historicos/config.json).
// A file named explicitly or by the variable must exist; the default one may not.
//
// Bad input (a missing named file, an unreadable one, a JSON error, a value of the
// wrong kind, an unknown key) raises one hist::Error whose description names the
// file, the key and what is expected.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "backends/engine.hpp"

namespace hist::services {

// Looks up an environment variable; tests pass their own.
using EnvLookup = std::function<std::optional<std::string>(const std::string&)>;
// The process environment.
EnvLookup processEnv();

// The running application's identity, as the application object reports it.
struct AppIdentity {
    std::string companyName = "Laboratorio";
    std::string productName = "Historicos";
    int16_t major = 1;
    int16_t minor = 0;
    std::optional<std::string> path;  // unset: the user's data folder
};

// One data source: an engine kind and, when set, a file of its own.
struct DataSourceConfig {
    std::string kind = "sqlite";
    std::optional<std::string> path;           // unset: the archive
    std::optional<int> busyTimeoutMs;          // unset: the general busy timeout
};

struct Config {
    AppIdentity app;
    std::optional<std::string> archive;        // unset: <data folder>/archivo.db
    std::map<int, DataSourceConfig> dataSources{{1, {}}, {4, {}}};
    int busyTimeoutMs = 2000;
    int statementTimeoutMs = 30000;            // 0: statements run without a time limit
    std::string regional = "es-ES";
    std::string formatoMoneda = "#,##0.00";    // mask for the main currency
    std::string formatoDivisa = "#,##0.00";    // mask for the second currency
    std::optional<std::string> workDir;        // unset: the user's data folder
    std::optional<std::string> reportDir;      // unset: <Path>/informes
    std::optional<std::string> documentDir;    // unset: <Path>/documentos
    std::optional<std::string> settingsDir;    // unset: $XDG_CONFIG_HOME, else ~/.config
    bool fechaServidor = true;
    std::optional<std::string> auditLog;       // unset: writes are not audited

    // Where the defaults come from, fixed when the configuration is made.
    std::string dataHome;     // $XDG_DATA_HOME/historicos, else ~/.local/share/historicos
    std::string configHome;   // $XDG_CONFIG_HOME, else ~/.config
    std::string sourceFile;   // the file read; empty when none was

    // What the host's options change.
    struct Overrides {
        std::optional<std::string> db;           // --db: the archive
        std::optional<std::string> locale;       // --locale
        std::optional<std::string> appPath;      // --app-path
        std::optional<std::string> workDir;      // --work-dir
        std::optional<std::string> settingsDir;  // --settings-dir
    };
    // Applies the options that are set; a locale is checked as the file's is.
    void apply(const Overrides& o);

    // Resolved values.
    std::string appPath() const;
    std::string archivePath() const;
    std::string resolvedWorkDir() const;
    std::string resolvedReportDir() const;
    std::string resolvedDocumentDir() const;
    std::string resolvedSettingsDir() const;
    // The engine's data source for an iBase; error 5 for one not configured.
    backend::DataSource dataSource(int iBase) const;
    bool hasDataSource(int iBase) const { return dataSources.count(iBase) != 0; }

    // Every default, under the given environment.
    static Config defaults(const EnvLookup& env = processEnv());
    // The file that would be read, and whether it must exist.
    struct Location {
        std::filesystem::path file;
        bool required = false;
    };
    static Location locate(const std::optional<std::string>& explicitFile,
                           const EnvLookup& env = processEnv());
    // Locates and reads the configuration (defaults when the default file is absent).
    static Config load(const std::optional<std::string>& explicitFile = std::nullopt,
                       const EnvLookup& env = processEnv());
    // Reads one file, which must exist.
    static Config fromFile(const std::filesystem::path& file, const EnvLookup& env = processEnv());
    // Reads JSON text; `origin` names it in messages and anchors relative paths.
    static Config fromJson(const std::string& text, const std::string& origin,
                           const EnvLookup& env = processEnv());
};

// The configuration in force for the process. Until one is installed it is
// Config::defaults() of the process environment.
class Configuration {
public:
    static std::shared_ptr<const Config> current();
    static void install(Config c);
    static bool installed();
    // Forget the installed one (tests).
    static void reset();
};

// The error source of configuration failures.
inline constexpr const char* SrcConfig = "historicos.config";

}  // namespace hist::services
