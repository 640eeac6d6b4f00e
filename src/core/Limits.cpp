#include "tylhart/core/Limits.hpp"

#include "tylhart/core/Error.hpp"

namespace tylhart {

namespace {
thread_local int depth = 0;
thread_local std::int64_t visits = 0;  // since the outermost guard opened
}  // namespace

void checkElements(std::int64_t count) {
    if (count > static_cast<std::int64_t>(MaxElements)) errors::raise(errors::Runtime::OutOfMemory);
}

DepthGuard::DepthGuard() {
    if (depth == 0) visits = 0;
    if (depth >= MaxDepth || visits >= MaxVisits) errors::raise(errors::Runtime::OutOfStackSpace);
    ++depth;
    ++visits;
}

DepthGuard::~DepthGuard() { --depth; }

}  // namespace tylhart
