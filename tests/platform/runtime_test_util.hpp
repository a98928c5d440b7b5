#pragma once
// Shared bits of the runtime tests: the two regional settings as a test parameter, and
// the error a call raises.
#include <gtest/gtest.h>

#include <string>

#include "platform/error.hpp"
#include "platform/regional.hpp"
#include "support/errors.hpp"

namespace hist::testing {

enum class Loc { es, en };

inline const Regional& regionalOf(Loc l) { return l == Loc::es ? Regional::esES() : Regional::enUS(); }

}  // namespace hist::testing
