#include "frame/services/config.hpp"

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>

#include <nlohmann/json.hpp>

#include "platform/error.hpp"
#include "platform/regional.hpp"

namespace hist::services {

namespace fs = std::filesystem;
using nlohmann::json;

EnvLookup processEnv() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* v = std::getenv(name.c_str());
        if (v == nullptr || *v == '\0') return std::nullopt;
        return std::string(v);
    };
}

namespace {

[[noreturn]] void fail(const std::string& what) { throw Error(err::InvalidCall, SrcConfig, what); }

std::string homeDir(const EnvLookup& env) {
    if (auto h = env("HOME")) return *h;
    return "/";
}

std::string join(const std::string& a, const std::string& b) { return (fs::path(a) / b).string(); }

const char* kindOf(const json& v) {
    switch (v.type()) {
        case json::value_t::null: return "null";
        case json::value_t::boolean: return "true or false";
        case json::value_t::number_integer:
        case json::value_t::number_unsigned: return "a whole number";
        case json::value_t::number_float: return "a number with decimals";
        case json::value_t::string: return "a text";
        case json::value_t::array: return "a list";
        case json::value_t::object: return "an object";
        default: return "something else";
    }
}

// Reads one file's JSON into a Config, naming the file and the key in every failure.
class Reader {
public:
    Reader(std::string origin, fs::path baseDir, const EnvLookup& env)
        : origin_(std::move(origin)), baseDir_(std::move(baseDir)), home_(homeDir(env)) {}

    [[noreturn]] void bad(const std::string& key, const std::string& expected, const json& got) const {
        fail(origin_ + ": key \"" + key + "\" must be " + expected + " (found " + kindOf(got) + ")");
    }
    [[noreturn]] void unknown(const std::string& key, const std::string& known) const {
        fail(origin_ + ": unknown key \"" + key + "\" (known keys: " + known + ")");
    }

    std::string text(const std::string& key, const json& v) const {
        if (!v.is_string()) bad(key, "a text", v);
        return v.get<std::string>();
    }
    std::string nonEmptyText(const std::string& key, const json& v) const {
        std::string s = text(key, v);
        if (s.empty()) fail(origin_ + ": key \"" + key + "\" must be a text that is not empty");
        return s;
    }
    // A path: "~/" is the home folder; a relative path is taken from the file's folder.
    std::string path(const std::string& key, const json& v) const {
        std::string s = nonEmptyText(key, v);
        if (s == "~" || s.rfind("~/", 0) == 0) s = home_ + s.substr(1);
        fs::path p(s);
        if (p.is_relative()) p = baseDir_ / p;
        return p.lexically_normal().string();
    }
    // An archive: a file path, or a server address (postgresql://...) taken as written.
    std::string archive(const std::string& key, const json& v) const {
        backend::DataSource ds;
        ds.path = nonEmptyText(key, v);
        return backend::isServerSource(ds) ? ds.path : path(key, v);
    }
    long long whole(const std::string& key, const json& v, long long lo, long long hi,
                    const std::string& expected) const {
        if (!v.is_number_integer() && !v.is_number_unsigned()) bad(key, expected, v);
        if (v.is_number_unsigned() && v.get<unsigned long long>() > static_cast<unsigned long long>(hi))
            fail(origin_ + ": key \"" + key + "\" must be " + expected + " (found " + v.dump() + ")");
        long long n = v.get<long long>();
        if (n < lo || n > hi)
            fail(origin_ + ": key \"" + key + "\" must be " + expected + " (found " + v.dump() + ")");
        return n;
    }
    bool boolean(const std::string& key, const json& v) const {
        if (!v.is_boolean()) bad(key, "true or false", v);
        return v.get<bool>();
    }

    void read(const json& root, Config& c) const {
        if (!root.is_object()) fail(origin_ + ": the configuration must be a JSON object ({ ... }), found " +
                                    kindOf(root));
        static const char* known =
            "application, archive, dataSources, busyTimeout, statementTimeout, regional, formatoMoneda, formatoDivisa, "
            "workDir, reportDir, documentDir, settingsDir, bFechaServidor, auditLog";
        for (const auto& [key, v] : root.items()) {
            if (key == "application") readApp(v, c.app);
            else if (key == "archive") c.archive = archive(key, v);
            else if (key == "dataSources") readSources(v, c);
            else if (key == "busyTimeout")
                c.busyTimeoutMs = static_cast<int>(whole(key, v, 0, 600000, "a whole number of milliseconds from 0 to 600000"));
            else if (key == "statementTimeout")
                c.statementTimeoutMs = static_cast<int>(
                    whole(key, v, 0, 3600000, "a whole number of milliseconds from 0 to 3600000"));
            else if (key == "regional") c.regional = regional(key, v);
            else if (key == "formatoMoneda") c.formatoMoneda = nonEmptyText(key, v);
            else if (key == "formatoDivisa") c.formatoDivisa = nonEmptyText(key, v);
            else if (key == "workDir") c.workDir = path(key, v);
            else if (key == "reportDir") c.reportDir = path(key, v);
            else if (key == "documentDir") c.documentDir = path(key, v);
            else if (key == "settingsDir") c.settingsDir = path(key, v);
            else if (key == "bFechaServidor") c.fechaServidor = boolean(key, v);
            else if (key == "auditLog") c.auditLog = path(key, v);
            else unknown(key, known);
        }
    }

    std::string regional(const std::string& key, const json& v) const {
        std::string name = nonEmptyText(key, v);
        try {
            return Regional::byName(name).name;
        } catch (const Error&) {
            fail(origin_ + ": key \"" + key + "\" must be \"es-ES\" or \"en-US\" (found \"" + name + "\")");
        }
    }

    void readApp(const json& v, AppIdentity& a) const {
        if (!v.is_object()) bad("application", "an object", v);
        static const char* known = "CompanyName, ProductName, Major, Minor, Path";
        for (const auto& [k, x] : v.items()) {
            std::string key = "application." + k;
            if (k == "CompanyName") a.companyName = nonEmptyText(key, x);
            else if (k == "ProductName") a.productName = nonEmptyText(key, x);
            else if (k == "Major") a.major = static_cast<int16_t>(whole(key, x, 0, 32767, "a whole number from 0 to 32767"));
            else if (k == "Minor") a.minor = static_cast<int16_t>(whole(key, x, 0, 32767, "a whole number from 0 to 32767"));
            else if (k == "Path") a.path = path(key, x);
            else unknown(key, known);
        }
    }

    void readSources(const json& v, Config& c) const {
        if (!v.is_object()) bad("dataSources", "an object whose keys are iBase numbers", v);
        for (const auto& [k, x] : v.items()) {
            std::string key = "dataSources." + k;
            int iBase = 0;
            std::size_t used = 0;
            try {
                iBase = std::stoi(k, &used);
            } catch (const std::exception&) {
                used = 0;
            }
            if (used == 0 || used != k.size() || iBase < 0 || iBase > 32767)
                fail(origin_ + ": key \"" + key + "\" must be an iBase number from 0 to 32767");
            if (!x.is_object()) bad(key, "an object", x);
            DataSourceConfig ds;
            for (const auto& [sk, sv] : x.items()) {
                std::string skey = key + "." + sk;
                if (sk == "kind") {
                    std::string kind = nonEmptyText(skey, sv);
                    if (kind != "sqlite" && kind != "postgresql")
                        fail(origin_ + ": key \"" + skey + "\" must be \"sqlite\" or \"postgresql\" (found \"" + kind +
                             "\")");
                    ds.kind = kind;
                } else if (sk == "path") {
                    ds.path = archive(skey, sv);
                } else if (sk == "busyTimeout") {
                    ds.busyTimeoutMs = static_cast<int>(
                        whole(skey, sv, 0, 600000, "a whole number of milliseconds from 0 to 600000"));
                } else {
                    unknown(skey, "kind, path, busyTimeout");
                }
            }
            c.dataSources[iBase] = ds;
        }
    }

private:
    std::string origin_;
    fs::path baseDir_;
    std::string home_;
};

// Line and column of a byte offset, for JSON errors.
std::string placeOf(const std::string& text, std::size_t byte) {
    std::size_t line = 1, col = 1;
    for (std::size_t i = 0; i < text.size() && i + 1 < byte; ++i) {
        if (text[i] == '\n') {
            ++line;
            col = 1;
        } else {
            ++col;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(col);
}

}  // namespace

void Config::apply(const Overrides& o) {
    if (o.db) archive = *o.db;
    if (o.locale) {
        try {
            regional = Regional::byName(*o.locale).name;
        } catch (const Error&) {
            fail("--locale must be es-ES or en-US (found \"" + *o.locale + "\")");
        }
    }
    if (o.appPath) app.path = *o.appPath;
    if (o.workDir) workDir = *o.workDir;
    if (o.settingsDir) settingsDir = *o.settingsDir;
}

std::string Config::appPath() const { return app.path ? *app.path : dataHome; }
std::string Config::archivePath() const { return archive ? *archive : join(dataHome, "archivo.db"); }
std::string Config::resolvedWorkDir() const { return workDir ? *workDir : dataHome; }
std::string Config::resolvedReportDir() const { return reportDir ? *reportDir : join(appPath(), "informes"); }
std::string Config::resolvedDocumentDir() const {
    return documentDir ? *documentDir : join(appPath(), "documentos");
}
std::string Config::resolvedSettingsDir() const { return settingsDir ? *settingsDir : configHome; }

backend::DataSource Config::dataSource(int iBase) const {
    auto it = dataSources.find(iBase);
    if (it == dataSources.end())
        throw Error(err::InvalidCall, SrcConfig,
                    "No data source is configured for iBase " + std::to_string(iBase) +
                        " (add it under \"dataSources\" in the configuration)");
    backend::DataSource ds;
    ds.kind = it->second.kind;
    ds.path = it->second.path ? *it->second.path : archivePath();
    ds.busyTimeoutMs = it->second.busyTimeoutMs ? *it->second.busyTimeoutMs : busyTimeoutMs;
    ds.statementTimeoutMs = statementTimeoutMs;
    if (auditLog) ds.auditLog = *auditLog;
    return ds;
}

Config Config::defaults(const EnvLookup& env) {
    Config c;
    std::string home = homeDir(env);
    auto data = env("XDG_DATA_HOME");
    c.dataHome = join(data ? *data : join(home, ".local/share"), "historicos");
    auto conf = env("XDG_CONFIG_HOME");
    c.configHome = conf ? *conf : join(home, ".config");
    return c;
}

Config::Location Config::locate(const std::optional<std::string>& explicitFile, const EnvLookup& env) {
    if (explicitFile) return {fs::path(*explicitFile), true};
    if (auto f = env("HISTORICOS_CONFIG")) return {fs::path(*f), true};
    Config d = defaults(env);
    return {fs::path(d.configHome) / "historicos" / "config.json", false};
}

Config Config::load(const std::optional<std::string>& explicitFile, const EnvLookup& env) {
    Location loc = locate(explicitFile, env);
    std::error_code ec;
    if (!loc.required && !fs::exists(loc.file, ec)) return defaults(env);
    if (loc.required && !fs::exists(loc.file, ec)) {
        std::string by = explicitFile ? "--config" : "HISTORICOS_CONFIG";
        fail(loc.file.string() + ": configuration file not found (named by " + by +
             "); create it or name an existing file");
    }
    return fromFile(loc.file, env);
}

Config Config::fromFile(const fs::path& file, const EnvLookup& env) {
    std::error_code ec;
    if (!fs::exists(file, ec)) fail(file.string() + ": configuration file not found; create it or name an existing file");
    if (fs::is_directory(file, ec)) fail(file.string() + ": is a folder, not a configuration file; name the JSON file");
    std::ifstream in(file, std::ios::binary);
    if (!in) fail(file.string() + ": configuration file cannot be read; check its permissions");
    std::ostringstream ss;
    ss << in.rdbuf();
    if (in.bad()) fail(file.string() + ": configuration file cannot be read; check its permissions");
    Config c = fromJson(ss.str(), file.string(), env);
    c.sourceFile = file.string();
    return c;
}

Config Config::fromJson(const std::string& text, const std::string& origin, const EnvLookup& env) {
    json root;
    try {
        root = json::parse(text);
    } catch (const json::parse_error& e) {
        fail(origin + ": not valid JSON at " + placeOf(text, e.byte) + "; correct the file");
    } catch (const json::exception&) {
        // The reader's only other refusal: a number beyond the range of a double (1e309).
        fail(origin + ": not valid JSON: a number is too large to be read; correct the file");
    }
    Config c = defaults(env);
    fs::path base = fs::path(origin).parent_path();
    if (base.empty()) base = fs::current_path();
    Reader(origin, base, env).read(root, c);
    return c;
}

// ---- The configuration in force ----

namespace {
std::mutex gMutex;
std::shared_ptr<const Config> gConfig;
bool gInstalled = false;
}  // namespace

std::shared_ptr<const Config> Configuration::current() {
    std::lock_guard lock(gMutex);
    if (!gConfig) gConfig = std::make_shared<const Config>(Config::defaults());
    return gConfig;
}

void Configuration::install(Config c) {
    auto p = std::make_shared<const Config>(std::move(c));
    std::lock_guard lock(gMutex);
    gConfig = std::move(p);
    gInstalled = true;
}

bool Configuration::installed() {
    std::lock_guard lock(gMutex);
    return gInstalled;
}

void Configuration::reset() {
    std::lock_guard lock(gMutex);
    gConfig.reset();
    gInstalled = false;
}

}  // namespace hist::services
