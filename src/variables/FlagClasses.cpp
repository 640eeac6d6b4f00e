#include "tylhart/variables/FlagClasses.hpp"

#include <string>

#include "tylhart/containers/Elements.hpp"

namespace tylhart {

namespace {

// The members every flag class lists last, in this order.
template <class C>
void describeProtocol(ClassBuilder<C>& b) {
    b.method(u"GetCopy", &C::GetCopy)
        .method(u"SetFromObject", &C::SetFromObject, {required(u"ToCopy")})
        .method(u"Compare", &C::Compare, {required(u"ToCompare")})
        .method(u"ToString", &C::ToString, {optional(u"InfoLevel", std::int16_t{1})});
}

template <class C>
Ref<Object> factory() {
    return Ref<Object>(make<C>());
}

}  // namespace

// ---- CVariableClass ----

void CVariableClass::SetFromObject(const Ref<CVariableClass>& toCopy) {
    copyFlagsFrom(checked(toCopy));
}

bool CVariableClass::Compare(const Ref<CVariableClass>& toCompare) const {
    return sameFlags(checked(toCompare));
}

Variant CVariableClass::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    return Text(u"VariableClass{Type:") + flagText() + u"}";
}

const ::tylhart::ClassInfo& CVariableClass::staticClassInfo() {
    static const ::tylhart::ClassInfo info = [] {
        ClassBuilder<CVariableClass> b(TypeName);
        b.method(u"GetClassInfoObj", &CVariableClass::GetClassInfoObj)
            .property(u"ClassInfo", &CVariableClass::ClassInfo, &CVariableClass::SetClassInfo, {indexParam()});
        describeProtocol(b);
        return b.build(factory<CVariableClass>);
    }();
    return info;
}

// ---- CMethodClass ----

void CMethodClass::SetFromObject(const Ref<CMethodClass>& toCopy) { copyFlagsFrom(checked(toCopy)); }

bool CMethodClass::Compare(const Ref<CMethodClass>& toCompare) const {
    return sameFlags(checked(toCompare));
}

Variant CMethodClass::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    return Text(u"MethodClass{Type:") + flagText() + u"}";
}

const ::tylhart::ClassInfo& CMethodClass::staticClassInfo() {
    static const ::tylhart::ClassInfo info = [] {
        ClassBuilder<CMethodClass> b(TypeName);
        b.method(u"GetClassInfoObj", &CMethodClass::GetClassInfoObj)
            .property(u"ClassInfo", &CMethodClass::ClassInfo, &CMethodClass::SetClassInfo, {indexParam()});
        describeProtocol(b);
        return b.build(factory<CMethodClass>);
    }();
    return info;
}

// ---- COutputStatusClass ----

void COutputStatusClass::SetKind(enumDDOutputStatusClass newKind) {
    if (newKind < ddosCDV || newKind > ddosCMax) errors::raise(u"COutputStatusClass.Kind", errors::IndexOutOfRange);
    kind_ = newKind;
}

void COutputStatusClass::SetFromObject(const Ref<COutputStatusClass>& toCopy) {
    const COutputStatusClass& source = checked(toCopy);
    // The flags are the one step that can fail (a source array of another
    // count), so they go first and a refused copy changes nothing.
    copyFlagsFrom(source);
    kind_ = source.kind_;
    Range = source.Range;
}

bool COutputStatusClass::Compare(const Ref<COutputStatusClass>& toCompare) const {
    const COutputStatusClass& other = checked(toCompare);
    return kind_ == other.kind_ && Range == other.Range && sameFlags(other);
}

Variant COutputStatusClass::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    // The label's spelling is part of the output format: callers may parse
    // this label, so it stays letter for letter.
    Text out = u"OutputStatusClass{BESCHEIBUNG:" + flagText();
    if (infoLevel > 1) out.append(u", Kind:"sv).append(decimal(kind_) + u", Range:" + decimal(Range));
    return std::move(out) + u"}";
}

const ::tylhart::ClassInfo& COutputStatusClass::staticClassInfo() {
    static const ::tylhart::ClassInfo info = [] {
        ClassBuilder<COutputStatusClass> b(TypeName);
        b.field(u"Range", &COutputStatusClass::Range)
            .method(u"GetModeObj", &COutputStatusClass::GetModeObj)
            .property(u"Mode", &COutputStatusClass::Mode, &COutputStatusClass::SetMode, {indexParam()})
            .property(u"Kind", &COutputStatusClass::Kind, &COutputStatusClass::SetKind);
        describeProtocol(b);
        return b.build(factory<COutputStatusClass>);
    }();
    return info;
}

// ---- CStatusClass ----

CStatusClass::CStatusClass() : Output(make<COutputStatusClassSet>()) {}

CStatusClass::~CStatusClass() = default;

void CStatusClass::SetFromObject(const Ref<CStatusClass>& toCopy) {
    const CStatusClass& source = checked(toCopy);
    Ref<COutputStatusClassSet> output = checked(source.Output).GetCopy();
    copyFlagsFrom(source);
    Output = std::move(output);
}

bool CStatusClass::Compare(const Ref<CStatusClass>& toCompare) const {
    const CStatusClass& other = checked(toCompare);
    return checked(Output).Compare(other.Output) && sameFlags(other);
}

Variant CStatusClass::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"StatusClass{Other:" + flagText();
    if (infoLevel > 1 && Output)
        out.append(u", Output:"sv).append(concatText(Output->ToString(childLevel(infoLevel))));
    return std::move(out) + u"}";
}

const ::tylhart::ClassInfo& CStatusClass::staticClassInfo() {
    static const ::tylhart::ClassInfo info = [] {
        ClassBuilder<CStatusClass> b(TypeName);
        b.field(u"Output", &CStatusClass::Output)
            .method(u"GetOtherObj", &CStatusClass::GetOtherObj)
            .property(u"Other", &CStatusClass::Other, &CStatusClass::SetOther, {indexParam()});
        describeProtocol(b);
        return b.build(factory<CStatusClass>);
    }();
    return info;
}

}  // namespace tylhart
