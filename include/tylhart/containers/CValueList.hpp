// CValueList: an ordered list of Variant values.
#pragma once

#include "tylhart/containers/List.hpp"

namespace tylhart {

class CValueList final : public List<CValueList, Variant> {
    TYLHART_CLASS(CValueList)
public:
    static constexpr const char16_t* Label = u"ValueList{Count:";
};

}  // namespace tylhart
