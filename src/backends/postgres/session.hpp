#pragma once
// The server engine's session: one libpq connection to a PostgreSQL database that
// holds the archive (the catalog's tables, text as citext, yes/no as smallint -1/0,
// dates as timestamp, and a hidden row identity per table).
#include <memory>

#include "backends/engine.hpp"

namespace hist::backend::postgres {

// Existing: the database must hold the archive's tables (openSession); Create: the
// catalog's missing tables are made (createArchive).
enum class OpenMode { Existing, Create };

std::unique_ptr<Session> open(const DataSource& ds, OpenMode mode);

}  // namespace hist::backend::postgres
