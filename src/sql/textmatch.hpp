#pragma once
// Text comparison as the archive compares text: without regard to case, on the
// whole of Unicode (case folding), accents kept apart. The same rules serve the
// engine (a collation and the LIKE operator) and the recordset's Filter and Find.
#include <string_view>

namespace hist::sql {

// Negative, zero or positive as a sorts before, equal to or after b, comparing
// the case-folded code points of two UTF-8 texts.
int compareNoCase(std::string_view a, std::string_view b);
inline bool equalNoCase(std::string_view a, std::string_view b) { return compareNoCase(a, b) == 0; }

// The desktop engine's Like, both wildcard families: `*` and `%` any run, `?` and
// `_` one character, `#` one digit, `[abc]`, `[a-z]` and `[!..]` one character of
// (or not of) a set; a wildcard inside brackets is literal (`[*]`). With an
// escape character, the character after it is literal. Case is ignored.
bool likeMatch(std::string_view text, std::string_view pattern, char32_t escape = 0);

}  // namespace hist::sql
