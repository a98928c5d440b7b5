#include "frame/statement.hpp"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "frame/record.hpp"
#include "frame/service_calls.hpp"
#include "frame/services/helpers.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"
#include "sql/tokenizer.hpp"

namespace hist::frame {

namespace {


// One hole of a template: where it stands, its kind and name, and whether it lies
// inside a quoted literal.
struct Hole {
    size_t begin = 0, end = 0;  // the braces included
    std::string_view kind, name;
    bool quoted = false;
};

[[noreturn]] void badTemplate(std::string_view text, const std::string& why) {
    throw std::logic_error("statement template: " + why + ": " + std::string(text));
}

std::vector<Hole> holesOf(std::string_view text) {
    std::vector<Hole> holes;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\'') {
            // '' inside a literal is an apostrophe of the text, not its end.
            if (inString && i + 1 < text.size() && text[i + 1] == '\'') ++i;
            else inString = !inString;
        } else if (c == '{') {
            const size_t close = text.find('}', i);
            if (close == std::string_view::npos) badTemplate(text, "unclosed hole");
            std::string_view inner = text.substr(i + 1, close - i - 1);
            Hole h{i, close + 1, {}, inner, inString};
            if (const size_t colon = inner.find(':'); colon != std::string_view::npos) {
                h.kind = inner.substr(0, colon);
                h.name = inner.substr(colon + 1);
            }
            if (h.name.empty()) badTemplate(text, "a hole without a name");
            holes.push_back(h);
            i = close;
        }
    }
    return holes;
}

// The decimals of an N hole: "N" is 6, "N2" is 2.
int32_t numberDecimals(std::string_view kind) {
    if (kind.size() == 1) return 6;
    int32_t d = 0;
    const auto [p, ec] = std::from_chars(kind.data() + 1, kind.data() + kind.size(), d);
    if (ec != std::errc() || p != kind.data() + kind.size()) throw std::logic_error("hole kind " + std::string(kind));
    return d;
}

Error shapeChanged(const std::string& filled, size_t at, std::string_view name) {
    return Error(err::SqlSyntax, err::SrcSql,
                 "Syntax error (missing operator) in query expression '" + filled.substr(at) + "'. The value of " +
                     std::string(name) + " would change the statement.");
}

// A quoted value must stay inside its literal: every apostrophe doubled.
bool staysQuoted(std::string_view v) {
    for (size_t i = 0; i < v.size(); ++i) {
        if (v[i] != '\'') continue;
        if (i + 1 < v.size() && v[i + 1] == '\'') ++i;
        else return false;
    }
    return true;
}

// A bare value must be one constant: nothing, a number with an optional sign, a date
// literal, a complete quoted text, or the words True, False and Null. A name would
// read a column (Codigo = Codigo holds on every row) and anything longer adds tokens.
bool isOneConstant(std::string_view v) {
    std::vector<sql::Token> toks;
    sql::tokenize(v, toks);
    size_t i = 0;
    if (toks.empty()) return true;
    if (toks.size() == 2 && (toks[0].is("-") || toks[0].is("+"))) i = 1;
    if (toks.size() != i + 1) return false;
    const sql::Token& t = toks[i];
    switch (t.kind) {
        case sql::Tok::Number:
            return true;
        case sql::Tok::Date:
        case sql::Tok::String:
            return i == 0 && !t.unterminated;
        case sql::Tok::Word:
            return i == 0 && (t.isWord("True") || t.isWord("False") || t.isWord("Null"));
        default:
            return false;
    }
}

}  // namespace

std::string holeText(std::string_view kind, const Variant& v) {
    if (kind.empty()) {
        // Concatenation treats Null, Empty and an omitted argument as the empty text.
        if (v.isNull() || v.isEmpty() || v.isMissing()) return {};
        return rt::CStr(v);
    }
    if (kind == "F") return svc::fechaSql(kBase, DateValue{rt::CDate(v)});
    if (kind == "FL") {
        const DateValue d{rt::CDate(v)};
        return svc::fechaServidor(kBase) ? svc::fechaSql(kBase, d) : svc::fechaSqlLocal(d);
    }
    if (kind[0] == 'N') {
        Variant value = v;
        int32_t decimals = numberDecimals(kind);
        return services::ClsFormatoNumero::shared()->NumeroSql(value, decimals);
    }
    if (kind == "D") return rt::CStr(Variant(rt::CDbl(v)));
    if (kind == "T") return rt::CStr(Variant(DateValue{rt::CDate(v)}));
    if (kind == "B") return rt::CStr(Variant(rt::CInt(Variant(rt::CBool(v)))));
    if (kind == "A") return rt::CBool(v) ? "1" : "0";
    if (kind == "S") return rt::Format(Variant(DateValue{rt::CDate(v)}), "#");
    throw std::logic_error("unknown hole kind " + std::string(kind));
}

Statement Template::fill(HoleValues values, std::string_view table) const {
    return fill(std::span<const HoleValue>(values.begin(), values.size()), table);
}

Statement Template::fill(std::span<const HoleValue> values, std::string_view table) const {
    const std::vector<Hole> holes = holesOf(text_);
    std::string out;
    out.reserve(text_.size() + 64);
    // Where each bare or quoted value landed, checked once the text is whole so the
    // error can show the statement from that place on.
    struct Placed {
        size_t at;
        size_t size;
        const Hole* hole;
    };
    std::vector<Placed> placed;
    size_t from = 0;
    for (const Hole& h : holes) {
        out.append(text_, from, h.begin - from);
        from = h.end;
        if (h.kind.empty() && h.name == "table") {
            out += table;
            continue;
        }
        const HoleValue* found = nullptr;
        for (const HoleValue& hv : values)
            if (hv.name == h.name) found = &hv;
        if (!found) badTemplate(text_, "no value for " + std::string(h.name));
        const std::string piece = holeText(h.kind, found->value);
        placed.push_back({out.size(), piece.size(), &h});
        out += piece;
    }
    out.append(text_, from, std::string_view::npos);

    for (const Placed& p : placed) {
        const std::string_view piece(out.data() + p.at, p.size);
        const bool ok = p.hole->quoted ? staysQuoted(piece) : isOneConstant(piece);
        if (!ok) {
            Error refusal = shapeChanged(out, p.at, p.hole->name);
            return Statement(std::move(out), std::move(refusal));
        }
    }
    return Statement(std::move(out));
}

std::string Template::withTable(std::string_view table) const {
    std::string out;
    size_t from = 0;
    for (const Hole& h : holesOf(text_)) {
        if (!(h.kind.empty() && h.name == "table")) continue;
        out.append(text_, from, h.begin - from);
        out += table;
        from = h.end;
    }
    out.append(text_, from, std::string_view::npos);
    return out;
}

}  // namespace hist::frame
