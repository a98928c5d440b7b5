#include "host/cli.hpp"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>

#include "frame/services/config.hpp"
#include "frame/services/rights.hpp"
#include "host/admin.hpp"
#include "host/demo.hpp"
#include "host/maintenance.hpp"
#include "host/options.hpp"
#include "host/registration.hpp"
#include "host/session.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "sample/sample.hpp"

namespace hist::host {

namespace {

// A whole number written in decimal digits only (no sign, no base prefix), within
// [lo, hi]. Read here rather than by the parser's own conversion, which takes "-1"
// as a huge unsigned value and saturates an overflow instead of refusing it.
std::optional<uint64_t> readWhole(const std::string& s, uint64_t lo, uint64_t hi) {
    uint64_t v = 0;
    const char* end = s.data() + s.size();
    if (s.empty() || s.front() < '0' || s.front() > '9') return std::nullopt;
    auto [p, ec] = std::from_chars(s.data(), end, v);
    if (ec != std::errc() || p != end || v < lo || v > hi) return std::nullopt;
    return v;
}

CLI::Validator wholeNumber(uint64_t lo, uint64_t hi) {
    return CLI::Validator(
        [lo, hi](std::string& s) -> std::string {
            if (readWhole(s, lo, hi)) return {};
            return "takes a whole number from " + std::to_string(lo) + " to " + std::to_string(hi) + " (found \"" +
                   s + "\")";
        },
        std::to_string(lo) + ".." + std::to_string(hi));
}

CLI::Validator notEmpty() {
    return CLI::Validator([](std::string& s) -> std::string { return s.empty() ? "must not be empty" : ""; }, "");
}

CLI::Validator regionalName() {
    return CLI::Validator(
        [](std::string& s) -> std::string {
            try {
                Regional::byName(s);
                return {};
            } catch (const Error&) {
                return "takes es-ES or en-US (found \"" + s + "\")";
            }
        },
        "");
}

CLI::Validator isoDateTime() {
    return CLI::Validator(
        [](std::string& s) -> std::string {
            return rt::parseIso(s) ? "" : "takes a date and time as 2026-11-22T10:30:00 (found \"" + s + "\")";
        },
        "");
}

// Texts of the parsed command line before they become each command's options.
struct Parsed {
    bool trace = false, version = false;
    HostOptions host;
    std::optional<std::string> initDb, initConfig;
    sample::InitOptions init;
    std::string orders = "2000", seed = "1";
    DemoOptions demo;
    ClassesOptions classes;
    ListOptions list;
    AuditOptions audit;
    ArchiveOptions check;
    EurosOptions euros;
    MoveOptions move;
    CopyOptions copy;
    bool back = false;
    services::RightsOptions rights;
};

// `--name VALUE` into an optional text.
CLI::Option* text(CLI::App* app, const std::string& name, std::optional<std::string>& into, const std::string& help) {
    return app->add_option_function<std::string>(name, [&into](const std::string& v) { into = v; }, help);
}

void addSampleSize(CLI::App* app, Parsed& p) {
    app->add_option("--orders", p.orders, "work orders of the sample (default 2000; about 4.5 lines each)")
        ->type_name("N")
        ->check(wholeNumber(1, sample::kMaxOrders));
    app->add_option("--seed", p.seed, "seed of the sample (default 1); the same seed gives the same archive")
        ->type_name("S")
        ->check(wholeNumber(0, std::numeric_limits<uint64_t>::max()).description(""));
}

// The one parser of every command. Options bind into `p`; each command's work takes
// the struct its options became.
void define(CLI::App& app, Parsed& p) {
    app.add_flag("--trace", p.trace, "print every statement on standard error, as composed and as sent");
    app.add_flag("--version", p.version, "print the version and exit");
    app.require_subcommand(0, 1);

    CLI::App* host = app.add_subcommand("host", "drive the library over the JSON host protocol on stdin/stdout");
    text(host, "--db", p.host.db, "the archive file (default: the configuration's archive)")->type_name("PATH");
    text(host, "--config", p.host.config, "the configuration file")->type_name("FILE");
    text(host, "--locale", p.host.locale, "regional settings")->type_name("es-ES|en-US")->check(regionalName());
    text(host, "--now", p.host.now, "fix the clock")->type_name("2026-11-22T10:30:00")->check(isoDateTime());
    text(host, "--user", p.host.user, "the current user")->type_name("NAME");
    text(host, "--app-path", p.host.appPath, "the application's folder")->type_name("DIR");
    text(host, "--work-dir", p.host.workDir, "the working folder")->type_name("DIR");
    text(host, "--settings-dir", p.host.settingsDir, "the settings folder")->type_name("DIR");

    CLI::App* init = app.add_subcommand("init", "create an archive with every table of the catalog");
    text(init, "--db", p.initDb, "the archive file (default: the configuration's archive)")
        ->type_name("PATH")
        ->check(notEmpty());
    text(init, "--config", p.initConfig, "the configuration file that names the default archive")
        ->type_name("FILE");
    init->add_flag("--force", p.init.force, "replace an archive that already holds rows");
    init->add_flag("--sample", p.init.sample, "fill it with a sample history of the laboratory");
    addSampleSize(init, p);

    CLI::App* rights = app.add_subcommand("rights", "refuse, allow or list the rights of users");
    text(rights, "--config", p.rights.config, "the configuration file (application identity)")->type_name("FILE");
    text(rights, "--settings-dir", p.rights.settingsDir, "the settings folder")->type_name("DIR");
    rights->require_subcommand(1);
    using Verb = services::RightsOptions::Verb;
    const std::pair<Verb, const char*> verbs[] = {{Verb::Deny, "deny"}, {Verb::Allow, "allow"}};
    for (const auto& [verb, name] : verbs) {
        CLI::App* v = rights->add_subcommand(name, std::string(name) + " a right: USER GROUP ACTION");
        v->callback([&p, verb = verb] { p.rights.verb = verb; });
        v->add_option("USER", p.rights.user, "the user")->required()->check(notEmpty());
        v->add_option("GROUP", p.rights.group, "a permission group, as the classes name it (Facturas)")
            ->required()
            ->check(notEmpty())
            ->check(CLI::Validator(
                [](std::string& s) -> std::string {
                    return s.find('\\') == std::string::npos ? "" : "is one name, without backslashes";
                },
                ""));
        v->add_option("ACTION", p.rights.action, "the action (Borrar, Imprimir, ...)")->required()->check(notEmpty());
        v->fallthrough();
    }
    CLI::App* list = rights->add_subcommand("list", "list the refused rights, of every user or of one");
    list->callback([&p] { p.rights.verb = Verb::List; });
    list->add_option("USER", p.rights.user, "only this user");
    list->fallthrough();

    CLI::App* demo = app.add_subcommand("demo", "the main job: show and list the default archive");
    text(demo, "--db", p.demo.db, "the archive file (default: the configuration's archive)")->type_name("PATH");
    text(demo, "--config", p.demo.config, "the configuration file")->type_name("FILE");
    addSampleSize(demo, p);
    demo->footer("An archive that is missing or holds no rows is first filled with the sample (--orders, --seed).");

    CLI::App* classes = app.add_subcommand("classes", "the classes with their tables, keywords and members");
    classes->add_option_function<std::string>(
        "CLASS", [&p](const std::string& v) { p.classes.className = v; }, "one class in detail, with its members");

    CLI::App* listCmd = app.add_subcommand("list", "write a class's rows under a keyword, filter and order");
    listCmd->add_option("CLASS", p.list.className, "the record class, e.g. ClsOrdenesComentarios")->required();
    text(listCmd, "--db", p.list.archive.db, "the archive file (default: the configuration's archive)")
        ->type_name("PATH");
    text(listCmd, "--config", p.list.archive.config, "the configuration file")->type_name("FILE");
    listCmd->add_option("--keyword", p.list.keyword, "the IniciaRs keyword (default \"todos\")")->type_name("K");
    text(listCmd, "--id", p.list.id, "the id the keyword takes")->type_name("N");
    text(listCmd, "--date", p.list.date, "the date the keyword takes")->type_name("DATE");
    text(listCmd, "--filter", p.list.filter, "criteria applied with AplyFilter")->type_name("CRITERIA");
    text(listCmd, "--sort", p.list.sort, "the order of the rows")->type_name("\"FIELD [DESC]\"");
    listCmd->add_option("--format", p.list.format, "table (default), csv, json, html (ToHtmlGrid) or txt (ToTxt)")
        ->type_name("F")
        ->check(CLI::IsMember({"table", "csv", "json", "html", "txt"}));
    text(listCmd, "--out", p.list.out, "write to this file instead of standard output")->type_name("FILE");

    CLI::App* audit = app.add_subcommand("audit", "read the audit log of the archive's writes");
    text(audit, "--config", p.audit.archive.config, "the configuration file (its auditLog)")->type_name("FILE");
    text(audit, "--log", p.audit.log, "the audit log to read instead of the configuration's")->type_name("FILE");
    text(audit, "--since", p.audit.since, "only entries at or after this date (and time)")->type_name("DATE");
    text(audit, "--class", p.audit.className, "only the writes of this class")->type_name("CLASS");
    audit->add_flag("--json", p.audit.json, "the entries as stored, one JSON object per line");

    CLI::App* check = app.add_subcommand("check", "check the archive: the engine's check and every link between documents");
    text(check, "--db", p.check.db, "the archive file (default: the configuration's archive)")->type_name("PATH");
    text(check, "--config", p.check.config, "the configuration file")->type_name("FILE");
    check->footer("Exit status 1 when anything is broken; each broken link is named.");

    CLI::App* euros = app.add_subcommand("euros", "convert the archive's money to euros, once, in one transaction");
    text(euros, "--db", p.euros.archive.db, "the archive file (default: the configuration's archive)")
        ->type_name("PATH");
    text(euros, "--config", p.euros.archive.config, "the configuration file")->type_name("FILE");
    euros->add_flag("--dry-run", p.euros.dryRun, "say what would change and change nothing");

    CLI::App* move = app.add_subcommand("move", "move a closing run's snapshots between the archive levels");
    move->add_option("CLOSING", p.move.closing, "the closing run")->required()->check(wholeNumber(0, 2147483647));
    auto* to = move->add_flag("--to-history", p.move.toHistory, "to the second level (HH tables)");
    auto* back = move->add_flag("--back", p.back, "back from the second level");
    to->excludes(back);
    text(move, "--db", p.move.archive.db, "the archive file (default: the configuration's archive)")
        ->type_name("PATH");
    text(move, "--config", p.move.archive.config, "the configuration file")->type_name("FILE");
    move->add_flag("--dry-run", p.move.dryRun, "say what would move and move nothing");

    CLI::App* copy = app.add_subcommand("copy", "copy a whole archive to another file or server, in one transaction");
    copy->add_option("--from", p.copy.from, "the archive to copy: a file or postgresql://user@host:port/name")
        ->type_name("SOURCE")
        ->required()
        ->check(notEmpty());
    copy->add_option("--to", p.copy.to, "where to: a file or postgresql://user@host:port/name")
        ->type_name("TARGET")
        ->required()
        ->check(notEmpty());
    copy->add_flag("--force", p.copy.force, "replace the rows the target holds");

    for (CLI::App* sub : {host, init, rights, demo, classes, listCmd, audit, check, euros, move, copy})
        sub->fallthrough();
    // Set last, so the commands (which copy their parent's settings when made) do not
    // repeat it: a command's help tells only its own options.
    app.footer(
        "--trace may stand before or after the command.\n"
        "Exit status: 0 done (and --help, --version), 1 the work failed, 2 a usage error.");
}

int runHost(const HostOptions& o, std::istream& in, std::ostream& out, std::ostream& err) {
    Session session;
    try {
        applyHostOptions(o);
        registerAllClasses();
        if (o.trace) session.statements().setTrace(&err);
    } catch (const Error& e) {
        err << "historicos host: " << e.description() << "\n";
        return 1;
    }
    session.run(in, out);
    return 0;
}

// init works on the archive the configuration names unless --db says otherwise.
int runInit(Parsed& p, std::ostream& out, std::ostream& err) {
    try {
        services::Config cfg = services::Config::load(p.initConfig);
        services::Config::Overrides ov;
        ov.db = p.initDb;
        cfg.apply(ov);
        p.init.db = cfg.archivePath();
        if (!p.initDb) {
            std::error_code ec;
            std::filesystem::create_directories(std::filesystem::path(p.init.db).parent_path(), ec);
        }
    } catch (const Error& e) {
        err << "historicos init: " << e.description() << "\n";
        return 1;
    }
    return sample::initCommand(p.init, out, err);
}

}  // namespace

int runCli(int argc, char** argv, const std::string& version, std::istream& in, std::ostream& out,
           std::ostream& err) {
    CLI::App app("historicos: the archive business layer of a dental laboratory", "historicos");
    Parsed p;
    define(app, p);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        out << app.help();
        return 0;
    } catch (const CLI::CallForAllHelp&) {
        out << app.help("", CLI::AppFormatMode::All);
        return 0;
    } catch (const CLI::ParseError& e) {
        std::string command = "historicos";
        for (const CLI::App* sub = &app; !sub->get_subcommands().empty();) {
            sub = sub->get_subcommands().front();
            command += " " + sub->get_name();
        }
        err << command << ": " << e.what() << "\n" << "Run '" << command << " --help' for the options.\n";
        return 2;
    }
    if (p.version) {
        out << "historicos " << version << "\n";
        return 0;
    }
    if (app.get_subcommands().empty()) {
        err << app.help();
        return 2;
    }
    const std::string cmd = app.get_subcommands().front()->get_name();
    const auto whole = [](const std::string& s) {
        return *readWhole(s, 0, std::numeric_limits<uint64_t>::max());  // checked by the parser
    };
    if (cmd == "host") {
        p.host.trace = p.trace;
        return runHost(p.host, in, out, err);
    }
    if (cmd == "init") {
        p.init.generation.orders = static_cast<std::size_t>(whole(p.orders));
        p.init.generation.seed = whole(p.seed);
        return runInit(p, out, err);
    }
    if (cmd == "rights") return services::rightsCommand(p.rights, out, err);
    if (cmd == "classes") return classesCommand(p.classes, out, err);
    if (cmd == "list") return listCommand(p.list, p.trace, out, err);
    if (cmd == "audit") return auditCommand(p.audit, out, err);
    if (cmd == "check") return checkCommand(p.check, p.trace, out, err);
    if (cmd == "euros") return eurosCommand(p.euros, p.trace, out, err);
    if (cmd == "copy") return copyCommand(p.copy, out, err);
    if (cmd == "move") {
        if (!p.move.toHistory && !p.back) {
            err << "historicos move: one of --to-history or --back is required\n"
                << "Run 'historicos move --help' for the options.\n";
            return 2;
        }
        return moveCommand(p.move, p.trace, out, err);
    }
    p.demo.orders = static_cast<std::size_t>(whole(p.orders));
    p.demo.seed = whole(p.seed);
    return demoCommand(p.demo, p.trace, out, err);
}

}  // namespace hist::host
