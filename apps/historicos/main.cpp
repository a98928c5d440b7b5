// historicos: the command-line host of the archive business layer.
#include <cstring>
#include <iostream>
#include <string>

namespace {
void usage(std::ostream& os) {
    os << "usage: historicos [--version] [--help] <command> [options]\n"
          "commands:\n"
          "  host     drive the library over the JSON host protocol on stdin/stdout\n"
          "  demo     the main job on the embedded default archive\n";
}
}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        usage(std::cerr);
        return 2;
    }
    std::string cmd = argv[1];
    if (cmd == "--version") {
        std::cout << "historicos " << HISTORICOS_VERSION << "\n";
        return 0;
    }
    if (cmd == "--help" || cmd == "-h") {
        usage(std::cout);
        return 0;
    }
    if (cmd == "demo") {
        std::cout << "historicos " << HISTORICOS_VERSION << "\n";
        return 0;
    }
    std::cerr << "historicos: unknown command '" << cmd << "'\n";
    usage(std::cerr);
    return 2;
}
