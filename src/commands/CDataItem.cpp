#include "tylhart/commands/CDataItem.hpp"

#include <string>

namespace tylhart {

namespace {

constexpr char16_t InitializeSource[] = u"CDataItem.Initialize";
// Every kind-bound accessor reports the value's Source, the definition and
// variable ones included; callers match on it.
constexpr char16_t ValueSource[] = u"CDataItem.Value";
constexpr char16_t VariableSource[] = u"CDataItem.Variable";


}  // namespace

void CDataItem::Initialize(enumDDDataItemType newKind) {
    if (kind_ >= 0 && newKind != kind_) errors::raise(InitializeSource, errors::KindFixed);
    // Speaks of an index although it checks a kind; callers compare the text.
    if (newKind < dddiTValue || newKind > dddiTMax) errors::raise(InitializeSource, errors::IndexOutOfRange);
    kind_ = newKind;
    definition_ = newKind == dddiTDefinition ? make<CDefinition>() : nullptr;
    variable_ = nullptr;
}

void CDataItem::requireKind(enumDDDataItemType kind) const {
    if (kind_ != kind) errors::raise(ValueSource, errors::WrongKind);
}

Variant CDataItem::Value() const {
    requireKind(dddiTValue);
    return value_;
}

void CDataItem::SetValue(const Variant& newValue) {
    requireKind(dddiTValue);
    value_ = newValue;
}

Ref<CDefinition> CDataItem::Definition() const {
    requireKind(dddiTDefinition);
    return definition_;
}

void CDataItem::SetDefinition(const Ref<CDefinition>& newDefinition) {
    requireKind(dddiTDefinition);
    if (!variable_) {
        definition_ = newDefinition;
        return;
    }
    // The variable decides: only a definition equal to the one it brought
    // passes, and the object already held stays.
    if (!checked(definition_).Compare(newDefinition)) errors::raise(ValueSource, errors::NoCompatibleDefinition);
}

Ref<CVariable> CDataItem::Variable() const {
    requireKind(dddiTDefinition);
    return variable_;
}

void CDataItem::SetVariable(const Ref<CVariable>& newVariable) {
    requireKind(dddiTDefinition);
    Ref<CDefinition> itsDefinition = checked(newVariable).Definition();
    if (definition_ && !definition_->Compare(itsDefinition))
        errors::raise(VariableSource, errors::NoCompatibleDefinition);
    definition_ = std::move(itsDefinition);
    variable_ = newVariable;
}

Ref<CDataItem> CDataItem::GetCopy() const {
    return copyOf(*this);
}

void CDataItem::SetFromObject(const Ref<CDataItem>& toCopy) {
    const CDataItem& source = checked(toCopy);
    // Taken before Initialize, which resets this item's references: an item
    // copied into itself keeps its definition and variable.
    const enumDDDataItemType kind = source.kind_;
    const Ref<CDefinition> definition = source.definition_;
    const Ref<CVariable> variable = source.variable_;
    const Variant value = source.value_;
    Initialize(kind);
    Mask = source.Mask;
    Index = source.Index;
    Info = source.Info;
    if (kind == dddiTDefinition) {
        definition_ = definition ? definition->GetCopy() : nullptr;
        variable_ = variable ? variable->GetCopy() : nullptr;
    } else {
        value_ = value;
    }
}

bool CDataItem::Compare(const Ref<CDataItem>& toCompare) const {
    const CDataItem& other = checked(toCompare);
    if (kind_ != other.kind_ || Mask != other.Mask) return false;
    if (Index != other.Index || Info != other.Info) return false;
    if (kind_ == dddiTDefinition)
        return childrenEqual(definition_, other.definition_) && childrenEqual(variable_, other.variable_);
    // The outcome is kept as a Boolean, so a Null on either side raises.
    if (kind_ == dddiTValue) return variantEqualsStrict(value_, other.value_);
    return true;
}

Variant CDataItem::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"DataItem{";
    if (definition_) out += concatText(definition_->ToString(infoLevel));
    if (infoLevel > 1) {
        const std::int16_t lower = childLevel(infoLevel);
        out.append(u", Kind:"sv).append(decimal(kind_));
        if (kind_ == dddiTValue) out.append(u", Value:"sv).append(concatText(value_));
        out.append(u", Mask:"sv).append(decimal(Mask));
        out.append(u", Index:"sv).append(boolText(Index));
        out.append(u", Info:"sv).append(boolText(Info));
        // The definition shows again here after the head; readers of this
        // text expect both.
        if (kind_ == dddiTDefinition) {
            if (definition_) out.append(u", Definition:"sv).append(concatText(definition_->ToString(lower)));
            if (variable_) out.append(u", Variable:"sv).append(concatText(variable_->ToString(lower)));
        }
    }
    return std::move(out) + u"}";
}

const ClassInfo& CDataItem::staticClassInfo() {
    static const ClassInfo info = [] {
        using D = CDataItem;
        ClassBuilder<D> b(TypeName);
        b.field(u"Mask", &D::Mask)
            .field(u"Index", &D::Index)
            .field(u"Info", &D::Info)
            .method(u"Initialize", &D::Initialize, {required(u"NewKind")})
            .property(u"Value", &D::Value, &D::SetValue)
            .asLet()
            .getter(u"Kind", &D::Kind)
            .property(u"Definition", &D::Definition, &D::SetDefinition)
            .asLet()
            .method(u"GetCopy", &D::GetCopy)
            .method(u"SetFromObject", &D::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &D::Compare, {required(u"ToCompare")})
            .property(u"Variable", &D::Variable, &D::SetVariable)
            .asLet()
            .method(u"ToString", &D::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

const ClassInfo& CDataItemList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
