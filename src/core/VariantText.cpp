// Text forms of numbers, currency amounts and dates, as the Automation
// runtime writes them under locale 0x0409 (VarBstrFromR8, VarBstrFromDate,
// ...), and the calendar behind dates.
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "VariantRules.hpp"

namespace tylhart {
namespace rules {

// ---- Calendar (proleptic Gregorian; day 0 is 30 December 1899) ----

namespace {
constexpr long long SerialOf1970 = 25569;  // 1 January 1970
}

long long serialFromCivil(int year, int month, int day) noexcept {
    const long long y = year - (month <= 2 ? 1 : 0);
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const long long yearOfEra = y - era * 400;
    const long long dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const long long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468 + SerialOf1970;
}

CivilDate civilFromSerial(long long serial) noexcept {
    const long long z = serial - SerialOf1970 + 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const long long dayOfEra = z - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long mp = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    return CivilDate{static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0)), month, day};
}

bool isValidCivil(int year, int month, int day) noexcept {
    static constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1) return false;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= lengths[month - 1] + (month == 2 && leap ? 1 : 0);
}

}  // namespace rules

namespace {

Text ascii(const std::string& s) { return Text(s.begin(), s.end()); }

// ---- Numbers ----

// The significant digits of |v| rounded to `precision` digits the way the
// runtime's printf does: an exact tie rounds away from zero. Returns the
// digits and the decimal exponent of the first one.
struct Rounded {
    std::string digits;
    int exponent = 0;
};

// Does the 49-digit form show |v| exactly? An integer below 10^47
// has at most 47 digits; m / 2^k (m odd, at most 53 bits) ends after k
// decimals and has at most 16 + 0.7k significant digits.
bool printsExactly(double magnitude) {
    int exponent = 0;
    auto mantissa = static_cast<std::uint64_t>(std::ldexp(std::frexp(magnitude, &exponent), 53));
    exponent -= 53;
    while ((mantissa & 1) == 0) {
        mantissa >>= 1;
        ++exponent;
    }
    return exponent >= 0 ? magnitude < 1e47 : exponent >= -40;
}

Rounded roundSignificant(double magnitude, int precision) {
    // The exact conversion rounds only the last digit it writes, so with 49
    // digits the first precision + 1 are exact, unless a carry ran up
    // through a run of nines, which would leave zeros behind: then, unless
    // the value is known to print exactly, ask for the full expansion (no
    // Double needs more than 767 significant digits). to_chars, unlike
    // printf, writes the full stop whatever locale the host process set.
    char buffer[820];
    const auto scientific = [&](int digits) {
        const auto written = std::to_chars(buffer, std::end(buffer), magnitude, std::chars_format::scientific, digits);
        return std::string(buffer, written.ptr);
    };
    std::string text = scientific(48);
    auto mantissaEnd = text.find('e');
    const bool tailOfZeros = text.find_first_not_of('0', static_cast<std::size_t>(precision) + 2) >= mantissaEnd;
    if (tailOfZeros && !printsExactly(magnitude)) {
        text = scientific(800);
        mantissaEnd = text.find('e');
    }
    std::string all = text.substr(0, 1) + text.substr(2, mantissaEnd - 2);
    Rounded r{all.substr(0, static_cast<std::size_t>(precision)), std::stoi(text.substr(mantissaEnd + 1))};
    if (all[static_cast<std::size_t>(precision)] >= '5') {
        int i = precision - 1;
        for (; i >= 0 && r.digits[static_cast<std::size_t>(i)] == '9'; --i) r.digits[static_cast<std::size_t>(i)] = '0';
        if (i >= 0) {
            ++r.digits[static_cast<std::size_t>(i)];
        } else {
            r.digits.insert(r.digits.begin(), '1');
            r.digits.pop_back();
            ++r.exponent;
        }
    }
    return r;
}

// printf's %.<precision>G: plain notation for exponents from -5 to
// precision - 1, otherwise d.dddE+XX with at least two exponent digits;
// trailing zeros dropped. Infinities and NaN as INF, -INF and NAN; negative
// zero as 0, since callers compare these texts.
std::string formatGeneral(double v, int precision) {
    if (std::isnan(v)) return "NAN";
    if (std::isinf(v)) return v < 0 ? "-INF" : "INF";
    if (v == 0.0) return "0";
    Rounded r = roundSignificant(std::fabs(v), precision);
    while (r.digits.size() > 1 && r.digits.back() == '0') r.digits.pop_back();
    std::string out = v < 0 ? "-" : "";
    if (r.exponent < -4 || r.exponent >= precision) {
        out += r.digits.substr(0, 1);
        if (r.digits.size() > 1) out += "." + r.digits.substr(1);
        char exponent[16];
        std::snprintf(exponent, sizeof exponent, "E%c%02d", r.exponent < 0 ? '-' : '+', std::abs(r.exponent));
        return out + exponent;
    }
    if (r.exponent < 0) return out + "0." + std::string(static_cast<std::size_t>(-r.exponent - 1), '0') + r.digits;
    const auto integerDigits = static_cast<std::size_t>(r.exponent) + 1;
    if (r.digits.size() <= integerDigits) return out + r.digits + std::string(integerDigits - r.digits.size(), '0');
    return out + r.digits.substr(0, integerDigits) + "." + r.digits.substr(integerDigits);
}

// ---- Dates ----

struct DateTimeParts {
    rules::CivilDate date;
    int hour = 0, minute = 0, second = 0;
};

// The runtime splits the time of day by successive multiplication
// (hours, minutes, seconds, each truncated), after adding 1e-11 day against
// representation error, and rounds the rest of a second up when it is more
// than one half; a time that rounds up to midnight moves to the next day.
DateTimeParts splitDate(double v) {
    if (std::isnan(v)) return {};  // a NaN date passes the range test and reads as day 0
    const double whole = std::trunc(v);
    double rest = std::fabs(v - whole) + 1e-11;
    if (rest >= 1.0) rest -= 1e-11;
    auto serial = static_cast<long long>(whole);
    DateTimeParts p;
    rest *= 24.0;
    p.hour = static_cast<int>(rest);
    rest = (rest - p.hour) * 60.0;
    p.minute = static_cast<int>(rest);
    rest = (rest - p.minute) * 60.0;
    p.second = static_cast<int>(rest);
    rest -= p.second;
    if (rest > 0.5 && ++p.second == 60) {
        p.second = 0;
        if (++p.minute == 60) {
            p.minute = 0;
            if (++p.hour == 24) {
                p.hour = 0;
                ++serial;
            }
        }
    }
    p.date = rules::civilFromSerial(serial);
    return p;
}

}  // namespace

// A whole number with no more digits than the precision prints as a plain
// integer, exactly as formatGeneral would print it (negative zero as "0"):
// most range ends, scaling factors and values are such numbers, and this
// skips the digit generation.
namespace {
Text formatWholeOr(double v, double limit, int precision) {
    if (std::fabs(v) < limit && v == std::trunc(v)) return decimal(static_cast<long long>(v));
    return ascii(formatGeneral(v, precision));
}
}  // namespace

Text formatDouble(double v) { return formatWholeOr(v, 1e15, 15); }
Text formatSingle(float v) { return formatWholeOr(static_cast<double>(v), 1e7, 7); }

Text formatCurrency(Currency c) {
    const std::uint64_t magnitude =
        c.scaled < 0 ? 0 - static_cast<std::uint64_t>(c.scaled) : static_cast<std::uint64_t>(c.scaled);
    std::string s = (c.scaled < 0 ? "-" : "") + std::to_string(magnitude / Currency::scale);
    if (const auto fraction = magnitude % Currency::scale) {
        char digits[8];
        std::snprintf(digits, sizeof digits, ".%04u", static_cast<unsigned>(fraction));
        s += digits;
        while (s.back() == '0') s.pop_back();
    }
    return ascii(s);
}

// M/d/yyyy h:mm:ss tt. Whole days show only the date and times on day 0
// only the time (midnight of day 0 is "12:00:00 AM"). Which parts show is
// decided on the value as given, before the time is rounded to the second:
// 0.999999 shows "12:00:00 AM", without a date.
Text formatDate(Date d) {
    const double v = d.days;
    if (v <= rules::FirstDate - 1.0 || v >= rules::LastDate + 1.0) errors::raise(errors::Runtime::InvalidCall);
    const double whole = std::trunc(v);
    const bool showDate = !(whole == 0.0);
    const bool showTime = !(v == whole) || whole == 0.0;
    const DateTimeParts p = splitDate(v);
    // Built by hand on the stack rather than by printf or appends: every
    // rendering of a variable prints its LastSetTime. The longest text,
    // "12/31/9999 12:59:59 PM", takes 22 characters.
    std::array<char16_t, 48> text;
    std::size_t length = 0;
    const auto put = [&](char16_t c) { text[length++] = c; };
    const auto number = [&](int n, bool twoDigits = false) {
        if (twoDigits && n >= 0 && n < 10) put(u'0');
        if (n < 0) put(u'-');
        unsigned magnitude = n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n);
        char16_t digits[10];
        int count = 0;
        do digits[count++] = static_cast<char16_t>(u'0' + magnitude % 10);
        while ((magnitude /= 10) > 0);
        while (count > 0) put(digits[--count]);
    };
    if (showDate) {
        number(p.date.month), put(u'/'), number(p.date.day), put(u'/'), number(p.date.year);
    }
    if (showTime) {
        if (showDate) put(u' ');
        number(p.hour % 12 == 0 ? 12 : p.hour % 12), put(u':');
        number(p.minute, true), put(u':');
        number(p.second, true);
        put(u' '), put(p.hour < 12 ? u'A' : u'P'), put(u'M');
    }
    Text out(text.data(), length);
    return out;
}

}  // namespace tylhart
