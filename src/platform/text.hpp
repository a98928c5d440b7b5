#pragma once
// Unicode text, once for the whole library: the UTF-8 decoder (ICU's) and case
// folding. Case is ignored everywhere by simple case folding, code point by code
// point, as the archive's text collation folds: "Código" and "CÓDIGO" are one name,
// "Codigo" stays another, and "ß" stays itself. Names of members and classes, keys of
// collections and of the settings stores, field names and the recordset's texts all
// fold through here.
#include <cstdint>
#include <string>
#include <string_view>

namespace hist::text {

// The code point at s[i], advancing i past it. A malformed byte stands for itself
// (its value) and i moves by one, so any byte string decodes.
char32_t nextCodePoint(std::string_view s, size_t& i);

// The simple case folding of a code point.
char32_t foldCodePoint(char32_t c);

// Each code point of a UTF-8 text mapped through `map`, one for one; malformed
// bytes are kept as they are.
std::string mapCodePoints(std::string_view s, int32_t (*map)(int32_t));

// The case-folded form of a UTF-8 text (ASCII texts take a fast path).
std::string fold(std::string_view s);

inline bool isAscii(std::string_view s) {
    for (unsigned char c : s)
        if (c >= 0x80) return false;
    return true;
}

inline unsigned char lowerAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + 32 : c; }

}  // namespace hist::text
