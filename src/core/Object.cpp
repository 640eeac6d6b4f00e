#include "tylhart/core/Object.hpp"

#include <atomic>

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {
namespace {
// Objects of several apartments may live in one process; only this module
// count is shared between them, so it alone is atomic.
std::atomic<std::size_t> liveCount{0};

// The release in progress on this thread and the objects waiting for it,
// linked through the objects themselves: nothing to allocate, nothing to
// destroy at thread exit.
thread_local bool releasing = false;
thread_local const Object* pending = nullptr;
}  // namespace

void Object::destroy(const Object* object) noexcept {
    if (releasing) {
        object->nextPending_ = pending;
        pending = object;
        return;
    }
    releasing = true;
    delete object;
    while (pending) {
        const Object* next = pending;
        pending = next->nextPending_;
        delete next;
    }
    releasing = false;
}

Object::Object() noexcept { liveCount.fetch_add(1, std::memory_order_relaxed); }
Object::~Object() { liveCount.fetch_sub(1, std::memory_order_relaxed); }

const Text& Object::className() const { return classInfo().name(); }

std::size_t Object::liveObjects() noexcept { return liveCount.load(std::memory_order_relaxed); }

}  // namespace tylhart
