// The EDIT_DISPLAY construct: a labelled screen with items shown for
// information, items offered for editing, and the methods to run before and
// after the edit.
#pragma once

#include "tylhart/constructs/HandleItem.hpp"
#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/core/Construct.hpp"

namespace tylhart {

// One item of an edit display: a menu item without qualification flags.
// Handles on constructs of every kind are accepted. The item once carried a
// kind test of its own, but it compared a single reading of the kind with
// two different kinds at once, so it could never refuse; hosts put
// variables, write-as-one relations and anything else here and rely on it.
class CEditDisplayItem final : public HandleItem<CEditDisplayItem> {
    TYLHART_CLASS(CEditDisplayItem)
public:
    static constexpr const char16_t* Tag = u"EditDisplayItem{";
    static constexpr const char16_t* ObjSource = u"CEditDisplayItem.Obj";
    static constexpr bool ShortForm = false;
};

class CEditDisplayItemList final : public List<CEditDisplayItemList, Ref<CEditDisplayItem>> {
    TYLHART_CLASS(CEditDisplayItemList)
public:
    static constexpr const char16_t* Label = u"EditDisplayItemList{Count:";
};

class CEditDisplay final : public Construct<CEditDisplay> {
    TYLHART_CLASS(CEditDisplay)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKEditDisplayDef;
    // Without the class's leading C; callers match on this text.
    static constexpr const char16_t* DefinitionSource = u"EditDisplay.Definition";

    Child<CEditDisplayItemList> DisplayItems;
    Child<CEditDisplayItemList> EditItems;
    Child<CDefinitionList> PreEditActions;
    Child<CDefinitionList> PostEditActions;
    Text Label;

    // Definition (deep, through the checked let), Label and a copy of each
    // of the four lists; every copy is made before anything is assigned.
    void SetFromObject(const Ref<CEditDisplay>& toCopy);
    // Label, DisplayItems, EditItems, PreEditActions, PostEditActions, then
    // the definition.
    bool Compare(const Ref<CEditDisplay>& toCompare) const;
    // Below level 1 the short form "EDIT_DISPLAY{" + definition at level 1
    // + "}" (a definition of Nothing is the call on Nothing at every level).
    // From level 1 the definition at the level asked; above level 1 Label
    // and the four lists one level down.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart
