#include "tylhart/containers/CObjectSet.hpp"

namespace tylhart {

CObjectSet::HandleKey CObjectSet::keyText(const Ref<CObject>& handle) {
    if (!handle) errors::raise(errors::Runtime::ObjectNotSet);
    Ref<CDefinition> d = handle->ObjectDefinition();
    if (!d) errors::raise(errors::Runtime::ObjectNotSet);
    const TextView name = d->checkedName();
    return HandleKey{std::move(d), name};
}

Ref<CObject> CObjectSet::FindItem(const Ref<CDefinition>& objectDef) const {
    if (!objectDef) errors::raise(errors::Runtime::ObjectNotSet);
    return findByKeyText(objectDef->checkedName());
}

const ClassInfo& CObjectSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
