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

struct CopyOptions {
    std::string from, to;  // archive files or server addresses
    bool force = false;    // replace the rows the target holds
};

// Exit codes: 0 done (check: nothing broken), 1 the work failed or check found
// something broken (each named on standard output).
int checkCommand(const ArchiveOptions& o, bool trace, std::ostream& out, std::ostream& err);
int eurosCommand(const EurosOptions& o, bool trace, std::ostream& out, std::ostream& err);
int moveCommand(const MoveOptions& o, bool trace, std::ostream& out, std::ostream& err);
// A whole archive copied to another file or server in one transaction, counted and
// checksummed table by table; a failure leaves the target as it was (a target file
// that did not exist is removed again).
int copyCommand(const CopyOptions& o, std::ostream& out, std::ostream& err);

}  // namespace hist::host
