// The generic ordered list: one design for every ...List class. An instance
// names its element type and label; CDefinitionList adds a kind rule
// through the hooks below.
#pragma once

#include "tylhart/containers/Elements.hpp"
#include "tylhart/containers/KeyedStore.hpp"

namespace tylhart {

// Derived supplies `static constexpr const char16_t* Label` and may hide the
// hooks: check (before an add, may refuse), accepted (after an add),
// copyHeaderFrom, headerEquals, and describeHeader (its extra members, which
// precede the list's own in slot order).
template <class Derived, class Element>
class List : public Object {
public:
    using ElementType = Element;

    // Before wins over After; both are ignored on an empty list; a position
    // beyond Count is the store's subscript error.
    void Add(const Element& newElement, std::int32_t before = 0, std::int32_t after = 0) {
        self().check(newElement);
        std::size_t at = store_.size();
        if (before >= 1 && !store_.empty()) at = store_.positionIndex(before);
        else if (after >= 1 && !store_.empty()) at = store_.positionIndex(after) + 1;
        store_.insert(at, newElement);
        self().accepted(newElement);
    }

    // The stored element itself. Lists have no keys, so a text index fails
    // as a missing key.
    Element Item(const Variant& index) const { return store_[store_.indexFor(index)]; }
    void Remove(const Variant& index) { store_.erase(store_.indexFor(index)); }
    std::int32_t Count() const noexcept { return static_cast<std::int32_t>(store_.size()); }

    Ref<Enumerator> NewEnum() const {
        std::vector<Variant> items;
        items.reserve(store_.size());
        store_.forEach([&](const Element& e) { items.push_back(ElementOps<Element>::toVariant(e)); });
        return make<Enumerator>(std::move(items));
    }

    // First position from Start whose element equals obj under the element
    // class's full comparison; -1 when none. Start below 1 fails at the
    // first look-up, as a walk by position does.
    std::int32_t FindFirst(const Element& obj, std::int32_t start = 1) const {
        for (std::int64_t i = start; i <= Count(); ++i)
            if (ElementOps<Element>::equal(obj, store_.at(i))) return static_cast<std::int32_t>(i);
        return -1;
    }

    Ref<Derived> GetCopy() const {
        auto copy = make<Derived>();
        copy->SetFromObject(Ref<Derived>(const_cast<Derived*>(&self())));
        return copy;
    }

    // Deep copy that replaces the content. A kind refused while re-adding
    // leaves the elements copied so far; the earlier content is gone.
    void SetFromObject(const Ref<Derived>& toCopy) {
        if (!toCopy) errors::raise(errors::Runtime::ObjectNotSet);
        self().copyHeaderFrom(*toCopy);
        if (toCopy.get() == &self()) {
            // Copying a list into itself: take the elements before discarding.
            KeyedStore<Element> old = store_;
            store_.clear();
            old.forEach([&](const Element& e) { Add(ElementOps<Element>::copy(e)); });
            return;
        }
        store_.clear();
        store_.reserve(toCopy->store_.size());
        toCopy->store_.forEach([&](const Element& e) { Add(ElementOps<Element>::copy(e)); });
    }

    bool Compare(const Ref<Derived>& toCompare) const {
        if (!toCompare) errors::raise(errors::Runtime::ObjectNotSet);
        if (!self().headerEquals(*toCompare)) return false;
        if (store_.size() != toCompare->store_.size()) return false;
        for (std::size_t i = 0; i < store_.size(); ++i)
            if (!ElementOps<Element>::equal(store_[i], toCompare->store_[i])) return false;
        return true;
    }

    Variant ToString(std::int16_t infoLevel = 1) const {
        if (infoLevel < 1) return Variant();
        Text out = Text(Derived::Label) + fromUtf8(std::to_string(Count()));
        if (infoLevel > 1) {
            out += u", Items: {";
            store_.forEach([&](const Element& e) {
                // A failing element rendering is skipped; the rest still print.
                try {
                    out += ElementOps<Element>::renderItem(e, static_cast<std::int16_t>(infoLevel - 1));
                } catch (const Error&) {
                }
            });
            out += u"}";
        }
        out += u"}";
        return out;
    }

    // C++ iteration over the stored elements.
    const KeyedStore<Element>& elements() const noexcept { return store_; }

    static ClassInfo describe() {
        ClassBuilder<Derived> b(Derived::TypeName);
        Derived::describeHeader(b);
        b.method(u"Add", &List::Add, {required(u"NewElement"), optional(u"Before", std::int32_t{0}),
                                      optional(u"After", std::int32_t{0})})
            .method(u"Item", &List::Item, {required(u"Index")})
            .method(u"Remove", &List::Remove, {required(u"Index")})
            .getter(u"Count", &List::Count)
            .newEnum(&List::NewEnum)
            .method(u"FindFirst", &List::FindFirst, {required(u"obj"), optional(u"Start", std::int32_t{1})})
            .method(u"GetCopy", &List::GetCopy)
            .method(u"SetFromObject", &List::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &List::Compare, {required(u"ToCompare")})
            .method(u"ToString", &List::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build([] { return Ref<Object>(make<Derived>()); });
    }

protected:
    // Default hooks: no header, no kind rule.
    void check(const Element&) const {}
    void accepted(const Element&) {}
    void copyHeaderFrom(const Derived&) {}
    bool headerEquals(const Derived&) const { return true; }
    static void describeHeader(ClassBuilder<Derived>&) {}

    KeyedStore<Element> store_;

private:
    Derived& self() { return static_cast<Derived&>(*this); }
    const Derived& self() const { return static_cast<const Derived&>(*this); }
};

}  // namespace tylhart
