#include "tylhart/containers/CValueList.hpp"

namespace tylhart {

const ClassInfo& CValueList::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

}  // namespace tylhart
