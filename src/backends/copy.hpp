#pragma once
// Copying a whole archive from one session to another, whatever engines they run
// on: every catalog table's rows, column by column in the stored forms, inside one
// transaction on the target, so a failure leaves the target as it was.
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
// done. After the copy the row count of every table is compared on both sides; a
// difference fails the copy (and undoes it). Returns the rows copied per table.
std::vector<TableCopy> copyArchive(Session& from, Session& to, bool replace = false,
                                   const std::function<void(const TableCopy&)>& progress = {});

// The number of rows of every catalog table, in catalog order.
std::vector<TableCopy> countArchive(Session& s);

}  // namespace hist::backend
