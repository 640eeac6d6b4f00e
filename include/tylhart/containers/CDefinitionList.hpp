// CDefinitionList: an ordered list of definitions that can insist on one kind.
#pragma once

#include "tylhart/containers/List.hpp"
#include "tylhart/core/CDefinition.hpp"

namespace tylhart {

// The kind rule shared by CDefinitionList and CDefinitionSet. Its errors
// report "CDefinitionSet.Add" whatever member was called; clients match on it.
struct ExactKindRule {
    Variant UseExactKind = false;  // public field; a Boolean in use
    enumDDObjectKind KindUsed() const noexcept { return kindUsed_; }
    void SetKindUsed(enumDDObjectKind newKind);

    void check(const Ref<CDefinition>& d) const;
    void accepted(const Ref<CDefinition>& d);
    // Copies UseExactKind and KindUsed through the checked setter; the check
    // runs first, so a refused copy changes neither.
    void copyFrom(const ExactKindRule& other);
    bool equals(const ExactKindRule& other) const;

    template <class C>
    static void describeMembers(ClassBuilder<C>& b) {
        b.field(u"UseExactKind", static_cast<Variant C::*>(&C::UseExactKind))
            .property(u"KindUsed", &C::KindUsed, &C::SetKindUsed);
    }

private:
    bool exact() const { return conditionHolds(UseExactKind); }
    enumDDObjectKind kindUsed_ = ddoKUndefined;
};

class CDefinitionList final : public List<CDefinitionList, Ref<CDefinition>>, public ExactKindRule {
    TYLHART_CLASS(CDefinitionList)
public:
    static constexpr const char16_t* Label = u"DefinitionList{Count:";

    void check(const Ref<CDefinition>& d) const { ExactKindRule::check(d); }
    void accepted(const Ref<CDefinition>& d) { ExactKindRule::accepted(d); }
    void copyHeaderFrom(const CDefinitionList& o) { copyFrom(o); }
    bool headerEquals(const CDefinitionList& o) const { return equals(o); }
    static void describeHeader(ClassBuilder<CDefinitionList>& b) { ExactKindRule::describeMembers(b); }
};

}  // namespace tylhart
