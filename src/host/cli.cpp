#include "host/cli.hpp"

#include <algorithm>
#include <iostream>
#include <vector>

#include "frame/services/rights.hpp"
#include "host/demo.hpp"
#include "host/options.hpp"
#include "host/registration.hpp"
#include "host/session.hpp"
#include "platform/error.hpp"
#include "sample/sample.hpp"

namespace hist::host {

namespace {
void usage(std::ostream& os) {
    os << "usage: historicos [--version] [--help] [--trace] <command> [options]\n"
          "commands:\n"
          "  host     drive the library over the JSON host protocol on stdin/stdout\n"
          "           options: --db PATH --config FILE --locale es-ES|en-US\n"
          "                    --now 2026-11-22T10:30:00 --user NAME --app-path DIR\n"
          "                    --work-dir DIR --settings-dir DIR\n"
          "  init     create an archive: [--db PATH] [--force] [--sample [--orders N] [--seed S]]\n"
          "  rights   refused rights: deny|allow USER GROUP ACTION, list [USER]\n"
          "  demo     the main job on the default archive: [--db PATH] [--config FILE]\n"
          "           (creates the sample archive when missing: [--orders N] [--seed S])\n"
          "--trace shows every statement sent to the archive on standard error\n";
}

int runHost(const std::vector<std::string>& args, bool trace, std::istream& in, std::ostream& out,
            std::ostream& err) {
    Session session;
    try {
        HostOptions o = parseHostOptions(args);
        o.trace = o.trace || trace;
        applyHostOptions(o);
        registerAllClasses();
        if (o.trace) session.statements().setTrace(&err);
    } catch (const Error& e) {
        err << "historicos host: " << e.description() << "\n";
        return 2;
    }
    session.run(in, out);
    return 0;
}
}  // namespace

int runCli(int argc, char** argv, const std::string& version, std::istream& in, std::ostream& out,
           std::ostream& err) {
    std::vector<std::string> args(argv + 1, argv + argc);
    // --trace is global: it may stand before or after the command.
    const bool trace = std::find(args.begin(), args.end(), "--trace") != args.end();
    std::erase(args, "--trace");
    if (args.empty()) {
        usage(err);
        return 2;
    }
    const std::string cmd = args.front();
    args.erase(args.begin());
    if (cmd == "--version") {
        out << "historicos " << version << "\n";
        return 0;
    }
    if (cmd == "--help" || cmd == "-h") {
        usage(out);
        return 0;
    }
    if (cmd == "demo") return demoCommand(args, trace, out, err);
    if (cmd == "host") return runHost(args, trace, in, out, err);
    if (cmd == "init") return sample::initCommand(args, out, err);
    if (cmd == "rights") return services::rightsCommand(args, out, err);
    err << "historicos: unknown command '" << cmd << "'\n";
    usage(err);
    return 2;
}

}  // namespace hist::host
