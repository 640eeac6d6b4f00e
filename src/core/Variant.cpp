// Variant and its conversions between kinds, following the OLE Automation
// runtime under locale 0x0409 (VariantChangeTypeEx, no flags). The rules
// are pinned by tests/data/automation_oracle.tsv; docs/variant-rules.md
// lists them and the few places where the library answers differently.
#include "tylhart/core/Variant.hpp"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "VariantRules.hpp"
#include "tylhart/core/Clock.hpp"

namespace tylhart {

using rules::overflow;
using rules::typeMismatch;

Text typeName(VarType t) {
    switch (t) {
        case VarType::Empty: return u"Empty";
        case VarType::Null: return u"Null";
        case VarType::Integer: return u"Integer";
        case VarType::Long: return u"Long";
        case VarType::Single: return u"Single";
        case VarType::Double: return u"Double";
        case VarType::Currency: return u"Currency";
        case VarType::Date: return u"Date";
        case VarType::String: return u"String";
        case VarType::Object: return u"Object";
        case VarType::Error: return u"Error";
        case VarType::Boolean: return u"Boolean";
        case VarType::Byte: return u"Byte";
        case VarType::ByteArray: return u"Byte()";
    }
    return u"Unknown";
}

namespace rules {

namespace {
__extension__ typedef unsigned __int128 UInt128;  // GCC and Clang; exact products of 53 and 14 bits
}

double doubleFromCurrency(Currency value) noexcept {
    return static_cast<double>(value.scaled) / static_cast<double>(Currency::scale);
}

// Exact: the Double is m * 2^e with an integer m of at most 53 bits, so
// m * 10,000 fits in 128 bits and is shifted into place with rounding half
// to even on the bits shifted out.
Currency currencyFromDouble(double value) {
    if (!(std::fabs(value) < 1e15)) overflow();  // also NaN and the infinities
    if (value == 0.0) return Currency{0};
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);
    const auto mantissa = static_cast<std::int64_t>(std::ldexp(fraction, 53));
    exponent -= 53;  // |value| = mantissa * 2^exponent, exponent < 0 below 1e15
    const UInt128 product = static_cast<UInt128>(mantissa) * Currency::scale;
    const int shift = -exponent;
    UInt128 units = 0;
    if (shift < 128) {
        units = product >> shift;
        const UInt128 rest = product - (units << shift);
        const UInt128 half = static_cast<UInt128>(1) << (shift - 1);
        if (rest > half || (rest == half && (units & 1) != 0)) ++units;
    }
    const auto limit = static_cast<UInt128>(std::numeric_limits<std::int64_t>::max());
    if (units > limit + (value < 0 ? 1 : 0)) overflow();
    const auto magnitude = static_cast<std::uint64_t>(units);
    return Currency{value < 0 ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude)};
}

float singleFromDouble(double value) {
    if (std::fabs(value) > SingleLimit) overflow();  // NaN passes and stays NaN
    return static_cast<float>(value);
}

}  // namespace rules

// ---- Variant basics ----

VarType Variant::type() const noexcept {
    static constexpr VarType kinds[] = {VarType::Empty,    VarType::Null,   VarType::Integer, VarType::Long,
                                        VarType::Single,   VarType::Double, VarType::Currency, VarType::Date,
                                        VarType::String,   VarType::Object, VarType::Error,    VarType::Boolean,
                                        VarType::Byte,     VarType::ByteArray};
    return kinds[value_.index()];
}

bool Variant::isNumeric() const noexcept {
    switch (type()) {
        case VarType::Integer: case VarType::Long: case VarType::Single: case VarType::Double:
        case VarType::Currency: case VarType::Boolean: case VarType::Byte:
            return true;
        default:
            return false;
    }
}

bool operator==(const Variant& a, const Variant& b) { return a.value_ == b.value_; }

namespace {

// ---- Conversion helpers ----

// Null converts to nothing but Null; objects, the missing-argument marker
// and byte arrays convert to no scalar kind.
void requireScalar(const Variant& v) {
    if (v.isNull() || v.isObject() || v.isMissing() || v.type() == VarType::ByteArray) typeMismatch();
}

template <class Int>
Int checkedInteger(std::int64_t v) {
    if (v < std::numeric_limits<Int>::min() || v > std::numeric_limits<Int>::max()) overflow();
    return static_cast<Int>(v);
}

// Floating point to an integer kind: rounded half to even. NaN overflows:
// the runtime's answers for NaN (-1, 2147483647, 255) are whatever the
// processor's conversion leaves behind, not values a caller could use.
template <class Int>
Int integerFromDouble(double v) {
    if (std::isnan(v)) overflow();
    const double rounded = std::nearbyint(v);  // the default rounding mode is to nearest even
    if (rounded < static_cast<double>(std::numeric_limits<Int>::min()) ||
        rounded > static_cast<double>(std::numeric_limits<Int>::max()))
        overflow();
    return static_cast<Int>(rounded);
}

std::int64_t integerFromCurrency(Currency c) {
    std::int64_t whole = c.scaled / Currency::scale;
    const std::int64_t rest = c.scaled % Currency::scale;
    const std::int64_t half = Currency::scale / 2;
    if (rest > half || (rest == half && (whole & 1) != 0)) ++whole;
    else if (rest < -half || (rest == -half && (whole & 1) != 0)) --whole;
    return whole;
}

// A decimal number text to an integer kind, exactly: the decimal digits are
// rounded half to even, however many there are. (The runtime rounds texts
// below 0.1 by their first significant digit, so "0.06" would give 1; the
// library rounds them to 0.)
template <class Int>
Int integerFromDecimal(const rules::NumberText& n) {
    const int integerDigits = static_cast<int>(n.digits.size()) + n.exponent;
    if (integerDigits > 19) overflow();
    std::uint64_t magnitude = 0;
    for (int k = 0; k < integerDigits; ++k) {
        const auto index = static_cast<std::size_t>(k);
        magnitude = magnitude * 10 + (index < n.digits.size() ? static_cast<unsigned>(n.digits[index] - '0') : 0u);
    }
    if (integerDigits >= 0 && static_cast<std::size_t>(integerDigits) < n.digits.size()) {
        const char first = n.digits[static_cast<std::size_t>(integerDigits)];
        const bool more = static_cast<std::size_t>(integerDigits) + 1 < n.digits.size();
        if (first > '5' || (first == '5' && (more || (magnitude & 1) != 0))) ++magnitude;
    }
    if (magnitude > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) overflow();
    const auto value = static_cast<std::int64_t>(magnitude);
    return checkedInteger<Int>(n.negative ? -value : value);
}

// &H and &O literals keep their bit pattern in the target's width: &HFFFF
// is -1 as an Integer but 65535 as a Long. Signs before them are ignored.
template <class Int>
Int integerFromRadix(std::uint64_t value) {
    using Unsigned = std::make_unsigned_t<Int>;
    if (value > std::numeric_limits<Unsigned>::max()) overflow();
    return static_cast<Int>(static_cast<Unsigned>(value));
}

// For the floating point kinds and Boolean a literal is a Long, and the
// runtime accepts at most &H80000000 (which is the most negative Long).
double doubleFromRadix(std::uint64_t value) {
    if (value > 0x80000000u) overflow();
    return static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
}

rules::NumberText numberOf(const Text& text) {
    auto n = rules::readNumberText(text);
    if (!n) typeMismatch();
    return *n;
}

double doubleFromNumber(const rules::NumberText& n) {
    if (n.radix) return doubleFromRadix(n.radixValue);
    const double value = rules::runtimeDouble(n);
    if (std::isinf(value)) overflow();
    return value;
}

double doubleFromText(const Text& text) { return doubleFromNumber(numberOf(text)); }

template <class Int>
Int integerFromText(const Text& text) {
    const rules::NumberText n = numberOf(text);
    return n.radix ? integerFromRadix<Int>(n.radixValue) : integerFromDecimal<Int>(n);
}

// A text read as a Single is also refused when it is not zero but below the
// smallest Single (the runtime calls that an overflow as well).
float singleFromText(const Text& text) {
    const double value = doubleFromText(text);
    const double smallest = std::numeric_limits<float>::denorm_min();
    if (value != 0.0 && std::fabs(value) < smallest) overflow();
    return rules::singleFromDouble(value);
}

Currency currencyFromText(const Text& text) {
    const rules::NumberText n = numberOf(text);
    if (n.radix) overflow();  // the runtime takes no literal as Currency
    return rules::currencyFromDouble(doubleFromNumber(n));
}

// True and False in any case, and the literals #TRUE# and #FALSE# exactly;
// otherwise a number, true when not zero.
bool booleanFromText(const Text& text) {
    if (equalsIgnoringCase(text, u"True") || text == u"#TRUE#") return true;
    if (equalsIgnoringCase(text, u"False") || text == u"#FALSE#") return false;
    return doubleFromText(text) != 0.0;
}

// Doubles and Longs outside the calendar overflow; Singles and Currency
// amounts become Dates unchecked, as in the runtime (their text then fails).
double checkedDate(double v) {
    if (v <= rules::FirstDate - 1.0 || v >= rules::LastDate + 1.0) overflow();  // NaN passes
    return v;
}

// ---- Conversions ----

template <class Int>
Int toIntegerKind(const Variant& v) {
    requireScalar(v);
    switch (v.type()) {
        case VarType::Empty: return 0;
        case VarType::Integer: return checkedInteger<Int>(*v.get<std::int16_t>());
        case VarType::Long: return checkedInteger<Int>(*v.get<std::int32_t>());
        case VarType::Byte: return checkedInteger<Int>(*v.get<std::uint8_t>());
        case VarType::Boolean: return *v.get<bool>() ? static_cast<Int>(-1) : Int{0};  // True is all bits set
        case VarType::Single: return integerFromDouble<Int>(*v.get<float>());
        case VarType::Double: return integerFromDouble<Int>(*v.get<double>());
        case VarType::Date: return integerFromDouble<Int>(v.get<Date>()->days);
        case VarType::Currency: return checkedInteger<Int>(integerFromCurrency(*v.get<Currency>()));
        case VarType::String: return integerFromText<Int>(*v.get<Text>());
        default: typeMismatch();
    }
}

// The conversion to String (no flags): Booleans as -1 and 0.
Text plainText(const Variant& v) {
    if (auto b = v.get<bool>()) return *b ? u"-1" : u"0";
    return v.toText();
}

}  // namespace

std::int16_t Variant::toInteger() const { return toIntegerKind<std::int16_t>(*this); }
std::int32_t Variant::toLong() const { return toIntegerKind<std::int32_t>(*this); }
std::uint8_t Variant::toByte() const { return toIntegerKind<std::uint8_t>(*this); }

double Variant::toDouble() const {
    requireScalar(*this);
    switch (type()) {
        case VarType::Empty: return 0.0;
        case VarType::Integer: return *get<std::int16_t>();
        case VarType::Long: return *get<std::int32_t>();
        case VarType::Byte: return *get<std::uint8_t>();
        case VarType::Boolean: return *get<bool>() ? -1.0 : 0.0;
        case VarType::Single: return *get<float>();
        case VarType::Double: return *get<double>();
        case VarType::Date: return get<Date>()->days;
        case VarType::Currency: return rules::doubleFromCurrency(*get<Currency>());
        case VarType::String: return doubleFromText(*get<Text>());
        default: typeMismatch();
    }
}

float Variant::toSingle() const {
    if (auto f = get<float>()) return *f;
    if (auto s = get<Text>()) return singleFromText(*s);
    return rules::singleFromDouble(toDouble());
}

Currency Variant::toCurrency() const {
    requireScalar(*this);
    switch (type()) {
        case VarType::Currency: return *get<Currency>();
        case VarType::String: return currencyFromText(*get<Text>());
        case VarType::Single: case VarType::Double: case VarType::Date: return rules::currencyFromDouble(toDouble());
        default: return Currency{static_cast<std::int64_t>(toLong()) * Currency::scale};
    }
}

Date Variant::toDate() const {
    requireScalar(*this);
    switch (type()) {
        case VarType::Date: return *get<Date>();
        case VarType::String: {
            auto date = rules::readDateText(*get<Text>(), &currentYear);
            if (!date) typeMismatch();
            return Date{*date};
        }
        case VarType::Single: case VarType::Currency: return Date{toDouble()};
        default: return Date{checkedDate(toDouble())};
    }
}

bool Variant::toBoolean() const {
    requireScalar(*this);
    switch (type()) {
        case VarType::Boolean: return *get<bool>();
        case VarType::String: return booleanFromText(*get<Text>());
        case VarType::Currency: return get<Currency>()->scaled != 0;
        default: return toDouble() != 0.0;  // NaN is not zero, so true
    }
}

Text Variant::toText() && {
    if (Text* text = std::get_if<Text>(&value_)) return std::move(*text);
    return std::as_const(*this).toText();
}

Text Variant::toText() const& {
    requireScalar(*this);
    switch (type()) {
        case VarType::Empty: return Text();
        case VarType::Integer: return decimal(*get<std::int16_t>());
        case VarType::Long: return decimal(*get<std::int32_t>());
        case VarType::Byte: return decimal(*get<std::uint8_t>());
        case VarType::Single: return formatSingle(*get<float>());
        case VarType::Double: return formatDouble(*get<double>());
        case VarType::Currency: return formatCurrency(*get<Currency>());
        case VarType::Date: return formatDate(*get<Date>());
        case VarType::String: return *get<Text>();
        case VarType::Boolean: return *get<bool>() ? u"True" : u"False";
        default: typeMismatch();
    }
}

Ref<Object> Variant::toObject() const {
    if (auto o = get<Ref<Object>>()) return *o;
    if (isEmpty()) return {};
    typeMismatch();
}

Variant Variant::changeType(VarType target) const {
    if (target == type()) return *this;
    if (target == VarType::Null) return Variant(Null{});  // anything may become Null
    if (target == VarType::Object) return toObject();
    requireScalar(*this);
    switch (target) {
        case VarType::Empty: return Variant();
        case VarType::Integer: return toInteger();
        case VarType::Long: return toLong();
        case VarType::Single: return toSingle();
        case VarType::Double: return toDouble();
        case VarType::Currency: return toCurrency();
        case VarType::Date: return toDate();
        case VarType::String: return plainText(*this);
        case VarType::Boolean: return toBoolean();
        case VarType::Byte: return toByte();
        default: typeMismatch();
    }
}

}  // namespace tylhart
