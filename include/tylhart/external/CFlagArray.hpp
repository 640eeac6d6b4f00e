// CFlagArray: this library's own fixed-length array of Boolean flags, the
// store behind the class and status flags. Late-bound callers reach it by
// the identifiers below, so those identifiers are its interface.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

namespace detail {
class FlagArrayLink;
}

class CFlagArray final : public Object {
    TYLHART_CLASS(CFlagArray)
public:
    static constexpr DispId FlagId = DispIdValue;  // the default member
    static constexpr DispId FlagTextId = 102;
    static constexpr DispId FlagCountId = 103;

    CFlagArray() = default;

    // A new array holds no flags; every flag a resize adds starts clear.
    std::int32_t FlagCount() const noexcept { return static_cast<std::int32_t>(flags_.size()); }
    // Keeps the flags below the new count. A negative count is the runtime's
    // "Invalid procedure call or argument" (5), a count above MaxElements
    // its "Out of memory" (7); either way nothing changed.
    void SetFlagCount(std::int32_t count);

    // An index outside 0 .. FlagCount - 1 is the runtime's "Subscript out of
    // range" (9), as for any array. Late-bound callers may pass the value as
    // any number: it is stored as "not zero".
    bool Flag(std::int32_t index) const;
    void SetFlag(std::int32_t index, bool value);

    // One character per flag in index order, "1" set and "0" clear. Equal
    // flags give equal texts, and a text read from one array writes the same
    // flags into another of the same count: owners copy and compare by it.
    Text FlagText() const;
    // All or nothing: a text whose length is not FlagCount is the runtime's
    // "Invalid procedure call or argument" (5); a character other than "0"
    // or "1" is its "Type mismatch" (13). Both are checked before any flag
    // changes.
    void SetFlagText(const Text& text);

    // The same rules over a flags text held elsewhere: an owner keeps its
    // flags in place until someone asks for the array object.
    static void resize(Text& flags, std::int32_t count);
    static bool flag(const Text& flags, std::int32_t index);
    static void setFlag(Text& flags, std::int32_t index, bool value);
    static void assign(Text& flags, const Text& text);

private:
    // The owner's link makes its array from the flags it kept, and then
    // reads and writes flags_ in place.
    friend class detail::FlagArrayLink;
    explicit CFlagArray(Text flags) noexcept : flags_(std::move(flags)) {}

    // Index as a position among Count flags, or "Subscript out of range".
    static std::size_t checkedIndex(std::size_t count, std::int32_t index);

    // Held in the text form itself ("0" and "1"): owners read and write the
    // whole text to copy, compare and render, so that costs one copy of it.
    Text flags_;
};

}  // namespace tylhart
