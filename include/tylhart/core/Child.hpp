// Child<T>: an object field that a class fills with a fresh T of its own.
// The T comes into being on first use, so the many children that a device
// description never touches (six empty action lists per variable, a type's
// unused enumerator sets and array object) cost no allocation, and a copy
// does not first make the children it is about to replace. No caller can
// tell: every read hands out the same object and assigning stores what is
// assigned (Nothing included). For containers, copies, comparisons and
// renderings of a child not yet made also behave as those of a fresh one
// without making it.
#pragma once

#include <array>
#include <optional>
#include <utility>

#include "tylhart/core/Error.hpp"
#include "tylhart/core/Limits.hpp"
#include "tylhart/core/Object.hpp"
#include "tylhart/core/Variant.hpp"

namespace tylhart {

// Text of a rendering part as string concatenation sees it: Empty and Null
// add nothing. A part longer than MaxElements characters is "Out of
// memory": renderings of shared graphs grow with every path, and the texts
// of the levels above would each copy it again.
inline Text concatText(const Variant& v) {
    if (v.isEmpty() || v.isNull()) return Text();
    Text text = v.toText();
    checkElements(static_cast<std::int64_t>(text.size()));
    return text;
}
// The same for a part made only to be appended: its text is moved out.
inline Text concatText(Variant&& v) {
    if (v.isEmpty() || v.isNull()) return Text();
    Text text = std::move(v).toText();
    checkElements(static_cast<std::int64_t>(text.size()));
    return text;
}


// How a child comes into being: a fresh T, unless a class says otherwise.
template <class T>
struct MakeFresh {
    Ref<T> operator()() const { return make<T>(); }
};

template <class T, class Maker = MakeFresh<T>>
class Child {
public:
    Child() noexcept = default;
    Child(Ref<T> object) noexcept : object_(std::move(object)), made_(true) {}  // NOLINT: stands for a Ref
    Child& operator=(Ref<T> object) noexcept {
        object_ = std::move(object);
        made_ = true;
        return *this;
    }
    // A copy is another reference to the same child (`auto kept =
    // type->EnumeratorSet` keeps what the type holds), so it makes it first.
    Child(const Child& other) : Child(other.ref()) {}
    Child& operator=(const Child& other) { return *this = other.ref(); }
    Child(Child&& other) noexcept
        : object_(std::move(other.object_)), made_(std::exchange(other.made_, false)) {}
    Child& operator=(Child&& other) noexcept {
        object_ = std::move(other.object_);
        made_ = std::exchange(other.made_, false);
        return *this;
    }

    // The child, made now if it was not yet.
    const Ref<T>& ref() const {
        if (!made_) {
            object_ = Maker{}();
            made_ = true;
        }
        return object_;
    }
    operator const Ref<T>&() const { return ref(); }  // NOLINT: reads as the Ref it stands for
    T* get() const { return ref().get(); }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    // False only once Nothing was assigned.
    explicit operator bool() const noexcept { return !made_ || object_; }
    bool made() const noexcept { return made_; }

    friend bool operator==(const Child& a, const Child& b) { return a.ref() == b.ref(); }
    friend bool operator==(const Child& a, const Ref<T>& b) { return a.ref() == b; }

    // Only for classes whose fresh objects are all alike (containers and
    // flag classes say so with FreshAreAlike): a fresh one copies into a
    // fresh one, compares equal to another and renders the same every time,
    // which is what lets a child not yet made stand for one unseen.
    static constexpr bool StandsInFresh = requires { requires T::FreshAreAlike; };

    // The copy that SetFromObject stores: the source's child copied through
    // its GetCopy, or, when the source never made it, a child still to come
    // (a copy of a fresh T is a fresh T). Nothing in the source is the
    // runtime's "object not set", as a call on it would be.
    friend Child copyChild(const Child& source) {
        static_assert(StandsInFresh);
        if (!source.made_) return Child();
        if (!source.object_) errors::raise(errors::Runtime::ObjectNotSet);
        return Child(source.object_->GetCopy());
    }
    // This child's Compare with Other's, skipped when neither was made.
    bool equals(const Child& other) const {
        static_assert(StandsInFresh);
        if (!made_ && !other.made_) return true;
        if (!ref()) errors::raise(errors::Runtime::ObjectNotSet);
        return object_->Compare(other.ref());
    }
    // The child's rendering; one not yet made renders as a fresh T without
    // being kept. A fresh T renders the same every time, so its text is
    // made once per level and thread.
    Variant render(std::int16_t infoLevel) const {
        static_assert(StandsInFresh);
        if (made_) {
            if (!object_) errors::raise(errors::Runtime::ObjectNotSet);
            return object_->ToString(infoLevel);
        }
        if (const Variant* fresh = freshRendering(infoLevel)) return *fresh;
        return make<T>()->ToString(infoLevel);
    }
    // Appends the child's rendering as concatenation sees it (concatText);
    // for one not yet made, the shared text in place.
    void renderInto(Text& out, std::int16_t infoLevel) const {
        static_assert(StandsInFresh);
        const Variant* fresh = made_ ? nullptr : freshRendering(infoLevel);
        const Text* text = fresh ? fresh->get<Text>() : nullptr;
        if (text) out.append(*text);
        else out.append(concatText(render(infoLevel)));
    }

private:
    // The rendering of a fresh T at a level from 0 to 15, made once per
    // thread; null at other levels.
    static const Variant* freshRendering(std::int16_t infoLevel) {
        thread_local std::array<std::optional<Variant>, 16> fresh;
        if (infoLevel < 0 || static_cast<std::size_t>(infoLevel) >= fresh.size()) return nullptr;
        std::optional<Variant>& text = fresh[static_cast<std::size_t>(infoLevel)];
        if (!text) text = make<T>()->ToString(infoLevel);
        return &*text;
    }

    mutable Ref<T> object_;
    mutable bool made_ = false;
};

}  // namespace tylhart
