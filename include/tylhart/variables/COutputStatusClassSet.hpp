// COutputStatusClassSet: output status classes keyed by kind and range
// ("I" Kind ":" Range), with no Union; a copy merges into what it holds.
#pragma once

#include "tylhart/containers/Set.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart {

class COutputStatusClassSet final : public Set<COutputStatusClassSet, Ref<COutputStatusClass>> {
    TYLHART_CLASS(COutputStatusClassSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewOutputStatusClass";
    static constexpr const char16_t* ElementParam = u"OutputStatusClass";
    static constexpr const char16_t* Label = u"OutputStatusClassSet{Count:";
    static constexpr bool HasUnion = false;

    static Text keyText(const Ref<COutputStatusClass>& element);
    static Text keyText(std::int32_t kind, std::int32_t range);

    // A copy of the element stored under Kind and Range; the store's
    // missing-key error when there is none. Kind is not range checked: an
    // unknown kind simply finds nothing.
    Ref<COutputStatusClass> FindItem(enumDDOutputStatusClass kind, std::int32_t range) const;

    Ref<COutputStatusClassSet> Union(const Ref<COutputStatusClassSet>&) const = delete;

    static void describeFindItem(ClassBuilder<COutputStatusClassSet>& b) {
        b.method(u"FindItem", &COutputStatusClassSet::FindItem, {required(u"Kind"), required(u"Range")});
    }
};

}  // namespace tylhart
