#pragma once
// Helpers shared by the collaborators' tests: the scratch folder, an environment
// made of a map, and the hist::Error a call raises.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "frame/services/config.hpp"
#include "platform/error.hpp"
#include "support/scratch.hpp"

namespace hist::test {

using testing::Scratch;
using testing::readFile;
using testing::writeFile;

inline services::EnvLookup envOf(std::map<std::string, std::string> vars) {
    return [vars = std::move(vars)](const std::string& name) -> std::optional<std::string> {
        auto it = vars.find(name);
        if (it == vars.end()) return std::nullopt;
        return it->second;
    };
}

// The hist::Error that f raises; when it raises none the test fails and an Error
// numbered 0 comes back.
template <class F>
Error raised(F&& f) {
    try {
        f();
    } catch (const Error& e) {
        return e;
    }
    ADD_FAILURE() << "no hist::Error raised";
    return Error(0, "", "(no failure)");
}

}  // namespace hist::test
