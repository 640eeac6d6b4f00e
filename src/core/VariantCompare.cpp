// The comparison of Variants (VarCmp under locale 0x0409, no flags) and the
// collation of texts behind it.
#include <cmath>
#include <cstdint>

#include "VariantRules.hpp"

namespace tylhart {
namespace rules {

namespace {

// ---- Collation ----
//
// Texts order as the locale's sort keys do, level by level: first the base
// characters (punctuation before digits before letters, letters without
// regard to case or accents), then accents, then case (lower before upper),
// and last the minor characters that the first levels pass over: the
// hyphen, the apostrophe, the minus sign and control characters, so that
// "co-op" sorts next to "coop". Characters without any weight (NUL, the soft
// hyphen) are passed over entirely.
//
// Weights of U+0000..U+017F as the runtime's sort keys give them, packed as
// 0xSSWWDDCC: script SS and weight WW of the base character, accent DD and
// case CC. Script 0 marks a character without weight; script 1 a minor
// character (WW its weight, CC its case); script 2 a character that sorts
// as two (see expansions).
constexpr std::uint32_t latinWeights[0x180] = {
    0x00000000, 0x01030012, 0x01040012, 0x01050012, 0x01060012, 0x01070012, 0x01080012, 0x01090012,  // U+0000
    0x010A0012, 0x07050202, 0x07060202, 0x07070202, 0x07080202, 0x07090202, 0x010B0012, 0x010C0012,  // U+0008
    0x010D0012, 0x010E0012, 0x010F0012, 0x01100012, 0x01110012, 0x01120012, 0x01130012, 0x01140012,  // U+0010
    0x01150012, 0x01160012, 0x01170012, 0x01180012, 0x01190012, 0x011A0012, 0x011B0012, 0x011C0012,  // U+0018
    0x07020202, 0x071C0202, 0x071D0202, 0x071F0202, 0x07210202, 0x07230202, 0x07250202, 0x01800012,  // U+0020
    0x07270202, 0x072A0202, 0x072D0202, 0x08030202, 0x072F0202, 0x01820012, 0x07330202, 0x07350202,  // U+0028
    0x0D030202, 0x0D1A0202, 0x0D1C0202, 0x0D1E0202, 0x0D200202, 0x0D220202, 0x0D240202, 0x0D260202,  // U+0030
    0x0D280202, 0x0D2A0202, 0x07370202, 0x073A0202, 0x080E0202, 0x08120202, 0x08140202, 0x073C0202,  // U+0038
    0x073E0202, 0x0E020212, 0x0E090212, 0x0E0A0212, 0x0E1A0212, 0x0E210212, 0x0E230212, 0x0E250212,  // U+0040
    0x0E2C0212, 0x0E320212, 0x0E350212, 0x0E360212, 0x0E480212, 0x0E510212, 0x0E700212, 0x0E7C0212,  // U+0048
    0x0E7E0212, 0x0E890212, 0x0E8A0212, 0x0E910212, 0x0E990212, 0x0E9F0212, 0x0EA20212, 0x0EA40212,  // U+0050
    0x0EA60212, 0x0EA70212, 0x0EA90212, 0x073F0202, 0x07410202, 0x07420202, 0x07430202, 0x07440202,  // U+0058
    0x07480202, 0x0E020202, 0x0E090202, 0x0E0A0202, 0x0E1A0202, 0x0E210202, 0x0E230202, 0x0E250202,  // U+0060
    0x0E2C0202, 0x0E320202, 0x0E350202, 0x0E360202, 0x0E480202, 0x0E510202, 0x0E700202, 0x0E7C0202,  // U+0068
    0x0E7E0202, 0x0E890202, 0x0E8A0202, 0x0E910202, 0x0E990202, 0x0E9F0202, 0x0EA20202, 0x0EA40202,  // U+0070
    0x0EA60202, 0x0EA70202, 0x0EA90202, 0x074A0202, 0x074C0202, 0x074E0202, 0x07500202, 0x011D0012,  // U+0078
    0x0CFA1D02, 0x0CFA1E02, 0x0CFA1F02, 0x0CFA2002, 0x0CFA2102, 0x0CFA2202, 0x0CFA2302, 0x0CFA2402,  // U+0080
    0x0CFA2502, 0x0CFA2602, 0x0CFA2702, 0x0CFA2802, 0x0CFA2902, 0x0CFA2A02, 0x0CFA2B02, 0x0CFA2C02,  // U+0088
    0x0CFA2D02, 0x0CFA2E02, 0x0CFA2F02, 0x0CFA3002, 0x0CFA3102, 0x0CFA3202, 0x0CFA3302, 0x0CFA3402,  // U+0090
    0x0CFA3502, 0x0CFA3602, 0x0CFA3702, 0x0CFA3802, 0x0CFA3902, 0x0CFA3A02, 0x0CFA3B02, 0x0CFA3C02,  // U+0098
    0x07040202, 0x07510202, 0x07970202, 0x07980202, 0x07990202, 0x079A0202, 0x07520202, 0x0A060202,  // U+00A0
    0x07530202, 0x0A070202, 0x0E02030E, 0x08180202, 0x0A080202, 0x00000000, 0x0A090202, 0x07540202,  // U+00A8
    0x0A0A0202, 0x08170202, 0x0D1C020E, 0x0D1E020E, 0x07550202, 0x0A0B0202, 0x0A0C0202, 0x0A0D0202,  // U+00B0
    0x07560202, 0x0D1A020E, 0x0E7C030E, 0x081A0202, 0x0D0D0202, 0x0D110202, 0x0D150202, 0x07570202,  // U+00B8
    0x0E020F12, 0x0E020E12, 0x0E021212, 0x0E021912, 0x0E021312, 0x0E021A12, 0x02000000, 0x0E0A1C12,  // U+00C0
    0x0E210F12, 0x0E210E12, 0x0E211212, 0x0E211312, 0x0E320F12, 0x0E320E12, 0x0E321212, 0x0E321312,  // U+00C8
    0x0E1A6812, 0x0E701912, 0x0E7C0F12, 0x0E7C0E12, 0x0E7C1212, 0x0E7C1912, 0x0E7C1312, 0x081C0202,  // U+00D0
    0x0E7C2112, 0x0E9F0F12, 0x0E9F0E12, 0x0E9F1212, 0x0E9F1312, 0x0EA70E12, 0x02000000, 0x02000000,  // U+00D8
    0x0E020F02, 0x0E020E02, 0x0E021202, 0x0E021902, 0x0E021302, 0x0E021A02, 0x02000000, 0x0E0A1C02,  // U+00E0
    0x0E210F02, 0x0E210E02, 0x0E211202, 0x0E211302, 0x0E320F02, 0x0E320E02, 0x0E321202, 0x0E321302,  // U+00E8
    0x0E1A6802, 0x0E701902, 0x0E7C0F02, 0x0E7C0E02, 0x0E7C1202, 0x0E7C1902, 0x0E7C1302, 0x081D0202,  // U+00F0
    0x0E7C2102, 0x0E9F0F02, 0x0E9F0E02, 0x0E9F1202, 0x0E9F1302, 0x0EA70E02, 0x02000000, 0x0EA71302,  // U+00F8
    0x0E021712, 0x0E021702, 0x0E021512, 0x0E021502, 0x0E021B12, 0x0E021B02, 0x0E0A0E12, 0x0E0A0E02,  // U+0100
    0x0E0A1212, 0x0E0A1202, 0x0E0A1012, 0x0E0A1002, 0x0E0A1412, 0x0E0A1402, 0x0E1A1412, 0x0E1A1402,  // U+0108
    0x0E1A1E12, 0x0E1A1E02, 0x0E211712, 0x0E211702, 0x0E211512, 0x0E211502, 0x0E211012, 0x0E211002,  // U+0110
    0x0E211B12, 0x0E211B02, 0x0E211412, 0x0E211402, 0x0E251212, 0x0E251202, 0x0E251512, 0x0E251502,  // U+0118
    0x0E251012, 0x0E251002, 0x0E251C12, 0x0E251C02, 0x0E2C1212, 0x0E2C1202, 0x0E2C1E12, 0x0E2C1E02,  // U+0120
    0x0E321912, 0x0E321902, 0x0E321712, 0x0E321702, 0x0E321512, 0x0E321502, 0x0E321B12, 0x0E321B02,  // U+0128
    0x0E321012, 0x0E320402, 0x02000000, 0x02000000, 0x0E351212, 0x0E351202, 0x0E361C12, 0x0E361C02,  // U+0130
    0x0E360402, 0x0E480E12, 0x0E480E02, 0x0E481C12, 0x0E481C02, 0x0E481412, 0x0E481402, 0x0E481112,  // U+0138
    0x0E481102, 0x0E481F12, 0x0E481F02, 0x0E700E12, 0x0E700E02, 0x0E701C12, 0x0E701C02, 0x0E701412,  // U+0140
    0x0E701402, 0x0E704802, 0x0E740212, 0x0E740202, 0x0E7C1712, 0x0E7C1702, 0x0E7C1512, 0x0E7C1502,  // U+0148
    0x0E7C1D12, 0x0E7C1D02, 0x02000000, 0x02000000, 0x0E8A0E12, 0x0E8A0E02, 0x0E8A1C12, 0x0E8A1C02,  // U+0150
    0x0E8A1412, 0x0E8A1402, 0x0E910E12, 0x0E910E02, 0x0E911212, 0x0E911202, 0x0E911C12, 0x0E911C02,  // U+0158
    0x0E911412, 0x0E911402, 0x0E991C12, 0x0E991C02, 0x0E991412, 0x0E991402, 0x0E9E1E12, 0x0E9E1E02,  // U+0160
    0x0E9F1912, 0x0E9F1902, 0x0E9F1712, 0x0E9F1702, 0x0E9F1512, 0x0E9F1502, 0x0E9F1A12, 0x0E9F1A02,  // U+0168
    0x0E9F1D12, 0x0E9F1D02, 0x0E9F1B12, 0x0E9F1B02, 0x0EA41212, 0x0EA41202, 0x0EA71212, 0x0EA71202,  // U+0170
    0x0EA71312, 0x0EA90E12, 0x0EA90E02, 0x0EA91012, 0x0EA91002, 0x0EA91412, 0x0EA91402, 0x0E960202,  // U+0178
};

struct Expansion {
    char16_t code;
    std::uint32_t first, second;
};
constexpr Expansion expansions[] = {  // AE, THORN, sharp s, IJ, OE
    {0x00C6, 0x0E020212, 0x0E210212},
    {0x00DE, 0x0E990212, 0x0E2C0212},
    {0x00DF, 0x0E910202, 0x0E910202},
    {0x00E6, 0x0E020202, 0x0E210202},
    {0x00FE, 0x0E990202, 0x0E2C0202},
    {0x0132, 0x0E320212, 0x0E350212},
    {0x0133, 0x0E320202, 0x0E350202},
    {0x0152, 0x0E7C0212, 0x0E210212},
    {0x0153, 0x0E7C0202, 0x0E210202},
};

constexpr std::uint8_t DefaultAccent = 0x02;
constexpr std::uint8_t DefaultCase = 0x02;

// One base element of a sort key.
struct Element {
    std::uint32_t base = 0;  // script and weight; beyond them characters the table lacks, in code order
    std::uint8_t accent = DefaultAccent;
    std::uint8_t caseWeight = DefaultCase;
};

struct CharWeights {
    int elements = 0;  // 0: no weight or minor; 1 or 2 base elements
    Element element[2];
    bool minor = false;
    std::uint8_t minorWeight = 0, minorCase = 0;
};

CharWeights fromPacked(std::uint32_t packed) {
    CharWeights w;
    const unsigned script = packed >> 24;
    if (script == 0) return w;
    if (script == 1) {
        w.minor = true;
        w.minorWeight = static_cast<std::uint8_t>(packed >> 16);
        w.minorCase = static_cast<std::uint8_t>(packed);
        return w;
    }
    w.elements = 1;
    w.element[0] = Element{packed >> 16, static_cast<std::uint8_t>(packed >> 8), static_cast<std::uint8_t>(packed)};
    return w;
}

CharWeights weightsOf(char16_t c) {
    if (c < 0x180) {
        if ((latinWeights[c] >> 24) != 2) return fromPacked(latinWeights[c]);
        for (const Expansion& e : expansions) {
            if (e.code != c) continue;
            CharWeights w = fromPacked(e.first);
            w.elements = 2;
            w.element[1] = fromPacked(e.second).element[0];
            return w;
        }
    }
    // Full-width forms sort as their ASCII counterparts, one case step up.
    if (c >= 0xFF01 && c <= 0xFF5E) {
        CharWeights w = weightsOf(static_cast<char16_t>(c - 0xFEE0));
        ++(w.minor ? w.minorCase : w.element[0].caseWeight);
        return w;
    }
    // Arabic-Indic digits sort as digits with an accent of their own.
    if (c >= 0x0660 && c <= 0x0669) {
        CharWeights w = weightsOf(static_cast<char16_t>(c - 0x0660 + u'0'));
        w.element[0].accent = 0x04;
        return w;
    }
    switch (c) {
        case 0x2010: return fromPacked(0x01840012);  // hyphen
        case 0x2011: return fromPacked(0x01850012);  // non-breaking hyphen
        case 0x2013: return fromPacked(0x01890012);  // en dash
        case 0x2014: return fromPacked(0x01900012);  // em dash
        case 0x2212: return fromPacked(0x01830012);  // minus sign
        case 0x2018: return fromPacked(0x07790202);
        case 0x2019: return fromPacked(0x077A0202);
        case 0x201C: return fromPacked(0x077D0202);
        case 0x201D: return fromPacked(0x077E0202);
        case 0x2028: return fromPacked(0x07170202);
        case 0x20AC: return fromPacked(0x07A90202);  // euro sign
        case 0x3000: return fromPacked(0x07020203);  // ideographic space: a wide blank
        case 0xFEFF: return {};                      // zero-width no-break space
        default: break;
    }
    CharWeights w;
    w.elements = 1;
    w.element[0].base = 0x10000u + c;
    return w;
}

// The base elements of a text, one after the other.
class Elements {
public:
    explicit Elements(TextView text) : text_(text) {}
    bool next(Element& out) {
        while (sub_ == current_.elements) {
            if (position_ == text_.size()) return false;
            current_ = weightsOf(text_[position_++]);
            sub_ = 0;
        }
        out = current_.element[sub_++];
        return true;
    }

private:
    TextView text_;
    std::size_t position_ = 0;
    CharWeights current_;
    int sub_ = 0;
};

int order(std::uint32_t a, std::uint32_t b) { return a < b ? -1 : (a > b ? 1 : 0); }

// The first three levels in one pass: the base elements decide; when they
// tie, the first accent that differs, then the first case that differs.
// (The key drops default weights at the end of these levels; as no weight
// is below its default, comparing element by element orders alike.)
int compareElements(TextView a, TextView b) {
    Elements ea(a), eb(b);
    int accent = 0, caseWeight = 0;
    for (Element x, y;;) {
        const bool more = ea.next(x), moreB = eb.next(y);
        if (!more || !moreB) {
            if (more != moreB) return static_cast<int>(more) - static_cast<int>(moreB);
            return accent != 0 ? accent : caseWeight;
        }
        if (int r = order(x.base, y.base)) return r;
        if (accent == 0) accent = order(x.accent, y.accent);
        if (caseWeight == 0) caseWeight = order(x.caseWeight, y.caseWeight);
    }
}

// Minor characters, by place (counted in base elements before them; the
// key stores it downwards, so an earlier place sorts later), weight and case.
class MinorMarks {
public:
    explicit MinorMarks(TextView text) : text_(text) {}
    bool next(std::uint32_t& out) {
        while (position_ < text_.size()) {
            const CharWeights w = weightsOf(text_[position_++]);
            if (!w.minor) {
                before_ += static_cast<std::uint32_t>(w.elements);
                continue;
            }
            const std::uint32_t place = 0xFFFFu - (before_ > 0xFFFFu ? 0xFFFFu : before_);
            out = place << 16 | static_cast<std::uint32_t>(w.minorWeight) << 8 | w.minorCase;
            return true;
        }
        return false;
    }

private:
    TextView text_;
    std::size_t position_ = 0;
    std::uint32_t before_ = 0;
};

int compareMinor(TextView a, TextView b) {
    MinorMarks sa(a), sb(b);
    for (std::uint32_t x, y;;) {
        const bool more = sa.next(x), moreB = sb.next(y);
        if (!more || !moreB) return static_cast<int>(more) - static_cast<int>(moreB);
        if (int r = order(x, y)) return r;
    }
}

}  // namespace

int collate(TextView a, TextView b) noexcept {
    if (a == b) return 0;
    if (int r = compareElements(a, b)) return r;
    if (int r = compareMinor(a, b)) return r;
    // Texts that differ only in characters without weight (a NUL, a soft
    // hyphen) would tie; only identical texts are equal here, so that equal
    // Variants are interchangeable, and code unit order decides.
    return a < b ? -1 : 1;
}

}  // namespace rules

// ---- Comparison of Variants ----

namespace {

Comparison orderOf(auto a, auto b) {
    if (a < b) return Comparison::Less;
    if (a == b) return Comparison::Equal;
    return Comparison::Greater;  // also when either is NaN, as the runtime answers
}

Comparison fromSign(int r) { return r < 0 ? Comparison::Less : (r > 0 ? Comparison::Greater : Comparison::Equal); }

// The numeric families the runtime compares in, from the narrowest.
enum class Family { Integer, Currency, Double, Single };

Family familyOf(VarType t) {
    switch (t) {
        case VarType::Single: return Family::Single;
        case VarType::Double: case VarType::Date: return Family::Double;
        case VarType::Currency: return Family::Currency;
        default: return Family::Integer;  // Empty, Integer, Long, Boolean, Byte
    }
}

std::int64_t integerValue(const Variant& v) {
    if (auto x = v.get<std::int16_t>()) return *x;
    if (auto x = v.get<std::int32_t>()) return *x;
    if (auto x = v.get<std::uint8_t>()) return *x;
    if (auto x = v.get<bool>()) return *x ? -1 : 0;
    return 0;  // Empty
}

double doubleValue(const Variant& v) {
    if (auto x = v.get<double>()) return *x;
    if (auto x = v.get<Date>()) return x->days;
    if (auto x = v.get<float>()) return *x;
    if (auto x = v.get<Currency>()) return rules::doubleFromCurrency(*x);
    return static_cast<double>(integerValue(v));
}

Currency currencyValue(const Variant& v) {
    if (auto x = v.get<Currency>()) return *x;
    return Currency{integerValue(v) * Currency::scale};
}

// A Single against anything numeric compares at single precision, unless
// the other side is too large for a Single; then both compare as Doubles.
Comparison compareAsSingle(const Variant& a, const Variant& b) {
    const double x = doubleValue(a), y = doubleValue(b);
    if (std::fabs(x) > rules::SingleLimit || std::fabs(y) > rules::SingleLimit) return orderOf(x, y);
    return orderOf(static_cast<float>(x), static_cast<float>(y));
}

// Currency against Currency or an integer kind: the runtime subtracts in
// Double and takes the sign of the difference as Currency, so a difference
// beyond the Currency range overflows, and amounts closer than a Double can
// tell apart are equal.
Comparison compareAsCurrency(const Variant& a, const Variant& b) {
    const double difference = rules::doubleFromCurrency(currencyValue(a)) - rules::doubleFromCurrency(currencyValue(b));
    return orderOf(rules::currencyFromDouble(difference).scaled, std::int64_t{0});
}

bool isScalar(const Variant& v) { return !v.isObject() && !v.isMissing() && v.type() != VarType::ByteArray; }

// The runtime sorts the empty text first, then texts that begin with a NUL
// (which its string comparison treats apart), then all others by the
// locale's collation.
Comparison orderOfTexts(TextView a, TextView b) {
    const auto group = [](TextView t) { return t.empty() ? 0 : (t[0] == u'\0' ? 1 : 2); };
    if (group(a) != group(b)) return orderOf(group(a), group(b));
    return fromSign(rules::collate(a, b));
}

}  // namespace

Comparison compare(const Variant& a, const Variant& b) {
    if (!isScalar(a) || !isScalar(b)) rules::typeMismatch();
    if (a.isNull() || b.isNull()) return Comparison::Null;
    const Text* ta = a.get<Text>();
    const Text* tb = b.get<Text>();
    if (ta || tb) {
        // Empty counts as the empty text; any other value sorts before a text.
        if (ta && tb) return orderOfTexts(*ta, *tb);
        if (ta) return b.isEmpty() ? orderOfTexts(*ta, TextView()) : Comparison::Greater;
        return a.isEmpty() ? orderOfTexts(TextView(), *tb) : Comparison::Less;
    }
    const Family family = std::max(familyOf(a.type()), familyOf(b.type()));
    switch (family) {
        case Family::Single: return compareAsSingle(a, b);
        case Family::Double: return orderOf(doubleValue(a), doubleValue(b));
        case Family::Currency: return compareAsCurrency(a, b);
        case Family::Integer: break;
    }
    return orderOf(integerValue(a), integerValue(b));
}

bool variantEquals(const Variant& a, const Variant& b) { return compare(a, b) == Comparison::Equal; }

bool conditionHolds(const Variant& condition) { return !condition.isNull() && condition.toBoolean(); }

bool variantEqualsStrict(const Variant& a, const Variant& b) {
    const Comparison c = compare(a, b);
    if (c == Comparison::Null) errors::raise(errors::Runtime::InvalidUseOfNull);
    return c == Comparison::Equal;
}

}  // namespace tylhart
