// The generic unique set: one design for every ...Set class. Elements are
// stored under "I" + the text of their key property, compared without
// regard to case; Item and FindItem hand out copies, NewEnum the elements.
#pragma once

#include <utility>

#include "tylhart/containers/Container.hpp"

namespace tylhart {

// Derived supplies:
//   static constexpr const char16_t* Label;       long label (ToString >= 1)
//   static Text keyText(const Element&);          text of the key property
//                                                 (a const Text&, or anything
//                                                 that reads as a TextView
//                                                 while it lives, saves a copy)
//   a FindItem member and `static void describeFindItem(ClassBuilder<Derived>&)`
// and may hide the policy hooks of Container and these: ShortLabel (a
// non-null label makes levels below 1 render "label count}"),
// ReplacesOnCopy, HasUnion, describeItem, and Union.
template <class Derived, class Element>
class Set : public Container<Derived, Element, SharedStore<Element>> {
    using Base = Container<Derived, Element, SharedStore<Element>>;
    using Base::self;
    using Base::stored;
    using Base::storeToChange;

public:

    // Never replaces: a present key is the store's duplicate-key error,
    // raised before anything changes, and the set stays as it was.
    void Add(const Element& newElement) {
        self().check(newElement);
        addUnder(newElement, keyOf(newElement));
    }

    // Replaces an element with the same key and moves it to the end. The
    // new element is checked and its key computed before the stored one
    // goes, so a refused element leaves the set as it was.
    void Insert(const Element& newElement) {
        self().check(newElement);
        Text key = keyOf(newElement);
        storeToChange().eraseKey(TextView(key));
        addUnder(newElement, std::move(key));
    }

    // Copy of this set with every element of NewSet inserted; the result
    // shares its elements with both operands.
    Ref<Derived> Union(const Ref<Derived>& newSet) const {
        if (!newSet) errors::raise(errors::Runtime::ObjectNotSet);
        Ref<Derived> result = this->GetCopy();
        newSet->stored().forEach([&](const Element& e) { result->Insert(e); });
        return result;
    }

    // A fresh copy of the element at Index (values are returned as stored).
    Element Item(std::int32_t index) const { return ElementOps<Element>::copy(stored().at(index)); }

    // Absent keys and keys that cannot be computed are ignored.
    void Remove(const Element& element) {
        try {
            const auto& property = Derived::keyText(element);
            const PrefixedKey key{KeyPrefix, property};
            if (stored().contains(key)) storeToChange().eraseKey(key);
        } catch (const Error&) {
        }
    }

    bool IsInSet(const Element& element) const {
        try {
            const auto& property = Derived::keyText(element);
            return stored().contains(PrefixedKey{KeyPrefix, property});
        } catch (const Error&) {
            return false;
        }
    }

    // Shallow: the same element objects are added. Most sets merge into what
    // they hold, so a shared key fails part-way with the duplicate-key error;
    // sets with ReplacesOnCopy discard their content, but only once every
    // element is in: the source's elements are shared objects whose keys may
    // have changed since they were added (two members renamed alike, a
    // handle emptied), and such a refused copy keeps what the set held.
    void SetFromObject(const Ref<Derived>& toCopy) {
        if (!toCopy) errors::raise(errors::Runtime::ObjectNotSet);
        self().copyHeaderFrom(*toCopy);
        if (toCopy.get() == &self()) {
            // Into itself: a merging set meets its own first key as a
            // duplicate; a replacing one keeps what it holds.
            if (!Derived::ReplacesOnCopy && !stored().empty()) errors::raise(errors::Runtime::DuplicateKey);
            return;
        }
        if (sharesOnCopy(*toCopy)) {
            this->store_ = toCopy->store_;
            return;
        }
        if constexpr (Derived::ReplacesOnCopy) {
            // The held store is set aside whole, shared or not, without a copy.
            SharedStore<Element> kept = std::exchange(this->store_, SharedStore<Element>());
            try {
                toCopy->stored().forEach([&](const Element& e) { Add(e); });
            } catch (...) {
                this->store_ = std::move(kept);
                throw;
            }
        } else {
            toCopy->stored().forEach([&](const Element& e) { Add(e); });
        }
    }

    // Same header, same Count, and every key of ToCompare present here:
    // order and everything but the keys are ignored. A copy of an element
    // has its key, so the key is read from the stored element itself.
    bool Compare(const Ref<Derived>& toCompare) const {
        if (!toCompare) errors::raise(errors::Runtime::ObjectNotSet);
        if (!self().headerEquals(*toCompare)) return false;
        if (stored().size() != toCompare->stored().size()) return false;
        return toCompare->stored().forEach([&](const Element& e) { return IsInSet(e); });
    }

    Variant ToString(std::int16_t infoLevel = 1) const {
        if (infoLevel < 1) {
            if constexpr (Derived::ShortLabel != nullptr)
                return Text(Derived::ShortLabel) + decimal(this->Count()) + u"}";
            else return Variant();
        }
        return this->render(infoLevel);
    }

    // The element stored under the key made from a key property's text, as
    // a copy; the missing-key error when absent.
    Element findByKeyText(TextView keyText) const {
        return ElementOps<Element>::copy(stored().atKey(PrefixedKey{KeyPrefix, keyText}));
    }
    // The stored element under that key, or null.
    const Element* findKeyText(TextView keyText) const { return stored().lookup(PrefixedKey{KeyPrefix, keyText}); }

    static ClassInfo describe() {
        ClassBuilder<Derived> b(Derived::TypeName);
        Derived::describeHeader(b);
        b.method(u"Add", &Derived::Add, {required(Derived::NewElementParam)})
            .method(u"Insert", &Derived::Insert, {required(Derived::NewElementParam)});
        if constexpr (Derived::HasUnion) b.method(u"Union", &Derived::Union, {required(u"NewSet")});
        Derived::describeItem(b);
        Derived::describeFindItem(b);
        b.method(u"Remove", &Derived::Remove, {required(Derived::ElementParam)})
            .getter(u"Count", &Base::Count)
            .newEnum(&Base::NewEnum)
            .method(u"IsInSet", &Set::IsInSet, {required(Derived::ElementParam)})
            .method(u"GetCopy", &Base::GetCopy)
            .method(u"SetFromObject", &Set::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &Set::Compare, {required(u"ToCompare")})
            .method(u"ToString", &Set::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }

protected:
    static constexpr const char16_t* ShortLabel = nullptr;
    // Named arguments of Add/Insert and Remove/IsInSet; each set names them
    // after its element ("NewDefinition", "Definition").
    static constexpr const char16_t* NewElementParam = u"NewElement";
    static constexpr const char16_t* ElementParam = u"Element";
    static constexpr bool ReplacesOnCopy = false;
    static constexpr bool HasUnion = true;
    static void describeItem(ClassBuilder<Derived>& b) { b.method(u"Item", &Set::Item, {required(u"Index")}); }

    // Keys are "I" + the key property's text; a member set's Item takes
    // such a key, so the prefix is visible to callers.
    static constexpr char16_t KeyPrefix = u'I';

private:
    static Text keyOf(const Element& element) {
        const auto& property = Derived::keyText(element);
        const TextView text = property;
        Text key;
        key.reserve(1 + text.size());
        return std::move(key.append(1, KeyPrefix).append(text));
    }
    // Stores an element whose key is known to be absent.
    void addUnder(const Element& newElement, Text key) {
        storeToChange().append(newElement, std::move(key));
        self().accepted(newElement);
    }

    // Whether copying Source may share its store instead of adding its
    // elements one by one. Adding them would store the same elements under
    // the keys they have now, in order, so sharing is the same result when
    // every stored key is still what its element's key property gives (an
    // element changed since it was added gets a new key, or a duplicate, on
    // a real add), when nothing is merged into (this set is empty or
    // replaces its content) and when the set has no hooks of its own that
    // an add would run.
    bool sharesOnCopy(const Derived& source) const {
        if constexpr (!DefaultHooks) {
            return false;
        } else {
            if (!Derived::ReplacesOnCopy && !stored().empty()) return false;
            try {
                return source.stored().forEachKeyed([](const Element& e, std::optional<TextView> key) {
                    if (!key) return false;
                    const auto& property = Derived::keyText(e);
                    const TextView text = property;
                    return key->size() == text.size() + 1 && (*key)[0] == KeyPrefix &&
                           key->substr(1) == text;
                });
            } catch (const Error&) {
                return false;  // the add reports it
            }
        }
    }
    static constexpr bool DefaultHooks =
        std::is_same_v<decltype(&Derived::check), decltype(&Set::check)> &&
        std::is_same_v<decltype(&Derived::accepted), decltype(&Set::accepted)>;
};

}  // namespace tylhart
