#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/services/config.hpp"
#include "frame/services/rights.hpp"
#include "frame/services_testutil.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"

namespace hist::services {
namespace {

using ::testing::HasSubstr;
using test::raised;
using test::ScratchDir;

// Installs a configuration whose settings live in a scratch folder, and a user.
class ServicesRights : public ::testing::Test {
protected:
    void SetUp() override {
        Config c = Config::defaults(test::envOf({{"HOME", dir.str()}}));
        c.settingsDir = dir.str();
        Configuration::install(c);
        CurrentUser::set("ana");
    }
    void TearDown() override {
        CurrentUser::set(std::nullopt);
        Configuration::reset();
    }
    ScratchDir dir;
};

TEST_F(ServicesRights, KeysAreBuiltFromTheApplicationIdentity) {
    EXPECT_EQ(securityKey(AppIdentity{}), "SOFTWARE\\Laboratorio\\Historicos\\1.0\\Seguridad\\");
    const AppIdentity app{.companyName = "Dental Sur", .productName = "Gestion", .major = 3, .minor = 12, .path = {}};
    // The classes append "Seguridad\<group>\" to what GetRutaSeguridad returns, so
    // the word stands twice.
    EXPECT_EQ(groupKey(app, "Facturas"), "SOFTWARE\\Dental Sur\\Gestion\\3.12\\Seguridad\\Seguridad\\Facturas\\");
    ClsSeguridadUsuario s;
    EXPECT_EQ(s.GetRutaSeguridad("SOFTWARE\\X\\Y\\1.0\\Seguridad\\"), "SOFTWARE\\X\\Y\\1.0\\Seguridad\\");
}

TEST_F(ServicesRights, RefusalsArePerUserPathAndAction) {
    AppIdentity app;
    RightsStore store(dir.str());
    EXPECT_TRUE(store.deny("ana", groupKey(app, "Facturas"), "Borrar"));
    EXPECT_FALSE(store.deny("ANA", groupKey(app, "facturas"), "borrar"));  // already refused: one right

    ClsSeguridadUsuario s;
    struct Case {
        std::string user, group, action;
        bool refused;
    };
    const Case cases[] = {
        {"ana", "Facturas", "Borrar", true},
        {"Ana", "FACTURAS", "BORRAR", true},  // users, paths and actions ignore case
        {"ana", "Facturas", "Imprimir", false},
        {"ana", "HFacturas", "Borrar", false},
        {"luis", "Facturas", "Borrar", false},
    };
    for (const Case& c : cases) {
        CurrentUser::set(c.user);
        std::string path = groupKey(app, c.group), id = c.action;
        EXPECT_EQ(s.bRestringido(path, id), c.refused) << c.user << " " << c.group << " " << c.action;
    }
    CurrentUser::set("ana");
    EXPECT_TRUE(store.allow("ana", groupKey(app, "Facturas"), "Borrar"));
    EXPECT_FALSE(store.allow("ana", groupKey(app, "Facturas"), "Borrar"));
    std::string path = groupKey(app, "Facturas"), id = "Borrar";
    EXPECT_FALSE(s.bRestringido(path, id));
}

TEST_F(ServicesRights, ADamagedRightsStoreFailsTheCheck) {
    RightsStore store(dir.str());
    const std::string file = store.fileOf("ana").string();
    const char* damages[] = {
        "{\"version\": 1, \"keys\": {",                                       // cut short
        "{\"version\": 1, \"keys\": {\"K\": {\"Borrar\": \"denegado\", \"n\": 1e400}}}",  // beyond a double
    };
    for (const char* damaged : damages) {
        test::writeFile(file, damaged);
        ClsSeguridadUsuario s;
        std::string path = groupKey(AppIdentity{}, "Facturas"), id = "Borrar";
        // Nobody gets a permission from a damaged store.
        const std::string why = raised([&] { s.bRestringido(path, id); }).description();
        EXPECT_THAT(why, HasSubstr("rights store " + file));
        EXPECT_THAT(why, HasSubstr("damaged"));
        // Listing stops with the same message rather than skipping the file.
        std::ostringstream out, err;
        EXPECT_EQ(rightsCommand({"list"}, out, err), 1) << damaged;
        EXPECT_THAT(err.str(), HasSubstr(file));
    }
}

struct CommandRun {
    int status;
    std::string out, err;
};
CommandRun run(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    int status = rightsCommand(args, out, err);
    return {status, out.str(), err.str()};
}

TEST_F(ServicesRights, CommandDeniesListsAndAllows) {
    CommandRun r = run({"deny", "luis", "Facturas", "Borrar"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({"deny", "luis", "Facturas", "Borrar"}).out, "already refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({"deny", "ana", "Hist_Fabricacion", "Imprimir"}).status, 0);
    // What the command writes is what a record class's check finds: see the tools' permission tests.

    CommandRun all = run({"list"});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.out, "ana\tHist_Fabricacion\tImprimir\nluis\tFacturas\tBorrar\n");
    EXPECT_EQ(run({"list", "LUIS"}).out, "luis\tFacturas\tBorrar\n");

    CommandRun allowed = run({"allow", "luis", "facturas", "BORRAR"});
    EXPECT_EQ(allowed.status, 0);
    EXPECT_EQ(allowed.out, "allowed: luis facturas BORRAR\n");
    EXPECT_EQ(run({"allow", "luis", "Facturas", "Borrar"}).out, "was not refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({"list"}).out, "ana\tHist_Fabricacion\tImprimir\n");
}

TEST_F(ServicesRights, CommandOptionsChooseFolderAndIdentity) {
    ScratchDir other;
    test::writeFile(other / "c.json", R"({"application": {"CompanyName": "Sur", "Major": 2}})");
    CommandRun r = run({"--config", (other / "c.json").string(), "--settings-dir", other.str(), "deny", "ana", "Facturas",
                 "Borrar"});
    ASSERT_EQ(r.status, 0) << r.err;
    RightsStore store(other.str());
    EXPECT_TRUE(store.refused("ana", "SOFTWARE\\Sur\\Historicos\\2.0\\Seguridad\\Seguridad\\Facturas\\", "Borrar"));
    EXPECT_TRUE(RightsStore(dir.str()).list().empty());  // the installed folder is untouched
}

TEST_F(ServicesRights, CommandUsageAndFailures) {
    struct Case {
        std::vector<std::string> args;
        int status;
        const char* says;
    };
    const Case cases[] = {
        {{}, 2, "say deny, allow or list"},
        {{"grant", "a", "b", "c"}, 2, "unknown command grant"},
        {{"deny", "a", "b"}, 2, "deny takes USER GROUP ACTION"},
        {{"allow", "a", "b", "c", "d"}, 2, "allow takes USER GROUP ACTION"},
        {{"deny", "", "b", "c"}, 2, "must not be empty"},
        {{"deny", "a", "x\\y", "c"}, 2, "without backslashes"},
        {{"list", "a", "b"}, 2, "at most a USER"},
        {{"--settings-dir"}, 2, "--settings-dir needs a value"},
        {{"--verbose", "list"}, 2, "unknown option --verbose"},
        {{"--config", "/nonexistent/c.json", "list"}, 1, "configuration file not found"},
        {{"--config", (dir / "huge.json").string(), "list"}, 1, "a number is too large"},
    };
    test::writeFile(dir / "huge.json", R"({"busyTimeout": 1e309})");
    for (const Case& c : cases) {
        CommandRun r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.says;
        EXPECT_THAT(r.err, HasSubstr(c.says));
        EXPECT_TRUE(r.out.empty());
    }
    RightsStore store(dir.str());
    test::writeFile(store.fileOf("ana"), "garbage");
    CommandRun damaged = run({"deny", "ana", "Facturas", "Borrar"});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(damaged.err, HasSubstr("damaged"));
    EXPECT_EQ(test::readFile(store.fileOf("ana")), "garbage");
}

}  // namespace
}  // namespace hist::services
