#pragma once
// Commands for an administrator, each through the record classes and the data
// service: `classes` (what the registry holds) and `list` (a class's rows under a
// keyword, filter and order, in a format for a terminal, a spreadsheet, a script or
// the class's own listing).
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "host/archive_env.hpp"

namespace hist::host {

struct ClassesOptions {
    std::optional<std::string> className;  // one class in detail; unset: every class
};

struct ListOptions {
    ArchiveOptions archive;
    std::string className;
    std::string keyword = "todos";
    std::optional<std::string> id, date, filter, sort;
    std::string format = "table";  // table, csv, json, html, txt
    std::optional<std::string> out;
};

struct AuditOptions {
    ArchiveOptions archive;              // --config names the log; --db is not used
    std::optional<std::string> log;      // --log FILE over the configuration's
    std::optional<std::string> since;    // --since DATE: entries at or after it
    std::optional<std::string> className;  // --class C
    bool json = false;                   // --json: the entries as stored
};

// The exit codes: 0 done, 1 the work failed (an unknown class included).
int classesCommand(const ClassesOptions& o, std::ostream& out, std::ostream& err);
int listCommand(const ListOptions& o, bool trace, std::ostream& out, std::ostream& err);
// Exit 1 also when a line of the log is not an entry (it is named, the others shown).
int auditCommand(const AuditOptions& o, std::ostream& out, std::ostream& err);

}  // namespace hist::host
