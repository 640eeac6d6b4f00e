// The legality tests of CVariable. They are deliberately uneven: some check
// hard, some check nothing, some trap conversion errors and some let them
// through. Hosts rely on each of these answers, weak ones included, so none
// of the tests is made stronger or weaker here.
#include <cmath>
#include <limits>

#include "tylhart/variables/CVariable.hpp"

namespace tylhart {

namespace {

// True when the conversion succeeds; any error of it is the answer False.
template <class Convert>
bool converts(Convert&& convert) {
    try {
        convert();
        return true;
    } catch (const Error&) {
        return false;
    }
}

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Inclusive on both sides; Null on a side leaves that side open, both Null
// admit everything. Both bounds are converted before either is compared, so
// a bad upper bound raises even when x already fails the lower one.
template <class T>
bool rangeAdmits(const Variant& min, const Variant& max, T x, T (*bound)(const Variant&)) {
    if (min.isNull() && max.isNull()) return true;
    if (min.isNull()) return x <= bound(max);
    if (max.isNull()) return bound(min) <= x;
    const T low = bound(min), high = bound(max);
    return low <= x && x <= high;
}

// Bounds of the float kind go through a double first, then single precision.
float singleBound(const Variant& v) { return Variant(v.toDouble()).toSingle(); }
double doubleBound(const Variant& v) { return v.toDouble(); }

// Currency holds at most 15 integer digits and 4 decimals, which a double
// carries exactly enough for the comparison with a double bound.
double currencyAsDouble(Currency c) { return static_cast<double>(c.scaled) / static_cast<double>(Currency::scale); }

}  // namespace

// ---- Elementary tests ----

bool CVariable::IsFloat(Variant& testValue) {
    if (testValue.isMissing()) testValue = Value();
    return converts([&] { testValue.toSingle(); });
}

bool CVariable::IsDouble(Variant& testValue) {
    if (testValue.isMissing()) testValue = Value();
    return converts([&] { testValue.toDouble(); });
}

// Sizes 1 and 2 get no narrower bound than 32 bits; kept weak on purpose.
bool CVariable::IsInteger(Variant& testValue, std::int32_t& testSize) const {
    if (testSize >= 4) return true;
    return converts([&] { testValue.toLong(); });
}

// No check at all: callers rely on this answer.
bool CVariable::IsUnsigned(Variant&, std::int32_t&) const { return true; }

bool CVariable::IsString(Variant& testValue, std::int32_t& testSize) {
    if (testValue.isMissing()) testValue = Value();
    if (testSize < 0) testSize = checked(TypeInfo).Size();
    Text text;
    if (!converts([&] { text = testValue.toText(); })) return false;
    return static_cast<std::int64_t>(text.size()) <= testSize;
}

// Traps nothing: a value that cannot become text, or a size beyond the
// 16-bit count, reaches the caller as the runtime's error.
bool CVariable::IsBitString(Variant& testValue, std::int32_t& testSize) {
    if (testValue.isMissing()) testValue = Value();
    if (testSize < 0) testSize = checked(TypeInfo).Size();
    // Assigning Null to text is the runtime's "Invalid use of Null".
    if (testValue.isNull()) errors::raise(errors::Runtime::InvalidUseOfNull);
    const Text text = testValue.toText();
    if (testSize > std::numeric_limits<std::int16_t>::max() || testSize < std::numeric_limits<std::int16_t>::min())
        errors::raise(errors::Runtime::Overflow);
    for (std::int32_t position = 1; position <= testSize; ++position) {
        // A position past the end reads as an empty character and fails.
        if (static_cast<std::size_t>(position) > text.size()) return false;
        const char16_t c = text[static_cast<std::size_t>(position - 1)];
        if (c != u'0' && c != u'1') return false;
    }
    return static_cast<std::int64_t>(text.size()) <= testSize;
}

// A packed date: day * 65536 + month * 256 + (year - 1900).
bool CVariable::IsDate(Variant& testValue) {
    if (testValue.isMissing()) testValue = Value();
    std::int32_t n = 0;
    if (!converts([&] { n = testValue.toLong(); })) return false;
    const int year = 1900 + n % 256;  // the remainder takes the sign of n
    const double high = std::floor(static_cast<double>(n) / 256.0);
    const int month = static_cast<int>(std::fmod(high, 256.0));
    const double day = std::floor(high / 256.0);
    if (day >= 256) return false;
    switch (month) {
        case 1: case 3: case 5: case 7: case 8: case 10: case 12:
            return day >= 1 && day <= 31;
        case 4: case 6: case 9: case 11:
            return day >= 1 && day <= 30;
        case 2:
            return day >= 1 && day <= (isLeapYear(year) ? 29 : 28);
        default:
            return false;
    }
}

// No check at all: callers rely on this answer.
bool CVariable::IsTime(Variant&) const { return true; }

// ---- The test by kind ----

bool CVariable::inRanges(const Variant& testValue, enumDDVariableType kind) const {
    const CType& type = checked(TypeInfo);
    const std::int16_t last = type.MaxRangeNo();
    // No range: every value of the kind is legal. Index 0 is visited even
    // when the ranges are counted from 1.
    bool legal = last < 0;
    if (kind == ddvTFloat) {
        const float x = testValue.toSingle();
        for (std::int32_t i = 0; i <= last; ++i)
            if (rangeAdmits<float>(type.MinValues(i), type.MaxValues(i), x, singleBound)) legal = true;
    } else if (kind == ddvTDouble) {
        const double x = testValue.toDouble();
        for (std::int32_t i = 0; i <= last; ++i)
            if (rangeAdmits<double>(type.MinValues(i), type.MaxValues(i), x, doubleBound)) legal = true;
    } else {
        const double x = currencyAsDouble(testValue.toCurrency());
        for (std::int32_t i = 0; i <= last; ++i)
            if (rangeAdmits<double>(type.MinValues(i), type.MaxValues(i), x, doubleBound)) legal = true;
    }
    return legal;
}

// The enumerator array is indexed by the enumerator value itself. The
// integer conversion of the index is made whatever the comparisons say, so
// its error (Null, text, beyond 32 bits) reaches the caller.
bool CVariable::isEnumeratorValue(const Variant& testValue) const {
    const CType& type = checked(TypeInfo);
    const bool inBounds = compare(testValue, Variant(std::int32_t{0})) != Comparison::Less &&
                          compare(testValue, Variant(type.MaxEnumIndex())) != Comparison::Greater &&
                          !testValue.isNull();
    const std::int32_t index = testValue.toLong();
    if (!inBounds) return false;
    const Ref<CEnumerator> enumerator = type.Enumerators(index);
    return enumerator && variantEquals(Variant(enumerator->Value), testValue);
}

// Traps nothing of its own: conversion errors of the integer kinds and the
// errors of IsBitString and of the type's accessors reach the caller.
bool CVariable::IsLegalValue(Variant& testValue, enumDDVariableType& testType) {
    if (testValue.isMissing()) testValue = Value();
    if (testType == ddvTUndefined) testType = checked(TypeInfo).Kind();
    // Taken as unsigned: any negative kind is above 15 too.
    if (static_cast<std::uint32_t>(testType) > 15u) return false;
    switch (testType) {
        case ddvTFloat:
            return IsFloat(testValue) && inRanges(testValue, ddvTFloat);
        case ddvTDouble:
            return IsDouble(testValue) && inRanges(testValue, ddvTDouble);
        case ddvTInt:
            return IsInteger(testValue, checked(TypeInfo).Size()) && inRanges(testValue, ddvTInt);
        case ddvTUnsigned:
            return IsUnsigned(testValue, checked(TypeInfo).Size()) && inRanges(testValue, ddvTUnsigned);
        case ddvTEnumerator:
            return isEnumeratorValue(testValue);
        case ddvTBitEnumerator:
            // The bit enumerators are not consulted.
            return IsInteger(testValue, checked(TypeInfo).Size());
        case ddvTIndex:
            return IsUnsigned(testValue, checked(TypeInfo).Size()) &&
                   checked(checked(TypeInfo).Domain()).IsInSet(testValue);
        case ddvTASCII:
        case ddvTPackedASCII:
        case ddvTPassword:
            return IsString(testValue, checked(TypeInfo).Size());
        case ddvTBitString:
            return IsBitString(testValue, checked(TypeInfo).Size());
        case ddvTDate:
            return IsDate(testValue);
        case ddvTTime:
        case ddvTDateAndTime:
        case ddvTDuration:
            return IsTime(testValue);
        default:  // ddvTTimeValue
            return IsUnsigned(testValue, 4);
    }
}

// ---- Forms without write-back ----

bool CVariable::IsLegalValue(const Variant& testValue, enumDDVariableType testType) {
    Variant value = testValue;
    return IsLegalValue(value, testType);
}
bool CVariable::IsFloat(const Variant& testValue) {
    Variant value = testValue;
    return IsFloat(value);
}
bool CVariable::IsDouble(const Variant& testValue) {
    Variant value = testValue;
    return IsDouble(value);
}
bool CVariable::IsInteger(const Variant& testValue, std::int32_t testSize) const {
    Variant value = testValue;
    return IsInteger(value, testSize);
}
bool CVariable::IsUnsigned(const Variant& testValue, std::int32_t testSize) const {
    Variant value = testValue;
    return IsUnsigned(value, testSize);
}
bool CVariable::IsString(const Variant& testValue, std::int32_t testSize) {
    Variant value = testValue;
    return IsString(value, testSize);
}
bool CVariable::IsBitString(const Variant& testValue, std::int32_t testSize) {
    Variant value = testValue;
    return IsBitString(value, testSize);
}
bool CVariable::IsDate(const Variant& testValue) {
    Variant value = testValue;
    return IsDate(value);
}
bool CVariable::IsTime(const Variant& testValue) const {
    Variant value = testValue;
    return IsTime(value);
}

}  // namespace tylhart
