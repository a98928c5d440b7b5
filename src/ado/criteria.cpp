#include "ado/criteria.hpp"

#include <charconv>
#include <memory>

#include "ado/text_fold.hpp"
#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "platform/runtime.hpp"
#include "sql/textmatch.hpp"

namespace hist::ado {
namespace {

[[noreturn]] void refuse(std::string_view whole, std::string_view why) {
    raise(err::BadArgument, err::SrcRecordset,
          std::string(err::standardDescription(err::BadArgument)) + " Criteria " + std::string(why) + ": " +
              std::string(whole));
}

// Parentheses nest at most this deep. The parser descends once per parenthesis, so
// without a bound a long run of them (typed, or saved with SetFilter and read back in
// every later session) would exhaust the stack; no real criterion comes near it.
constexpr int kMaxNesting = 100;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

struct Node {
    enum class Kind { Leaf, And, Or } kind = Kind::Leaf;
    Clause clause;
    std::vector<Node> kids;
};

// A date typed into a criterion: the regional reading first, then ISO.
std::optional<double> criteriaDate(std::string_view s) {
    if (auto d = rt::parseDate(s, Regional::current())) return d;
    return rt::parseIso(s);
}

class Parser {
public:
    Parser(std::string_view s, const Criteria::Resolver& r, const Criteria::TypeOf& t)
        : s_(s), resolve_(r), typeOf_(t) {}

    Node parseOr() {
        Node first = parseAnd();
        if (!keyword("or")) return first;
        Node n;
        n.kind = Node::Kind::Or;
        n.kids.push_back(std::move(first));
        do n.kids.push_back(parseAnd());
        while (keyword("or"));
        return n;
    }

    Node parseAnd() {
        Node first = parsePrimary();
        if (!keyword("and")) return first;
        Node n;
        n.kind = Node::Kind::And;
        n.kids.push_back(std::move(first));
        do n.kids.push_back(parsePrimary());
        while (keyword("and"));
        for (const Node& k : n.kids)
            if (k.kind == Node::Kind::Or) refuse(s_, "joins an Or-group with And");
        return n;
    }

    Node parsePrimary() {
        skipBlanks();
        if (p_ < s_.size() && s_[p_] == '(') {
            if (++depth_ > kMaxNesting) {
                // The whole text would run to pages: its start is enough to know it.
                constexpr std::size_t kShown = 40;
                const std::string shown =
                    s_.size() > kShown ? std::string(s_.substr(0, kShown)) + "..." : std::string(s_);
                refuse(shown, "nests parentheses too deep (more than " + std::to_string(kMaxNesting) + " levels)");
            }
            ++p_;
            Node n = parseOr();
            --depth_;
            skipBlanks();
            if (p_ >= s_.size() || s_[p_] != ')') refuse(s_, "lacks a closing parenthesis");
            ++p_;
            return n;
        }
        Node n;
        n.clause = parseClause();
        return n;
    }

    Clause parseClause() {
        skipBlanks();
        // The field name: [with blanks] or a run up to a blank or an operator.
        std::string_view name;
        if (p_ < s_.size() && s_[p_] == '[') {
            const std::size_t close = s_.find(']', p_ + 1);
            if (close == std::string_view::npos) refuse(s_, "lacks a closing bracket");
            name = s_.substr(p_ + 1, close - p_ - 1);
            p_ = close + 1;
        } else {
            const std::size_t start = p_;
            while (p_ < s_.size() && !isBlank(s_[p_]) && std::string_view("<>=()'#[]").find(s_[p_]) ==
                                                              std::string_view::npos)
                ++p_;
            name = s_.substr(start, p_ - start);
        }
        if (name.empty()) refuse(s_, "lacks a field name");
        Clause c;
        c.field = resolve_(name);
        if (c.field < 0)
            raise(err::ItemNotFound, err::SrcRecordset,
                  std::string(err::standardDescription(err::ItemNotFound)) + " Field: " + std::string(name));
        c.cls = classOf(typeOf_(c.field));
        c.op = parseOperator();
        parseValue(c);
        return c;
    }

    bool atEnd() {
        skipBlanks();
        return p_ >= s_.size();
    }

private:
    void skipBlanks() {
        while (p_ < s_.size() && isBlank(s_[p_])) ++p_;
    }

    // A word (case ignored) followed by a blank, a parenthesis, a quote, # or the end.
    bool keyword(std::string_view w) {
        skipBlanks();
        if (p_ + w.size() > s_.size() || !sql::equalNoCase(s_.substr(p_, w.size()), w)) return false;
        const std::size_t after = p_ + w.size();
        if (after < s_.size() && !isBlank(s_[after]) && s_[after] != '(' && s_[after] != '\'' && s_[after] != '#')
            return false;
        p_ = after;
        return true;
    }

    CmpOp parseOperator() {
        skipBlanks();
        auto two = s_.substr(p_, 2);
        if (two == "<=") return p_ += 2, CmpOp::Le;
        if (two == ">=") return p_ += 2, CmpOp::Ge;
        if (two == "<>") return p_ += 2, CmpOp::Ne;
        if (p_ < s_.size()) {
            switch (s_[p_]) {
            case '<': return ++p_, CmpOp::Lt;
            case '>': return ++p_, CmpOp::Gt;
            case '=': return ++p_, CmpOp::Eq;
            default: break;
            }
        }
        if (keyword("like")) return CmpOp::Like;
        refuse(s_, "has no valid operator");
    }

    void parseValue(Clause& c) {
        skipBlanks();
        if (p_ >= s_.size()) refuse(s_, "lacks a value");
        const char ch = s_[p_];
        if (ch == '\'') {
            std::string v;
            ++p_;
            for (;;) {
                if (p_ >= s_.size()) refuse(s_, "has an unclosed quote");
                if (s_[p_] == '\'') {
                    if (p_ + 1 < s_.size() && s_[p_ + 1] == '\'') {
                        v += '\'';
                        p_ += 2;
                        continue;
                    }
                    ++p_;
                    break;
                }
                v += s_[p_++];
            }
            prepareQuoted(c, v);
        } else if (ch == '#') {
            const std::size_t close = s_.find('#', p_ + 1);
            if (close == std::string_view::npos) refuse(s_, "has an unclosed #");
            std::string v(s_.substr(p_ + 1, close - p_ - 1));
            p_ = close + 1;
            prepareHashed(c, v);
        } else if (keyword("null")) {
            if (c.op != CmpOp::Eq && c.op != CmpOp::Ne) refuse(s_, "compares with Null");
            c.lit = Clause::Lit::Null;
        } else {
            prepareNumber(c);
        }
        // The value must end at a blank, a parenthesis or the end of the text.
        if (p_ < s_.size() && !isBlank(s_[p_]) && s_[p_] != ')') refuse(s_, "has text after a value");
    }

    void prepareLike(Clause& c, std::string_view v) {
        auto wild = [](char x) { return x == '*' || x == '%'; };
        const bool lead = !v.empty() && wild(v.front());
        const bool trail = v.size() > (lead ? 1u : 0u) && wild(v.back());
        std::string_view core = v.substr(lead ? 1 : 0);
        if (trail) core.remove_suffix(1);
        for (char x : core)
            if (wild(x)) refuse(s_, "has a wildcard inside a Like pattern");
        if (lead && !trail && !core.empty()) refuse(s_, "has a Like pattern with a leading wildcard only");
        c.lit = Clause::Lit::Text;
        c.text = text::fold(core);
        if (lead && core.empty())
            c.shape = Clause::Shape::All;
        else if (lead)
            c.shape = Clause::Shape::Contains;
        else if (trail)
            c.shape = Clause::Shape::Prefix;
        else
            c.shape = Clause::Shape::Exact;
    }

    void prepareQuoted(Clause& c, const std::string& v) {
        if (c.op == CmpOp::Like) return prepareLike(c, v);
        switch (c.cls) {
        case ValueClass::Number:
        case ValueClass::Boolean: {
            auto n = rt::parseNumber(v);
            if (!n) refuse(s_, "has a value that is not a number");
            c.lit = Clause::Lit::Number;
            c.number = *n;
            return;
        }
        case ValueClass::Date: {
            auto d = criteriaDate(v);
            if (!d) refuse(s_, "has a value that is not a date");
            c.lit = Clause::Lit::Number;
            c.number = *d;
            return;
        }
        default:
            c.lit = Clause::Lit::Text;
            c.text = v;
            return;
        }
    }

    void prepareHashed(Clause& c, const std::string& v) {
        if (c.cls == ValueClass::Memo)
            raise(err::SqlTypeMismatch, err::SrcRecordset,
                  "Data type mismatch in criteria expression. A long-text field compared with #" + v + "#");
        if (c.cls == ValueClass::Text || c.cls == ValueClass::Other) {
            if (c.op == CmpOp::Like) return prepareLike(c, v);
            c.lit = Clause::Lit::Text;
            c.text = v;
            return;
        }
        auto d = criteriaDate(v);
        if (!d) refuse(s_, "has a value that is not a date");
        if (c.op == CmpOp::Like) refuse(s_, "applies Like to a date");
        c.lit = Clause::Lit::Number;
        c.number = *d;
    }

    void prepareNumber(Clause& c) {
        const std::size_t start = p_;
        std::string digits;
        if (p_ < s_.size() && (s_[p_] == '-' || s_[p_] == '+')) digits += s_[p_++];
        if (p_ < s_.size() && s_[p_] == '$') ++p_;
        bool any = false;
        while (p_ < s_.size() && ((s_[p_] >= '0' && s_[p_] <= '9') || s_[p_] == '.')) {
            any = any || s_[p_] != '.';
            digits += s_[p_++];
        }
        if (any && p_ < s_.size() && (s_[p_] == 'e' || s_[p_] == 'E')) {
            digits += s_[p_++];
            if (p_ < s_.size() && (s_[p_] == '-' || s_[p_] == '+')) digits += s_[p_++];
            while (p_ < s_.size() && s_[p_] >= '0' && s_[p_] <= '9') digits += s_[p_++];
        }
        double value = 0.0;
        const char* b = digits.data() + (digits[0] == '+' ? 1 : 0);
        auto [end, ec] = std::from_chars(b, digits.data() + digits.size(), value);
        if (!any || ec != std::errc() || end != digits.data() + digits.size()) refuse(s_, "has an invalid value");
        if (c.op == CmpOp::Like) refuse(s_, "applies Like to a number");
        if (c.cls == ValueClass::Text || c.cls == ValueClass::Memo || c.cls == ValueClass::Other) {
            c.lit = Clause::Lit::Text;
            c.text = std::string(s_.substr(start, p_ - start));
        } else {
            c.lit = Clause::Lit::Number;
            c.number = value;
        }
    }

    std::string_view s_;
    std::size_t p_ = 0;
    int depth_ = 0;  // parentheses open at the current point
    const Criteria::Resolver& resolve_;
    const Criteria::TypeOf& typeOf_;
};

void collect(Node& n, std::vector<Clause>& group) {
    if (n.kind == Node::Kind::Leaf)
        group.push_back(std::move(n.clause));
    else
        for (Node& k : n.kids) collect(k, group);
}

// An Or (parenthesised ones included) gives one group per member; anything else is one group.
void addGroups(Node& n, std::vector<std::vector<Clause>>& groups) {
    if (n.kind == Node::Kind::Or) {
        for (Node& k : n.kids) addGroups(k, groups);
        return;
    }
    std::vector<Clause> g;
    collect(n, g);
    groups.push_back(std::move(g));
}

template <class T>
bool compareWith(CmpOp op, const T& a, const T& b) {
    switch (op) {
    case CmpOp::Eq: return a == b;
    case CmpOp::Ne: return a != b;
    case CmpOp::Lt: return a < b;
    case CmpOp::Gt: return a > b;
    case CmpOp::Le: return a <= b;
    case CmpOp::Ge: return a >= b;
    case CmpOp::Like: return a == b;
    }
    return false;
}

}  // namespace

bool Clause::test(const CellView& c) const {
    if (lit == Lit::Null) return op == CmpOp::Eq ? c.tag == CellTag::Null : c.tag != CellTag::Null;
    if (c.tag == CellTag::Null) return false;
    if (op == CmpOp::Like) {
        std::string buf;
        const std::string_view s = textOf(c, buf);
        switch (shape) {
        case Shape::All: return true;
        case Shape::Prefix: return text::startsWithFolded(s, text);
        case Shape::Contains: return text::containsFolded(s, text);
        case Shape::Exact: return sql::equalNoCase(s, text);
        }
        return false;
    }
    if (lit == Lit::Number) {
        const auto v = numericOf(c, cls);
        return v && compareWith(op, *v, number);
    }
    std::string buf;
    const std::string_view s = textOf(c, buf);
    if (op == CmpOp::Eq) return sql::equalNoCase(s, text);
    if (op == CmpOp::Ne) return !sql::equalNoCase(s, text);
    return compareWith(op, sql::compareNoCase(s, text), 0);
}

Criteria Criteria::parse(std::string_view text, const Resolver& resolve, const TypeOf& typeOf, bool singleClause) {
    Criteria out;
    Parser p(text, resolve, typeOf);
    if (singleClause) {
        std::vector<Clause> g;
        g.push_back(p.parseClause());
        if (!p.atEnd()) refuse(text, "names more than one condition");
        out.groups_.push_back(std::move(g));
        return out;
    }
    Node root = p.parseOr();
    if (!p.atEnd()) refuse(text, "has text the grammar does not take");
    addGroups(root, out.groups_);
    return out;
}

}  // namespace hist::ado
