#include "ado/row_store.hpp"

#include <bit>
#include <cstring>

namespace hist::ado {

void RowStore::reset(std::size_t columns) {
    cols_.clear();
    cols_.resize(columns);
    rows_ = 0;
}

void RowStore::putText(Column& c, std::size_t row, std::string_view s, bool appendRow) {
    uint64_t word;
    if (s.size() >= kLenMask || c.arena.size() >= (uint64_t{1} << (64 - kLenBits))) {
        word = (static_cast<uint64_t>(c.big.size()) << kLenBits) | kLenMask;
        c.big.emplace_back(s);
    } else {
        word = (static_cast<uint64_t>(c.arena.size()) << kLenBits) | s.size();
        c.arena.append(s);
    }
    if (appendRow) {
        c.tags.push_back(static_cast<uint8_t>(CellTag::Text));
        c.words.push_back(word);
    } else {
        c.tags[row] = static_cast<uint8_t>(CellTag::Text);
        c.words[row] = word;
    }
}

void RowStore::append(std::span<const backend::Cell> cells) {
    const std::size_t n = cols_.size();
    for (std::size_t k = 0; k < n; ++k) {
        Column& c = cols_[k];
        const backend::Cell& cell = cells[k];
        switch (cell.kind) {
        case backend::Cell::Kind::Null:
            c.tags.push_back(static_cast<uint8_t>(CellTag::Null));
            c.words.push_back(0);
            break;
        case backend::Cell::Kind::Int:
            c.tags.push_back(static_cast<uint8_t>(CellTag::Int));
            c.words.push_back(static_cast<uint64_t>(cell.i));
            break;
        case backend::Cell::Kind::Real:
            c.tags.push_back(static_cast<uint8_t>(CellTag::Real));
            c.words.push_back(std::bit_cast<uint64_t>(cell.d));
            break;
        case backend::Cell::Kind::Text:
            putText(c, rows_, cell.text, true);
            break;
        }
    }
    ++rows_;
}

std::size_t RowStore::appendNullRow() {
    for (Column& c : cols_) {
        c.tags.push_back(static_cast<uint8_t>(CellTag::Null));
        c.words.push_back(0);
    }
    return rows_++;
}

void RowStore::set(std::size_t row, std::size_t col, const CellView& v) {
    Column& c = cols_[col];
    switch (v.tag) {
    case CellTag::Null:
        c.tags[row] = static_cast<uint8_t>(CellTag::Null);
        c.words[row] = 0;
        break;
    case CellTag::Int:
        c.tags[row] = static_cast<uint8_t>(CellTag::Int);
        c.words[row] = static_cast<uint64_t>(v.i);
        break;
    case CellTag::Real:
        c.tags[row] = static_cast<uint8_t>(CellTag::Real);
        c.words[row] = std::bit_cast<uint64_t>(v.d);
        break;
    case CellTag::Text: {
        // The view may point into this very arena; copy it before the arena grows.
        std::string copy(v.s);
        putText(c, row, copy, false);
        break;
    }
    }
}

CellView RowStore::get(std::size_t row, std::size_t col) const {
    const Column& c = cols_[col];
    CellView v;
    v.tag = static_cast<CellTag>(c.tags[row]);
    const uint64_t w = c.words[row];
    switch (v.tag) {
    case CellTag::Null:
        break;
    case CellTag::Int:
        v.i = static_cast<int64_t>(w);
        break;
    case CellTag::Real:
        v.d = std::bit_cast<double>(w);
        break;
    case CellTag::Text: {
        const uint64_t len = w & kLenMask;
        const uint64_t off = w >> kLenBits;
        if (len == kLenMask)
            v.s = c.big[off];
        else
            v.s = std::string_view(c.arena.data() + off, len);
        break;
    }
    }
    return v;
}

void RowStore::shrink() {
    for (Column& c : cols_) {
        c.tags.shrink_to_fit();
        c.words.shrink_to_fit();
        c.arena.shrink_to_fit();
    }
}

std::size_t RowStore::bytes() const noexcept {
    std::size_t total = cols_.capacity() * sizeof(Column);
    for (const Column& c : cols_) {
        total += c.tags.capacity() + c.words.capacity() * sizeof(uint64_t) + c.arena.capacity();
        for (const std::string& b : c.big) total += sizeof(std::string) + b.capacity();
    }
    return total;
}

}  // namespace hist::ado
