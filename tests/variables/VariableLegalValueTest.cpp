#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

TypeSetup range(Variant min, Variant max) { return ranges({{std::move(min), std::move(max)}}); }

// ---- GetLegalValue ----

struct LegalValueCase {
    const char* name;
    enumDDVariableType kind;
    TypeSetup setup;
    Variant stored;    // Empty: no value set
    Variant expected;  // kind and value
    friend void PrintTo(const LegalValueCase& c, std::ostream* os) { *os << c.name; }
};
class VariableGetLegalValue : public ::testing::TestWithParam<LegalValueCase> {};

TEST_P(VariableGetLegalValue, ProposesAValueOfTheKindsNumericForm) {
    const LegalValueCase& c = GetParam();
    auto v = variableOf(c.kind, c.setup);
    if (!c.stored.isEmpty()) v->SetValue(c.stored);
    v->DefaultValue = std::int32_t{12345};  // never consulted
    const Date stamp = v->LastSetTime;
    EXPECT_EQ(call(v, u"GetLegalValue"), c.expected);
    EXPECT_EQ(v->GetValuePlain(), c.stored);  // nothing is stored
    EXPECT_EQ(v->LastSetTime, stamp);
}


INSTANTIATE_TEST_SUITE_P(
    AllKinds, VariableGetLegalValue,
    ::testing::Values(
        LegalValueCase{"FloatRangeMin", ddvTFloat, range(10.0, 20.0), Variant(), 10.0f},
        LegalValueCase{"FloatOpenMinZeroLegal", ddvTFloat, range(Open, 20.0), Variant(), 0.0f},
        LegalValueCase{"FloatOpenMinZeroIllegal", ddvTFloat, range(Open, -5.0), Variant(), 0.0f},
        LegalValueCase{"FloatNoRange", ddvTFloat, {}, Variant(), 0.0f},
        LegalValueCase{"FloatLegalValueKeepsItsType", ddvTFloat, range(10.0, 20.0), std::int32_t{15},
                       std::int32_t{15}},
        LegalValueCase{"FloatTextValueOutOfRange", ddvTFloat, range(10.0, 20.0), u"30", 10.0f},
        LegalValueCase{"DoubleRangeMin", ddvTDouble, range(10.0, 20.0), Variant(), 10.0},
        // A stored 0 counts as no value: the candidate takes the kind's form.
        LegalValueCase{"DoubleStoredZero", ddvTDouble, {}, std::int32_t{0}, 0.0},
        LegalValueCase{"IntBelowRange", ddvTInt, range(10.0, 20.0), std::int32_t{5}, std::int32_t{10}},
        LegalValueCase{"IntRoundedMin", ddvTInt, range(10.5, 20.0), Variant(), std::int32_t{10}},
        LegalValueCase{"IntInRange", ddvTInt, range(10.0, 20.0), 12.5, 12.5},
        LegalValueCase{"UnsignedNoValue", ddvTUnsigned, {}, Variant(), std::int32_t{0}},
        LegalValueCase{"UnsignedOpenMin", ddvTUnsigned, range(Open, -1.0), Variant(), std::int32_t{0}},
        LegalValueCase{"EnumeratorFirstOfSet", ddvTEnumerator, enumerators({7, 3}, 1), Variant(), std::int32_t{7}},
        LegalValueCase{"EnumeratorIllegalValue", ddvTEnumerator, enumerators({1, 0}, 1), std::int32_t{9},
                       std::int32_t{1}},
        LegalValueCase{"EnumeratorEmptySet", ddvTEnumerator, {}, Variant(), std::int16_t{0}},
        // The failing fallback leaves the candidate as the answer.
        LegalValueCase{"EnumeratorEmptySetWithValue", ddvTEnumerator, {}, 5.0, 5.0},
        LegalValueCase{"BitEnumeratorUntested", ddvTBitEnumerator, {}, u"abc", u"abc"},
        LegalValueCase{"BitEnumeratorNoValue", ddvTBitEnumerator, {}, Variant(), std::int32_t{0}},
        LegalValueCase{"IndexFirstOfDomain", ddvTIndex, domain({std::int16_t{4}, std::int16_t{5}}), Variant(),
                       std::int16_t{4}},
        LegalValueCase{"IndexInDomain", ddvTIndex, domain({std::int16_t{4}, std::int16_t{5}}), std::int32_t{5},
                       std::int32_t{5}},
        LegalValueCase{"IndexEmptyDomain", ddvTIndex, {}, Variant(), std::int32_t{0}},
        LegalValueCase{"AsciiCut", ddvTASCII, sized(3), u"abcdef", u"abc"},
        LegalValueCase{"AsciiNumberCut", ddvTPackedASCII, sized(3), std::int32_t{12345}, u"123"},
        LegalValueCase{"AsciiNoValue", ddvTPassword, sized(3), Variant(), u""},
        LegalValueCase{"AsciiFits", ddvTPassword, sized(3), u"ab", u"ab"},
        LegalValueCase{"BitStringNoValue", ddvTBitString, sized(4), Variant(), u"0000"},
        LegalValueCase{"BitStringIllegal", ddvTBitString, sized(4), u"0121", u"0000"},
        LegalValueCase{"BitStringLegal", ddvTBitString, sized(4), u"0110", u"0110"},
        LegalValueCase{"DateNoValue", ddvTDate, {}, Variant(), std::int32_t{65892}},
        LegalValueCase{"DateIllegal", ddvTDate, {}, std::int32_t{29 * 65536 + 2 * 256 + 101}, std::int32_t{65892}},
        LegalValueCase{"TimeNoValue", ddvTTime, {}, Variant(), std::int32_t{65892}},
        LegalValueCase{"DateAndTimeAnything", ddvTDateAndTime, {}, u"x", u"x"},
        LegalValueCase{"DurationNoValue", ddvTDuration, {}, Variant(), std::int32_t{65892}},
        LegalValueCase{"TimeValueNoValue", ddvTTimeValue, {}, Variant(), std::int16_t{0}},
        LegalValueCase{"TimeValueAnything", ddvTTimeValue, {}, u"x", u"x"},
        LegalValueCase{"UndefinedKind", ddvTUndefined, {}, 2.5, std::int16_t{0}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(VariableLegalValue, ErrorsOfTheLegalityTestEndItWithTheCandidate) {
    // The unsigned test raises for text; the candidate is the answer.
    auto v = variableOf(ddvTUnsigned);
    v->SetValue(u"abc");
    EXPECT_EQ(v->GetLegalValue(), Variant(u"abc"));
    // Without a type nothing can be proposed.
    auto untyped = make<CVariable>();
    untyped->TypeInfo = nullptr;
    EXPECT_EQ(untyped->GetLegalValue(), Variant(std::int16_t{0}));
}

// ---- RecalcToUnit ----

Ref<CVariable> measured(Variant value, Variant defaultValue, const char16_t* unit) {
    auto v = variableOf(ddvTDouble);
    v->SetValue(std::move(value));
    v->DefaultValue = std::move(defaultValue);
    v->VariableUnit = unit;
    v->LastSetTime = Date{0.0};
    return v;
}

TEST(VariableRecalcToUnit, AValueAtItsDefaultMovesTheDefaultToo) {
    ManualClock clock;
    auto v = measured(100.0, std::int32_t{100}, u"degC");
    call(v, u"RecalcToUnit", u"degF");
    ASSERT_EQ(v->GetValuePlain().type(), VarType::Double);
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 212.0, 1e-9);
    EXPECT_EQ(v->DefaultValue, v->GetValuePlain());
    EXPECT_EQ(v->VariableUnit, u"degF");
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
}

TEST(VariableRecalcToUnit, AValueAwayFromItsDefaultMovesAlone) {
    ManualClock clock;
    auto v = measured(u"1,5", 2.0, u"bar");
    v->RecalcToUnit(u"kPa");
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 150.0, 1e-9);
    EXPECT_EQ(v->DefaultValue, Variant(2.0));
    EXPECT_EQ(v->VariableUnit, u"kPa");
}

struct FailedRecalc {
    const char* name;
    Variant value;
    const char16_t* fromUnit;
    const char16_t* toUnit;
    friend void PrintTo(const FailedRecalc& c, std::ostream* os) { *os << c.name; }
};
class VariableRecalcFails : public ::testing::TestWithParam<FailedRecalc> {};

TEST_P(VariableRecalcFails, QuietlyAndWithoutChange) {
    const FailedRecalc& c = GetParam();
    ManualClock clock;
    auto v = variableOf(ddvTASCII);
    v->SetValue(c.value);
    v->DefaultValue = c.value;
    v->VariableUnit = c.fromUnit;
    v->LastSetTime = Date{1.0};
    EXPECT_EQ(raised([&] { v->RecalcToUnit(c.toUnit); }), (ErrorRecord{0, "", "(no error)"}));
    EXPECT_EQ(v->GetValuePlain(), c.value);
    EXPECT_EQ(v->DefaultValue, c.value);
    EXPECT_EQ(v->VariableUnit, c.fromUnit);
    EXPECT_EQ(v->LastSetTime, Date{1.0});
}
INSTANTIATE_TEST_SUITE_P(Failures, VariableRecalcFails,
                         ::testing::Values(FailedRecalc{"TextValue", u"abc", u"bar", u"kPa"},
                                           FailedRecalc{"UnknownUnit", std::int32_t{5}, u"bar", u"parsec"},
                                           FailedRecalc{"UnknownFromUnit", std::int32_t{5}, u"", u"bar"},
                                           FailedRecalc{"OtherFamily", std::int32_t{5}, u"bar", u"degC"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(VariableRecalcToUnit, WhatReadingTheValueChangedStaysWhenTheConversionFails) {
    ManualClock clock;
    auto v = variableOf(ddvTFloat);
    v->DefaultValue = u"1,5";
    v->VariableUnit = u"m";
    v->RecalcToUnit(u"parsec");
    EXPECT_EQ(v->DefaultValue, Variant(1.5));  // normalised by the read
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
    EXPECT_TRUE(v->GetValuePlain().isEmpty());
    EXPECT_EQ(v->VariableUnit, u"m");
    // The same through the default, converting: only the value moves,
    // since an unset value did not equal the default.
    v->RecalcToUnit(u"cm");
    EXPECT_NEAR(v->GetValuePlain().toDouble(), 150.0, 1e-9);
    EXPECT_EQ(v->DefaultValue, Variant(1.5));
    EXPECT_EQ(v->VariableUnit, u"cm");
}

}  // namespace
}  // namespace tylhart::test
