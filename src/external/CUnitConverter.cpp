#include "tylhart/external/CUnitConverter.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <span>
#include <unordered_map>
#include <vector>

namespace tylhart {

namespace {

constexpr char16_t ConvertSource[] = u"CUnitConverter.ConvertUnit";

// Name look-ups, built once from the table: exact spellings, and the
// case-folded spellings with every unit that folds to them.
struct UnitIndex {
    std::unordered_map<TextView, const UnitDefinition*> exact;
    std::unordered_map<Text, std::vector<const UnitDefinition*>> folded;

    UnitIndex() {
        for (const UnitDefinition& u : CUnitConverter::units()) {
            exact.emplace(u.name, &u);
            folded[foldCase(u.name)].push_back(&u);
        }
    }
};

const UnitIndex& unitIndex() {
    static const UnitIndex index;
    return index;
}

Text quoted(TextView unit) { return u"\"" + Text(unit) + u"\""; }

// The units Name may mean: its exact spelling, else every unit that equals
// it without regard to case (none, one, or several when ambiguous).
std::span<const UnitDefinition* const> candidatesFor(TextView name) {
    const UnitIndex& index = unitIndex();
    if (auto it = index.exact.find(name); it != index.exact.end()) return {&it->second, 1};
    if (auto it = index.folded.find(foldCase(name)); it != index.folded.end()) return it->second;
    return {};
}

// The unit named Name, or a raise that says why there is none.
const UnitDefinition& resolve(const Text& name) {
    auto candidates = candidatesFor(name);
    if (candidates.empty()) errors::raise(ConvertSource, u"The unit " + quoted(name) + u" is unknown!");
    if (candidates.size() > 1) {
        // Differently cased spellings of other units: guessing one would be
        // off by a factor of a million or more.
        Text names;
        for (const UnitDefinition* u : candidates) {
            if (!names.empty()) names += u" or ";
            names += u->name;
        }
        errors::raise(ConvertSource, u"The unit " + quoted(name) + u" is ambiguous (" + names + u")!");
    }
    return *candidates.front();
}

// Shifting by an offset cancels digits: 32 degF is 0 degC only up to the
// rounding of 459.67 and 273.15, which would leave 2.8e-17 behind. A double
// carries 15 to 16 significant decimal digits, so the result is rounded to
// the 16th significant digit of the largest term; anything finer is noise
// of the shift, not information of the value.
long double withoutCancellationNoise(long double result, std::initializer_list<long double> terms) {
    long double largest = std::fabs(result);
    for (long double t : terms) largest = std::max(largest, std::fabs(t));
    if (largest == 0 || !std::isfinite(largest)) return result;
    const long double quantum = std::pow(10.0L, std::floor(std::log10(largest)) - 15);
    const long double snapped = std::round(result / quantum) * quantum;
    return snapped == 0 ? 0.0L : snapped;  // no "-0" for 273.15 K in degC
}

}  // namespace

const UnitDefinition* CUnitConverter::findUnit(TextView name) {
    auto candidates = candidatesFor(name);
    return candidates.size() == 1 ? candidates.front() : nullptr;
}

double CUnitConverter::ConvertUnit(double value, const Text& fromUnit, const Text& toUnit) const {
    const UnitDefinition& from = resolve(fromUnit);
    const UnitDefinition& to = resolve(toUnit);
    if (from.family != to.family)
        errors::raise(ConvertSource, u"Cannot convert " + quoted(fromUnit) + u" (" + familyName(from.family) +
                                         u") to " + quoted(toUnit) + u" (" + familyName(to.family) + u")!");
    if (&from == &to) return value;
    long double result = (value + from.offset) * from.factor / to.factor - to.offset;
    if (from.offset != 0 || to.offset != 0) result = withoutCancellationNoise(result, {value, from.offset, to.offset});
    return static_cast<double>(result);
}

const ClassInfo& CUnitConverter::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<CUnitConverter>(TypeName)
            .method(u"ConvertUnit", &CUnitConverter::ConvertUnit,
                    {required(u"Value"), required(u"FromUnit"), required(u"ToUnit")})
            .withId(ConvertUnitId)
            .build();
    return info;
}

}  // namespace tylhart
