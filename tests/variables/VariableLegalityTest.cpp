#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord TypeMismatch = platformError(errors::Runtime::TypeMismatch);
const ErrorRecord Overflow = platformError(errors::Runtime::Overflow);
const ErrorRecord NullUse = platformError(errors::Runtime::InvalidUseOfNull);

// ---- The elementary tests, called by name ----

struct ElementaryCase {
    const char16_t* test;
    Variant value;
    std::int32_t size;  // passed only to the tests that take one
    bool expected;
    friend void PrintTo(const ElementaryCase& c, std::ostream* os) {
        *os << toUtf8(c.test) << "(";
        PrintTo(c.value, os);
        *os << ", " << c.size << ")";
    }
};
class VariableElementary : public ::testing::TestWithParam<ElementaryCase> {};
TEST_P(VariableElementary, Answers) {
    const ElementaryCase& c = GetParam();
    const Ref<Object> v = make<CVariable>();
    const bool sized = Text(c.test) != u"IsFloat" && Text(c.test) != u"IsDouble" && Text(c.test) != u"IsTime";
    EXPECT_EQ(sized ? call(v, c.test, c.value, c.size) : call(v, c.test, c.value), Variant(c.expected));
}
INSTANTIATE_TEST_SUITE_P(
    Values, VariableElementary,
    ::testing::Values(
        // Weak on purpose: no check at all.
        ElementaryCase{u"IsUnsigned", std::int32_t{-5}, -1, true}, ElementaryCase{u"IsUnsigned", u"abc", 1, true},
        ElementaryCase{u"IsTime", u"not a time", 0, true}, ElementaryCase{u"IsTime", Null{}, 0, true},
        // 32 bits whatever the size below 4; from 4 on the value is not looked at.
        ElementaryCase{u"IsInteger", 3000000000.0, -1, false}, ElementaryCase{u"IsInteger", 3000000000.0, 4, true},
        ElementaryCase{u"IsInteger", u"abc", 8, true}, ElementaryCase{u"IsInteger", u"abc", -1, false},
        ElementaryCase{u"IsInteger", std::int32_t{70000}, 2, true},
        ElementaryCase{u"IsInteger", 2147483647.4, -1, true}, ElementaryCase{u"IsInteger", 2147483647.5, -1, false},
        ElementaryCase{u"IsInteger", u"&HFF", 1, true}, ElementaryCase{u"IsInteger", Null{}, -1, false},
        // No fetching of a missing value here: the marker is no number.
        ElementaryCase{u"IsInteger", Missing{}, -1, false},
        ElementaryCase{u"IsFloat", 3.5e38, 0, false}, ElementaryCase{u"IsDouble", 3.5e38, 0, true},
        ElementaryCase{u"IsFloat", u"1,000.5", 0, true}, ElementaryCase{u"IsDouble", u"abc", 0, false},
        ElementaryCase{u"IsFloat", true, 0, true}, ElementaryCase{u"IsDouble", Null{}, 0, false},
        ElementaryCase{u"IsString", u"abc", 3, true}, ElementaryCase{u"IsString", u"abcd", 3, false},
        ElementaryCase{u"IsString", true, 4, true}, ElementaryCase{u"IsString", Null{}, 10, false},
        // Exactly TestSize characters, each 0 or 1.
        ElementaryCase{u"IsBitString", u"0101", 4, true}, ElementaryCase{u"IsBitString", u"010", 4, false},
        ElementaryCase{u"IsBitString", u"01010", 4, false}, ElementaryCase{u"IsBitString", u"0121", 4, false},
        ElementaryCase{u"IsBitString", u"", 0, true}, ElementaryCase{u"IsBitString", std::int32_t{1010}, 4, true}));

TEST(VariableLegality, NegativeSizesComeFromTheTypeAndAreWrittenBack) {
    auto v = variableOf(ddvTASCII, sized(8));
    Variant value = u"abcdefgh";
    std::int32_t size = -1;
    EXPECT_TRUE(v->IsString(value, size));
    EXPECT_EQ(size, 8);
    auto bits = variableOf(ddvTBitString, sized(3));
    Variant pattern = u"101";
    std::int32_t bitSize = -5;
    EXPECT_TRUE(bits->IsBitString(pattern, bitSize));
    EXPECT_EQ(bitSize, 3);
}

TEST(VariableLegality, IsBitStringTrapsNothingWhereIsStringAnswersFalse) {
    auto v = make<CVariable>();
    const Variant beyondCalendar = Date{1e7};  // has no text form
    EXPECT_FALSE(v->IsString(beyondCalendar, 100));
    EXPECT_EQ(raised([&] { v->IsBitString(beyondCalendar, 4); }), platformError(errors::Runtime::InvalidCall));
    EXPECT_EQ(raised([&] { v->IsBitString(Null{}, 4); }), NullUse);
    EXPECT_EQ(raised([&] { v->IsBitString(u"0101", 40000); }), Overflow);
}

struct DateCase {
    const char* name;
    Variant value;
    bool expected;
    friend void PrintTo(const DateCase& c, std::ostream* os) { *os << c.name; }
};
class VariableIsDate : public ::testing::TestWithParam<DateCase> {};
TEST_P(VariableIsDate, PackedDayMonthYear) {
    auto v = make<CVariable>();
    EXPECT_EQ(v->IsDate(GetParam().value), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Dates, VariableIsDate,
    ::testing::Values(DateCase{"Feb29_2000", packedDate(29, 2, 100), true},
                      DateCase{"Feb29_1900", packedDate(29, 2, 0), false},
                      DateCase{"Jan1_1900", packedDate(1, 1, 0), true},
                      DateCase{"Feb29_2004", packedDate(29, 2, 104), true},
                      DateCase{"Feb29_2100", packedDate(29, 2, 200), false},
                      DateCase{"Feb29_2096", packedDate(29, 2, 196), true},
                      DateCase{"Feb29_2155", packedDate(29, 2, 255), false},
                      DateCase{"Dec31_2155", packedDate(31, 12, 255), true},
                      DateCase{"Apr31", packedDate(31, 4, 50), false},
                      DateCase{"Apr30", packedDate(30, 4, 50), true},
                      DateCase{"Sep31", packedDate(31, 9, 50), false},
                      DateCase{"Day0", packedDate(0, 1, 50), false},
                      DateCase{"Month0", packedDate(1, 0, 50), false},
                      DateCase{"Month13", packedDate(1, 13, 0), false},
                      DateCase{"Day256", std::int32_t{1 << 24}, false},
                      DateCase{"Negative", -packedDate(1, 1, 1), false},
                      DateCase{"Text", u"65892", true},
                      DateCase{"NotANumber", u"abc", false}, DateCase{"Null", Null{}, false}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- Missing values are fetched through Value and written back ----

TEST(VariableLegality, MissingValuesComeFromValueWhereTheTestSaysSo) {
    ManualClock clock;
    auto v = variableOf(ddvTDouble);
    v->DefaultValue = u"2,5";
    Variant value = Missing{};
    EXPECT_TRUE(v->IsFloat(value));
    EXPECT_EQ(value, Variant(2.5));
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});  // stamped by the default path of Value

    auto fresh = variableOf(ddvTDate);
    Variant date = Missing{};
    EXPECT_TRUE(fresh->IsDate(date));
    EXPECT_EQ(date, Variant(std::int32_t{65892}));  // the legal value

    Variant untouched = Missing{};
    std::int32_t size = -1;
    EXPECT_FALSE(fresh->IsInteger(untouched, size));
    EXPECT_TRUE(untouched.isMissing());

    auto legal = variableOf(ddvTInt);
    legal->SetValue(std::int32_t{5});
    Variant candidate = Missing{};
    enumDDVariableType kind = ddvTUndefined;
    EXPECT_TRUE(legal->IsLegalValue(candidate, kind));
    EXPECT_EQ(candidate, Variant(std::int32_t{5}));
    EXPECT_EQ(kind, ddvTInt);  // the kind used is written back too
    EXPECT_EQ(call(legal, u"IsLegalValue"), Variant(true));
}

// ---- IsLegalValue by kind ----

struct LegalCase {
    const char* name;
    enumDDVariableType kind;
    TypeSetup setup;
    Variant value;
    bool expected;
    friend void PrintTo(const LegalCase& c, std::ostream* os) { *os << c.name; }
};
class VariableIsLegal : public ::testing::TestWithParam<LegalCase> {};
TEST_P(VariableIsLegal, AgainstTheVariablesType) {
    const LegalCase& c = GetParam();
    auto v = variableOf(c.kind, c.setup);
    EXPECT_EQ(v->IsLegalValue(c.value), c.expected);
}


INSTANTIATE_TEST_SUITE_P(
    AllKinds, VariableIsLegal,
    ::testing::Values(
        LegalCase{"UndefinedKind", ddvTUndefined, {}, std::int32_t{5}, false},
        LegalCase{"FloatNotANumber", ddvTFloat, {}, u"abc", false},
        LegalCase{"FloatAtMax", ddvTFloat, ranges({{0.0, 100.0}}), std::int32_t{100}, true},
        LegalCase{"FloatAboveMax", ddvTFloat, ranges({{0.0, 100.0}}), 100.5, false},
        LegalCase{"FloatOpenBelow", ddvTFloat, ranges({{Open, 10.0}}), -1e30, true},
        LegalCase{"FloatOpenAbove", ddvTFloat, ranges({{5.0, Open}}), 1e30, true},
        LegalCase{"FloatOpenBoth", ddvTFloat, ranges({{Open, Open}}), 1e30, true},
        LegalCase{"FloatSecondRange", ddvTFloat, ranges({{0.0, 1.0}, {5.0, 6.0}}), 5.5, true},
        LegalCase{"FloatBetweenRanges", ddvTFloat, ranges({{0.0, 1.0}, {5.0, 6.0}}), 3.0, false},
        // Compared in single precision: 0.1 as a Single equals the bound 0.1.
        LegalCase{"FloatSinglePrecision", ddvTFloat, ranges({{0.0, 0.1}}), 0.1f, true},
        LegalCase{"DoubleSinglePrecisionValue", ddvTDouble, ranges({{0.0, 0.1}}), 0.1f, false},
        LegalCase{"DoubleAboveMax", ddvTDouble, ranges({{0.0, 100.0}}), 100.000001, false},
        LegalCase{"IntBeyond32Bits", ddvTInt, {}, 3000000000.0, false},
        LegalCase{"IntSize2NoNarrowBound", ddvTInt, sized(2), std::int32_t{70000}, true},
        LegalCase{"IntFractionInRange", ddvTInt, ranges({{10.0, 20.0}}), 12.5, true},
        LegalCase{"IntBelowRange", ddvTInt, ranges({{10.0, 20.0}}), std::int32_t{5}, false},
        LegalCase{"UnsignedNegative", ddvTUnsigned, {}, std::int32_t{-5}, true},
        LegalCase{"UnsignedBelowRange", ddvTUnsigned, ranges({{0.0, 10.0}}), std::int32_t{-5}, false},
        // With MaxRangeNo 1 the ranges count from 1, but index 0 is still
        // visited, and a rebuilt index 0 is open on both sides.
        LegalCase{"IndexZeroOfOneBasedRanges", ddvTInt,
                  [](CType& t) {
                      t.SetMaxRangeNo(1);
                      t.SetMinValues(1, 0.0);
                      t.SetMaxValues(1, 10.0);
                  },
                  std::int32_t{50}, true},
        LegalCase{"EnumeratorLast", ddvTEnumerator, enumerators({0, 1}, 1), std::int32_t{1}, true},
        LegalCase{"EnumeratorAsDouble", ddvTEnumerator, enumerators({0, 1}, 1), 1.0, true},
        LegalCase{"EnumeratorAbove", ddvTEnumerator, enumerators({0, 1}, 1), std::int32_t{2}, false},
        LegalCase{"EnumeratorNegative", ddvTEnumerator, enumerators({0, 1}, 1), std::int32_t{-1}, false},
        LegalCase{"EnumeratorText", ddvTEnumerator, enumerators({0, 1}, 1), u"1", false},
        LegalCase{"EnumeratorIndexWithoutElement", ddvTEnumerator,
                  enumerators({}, 3), std::int32_t{2}, false},
        LegalCase{"BitEnumeratorBeyond32Bits", ddvTBitEnumerator, {}, 3000000000.0, false},
        LegalCase{"BitEnumeratorSize4TakesAnything", ddvTBitEnumerator, sized(4), u"abc", true},
        LegalCase{"IndexInDomain", ddvTIndex, domain({std::int32_t{1}, std::int32_t{2}}), std::int32_t{2}, true},
        LegalCase{"IndexNotInDomain", ddvTIndex, domain({std::int32_t{1}, std::int32_t{2}}), std::int32_t{3}, false},
        LegalCase{"AsciiFits", ddvTASCII, sized(3), u"abc", true},
        LegalCase{"AsciiTooLong", ddvTASCII, sized(3), u"abcd", false},
        LegalCase{"PackedAsciiNumberFits", ddvTPackedASCII, sized(4), std::int32_t{1234}, true},
        LegalCase{"PasswordTooLong", ddvTPassword, sized(2), u"abc", false},
        LegalCase{"BitStringExact", ddvTBitString, sized(4), u"0101", true},
        LegalCase{"DateLeapDay", ddvTDate, {}, packedDate(29, 2, 100), true},
        LegalCase{"DateNoLeapDay", ddvTDate, {}, packedDate(29, 2, 101), false},
        LegalCase{"TimeAnything", ddvTTime, {}, u"never", true},
        LegalCase{"DateAndTimeAnything", ddvTDateAndTime, {}, Null{}, true},
        LegalCase{"DurationAnything", ddvTDuration, {}, -1.0, true},
        LegalCase{"TimeValueAnything", ddvTTimeValue, {}, u"x", true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(VariableLegality, AGivenKindOverridesTheTypeAndOutOfRangeKindsFail) {
    auto v = make<CVariable>();  // kind -1
    EXPECT_TRUE(v->IsLegalValue(u"x", ddvTTime));
    EXPECT_TRUE(v->IsLegalValue(packedDate(1, 1, 0), ddvTDate));
    EXPECT_FALSE(v->IsLegalValue(std::int32_t{1}, static_cast<enumDDVariableType>(16)));
    EXPECT_FALSE(v->IsLegalValue(std::int32_t{1}, static_cast<enumDDVariableType>(-2)));
    Variant value = std::int32_t{1};
    enumDDVariableType given = ddvTDuration;
    EXPECT_TRUE(v->IsLegalValue(value, given));
    EXPECT_EQ(given, ddvTDuration);
}

struct LegalErrorCase {
    const char* name;
    enumDDVariableType kind;
    TypeSetup setup;
    Variant value;
    ErrorRecord error;
    friend void PrintTo(const LegalErrorCase& c, std::ostream* os) { *os << c.name; }
};
class VariableIsLegalRaises : public ::testing::TestWithParam<LegalErrorCase> {};
TEST_P(VariableIsLegalRaises, ConversionErrorsReachTheCaller) {
    const LegalErrorCase& c = GetParam();
    auto v = variableOf(c.kind, c.setup);
    EXPECT_EQ(raised([&] { v->IsLegalValue(c.value); }), c.error);
}
INSTANTIATE_TEST_SUITE_P(
    Kinds, VariableIsLegalRaises,
    ::testing::Values(LegalErrorCase{"UnsignedText", ddvTUnsigned, {}, u"abc", TypeMismatch},
                      LegalErrorCase{"IntSize4Text", ddvTInt, sized(4), u"abc", TypeMismatch},
                      LegalErrorCase{"IntSize4Huge", ddvTInt, sized(4), 1e30, Overflow},
                      LegalErrorCase{"FloatTextBound", ddvTFloat, ranges({{u"low", 1.0}}), 0.5, TypeMismatch},
                      LegalErrorCase{"EnumeratorText", ddvTEnumerator, enumerators({0, 1}, 1), u"abc", TypeMismatch},
                      LegalErrorCase{"EnumeratorBeyond32Bits", ddvTEnumerator, enumerators({0, 1}, 1), 3e9, Overflow},
                      LegalErrorCase{"BitStringNull", ddvTBitString, sized(4), Null{}, NullUse}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tylhart::test
