#include "sql/textmatch.hpp"

#include "platform/text.hpp"

#include <vector>

namespace hist::sql {

namespace {

using text::nextCodePoint;

char32_t fold(char32_t c) { return text::foldCodePoint(c); }

struct Element {
    enum Kind : unsigned char { Literal, AnyRun, One, Digit, Set } kind;
    bool negated = false;
    char32_t c = 0;
    // For a set: pairs of inclusive ranges, folded.
    std::vector<std::pair<char32_t, char32_t>> ranges;
};

bool matches(const Element& e, char32_t t) {
    switch (e.kind) {
        case Element::Literal: return e.c == t;
        case Element::One: return true;
        case Element::Digit: return t >= '0' && t <= '9';
        case Element::Set: {
            bool in = false;
            for (auto& [lo, hi] : e.ranges)
                if (t >= lo && t <= hi) in = true;
            return in != e.negated;
        }
        case Element::AnyRun: return false;
    }
    return false;
}

void compile(std::string_view p, char32_t escape, std::vector<Element>& out) {
    out.clear();
    size_t i = 0;
    while (i < p.size()) {
        char32_t c = nextCodePoint(p, i);
        if (escape && c == escape && i < p.size()) {
            out.push_back({Element::Literal, false, fold(nextCodePoint(p, i)), {}});
            continue;
        }
        switch (c) {
            case '*':
            case '%':
                if (out.empty() || out.back().kind != Element::AnyRun) out.push_back({Element::AnyRun, false, 0, {}});
                continue;
            case '?':
            case '_': out.push_back({Element::One, false, 0, {}}); continue;
            case '#': out.push_back({Element::Digit, false, 0, {}}); continue;
            case '[': {
                size_t close = p.find(']', i);
                if (close == std::string_view::npos) break;  // a lone '[' is literal
                Element e{Element::Set, false, 0, {}};
                size_t j = i;
                if (j < close && p[j] == '!') {
                    e.negated = true;
                    ++j;
                }
                std::vector<char32_t> cps;
                while (j < close) cps.push_back(fold(nextCodePoint(p, j)));
                for (size_t k = 0; k < cps.size(); ++k) {
                    if (k + 2 < cps.size() && cps[k + 1] == '-') {
                        e.ranges.emplace_back(cps[k], cps[k + 2]);
                        k += 2;
                    } else {
                        e.ranges.emplace_back(cps[k], cps[k]);
                    }
                }
                i = close + 1;
                out.push_back(std::move(e));
                continue;
            }
            default: break;
        }
        out.push_back({Element::Literal, false, fold(c), {}});
    }
}

}  // namespace

int compareNoCase(std::string_view a, std::string_view b) {
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        unsigned char ca = static_cast<unsigned char>(a[i]), cb = static_cast<unsigned char>(b[j]);
        char32_t x, y;
        if (ca < 0x80 && cb < 0x80) {
            x = fold(ca);
            y = fold(cb);
            ++i;
            ++j;
        } else {
            x = fold(nextCodePoint(a, i));
            y = fold(nextCodePoint(b, j));
        }
        if (x != y) return x < y ? -1 : 1;
    }
    if (i < a.size()) return 1;
    if (j < b.size()) return -1;
    return 0;
}

bool likeMatch(std::string_view text, std::string_view pattern, char32_t escape) {
    thread_local std::vector<Element> pat;
    thread_local std::vector<char32_t> txt;
    compile(pattern, escape, pat);
    txt.clear();
    for (size_t i = 0; i < text.size();) txt.push_back(fold(nextCodePoint(text, i)));

    size_t ti = 0, pi = 0, n = txt.size(), m = pat.size();
    size_t starP = SIZE_MAX, starT = 0;
    while (ti < n) {
        if (pi < m && pat[pi].kind == Element::AnyRun) {
            starP = pi++;
            starT = ti;
        } else if (pi < m && matches(pat[pi], txt[ti])) {
            ++ti;
            ++pi;
        } else if (starP != SIZE_MAX) {
            pi = starP + 1;
            ti = ++starT;
        } else {
            return false;
        }
    }
    while (pi < m && pat[pi].kind == Element::AnyRun) ++pi;
    return pi == m;
}

}  // namespace hist::sql
