#include "tylhart/variables/COutputStatusClassSet.hpp"

#include <string>

namespace tylhart {

Text COutputStatusClassSet::keyText(std::int32_t kind, std::int32_t range) {
    return decimal(kind) + u":" + decimal(range);
}

Text COutputStatusClassSet::keyText(const Ref<COutputStatusClass>& element) {
    if (!element) errors::raise(errors::Runtime::ObjectNotSet);
    return keyText(element->Kind(), element->Range);
}

Ref<COutputStatusClass> COutputStatusClassSet::FindItem(enumDDOutputStatusClass kind, std::int32_t range) const {
    return findByKeyText(keyText(kind, range));
}

const ::tylhart::ClassInfo& COutputStatusClassSet::staticClassInfo() {
    static const ::tylhart::ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
