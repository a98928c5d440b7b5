// The archive file itself: what opening refuses and leaves alone, damaged and
// read-only files, and the statement time limit.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "archive_fixture.hpp"
#include "support/errors.hpp"

namespace hist {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;
using testing::TempArchive;

std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

long long countOf(backend::Session& s, const char* sql) { return std::stoll(testing::run(s, sql).rows.at(0).at(0)); }

TEST(ArchiveFile, OnlyAnArchiveOpensAndEveryOtherFileIsNamedAndLeftAsItWas) {
    struct Case {
        const char* what;
        void (*make)(const std::string& path);
        bool createMakesIt;  // createArchive may make the schema here
    };
    const Case cases[] = {
        {"missing", [](const std::string&) {}, true},
        {"empty", [](const std::string& p) { std::ofstream(p, std::ios::binary); }, true},
        {"folder", [](const std::string& p) { fs::create_directory(p); }, false},
        {"text", [](const std::string& p) { std::ofstream(p, std::ios::binary) << "Presupuesto: 3 coronas\n"; },
         false},
        {"foreign database",
         [](const std::string& p) {
             testing::rawExec(p, "CREATE TABLE notas (texto TEXT); INSERT INTO notas VALUES ('revisar hornos')");
         },
         false},
    };
    for (const Case& c : cases) {
        TempArchive a(false);
        c.make(a.path());
        const bool wasFile = fs::is_regular_file(a.path());
        const std::string before = wasFile ? bytesOf(a.path()) : "";
        std::string desc;
        EXPECT_NE(errorOf([&] { backend::openSession(a.source()); }, &desc), 0) << c.what;
        EXPECT_NE(desc.find("'" + a.path() + "'"), std::string::npos) << c.what << ": " << desc;
        if (c.make == cases[3].make) { EXPECT_NE(desc.find("' is not an archive"), std::string::npos) << desc; }
        EXPECT_EQ(fs::exists(a.path()), c.make != cases[0].make) << c.what;
        if (wasFile) { EXPECT_EQ(bytesOf(a.path()), before) << c.what; }
        // Nothing beside it either: no log or index of the engine's was made.
        EXPECT_FALSE(fs::exists(a.path() + "-wal") || fs::exists(a.path() + "-shm")) << c.what;

        if (c.createMakesIt) {
            auto s = backend::createArchive(a.source());
            EXPECT_EQ(countOf(*s, "SELECT COUNT(*) FROM Articulos"), 0) << c.what;
        } else {
            EXPECT_NE(errorOf([&] { backend::createArchive(a.source()); }, &desc), 0) << c.what;
            EXPECT_NE(desc.find("'" + a.path() + "'"), std::string::npos) << c.what << ": " << desc;
            if (wasFile) { EXPECT_EQ(bytesOf(a.path()), before) << c.what; }
        }
    }
}

TEST(ArchiveFile, AnArchiveLackingANewerTableGainsIt) {
    TempArchive a;
    testing::rawExec(a.path(), "DROP TABLE Numeradores");
    auto s = backend::openSession(a.source());
    EXPECT_EQ(countOf(*s, "SELECT COUNT(*) FROM Numeradores"), 0);
}

TEST(ArchiveFile, ADamagedArchiveIsNamedInTheError) {
    TempArchive a;
    {
        auto s = backend::openSession(a.source());
        s->begin();
        for (int i = 0; i < 400; ++i)
            s->execute("INSERT INTO Articulos (Codigo, Descripcion) VALUES ('A" + std::to_string(i) +
                       "', '" + std::string(200, 'x') + "')");
        s->commit();
    }
    // Every page but the first (the schema's root) is overwritten.
    const std::string whole = bytesOf(a.path());
    ASSERT_GT(whole.size(), 16384u);
    std::string damaged = whole.substr(0, 4096) + std::string(whole.size() - 4096, '\xA5');
    std::ofstream(a.path(), std::ios::binary | std::ios::trunc) << damaged;

    std::string desc;
    EXPECT_NE(errorOf([&] {
                  auto s = backend::openSession(a.source());
                  countOf(*s, "SELECT COUNT(*) FROM Articulos WHERE Descripcion <> ''");
              },
                      &desc),
              0);
    EXPECT_NE(desc.find("'" + a.path() + "'"), std::string::npos) << desc;
}

// The process may not write the archive (its file, or its folder): run as an
// unprivileged user in a child process, since permissions do not bind root.
// Returns the exit code: 0 when reads work and a write fails naming the file.
int readOnlyChild(const backend::DataSource& ds) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return 10;
    try {
        auto s = backend::openSession(ds);
        if (countOf(*s, "SELECT COUNT(*) FROM Articulos") != 1) return 11;
        std::string desc;
        if (errorOf([&] { s->execute("INSERT INTO Articulos (Codigo) VALUES ('B')"); }, &desc) == 0) return 12;
        if (desc.find("'" + ds.path + "' is read-only") == std::string::npos) {
            std::fprintf(stderr, "%s\n", desc.c_str());
            return 13;
        }
        return 0;
    } catch (const Error& e) {
        std::fprintf(stderr, "%s\n", e.description().c_str());
        return 14;
    }
}

TEST(ArchiveFile, AnArchiveThatCannotBeWrittenIsReadAndRefusesWritesByName) {
    struct Case {
        const char* what;
        fs::perms folder, file;
    };
    const fs::perms rx = fs::perms::owner_read | fs::perms::owner_exec | fs::perms::group_read |
                         fs::perms::group_exec | fs::perms::others_read | fs::perms::others_exec;
    const fs::perms readable = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    const Case cases[] = {
        {"read-only folder", rx, readable | fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write},
        {"read-only file", fs::perms::all, readable},
    };
    for (const Case& c : cases) {
        TempArchive a;
        backend::openSession(a.source())->execute("INSERT INTO Articulos (Codigo) VALUES ('A')");
        fs::permissions(a.path(), c.file);
        fs::permissions(a.dir(), c.folder);
        EXPECT_EXIT(std::exit(readOnlyChild(a.source())), ::testing::ExitedWithCode(0), "") << c.what;
        fs::permissions(a.dir(), fs::perms::owner_all);
        fs::permissions(a.path(), fs::perms::owner_read | fs::perms::owner_write);
        // The archive is as it was: one row.
        EXPECT_EQ(countOf(*backend::openSession(a.source()), "SELECT COUNT(*) FROM Articulos"), 1) << c.what;
    }
}

TEST(ArchiveFile, AStatementPastItsTimeLimitIsInterrupted) {
    TempArchive a;
    backend::DataSource ds = a.source();
    ds.statementTimeoutMs = 50;
    auto s = backend::openSession(ds);
    std::string values;
    for (int i = 0; i < 300; ++i) values += std::string(i ? ", " : "") + "('A" + std::to_string(i) + "')";
    s->execute("INSERT INTO Articulos (Codigo) VALUES " + values);

    // 27 million combinations take far longer than 50 ms.
    std::string desc;
    EXPECT_EQ(errorOf([&] { countOf(*s, "SELECT COUNT(*) FROM Articulos x, Articulos y, Articulos z"); }, &desc),
              -2147217871);
    EXPECT_EQ(desc, "Query timeout expired");
    EXPECT_EQ(errorOf([&] {
                  s->execute("UPDATE Articulos SET Descripcion = (SELECT COUNT(*) FROM Articulos x, Articulos y, "
                             "Articulos z)");
              }),
              -2147217871);
    // The session goes on: the next statement has its own time.
    EXPECT_EQ(countOf(*s, "SELECT COUNT(*) FROM Articulos"), 300);
}

}  // namespace
}  // namespace hist
