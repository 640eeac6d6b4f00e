#include "tylhart/variables/EnumeratorSets.hpp"

#include <string>

namespace tylhart {

Text EnumeratorValueKey::keyText(std::int32_t value) { return decimal(value); }

Ref<CEnumerator> CEnumeratorSet::FindItem(std::int32_t value) const {
    const Ref<CEnumerator>* found = findKeyText(keyText(value));
    if (!found) return {};
    return ElementOps<Ref<CEnumerator>>::copy(*found);
}

Ref<CBitEnumerator> CBitEnumeratorSet::FindItem(std::int32_t value) const { return findByKeyText(keyText(value)); }

const ClassInfo& CEnumeratorSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

const ClassInfo& CBitEnumeratorSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
