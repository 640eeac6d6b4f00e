#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

// The plain fields' defaults show in the rendering of a new variable below.
TEST(Variable, NewVariableHasItsDefaults) {
    auto v = make<CVariable>();
    const std::pair<const char16_t*, Variant> fields[] = {
        {u"Initialized", false}, {u"InitialValue", true}, {u"DynAvailability", std::int32_t{-1}},
        {u"Availability", std::int32_t{-1}}, {u"Value", std::int16_t{0}}};  // the legal value of no kind
    for (const auto& [name, expected] : fields) EXPECT_EQ(get(v, name), expected) << toUtf8(name);
}

TEST(Variable, DefinitionOfOtherKindsIsRefusedWithTheMenuSourceAndOwnIsStoredWithoutCopy) {
    auto v = make<CVariable>();
    for (const auto& wrong : {makeDefinition(u"x", ddoKMenuDef), make<CDefinition>()})
        expectRefused(v, [&] { v->SetDefinition(wrong); }, libraryError("Menu.Definition", errors::WrongKind));
    auto d = makeDefinition(u"pressure", ddoKVariableDef);
    let(v, u"Definition", Variant(d));
    EXPECT_EQ(v->Definition().get(), d.get());
    expectRefused(v, [&] { v->SetDefinition(nullptr); }, NotSet);
}

// A let stores a copy and stamps the time; Null clears.
TEST(Variable, ValueLetStoresAndStampsAnUnsetValueFallsBackToTheDefaultThenTheLegalValue) {
    ManualClock clock;
    auto v = variableOf(ddvTInt);
    let(v, u"Value", Variant(std::int32_t{7}));
    EXPECT_EQ(v->GetValuePlain(), Variant(std::int32_t{7}));
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
    EXPECT_FALSE(v->ToBeWritten || v->GetAvailablePlain());  // nothing else is touched
    clock.advanceSeconds(5);
    v->SetValue(Null{});
    EXPECT_TRUE(v->GetValuePlain().isEmpty() && v->LastSetTime == Date{Noon2000 + 5 * Second});

    clock.advanceSeconds(1);
    v->DefaultValue = u"2";  // read through, normalised and stamped
    EXPECT_EQ(get(v, u"Value"), Variant(std::int32_t{2}));
    EXPECT_TRUE(v->DefaultValue == Variant(std::int32_t{2}) && v->LastSetTime == Date{clock.days});
    EXPECT_TRUE(v->GetValuePlain().isEmpty());  // later reads still go through the default
    v->DefaultValue = Variant();
    clock.advanceSeconds(1);
    EXPECT_EQ(v->Value(), Variant(std::int32_t{0}));  // the legal value, nothing stored
    EXPECT_TRUE(v->GetValuePlain().isEmpty() && v->LastSetTime == Date{clock.days});
}

// How a text reads as a number is the Variant tests' affair; here which
// kinds read it how, and what stays when the reading fails.
TEST(Variable, ValueGetNormalisesTextsByKindAndRewritesTheStoredValue) {
    using I = std::int32_t;
    const std::tuple<enumDDVariableType, Variant, Variant> cases[] = {  // kind, stored, read and stored after
        {ddvTFloat, u"1,5", 1.5}, {ddvTDouble, u" 1 2,5e1 kg", 125.0}, {ddvTFloat, u"abc", 0.0},
        {ddvTDouble, u"1,5e400", u"1,5e400"},  // too large for a double: the comma text as it came in stays
        {ddvTInt, u"12.5", I{12}}, {ddvTUnsigned, u"12.7", I{13}}, {ddvTEnumerator, u"&H10", I{16}},
        {ddvTBitEnumerator, u"7", I{7}}, {ddvTIndex, u"1,000", I{1000}}, {ddvTDate, u"65892", I{65892}},
        {ddvTTime, u"1", I{1}}, {ddvTDateAndTime, u"2", I{2}}, {ddvTDuration, u"-3", I{-3}}, {ddvTTimeValue, u"4", I{4}},
        {ddvTInt, u"3000000000", u"3000000000"},
        {ddvTASCII, u"1,5", u"1,5"}, {ddvTBitString, u"0101", u"0101"}, {ddvTUndefined, u"12", u"12"},
        {ddvTFloat, std::int16_t{5}, std::int16_t{5}}, {ddvTInt, 2.5, 2.5}};  // only texts are normalised
    ManualClock clock;
    for (const auto& [kind, stored, read] : cases) {
        auto v = variableOf(kind);
        v->SetValue(stored);
        clock.advanceSeconds(3);
        EXPECT_EQ(v->Value(), read) << kind << " " << text(stored);
        EXPECT_EQ(v->GetValuePlain(), read);
        EXPECT_EQ(v->LastSetTime, Date{clock.days - 3 * Second});  // a stored value is read without a stamp
    }
}

TEST(Variable, InitialValueComparesAsTheRuntimeDoes) {
    const std::tuple<Variant, Variant, bool, ErrorRecord> pairs[] = {{Variant(), std::int16_t{0}, true, NoError},
        {std::int32_t{5}, 5.0, true, NoError}, {u"5", std::int32_t{5}, false, NoError}, {Variant(), Null{}, false, NullUse}};
    for (const auto& [value, defaultValue, expected, error] : pairs) {
        auto v = made<CVariable>([&](CVariable& v) { v.SetValue(value), v.DefaultValue = defaultValue; });
        bool answer = false;
        const std::string row = testing::PrintToString(std::tie(value, defaultValue));  // Null has no text
        EXPECT_EQ(raised([&] { answer = v->InitialValue(); }), error) << row;
        EXPECT_EQ(answer, expected) << row;
    }
}

TEST(Variable, AvailableIsClearedWhenAskedSoonerThanThePeriod) {
    // availability, dynAvailability, dynamic class, set at, asked at (seconds from the start), expected
    const std::tuple<const char*, std::int32_t, std::int32_t, bool, double, double, bool> cases[] = {
        {"JustBeforePeriod", 10, -1, false, 0, 9.9, false}, {"AtPeriod", 10, -1, false, 0, 10, true},
        {"NoPeriod", -1, -1, false, 0, 0, true}, {"ZeroPeriod", 0, -1, false, 0, 0, true},
        // A stamp ahead of the clock (a local clock set back) counts negative: even 0 clears.
        {"ZeroPeriodStampAhead", 0, -1, false, 5, 0, false},
        // Second boundaries count, not elapsed time: 0.9 s -> 1.1 s crosses one.
        {"BoundaryCrossed", 1, -1, false, 0.9, 1.1, true}, {"WithinOneSecond", 1, -1, false, 0.1, 0.9, false},
        {"DynamicUsesDynPeriod", 10, 10, true, 0, 5, false}, {"DynamicIgnoresPlainPeriod", 10, -1, true, 0, 5, true}};
    for (const auto& [name, availability, dynAvailability, dynamicClass, setAt, askedAt, expected] : cases) {
        ManualClock clock;
        auto v = make<CVariable>();
        v->SetAvailability(availability), v->SetDynAvailability(dynAvailability);
        v->Class->SetClassInfo(ddvCDynamic, dynamicClass);
        clock.advanceSeconds(setAt);
        let(v, u"Available", Variant(true));
        EXPECT_EQ(v->LastSetTime, Date{clock.days}) << name;
        clock.advanceSeconds(askedAt - setAt);
        EXPECT_EQ(v->Available(), expected) << name;
        EXPECT_EQ(v->GetAvailablePlain(), expected) << name;
    }
    // Unavailable stays so, and false does not stamp.
    ManualClock clock;
    auto v = make<CVariable>();
    v->SetAvailability(10), v->SetAvailable(true);
    EXPECT_FALSE(v->Available());
    clock.advanceSeconds(30);
    EXPECT_FALSE(v->Available());  // the flag was cleared, not just hidden
    v->SetAvailable(false);
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
}

TEST(Variable, HandlingGoesToTheSharedFlagArray) {
    auto v = make<CVariable>();
    let(v, u"Handling", std::int32_t{ddvhTWrite}, false);
    EXPECT_EQ(get(v->GetHandlingObj(), u"FlagText"), Variant(u"01"));
    let(v->GetHandlingObj(), u"FlagText", Variant(u"10"));  // the array is the variable's own
    EXPECT_FALSE(v->Handling(ddvhTRead));
    EXPECT_EQ(raised([&] { v->Handling(static_cast<enumDDVariableHandlingType>(2)); }), Subscript);
}

Ref<CVariable> filledVariable() {
    auto v = variableOf(ddvTFloat);
    v->Definition()->SetName(u"pressure"), v->SetValue(u"1,5"), v->DefaultValue = 2.0;
    v->ConstantUnit = u"bar";
    v->VariableUnit = u"kPa";
    v->UnitVariable = makeDefinition(u"pressure_unit", ddoKVariableDef);
    v->Help = u"help", v->Label = u"Pressure", v->ErrorText = u"timeout", v->ErrorCode = 16;
    v->ReadTimeout = 100, v->WriteTimeout = 200, v->Validity = false, v->ToBeWritten = true, v->IsChecked = false;
    v->InRecursion = true, v->InReadRecursion = true, v->Class->SetClassInfo(ddvCDynamic, true);
    v->PostReadActions->Add(makeDefinition(u"after_read", ddoKMethodDef));
    v->Relations()->Add(makeDefinition(u"relation", ddoKVariableDef));
    v->SetHandling(ddvhTWrite, false), v->SetAvailability(3), v->SetDynAvailability(100), v->SetAvailable(true);
    return v;
}

TEST(Variable, GetCopySharesOnlyTheUnitVariable) {
    ManualClock clock;
    auto source = filledVariable();
    auto copy = refCast<CVariable>(call(source, u"GetCopy").toObject());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->UnitVariable.get(), source->UnitVariable.get());
    auto children = [](CVariable& v) {  // each child its own
        return std::vector<Object*>{v.Definition().get(), v.Class.get(), v.TypeInfo.get(), v.PreEditActions.get(),
            v.PostReadActions.get(), v.PostWriteActions.get(), v.Relations().get(), v.GetHandlingObj().get()};
    };
    const auto mine = children(*copy), theirs = children(*source);
    for (std::size_t i = 0; i < mine.size(); ++i) EXPECT_NE(mine[i], theirs[i]) << i;
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_EQ(copy->ToString(3), source->ToString(3));
    // Copied as stored: no normalisation, and the flag without the period test.
    EXPECT_TRUE(copy->GetValuePlain() == Variant(u"1,5") && copy->GetAvailablePlain());
}

TEST(Variable, SetFromObjectStopsAtAFailureAndKeepsWhatItCopied) {
    auto source = filledVariable();
    source->Class = nullptr;
    auto target = make<CVariable>();
    EXPECT_EQ(raised([&] { target->SetFromObject(source); }), NotSet);
    // Copied before the failure: the value; after it, untouched: the unit and the class.
    EXPECT_TRUE(target->GetValuePlain() == Variant(u"1,5") && target->ConstantUnit == u"" && target->Class);
    EXPECT_EQ(raised([&] { target->SetFromObject(nullptr); }), NotSet);
}

TEST(Variable, CompareOneChangedFieldDecidesAndTheFirstDifferenceStops) {
    ManualClock clock;
    using V = CVariable&;
    expectOwnCopies<CVariable>(filledVariable(), {[](V v) { v.Definition()->SetName(u"Pressure"); },
        [](V v) { v.SetValue(1.5); }, [](V v) { v.ErrorCode = 0; }, [](V v) { v.Class->SetClassInfo(ddvCInput, true); },
        [](V v) { v.VariableUnit = u"kpa"; }, [](V v) { v.UnitVariable = nullptr; },
        [](V v) { v.UnitVariable = makeDefinition(u"u", ddoKVariableDef); }, [](V v) { v.Label = u"pressure"; },
        [](V v) { v.WriteTimeout = -1; }, [](V v) { v.PostWriteActions->Add(makeDefinition(u"m", ddoKMethodDef)); },
        [](V v) { v.TypeInfo = make<CType>(); }, [](V v) { v.SetAvailable(false); },
        [](V v) { v.SetDynAvailability(4); }, [](V v) { v.IsChecked = true; },
        [](V v) { v.LastSetTime = Date{Noon2000 + Second}; }, [](V v) { v.InReadRecursion = false; },
        [](V v) { v.DefaultValue = u"2"; }, [](V v) { v.SetHandling(ddvhTWrite, true); }});
    auto source = filledVariable(), copy = source->GetCopy();
    copy->SetRelations(make<CVariableDefinitionSet>());
    expectCompare(copy, source, true);  // blind spot: relations
    auto a = make<CVariable>(), b = make<CVariable>();
    b->DefaultValue = Null{}, b->Definition()->SetName(u"other");
    EXPECT_FALSE(a->Compare(b));  // the definitions differ first, so the Null default is never compared
    b->Definition()->SetName(u"unknown");
    EXPECT_EQ(raised([&] { a->Compare(b); }), NullUse);
    EXPECT_EQ(raised([&] { a->Compare(nullptr); }), NotSet);
}

TEST(Variable, RenderingAtEveryLevel) {
    ManualClock clock;
    const auto filled = [] {
        auto v = variableOf(ddvTFloat);
        v->Definition()->SetName(u"pressure"), v->SetValue(1.5);  // stamps 1/1/2000 noon
        v->DefaultValue = u"2", v->Help = u"h", v->Label = u"L", v->ConstantUnit = u"bar", v->VariableUnit = u"kPa";
        v->UnitVariable = makeDefinition(u"unit_rel", ddoKUnitDef), v->ErrorText = u"e", v->ErrorCode = -7;
        v->Relations()->Add(makeDefinition(u"r1", ddoKVariableDef));
        v->PreEditActions->Add(makeDefinition(u"m1", ddoKMethodDef));
        return v->SetHandling(ddvhTRead, false), v;
    };
    const auto bare = [] {
        return made<CVariable>([](CVariable& v) { v.TypeInfo = nullptr, v.PreEditActions = nullptr, v.SetRelations(nullptr); });
    };
    expectRenderings({
        // The type's text ends in two braces of its own.
        {"filled", filled, {-1, 1, 2, 3}},
        // Absent children leave out their labels; the zero date shows as midnight.
        {"without type, pre-edit actions and relations", bare, 3},
    });
}

}  // namespace
}  // namespace tylhart::test
