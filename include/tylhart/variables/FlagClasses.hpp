// The flag classes: CVariableClass, CMethodClass, CStatusClass and
// COutputStatusClass. Each keeps a set of Boolean flags, indexed by the
// values of one enumeration, in a flag array that it creates and owns, and
// hands out itself: whatever a caller does to the array (a resize, say) is
// the owner's, and the array's own errors reach the owner's callers.
#pragma once

#include "tylhart/core/Dispatch.hpp"
#include "tylhart/external/CFlagArray.hpp"

namespace tylhart {

class COutputStatusClassSet;

namespace detail {

// The owner's link to its one flag array. The flags stay in the owner,
// one bit each, until someone asks for the array object, which then holds
// them for good: most owners are made, copied and compared without anyone
// asking, and a copy of a few bits allocates nothing. Flag indexes go to
// the array's rules unchecked: whatever they do with an index outside the
// count reaches the caller unchanged.
class FlagArrayLink {
public:
    static constexpr std::int32_t MaxLocalCount = 32;
    // Count flags, those of Set (bit i for flag i) set.
    explicit FlagArrayLink(std::int32_t count, std::uint32_t set = 0) noexcept : bits_(set), count_(count) {}

    Ref<Object> object() const {
        if (!array_) array_ = Ref<CFlagArray>(new CFlagArray(localText()));
        return array_;
    }
    bool flag(std::int32_t index) const {
        if (array_) return CFlagArray::flag(array_->flags_, index);
        return (bits_ >> CFlagArray::checkedIndex(static_cast<std::size_t>(count_), index)) & 1u;
    }
    void setFlag(std::int32_t index, bool value) {
        if (array_) return CFlagArray::setFlag(array_->flags_, index, value);
        const std::uint32_t bit = 1u << CFlagArray::checkedIndex(static_cast<std::size_t>(count_), index);
        bits_ = value ? bits_ | bit : bits_ & ~bit;
    }
    // The flags text, "1" set and "0" clear in index order.
    Text text() const { return array_ ? array_->flags_ : localText(); }
    void setText(const Text& text) {
        if (array_) return CFlagArray::assign(array_->flags_, text);
        Text checked = localText();
        CFlagArray::assign(checked, text);  // the array's rules, all or nothing
        bits_ = bitsOf(checked);
    }
    // As setText(source.text()) and text() == other.text(), without
    // making a text while both keep their flags locally.
    void copyFrom(const FlagArrayLink& source) {
        if (!array_ && !source.array_ && count_ == source.count_) bits_ = source.bits_;
        else setText(source.text());
    }
    bool sameFlags(const FlagArrayLink& other) const {
        if (!array_ && !other.array_ && count_ == other.count_) return bits_ == other.bits_;
        return text() == other.text();
    }

private:
    Text localText() const {
        Text out(static_cast<std::size_t>(count_), u'0');
        for (std::int32_t i = 0; i < count_; ++i)
            if ((bits_ >> i) & 1u) out[static_cast<std::size_t>(i)] = u'1';
        return out;
    }
    static std::uint32_t bitsOf(const Text& flags) noexcept {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < flags.size(); ++i)
            if (flags[i] == u'1') bits |= 1u << i;
        return bits;
    }

    std::uint32_t bits_ = 0;
    std::int32_t count_;
    mutable Ref<CFlagArray> array_;
};

}  // namespace detail

// What the four classes share: a flag array of Count flags for the values
// 0 .. Count - 1 of Index, made with the object and never replaced, and a
// GetCopy that is a new object plus its SetFromObject. Each class adds its
// own accessors, fields, copy, comparison and rendering.
template <class Derived, class Index, std::int32_t Count>
class FlagClass : public Object {
public:
    using FlagIndex = Index;
    static constexpr std::int32_t FlagCount = Count;
    static constexpr bool FreshAreAlike = true;  // see Child

    Ref<Derived> GetCopy() const {
        return copyOf(static_cast<const Derived&>(*this));
    }

protected:
    static_assert(Count <= detail::FlagArrayLink::MaxLocalCount);
    FlagClass() : flags_(Count) {}

    // The array itself, not a copy: changes made through it are the owner's.
    Ref<Object> flagArray() const { return flags_.object(); }
    bool flag(Index index) const { return flags_.flag(index); }
    void setFlag(Index index, bool value) { flags_.setFlag(index, value); }
    Text flagText() const { return flags_.text(); }
    // Copying fails, and changes nothing, when the source's array was given
    // another count than this owner's flags have.
    void copyFlagsFrom(const FlagClass& source) { flags_.copyFrom(source.flags_); }
    bool sameFlags(const FlagClass& other) const { return flags_.sameFlags(other.flags_); }

    // The flag accessors pass their index to the array by reference.
    static Param indexParam() { return Param{u"Index", Missing{}, false, true}; }

private:
    detail::FlagArrayLink flags_;
};

// The CLASS of a variable or bit enumerator: 13 flags, one per
// enumDDVariableClassType value.
class CVariableClass final : public FlagClass<CVariableClass, enumDDVariableClassType, 13> {
    TYLHART_CLASS(CVariableClass)
public:
    Ref<Object> GetClassInfoObj() const { return flagArray(); }
    bool ClassInfo(enumDDVariableClassType index) const { return flag(index); }
    void SetClassInfo(enumDDVariableClassType index, bool value) { setFlag(index, value); }

    // Copies and compares the flag text, nothing else.
    void SetFromObject(const Ref<CVariableClass>& toCopy);
    bool Compare(const Ref<CVariableClass>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

// The CLASS of a method: 11 flags, one per enumDDMethodClass value.
class CMethodClass final : public FlagClass<CMethodClass, enumDDMethodClass, 11> {
    TYLHART_CLASS(CMethodClass)
public:
    Ref<Object> GetClassInfoObj() const { return flagArray(); }
    bool ClassInfo(enumDDMethodClass index) const { return flag(index); }
    void SetClassInfo(enumDDMethodClass index, bool value) { setFlag(index, value); }

    void SetFromObject(const Ref<CMethodClass>& toCopy);
    bool Compare(const Ref<CMethodClass>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

// One output status class entry: kind, range and the two mode flags.
class COutputStatusClass final
    : public FlagClass<COutputStatusClass, enumDDOutputStatusClassMode, 2> {
    TYLHART_CLASS(COutputStatusClass)
public:
    std::int32_t Range = 0;

    Ref<Object> GetModeObj() const { return flagArray(); }
    bool Mode(enumDDOutputStatusClassMode index) const { return flag(index); }
    void SetMode(enumDDOutputStatusClassMode index, bool value) { setFlag(index, value); }

    enumDDOutputStatusClass Kind() const noexcept { return kind_; }
    // Only ddosCDV .. ddosCALL; anything else is refused and the kind stays.
    void SetKind(enumDDOutputStatusClass newKind);

    // Kind goes through the checked setter first, so a source holding a bad
    // kind is refused before anything is copied.
    void SetFromObject(const Ref<COutputStatusClass>& toCopy);
    bool Compare(const Ref<COutputStatusClass>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    enumDDOutputStatusClass kind_ = ddosCDV;
};

// The status classes of a bit enumerator: 16 "other" flags, one per
// enumDDStatusOtherType value, and a set of output status classes.
class CStatusClass final : public FlagClass<CStatusClass, enumDDStatusOtherType, 16> {
    TYLHART_CLASS(CStatusClass)
public:
    CStatusClass();  // Output starts as a new empty set
    ~CStatusClass() override;

    // May be replaced or cleared; Nothing makes Compare and copying from
    // this object fail with the missing-object error.
    Ref<COutputStatusClassSet> Output;

    Ref<Object> GetOtherObj() const { return flagArray(); }
    bool Other(enumDDStatusOtherType index) const { return flag(index); }
    void SetOther(enumDDStatusOtherType index, bool value) { setFlag(index, value); }

    // Output becomes a deep copy of the source's set, never the same set.
    void SetFromObject(const Ref<CStatusClass>& toCopy);
    bool Compare(const Ref<CStatusClass>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart

// CStatusClass.Output is usable wherever the flag classes are included.
#include "tylhart/variables/COutputStatusClassSet.hpp"
