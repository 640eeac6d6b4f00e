#include "tylhart/variables/Enumerators.hpp"

#include <string>

#include "tylhart/containers/Elements.hpp"

namespace tylhart {

namespace {

// The copy of the source's child when it has one, else the receiver's own.
template <class T>
Ref<T> copiedOrKept(const Ref<T>& source, const Ref<T>& kept) {
    return source ? source->GetCopy() : kept;
}

template <class C>
void describeProtocol(ClassBuilder<C>& b) {
    b.method(u"GetCopy", &C::GetCopy)
        .method(u"SetFromObject", &C::SetFromObject, {required(u"ToCopy")})
        .method(u"Compare", &C::Compare, {required(u"ToCompare")})
        .method(u"ToString", &C::ToString, {optional(u"InfoLevel", std::int16_t{1})});
}

}  // namespace

// ---- CEnumerator ----

Ref<CEnumerator> CEnumerator::GetCopy() const {
    return copyOf(*this);
}

void CEnumerator::SetFromObject(const Ref<CEnumerator>& toCopy) {
    const CEnumerator& source = checked(toCopy);
    Value = source.Value;
    Description = source.Description;
    Help = source.Help;
}

bool CEnumerator::Compare(const Ref<CEnumerator>& toCompare) const {
    const CEnumerator& other = checked(toCompare);
    return Value == other.Value && Description == other.Description && Help == other.Help;
}

Variant CEnumerator::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"Enumerator{Description:" + Description;
    if (infoLevel > 1) out.append(u", Value:"sv).append(decimal(Value) + u", Help:" + Help);
    return std::move(out) + u"}";
}

const ClassInfo& CEnumerator::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CEnumerator> b(TypeName);
        b.field(u"Value", &CEnumerator::Value)
            .field(u"Description", &CEnumerator::Description)
            .field(u"Help", &CEnumerator::Help);
        describeProtocol(b);
        return b.build();
    }();
    return info;
}

// ---- CBitEnumerator ----

Ref<CBitEnumerator> CBitEnumerator::GetCopy() const {
    return copyOf(*this);
}

void CBitEnumerator::SetFromObject(const Ref<CBitEnumerator>& toCopy) {
    const CBitEnumerator& source = checked(toCopy);
    Ref<CVariableClass> newClass = copiedOrKept(source.Class, Class);
    Ref<CStatusClass> newStatus = copiedOrKept(source.Status, Status);
    Ref<CDefinition> newMethod = copiedOrKept(source.Method, Method);
    Value = source.Value;
    Description = source.Description;
    Help = source.Help;
    Class = std::move(newClass);
    Status = std::move(newStatus);
    Method = std::move(newMethod);
}

bool CBitEnumerator::Compare(const Ref<CBitEnumerator>& toCompare) const {
    const CBitEnumerator& other = checked(toCompare);
    return Value == other.Value && Description == other.Description && Help == other.Help &&
           childrenEqual(Class, other.Class) && childrenEqual(Status, other.Status) &&
           childrenEqual(Method, other.Method);
}

Variant CBitEnumerator::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"BitEnumerator{Description:" + Description;
    if (infoLevel > 1) {
        out.append(u", Value:"sv).append(decimal(Value) + u", Help:" + Help);
        out += childText(u", Class:", Class, infoLevel);
        out += childText(u", Status:", Status, infoLevel);
        out += childText(u", Method:", Method, infoLevel);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CBitEnumerator::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CBitEnumerator> b(TypeName);
        b.field(u"Value", &CBitEnumerator::Value)
            .field(u"Description", &CBitEnumerator::Description)
            .field(u"Help", &CBitEnumerator::Help)
            .field(u"Class", &CBitEnumerator::Class)
            .field(u"Status", &CBitEnumerator::Status)
            .field(u"Method", &CBitEnumerator::Method);
        describeProtocol(b);
        return b.build();
    }();
    return info;
}

}  // namespace tylhart
