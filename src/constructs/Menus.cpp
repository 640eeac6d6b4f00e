#include "tylhart/constructs/Menus.hpp"

#include <string>

namespace tylhart {

// ---- CMenuItem ----

CMenuItem::CMenuItem() : qualification_(2) {}

Text CMenuItem::ownDetails() const { return u", Qualification:" + qualification_.text(); }

void CMenuItem::describeOwn(ClassBuilder<CMenuItem>& b) {
    // The index goes to the array by reference, as for the flag classes.
    b.method(u"GetQualificationObj", &CMenuItem::GetQualificationObj)
        .property(u"Qualification", &CMenuItem::Qualification, &CMenuItem::SetQualification,
                  {Param{u"Index", Missing{}, false, true}});
}

const ClassInfo& CMenuItem::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CMenuItemList ----

const ClassInfo& CMenuItemList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CMenu ----

void CMenu::SetFromObject(const Ref<CMenu>& toCopy) {
    const CMenu& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);  // the definition's error comes first
    auto items = copyChild(source.Items);
    definition_ = std::move(definition);
    Label = source.Label;
    review_ = source.review_;
    Items = std::move(items);
}

bool CMenu::Compare(const Ref<CMenu>& toCompare) const {
    const CMenu& other = checked(toCompare);
    return Label == other.Label && review_ == other.review_ && Items.equals(other.Items) &&
           definitionEquals(other);
}

Variant CMenu::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"MENU{", infoLevel);
    if (infoLevel > 1) {
        out.append(u", Label:"sv).append(Label + u", Review:" + boolText(review_));
        if (Items) Items.renderInto(out.append(u", Items:"sv), childLevel(infoLevel));
    }
    return std::move(out) + u"}";
}

const ClassInfo& CMenu::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CMenu> b(TypeName);
        b.field(u"Items", &CMenu::Items).field(u"Label", &CMenu::Label);
        // Review stands behind ToString; its identifier follows from that.
        return describeConstructMembers(b).property(u"Review", &CMenu::Review, &CMenu::SetReview).build();
    }();
    return info;
}

}  // namespace tylhart
