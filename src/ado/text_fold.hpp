#pragma once
// Searches in folded text for the recordset's Like (folding itself is the library's
// one, platform/text.hpp). Comparing two texts is sql::compareNoCase, the
// collation's own function. Plain ASCII texts take a fast path.
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/text.hpp"

namespace hist::ado::text {

using hist::text::fold;
using hist::text::isAscii;
// Whether `s` starts with / ends with / contains `folded` (already folded).
bool startsWithFolded(std::string_view s, std::string_view folded);
bool endsWithFolded(std::string_view s, std::string_view folded);
bool containsFolded(std::string_view s, std::string_view folded);

}  // namespace hist::ado::text
