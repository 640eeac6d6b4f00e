// The Variant rules the library relies on beyond what the runtime's own
// answers pin in VariantOracleTest (conversions and their errors, text
// forms, comparisons): the current year of texts without one and the
// leading-number reader. How Null decides a branch or raises where the
// outcome is stored is pinned where the classes compare (value lists,
// variable defaults).
#include "TestSupport.hpp"

#include <clocale>
#include <cstdlib>

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

const std::pair<const char*, double> leadingNumbers[] = {
    {"12.5", 12.5}, {"12.5 kPa", 12.5}, {" 1 2 3", 123}, {"\t-\n7.25", -7.25}, {"+.5e-1", 0.05},
    {"-1.5E3x", -1500}, {"1D2", 100}, {"1e", 1}, {"1e+", 1}, {"1.2.3", 1.2}, {"1,5", 1}, {"3-4", 3},
    {"--1", 0}, {"abc", 0}, {".", 0}, {"", 0}, {"1e-400", 0}, {"-0.001e-330", 0}, {"0x1A", 0},
    {"4.9406564584124654e-324", 4.9406564584124654e-324}, {"1.7976931348623157e308", 1.7976931348623157e308}};

TEST(VariantLeadingNumber, ReadsTheNumberATextBeginsWithAndOverflowsBeyondTheDoubleRange) {
    for (const auto& [input, value] : leadingNumbers) EXPECT_EQ(leadingNumber(fromUtf8(input)), value) << input;
    for (const char16_t* beyond : {u"1e400", u"-2e308", u"0.00002e313"})
        EXPECT_EQ(raised([&] { leadingNumber(beyond); }), Overflow) << toUtf8(beyond);
}

// A host (a Python script, a tool's GUI) may switch the process to a
// locale whose decimal separator is the comma; texts keep the full stop.
struct CommaDecimalLocale {
#ifdef TYLHART_TEST_LOCALE_DIR
    const int path = setenv("LOCPATH", TYLHART_TEST_LOCALE_DIR, 1);
#endif
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const bool active = std::setlocale(LC_ALL, "de_DE.UTF-8") && *std::localeconv()->decimal_point == ',';
    ~CommaDecimalLocale() {
        std::setlocale(LC_ALL, previous.c_str());
#ifdef TYLHART_TEST_LOCALE_DIR
        unsetenv("LOCPATH");
#endif
    }
};

TEST(VariantLocale, NumbersReadAndPrintWithTheFullStopUnderACommaLocale) {
    const CommaDecimalLocale locale;
    if (!locale.active) GTEST_SKIP() << "no de_DE.UTF-8 locale on this machine";
    for (const auto& [input, value] : leadingNumbers) EXPECT_EQ(leadingNumber(fromUtf8(input)), value) << input;
    EXPECT_EQ(Variant(2.5).toText(), u"2.5");
    EXPECT_EQ(Variant(0.1f).toText(), u"0.1");
    EXPECT_EQ(Variant(1234.5678).toText(), u"1234.5678");
    EXPECT_EQ(Variant(u"2.5").toDouble(), 2.5);
}

// Whole numbers print as plain integers only while their digits fit the
// precision (15 for Double, 7 for Single); past it they take an exponent.
TEST(VariantText, WholeNumbersPrintPlainUpToThePrecision) {
    const std::pair<Variant, const char16_t*> rows[] = {
        {Variant(999999999999999.0), u"999999999999999"}, {Variant(-999999999999999.0), u"-999999999999999"},
        {Variant(1e15), u"1E+15"},                        {Variant(-0.0), u"0"},
        {Variant(9999999.0f), u"9999999"},                {Variant(-1e7f), u"-1E+07"},
        {Variant(100.0), u"100"},                         {Variant(100.5), u"100.5"},
    };
    for (const auto& [value, text] : rows) EXPECT_EQ(value.toText(), text) << toUtf8(text);
}

}  // namespace
}  // namespace tylhart::test
