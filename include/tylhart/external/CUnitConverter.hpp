// CUnitConverter: the library's own engineering-unit converter, reached late
// bound by member number (ConvertUnit answers 212) and typed from C++.
//
// Units are named as HART hosts display them ("degC", "kPa", "inH2O",
// "m3/h", "gal/min", ...). Each unit belongs to one family and converts to
// the family's coherent SI unit by   si = (value + offset) * factor ;
// only the temperatures carry an offset. The table with the source of every
// factor family is in src/external/UnitTable.cpp.
#pragma once

#include <cstdint>
#include <span>

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

// A family holds the units that convert into each other.
enum class UnitFamily : std::uint8_t {
    Temperature,
    Pressure,
    VolumeFlow,
    MassFlow,
    Length,
    Time,
    Mass,
    Density,
    KinematicViscosity,
    DynamicViscosity,
    Frequency,
    Current,
    Voltage,
    Resistance,
    Ratio,
    Volume,
    Velocity,
};

// The family's name as error descriptions write it ("temperature").
const char16_t* familyName(UnitFamily family) noexcept;

struct UnitDefinition {
    const char16_t* name;  // as hosts display it; the exact spelling
    UnitFamily family;
    // Kept in extended precision, and the arithmetic with them, so that
    // defined relations come out exact once rounded to a double: 0 degC is
    // 32 degF and 1 ft is 12 in, not 31.999999999999943 and 12.000000000000002.
    long double factor;         // SI units per unit (after the offset)
    long double offset = 0.0L;  // added before the factor (temperatures only)
};

class CUnitConverter final : public Object {
    TYLHART_CLASS(CUnitConverter)
public:
    // The member number by which callers reach ConvertUnit.
    static constexpr DispId ConvertUnitId = 212;

    // Value expressed in FromUnit, converted to ToUnit. Both units must be
    // known and of one family; otherwise E_INVALIDARG with the Source
    // "CUnitConverter.ConvertUnit" and a description naming the unit(s).
    // Converting a unit into itself returns Value unchanged.
    double ConvertUnit(double value, const Text& fromUnit, const Text& toUnit) const;

    // Every unit, grouped by family, in table order.
    static std::span<const UnitDefinition> units() noexcept;

    // A unit name resolves by its exact spelling first; failing that, by a
    // comparison without regard to case when exactly one unit matches
    // ("DEGC" is degC, but "MHZ" could be MHz or mHz and resolves to
    // nothing). nullptr for an unknown or ambiguous name.
    static const UnitDefinition* findUnit(TextView name);
};

}  // namespace tylhart
