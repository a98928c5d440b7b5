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
using testing::Scratch;

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
    Scratch dir;
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
        EXPECT_EQ(rightsCommand({.verb = RightsOptions::Verb::List}, out, err), 1) << damaged;
        EXPECT_THAT(err.str(), HasSubstr(file));
    }
}

struct CommandRun {
    int status;
    std::string out, err;
};
using Verb = RightsOptions::Verb;
CommandRun run(const RightsOptions& o) {
    std::ostringstream out, err;
    int status = rightsCommand(o, out, err);
    return {status, out.str(), err.str()};
}

TEST_F(ServicesRights, CommandDeniesListsAndAllows) {
    CommandRun r = run({.verb = Verb::Deny, .user = "luis", .group = "Facturas", .action = "Borrar"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({.verb = Verb::Deny, .user = "luis", .group = "Facturas", .action = "Borrar"}).out,
              "already refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({.verb = Verb::Deny, .user = "ana", .group = "Hist_Fabricacion", .action = "Imprimir"}).status, 0);
    // What the command writes is what a record class's check finds: see the tools' permission tests.

    CommandRun all = run({.verb = Verb::List});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.out, "ana\tHist_Fabricacion\tImprimir\nluis\tFacturas\tBorrar\n");
    EXPECT_EQ(run({.verb = Verb::List, .user = "LUIS"}).out, "luis\tFacturas\tBorrar\n");

    CommandRun allowed = run({.verb = Verb::Allow, .user = "luis", .group = "facturas", .action = "BORRAR"});
    EXPECT_EQ(allowed.status, 0);
    EXPECT_EQ(allowed.out, "allowed: luis facturas BORRAR\n");
    EXPECT_EQ(run({.verb = Verb::Allow, .user = "luis", .group = "Facturas", .action = "Borrar"}).out,
              "was not refused: luis Facturas Borrar\n");
    EXPECT_EQ(run({.verb = Verb::List}).out, "ana\tHist_Fabricacion\tImprimir\n");
}

TEST_F(ServicesRights, CommandOptionsChooseFolderAndIdentity) {
    Scratch other;
    test::writeFile(other / "c.json", R"({"application": {"CompanyName": "Sur", "Major": 2}})");
    CommandRun r = run({.verb = Verb::Deny,
                        .user = "ana",
                        .group = "Facturas",
                        .action = "Borrar",
                        .config = (other / "c.json").string(),
                        .settingsDir = other.str()});
    ASSERT_EQ(r.status, 0) << r.err;
    RightsStore store(other.str());
    EXPECT_TRUE(store.refused("ana", "SOFTWARE\\Sur\\Historicos\\2.0\\Seguridad\\Seguridad\\Facturas\\", "Borrar"));
    EXPECT_TRUE(RightsStore(dir.str()).list().empty());  // the installed folder is untouched
}

// The command line's usage errors are the host's tests; here what the work itself refuses.
TEST_F(ServicesRights, CommandFailures) {
    struct Case {
        RightsOptions options;
        const char* says;
    };
    const Case cases[] = {
        {{.verb = Verb::List, .config = "/nonexistent/c.json"}, "configuration file not found"},
        {{.verb = Verb::Deny, .group = "Facturas", .action = "Borrar"}, "must not be empty"},
        {{.verb = Verb::Deny, .user = "ana", .group = "x\\y", .action = "Borrar"}, "without backslashes"},
        {{.verb = Verb::List, .config = (dir / "huge.json").string()}, "a number is too large"},
    };
    test::writeFile(dir / "huge.json", R"({"busyTimeout": 1e309})");
    for (const Case& c : cases) {
        CommandRun r = run(c.options);
        EXPECT_EQ(r.status, 1) << c.says;
        EXPECT_THAT(r.err, HasSubstr(c.says));
        EXPECT_TRUE(r.out.empty());
    }
    EXPECT_TRUE(RightsStore(dir.str()).list().empty());
    RightsStore store(dir.str());
    test::writeFile(store.fileOf("ana"), "garbage");
    CommandRun damaged = run({.verb = Verb::Deny, .user = "ana", .group = "Facturas", .action = "Borrar"});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(damaged.err, HasSubstr("damaged"));
    EXPECT_EQ(test::readFile(store.fileOf("ana")), "garbage");
}

}  // namespace
}  // namespace hist::services
