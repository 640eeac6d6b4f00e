// The generic ordered list: one design for every ...List class. An instance
// names its element type and label; CDefinitionList adds a kind rule
// through the hooks below.
#pragma once

#include "tylhart/containers/Container.hpp"

namespace tylhart {

// Derived supplies `static constexpr const char16_t* Label` and may hide the
// policy hooks of Container.
template <class Derived, class Element>
class List : public Container<Derived, Element> {
    using Base = Container<Derived, Element>;
    using Base::self;
    using Base::stored;
    using Base::storeToChange;

public:

    // Before wins over After; both are ignored on an empty list; a position
    // beyond Count is the store's subscript error.
    void Add(const Element& newElement, std::int32_t before = 0, std::int32_t after = 0) {
        self().check(newElement);
        KeyedStore<Element>& store = storeToChange();
        std::size_t at = store.size();
        if (before >= 1 && !store.empty()) at = store.positionIndex(before);
        else if (after >= 1 && !store.empty()) at = store.positionIndex(after) + 1;
        store.insert(at, newElement);
        self().accepted(newElement);
    }

    // The stored element itself. Lists have no keys, so a text index fails
    // as a missing key.
    Element Item(const Variant& index) const { return stored()[stored().indexFor(index)]; }
    void Remove(const Variant& index) { storeToChange().erase(stored().indexFor(index)); }
    // First position from Start whose element equals obj under the element
    // class's full comparison; -1 when none. Start below 1 fails at the
    // first look-up, as a walk by position does.
    std::int32_t FindFirst(const Element& obj, std::int32_t start = 1) const {
        for (std::int64_t i = start; i <= this->Count(); ++i)
            if (ElementOps<Element>::equal(obj, stored().at(i))) return static_cast<std::int32_t>(i);
        return -1;
    }

    // Deep copy that replaces the content. The elements are copied before
    // anything changes, so a copy that fails (Nothing stored, nesting too
    // deep) leaves the list as it was; a kind refused while re-adding leaves
    // the elements added so far, and the earlier content is gone.
    void SetFromObject(const Ref<Derived>& toCopy) {
        if (!toCopy) errors::raise(errors::Runtime::ObjectNotSet);
        std::vector<Element> copies;
        copies.reserve(toCopy->stored().size());
        toCopy->stored().forEach([&](const Element& e) { copies.push_back(ElementOps<Element>::copy(e)); });
        self().copyHeaderFrom(*toCopy);
        storeToChange().clear();
        storeToChange().reserve(copies.size());
        for (const Element& e : copies) Add(e);
    }

    bool Compare(const Ref<Derived>& toCompare) const {
        if (!toCompare) errors::raise(errors::Runtime::ObjectNotSet);
        if (!self().headerEquals(*toCompare)) return false;
        const KeyedStore<Element>& mine = stored();
        const KeyedStore<Element>& theirs = toCompare->stored();
        if (mine.size() != theirs.size()) return false;
        for (std::size_t i = 0; i < mine.size(); ++i)
            if (!ElementOps<Element>::equal(mine[i], theirs[i])) return false;
        return true;
    }

    Variant ToString(std::int16_t infoLevel = 1) const {
        if (infoLevel < 1) return Variant();
        return this->render(infoLevel);
    }

    static ClassInfo describe() {
        ClassBuilder<Derived> b(Derived::TypeName);
        Derived::describeHeader(b);
        b.method(u"Add", &List::Add, {required(u"NewElement"), optional(u"Before", std::int32_t{0}),
                                      optional(u"After", std::int32_t{0})})
            .method(u"Item", &List::Item, {required(u"Index")})
            .method(u"Remove", &List::Remove, {required(u"Index")})
            .getter(u"Count", &Base::Count)
            .newEnum(&Base::NewEnum)
            .method(u"FindFirst", &List::FindFirst, {required(u"obj"), optional(u"Start", std::int32_t{1})})
            .method(u"GetCopy", &Base::GetCopy)
            .method(u"SetFromObject", &List::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &List::Compare, {required(u"ToCompare")})
            .method(u"ToString", &List::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }

};

}  // namespace tylhart
