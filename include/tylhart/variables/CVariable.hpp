// CVariable: the VARIABLE construct. The attributes the DD states for a
// variable (class, units, default, texts, actions, time-outs, type,
// relations) plus the bookkeeping a host keeps while it talks to a device
// (value and when it was set, availability, handling flags, last error),
// the legality tests of candidate values, the legal value of the type and
// the recalculation of the value into another engineering unit.
#pragma once

#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/core/Construct.hpp"
#include "tylhart/variables/CType.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart {

class CVariable final : public Construct<CVariable> {
    TYLHART_CLASS(CVariable)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKVariableDef;
    // The variable's kind check reports the menu's Source: it shares the
    // menu's wording and callers match on it.
    static constexpr const char16_t* DefinitionSource = u"Menu.Definition";

    CVariable();

    // ---- Public fields, in declaration order ----
    // Object fields hand out the stored object itself; SetFromObject
    // replaces them with copies (UnitVariable excepted: always shared).
    Child<CVariableClass> Class;
    Text ConstantUnit;
    Text VariableUnit;  // the unit the value is in; RecalcToUnit changes it
    Ref<CDefinition> UnitVariable;
    Variant DefaultValue;
    Text Help;
    Text Label;
    Child<CDefinitionList> PreEditActions;
    Child<CDefinitionList> PostEditActions;
    Child<CDefinitionList> PreReadActions;
    Child<CDefinitionList> PostReadActions;
    Child<CDefinitionList> PreWriteActions;
    Child<CDefinitionList> PostWriteActions;
    std::int16_t ReadTimeout = -1;   // -1: none given
    std::int16_t WriteTimeout = -1;  // -1: none given
    Child<CType> TypeInfo;
    // Validity and IsChecked start True, the other flags False.
    bool Validity = true;
    bool ToBeWritten = false;
    bool IsChecked = true;
    bool InRecursion = false;
    bool InReadRecursion = false;
    Text ErrorText;
    std::int32_t ErrorCode = 0;
    Date LastSetTime;  // stamped from tylhart::now()

    // ---- Handling flags (ddvhTWrite 0, ddvhTRead 1), both set at start ----
    // The flag array itself; changes made through it are the variable's.
    Ref<Object> GetHandlingObj() const { return handling_.object(); }
    // The index goes to the array unchecked: its subscript error reaches
    // the caller.
    bool Handling(enumDDVariableHandlingType index) const { return handling_.flag(index); }
    void SetHandling(enumDDVariableHandlingType index, bool value) { handling_.setFlag(index, value); }

    // ---- Copy protocol ----
    // Field by field in a fixed order, through the checked Definition let;
    // an error stops the copy and keeps what was copied so far.
    void SetFromObject(const Ref<CVariable>& toCopy);
    // Stops at the first difference. Relations take no part: two variables
    // that differ only there compare equal.
    bool Compare(const Ref<CVariable>& toCompare) const;

    // ---- Legality tests ----
    // The arguments are the caller's own: where a test fills in a missing
    // value or a negative size, it writes it back. The overloads taking
    // values (below) are the same tests for callers that need no write-back.
    bool IsLegalValue(Variant& testValue, enumDDVariableType& testType);
    bool IsFloat(Variant& testValue);
    bool IsDouble(Variant& testValue);
    bool IsInteger(Variant& testValue, std::int32_t& testSize) const;
    bool IsUnsigned(Variant& testValue, std::int32_t& testSize) const;
    bool IsString(Variant& testValue, std::int32_t& testSize);
    bool IsBitString(Variant& testValue, std::int32_t& testSize);
    bool IsDate(Variant& testValue);
    bool IsTime(Variant& testValue) const;

    bool IsLegalValue(const Variant& testValue = Missing{}, enumDDVariableType testType = ddvTUndefined);
    bool IsFloat(const Variant& testValue = Missing{});
    bool IsDouble(const Variant& testValue = Missing{});
    bool IsInteger(const Variant& testValue = Missing{}, std::int32_t testSize = -1) const;
    bool IsUnsigned(const Variant& testValue = Missing{}, std::int32_t testSize = -1) const;
    bool IsString(const Variant& testValue = Missing{}, std::int32_t testSize = -1);
    bool IsBitString(const Variant& testValue = Missing{}, std::int32_t testSize = -1);
    bool IsDate(const Variant& testValue = Missing{});
    bool IsTime(const Variant& testValue = Missing{}) const;

    // ---- Values ----
    // A value the type accepts, never an error: see VariableLegalValue.cpp.
    Variant GetLegalValue();

    // The stored value (normalised and written back), else the default
    // (normalised, written back, LastSetTime stamped), else the legal value
    // (LastSetTime stamped, nothing stored).
    Variant Value();
    // Stores a copy (Null clears the value), unchecked; stamps LastSetTime.
    void SetValue(const Variant& newValue);

    Ref<CVariableDefinitionSet> Relations() const { return relations_.ref(); }
    void SetRelations(const Ref<CVariableDefinitionSet>& newRelations) { relations_ = newRelations; }

    // Converts the value into NewUnit and records the unit; any failure
    // ends it quietly.
    void RecalcToUnit(const Text& newUnit);

    // ---- Availability ----
    // The flag, cleared for good when asked sooner than the period after
    // LastSetTime.
    bool Available();
    void SetAvailable(bool newValue);
    std::int32_t DynAvailability() const noexcept { return dynAvailability_; }
    void SetDynAvailability(std::int32_t value) noexcept { dynAvailability_ = value; }
    std::int32_t Availability() const noexcept { return availability_; }
    void SetAvailability(std::int32_t value) noexcept { availability_ = value; }
    bool GetAvailablePlain() const noexcept { return available_; }

    Variant GetValuePlain() const { return value_; }
    // The stored value equals the default (Empty equals 0 and "").
    bool InitialValue() const;

    // Renders the definition even below level 1; callers rely on it.
    Variant ToString(std::int16_t infoLevel = 1) const;

    // The type has a kind.
    bool Initialized() const;

private:
    // Strings of numeric kinds become numbers; the argument may be
    // rewritten (decimal commas) as well.
    Variant NormalizeValue(Variant& value) const;
    // The range test of the numeric kinds, for a value already known to be
    // of the kind.
    bool inRanges(const Variant& testValue, enumDDVariableType kind) const;
    bool isEnumeratorValue(const Variant& testValue) const;

    bool available_ = false;
    std::int32_t dynAvailability_ = -1;
    std::int32_t availability_ = -1;
    Variant value_;
    detail::FlagArrayLink handling_{2, 0b11};  // readable and writable
    Child<CVariableDefinitionSet> relations_;
};

}  // namespace tylhart
