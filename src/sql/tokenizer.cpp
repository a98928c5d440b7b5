#include "sql/tokenizer.hpp"

#include <string>

#include "sql/catalog.hpp"

namespace hist::sql {

namespace {
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWordStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool isWordChar(char c) { return isWordStart(c) || isDigit(c); }
bool isPunct(char c) {
    switch (c) {
        case '=': case '<': case '>': case '(': case ')': case ',': case '.': case ';':
        case '*': case '/': case '+': case '-': case '&': return true;
        default: return false;
    }
}
}  // namespace

bool Token::isWord(std::string_view kw) const { return kind == Tok::Word && sameName(text, kw); }

std::vector<Token> tokenize(std::string_view s) {
    std::vector<Token> out;
    tokenize(s, out);
    return out;
}

void tokenize(std::string_view s, std::vector<Token>& out) {
    out.clear();
    out.reserve(s.size() / 3 + 4);
    size_t i = 0, n = s.size();
    while (i < n) {
        size_t start = i;
        char c = s[i];
        Tok kind;
        bool unterminated = false;
        if (isBlank(c)) {
            while (i < n && isBlank(s[i])) ++i;
            kind = Tok::Blank;
        } else if (isWordStart(c)) {
            while (i < n && isWordChar(s[i])) ++i;
            kind = Tok::Word;
        } else if (isDigit(c) || (c == '.' && i + 1 < n && isDigit(s[i + 1]) &&
                                  (out.empty() || (out.back().kind != Tok::Word && out.back().kind != Tok::Bracket)))) {
            while (i < n && isDigit(s[i])) ++i;
            if (i < n && s[i] == '.') {
                ++i;
                while (i < n && isDigit(s[i])) ++i;
            }
            if (i < n && (s[i] == 'e' || s[i] == 'E')) {
                size_t j = i + 1;
                if (j < n && (s[j] == '+' || s[j] == '-')) ++j;
                if (j < n && isDigit(s[j])) {
                    i = j;
                    while (i < n && isDigit(s[i])) ++i;
                }
            }
            kind = Tok::Number;
        } else if (c == '\'') {
            ++i;
            kind = Tok::String;
            unterminated = true;
            while (i < n) {
                if (s[i] == '\'') {
                    if (i + 1 < n && s[i + 1] == '\'') {
                        i += 2;
                        continue;
                    }
                    ++i;
                    unterminated = false;
                    break;
                }
                ++i;
            }
        } else if (c == '[') {
            size_t close = s.find(']', i + 1);
            kind = Tok::Bracket;
            if (close == std::string_view::npos) {
                i = n;
                unterminated = true;
            } else {
                i = close + 1;
            }
        } else if (c == '#') {
            size_t close = s.find('#', i + 1);
            size_t nl = s.find_first_of("\n'", i + 1);
            if (close == std::string_view::npos || (nl != std::string_view::npos && nl < close)) {
                ++i;
                kind = Tok::Other;
            } else {
                i = close + 1;
                kind = Tok::Date;
            }
        } else {
            kind = Tok::Punct;
            std::string_view two = s.substr(i, 2);
            if (two == "<>" || two == "<=" || two == ">=" || two == "!=") {
                i += 2;
            } else if (isPunct(c)) {
                ++i;
            } else {
                ++i;
                kind = Tok::Other;
            }
        }
        Token t{kind, s.substr(start, i - start), start, unterminated};
        out.push_back(t);
    }
}

std::string unquote(const Token& t) {
    std::string_view v = t.text;
    switch (t.kind) {
        case Tok::String: {
            v.remove_prefix(1);
            if (!t.unterminated && !v.empty()) v.remove_suffix(1);
            std::string r;
            r.reserve(v.size());
            for (size_t i = 0; i < v.size(); ++i) {
                r += v[i];
                if (v[i] == '\'' && i + 1 < v.size() && v[i + 1] == '\'') ++i;
            }
            return r;
        }
        case Tok::Bracket:
        case Tok::Date:
            v.remove_prefix(1);
            if (!t.unterminated && !v.empty()) v.remove_suffix(1);
            return std::string(v);
        default: return std::string(v);
    }
}

}  // namespace hist::sql
