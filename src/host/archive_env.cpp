#include "host/archive_env.hpp"

#include <ostream>

#include "backends/engine.hpp"
#include "frame/services/config.hpp"
#include "host/registration.hpp"
#include "host/statement_log.hpp"
#include "platform/regional.hpp"

namespace hist::host {

ArchiveEnvironment::ArchiveEnvironment(const ArchiveOptions& o, bool trace, std::ostream& traceOut) {
    services::Config cfg = services::Config::load(o.config);
    services::Config::Overrides ov;
    ov.db = o.db;
    cfg.apply(ov);
    Regional::setCurrent(Regional::byName(cfg.regional));
    path_ = cfg.archivePath();
    services::Configuration::install(cfg);
    registerAllClasses();
    if (trace) {
        tracing_ = services::StatementObservers::subscribe([&traceOut](const services::StatementEvent& e) {
            writeTrace(traceOut, e.op, e.iBase, e.composed, e.sent);
        });
    }
}

void ArchiveEnvironment::requireArchive() const {
    backend::openSession(services::Configuration::current()->dataSource(4));
}

}  // namespace hist::host
