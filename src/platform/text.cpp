#include "platform/text.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace hist::text {

char32_t nextCodePoint(std::string_view s, size_t& i) {
    const auto* p = reinterpret_cast<const uint8_t*>(s.data());
    const unsigned char first = p[i];
    if (first < 0x80) {
        ++i;
        return first;
    }
    int32_t at = static_cast<int32_t>(i);
    UChar32 c;
    U8_NEXT(p, at, static_cast<int32_t>(s.size()), c);
    if (c < 0) {
        ++i;
        return first;
    }
    i = static_cast<size_t>(at);
    return static_cast<char32_t>(c);
}

char32_t foldCodePoint(char32_t c) {
    if (c < 0x80) return lowerAscii(static_cast<unsigned char>(c));
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

std::string mapCodePoints(std::string_view s, int32_t (*map)(int32_t)) {
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        const size_t start = i;
        const char32_t c = nextCodePoint(s, i);
        if (i == start + 1 && static_cast<unsigned char>(s[start]) >= 0x80) {  // a malformed byte: kept
            out += s[start];
            continue;
        }
        uint8_t buf[U8_MAX_LENGTH];
        int32_t len = 0;
        U8_APPEND_UNSAFE(buf, len, map(static_cast<int32_t>(c)));  // a mapped code point is valid and fits
        out.append(reinterpret_cast<const char*>(buf), static_cast<size_t>(len));
    }
    return out;
}

std::string fold(std::string_view s) {
    if (!isAscii(s))
        return mapCodePoints(s, [](int32_t c) { return static_cast<int32_t>(foldCodePoint(static_cast<char32_t>(c))); });
    std::string out(s);
    for (char& c : out) c = static_cast<char>(lowerAscii(static_cast<unsigned char>(c)));
    return out;
}

}  // namespace hist::text
