#include "tylhart/constructs/Collections.hpp"

#include <string>

namespace tylhart {

namespace {

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

// ---- Records: CMember, CElement ----

template <class Derived>
Ref<Derived> Record<Derived>::GetCopy() const {
    return copyOf(static_cast<const Derived&>(*this));
}

template <class Derived>
void Record<Derived>::SetFromObject(const Ref<Derived>& toCopy) {
    const Derived& source = checked(toCopy);
    // A record without a definition cannot be copied, as calling GetCopy on
    // Nothing fails.
    Ref<CDefinition> definition = checked(source.Definition).GetCopy();
    static_cast<Derived&>(*this).*Derived::Key = source.*Derived::Key;
    Description = source.Description;
    Help = source.Help;
    Definition = std::move(definition);
}

template <class Derived>
bool Record<Derived>::Compare(const Ref<Derived>& toCompare) const {
    const Derived& other = checked(toCompare);
    return static_cast<const Derived&>(*this).*Derived::Key == other.*Derived::Key &&
           Description == other.Description && Help == other.Help && checked(Definition).Compare(other.Definition);
}

template <class Derived>
Variant Record<Derived>::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = Derived::Tag;
    if (Definition) out += concatText(Definition->ToString(infoLevel));
    if (infoLevel > 1) {
        out.append(u", "sv).append(Text(Derived::KeyName) + u":" + concatText(Variant(static_cast<const Derived&>(*this).*Derived::Key)));
        out.append(u", Description:"sv).append(Description + u", Help:" + Help);
    }
    return std::move(out) + u"}";
}

template <class Derived>
ClassInfo Record<Derived>::describe() {
    ClassBuilder<Derived> b(Derived::TypeName);
    b.field(Derived::KeyName, Derived::Key)
        .field(u"Description", &Record::Description)
        .field(u"Help", &Record::Help)
        .field(u"Definition", &Record::Definition)
        .method(u"GetCopy", &Record::GetCopy);
    describeCopyAndCompare(b);
    describeToString(b);
    return b.build();
}

template class Record<CMember>;
template class Record<CElement>;

const ClassInfo& CMember::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

const ClassInfo& CElement::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CMemberSet ----

const Text& CMemberSet::keyText(const Ref<CMember>& member) { return checked(member).Ident; }

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

// ---- Record constructs: CCollection, CArray ----

template <class Derived>
void RecordConstruct<Derived>::SetFromObject(const Ref<Derived>& toCopy) {
    const Derived& source = checked(toCopy);
    if (!source.definition_) errors::raise(errors::Runtime::ObjectNotSet);
    Ref<CDefinition> definition = source.definition_->GetCopy();
    requireKind(definition, Derived::ObjectKind, Derived::DefinitionSource);  // the definition's error comes first
    auto children = copyChild(source.*Derived::Children);
    this->definition_ = std::move(definition);
    Label = source.Label;
    Help = source.Help;
    static_cast<Derived&>(*this).*Derived::Children = std::move(children);
}

template <class Derived>
bool RecordConstruct<Derived>::Compare(const Ref<Derived>& toCompare) const {
    const Derived& other = checked(toCompare);
    return Label == other.Label && Help == other.Help && this->definitionEquals(other) &&
           (static_cast<const Derived&>(*this).*Derived::Children).equals(other.*Derived::Children);
}

template <class Derived>
Variant RecordConstruct<Derived>::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = this->renderHead(Derived::Tag, infoLevel);
    if (infoLevel > 1) {
        out.append(u", Label:"sv).append(Label + u", Help:" + Help);
        if (const auto& children = static_cast<const Derived&>(*this).*Derived::Children)
            children.renderInto(out.append(u", "sv).append(Derived::ChildrenName).append(u":"sv), childLevel(infoLevel));
    }
    return std::move(out) + u"}";
}

template <class Derived>
ClassInfo RecordConstruct<Derived>::describe() {
    ClassBuilder<Derived> b(Derived::TypeName);
    if (Derived::ChildrenFirst) b.field(Derived::ChildrenName, Derived::Children);
    b.field(u"Label", &RecordConstruct::Label).field(u"Help", &RecordConstruct::Help);
    if (!Derived::ChildrenFirst) b.field(Derived::ChildrenName, Derived::Children);
    return RecordConstruct::describeConstructMembers(b).build();
}

template class RecordConstruct<CCollection>;
template class RecordConstruct<CArray>;

const ClassInfo& CCollection::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

const ClassInfo& CArray::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
