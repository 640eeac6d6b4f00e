#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

TypeSetup range(Variant min, Variant max) { return ranges({{std::move(min), std::move(max)}}); }

// ---- GetLegalValue ----

TEST(VariableLegalValue, ProposesAValueOfTheKindsNumericFormAndStoresNothing) {
    const auto tenTo20 = range(10.0, 20.0), fourFive = domain({std::int16_t{4}, std::int16_t{5}});
    const Variant none;  // no value set
    const std::tuple<const char*, enumDDVariableType, TypeSetup, Variant, Variant> cases[] = {  // stored, proposed
        {"FloatRangeMin", ddvTFloat, tenTo20, none, 10.0f}, {"FloatOpenMinZeroLegal", ddvTFloat, range(Open, 20.0), none, 0.0f},
        {"FloatOpenMinZeroIllegal", ddvTFloat, range(Open, -5.0), none, 0.0f}, {"FloatNoRange", ddvTFloat, {}, none, 0.0f},
        {"FloatLegalKeepsItsType", ddvTFloat, tenTo20, std::int32_t{15}, std::int32_t{15}},
        {"FloatTextOutOfRange", ddvTFloat, tenTo20, u"30", 10.0f}, {"DoubleRangeMin", ddvTDouble, tenTo20, none, 10.0},
        // A stored 0 counts as no value: the candidate takes the kind's form.
        {"DoubleStoredZero", ddvTDouble, {}, std::int32_t{0}, 0.0},
        {"IntBelowRange", ddvTInt, tenTo20, std::int32_t{5}, std::int32_t{10}},
        {"IntRoundedMin", ddvTInt, range(10.5, 20.0), none, std::int32_t{10}}, {"IntInRange", ddvTInt, tenTo20, 12.5, 12.5},
        {"UnsignedNoValue", ddvTUnsigned, {}, none, std::int32_t{0}},
        {"UnsignedOpenMin", ddvTUnsigned, range(Open, -1.0), none, std::int32_t{0}},
        {"EnumFirstOfSet", ddvTEnumerator, enumerators({7, 3}, 1), none, std::int32_t{7}},
        {"EnumIllegalValue", ddvTEnumerator, enumerators({1, 0}, 1), std::int32_t{9}, std::int32_t{1}},
        {"EnumEmptySet", ddvTEnumerator, {}, none, std::int16_t{0}},
        {"EnumEmptySetWithValue", ddvTEnumerator, {}, 5.0, 5.0},  // the failing fallback leaves the candidate
        {"BitEnumUntested", ddvTBitEnumerator, {}, u"abc", u"abc"}, {"BitEnumNoValue", ddvTBitEnumerator, {}, none, std::int32_t{0}},
        {"IndexFirstOfDomain", ddvTIndex, fourFive, none, std::int16_t{4}},
        {"IndexInDomain", ddvTIndex, fourFive, std::int32_t{5}, std::int32_t{5}},
        {"IndexEmptyDomain", ddvTIndex, {}, none, std::int32_t{0}}, {"AsciiCut", ddvTASCII, sized(3), u"abcdef", u"abc"},
        {"AsciiNumberCut", ddvTPackedASCII, sized(3), std::int32_t{12345}, u"123"},
        {"AsciiNoValue", ddvTPassword, sized(3), none, u""}, {"AsciiFits", ddvTPassword, sized(3), u"ab", u"ab"},
        {"BitStringNoValue", ddvTBitString, sized(4), none, u"0000"},
        {"BitStringIllegal", ddvTBitString, sized(4), u"0121", u"0000"},
        {"BitStringLegal", ddvTBitString, sized(4), u"0110", u"0110"},
        {"DateNoValue", ddvTDate, {}, none, std::int32_t{65892}},
        {"DateIllegal", ddvTDate, {}, packedDate(29, 2, 101), std::int32_t{65892}},
        {"TimeNoValue", ddvTTime, {}, none, std::int32_t{65892}}, {"DateAndTimeAnything", ddvTDateAndTime, {}, u"x", u"x"},
        {"DurationNoValue", ddvTDuration, {}, none, std::int32_t{65892}},
        {"TimeValueNoValue", ddvTTimeValue, {}, none, std::int16_t{0}}, {"TimeValueAnything", ddvTTimeValue, {}, u"x", u"x"},
        {"UndefinedKind", ddvTUndefined, {}, 2.5, std::int16_t{0}}};
    for (const auto& [name, kind, setup, stored, expected] : cases) {
        auto v = variableOf(kind, setup);
        if (!stored.isEmpty()) v->SetValue(stored);
        v->DefaultValue = std::int32_t{12345};  // never consulted
        const Date stamp = v->LastSetTime;
        EXPECT_EQ(call(v, u"GetLegalValue"), expected) << name;
        EXPECT_EQ(v->GetValuePlain(), stored) << name;
        EXPECT_EQ(v->LastSetTime, stamp) << name;
    }
    // The unsigned test raises for text: the candidate is the answer.
    auto v = variableOf(ddvTUnsigned);
    v->SetValue(u"abc");
    EXPECT_EQ(v->GetLegalValue(), Variant(u"abc"));
    v->TypeInfo = nullptr;  // without a type nothing can be proposed
    EXPECT_EQ(v->GetLegalValue(), Variant(std::int16_t{0}));
}

// ---- RecalcToUnit ----

// The conversions themselves belong to the unit converter; here only what
// RecalcToUnit does with their result.
TEST(VariableRecalcToUnit, AValueAtItsDefaultMovesTheDefaultTooElseAlone) {
    ManualClock clock;
    auto v = variableOf(ddvTDouble);
    v->SetValue(100.0), v->DefaultValue = std::int32_t{100}, v->VariableUnit = u"degC", v->LastSetTime = Date{0.0};
    call(v, u"RecalcToUnit", u"degF");
    ASSERT_EQ(v->GetValuePlain().type(), VarType::Double);
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 212.0, 1e-9);
    EXPECT_EQ(v->DefaultValue, v->GetValuePlain());
    EXPECT_TRUE(v->VariableUnit == u"degF" && v->LastSetTime == Date{Noon2000});

    v->SetValue(u"1,5"), v->DefaultValue = 2.0, v->VariableUnit = u"bar";
    v->RecalcToUnit(u"kPa");
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 150.0, 1e-9);
    EXPECT_TRUE(v->DefaultValue == Variant(2.0) && v->VariableUnit == u"kPa");
}

TEST(VariableRecalcToUnit, FailsQuietlyAndWithoutChange) {
    ManualClock clock;
    const std::tuple<Variant, const char16_t*, const char16_t*> cases[] = {  // value, from, to
        {u"abc", u"bar", u"kPa"}, {std::int32_t{5}, u"bar", u"parsec"}, {std::int32_t{5}, u"", u"bar"},
        {std::int32_t{5}, u"bar", u"degC"}};
    for (const auto& [value, from, to] : cases) {
        auto v = variableOf(ddvTASCII);
        v->SetValue(value), v->DefaultValue = value, v->VariableUnit = from, v->LastSetTime = Date{1.0};
        EXPECT_EQ(raised([&] { v->RecalcToUnit(to); }), NoError) << toUtf8(to);
        EXPECT_TRUE(v->GetValuePlain() == value && v->DefaultValue == value) << toUtf8(to);
        EXPECT_TRUE(v->VariableUnit == from && v->LastSetTime == Date{1.0}) << toUtf8(to);
    }
}

TEST(VariableRecalcToUnit, WhatReadingTheValueChangedStaysWhenTheConversionFails) {
    ManualClock clock;
    auto v = variableOf(ddvTFloat);
    v->DefaultValue = u"1,5", v->VariableUnit = u"m";
    v->RecalcToUnit(u"parsec");
    EXPECT_EQ(v->DefaultValue, Variant(1.5));  // normalised by the read
    EXPECT_TRUE(v->LastSetTime == Date{Noon2000} && v->GetValuePlain().isEmpty() && v->VariableUnit == u"m");
    // The same through the default, converting: only the value moves,
    // since an unset value did not equal the default.
    v->RecalcToUnit(u"cm");
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 150.0, 1e-9);
    EXPECT_TRUE(v->DefaultValue == Variant(1.5) && v->VariableUnit == u"cm");
}

}  // namespace
}  // namespace tylhart::test
