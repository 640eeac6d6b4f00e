#include "tylhart/containers/CValueSet.hpp"

namespace tylhart {

const ClassInfo& CValueSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
