#pragma once
// Today's date, the time of day and the current user come from here, so that tests
// and the command line can fix them.
#include <optional>
#include <string>

namespace hist {

class Clock {
public:
    // The present moment as a date serial (date and time of day).
    static double now();
    static double today();      // date part only
    static double timeOfDay();  // time part only (on 1899-12-30)
    // Fix the clock at a serial; nothing restores the system clock.
    static void set(std::optional<double> serial);
};

class CurrentUser {
public:
    static std::string name();  // the fixed name, else $USER, else "usuario"
    static void set(std::optional<std::string> name);
};

}  // namespace hist
