// CObjectSet: object handles keyed by the name of the held construct's
// definition. A handle that holds nothing cannot be added.
#pragma once

#include "tylhart/containers/Set.hpp"
#include "tylhart/core/CObject.hpp"

namespace tylhart {

class CObjectSet final : public Set<CObjectSet, Ref<CObject>> {
    TYLHART_CLASS(CObjectSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewObject";
    static constexpr const char16_t* ElementParam = u"Object";
    static constexpr const char16_t* Label = u"ObjectSet{Count:";
    static constexpr bool ReplacesOnCopy = true;

    // The name of the held construct's definition, read in place; the key
    // keeps the definition alive while it is used.
    struct HandleKey {
        Ref<CDefinition> definition;
        TextView name;
        operator TextView() const noexcept { return name; }  // NOLINT: a key reads as its text
    };
    static HandleKey keyText(const Ref<CObject>& handle);

    // Looks up by the given definition's name.
    Ref<CObject> FindItem(const Ref<CDefinition>& objectDef) const;

    static void describeFindItem(ClassBuilder<CObjectSet>& b) {
        b.method(u"FindItem", &CObjectSet::FindItem, {required(u"ObjectDef")});
    }
};

}  // namespace tylhart
