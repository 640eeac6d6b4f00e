// The Variant rules the library relies on beyond what the runtime's own
// answers pin in VariantOracleTest (conversions and their errors, text
// forms, comparisons): the current year of texts without one and the
// leading-number reader. How Null decides a branch or raises where the
// outcome is stored is pinned where the classes compare (value lists,
// variable defaults).
#include "TestSupport.hpp"

#include "tylhart/core/Clock.hpp"

namespace tylhart::test {
namespace {

Date dayOf(int year, int month, int day) {
    return Variant(Text(fromUtf8(std::to_string(month) + "/" + std::to_string(day) + "/" + std::to_string(year))))
        .toDate();
}

// 29 February exists only in leap years; otherwise the two numbers read as
// month and two-digit year.
TEST(VariantClock, TextsWithoutAYearTakeTheCurrentYear) {
    const std::tuple<int, const char16_t*, double> cases[] = {  // year of the clock, text, expected
        {2024, u"1/2", dayOf(2024, 1, 2).days}, {2031, u"Dec 25 3:00 PM", dayOf(2031, 12, 25).days + 0.625},
        {2024, u"2/29", dayOf(2024, 2, 29).days}, {2031, u"2/29", dayOf(2029, 2, 1).days}};
    for (const auto& [year, input, expected] : cases) {
        const Date midsummer = dayOf(year, 6, 15);
        ScopedClock clock([midsummer] { return midsummer; });
        EXPECT_EQ(currentYear(), year);
        EXPECT_EQ(Variant(input).toDate().days, expected) << toUtf8(input);
    }
}

TEST(VariantLeadingNumber, ReadsTheNumberATextBeginsWithAndOverflowsBeyondTheDoubleRange) {
    const std::pair<const char*, double> cases[] = {
        {"12.5", 12.5}, {"12.5 kPa", 12.5}, {" 1 2 3", 123}, {"\t-\n7.25", -7.25}, {"+.5e-1", 0.05},
        {"-1.5E3x", -1500}, {"1D2", 100}, {"1e", 1}, {"1e+", 1}, {"1.2.3", 1.2}, {"1,5", 1}, {"3-4", 3},
        {"--1", 0}, {"abc", 0}, {".", 0}, {"", 0}, {"1e-400", 0}, {"0x1A", 0}};
    for (const auto& [input, value] : cases) EXPECT_EQ(leadingNumber(fromUtf8(input)), value) << input;
    EXPECT_EQ(raised([] { leadingNumber(u"1e400"); }), Overflow);
    EXPECT_EQ(raised([] { leadingNumber(u"-2e308"); }), Overflow);
}

}  // namespace
}  // namespace tylhart::test
