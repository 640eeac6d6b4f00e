// CopyOnWrite<T>: a private value that copies of its owner share until one
// of them changes it, for state copied far more often than changed (a
// set's elements, a type's ranges). Nobody can tell one shared value from
// two: every change goes through write(), which gives its owner a value of
// its own first. The owner count needs no atomics: objects, and so their
// fields, are used by one thread at a time.
#pragma once

#include <cstddef>
#include <utility>

namespace tylhart {

template <class T>
class CopyOnWrite {
public:
    CopyOnWrite() noexcept = default;
    explicit CopyOnWrite(T value) : shared_(new Shared{1, std::move(value)}) {}
    CopyOnWrite(const CopyOnWrite& other) noexcept : shared_(other.shared_) {
        if (shared_) ++shared_->owners;
    }
    CopyOnWrite(CopyOnWrite&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
    CopyOnWrite& operator=(CopyOnWrite other) noexcept {
        std::swap(shared_, other.shared_);
        return *this;
    }
    ~CopyOnWrite() {
        if (shared_ && --shared_->owners == 0) delete shared_;
    }

    // The value; a T of its own default until first written.
    const T& read() const noexcept {
        static const T none{};
        return shared_ ? shared_->value : none;
    }
    // The value to change, made this owner's alone first.
    T& write() {
        if (!shared_) {
            shared_ = new Shared{1, T{}};
        } else if (shared_->owners > 1) {
            auto* own = new Shared{1, shared_->value};
            --shared_->owners;
            shared_ = own;
        }
        return shared_->value;
    }

private:
    struct Shared {
        std::size_t owners;
        T value;
    };
    Shared* shared_ = nullptr;
};

}  // namespace tylhart
