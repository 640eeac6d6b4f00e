// The one base of every class, and Ref<T>, the intrusive reference to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "tylhart/core/Limits.hpp"
#include "tylhart/core/Text.hpp"

namespace tylhart {

class ClassInfo;

// Objects are apartment threaded: one thread calls them, so the reference
// count needs neither atomics nor locks.
class Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    // The class's member table; drives dispatch, name lookup and listings.
    virtual const ClassInfo& classInfo() const = 0;
    const Text& className() const;

    void addRef() const noexcept { ++references_; }
    void release() const noexcept {
        if (--references_ == 0) destroy(this);
    }

    // Objects of the library alive in this process (the "can unload" answer).
    static std::size_t liveObjects() noexcept;

protected:
    Object() noexcept;

private:
    // Deletes without recursing: an object whose last reference drops while
    // another is being deleted waits on a per-thread list that the outermost
    // call empties, so a chain of any depth is released in constant stack.
    static void destroy(const Object* object) noexcept;

    mutable std::uint32_t references_ = 0;
    // The next object waiting for deletion, while this one waits itself.
    mutable const Object* nextPending_ = nullptr;
};

// Intrusive shared reference; an empty Ref is Nothing.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    explicit Ref(T* p) noexcept : p_(p) {
        if (p_) p_->addRef();
    }
    Ref(const Ref& o) noexcept : Ref(o.p_) {}
    Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    template <class U>
        requires std::is_convertible_v<U*, T*>
    Ref(const Ref<U>& o) noexcept : Ref(static_cast<T*>(o.get())) {}
    template <class U>
        requires std::is_convertible_v<U*, T*>
    Ref(Ref<U>&& o) noexcept : p_(o.detach()) {}
    ~Ref() {
        if (p_) p_->release();
    }
    Ref& operator=(Ref o) noexcept {
        std::swap(p_, o.p_);
        return *this;
    }

    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    T& operator*() const noexcept { return *p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }
    T* detach() noexcept { return std::exchange(p_, nullptr); }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.p_ == b.p_; }
    friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }

private:
    T* p_ = nullptr;
};

template <class T, class... Args>
Ref<T> make(Args&&... args) {
    return Ref<T>(new T(std::forward<Args>(args)...));
}

// What every GetCopy does: a new object that takes the original's content
// through its own SetFromObject, so SetFromObject alone decides how deep a
// copy goes. T is the class of both.
template <class T>
Ref<T> copyOf(const T& original) {
    DepthGuard nested;
    auto copy = make<T>();
    copy->SetFromObject(Ref<T>(const_cast<T*>(&original)));
    return copy;
}

// Checked downcast; Nothing when the object is of another class.
template <class U, class T>
Ref<U> refCast(const Ref<T>& r) noexcept {
    return Ref<U>(dynamic_cast<U*>(r.get()));
}

}  // namespace tylhart
