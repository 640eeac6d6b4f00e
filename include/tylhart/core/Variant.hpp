// Variant: the dynamically typed value of the Automation runtime, with its
// conversions, text forms and comparison under locale 0x0409 (English, US).
#pragma once

#include <compare>
#include <cstdint>
#include <variant>
#include <vector>

#include "tylhart/core/Object.hpp"
#include "tylhart/core/Text.hpp"

namespace tylhart {

// Kinds, numbered as the Automation VARTYPE of the same kind.
enum class VarType : std::uint16_t {
    Empty = 0,
    Null = 1,
    Integer = 2,  // 16-bit
    Long = 3,     // 32-bit
    Single = 4,
    Double = 5,
    Currency = 6,
    Date = 7,
    String = 8,
    Object = 9,
    Error = 10,  // only as the "missing argument" marker
    Boolean = 11,
    Byte = 17,
    ByteArray = 0x2011,
};

Text typeName(VarType type);  // "Integer", "String", ... as scripting clients know them

// 64-bit fixed point with four decimals: the value times 10,000.
struct Currency {
    std::int64_t scaled = 0;
    static constexpr std::int64_t scale = 10000;
    friend bool operator==(Currency, Currency) = default;
};

// Days since 30 December 1899; the fraction is the time of day.
struct Date {
    double days = 0.0;
    friend bool operator==(Date, Date) = default;
};

struct Null {
    friend bool operator==(Null, Null) = default;
};
struct Missing {  // an optional argument that the caller left out
    friend bool operator==(Missing, Missing) = default;
};

using ByteArray = std::vector<std::uint8_t>;

// Outcome of the runtime's comparison: Null when either side is Null.
enum class Comparison { Less, Equal, Greater, Null };

class Variant {
public:
    Variant() = default;
    Variant(Null) : value_(Null{}) {}
    Variant(Missing) : value_(Missing{}) {}
    Variant(std::int16_t v) : value_(v) {}
    Variant(std::int32_t v) : value_(v) {}
    Variant(float v) : value_(v) {}
    Variant(double v) : value_(v) {}
    Variant(Currency v) : value_(v) {}
    Variant(Date v) : value_(v) {}
    Variant(Text v) : value_(std::move(v)) {}
    Variant(const char16_t* v) : value_(Text(v)) {}
    Variant(bool v) : value_(v) {}
    Variant(std::uint8_t v) : value_(v) {}
    Variant(ByteArray v) : value_(std::move(v)) {}
    Variant(Ref<Object> v) : value_(std::move(v)) {}
    template <class T>
        requires std::derived_from<T, Object>
    Variant(Ref<T> v) : value_(Ref<Object>(std::move(v))) {}
    Variant(std::nullptr_t) : value_(Ref<Object>()) {}  // Nothing

    VarType type() const noexcept;
    bool isEmpty() const noexcept { return value_.index() == 0; }
    bool isNull() const noexcept { return std::holds_alternative<Null>(value_); }
    bool isMissing() const noexcept { return std::holds_alternative<Missing>(value_); }
    bool isObject() const noexcept { return std::holds_alternative<Ref<Object>>(value_); }
    bool isString() const noexcept { return std::holds_alternative<Text>(value_); }
    bool isNumeric() const noexcept;  // Integer..Currency, Date excluded; Boolean and Byte included

    // Direct access to the stored alternative; nullptr when it holds another kind.
    template <class T>
    const T* get() const noexcept { return std::get_if<T>(&value_); }

    // The runtime's conversion to another kind (VariantChangeTypeEx, 0x0409,
    // no flags): raises Type mismatch (13) or Overflow (6); Null converts to
    // nothing but Null. To String a Boolean gives "-1" or "0"; toText() gives
    // the rendering "True" or "False".
    Variant changeType(VarType target) const;

    // The same conversions, to one kind each.
    std::int16_t toInteger() const;
    std::int32_t toLong() const;
    float toSingle() const;
    double toDouble() const;
    Currency toCurrency() const;
    Date toDate() const;
    bool toBoolean() const;
    std::uint8_t toByte() const;
    // The text form callers see in renderings: the runtime's conversion to
    // text, with Booleans as True/False. Empty gives the empty text; Null
    // raises Type mismatch, a Date outside the calendar Invalid procedure
    // call (5).
    Text toText() const&;
    Text toText() &&;  // moves a held text out instead of copying it
    // An object reference; Empty and Nothing give Nothing, others raise 13.
    Ref<Object> toObject() const;

    // Exact identity of kind and value (used by tests and by the dispatch
    // layer), not the runtime comparison.
    friend bool operator==(const Variant&, const Variant&);

private:
    std::variant<std::monostate, Null, std::int16_t, std::int32_t, float, double, Currency, Date,
                 Text, Ref<Object>, Missing, bool, std::uint8_t, ByteArray>
        value_;
};

// The runtime's comparison (VarCmp, locale 0x0409, no flags): Empty equals
// 0 and the empty text, numbers compare by value across kinds (at single
// precision when one side is a Single), any number sorts before any text,
// texts sort by the locale's collation and are equal only when identical,
// and Null on either side gives Null.
Comparison compare(const Variant& a, const Variant& b);
// Where a comparison only decides a branch: Null counts as not equal.
bool variantEquals(const Variant& a, const Variant& b);
// Where the outcome is stored as a Boolean: Null raises Invalid use of Null.
bool variantEqualsStrict(const Variant& a, const Variant& b);
// A variant used as the condition of a branch: Null counts as False, other
// values convert to Boolean (a text that is no Boolean raises 13).
bool conditionHolds(const Variant& condition);

// Text forms of the scalar kinds, as the runtime writes them: 15 (Double)
// or 7 (Single) significant digits, in 1E+30 form when the exponent is below
// -4 or reaches the digit count, plain otherwise;
// M/d/yyyy h:mm:ss AM with the date left out on day 0 and the time left
// out at midnight, so Date 0 is "12:00:00 AM". formatDate raises Invalid
// procedure call (5) outside 1 January 100 .. 31 December 9999.
Text formatDouble(double v);
Text formatSingle(float v);
Text formatCurrency(Currency v);
Text formatDate(Date v);

// The classic leading-number reader (Val): the number a text begins with,
// skipping blanks, tabs and line feeds anywhere; the decimal point is always
// the full stop. A text without a leading number gives 0; a number beyond
// the Double range raises Overflow.
double leadingNumber(TextView text);

}  // namespace tylhart
