#pragma once
// Text compared without regard to case, as the archive's text collation compares
// it: Unicode simple case folding (so "Código" and "CÓDIGO" are one name, while
// "Codigo" stays another), then code point order. Plain ASCII texts take a fast
// path that allocates nothing.
#include <string>
#include <string_view>

namespace hist::ado::text {

// The case-folded form of a UTF-8 text.
std::string fold(std::string_view s);
// <0, 0, >0 as a sorts before, equal to or after b, case ignored.
int compareNoCase(std::string_view a, std::string_view b);
bool equalNoCase(std::string_view a, std::string_view b);
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
