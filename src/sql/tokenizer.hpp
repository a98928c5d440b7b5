#pragma once
// The tokenizer of the desktop engine's dialect. Tokens keep their place in the
// text and the text between them (blanks) is a token too, so a statement prints
// back byte for byte from its tokens.
#include <string_view>
#include <vector>

namespace hist::sql {

enum class Tok {
    Blank,    // runs of blanks, tabs and line ends
    Word,     // keyword or identifier: a letter (any non-ASCII byte counts) or '_' first
    Number,   // digits, optional .digits, optional exponent (a sign is a Punct)
    String,   // '...' with '' as an embedded quote
    Date,     // #...#
    Bracket,  // [...]
    Punct,    // <> <= >= != = < > ( ) , . ; * / + - &
    Other,    // anything else: a double quote, a backtick, a lone '#', '?', ...
};

struct Token {
    Tok kind;
    std::string_view text;
    size_t pos;
    bool unterminated = false;  // a String (or Bracket) that reaches the end of the text

    bool is(std::string_view p) const { return kind == Tok::Punct && text == p; }
    // A word equal to kw, case ignored.
    bool isWord(std::string_view kw) const;
};

// Splits a statement into tokens. It never fails: an unterminated string is a
// String token with `unterminated` set, and what it cannot read is Other.
std::vector<Token> tokenize(std::string_view text);
// The same into `out` (cleared first), so a caller can keep one buffer.
void tokenize(std::string_view text, std::vector<Token>& out);

// The content of a String token ('' read as one apostrophe), or of a Bracket or Date token.
std::string unquote(const Token& t);

}  // namespace hist::sql
