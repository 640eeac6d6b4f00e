#include "tylhart/core/CDefinition.hpp"

namespace tylhart {

namespace {
// The name accessors report this Source, not the property's own name, and
// clients match on it.
constexpr char16_t NameSource[] = u"CDefinition.DefName";
constexpr char16_t InitializeSource[] = u"CDefinition.Initialize";
}  // namespace

TextView CDefinition::checkedName() const {
    if (!initialized()) errors::raise(NameSource, errors::NotInitialized);
    return name_;
}

void CDefinition::SetName(Text newName) {
    if (!initialized()) errors::raise(NameSource, errors::NotInitialized);
    name_ = SharedText(newName);
}

void CDefinition::Initialize(Text newName, enumDDObjectKind newKind) { initialize(SharedText(newName), newKind); }

void CDefinition::initialize(SharedText newName, enumDDObjectKind newKind) {
    // The kind-change check comes first, so changing a fixed kind to an
    // out-of-range value reports the "Once a Kind" message.
    if (initialized() && newKind != kind_) errors::raise(InitializeSource, errors::KindFixed);
    if (newKind < 0 || newKind > 9) errors::raise(InitializeSource, errors::IndexOutOfRange);
    name_ = std::move(newName);
    kind_ = newKind;
}

Ref<CDefinition> CDefinition::GetCopy() const {
    return copyOf(*this);
}

void CDefinition::SetFromObject(const Ref<CDefinition>& toCopy) {
    if (!toCopy) errors::raise(errors::Runtime::ObjectNotSet);
    if (!toCopy->initialized()) {
        // The one way an initialised definition loses its kind.
        name_ = SharedText::ofStatic(u"unknown"sv);
        kind_ = ddoKUndefined;
        return;
    }
    initialize(toCopy->name_, toCopy->kind_);
}

bool CDefinition::Compare(const Ref<CDefinition>& toCompare) const {
    if (!toCompare) errors::raise(errors::Runtime::ObjectNotSet);
    if (kind_ != toCompare->kind_) return false;
    return !initialized() || name_.view() == toCompare->name_.view();
}

Variant CDefinition::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"Definition{Name:";
    out.append(name_.view());
    if (infoLevel > 1) out.append(u", Kind:"sv).append(decimal(kind_));
    out += u"}";
    return out;
}

Ref<CDefinition> makeDefinition(Text name, enumDDObjectKind kind) {
    auto d = make<CDefinition>();
    d->Initialize(std::move(name), kind);
    return d;
}

const ClassInfo& CDefinition::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<CDefinition>(TypeName)
            .property(u"Name", &CDefinition::Name, &CDefinition::SetName)
            .getter(u"Kind", &CDefinition::Kind)
            .method(u"Initialize", &CDefinition::Initialize, {required(u"NewName"), required(u"NewKind")})
            .method(u"GetCopy", &CDefinition::GetCopy)
            .method(u"SetFromObject", &CDefinition::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &CDefinition::Compare, {required(u"ToCompare")})
            .method(u"ToString", &CDefinition::ToString, {optional(u"InfoLevel", std::int16_t{1})})
            .build();
    return info;
}

}  // namespace tylhart
