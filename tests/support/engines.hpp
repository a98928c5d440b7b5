#pragma once
// The engines an engine-neutral test runs on, and a new archive address on each.
#include <gtest/gtest.h>

#include <string>

#include "support/pg_cluster.hpp"

namespace hist::testing {

enum class Engine { Sqlite, Postgres };

inline const char* engineName(Engine e) { return e == Engine::Sqlite ? "Sqlite" : "Postgres"; }
inline std::string engineParamName(const ::testing::TestParamInfo<Engine>& p) { return engineName(p.param); }

// Where a test's archive goes: `file` for the embedded engine, a new database of the
// test cluster for the server (throws std::runtime_error when the cluster cannot start).
inline std::string archiveAddress(Engine e, const std::string& file) {
    return e == Engine::Sqlite ? file : PgCluster::shared().newDatabase();
}

}  // namespace hist::testing
