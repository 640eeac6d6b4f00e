#include "tylhart/automation/DDEnums.hpp"

namespace tylhart {

const ClassInfo& DDEnums::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<DDEnums>(TypeName).build();
    return info;
}

const ClassInfo& DDTypes::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<DDTypes>(TypeName).build();
    return info;
}

}  // namespace tylhart
