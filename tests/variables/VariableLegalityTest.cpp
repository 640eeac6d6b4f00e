#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord TypeMismatch = platformError(errors::Runtime::TypeMismatch);
const ErrorRecord Overflow = platformError(errors::Runtime::Overflow);
const ErrorRecord NullUse = platformError(errors::Runtime::InvalidUseOfNull);

// ---- The elementary tests, called by name (size -1 with the unsized ones) ----

TEST(VariableLegality, ElementaryTestsAnswer) {
    const std::tuple<const char16_t*, Variant, std::int32_t, bool> cases[] = {
        // Weak on purpose: no check at all.
        {u"IsUnsigned", std::int32_t{-5}, -1, true}, {u"IsUnsigned", u"abc", 1, true},
        {u"IsTime", u"not a time", -1, true}, {u"IsTime", Null{}, -1, true},
        // 32 bits whatever the size below 4; from 4 on the value is not looked at.
        {u"IsInteger", 3000000000.0, -1, false}, {u"IsInteger", 3000000000.0, 4, true},
        {u"IsInteger", u"abc", 8, true}, {u"IsInteger", u"abc", -1, false}, {u"IsInteger", std::int32_t{70000}, 2, true},
        {u"IsInteger", 2147483647.4, -1, true}, {u"IsInteger", 2147483647.5, -1, false},
        {u"IsInteger", u"&HFF", 1, true}, {u"IsInteger", Null{}, -1, false},
        {u"IsInteger", Missing{}, -1, false},  // no fetching here: the marker is no number
        {u"IsFloat", 3.5e38, -1, false}, {u"IsDouble", 3.5e38, -1, true}, {u"IsFloat", u"1,000.5", -1, true},
        {u"IsDouble", u"abc", -1, false}, {u"IsFloat", true, -1, true}, {u"IsDouble", Null{}, -1, false},
        {u"IsString", u"abc", 3, true}, {u"IsString", u"abcd", 3, false}, {u"IsString", true, 4, true},
        {u"IsString", Null{}, 10, false},
        // Exactly TestSize characters, each 0 or 1.
        {u"IsBitString", u"0101", 4, true}, {u"IsBitString", u"010", 4, false}, {u"IsBitString", u"01010", 4, false},
        {u"IsBitString", u"0121", 4, false}, {u"IsBitString", u"", 0, true}, {u"IsBitString", std::int32_t{1010}, 4, true}};
    const Ref<Object> v = make<CVariable>();
    for (const auto& [test, value, size, expected] : cases) {
        const Text name(test);
        const bool unsized = name == u"IsFloat" || name == u"IsDouble" || name == u"IsTime";
        EXPECT_EQ(unsized ? call(v, test, value) : call(v, test, value, size), Variant(expected))
            << toUtf8(test) << "(" << text(value) << ", " << size << ")";
    }
}

// Through dispatch the arguments are the caller's variables: a negative
// size, a fetched value and a resolved kind come back in them, even when
// the test raises afterwards.
TEST(VariableLegality, DispatchWritesFetchedValuesSizesAndKindsBack) {
    using Args = std::vector<Variant>;
    const std::tuple<const char*, Ref<CVariable>, const char16_t*, Args, Variant, Args> cases[] = {
        {"SizeFromType", variableOf(ddvTASCII, sized(8)), u"IsString", {u"abcdefgh", std::int32_t{-1}}, true,
         {u"abcdefgh", std::int32_t{8}}},
        {"BitSize", variableOf(ddvTBitString, sized(3)), u"IsBitString", {u"101", std::int32_t{-5}}, true,
         {u"101", std::int32_t{3}}},
        {"GivenSizeKept", variableOf(ddvTASCII, sized(8)), u"IsString", {u"abc", std::int32_t{2}}, false,
         {u"abc", std::int32_t{2}}},
        {"FetchedValueAndKind", variableOf(ddvTFloat), u"IsLegalValue", {Missing{}, std::int32_t{-1}}, true,
         {0.0f, std::int32_t{ddvTFloat}}},  // the legal value of the float kind is a Single
        {"FetchedByIsFloat", variableOf(ddvTDouble), u"IsFloat", {Missing{}}, true, {0.0}},
        {"RaisesAfterTheSize", variableOf(ddvTBitString, sized(4)), u"IsBitString", {Null{}, std::int32_t{-1}},
         Variant(), {Null{}, std::int32_t{4}}}};
    for (auto [name, v, member, args, expected, after] : cases) {
        Variant result;
        const ErrorRecord error = raised([&] { result = invoke(Ref<Object>(v), member, Access::Method, args); });
        EXPECT_EQ(error, expected.isEmpty() ? NullUse : NoError) << name;
        EXPECT_EQ(result, expected) << name;
        ASSERT_EQ(args.size(), after.size());
        for (std::size_t i = 0; i < args.size(); ++i) {
            EXPECT_EQ(args[i].type(), after[i].type()) << name << " argument " << i;
            EXPECT_TRUE(args[i].isNull() ? after[i].isNull() : args[i] == after[i]) << name << " argument " << i;
        }
    }
}

TEST(VariableLegality, IsBitStringTrapsNothingWhereIsStringAnswersFalse) {
    auto v = make<CVariable>();
    const Variant beyondCalendar = Date{1e7};  // has no text form
    EXPECT_FALSE(v->IsString(beyondCalendar, 100));
    EXPECT_EQ(raised([&] { v->IsBitString(beyondCalendar, 4); }), platformError(errors::Runtime::InvalidCall));
    EXPECT_EQ(raised([&] { v->IsBitString(Null{}, 4); }), NullUse);
    EXPECT_EQ(raised([&] { v->IsBitString(u"0101", 40000); }), Overflow);
}

TEST(VariableLegality, IsDateTakesPackedDayMonthYear) {
    const std::tuple<const char*, Variant, bool> cases[] = {
        {"Feb29_2000", packedDate(29, 2, 100), true}, {"Feb29_1900", packedDate(29, 2, 0), false},
        {"Jan1_1900", packedDate(1, 1, 0), true}, {"Feb29_2004", packedDate(29, 2, 104), true},
        {"Feb29_2100", packedDate(29, 2, 200), false}, {"Feb29_2155", packedDate(29, 2, 255), false},
        {"Dec31_2155", packedDate(31, 12, 255), true}, {"Apr31", packedDate(31, 4, 50), false},
        {"Apr30", packedDate(30, 4, 50), true}, {"Sep31", packedDate(31, 9, 50), false}, {"Day0", packedDate(0, 1, 50), false},
        {"Month0", packedDate(1, 0, 50), false}, {"Month13", packedDate(1, 13, 0), false}, {"Day256", std::int32_t{1 << 24}, false},
        {"Negative", -packedDate(1, 1, 1), false}, {"Text", u"65892", true}, {"NotANumber", u"abc", false}, {"Null", Null{}, false}};
    auto v = make<CVariable>();
    for (const auto& [name, value, expected] : cases) EXPECT_EQ(v->IsDate(value), expected) << name;
}

// ---- Missing values are fetched through Value and written back ----

TEST(VariableLegality, MissingValuesComeFromValueWhereTheTestSaysSo) {
    ManualClock clock;
    auto v = variableOf(ddvTDouble);
    v->DefaultValue = u"2,5";
    Variant value = Missing{}, date = Missing{}, untouched = Missing{};
    EXPECT_TRUE(v->IsFloat(value));
    EXPECT_EQ(value, Variant(2.5));
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});  // stamped by the default path of Value

    auto fresh = variableOf(ddvTDate);
    EXPECT_TRUE(fresh->IsDate(date));
    EXPECT_EQ(date, Variant(std::int32_t{65892}));  // the legal value
    std::int32_t size = -1;
    EXPECT_FALSE(fresh->IsInteger(untouched, size));
    EXPECT_TRUE(untouched.isMissing());
}

// ---- IsLegalValue by kind ----

TEST(VariableLegality, IsLegalValueAgainstTheVariablesType) {
    const auto zeroTo100 = ranges({{0.0, 100.0}}), twoRanges = ranges({{0.0, 1.0}, {5.0, 6.0}});
    const auto tenTo20 = ranges({{10.0, 20.0}}), offOn = enumerators({0, 1}, 1);
    const auto oneAndTwo = domain({std::int32_t{1}, std::int32_t{2}});
    // With MaxRangeNo 1 the ranges count from 1, but index 0 is still
    // visited, and a rebuilt index 0 is open on both sides.
    const TypeSetup oneBased = [](CType& t) { t.SetMaxRangeNo(1), t.SetMinValues(1, 0.0), t.SetMaxValues(1, 10.0); };
    const std::tuple<const char*, enumDDVariableType, TypeSetup, Variant, bool> cases[] = {
        {"UndefinedKind", ddvTUndefined, {}, std::int32_t{5}, false}, {"FloatNotANumber", ddvTFloat, {}, u"abc", false},
        {"FloatAtMax", ddvTFloat, zeroTo100, std::int32_t{100}, true}, {"FloatAboveMax", ddvTFloat, zeroTo100, 100.5, false},
        {"FloatOpenBelow", ddvTFloat, ranges({{Open, 10.0}}), -1e30, true},
        {"FloatOpenAbove", ddvTFloat, ranges({{5.0, Open}}), 1e30, true},
        {"FloatOpenBoth", ddvTFloat, ranges({{Open, Open}}), 1e30, true},
        {"FloatSecondRange", ddvTFloat, twoRanges, 5.5, true}, {"FloatBetweenRanges", ddvTFloat, twoRanges, 3.0, false},
        // Compared in single precision: 0.1 as a Single equals the bound 0.1.
        {"FloatSingle", ddvTFloat, ranges({{0.0, 0.1}}), 0.1f, true},
        {"DoubleSingleValue", ddvTDouble, ranges({{0.0, 0.1}}), 0.1f, false},
        {"DoubleAboveMax", ddvTDouble, zeroTo100, 100.000001, false}, {"IntBeyond32Bits", ddvTInt, {}, 3000000000.0, false},
        {"IntSize2NoNarrowBound", ddvTInt, sized(2), std::int32_t{70000}, true},
        {"IntFractionInRange", ddvTInt, tenTo20, 12.5, true}, {"IntBelowRange", ddvTInt, tenTo20, std::int32_t{5}, false},
        {"UnsignedNegative", ddvTUnsigned, {}, std::int32_t{-5}, true},
        {"UnsignedBelowRange", ddvTUnsigned, ranges({{0.0, 10.0}}), std::int32_t{-5}, false},
        {"IndexZeroOfOneBasedRanges", ddvTInt, oneBased, std::int32_t{50}, true},
        {"EnumeratorLast", ddvTEnumerator, offOn, std::int32_t{1}, true}, {"EnumAsDouble", ddvTEnumerator, offOn, 1.0, true},
        {"EnumeratorAbove", ddvTEnumerator, offOn, std::int32_t{2}, false},
        {"EnumeratorNegative", ddvTEnumerator, offOn, std::int32_t{-1}, false},
        {"EnumeratorText", ddvTEnumerator, offOn, u"1", false},
        {"EnumIndexWithoutElement", ddvTEnumerator, enumerators({}, 3), std::int32_t{2}, false},
        {"BitEnumBeyond32Bits", ddvTBitEnumerator, {}, 3000000000.0, false},
        {"BitEnumSize4TakesAnything", ddvTBitEnumerator, sized(4), u"abc", true},
        {"IndexInDomain", ddvTIndex, oneAndTwo, std::int32_t{2}, true},
        {"IndexNotInDomain", ddvTIndex, oneAndTwo, std::int32_t{3}, false},
        {"AsciiFits", ddvTASCII, sized(3), u"abc", true}, {"AsciiTooLong", ddvTASCII, sized(3), u"abcd", false},
        {"PackedAsciiNumberFits", ddvTPackedASCII, sized(4), std::int32_t{1234}, true},
        {"PasswordTooLong", ddvTPassword, sized(2), u"abc", false},
        {"BitStringExact", ddvTBitString, sized(4), u"0101", true},
        {"DateLeapDay", ddvTDate, {}, packedDate(29, 2, 100), true},
        {"DateNoLeapDay", ddvTDate, {}, packedDate(29, 2, 101), false}, {"TimeAnything", ddvTTime, {}, u"never", true},
        {"DateAndTimeAnything", ddvTDateAndTime, {}, Null{}, true}, {"DurationAnything", ddvTDuration, {}, -1.0, true},
        {"TimeValueAnything", ddvTTimeValue, {}, u"x", true}};
    for (const auto& [name, kind, setup, value, expected] : cases)
        EXPECT_EQ(variableOf(kind, setup)->IsLegalValue(value), expected) << name;
}

TEST(VariableLegality, AGivenKindOverridesTheTypeAndOutOfRangeKindsFail) {
    auto v = make<CVariable>();  // kind -1
    EXPECT_TRUE(v->IsLegalValue(u"x", ddvTTime) && v->IsLegalValue(packedDate(1, 1, 0), ddvTDate));
    EXPECT_FALSE(v->IsLegalValue(std::int32_t{1}, static_cast<enumDDVariableType>(16)) ||
                 v->IsLegalValue(std::int32_t{1}, static_cast<enumDDVariableType>(-2)));
    Variant value = std::int32_t{1};
    enumDDVariableType given = ddvTDuration;
    EXPECT_TRUE(v->IsLegalValue(value, given));
    EXPECT_EQ(given, ddvTDuration);
}

TEST(VariableLegality, ConversionErrorsReachTheCaller) {
    const std::tuple<const char*, enumDDVariableType, TypeSetup, Variant, ErrorRecord> cases[] = {
        {"UnsignedText", ddvTUnsigned, {}, u"abc", TypeMismatch}, {"IntSize4Text", ddvTInt, sized(4), u"abc", TypeMismatch},
        {"IntSize4Huge", ddvTInt, sized(4), 1e30, Overflow},
        {"FloatTextBound", ddvTFloat, ranges({{u"low", 1.0}}), 0.5, TypeMismatch},
        // The upper bound is converted even when x already fails the lower one.
        {"IntTextUpperBelowMin", ddvTInt, ranges({{10.0, u"abc"}}), 5, TypeMismatch},
        {"FloatHugeUpperBelowMin", ddvTFloat, ranges({{10.0, 1e39}}), 5.0, Overflow},
        {"EnumeratorText", ddvTEnumerator, enumerators({0, 1}, 1), u"abc", TypeMismatch},
        {"EnumeratorBeyond32Bits", ddvTEnumerator, enumerators({0, 1}, 1), 3e9, Overflow},
        {"BitStringNull", ddvTBitString, sized(4), Null{}, NullUse}};
    for (const auto& [name, kind, setup, value, error] : cases) {
        auto v = variableOf(kind, setup);
        EXPECT_EQ(raised([&] { v->IsLegalValue(value); }), error) << name;
    }
}

}  // namespace
}  // namespace tylhart::test
