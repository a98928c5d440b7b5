#include "ado/text_fold.hpp"

#include <cstring>

namespace hist::ado::text {

using hist::text::lowerAscii;

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
