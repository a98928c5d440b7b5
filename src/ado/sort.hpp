#pragma once
// Sort of a recordset: "name [ASC|DESC], ..." over the current values of its rows.
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "ado/criteria.hpp"
#include "ado/values.hpp"

namespace hist::ado {

struct SortKey {
    int field = -1;
    bool desc = false;
};

// Reads a sort text. A name with blanks may be written bare when it names a field
// or between brackets. Throws 3001 for an empty item or a lone keyword, 3265 for a
// name the recordset does not have.
std::vector<SortKey> parseSort(std::string_view text, const Criteria::Resolver& resolve);

// Orders `rows` by the keys; rows with equal keys keep their order. `cell(row, field)`
// gives a value and `classOf(field)` how the field's values compare. Nulls come first
// ascending; texts compare without regard to case.
void sortRows(std::vector<uint32_t>& rows, const std::vector<SortKey>& keys,
              const std::function<CellView(uint32_t, int)>& cell, const std::function<ValueClass(int)>& classOf);

}  // namespace hist::ado
