#pragma once
// The archive's upkeep from the command line, through the record classes and the
// data service: `check` (the engine's check and every link between documents),
// `euros` (the one-time conversion of the money to euros) and `move` (a closing
// run's customer snapshots between the two archive levels). The last two run in
// one transaction on one connection; with --dry-run they say what would change
// and roll it back.
#include <cstdint>
#include <iosfwd>
#include <string>

#include "host/archive_env.hpp"

namespace hist::host {

struct EurosOptions {
    ArchiveOptions archive;
    bool dryRun = false;
};

struct MoveOptions {
    ArchiveOptions archive;
    std::string closing;      // the closing run (CIERRE)
    bool toHistory = false;   // --to-history; otherwise --back
    bool dryRun = false;
};

// Exit codes: 0 done (check: nothing broken), 1 the work failed or check found
// something broken (each named on standard output).
int checkCommand(const ArchiveOptions& o, bool trace, std::ostream& out, std::ostream& err);
int eurosCommand(const EurosOptions& o, bool trace, std::ostream& out, std::ostream& err);
int moveCommand(const MoveOptions& o, bool trace, std::ostream& out, std::ostream& err);

}  // namespace hist::host
