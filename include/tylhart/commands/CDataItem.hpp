// CDataItem: one entry of a command transaction's request or reply, either
// a constant value or a reference to the VARIABLE carried at that place,
// qualified by a mask and two flags. Its kind is given once, by Initialize,
// and decides which accessors may be used. CDataItemList keeps them in
// message order.
#pragma once

#include "tylhart/containers/List.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart {

class CDataItem final : public Object {
    TYLHART_CLASS(CDataItem)
public:
    // ---- Public fields, in declaration order ----
    std::int32_t Mask = 0;
    bool Index = false;
    bool Info = false;

    // Fixes the kind: once dddiTValue or dddiTDefinition it never changes.
    // Another kind is refused before the range, so changing a fixed kind to
    // an out-of-range value reports the kind-change message. A definition
    // item starts again with a new, uninitialised definition and no
    // variable; the value is left as it was.
    void Initialize(enumDDDataItemType newKind);
    enumDDDataItemType Kind() const noexcept { return kind_; }

    // Value items only.
    Variant Value() const;
    void SetValue(const Variant& newValue);

    // Definition items only. The objects themselves, shared, not copies.
    Ref<CDefinition> Definition() const;
    // Stored as given while no variable is set (Nothing included); with a
    // variable, an equal definition is accepted and the current object
    // kept, an unequal one refused.
    void SetDefinition(const Ref<CDefinition>& newDefinition);
    Ref<CVariable> Variable() const;
    // Stores the variable and its definition after checking that the
    // definition held so far, if any, equals the variable's.
    void SetVariable(const Ref<CVariable>& newVariable);

    Ref<CDataItem> GetCopy() const;
    // Kind (through Initialize), Mask, Index, Info, then deep copies of the
    // definition and variable or the value. A failing step keeps the steps
    // done before it; hosts rely on the order.
    void SetFromObject(const Ref<CDataItem>& toCopy);
    // Kind and Mask, Index, Info, then what the kind uses: the definition
    // and variable, or the value (a Null value raises Invalid use of Null).
    bool Compare(const Ref<CDataItem>& toCompare) const;
    // "DataItem{" and the definition; above level 1 the kind, the value
    // (value items), mask and flags, then the definition again and the
    // variable one level down (definition items).
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    void requireKind(enumDDDataItemType kind) const;

    enumDDDataItemType kind_ = dddiTUndefined;
    Variant value_;
    Ref<CDefinition> definition_;
    Ref<CVariable> variable_;
};

class CDataItemList final : public List<CDataItemList, Ref<CDataItem>> {
    TYLHART_CLASS(CDataItemList)
public:
    static constexpr const char16_t* Label = u"DataItemList{Count:";
};

}  // namespace tylhart
