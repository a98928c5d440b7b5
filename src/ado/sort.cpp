#include "ado/sort.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <deque>
#include <string>

#include "ado/text_fold.hpp"
#include "platform/error.hpp"

namespace hist::ado {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view s) {
    while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
    return s;
}

[[noreturn]] void refuse(std::string_view whole) {
    raise(err::BadArgument, err::SrcRecordset,
          std::string(err::standardDescription(err::BadArgument)) + " Sort: " + std::string(whole));
}

[[noreturn]] void unknown(std::string_view name) {
    raise(err::ItemNotFound, err::SrcRecordset,
          std::string(err::standardDescription(err::ItemNotFound)) + " Field: " + std::string(name));
}

// Splits a trailing " ASC" / " DESC" off an item; true when one was there.
bool splitDirection(std::string_view item, std::string_view& name, bool& desc) {
    for (std::string_view kw : {std::string_view("asc"), std::string_view("desc")}) {
        if (item.size() > kw.size() && isBlank(item[item.size() - kw.size() - 1]) &&
            text::equalNoCase(item.substr(item.size() - kw.size()), kw)) {
            name = trim(item.substr(0, item.size() - kw.size()));
            desc = kw == "desc";
            return true;
        }
    }
    return false;
}

// An order-preserving 64-bit image of a double.
uint64_t numberImage(double d) {
    const uint64_t b = std::bit_cast<uint64_t>(d);
    const uint64_t img = (b & (uint64_t{1} << 63)) ? ~b : (b | (uint64_t{1} << 63));
    return std::max<uint64_t>(img, 1);  // 0 is kept for Null
}

// The first eight bytes of a text with ASCII capitals lowered (non-ASCII texts
// arrive folded), as a big-endian number.
uint64_t textPrefix(std::string_view s) {
    uint64_t p = 0;
    for (std::size_t k = 0; k < 8; ++k) {
        unsigned char c = k < s.size() ? static_cast<unsigned char>(s[k]) : 0u;
        if (c >= 'A' && c <= 'Z') c = static_cast<unsigned char>(c + 32);
        p = (p << 8) | c;
    }
    return p;
}

// Compares two sort keys: ASCII texts as stored and non-ASCII ones folded, so
// lowering ASCII capitals on the fly gives the order of the folded texts.
int compareLowered(std::string_view a, std::string_view b) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t k = 0; k < n; ++k) {
        unsigned char x = static_cast<unsigned char>(a[k]);
        unsigned char y = static_cast<unsigned char>(b[k]);
        if (x >= 'A' && x <= 'Z') x = static_cast<unsigned char>(x + 32);
        if (y >= 'A' && y <= 'Z') y = static_cast<unsigned char>(y + 32);
        if (x != y) return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

struct KeyColumn {
    bool isText = false;
    bool desc = false;
    std::vector<uint8_t> null;
    std::vector<double> num;
    std::vector<std::string_view> str;  // stored ASCII texts, folded others
};

}  // namespace

std::vector<SortKey> parseSort(std::string_view text, const Criteria::Resolver& resolve) {
    std::vector<SortKey> keys;
    if (trim(text).empty()) return keys;
    std::size_t start = 0;
    while (start <= text.size()) {
        // Items are separated by commas outside brackets.
        std::size_t end = start;
        bool inBracket = false;
        while (end < text.size() && (inBracket || text[end] != ',')) {
            if (text[end] == '[') inBracket = true;
            if (text[end] == ']') inBracket = false;
            ++end;
        }
        const std::string_view item = trim(text.substr(start, end - start));
        if (item.empty()) refuse(text);
        SortKey key;
        std::string_view name;
        if (item.front() == '[') {
            const std::size_t close = item.find(']');
            if (close == std::string_view::npos) refuse(text);
            name = item.substr(1, close - 1);
            const std::string_view rest = trim(item.substr(close + 1));
            if (text::equalNoCase(rest, "desc"))
                key.desc = true;
            else if (!rest.empty() && !text::equalNoCase(rest, "asc"))
                refuse(text);
            key.field = resolve(name);
        } else {
            key.field = resolve(item);
            if (key.field < 0) {
                if (!splitDirection(item, name, key.desc)) {
                    name = item;
                } else if (!name.empty() && name.front() == '[' && name.back() == ']') {
                    name = name.substr(1, name.size() - 2);
                }
                if (name.empty()) refuse(text);
                key.field = resolve(name);
            } else {
                name = item;
            }
        }
        if (text::equalNoCase(name, "asc") || text::equalNoCase(name, "desc")) refuse(text);
        if (key.field < 0) unknown(name);
        keys.push_back(key);
        if (end >= text.size()) break;
        start = end + 1;
    }
    return keys;
}

void sortRows(std::vector<uint32_t>& rows, const std::vector<SortKey>& keys,
              const std::function<CellView(uint32_t, int)>& cell, const std::function<ValueClass(int)>& classOf) {
    if (keys.empty() || rows.size() < 2) return;
    const std::size_t n = rows.size();
    std::deque<std::string> owned;  // folded texts that differ from the stored bytes
    std::vector<KeyColumn> cols(keys.size());
    struct Entry {
        uint64_t k0;
        uint32_t pos;
    };
    std::vector<Entry> entries(n);

    for (std::size_t k = 0; k < keys.size(); ++k) {
        KeyColumn& kc = cols[k];
        const ValueClass cls = classOf(keys[k].field);
        kc.isText = cls == ValueClass::Text || cls == ValueClass::Memo || cls == ValueClass::Other;
        kc.desc = keys[k].desc;
        kc.null.resize(n);
        if (kc.isText)
            kc.str.resize(n);
        else
            kc.num.resize(n);
        std::string buf;
        for (std::size_t i = 0; i < n; ++i) {
            const CellView c = cell(rows[i], keys[k].field);
            uint64_t img = 0;
            if (kc.isText) {
                if (c.tag == CellTag::Null) {
                    kc.null[i] = 1;
                } else {
                    std::string_view s = textOf(c, buf);
                    // ASCII texts are compared as they are stored (case ignored on the fly);
                    // others are folded once here.
                    if (!text::isAscii(s))
                        s = owned.emplace_back(text::fold(s));
                    else if (c.tag != CellTag::Text)
                        s = owned.emplace_back(s);
                    kc.str[i] = s;
                    img = textPrefix(s);
                }
            } else {
                const auto v = numericOf(c, cls);
                if (!v) {
                    kc.null[i] = 1;
                } else {
                    kc.num[i] = *v;
                    img = numberImage(*v);
                }
            }
            if (k == 0) entries[i] = Entry{kc.desc ? ~img : img, static_cast<uint32_t>(i)};
        }
    }

    auto fullCompare = [&](uint32_t a, uint32_t b) -> int {
        for (const KeyColumn& kc : cols) {
            int r = 0;
            if (kc.null[a] || kc.null[b]) {
                r = static_cast<int>(kc.null[b]) - static_cast<int>(kc.null[a]);
            } else if (kc.isText) {
                r = compareLowered(kc.str[a], kc.str[b]);
            } else {
                r = kc.num[a] < kc.num[b] ? -1 : (kc.num[a] > kc.num[b] ? 1 : 0);
            }
            if (r != 0) return kc.desc ? -r : r;
        }
        return 0;
    };
    std::sort(entries.begin(), entries.end(), [&](const Entry& x, const Entry& y) {
        if (x.k0 != y.k0) return x.k0 < y.k0;
        const int r = fullCompare(x.pos, y.pos);
        if (r != 0) return r < 0;
        return x.pos < y.pos;
    });
    std::vector<uint32_t> sorted(n);
    for (std::size_t i = 0; i < n; ++i) sorted[i] = rows[entries[i].pos];
    rows.swap(sorted);
}

}  // namespace hist::ado
