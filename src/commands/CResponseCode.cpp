#include "tylhart/commands/CResponseCode.hpp"

#include <string>

namespace tylhart {

void CResponseCode::SetKind(enumDDResponseCodeType newKind) {
    if (newKind < ddrcTSUCCESS || newKind > ddrcTMax) errors::raise(u"CResponseCode.Kind", errors::KindOutOfRange);
    kind_ = newKind;
}

Ref<CResponseCode> CResponseCode::GetCopy() const {
    return copyOf(*this);
}

void CResponseCode::SetFromObject(const Ref<CResponseCode>& toCopy) {
    const CResponseCode& source = checked(toCopy);
    Value = source.Value;
    SetKind(source.kind_);
    Description = source.Description;
    Help = source.Help;
}

bool CResponseCode::Compare(const Ref<CResponseCode>& toCompare) const {
    const CResponseCode& other = checked(toCompare);
    return Value == other.Value && kind_ == other.kind_ && Description == other.Description && Help == other.Help;
}

Variant CResponseCode::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"ResponseCode{Description:" + Description;
    if (infoLevel > 1) out.append(u", Value:"sv).append(decimal(Value) + u", Kind:" + decimal(kind_) + u", Help:" + Help);
    return std::move(out) + u"}";
}

const ClassInfo& CResponseCode::staticClassInfo() {
    static const ClassInfo info = [] {
        using R = CResponseCode;
        ClassBuilder<R> b(TypeName);
        b.field(u"Value", &R::Value)
            .field(u"Description", &R::Description)
            .field(u"Help", &R::Help)
            .property(u"Kind", &R::Kind, &R::SetKind)
            .method(u"GetCopy", &R::GetCopy)
            .method(u"SetFromObject", &R::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &R::Compare, {required(u"ToCompare")})
            .method(u"ToString", &R::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

// ---- CResponseCodeSet ----

Text CResponseCodeSet::keyText(const Ref<CResponseCode>& code) { return decimal(checked(code).Value); }

Ref<CResponseCode> CResponseCodeSet::FindItem(std::int16_t value) const { return findByKeyText(decimal(value)); }

const ClassInfo& CResponseCodeSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
