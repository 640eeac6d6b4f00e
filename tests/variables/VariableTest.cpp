#include "VariableSupport.hpp"
#include "tylhart/automation/Registry.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord WrongKindError = libraryError("Menu.Definition", errors::WrongKind);

// ---- Construction ----

TEST(Variable, NewVariableHasItsDefaults) {
    auto v = make<CVariable>();
    const std::pair<const char16_t*, Variant> fields[] = {
        {u"Available", false},        {u"Initialized", false},        {u"InitialValue", true},
        {u"ReadTimeout", std::int16_t{-1}}, {u"WriteTimeout", std::int16_t{-1}},
        {u"DynAvailability", std::int32_t{-1}}, {u"Availability", std::int32_t{-1}},
        {u"Validity", true},          {u"IsChecked", true},           {u"ToBeWritten", false},
        {u"InRecursion", false},      {u"InReadRecursion", false},    {u"LastSetTime", Date{0.0}},
        {u"Value", std::int16_t{0}},  // the legal value of no kind
    };
    for (const auto& [name, expected] : fields) EXPECT_EQ(get(v, name), expected) << toUtf8(name);
    EXPECT_EQ(text(v->Definition()->ToString(2)), "Definition{Name:unknown, Kind:0}");
    EXPECT_EQ(get(v->GetHandlingObj(), u"FlagText"), Variant(u"11"));  // readable and writable
}

TEST(Variable, InReadRecursionIsListedLastButNumberedAfterLastSetTime) {
    const ClassInfo& info = CVariable::staticClassInfo();
    EXPECT_EQ(toUtf8(info.members().back().name), "InReadRecursion");
    EXPECT_EQ(info.find(u"LastSetTime")->id, 0x40030016);
    EXPECT_EQ(info.find(u"InReadRecursion")->id, 0x40030017);
    EXPECT_EQ(info.find(u"Initialized")->id, 0x68030000 + 27);
    EXPECT_FALSE(info.find(u"Value")->has(Access::Set));  // a let, unlike DefaultValue
    EXPECT_TRUE(info.find(u"DefaultValue")->has(Access::Set));
}

TEST(Variable, CreatableByNameAndHeldByAHandle) {
    auto v = refCast<CVariable>(automation::CreateObject(u"TylHartTypes.CVariable"));
    ASSERT_TRUE(v);
    Ref<CObject> handle = v->MakeObject();
    EXPECT_EQ(handle->MakeVariable().get(), v.get());
    EXPECT_EQ(handle->ObjectDefinition().get(), v->Definition().get());
    EXPECT_EQ(text(handle->ToString(1)), "OBJECT{VARIABLE{Definition{Name:unknown}}}");
}

// ---- Definition ----

class VariableDefinitionKind : public ::testing::TestWithParam<enumDDObjectKind> {};

TEST_P(VariableDefinitionKind, OtherKindsAreRefusedWithTheMenuSource) {
    auto v = make<CVariable>();
    const Ref<CDefinition> before = v->Definition();
    EXPECT_EQ(raised([&] { v->SetDefinition(makeDefinition(u"x", GetParam())); }), WrongKindError);
    EXPECT_EQ(v->Definition().get(), before.get());
    EXPECT_EQ(raised([&] { v->SetDefinition(make<CDefinition>()); }), WrongKindError);  // uninitialised
}
INSTANTIATE_TEST_SUITE_P(AllOtherKinds, VariableDefinitionKind,
                         ::testing::Values(ddoKCommandDef, ddoKMenuDef, ddoKEditDisplayDef, ddoKMethodDef,
                                           ddoKRefreshDef, ddoKUnitDef, ddoKWriteAsOneDef, ddoKArrayDef,
                                           ddoKCollectionDef));

TEST(Variable, DefinitionIsStoredWithoutCopyAndNothingIsRefused) {
    auto v = make<CVariable>();
    auto d = makeDefinition(u"pressure", ddoKVariableDef);
    let(v, u"Definition", Variant(d));
    EXPECT_EQ(v->Definition().get(), d.get());
    EXPECT_EQ(raised([&] { v->SetDefinition(nullptr); }), platformError(errors::Runtime::ObjectNotSet));
    EXPECT_EQ(v->Definition().get(), d.get());
}

// ---- Value ----

TEST(Variable, ValueLetStoresACopyStampsTimeAndNullClears) {
    ManualClock clock;
    auto v = make<CVariable>();
    let(v, u"Value", Variant(std::int32_t{7}));
    EXPECT_EQ(v->GetValuePlain(), Variant(std::int32_t{7}));
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
    EXPECT_FALSE(v->ToBeWritten || v->GetAvailablePlain());  // nothing else is touched
    clock.advanceSeconds(5);
    v->SetValue(Null{});
    EXPECT_TRUE(v->GetValuePlain().isEmpty());
    EXPECT_EQ(v->LastSetTime, Date{Noon2000 + 5 * Second});
}

struct NormalizeCase {
    enumDDVariableType kind;
    Variant stored;
    Variant read;   // what Value get returns
    Variant after;  // what is stored afterwards
    friend void PrintTo(const NormalizeCase& c, std::ostream* os) {
        *os << "kind " << c.kind << ", stored ";
        PrintTo(c.stored, os);
    }
};

class VariableNormalize : public ::testing::TestWithParam<NormalizeCase> {};

TEST_P(VariableNormalize, ValueGetRewritesTheStoredValue) {
    const NormalizeCase& c = GetParam();
    ManualClock clock;
    auto v = variableOf(c.kind);
    v->SetValue(c.stored);
    clock.advanceSeconds(3);
    EXPECT_EQ(v->Value(), c.read);
    EXPECT_EQ(v->GetValuePlain(), c.after);
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});  // a stored value is read without a stamp
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, VariableNormalize,
    ::testing::Values(
        NormalizeCase{ddvTFloat, u"1,5", 1.5, 1.5},
        NormalizeCase{ddvTDouble, u" 1 2,5e1 kg", 125.0, 125.0},
        NormalizeCase{ddvTFloat, u"abc", 0.0, 0.0},
        NormalizeCase{ddvTDouble, u"-,5", -0.5, -0.5},
        // Too large for a double: the comma text as it came in stays.
        NormalizeCase{ddvTDouble, u"1,5e400", u"1,5e400", u"1,5e400"},
        NormalizeCase{ddvTInt, u"12.5", std::int32_t{12}, std::int32_t{12}},
        NormalizeCase{ddvTUnsigned, u"12.7", std::int32_t{13}, std::int32_t{13}},
        NormalizeCase{ddvTEnumerator, u"&H10", std::int32_t{16}, std::int32_t{16}},
        NormalizeCase{ddvTIndex, u"1,000", std::int32_t{1000}, std::int32_t{1000}},
        NormalizeCase{ddvTDate, u"65892", std::int32_t{65892}, std::int32_t{65892}},
        NormalizeCase{ddvTTimeValue, u"-3", std::int32_t{-3}, std::int32_t{-3}},
        NormalizeCase{ddvTInt, u"abc", u"abc", u"abc"},
        NormalizeCase{ddvTInt, u"3000000000", u"3000000000", u"3000000000"},
        NormalizeCase{ddvTASCII, u"1,5", u"1,5", u"1,5"},
        NormalizeCase{ddvTBitString, u"0101", u"0101", u"0101"},
        NormalizeCase{ddvTUndefined, u"12", u"12", u"12"},
        // Only texts are normalised.
        NormalizeCase{ddvTFloat, std::int16_t{5}, std::int16_t{5}, std::int16_t{5}},
        NormalizeCase{ddvTInt, 2.5, 2.5, 2.5}));

TEST(Variable, ValueFallsBackToTheDefaultThenTheLegalValueAndStamps) {
    ManualClock clock;
    auto v = variableOf(ddvTInt);
    v->DefaultValue = u"2";
    EXPECT_EQ(get(v, u"Value"), Variant(std::int32_t{2}));
    EXPECT_EQ(v->DefaultValue, Variant(std::int32_t{2}));  // rewritten in normalised form
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
    EXPECT_TRUE(v->GetValuePlain().isEmpty());  // later reads still go through the default
    v->DefaultValue = Variant();
    clock.advanceSeconds(1);
    EXPECT_EQ(v->Value(), Variant(std::int32_t{0}));  // the legal value, nothing stored
    EXPECT_TRUE(v->GetValuePlain().isEmpty());
    EXPECT_EQ(v->LastSetTime, Date{Noon2000 + Second});
}

TEST(Variable, InitialValueComparesAsTheRuntimeDoes) {
    const std::tuple<Variant, Variant, bool> pairs[] = {
        {Variant(), Variant(), true}, {Variant(), std::int16_t{0}, true}, {Variant(), u"", true},
        {std::int32_t{5}, 5.0, true}, {u"5", std::int32_t{5}, false},    {u"a", u"A", false}};
    for (const auto& [value, defaultValue, expected] : pairs) {
        auto v = make<CVariable>();
        v->SetValue(value);
        v->DefaultValue = defaultValue;
        EXPECT_EQ(v->InitialValue(), expected) << text(value) << " / " << text(defaultValue);
    }
    auto v = make<CVariable>();
    v->DefaultValue = Null{};
    EXPECT_EQ(raised([&] { v->InitialValue(); }), platformError(errors::Runtime::InvalidUseOfNull));
}

// ---- Availability ----

struct AvailabilityCase {
    const char* name;
    std::int32_t availability, dynAvailability;
    bool dynamicClass;
    double setAtSeconds, askedAtSeconds;  // from the clock's start
    bool expected;
    friend void PrintTo(const AvailabilityCase& c, std::ostream* os) { *os << c.name; }
};
class VariableAvailability : public ::testing::TestWithParam<AvailabilityCase> {};

TEST_P(VariableAvailability, ClearedWhenAskedSoonerThanThePeriod) {
    const AvailabilityCase& c = GetParam();
    ManualClock clock;
    auto v = make<CVariable>();
    v->SetAvailability(c.availability);
    v->SetDynAvailability(c.dynAvailability);
    v->Class->SetClassInfo(ddvCDynamic, c.dynamicClass);
    clock.advanceSeconds(c.setAtSeconds);
    let(v, u"Available", Variant(true));
    EXPECT_EQ(v->LastSetTime, Date{clock.days});
    clock.advanceSeconds(c.askedAtSeconds - c.setAtSeconds);
    EXPECT_EQ(v->Available(), c.expected);
    EXPECT_EQ(v->GetAvailablePlain(), c.expected);
}
INSTANTIATE_TEST_SUITE_P(
    Periods, VariableAvailability,
    ::testing::Values(AvailabilityCase{"AtOnce", 10, -1, false, 0, 0, false},
                      AvailabilityCase{"JustBeforePeriod", 10, -1, false, 0, 9.9, false},
                      AvailabilityCase{"AtPeriod", 10, -1, false, 0, 10, true},
                      AvailabilityCase{"NoPeriod", -1, -1, false, 0, 0, true},
                      AvailabilityCase{"ZeroPeriod", 0, -1, false, 0, 0, true},
                      // Second boundaries count, not elapsed time: 0.9 s -> 1.1 s crosses one.
                      AvailabilityCase{"BoundaryCrossed", 1, -1, false, 0.9, 1.1, true},
                      AvailabilityCase{"WithinOneSecond", 1, -1, false, 0.1, 0.9, false},
                      AvailabilityCase{"DynamicUsesDynPeriod", 10, 10, true, 0, 5, false},
                      AvailabilityCase{"DynamicIgnoresPlainPeriod", 10, -1, true, 0, 5, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Variable, UnavailableStaysSoAndFalseDoesNotStamp) {
    ManualClock clock;
    auto v = make<CVariable>();
    v->SetAvailability(10);
    v->SetAvailable(true);
    EXPECT_FALSE(v->Available());
    clock.advanceSeconds(30);
    EXPECT_FALSE(v->Available());  // the flag was cleared, not just hidden
    v->SetAvailable(false);
    EXPECT_EQ(v->LastSetTime, Date{Noon2000});
}

// ---- Handling flags ----

TEST(Variable, HandlingGoesToTheSharedFlagArray) {
    auto v = make<CVariable>();
    const Variant write[] = {Variant(std::int32_t{ddvhTWrite}), Variant(false)};
    invoke(*v, u"Handling", Access::Let, write);
    EXPECT_EQ(get(v->GetHandlingObj(), u"FlagText"), Variant(u"01"));
    let(v->GetHandlingObj(), u"FlagText", Variant(u"10"));  // the array is the variable's own
    EXPECT_FALSE(v->Handling(ddvhTRead));
    EXPECT_EQ(raised([&] { v->Handling(static_cast<enumDDVariableHandlingType>(2)); }),
              platformError(errors::Runtime::SubscriptOutOfRange));
}

// ---- Copy and compare ----

Ref<CVariable> filledVariable() {
    auto v = variableOf(ddvTFloat);
    v->Definition()->SetName(u"pressure");
    v->SetValue(u"1,5");
    v->DefaultValue = 2.0;
    v->ConstantUnit = u"bar";
    v->VariableUnit = u"kPa";
    v->UnitVariable = makeDefinition(u"pressure_unit", ddoKVariableDef);
    v->Help = u"help";
    v->Label = u"Pressure";
    v->ErrorText = u"timeout";
    v->ErrorCode = 16;
    v->ReadTimeout = 100;
    v->WriteTimeout = 200;
    v->Validity = false;
    v->ToBeWritten = true;
    v->IsChecked = false;
    v->InRecursion = true;
    v->InReadRecursion = true;
    v->Class->SetClassInfo(ddvCDynamic, true);
    v->PostReadActions->Add(makeDefinition(u"after_read", ddoKMethodDef));
    v->Relations()->Add(makeDefinition(u"relation", ddoKVariableDef));
    v->SetHandling(ddvhTWrite, false);
    v->SetAvailability(3);
    v->SetDynAvailability(100);
    v->SetAvailable(true);
    return v;
}

TEST(Variable, GetCopySharesOnlyTheUnitVariable) {
    ManualClock clock;
    auto source = filledVariable();
    auto copy = refCast<CVariable>(call(source, u"GetCopy").toObject());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->UnitVariable.get(), source->UnitVariable.get());
    const std::pair<Object*, Object*> distinct[] = {
        {copy->Definition().get(), source->Definition().get()},
        {copy->Class.get(), source->Class.get()},
        {copy->TypeInfo.get(), source->TypeInfo.get()},
        {copy->PreEditActions.get(), source->PreEditActions.get()},
        {copy->PostReadActions.get(), source->PostReadActions.get()},
        {copy->PostWriteActions.get(), source->PostWriteActions.get()},
        {copy->Relations().get(), source->Relations().get()},
        {copy->GetHandlingObj().get(), source->GetHandlingObj().get()},
    };
    for (const auto& [mine, theirs] : distinct) EXPECT_NE(mine, theirs);
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_EQ(copy->ToString(3), source->ToString(3));
    // Copied as stored: no normalisation, and the flag without the period test.
    EXPECT_EQ(copy->GetValuePlain(), Variant(u"1,5"));
    EXPECT_TRUE(copy->GetAvailablePlain());
    EXPECT_EQ(copy->Relations()->Count(), 1);
    copy->Definition()->SetName(u"other");
    copy->PostReadActions->Add(makeDefinition(u"more", ddoKMethodDef));
    EXPECT_EQ(source->Definition()->Name(), u"pressure");
    EXPECT_EQ(source->PostReadActions->Count(), 1);
}

TEST(Variable, SetFromObjectStopsAtAFailureAndKeepsWhatItCopied) {
    auto source = filledVariable();
    source->Class = nullptr;
    auto target = make<CVariable>();
    EXPECT_EQ(raised([&] { target->SetFromObject(source); }), platformError(errors::Runtime::ObjectNotSet));
    EXPECT_EQ(target->GetValuePlain(), Variant(u"1,5"));  // copied before the failure
    EXPECT_EQ(target->ConstantUnit, u"");                 // after it: untouched
    EXPECT_TRUE(target->Class);
    EXPECT_EQ(raised([&] { target->SetFromObject(nullptr); }), platformError(errors::Runtime::ObjectNotSet));
}

struct CompareCase {
    const char* field;
    std::function<void(CVariable&)> change;
    bool stillEqual;
    friend void PrintTo(const CompareCase& c, std::ostream* os) { *os << c.field; }
};
class VariableCompare : public ::testing::TestWithParam<CompareCase> {};

TEST_P(VariableCompare, OneChangedFieldDecides) {
    ManualClock clock;
    auto source = filledVariable();
    auto copy = source->GetCopy();
    GetParam().change(*copy);
    EXPECT_EQ(copy->Compare(source), GetParam().stillEqual);
    EXPECT_EQ(source->Compare(copy), GetParam().stillEqual);
}
#define CHANGE(field, equal, ...) CompareCase{field, [](CVariable& v) { __VA_ARGS__; }, equal}
INSTANTIATE_TEST_SUITE_P(
    Fields, VariableCompare,
    ::testing::Values(
        // Blind spot: the relations take no part.
        CHANGE("Relations", true, v.SetRelations(make<CVariableDefinitionSet>())),
        CHANGE("DefinitionNameCase", false, v.Definition()->SetName(u"Pressure")),
        CHANGE("Value", false, v.SetValue(1.5)),
        CHANGE("ErrorCode", false, v.ErrorCode = 0),
        CHANGE("Class", false, v.Class->SetClassInfo(ddvCInput, true)),
        CHANGE("VariableUnit", false, v.VariableUnit = u"kpa"),
        CHANGE("UnitVariableName", false, v.UnitVariable = makeDefinition(u"u", ddoKVariableDef)),
        CHANGE("UnitVariableGone", false, v.UnitVariable = nullptr),
        CHANGE("Label", false, v.Label = u"pressure"),
        CHANGE("PostWriteActions", false, v.PostWriteActions->Add(makeDefinition(u"m", ddoKMethodDef))),
        CHANGE("WriteTimeout", false, v.WriteTimeout = -1),
        CHANGE("TypeInfo", false, v.TypeInfo = make<CType>()),
        CHANGE("Available", false, v.SetAvailable(false)),
        CHANGE("DynAvailability", false, v.SetDynAvailability(4)),
        CHANGE("LastSetTime", false, v.LastSetTime = Date{Noon2000 + Second}),
        CHANGE("IsChecked", false, v.IsChecked = true),
        CHANGE("InReadRecursion", false, v.InReadRecursion = false),
        CHANGE("Handling", false, v.SetHandling(ddvhTWrite, true)),
        CHANGE("DefaultValue", false, v.DefaultValue = u"2")),
    [](const auto& info) { return std::string(info.param.field); });
#undef CHANGE

TEST(Variable, CompareStopsBeforeLaterFieldsAndNeedsAnObject) {
    auto a = make<CVariable>();
    auto b = make<CVariable>();
    b->DefaultValue = Null{};
    // The definitions differ first, so the Null default is never compared.
    b->Definition()->SetName(u"other");
    EXPECT_FALSE(a->Compare(b));
    b->Definition()->SetName(u"unknown");
    EXPECT_EQ(raised([&] { a->Compare(b); }), platformError(errors::Runtime::InvalidUseOfNull));
    EXPECT_EQ(raised([&] { a->Compare(nullptr); }), platformError(errors::Runtime::ObjectNotSet));
}

// ---- Rendering ----

TEST(Variable, RenderingAtEveryLevel) {
    ManualClock clock;
    auto v = variableOf(ddvTFloat);
    v->Definition()->SetName(u"pressure");
    EXPECT_EQ(text(v->ToString(-1)), "VARIABLE{Definition{Name:pressure}}");
    EXPECT_EQ(text(v->ToString(0)), "VARIABLE{Definition{Name:pressure}}");
    EXPECT_EQ(text(call(v, u"ToString")), "VARIABLE{Definition{Name:pressure}}");

    v->SetValue(1.5);  // stamps 1/1/2000 noon
    v->DefaultValue = u"2";
    v->Help = u"h";
    v->Label = u"L";
    v->ConstantUnit = u"bar";
    v->VariableUnit = u"kPa";
    v->UnitVariable = makeDefinition(u"unit_rel", ddoKUnitDef);
    v->ErrorText = u"e";
    v->ErrorCode = -7;
    v->Relations()->Add(makeDefinition(u"r1", ddoKVariableDef));
    v->PreEditActions->Add(makeDefinition(u"m1", ddoKMethodDef));
    v->SetHandling(ddvhTRead, false);

    const std::string head = "VARIABLE{Definition{Name:pressure, Kind:0}";
    const std::string level2 =
        ", Value:1.5, Help:h, Label:L, ConstantUnit:bar, VariableUnit:kPa, UnitVariable:Definition{Name:unit_rel}, "
        "Available:False, DefaultValue:2, ToBeWritten:False, Validity:True, TypeInfo:Type{Kind:0}}";  // the type closes its own text twice
    EXPECT_EQ(text(v->ToString(2)), head + level2 + "}");
    EXPECT_EQ(text(v->ToString(3)),
              head +
                  ", Value:1.5, Help:h, Label:L, ConstantUnit:bar, VariableUnit:kPa, "
                  "UnitVariable:Definition{Name:unit_rel, Kind:6}, Available:False, DefaultValue:2, "
                  "ToBeWritten:False, Validity:True, TypeInfo:Type{Kind:0}, Ranges:{}, ScalingFactor:1, "
                  "DisplayFormat:, EditFormat:}"
                  ", IsChecked:True, InRecursion:False, InReadRecursion:False, ErrorText:e, ErrorCode:-7, "
                  "LastSetTime:1/1/2000 12:00:00 PM, ReadTimeout:-1, WriteTimeout:-1, m_Handling:10"
                  ", m_Relations:VariableDefinitionSet{Count:1}, m_Relations:VariableDefinitionSet{Count:1}"
                  ", PreEditActions:DefinitionList{Count:1}, PostEditActions:DefinitionList{Count:0}"
                  ", PreReadActions:DefinitionList{Count:0}, PostReadActions:DefinitionList{Count:0}"
                  ", PreWriteActions:DefinitionList{Count:0}, PostWriteActions:DefinitionList{Count:0}}");
    // One level more shows the relations' and lists' items, still twice.
    const std::string level4 = text(v->ToString(4));
    const std::string relations = ", m_Relations:VariableDefinitionSet{Count:1, Items: { Definition{Name:r1}}}";
    EXPECT_NE(level4.find(relations + relations), std::string::npos);
    EXPECT_NE(level4.find(", PreEditActions:DefinitionList{Count:1, Items: { Definition{Name:m1}}}"),
              std::string::npos);
}

TEST(Variable, RenderingLeavesOutAbsentChildrenAndShowsTheZeroDate) {
    auto v = make<CVariable>();
    v->TypeInfo = nullptr;
    v->PreEditActions = nullptr;
    v->SetRelations(nullptr);
    EXPECT_EQ(text(v->ToString(3)),
              "VARIABLE{Definition{Name:unknown, Kind:0}, Value:, Help:, Label:, ConstantUnit:, VariableUnit:, "
              "Available:False, DefaultValue:, ToBeWritten:False, Validity:True, IsChecked:True, "
              "InRecursion:False, InReadRecursion:False, ErrorText:, ErrorCode:0, LastSetTime:12:00:00 AM, "
              "ReadTimeout:-1, WriteTimeout:-1, m_Handling:11, PostEditActions:DefinitionList{Count:0}, "
              "PreReadActions:DefinitionList{Count:0}, PostReadActions:DefinitionList{Count:0}, "
              "PreWriteActions:DefinitionList{Count:0}, PostWriteActions:DefinitionList{Count:0}}");
}

}  // namespace
}  // namespace tylhart::test
