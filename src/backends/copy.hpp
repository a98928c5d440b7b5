#pragma once
// Copying a whole archive from one session to another, whatever engines they run
// on: every catalog table's rows, column by column in the stored forms, inside one
// transaction on the target, so a failure leaves the target as it was.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "backends/engine.hpp"

namespace hist::backend {

struct TableCopy {
    std::string table;
    long long rows = 0;
};

// Copies into `to`, which must hold no rows unless `replace` (then its rows are
// deleted first, in the same transaction). `progress` is told each table as it is
// done. After the copy the row count and the checksum of every table are compared on
// both sides; a difference fails the copy (and undoes it). Returns the rows copied per table.
std::vector<TableCopy> copyArchive(Session& from, Session& to, bool replace = false,
                                   const std::function<void(const TableCopy&)>& progress = {});

// The number of rows of every catalog table, in catalog order.
std::vector<TableCopy> countArchive(Session& s);

// A checksum of a table's content that does not depend on the engine or the order of
// the rows: the sum of a hash of each row's values in their stored forms (numbers of a
// number column by value, dates as their ISO text, Null apart from every value).
uint64_t tableChecksum(Session& s, const std::string& table);

}  // namespace hist::backend
