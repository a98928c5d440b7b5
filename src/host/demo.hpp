#pragma once
// `historicos demo`: the main job on the default archive. It fills the archive
// with the sample when the file is missing or holds no rows, shows what it holds,
// and walks the road of one piece of work through the record classes (road.hpp).
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace hist::host {

struct DemoOptions {
    std::optional<std::string> db;      // --db PATH; unset: the configuration's archive
    std::optional<std::string> config;  // --config FILE
    std::size_t orders = 2000;          // --orders N: size of the sample when one is made
    uint64_t seed = 1;                  // --seed S
};

// Returns the exit code: 0 done, 1 the work failed.
int demoCommand(const DemoOptions& o, bool trace, std::ostream& out, std::ostream& err);

}  // namespace hist::host
