#include "tylhart/containers/CDefinitionList.hpp"

namespace tylhart {

namespace {
constexpr char16_t KindSource[] = u"CDefinitionSet.Add";
}

void ExactKindRule::SetKindUsed(enumDDObjectKind newKind) {
    if (exact() && kindUsed_ != ddoKUndefined && newKind != kindUsed_)
        errors::raise(KindSource, errors::WrongKind);
    kindUsed_ = newKind;
}

void ExactKindRule::check(const Ref<CDefinition>& d) const {
    if (!exact()) return;
    if (!d) errors::raise(errors::Runtime::ObjectNotSet);
    if (kindUsed_ != ddoKUndefined && d->Kind() != kindUsed_) errors::raise(KindSource, errors::WrongKind);
}

void ExactKindRule::accepted(const Ref<CDefinition>& d) {
    if (exact() && kindUsed_ == ddoKUndefined) kindUsed_ = d->Kind();
}

void ExactKindRule::copyFrom(const ExactKindRule& other) {
    const bool nextExact = conditionHolds(other.UseExactKind);
    if (nextExact && kindUsed_ != ddoKUndefined && other.kindUsed_ != kindUsed_)
        errors::raise(KindSource, errors::WrongKind);
    UseExactKind = other.UseExactKind;
    kindUsed_ = other.kindUsed_;
}

bool ExactKindRule::equals(const ExactKindRule& other) const {
    return variantEquals(UseExactKind, other.UseExactKind) && kindUsed_ == other.kindUsed_;
}

const ClassInfo& CDefinitionList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
