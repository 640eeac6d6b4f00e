// CEnumeratorSet and CBitEnumeratorSet: enumerators and bit enumerators
// keyed by their Value ("I" + the decimal value). Both merge on a copy and
// render a short label below level 1.
#pragma once

#include "tylhart/containers/Set.hpp"
#include "tylhart/variables/Enumerators.hpp"

namespace tylhart {

// The key of either element class: its Value in decimal.
struct EnumeratorValueKey {
    static Text keyText(std::int32_t value);
    template <class E>
    static Text keyText(const Ref<E>& element) {
        if (!element) errors::raise(errors::Runtime::ObjectNotSet);
        return keyText(element->Value);
    }
};

class CEnumeratorSet final : public Set<CEnumeratorSet, Ref<CEnumerator>>, public EnumeratorValueKey {
    TYLHART_CLASS(CEnumeratorSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewEnumerator";
    static constexpr const char16_t* ElementParam = u"Enumerator";
    static constexpr const char16_t* Label = u"VariableEnumeratorSet{Count:";
    static constexpr const char16_t* ShortLabel = u"EnumeratorSet{Count:";
    using EnumeratorValueKey::keyText;

    // A copy of the enumerator with this value; Nothing, not an error, when
    // there is none (callers test the result for Nothing).
    Ref<CEnumerator> FindItem(std::int32_t value) const;

    static void describeFindItem(ClassBuilder<CEnumeratorSet>& b) {
        b.method(u"FindItem", &CEnumeratorSet::FindItem, {required(u"Value")});
    }
};

class CBitEnumeratorSet final : public Set<CBitEnumeratorSet, Ref<CBitEnumerator>>,
                                public EnumeratorValueKey {
    TYLHART_CLASS(CBitEnumeratorSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewBitEnumerator";
    static constexpr const char16_t* ElementParam = u"BitEnumerator";
    static constexpr const char16_t* Label = u"VariableBitEnumeratorSet{Count:";
    static constexpr const char16_t* ShortLabel = u"BitEnumeratorSet{Count:";
    using EnumeratorValueKey::keyText;

    // A copy of the bit enumerator with this value; the store's missing-key
    // error when there is none.
    Ref<CBitEnumerator> FindItem(std::int32_t value) const;

    static void describeFindItem(ClassBuilder<CBitEnumeratorSet>& b) {
        b.method(u"FindItem", &CBitEnumeratorSet::FindItem, {required(u"Value")});
    }
};

}  // namespace tylhart
