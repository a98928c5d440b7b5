#pragma once
// The command line of `historicos`: the commands and the global --trace flag. The
// executable's main only hands its arguments and streams over.
#include <iosfwd>
#include <string>

namespace hist::host {

int runCli(int argc, char** argv, const std::string& version, std::istream& in, std::ostream& out,
           std::ostream& err);

}  // namespace hist::host
