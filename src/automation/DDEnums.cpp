#include "tylhart/automation/DDEnums.hpp"

namespace tylhart {

const ClassInfo& DDEnums::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<DDEnums>(TypeName).build([] { return Ref<Object>(make<DDEnums>()); });
    return info;
}

const ClassInfo& DDTypes::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<DDTypes>(TypeName).build([] { return Ref<Object>(make<DDTypes>()); });
    return info;
}

}  // namespace tylhart
