#pragma once
// Runs `historicos ARGS...` in-process, with the given standard input, and keeps what
// it wrote.
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "frame/services/config.hpp"
#include "host/cli.hpp"
#include "support/scratch.hpp"

namespace hist::test {

struct CliRun {
    int code;
    std::string out, err;
};

inline CliRun runCommandLine(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), "historicos");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    std::istringstream in(input);
    std::ostringstream out, err;
    const int code = host::runCli(static_cast<int>(args.size()), argv.data(), "9.9", in, out, err);
    return {code, out.str(), err.str()};
}

// A temporary folder that is also the user's data folder, where listings are written,
// for as long as the test runs; the installed configuration is forgotten after.
struct DataHome {
    hist::testing::Scratch scratch{"historicos-data"};
    const std::filesystem::path& path = scratch.path();
    const char* saved = std::getenv("XDG_DATA_HOME");
    const std::string savedValue = saved ? saved : "";
    DataHome() { setenv("XDG_DATA_HOME", path.c_str(), 1); }
    ~DataHome() {
        services::Configuration::reset();
        if (saved) setenv("XDG_DATA_HOME", savedValue.c_str(), 1);
        else unsetenv("XDG_DATA_HOME");
    }
};

}  // namespace hist::test
