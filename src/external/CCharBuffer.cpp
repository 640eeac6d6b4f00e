#include "tylhart/external/CCharBuffer.hpp"

#include <algorithm>
#include <limits>

#include "tylhart/core/Limits.hpp"

namespace tylhart {

namespace {

constexpr std::int64_t MaxCount = std::numeric_limits<std::int32_t>::max();

void checkPosition(std::int32_t position) {
    if (position < 0) errors::raise(errors::Runtime::SubscriptOutOfRange);
}

// The content's new length, which must stay a Long and within the
// library's element limit.
std::size_t checkedEnd(std::int64_t end) {
    if (end > MaxCount) errors::raise(errors::Runtime::Overflow);
    checkElements(end);
    return static_cast<std::size_t>(end);
}

}  // namespace

Text CCharBuffer::Contents(std::int32_t start, std::int32_t length) const {
    checkPosition(start);
    if (length < -1) errors::raise(errors::Runtime::InvalidCall);
    const std::size_t from = static_cast<std::size_t>(start);
    const std::size_t count =
        length == -1 ? (from < bytes_.size() ? bytes_.size() - from : 0) : static_cast<std::size_t>(length);
    checkElements(static_cast<std::int64_t>(count));
    Text out(count, u'\0');
    for (std::size_t i = 0; i < count && from + i < bytes_.size(); ++i) out[i] = bytes_[from + i];
    return out;
}

void CCharBuffer::SetContents(std::int32_t start, std::int32_t length, const Text& text) {
    checkPosition(start);
    if (length == 0 || length < -1) errors::raise(errors::Runtime::InvalidCall);
    const std::size_t stored =
        length == -1 ? text.size() : std::min(text.size(), static_cast<std::size_t>(length) - 1);
    if (std::any_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(stored),
                    [](char16_t c) { return c > 0xFF; }))
        errors::raise(errors::Runtime::Overflow);
    const std::size_t from = static_cast<std::size_t>(start);
    bytes_.resize(checkedEnd(static_cast<std::int64_t>(from) + static_cast<std::int64_t>(stored)), 0);
    for (std::size_t i = 0; i < stored; ++i) bytes_[from + i] = static_cast<std::uint8_t>(text[i]);
}

Text CCharBuffer::TextToNul(std::int32_t start, std::int32_t length) const {
    checkPosition(start);
    if (length < -1) errors::raise(errors::Runtime::InvalidCall);
    // Places past the content read as NUL, so the text always ends within
    // the stored bytes: the work follows the content, not Length.
    const std::size_t from = std::min(static_cast<std::size_t>(start), bytes_.size());
    std::size_t end = bytes_.size();
    if (length != -1) end = std::min(end, from + static_cast<std::size_t>(length));
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(from);
    const auto nul = std::find(first, bytes_.begin() + static_cast<std::ptrdiff_t>(end), std::uint8_t{0});
    return Text(first, nul);
}

std::int32_t CCharBuffer::Char(std::int32_t index, std::int32_t length) const {
    checkPosition(index);
    if (length != 1) errors::raise(errors::Runtime::InvalidCall);
    const std::size_t at = static_cast<std::size_t>(index);
    return at < bytes_.size() ? bytes_[at] : 0;
}

void CCharBuffer::SetChar(std::int32_t index, std::int32_t length, std::int32_t code) {
    checkPosition(index);
    if (length < 1) errors::raise(errors::Runtime::InvalidCall);
    if (code < 0 || code > 0xFF) errors::raise(errors::Runtime::Overflow);
    const std::size_t from = static_cast<std::size_t>(index);
    const std::size_t end = checkedEnd(static_cast<std::int64_t>(index) + length);
    if (end > bytes_.size()) bytes_.resize(end, 0);
    std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(from), bytes_.begin() + static_cast<std::ptrdiff_t>(end),
              static_cast<std::uint8_t>(code));
}

const ClassInfo& CCharBuffer::staticClassInfo() {
    const Param byRefIndex{u"Index", Missing{}, false, true};
    static const ClassInfo info =
        ClassBuilder<CCharBuffer>(TypeName)
            .getter(u"Count", &CCharBuffer::Count)
            .withId(CountId)
            .property(u"Char", &CCharBuffer::Char, &CCharBuffer::SetChar, {byRefIndex, required(u"Length")})
            .withId(CharId)
            .property(u"Contents", &CCharBuffer::Contents, &CCharBuffer::SetContents,
                      {required(u"Start"), required(u"Length")})
            .withId(ContentsId)
            .getter(u"TextToNul", &CCharBuffer::TextToNul, {required(u"Start"), required(u"Length")})
            .withId(TextToNulId)
            .build();
    return info;
}

}  // namespace tylhart
