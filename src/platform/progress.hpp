#pragma once
// A progress line for long work: "<label>: <done> of <total> (<p>%)" redrawn in place
// at most ten times a second and erased when the work ends, so that a person at a
// terminal sees the work move and a log or a pipe gets nothing of it.
#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace hist {

class ProgressLine {
public:
    // Draws on `out` only when `enabled`; see forStandardError.
    ProgressLine(std::ostream& out, std::string label, bool enabled);
    ~ProgressLine();  // erases the line it drew
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void update(std::size_t done, std::size_t total);

    // True when `err` is the process's standard error and that is a terminal.
    static bool forStandardError(const std::ostream& err);

private:
    std::ostream& out_;
    std::string label_;
    bool enabled_;
    std::size_t width_ = 0;  // of the line drawn, to erase it
    std::chrono::steady_clock::time_point last_{};
};

}  // namespace hist
