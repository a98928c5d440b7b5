#include "platform/clock.hpp"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <mutex>

#include "platform/runtime.hpp"

namespace hist {

namespace {
std::mutex& clockMutex() {
    static std::mutex m;
    return m;
}
std::optional<double>& fixedNow() {
    static std::optional<double> v;
    return v;
}
std::optional<std::string>& fixedUser() {
    static std::optional<std::string> v;
    return v;
}

// The system clock in local time, to the second (the runtime's Now has no finer grain).
double systemNow() {
    std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    return rt::dateSerial(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) +
           rt::timeSerial(local.tm_hour, local.tm_min, local.tm_sec);
}
}  // namespace

double Clock::now() {
    {
        std::lock_guard lock(clockMutex());
        if (fixedNow()) return *fixedNow();
    }
    return systemNow();
}

double Clock::today() {
    const double n = now();
    return n < 0 ? std::ceil(n) : std::floor(n);
}

double Clock::timeOfDay() {
    const double n = now();
    return std::fabs(n - (n < 0 ? std::ceil(n) : std::floor(n)));
}

void Clock::set(std::optional<double> serial) {
    std::lock_guard lock(clockMutex());
    fixedNow() = serial;
}

std::string CurrentUser::name() {
    {
        std::lock_guard lock(clockMutex());
        if (fixedUser()) return *fixedUser();
    }
    const char* u = std::getenv("USER");
    if (u && *u) return u;
    return "usuario";
}

void CurrentUser::set(std::optional<std::string> name) {
    std::lock_guard lock(clockMutex());
    fixedUser() = std::move(name);
}

}  // namespace hist
