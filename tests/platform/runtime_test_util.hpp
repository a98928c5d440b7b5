#pragma once
// Shared bits of the runtime tests: the two regional settings as a test parameter and
// a way to read the number of the error a call raises.
#include <gtest/gtest.h>

#include <string>

#include "platform/error.hpp"
#include "platform/regional.hpp"

namespace hist::testing {

enum class Loc { es, en };

inline const Regional& regionalOf(Loc l) { return l == Loc::es ? Regional::esES() : Regional::enUS(); }

// The number of the hist::Error that f raises, or 0 when it raises none.
template <class F>
long errorOf(F&& f) {
    try {
        f();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

}  // namespace hist::testing
