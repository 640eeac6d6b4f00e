// The two limits that keep every call bounded, whatever its arguments.
//
// MaxElements: the most elements or characters a size, index or count may
// make an object hold (16 M). Real device descriptions stay far below it;
// a call that would need more fails before allocating, with the runtime's
// "Out of memory" (7) or the class's own range error, and changes nothing.
//
// MaxDepth: the most nested renderings, copies and comparisons one call may
// go through (1000). Deeper graphs, and graphs that hold themselves, fail
// with the runtime's "Out of stack space" (28) instead of exhausting the
// stack.
//
// MaxVisits: the most nested objects one walk may go through in all (4 M),
// counted from the outermost guard, so each element of a container and each
// child of an object a caller copies, compares or renders gets its own
// count. A graph that shares an object walks it once per path, so a chain
// of objects each holding the next one twice doubles the work per link;
// past the count the call fails with "Out of stack space" too, as a graph
// too large to walk. Real objects stay far below it: a variable, command or
// menu of a device description takes at most about 100 visits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tylhart {

inline constexpr std::size_t MaxElements = std::size_t{16} * 1024 * 1024;
inline constexpr int MaxDepth = 1000;
inline constexpr std::int64_t MaxVisits = std::int64_t{4} * 1024 * 1024;

// Raises "Out of memory" when count is above MaxElements.
void checkElements(std::int64_t count);

// One level of recursion for as long as it lives; the level past MaxDepth,
// or the visit past MaxVisits since the outermost guard, raises "Out of
// stack space". The counters are per thread, since objects of one apartment
// are called from one thread.
class DepthGuard {
public:
    // Inline: every copy, comparison and rendering of a child opens one.
    DepthGuard() {
        Walk& w = walk;
        if (w.depth == 0) w.visits = 0;
        if (w.depth >= MaxDepth || w.visits >= MaxVisits) tooDeep();
        ++w.depth;
        ++w.visits;
    }
    ~DepthGuard() { --walk.depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    struct Walk {
        int depth = 0;
        std::int64_t visits = 0;  // since the outermost guard opened
    };
    // Constant-initialized, so a read needs no initialization check.
    static thread_local constinit Walk walk;
    [[noreturn]] static void tooDeep();
};

}  // namespace tylhart
