// Conversions, text forms and comparison of Variant, following the OLE
// Automation runtime under locale 0x0409. The committed oracle table
// (tests/data/automation_oracle.tsv) pins every rule here.
#include "tylhart/core/Variant.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include "tylhart/core/Error.hpp"

namespace tylhart {

using errors::Runtime;

namespace {

[[noreturn]] void mismatch() { errors::raise(Runtime::TypeMismatch); }
[[noreturn]] void overflow() { errors::raise(Runtime::Overflow); }

constexpr double MinDate = -657434.0;   // 1 January 100
constexpr double MaxDate = 2958465.99999999;  // 31 December 9999, 23:59:59

// Rounds half to even, as every conversion into an integer kind does.
double roundHalfEven(double v) {
    double r = std::nearbyint(v);  // default rounding mode is to nearest even
    return r;
}

template <class Int>
Int toIntegral(double v) {
    if (std::isnan(v)) overflow();
    double r = roundHalfEven(v);
    if (r < static_cast<double>(std::numeric_limits<Int>::min()) ||
        r > static_cast<double>(std::numeric_limits<Int>::max()))
        overflow();
    return static_cast<Int>(r);
}

// ---- Parsing numbers from text (the runtime's standard number parser) ----

struct ParsedNumber {
    bool negative = false;
    bool radix = false;        // &H / &O literal
    std::uint64_t radixValue = 0;
    std::string digits;        // significant decimal digits, no leading zeros
    int exponent = 0;          // value = digits * 10^exponent
};

bool isBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == 0xA0 || c == u'\v' || c == u'\f'; }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

std::optional<ParsedNumber> parseNumber(TextView s) {
    ParsedNumber out;
    std::size_t i = 0, n = s.size();
    auto skipBlanks = [&] {
        while (i < n && isBlank(s[i])) ++i;
    };
    skipBlanks();
    bool sawSign = false, parens = false, sawCurrency = false;
    // Leading currency sign, sign and parenthesis, in any order but once each.
    for (bool progress = true; progress && i < n;) {
        progress = false;
        if (!sawSign && (s[i] == u'+' || s[i] == u'-')) {
            out.negative = s[i] == u'-';
            sawSign = true;
            ++i;
            progress = true;
        } else if (!parens && !sawSign && s[i] == u'(') {
            parens = true;
            ++i;
            progress = true;
        } else if (!sawCurrency && s[i] == u'$') {
            sawCurrency = true;
            ++i;
            progress = true;
        }
        if (progress) skipBlanks();
    }
    if (i + 1 < n && s[i] == u'&' && !sawCurrency) {
        char16_t p = static_cast<char16_t>(s[i + 1] | 0x20);
        unsigned base = p == u'h' ? 16 : (p == u'o' ? 8 : 0);
        if (base == 0) return std::nullopt;
        i += 2;
        std::size_t start = i;
        std::uint64_t v = 0;
        while (i < n) {
            char16_t c = s[i];
            unsigned d;
            if (isDigit(c)) d = c - u'0';
            else if (base == 16 && (c | 0x20) >= u'a' && (c | 0x20) <= u'f') d = (c | 0x20) - u'a' + 10;
            else break;
            if (d >= base) return std::nullopt;
            v = v * base + d;
            if (v > 0xFFFFFFFFull) return std::nullopt;
            ++i;
        }
        if (i == start) return std::nullopt;
        skipBlanks();
        if (i != n) return std::nullopt;
        out.radix = true;
        out.radixValue = v;
        return out;
    }
    bool anyDigit = false, decimal = false;
    int fractionDigits = 0;
    std::string digits;
    while (i < n) {
        char16_t c = s[i];
        if (isDigit(c)) {
            anyDigit = true;
            if (!(digits.empty() && c == u'0')) digits.push_back(static_cast<char>(c));
            if (decimal) ++fractionDigits;
            else if (digits.empty()) {
            }
            ++i;
        } else if (c == u',' && !decimal) {
            ++i;
        } else if (c == u'.' && !decimal) {
            decimal = true;
            ++i;
        } else {
            break;
        }
    }
    if (!anyDigit) return std::nullopt;
    // Zeros dropped before the first significant digit still count as
    // fraction positions.
    int exponent = -fractionDigits;
    if (i < n && (s[i] == u'e' || s[i] == u'E' || s[i] == u'd' || s[i] == u'D')) {
        std::size_t j = i + 1;
        bool expNegative = false;
        if (j < n && (s[j] == u'+' || s[j] == u'-')) expNegative = s[j++] == u'-';
        if (j < n && isDigit(s[j])) {
            long e = 0;
            while (j < n && isDigit(s[j])) {
                if (e < 100000) e = e * 10 + (s[j] - u'0');
                ++j;
            }
            exponent += static_cast<int>(expNegative ? -e : e);
            i = j;
        } else {
            return std::nullopt;
        }
    }
    skipBlanks();
    // Trailing currency sign, sign and closing parenthesis.
    for (bool progress = true; progress && i < n;) {
        progress = false;
        if (!sawSign && !parens && (s[i] == u'+' || s[i] == u'-')) {
            out.negative = s[i] == u'-';
            sawSign = true;
            ++i;
            progress = true;
        } else if (parens && s[i] == u')') {
            parens = false;
            out.negative = true;
            sawSign = true;
            ++i;
            progress = true;
        } else if (!sawCurrency && s[i] == u'$') {
            sawCurrency = true;
            ++i;
            progress = true;
        }
        if (progress) skipBlanks();
    }
    if (parens || i != n) return std::nullopt;
    // Normalise: strip trailing zeros of the digit string into the exponent.
    while (!digits.empty() && digits.back() == '0') {
        digits.pop_back();
        ++exponent;
    }
    out.digits = std::move(digits);
    out.exponent = out.digits.empty() ? 0 : exponent;
    return out;
}

double parsedToDouble(const ParsedNumber& p) {
    if (p.radix) return static_cast<double>(p.radixValue);
    if (p.digits.empty()) return p.negative ? -0.0 : 0.0;
    std::string text = p.digits + "e" + std::to_string(p.exponent);
    double v = std::strtod(text.c_str(), nullptr);
    if (std::isinf(v)) overflow();
    return p.negative ? -v : v;
}

// Hexadecimal and octal literals denote the bit pattern of the narrowest
// signed kind that holds them, so &HFFFF is -1 as an Integer.
std::int64_t radixToSigned(std::uint64_t v) {
    if (v <= 0xFFFF) return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
}

double textToDouble(TextView s) {
    auto p = parseNumber(s);
    if (!p) mismatch();
    if (p->radix) return static_cast<double>(radixToSigned(p->radixValue)) * (p->negative ? -1 : 1);
    return parsedToDouble(*p);
}

// Exact decimal to currency, rounding half to even at the fourth decimal.
Currency textToCurrency(TextView s) {
    auto p = parseNumber(s);
    if (!p) mismatch();
    if (p->radix) {
        return Currency{radixToSigned(p->radixValue) * Currency::scale * (p->negative ? -1 : 1)};
    }
    if (p->digits.empty()) return Currency{0};
    int shift = p->exponent + 4;  // digits * 10^shift units of 1/10000
    if (static_cast<int>(p->digits.size()) + shift > 19) overflow();
    std::string whole, rest;
    if (shift >= 0) {
        whole = p->digits + std::string(static_cast<std::size_t>(shift), '0');
    } else {
        int cut = static_cast<int>(p->digits.size()) + shift;
        if (cut > 0) {
            whole = p->digits.substr(0, static_cast<std::size_t>(cut));
            rest = p->digits.substr(static_cast<std::size_t>(cut));
        } else {
            rest = std::string(static_cast<std::size_t>(-cut), '0') + p->digits;
        }
    }
    unsigned long long units = 0;
    for (char c : whole) {
        if (units > (std::numeric_limits<unsigned long long>::max() - 9) / 10) overflow();
        units = units * 10 + static_cast<unsigned>(c - '0');
    }
    if (!rest.empty()) {
        bool above = rest[0] > '5' || (rest[0] == '5' && rest.find_first_not_of('0', 1) != std::string::npos);
        bool half = rest[0] == '5' && !above;
        if (above || (half && (units & 1))) ++units;
    }
    const unsigned long long limit = static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max());
    if (units > limit + (p->negative ? 1 : 0)) overflow();
    if (p->negative) return Currency{static_cast<std::int64_t>(0 - units)};
    return Currency{static_cast<std::int64_t>(units)};
}

Currency doubleToCurrency(double v) {
    if (std::isnan(v)) overflow();
    double scaled = roundHalfEven(v * 10000.0);
    if (scaled >= 9223372036854775808.0 || scaled < -9223372036854775808.0) overflow();
    return Currency{static_cast<std::int64_t>(scaled)};
}

double currencyToDouble(Currency c) { return static_cast<double>(c.scaled) / 10000.0; }

// Currency to an integer kind: exact, half to even.
std::int64_t currencyToInt64(Currency c) {
    std::int64_t q = c.scaled / 10000, r = c.scaled % 10000;
    if (r > 5000 || (r == 5000 && (q & 1))) ++q;
    else if (r < -5000 || (r == -5000 && (q & 1))) --q;
    return q;
}

template <class Int>
Int int64To(std::int64_t v) {
    if (v < std::numeric_limits<Int>::min() || v > std::numeric_limits<Int>::max()) overflow();
    return static_cast<Int>(v);
}

// ---- Dates ----

struct CivilDate {
    int year, month, day;
};

// Days since 30 December 1899 to a proleptic Gregorian calendar date.
CivilDate civilFromSerial(long long serial) {
    long long z = serial + 693594;  // days from 0000-03-01 based epoch
    // Algorithm from Howard Hinnant's days_from_civil, shifted.
    z -= 60;  // shift epoch to 0000-03-01
    long long era = (z >= 0 ? z : z - 146096) / 146097;
    long long doe = z - era * 146097;
    long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    long long y = yoe + era * 400;
    long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    long long mp = (5 * doy + 2) / 153;
    long long d = doy - (153 * mp + 2) / 5 + 1;
    long long m = mp < 10 ? mp + 3 : mp - 9;
    return CivilDate{static_cast<int>(y + (m <= 2)), static_cast<int>(m), static_cast<int>(d)};
}

long long serialFromCivil(int year, int month, int day) {
    long long y = year - (month <= 2);
    long long era = (y >= 0 ? y : y - 399) / 400;
    long long yoe = y - era * 400;
    long long mp = month > 2 ? month - 3 : month + 9;
    long long doy = (153 * mp + 2) / 5 + day - 1;
    long long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe + 60 - 693594;
}

bool validCivil(int y, int m, int d) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (m < 1 || m > 12 || d < 1) return false;
    bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return d <= days[m - 1] + (m == 2 && leap ? 1 : 0);
}

double checkedDate(double v) {
    if (std::isnan(v) || v < MinDate || v >= 2958466.0) overflow();
    return v;
}

std::optional<double> parseDate(TextView s);

}  // namespace

// ---- Text forms ----

namespace {
Text asciiText(const std::string& s) { return Text(s.begin(), s.end()); }

// printf's %G with the runtime's two-digit exponent and upper-case E.
Text formatFloating(double v, int digits) {
    if (std::isnan(v)) return u"NaN";
    if (std::isinf(v)) return v < 0 ? u"-1.#INF" : u"1.#INF";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*G", digits, v);
    std::string s = buf;
    if (s == "-0") s = "0";
    return asciiText(s);
}
}  // namespace

Text formatDouble(double v) { return formatFloating(v, 15); }
Text formatSingle(float v) { return formatFloating(static_cast<double>(v), 7); }

Text formatCurrency(Currency c) {
    std::uint64_t a = c.scaled < 0 ? 0 - static_cast<std::uint64_t>(c.scaled) : static_cast<std::uint64_t>(c.scaled);
    std::string s = std::to_string(a / 10000);
    std::uint64_t frac = a % 10000;
    if (frac) {
        char buf[8];
        std::snprintf(buf, sizeof buf, "%04u", static_cast<unsigned>(frac));
        std::string f = buf;
        while (!f.empty() && f.back() == '0') f.pop_back();
        s += "." + f;
    }
    if (c.scaled < 0) s = "-" + s;
    return asciiText(s);
}

Text formatDate(Date d) {
    double v = d.days;
    double whole = std::trunc(v);
    double fraction = std::fabs(v - whole);
    long long seconds = std::llround(fraction * 86400.0);
    long long serial = static_cast<long long>(whole);
    if (seconds >= 86400) {
        seconds -= 86400;
        serial += v < 0 ? -1 : 1;
    }
    std::string out;
    char buf[64];
    if (serial != 0) {
        CivilDate c = civilFromSerial(serial);
        std::snprintf(buf, sizeof buf, "%d/%d/%d", c.month, c.day, c.year);
        out = buf;
    }
    if (seconds != 0 || serial == 0) {
        int h = static_cast<int>(seconds / 3600), m = static_cast<int>(seconds / 60 % 60),
            s = static_cast<int>(seconds % 60);
        int h12 = h % 12 == 0 ? 12 : h % 12;
        std::snprintf(buf, sizeof buf, "%d:%02d:%02d %s", h12, m, s, h < 12 ? "AM" : "PM");
        if (!out.empty()) out += " ";
        out += buf;
    }
    return asciiText(out);
}

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

// ---- Variant ----

VarType Variant::type() const noexcept {
    static constexpr VarType kinds[] = {VarType::Empty,   VarType::Null,    VarType::Integer,
                                        VarType::Long,    VarType::Single,  VarType::Double,
                                        VarType::Currency, VarType::Date,   VarType::String,
                                        VarType::Object,  VarType::Error,   VarType::Boolean,
                                        VarType::Byte,    VarType::ByteArray};
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

// The value of a numeric, date or Boolean variant as a double; nullopt for
// other kinds.
std::optional<double> numericValue(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty: return 0.0;
        case VarType::Integer: return *v.get<std::int16_t>();
        case VarType::Long: return *v.get<std::int32_t>();
        case VarType::Single: return *v.get<float>();
        case VarType::Double: return *v.get<double>();
        case VarType::Currency: return currencyToDouble(*v.get<Currency>());
        case VarType::Date: return v.get<Date>()->days;
        case VarType::Boolean: return *v.get<bool>() ? -1.0 : 0.0;
        case VarType::Byte: return *v.get<std::uint8_t>();
        default: return std::nullopt;
    }
}

void rejectNonScalar(const Variant& v) {
    if (v.isNull()) errors::raise(Runtime::InvalidUseOfNull);
    if (v.isObject() || v.isMissing() || v.type() == VarType::ByteArray) mismatch();
}

template <class Int>
Int toIntegerKind(const Variant& v) {
    rejectNonScalar(v);
    if (auto c = v.get<Currency>()) return int64To<Int>(currencyToInt64(*c));
    if (auto s = v.get<Text>()) {
        auto p = parseNumber(*s);
        if (!p) mismatch();
        if (p->radix) {
            // The literal's bit pattern in the target's own width.
            std::uint64_t r = p->radixValue;
            if constexpr (sizeof(Int) == 1) {
                if (r > 0xFF) overflow();
                return static_cast<Int>(r);
            } else {
                if (r <= static_cast<std::uint64_t>(std::numeric_limits<std::make_unsigned_t<Int>>::max()))
                    return static_cast<Int>(static_cast<std::make_unsigned_t<Int>>(r)) * (p->negative ? -1 : 1);
                overflow();
            }
        }
        return toIntegral<Int>(parsedToDouble(*p));
    }
    return toIntegral<Int>(*numericValue(v));
}

}  // namespace

std::int16_t Variant::toInteger() const { return toIntegerKind<std::int16_t>(*this); }
std::int32_t Variant::toLong() const { return toIntegerKind<std::int32_t>(*this); }
std::uint8_t Variant::toByte() const { return toIntegerKind<std::uint8_t>(*this); }

double Variant::toDouble() const {
    rejectNonScalar(*this);
    if (auto s = get<Text>()) return textToDouble(*s);
    return *numericValue(*this);
}

float Variant::toSingle() const {
    double d = toDouble();
    if (std::isfinite(d) && std::fabs(d) > static_cast<double>(std::numeric_limits<float>::max())) {
        // Values that round to the largest Single still fit.
        float f = static_cast<float>(d);
        if (std::isinf(f)) overflow();
        return f;
    }
    return static_cast<float>(d);
}

Currency Variant::toCurrency() const {
    rejectNonScalar(*this);
    if (auto c = get<Currency>()) return *c;
    if (auto s = get<Text>()) return textToCurrency(*s);
    if (auto i = get<std::int32_t>()) return Currency{static_cast<std::int64_t>(*i) * Currency::scale};
    if (auto i = get<std::int16_t>()) return Currency{static_cast<std::int64_t>(*i) * Currency::scale};
    return doubleToCurrency(*numericValue(*this));
}

Date Variant::toDate() const {
    rejectNonScalar(*this);
    if (auto s = get<Text>()) {
        if (auto d = parseDate(*s)) return Date{*d};
        mismatch();
    }
    return Date{checkedDate(*numericValue(*this))};
}

bool Variant::toBoolean() const {
    rejectNonScalar(*this);
    if (auto s = get<Text>()) {
        if (equalsIgnoringCase(*s, u"True")) return true;
        if (equalsIgnoringCase(*s, u"False")) return false;
        return textToDouble(*s) != 0.0;
    }
    if (auto c = get<Currency>()) return c->scaled != 0;
    return *numericValue(*this) != 0.0;
}

Text Variant::toText() const {
    switch (type()) {
        case VarType::Empty: return Text();
        case VarType::Null: errors::raise(Runtime::InvalidUseOfNull);
        case VarType::Integer: return asciiText(std::to_string(*get<std::int16_t>()));
        case VarType::Long: return asciiText(std::to_string(*get<std::int32_t>()));
        case VarType::Single: return formatSingle(*get<float>());
        case VarType::Double: return formatDouble(*get<double>());
        case VarType::Currency: return formatCurrency(*get<Currency>());
        case VarType::Date: return formatDate(*get<Date>());
        case VarType::String: return *get<Text>();
        case VarType::Boolean: return *get<bool>() ? u"True" : u"False";
        case VarType::Byte: return asciiText(std::to_string(*get<std::uint8_t>()));
        case VarType::Object: case VarType::Error: case VarType::ByteArray: break;
    }
    mismatch();
}

Ref<Object> Variant::toObject() const {
    if (auto o = get<Ref<Object>>()) return *o;
    if (isEmpty()) return {};
    mismatch();
}

Variant Variant::changeType(VarType target) const {
    if (target == type()) return *this;
    switch (target) {
        case VarType::Empty: return Variant();
        case VarType::Null: return Variant(Null{});
        case VarType::Integer: return toInteger();
        case VarType::Long: return toLong();
        case VarType::Single: return toSingle();
        case VarType::Double: return toDouble();
        case VarType::Currency: return toCurrency();
        case VarType::Date: return toDate();
        case VarType::String: return toText();
        case VarType::Boolean: return toBoolean();
        case VarType::Byte: return toByte();
        case VarType::Object: return toObject();
        case VarType::Error: case VarType::ByteArray: break;
    }
    mismatch();
}

// ---- Comparison ----

namespace {

int textOrder(const Text& a, const Text& b) {
    // Exact equality; otherwise the order of the locale's collation, which
    // sorts case-insensitively first and puts lower case first on a tie.
    if (a == b) return 0;
    Text fa = foldCase(a), fb = foldCase(b);
    if (fa != fb) return fa < fb ? -1 : 1;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return a[i] > b[i] ? -1 : 1;
    return 0;
}

Comparison fromOrder(int c) { return c < 0 ? Comparison::Less : (c > 0 ? Comparison::Greater : Comparison::Equal); }

}  // namespace

Comparison compare(const Variant& a, const Variant& b) {
    if (a.isNull() || b.isNull()) return Comparison::Null;
    const Text* sa = a.get<Text>();
    const Text* sb = b.get<Text>();
    if (sa && sb) return fromOrder(textOrder(*sa, *sb));
    if (sa && b.isEmpty()) return fromOrder(textOrder(*sa, Text()));
    if (sb && a.isEmpty()) return fromOrder(textOrder(Text(), *sb));
    if (sa) return Comparison::Greater;  // a text sorts after every number
    if (sb) return Comparison::Less;
    if (auto ca = a.get<Currency>()) {
        if (auto cb = b.get<Currency>()) return fromOrder(ca->scaled < cb->scaled ? -1 : (ca->scaled > cb->scaled));
    }
    auto na = numericValue(a), nb = numericValue(b);
    if (!na || !nb) mismatch();
    if (*na < *nb) return Comparison::Less;
    if (*na > *nb) return Comparison::Greater;
    return Comparison::Equal;
}

bool variantEquals(const Variant& a, const Variant& b) { return compare(a, b) == Comparison::Equal; }

bool variantEqualsStrict(const Variant& a, const Variant& b) {
    Comparison c = compare(a, b);
    if (c == Comparison::Null) errors::raise(Runtime::InvalidUseOfNull);
    return c == Comparison::Equal;
}

// ---- Dates from text ----

namespace {

std::optional<double> parseDate(TextView s) {
    // Tokens: numbers, separators, AM/PM.
    std::vector<int> dateParts, timeParts;
    std::optional<bool> pm;
    std::size_t i = 0, n = s.size();
    char16_t dateSep = 0;
    bool inTime = false;
    while (i < n) {
        char16_t c = s[i];
        if (isBlank(c)) {
            ++i;
            continue;
        }
        if (isDigit(c)) {
            long v = 0;
            std::size_t start = i;
            while (i < n && isDigit(s[i])) {
                v = v * 10 + (s[i] - u'0');
                if (v > 100000) return std::nullopt;
                ++i;
            }
            (void)start;
            if (i < n && s[i] == u':') {
                inTime = true;
            }
            if (inTime) timeParts.push_back(static_cast<int>(v));
            else dateParts.push_back(static_cast<int>(v));
            if (i < n && s[i] == u':') {
                ++i;
            } else if (i < n && (s[i] == u'/' || s[i] == u'-' || s[i] == u'.')) {
                if (inTime) return std::nullopt;
                if (dateSep && dateSep != s[i]) return std::nullopt;
                dateSep = s[i];
                ++i;
            } else {
                if (inTime) inTime = false;
            }
            continue;
        }
        if ((c | 0x20) == u'a' || (c | 0x20) == u'p') {
            if (i + 1 < n && (s[i + 1] | 0x20) == u'm') {
                pm = (c | 0x20) == u'p';
                i += 2;
                continue;
            }
        }
        return std::nullopt;
    }
    if (dateParts.empty() && timeParts.empty()) return std::nullopt;
    double day = 0;
    if (!dateParts.empty()) {
        int y, m, d;
        if (dateParts.size() == 3) {
            if (dateSep == u'-' && dateParts[0] > 31) {
                y = dateParts[0], m = dateParts[1], d = dateParts[2];
            } else {
                m = dateParts[0], d = dateParts[1], y = dateParts[2];
            }
        } else if (dateParts.size() == 2) {
            m = dateParts[0], d = dateParts[1];
            y = 0;  // current year is not used here: refuse rather than guess
            return std::nullopt;
        } else {
            return std::nullopt;
        }
        if (y < 100) y += y < 30 ? 2000 : 1900;
        if (!validCivil(y, m, d) || y > 9999) return std::nullopt;
        day = static_cast<double>(serialFromCivil(y, m, d));
    }
    double time = 0;
    if (!timeParts.empty() || pm) {
        if (timeParts.empty() || timeParts.size() > 3) return std::nullopt;
        int h = timeParts[0], mi = timeParts.size() > 1 ? timeParts[1] : 0,
            se = timeParts.size() > 2 ? timeParts[2] : 0;
        if (pm) {
            if (h < 1 || h > 12) return std::nullopt;
            h = h % 12 + (*pm ? 12 : 0);
        }
        if (h > 23 || mi > 59 || se > 59) return std::nullopt;
        time = (h * 3600 + mi * 60 + se) / 86400.0;
    }
    return day < 0 ? day - time : day + time;
}

}  // namespace

}  // namespace tylhart
