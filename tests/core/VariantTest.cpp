// The Variant rules the library relies on beyond single conversions (those
// are checked against the runtime's own answers in VariantOracleTest):
// the texts renderings print, equality with Null and Empty, the current
// year of texts without one, and the leading-number reader.
#include "TestSupport.hpp"

#include <cmath>

#include "tylhart/core/Clock.hpp"

namespace tylhart::test {
namespace {

// The record a platform error carries to an Automation client.
ErrorRecord raisedBy(errors::Runtime code) {
    return {errors::numberOf(code), "TylHartTypes", toUtf8(errors::descriptionOf(code))};
}

// ---- Text forms used in renderings ----

struct TextCase {
    const char* name;
    Variant value;
    const char* rendered;  // toText()
    const char* asString;  // changeType(String), the runtime's plain conversion
};

class VariantText : public ::testing::TestWithParam<TextCase> {};

TEST_P(VariantText, RendersAsTheRuntimeWritesIt) {
    const TextCase& c = GetParam();
    EXPECT_EQ(toUtf8(c.value.toText()), c.rendered);
    EXPECT_EQ(toUtf8(*c.value.changeType(VarType::String).get<Text>()), c.asString);
}

INSTANTIATE_TEST_SUITE_P(
    Variant, VariantText,
    ::testing::Values(
        TextCase{"ExponentForm", Variant(1e30), "1E+30", "1E+30"},
        TextCase{"SmallExponent", Variant(0.00001234), "1.234E-05", "1.234E-05"},
        TextCase{"FifteenDigits", Variant(1.0 / 3.0), "0.333333333333333", "0.333333333333333"},
        TextCase{"SevenDigitsForSingle", Variant(0.1f), "0.1", "0.1"},
        TextCase{"NegativeZero", Variant(-0.0), "0", "0"},
        TextCase{"TieRoundsAway", Variant(100000000000000.5), "100000000000001", "100000000000001"},
        TextCase{"CurrencyDropsZeros", Variant(Currency{15000}), "1.5", "1.5"},
        TextCase{"NoonOfNewYear2000", Variant(Date{36526.5}), "1/1/2000 12:00:00 PM", "1/1/2000 12:00:00 PM"},
        TextCase{"ZeroDateIsMidnight", Variant(Date{0.0}), "12:00:00 AM", "12:00:00 AM"},
        TextCase{"WholeDayHasNoTime", Variant(Date{2.0}), "1/1/1900", "1/1/1900"},
        TextCase{"LastSecondRoundsToNextDay", Variant(Date{36526.999999}), "1/2/2000 12:00:00 AM",
                 "1/2/2000 12:00:00 AM"},
        TextCase{"True", Variant(true), "True", "-1"},
        TextCase{"False", Variant(false), "False", "0"},
        TextCase{"Empty", Variant(), "", ""}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- Equality ----

struct EqualityCase {
    const char* name;
    Variant a, b;
    bool equal;
};

class VariantEquality : public ::testing::TestWithParam<EqualityCase> {};

TEST_P(VariantEquality, FollowsTheRuntimeComparison) {
    const EqualityCase& c = GetParam();
    EXPECT_EQ(variantEquals(c.a, c.b), c.equal);
    EXPECT_EQ(variantEquals(c.b, c.a), c.equal);
    EXPECT_EQ(variantEqualsStrict(c.a, c.b), c.equal);
}

INSTANTIATE_TEST_SUITE_P(
    Variant, VariantEquality,
    ::testing::Values(EqualityCase{"EmptyIsZero", Variant(), Variant(std::int16_t{0}), true},
                      EqualityCase{"EmptyIsEmptyText", Variant(), Variant(u""), true},
                      EqualityCase{"EmptyIsNotABlank", Variant(), Variant(u" "), false},
                      EqualityCase{"NumberIsNeverText", Variant(1.0), Variant(u"1"), false},
                      EqualityCase{"ZeroIsNeverText", Variant(std::int32_t{0}), Variant(u"0"), false},
                      EqualityCase{"AcrossNumericKinds", Variant(std::int16_t{2}), Variant(Currency{20000}), true},
                      EqualityCase{"TrueIsMinusOne", Variant(true), Variant(-1.0), true},
                      EqualityCase{"SingleAgainstDoubleAtSinglePrecision", Variant(0.1f), Variant(0.1), true},
                      EqualityCase{"TextsDifferingInCase", Variant(u"abc"), Variant(u"ABC"), false},
                      // The locale's collation ignores a NUL; equality stays exact.
                      EqualityCase{"TextsDifferingInAnIgnoredCharacter", Variant(u"a"), Variant(Text(u"a\0", 2)),
                                   false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(VariantEquality, NullIsNotEqualWhereOnlyABranchIsDecided) {
    for (const Variant& other : {Variant(Null{}), Variant(), Variant(0.0), Variant(u"")}) {
        EXPECT_FALSE(variantEquals(Variant(Null{}), other));
        EXPECT_FALSE(variantEquals(other, Variant(Null{})));
        EXPECT_EQ(compare(other, Variant(Null{})), Comparison::Null);
    }
}

TEST(VariantEquality, NullRaisesWhereTheOutcomeIsStored) {
    const ErrorRecord invalidUseOfNull{static_cast<std::int32_t>(0x800A005Eu), "TylHartTypes", "Invalid use of Null"};
    EXPECT_EQ(raised([] { variantEqualsStrict(Variant(Null{}), Variant(1.0)); }), invalidUseOfNull);
    EXPECT_EQ(raised([] { variantEqualsStrict(Variant(u"x"), Variant(Null{})); }), invalidUseOfNull);
}

TEST(VariantEquality, TextsOrderByTheLocaleCollation) {
    // Case-insensitive first, lower case before upper on a tie, and a hyphen
    // weighs only when all else ties.
    EXPECT_EQ(compare(Variant(u"a"), Variant(u"B")), Comparison::Less);
    EXPECT_EQ(compare(Variant(u"a"), Variant(u"A")), Comparison::Less);
    EXPECT_EQ(compare(Variant(u"co-op"), Variant(u"coop")), Comparison::Greater);
    EXPECT_EQ(compare(Variant(u"co-op"), Variant(u"cop")), Comparison::Less);
    EXPECT_EQ(compare(Variant(u"9"), Variant(u"a")), Comparison::Less);
}

// ---- Errors of conversions ----

TEST(VariantConversion, RaisesTheRuntimeErrorRecords) {
    EXPECT_EQ(raised([] { Variant(Null{}).changeType(VarType::Integer); }), raisedBy(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([] { Variant(Null{}).toText(); }), raisedBy(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([] { Variant(u"32768").toInteger(); }), raisedBy(errors::Runtime::Overflow));
    EXPECT_EQ(raised([] { Variant(Date{3e6}).toText(); }), raisedBy(errors::Runtime::InvalidCall));
    EXPECT_TRUE(Variant(Null{}).changeType(VarType::Null).isNull());
}

// ---- Texts without a year ----

Date dayOf(int year, int month, int day) {
    return Variant(Text(fromUtf8(std::to_string(month) + "/" + std::to_string(day) + "/" + std::to_string(year))))
        .toDate();
}

TEST(VariantClock, TextsWithoutAYearTakeTheCurrentYear) {
    for (int year : {2024, 2031}) {
        const Date midsummerNoon{dayOf(year, 6, 15).days + 0.5};
        ScopedClock clock([midsummerNoon] { return midsummerNoon; });
        EXPECT_EQ(currentYear(), year);
        EXPECT_EQ(Variant(u"1/2").toDate(), dayOf(year, 1, 2));
        EXPECT_EQ(Variant(u"Dec 25 3:00 PM").toDate().days, dayOf(year, 12, 25).days + 0.625);
    }
    // 29 February exists only in leap years; otherwise the two numbers read
    // as month and two-digit year.
    const Date inLeapYear = dayOf(2024, 3, 1), inCommonYear = dayOf(2031, 3, 1);
    {
        ScopedClock clock([inLeapYear] { return inLeapYear; });
        EXPECT_EQ(Variant(u"2/29").toDate(), dayOf(2024, 2, 29));
    }
    ScopedClock clock([inCommonYear] { return inCommonYear; });
    EXPECT_EQ(Variant(u"2/29").toDate(), dayOf(2029, 2, 1));
}

// ---- The leading-number reader ----

struct LeadingCase {
    const char* text;
    double value;
};

class VariantLeadingNumber : public ::testing::TestWithParam<LeadingCase> {};

TEST_P(VariantLeadingNumber, ReadsTheNumberATextBeginsWith) {
    EXPECT_EQ(leadingNumber(fromUtf8(GetParam().text)), GetParam().value) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Variant, VariantLeadingNumber,
    ::testing::Values(LeadingCase{"12.5", 12.5}, LeadingCase{"12.5 kPa", 12.5}, LeadingCase{" 1 2 3", 123},
                      LeadingCase{"\t-\n7.25", -7.25}, LeadingCase{"+.5e-1", 0.05}, LeadingCase{"-1.5E3x", -1500},
                      LeadingCase{"1D2", 100}, LeadingCase{"1e", 1}, LeadingCase{"1e+", 1},
                      LeadingCase{"1.2.3", 1.2}, LeadingCase{"1,5", 1}, LeadingCase{"3-4", 3},
                      LeadingCase{"--1", 0}, LeadingCase{"abc", 0}, LeadingCase{".", 0}, LeadingCase{"", 0},
                      LeadingCase{"1e-400", 0}, LeadingCase{"0x1A", 0}));

TEST(VariantLeadingNumber, RaisesOverflowBeyondTheDoubleRange) {
    EXPECT_EQ(raised([] { leadingNumber(u"1e400"); }), raisedBy(errors::Runtime::Overflow));
    EXPECT_EQ(raised([] { leadingNumber(u"-2e308"); }), raisedBy(errors::Runtime::Overflow));
}

}  // namespace
}  // namespace tylhart::test
