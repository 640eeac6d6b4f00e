// The Variant rules the library relies on beyond what the runtime's own
// answers pin in VariantOracleTest (conversions and their errors, text
// forms, comparisons): Null in branches and stored outcomes, the current
// year of texts without one, and the leading-number reader.
#include "TestSupport.hpp"

#include "tylhart/core/Clock.hpp"

namespace tylhart::test {
namespace {

TEST(VariantEquality, NullIsUnequalInABranchAndRaisesWhereTheOutcomeIsStored) {
    for (const Variant& other : {Variant(Null{}), Variant(), Variant(0.0), Variant(u"")}) {
        EXPECT_FALSE(variantEquals(Variant(Null{}), other) || variantEquals(other, Variant(Null{}))) << text(other);
        EXPECT_EQ(compare(other, Variant(Null{})), Comparison::Null);
    }
    const ErrorRecord invalidUseOfNull{static_cast<std::int32_t>(0x800A005Eu), "TylHartTypes", "Invalid use of Null"};
    EXPECT_EQ(raised([] { variantEqualsStrict(Variant(Null{}), Variant(1.0)); }), invalidUseOfNull);
    EXPECT_EQ(raised([] { variantEqualsStrict(Variant(u"x"), Variant(Null{})); }), invalidUseOfNull);
}

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

TEST(VariantLeadingNumber, ReadsTheNumberATextBeginsWithAndOverflowsBeyondTheDoubleRange) {
    const std::pair<const char*, double> cases[] = {
        {"12.5", 12.5}, {"12.5 kPa", 12.5}, {" 1 2 3", 123}, {"\t-\n7.25", -7.25}, {"+.5e-1", 0.05},
        {"-1.5E3x", -1500}, {"1D2", 100}, {"1e", 1}, {"1e+", 1}, {"1.2.3", 1.2}, {"1,5", 1}, {"3-4", 3},
        {"--1", 0}, {"abc", 0}, {".", 0}, {"", 0}, {"1e-400", 0}, {"0x1A", 0}};
    for (const auto& [input, value] : cases) EXPECT_EQ(leadingNumber(fromUtf8(input)), value) << input;
    EXPECT_EQ(raised([] { leadingNumber(u"1e400"); }), platformError(errors::Runtime::Overflow));
    EXPECT_EQ(raised([] { leadingNumber(u"-2e308"); }), platformError(errors::Runtime::Overflow));
}

}  // namespace
}  // namespace tylhart::test
