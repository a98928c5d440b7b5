#include "host/options.hpp"

#include <filesystem>

#include "backends/engine.hpp"
#include "frame/services/config.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"

namespace hist::host {

namespace {
[[noreturn]] void bad(const std::string& what) { raise(err::InvalidCall, err::SrcHost, what); }

// The host starts on a new user's empty data folder, and `--db` may name a file to be
// made, so a missing or empty archive file is created with the catalog's tables. Any
// other file must already be an archive: one that is not is refused here, naming it,
// before the first request, and is left unchanged.
void openHostArchive(const std::string& path, const services::Config& cfg) {
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    backend::DataSource ds;
    ds.path = path;
    ds.busyTimeoutMs = cfg.busyTimeoutMs;
    ds.statementTimeoutMs = cfg.statementTimeoutMs;
    backend::createArchive(ds);
}
}  // namespace

void applyHostOptions(const HostOptions& o) {
    // The configuration, with the options over it.
    services::Config cfg = services::Config::load(o.config);
    services::Config::Overrides ov;
    ov.db = o.db;
    ov.locale = o.locale;
    ov.appPath = o.appPath;
    ov.workDir = o.workDir;
    ov.settingsDir = o.settingsDir;
    cfg.apply(ov);

    Regional::setCurrent(Regional::byName(cfg.regional));

    if (o.now) {
        auto serial = rt::parseIso(*o.now);
        if (!serial) bad("--now takes a date and time as 2026-11-22T10:30:00 (found \"" + *o.now + "\")");
        Clock::set(*serial);
    }
    if (o.user) CurrentUser::set(*o.user);

    auto app = std::make_shared<DefaultApplication>();
    app->setCompanyName(cfg.app.companyName);
    app->setProductName(cfg.app.productName);
    app->setMajor(cfg.app.major);
    app->setMinor(cfg.app.minor);
    app->setPath(cfg.appPath());
    setApplication(app);

    HostEnvironment& env = hostEnvironment();
    env.dbPath = cfg.archivePath();
    env.configFile = cfg.sourceFile;
    env.workDir = cfg.resolvedWorkDir();
    env.settingsDir = cfg.resolvedSettingsDir();
    env.trace = o.trace;

    for (const std::string& dir : {app->Path(), env.workDir}) {
        std::error_code ec;
        std::filesystem::create_directories(dir, ec);
        if (ec) bad("cannot create the folder " + dir + ": " + ec.message());
    }

    openHostArchive(env.dbPath, cfg);

    services::Configuration::install(std::move(cfg));
}

}  // namespace hist::host
