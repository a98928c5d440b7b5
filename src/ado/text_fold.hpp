#pragma once
// Folded text for the recordset's keys and searches: Unicode simple case folding,
// as the archive's text collation folds (so "Código" and "CÓDIGO" are one name,
// while "Codigo" stays another). Comparing two texts is sql::compareNoCase, the
// collation's own function. Plain ASCII texts take a fast path.
#include <cstdint>
#include <string>
#include <string_view>

namespace hist::ado::text {

// Each code point of a UTF-8 text mapped through `map`, one for one; malformed
// bytes are kept as they are.
std::string mapCodePoints(std::string_view s, int32_t (*map)(int32_t));
// The case-folded form of a UTF-8 text.
std::string fold(std::string_view s);
// Whether `s` starts with / ends with / contains `folded` (already folded).
bool startsWithFolded(std::string_view s, std::string_view folded);
bool endsWithFolded(std::string_view s, std::string_view folded);
bool containsFolded(std::string_view s, std::string_view folded);

inline bool isAscii(std::string_view s) {
    for (unsigned char c : s)
        if (c >= 0x80) return false;
    return true;
}

}  // namespace hist::ado::text
