#include "tylhart/constructs/Relations.hpp"

#include <string>


namespace tylhart {

namespace {


// The renderings that have a short form below level 1: tag, the definition
// at level 1 and "}". The short form is built before the level is looked
// at, so a Nothing definition is the call on Nothing at every level; from
// level 1 on the definition follows the tag at the same level and the
// details above level 1.
template <class Details>
Variant renderWithShortForm(const char16_t* tag, const Ref<CDefinition>& definition, std::int16_t infoLevel,
                            Details details) {
    Text out = tag + concatText(checked(definition).ToString(1)) + u"}";
    if (infoLevel < 1) return out;
    out = tag + concatText(definition->ToString(infoLevel));
    if (infoLevel > 1) out += details();
    return std::move(out) + u"}";
}

}  // namespace

// ---- CVariableItem ----

void CVariableItem::SetVariable(const Ref<CVariable>& newVariable) {
    const Ref<CDefinition> variableDefinition = checked(newVariable).Definition();
    if (Definition && Definition->initialized() && !Definition->Compare(variableDefinition))
        errors::raise(u"CVariableItem.Variable", errors::NoCompatibleDefinition);
    Definition = variableDefinition;
    variable_ = newVariable;
}

Ref<CVariableItem> CVariableItem::GetCopy() const {
    return copyOf(*this);
}

void CVariableItem::SetFromObject(const Ref<CVariableItem>& toCopy) {
    const CVariableItem& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.Definition).GetCopy();
    Ref<CVariable> variable = checked(source.variable_).GetCopy();
    Definition = std::move(definition);
    variable_ = std::move(variable);
}

bool CVariableItem::Compare(const Ref<CVariableItem>& toCompare) const {
    const CVariableItem& other = checked(toCompare);
    return checked(Definition).Compare(other.Definition) && checked(variable_).Compare(other.variable_);
}

Variant CVariableItem::ToString(std::int16_t infoLevel) const {
    return renderWithShortForm(u"VariableItem{", Definition, infoLevel,
                               [&] { return childText(u", m_Variable:", variable_, infoLevel); });
}

const ClassInfo& CVariableItem::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CVariableItem> b(TypeName);
        b.field(u"Definition", &CVariableItem::Definition)
            .method(u"GetCopy", &CVariableItem::GetCopy)
            .method(u"SetFromObject", &CVariableItem::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &CVariableItem::Compare, {required(u"ToCompare")})
            .property(u"Variable", &CVariableItem::Variable, &CVariableItem::SetVariable)
            .asLet()
            .method(u"ToString", &CVariableItem::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

const ClassInfo& CVariableItemList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CUnit ----

void CUnit::SetUnit(const Ref<CDefinition>& newUnit) {
    requireKind(newUnit, ddoKVariableDef, u"CUnit.Unit");
    unit_ = newUnit;
}

void CUnit::SetFromObject(const Ref<CUnit>& toCopy) {
    const CUnit& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);
    auto reread = copyChild(source.Reread);
    Ref<CDefinition> unit = checked(source.unit_).GetCopy();
    requireKind(unit, ddoKVariableDef, u"CUnit.Unit");
    definition_ = std::move(definition);
    Reread = std::move(reread);
    unit_ = std::move(unit);
    InRecursion = source.InRecursion;
}

bool CUnit::Compare(const Ref<CUnit>& toCompare) const {
    const CUnit& other = checked(toCompare);
    return definitionEquals(other) && checked(unit_).Compare(other.unit_) && rereadEquals(other);
}

Variant CUnit::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    // The unit's definition, not the relation's own, follows the tag:
    // readers of this text look for the unit variable there.
    Text out = u"UNIT{";
    if (unit_) out += concatText(unit_->ToString(infoLevel));
    if (infoLevel > 1) {
        out += childText(u", Unit:", unit_, infoLevel);
        out += childText(u", Reread:", Reread, infoLevel);
        out.append(u", InRecursion:"sv).append(boolText(InRecursion));
    }
    return std::move(out) + u"}";
}

const ClassInfo& CUnit::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CUnit> b(TypeName);
        b.field(u"Reread", &CUnit::Reread)
            .field(u"InRecursion", &CUnit::InRecursion)
            .property(u"Unit", &CUnit::Unit, &CUnit::SetUnit)
            .asLet();
        return describeConstructMembers(b).build();
    }();
    return info;
}

// ---- CRefresh ----

void CRefresh::SetFromObject(const Ref<CRefresh>& toCopy) {
    const CRefresh& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);
    auto changed = copyChild(source.Changed);
    auto reread = copyChild(source.Reread);
    definition_ = std::move(definition);
    Changed = std::move(changed);
    Reread = std::move(reread);
    InRecursion = source.InRecursion;
}

bool CRefresh::Compare(const Ref<CRefresh>& toCompare) const {
    const CRefresh& other = checked(toCompare);
    return definitionEquals(other) && Changed.equals(other.Changed) && rereadEquals(other);
}

Variant CRefresh::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"REFRESH{", infoLevel);
    if (infoLevel > 1) {
        out += childText(u", Reread:", Reread, infoLevel);
        out += childText(u", Changed:", Changed, infoLevel);
        out.append(u", InRecursion:"sv).append(boolText(InRecursion));
    }
    return std::move(out) + u"}";
}

const ClassInfo& CRefresh::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CRefresh> b(TypeName);
        b.field(u"Reread", &CRefresh::Reread)
            .field(u"Changed", &CRefresh::Changed)
            .field(u"InRecursion", &CRefresh::InRecursion);
        return describeConstructMembers(b).build();
    }();
    return info;
}

// ---- CWriteAsOne ----

void CWriteAsOne::SetFromObject(const Ref<CWriteAsOne>& toCopy) {
    const CWriteAsOne& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);
    auto modified = copyChild(source.Modified);
    definition_ = std::move(definition);
    InProgress = source.InProgress;
    IsComplete = source.IsComplete;
    Modified = std::move(modified);
}

bool CWriteAsOne::Compare(const Ref<CWriteAsOne>& toCompare) const {
    const CWriteAsOne& other = checked(toCompare);
    return Modified.equals(other.Modified) && definitionEquals(other);
}

Variant CWriteAsOne::ToString(std::int16_t infoLevel) const {
    return renderWithShortForm(u"WRITE_AS_ONE{", definition_, infoLevel, [&] {
        return u", InProgress:" + boolText(InProgress) + u", IsComplete:" + boolText(IsComplete) +
               childText(u", Modified:", Modified, infoLevel);
    });
}

const ClassInfo& CWriteAsOne::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CWriteAsOne> b(TypeName);
        b.field(u"Modified", &CWriteAsOne::Modified)
            .field(u"InProgress", &CWriteAsOne::InProgress)
            .field(u"IsComplete", &CWriteAsOne::IsComplete);
        return describeConstructMembers(b).build();
    }();
    return info;
}

}  // namespace tylhart
