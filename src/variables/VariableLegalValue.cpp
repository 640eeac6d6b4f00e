// The value calculations of CVariable: a legal value for the variable's
// type, and the recalculation of the value into another engineering unit.
// Neither raises: hosts call them while filling in values and expect an
// answer, so every failure ends the calculation with what it has reached.
#include "tylhart/external/CUnitConverter.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart {

namespace {

// The packed date of 1 January 2000 (day 1, month 1, year byte 100).
constexpr std::int32_t FirstOf2000 = 1 * 65536 + 1 * 256 + 100;

// The runtime's String(n, "0") and Left(text, n): a negative count is its
// "Invalid procedure call or argument".
Text zeros(std::int32_t count) {
    if (count < 0) errors::raise(errors::Runtime::InvalidCall);
    return Text(static_cast<std::size_t>(count), u'0');
}
Text left(const Text& text, std::int32_t count) {
    if (count < 0) errors::raise(errors::Runtime::InvalidCall);
    return text.substr(0, static_cast<std::size_t>(count));
}

// The first enumerator of the set (not the enumerator array that the
// legality test reads: the two are kept apart on purpose).
Variant firstEnumeratorValue(const CType& type) {
    return Variant(checked(checked(type.EnumeratorSet).Item(1)).Value);
}

}  // namespace

// The numeric form of the result (Single, Double, Long, Integer) is how
// hosts learn the value's representation, so each kind keeps its own.
Variant CVariable::GetLegalValue() {
    Variant result = std::int16_t{0};
    try {
        const CType& type = checked(TypeInfo);
        const enumDDVariableType kind = type.Kind();
        // Empty, and also a stored 0 or "", count as no value.
        const bool unset = variantEquals(value_, Variant());
        const auto legal = [this](const Variant& candidate) {
            return IsLegalValue(candidate, ddvTUndefined);
        };
        switch (kind) {
            case ddvTFloat:
                result = unset ? Variant(0.0f) : value_;
                if (!legal(result)) {
                    const Variant min = type.MinValues(0);
                    result = min.isNull() ? Variant(0.0f) : Variant(min.toSingle());
                }
                break;
            case ddvTDouble:
                result = unset ? Variant(0.0) : value_;
                if (!legal(result)) {
                    const Variant min = type.MinValues(0);
                    result = min.isNull() ? Variant(0.0) : Variant(min.toDouble());
                }
                break;
            case ddvTInt:
            case ddvTUnsigned:
                result = unset ? Variant(std::int32_t{0}) : value_;
                if (!legal(result)) {
                    const Variant min = type.MinValues(0);
                    result = min.isNull() ? Variant(std::int32_t{0}) : Variant(min.toLong());
                }
                break;
            case ddvTEnumerator:
                result = unset ? Variant(firstEnumeratorValue(type).toLong()) : value_;
                if (!legal(result)) result = firstEnumeratorValue(type);
                break;
            case ddvTBitEnumerator:
                result = unset ? Variant(std::int32_t{0}) : value_;  // no legality test
                break;
            case ddvTIndex:
                result = unset ? Variant(std::int32_t{0}) : value_;
                if (!legal(result)) result = checked(type.Domain()).Item(1);
                break;
            case ddvTASCII:
            case ddvTPackedASCII:
            case ddvTPassword:
                result = unset ? Variant(Text()) : value_;
                if (!legal(result)) {
                    try {
                        result = left(result.toText(), type.Size());
                    } catch (const Error&) {
                    }
                    if (!legal(result)) result = Text();
                }
                break;
            case ddvTBitString:
                result = unset ? Variant(zeros(type.Size())) : value_;
                if (!legal(result)) result = zeros(type.Size());
                break;
            case ddvTDate:
            case ddvTTime:
            case ddvTDateAndTime:
            case ddvTDuration:
                result = unset ? Variant(FirstOf2000) : value_;
                if (!legal(result)) result = FirstOf2000;
                break;
            case ddvTTimeValue:
                result = unset ? Variant(std::int16_t{0}) : value_;
                if (!legal(result)) result = std::int16_t{0};
                break;
            default:
                break;
        }
    } catch (const Error&) {
    }
    return result;
}

void CVariable::RecalcToUnit(const Text& newUnit) {
    try {
        // A fresh converter per call, reached by its member number.
        const Ref<Object> converter = make<CUnitConverter>();
        // Only decides a branch: a Null default counts as different.
        const bool atDefault = variantEquals(DefaultValue, value_);
        const double value = Value().toDouble();
        Variant args[] = {Variant(value), Variant(VariableUnit), Variant(newUnit)};
        const double converted = invoke(*converter, CUnitConverter::ConvertUnitId, Access::Method, args).toDouble();
        SetValue(converted);
        if (atDefault) DefaultValue = value_;
        VariableUnit = newUnit;
    } catch (const Error&) {
        // Ends quietly; what changed before the failure stays changed.
    }
}

}  // namespace tylhart
