#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/services/config.hpp"
#include "frame/services_testutil.hpp"
#include "platform/error.hpp"

namespace hist::services {
namespace {

using ::testing::HasSubstr;
using test::envOf;
using test::raised;
using testing::Scratch;
using test::writeFile;

// The identity, masks, timeout and date switch by default are checked where they are
// used: the rights and settings keys, the number helpers and the data service.
TEST(ServicesConfig, DefaultFoldersComeFromHomeOrXdg) {
    Config c = Config::defaults(envOf({{"HOME", "/home/ana"}}));
    const std::string data = "/home/ana/.local/share/historicos";
    EXPECT_EQ((std::vector<std::string>{c.appPath(), c.archivePath(), c.resolvedWorkDir(), c.resolvedReportDir(),
                                        c.resolvedDocumentDir(), c.resolvedSettingsDir(), c.regional}),
              (std::vector<std::string>{data, data + "/archivo.db", data, data + "/informes", data + "/documentos",
                                        "/home/ana/.config", "es-ES"}));
    // Both selectors the classes use reach the archive; no other is configured.
    for (int iBase : {1, 4}) {
        backend::DataSource ds = c.dataSource(iBase);
        EXPECT_EQ(ds.kind, "sqlite");
        EXPECT_EQ(ds.path, c.archivePath());
    }
    EXPECT_FALSE(c.hasDataSource(2));

    c = Config::defaults(envOf({{"HOME", "/home/ana"}, {"XDG_DATA_HOME", "/data"}, {"XDG_CONFIG_HOME", "/conf"}}));
    EXPECT_EQ(c.archivePath(), "/data/historicos/archivo.db");
    EXPECT_EQ(c.resolvedSettingsDir(), "/conf");
}

TEST(ServicesConfig, LocationPrecedence) {
    auto env = envOf({{"HOME", "/h"}, {"HISTORICOS_CONFIG", "/env/c.json"}, {"XDG_CONFIG_HOME", "/x"}});
    Config::Location explicitLoc = Config::locate(std::string("/cli/c.json"), env);
    EXPECT_EQ(explicitLoc.file, "/cli/c.json");
    EXPECT_TRUE(explicitLoc.required);
    Config::Location envLoc = Config::locate(std::nullopt, env);
    EXPECT_EQ(envLoc.file, "/env/c.json");
    EXPECT_TRUE(envLoc.required);
    Config::Location xdg = Config::locate(std::nullopt, envOf({{"HOME", "/h"}, {"XDG_CONFIG_HOME", "/x"}}));
    EXPECT_EQ(xdg.file, "/x/historicos/config.json");
    EXPECT_FALSE(xdg.required);
    Config::Location home = Config::locate(std::nullopt, envOf({{"HOME", "/h"}}));
    EXPECT_EQ(home.file, "/h/.config/historicos/config.json");
}

TEST(ServicesConfig, AbsentDefaultFileGivesDefaults) {
    Scratch dir;
    Config c = Config::load(std::nullopt, envOf({{"HOME", dir.str()}}));
    EXPECT_TRUE(c.sourceFile.empty());
    EXPECT_EQ(c.archivePath(), dir.str() + "/.local/share/historicos/archivo.db");
}

TEST(ServicesConfig, ReadsEveryItem) {
    Scratch dir;
    writeFile(dir / "conf/historicos/config.json", R"({
        "application": {"CompanyName": "Dental Sur", "ProductName": "Gestion", "Major": 3, "Minor": 12,
                        "Path": "app"},
        "archive": "~/datos/arch.db",
        "dataSources": {"1": {"path": "/srv/otro.db", "busyTimeout": 500}, "7": {"kind": "sqlite"}},
        "busyTimeout": 4000,
        "statementTimeout": 250,
        "regional": "en-us",
        "formatoMoneda": "#,##0.000",
        "formatoDivisa": "0.00",
        "workDir": "/w",
        "reportDir": "/r",
        "documentDir": "/d",
        "settingsDir": "/s",
        "bFechaServidor": false
    })");
    Config c = Config::load(std::nullopt, envOf({{"HOME", dir.str()}, {"XDG_CONFIG_HOME", (dir / "conf").string()}}));
    // A relative path is read from the file's folder; "~/" is the home folder.
    EXPECT_EQ((std::vector<std::string>{c.sourceFile, c.app.companyName, c.app.productName, c.appPath(),
                                        c.archivePath(), c.regional, c.formatoMoneda, c.formatoDivisa,
                                        c.resolvedWorkDir(), c.resolvedReportDir(), c.resolvedDocumentDir(),
                                        c.resolvedSettingsDir()}),
              (std::vector<std::string>{(dir / "conf/historicos/config.json").string(), "Dental Sur", "Gestion",
                                        (dir / "conf/historicos/app").string(), dir.str() + "/datos/arch.db", "en-US",
                                        "#,##0.000", "0.00", "/w", "/r", "/d", "/s"}));
    EXPECT_EQ(c.app.major, 3);
    EXPECT_EQ(c.app.minor, 12);
    EXPECT_FALSE(c.fechaServidor);
    EXPECT_EQ(c.dataSource(1).path, "/srv/otro.db");
    EXPECT_EQ(c.dataSource(1).busyTimeoutMs, 500);
    EXPECT_EQ(c.dataSource(4).path, c.archivePath());  // untouched default
    EXPECT_EQ(c.dataSource(4).busyTimeoutMs, 4000);
    EXPECT_EQ(c.dataSource(1).statementTimeoutMs, 250);
    EXPECT_EQ(c.dataSource(7).path, c.archivePath());
}

TEST(ServicesConfig, HostOptionsOverrideTheFile) {
    Config c = Config::fromJson(R"({"archive": "/a.db", "dataSources": {"1": {"path": "/own.db"}},
                                    "workDir": "/w", "application": {"Path": "/app"}})",
                                "/etc/c.json", envOf({{"HOME", "/h"}}));
    Config::Overrides o;
    o.db = "/cli.db";
    o.locale = "en-US";
    o.appPath = "/cliapp";
    o.workDir = "/cliwork";
    o.settingsDir = "/clisettings";
    c.apply(o);
    // A source with a file of its own keeps it; derived folders follow the application.
    EXPECT_EQ((std::vector<std::string>{c.archivePath(), c.dataSource(4).path, c.dataSource(1).path, c.regional,
                                        c.appPath(), c.resolvedReportDir(), c.resolvedWorkDir(),
                                        c.resolvedSettingsDir()}),
              (std::vector<std::string>{"/cli.db", "/cli.db", "/own.db", "en-US", "/cliapp", "/cliapp/informes",
                                        "/cliwork", "/clisettings"}));

    Config::Overrides unset;
    Config before = c;
    c.apply(unset);
    EXPECT_EQ(c.archivePath(), before.archivePath());

    Config::Overrides badLocale;
    badLocale.locale = "fr-FR";
    const std::string why = raised([&] { c.apply(badLocale); }).description();
    EXPECT_THAT(why, HasSubstr("--locale"));
    EXPECT_THAT(why, HasSubstr("fr-FR"));
}

// A server address is an archive as written, never a path under the file's folder.
TEST(ServicesConfig, AServerArchiveIsTakenAsWritten) {
    Config c = Config::fromJson(R"({"archive": "postgresql://lab@servidor:5432/archivo",
                                    "dataSources": {"1": {"kind": "postgresql", "path": "postgres://otro/x"},
                                                    "2": {"path": "rel.db"}}})",
                                "/etc/c.json", envOf({{"HOME", "/h"}}));
    EXPECT_EQ((std::vector<std::string>{c.dataSource(4).path, c.dataSource(1).path, c.dataSource(1).kind,
                                        c.dataSource(2).path}),
              (std::vector<std::string>{"postgresql://lab@servidor:5432/archivo", "postgres://otro/x", "postgresql",
                                        "/etc/rel.db"}));
}

TEST(ServicesConfig, BadInputNamesFileKeyAndExpectation) {
    struct Case {
        const char* json;
        std::vector<const char*> says;
    };
    const Case cases[] = {
        {R"({"busyTimeout": "2000"})", {"/etc/historicos.json", "\"busyTimeout\"", "whole number", "found a text"}},
        {R"({"busyTimeout": -1})", {"\"busyTimeout\"", "from 0 to 600000", "-1"}},
        {R"({"statementTimeout": 3600001})", {"\"statementTimeout\"", "from 0 to 3600000"}},
        {R"({"bFechaServidor": 1})", {"\"bFechaServidor\"", "true or false"}},
        {R"({"regional": "fr-FR"})", {"\"regional\"", "\"es-ES\" or \"en-US\"", "fr-FR"}},
        {R"({"formatoMoneda": ""})", {"\"formatoMoneda\"", "not empty"}},
        {R"({"archive": 5})", {"\"archive\"", "a text"}},
        {R"({"colour": "red"})", {"unknown key \"colour\"", "known keys:", "archive"}},
        {R"({"application": {"Major": 70000}})", {"\"application.Major\"", "from 0 to 32767"}},
        {R"({"application": {"Minor": 1.5}})", {"\"application.Minor\"", "a number with decimals"}},
        {R"({"application": {"Company": "x"}})", {"unknown key \"application.Company\"", "CompanyName"}},
        {R"({"application": "x"})", {"\"application\"", "an object"}},
        {R"({"dataSources": {"uno": {}}})", {"\"dataSources.uno\"", "iBase number"}},
        {R"({"dataSources": {"4": "x.db"}})", {"\"dataSources.4\"", "an object"}},
        {R"({"dataSources": {"4": {"kind": "oracle"}}})", {"\"dataSources.4.kind\"", "\"sqlite\"", "oracle"}},
        {R"({"dataSources": {"4": {"file": "x"}}})", {"unknown key \"dataSources.4.file\"", "path"}},
        {R"([1, 2])", {"/etc/historicos.json", "JSON object", "a list"}},
        {"{\n  \"archive\": \"a.db\",\n  oops\n}", {"/etc/historicos.json", "not valid JSON", "line 3"}},
        {"", {"not valid JSON"}},
        {R"({"busyTimeout": 1e309})", {"/etc/historicos.json", "not valid JSON", "too large"}},
    };
    for (const Case& c : cases) {
        Error e = raised([&] { Config::fromJson(c.json, "/etc/historicos.json", envOf({{"HOME", "/h"}})); });
        EXPECT_EQ(e.number(), err::InvalidCall);
        EXPECT_EQ(e.source(), SrcConfig);
        EXPECT_EQ(e.description().find('\n'), std::string::npos) << "one line";
        for (const char* s : c.says) EXPECT_THAT(e.description(), HasSubstr(s)) << "input: " << c.json;
    }
}

TEST(ServicesConfig, FileProblemsSayWhatToFix) {
    Scratch dir;
    auto env = envOf({{"HOME", dir.str()}, {"HISTORICOS_CONFIG", (dir / "env.json").string()}});
    auto message = [&](const std::optional<std::string>& file) {
        return raised([&] { Config::load(file, env); }).description();
    };
    auto in = [&](const char* name) { return (dir / name).string(); };
    std::filesystem::create_directories(dir / "folder.json");
    writeFile(dir / "bad.json", "{\"busyTimeout\": true}");
    const std::pair<std::optional<std::string>, std::vector<std::string>> cases[] = {
        {in("nope.json"), {in("nope.json"), "not found", "--config"}},
        {std::nullopt, {in("env.json"), "HISTORICOS_CONFIG"}},
        {in("folder.json"), {"is a folder"}},
        {in("bad.json"), {in("bad.json"), "\"busyTimeout\""}},
    };
    for (const auto& [file, says] : cases) {
        const std::string why = message(file);
        for (const std::string& s : says) EXPECT_THAT(why, HasSubstr(s)) << file.value_or("(from the environment)");
    }
    if (::geteuid() != 0) {  // permissions do not stop the superuser
        writeFile(dir / "locked.json", "{}");
        ::chmod((dir / "locked.json").c_str(), 0);
        EXPECT_THAT(message((dir / "locked.json").string()), HasSubstr("cannot be read"));
    }

    writeFile(dir / "good.json", "{\"busyTimeout\": 10}");
    EXPECT_EQ(Config::load((dir / "good.json").string(), env).busyTimeoutMs, 10);
}

TEST(ServicesConfig, InstalledConfigurationIsShared) {
    Configuration::reset();
    EXPECT_FALSE(Configuration::installed());
    EXPECT_EQ(Configuration::current()->busyTimeoutMs, 2000);
    Config c = Config::defaults(envOf({{"HOME", "/h"}}));
    c.busyTimeoutMs = 77;
    Configuration::install(c);
    EXPECT_TRUE(Configuration::installed());
    EXPECT_EQ(Configuration::current()->busyTimeoutMs, 77);
    Configuration::reset();
    EXPECT_EQ(Configuration::current()->busyTimeoutMs, 2000);
}

}  // namespace
}  // namespace hist::services
