#include "tylhart/core/Limits.hpp"

#include "tylhart/core/Error.hpp"

namespace tylhart {

thread_local constinit DepthGuard::Walk DepthGuard::walk;

void checkElements(std::int64_t count) {
    if (count > static_cast<std::int64_t>(MaxElements)) errors::raise(errors::Runtime::OutOfMemory);
}

void DepthGuard::tooDeep() { errors::raise(errors::Runtime::OutOfStackSpace); }

}  // namespace tylhart
