#include <cmath>

#include "TestSupport.hpp"
#include "tylhart/external/CUnitConverter.hpp"

namespace tylhart::test {
namespace {

constexpr const char* Source = "CUnitConverter.ConvertUnit";

double convert(double value, const char16_t* from, const char16_t* to) {
    return make<CUnitConverter>()->ConvertUnit(value, from, to);
}

// Published values carry their own precision (unit conversion tables,
// transmitter charts); relations defined exactly come out exactly as their
// decimals read (tolerance Exact), and never as negative zero.
constexpr double Exact = 0;
struct Known { double value; const char16_t *from, *to; double expected, relative = 1e-12; };

TEST(UnitConverter, KnownConversionsMatchThePublishedValueBothWays) {
    const Known known[] = {
        {0, u"degC", u"K", 273.15}, {-40, u"degF", u"degC", -40}, {100, u"degC", u"degR", 671.67},
        {1, u"psi", u"Pa", 6894.757293168}, {1, u"bar", u"kPa", 100}, {1, u"atm", u"mbar", 1013.25},
        {760, u"torr", u"atm", 1}, {1, u"kg/cm2", u"Pa", 98066.5}, {1, u"g/cm2", u"Pa", 98.0665},
        {1, u"mmHg", u"Pa", 133.322387415}, {1, u"inHg", u"Pa", 3386.388640341},
        {1, u"inH2O@4degC", u"Pa", 249.082, 5e-6}, {1, u"cmH2O@4degC", u"Pa", 98.0638, 5e-6},
        {1, u"inH2O@60degF", u"Pa", 248.84, 5e-5}, {1, u"psi", u"inH2O", 27.7296, 5e-6}, {12, u"inH2O", u"ftH2O", 1},
        {1, u"in", u"mm", 25.4}, {1, u"mi", u"km", 1.609344}, {1, u"lb", u"kg", 0.45359237},
        {1, u"LTon", u"kg", 1016.0469088}, {16, u"oz", u"lb", 1}, {1, u"gal", u"in3", 231}, {1, u"bbl", u"gal", 42},
        {1, u"impgal", u"l", 4.54609}, {1, u"gal/min", u"l/min", 3.785411784}, {1, u"ft3/s", u"m3/h", 101.9406477312},
        {1, u"STon/d", u"lb/h", 2000.0 / 24}, {1, u"lb/gal", u"kg/m3", 119.8264, 5e-7}, {1, u"St", u"cSt", 100},
        {1, u"lb/(ft*s)", u"Pa*s", 1.488164, 5e-7}, {60, u"1/min", u"Hz", 1}, {4, u"mA", u"uA", 4000},
        {50, u"%", u"ppm", 500000}, {1, u"\u2030", u"%", 0.1}, {1, u"kn", u"km/h", 1.852}, {1, u"Mohm", u"kohm", 1000},
        {0, u"degC", u"degF", 32, Exact}, {32, u"degF", u"degC", 0, Exact}, {273.15, u"K", u"degC", 0, Exact},
        {37, u"degC", u"degF", 98.6, Exact}, {491.67, u"degR", u"degF", 32, Exact}, {1, u"ft", u"in", 12, Exact},
        {1, u"mi", u"yd", 1760, Exact}, {-459.67, u"degF", u"K", 0, Exact}};
    for (const Known& k : known) {
        SCOPED_TRACE(std::to_string(k.value) + " " + toUtf8(k.from) + "->" + toUtf8(k.to));
        const double got = convert(k.value, k.from, k.to);
        EXPECT_NEAR(got, k.expected, std::abs(k.expected) * k.relative);
        EXPECT_FALSE(std::signbit(got) && k.expected == 0) << "negative zero";
        EXPECT_NEAR(convert(k.expected, k.to, k.from), k.value, std::abs(k.value) * k.relative + 1e-12);
    }
}

// Every ordered pair of every family, values of both signs and several
// magnitudes (none so small that a temperature offset would swallow it).
TEST(UnitConverter, EveryPairOfAFamilyReturnsTheValueWithin1e12) {
    auto converter = make<CUnitConverter>();
    for (const UnitDefinition& a : CUnitConverter::units())
        for (const UnitDefinition& b : CUnitConverter::units()) {
            if (a.family != b.family) continue;
            for (double value : {1.0, -37.5, 1234.5678, 9.87e6}) {
                const double back = converter->ConvertUnit(converter->ConvertUnit(value, a.name, b.name), b.name, a.name);
                EXPECT_LE(std::abs(back - value), 1e-12 * std::abs(value)) << toUtf8(a.name) << "->" << toUtf8(b.name);
            }
        }
}

// Every unit is found under its own spelling, so no two share one; another
// case of it finds the unit only where that is unambiguous.
TEST(UnitConverter, ExactSpellingFirstThenCaseInsensitiveWhenUnambiguousAndOnlyTemperaturesHaveAnOffset) {
    for (const UnitDefinition& u : CUnitConverter::units()) {
        EXPECT_EQ(CUnitConverter::findUnit(u.name), &u) << toUtf8(u.name);
        EXPECT_TRUE(u.offset == 0.0 || u.family == UnitFamily::Temperature) << toUtf8(u.name);
    }
    const std::pair<const char16_t*, const char16_t*> spellings[] = {
        {u"DEGC", u"degC"}, {u"kpa", u"kPa"}, {u"L/MIN", u"l/min"}, {u"MHz", u"MHz"}, {u"mHz", u"mHz"},
        {u"MHZ", nullptr},  {u"mhz", nullptr}, {u" degC", nullptr}, {u"", nullptr}};
    for (auto [name, expected] : spellings) {
        const UnitDefinition* found = CUnitConverter::findUnit(name);
        EXPECT_EQ(found ? toUtf8(found->name) : "(none)", expected ? toUtf8(expected) : "(none)") << toUtf8(name);
    }
    EXPECT_EQ(convert(1, u"KHZ", u"hz"), 1000.0);
    const double awkward = 0.1 + 0.2;  // a unit into itself is left alone, bit for bit
    EXPECT_EQ(convert(awkward, u"DEGF", u"degF"), awkward);
}

TEST(UnitConverter, UnknownAmbiguousAndCrossFamilyUnitsRaiseOneRecord) {
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> refusals[] = {
        {u"furlong", u"m", u"The unit \"furlong\" is unknown!"},
        {u"m", u"furlong", u"The unit \"furlong\" is unknown!"},
        {u"x", u"y", u"The unit \"x\" is unknown!"},  // the source unit is checked first
        {u"MHZ", u"Hz", u"The unit \"MHZ\" is ambiguous (mHz or MHz)!"},
        {u"degC", u"bar", u"Cannot convert \"degC\" (temperature) to \"bar\" (pressure)!"},
        {u"GAL", u"gal/min", u"Cannot convert \"GAL\" (volume) to \"gal/min\" (volume flow)!"},
        {u"cSt", u"cP", u"Cannot convert \"cSt\" (kinematic viscosity) to \"cP\" (dynamic viscosity)!"}};
    for (auto [from, to, description] : refusals)
        EXPECT_EQ(raised([&] { convert(1.0, from, to); }), libraryError(Source, description)) << toUtf8(from);
}

TEST(UnitConverter, ConvertUnitAnswersMemberNumber212WithVariantCoercion) {
    Ref<Object> converter = make<CUnitConverter>();
    EXPECT_EQ(dispIdOfName(*converter, u"convertunit"), 212);
    const Variant result = invokeWith(converter, 212, Access::Method, Text(u"14.5"), u"psi", u"kPa");
    ASSERT_EQ(result.type(), VarType::Double);
    EXPECT_NEAR(result.toDouble(), 99.97398075094, 1e-9);
    // A number given as a unit is its text, "0", never a unit code.
    EXPECT_EQ(raised([&] { invokeWith(converter, 212, Access::Method, 1.0, std::int16_t{0}, u"psi"); }),
              libraryError(Source, u"The unit \"0\" is unknown!"));
}

}  // namespace
}  // namespace tylhart::test
