// The one way every benchmark here measures: the library and a plain
// baseline timed side by side in the same run, reported as lib_ns, base_ns
// and their ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>

// Times Lib over the benchmark's iterations, then Base over as many (or
// as many as fit in a tenth of a second: shifting a million entries a
// million times would take a day), and reports both and their ratio.
template <class Lib, class Base>
inline void sideBySide(benchmark::State& state, Lib lib, Base base) {
    using Clock = std::chrono::steady_clock;
    std::size_t k = 0;
    const auto start = Clock::now();
    for (auto _ : state) lib(k++);
    const double libNs = std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
                         static_cast<double>(k);
    const auto baseStart = Clock::now(), budget = baseStart + std::chrono::milliseconds(100);
    std::size_t n = 0;
    while (n < k && (n % 16 != 0 || Clock::now() < budget)) base(n++);
    const double baseNs = std::chrono::duration<double, std::nano>(Clock::now() - baseStart).count() /
                          static_cast<double>(n);
    state.counters["lib_ns"] = libNs;
    state.counters["base_ns"] = baseNs;
    state.counters["ratio"] = libNs / baseNs;
}
