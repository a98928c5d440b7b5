// historicos: the command-line host of the archive business layer. The commands
// live in the library (host/cli.hpp), so they can be tested in-process too.
#include <iostream>

#include "host/cli.hpp"

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return hist::host::runCli(argc, argv, HISTORICOS_VERSION, std::cin, std::cout, std::cerr);
}
