#include "platform/progress.hpp"

#include <unistd.h>

#include <iostream>

namespace hist {

ProgressLine::ProgressLine(std::ostream& out, std::string label, bool enabled)
    : out_(out), label_(std::move(label)), enabled_(enabled) {}

ProgressLine::~ProgressLine() {
    if (enabled_ && width_) out_ << '\r' << std::string(width_, ' ') << '\r' << std::flush;
}

void ProgressLine::update(std::size_t done, std::size_t total) {
    if (!enabled_) return;
    const auto now = std::chrono::steady_clock::now();
    if (width_ && done < total && now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    std::string line = label_ + ": " + std::to_string(done);
    if (total) line += " of " + std::to_string(total) + " (" + std::to_string(done * 100 / total) + "%)";
    const std::size_t pad = width_ > line.size() ? width_ - line.size() : 0;
    out_ << '\r' << line << std::string(pad, ' ') << std::flush;
    width_ = std::max(width_, line.size());
}

bool ProgressLine::forStandardError(const std::ostream& err) { return &err == &std::cerr && ::isatty(2) == 1; }

}  // namespace hist
