#include "backends/engine.hpp"

#include "backends/audit.hpp"

#include "backends/sqlite/session.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"

namespace hist::backend {

namespace {

[[noreturn]] void noProvider() {
    throw Error(3706, err::SrcConnection, "Provider cannot be found. It may not be properly installed.");
}

}  // namespace

std::unique_ptr<Session> openSession(const DataSource& ds) {
    if (!ds.kind.empty() && !sql::sameName(ds.kind, "sqlite")) noProvider();
    std::unique_ptr<Session> s = sqlite::open(ds, sqlite::OpenMode::Existing);
    return ds.auditLog.empty() ? std::move(s) : auditedSession(std::move(s), ds.auditLog);
}

std::unique_ptr<Session> createArchive(const DataSource& ds) {
    if (ds.kind.empty() || sql::sameName(ds.kind, "sqlite")) return sqlite::open(ds, sqlite::OpenMode::Create);
    noProvider();
}

}  // namespace hist::backend
