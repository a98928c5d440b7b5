#pragma once
// The embedded engine's session: one SQLite connection on the archive file.
#include <memory>

#include "backends/engine.hpp"

namespace hist::backend::sqlite {

std::unique_ptr<Session> open(const DataSource& ds);

}  // namespace hist::backend::sqlite
