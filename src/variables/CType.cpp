#include "tylhart/variables/CType.hpp"

#include <array>
#include <initializer_list>
#include <string>
#include <utility>

namespace tylhart {

namespace {

// The highest kind the Kind let accepts: the time-value kind 15, one above
// the enumeration's ddvTMax.
constexpr std::int32_t HighestKind = ddvTMax15;

constexpr std::uint16_t kinds(std::initializer_list<int> list) {
    std::uint16_t mask = 0;
    for (int k : list) mask = static_cast<std::uint16_t>(mask | (1u << k));
    return mask;
}
constexpr std::uint16_t Numeric = kinds({ddvTFloat, ddvTDouble, ddvTInt, ddvTUnsigned});
constexpr std::uint16_t Formatted = Numeric | kinds({ddvTTimeValue});
constexpr std::uint16_t AllButFloats = static_cast<std::uint16_t>(0xFFFFu & ~kinds({ddvTFloat, ddvTDouble}));

struct KindRule {
    std::uint16_t allowedKinds;  // bit k set: kind k owns the member
    const char16_t* source;
};

// One row per CType::Checked member, in its order. The errors report the
// "Type." prefix, not the class name, and MaxBitEnumIndex reports
// "Type.MaxEnumIndex" while also admitting the enumerator kind: clients
// match on these sources, so they stay as they are.
constexpr std::array<KindRule, 15> kindRules{{
    {AllButFloats, u"Type.Size"},
    {Numeric, u"Type.MaxRangeNo"},
    {Numeric, u"Type.MinValues"},
    {Numeric, u"Type.MaxValues"},
    {Numeric, u"Type.ScalingFactor"},
    {Formatted, u"Type.DisplayFormat"},
    {Formatted, u"Type.EditFormat"},
    {kinds({ddvTTimeValue}), u"Type.TimeFormat"},
    {kinds({ddvTTimeValue}), u"Type.ScaleQualifier"},
    {kinds({ddvTEnumerator}), u"Type.MaxEnumIndex"},
    {kinds({ddvTEnumerator, ddvTBitEnumerator}), u"Type.MaxEnumIndex"},
    {kinds({ddvTEnumerator}), u"Type.Enumerators"},
    {kinds({ddvTBitEnumerator}), u"Type.BitEnumerators"},
    {kinds({ddvTIndex}), u"Type.ArrayObject"},
    {kinds({ddvTIndex}), u"Type.Domain"},
}};

constexpr char16_t KindSource[] = u"Type.Kind";

bool between(std::int32_t kind, std::int32_t low, std::int32_t high) { return kind >= low && kind <= high; }
bool ownsSize(std::int32_t kind) { return between(kind, ddvTInt, ddvTBitString); }
bool ownsRanges(std::int32_t kind) { return between(kind, ddvTFloat, ddvTUnsigned); }

template <class V>
auto& valueAt(V& values, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= values.size())
        errors::raise(errors::Runtime::SubscriptOutOfRange);
    return values[static_cast<std::size_t>(index)];
}

// Both Null match, one Null differs, otherwise the runtime's comparison.
bool rangeEndsMatch(const Variant& a, const Variant& b) {
    if (a.isNull() || b.isNull()) return a.isNull() && b.isNull();
    return variantEquals(a, b);
}

}  // namespace

void CType::require(Checked member) const {
    if (!CheckForExactKind || kind_ < 0) return;
    const KindRule& rule = kindRules[static_cast<std::size_t>(member)];
    if ((rule.allowedKinds & (1u << kind_)) == 0) errors::raise(rule.source, errors::WrongKind);
}

// The change check comes first, so changing a fixed kind to an out-of-range
// value reports the "Once a Kind" message.
void CType::checkKindChange(enumDDVariableType newKind) const {
    if (kind_ >= 0 && newKind != kind_) errors::raise(KindSource, errors::KindFixed);
    if (newKind < 0 || newKind > HighestKind) errors::raise(KindSource, errors::KindOutOfRange);
}

void CType::SetKind(enumDDVariableType newKind) {
    checkKindChange(newKind);
    kind_ = newKind;
}

std::int16_t CType::Size() const {
    require(Checked::Size);
    return size_;
}
void CType::SetSize(std::int16_t newSize) {
    require(Checked::Size);
    size_ = newSize;
}

std::int16_t CType::MaxRangeNo() const {
    require(Checked::MaxRangeNo);
    return rangeCount_;
}
void CType::SetMaxRangeNo(std::int16_t newCount) { replaceRanges(newCount); }

const CType::RangeEnds& CType::rangeAt(std::int32_t index) const {
    static const RangeEnds unwritten;
    const std::vector<RangeEnds>& ranges = ranges_.read();
    if (ranges.empty() && index == 0) return unwritten;
    return valueAt(ranges, index);
}
CType::RangeEnds& CType::rangeAt(std::int32_t index) {
    std::as_const(*this).rangeAt(index);  // the subscript check, before the ranges become this type's own
    std::vector<RangeEnds>& ranges = ranges_.write();
    if (ranges.empty()) ranges.resize(1);
    return ranges[static_cast<std::size_t>(index)];
}

void CType::replaceRanges(std::int16_t newCount, Ranges ends) {
    require(Checked::MaxRangeNo);
    if (ends.read().empty())
        ends = Ranges(std::vector<RangeEnds>(newCount < 0 ? 1 : static_cast<std::size_t>(newCount) + 1,
                                             RangeEnds{Null{}, Null{}}));
    rangeCount_ = newCount;
    ranges_ = std::move(ends);
}

Variant CType::MinValues(std::int32_t index) const {
    require(Checked::MinValues);
    return rangeAt(index).min;
}
void CType::SetMinValues(std::int32_t index, const Variant& value) {
    require(Checked::MinValues);
    rangeAt(index).min = value;
}
Variant CType::MaxValues(std::int32_t index) const {
    require(Checked::MaxValues);
    return rangeAt(index).max;
}
void CType::SetMaxValues(std::int32_t index, const Variant& value) {
    require(Checked::MaxValues);
    rangeAt(index).max = value;
}

Variant CType::ScalingFactor() const {
    require(Checked::ScalingFactor);
    return scalingFactor_;
}
void CType::SetScalingFactor(const Variant& value) {
    require(Checked::ScalingFactor);
    scalingFactor_ = value;
}

Text CType::DisplayFormat() const {
    require(Checked::DisplayFormat);
    return displayFormat_;
}
void CType::SetDisplayFormat(Text value) {
    require(Checked::DisplayFormat);
    displayFormat_ = std::move(value);
}
Text CType::EditFormat() const {
    require(Checked::EditFormat);
    return editFormat_;
}
void CType::SetEditFormat(Text value) {
    require(Checked::EditFormat);
    editFormat_ = std::move(value);
}

std::int32_t CType::MaxEnumIndex() const {
    require(Checked::MaxEnumIndex);
    return enumeratorCount_;
}
void CType::SetMaxEnumIndex(std::int32_t value) {
    require(Checked::MaxEnumIndex);
    if (kind_ != ddvTEnumerator) return;
    if (value > 0) EnumeratorSet = make<CEnumeratorSet>();
    enumeratorCount_ = value;
}
std::int32_t CType::MaxBitEnumIndex() const {
    require(Checked::MaxBitEnumIndex);
    return enumeratorCount_;
}
void CType::SetMaxBitEnumIndex(std::int32_t value) {
    require(Checked::MaxBitEnumIndex);
    if (kind_ != ddvTBitEnumerator) return;
    if (value > 0) BitEnumeratorSet = make<CBitEnumeratorSet>();
    enumeratorCount_ = value;
}

Ref<CEnumerator> CType::Enumerators(std::int32_t index) const {
    require(Checked::Enumerators);
    try {
        return checked(EnumeratorSet).FindItem(index);
    } catch (const Error&) {
        return {};
    }
}
void CType::SetEnumerators(std::int32_t, const Ref<CEnumerator>& value) {
    require(Checked::Enumerators);
    try {
        checked(EnumeratorSet).Remove(value);
    } catch (const Error&) {
    }
    checked(EnumeratorSet).Add(value);
}
Ref<CBitEnumerator> CType::BitEnumerators(std::int32_t index) const {
    require(Checked::BitEnumerators);
    try {
        return checked(BitEnumeratorSet).FindItem(index);
    } catch (const Error&) {
        return {};
    }
}
void CType::SetBitEnumerators(std::int32_t, const Ref<CBitEnumerator>& value) {
    require(Checked::BitEnumerators);
    try {
        checked(BitEnumeratorSet).Remove(value);
    } catch (const Error&) {
    }
    checked(BitEnumeratorSet).Add(value);
}

Ref<CArray> CType::ArrayObject() const {
    require(Checked::ArrayObject);
    return arrayObject_;
}
void CType::SetArrayObject(const Ref<CArray>& value) {
    require(Checked::ArrayObject);
    arrayObject_ = value;
}
Ref<CValueSet> CType::Domain() const {
    require(Checked::Domain);
    return domain_.ref();
}
void CType::SetDomain(const Ref<CValueSet>& value) {
    require(Checked::Domain);
    domain_ = value;
}

Text CType::TimeFormat() const {
    require(Checked::TimeFormat);
    return timeFormat_;
}
void CType::SetTimeFormat(Text value) {
    require(Checked::TimeFormat);
    timeFormat_ = std::move(value);
}
enumTimeScaleQualificationType CType::ScaleQualifier() const {
    require(Checked::ScaleQualifier);
    return scaleQualifier_;
}
void CType::SetScaleQualifier(enumTimeScaleQualificationType value) {
    require(Checked::ScaleQualifier);
    scaleQualifier_ = value;
}

Ref<CType> CType::GetCopy() const {
    return copyOf(*this);
}

void CType::SetFromObject(const Ref<CType>& toCopy) {
    const CType& source = checked(toCopy);
    const enumDDVariableType kind = source.Kind();
    if (kind == ddvTUndefined) {
        // The one way back to an undefined kind; nothing else is copied.
        kind_ = ddvTUndefined;
        return;
    }
    checkKindChange(kind);

    // Everything is read (and every child copied) before anything changes,
    // so a refused copy leaves this type as it was, and a type copied into
    // itself keeps its ranges.
    struct {
        std::int16_t count = -1;
        Ranges ends;
        Variant scaling;
    } ranges;
    if (ownsRanges(kind)) {
        // MinValues and MaxValues follow MaxRangeNo's kind rule, and hold
        // exactly MaxRangeNo + 1 ends once it is set.
        ranges.count = source.rangeCount_;
        if (ranges.count >= 0) ranges.ends = source.ranges_;
        ranges.scaling = source.scalingFactor_;
    }
    Child<CEnumeratorSet> enumerators;
    Child<CBitEnumeratorSet> bitEnumerators;
    Ref<CArray> array;
    Child<CValueSet> domain;
    if (kind == ddvTEnumerator) enumerators = copyChild(source.EnumeratorSet);
    if (kind == ddvTBitEnumerator) bitEnumerators = copyChild(source.BitEnumeratorSet);
    if (kind == ddvTIndex) {
        array = checked(source.ArrayObject()).GetCopy();
        domain = copyChild(source.domain_);
    }

    // From here on the fields are copied as they are: the source is of the
    // same kind, so every kind rule that its accessors would check admits
    // them, and its values passed its own setters' checks.
    kind_ = kind;
    if (ownsSize(kind)) size_ = source.size_;
    if (ownsRanges(kind)) {
        replaceRanges(ranges.count, std::move(ranges.ends));
        scalingFactor_ = std::move(ranges.scaling);
        displayFormat_ = source.displayFormat_;
        editFormat_ = source.editFormat_;
    }
    if (kind == ddvTEnumerator) {
        enumeratorCount_ = source.enumeratorCount_;
        EnumeratorSet = std::move(enumerators);
    }
    if (kind == ddvTBitEnumerator) {
        enumeratorCount_ = source.enumeratorCount_;
        BitEnumeratorSet = std::move(bitEnumerators);
    }
    if (kind == ddvTIndex) {
        SetArrayObject(array);
        domain_ = std::move(domain);
    }
    if (kind == ddvTTimeValue) {
        displayFormat_ = source.displayFormat_;
        editFormat_ = source.editFormat_;
        timeFormat_ = source.timeFormat_;
        scaleQualifier_ = source.scaleQualifier_;
    }
}

bool CType::Compare(const Ref<CType>& toCompare) const {
    const CType& other = checked(toCompare);
    if (kind_ != other.kind_) return false;
    if (kind_ == ddvTUndefined) return true;
    if (ownsSize(kind_) && size_ != other.size_) return false;
    if (ownsRanges(kind_)) {
        if (rangeCount_ != other.rangeCount_) return false;
        for (std::int32_t i = 0; i <= rangeCount_; ++i) {
            const RangeEnds& mine = rangeAt(i);
            const RangeEnds& theirs = other.rangeAt(i);
            if (!rangeEndsMatch(mine.min, theirs.min) || !rangeEndsMatch(mine.max, theirs.max)) return false;
        }
        // No tolerance; a Null on either side counts as a difference.
        if (!variantEquals(scalingFactor_, other.scalingFactor_)) return false;
        if (displayFormat_ != other.displayFormat_ || editFormat_ != other.editFormat_) return false;
    }
    if (kind_ == ddvTEnumerator)
        return enumeratorCount_ == other.enumeratorCount_ && EnumeratorSet.equals(other.EnumeratorSet);
    if (kind_ == ddvTBitEnumerator)
        return enumeratorCount_ == other.enumeratorCount_ &&
               BitEnumeratorSet.equals(other.BitEnumeratorSet);
    if (kind_ == ddvTIndex)
        return checked(arrayObject_).Compare(other.arrayObject_) && domain_.equals(other.domain_);
    if (kind_ == ddvTTimeValue)
        return timeFormat_ == other.timeFormat_ && scaleQualifier_ == other.scaleQualifier_ &&
               displayFormat_ == other.displayFormat_ && editFormat_ == other.editFormat_;
    return true;
}

Variant CType::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    // The kind's own closing brace is always written, so the text ends in
    // two braces; callers compare this text.
    Text out;
    out.reserve(infoLevel >= 2 ? 160 : 16);
    out.append(u"Type{Kind:"sv).append(decimal(kind_)).append(u"}"sv);
    if (infoLevel >= 2 && kind_ >= 0) {
        const auto child = static_cast<std::int16_t>(infoLevel - 1);
        if (ownsSize(kind_)) out.append(u", Size:"sv).append(decimal(size_));
        if (ownsRanges(kind_)) {
            out += u", Ranges:{";
            for (std::int32_t i = 0; i <= rangeCount_; ++i)
                out.append(u" ("sv).append(decimal(i)).append(u":"sv).append(concatText(rangeAt(i).min))
                    .append(u" - "sv).append(concatText(rangeAt(i).max)).append(u")"sv);
            out.append(u"}, ScalingFactor:"sv).append(concatText(scalingFactor_)).append(u", DisplayFormat:"sv)
                .append(displayFormat_).append(u", EditFormat:"sv).append(editFormat_);
        }
        if (kind_ == ddvTEnumerator)
            EnumeratorSet.renderInto(out.append(u", Enumerators:"sv), child);
        if (kind_ == ddvTBitEnumerator)
            BitEnumeratorSet.renderInto(out.append(u", BitEnumerators:"sv), child);
        if (kind_ == ddvTIndex) {
            if (arrayObject_) out.append(u", ArrayObject:"sv).append(concatText(arrayObject_->ToString(child)));
            // The array object's text again, under the domain's label; the
            // domain itself is never printed. Callers compare this text.
            if (domain_) out.append(u", Domain:"sv).append(concatText(checked(arrayObject_).ToString(child)));
        }
        if (kind_ == ddvTTimeValue)
            out += u", DisplayFormat:" + displayFormat_ + u", EditFormat:" + editFormat_ + u", TimeFormat:" +
                   timeFormat_ + u", ScaleQualifier:" + decimal(scaleQualifier_);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CType::staticClassInfo() {
    static const ClassInfo info = [] {
        const Param index{u"Index", Missing{}, false, true};
        ClassBuilder<CType> b(TypeName);
        b.field(u"CheckForExactKind", &CType::CheckForExactKind)
            .field(u"BitEnumeratorSet", &CType::BitEnumeratorSet)
            .field(u"EnumeratorSet", &CType::EnumeratorSet)
            .property(u"Kind", &CType::Kind, &CType::SetKind)
            .property(u"Size", &CType::Size, &CType::SetSize)
            .property(u"MaxRangeNo", &CType::MaxRangeNo, &CType::SetMaxRangeNo)
            .property(u"MinValues", &CType::MinValues, &CType::SetMinValues, {index})
            .asLet()
            .property(u"MaxValues", &CType::MaxValues, &CType::SetMaxValues, {index})
            .asLet()
            .property(u"ScalingFactor", &CType::ScalingFactor, &CType::SetScalingFactor)
            .asLet()
            .property(u"DisplayFormat", &CType::DisplayFormat, &CType::SetDisplayFormat)
            .property(u"EditFormat", &CType::EditFormat, &CType::SetEditFormat)
            .property(u"MaxEnumIndex", &CType::MaxEnumIndex, &CType::SetMaxEnumIndex)
            .property(u"MaxBitEnumIndex", &CType::MaxBitEnumIndex, &CType::SetMaxBitEnumIndex)
            .property(u"Enumerators", &CType::Enumerators, &CType::SetEnumerators, {index})
            .asLet()
            .property(u"BitEnumerators", &CType::BitEnumerators, &CType::SetBitEnumerators, {index})
            .asLet()
            .property(u"ArrayObject", &CType::ArrayObject, &CType::SetArrayObject)
            .asLet()
            .property(u"Domain", &CType::Domain, &CType::SetDomain)
            .asLet()
            .method(u"GetCopy", &CType::GetCopy)
            .method(u"SetFromObject", &CType::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &CType::Compare, {required(u"ToCompare")})
            .method(u"ToString", &CType::ToString, {optional(u"InfoLevel", std::int16_t{1})})
            .property(u"TimeFormat", &CType::TimeFormat, &CType::SetTimeFormat)
            .property(u"ScaleQualifier", &CType::ScaleQualifier, &CType::SetScaleQualifier);
        return b.build();
    }();
    return info;
}

}  // namespace tylhart
