// CType: the type of a variable. Which properties exist depends on the
// kind: a checked member refuses to be read or written for a kind that does
// not own it, unless the kind is still undefined or CheckForExactKind is
// off. The kind can be set once and is never changed afterwards.
#pragma once

#include <vector>

#include "tylhart/constructs/Collections.hpp"
#include "tylhart/containers/CValueSet.hpp"
#include "tylhart/core/CopyOnWrite.hpp"
#include "tylhart/variables/EnumeratorSets.hpp"

namespace tylhart {

class CType final : public Object {
    TYLHART_CLASS(CType)
public:
    // Never checked, never copied, never compared.
    bool CheckForExactKind = true;
    // Held objects, handed out and stored by reference.
    Child<CBitEnumeratorSet> BitEnumeratorSet;
    Child<CEnumeratorSet> EnumeratorSet;

    enumDDVariableType Kind() const noexcept { return kind_; }
    // Once a kind from 0 to 15 is set it stays; the same kind again is
    // accepted. Nothing else changes.
    void SetKind(enumDDVariableType newKind);

    std::int16_t Size() const;
    void SetSize(std::int16_t newSize);

    // -1 no range, 0 one range at index 0, n > 0 ranges at indexes 1 to n.
    std::int16_t MaxRangeNo() const;
    // Rebuilds both value arrays (indexes 0 to max(n, 0)) full of Nulls.
    void SetMaxRangeNo(std::int16_t newCount);

    // An index outside the arrays is the runtime's subscript error.
    Variant MinValues(std::int32_t index) const;
    void SetMinValues(std::int32_t index, const Variant& value);
    Variant MaxValues(std::int32_t index) const;
    void SetMaxValues(std::int32_t index, const Variant& value);

    Variant ScalingFactor() const;
    void SetScalingFactor(const Variant& value);
    Text DisplayFormat() const;
    void SetDisplayFormat(Text value);
    Text EditFormat() const;
    void SetEditFormat(Text value);

    // One count behind both: MaxEnumIndex and MaxBitEnumIndex read and
    // write the same field. The let stores only for the exact kind (4 resp.
    // 5) and then, for a count above 0, starts a new empty set.
    std::int32_t MaxEnumIndex() const;
    void SetMaxEnumIndex(std::int32_t value);
    std::int32_t MaxBitEnumIndex() const;
    void SetMaxBitEnumIndex(std::int32_t value);

    // A copy of the (bit) enumerator whose Value is Index, or Nothing; any
    // failure past the kind rule gives Nothing.
    Ref<CEnumerator> Enumerators(std::int32_t index) const;
    // Replaces the enumerator with the same Value; Index is not used.
    void SetEnumerators(std::int32_t index, const Ref<CEnumerator>& value);
    Ref<CBitEnumerator> BitEnumerators(std::int32_t index) const;
    void SetBitEnumerators(std::int32_t index, const Ref<CBitEnumerator>& value);

    Ref<CArray> ArrayObject() const;
    void SetArrayObject(const Ref<CArray>& value);
    Ref<CValueSet> Domain() const;
    void SetDomain(const Ref<CValueSet>& value);

    Text TimeFormat() const;
    void SetTimeFormat(Text value);
    enumTimeScaleQualificationType ScaleQualifier() const;
    void SetScaleQualifier(enumTimeScaleQualificationType value);

    Ref<CType> GetCopy() const;
    // Copies what the source's kind owns, through the checked accessors of
    // both sides; children are deep copies. An undefined source only resets
    // this kind to undefined. Every copy is made before anything changes.
    void SetFromObject(const Ref<CType>& toCopy);
    bool Compare(const Ref<CType>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    // MaxRangeNo's let with the range ends given; none given: Null ends.
    struct RangeEnds;
    using Ranges = CopyOnWrite<std::vector<RangeEnds>>;
    void replaceRanges(std::int16_t newCount, Ranges ends = {});
    // Range Index's ends, or "Subscript out of range".
    const RangeEnds& rangeAt(std::int32_t index) const;
    RangeEnds& rangeAt(std::int32_t index);
    // The members that the kind rules guard; one rule row each.
    enum class Checked : std::uint8_t {
        Size,
        MaxRangeNo,
        MinValues,
        MaxValues,
        ScalingFactor,
        DisplayFormat,
        EditFormat,
        TimeFormat,
        ScaleQualifier,
        MaxEnumIndex,
        MaxBitEnumIndex,
        Enumerators,
        BitEnumerators,
        ArrayObject,
        Domain,
    };

    // Raises the wrong-kind error when the rule refuses the current kind.
    void require(Checked member) const;
    void checkKindChange(enumDDVariableType newKind) const;

    enumDDVariableType kind_ = ddvTUndefined;
    std::int16_t size_ = 0;
    std::int16_t rangeCount_ = -1;
    // Range i's two ends in one entry, so all the ranges are one allocation,
    // which a copy of the type shares until either side writes a range.
    // A new type holds one pair of Empty, kept nowhere until one is written
    // (most types are copied over or given their ranges at once); a
    // rebuilt one holds Nulls.
    struct RangeEnds {
        Variant min, max;
    };
    Ranges ranges_;
    Variant scalingFactor_ = 1.0;
    Text displayFormat_;
    Text editFormat_;
    Text timeFormat_;
    enumTimeScaleQualificationType scaleQualifier_ = sqTNone;
    std::int32_t enumeratorCount_ = 1;
    Child<CArray> arrayObject_;
    Child<CValueSet> domain_;
};

}  // namespace tylhart
