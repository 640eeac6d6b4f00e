#include "tylhart/variables/CVariable.hpp"

#include <cmath>
#include <string>

#include "tylhart/containers/Elements.hpp"
#include "tylhart/core/Clock.hpp"

namespace tylhart {

namespace {

std::int16_t lower(std::int16_t infoLevel, int by) { return static_cast<std::int16_t>(infoLevel - by); }

// Whole seconds since 30 December 1899 at which the date's second starts.
// A date before that day counts its time of day forward from the start of
// its (negative) day. Milliseconds first, so that the binary fraction of a
// date written as an exact second does not fall short of it.
std::int64_t secondOf(Date d) {
    const double whole = std::trunc(d.days);
    const double timeOfDay = std::fabs(d.days - whole);
    const auto millis = static_cast<std::int64_t>(std::llround((whole + timeOfDay) * 86400000.0));
    return millis >= 0 ? millis / 1000 : -((-millis + 999) / 1000);
}

// Second boundaries crossed from `from` to `to`, as the runtime's date
// difference in seconds counts them.
std::int64_t secondsBetween(Date from, Date to) { return secondOf(to) - secondOf(from); }

}  // namespace

CVariable::CVariable() {
    SetAvailable(false);
}

// ---- Values ----

void CVariable::SetValue(const Variant& newValue) {
    value_ = newValue.isNull() ? Variant() : newValue;
    LastSetTime = now();
}

Variant CVariable::Value() {
    if (!value_.isEmpty()) {
        value_ = NormalizeValue(value_);
        return value_;
    }
    if (!DefaultValue.isEmpty()) {
        DefaultValue = NormalizeValue(DefaultValue);
        LastSetTime = now();
        return DefaultValue;
    }
    Variant legal = GetLegalValue();
    LastSetTime = now();
    return legal;
}

Variant CVariable::NormalizeValue(Variant& value) const {
    Variant result = value;
    if (!TypeInfo || !value.isString()) return result;
    switch (TypeInfo->Kind()) {
        case ddvTFloat:
        case ddvTDouble: {
            // A decimal comma is read as a point: the text is rewritten in
            // the caller's value before the leading number is read.
            Text text = *value.get<Text>();
            for (char16_t& c : text)
                if (c == u',') c = u'.';
            value = text;
            try {
                result = leadingNumber(text);
            } catch (const Error&) {
            }
            break;
        }
        case ddvTInt:
        case ddvTUnsigned:
        case ddvTEnumerator:
        case ddvTBitEnumerator:
        case ddvTIndex:
        case ddvTDate:
        case ddvTTime:
        case ddvTDateAndTime:
        case ddvTDuration:
        case ddvTTimeValue:
            try {
                result = value.toLong();
            } catch (const Error&) {
            }
            break;
        default:
            break;
    }
    return result;
}

bool CVariable::InitialValue() const { return variantEqualsStrict(value_, DefaultValue); }

bool CVariable::Initialized() const { return checked(TypeInfo).Kind() != ddvTUndefined; }

// ---- Availability ----

bool CVariable::Available() {
    if (!available_) return false;
    // A class not yet made is a fresh one, with no flag set.
    const bool dynamic = Class.made() && checked(Class).ClassInfo(ddvCDynamic);
    const std::int32_t period = dynamic ? dynAvailability_ : availability_;
    // Reported unavailable when asked SOONER than the period after the
    // last stamp; at or after the period it stays available. Hosts depend
    // on this direction, so it is not turned round.
    if (period >= 0 && period > secondsBetween(LastSetTime, now())) available_ = false;
    return available_;
}

void CVariable::SetAvailable(bool newValue) {
    available_ = newValue;
    if (newValue) LastSetTime = now();
}

// ---- Copy protocol ----

void CVariable::SetFromObject(const Ref<CVariable>& toCopy) {
    const CVariable& source = checked(toCopy);
    value_ = source.GetValuePlain();  // no defaulting, no normalisation
    Class = copyChild(source.Class);
    ConstantUnit = source.ConstantUnit;
    VariableUnit = source.VariableUnit;
    UnitVariable = source.UnitVariable;  // shared, never copied
    ErrorText = source.ErrorText;
    ErrorCode = source.ErrorCode;
    Help = source.Help;
    Label = source.Label;
    DefaultValue = source.DefaultValue;
    PreEditActions = copyChild(source.PreEditActions);
    PostEditActions = copyChild(source.PostEditActions);
    PreReadActions = copyChild(source.PreReadActions);
    PostReadActions = copyChild(source.PostReadActions);
    PreWriteActions = copyChild(source.PreWriteActions);
    PostWriteActions = copyChild(source.PostWriteActions);
    ReadTimeout = source.ReadTimeout;
    WriteTimeout = source.WriteTimeout;
    TypeInfo = checked(source.TypeInfo).GetCopy();
    Validity = source.Validity;
    ToBeWritten = source.ToBeWritten;
    IsChecked = source.IsChecked;
    InRecursion = source.InRecursion;
    InReadRecursion = source.InReadRecursion;
    available_ = source.GetAvailablePlain();  // the flag, without the period test
    availability_ = source.Availability();
    dynAvailability_ = source.DynAvailability();
    LastSetTime = source.LastSetTime;
    SetDefinition(checked(source.Definition()).GetCopy());
    handling_.copyFrom(source.handling_);
    relations_ = copyChild(source.relations_);
}

bool CVariable::Compare(const Ref<CVariable>& toCompare) const {
    const CVariable& other = checked(toCompare);
    if (!checked(definition_).Compare(other.Definition())) return false;
    if (!variantEqualsStrict(value_, other.GetValuePlain())) return false;
    if (ErrorText != other.ErrorText || ErrorCode != other.ErrorCode) return false;
    if (!Class.equals(other.Class)) return false;
    if (ConstantUnit != other.ConstantUnit || VariableUnit != other.VariableUnit) return false;
    if (!UnitVariable) {
        if (other.UnitVariable) return false;
    } else if (!other.UnitVariable || !UnitVariable->Compare(other.UnitVariable)) {
        return false;
    }
    if (Help != other.Help || Label != other.Label) return false;
    if (!PreEditActions.equals(other.PreEditActions) || !PostEditActions.equals(other.PostEditActions) ||
        !PreReadActions.equals(other.PreReadActions) || !PostReadActions.equals(other.PostReadActions) ||
        !PreWriteActions.equals(other.PreWriteActions) || !PostWriteActions.equals(other.PostWriteActions))
        return false;
    if (ReadTimeout != other.ReadTimeout || WriteTimeout != other.WriteTimeout) return false;
    if (!checked(TypeInfo).Compare(other.TypeInfo)) return false;
    if (Validity != other.Validity || available_ != other.GetAvailablePlain() ||
        availability_ != other.Availability() || dynAvailability_ != other.DynAvailability() ||
        LastSetTime != other.LastSetTime || ToBeWritten != other.ToBeWritten ||
        IsChecked != other.IsChecked || InRecursion != other.InRecursion ||
        InReadRecursion != other.InReadRecursion)
        return false;
    if (!handling_.sameFlags(other.handling_)) return false;
    return variantEqualsStrict(DefaultValue, other.DefaultValue);
}

// ---- Rendering ----

Variant CVariable::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) {
        Text out = u"VARIABLE{";
        if (definition_) out += concatText(definition_->ToString(1));
        return std::move(out) + u"}";
    }
    Text out = renderHead(u"VARIABLE{", infoLevel);
    if (infoLevel > 1) {
        out.append(u", Value:"sv).append(concatText(value_));
        out.append(u", Help:"sv).append(Help);
        out.append(u", Label:"sv).append(Label);
        out.append(u", ConstantUnit:"sv).append(ConstantUnit);
        out.append(u", VariableUnit:"sv).append(VariableUnit);
        if (UnitVariable) out.append(u", UnitVariable:"sv).append(concatText(UnitVariable->ToString(lower(infoLevel, 1))));
        out.append(u", Available:"sv).append(boolText(available_));
        out.append(u", DefaultValue:"sv).append(concatText(DefaultValue));
        out.append(u", ToBeWritten:"sv).append(boolText(ToBeWritten));
        out.append(u", Validity:"sv).append(boolText(Validity));
        if (TypeInfo) out.append(u", TypeInfo:"sv).append(concatText(TypeInfo->ToString(lower(infoLevel, 1))));
    }
    if (infoLevel >= 3) {
        out.append(u", IsChecked:"sv).append(boolText(IsChecked));
        out.append(u", InRecursion:"sv).append(boolText(InRecursion));
        out.append(u", InReadRecursion:"sv).append(boolText(InReadRecursion));
        out.append(u", ErrorText:"sv).append(ErrorText);
        out.append(u", ErrorCode:"sv).append(decimal(ErrorCode));
        out.append(u", LastSetTime:"sv).append(Variant(LastSetTime).toText());
        out.append(u", ReadTimeout:"sv).append(decimal(ReadTimeout));
        out.append(u", WriteTimeout:"sv).append(decimal(WriteTimeout));
        out.append(u", m_Handling:"sv).append(handling_.text());
        if (relations_) {
            // Printed twice: readers of this text expect both copies.
            const std::size_t start = out.size();
            relations_.renderInto(out.append(u", m_Relations:"sv), lower(infoLevel, 2));
            out.append(out, start);
        }
        const std::pair<const char16_t*, const Child<CDefinitionList>*> lists[] = {
            {u", PreEditActions:", &PreEditActions},   {u", PostEditActions:", &PostEditActions},
            {u", PreReadActions:", &PreReadActions},   {u", PostReadActions:", &PostReadActions},
            {u", PreWriteActions:", &PreWriteActions}, {u", PostWriteActions:", &PostWriteActions},
        };
        for (const auto& [label, list] : lists)
            if (*list) list->renderInto(out.append(label), lower(infoLevel, 2));
    }
    return std::move(out) + u"}";
}

// ---- Member table ----

const ClassInfo& CVariable::staticClassInfo() {
    static const ClassInfo info = [] {
        using V = CVariable;
        // The tests take their arguments by reference, as callers declare
        // them, and write a fetched value, size or kind back into them.
        const auto byRef = [](const char16_t* name, Variant defaultValue = Missing{}) {
            return Param{name, std::move(defaultValue), true, true};
        };
        const std::vector<Param> valueOnly{byRef(u"TestValue")};
        const std::vector<Param> valueAndSize{byRef(u"TestValue"), byRef(u"TestSize", std::int32_t{-1})};
        using Test1 = bool (V::*)(Variant&);
        using Test1C = bool (V::*)(Variant&) const;
        using Test2 = bool (V::*)(Variant&, std::int32_t&);
        using Test2C = bool (V::*)(Variant&, std::int32_t&) const;

        ClassBuilder<V> b(TypeName);
        b.field(u"Class", &V::Class)
            .field(u"ConstantUnit", &V::ConstantUnit)
            .field(u"VariableUnit", &V::VariableUnit)
            .field(u"UnitVariable", &V::UnitVariable)
            .field(u"DefaultValue", &V::DefaultValue)
            .field(u"Help", &V::Help)
            .field(u"Label", &V::Label)
            .field(u"PreEditActions", &V::PreEditActions)
            .field(u"PostEditActions", &V::PostEditActions)
            .field(u"PreReadActions", &V::PreReadActions)
            .field(u"PostReadActions", &V::PostReadActions)
            .field(u"PreWriteActions", &V::PreWriteActions)
            .field(u"PostWriteActions", &V::PostWriteActions)
            .field(u"ReadTimeout", &V::ReadTimeout)
            .field(u"WriteTimeout", &V::WriteTimeout)
            .field(u"TypeInfo", &V::TypeInfo)
            .field(u"Validity", &V::Validity)
            .field(u"ToBeWritten", &V::ToBeWritten)
            .field(u"IsChecked", &V::IsChecked)
            .field(u"InRecursion", &V::InRecursion)
            .field(u"ErrorText", &V::ErrorText)
            .field(u"ErrorCode", &V::ErrorCode)
            .field(u"LastSetTime", &V::LastSetTime)
            .method(u"GetHandlingObj", &V::GetHandlingObj)
            .property(u"Handling", &V::Handling, &V::SetHandling, {Param{u"Index", Missing{}, false, true}});
        describeDefinition(b);
        describeGetCopy(b);
        b.method(u"SetFromObject", &V::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &V::Compare, {required(u"ToCompare")})
            .method(u"IsLegalValue",
                    static_cast<bool (V::*)(Variant&, enumDDVariableType&)>(&V::IsLegalValue),
                    {byRef(u"TestValue"), byRef(u"TestType", std::int32_t{-1})})
            .method(u"IsFloat", static_cast<Test1>(&V::IsFloat), valueOnly)
            .method(u"IsDouble", static_cast<Test1>(&V::IsDouble), valueOnly)
            .method(u"IsInteger", static_cast<Test2C>(&V::IsInteger), valueAndSize)
            .method(u"IsUnsigned", static_cast<Test2C>(&V::IsUnsigned), valueAndSize)
            .method(u"IsString", static_cast<Test2>(&V::IsString), valueAndSize)
            .method(u"IsBitString", static_cast<Test2>(&V::IsBitString), valueAndSize)
            .method(u"IsDate", static_cast<Test1>(&V::IsDate), valueOnly)
            .method(u"IsTime", static_cast<Test1C>(&V::IsTime), valueOnly);
        describeMakeObject(b);
        b.method(u"GetLegalValue", &V::GetLegalValue)
            .property(u"Value", &V::Value, &V::SetValue)
            .asLet()
            .property(u"Relations", &V::Relations, &V::SetRelations)
            .asLet()
            .method(u"RecalcToUnit", &V::RecalcToUnit, {Param{u"NewUnit", Missing{}, false, true}})
            .property(u"Available", &V::Available, &V::SetAvailable)
            .property(u"DynAvailability", &V::DynAvailability, &V::SetDynAvailability)
            .property(u"Availability", &V::Availability, &V::SetAvailability)
            .method(u"GetAvailablePlain", &V::GetAvailablePlain)
            .method(u"GetValuePlain", &V::GetValuePlain)
            .getter(u"InitialValue", &V::InitialValue)
            .method(u"ToString", &V::ToString, {optional(u"InfoLevel", std::int16_t{1})})
            .getter(u"Initialized", &V::Initialized)
            // Declared after InRecursion, but listed last with the number
            // after LastSetTime's, as the type library has it.
            .field(u"InReadRecursion", &V::InReadRecursion);
        return b.build();
    }();
    return info;
}

}  // namespace tylhart
