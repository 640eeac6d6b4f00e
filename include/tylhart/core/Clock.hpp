// The present moment as the library reads it: one replaceable source, so
// that whatever depends on the calendar (texts that name no year, time
// stamps) can be pinned in tests.
#pragma once

#include <functional>

#include "tylhart/core/Variant.hpp"

namespace tylhart {

// Local date and time as a Date (day count from 30 December 1899, time of
// day as the fraction).
using ClockSource = std::function<Date()>;

// The present local date and time, from the installed source or the system.
Date now();
// The calendar year of now().
int currentYear();

// Installs a source for the lifetime of the object and restores the previous
// one afterwards. Meant for tests; the library starts no threads, so the
// source is simply process wide.
class ScopedClock {
public:
    explicit ScopedClock(ClockSource source);
    ~ScopedClock();
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

private:
    ClockSource previous_;
};

}  // namespace tylhart
