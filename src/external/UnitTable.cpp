// The units of CUnitConverter, grouped by family. Every unit converts to its
// family's coherent SI unit by   si = (value + offset) * factor .
//
// Factors are physical definitions, not measurements, wherever a definition
// exists; each family names its source. Exact decimal definitions are
// written as literals, derived ones as expressions of the exact constants
// below, so that every factor is within a few units in the last place of
// the defined value.
//
// Reference conditions of the liquid-column pressure units (one convention
// throughout):
//   - a water column named without a condition (inH2O, ftH2O, mmH2O, cmH2O,
//     mH2O) is water at 68 degF (20 degC), the HART hosts' default;
//     other temperatures are separate units whose names carry them
//     (inH2O@4degC, inH2O@60degF, ...);
//   - every mercury column (inHg, mmHg, cmHg, mHg) is mercury at 0 degC
//     with the conventional density 13595.1 kg/m3;
//   - every column stands under standard gravity, 9.80665 m/s2.
#include "tylhart/external/CUnitConverter.hpp"

#include <iterator>

namespace tylhart {
namespace {

// ---- Exact constants -------------------------------------------------------

// Standard acceleration of gravity (3rd CGPM, 1901; NIST SP 811, B.8).
constexpr long double g0 = 9.80665L;
// International inch, foot, yard, mile and avoirdupois pound (international
// yard and pound agreement of 1959; NIST SP 811, B.8).
constexpr long double inch = 0.0254L;
constexpr long double foot = 0.3048L;
constexpr long double yard = 0.9144L;
constexpr long double mile = 1609.344L;
constexpr long double pound = 0.45359237L;
constexpr long double poundForce = pound * g0;  // 4.4482216152605 N
// Volumes (NIST SP 811, B.8): the US gallon is 231 cubic inches, the
// imperial gallon 4.54609 litres, the petroleum barrel 42 US gallons.
constexpr long double litre = 1e-3L;  // 12th CGPM, 1964
constexpr long double gallon = 3.785411784e-3L;
constexpr long double impGallon = 4.54609e-3L;
constexpr long double cubicFoot = 0.028316846592L;
constexpr long double cubicInch = 1.6387064e-5L;
constexpr long double cubicYard = 0.764554857984L;
constexpr long double barrel = 0.158987294928L;
// Time (SI brochure, units accepted for use with the SI).
constexpr long double minute = 60.0L;
constexpr long double hour = 3600.0L;
constexpr long double day = 86400.0L;
// Masses derived from the pound (NIST SP 811, B.8).
constexpr long double shortTon = 2000.0L * pound;  // 907.18474 kg
constexpr long double longTon = 2240.0L * pound;   // 1016.0469088 kg

// ---- Liquid columns -------------------------------------------------------

// Density of air-free water at temperature t (degC), from the CIPM formula
// of Tanaka et al., Metrologia 38 (2001) 301, for standard mean ocean water
// at 101.325 kPa.
constexpr long double waterDensity(long double t) {
    constexpr long double a1 = -3.983035L, a2 = 301.797L, a3 = 522528.9L, a4 = 69.34881L, a5 = 999.974950L;
    return a5 * (1.0L - (t + a1) * (t + a1) * (t + a2) / (a3 * (t + a4)));
}
constexpr long double water68F = waterDensity(20.0L) * g0;         // Pa per metre of column
constexpr long double water4C = waterDensity(4.0L) * g0;
constexpr long double water60F = waterDensity(140.0L / 9.0L) * g0;  // 60 degF = 15.5 recurring degC
// Mercury at 0 degC, conventional density (NIST SP 811, B.8: the
// conventional millimetre of mercury is 133.322387415 Pa).
constexpr long double mercury0C = 13595.1L * g0;

using F = UnitFamily;

// Grouped by family; the first unit of each family is its SI unit, except
// for the ratios, whose SI unit, the number one, has no name to display.
constexpr UnitDefinition table[] = {
    // Temperature (kelvin): SI definition of the kelvin; degC = K - 273.15;
    // degF and degR from the Rankine degree of 5/9 K (NIST SP 811, B.9).
    {u"K", F::Temperature, 1.0L},
    {u"degC", F::Temperature, 1.0L, 273.15L},
    {u"degF", F::Temperature, 5.0L / 9.0L, 459.67L},
    {u"degR", F::Temperature, 5.0L / 9.0L},

    // Pressure (pascal): SI prefixes; bar = 1e5 Pa, standard atmosphere
    // 101325 Pa, torr = atm/760 (NIST SP 811, B.8); force-per-area units from
    // the exact pound-force and kilogram-force (kg x standard gravity);
    // liquid columns as stated above.
    {u"Pa", F::Pressure, 1.0L},
    {u"hPa", F::Pressure, 1e2L},
    {u"kPa", F::Pressure, 1e3L},
    {u"MPa", F::Pressure, 1e6L},
    {u"GPa", F::Pressure, 1e9L},
    {u"mbar", F::Pressure, 1e2L},
    {u"bar", F::Pressure, 1e5L},
    {u"atm", F::Pressure, 101325.0L},
    {u"torr", F::Pressure, 101325.0L / 760.0L},
    {u"psi", F::Pressure, poundForce / (inch * inch)},  // 6894.757293168361 Pa
    {u"lb/ft2", F::Pressure, poundForce / (foot * foot)},
    {u"g/cm2", F::Pressure, 1e-3L * g0 / 1e-4L},
    {u"kg/cm2", F::Pressure, g0 / 1e-4L},
    {u"kg/m2", F::Pressure, g0},
    {u"inH2O", F::Pressure, inch * water68F},
    {u"ftH2O", F::Pressure, foot * water68F},
    {u"mmH2O", F::Pressure, 1e-3L * water68F},
    {u"cmH2O", F::Pressure, 1e-2L * water68F},
    {u"mH2O", F::Pressure, water68F},
    {u"inH2O@4degC", F::Pressure, inch * water4C},
    {u"ftH2O@4degC", F::Pressure, foot * water4C},
    {u"mmH2O@4degC", F::Pressure, 1e-3L * water4C},
    {u"cmH2O@4degC", F::Pressure, 1e-2L * water4C},
    {u"mH2O@4degC", F::Pressure, water4C},
    {u"inH2O@60degF", F::Pressure, inch * water60F},
    {u"ftH2O@60degF", F::Pressure, foot * water60F},
    {u"inHg", F::Pressure, inch * mercury0C},
    {u"mmHg", F::Pressure, 1e-3L * mercury0C},
    {u"cmHg", F::Pressure, 1e-2L * mercury0C},
    {u"mHg", F::Pressure, mercury0C},

    // Volume flow (cubic metre per second): the volumes above over the time
    // units above.
    {u"m3/s", F::VolumeFlow, 1.0L},
    {u"m3/min", F::VolumeFlow, 1.0L / minute},
    {u"m3/h", F::VolumeFlow, 1.0L / hour},
    {u"m3/d", F::VolumeFlow, 1.0L / day},
    {u"l/s", F::VolumeFlow, litre},
    {u"l/min", F::VolumeFlow, litre / minute},
    {u"l/h", F::VolumeFlow, litre / hour},
    {u"ml/min", F::VolumeFlow, 1e-3L * litre / minute},
    {u"Ml/d", F::VolumeFlow, 1e6L * litre / day},
    {u"gal/s", F::VolumeFlow, gallon},
    {u"gal/min", F::VolumeFlow, gallon / minute},
    {u"gal/h", F::VolumeFlow, gallon / hour},
    {u"gal/d", F::VolumeFlow, gallon / day},
    {u"Mgal/d", F::VolumeFlow, 1e6L * gallon / day},
    {u"impgal/s", F::VolumeFlow, impGallon},
    {u"impgal/min", F::VolumeFlow, impGallon / minute},
    {u"impgal/h", F::VolumeFlow, impGallon / hour},
    {u"impgal/d", F::VolumeFlow, impGallon / day},
    {u"ft3/s", F::VolumeFlow, cubicFoot},
    {u"ft3/min", F::VolumeFlow, cubicFoot / minute},
    {u"ft3/h", F::VolumeFlow, cubicFoot / hour},
    {u"ft3/d", F::VolumeFlow, cubicFoot / day},
    {u"bbl/s", F::VolumeFlow, barrel},
    {u"bbl/min", F::VolumeFlow, barrel / minute},
    {u"bbl/h", F::VolumeFlow, barrel / hour},
    {u"bbl/d", F::VolumeFlow, barrel / day},

    // Mass flow (kilogram per second): the masses below over the time units.
    {u"kg/s", F::MassFlow, 1.0L},
    {u"kg/min", F::MassFlow, 1.0L / minute},
    {u"kg/h", F::MassFlow, 1.0L / hour},
    {u"kg/d", F::MassFlow, 1.0L / day},
    {u"g/s", F::MassFlow, 1e-3L},
    {u"g/min", F::MassFlow, 1e-3L / minute},
    {u"g/h", F::MassFlow, 1e-3L / hour},
    {u"t/min", F::MassFlow, 1e3L / minute},
    {u"t/h", F::MassFlow, 1e3L / hour},
    {u"t/d", F::MassFlow, 1e3L / day},
    {u"lb/s", F::MassFlow, pound},
    {u"lb/min", F::MassFlow, pound / minute},
    {u"lb/h", F::MassFlow, pound / hour},
    {u"lb/d", F::MassFlow, pound / day},
    {u"STon/min", F::MassFlow, shortTon / minute},
    {u"STon/h", F::MassFlow, shortTon / hour},
    {u"STon/d", F::MassFlow, shortTon / day},
    {u"LTon/h", F::MassFlow, longTon / hour},
    {u"LTon/d", F::MassFlow, longTon / day},

    // Length (metre): SI prefixes; inch, foot, yard and mile as above.
    {u"m", F::Length, 1.0L},
    {u"km", F::Length, 1e3L},
    {u"cm", F::Length, 1e-2L},
    {u"mm", F::Length, 1e-3L},
    {u"um", F::Length, 1e-6L},
    {u"in", F::Length, inch},
    {u"ft", F::Length, foot},
    {u"yd", F::Length, yard},
    {u"mi", F::Length, mile},

    // Time (second): SI prefixes; minute, hour and day accepted for use with
    // the SI.
    {u"s", F::Time, 1.0L},
    {u"ms", F::Time, 1e-3L},
    {u"us", F::Time, 1e-6L},
    {u"min", F::Time, minute},
    {u"h", F::Time, hour},
    {u"d", F::Time, day},

    // Mass (kilogram): SI prefixes; tonne = 1000 kg (units accepted for use
    // with the SI); pound and its multiples as above, ounce = pound/16.
    {u"kg", F::Mass, 1.0L},
    {u"g", F::Mass, 1e-3L},
    {u"mg", F::Mass, 1e-6L},
    {u"t", F::Mass, 1e3L},
    {u"lb", F::Mass, pound},
    {u"oz", F::Mass, pound / 16.0L},
    {u"STon", F::Mass, shortTon},
    {u"LTon", F::Mass, longTon},

    // Density (kilogram per cubic metre): the masses over the volumes above.
    {u"kg/m3", F::Density, 1.0L},
    {u"g/cm3", F::Density, 1e3L},
    {u"g/ml", F::Density, 1e3L},
    {u"g/l", F::Density, 1.0L},
    {u"kg/l", F::Density, 1e3L},
    {u"t/m3", F::Density, 1e3L},
    {u"lb/ft3", F::Density, pound / cubicFoot},
    {u"lb/in3", F::Density, pound / cubicInch},
    {u"lb/gal", F::Density, pound / gallon},
    {u"STon/yd3", F::Density, shortTon / cubicYard},

    // Kinematic viscosity (square metre per second): stokes = 1e-4 m2/s
    // (CGS unit; NIST SP 811, B.8); square feet and inches as above.
    {u"m2/s", F::KinematicViscosity, 1.0L},
    {u"cm2/s", F::KinematicViscosity, 1e-4L},
    {u"mm2/s", F::KinematicViscosity, 1e-6L},
    {u"St", F::KinematicViscosity, 1e-4L},
    {u"cSt", F::KinematicViscosity, 1e-6L},
    {u"ft2/s", F::KinematicViscosity, foot * foot},
    {u"in2/s", F::KinematicViscosity, inch * inch},

    // Dynamic viscosity (pascal second): poise = 0.1 Pa s (CGS unit; NIST
    // SP 811, B.8); pound per foot second from the pound and the foot.
    {u"Pa*s", F::DynamicViscosity, 1.0L},
    {u"mPa*s", F::DynamicViscosity, 1e-3L},
    {u"P", F::DynamicViscosity, 0.1L},
    {u"cP", F::DynamicViscosity, 1e-3L},
    {u"lb/(ft*s)", F::DynamicViscosity, pound / foot},

    // Frequency (hertz): SI; events per minute and per hour from the time
    // units.
    {u"Hz", F::Frequency, 1.0L},
    {u"mHz", F::Frequency, 1e-3L},
    {u"kHz", F::Frequency, 1e3L},
    {u"MHz", F::Frequency, 1e6L},
    {u"1/s", F::Frequency, 1.0L},
    {u"1/min", F::Frequency, 1.0L / minute},
    {u"1/h", F::Frequency, 1.0L / hour},

    // Current (ampere), voltage (volt), resistance (ohm): SI prefixes.
    {u"A", F::Current, 1.0L},
    {u"kA", F::Current, 1e3L},
    {u"mA", F::Current, 1e-3L},
    {u"uA", F::Current, 1e-6L},
    {u"nA", F::Current, 1e-9L},
    {u"V", F::Voltage, 1.0L},
    {u"kV", F::Voltage, 1e3L},
    {u"mV", F::Voltage, 1e-3L},
    {u"uV", F::Voltage, 1e-6L},
    {u"ohm", F::Resistance, 1.0L},
    {u"kohm", F::Resistance, 1e3L},
    {u"Mohm", F::Resistance, 1e6L},

    // Ratio (the number one): per cent, per mille and parts per million and
    // per billion (1e-9), as NIST SP 811, 7.10 reads them.
    {u"%", F::Ratio, 1e-2L},
    {u"\u2030", F::Ratio, 1e-3L},  // per mille sign
    {u"ppm", F::Ratio, 1e-6L},
    {u"ppb", F::Ratio, 1e-9L},

    // Volume (cubic metre): litre = 1e-3 m3; gallons, cubic feet, inches and
    // yards and the barrel as above.
    {u"m3", F::Volume, 1.0L},
    {u"l", F::Volume, litre},
    {u"ml", F::Volume, 1e-3L * litre},
    {u"cm3", F::Volume, 1e-6L},
    {u"hl", F::Volume, 1e2L * litre},
    {u"gal", F::Volume, gallon},
    {u"impgal", F::Volume, impGallon},
    {u"in3", F::Volume, cubicInch},
    {u"ft3", F::Volume, cubicFoot},
    {u"yd3", F::Volume, cubicYard},
    {u"bbl", F::Volume, barrel},

    // Velocity (metre per second): the lengths over the time units; knot =
    // one nautical mile (1852 m) per hour (NIST SP 811, B.8).
    {u"m/s", F::Velocity, 1.0L},
    {u"mm/s", F::Velocity, 1e-3L},
    {u"m/h", F::Velocity, 1.0L / hour},
    {u"km/h", F::Velocity, 1e3L / hour},
    {u"ft/s", F::Velocity, foot},
    {u"ft/min", F::Velocity, foot / minute},
    {u"in/s", F::Velocity, inch},
    {u"in/min", F::Velocity, inch / minute},
    {u"mph", F::Velocity, mile / hour},
    {u"kn", F::Velocity, 1852.0L / hour},
};

}  // namespace

std::span<const UnitDefinition> CUnitConverter::units() noexcept { return table; }

const char16_t* familyName(UnitFamily family) noexcept {
    switch (family) {
        case F::Temperature: return u"temperature";
        case F::Pressure: return u"pressure";
        case F::VolumeFlow: return u"volume flow";
        case F::MassFlow: return u"mass flow";
        case F::Length: return u"length";
        case F::Time: return u"time";
        case F::Mass: return u"mass";
        case F::Density: return u"density";
        case F::KinematicViscosity: return u"kinematic viscosity";
        case F::DynamicViscosity: return u"dynamic viscosity";
        case F::Frequency: return u"frequency";
        case F::Current: return u"current";
        case F::Voltage: return u"voltage";
        case F::Resistance: return u"resistance";
        case F::Ratio: return u"ratio";
        case F::Volume: return u"volume";
        case F::Velocity: return u"velocity";
    }
    return u"unknown";
}

}  // namespace tylhart
