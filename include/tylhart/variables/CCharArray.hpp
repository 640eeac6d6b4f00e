// CCharArray: a character string held as bytes, with an optional fixed
// size, as DD text variables need it. Read and written as text (its default
// member), byte by byte through Char, or at once from a byte array. The
// bytes live in a character buffer that the array creates on first use and
// reaches only late bound, by the buffer's identifiers.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

class CCharArray final : public Object {
    TYLHART_CLASS(CCharArray)
public:
    // -1: no fixed size, indexes unchecked. Writing it leaves the stored
    // bytes alone; it only changes how the next text write cuts or pads and
    // how Char's write checks its index.
    std::int32_t Size = -1;

    // With a fixed size exactly Size characters, NUL padding included;
    // otherwise the whole content.
    Text text() const;
    // With a fixed size the text is cut or padded with NUL to Size; it then
    // replaces the content (a closing NUL ends it). A character above U+00FF
    // does not fit a byte: the buffer's "Overflow" (6), nothing stored. A
    // text or fixed Size beyond MaxElements is "Out of memory" (7), as are
    // reads of such a Size and writes of Char that far out.
    void SetText(const Text& newText);

    // Negative indexes are refused; reading at or past the content gives 0
    // whatever Size says; writing at or past a fixed Size is refused.
    std::uint8_t Char(std::int32_t index) const;
    void SetChar(std::int32_t index, std::uint8_t value);

    // Size becomes the array's length (an empty array leaves it as it was),
    // then every byte goes through Char's write at its own index. With an
    // empty array and a Size of 1 or more the first read is the runtime's
    // "Subscript out of range" (9), before anything is written.
    void SetFromByteArray(const ByteArray& barray);

    // "CharArray{Text:" and the text as far as its first NUL; above level 1
    // also ", Size:".
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    Object& buffer() const;
    // Start and length of the text reads: 0 and Size, or 0 and -1.
    std::int32_t readLength() const noexcept { return Size >= 1 ? Size : -1; }

    mutable Ref<Object> buffer_;
};

}  // namespace tylhart
