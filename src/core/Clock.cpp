#include "tylhart/core/Clock.hpp"

#include <chrono>
#include <ctime>
#include <utility>

#include "VariantRules.hpp"

namespace tylhart {

namespace {

Date systemNow() {
    using namespace std::chrono;
    const auto stamp = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(stamp);
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &seconds);
#else
    localtime_r(&seconds, &local);
#endif
    const auto millis = duration_cast<milliseconds>(stamp.time_since_epoch()).count() % 1000;
    const double day = static_cast<double>(
        rules::serialFromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday));
    const double time =
        (local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + millis / 1000.0) / 86400.0;
    return Date{day + time};
}

ClockSource& installed() {
    static ClockSource source;
    return source;
}

}  // namespace

Date now() {
    const ClockSource& source = installed();
    return source ? source() : systemNow();
}

int currentYear() {
    // The day part of a Date is its integer part, towards zero.
    return rules::civilFromSerial(static_cast<long long>(now().days)).year;
}

ScopedClock::ScopedClock(ClockSource source) : previous_(std::move(installed())) {
    installed() = std::move(source);
}

ScopedClock::~ScopedClock() { installed() = std::move(previous_); }

}  // namespace tylhart
