// What every list and set shares: the store, the count, the enumerator, the
// copy protocol, the rendering pattern and the default policy hooks.
#pragma once

#include "tylhart/containers/Elements.hpp"
#include "tylhart/containers/KeyedStore.hpp"
#include "tylhart/core/CopyOnWrite.hpp"

namespace tylhart {

// Where a list keeps its elements: in the list itself.
template <class Element>
class OwnStore {
public:
    const KeyedStore<Element>& read() const noexcept { return store_; }
    KeyedStore<Element>& write() noexcept { return store_; }

private:
    KeyedStore<Element> store_;
};

// Where a set keeps its elements: a store that a shallow copy shares with
// its source until either side changes. Both hold the very same element
// objects, so until one adds or removes an element nobody can tell one
// store from two, and a copy costs no entries, keys or index of its own.
template <class Element>
using SharedStore = CopyOnWrite<KeyedStore<Element>>;

template <class Derived, class Element, class Store = OwnStore<Element>>
class Container : public Object {
public:
    using ElementType = Element;
    static constexpr bool FreshAreAlike = true;  // see Child

    std::int32_t Count() const noexcept { return static_cast<std::int32_t>(stored().size()); }

    Ref<Enumerator> NewEnum() const {
        std::vector<Variant> items;
        items.reserve(stored().size());
        stored().forEach([&](const Element& e) { items.push_back(ElementOps<Element>::toVariant(e)); });
        return make<Enumerator>(std::move(items));
    }

    Ref<Derived> GetCopy() const {
        return copyOf(self());
    }

    // C++ iteration over the stored elements.
    const KeyedStore<Element>& elements() const noexcept { return stored(); }

protected:
    // Label and count; above level 1 ", Items: {", each element one level
    // down, "}"; then "}". A failing element rendering is skipped and the
    // rest still print; only a graph too deep or a text too long fails the
    // whole rendering, since a cut-off text would pass for a complete one.
    Text render(std::int16_t infoLevel) const {
        Text out(Derived::Label);
        out.append(decimal(Count()));
        if (infoLevel > 1) {
            out += u", Items: {";
            stored().forEach([&](const Element& e) {
                try {
                    ElementOps<Element>::renderItem(out, e, static_cast<std::int16_t>(infoLevel - 1));
                } catch (const Error& e) {
                    if (e.number() == errors::numberOf(errors::Runtime::OutOfStackSpace) ||
                        e.number() == errors::numberOf(errors::Runtime::OutOfMemory))
                        throw;
                }
                checkElements(static_cast<std::int64_t>(out.size()));
            });
            out += u"}";
        }
        return std::move(out) + u"}";
    }

    // Default policy hooks; an instance hides the ones it needs: check may
    // refuse an element before it is added, accepted follows a successful
    // add, the header hooks copy and compare the instance's own fields, and
    // describeHeader lists those fields ahead of the container's members.
    void check(const Element&) const {}
    void accepted(const Element&) {}
    void copyHeaderFrom(const Derived&) {}
    bool headerEquals(const Derived&) const { return true; }
    static void describeHeader(ClassBuilder<Derived>&) {}

    Derived& self() { return static_cast<Derived&>(*this); }
    const Derived& self() const { return static_cast<const Derived&>(*this); }

    const KeyedStore<Element>& stored() const noexcept { return store_.read(); }
    KeyedStore<Element>& storeToChange() { return store_.write(); }

    Store store_;
};

}  // namespace tylhart
