#include "sql/translator.hpp"

#include <cmath>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "sql/literals.hpp"
#include "sql/tokenizer.hpp"

namespace hist::sql {

namespace {

const char* const kValueCount = "Number of query values and destination fields are not the same.";
const char* const kMismatch = "Data type mismatch in criteria expression.";
const char* const kInvalidStatement =
    "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";

[[noreturn]] void syntax(const std::string& description) { throw Error(err::SqlSyntax, err::SrcSql, description); }
[[noreturn]] void mismatch() { throw Error(err::SqlTypeMismatch, err::SrcSql, kMismatch); }
[[noreturn]] void denied(const std::string& why) {
    throw Error(err::SqlPermission, err::SrcSql, "Permission denied: " + why + ".");
}

std::string_view identText(const Token& t) {
    if (t.kind == Tok::Bracket && t.text.size() >= 2) return t.text.substr(1, t.text.size() - 2);
    return t.text;
}
bool isIdent(const Token& t) { return t.kind == Tok::Word || t.kind == Tok::Bracket; }

std::string dateLiteral(double serial) {
    std::string out;
    out.reserve(21);
    out.push_back('\'');
    out.append(rt::isoText(serial));
    out.push_back('\'');
    return out;
}

double numberValue(const Token& t, bool negate) {
    double v = std::strtod(std::string(t.text).c_str(), nullptr);
    return negate ? -v : v;
}

// What replaces one token. Analysis decides it from the statement's shape alone
// (keywords, names, the kinds of the literals); the literal's own text is read
// only when the edit is applied. So one analysis serves every statement of the
// same shape, whatever its values.
enum class Act : unsigned char {
    Text,          // the fixed text
    NumberTo,      // a number into a yes/no or date column (col; negate for a leading minus)
    StringTo,      // a quoted value into a typed column (col)
    HashDate,      // #...# as an ISO date
    Operand,       // a quoted number in arithmetic, read by the regional settings
    OperandOrText, // the same, left as text when it is no number (+ joins texts)
    DayDate,       // a day number compared with a date column (negate for a leading minus)
    CurrencyMask,  // Format's 'Currency' mask: the currency digits
    LikePattern,   // a Like pattern as the server's case-blind regular expression
    NumberAsText,  // a number compared with a text column, as text (negate for a leading minus)
};

struct Edit {
    size_t token = 0;
    Act act = Act::Text;
    bool negate = false;
    const Column* col = nullptr;
    std::string text;
};

// The edits of one statement shape, in token order.
using Plan = std::vector<Edit>;

class Translator {
public:
    Translator(std::string_view text, const std::vector<Token>& toks, StatementKind kind, Dialect dialect,
               const Catalog& cat)
        : text_(text), kind_(kind), dialect_(dialect), cat_(cat), toks_(toks), at_(toks_.size(), kNone) {
        for (size_t i = 0; i < toks_.size(); ++i)
            if (toks_[i].kind != Tok::Blank) solid_.push_back(i);
    }

    // The statement's plan, or the error the engine would give for its shape.
    Plan analyze() {
        checkTokens();
        if (solid_.empty()) syntax(kInvalidStatement);
        checkOneStatement();
        const Token& first = tok(0);
        if (first.isWord("SELECT")) {
            if (kind_ != StatementKind::Read) denied("a writing call expects INSERT, UPDATE or DELETE");
            collectSelectScope(0);
        } else if (first.isWord("INSERT") || first.isWord("UPDATE") || first.isWord("DELETE")) {
            if (kind_ != StatementKind::Write) denied("a reading call may not change the archive");
            if (first.isWord("INSERT")) insertStatement();
            else if (first.isWord("UPDATE")) updateStatement();
            else deleteStatement();
        } else {
            syntax(kInvalidStatement);
        }
        generalRules();
        if (dialect_ == Dialect::Server) serverRules();
        Plan plan;
        plan.reserve(edits_.size());
        for (size_t i = 0; i < toks_.size(); ++i)
            if (at_[i] != kNone) plan.push_back(std::move(edits_[at_[i]]));
        return plan;
    }

private:
    // ---- tokens by solid (non-blank) index ----
    size_t count() const { return solid_.size(); }
    const Token& tok(size_t s) const { return toks_[solid_[s]]; }
    void edit(size_t s, Act act, const Column* col = nullptr, bool negate = false, std::string text = {}) {
        size_t i = solid_[s];
        if (at_[i] == kNone) {
            at_[i] = edits_.size();
            edits_.emplace_back();
        }
        edits_[at_[i]] = Edit{i, act, negate, col, std::move(text)};
    }
    void replace(size_t s, std::string text) { edit(s, Act::Text, nullptr, false, std::move(text)); }
    bool replaced(size_t s) const { return at_[solid_[s]] != kNone; }
    // The solid index of the parenthesis closing the one at s.
    size_t closing(size_t s) const {
        int depth = 0;
        for (size_t k = s; k < count(); ++k) {
            if (tok(k).is("(")) ++depth;
            else if (tok(k).is(")") && --depth == 0) return k;
        }
        return count();
    }
    // The text of the statement from solid index s on, for error descriptions.
    std::string from(size_t tokenIndex) const {
        std::string_view rest = text_.substr(toks_[tokenIndex].pos);
        while (!rest.empty() && (rest.back() == ' ' || rest.back() == ';')) rest.remove_suffix(1);
        return std::string(rest);
    }

    void checkTokens() {
        for (size_t i = 0; i < toks_.size(); ++i) {
            const Token& t = toks_[i];
            if (t.kind == Tok::String && t.unterminated)
                syntax("Syntax error in string in query expression '" + from(i) + "'.");
            if (t.kind == Tok::Bracket && t.unterminated)
                syntax("Syntax error in query expression '" + from(i) + "'.");
            if (t.kind == Tok::Other) syntax("Syntax error in query expression '" + from(i) + "'.");
            if (t.is("&")) syntax("Syntax error in query expression '" + from(i) + "': the operator & is not supported.");
            // The dialect has no comments; the engine would read "--" and "/*" as one and
            // drop the rest of the statement.
            if (i + 1 < toks_.size() && toks_[i + 1].pos == t.pos + 1 &&
                ((t.is("-") && toks_[i + 1].is("-")) || (t.is("/") && toks_[i + 1].is("*"))))
                syntax("Syntax error in query expression '" + from(i) + "'.");
            // A quote inside a value closes it early: the rest of the value follows
            // the string with no blank between.
            if (t.kind == Tok::String && i + 1 < toks_.size() &&
                (toks_[i + 1].kind == Tok::Word || toks_[i + 1].kind == Tok::String || toks_[i + 1].kind == Tok::Number))
                syntax("Syntax error (missing operator) in query expression '" + from(i) + "'.");
        }
    }

    void checkOneStatement() {
        for (size_t s = 0; s < count(); ++s) {
            if (!tok(s).is(";")) continue;
            for (size_t k = s + 1; k < count(); ++k)
                if (!tok(k).is(";")) denied("only one statement is allowed per call");
        }
    }

    // ---- scope: the tables a statement reads or writes ----
    void addScope(size_t s) {
        if (s >= count() || !isIdent(tok(s))) return;
        if (const Table* t = cat_.table(identText(tok(s)))) {
            for (auto* x : scope_)
                if (x == t) return;
            scope_.push_back(t);
        }
    }
    // Tables named after FROM or JOIN from solid index s on.
    void collectSelectScope(size_t s) {
        for (size_t k = s; k + 1 < count(); ++k)
            if (tok(k).isWord("FROM") || tok(k).isWord("JOIN")) {
                size_t n = k + 1;
                while (n < count() && tok(n).is("(")) ++n;
                addScope(n);
                // Comma-joined tables: FROM A, B
                for (size_t m = n + 1; m + 1 < count() && tok(m).is(","); m += 2) addScope(m + 1);
            }
    }
    const Column* resolve(size_t s) const {
        if (!isIdent(tok(s))) return nullptr;
        std::string_view name = identText(tok(s));
        if (s >= 2 && tok(s - 1).is(".") && isIdent(tok(s - 2))) {
            if (const Table* t = cat_.table(identText(tok(s - 2)))) return t->column(name);
        }
        for (const Table* t : scope_)
            if (const Column* c = t->column(name)) return c;
        return nullptr;
    }

    // ---- statement forms ----
    // Splits [a, b) at top-level commas into item ranges.
    std::vector<std::pair<size_t, size_t>> items(size_t a, size_t b) const {
        std::vector<std::pair<size_t, size_t>> out;
        int depth = 0;
        size_t start = a;
        for (size_t k = a; k < b; ++k) {
            if (tok(k).is("(")) ++depth;
            else if (tok(k).is(")")) --depth;
            else if (depth == 0 && tok(k).is(",")) {
                out.emplace_back(start, k);
                start = k + 1;
            }
        }
        if (start < b || !out.empty()) out.emplace_back(start, b);
        return out;
    }

    // The end of a select list starting at s: the top-level FROM, or the statement's end.
    size_t selectListEnd(size_t s) const {
        int depth = 0;
        for (size_t k = s; k < count(); ++k) {
            if (tok(k).is("(")) ++depth;
            else if (tok(k).is(")")) --depth;
            else if (depth == 0 && (tok(k).isWord("FROM") || tok(k).is(";"))) return k;
            if (depth < 0) return k;
        }
        return count();
    }

    void insertStatement() {
        if (count() < 3 || !tok(1).isWord("INTO")) return;  // the engine reports the syntax
        size_t ts = 2;
        addScope(ts);
        const Table* target = cat_.table(identText(tok(ts)));
        size_t s = ts + 1;
        std::vector<const Column*> cols;
        bool listed = false;
        if (s < count() && tok(s).is("(")) {
            size_t close = closing(s);
            for (auto [a, b] : items(s + 1, close)) {
                const Column* c = (target && b == a + 1 && isIdent(tok(a))) ? target->column(identText(tok(a))) : nullptr;
                cols.push_back(c);
            }
            listed = true;
            s = close + 1;
        }
        if (s >= count()) return;
        if (tok(s).isWord("VALUES")) {
            if (s + 1 >= count() || !tok(s + 1).is("(")) return;
            size_t close = closing(s + 1);
            auto values = items(s + 2, close);
            if (!listed && target)
                for (const auto& c : target->columns) cols.push_back(&c);
            if ((listed || target) && values.size() != cols.size()) syntax(kValueCount);
            for (size_t k = 0; k < values.size() && k < cols.size(); ++k) coerce(values[k], cols[k]);
        } else if (tok(s).isWord("SELECT")) {
            collectSelectScope(s);
            size_t a = s + 1;
            if (a < count() && (tok(a).isWord("DISTINCT") || tok(a).isWord("ALL"))) ++a;
            size_t end = selectListEnd(a);
            auto values = items(a, end);
            if (!listed) {
                expandStar(ts, target, values, end);
                return;
            }
            if (values.size() != cols.size()) syntax(kValueCount);
            for (size_t k = 0; k < values.size(); ++k) coerce(values[k], cols[k]);
        }
    }

    // INSERT INTO T SELECT Q.* FROM H: the columns of H, by name, into the same names of T.
    void expandStar(size_t targetAt, const Table* target, const std::vector<std::pair<size_t, size_t>>& values,
                    size_t fromAt) {
        if (!target || values.size() != 1) return;
        auto [a, b] = values[0];
        std::string qualifier;
        const Table* source = nullptr;
        if (b == a + 1 && tok(a).is("*")) {
            if (fromAt + 1 < count()) source = cat_.table(identText(tok(fromAt + 1)));
        } else if (b == a + 3 && isIdent(tok(a)) && tok(a + 1).is(".") && tok(a + 2).is("*")) {
            qualifier = std::string(identText(tok(a)));
            source = cat_.table(qualifier);
            if (!source && fromAt + 1 < count()) source = cat_.table(identText(tok(fromAt + 1)));  // an alias
        } else {
            return;
        }
        if (!source) return;
        std::string list, select;
        for (const Column& c : source->columns) {
            const Column* t = target->column(c.name);
            if (!t)
                syntax("The INSERT INTO statement contains the following unknown field name: '" + c.name +
                       "'. Make sure you have typed the name correctly, and try the operation again.");
            list += (list.empty() ? "" : ", ") + t->name;
            select += (select.empty() ? "" : ", ") + (qualifier.empty() ? "" : qualifier + ".") + c.name;
        }
        replace(targetAt, std::string(tok(targetAt).text) + " (" + list + ")");
        replace(a, select);
        for (size_t k = a + 1; k < b; ++k) replace(k, "");
    }

    void updateStatement() {
        if (count() < 4) return;
        size_t ts = 1;
        addScope(ts);
        const Table* target = cat_.table(identText(tok(ts)));
        if (!tok(ts + 1).isWord("SET")) return;
        size_t a = ts + 2;
        size_t end = a;
        int depth = 0;
        for (; end < count(); ++end) {
            if (tok(end).is("(")) ++depth;
            else if (tok(end).is(")")) --depth;
            else if (depth == 0 && (tok(end).isWord("WHERE") || tok(end).is(";"))) break;
        }
        for (auto [x, y] : items(a, end)) {
            size_t eq = x;
            while (eq < y && !tok(eq).is("=")) ++eq;
            if (eq >= y) continue;
            size_t nameAt = eq - 1;
            // T.col = ... names the updated table: the engine wants the bare column.
            if (eq == x + 3 && tok(x + 1).is(".") && target && cat_.table(identText(tok(x))) == target) {
                replace(x, "");
                replace(x + 1, "");
            }
            const Column* col = (target && isIdent(tok(nameAt))) ? target->column(identText(tok(nameAt))) : nullptr;
            coerce({eq + 1, y}, col);
        }
    }

    void deleteStatement() {
        for (size_t k = 1; k + 1 < count(); ++k)
            if (tok(k).isWord("FROM")) {
                addScope(k + 1);
                break;
            }
    }

    // ---- literal coercion to a column's stored form ----
    void coerce(std::pair<size_t, size_t> range, const Column* col) {
        auto [a, b] = range;
        if (!col || a >= b) return;
        if (b - a >= 3 && tok(b - 2).isWord("AS")) b -= 2;  // SELECT v AS Expr1
        // A number keeps its text in a number or text column.
        bool numberChanges = col->jet == JetType::YesNo || col->jet == JetType::Date;
        if (b - a == 2 && (tok(a).is("-") || tok(a).is("+")) && tok(a + 1).kind == Tok::Number) {
            if (numberChanges) {
                replace(a, "");
                edit(a + 1, Act::NumberTo, col, tok(a).is("-"));
            }
            return;
        }
        if (b - a != 1) return;
        const Token& t = tok(a);
        if (col->isText()) return;
        switch (t.kind) {
            case Tok::Number:
                if (numberChanges) edit(a, Act::NumberTo, col);
                return;
            case Tok::String: edit(a, Act::StringTo, col); return;
            case Tok::Word:
                if (t.isWord("True") || t.isWord("False")) {
                    if (col->jet == JetType::Date) mismatch();
                    replace(a, t.isWord("True") ? "-1" : "0");
                }
                return;
            default: return;
        }
    }

    // ---- rules that apply anywhere in the statement ----
    void generalRules() {
        for (size_t s = 0; s < count(); ++s) {
            if (replaced(s)) continue;
            const Token& t = tok(s);
            switch (t.kind) {
                case Tok::Date: edit(s, Act::HashDate); break;
                case Tok::Word:
                    if ((t.isWord("True") || t.isWord("False")) && !(s > 0 && tok(s - 1).is(".")) &&
                        !(s + 1 < count() && tok(s + 1).is(".")) && !(s > 0 && tok(s - 1).isWord("AS"))) {
                        replace(s, t.isWord("True") ? "-1" : "0");
                    } else if (t.isWord("Format") && s + 1 < count() && tok(s + 1).is("(")) {
                        formatCall(s);
                    } else if (comparedWithNumber(s)) {
                        const Column* c = resolve(s);
                        if (c && c->jet == JetType::Date) dateComparison(s);
                        // The embedded engine compares a text column with a number as
                        // text (column affinity); the server has no such operator.
                        else if (c && c->isText() && dialect_ == Dialect::Server) textComparison(s);
                    }
                    break;
                case Tok::String: arithmeticOperand(s); break;
                default: break;
            }
        }
    }

    // Format(x, 'Currency'): the value rounded as the currency format rounds.
    void formatCall(size_t s) {
        size_t close = closing(s + 1);
        auto args = items(s + 2, close);
        if (args.size() != 2 || args[1].second != args[1].first + 1 || tok(args[1].first).kind != Tok::String)
            syntax("Undefined function 'Format' in expression.");
        edit(args[1].first, Act::CurrencyMask);
        if (dialect_ == Dialect::Embedded) {
            replace(s, "jet_currency");
            return;
        }
        // round((x)::numeric, digits)::double precision
        replace(s, "round");
        replace(s + 1, "((");
        replace(args[1].first - 1, ")::numeric,");
        replace(close, ")::double precision");
    }

    // ---- the server engine's spelling ----
    void serverRules() {
        for (size_t s = 0; s < count(); ++s) {
            if (replaced(s)) continue;
            const Token& t = tok(s);
            if (t.kind == Tok::Bracket) {
                replace(s, serverName(identText(t)));
            } else if (t.isWord("Like") && s > 0 && s + 1 < count() && tok(s + 1).kind == Tok::String) {
                likeOperator(s);
            }
        }
    }

    // A bracketed name as the server reads it: a plain word bare (the schema's
    // names are unquoted), anything else in double quotes.
    static std::string serverName(std::string_view name) {
        bool plain = !name.empty() && !(name[0] >= '0' && name[0] <= '9');
        for (char c : name)
            plain = plain && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_');
        if (plain) return std::string(name);
        std::string out = "\"";
        for (char c : name) {
            if (c == '"') out += '"';
            out += c;
        }
        return out + "\"";
    }

    // x [Not] Like 'p': x::text [!]~* 'regex'. The operand is cast to text, so
    // number columns match as their text does.
    void likeOperator(size_t s) {
        size_t left = s - 1;
        bool negated = false;
        if (tok(left).isWord("Not") && left > 0) {
            negated = true;
            replace(left, "");
            --left;
        }
        if (!(isIdent(tok(left)) || tok(left).is(")")) || replaced(left)) return;
        replace(left, std::string(tok(left).text) + "::text");
        replace(s, negated ? "!~*" : "~*");
        edit(s + 1, Act::LikePattern);
    }

    // A quoted number as an operand of * / + -: read by the regional settings.
    void arithmeticOperand(size_t s) {
        auto isArith = [](const Token& t) { return t.is("*") || t.is("/") || t.is("+") || t.is("-"); };
        bool before = s > 0 && isArith(tok(s - 1));
        bool after = s + 1 < count() && isArith(tok(s + 1));
        if (!before && !after) return;
        bool plusOnly = (!before || tok(s - 1).is("+")) && (!after || tok(s + 1).is("+"));
        edit(s, plusOnly ? Act::OperandOrText : Act::Operand);
    }

    // Whether the name at s is compared with a bare number (looked at before the
    // name is resolved, which costs more).
    bool comparedWithNumber(size_t s) const {
        size_t k = s + 1;
        while (k < count() && tok(k).is(")")) ++k;
        if (k + 1 >= count()) return false;
        const Token& op = tok(k);
        if (op.isWord("Not")) return k + 2 < count() && tok(k + 1).isWord("Between");
        if (!(op.is("=") || op.is("<>") || op.is("<") || op.is(">") || op.is("<=") || op.is(">=") ||
              op.isWord("Between")))
            return false;
        const Token& v = tok(k + 1);
        return v.kind == Tok::Number || ((v.is("-") || v.is("+")) && k + 2 < count() && tok(k + 2).kind == Tok::Number);
    }

    // Codigo = 12 on a text column: the number as text.
    void textComparison(size_t s) {
        size_t k = s + 1;
        while (k < count() && tok(k).is(")")) ++k;
        if (k + 1 >= count() || tok(k).isWord("Between") || tok(k).isWord("Not")) return;
        size_t n = k + 1;
        bool neg = false;
        if (tok(n).is("-") || tok(n).is("+")) {
            neg = tok(n).is("-");
            replace(n, "");
            ++n;
        }
        if (n < count() && tok(n).kind == Tok::Number && !replaced(n)) edit(n, Act::NumberAsText, nullptr, neg);
    }

    // (Fecha) Between 37653 And 37660, Fecha >= 37653: day numbers become dates.
    void dateComparison(size_t s) {
        size_t k = s + 1;
        while (k < count() && tok(k).is(")")) ++k;
        if (k >= count()) return;
        auto dayAt = [&](size_t at) -> size_t {  // converts [sign] number at `at`; returns the next index
            if (at >= count()) return at;
            size_t n = at;
            bool neg = false;
            if (tok(n).is("-") || tok(n).is("+")) {
                neg = tok(n).is("-");
                ++n;
            }
            if (n >= count() || tok(n).kind != Tok::Number || replaced(n)) return at;
            if (n != at) replace(at, "");
            edit(n, Act::DayDate, nullptr, neg);
            return n + 1;
        };
        const Token& op = tok(k);
        if (op.is("=") || op.is("<>") || op.is("<") || op.is(">") || op.is("<=") || op.is(">=")) {
            dayAt(k + 1);
            return;
        }
        if (op.isWord("Not") && k + 1 < count()) ++k;
        if (tok(k).isWord("Between")) {
            size_t n = dayAt(k + 1);
            if (n < count() && tok(n).isWord("And")) dayAt(n + 1);
        }
    }

    static constexpr size_t kNone = static_cast<size_t>(-1);
    std::string_view text_;
    StatementKind kind_;
    Dialect dialect_;
    const Catalog& cat_;
    const std::vector<Token>& toks_;
    std::vector<size_t> solid_;
    std::vector<size_t> at_;  // token -> its edit in edits_, or kNone
    std::vector<Edit> edits_;
    std::vector<const Table*> scope_;
};

// ---- applying a plan: the only place a literal's text is read ----

std::string stringTo(const std::string& s, const Column& col, const Regional& r) {
    switch (col.jet) {
        case JetType::Long:
        case JetType::Integer:
        case JetType::Double: {
            auto v = rt::parseNumber(s, r);
            if (!v) mismatch();
            return numberLiteral(*v);
        }
        case JetType::YesNo: {
            if (auto v = rt::parseNumber(s, r)) return *v != 0 ? "-1" : "0";
            for (const char* w : {"True", "Yes", "On"})
                if (sameName(s, w)) return "-1";
            for (const char* w : {"False", "No", "Off"})
                if (sameName(s, w)) return "0";
            mismatch();
        }
        case JetType::Date: {
            auto d = rt::parseDate(s, r);
            if (!d) d = rt::parseIso(s);
            if (!d) mismatch();
            return dateLiteral(*d);
        }
        default: return "'" + s + "'";
    }
}

// The desktop engine's Like pattern as an anchored regular expression: * and %
// any run, ? and _ one character, # a digit, [..] and [!..] sets (a wildcard
// inside brackets is literal); every other character stands for itself.
std::string likeRegex(const std::string& pattern) {
    std::string re = "'^";
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '*' || c == '%') {
            re += ".*";
        } else if (c == '?' || c == '_') {
            re += '.';
        } else if (c == '#') {
            re += "[0-9]";
        } else if (c == '[' && pattern.find(']', i + 1) != std::string::npos) {
            size_t close = pattern.find(']', i + 1);
            std::string_view set(pattern.data() + i + 1, close - i - 1);
            re += '[';
            if (!set.empty() && set[0] == '!') {
                re += '^';
                set.remove_prefix(1);
            }
            for (char x : set) {
                if (x == '\\' || x == '^' || x == '[' || x == ']') re += '\\';
                if (x == '\'') re += '\'';
                re += x;
            }
            re += ']';
            i = close;
        } else {
            if (std::string_view("\\.^$|()[]{}+*?").find(c) != std::string_view::npos) re += '\\';
            if (c == '\'') re += '\'';
            re += c;
        }
    }
    return re + "$'";
}

void emit(std::string& out, const Edit& e, const Token& t, const Regional& r) {
    switch (e.act) {
        case Act::LikePattern: out += likeRegex(unquote(t)); return;
        case Act::NumberAsText: out += (e.negate ? "'-" : "'") + std::string(t.text) + "'"; return;
        case Act::Text: out += e.text; return;
        case Act::NumberTo: {
            double v = numberValue(t, e.negate);
            out += e.col->jet == JetType::YesNo ? (v != 0 ? "-1" : "0") : dateLiteral(v);
            return;
        }
        case Act::StringTo: out += stringTo(unquote(t), *e.col, r); return;
        case Act::HashDate: {
            auto d = readHashDate(unquote(t));
            if (!d) syntax("Syntax error in date in query expression '" + std::string(t.text) + "'.");
            out += dateLiteral(*d);
            return;
        }
        case Act::Operand:
        case Act::OperandOrText: {
            auto v = rt::parseNumber(unquote(t), r);
            if (v) out += numberLiteral(*v);
            else if (e.act == Act::OperandOrText) out += t.text;  // + between texts joins them
            else mismatch();
            return;
        }
        case Act::DayDate: out += dateLiteral(numberValue(t, e.negate)); return;
        case Act::CurrencyMask: {
            std::string mask = unquote(t);
            if (!sameName(mask, "Currency"))
                syntax("Undefined function 'Format' with mask '" + mask + "' in expression.");
            out += std::to_string(r.currencyDigits);
            return;
        }
    }
}

std::string apply(std::string_view text, const std::vector<Token>& toks, const Plan& plan, const Regional& r) {
    if (plan.empty()) return std::string(text);
    std::string out;
    out.reserve(text.size() + 16 * plan.size());
    size_t copied = 0;
    for (const Edit& e : plan) {
        const Token& t = toks[e.token];
        out.append(text.substr(copied, t.pos - copied));
        emit(out, e, t, r);
        copied = t.pos + t.text.size();
    }
    out.append(text.substr(copied));
    return out;
}

// ---- plans by statement shape ----
// The classes compose a few hundred statement forms and send each many times
// with other values (a batch save inserts every line with the same text but
// its values), so the analysis of a shape is kept and reused. The shape is the
// statement with each string, number and date literal reduced to a marker for
// its kind; everything else (names, keywords, blanks) is kept as written.
// One cache per thread, so no lock; bounded in entries and statement size.

constexpr size_t kMaxPlans = 512;
constexpr size_t kMaxShapeText = 8192;

struct PlanCache {
    std::vector<Token> toks;
    std::string key;
    std::unordered_map<std::string, Plan> plans;
};

// The statement's shape into `key`; false when it has none that can be reused
// (an unterminated literal, an unreadable character, or a marker byte of its own).
bool shapeOf(const std::vector<Token>& toks, StatementKind kind, Dialect dialect, std::string& key) {
    static constexpr std::string_view kMarkers("\x01\x02\x03", 3);
    key.clear();
    key.push_back(kind == StatementKind::Read ? 'R' : 'W');
    key.push_back(dialect == Dialect::Embedded ? 'E' : 'S');
    for (const Token& t : toks) {
        switch (t.kind) {
            case Tok::String:
                if (t.unterminated) return false;
                key.push_back('\x01');
                break;
            case Tok::Number: key.push_back('\x02'); break;
            case Tok::Date: key.push_back('\x03'); break;
            case Tok::Other: return false;
            case Tok::Bracket:
                if (t.unterminated || t.text.find_first_of(kMarkers) != std::string_view::npos) return false;
                key.append(t.text);
                break;
            default: key.append(t.text); break;
        }
    }
    return true;
}

}  // namespace

std::string translate(std::string_view composed, StatementKind kind, const Regional& regional, const Catalog& cat) {
    return translate(composed, kind, Dialect::Embedded, regional, cat);
}

std::string translate(std::string_view composed, StatementKind kind, Dialect dialect, const Regional& regional,
                      const Catalog& cat) {
    // Plans hold pointers into the catalog, so only the library's own catalog,
    // which lives as long as the program, has its plans kept.
    thread_local PlanCache cache;
    tokenize(composed, cache.toks);
    bool keep = &cat == &catalog() && composed.size() <= kMaxShapeText && shapeOf(cache.toks, kind, dialect, cache.key);
    if (keep) {
        if (auto it = cache.plans.find(cache.key); it != cache.plans.end())
            return apply(composed, cache.toks, it->second, regional);
    }
    Plan plan = Translator(composed, cache.toks, kind, dialect, cat).analyze();
    if (!keep) return apply(composed, cache.toks, plan, regional);
    if (cache.plans.size() >= kMaxPlans) cache.plans.clear();
    auto it = cache.plans.emplace(cache.key, std::move(plan)).first;
    return apply(composed, cache.toks, it->second, regional);
}

}  // namespace hist::sql
