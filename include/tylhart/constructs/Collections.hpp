// COLLECTION and ARRAY constructs with their plain records: a collection
// keeps named members (CMember) in a CMemberSet keyed by Ident, an array
// keeps indexed elements (CElement) in a CElementList.
#pragma once

#include "tylhart/containers/List.hpp"
#include "tylhart/containers/Set.hpp"
#include "tylhart/core/Construct.hpp"

namespace tylhart {

// What a collection member and an array element share: a key field of
// their own, Description, Help and a definition. Definition names the item
// the record refers to; it is a plain field, so any kind (or an
// uninitialised definition) is accepted.
// Derived supplies:
//   static constexpr const char16_t* Tag;      "Member{"
//   static constexpr const char16_t* KeyName;  "Ident", its dispatch name
//   static constexpr auto Key;                 &CMember::Ident
template <class Derived>
class Record : public Object {
public:
    Text Description;
    Text Help;
    Child<CDefinition> Definition;

    Ref<Derived> GetCopy() const;
    // Copies the key, the texts and a deep copy of the definition; a source
    // without a definition is refused (runtime error 91) before anything
    // changes.
    void SetFromObject(const Ref<Derived>& toCopy);
    // Key, Description, Help (exact, case-sensitive), then the definitions.
    bool Compare(const Ref<Derived>& toCompare) const;
    // Tag and definition; above level 1 the key, Description and Help.
    Variant ToString(std::int16_t infoLevel = 1) const;

protected:
    static ClassInfo describe();
};

// One member of a collection, named by Ident.
class CMember final : public Record<CMember> {
    TYLHART_CLASS(CMember)
public:
    Text Ident;

    static constexpr const char16_t* Tag = u"Member{";
    static constexpr const char16_t* KeyName = u"Ident";
    static constexpr auto Key = &CMember::Ident;
};

// One element of an array: the item at index Value.
class CElement final : public Record<CElement> {
    TYLHART_CLASS(CElement)
public:
    std::int16_t Value = 0;

    static constexpr const char16_t* Tag = u"Element{";
    static constexpr const char16_t* KeyName = u"Value";
    static constexpr auto Key = &CElement::Value;
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

    static const Text& keyText(const Ref<CMember>& member);

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

// What a collection and an array share: Label, Help and one container of
// records, held as a deep copy.
// Derived supplies, besides what Construct asks:
//   static constexpr const char16_t* Tag;           "COLLECTION{"
//   static constexpr const char16_t* ChildrenName;  "Members", its dispatch name
//   static constexpr auto Children;                 &CCollection::Members
//   static constexpr bool ChildrenFirst;            slot of the container, which
//                                                   fixes every dispatch identifier
template <class Derived>
class RecordConstruct : public Construct<Derived> {
public:
    Text Label;
    Text Help;

    // Definition (deep, through the checked let), Label, Help, and a copy of
    // the container. Every copy is made before anything is assigned.
    void SetFromObject(const Ref<Derived>& toCopy);
    // Label, Help, definition, then the containers.
    bool Compare(const Ref<Derived>& toCompare) const;
    // Tag and definition; above level 1 the label, help and the container
    // one level down.
    Variant ToString(std::int16_t infoLevel = 1) const;

protected:
    static ClassInfo describe();
};

class CCollection final : public RecordConstruct<CCollection> {
    TYLHART_CLASS(CCollection)
public:
    Child<CMemberSet> Members;

    static constexpr enumDDObjectKind ObjectKind = ddoKCollectionDef;
    static constexpr const char16_t* DefinitionSource = u"CCollection.Definition";
    static constexpr const char16_t* Tag = u"COLLECTION{";
    static constexpr const char16_t* ChildrenName = u"Members";
    static constexpr auto Children = &CCollection::Members;
    static constexpr bool ChildrenFirst = true;
};

class CArray final : public RecordConstruct<CArray> {
    TYLHART_CLASS(CArray)
public:
    Child<CElementList> Elements;

    static constexpr enumDDObjectKind ObjectKind = ddoKArrayDef;
    static constexpr const char16_t* DefinitionSource = u"CArray.Definition";
    static constexpr const char16_t* Tag = u"ARRAY{";
    static constexpr const char16_t* ChildrenName = u"Elements";
    static constexpr auto Children = &CArray::Elements;
    static constexpr bool ChildrenFirst = false;
};

}  // namespace tylhart
