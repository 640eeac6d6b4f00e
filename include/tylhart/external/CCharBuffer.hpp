// CCharBuffer: this library's own character buffer, the byte store behind
// CCharArray. Its users reach it only late bound, by the identifiers below.
//
// The content is a sequence of bytes, one per character, holding the codes
// 0 to 255 (the characters U+0000 to U+00FF); Count is its length. Places at
// or past Count read as NUL: that is the closing NUL every text write
// implies, so it is never counted and never has to be stored.
//
// Text reads and writes take a start and a length:
// - Contents(Start, Length) reads exactly Length characters from Start,
//   those past the content as NUL, so a fixed-size read gives back its NUL
//   padding; Length -1 reads from Start to the end of the content (nothing
//   when Start is at or past it).
// - SetContents(Start, Length, Text) treats Length as the size of a C
//   buffer, the closing NUL included: the first Length - 1 characters of
//   Text are stored from Start (all of them when Length is -1, or when it is
//   the text's length + 1), and the content ends behind them, so a shorter
//   text never leaves the tail of a longer one behind. A gap between Count
//   and Start fills with NUL.
// - TextToNul(Start, Length) is Contents cut before its first NUL: the text
//   as a C string reads it, for renderings.
// - Char(Index, Length) reads the one code at Index (0 at or past Count);
//   Length must be 1, since one Long holds one code. SetChar(Index, Length,
//   Code) writes Code into Length places from Index, growing the content
//   with NUL up to Index where needed.
//
// Failures are the runtime's, checked before anything changes: a negative
// Start or Index is "Subscript out of range" (9); a Length the member cannot
// use (below -1, 0 for a write, anything but 1 for Char's read, below 1 for
// its write) is "Invalid procedure call or argument" (5); a code or a text
// character above 255 does not fit a byte and is "Overflow" (6), as is
// content that would grow past the largest Long. A read or a content longer
// than MaxElements is "Out of memory" (7). TextToNul never builds the NUL
// padding it would cut, so it costs what the content holds at most.
#pragma once

#include <vector>

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

class CCharBuffer final : public Object {
    TYLHART_CLASS(CCharBuffer)
public:
    static constexpr DispId CountId = 101;
    static constexpr DispId CharId = 201;
    static constexpr DispId ContentsId = 205;
    static constexpr DispId TextToNulId = 208;

    std::int32_t Count() const noexcept { return static_cast<std::int32_t>(bytes_.size()); }

    Text Contents(std::int32_t start, std::int32_t length) const;
    void SetContents(std::int32_t start, std::int32_t length, const Text& text);
    Text TextToNul(std::int32_t start, std::int32_t length) const;

    std::int32_t Char(std::int32_t index, std::int32_t length) const;
    void SetChar(std::int32_t index, std::int32_t length, std::int32_t code);

private:
    std::vector<std::uint8_t> bytes_;
};

}  // namespace tylhart
