// Internal to the Variant sources: the pieces of the Automation runtime's
// rules (locale 0x0409) that more than one of them needs. Not installed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tylhart/core/Error.hpp"
#include "tylhart/core/Variant.hpp"

namespace tylhart::rules {

[[noreturn]] inline void typeMismatch() { errors::raise(errors::Runtime::TypeMismatch); }
[[noreturn]] inline void overflow() { errors::raise(errors::Runtime::Overflow); }

// ---- Characters ----

// The runtime's blanks: every Unicode space character, including the
// no-break space U+00A0 and the ideographic space U+3000.
bool isBlank(char16_t c) noexcept;
bool isAsciiDigit(char16_t c) noexcept;
// A text ends at its first NUL, as the runtime's parsers read it.
TextView upToNul(TextView text) noexcept;

// ---- Numbers written as text ----

// A number text as the runtime's parser reads it: either a decimal
// (significant digits and a power of ten) or an &H/&O literal.
struct NumberText {
    bool negative = false;
    bool radix = false;
    std::uint64_t radixValue = 0;  // saturates at 2^64 - 1 for absurdly long literals
    std::string digits;            // significant digits, no leading or trailing zeros
    int exponent = 0;              // value = digits * 10^exponent
};

// nullopt when the text is not a number at all (Type mismatch).
std::optional<NumberText> readNumberText(TextView text);

// The Double the runtime makes of a decimal number text; infinite when it is
// too large. Not always the nearest Double: see VariantParse.cpp.
double runtimeDouble(const NumberText& number);

// ---- Conversions shared by conversion and comparison ----

// Largest magnitude that still converts to Single (a little above the
// largest Single, up to where rounding would reach infinity).
inline constexpr double SingleLimit = 3.402823567797336e38;

// Double to Currency: the exact value times 10,000, rounded half to even.
Currency currencyFromDouble(double value);
double doubleFromCurrency(Currency value) noexcept;
// Double to Single; raises Overflow beyond SingleLimit.
float singleFromDouble(double value);

// ---- Dates ----

inline constexpr double FirstDate = -657434.0;  // 1 January 100
inline constexpr double LastDate = 2958465.0;   // 31 December 9999

struct CivilDate {
    int year = 1899, month = 12, day = 30;
};

long long serialFromCivil(int year, int month, int day) noexcept;
CivilDate civilFromSerial(long long serial) noexcept;
bool isValidCivil(int year, int month, int day) noexcept;

// nullopt when the text is not a date (Type mismatch). Texts that name no
// year take the year currentYear() gives; it is asked only then.
std::optional<double> readDateText(TextView text, int (*currentYear)());

// ---- Texts ----

// The order of two texts under the locale's collation with no flags:
// negative, zero or positive. Only identical texts compare equal.
int collate(TextView a, TextView b) noexcept;

}  // namespace tylhart::rules
