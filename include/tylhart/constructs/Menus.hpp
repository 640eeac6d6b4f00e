// The MENU construct: a labelled, ordered list of menu items, each naming
// another DD item through its definition and a handle, with qualification
// flags that say how the item is shown.
#pragma once

#include "tylhart/constructs/HandleItem.hpp"
#include "tylhart/containers/List.hpp"
#include "tylhart/core/Construct.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart {

// One item of a menu. Its qualification flags (display value; read-only,
// also called review) live in a two-flag array that the item owns, as the
// flag classes do.
class CMenuItem final : public HandleItem<CMenuItem> {
    TYLHART_CLASS(CMenuItem)
public:
    static constexpr const char16_t* Tag = u"MenuItem{";
    static constexpr const char16_t* ObjSource = u"CMenuItem.Obj";
    static constexpr bool ShortForm = true;

    CMenuItem();

    // The flag array itself: changes made through it are the item's.
    Ref<Object> GetQualificationObj() const { return qualification_.object(); }
    // The index goes to the array unchecked; ddmiqTReadOnly and
    // ddmiqTReview are one flag.
    bool Qualification(enumDDMenuItemQualificationType index) const { return qualification_.flag(index); }
    void SetQualification(enumDDMenuItemQualificationType index, bool value) {
        qualification_.setFlag(index, value);
    }

    // Hooks of HandleItem: the flags are copied and compared by their text,
    // which must fit this item's array (an array resized through
    // GetQualificationObj refuses it with the array's own error, before any
    // flag changes).
    Text ownState() const { return qualification_.text(); }
    void setOwnState(const Text& text) { qualification_.setText(text); }
    Text ownDetails() const;
    static void describeOwn(ClassBuilder<CMenuItem>& b);

private:
    detail::FlagArrayLink qualification_;
};

class CMenuItemList final : public List<CMenuItemList, Ref<CMenuItem>> {
    TYLHART_CLASS(CMenuItemList)
public:
    static constexpr const char16_t* Label = u"MenuItemList{Count:";
};

class CMenu final : public Construct<CMenu> {
    TYLHART_CLASS(CMenu)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKMenuDef;
    static constexpr const char16_t* DefinitionSource = u"Menu.Definition";

    Child<CMenuItemList> Items;
    Text Label;

    bool Review() const noexcept { return review_; }
    void SetReview(bool value) noexcept { review_ = value; }

    // Definition (deep, through the checked let), Label, Review and a copy
    // of the items; every copy is made before anything is assigned.
    void SetFromObject(const Ref<CMenu>& toCopy);
    // Label, Review, Items, then the definition.
    bool Compare(const Ref<CMenu>& toCompare) const;
    // "MENU{" and the definition; above level 1 Label, Review and the items
    // one level down.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    bool review_ = false;
};

}  // namespace tylhart
