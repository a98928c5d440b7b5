#pragma once
// RowStore: the rows of a selection as the engine handed them over, in a packed
// column layout. Each cell is one tag byte plus one 8-byte word (an integer, the
// bits of a double, or a reference into the column's text arena), so a numeric
// cell costs no heap allocation and a text costs its bytes once. The store keeps
// the engine's own forms (dates stay the stored ISO text), which is what the
// write-back compares against to detect that a row changed since it was read.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "backends/engine.hpp"

namespace hist::ado {

enum class CellTag : uint8_t { Null = 0, Int = 1, Real = 2, Text = 3 };

// A read-only look at one cell; the text view lives as long as the store (or the
// value it was made from) is not changed.
struct CellView {
    CellTag tag = CellTag::Null;
    int64_t i = 0;
    double d = 0.0;
    std::string_view s;
};

class RowStore {
public:
    void reset(std::size_t columns);
    std::size_t rows() const noexcept { return rows_; }
    std::size_t columns() const noexcept { return cols_.size(); }

    // Appends one row; cells.size() must equal columns().
    void append(std::span<const backend::Cell> cells);
    // Appends a row of Null cells (a row added on the client) and returns its index.
    std::size_t appendNullRow();
    // Replaces one cell (after a successful write-back).
    void set(std::size_t row, std::size_t col, const CellView& v);

    CellView get(std::size_t row, std::size_t col) const;
    CellTag tag(std::size_t row, std::size_t col) const { return static_cast<CellTag>(cols_[col].tags[row]); }

    // Gives back the spare capacity of the growth phase once loading is over.
    void shrink();
    // Bytes held (capacities included).
    std::size_t bytes() const noexcept;

private:
    struct Column {
        std::vector<uint8_t> tags;
        std::vector<uint64_t> words;
        std::string arena;
        std::vector<std::string> big;  // texts too long for a packed reference
    };
    static constexpr uint64_t kLenBits = 24;
    static constexpr uint64_t kLenMask = (uint64_t{1} << kLenBits) - 1;  // also the "big" marker

    void putText(Column& c, std::size_t row, std::string_view s, bool appendRow);

    std::vector<Column> cols_;
    std::size_t rows_ = 0;
};

}  // namespace hist::ado
