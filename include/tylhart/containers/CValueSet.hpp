// CValueSet: a set of Variant values keyed by their text form, so the
// number 1 and the text "1" are the same member.
#pragma once

#include "tylhart/containers/Set.hpp"

namespace tylhart {

class CValueSet final : public Set<CValueSet, Variant> {
    TYLHART_CLASS(CValueSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewValue";
    static constexpr const char16_t* ElementParam = u"Value";
    static constexpr const char16_t* Label = u"ValueSet{Count:";
    static Text keyText(const Variant& v) { return v.toText(); }

    // The stored value, which may be the text form when the search used a
    // number of the same text.
    Variant FindItem(const Variant& value) const { return findByKeyText(keyText(value)); }

    static void describeFindItem(ClassBuilder<CValueSet>& b) {
        b.method(u"FindItem", &CValueSet::FindItem, {required(u"Value")});
    }
};

}  // namespace tylhart
