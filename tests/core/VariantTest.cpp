// The Variant rules the library relies on beyond what the runtime's own
// answers pin in VariantOracleTest (conversions, text forms, comparisons):
// Null in branches and stored outcomes, the error records, the current
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

// ---- Equality with Null ----

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
