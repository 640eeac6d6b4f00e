// The relation constructs: UNIT (the variable holding the unit of others),
// REFRESH (variables to re-read when others change) and WRITE_AS_ONE
// (variables written together), with the write-as-one relation's items
// (CVariableItem) and their list.
#pragma once

#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/List.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart {

// One variable of a write-as-one relation: its definition and the variable
// object itself.
class CVariableItem final : public Object {
    TYLHART_CLASS(CVariableItem)
public:
    // A plain field without a check; starts uninitialised, so a fresh item
    // accepts any variable and takes over its definition.
    Child<CDefinition> Definition;

    // The variable itself, not a copy.
    Ref<CVariable> Variable() const { return variable_; }
    // An initialised Definition must compare equal to the variable's;
    // then both the variable's definition and the variable are stored by
    // reference. A refused variable leaves both references as they were.
    void SetVariable(const Ref<CVariable>& newVariable);

    Ref<CVariableItem> GetCopy() const;
    // Deep copies of the definition and the variable, stored without the
    // check of the Variable let; both are made before either is assigned.
    void SetFromObject(const Ref<CVariableItem>& toCopy);
    // Definition, then the variables.
    bool Compare(const Ref<CVariableItem>& toCompare) const;
    // Below level 1 the short form "VariableItem{" + definition at level 1
    // + "}"; it is computed first, so a Nothing Definition raises 91 at
    // every level.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    Child<CVariable> variable_;
};

class CVariableItemList final : public List<CVariableItemList, Ref<CVariableItem>> {
    TYLHART_CLASS(CVariableItemList)
public:
    // The data item list's label, reused on purpose: readers of this text
    // treat both lists alike.
    static constexpr const char16_t* Label = u"DataItemList{Count:";
};

// What UNIT and REFRESH share: the variables to re-read and the client's
// re-entry marker, which the library copies, compares and prints but never
// sets itself.
template <class Derived>
class RereadRelation : public Construct<Derived> {
public:
    Child<CVariableDefinitionSet> Reread;
    bool InRecursion = false;

protected:
    // Reread, then InRecursion: the tail of both comparisons.
    bool rereadEquals(const Derived& other) const {
        return Reread.equals(other.Reread) && InRecursion == other.InRecursion;
    }
};

class CUnit final : public RereadRelation<CUnit> {
    TYLHART_CLASS(CUnit)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKUnitDef;
    static constexpr const char16_t* DefinitionSource = u"CUnit.Definition";

    // The definition of the variable that holds the unit, shared.
    Ref<CDefinition> Unit() const { return unit_; }
    // Variable definitions only (Source "CUnit.Unit"); stored by reference.
    void SetUnit(const Ref<CDefinition>& newUnit);

    // Copies of the definition, Reread and the unit, both kinds checked,
    // before anything is assigned.
    void SetFromObject(const Ref<CUnit>& toCopy);
    // Definition, unit, Reread, InRecursion.
    bool Compare(const Ref<CUnit>& toCompare) const;
    // "UNIT{" and the unit's definition, never the relation's own.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    Ref<CDefinition> unit_ = makeDefinition(u"unknown", ddoKVariableDef);
};

class CRefresh final : public RereadRelation<CRefresh> {
    TYLHART_CLASS(CRefresh)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKRefreshDef;
    static constexpr const char16_t* DefinitionSource = u"CRefresh.Definition";

    Child<CVariableDefinitionSet> Changed;

    // Copies of the definition and both sets before anything is assigned.
    void SetFromObject(const Ref<CRefresh>& toCopy);
    // Definition, Changed, Reread, InRecursion.
    bool Compare(const Ref<CRefresh>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

class CWriteAsOne final : public Construct<CWriteAsOne> {
    TYLHART_CLASS(CWriteAsOne)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKWriteAsOneDef;
    static constexpr const char16_t* DefinitionSource = u"CWriteAsOne.Definition";

    Child<CVariableItemList> Modified;
    // Maintained by clients while they write the group.
    bool InProgress = false;
    bool IsComplete = false;

    // Copies of the definition and the item list (items and their
    // variables copied deep) before anything is assigned.
    void SetFromObject(const Ref<CWriteAsOne>& toCopy);
    // Modified, then the definition. InProgress and IsComplete are
    // transient client state and take no part.
    bool Compare(const Ref<CWriteAsOne>& toCompare) const;
    // Below level 1 the short form "WRITE_AS_ONE{" + definition at level 1
    // + "}" instead of Empty.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart
