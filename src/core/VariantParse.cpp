// Reading numbers and dates written as text, the way the Automation runtime
// reads them under locale 0x0409 (VarParseNumFromStr, VarDateFromStr), and
// the classic leading-number reader.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "VariantRules.hpp"

namespace tylhart {
namespace rules {

// ---- Characters ----

bool isBlank(char16_t c) noexcept {
    switch (c) {
        case 0x09: case 0x0A: case 0x0B: case 0x0C: case 0x0D: case 0x20: case 0x85: case 0xA0:
        case 0x1680: case 0x2028: case 0x2029: case 0x202F: case 0x205F: case 0x3000:
            return true;
        default:
            return c >= 0x2000 && c <= 0x200A;
    }
}

bool isAsciiDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }

TextView upToNul(TextView text) noexcept {
    const auto end = text.find(u'\0');
    return end == TextView::npos ? text : text.substr(0, end);
}

namespace {

// ---- Numbers ----

bool isAsciiLetter(char16_t c, char16_t lower) noexcept { return c == lower || c == lower - 0x20; }

// Signs, parentheses and the currency sign around a number. A parenthesis
// makes the number negative only once it is closed, or when a sign already
// did; the same sign may not stand both before and after the number.
struct Decorations {
    bool leadingPlus = false;
    bool leadingMinus = false;
    bool parenthesis = false;
    bool currency = false;
    bool negative = false;
};

class NumberReader {
public:
    explicit NumberReader(TextView text) : s_(upToNul(text)) {}

    std::optional<NumberText> read() {
        readLeading();
        NumberText number;
        const bool body = radixAhead() ? readRadix(number) : readDecimal(number);
        if (!body || !readTrailing(number.radix)) return std::nullopt;
        if (marks_.parenthesis && !marks_.negative) return std::nullopt;  // "(12" is not a number
        number.negative = marks_.negative;
        return number;
    }

private:
    bool atEnd() const { return i_ >= s_.size(); }
    char16_t peek() const { return s_[i_]; }

    void readLeading() {
        for (; !atEnd(); ++i_) {
            const char16_t c = peek();
            if (isBlank(c)) continue;
            if (c == u'+' && !marks_.leadingPlus) marks_.leadingPlus = true;
            else if (c == u'-' && !marks_.leadingMinus) marks_.leadingMinus = marks_.negative = true;
            else if (c == u'(' && !marks_.parenthesis) marks_.parenthesis = true;
            else if (c == u'$' && !marks_.currency) marks_.currency = true;
            else break;
        }
    }

    // Currency signs and thousands separators may trail a decimal number
    // ("4 ,"), not a literal.
    bool readTrailing(bool radix) {
        for (; !atEnd(); ++i_) {
            const char16_t c = peek();
            if (isBlank(c) || ((c == u'$' || c == u',') && !radix)) continue;
            if (c == u'+' && !marks_.leadingPlus) continue;
            if (c == u'-' && !marks_.leadingMinus) {
                marks_.negative = true;
                continue;
            }
            if (c == u')' && marks_.parenthesis) {
                marks_.negative = true;
                continue;
            }
            return false;
        }
        return true;
    }

    // &H hexadecimal and &O octal literals; a currency sign rules them out.
    bool radixAhead() const {
        return !marks_.currency && i_ + 1 < s_.size() && s_[i_] == u'&' &&
               (isAsciiLetter(s_[i_ + 1], u'h') || isAsciiLetter(s_[i_ + 1], u'o'));
    }

    bool readRadix(NumberText& number) {
        const unsigned shift = isAsciiLetter(s_[i_ + 1], u'h') ? 4 : 3;
        i_ += 2;
        const std::size_t start = i_;
        for (; !atEnd(); ++i_) {
            const int digit = radixDigit(peek(), shift);
            if (digit < 0) break;
            const std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
            number.radixValue = number.radixValue > (limit >> shift)
                                    ? limit
                                    : (number.radixValue << shift) | static_cast<unsigned>(digit);
        }
        number.radix = true;
        return i_ > start;
    }

    static int radixDigit(char16_t c, unsigned shift) {
        int d = -1;
        if (isAsciiDigit(c)) d = c - u'0';
        else if (shift == 4 && (c | 0x20) >= u'a' && (c | 0x20) <= u'f') d = (c | 0x20) - u'a' + 10;
        return d >= (1 << shift) ? -1 : d;
    }

    // Digits with thousands separators and one decimal point, then an
    // optional exponent (E or e), which a leading currency sign rules out
    // ("$1e3" is no amount). The runtime lets a thousands separator end
    // the exponent, after which further digits belong to the number again
    // ("1e3,5" is 15 thousand); that is kept, since callers may meet it.
    bool readDecimal(NumberText& number) {
        enum class Exponent { None, Waiting, Digits, Done } exponent = Exponent::None;
        bool anyDigit = false, point = false, exponentNegative = false;
        int fractionDigits = 0;
        long exponentValue = 0;
        for (; !atEnd(); ++i_) {
            const char16_t c = peek();
            if (isAsciiDigit(c)) {
                if (exponent == Exponent::Waiting || exponent == Exponent::Digits) {
                    exponentValue = std::min(exponentValue * 10 + (c - u'0'), 100000L);
                    exponent = Exponent::Digits;
                    continue;
                }
                anyDigit = true;
                if (point) ++fractionDigits;
                if (!number.digits.empty() || c != u'0') number.digits.push_back(static_cast<char>(c));
            } else if (c == u',' && anyDigit) {
                if (exponent == Exponent::Digits) exponent = Exponent::Done;
            } else if (c == u'.' && !point && exponent == Exponent::None) {
                point = true;
            } else if ((c == u'e' || c == u'E') && anyDigit && exponent == Exponent::None && !marks_.currency) {
                exponent = Exponent::Waiting;
            } else if ((c == u'+' || c == u'-') && exponent == Exponent::Waiting) {
                exponentNegative = exponentNegative || c == u'-';
            } else {
                break;
            }
        }
        if (!anyDigit || exponent == Exponent::Waiting) return false;
        number.exponent = static_cast<int>(exponentNegative ? -exponentValue : exponentValue) - fractionDigits;
        while (!number.digits.empty() && number.digits.back() == '0') {
            number.digits.pop_back();
            ++number.exponent;
        }
        if (number.digits.empty()) number.exponent = 0;
        return true;
    }

    TextView s_;
    std::size_t i_ = 0;
    Decorations marks_;
};

}  // namespace

std::optional<NumberText> readNumberText(TextView text) { return NumberReader(text).read(); }

namespace {

// A quotient that is not zero but smaller than the smallest Double becomes
// zero (IEEE rounding would give the smallest Double from half of it on);
// the runtime's division does this, and small texts must read alike.
double divideFlushingTiny(double value, double divisor) {
    const double quotient = value / divisor;
    const double smallest = std::numeric_limits<double>::denorm_min();
    if (std::fabs(quotient) == smallest && std::fabs(value) < divisor * smallest) return 0.0 * quotient;
    return quotient;
}

}  // namespace

// The runtime does not round a decimal text to the nearest Double: it adds
// up the digits in Double arithmetic, one at a time, and then scales by the
// power of ten in steps of 10^10 and a last step for the rest. Long digit
// strings and large exponents therefore land a few units in the last place
// away from the nearest Double; callers compare these values with the
// runtime's, so the same steps are taken here.
double runtimeDouble(const NumberText& number) {
    double value = 0.0;
    for (char digit : number.digits) value = value * 10.0 + (digit - '0');
    static constexpr double smallPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    const bool up = number.exponent > 0;
    int steps = std::abs(number.exponent);
    for (; steps >= 10 && value != 0.0 && std::isfinite(value); steps -= 10)
        value = up ? value * 1e10 : divideFlushingTiny(value, 1e10);
    if (steps < 10) value = up ? value * smallPowers[steps] : divideFlushingTiny(value, smallPowers[steps]);
    return number.negative ? -value : value;
}

// ---- Dates ----

namespace {

constexpr int MaxDateNumbers = 6;

// Unicode decimal digits (the date reader takes any script's digits once a
// number has begun with an ASCII digit).
int decimalDigitValue(char16_t c) noexcept {
    static constexpr char16_t zeros[] = {0x0030, 0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66,
                                         0x0AE6, 0x0B66, 0x0BE6, 0x0C66, 0x0CE6, 0x0D66, 0x0E50,
                                         0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
    for (char16_t zero : zeros)
        if (c >= zero && c <= zero + 9) return c - zero;
    return -1;
}

struct DateNumber {
    long value = 0;
    bool monthName = false;      // written as a month name
    bool timeSeparator = false;  // followed by : or .
    bool meridiem = false;       // carries AM or PM
};

enum class Meridiem { None, Am, Pm };

// Case-insensitive: does the text at position i begin with word?
bool startsWithWord(TextView s, std::size_t i, std::u16string_view word) {
    if (s.size() - i < word.size()) return false;
    for (std::size_t k = 0; k < word.size(); ++k) {
        char16_t c = s[i + k];
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 0x20);
        if (c != word[k]) return false;
    }
    return true;
}

// Words of locale 0x0409 a date may contain, in the order the runtime tries
// them: month names, abbreviated month names, day names, abbreviated day
// names, then the AM and PM designators.
struct DateWord {
    std::u16string_view text;
    int month;  // 1..12 for month names, 0 for day names
};
constexpr DateWord dateWords[] = {
    {u"january", 1},  {u"february", 2}, {u"march", 3},     {u"april", 4},   {u"may", 5},
    {u"june", 6},     {u"july", 7},     {u"august", 8},    {u"september", 9}, {u"october", 10},
    {u"november", 11}, {u"december", 12}, {u"jan", 1},     {u"feb", 2},     {u"mar", 3},
    {u"apr", 4},      {u"may", 5},      {u"jun", 6},       {u"jul", 7},     {u"aug", 8},
    {u"sep", 9},      {u"oct", 10},     {u"nov", 11},      {u"dec", 12},    {u"sunday", 0},
    {u"monday", 0},   {u"tuesday", 0},  {u"wednesday", 0}, {u"thursday", 0}, {u"friday", 0},
    {u"saturday", 0}, {u"sun", 0},      {u"mon", 0},       {u"tue", 0},     {u"wed", 0},
    {u"thu", 0},      {u"fri", 0},      {u"sat", 0},
};

// Splits a date text into numbers (month names count as their number) with
// the separators and designators that follow them.
class DateScanner {
public:
    explicit DateScanner(TextView text) : s_(upToNul(text)) {}

    bool scan() {
        while (i_ < s_.size()) {
            const char16_t c = s_[i_];
            if (isBlank(c)) {
                ++i_;
            } else if (c == u',') {
                if (++i_ == s_.size()) return false;  // a comma may not end the text
            } else if (isAsciiDigit(c)) {
                if (!readNumber()) return false;
            } else if (c == u'/' || c == u'-' || c == u':' || c == u'.') {
                if (count_ == 0 || i_ + 1 == s_.size()) return false;
                // Date separators only count (a date has three parts, so at
                // most two of them); which numbers form the date is decided
                // by what is left beside the time.
                if (c == u'/' || c == u'-') {
                    if (++dateSeparators_ > 2) return false;
                } else {
                    last().timeSeparator = true;
                }
                ++i_;
            } else if (!readWord()) {
                return false;
            }
        }
        return count_ > 0;
    }

    const DateNumber* numbers() const { return numbers_.data(); }
    int count() const { return count_; }
    Meridiem meridiem() const { return meridiem_; }

private:
    DateNumber& last() { return numbers_[static_cast<std::size_t>(count_ - 1)]; }

    bool push(long value) {
        if (count_ == MaxDateNumbers) return false;
        numbers_[static_cast<std::size_t>(count_++)] = DateNumber{value};
        return true;
    }

    bool readNumber() {
        long value = 0;
        for (int d; i_ < s_.size() && (d = decimalDigitValue(s_[i_])) >= 0; ++i_)
            value = std::min(value * 10 + d, 1000000000L);
        return push(value);
    }

    bool setMeridiem(Meridiem m) {
        if (count_ == 0 || meridiem_ != Meridiem::None) return false;
        meridiem_ = m;
        last().meridiem = true;
        return true;
    }

    bool readWord() {
        for (const DateWord& word : dateWords) {
            if (!startsWithWord(s_, i_, word.text)) continue;
            i_ += word.text.size();
            if (word.month == 0) return true;  // day names are passed over
            if (!push(word.month)) return false;
            last().monthName = true;
            return true;
        }
        if (startsWithWord(s_, i_, u"am") || startsWithWord(s_, i_, u"pm")) {
            const bool pm = (s_[i_] | 0x20) == u'p';
            i_ += 2;
            return setMeridiem(pm ? Meridiem::Pm : Meridiem::Am);
        }
        // A lone A or P is read as AM or PM; the runtime then steps over the
        // character after it as if it were the M.
        const char16_t c = static_cast<char16_t>(s_[i_] | 0x20);
        if (c != u'a' && c != u'p') return false;
        i_ += 2;
        return setMeridiem(c == u'p' ? Meridiem::Pm : Meridiem::Am);
    }

    TextView s_;
    std::size_t i_ = 0;
    std::array<DateNumber, MaxDateNumbers> numbers_{};
    int count_ = 0;
    int dateSeparators_ = 0;
    Meridiem meridiem_ = Meridiem::None;
};

// Two-digit years fall in 1950..2049.
int windowedYear(long year) {
    if (year < 50) return static_cast<int>(year + 2000);
    if (year < 100) return static_cast<int>(year + 1900);
    return static_cast<int>(year);
}

bool fits(long year, long month, long day, CivilDate& out) {
    const int y = windowedYear(year);
    if (y > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return false;
    if (!isValidCivil(y, static_cast<int>(month), static_cast<int>(day))) return false;
    out = CivilDate{y, static_cast<int>(month), static_cast<int>(day)};
    return true;
}

// One reading of the date numbers: where the year, month and day stand
// (-1 for a year the text does not give, or for day 1 of the month).
struct DateOrder {
    int year, month, day;
};

// Three numbers: month/day/year first (the locale's order), then
// year/month/day, day/month/year and year/day/month. Two numbers: month and
// day of the current year, day and month, then month and year, year and
// month. The first reading that makes a real date wins; when a month is
// written as a name, only readings that take it as the month count.
constexpr DateOrder ordersOfThree[] = {{2, 0, 1}, {0, 1, 2}, {2, 1, 0}, {0, 2, 1}};
constexpr DateOrder ordersOfTwo[] = {{-1, 0, 1}, {-1, 1, 0}, {1, 0, -1}, {0, 1, -1}};

template <std::size_t N>
std::optional<CivilDate> dateOf(const DateNumber* n, const DateOrder (&orders)[N], int (*currentYear)()) {
    bool named = false;
    for (const DateOrder& o : orders) named = named || n[o.month].monthName;
    for (const DateOrder& o : orders) {
        if (named && !n[o.month].monthName) continue;
        const long year = o.year < 0 ? currentYear() : n[o.year].value;
        CivilDate d;
        if (fits(year, n[o.month].value, o.day < 0 ? 1 : n[o.day].value, d)) return d;
    }
    return std::nullopt;
}

struct TimeOfDay {
    long hour = 0, minute = 0, second = 0;
};

std::optional<TimeOfDay> timeOf(const DateNumber* group, int size, Meridiem meridiem) {
    TimeOfDay t{group[0].value, size > 1 ? group[1].value : 0, size > 2 ? group[2].value : 0};
    if (meridiem == Meridiem::Pm && t.hour < 12) t.hour += 12;
    if (meridiem == Meridiem::Am && t.hour == 12) t.hour = 0;
    if (t.hour > 23 || t.minute > 59 || t.second > 59) return std::nullopt;
    return t;
}

// The numbers that make the time of day: a run joined by time separators
// (two or three numbers), or one number with AM or PM. first/size describe
// it; size 0 when there is no time.
bool findTimeGroup(const DateNumber* n, int count, int& first, int& size) {
    first = 0;
    size = 0;
    for (int i = 0; i < count; ++i) {
        if (!n[i].timeSeparator && !n[i].meridiem) continue;
        if (size != 0) return false;  // a second time
        int end = i;
        while (n[end].timeSeparator)
            if (++end == count) return false;
        first = i;
        size = end - i + 1;
        if (size > 3) return false;
        i = end;
    }
    return true;
}

}  // namespace

std::optional<double> readDateText(TextView text, int (*currentYear)()) {
    DateScanner scanner(text);
    if (!scanner.scan()) return std::nullopt;
    const DateNumber* n = scanner.numbers();
    const int count = scanner.count();

    int timeFirst, timeSize;
    if (!findTimeGroup(n, count, timeFirst, timeSize)) return std::nullopt;
    // The date is what is left, before or after the time, never around it.
    const int dateCount = count - timeSize;
    const int dateFirst = timeSize == 0 || timeFirst > 0 ? 0 : timeSize;
    if (timeSize != 0 && timeFirst != 0 && timeFirst + timeSize != count) return std::nullopt;

    std::optional<CivilDate> date = CivilDate{};
    if (dateCount == 3) date = dateOf(n + dateFirst, ordersOfThree, currentYear);
    else if (dateCount == 2) date = dateOf(n + dateFirst, ordersOfTwo, currentYear);
    else if (dateCount != 0) return std::nullopt;
    if (!date) return std::nullopt;

    TimeOfDay time;
    if (timeSize != 0) {
        auto t = timeOf(n + timeFirst, timeSize, scanner.meridiem());
        if (!t) return std::nullopt;
        time = *t;
    }
    // Built the way the runtime builds it, one part after the other, so
    // that the last bit agrees; times of days before 1900 count backwards.
    double value = static_cast<double>(serialFromCivil(date->year, date->month, date->day));
    const double sign = value < 0.0 ? -1.0 : 1.0;
    value += static_cast<double>(time.hour) / 24.0 * sign;
    value += static_cast<double>(time.minute) / 1440.0 * sign;
    value += static_cast<double>(time.second) / 86400.0 * sign;
    return value;
}

}  // namespace rules

// ---- The leading-number reader ----

namespace {

// Roughly the power of ten of a decimal literal ("120" 3, "0.05" -1); only
// its sign matters, to tell an overflow from an underflow.
long long decimalOrder(std::string_view literal) {
    const std::size_t e = std::min(literal.find('e'), literal.size());
    const std::string_view mantissa = literal.substr(0, e);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstSignificant = mantissa.find_first_not_of("0.");
    long long order = firstSignificant == std::string_view::npos ? 0
                      : firstSignificant < point
                          ? static_cast<long long>(point - firstSignificant)
                          : -static_cast<long long>(firstSignificant - point - 1);
    long long exponent = 0;
    bool negative = false;
    for (const char c : literal.substr(std::min(e + 1, literal.size()))) {
        if (c == '-') negative = true;
        else if (c != '+') exponent = std::min(exponent * 10 + (c - '0'), 1'000'000'000LL);
    }
    return order + (negative ? -exponent : exponent);
}

}  // namespace

// Blanks, tabs and line feeds are skipped anywhere; then an optional sign,
// digits with at most one decimal point (always the full stop, whatever the
// locale) and an optional exponent (E, or D as the classic reader also
// takes it); reading stops at the first character that does not fit. No
// leading number reads as 0; a number beyond the Double range overflows.
double leadingNumber(TextView text) {
    std::string literal;
    bool digits = false, point = false, exponent = false, exponentDigits = false;
    for (char16_t c : text) {
        if (c == u' ' || c == u'\t' || c == u'\n') continue;
        const bool signPlace = literal.empty() || literal.back() == 'e';
        if (rules::isAsciiDigit(c)) {
            (exponent ? exponentDigits : digits) = true;
        } else if ((c == u'+' || c == u'-') && signPlace && !exponentDigits) {
        } else if (c == u'.' && !point && !exponent) {
            point = true;
        } else if ((c == u'e' || c == u'E' || c == u'd' || c == u'D') && digits && !exponent) {
            exponent = true;
            c = u'e';
        } else {
            break;
        }
        literal.push_back(static_cast<char>(c));
    }
    if (!digits) return 0.0;
    // An exponent marker without digits is not part of the number.
    if (exponent && !exponentDigits) literal.erase(literal.find('e'));
    // from_chars reads the full stop whatever locale the host process set;
    // it takes no leading plus.
    const bool negative = literal.front() == '-';
    const char* first = literal.data() + (literal.front() == '+' || negative ? 1 : 0);
    double value = 0.0;
    const auto [end, error] = std::from_chars(first, literal.data() + literal.size(), value);
    if (error == std::errc::result_out_of_range) {
        if (decimalOrder(std::string_view(first, literal.data() + literal.size() - first)) > 0)
            rules::overflow();
        value = 0.0;  // too small for a Double: reads as zero
    }
    return negative ? -value : value;
}

}  // namespace tylhart
