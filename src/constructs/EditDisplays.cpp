#include "tylhart/constructs/EditDisplays.hpp"

#include <string>

namespace tylhart {

// ---- CEditDisplayItem, CEditDisplayItemList ----

const ClassInfo& CEditDisplayItem::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

const ClassInfo& CEditDisplayItemList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CEditDisplay ----

void CEditDisplay::SetFromObject(const Ref<CEditDisplay>& toCopy) {
    const CEditDisplay& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);  // the definition's error comes first
    auto displayItems = copyChild(source.DisplayItems);
    auto editItems = copyChild(source.EditItems);
    auto preEditActions = copyChild(source.PreEditActions);
    auto postEditActions = copyChild(source.PostEditActions);
    definition_ = std::move(definition);
    Label = source.Label;
    DisplayItems = std::move(displayItems);
    EditItems = std::move(editItems);
    PreEditActions = std::move(preEditActions);
    PostEditActions = std::move(postEditActions);
}

bool CEditDisplay::Compare(const Ref<CEditDisplay>& toCompare) const {
    const CEditDisplay& other = checked(toCompare);
    return Label == other.Label && DisplayItems.equals(other.DisplayItems) &&
           EditItems.equals(other.EditItems) && PreEditActions.equals(other.PreEditActions) &&
           PostEditActions.equals(other.PostEditActions) && definitionEquals(other);
}

Variant CEditDisplay::ToString(std::int16_t infoLevel) const {
    // Built before the level is looked at, so a definition of Nothing fails
    // at every level.
    Text shortForm = u"EDIT_DISPLAY{" + concatText(checked(definition_).ToString(1)) + u"}";
    if (infoLevel < 1) return shortForm;
    Text out = renderHead(u"EDIT_DISPLAY{", infoLevel);
    if (infoLevel > 1) {
        out.append(u", Label:"sv).append(Label);
        const auto add = [&](const char16_t* label, const auto& list) {
            if (list) list.renderInto(out.append(label), childLevel(infoLevel));
        };
        add(u", DisplayItems:", DisplayItems);
        add(u", EditItems:", EditItems);
        add(u", PreEditActions:", PreEditActions);
        add(u", PostEditActions:", PostEditActions);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CEditDisplay::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CEditDisplay> b(TypeName);
        b.field(u"DisplayItems", &CEditDisplay::DisplayItems)
            .field(u"EditItems", &CEditDisplay::EditItems)
            .field(u"PreEditActions", &CEditDisplay::PreEditActions)
            .field(u"PostEditActions", &CEditDisplay::PostEditActions)
            .field(u"Label", &CEditDisplay::Label);
        return describeConstructMembers(b).build();
    }();
    return info;
}

}  // namespace tylhart
