// DDEnums and DDTypes: creatable classes without members. They exist so the
// type library carries the enumerations; clients that create them by name
// expect the creation to succeed.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

class DDEnums final : public Object {
    TYLHART_CLASS(DDEnums)
};

class DDTypes final : public Object {
    TYLHART_CLASS(DDTypes)
};

}  // namespace tylhart
