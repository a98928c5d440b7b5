#pragma once
// The embedded engine's session: one SQLite connection on the archive file.
#include <memory>

#include "backends/engine.hpp"

namespace hist::backend::sqlite {

// Existing: an archive that is there (openSession); Create: the schema may be made
// in a new or empty file (createArchive).
enum class OpenMode { Existing, Create };

std::unique_ptr<Session> open(const DataSource& ds, OpenMode mode);

}  // namespace hist::backend::sqlite
