#include "backends/engine.hpp"

#include "backends/address.hpp"
#include "backends/audit.hpp"

#include "backends/postgres/session.hpp"
#include "backends/sqlite/session.hpp"
#include "platform/error.hpp"
#include "sql/catalog.hpp"

namespace hist::backend {

namespace {

[[noreturn]] void noProvider() {
    throw Error(3706, err::SrcConnection, "Provider cannot be found. It may not be properly installed.");
}

}  // namespace

std::string shownAddress(const std::string& address) {
    const size_t scheme = address.find("://");
    if (scheme == std::string::npos) return address;
    const size_t at = address.find('@', scheme + 3);
    const size_t colon = address.find(':', scheme + 3);
    return at != std::string::npos && colon < at ? address.substr(0, colon) + address.substr(at) : address;
}

bool isServerSource(const DataSource& ds) {
    if (sql::sameName(ds.kind, "postgresql")) return true;
    auto scheme = [&](std::string_view s) { return ds.path.size() > s.size() && sql::sameName(ds.path.substr(0, s.size()), s); };
    return scheme("postgresql://") || scheme("postgres://");
}

std::unique_ptr<Session> openSession(const DataSource& ds) {
    std::unique_ptr<Session> s;
    if (isServerSource(ds)) s = postgres::open(ds, postgres::OpenMode::Existing);
    else if (ds.kind.empty() || sql::sameName(ds.kind, "sqlite")) s = sqlite::open(ds, sqlite::OpenMode::Existing);
    else noProvider();
    return ds.auditLog.empty() ? std::move(s) : auditedSession(std::move(s), ds.auditLog);
}

std::unique_ptr<Session> createArchive(const DataSource& ds) {
    if (isServerSource(ds)) return postgres::open(ds, postgres::OpenMode::Create);
    if (ds.kind.empty() || sql::sameName(ds.kind, "sqlite")) return sqlite::open(ds, sqlite::OpenMode::Create);
    noProvider();
}

}  // namespace hist::backend
