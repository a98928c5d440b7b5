#pragma once
// The host command's options (read by the command-line parser, host/cli.cpp) and
// what they set: regional settings, the clock,
// the current user, the application object, the configuration's overrides and the
// host environment (archive, configuration file, working folder, settings folder).
#include <optional>
#include <string>

namespace hist::host {

struct HostOptions {
    std::optional<std::string> db;           // --db PATH
    std::optional<std::string> config;       // --config FILE
    std::optional<std::string> locale;       // --locale es-ES|en-US
    std::optional<std::string> now;          // --now 2026-11-22T10:30:00
    std::optional<std::string> user;         // --user NAME
    std::optional<std::string> appPath;      // --app-path DIR
    std::optional<std::string> workDir;      // --work-dir DIR
    std::optional<std::string> settingsDir;  // --settings-dir DIR
    bool trace = false;                      // --trace (global)
};

// Puts the options in force: reads the configuration (--config, else the default
// location) with the options as overrides and installs it; sets the regional settings,
// the clock, the user and the application object; creates the application's and the
// working folders. Throws hist::Error on a bad value or configuration.
void applyHostOptions(const HostOptions& o);

}  // namespace hist::host
