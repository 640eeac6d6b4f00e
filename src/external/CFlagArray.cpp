#include "tylhart/external/CFlagArray.hpp"

#include "tylhart/core/Limits.hpp"

namespace tylhart {

void CFlagArray::resize(Text& flags, std::int32_t count) {
    if (count < 0) errors::raise(errors::Runtime::InvalidCall);
    checkElements(count);
    flags.resize(static_cast<std::size_t>(count), u'0');
}

std::size_t CFlagArray::checkedIndex(std::size_t count, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= count) errors::raise(errors::Runtime::SubscriptOutOfRange);
    return static_cast<std::size_t>(index);
}

bool CFlagArray::flag(const Text& flags, std::int32_t index) { return flags[checkedIndex(flags.size(), index)] == u'1'; }

void CFlagArray::setFlag(Text& flags, std::int32_t index, bool value) {
    flags[checkedIndex(flags.size(), index)] = value ? u'1' : u'0';
}

void CFlagArray::assign(Text& flags, const Text& text) {
    if (text.size() != flags.size()) errors::raise(errors::Runtime::InvalidCall);
    for (char16_t c : text)
        if (c != u'0' && c != u'1') errors::raise(errors::Runtime::TypeMismatch);
    flags = text;
}

void CFlagArray::SetFlagCount(std::int32_t count) { resize(flags_, count); }
bool CFlagArray::Flag(std::int32_t index) const { return flag(flags_, index); }
void CFlagArray::SetFlag(std::int32_t index, bool value) { setFlag(flags_, index, value); }
Text CFlagArray::FlagText() const { return flags_; }
void CFlagArray::SetFlagText(const Text& text) { assign(flags_, text); }

const ClassInfo& CFlagArray::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<CFlagArray>(TypeName)
            .property(u"FlagCount", &CFlagArray::FlagCount, &CFlagArray::SetFlagCount)
            .withId(FlagCountId)
            .property(u"Flag", &CFlagArray::Flag, &CFlagArray::SetFlag, {Param{u"Index", Missing{}, false, true}})
            .withId(FlagId)
            .property(u"FlagText", &CFlagArray::FlagText, &CFlagArray::SetFlagText)
            .withId(FlagTextId)
            .build();
    return info;
}

}  // namespace tylhart
