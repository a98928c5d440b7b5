// The progress line: drawn in place, at most ten times a second but always at the
// end, erased when the work ends, and nothing at all when it is not enabled.
#include <gtest/gtest.h>

#include <sstream>

#include "platform/progress.hpp"

namespace hist {
namespace {

TEST(ProgressLine, DrawsInPlaceThrottledAndErasesItself) {
    std::ostringstream out;
    {
        ProgressLine line(out, "rows", true);
        line.update(1, 4);
        line.update(2, 4);   // within a tenth of a second of the last: not drawn
        line.update(4, 4);   // the end is always drawn
    }
    const std::string drawn = "\rrows: 1 of 4 (25%)\rrows: 4 of 4 (100%)";
    EXPECT_EQ(out.str(), drawn + "\r" + std::string(19, ' ') + "\r");

    std::ostringstream quiet;
    {
        ProgressLine line(quiet, "rows", false);
        line.update(4, 4);
    }
    EXPECT_EQ(quiet.str(), "");
    // A stream that is not the process's standard error never gets the line.
    EXPECT_FALSE(ProgressLine::forStandardError(out));
}

}  // namespace
}  // namespace hist
