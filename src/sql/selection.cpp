#include "sql/selection.hpp"

namespace hist::sql {

namespace {

bool isClauseEnd(const Token& t) {
    return t.isWord("WHERE") || t.isWord("GROUP") || t.isWord("ORDER") || t.isWord("HAVING") || t.isWord("UNION") ||
           t.isWord("INTERSECT") || t.isWord("EXCEPT") || t.isWord("LIMIT") || t.is(";");
}

bool isJoinWord(const Token& t) {
    static const char* const kw[] = {"AS",    "INNER", "LEFT", "RIGHT", "JOIN",    "ON",   "OUTER", "CROSS",
                                     "NATURAL", "WHERE", "GROUP", "ORDER", "HAVING", "UNION", "FULL", "USING"};
    for (const char* k : kw)
        if (t.isWord(k)) return true;
    return false;
}

bool isAggregate(const Token& t) {
    static const char* const fn[] = {"MAX", "MIN", "SUM", "COUNT", "AVG", "FIRST", "LAST", "TOTAL", "GROUP_CONCAT",
                                     "STDEV", "VAR"};
    for (const char* f : fn)
        if (t.isWord(f)) return true;
    return false;
}

// Index of the next token that is not a blank, or toks.size().
size_t nextSolid(const std::vector<Token>& toks, size_t i) {
    while (i < toks.size() && toks[i].kind == Tok::Blank) ++i;
    return i;
}

std::string_view identText(const Token& t) {
    if (t.kind == Tok::Bracket && t.text.size() >= 2) return t.text.substr(1, t.text.size() - 2);
    return t.text;
}

}  // namespace

const SelectionSource* SelectionShape::source(std::string_view table) const {
    for (const auto& s : sources)
        if (s.table && sameName(s.table->name, table)) return &s;
    return nullptr;
}

SelectionShape analyzeSelection(std::string_view sql, const Catalog& cat) {
    SelectionShape shape;
    auto toks = tokenize(sql);
    size_t i = nextSolid(toks, 0);
    if (i == toks.size() || !toks[i].isWord("SELECT")) return shape;
    shape.isSelect = true;
    bool simple = true;
    size_t j = nextSolid(toks, i + 1);
    if (j < toks.size() && (toks[j].isWord("DISTINCT") || toks[j].isWord("DISTINCTROW") || toks[j].isWord("TOP"))) {
        simple = false;
    }
    // Select list up to the top-level FROM.
    int depth = 0;
    size_t itemStart = i + 1;
    size_t k = i + 1;
    auto pushItem = [&](size_t from, size_t to) {
        size_t a = nextSolid(toks, from);
        if (a >= to) return;
        size_t b = to;
        while (b > a && toks[b - 1].kind == Tok::Blank) --b;
        size_t start = toks[a].pos, end = toks[b - 1].pos + toks[b - 1].text.size();
        shape.items.push_back(sql.substr(start, end - start));
    };
    for (; k < toks.size(); ++k) {
        const Token& t = toks[k];
        if (t.is("(")) ++depth;
        else if (t.is(")")) --depth;
        else if (depth == 0 && t.is(",")) {
            pushItem(itemStart, k);
            itemStart = k + 1;
        } else if (depth == 0 && t.isWord("FROM")) {
            break;
        }
        if (isAggregate(t)) {
            size_t n = nextSolid(toks, k + 1);
            if (n < toks.size() && toks[n].is("(")) simple = false;
        }
        if (t.is("*")) {
            size_t p = k;
            while (p > 0 && toks[p - 1].kind == Tok::Blank) --p;
            if (p == 0 || toks[p - 1].is(",") || toks[p - 1].is(".") || toks[p - 1].isWord("SELECT") ||
                toks[p - 1].isWord("DISTINCT"))
                shape.hasStar = true;
        }
    }
    pushItem(itemStart, k);
    if (k < toks.size()) shape.fromPos = toks[k].pos;
    // FROM clause: the catalog tables and their qualifiers.
    depth = 0;
    for (size_t m = k + 1; m < toks.size(); ++m) {
        const Token& t = toks[m];
        if (t.is("(")) ++depth;
        else if (t.is(")")) --depth;
        if (depth <= 0 && isClauseEnd(t)) break;
        if (t.kind != Tok::Word && t.kind != Tok::Bracket) continue;
        if (m > 0 && toks[m - 1].is(".")) continue;
        const Table* tab = cat.table(identText(t));
        if (!tab) continue;
        size_t n = nextSolid(toks, m + 1);
        if (n < toks.size() && toks[n].is(".")) continue;  // a qualified column in an ON clause
        std::string qualifier(identText(t));
        if (n < toks.size() && toks[n].isWord("AS")) n = nextSolid(toks, n + 1);
        if (n < toks.size() && (toks[n].kind == Tok::Word || toks[n].kind == Tok::Bracket) && !isJoinWord(toks[n]))
            qualifier = std::string(identText(toks[n]));
        else if (n < toks.size() && toks[n].kind == Tok::String)
            qualifier.clear();  // a quoted alias: not something to qualify by
        SelectionSource* existing = nullptr;
        for (auto& s : shape.sources)
            if (s.table == tab) existing = &s;
        if (existing) {
            ++existing->occurrences;
        } else {
            shape.sources.push_back({tab, qualifier, 1});
        }
    }
    // Whole statement: grouping and compounds at the top level.
    depth = 0;
    for (const Token& t : toks) {
        if (t.is("(")) ++depth;
        else if (t.is(")")) --depth;
        else if (depth == 0 && (t.isWord("GROUP") || t.isWord("UNION") || t.isWord("INTERSECT") ||
                                t.isWord("EXCEPT") || t.isWord("HAVING")))
            simple = false;
    }
    shape.rowPerBaseRow = simple && !shape.sources.empty();
    return shape;
}

const Column* SelectionShape::itemSourceColumn(size_t item, bool* isCount) const {
    if (isCount) *isCount = false;
    if (item >= items.size()) return nullptr;
    auto toks = tokenize(items[item]);
    for (size_t i = 0; i < toks.size(); ++i) {
        const Token& t = toks[i];
        if (t.isWord("AS")) break;
        if (t.kind != Tok::Word && t.kind != Tok::Bracket) continue;
        size_t n = nextSolid(toks, i + 1);
        if (n < toks.size() && toks[n].is("(")) {
            if (t.isWord("COUNT") && isCount) *isCount = true;
            continue;
        }
        if (n < toks.size() && toks[n].is(".")) {  // T.col
            size_t c = nextSolid(toks, n + 1);
            if (c >= toks.size()) return nullptr;
            std::string_view q = identText(t);
            for (const auto& s : sources)
                if (s.table && (sameName(s.qualifier, q) || sameName(s.table->name, q)))
                    if (const Column* col = s.table->column(identText(toks[c]))) return col;
            i = c;
            continue;
        }
        for (const auto& s : sources)
            if (s.table)
                if (const Column* col = s.table->column(identText(t))) return col;
    }
    return nullptr;
}

}  // namespace hist::sql
