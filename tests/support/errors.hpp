#pragma once
// The error a call raises, for the tests of every layer.
#include <string>

#include "platform/error.hpp"

namespace hist::testing {

// The number of the hist::Error that f raises, 0 when it raises none; the
// description too when asked for.
template <class F>
long errorOf(F&& f, std::string* description = nullptr) {
    try {
        f();
    } catch (const Error& e) {
        if (description) *description = e.description();
        return e.number();
    }
    return 0;
}

}  // namespace hist::testing
