#include "ado/text_fold.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstring>

namespace hist::ado::text {
namespace {

inline unsigned char lowerAscii(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + 32 : c; }

}  // namespace

std::string mapCodePoints(std::string_view s, int32_t (*map)(int32_t)) {
    std::string out;
    out.reserve(s.size());
    const auto* p = reinterpret_cast<const uint8_t*>(s.data());
    const int32_t n = static_cast<int32_t>(s.size());
    int32_t i = 0;
    while (i < n) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(p, i, n, c);
        if (c < 0) {  // malformed: keep the bytes as they are
            out.append(s.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
            continue;
        }
        uint8_t buf[U8_MAX_LENGTH];
        int32_t len = 0;
        U8_APPEND_UNSAFE(buf, len, map(c));  // a mapped code point is valid and fits U8_MAX_LENGTH
        out.append(reinterpret_cast<const char*>(buf), static_cast<std::size_t>(len));
    }
    return out;
}

// Simple case folding, code point by code point, as the engine's text collation
// folds: the folded text keeps one code point per code point.
std::string fold(std::string_view s) {
    if (!isAscii(s)) return mapCodePoints(s, [](int32_t c) -> int32_t { return u_foldCase(c, U_FOLD_CASE_DEFAULT); });
    std::string out;
    out.reserve(s.size());
    for (char c : s) out += static_cast<char>(lowerAscii(static_cast<unsigned char>(c)));
    return out;
}

bool startsWithFolded(std::string_view s, std::string_view folded) {
    if (s.size() >= folded.size()) {
        bool ascii = true;
        for (std::size_t k = 0; k < folded.size(); ++k) {
            const unsigned char c = static_cast<unsigned char>(s[k]);
            if (c >= 0x80 || static_cast<unsigned char>(folded[k]) >= 0x80) {
                ascii = false;
                break;
            }
            if (lowerAscii(c) != static_cast<unsigned char>(folded[k])) return false;
        }
        if (ascii) return true;
    } else if (isAscii(s)) {
        return false;  // folding ASCII keeps its length
    }
    const std::string f = fold(s);
    return f.size() >= folded.size() && std::memcmp(f.data(), folded.data(), folded.size()) == 0;
}

bool endsWithFolded(std::string_view s, std::string_view folded) {
    if (isAscii(s)) {
        if (s.size() < folded.size()) return false;
        const std::size_t off = s.size() - folded.size();
        for (std::size_t k = 0; k < folded.size(); ++k)
            if (lowerAscii(static_cast<unsigned char>(s[off + k])) != static_cast<unsigned char>(folded[k]))
                return false;
        return true;
    }
    const std::string f = fold(s);
    return f.size() >= folded.size() && f.compare(f.size() - folded.size(), folded.size(), folded) == 0;
}

bool containsFolded(std::string_view s, std::string_view folded) {
    if (folded.empty()) return true;
    if (isAscii(s)) {
        if (s.size() < folded.size()) return false;
        const unsigned char first = static_cast<unsigned char>(folded[0]);
        for (std::size_t k = 0; k + folded.size() <= s.size(); ++k) {
            if (lowerAscii(static_cast<unsigned char>(s[k])) != first) continue;
            std::size_t j = 1;
            while (j < folded.size() &&
                   lowerAscii(static_cast<unsigned char>(s[k + j])) == static_cast<unsigned char>(folded[j]))
                ++j;
            if (j == folded.size()) return true;
        }
        return false;
    }
    return fold(s).find(folded) != std::string::npos;
}

}  // namespace hist::ado::text
