#include <algorithm>

#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

struct CheckedMember {
    const char16_t* name;
    bool indexed;      // a property with an index, read and written at 0
    Variant newValue;  // differs from the member's default
    std::vector<int> allowedKinds;
    const char* source;
};
const std::vector<int> Numeric{0, 1, 2, 3}, Formatted{0, 1, 2, 3, 15};
const CheckedMember checkedMembers[] = {
    {u"Size", false, std::int16_t{7}, {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, "Type.Size"},
    {u"MaxRangeNo", false, std::int16_t{2}, Numeric, "Type.MaxRangeNo"},
    {u"MinValues", true, 5.0, Numeric, "Type.MinValues"},
    {u"MaxValues", true, 5.0, Numeric, "Type.MaxValues"},
    {u"ScalingFactor", false, 2.5, Numeric, "Type.ScalingFactor"},
    {u"DisplayFormat", false, u"%5.2f", Formatted, "Type.DisplayFormat"},
    {u"EditFormat", false, u"%5.2f", Formatted, "Type.EditFormat"},
    {u"TimeFormat", false, u"hh:mm", {15}, "Type.TimeFormat"},
    {u"ScaleQualifier", false, std::int32_t{2}, {15}, "Type.ScaleQualifier"},
    {u"MaxEnumIndex", false, std::int32_t{0}, {4}, "Type.MaxEnumIndex"},
    // Reports the enumerator index's source and admits the enumerator kind.
    {u"MaxBitEnumIndex", false, std::int32_t{0}, {4, 5}, "Type.MaxEnumIndex"},
    {u"Enumerators", true, enumerator(1, u"one"), {4}, "Type.Enumerators"},
    {u"BitEnumerators", true, make<CBitEnumerator>(), {5}, "Type.BitEnumerators"},
    {u"ArrayObject", false, make<CArray>(), {6}, "Type.ArrayObject"},
    {u"Domain", false, make<CValueSet>(), {6}, "Type.Domain"}};

Variant read(const Ref<Object>& type, const CheckedMember& m) {
    return m.indexed ? get(type, m.name, std::int32_t{0}) : get(type, m.name);
}
void write(const Ref<Object>& type, const CheckedMember& m) {
    m.indexed ? let(type, m.name, std::int32_t{0}, m.newValue) : let(type, m.name, m.newValue);
}

TEST(Type, KindRulesRefuseForeignKindsUnchangedAndNothingWithTheCheckOff) {
    for (int kind = -1; kind < 16; ++kind)
        for (const CheckedMember& member : checkedMembers) {
            SCOPED_TRACE("kind " + std::to_string(kind) + " " + toUtf8(member.name));
            auto type = typeOf(static_cast<enumDDVariableType>(kind));  // -1: no kind
            const bool owned = kind < 0 || std::ranges::count(member.allowedKinds, kind) > 0;
            const ErrorRecord expected = owned ? NoError : libraryError(member.source, errors::WrongKind);
            type->CheckForExactKind = false;
            const Variant before = read(type, member);
            type->CheckForExactKind = true;
            EXPECT_EQ(raised([&] { read(type, member); }), expected);
            EXPECT_EQ(raised([&] { write(type, member); }), expected);
            type->CheckForExactKind = false;
            if (!owned) { EXPECT_EQ(read(type, member), before); }  // braces: the macro holds an else
            EXPECT_EQ(raised([&] { read(type, member); }), NoError);
            EXPECT_EQ(raised([&] { write(type, member); }), NoError);
        }
}

TEST(Type, KindIsSetOnceWithinZeroToFifteen) {
    const ErrorRecord fixed = libraryError("Type.Kind", errors::KindFixed);
    const ErrorRecord outOfRange = libraryError("Type.Kind", errors::KindOutOfRange);
    const std::tuple<int, int, ErrorRecord> cases[] = {  // initial (-1: new), attempt, error
        {-1, -1, outOfRange}, {-1, 16, outOfRange}, {-1, 15, NoError}, {-1, 0, NoError}, {0, 0, NoError},
        {0, 2, fixed},        {0, 16, fixed},       {0, -1, fixed},    {15, 15, NoError}, {6, 14, fixed}};
    for (const auto& [initial, attempt, error] : cases) {
        auto type = typeOf(static_cast<enumDDVariableType>(initial));
        EXPECT_EQ(raised([&] { let(type, u"Kind", std::int32_t{attempt}); }), error) << initial << "->" << attempt;
        EXPECT_EQ(type->Kind(), error == NoError ? attempt : initial);
    }
}

// The other defaults show in the renderings below.
TEST(Type, DefaultsAndMaxRangeNoRebuildsBothArraysWithNulls) {
    auto type = make<CType>();
    EXPECT_EQ(get(type, u"MaxEnumIndex"), Variant(std::int32_t{1}));
    EXPECT_TRUE(type->MinValues(0).isEmpty() && type->ScaleQualifier() == sqTNone);
    EXPECT_EQ(type->ArrayObject()->Definition()->Kind(), ddoKArrayDef);
    // A new type has exactly one pair of ends, Empty, before any is written.
    EXPECT_EQ(raised([&] { type->MinValues(1); }), Subscript);
    EXPECT_EQ(raised([&] { type->SetMaxValues(1, Variant(1.0)); }), Subscript);
    type->SetKind(ddvTInt);
    type->SetMinValues(0, Variant(std::int32_t{1}));
    EXPECT_TRUE(type->MinValues(0) == Variant(std::int32_t{1}) && type->MaxValues(0).isEmpty());
    type->SetMaxRangeNo(2);
    for (std::int32_t i = 0; i <= 2; ++i) EXPECT_TRUE(type->MinValues(i).isNull() && type->MaxValues(i).isNull());
    EXPECT_EQ(raised([&] { type->MinValues(3); }), Subscript);
    EXPECT_EQ(raised([&] { type->SetMaxValues(-1, Variant(1.0)); }), Subscript);
    type->SetMaxRangeNo(-1);
    EXPECT_TRUE(type->MaxRangeNo() == -1 && type->MinValues(0).isNull());
    EXPECT_EQ(raised([&] { type->MaxValues(1); }), Subscript);
}

TEST(Type, EnumeratorAndBitEnumeratorIndexShareOneCount) {
    auto type = typeOf(ddvTEnumerator);
    type->SetMaxEnumIndex(3);
    EXPECT_EQ(type->MaxBitEnumIndex(), 3);
    type->EnumeratorSet->Add(enumerator(1, u"one"));
    const auto kept = type->EnumeratorSet;
    type->SetMaxEnumIndex(0);
    EXPECT_TRUE(type->EnumeratorSet.get() == kept.get() && type->EnumeratorSet->Count() == 1);
    type->SetMaxEnumIndex(5);
    EXPECT_TRUE(type->EnumeratorSet.get() != kept.get() && type->EnumeratorSet->Count() == 0);

    // The bit index passes the check for the enumerator kind and does nothing.
    const auto bits = type->BitEnumeratorSet;
    type->SetMaxBitEnumIndex(9);
    EXPECT_TRUE(type->MaxEnumIndex() == 5 && type->BitEnumeratorSet.get() == bits.get());

    auto bitType = typeOf(ddvTBitEnumerator);
    const auto bitSet = bitType->BitEnumeratorSet;
    bitType->SetMaxBitEnumIndex(4);
    EXPECT_TRUE(bitType->MaxBitEnumIndex() == 4 && bitType->BitEnumeratorSet.get() != bitSet.get());
    bitType->CheckForExactKind = false;
    bitType->SetMaxEnumIndex(8);  // not the enumerator kind: ignored
    EXPECT_EQ(bitType->MaxEnumIndex(), 4);
}

TEST(Type, EnumeratorsAreFoundAndPlacedByTheirOwnValue) {
    auto type = typeOf(ddvTEnumerator);
    auto seven = enumerator(7, u"seven");
    type->SetEnumerators(99, seven);
    auto found = type->Enumerators(7);
    ASSERT_TRUE(found);
    EXPECT_TRUE(found.get() != seven.get() && found->Compare(seven) && !type->Enumerators(99));
    type->SetEnumerators(0, enumerator(7, u"replaced"));
    EXPECT_TRUE(type->EnumeratorSet->Count() == 1 && type->Enumerators(7)->Description == u"replaced");
    EXPECT_EQ(raised([&] { type->SetEnumerators(0, nullptr); }), NotSet);

    type->EnumeratorSet = nullptr;
    EXPECT_FALSE(type->Enumerators(7));  // failures of the look-up give Nothing
    EXPECT_EQ(raised([&] { type->SetEnumerators(0, seven); }), NotSet);
    EXPECT_FALSE(typeOf(ddvTBitEnumerator)->BitEnumerators(3));  // the set's missing-key error is swallowed
}

Ref<CType> intRange() {
    return typeOf(ddvTInt, [](CType& t) {
        t.SetSize(2), t.SetMaxRangeNo(0), t.SetMinValues(0, Variant(std::int16_t{0}));
        t.SetMaxValues(0, Variant(std::int16_t{100}));
    });
}
Ref<CType> floatTwoRanges() {
    return typeOf(ddvTFloat, [](CType& t) {
        t.SetMaxRangeNo(1), t.SetMinValues(1, Variant(0.5)), t.SetMaxValues(1, Variant(1.5));
        t.SetScalingFactor(Variant(2.5)), t.SetDisplayFormat(u"%.2f"), t.SetEditFormat(u"%.3f");
    });
}
Ref<CType> enumerated() { return typeOf(ddvTEnumerator, [](CType& t) { t.SetEnumerators(0, enumerator(1, u"one")); }); }
Ref<CType> indexType(bool withArray, bool withDomain) {
    return typeOf(ddvTIndex, [&](CType& t) {
        t.ArrayObject()->Definition()->SetName(u"arr"), t.Domain()->Add(Variant(std::int32_t{42}));
        if (!withArray) t.SetArrayObject(nullptr);
        if (!withDomain) t.SetDomain(nullptr);
    });
}
Ref<CType> timeValue() {
    return typeOf(ddvTTimeValue, [](CType& t) {
        t.SetDisplayFormat(u"d"), t.SetEditFormat(u"e"), t.SetTimeFormat(u"hh:mm"), t.SetScaleQualifier(sqTMinutes);
    });
}

TEST(Type, RendersExactly) {
    expectRenderings({
        {"new", make<CType>, {1, 0}},
        {"int with a range", intRange, 2},
        // A Null range end adds nothing.
        {"float with two ranges", floatTwoRanges, 2},
        {"double", [] { return typeOf(ddvTDouble); }, 2},
        {"enumerator", enumerated, 2},
        {"bit enumerator", [] { return typeOf(ddvTBitEnumerator); }, 2},
        // The domain label prints the array object again.
        {"index with array and domain", [] { return indexType(true, true); }, 2},
        {"index with an array", [] { return indexType(true, false); }, 2},
        {"index with neither", [] { return indexType(false, false); }, 2},
        {"ascii", [] { return typeOf(ddvTASCII); }, 2},
        {"date", [] { return typeOf(ddvTDate); }, 2},
        {"time value", timeValue, 2},
        {"index with a domain only", [] { return indexType(false, true); }, 1},
    });
    // At level 2 the domain label reads the missing array object.
    EXPECT_EQ(raised([] { indexType(false, true)->ToString(2); }), NotSet);
}

// Range ends: Null matches Null only, and values compare across numeric
// kinds; the conversions themselves are the Variant tests' affair.
TEST(Type, CompareLooksOnlyAtTheFieldsTheKindOwns) {
    using T = CType&;
    using Change = std::function<void(T)>;
    const Change oneRange = [](T t) { t.SetMaxRangeNo(0); };
    const Change intZero = [](T t) { t.SetMaxRangeNo(0), t.SetMinValues(0, Variant(std::int32_t{0})); };
    const struct { enumDDVariableType kind; Change right; bool equal; Change left = {}; } cases[] = {
        {ddvTUndefined, [](T t) { t.SetSize(5); t.SetTimeFormat(u"x"); }, true},
        {ddvTFloat, [](T t) { t.CheckForExactKind = true; }, true}, {ddvTPassword, [](T t) { t.SetSize(3); }, false},
        {ddvTDate, [](T t) { t.SetSize(3); }, true}, {ddvTUnsigned, oneRange, false},
        {ddvTInt, oneRange, true, oneRange}, {ddvTInt, intZero, false, oneRange},
        {ddvTInt, intZero, true, [](T t) { t.SetMaxRangeNo(0), t.SetMinValues(0, Variant(0.0)); }},
        {ddvTDouble, [](T t) { t.SetScalingFactor(Variant(std::int16_t{1})); }, true},  // across numeric kinds
        {ddvTDouble, [](T t) { t.SetScalingFactor(Variant(1.0000000001)); }, false},    // no tolerance
        {ddvTFloat, [](T t) { t.SetDisplayFormat(u"X"); }, false}, {ddvTFloat, [](T t) { t.SetEditFormat(u"x"); }, false},
        {ddvTFloat, [](T t) { t.SetTimeFormat(u"x"); }, true}, {ddvTEnumerator, [](T t) { t.SetMaxEnumIndex(0); }, false},
        {ddvTEnumerator, [](T t) { t.EnumeratorSet->Add(enumerator(1, u"")); }, false},
        {ddvTBitEnumerator, [](T t) { t.SetMaxBitEnumIndex(0); }, false},
        {ddvTIndex, [](T t) { t.ArrayObject()->Label = u"l"; }, false},
        {ddvTIndex, [](T t) { t.Domain()->Add(Variant(std::int32_t{1})); }, false},
        {ddvTTimeValue, [](T t) { t.SetScaleQualifier(sqTHours); }, false},
        {ddvTTimeValue, [](T t) { t.SetTimeFormat(u"ss"); }, false}, {ddvTTimeValue, [](T t) { t.SetSize(2); }, true}};
    for (const auto& [kind, change, equal, left] : cases) {
        const Change unchecked = [&](T t) { t.CheckForExactKind = false, change(t); };
        expectCompare(typeOf(kind, left), typeOf(kind, unchecked), equal);
    }
}

// The child sets and objects are new; how deep they copy is their own affair.
TEST(Type, CopyOfEachKindComparesEqualAndHasItsOwnChildren) {
    // The enumerator counts differ from a new type's, so a copy must carry them.
    const auto countedEnumerators = +[] {
        return typeOf(ddvTEnumerator, [](CType& t) { t.SetMaxEnumIndex(3), t.SetEnumerators(0, enumerator(1, u"one")); });
    };
    const auto countedBits = +[] {
        return typeOf(ddvTBitEnumerator, [](CType& t) {
            t.SetMaxBitEnumIndex(4), t.SetBitEnumerators(0, made<CBitEnumerator>([](CBitEnumerator& b) { b.Value = 8; }));
        });
    };
    for (const auto& build : {intRange, floatTwoRanges, enumerated, countedEnumerators, countedBits, timeValue,
                              +[] { return indexType(true, true); }}) {
        auto source = build();
        auto copy = source->GetCopy();
        EXPECT_EQ(text(copy->ToString(3)), text(source->ToString(3)));
        EXPECT_TRUE(copy->Compare(source)) << text(source->ToString(2));
        copy->CheckForExactKind = source->CheckForExactKind = false;
        EXPECT_TRUE(copy->EnumeratorSet.get() != source->EnumeratorSet.get() &&
                    copy->BitEnumeratorSet.get() != source->BitEnumeratorSet.get() &&
                    copy->ArrayObject() != source->ArrayObject() && copy->Domain() != source->Domain());
    }
}

// A copy shares the source's ranges until either side writes one.
TEST(Type, CopiedRangesPartWhenEitherSideWritesOne) {
    for (bool writeTheCopy : {false, true}) {
        auto source = floatTwoRanges();
        auto copy = source->GetCopy();
        (writeTheCopy ? copy : source)->SetMaxValues(1, Variant(9.0));
        EXPECT_EQ((writeTheCopy ? source : copy)->MaxValues(1), Variant(1.5));
        EXPECT_EQ((writeTheCopy ? copy : source)->MaxValues(1), Variant(9.0));
    }
}

TEST(Type, SetFromObjectTouchesOnlyWhatTheSourceKindOwnsAndNothingWhenRefused) {
    auto receiver = make<CType>();
    receiver->SetSize(9), receiver->SetTimeFormat(u"kept");
    auto source = floatTwoRanges();
    source->CheckForExactKind = false;
    receiver->SetFromObject(source);
    EXPECT_TRUE(receiver->CheckForExactKind);  // never copied
    receiver->CheckForExactKind = false;
    EXPECT_TRUE(receiver->Size() == 9 && receiver->TimeFormat() == u"kept");
    EXPECT_EQ(receiver->MaxValues(1), Variant(1.5));

    auto defined = intRange();  // an undefined source resets the kind and nothing else
    defined->SetFromObject(make<CType>());
    EXPECT_TRUE(defined->Kind() == ddvTUndefined && defined->Size() == 2);
    EXPECT_EQ(defined->MaxValues(0), Variant(std::int16_t{100}));
    defined = intRange();  // into itself the ranges survive
    defined->SetFromObject(defined);
    EXPECT_EQ(defined->MaxValues(0), Variant(std::int16_t{100}));

    receiver = typeOf(ddvTUnsigned, [](CType& t) { t.SetDisplayFormat(u"mine"); });  // a refusal changes nothing
    expectRefused(receiver, [&] { receiver->SetFromObject(intRange()); }, libraryError("Type.Kind", errors::KindFixed));
    auto fresh = make<CType>();  // renders its kind
    expectRefused(fresh, [&] { fresh->SetFromObject(indexType(false, true)); }, NotSet);
    auto noSet = typeOf(ddvTEnumerator, [](CType& t) { t.EnumeratorSet = nullptr; });
    expectRefused(fresh, [&] { fresh->SetFromObject(noSet); }, NotSet);
}

}  // namespace
}  // namespace tylhart::test
