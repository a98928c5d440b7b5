#pragma once
// `historicos demo`: the main job on the default archive. It creates the sample
// archive when the file is missing, shows what it holds, and reads the comments of
// the newest documents through the record classes, as a form would.
#include <iosfwd>
#include <string>
#include <vector>

namespace hist::host {

int demoCommand(const std::vector<std::string>& args, bool trace, std::ostream& out, std::ostream& err);

}  // namespace hist::host
