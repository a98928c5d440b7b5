#pragma once
// What the parts of the recordset share: the rows of a selection (shared by a
// recordset and its clones), the edit overlay, and small helpers. Private to ado/.
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ado/row_store.hpp"
#include "backends/engine.hpp"
#include "platform/error.hpp"
#include "platform/variant.hpp"

namespace hist::ado {

enum class RowStatus : uint8_t { Unchanged, Modified, New, Deleted, Gone };

// The edited values of a row, by field, and which fields were written.
struct Overlay {
    std::vector<Variant> values;
    std::vector<uint8_t> changed;
};

// The rows of one selection, shared by a recordset and its clones.
struct RowData {
    std::vector<backend::ColumnMeta> cols;  // every column, hidden identities included
    std::vector<int> fieldCol;              // field position -> store column
    std::unordered_map<std::string, int> byName;  // folded name -> first field of that name
    RowStore store;
    std::vector<uint8_t> status;            // RowStatus per row
    std::unordered_map<uint32_t, Overlay> overlay;
    uint64_t generation = 1;                // bumped when rows appear or disappear
    uint32_t fetched = 0;                   // rows 0..fetched-1 came from the last fetch

    RowStatus statusOf(uint32_t row) const { return static_cast<RowStatus>(status[row]); }
    bool live(uint32_t row) const {
        const RowStatus s = statusOf(row);
        return s != RowStatus::Deleted && s != RowStatus::Gone;
    }
};

// A stored cell as read back after a write.
struct RowRefresh {
    uint32_t row;
    std::size_t col;
    CellTag tag;
    int64_t i;
    double d;
    std::string s;
};

namespace detail {

inline std::string withDetail(long number, const std::string& detail) {
    return std::string(err::standardDescription(number)) + " " + detail;
}

[[noreturn]] inline void noCurrentRecord() { raise(err::NoCurrentRecord, err::SrcRecordset); }

inline std::string quoteName(std::string_view name) {
    std::string out = "\"";
    for (char c : name) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}


}  // namespace detail
}  // namespace hist::ado
