#include "tylhart/containers/CDefinitionSet.hpp"

namespace tylhart {

Ref<CDefinitionSet> CVariableDefinitionSet::Union(const Ref<CDefinitionSet>&) const {
    errors::raise(errors::Runtime::TypeMismatch);
}

void CVariableDefinitionSet::check(const Ref<CDefinition>& d) const {
    if (!d) errors::raise(errors::Runtime::ObjectNotSet);
    if (d->Kind() != ddoKVariableDef) errors::raise(u"CDefinitionSet.Add", errors::WrongKind);
}

const ClassInfo& CDefinitionSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

const ClassInfo& CVariableDefinitionSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
