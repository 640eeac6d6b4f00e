#include "tylhart/external/CFlagArray.hpp"

#include "tylhart/core/Limits.hpp"

namespace tylhart {

void CFlagArray::SetFlagCount(std::int32_t count) {
    if (count < 0) errors::raise(errors::Runtime::InvalidCall);
    checkElements(count);
    flags_.resize(static_cast<std::size_t>(count), false);
}

std::size_t CFlagArray::checkedIndex(std::int32_t index) const {
    if (index < 0 || index >= FlagCount()) errors::raise(errors::Runtime::SubscriptOutOfRange);
    return static_cast<std::size_t>(index);
}

bool CFlagArray::Flag(std::int32_t index) const { return flags_[checkedIndex(index)]; }

void CFlagArray::SetFlag(std::int32_t index, bool value) { flags_[checkedIndex(index)] = value; }

Text CFlagArray::FlagText() const {
    Text out;
    out.reserve(flags_.size());
    for (bool f : flags_) out.push_back(f ? u'1' : u'0');
    return out;
}

void CFlagArray::SetFlagText(const Text& text) {
    if (text.size() != flags_.size()) errors::raise(errors::Runtime::InvalidCall);
    for (char16_t c : text)
        if (c != u'0' && c != u'1') errors::raise(errors::Runtime::TypeMismatch);
    for (std::size_t i = 0; i < text.size(); ++i) flags_[i] = text[i] == u'1';
}

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
