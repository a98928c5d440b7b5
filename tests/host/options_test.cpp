// The host's options: how they are read and what they put in force.
#include "host/options.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "frame/services/config.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"
#include "platform/host_objects.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"

namespace hist {
namespace {

TEST(HostOptionsTest, ReadsBothSpellingsAndRefusesTheRest) {
    host::HostOptions o = host::parseHostOptions(
        {"--db", "/tmp/a.db", "--locale=en-US", "--now", "2026-11-22T10:30:00", "--user=ana", "--trace",
         "--app-path", "/opt/app", "--work-dir=/w", "--settings-dir", "/s", "--config", "/c.json"});
    EXPECT_EQ(o.db, "/tmp/a.db");
    EXPECT_EQ(o.locale, "en-US");
    EXPECT_EQ(o.now, "2026-11-22T10:30:00");
    EXPECT_EQ(o.user, "ana");
    EXPECT_EQ(o.appPath, "/opt/app");
    EXPECT_EQ(o.workDir, "/w");
    EXPECT_EQ(o.settingsDir, "/s");
    EXPECT_EQ(o.config, "/c.json");
    EXPECT_TRUE(o.trace);

    for (const auto& bad : std::vector<std::vector<std::string>>{{"--colour", "red"}, {"--db"}, {"db", "x"}}) {
        try {
            host::parseHostOptions(bad);
            ADD_FAILURE() << bad[0] << " was accepted";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), err::InvalidCall);
            EXPECT_NE(e.description().find(bad[0]), std::string::npos) << e.description();
        }
    }
}

TEST(HostOptionsTest, ApplyingPutsThemInForce) {
    const auto home = std::filesystem::temp_directory_path() / ("historicos-options-" + std::to_string(getpid()));
    std::filesystem::remove_all(home);
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
    unsetenv("HISTORICOS_CONFIG");

    host::HostOptions o;
    o.locale = "en-US";
    o.now = "2026-11-22T10:30:00";
    o.user = "ana";
    o.appPath = (home / "app").string();
    o.workDir = (home / "work").string();
    o.db = (home / "archivo.db").string();
    host::applyHostOptions(o);

    EXPECT_EQ(Regional::current().name, "en-US");
    EXPECT_EQ(Clock::now(), rt::dateSerial(2026, 11, 22) + rt::timeSerial(10, 30, 0));
    EXPECT_EQ(CurrentUser::name(), "ana");
    EXPECT_EQ(application().Path(), (home / "app").string());
    EXPECT_TRUE(std::filesystem::is_directory(home / "app"));
    EXPECT_TRUE(std::filesystem::is_directory(home / "work"));
    EXPECT_EQ(hostEnvironment().workDir, (home / "work").string());
    EXPECT_EQ(hostEnvironment().dbPath, (home / "archivo.db").string());
    EXPECT_EQ(services::Configuration::current()->archivePath(), (home / "archivo.db").string());
    EXPECT_TRUE(std::filesystem::exists(home / "archivo.db")) << "a missing archive is created";

    host::HostOptions badNow;
    badNow.now = "mañana";
    EXPECT_THROW(host::applyHostOptions(badNow), Error);

    Regional::setCurrent(Regional::esES());
    Clock::set(std::nullopt);
    CurrentUser::set(std::nullopt);
    setApplication(nullptr);
    services::Configuration::reset();
    std::filesystem::remove_all(home);
}

}  // namespace
}  // namespace hist
