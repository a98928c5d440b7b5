#include "sql/translator.hpp"

#include <cmath>
#include <optional>
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

std::string dateLiteral(double serial) { return "'" + rt::isoText(serial) + "'"; }

class Translator {
public:
    Translator(std::string_view text, StatementKind kind, const Regional& r, const Catalog& cat)
        : text_(text), kind_(kind), r_(r), cat_(cat), toks_(tokenize(text)), repl_(toks_.size()) {
        for (size_t i = 0; i < toks_.size(); ++i)
            if (toks_[i].kind != Tok::Blank) solid_.push_back(i);
    }

    std::string run() {
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
        if (!changed_) return std::string(text_);
        std::string out;
        out.reserve(text_.size() + 64);
        for (size_t i = 0; i < toks_.size(); ++i) {
            if (repl_[i]) out += *repl_[i];
            else out.append(toks_[i].text);
        }
        return out;
    }

private:
    // ---- tokens by solid (non-blank) index ----
    size_t count() const { return solid_.size(); }
    const Token& tok(size_t s) const { return toks_[solid_[s]]; }
    void replace(size_t s, std::string text) {
        repl_[solid_[s]] = std::move(text);
        changed_ = true;
    }
    bool replaced(size_t s) const { return repl_[solid_[s]].has_value(); }
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
        if (b - a == 2 && (tok(a).is("-") || tok(a).is("+")) && tok(a + 1).kind == Tok::Number) {
            double v = std::strtod(std::string(tok(a + 1).text).c_str(), nullptr);
            if (tok(a).is("-")) v = -v;
            if (std::optional<std::string> lit = numberTo(v, *col)) {
                replace(a, "");
                replace(a + 1, *lit);
            }
            return;
        }
        if (b - a != 1) return;
        const Token& t = tok(a);
        if (col->isText()) return;
        switch (t.kind) {
            case Tok::Number: {
                if (col->isNumber()) return;  // a number into a number column stays as written
                double v = std::strtod(std::string(t.text).c_str(), nullptr);
                if (auto lit = numberTo(v, *col)) replace(a, *lit);
                return;
            }
            case Tok::String: replace(a, stringTo(unquote(t), *col)); return;
            case Tok::Word:
                if (t.isWord("True") || t.isWord("False")) {
                    if (col->jet == JetType::Date) mismatch();
                    replace(a, t.isWord("True") ? "-1" : "0");
                }
                return;
            default: return;
        }
    }

    // A number assigned to a column; nothing when it stays as written.
    std::optional<std::string> numberTo(double v, const Column& col) {
        switch (col.jet) {
            case JetType::YesNo: return std::string(v != 0 ? "-1" : "0");
            case JetType::Date: return dateLiteral(v);
            default: return std::nullopt;
        }
    }

    std::string stringTo(const std::string& s, const Column& col) {
        switch (col.jet) {
            case JetType::Long:
            case JetType::Integer:
            case JetType::Double: {
                auto v = rt::parseNumber(s, r_);
                if (!v) mismatch();
                return numberLiteral(*v);
            }
            case JetType::YesNo: {
                if (auto v = rt::parseNumber(s, r_)) return *v != 0 ? "-1" : "0";
                for (const char* w : {"True", "Yes", "On"})
                    if (sameName(s, w)) return "-1";
                for (const char* w : {"False", "No", "Off"})
                    if (sameName(s, w)) return "0";
                mismatch();
            }
            case JetType::Date: {
                auto d = rt::parseDate(s, r_);
                if (!d) d = rt::parseIso(s);
                if (!d) mismatch();
                return dateLiteral(*d);
            }
            default: return "'" + s + "'";
        }
    }

    // ---- rules that apply anywhere in the statement ----
    void generalRules() {
        for (size_t s = 0; s < count(); ++s) {
            if (replaced(s)) continue;
            const Token& t = tok(s);
            switch (t.kind) {
                case Tok::Date: {
                    auto d = readHashDate(unquote(t));
                    if (!d) syntax("Syntax error in date in query expression '" + std::string(t.text) + "'.");
                    replace(s, dateLiteral(*d));
                    break;
                }
                case Tok::Word:
                    if ((t.isWord("True") || t.isWord("False")) && !(s > 0 && tok(s - 1).is(".")) &&
                        !(s + 1 < count() && tok(s + 1).is(".")) && !(s > 0 && tok(s - 1).isWord("AS"))) {
                        replace(s, t.isWord("True") ? "-1" : "0");
                    } else if (t.isWord("Format") && s + 1 < count() && tok(s + 1).is("(")) {
                        formatCall(s);
                    } else if (comparedWithNumber(s)) {
                        const Column* c = resolve(s);
                        if (c && c->jet == JetType::Date) dateComparison(s);
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
        std::string mask = unquote(tok(args[1].first));
        if (!sameName(mask, "Currency")) syntax("Undefined function 'Format' with mask '" + mask + "' in expression.");
        replace(s, "jet_currency");
        replace(args[1].first, std::to_string(r_.currencyDigits));
    }

    // A quoted number as an operand of * / + -: read by the regional settings.
    void arithmeticOperand(size_t s) {
        auto isArith = [](const Token& t) { return t.is("*") || t.is("/") || t.is("+") || t.is("-"); };
        bool before = s > 0 && isArith(tok(s - 1));
        bool after = s + 1 < count() && isArith(tok(s + 1));
        if (!before && !after) return;
        auto v = rt::parseNumber(unquote(tok(s)), r_);
        if (!v) {
            bool plusOnly = (!before || tok(s - 1).is("+")) && (!after || tok(s + 1).is("+"));
            if (plusOnly) return;  // + between texts joins them
            mismatch();
        }
        replace(s, numberLiteral(*v));
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
            double v = std::strtod(std::string(tok(n).text).c_str(), nullptr);
            if (neg) v = -v;
            if (n != at) replace(at, "");
            replace(n, dateLiteral(v));
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

    std::string_view text_;
    StatementKind kind_;
    const Regional& r_;
    const Catalog& cat_;
    std::vector<Token> toks_;
    std::vector<size_t> solid_;
    std::vector<std::optional<std::string>> repl_;
    std::vector<const Table*> scope_;
    bool changed_ = false;
};

}  // namespace

std::string translate(std::string_view composed, StatementKind kind, const Regional& regional, const Catalog& cat) {
    return Translator(composed, kind, regional, cat).run();
}

}  // namespace hist::sql
