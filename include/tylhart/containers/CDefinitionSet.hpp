// Sets of definitions keyed by name: CDefinitionSet (with the optional kind
// rule) and CVariableDefinitionSet (variable definitions only).
#pragma once

#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/Set.hpp"

namespace tylhart {

// Reads Name, so an uninitialised definition fails with its own error.
struct DefinitionKey {
    static TextView keyText(const Ref<CDefinition>& d) {
        if (!d) errors::raise(errors::Runtime::ObjectNotSet);
        return d->checkedName();
    }
};

class CDefinitionSet final : public Set<CDefinitionSet, Ref<CDefinition>>,
                             public ExactKindRule,
                             public DefinitionKey {
    TYLHART_CLASS(CDefinitionSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewDefinition";
    static constexpr const char16_t* ElementParam = u"Definition";
    static constexpr const char16_t* Label = u"DefinitionSet{Count:";

    Ref<CDefinition> FindItem(const Text& name) const { return findByKeyText(name); }

    void check(const Ref<CDefinition>& d) const { ExactKindRule::check(d); }
    void accepted(const Ref<CDefinition>& d) { ExactKindRule::accepted(d); }
    void copyHeaderFrom(const CDefinitionSet& o) { copyFrom(o); }
    bool headerEquals(const CDefinitionSet& o) const { return equals(o); }
    static void describeHeader(ClassBuilder<CDefinitionSet>& b) { ExactKindRule::describeMembers(b); }
    static void describeFindItem(ClassBuilder<CDefinitionSet>& b) {
        b.method(u"FindItem", &CDefinitionSet::FindItem, {required(u"Name")});
    }
};

class CVariableDefinitionSet final : public Set<CVariableDefinitionSet, Ref<CDefinition>>,
                                     public DefinitionKey {
    TYLHART_CLASS(CVariableDefinitionSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewDefinition";
    static constexpr const char16_t* ElementParam = u"Definition";
    static constexpr const char16_t* Label = u"VariableDefinitionSet{Count:";
    static constexpr const char16_t* ShortLabel = u"DefinitionSet{Count:";

    Ref<CDefinition> FindItem(const Text& name) const { return findByKeyText(name); }

    // Declared over CDefinitionSet, into which a variable definition set
    // cannot be converted: every call is the runtime's type mismatch. Kept
    // as declared because callers may rely on the declared signature.
    Ref<CDefinitionSet> Union(const Ref<CDefinitionSet>& newSet) const;

    // Only variable definitions; the Source is the definition set's own.
    void check(const Ref<CDefinition>& d) const;
    static void describeFindItem(ClassBuilder<CVariableDefinitionSet>& b) {
        b.method(u"FindItem", &CVariableDefinitionSet::FindItem, {required(u"Name")});
    }
};

}  // namespace tylhart
