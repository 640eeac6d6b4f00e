#include "tylhart/constructs/Collections.hpp"

#include <string>

namespace tylhart {

namespace {

// The definition of a record, deep-copied; a record without one cannot be
// copied, as calling GetCopy on Nothing fails.
Ref<CDefinition> copiedDefinition(const Ref<CDefinition>& definition) {
    return checked(definition).GetCopy();
}

bool definitionsEqual(const Ref<CDefinition>& mine, const Ref<CDefinition>& theirs) {
    return checked(mine).Compare(theirs);
}

// Tag, then the definition at the same level when one is set.
Text recordHead(const char16_t* tag, const Ref<CDefinition>& definition, std::int16_t infoLevel) {
    Text out = tag;
    if (definition) out += concatText(definition->ToString(infoLevel));
    return out;
}

std::int16_t childLevel(std::int16_t infoLevel) { return static_cast<std::int16_t>(infoLevel - 1); }

template <class C>
void describeCopyAndCompare(ClassBuilder<C>& b) {
    b.method(u"SetFromObject", &C::SetFromObject, {required(u"ToCopy")})
        .method(u"Compare", &C::Compare, {required(u"ToCompare")});
}

template <class C>
void describeToString(ClassBuilder<C>& b) {
    b.method(u"ToString", &C::ToString, {optional(u"InfoLevel", std::int16_t{1})});
}

}  // namespace

// ---- CMember ----

Ref<CMember> CMember::GetCopy() const {
    auto copy = make<CMember>();
    copy->SetFromObject(Ref<CMember>(const_cast<CMember*>(this)));
    return copy;
}

void CMember::SetFromObject(const Ref<CMember>& toCopy) {
    const CMember& source = checked(toCopy);
    Ref<CDefinition> definition = copiedDefinition(source.Definition);
    Ident = source.Ident;
    Description = source.Description;
    Help = source.Help;
    Definition = std::move(definition);
}

bool CMember::Compare(const Ref<CMember>& toCompare) const {
    const CMember& other = checked(toCompare);
    return Ident == other.Ident && Description == other.Description && Help == other.Help &&
           definitionsEqual(Definition, other.Definition);
}

Variant CMember::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = recordHead(u"Member{", Definition, infoLevel);
    if (infoLevel > 1) out += u", Ident:" + Ident + u", Description:" + Description + u", Help:" + Help;
    return out + u"}";
}

const ClassInfo& CMember::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CMember> b(TypeName);
        b.field(u"Ident", &CMember::Ident)
            .field(u"Description", &CMember::Description)
            .field(u"Help", &CMember::Help)
            .field(u"Definition", &CMember::Definition)
            .method(u"GetCopy", &CMember::GetCopy);
        describeCopyAndCompare(b);
        describeToString(b);
        return b.build([] { return Ref<Object>(make<CMember>()); });
    }();
    return info;
}

// ---- CElement ----

Ref<CElement> CElement::GetCopy() const {
    auto copy = make<CElement>();
    copy->SetFromObject(Ref<CElement>(const_cast<CElement*>(this)));
    return copy;
}

void CElement::SetFromObject(const Ref<CElement>& toCopy) {
    const CElement& source = checked(toCopy);
    Ref<CDefinition> definition = copiedDefinition(source.Definition);
    Value = source.Value;
    Description = source.Description;
    Help = source.Help;
    Definition = std::move(definition);
}

bool CElement::Compare(const Ref<CElement>& toCompare) const {
    const CElement& other = checked(toCompare);
    return Value == other.Value && Description == other.Description && Help == other.Help &&
           definitionsEqual(Definition, other.Definition);
}

Variant CElement::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = recordHead(u"Element{", Definition, infoLevel);
    if (infoLevel > 1) out += u", Value:" + decimal(Value) + u", Description:" + Description + u", Help:" + Help;
    return out + u"}";
}

const ClassInfo& CElement::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CElement> b(TypeName);
        b.field(u"Value", &CElement::Value)
            .field(u"Description", &CElement::Description)
            .field(u"Help", &CElement::Help)
            .field(u"Definition", &CElement::Definition)
            .method(u"GetCopy", &CElement::GetCopy);
        describeCopyAndCompare(b);
        describeToString(b);
        return b.build([] { return Ref<Object>(make<CElement>()); });
    }();
    return info;
}

// ---- CMemberSet ----

Text CMemberSet::keyText(const Ref<CMember>& member) { return checked(member).Ident; }

Ref<CMember> CMemberSet::Item(const Variant& index) const {
    return ElementOps<Ref<CMember>>::copy(elements()[elements().indexFor(index)]);
}

Ref<CMember> CMemberSet::FindItem(const Text& ident) const { return findByKeyText(ident); }

void CMemberSet::describeItem(ClassBuilder<CMemberSet>& b) {
    b.method(u"Item", &CMemberSet::Item, {required(u"Index")});
}

void CMemberSet::describeFindItem(ClassBuilder<CMemberSet>& b) {
    b.method(u"FindItem", &CMemberSet::FindItem, {required(u"Ident")});
}

const ClassInfo& CMemberSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CElementList ----

const ClassInfo& CElementList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CCollection ----

void CCollection::SetFromObject(const Ref<CCollection>& toCopy) {
    const CCollection& source = checked(toCopy);
    if (!source.definition_) errors::raise(errors::Runtime::ObjectNotSet);
    Ref<CDefinition> definition = source.definition_->GetCopy();
    Ref<CMemberSet> members = checked(source.Members).GetCopy();
    SetDefinition(definition);  // the kind check, before anything else changes
    Label = source.Label;
    Help = source.Help;
    Members = std::move(members);
}

bool CCollection::Compare(const Ref<CCollection>& toCompare) const {
    const CCollection& other = checked(toCompare);
    return Label == other.Label && Help == other.Help && definitionEquals(other) &&
           checked(Members).Compare(other.Members);
}

Variant CCollection::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"COLLECTION{", infoLevel);
    if (infoLevel > 1) {
        out += u", Label:" + Label + u", Help:" + Help;
        if (Members) out += u", Members:" + concatText(Members->ToString(childLevel(infoLevel)));
    }
    return out + u"}";
}

const ClassInfo& CCollection::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CCollection> b(TypeName);
        b.field(u"Members", &CCollection::Members)
            .field(u"Label", &CCollection::Label)
            .field(u"Help", &CCollection::Help);
        describeDefinition(b);
        b.asLet();
        describeGetCopy(b);
        describeCopyAndCompare(b);
        describeMakeObject(b);
        describeToString(b);
        return b.build([] { return Ref<Object>(make<CCollection>()); });
    }();
    return info;
}

// ---- CArray ----

void CArray::SetFromObject(const Ref<CArray>& toCopy) {
    const CArray& source = checked(toCopy);
    if (!source.definition_) errors::raise(errors::Runtime::ObjectNotSet);
    Ref<CDefinition> definition = source.definition_->GetCopy();
    Ref<CElementList> elements = checked(source.Elements).GetCopy();
    SetDefinition(definition);  // the kind check, before anything else changes
    Label = source.Label;
    Help = source.Help;
    Elements = std::move(elements);
}

bool CArray::Compare(const Ref<CArray>& toCompare) const {
    const CArray& other = checked(toCompare);
    return Label == other.Label && Help == other.Help && definitionEquals(other) &&
           checked(Elements).Compare(other.Elements);
}

Variant CArray::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"ARRAY{", infoLevel);
    if (infoLevel > 1) {
        out += u", Label:" + Label + u", Help:" + Help;
        if (Elements) out += u", Elements:" + concatText(Elements->ToString(childLevel(infoLevel)));
    }
    return out + u"}";
}

const ClassInfo& CArray::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CArray> b(TypeName);
        b.field(u"Label", &CArray::Label)
            .field(u"Help", &CArray::Help)
            .field(u"Elements", &CArray::Elements);
        describeDefinition(b);
        b.asLet();
        describeGetCopy(b);
        describeCopyAndCompare(b);
        describeMakeObject(b);
        describeToString(b);
        return b.build([] { return Ref<Object>(make<CArray>()); });
    }();
    return info;
}

}  // namespace tylhart
