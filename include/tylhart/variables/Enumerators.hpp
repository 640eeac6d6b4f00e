// CEnumerator and CBitEnumerator: one legal value of an enumerated variable
// and one bit of a bit-enumerated variable, each with its description and
// help text; a bit also carries its class, status classes and method.
#pragma once

#include "tylhart/core/CDefinition.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart {

class CEnumerator final : public Object {
    TYLHART_CLASS(CEnumerator)
public:
    // Plain fields without checks; Value is also the element's key in a set.
    std::int32_t Value = 0;
    Text Description;
    Text Help;

    Ref<CEnumerator> GetCopy() const;
    void SetFromObject(const Ref<CEnumerator>& toCopy);
    // Value, Description, Help in this order; texts compare exactly.
    bool Compare(const Ref<CEnumerator>& toCompare) const;
    // "Enumerator{Description:..." with the value after the description
    // (callers compare this text).
    Variant ToString(std::int16_t infoLevel = 1) const;
};

class CBitEnumerator final : public Object {
    TYLHART_CLASS(CBitEnumerator)
public:
    std::int32_t Value = 0;  // the bit's mask and its key in a set
    Text Description;
    Text Help;
    // Nothing until set from outside; a set reference is shared with the
    // caller who set it.
    Ref<CVariableClass> Class;
    Ref<CStatusClass> Status;
    Ref<CDefinition> Method;

    Ref<CBitEnumerator> GetCopy() const;
    // Copies the three fields, then each child that the source holds as a
    // deep copy. A child the source lacks is kept, not cleared: copying a
    // bare bit enumerator into one with children leaves those children.
    // All copies are made before anything is assigned, so a child that
    // cannot be copied leaves this object as it was.
    void SetFromObject(const Ref<CBitEnumerator>& toCopy);
    // The three fields, then Class, Status, Method: held by one side only
    // is unequal, held by both is the child's own Compare.
    bool Compare(const Ref<CBitEnumerator>& toCompare) const;
    // Children that are absent add nothing, not even their label.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart
