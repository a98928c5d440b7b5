#pragma once
// What every command that works on an archive does first: the configuration read
// (with --db and --config over it), the regional settings and the configuration
// installed for the data service, every class registered, and --trace subscribed.
#include <iosfwd>
#include <optional>
#include <string>

#include "frame/services/data_service.hpp"

namespace hist::host {

struct ArchiveOptions {
    std::optional<std::string> db;      // --db PATH; unset: the configuration's archive
    std::optional<std::string> config;  // --config FILE
};

class ArchiveEnvironment {
public:
    // Raises the configuration's errors. With `trace`, every statement is written
    // to `traceOut` as composed and as sent, while the environment lives.
    ArchiveEnvironment(const ArchiveOptions& o, bool trace, std::ostream& traceOut);
    const std::string& archivePath() const { return path_; }
    // Refuses, by name, an archive that is missing or not an archive, before
    // anything reads it.
    void requireArchive() const;

private:
    std::string path_;
    std::optional<services::StatementObservers::Subscription> tracing_;
};

}  // namespace hist::host
