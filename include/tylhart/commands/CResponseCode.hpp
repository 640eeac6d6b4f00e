// CResponseCode: one response code a device may return for a command, with
// its class (success, warning or error of a sort), description and help.
// CResponseCodeSet keeps them keyed by Value.
#pragma once

#include "tylhart/containers/Set.hpp"

namespace tylhart {

class CResponseCode final : public Object {
    TYLHART_CLASS(CResponseCode)
public:
    // ---- Public fields, in declaration order ----
    std::int16_t Value = 0;
    Text Description;
    Text Help;

    // ddrcTUndefined until set; a let accepts only ddrcTSUCCESS ..
    // ddrcTMax, so once set the kind never returns to undefined.
    enumDDResponseCodeType Kind() const noexcept { return kind_; }
    void SetKind(enumDDResponseCodeType newKind);

    Ref<CResponseCode> GetCopy() const;
    // Value, Kind (through the checked let), Description, Help. A source
    // whose kind was never set stops the copy after Value; hosts rely on
    // the order.
    void SetFromObject(const Ref<CResponseCode>& toCopy);
    // Value, Kind, Description, Help (exact, case-sensitive).
    bool Compare(const Ref<CResponseCode>& toCompare) const;
    // "ResponseCode{Description:" ...; above level 1 Value, Kind and Help.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    enumDDResponseCodeType kind_ = ddrcTUndefined;
};

// Response codes keyed by "I" + Value. A copy merges into what the set
// holds.
class CResponseCodeSet final : public Set<CResponseCodeSet, Ref<CResponseCode>> {
    TYLHART_CLASS(CResponseCodeSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewResponseCode";
    static constexpr const char16_t* ElementParam = u"ResponseCode";
    static constexpr const char16_t* Label = u"ResponseCodeSet{Count:";

    static Text keyText(const Ref<CResponseCode>& code);

    // A copy of the response code with this value; the store's missing-key
    // error when there is none.
    Ref<CResponseCode> FindItem(std::int16_t value) const;

    static void describeFindItem(ClassBuilder<CResponseCodeSet>& b) {
        b.method(u"FindItem", &CResponseCodeSet::FindItem, {required(u"Value")});
    }
};

}  // namespace tylhart
