#include "ado/sort.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <deque>
#include <string>
#include <unordered_map>

#include "ado/text_fold.hpp"
#include "platform/error.hpp"
#include "sql/textmatch.hpp"

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
            sql::equalNoCase(item.substr(item.size() - kw.size()), kw)) {
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

// One sort key over the rows: a number per row (texts as their rank), and Nulls.
struct KeyColumn {
    bool desc = false;
    std::vector<uint8_t> null;
    std::vector<double> num;
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
            if (sql::equalNoCase(rest, "desc"))
                key.desc = true;
            else if (!rest.empty() && !sql::equalNoCase(rest, "asc"))
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
        if (sql::equalNoCase(name, "asc") || sql::equalNoCase(name, "desc")) refuse(text);
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
    std::vector<KeyColumn> cols(keys.size());
    struct Entry {
        uint64_t k0;
        uint32_t pos;
    };
    std::vector<Entry> entries(n);

    for (std::size_t k = 0; k < keys.size(); ++k) {
        KeyColumn& kc = cols[k];
        const ValueClass cls = classOf(keys[k].field);
        const bool isText = cls == ValueClass::Text || cls == ValueClass::Memo || cls == ValueClass::Other;
        kc.desc = keys[k].desc;
        kc.null.assign(n, 0);
        kc.num.resize(n);
        if (isText) {
            // Texts become their rank among the distinct values (case ignored), so
            // the sort itself compares numbers. Distinct texts are found by their
            // bytes first, and only those are folded: a column repeats its values.
            std::deque<std::string> owned;  // texts that are not kept as stored, folded texts
            std::vector<std::string_view> views(n);
            std::string buf;
            for (std::size_t i = 0; i < n; ++i) {
                const CellView c = cell(rows[i], keys[k].field);
                if (c.tag == CellTag::Null) {
                    kc.null[i] = 1;
                    continue;
                }
                views[i] = c.tag == CellTag::Text ? c.s : std::string_view(owned.emplace_back(textOf(c, buf)));
            }
            std::unordered_map<std::string_view, uint32_t> ids;
            ids.reserve(std::min<std::size_t>(n, 1u << 16));
            std::vector<std::string_view> distinct;
            std::vector<uint32_t> id(n);
            for (std::size_t i = 0; i < n; ++i) {
                if (kc.null[i]) continue;
                auto [it, fresh] = ids.try_emplace(views[i], static_cast<uint32_t>(distinct.size()));
                if (fresh) distinct.push_back(views[i]);
                id[i] = it->second;
            }
            for (std::string_view& d : distinct)
                if (!text::isAscii(d)) d = owned.emplace_back(text::fold(d));
            std::vector<uint32_t> byText(distinct.size());
            for (uint32_t d = 0; d < byText.size(); ++d) byText[d] = d;
            std::sort(byText.begin(), byText.end(),
                      [&](uint32_t x, uint32_t y) { return compareLowered(distinct[x], distinct[y]) < 0; });
            std::vector<uint32_t> rankOf(distinct.size());
            uint32_t rank = 0;
            for (std::size_t r = 0; r < byText.size(); ++r) {
                if (r > 0 && compareLowered(distinct[byText[r - 1]], distinct[byText[r]]) != 0) ++rank;
                rankOf[byText[r]] = rank;  // texts equal but for case share a rank
            }
            for (std::size_t i = 0; i < n; ++i)
                if (!kc.null[i]) kc.num[i] = static_cast<double>(rankOf[id[i]]);
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                const auto v = numericOf(cell(rows[i], keys[k].field), cls);
                if (v)
                    kc.num[i] = *v;
                else
                    kc.null[i] = 1;
            }
        }
        if (k == 0) {
            for (std::size_t i = 0; i < n; ++i) {
                const uint64_t img = kc.null[i] ? 0 : numberImage(kc.num[i]);
                entries[i] = Entry{kc.desc ? ~img : img, static_cast<uint32_t>(i)};
            }
        }
    }

    auto fullCompare = [&](uint32_t a, uint32_t b) -> int {
        for (std::size_t k = 1; k < cols.size(); ++k) {  // the first key is all in k0
            const KeyColumn& kc = cols[k];
            int r = 0;
            if (kc.null[a] || kc.null[b])
                r = static_cast<int>(kc.null[b]) - static_cast<int>(kc.null[a]);
            else
                r = kc.num[a] < kc.num[b] ? -1 : (kc.num[a] > kc.num[b] ? 1 : 0);
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
