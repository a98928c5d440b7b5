// The command line: one parser for every command. --help answers 0 on every command,
// every usage error (unknown option, missing value, a number out of range, a wrong
// operand count) answers 2 before any work with a message and a pointer to --help,
// --trace stands before or after the command, and the README shows what --help says.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli_run.hpp"
#include "frame/services/config.hpp"
#include "platform/host_objects.hpp"
#include "platform/regional.hpp"
#include "support/scratch.hpp"

namespace hist {
namespace {

using test::runCommandLine;

TEST(CommandLine, HelpAnswersEveryCommandAndUsageErrorsAreTwo) {
    struct Case {
        std::vector<std::string> args;
        int code;
        const char* says;  // on standard output for 0, on standard error otherwise
    };
    const Case cases[] = {
        {{"--help"}, 0, "Exit status: 0 done"},
        {{"--version"}, 0, "historicos 9.9"},
        {{"host", "--help"}, 0, "Usage: historicos host [OPTIONS]"},
        {{"init", "-h"}, 0, "--sample"},
        {{"rights", "--help"}, 0, "Usage: historicos rights [OPTIONS] SUBCOMMAND"},
        {{"rights", "deny", "--help"}, 0, "USER GROUP ACTION"},
        {{"demo", "--help"}, 0, "--orders N"},
        {{}, 2, "Usage: historicos"},
        {{"frobnicate"}, 2, "frobnicate"},
        {{"init", "--sample", "--orders", "99999999999"}, 2, "--orders: takes a whole number from 1 to 5000000"},
        {{"init", "--orders", "0"}, 2, "from 1 to"},
        {{"init", "--orders", "-1"}, 2, "(found \"-1\")"},
        {{"init", "--orders", "0x10"}, 2, "(found \"0x10\")"},
        {{"demo", "--orders", "x"}, 2, "(found \"x\")"},
        {{"demo", "--seed", "18446744073709551616"}, 2, "--seed"},  // 2^64
        {{"init", "--seed", "+1"}, 2, "--seed"},
        {{"init", "--db"}, 2, "--db"},
        {{"init", "--db", ""}, 2, "must not be empty"},
        {{"demo", "--frobnicate"}, 2, "--frobnicate"},
        {{"host", "--bogus"}, 2, "--bogus"},
        {{"host", "--db"}, 2, "--db"},
        {{"host", "--now", "22/11/2026"}, 2, "2026-11-22T10:30:00"},
        {{"host", "--locale=fr-FR"}, 2, "es-ES or en-US"},
        {{"rights"}, 2, "subcommand is required"},
        {{"rights", "grant", "a", "b", "c"}, 2, "subcommand is required"},
        {{"rights", "deny", "a", "b"}, 2, "ACTION is required"},
        {{"rights", "allow", "a", "b", "c", "d"}, 2, "d"},
        {{"rights", "deny", "", "b", "c"}, 2, "must not be empty"},
        {{"rights", "deny", "a", "x\\y", "c"}, 2, "without backslashes"},
        {{"rights", "list", "a", "b"}, 2, "b"},
        {{"rights", "--settings-dir"}, 2, "--settings-dir"},
    };
    for (const Case& c : cases) {
        std::string line;
        for (const auto& a : c.args) line += a + " ";
        const test::CliRun r = runCommandLine(c.args);
        EXPECT_EQ(r.code, c.code) << line << "\n" << r.err;
        EXPECT_NE((c.code == 0 ? r.out : r.err).find(c.says), std::string::npos) << line << "\n" << r.out << r.err;
        if (c.code == 0) EXPECT_EQ(r.err, "") << line;
        else EXPECT_EQ(r.out, "") << line;
        // A usage error is its message and where to look, never a C++ exception's name.
        if (c.code == 2 && !c.args.empty()) {
            EXPECT_NE(r.err.find(" --help' for the options.\n"), std::string::npos) << line << "\n" << r.err;
            EXPECT_EQ(r.err.find("std::"), std::string::npos) << line << "\n" << r.err;
        }
    }
}

TEST(CommandLine, TraceStandsBeforeOrAfterTheCommand) {
    const hist::testing::Scratch scratch("historicos-cli");
    const auto& home = scratch.path();
    const std::vector<std::string> where = {"--db",         (home / "archivo.db").string(),
                                            "--app-path",   (home / "app").string(),
                                            "--work-dir",   (home / "work").string(),
                                            "--settings-dir", (home / "settings").string()};
    const std::string request = R"({"id":1,"query":"SELECT Id FROM Recibos"})";
    for (const auto& [before, after] : {std::pair{true, false}, {false, true}, {false, false}}) {
        std::vector<std::string> args;
        if (before) args.push_back("--trace");
        args.push_back("host");
        args.insert(args.end(), where.begin(), where.end());
        if (after) args.push_back("--trace");
        const test::CliRun r = runCommandLine(args, request + "\n");
        EXPECT_EQ(r.code, 0) << r.err;
        EXPECT_NE(r.out.find("\"ok\":true"), std::string::npos) << r.out;
        EXPECT_EQ(r.err.find("SELECT Id FROM Recibos") != std::string::npos, before || after) << r.err;
    }
    Regional::setCurrent(Regional::esES());
    setApplication(nullptr);
    services::Configuration::reset();
}

// The README's command-line section is the program's own --help: the whole help of
// the program and of each command, and the usage line of each rights verb.
TEST(CommandLine, TheReadmeShowsWhatHelpSays) {
    std::ifstream file(std::string(HISTORICOS_SOURCE_DIR) + "/README.md");
    std::stringstream readme;
    readme << file.rdbuf();
    const std::string text = readme.str();
    for (const std::string command : {"", "host", "init", "rights", "demo", "classes", "list", "audit", "check", "euros", "move", "copy"}) {
        const std::string help = runCommandLine(command.empty() ? std::vector<std::string>{"--help"}
                                                                : std::vector<std::string>{command, "--help"})
                                     .out;
        ASSERT_FALSE(help.empty()) << command;
        EXPECT_NE(text.find(help), std::string::npos) << "README lacks historicos " << command << " --help:\n" << help;
    }
    for (const std::string verb : {"deny", "allow", "list"}) {
        const std::string help = runCommandLine({"rights", verb, "--help"}).out;
        const auto at = help.find("Usage: ");
        ASSERT_NE(at, std::string::npos) << help;
        const std::string usage = help.substr(at, help.find('\n', at) + 1 - at);
        EXPECT_NE(text.find(usage), std::string::npos) << "README lacks: " << usage;
    }
}

}  // namespace
}  // namespace hist
