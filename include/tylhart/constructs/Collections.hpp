// COLLECTION and ARRAY constructs with their plain records: a collection
// keeps named members (CMember) in a CMemberSet keyed by Ident, an array
// keeps indexed elements (CElement) in a CElementList.
#pragma once

#include "tylhart/containers/List.hpp"
#include "tylhart/containers/Set.hpp"
#include "tylhart/core/Construct.hpp"

namespace tylhart {

// One member of a collection. Definition names the item the member refers
// to; it is a plain field, so any kind (or an uninitialised definition) is
// accepted.
class CMember final : public Object {
    TYLHART_CLASS(CMember)
public:
    Text Ident;
    Text Description;
    Text Help;
    Ref<CDefinition> Definition = make<CDefinition>();

    Ref<CMember> GetCopy() const;
    // Copies the texts and a deep copy of the definition; a source without
    // a definition is refused (runtime error 91) before anything changes.
    void SetFromObject(const Ref<CMember>& toCopy);
    // Ident, Description, Help (exact, case-sensitive), then the definitions.
    bool Compare(const Ref<CMember>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

// One element of an array: the item at index Value.
class CElement final : public Object {
    TYLHART_CLASS(CElement)
public:
    std::int16_t Value = 0;
    Text Description;
    Text Help;
    Ref<CDefinition> Definition = make<CDefinition>();

    Ref<CElement> GetCopy() const;
    void SetFromObject(const Ref<CElement>& toCopy);
    // Value, Description, Help, then the definitions.
    bool Compare(const Ref<CElement>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

// Members keyed by "I" + Ident. Unlike most sets, a copy replaces what the
// set held, and Item accepts an element key as well as a position.
class CMemberSet final : public Set<CMemberSet, Ref<CMember>> {
    TYLHART_CLASS(CMemberSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewMember";
    static constexpr const char16_t* ElementParam = u"Member";
    static constexpr const char16_t* Label = u"MemberSet{Count:";
    static constexpr bool ReplacesOnCopy = true;

    static Text keyText(const Ref<CMember>& member);

    // A copy of the member at a 1-based position or under an element key
    // ("Ipressure"); the store's errors when there is none.
    Ref<CMember> Item(const Variant& index) const;
    // A copy of the member with this Ident (case ignored).
    Ref<CMember> FindItem(const Text& ident) const;

    static void describeItem(ClassBuilder<CMemberSet>& b);
    static void describeFindItem(ClassBuilder<CMemberSet>& b);
};

class CElementList final : public List<CElementList, Ref<CElement>> {
    TYLHART_CLASS(CElementList)
public:
    // Keeps the class's leading C, unlike every other list label; callers
    // compare this text.
    static constexpr const char16_t* Label = u"CElementList{Count:";
};

class CCollection final : public Construct<CCollection> {
    TYLHART_CLASS(CCollection)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKCollectionDef;
    static constexpr const char16_t* DefinitionSource = u"CCollection.Definition";

    Ref<CMemberSet> Members = make<CMemberSet>();
    Text Label;
    Text Help;

    // Definition (deep, through the checked let), Label, Help, and a copy of
    // the member set. Every copy is made before anything is assigned.
    void SetFromObject(const Ref<CCollection>& toCopy);
    // Label, Help, definition, Members.
    bool Compare(const Ref<CCollection>& toCompare) const;
    // "COLLECTION{" definition, and above level 1 the label, help and members.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

class CArray final : public Construct<CArray> {
    TYLHART_CLASS(CArray)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKArrayDef;
    static constexpr const char16_t* DefinitionSource = u"CArray.Definition";

    Text Label;
    Text Help;
    Ref<CElementList> Elements = make<CElementList>();

    // Definition (deep, through the checked let), Label, Help, and a deep
    // copy of the element list. Every copy is made before anything is
    // assigned.
    void SetFromObject(const Ref<CArray>& toCopy);
    // Label, Help, definition, Elements.
    bool Compare(const Ref<CArray>& toCompare) const;
    // "ARRAY{" definition, and above level 1 the label, help and elements.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart
