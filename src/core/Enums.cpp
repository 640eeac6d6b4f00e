#include "tylhart/core/Enums.hpp"

namespace tylhart {
namespace {

#define TYLHART_META_MEMBER(name, value) EnumMember{u"" #name, value},
#define TYLHART_META_MEMBERS(enumName, guid) \
    constexpr EnumMember enumName##Members[] = {TYLHART_MEMBERS_##enumName(TYLHART_META_MEMBER)};
TYLHART_ENUMERATIONS(TYLHART_META_MEMBERS)

#define TYLHART_META_INFO(enumName, guid) EnumInfo{u"" #enumName, guid, enumName##Members},
constexpr EnumInfo allEnumerations[] = {TYLHART_ENUMERATIONS(TYLHART_META_INFO)};

}  // namespace

std::span<const EnumInfo> enumerations() { return allEnumerations; }

}  // namespace tylhart
