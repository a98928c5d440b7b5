#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/services/config.hpp"
#include "frame/services/rights.hpp"
#include "frame/services/settings.hpp"
#include "frame/services/store_file.hpp"
#include "frame/services_testutil.hpp"
#include "platform/clock.hpp"
#include "platform/error.hpp"

namespace hist::services {
namespace {

using ::testing::HasSubstr;
using test::readFile;
using testing::Scratch;
using test::writeFile;

const std::string kTodos =
    "SOFTWARE\\Laboratorio\\Historicos\\1.0\\Configuracion\\registros\\HOrdenes_Fases\\todos\\";
const std::string kTodosUpper =
    "SOFTWARE\\Laboratorio\\Historicos\\1.0\\Configuracion\\registros\\HOrdenes_Fases\\Todos\\";

void put(const std::filesystem::path& file, const std::string& key, const std::string& name, std::string value) {
    ClsClaveRegistro r(file);
    r.AbrirClave(key);
    Variant n(name);
    r.EscribirValor(n, value);
}

// A store file of its own in a scratch folder.
class ServicesSettings : public ::testing::Test {
protected:
    Scratch dir;
    std::filesystem::path file = dir / "registro.json";
};

// Runs f in a child process; endedWell waits for it and says whether f ran through.
pid_t inChild(const std::function<void()>& f) {
    pid_t child = ::fork();
    if (child == 0) {
        try {
            f();
        } catch (...) {
            ::_exit(3);
        }
        ::_exit(0);
    }
    return child;
}
bool endedWell(pid_t child) {
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string get(const std::filesystem::path& file, const std::string& key, const std::string& name,
                const std::string& def = "<none>") {
    ClsClaveRegistro r(file);
    r.AbrirClave(key);
    return r.LeerValor(Variant(name), def);
}

TEST_F(ServicesSettings, KeyPathsAndNamesIgnoreCase) {
    put(file, kTodos, "Criteria", "Cerrada = 'Abierta'");
    struct Case {
        std::string key, name;
    };
    const Case same[] = {
        {kTodosUpper, "Criteria"},
        {kTodos, "CRITERIA"},
        {kTodosUpper.substr(0, kTodosUpper.size() - 1), "criteria"},  // the trailing backslash
        {"software\\laboratorio\\historicos\\1.0\\configuracion\\registros\\hordenes_fases\\TODOS", "Criteria"},
    };
    for (const Case& c : same) EXPECT_EQ(get(file, c.key, c.name), "Cerrada = 'Abierta'") << c.key << " " << c.name;
    // A later write through another spelling replaces the value: one key, one name.
    put(file, kTodosUpper, "criteria", "Serie = 'B'");
    EXPECT_EQ(get(file, kTodos, "Criteria"), "Serie = 'B'");
    // Case folding covers more than ASCII.
    put(file, "Año\\Ñandú", "Válvula", "1");
    EXPECT_EQ(get(file, "AÑO\\ñANDÚ", "VÁLVULA"), "1");
    // Backslashes are part of the name: these are other keys.
    EXPECT_EQ(get(file, "SOFTWARE\\\\Laboratorio", "Criteria"), "<none>");
    // The spelling first written is the one kept in the file.
    EXPECT_THAT(readFile(file), HasSubstr("\\\\todos\\\\"));
    EXPECT_THAT(readFile(file), ::testing::Not(HasSubstr("\\\\Todos\\\\")));
}

TEST_F(ServicesSettings, ValuesAreTextAndNamesAreConverted) {
    EXPECT_EQ(get(file, kTodos, "Criteria", "x"), "x");  // nothing stored yet
    ClsClaveRegistro r(file);
    r.AbrirClave(kTodos);
    Variant idx(int16_t{3});
    std::string v = "3";
    r.EscribirValor(idx, v);  // a numeric name is its text
    EXPECT_EQ(r.LeerValor(Variant("3"), ""), "3");
    std::string empty;
    Variant mode("Mode");
    r.EscribirValor(mode, empty);  // an empty value exists: it is not the default
    EXPECT_EQ(r.LeerValor(Variant("Mode"), "def"), "");
    EXPECT_EQ(r.LeerValor(Variant("Criteria"), "x"), "x");       // another name of the same key
    EXPECT_EQ(get(file, kTodos + "otra\\", "Mode", "y"), "y");  // another key
    EXPECT_EQ(test::raised([&] { r.LeerValor(Variant::null(), ""); }).number(), err::InvalidUseOfNull);
}

TEST_F(ServicesSettings, ConcurrentProcessesLoseNothing) {
    file = dir / "sub" / "registro.json";  // the folder is made on first write
    put(file, kTodos, "Criteria", "a");
    constexpr int kProcs = 4, kEach = 15;
    std::vector<pid_t> kids;
    for (int p = 0; p < kProcs; ++p) {
        kids.push_back(inChild([&] {
            for (int i = 0; i < kEach; ++i)
                put(file, "K", "p" + std::to_string(p) + "_" + std::to_string(i), std::to_string(i));
        }));
    }
    for (pid_t k : kids) EXPECT_TRUE(endedWell(k));
    EXPECT_EQ(get(file, kTodos, "Criteria"), "a");
    for (int p = 0; p < kProcs; ++p)
        for (int i = 0; i < kEach; ++i)
            EXPECT_EQ(get(file, "k", "P" + std::to_string(p) + "_" + std::to_string(i)), std::to_string(i));
}

TEST_F(ServicesSettings, OpeningAnExistingKeyWritesNothing) {
    auto inode = [&] {
        struct stat st {};
        EXPECT_EQ(::stat(file.c_str(), &st), 0);
        return st.st_ino;
    };
    put(file, kTodos, "Criteria", "a");
    const auto before = inode();
    ClsClaveRegistro r(file);
    r.AbrirClave(kTodosUpper);
    EXPECT_EQ(inode(), before);       // a write replaces the file, and with it the inode
    r.AbrirClave("Nueva\\Clave\\");  // a new key is created at once
    EXPECT_NE(inode(), before);
    EXPECT_THAT(readFile(file), HasSubstr("Nueva"));
}

TEST_F(ServicesSettings, LeftoverTemporaryCopiesAreHarmlessAndClearedByTheNextWrite) {
    put(file, kTodos, "Criteria", "a");
    // What writers killed between writing their copy and renaming it leave behind.
    const char* leftovers[] = {"registro.json.tmp.99999.0", "registro.json.tmp.4242.17"};
    for (const char* name : leftovers) writeFile(dir / name, "{\"version\": 1, \"keys\": {\"X\": {\"Crit");
    writeFile(dir / "derechos.json.tmp.99999.0", "another store's copy");
    EXPECT_EQ(get(file, kTodos, "Criteria"), "a");
    put(file, kTodos, "Mode", "m");
    EXPECT_EQ(get(file, kTodos, "Criteria"), "a");
    EXPECT_EQ(get(file, kTodos, "Mode"), "m");
    for (const char* name : leftovers) EXPECT_FALSE(std::filesystem::exists(dir / name)) << name;
    EXPECT_TRUE(std::filesystem::exists(dir / "derechos.json.tmp.99999.0"));  // left to its own store
    EXPECT_TRUE(std::filesystem::exists(file));
}

// Another process holds a store's lock until `release` is closed (3 s at most).
pid_t holdLock(const std::filesystem::path& store, const char* what, int& release) {
    int ready[2], hold[2];
    if (::pipe(ready) != 0 || ::pipe(hold) != 0) return -1;
    pid_t child = inChild([&] {
        ::close(hold[1]);  // so that the parent's close is seen
        StoreLock lock(store, what);
        char c = 1;
        if (::write(ready[1], &c, 1) != 1) ::_exit(4);
        pollfd p{hold[0], POLLIN, 0};
        ::poll(&p, 1, 3000);
    });
    ::close(ready[1]);
    ::close(hold[0]);
    char c = 0;
    if (::read(ready[0], &c, 1) != 1) ADD_FAILURE() << "the holder did not take the lock";
    ::close(ready[0]);
    release = hold[1];
    return child;
}

TEST_F(ServicesSettings, AWriterKeptWaitingTooLongFailsNamingTheStore) {
    RightsStore rights(dir.str());
    put(file, kTodos, "Criteria", "a");
    struct Case {
        std::filesystem::path store;
        const char* what;
        std::function<void()> write;
    };
    const Case cases[] = {
        {file, kSettingsWhat, [&] { put(file, kTodos, "Criteria", "b"); }},
        {rights.fileOf("ana"), "rights store", [&] { rights.deny("ana", "Facturas", "Borrar"); }},
    };
    const auto saved = StoreLock::waitLimit();
    StoreLock::setWaitLimit(std::chrono::milliseconds(50));
    for (const Case& c : cases) {
        int release = -1;
        pid_t holder = holdLock(c.store, c.what, release);
        Error e = test::raised(c.write);
        EXPECT_EQ(e.number(), err::InvalidCall);
        EXPECT_THAT(e.description(), HasSubstr(std::string(c.what) + " " + c.store.string() + ": is busy"));
        ::close(release);
        EXPECT_TRUE(endedWell(holder));
        c.write();  // once the holder is gone the write goes through
    }
    StoreLock::setWaitLimit(saved);
    EXPECT_EQ(get(file, kTodos, "Criteria"), "b");
    EXPECT_TRUE(rights.refused("ana", "facturas", "borrar"));
}

TEST_F(ServicesSettings, DamagedStoreIsReportedAndNeverOverwritten) {
    put(file, kTodos, "Criteria", "a");
    put(file, kTodos, "Mode", "b");
    std::string whole = readFile(file);
    const std::string damages[] = {
        whole.substr(0, whole.size() / 2),           // truncated
        "",                                          // emptied
        "[1, 2]",                                    // not an object
        "{\"keys\": {}}",                            // no version
        "{\"version\": 9, \"keys\": {}}",            // a version unknown
        "{\"version\": 1, \"keys\": {\"K\": {\"n\": 5}}}",  // a value not a text
        "{\"version\": 1, \"keys\": {\"K\": {\"n\": -2e308}}}",  // a number beyond a double
    };
    for (const std::string& damaged : damages) {
        writeFile(file, damaged);
        auto expectReported = [&](const std::function<void()>& f) {
            Error e = test::raised(f);
            EXPECT_EQ(e.source(), SrcSettings) << damaged;
            EXPECT_THAT(e.description(), HasSubstr(file.string()));
            EXPECT_THAT(e.description(), HasSubstr("damaged"));
        };
        expectReported([&] { get(file, kTodos, "Criteria"); });
        expectReported([&] { put(file, kTodos, "Criteria", "c"); });
        expectReported([&] { put(file, "Otra", "Criteria", "c"); });
        EXPECT_EQ(readFile(file), damaged) << "the damaged store was changed";
    }
}

// A write the disk refuses (here a file size limit of the store's present size, in a
// child process) fails naming the store, and the store keeps what it held.
TEST_F(ServicesSettings, AWriteThatFailsNamesTheStoreAndKeepsTheOldOne) {
    put(file, kTodos, "Criteria", "a");
    const std::string before = readFile(file);
    int out[2];
    ASSERT_EQ(::pipe(out), 0);
    pid_t child = inChild([&] {
        ::close(out[0]);
        ::signal(SIGXFSZ, SIG_IGN);
        const rlim_t size = static_cast<rlim_t>(before.size());
        const rlimit limit{size, size};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(5);
        const Error e = test::raised([&] { put(file, kTodos, "Criteria", std::string(4096, 'b')); });
        const std::string why = e.source() + ": " + e.description();
        if (::write(out[1], why.data(), why.size()) < 0) ::_exit(4);
    });
    ::close(out[1]);
    std::string why;
    char buf[512];
    for (ssize_t n; (n = ::read(out[0], buf, sizeof buf)) > 0;) why.append(buf, static_cast<size_t>(n));
    ::close(out[0]);
    EXPECT_TRUE(endedWell(child));
    EXPECT_THAT(why, HasSubstr(std::string(SrcSettings) + ": " + kSettingsWhat + " " + file.string() +
                               ": cannot be written ("));
    EXPECT_EQ(readFile(file), before);
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp."), std::string::npos) << entry.path();
}

TEST_F(ServicesSettings, DefaultStoreIsTheCurrentUsersUnderTheSettingsFolder) {
    Config c = Config::defaults(test::envOf({{"HOME", dir.str()}}));
    c.settingsDir = dir.str();
    Configuration::install(c);
    CurrentUser::set("Ana María");
    ClsClaveRegistro r;
    EXPECT_EQ(r.storeFile(), dir / "historicos/usuarios/ana%20mar%C3%ADa/registro.json");
    CurrentUser::set("ANA MARÍA");  // the same user: names ignore case
    EXPECT_EQ(ClsClaveRegistro().storeFile(), r.storeFile());
    CurrentUser::set("../../etc");
    // A name with separators stays one folder under the users' folder.
    auto odd = ClsClaveRegistro().storeFile();
    EXPECT_EQ(odd.parent_path().parent_path(), dir / "historicos/usuarios");
    EXPECT_EQ(odd.parent_path().filename().string().find('/'), std::string::npos);
    EXPECT_NE(odd.parent_path().filename(), "..");
    CurrentUser::set(std::nullopt);
    Configuration::reset();
}

}  // namespace
}  // namespace hist::services
