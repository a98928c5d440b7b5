#pragma once
// A throwaway PostgreSQL cluster for the tests of the server engine: made with
// initdb in a scratch folder on first use, listening only on a Unix socket in that
// folder (so parallel test programs never meet), and stopped and removed when the
// test program ends. Each test takes a fresh database of its own (UTF-8 character
// type, citext installed) by `newDatabase()`.
//
// The server runs as the `postgres` user when the tests run as root (the server
// refuses root), else as the tests' own user. The binaries are looked for in
// $HISTORICOS_PG_BIN, then /usr/lib/postgresql/<version>/bin; when they are missing
// `start()` throws, naming what to install: `make test` installs them, so a missing
// server is a failure, never a silent skip.
#include <libpq-fe.h>
#include <pwd.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/scratch.hpp"

namespace hist::testing {

class PgCluster {
public:
    // The program's cluster, started on first use. Throws std::runtime_error with
    // the reason when it cannot start.
    static PgCluster& shared() {
        static PgCluster cluster;
        if (!cluster.error_.empty()) throw std::runtime_error(cluster.error_);
        return cluster;
    }

    // A new empty database with a UTF-8 character type and citext; returns its address.
    std::string newDatabase(const std::string& ctype = "C.UTF-8") {
        static std::atomic<unsigned> counter{0};
        std::string name = "hist_" + std::to_string(counter++);
        admin("CREATE DATABASE " + name + " TEMPLATE template0 ENCODING 'UTF8' LC_COLLATE 'C' LC_CTYPE '" + ctype + "'");
        if (ctype.find("UTF") != std::string::npos) {
            PGconn* c = PQconnectdb(conninfo(name).c_str());
            PGresult* r = PQexec(c, "CREATE EXTENSION citext");
            const bool ok = PQresultStatus(r) == PGRES_COMMAND_OK;
            PQclear(r);
            PQfinish(c);
            if (!ok) throw std::runtime_error("cannot install citext in the test cluster");
        }
        return url(name);
    }

    // The postgresql:// address of a database of this cluster.
    std::string url(const std::string& db) const {
        std::string host;
        for (char c : socketDir_) host += c == '/' ? std::string("%2F") : std::string(1, c);
        return "postgresql://postgres@" + host + ":" + std::to_string(kPort) + "/" + db;
    }

    // Runs one statement on the maintenance database; throws on failure.
    void admin(const std::string& sql) { run(conninfo("postgres"), sql); }

    // Runs statements as the cluster's superuser on a database (its address or
    // connection string), behind the library's back; returns the first value read.
    static std::string run(const std::string& address, const std::string& sql) {
        PGconn* c = PQconnectdb(address.c_str());
        PGresult* r = PQexec(c, sql.c_str());
        std::string err = PQresultStatus(r) == PGRES_COMMAND_OK || PQresultStatus(r) == PGRES_TUPLES_OK
                              ? std::string()
                              : std::string(PQerrorMessage(c));
        std::string first = PQresultStatus(r) == PGRES_TUPLES_OK && PQntuples(r) > 0 && PQnfields(r) > 0
                                ? std::string(PQgetvalue(r, 0, 0))
                                : std::string();
        PQclear(r);
        PQfinish(c);
        if (!err.empty()) throw std::runtime_error(sql + ": " + err);
        return first;
    }

    PgCluster(const PgCluster&) = delete;
    PgCluster& operator=(const PgCluster&) = delete;
    ~PgCluster() {
        if (started_) shell(asServer(bin_ + "/pg_ctl -D " + data_ + " -s -m immediate -w stop") + " >/dev/null 2>&1");
    }

private:
    static constexpr int kPort = 5432;  // any number: the socket lives in our own folder

    PgCluster() {
        bin_ = findBinaries();
        if (bin_.empty()) {
            error_ =
                "The PostgreSQL server binaries (initdb, pg_ctl) are missing: install the Debian packages "
                "'postgresql' and 'libpq-dev' (scripts/install-deps does), or set HISTORICOS_PG_BIN to their folder.";
            return;
        }
        socketDir_ = dir_.str();
        data_ = socketDir_ + "/data";
        if (::geteuid() == 0) {
            const passwd* pw = ::getpwnam("postgres");
            if (!pw) {
                error_ = "The tests run as root and there is no 'postgres' user to run the test server as.";
                return;
            }
            if (::chown(socketDir_.c_str(), pw->pw_uid, pw->pw_gid) != 0) {
                error_ = "Cannot hand the test server's folder " + socketDir_ + " to the postgres user.";
                return;
            }
            runAs_ = "runuser -u postgres -- ";
        }
        const std::string log = socketDir_ + "/setup.log";           // ours
        const std::string serverLog = socketDir_ + "/server.log";    // the server's own
        if (shell(asServer(bin_ + "/initdb -D " + data_ +
                           " -U postgres --auth=trust --no-sync -E UTF8 --locale=C.UTF-8") +
                  " >" + log + " 2>&1") != 0) {
            error_ = "initdb failed for the test server: " + readFile(log);
            return;
        }
        const std::string opts = "-c listen_addresses='' -k " + socketDir_ + " -p " + std::to_string(kPort) +
                                 " -c fsync=off -c synchronous_commit=off -c full_page_writes=off";
        if (shell(asServer(bin_ + "/pg_ctl -D " + data_ + " -l " + serverLog + " -s -w -o \"" + opts + "\" start") +
                  " >>" + log + " 2>&1") != 0) {
            error_ = "The test server did not start: " + readFile(serverLog) + readFile(log);
            return;
        }
        started_ = true;
    }

    static std::string findBinaries() {
        if (const char* env = std::getenv("HISTORICOS_PG_BIN"))
            return std::filesystem::exists(std::string(env) + "/initdb") ? env : "";
        std::string best;
        std::error_code ec;
        for (const auto& e : std::filesystem::directory_iterator("/usr/lib/postgresql", ec)) {
            std::string bin = (e.path() / "bin").string();
            if (std::filesystem::exists(bin + "/initdb") && bin > best) best = bin;
        }
        return best;
    }

    std::string asServer(const std::string& cmd) const { return runAs_ + cmd; }
    static int shell(const std::string& cmd) { return std::system(cmd.c_str()); }
    std::string conninfo(const std::string& db) const {
        return "host=" + socketDir_ + " port=" + std::to_string(kPort) + " user=postgres dbname=" + db;
    }

    Scratch dir_{"hist-pg"};
    std::string bin_, socketDir_, data_, runAs_, error_;
    bool started_ = false;
};

}  // namespace hist::testing
