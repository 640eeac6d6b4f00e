#include "tylhart/core/Limits.hpp"

#include "tylhart/core/Error.hpp"

namespace tylhart {

namespace {
thread_local int depth = 0;
}  // namespace

void checkElements(std::int64_t count) {
    if (count > static_cast<std::int64_t>(MaxElements)) errors::raise(errors::Runtime::OutOfMemory);
}

DepthGuard::DepthGuard() {
    if (depth >= MaxDepth) errors::raise(errors::Runtime::OutOfStackSpace);
    ++depth;
}

DepthGuard::~DepthGuard() { --depth; }

}  // namespace tylhart
