#pragma once
// Runs `historicos ARGS...` in-process, with the given standard input, and keeps what
// it wrote.
#include <sstream>
#include <string>
#include <vector>

#include "host/cli.hpp"

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

}  // namespace hist::test
