#pragma once
// A fresh archive file per test, and a row sink that keeps what it is given.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "backends/engine.hpp"
#include "sql/catalog.hpp"
#include "sql/translator.hpp"
#include "support/engines.hpp"
#include "support/scratch.hpp"

namespace hist::testing {

// An archive file in a scratch folder of its own, made with the catalog's tables
// unless `create` is false.
class TempArchive {
public:
    explicit TempArchive(bool create = true) {
        if (create) backend::createArchive(source());
    }
    const std::string& path() const { return path_; }
    std::string dir() const { return dir_.str(); }
    backend::DataSource source(int busyMs = 2000) const {
        backend::DataSource ds;
        ds.path = path_;
        ds.busyTimeoutMs = busyMs;
        return ds;
    }

private:
    Scratch dir_{"hist-archive"};
    std::string path_ = (dir_ / "archivo.db").string();
};

// A fresh archive on an engine: a file in a scratch folder, or a new database on
// the test cluster; made with the catalog's tables unless `create` is false.
class EngineArchive {
public:
    explicit EngineArchive(Engine e, bool create = true) : engine_(e) {
        if (e == Engine::Postgres) {
            file_.reset();
            url_ = archiveAddress(e, "");
        }
        if (create) backend::createArchive(source());
    }
    backend::DataSource source(int busyMs = 2000) const {
        if (file_) return file_->source(busyMs);
        backend::DataSource ds;
        ds.path = url_;
        ds.busyTimeoutMs = busyMs;
        return ds;
    }
    Engine engine() const { return engine_; }

private:
    Engine engine_;
    std::unique_ptr<TempArchive> file_ = std::make_unique<TempArchive>(false);
    std::string url_;
};

// Cells as text ("NULL" for a null, integers and reals in C form), hidden columns included.
struct CollectSink : backend::RowSink {
    std::vector<backend::ColumnMeta> cols;
    std::vector<std::vector<std::string>> rows;
    std::vector<std::vector<backend::Cell::Kind>> kinds;
    void columns(const std::vector<backend::ColumnMeta>& c) override { cols = c; }
    void row(std::span<const backend::Cell> cells) override {
        std::vector<std::string> r;
        std::vector<backend::Cell::Kind> k;
        for (const auto& c : cells) {
            k.push_back(c.kind);
            switch (c.kind) {
                case backend::Cell::Kind::Null: r.push_back("NULL"); break;
                case backend::Cell::Kind::Int: r.push_back(std::to_string(c.i)); break;
                case backend::Cell::Kind::Real: {
                    char buf[40];
                    std::snprintf(buf, sizeof buf, "%.15g", c.d);
                    r.push_back(buf);
                    break;
                }
                case backend::Cell::Kind::Text: r.emplace_back(c.text); break;
            }
        }
        rows.push_back(std::move(r));
        kinds.push_back(std::move(k));
    }
};

inline CollectSink run(backend::Session& s, std::string_view sql) {
    CollectSink sink;
    s.query(sql, sink);
    return sink;
}

using Rows = std::vector<std::vector<std::string>>;

// A test on a fresh archive with a session open on it.
class ArchiveTest : public ::testing::Test {
protected:
    Rows rows(std::string_view sql) { return run(*s, sql).rows; }
    TempArchive archive;
    std::unique_ptr<backend::Session> s = backend::openSession(archive.source());
};

// A test on a fresh archive of each engine with a session open on it. A cluster
// that cannot start fails the test with its reason.
class EngineTest : public ::testing::TestWithParam<Engine> {
protected:
    void SetUp() override {
        try {
            archive = std::make_unique<EngineArchive>(GetParam());
            s = backend::openSession(archive->source());
        } catch (const std::runtime_error& e) {
            GTEST_FAIL() << e.what();
        }
    }
    // Statements in the desktop dialect, translated for the session's engine.
    Rows rows(std::string_view jet) {
        return run(*s, sql::translate(jet, backend::StatementKind::Read, s->dialect(), Regional::esES())).rows;
    }
    long long exec(std::string_view jet) {
        return s->execute(sql::translate(jet, backend::StatementKind::Write, s->dialect(), Regional::esES()));
    }
    std::unique_ptr<EngineArchive> archive;
    std::unique_ptr<backend::Session> s;
};

// What a plain connection to the file, behind the library's back, runs and reads:
// every value read followed by a line break.
inline std::string rawExec(const std::string& path, const char* sql) {
    std::string out;
    sqlite3* raw = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &raw), SQLITE_OK);
    // The text columns name the engine's collation; byte order stands in for it here.
    sqlite3_create_collation(raw, sql::kTextCollation, SQLITE_UTF8, nullptr,
                             [](void*, int na, const void* a, int nb, const void* b) {
                                 const int c = std::memcmp(a, b, static_cast<size_t>(std::min(na, nb)));
                                 return c ? c : na - nb;
                             });
    auto keep = [](void* o, int n, char** v, char**) {
        for (int i = 0; i < n; ++i) *static_cast<std::string*>(o) += std::string(v[i] ? v[i] : "NULL") + "\n";
        return 0;
    };
    EXPECT_EQ(sqlite3_exec(raw, sql, keep, &out, nullptr), SQLITE_OK) << sql << ": " << sqlite3_errmsg(raw);
    sqlite3_close(raw);
    return out;
}

}  // namespace hist::testing
