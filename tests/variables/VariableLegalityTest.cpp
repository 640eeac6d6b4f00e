#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

// Called by name; the unsized tests get no size argument (-1 in the table).

TEST(VariableLegality, ElementaryTestsAnswer) {
    const std::tuple<const char16_t*, Variant, std::int32_t, bool> cases[] = {
        // Weak on purpose: no check at all.
        {u"IsUnsigned", std::int32_t{-5}, -1, true}, {u"IsTime", u"not a time", -1, true},
        // 32 bits whatever the size below 4; from 4 on the value is not looked at.
        {u"IsInteger", 3000000000.0, -1, false}, {u"IsInteger", 3000000000.0, 4, true},
        {u"IsInteger", u"abc", -1, false}, {u"IsInteger", std::int32_t{70000}, 2, true},
        {u"IsInteger", Missing{}, -1, false},  // no fetching here: the marker is no number
        {u"IsFloat", 3.5e38, -1, false}, {u"IsDouble", 3.5e38, -1, true}, {u"IsDouble", u"abc", -1, false},
        {u"IsString", u"abc", 3, true}, {u"IsString", u"abcd", 3, false}, {u"IsString", Null{}, 10, false},
        // Exactly TestSize characters, each 0 or 1.
        {u"IsBitString", u"0101", 4, true}, {u"IsBitString", u"010", 4, false},
        {u"IsBitString", u"01010", 4, false}, {u"IsBitString", u"0121", 4, false}};
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
    using I = std::int32_t;
    const std::tuple<const char*, Ref<CVariable>, const char16_t*, Args, Variant, Args> cases[] = {
        {"SizeFromType", variableOf(ddvTASCII, sized(8)), u"IsString", {u"abcdefgh", I{-1}}, true, {u"abcdefgh", I{8}}},
        {"BitSize", variableOf(ddvTBitString, sized(3)), u"IsBitString", {u"101", I{-5}}, true, {u"101", I{3}}},
        {"GivenSizeKept", variableOf(ddvTASCII, sized(8)), u"IsString", {u"abc", I{2}}, false, {u"abc", I{2}}},
        // The legal value of the float kind is a Single.
        {"FetchedValueAndKind", variableOf(ddvTFloat), u"IsLegalValue", {Missing{}, I{-1}}, true, {0.0f, I{ddvTFloat}}},
        {"FetchedByIsFloat", variableOf(ddvTDouble), u"IsFloat", {Missing{}}, true, {0.0}},
        {"RaisesAfterTheSize", variableOf(ddvTBitString, sized(4)), u"IsBitString", {Null{}, I{-1}}, Variant(),
         {Null{}, I{4}}}};
    for (auto [name, v, member, args, expected, after] : cases) {
        Variant result;
        const ErrorRecord error = raised([&] { result = invoke(Ref<Object>(v), member, Access::Method, args); });
        EXPECT_EQ(error, expected.isEmpty() ? NullUse : NoError) << name;
        EXPECT_EQ(result, expected) << name;
        // Type and text of each argument, so a Single is no Double and Null matches Null.
        EXPECT_EQ(testing::PrintToString(args), testing::PrintToString(after)) << name;
    }
}

TEST(VariableLegality, IsBitStringTrapsNothingWhereIsStringAnswersFalse) {
    auto v = make<CVariable>();
    const Variant beyondCalendar = Date{1e7};  // has no text form
    EXPECT_FALSE(v->IsString(beyondCalendar, 100));
    EXPECT_EQ(raised([&] { v->IsBitString(beyondCalendar, 4); }), InvalidCall);
    EXPECT_EQ(raised([&] { v->IsBitString(u"0101", 40000); }), Overflow);
}

TEST(VariableLegality, IsDateTakesPackedDayMonthYear) {
    const std::tuple<const char*, Variant, bool> cases[] = {
        {"Feb29_2000", packedDate(29, 2, 100), true},   {"Feb29_1900", packedDate(29, 2, 0), false},
        {"Feb29_2004", packedDate(29, 2, 104), true},   {"Feb29_2155", packedDate(29, 2, 255), false},
        {"Dec31_2155", packedDate(31, 12, 255), true},  {"Jan1_1900", packedDate(1, 1, 0), true},
        {"Apr31", packedDate(31, 4, 50), false},        {"Apr30", packedDate(30, 4, 50), true},
        {"Day0", packedDate(0, 1, 50), false},          {"Month0", packedDate(1, 0, 50), false},
        {"Month13", packedDate(1, 13, 0), false},       {"Day256", std::int32_t{1 << 24}, false},
        {"Negative", -packedDate(1, 1, 1), false},      {"NotANumber", u"abc", false}};
    auto v = make<CVariable>();
    for (const auto& [name, value, expected] : cases) EXPECT_EQ(v->IsDate(value), expected) << name;
}

// Missing values are fetched through Value and written back.
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

TEST(VariableLegality, IsLegalValueAgainstTheVariablesType) {
    using I = std::int32_t;
    const KindRow<bool> rows[] = {
        {ddvTUndefined, {}, {{I{5}, false}}},
        {ddvTFloat, ranges({{0.0, 100.0}}), {{I{100}, true}, {100.5, false}, {u"abc", false}}},
        {ddvTFloat, ranges({{Open, 10.0}}), {{-1e30, true}, {10.5, false}}},
        {ddvTFloat, ranges({{5.0, Open}}), {{1e30, true}, {4.5, false}}},
        {ddvTFloat, ranges({{Open, Open}}), {{1e30, true}}},
        {ddvTFloat, ranges({{0.0, 1.0}, {5.0, 6.0}}), {{5.5, true}, {3.0, false}}},
        // Compared in single precision: 0.1 as a Single equals the bound 0.1 only there.
        {ddvTFloat, ranges({{0.0, 0.1}}), {{0.1f, true}}},
        {ddvTDouble, ranges({{0.0, 0.1}}), {{0.1f, false}, {0.1, true}}},
        {ddvTInt, {}, {{3000000000.0, false}}},
        {ddvTInt, ranges({{10.0, 20.0}}), {{12.5, true}, {I{5}, false}}},
        {ddvTInt, ranges({{Open, Open}, {0.0, 10.0}}), {{I{50}, true}}},  // index 0 is visited too
        {ddvTUnsigned, {}, {{I{-5}, true}}},
        {ddvTUnsigned, ranges({{0.0, 10.0}}), {{I{-5}, false}}},
        {ddvTEnumerator, enumerators({0, 1}, 1),
         {{I{1}, true}, {1.0, true}, {I{2}, false}, {I{-1}, false}, {u"1", false}}},
        {ddvTEnumerator, enumerators({}, 3), {{I{2}, false}}},  // an index without its element
        {ddvTBitEnumerator, {}, {{3000000000.0, false}}}, {ddvTBitEnumerator, sized(4), {{u"abc", true}}},
        {ddvTIndex, domain({I{1}, I{2}}), {{I{2}, true}, {I{3}, false}}},
        {ddvTASCII, sized(3), {{u"abcd", false}}}, {ddvTPackedASCII, sized(4), {{I{1234}, true}}},
        {ddvTPassword, sized(2), {{u"abc", false}}}, {ddvTBitString, sized(4), {{u"0101", true}}},
        {ddvTDate, {}, {{packedDate(29, 2, 101), false}}},
        // The time kinds take anything.
        {ddvTTime, {}, {{u"never", true}}}, {ddvTDateAndTime, {}, {{Null{}, true}}},
        {ddvTDuration, {}, {{-1.0, true}}}, {ddvTTimeValue, {}, {{u"x", true}}}};
    for (const auto& [kind, setup, answers] : rows)
        for (const auto& [value, expected] : answers)
            EXPECT_EQ(variableOf(kind, setup)->IsLegalValue(value), expected) << "kind " << kind << ": " << text(value);
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
    const std::tuple<enumDDVariableType, TypeSetup, Variant, ErrorRecord> cases[] = {
        {ddvTUnsigned, {}, u"abc", TypeMismatch}, {ddvTInt, sized(4), u"abc", TypeMismatch},
        {ddvTInt, sized(4), 1e30, Overflow}, {ddvTFloat, ranges({{u"low", 1.0}}), 0.5, TypeMismatch},
        // The upper bound is converted even when the value already fails the lower one.
        {ddvTInt, ranges({{10.0, u"abc"}}), 5, TypeMismatch}, {ddvTFloat, ranges({{10.0, 1e39}}), 5.0, Overflow},
        {ddvTEnumerator, enumerators({0, 1}, 1), u"abc", TypeMismatch},
        {ddvTEnumerator, enumerators({0, 1}, 1), 3e9, Overflow},
        {ddvTBitString, sized(4), Null{}, NullUse}};
    for (const auto& [kind, setup, value, error] : cases) {
        auto v = variableOf(kind, setup);
        EXPECT_EQ(raised([&] { v->IsLegalValue(value); }), error) << "kind " << kind << ": " << text(value);
    }
}

TypeSetup range(Variant min, Variant max) { return ranges({{std::move(min), std::move(max)}}); }

// The proposal's numeric form is part of the answer.
TEST(VariableLegalValue, ProposesAValueOfTheKindsNumericFormAndStoresNothing) {
    using I = std::int32_t;
    const Variant none;
    const auto tenTo20 = range(10.0, 20.0);
    const KindRow<Variant> rows[] = {  // stored (Empty: none), proposed
        {ddvTFloat, tenTo20, {{none, 10.0f}, {I{15}, I{15}}, {u"30", 10.0f}}},
        {ddvTFloat, range(Open, 20.0), {{none, 0.0f}}}, {ddvTFloat, range(Open, -5.0), {{none, 0.0f}}},
        {ddvTDouble, tenTo20, {{none, 10.0}}},
        {ddvTDouble, {}, {{I{0}, 0.0}}},  // a stored 0 counts as no value: the candidate takes the kind's form
        {ddvTInt, tenTo20, {{I{5}, I{10}}, {12.5, 12.5}}}, {ddvTInt, range(10.5, 20.0), {{none, I{10}}}},
        {ddvTUnsigned, range(Open, -1.0), {{none, I{0}}}},
        {ddvTEnumerator, enumerators({7, 3}, 1), {{none, I{7}}, {I{9}, I{7}}}},
        {ddvTEnumerator, {}, {{none, std::int16_t{0}}, {5.0, 5.0}}},  // a failing fallback leaves the candidate
        {ddvTBitEnumerator, {}, {{u"abc", u"abc"}, {none, I{0}}}},
        {ddvTIndex, domain({std::int16_t{4}, std::int16_t{5}}), {{none, std::int16_t{4}}, {I{5}, I{5}}}},
        {ddvTIndex, {}, {{none, I{0}}}},
        {ddvTASCII, sized(3), {{u"abcdef", u"abc"}}}, {ddvTPackedASCII, sized(3), {{I{12345}, u"123"}}},
        {ddvTPassword, sized(3), {{none, u""}, {u"ab", u"ab"}}},
        {ddvTBitString, sized(4), {{none, u"0000"}, {u"0121", u"0000"}, {u"0110", u"0110"}}},
        {ddvTDate, {}, {{none, I{65892}}, {packedDate(29, 2, 101), I{65892}}}},
        {ddvTTime, {}, {{none, I{65892}}}}, {ddvTDuration, {}, {{none, I{65892}}}},
        {ddvTDateAndTime, {}, {{u"x", u"x"}}}, {ddvTTimeValue, {}, {{none, std::int16_t{0}}, {u"x", u"x"}}},
        {ddvTUndefined, {}, {{2.5, std::int16_t{0}}}},
        {ddvTUnsigned, {}, {{u"abc", u"abc"}}}};  // the unsigned test raises for text: the candidate is the answer
    for (const auto& [kind, setup, proposals] : rows)
        for (const auto& [stored, expected] : proposals) {
            auto v = variableOf(kind, setup);
            if (!stored.isEmpty()) v->SetValue(stored);
            v->DefaultValue = I{12345};  // never consulted
            const Date stamp = v->LastSetTime;
            EXPECT_EQ(call(v, u"GetLegalValue"), expected) << "kind " << kind << ": " << text(stored);
            EXPECT_EQ(v->GetValuePlain(), stored) << "kind " << kind << ": " << text(stored);
            EXPECT_EQ(v->LastSetTime, stamp);
        }
    // Without a type nothing can be proposed, whatever is stored.
    EXPECT_EQ(made<CVariable>([](CVariable& v) { v.SetValue(u"abc"), v.TypeInfo = nullptr; })->GetLegalValue(),
              Variant(std::int16_t{0}));
}

// The conversions themselves belong to the unit converter; here only what
// RecalcToUnit does with their result.
TEST(VariableRecalcToUnit, AValueAtItsDefaultMovesTheDefaultTooAndWhatTheReadChangedStays) {
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

    // What reading the value changed stays when the conversion fails.
    v = variableOf(ddvTFloat);
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

}  // namespace
}  // namespace tylhart::test
